// Moves the audio of a source, block by block, to whoever takes it.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "host/Source.h"

// Takes interleaved frames of the source's output format; throws to end the copy.
using FrameTaker = std::function<void(const int16_t* samples, uint32_t frames)>;

// Returns the frames copied. `channels` is the source's output channel count.
int64_t CopyAudio(Source& source, uint32_t channels, const FrameTaker& taker);

// Warns on standard error where clearly fewer frames came at `rate` than the file's header promised.
void WarnIfShort(const std::string& file, const SourceFormat& source, uint32_t rate, int64_t promised,
                 int64_t total);
