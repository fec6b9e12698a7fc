// One of N parts of a list of files, for machines that share a job. Which part a file belongs to follows from
// its name as it was given, so that any of the parts can be run again, alone.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

class Shard {
public:
    // "I/N", I from 1 to N; empty: all files. Throws UsageFailure.
    explicit Shard(const std::string& text);

    bool Has(std::string_view name) const;

private:
    uint64_t m_index = 0;
    uint64_t m_count = 1;
};
