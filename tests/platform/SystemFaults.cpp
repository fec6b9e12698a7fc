#include "tests/platform/SystemFaults.h"

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace {

constexpr size_t kWholeWrite = 8;  // bytes; so few are written whole or not at all

thread_local SystemFaults t_faults;
thread_local int t_interruptionsLeft = 0;
thread_local int t_calls = 0;
thread_local int t_changes = 0;
thread_local size_t t_moved = 0;
thread_local size_t t_written = 0;

template <class Function>
Function* Next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

// Counts a change of a file; true if it is to fail.
bool ChangeFails() {
    const int left = t_faults.changesUntilError - t_changes++;
    errno = t_faults.error;
    return t_faults.changesUntilError >= 0 && (left == 0 || (left < 0 && t_faults.lasting));
}

template <class Function, class Buffer>
ssize_t Faulty(Function* next, int file, Buffer buffer, size_t size, off_t place) {
    ++t_calls;
    if (t_interruptionsLeft-- > 0) {
        errno = EINTR;
        return -1;
    }
    t_interruptionsLeft = t_faults.interruptions;
    if (t_faults.callsUntilError-- == 0) {
        errno = t_faults.error;
        return -1;
    }
    const ssize_t moved = next(file, buffer, std::min(size, t_faults.longest), place);
    if (moved > 0) t_moved += static_cast<size_t>(moved);
    return moved;
}

}  // namespace

extern "C" {
__attribute__((visibility("default"))) ssize_t pread(int file, void* buffer, size_t size, off_t place) {
    static auto* const next = Next<decltype(pread)>("pread");
    return Faulty(next, file, buffer, size, place);
}
__attribute__((visibility("default"))) ssize_t pwrite(int file, const void* buffer, size_t size,
                                                      off_t place) {
    static auto* const next = Next<decltype(pwrite)>("pwrite");
    if (ChangeFails()) {
        const bool first = t_changes == t_faults.changesUntilError + 1;
        if (t_faults.lasting && first && size > kWholeWrite) next(file, buffer, size / 2, place);
        return -1;
    }
    const ssize_t written = Faulty(next, file, buffer, size, place);
    if (written > 0) t_written += static_cast<size_t>(written);
    return written;
}
__attribute__((visibility("default"))) int ftruncate(int file, off_t size) noexcept {
    static auto* const next = Next<int(int, off_t)>("ftruncate");
    return ChangeFails() ? -1 : next(file, size);
}
__attribute__((visibility("default"))) int fsync(int file) {
    static auto* const next = Next<int(int)>("fsync");
    if (ChangeFails()) return -1;
    return t_faults.flushes ? next(file) : 0;
}
}

WithFaults::WithFaults(const SystemFaults& faults) {
    t_faults = faults;
    t_interruptionsLeft = faults.interruptions;
    t_calls = 0;
    t_changes = 0;
    t_moved = 0;
    t_written = 0;
}
WithFaults::~WithFaults() {
    t_faults = {};
    t_interruptionsLeft = 0;
}
int WithFaults::CallsSeen() const { return t_calls; }
int WithFaults::ChangesSeen() const { return t_changes; }
size_t WithFaults::BytesMoved() const { return t_moved; }
size_t WithFaults::BytesWritten() const { return t_written; }
