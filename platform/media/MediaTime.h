// Frames against time in units of 100 ns, both to the nearest: at the rates of audio a number of frames comes
// back whole.
#pragma once

#include "platform/media/MediaTypes.h"

constexpr REFERENCE_TIME FramesToTime(int64_t frames, int64_t rate /*Hz, 1 to 10^7*/) {
    if (frames < 0) return -FramesToTime(-frames, rate);
    return frames / rate * kTimeUnitsPerSecond + (frames % rate * kTimeUnitsPerSecond + rate / 2) / rate;
}

// A frame is no shorter than a unit of time, so that nothing overflows.
constexpr int64_t TimeToFrames(REFERENCE_TIME time, int64_t rate /*as above*/) {
    if (time < 0) return -TimeToFrames(-time, rate);
    const int64_t seconds = time / kTimeUnitsPerSecond;
    const int64_t rest = time % kTimeUnitsPerSecond;
    return seconds * rate + (rest * rate + kTimeUnitsPerSecond / 2) / kTimeUnitsPerSecond;
}
static_assert(TimeToFrames(kEndOfTime, kTimeUnitsPerSecond) == kEndOfTime);
static_assert(TimeToFrames(FramesToTime(-12345677, 192000), 192000) == -12345677);
