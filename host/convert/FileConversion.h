// One file after another through a converter of its own, by rules that hold for all of them. One thread.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "capi/vlwav.hpp"
#include "host/convert/OutputPlan.h"
#include "host/tags/TagChanges.h"

// What is the same for all files of one command.
struct ConversionRules {
    const vlw::Module& module;
    const std::vector<vlw::StockFormat>& formats;
    const vlw::Conversion& conversion;
    const TagChanges& changes;
    bool newer = false;            // what is up to date is skipped, what isn't is replaced
    bool verbose = false;          // what nobody misses in the output is told too
    std::optional<uint64_t> seed;  // of dither; the library's own where missing
    bool dryRun = false;           // nothing is written
};

// What became of a file.
struct ConversionResult {
    bool skipped = false;
    double seconds = 0;  // of audio
    std::string notes;   // lines for standard error
    std::string line;    // for standard output
};

class FileConversion {
public:
    explicit FileConversion(const ConversionRules& rules);

    // On as many threads; `progress` is told of it, and may be empty. Throws what fails.
    ConversionResult Run(const ConvertJob& job, uint32_t threads,
                         const std::function<void(const vlw::Progress&)>& progress);

    // Frames a second of the file that is being converted, for whom its progress is told; 0: not known yet.
    uint32_t SourceRate() const;

private:
    bool Has(uint32_t flag) const;
    ConversionResult Try(const ConvertJob& job);
    [[noreturn]] void Refuse(const ConvertJob& job, const vlw::Failure& failure);
    std::string Notes(const std::string& input, const vlw::Converted& made) const;
    std::string LineOf(const ConvertJob& job, const vlw::Converted& made) const;

    const ConversionRules& m_rules;
    vlw::Converter m_converter;
    vlw::Reader m_reader;
};
