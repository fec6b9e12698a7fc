#include "tests/platform/SystemFaults.h"

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace {

thread_local SystemFaults t_faults;
thread_local int t_interruptionsLeft = 0;
thread_local int t_calls = 0;

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
    return next(file, buffer, std::min(size, t_faults.longest), place);
}

}  // namespace

extern "C" {
__attribute__((visibility("default"))) ssize_t pread(int file, void* buffer, size_t size, off_t place) {
    static auto* const next = reinterpret_cast<decltype(&pread)>(dlsym(RTLD_NEXT, "pread"));
    return Faulty(next, file, buffer, size, place);
}
__attribute__((visibility("default"))) ssize_t pwrite(int file, const void* buffer, size_t size,
                                                      off_t place) {
    static auto* const next = reinterpret_cast<decltype(&pwrite)>(dlsym(RTLD_NEXT, "pwrite"));
    return Faulty(next, file, buffer, size, place);
}
}

WithFaults::WithFaults(const SystemFaults& faults) {
    t_faults = faults;
    t_interruptionsLeft = faults.interruptions;
    t_calls = 0;
}
WithFaults::~WithFaults() {
    t_faults = {};
    t_interruptionsLeft = 0;
}
int WithFaults::CallsSeen() const { return t_calls; }
