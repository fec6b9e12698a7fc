#include "bench/table/TableReporter.h"

#include <cstdio>
#include <fstream>
#include <thread>

#include "AudioCodec/wave/converter/KernelChoice.h"

namespace {

std::string Processor() {
    std::ifstream file("/proc/cpuinfo");
    for (std::string line; std::getline(file, line);)
        if (line.starts_with("model name")) return line.substr(line.find(':') + 2);
    return "unknown processor";
}

}  // namespace

bool TableReporter::ReportContext(const Context& /*context*/) {
    std::printf("%s, %u threads; kernel %s\n", Processor().c_str(), std::thread::hardware_concurrency(),
                ChosenKernel().name);
    std::printf("Ratio: the other's time over the module's, median of all turns (least to most).\n\n");
    std::printf("%-44s %7s %17s %7s  %s\n", "work", "ratio", "(least to most)", "wanted", "beside");
    std::fflush(stdout);
    return true;
}

void TableReporter::ReportRuns(const std::vector<Run>& runs) {
    for (const Run& run : runs) {
        std::string work = run.run_name.function_name;
        if (run.error_occurred) {
            std::printf("%-44s %s\n", work.c_str(), run.error_message.c_str());
            continue;
        }
        const auto counter = [&](const char* name) { return run.counters.at(name).value; };
        const size_t tab = run.report_label.find('\t');
        std::printf("%-44s %7.2f (%6.2f to %6.2f) %7.2f  %s %s\n", work.c_str(), counter("ratio"),
                    counter("least"), counter("most"), counter("wanted"),
                    run.report_label.substr(0, tab).c_str(),
                    tab == std::string::npos ? "" : run.report_label.substr(tab + 1).c_str());
    }
    std::fflush(stdout);
}
