#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <map>
#include <mutex>
#include <sstream>
#include <thread>

#include "capi/vlwav_more.h"
#include "host/Commands.h"
#include "host/Failure.h"
#include "host/Output.h"
#include "host/Report.h"
#include "host/TagChanges.h"
#include "host/TerminalText.h"

namespace {

// Short files wait for the disk, one after the other, for longer than they need a core.
constexpr size_t kFilesPerCore = 4;

struct Job {
    std::string input;
    std::string output;
};

// Throws a UsageFailure where two files would get one name, or several one file.
std::vector<Job> Plan(const ConvertOptions& options) {
    std::error_code ignored;
    const bool folder = std::filesystem::is_directory(options.output, ignored);
    if (!folder && options.files.size() > 1)
        throw UsageFailure(fmt::format("{} is no folder; several files need one.", options.output));
    std::vector<Job> jobs;
    std::map<std::string, std::string> inputOf;
    for (const std::string& input : options.files) {
        std::filesystem::path output = options.output;
        if (folder) output /= std::filesystem::path(input).stem().concat(".wav");
        const auto [other, isNew] = inputOf.try_emplace(output.string(), input);
        if (!isNew)
            throw UsageFailure(
                fmt::format("{} and {} would both become {}.", other->second, input, output.string()));
        jobs.push_back({input, output.string()});
    }
    return jobs;
}

// What is the same for all files of one command.
struct Rules {
    const vlw::Module& module;
    const std::vector<vlw::StockFormat>& formats;
    const vlw::Conversion& conversion;
    const TagChanges& changes;
};

// The text of a format that was made.
std::string TextOf(const vlw::Format& made, const std::vector<vlw::StockFormat>& formats) {
    for (const vlw::StockFormat& stock : formats)
        if (stock.format.rate == made.rate && stock.format.channels == made.channels &&
            stock.format.bits == made.bits)
            return stock.text;
    return {};
}

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream rest(text);
    rest.exceptions(std::ios::badbit);  // a lack of memory is no end
    for (std::string line; std::getline(rest, line);) lines.push_back(line);
    return lines;
}

// Of what a conversion gave up, whether it is channels, rate or bits: those stand in the file's line. Tags
// and chunks are named in quotes.
bool IsOfFormat(const std::string& note) {
    return note.find(" → ") != note.npos && note.find('"') == note.npos;
}

// Room, and numbers that tell of the old samples: nobody misses them.
bool IsOfNoUse(const std::string& note) { return note.starts_with("the output has no use for "); }

// " (6 channels → mono, 24 → 16 bits)", or nothing.
std::string FormatLosses(const std::string& notes) {
    std::string text;
    for (const std::string& line : Lines(notes))
        if (IsOfFormat(line)) text += (text.empty() ? " (" : ", ") + line;
    return text.empty() ? text : text + ')';
}

// What is told of one file.
struct Told {
    std::string complaints;  // lines on standard error, which come first
    std::string line;        // on standard output
};

// Converts for one thread.
class Worker {
public:
    explicit Worker(const Rules& rules) : m_rules(rules), m_converter(rules.module), m_reader(rules.module) {}

    // On as many threads. Throws what fails. What the output doesn't have of the input, but for the format,
    // is among the complaints.
    Told Convert(const Job& job, uint32_t threads) {
        if (IsSameFile(job.input, job.output))
            throw Failure("The output is the input itself; choose another name for -o.");
        std::error_code ignored;
        const auto there = std::filesystem::status(job.output, ignored);
        // What is there as a device or a pipe would be written to, never replaced.
        if (std::filesystem::exists(there) && !std::filesystem::is_regular_file(there))
            throw Failure(fmt::format("{} is no regular file; choose another name for -o.", job.output));
        vlw::Conversion conversion = m_rules.conversion;
        conversion.threads = threads;
        vlw::Tags tags;
        if (m_rules.changes.TakesAway()) {
            m_reader.open(job.input);
            tags = m_reader.tags();
            conversion.flags = conversion.flags | vlw::Flags::no_tags;
        }
        m_rules.changes.ApplyTo(tags);
        conversion.tags = &tags;
        const vlw::Result<vlw::Converted> made = m_converter.try_run(job.input, job.output, conversion);
        if (!made) Refuse(job, made.error());
        return {Warnings(job.input, *made), LineOf(job, *made)};
    }

private:
    // With what the user can do about it.
    [[noreturn]] void Refuse(const Job& job, const vlw::Failure& failure) {
        if (failure.code == vlw::Code::exists) throw Failure(Report::Exists(job.output));
        if (failure.code == vlw::Code::would_lose)
            throw Failure(failure.text + " With --lossy it is made all the same.");
        if (vlw_converter_refused_cut(m_converter.get()) != 0)
            throw Failure(failure.text + Report::kPartialHint);
        throw vlw::Error(failure);
    }

    std::string Warnings(const std::string& input, const vlw::Converted& made) const {
        std::string lines;
        if (made.ending == vlw::Ending::cut)
            lines += Report::Complaint(input,
                                       std::string("Note: ") + vlw_converter_error(m_converter.get())->text);
        for (const std::string& line : Lines(made.notes))
            if (!IsOfFormat(line) && !IsOfNoUse(line))
                lines += Report::Complaint(input, "Note: " + line + '.');
        return lines;
    }

    std::string LineOf(const Job& job, const vlw::Converted& made) const {
        return fmt::format("{} -> {}: {}, {}{}\n", TerminalText::Printable(job.input),
                           TerminalText::Printable(job.output), TextOf(made.format, m_rules.formats),
                           Report::Duration(made.format.frames.value_or(0), made.format.rate),
                           FormatLosses(made.notes));
    }

    const Rules& m_rules;
    vlw::Converter m_converter;
    vlw::Reader m_reader;
};

// Hands the jobs to its threads one by one; a file that fails stops none of the others. What is told of the
// files comes in their order, each as soon as those before it are told.
class Batch {
public:
    Batch(const Rules& rules, const std::vector<Job>& jobs)
        : m_rules(rules), m_jobs(jobs), m_unfinished(jobs.size()) {}

    // So many files at once, and so many threads for all of them together, if there are fewer files.
    ExitCode Run(size_t atOnce, size_t threads) {
        m_threads = threads;
        {
            std::vector<std::jthread> workers;
            try {
                for (size_t i = 1; i < std::min(atOnce, m_jobs.size()); ++i)
                    workers.emplace_back([this] { Work(); });
            } catch (const std::exception&) {  // the work is done by fewer
            }
            Work();
        }
        if (m_outputFailure) std::rethrow_exception(m_outputFailure);
        m_output.Commit();
        return m_failed ? EXIT_FAILED : EXIT_DONE;
    }

private:
    void Work() {
        try {
            WorkOff();
        } catch (const std::exception& failure) {
            m_failed = true;
            Report::Complain("", failure);
        }
    }
    void WorkOff() {
        Worker worker(m_rules);
        for (size_t i = m_next++; i < m_jobs.size(); i = m_next++) {
            Told told;
            try {
                // The fewer files there are, the more threads are left for each.
                told = worker.Convert(m_jobs[i], static_cast<uint32_t>(std::max<size_t>(
                                                     m_threads / std::max<size_t>(m_unfinished, 1), 1)));
            } catch (const std::exception& failure) {
                m_failed = true;
                told.complaints = Report::Complaint(m_jobs[i].input, failure);
            }
            --m_unfinished;
            const std::lock_guard held(m_lock);
            m_waiting.emplace(i, std::move(told));
            TellInOrder();
        }
    }
    // Nothing that follows could be told when standard output has failed, so the rest isn't begun.
    void TellInOrder() {
        for (auto next = m_waiting.begin(); next != m_waiting.end() && next->first == m_told; ++m_told) {
            std::fputs(next->second.complaints.c_str(), stderr);
            try {
                if (!m_outputFailure) m_output.Write(next->second.line);
            } catch (const OutputFailure&) {
                m_outputFailure = std::current_exception();
                m_next = m_jobs.size();
            }
            next = m_waiting.erase(next);
        }
    }

    const Rules& m_rules;
    const std::vector<Job>& m_jobs;
    size_t m_threads = 1;
    std::atomic<size_t> m_next = 0;
    std::atomic<size_t> m_unfinished;
    std::atomic<bool> m_failed = false;
    std::mutex m_lock;                 // of what follows
    std::map<size_t, Told> m_waiting;  // of files behind one that isn't finished
    size_t m_told = 0;                 // files
    Output m_output = Output::Standard();
    std::exception_ptr m_outputFailure;
};

}  // namespace

ExitCode RunConvert(const vlw::Module& module, const ConvertOptions& options) {
    const TagChanges changes(options.sets, {});
    const std::vector<vlw::StockFormat> formats = module.formats();
    vlw::Conversion conversion;
    ApplyWish(options.wish, formats, conversion);
    conversion.flags = static_cast<vlw::Flags>(VLW_NOT_EMPTY);
    for (const auto& [wanted, flag] : {std::pair(options.overwrite, vlw::Flags::overwrite),
                                       {options.partial, vlw::Flags::partial},
                                       {options.lossy, vlw::Flags::lossy}})
        if (wanted) conversion.flags = conversion.flags | flag;
    const Rules rules{module, formats, conversion, changes};
    const std::vector<Job> jobs = Plan(options);
    const size_t cores = std::max(1u, std::thread::hardware_concurrency());
    if (options.jobs) return Batch(rules, jobs).Run(*options.jobs, *options.jobs);
    return Batch(rules, jobs).Run(cores * kFilesPerCore, cores);
}
