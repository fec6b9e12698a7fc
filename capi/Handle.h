// What handles of files have in common: the module they work with, the record of what failed last, and the
// process that they belong to.
#pragma once

#include "capi/Guarded.h"
#include "capi/ModuleUse.h"
#include "capi/posix/ProcessMark.h"

// `Work` does what the handle is for; it is made with the module that is kept.
template <class Work>
struct FileHandle {
    explicit FileHandle(const vlw_module* kept) : module(kept), work(std::make_unique<Work>(module)) {}
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;
    ~FileHandle() {
        // In a child of the process only this memory is given back: to end the work would join threads that
        // don't run here, and touch files of the parent.
        if (!process.IsOurs()) static_cast<void>(work.release());
    }

    ErrorRecord error;
    ModuleUse module;
    ProcessMark process;
    std::unique_ptr<Work> work;
};
