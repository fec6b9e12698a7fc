// What there is to know of an audio file.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "capi/vlwav.hpp"
#include "capi/vlwav_more.h"

struct FileFacts {
    vlw::Format format;
    int64_t frames = 0;       // that are there
    bool direct = false;      // the module reads it by itself; else it has to be decoded
    bool lengthTold = false;  // by the head
    bool cut = false;         // there is less than the head promises
    vlw::Tags tags;
    std::vector<vlw_chunk> chunks;
    std::optional<std::vector<double>> peaks;  // for each channel, 0 to 1

    double Seconds() const { return static_cast<double>(frames) / format.rate; }

    // Of the file that a reader has just opened, which is read to its end where only that tells its length,
    // or the peaks are wanted. Throws what fails.
    static FileFacts Of(vlw::Reader& reader, bool chunks, bool peaks);
};
