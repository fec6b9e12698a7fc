// Prints what the benchmarks found as one table, under what it was found with.
#pragma once

#include <benchmark/benchmark.h>

class TableReporter : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context& context) override;
    void ReportRuns(const std::vector<Run>& runs) override;
};
