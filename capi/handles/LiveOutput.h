// A WAV file that goes out while it is made, to what takes bytes in order and never gives them back: a pipe,
// a socket, a device. Nothing of it is kept, so nothing can be taken back or looked at afterwards; what a
// file at a path would have stands in it byte for byte, where the length of the audio is known. One thread
// at a time.
//
//   length known:  | head, true sizes        | audio | pad | tags | chunks |
//   not known:     | head, 0xFFFFFFFF twice  | tags | chunks | audio ...
//
// Decisions: audio without a told length lasts to the end, so all else has to come before it.
#pragma once

#include <optional>
#include <vector>

#include "AudioCodec/wave/IAC3Writer.h"
#include "capi/chunks/CarriedChunks.h"
#include "capi/handles/WaveObjects.h"
#include "capi/posix/Descriptor.h"

// What goes out, decided before its first byte.
struct LivePlan {
    AudioFormatInfo format{};
    bool isShort = false;                   // the plan's frames are fewer than come
    std::optional<int64_t> frames;          // nothing: as many as come
    std::vector<uint8_t> tags;              // as they stand in a file
    const CarriedChunks* chunks = nullptr;  // borrowed; null for none
};

class LiveOutput {
public:
    LiveOutput(Descriptor target, FileLabel label) : m_target(std::move(target)), m_label(std::move(label)) {}

    // These throw Failure. VLW_TOO_LARGE comes before the first byte.
    void Begin(LivePlan plan);
    // Of the few frames of a source that is shorter than the filter, those beyond the plan are left out.
    void Write(const int16_t* samples, size_t frames);
    // VLW_DAMAGED where the head promised other frames than came.
    void Finish();

    const FileLabel& Label() const { return m_label; }
    int64_t Frames() const { return m_frames; }  // that were taken

private:
    uint64_t AudioBytes() const;  // as the plan has them
    uint64_t RestBytes() const;   // of tags and chunks
    void Put(const void* bytes, size_t count);
    void PutRest();
    void Send();

    const Descriptor m_target;
    const FileLabel m_label;
    LivePlan m_plan;
    std::vector<uint8_t> m_block;  // on its way out
    int64_t m_frames = 0;
};
