// One file into a WAV file of a stock format: audio through reader and writer, tags from one to the other,
// and the proof that the result is whole before it gets its name. Different conversions may run at the same
// time on threads of their own.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/Module.h"
#include "host/StockFormats.h"
#include "host/Tags.h"

// What is the same for all files of one command.
struct ConversionRules {
    const Module& module;
    const StockFormats& formats;
    FormatWish wish;
    bool overwrite = false;
    std::vector<TagChange> changes;  // on top of the input's tags
};

struct Converted {
    StockFormat format;
    int64_t frames = 0;  // in the output
};

// Writes `output` from `input`. Throws Failure with the output's place as it was. Tells on standard error
// what the output can't keep of the input.
Converted Convert(const ConversionRules& rules, const std::string& input, const std::string& output);
