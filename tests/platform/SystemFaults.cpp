#include "tests/platform/SystemFaults.h"

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <limits>

namespace {

constexpr size_t kWholeWrite = 8;  // bytes; so few are written whole or not at all

struct State {
    SystemFaults faults;
    int interruptionsLeft = 0;
    int calls = 0;
    int changes = 0;
    size_t moved = 0;
    size_t written = 0;
};
thread_local State t_state;

constexpr int kNoErrors = std::numeric_limits<int>::max();
std::atomic<int> s_readsUntilErrors = kNoErrors;

template <class Function>
Function* Next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

// Counts a change of a file; true if it is to fail.
bool ChangeFails() {
    const SystemFaults& faults = t_state.faults;
    const int left = faults.changesUntilError - t_state.changes++;
    errno = faults.error;
    return faults.changesUntilError >= 0 && (left == 0 || (left < 0 && faults.lasting));
}

void Record(FileChange::Kind kind, off_t place, const void* bytes = "", size_t size = 0) {
    if (auto* const recorded = t_state.faults.recorded)
        recorded->push_back({kind, static_cast<uint64_t>(place), {static_cast<const char*>(bytes), size}});
}

template <class Function, class Buffer>
ssize_t Faulty(Function* next, int file, Buffer buffer, size_t size, off_t place) {
    ++t_state.calls;
    errno = EINTR;
    if (t_state.interruptionsLeft-- > 0) return -1;
    t_state.interruptionsLeft = t_state.faults.interruptions;
    errno = t_state.faults.error;
    if (t_state.faults.callsUntilError-- == 0) return -1;
    const ssize_t moved = next(file, buffer, std::min(size, t_state.faults.longest), place);
    if (moved > 0) t_state.moved += static_cast<size_t>(moved);
    return moved;
}

}  // namespace

extern "C" {
__attribute__((visibility("default"))) ssize_t pread(int file, void* buffer, size_t size, off_t place) {
    static auto* const next = Next<decltype(pread)>("pread");
    if (s_readsUntilErrors != kNoErrors && s_readsUntilErrors-- <= 0) {
        errno = EIO;
        return -1;
    }
    return Faulty(next, file, buffer, size, place);
}
__attribute__((visibility("default"))) ssize_t pwrite(int file, const void* buffer, size_t size,
                                                      off_t place) {
    static auto* const next = Next<decltype(pwrite)>("pwrite");
    if (ChangeFails()) {
        SystemFaults& faults = t_state.faults;
        if (t_state.changes != faults.changesUntilError + 1 || size <= kWholeWrite) return -1;
        const ssize_t torn = next(file, buffer, size / 2, place);
        if (faults.lasting) return -1;
        faults.changesUntilError = t_state.changes;  // the call that would complete it is the one that fails
        return torn;
    }
    const ssize_t written = Faulty(next, file, buffer, size, place);
    if (written <= 0) return written;
    t_state.written += static_cast<size_t>(written);
    Record(FileChange::Kind::Write, place, buffer, static_cast<size_t>(written));
    return written;
}
__attribute__((visibility("default"))) int ftruncate(int file, off_t size) noexcept {
    static auto* const next = Next<int(int, off_t)>("ftruncate");
    if (ChangeFails()) return -1;
    Record(FileChange::Kind::Cut, size);
    return next(file, size);
}
__attribute__((visibility("default"))) int fsync(int file) {
    static auto* const next = Next<int(int)>("fsync");
    if (ChangeFails()) return -1;
    Record(FileChange::Kind::Flush, 0);
    return t_state.faults.flushes ? next(file) : 0;
}
__attribute__((visibility("default"))) int fcntl(int file, int command, ...) {
    static auto* const next = Next<int(int, int, ...)>("fcntl");
    std::va_list rest;
    va_start(rest, command);
    void* const argument = va_arg(rest, void*);
    va_end(rest);
    if (t_state.faults.slowLocks-- > 0) usleep(1000);
    return next(file, command, argument);
}
}

WithFaults::WithFaults(const SystemFaults& faults) {
    t_state = {.faults = faults, .interruptionsLeft = faults.interruptions};
}
WithFaults::~WithFaults() { t_state.faults = {}, t_state.interruptionsLeft = 0; }
int WithFaults::CallsSeen() const { return t_state.calls; }
int WithFaults::ChangesSeen() const { return t_state.changes; }
size_t WithFaults::BytesMoved() const { return t_state.moved; }
size_t WithFaults::BytesWritten() const { return t_state.written; }

WithReadErrors::WithReadErrors(int calls) { s_readsUntilErrors = calls; }
WithReadErrors::~WithReadErrors() { s_readsUntilErrors = kNoErrors; }
