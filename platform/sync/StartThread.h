// How every thread of the layer and of the module is started: with all signals blocked. A program that keeps
// a signal for one of its threads, or handles none, never meets it on ours; nor does a handler of it run
// there.
#pragma once

#include <thread>
#include <utility>

#include "platform/sync/posix/BlockedSignals.h"

// Runs `work` on a new thread. Throws what std::thread throws: std::system_error, std::bad_alloc. The
// caller's mask is the same afterwards, also then.
template <class Work>
std::thread StartThread(Work&& work) {
    const BlockedSignals blocked;
    return std::thread(std::forward<Work>(work));
}
