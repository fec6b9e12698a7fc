#include "host/convert/Batch.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <numeric>
#include <thread>

#include "host/base/Failure.h"
#include "host/terminal/Reason.h"
#include "host/terminal/Report.h"

namespace {

std::vector<uint64_t> SizesOf(const std::vector<ConvertJob>& jobs) {
    std::vector<uint64_t> sizes;
    for (const ConvertJob& job : jobs) {
        std::error_code error;
        const uintmax_t size = std::filesystem::file_size(job.input, error);
        sizes.push_back(error ? 0 : size);
    }
    return sizes;
}

}  // namespace

Batch::Batch(const ConversionRules& rules, const std::vector<ConvertJob>& jobs, bool lines)
    : m_rules(rules),
      m_jobs(jobs),
      m_lines(lines),
      m_sizes(isatty(STDERR_FILENO) != 0 ? SizesOf(jobs) : std::vector<uint64_t>(jobs.size())),
      m_unfinished(jobs.size()),
      m_progress(jobs.size(), std::accumulate(m_sizes.begin(), m_sizes.end(), uint64_t{0})) {}

BatchSummary Batch::Run(size_t atOnce, size_t threads) {
    const auto begun = std::chrono::steady_clock::now();
    m_threads = threads;
    m_summary.dryRun = m_rules.dryRun;
    {
        std::vector<std::jthread> workers;
        const size_t count = std::min(atOnce, m_jobs.size());
        for (size_t i = 1; i < count; ++i) workers.emplace_back([this] { Work(); });
        Work();
    }
    if (m_stopped) std::rethrow_exception(m_stopped);
    m_output.Commit();
    m_summary.elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - begun).count();
    return std::move(m_summary);
}

void Batch::Work() {
    try {
        WorkOff();
    } catch (const std::exception&) {
        const std::lock_guard held(m_lock);
        if (!m_stopped) m_stopped = std::current_exception();
        m_next = m_jobs.size();
    }
}

void Batch::WorkOff() {
    FileConversion conversion(m_rules);
    for (size_t i = m_next++; i < m_jobs.size(); i = m_next++) {
        Told told = Do(conversion, i);
        --m_unfinished;
        m_progress.End(i, m_sizes[i], told.result.seconds, told.failed);
        const std::lock_guard held(m_lock);
        m_waiting.emplace(i, std::move(told));
        TellInOrder();
    }
}

Batch::Told Batch::Do(FileConversion& conversion, size_t index) {
    const ConvertJob& job = m_jobs[index];
    Told told;
    if (!job.refusal.empty()) {
        told.failed = true;
        told.failure = {job.input, job.refusal, job.reason};
        return told;
    }
    const auto show = [&](const vlw::Progress& now) {
        m_progress.Show(index, job.input, m_sizes[index], now.done, now.total.value_or(0),
                        conversion.SourceRate());
    };
    try {
        // The fewer files there are, the more threads are left for each.
        const size_t threads = std::max<size_t>(m_threads / std::max<size_t>(m_unfinished, 1), 1);
        told.result =
            conversion.Run(job, static_cast<uint32_t>(threads),
                           m_progress.IsVisible() ? show : std::function<void(const vlw::Progress&)>());
    } catch (const std::exception& failure) {
        told.failed = true;
        told.failure = {job.input, ReasonOf(failure, job.input), WordOf(failure)};
    }
    return told;
}

// Nothing that follows could be told when standard output has failed, so the rest isn't begun.
void Batch::TellInOrder() {
    for (auto next = m_waiting.begin(); next != m_waiting.end() && next->first == m_told; ++m_told) {
        if (!m_stopped) Tell(next->second);
        next = m_waiting.erase(next);
    }
}

void Batch::Tell(const Told& told) {
    if (told.failed) {
        m_summary.failures.push_back(told.failure);
        return;
    }
    m_summary.converted += told.result.skipped ? 0 : 1;
    m_summary.skipped += told.result.skipped ? 1 : 0;
    m_summary.seconds += told.result.seconds;
    const bool line = m_lines && !told.result.line.empty();
    const bool notes = !Report::TellsFailuresAlone() && !told.result.notes.empty();
    if (!line && !notes) return;
    m_progress.Around([&] {
        if (notes) std::fputs(told.result.notes.c_str(), stderr);
        try {
            if (line) m_output.Write(told.result.line);
        } catch (const OutputFailure&) {
            m_stopped = std::current_exception();
            m_next = m_jobs.size();
        }
    });
}
