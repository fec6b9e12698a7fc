// What libvlid3.so offers to libvlwav.so, which loads it when a file with ID3 tags is asked for its tags: the
// frames of a tag as texts and pictures. Functions of C, since the two share no runtime for certain.
#pragma once

#include <cstddef>
#include <cstdint>

struct Id3Receiver {
    void* user;
    // A text under the frame's four letters, in UTF-8, terminated; lent. Neither may throw.
    void (*text)(void* user, const char* frame, const char* value);
    // A picture by its type (3: front cover), as the bytes of an image file; lent.
    void (*picture)(void* user, int32_t type, const void* bytes, size_t size);
};

// Reads a tag of version 2, below 4 GiB, in which nothing is packed. False where memory ran out. Any thread.
using ReadId3Function = bool (*)(const uint8_t* bytes, size_t size, const Id3Receiver* receiver);
inline constexpr const char* kReadId3Name = "VlReadId3";
