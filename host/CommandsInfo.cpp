#include "host/Commands.h"
#include "host/Output.h"
#include "host/Report.h"

namespace {

FileReport Examine(const Module& module, const std::string& file) {
    FileReport report;
    report.file = file;
    try {
        Source source(module, file);
        report.format = source.Format();
        report.frames = source.CountFrames();
    } catch (const Failure& failure) {
        report.failed = true;
        report.code = failure.Code();
        report.reason = failure.what();
    }
    return report;
}

}  // namespace

ExitCode RunInfo(const Module& module, const InfoOptions& options) {
    Output output = Output::Standard();
    std::vector<FileReport> reports;  // kept for JSON alone: lines for people come file by file
    ExitCode exitCode = EXIT_DONE;
    for (const std::string& file : options.files) {
        FileReport report = Examine(module, file);
        if (report.failed) {
            exitCode = EXIT_FAILED;
            Report::Complain(file, report.reason);
        } else if (!options.json) {
            output.Write(Report::Text(report));
        }
        if (options.json) reports.push_back(std::move(report));
    }
    if (options.json) output.Write(Report::Json(reports));
    output.Commit();
    return exitCode;
}
