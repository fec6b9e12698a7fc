// The frames of an ID3 tag that are made use of, as a tag of their own: what is handed to the library that
// understands them is bounded then, and holds nothing that it would unpack.
//
// Decisions: frames that are compressed or encrypted are left out, since a few bytes can unpack to any
// number. So are texts above 1 MiB, and everything after the 256th frame of use or the 65536th in all. A
// second frame of a kind is left out too, but for comments and pictures.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// A whole tag, of the same version; empty for what is none. Throws std::bad_alloc.
std::vector<char> FramesOfUse(const uint8_t* bytes, size_t size);
