// Positions and lengths that a source's chunks tell in frames, as they are in a file of another rate. Knows
// no chunk.
//
// Decisions: a number becomes frames * new / old, rounded to the nearest, ties up. A position within the
// source's audio stays within the file's. What a field has no room for becomes the largest number it holds.
#pragma once

#include <algorithm>
#include <cstdint>

struct FrameScale {
    uint32_t from = 1;   // frames a second, of the source
    uint32_t to = 1;     // of the file
    uint64_t first = 0;  // the file begins with this one of the frames that a reader makes of the source
    uint64_t sourceFrames = 0;  // 0: not known
    uint64_t fileFrames = 0;

    bool IsSame() const { return from == to; }

    uint64_t Length(uint64_t frames) const {
        if (IsSame()) return frames;
        // In two parts, of which the second has room: rates have 31 bits.
        const uint64_t whole = frames / from;
        if (whole > UINT64_MAX / to - 1) return UINT64_MAX;
        return whole * to + (2 * (frames % from) * to + from) / (2 * uint64_t{from});
    }
    uint32_t Length32(uint32_t frames) const { return Narrow(Length(frames)); }

    // Of a frame of the source.
    uint32_t Position(uint32_t frame) const {
        const uint64_t scaled = Length(frame);
        const uint64_t place = scaled - std::min(scaled, first);
        return Narrow(frame < sourceFrames && fileFrames != 0 ? std::min(place, fileFrames - 1) : place);
    }
    // Of the source's first frame on some other clock, in frames: of the file's first one on the same.
    uint64_t Time(uint64_t frames) const {
        const uint64_t scaled = Length(frames);
        return scaled + std::min(first, UINT64_MAX - scaled);
    }

private:
    static uint32_t Narrow(uint64_t value) {
        return static_cast<uint32_t>(std::min<uint64_t>(value, UINT32_MAX));
    }
};
