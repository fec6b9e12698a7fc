#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <exception>
#include <filesystem>
#include <map>
#include <mutex>
#include <thread>

#include "host/Commands.h"
#include "host/Conversion.h"
#include "host/Output.h"
#include "host/Report.h"

namespace {

struct Job {
    std::string input;
    std::string output;
};

// Throws a UsageFailure where two files would get one name, or several one file.
std::vector<Job> Plan(const ConvertOptions& options) {
    std::error_code ignored;
    const bool folder = std::filesystem::is_directory(options.output, ignored);
    if (!folder && options.files.size() > 1)
        throw UsageFailure(
            fmt::format("{} is no folder; several files need one.", Report::Printable(options.output)));
    std::vector<Job> jobs;
    std::map<std::string, std::string> inputOf;
    for (const std::string& input : options.files) {
        std::filesystem::path output = options.output;
        if (folder) output /= std::filesystem::path(input).stem().concat(".wav");
        const auto [other, isNew] = inputOf.try_emplace(output.string(), input);
        if (!isNew)
            throw UsageFailure(fmt::format("{} and {} would both become {}.",
                                           Report::Printable(other->second), Report::Printable(input),
                                           Report::Printable(output.string())));
        jobs.push_back({input, output.string()});
    }
    return jobs;
}

// Hands the jobs to its threads one by one; a file that fails stops none of the others.
class Batch {
public:
    Batch(const ConversionRules& rules, const std::vector<Job>& jobs) : m_rules(rules), m_jobs(jobs) {}

    ExitCode Run(size_t threads) {
        {
            std::vector<std::jthread> workers;
            for (size_t i = 1; i < threads; ++i) workers.emplace_back([this] { Work(); });
            Work();
        }
        if (m_outputFailure) std::rethrow_exception(m_outputFailure);
        m_output.Commit();
        return m_failed ? EXIT_FAILED : EXIT_DONE;
    }

private:
    void Work() {
        for (size_t i = m_next++; i < m_jobs.size(); i = m_next++) {
            try {
                Tell(m_jobs[i], Convert(m_rules, m_jobs[i].input, m_jobs[i].output));
            } catch (const std::exception& failure) {
                m_failed = true;
                Report::Complain(m_jobs[i].input, failure.what());
            }
        }
    }
    // Nothing that follows could be told when standard output has failed, so the rest isn't begun.
    void Tell(const Job& job, const Converted& done) {
        const std::lock_guard held(m_lock);
        try {
            m_output.Write(fmt::format("{} -> {}: {}, {}\n", Report::Printable(job.input),
                                       Report::Printable(job.output), done.format.text,
                                       Report::Duration(done.frames, done.format.rate)));
        } catch (const OutputFailure&) {
            m_outputFailure = std::current_exception();
            m_next = m_jobs.size();
        }
    }

    const ConversionRules& m_rules;
    const std::vector<Job>& m_jobs;
    std::atomic<size_t> m_next = 0;
    std::atomic<bool> m_failed = false;
    std::mutex m_lock;  // of the two below
    Output m_output = Output::Standard();
    std::exception_ptr m_outputFailure;
};

}  // namespace

ExitCode RunConvert(const Module& module, const ConvertOptions& options) {
    const StockFormats formats(module, 0);
    formats.RequirePossible(options.wish);
    const ConversionRules rules{module, formats, options.wish, options.overwrite,
                                Tags::ParseChanges(options.sets, {})};
    const std::vector<Job> jobs = Plan(options);
    const size_t wanted = options.jobs.value_or(std::max(1u, std::thread::hardware_concurrency()));
    return Batch(rules, jobs).Run(std::min(wanted, jobs.size()));
}
