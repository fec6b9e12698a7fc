// Many conversions at once. Hands the jobs to its threads one by one; a file that fails stops none of the
// others. What is told of the files comes in their order, each as soon as those before it are told; failures
// come together at the end, each once, so that none is lost among the lines of those that went well.
#pragma once

#include <atomic>
#include <exception>
#include <map>
#include <mutex>
#include <vector>

#include "host/convert/BatchSummary.h"
#include "host/convert/FileConversion.h"
#include "host/files/Output.h"
#include "host/terminal/ProgressLines.h"

class Batch {
public:
    // All are borrowed. `lines`: each file that is made has its line on standard output.
    Batch(const ConversionRules& rules, const std::vector<ConvertJob>& jobs, bool lines);

    // So many files at once, and so many threads for all of them together, if there are fewer files. Throws
    // OutputFailure.
    BatchSummary Run(size_t atOnce, size_t threads);

private:
    struct Told {
        ConversionResult result;
        bool failed = false;
        FailedFile failure;
    };

    void Work();
    void WorkOff();
    Told Do(FileConversion& conversion, size_t job);
    void TellInOrder();
    void Tell(const Told& told);

    const ConversionRules& m_rules;
    const std::vector<ConvertJob>& m_jobs;
    const bool m_lines;
    std::vector<uint64_t> m_sizes;  // of the inputs, in bytes; for progress alone
    size_t m_threads = 1;
    std::atomic<size_t> m_next = 0;
    std::atomic<size_t> m_unfinished;
    ProgressLines m_progress;
    std::mutex m_lock;                 // of what follows
    std::map<size_t, Told> m_waiting;  // of files behind one that isn't finished
    size_t m_told = 0;                 // files
    BatchSummary m_summary;
    Output m_output = Output::Standard();
    std::exception_ptr m_stopped;  // why the rest wasn't begun
};
