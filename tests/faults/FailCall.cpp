// Preloaded into a program, lets one call of it fail, or that call and all of its kind after it. The
// environment says which: VL_FAIL=KIND:N[+] (the N-th from the start of main, from 1; "+": those after it
// too), KIND one of the table below. The file VL_FAIL_NOTE comes into being when the call has failed. What
// the loader does inside a dlopen goes through.
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

enum Kind { READ, WRITE, OPEN, FLUSH, CUT, MEMORY, KINDS };
struct KindRow {
    const char* name;
    int error;
};
constexpr KindRow kKinds[KINDS] = {{"read", EIO},  {"write", ENOSPC}, {"open", EMFILE},
                                   {"flush", EIO}, {"cut", EIO},      {"memory", ENOMEM}};

Kind s_kind = KINDS;
bool s_lasts = false;
std::atomic<long> s_left = 0;
std::atomic<bool> s_armed = false;
thread_local int t_loading = 0;

template <class Function>
Function* Next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

void Arm() {
    const char* const wanted = std::getenv("VL_FAIL");
    const char* const number = wanted ? std::strchr(wanted, ':') : nullptr;
    if (!number) return;
    for (int kind = 0; kind < KINDS; ++kind)
        if (std::strncmp(wanted, kKinds[kind].name, std::strlen(kKinds[kind].name)) == 0)
            s_kind = static_cast<Kind>(kind);
    s_lasts = std::strchr(number, '+') != nullptr;
    s_left = std::atol(number + 1);
    s_armed = true;
}

bool Fails(Kind kind) {
    if (!s_armed || s_kind != kind || t_loading != 0) return false;
    const long left = --s_left;
    if (left > 0 || (left < 0 && !s_lasts)) return false;
    if (const char* const note = std::getenv("VL_FAIL_NOTE"); note && left == 0) {
        const long file = syscall(SYS_openat, AT_FDCWD, note, O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
        syscall(SYS_close, file);
    }
    errno = kKinds[kind].error;
    return true;
}

using Main = int(int, char**, char**);
Main* s_main = nullptr;

int ArmedMain(int count, char** arguments, char** environment) {
    Arm();
    return s_main(count, arguments, environment);
}

template <class... More>
void* Allocate(const char* operation, size_t size, More... more) {
    if (Fails(MEMORY)) throw std::bad_alloc();
    return Next<void*(size_t, More...)>(operation)(size, more...);
}

}  // namespace

#define EXPORTED __attribute__((visibility("default")))

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"
extern "C" {
EXPORTED int __libc_start_main(Main* main, int count, char** arguments, Main* init, void (*fini)(),
                               void (*loaderFini)(), void* stackEnd) {
    s_main = main;
    return Next<int(Main*, int, char**, Main*, void (*)(), void (*)(), void*)>("__libc_start_main")(
        ArmedMain, count, arguments, init, fini, loaderFini, stackEnd);
}
EXPORTED void* dlopen(const char* path, int flags) noexcept {
    ++t_loading;
    void* const library = Next<void*(const char*, int)>("dlopen")(path, flags);
    --t_loading;
    return library;
}
EXPORTED ssize_t read(int file, void* buffer, size_t size) {
    return Fails(READ) ? -1 : Next<ssize_t(int, void*, size_t)>("read")(file, buffer, size);
}
EXPORTED ssize_t pread(int file, void* buffer, size_t size, off_t place) {
    return Fails(READ) ? -1 : Next<ssize_t(int, void*, size_t, off_t)>("pread")(file, buffer, size, place);
}
EXPORTED ssize_t pread64(int file, void* buffer, size_t size, off64_t place) {
    return pread(file, buffer, size, place);
}
EXPORTED ssize_t write(int file, const void* buffer, size_t size) {
    return Fails(WRITE) ? -1 : Next<ssize_t(int, const void*, size_t)>("write")(file, buffer, size);
}
EXPORTED ssize_t pwrite(int file, const void* buffer, size_t size, off_t place) {
    return Fails(WRITE) ? -1
                        : Next<ssize_t(int, const void*, size_t, off_t)>("pwrite")(file, buffer, size, place);
}
EXPORTED ssize_t pwrite64(int file, const void* buffer, size_t size, off64_t place) {
    return pwrite(file, buffer, size, place);
}
EXPORTED int open(const char* path, int flags, ...) {
    std::va_list rest;
    va_start(rest, flags);
    const auto mode = va_arg(rest, mode_t);
    va_end(rest);
    return Fails(OPEN) ? -1 : Next<int(const char*, int, ...)>("open")(path, flags, mode);
}
EXPORTED int openat(int folder, const char* path, int flags, ...) {
    std::va_list rest;
    va_start(rest, flags);
    const auto mode = va_arg(rest, mode_t);
    va_end(rest);
    return Fails(OPEN) ? -1 : Next<int(int, const char*, int, ...)>("openat")(folder, path, flags, mode);
}
EXPORTED int open64(const char* path, int flags, ...) {
    std::va_list rest;
    va_start(rest, flags);
    const auto mode = va_arg(rest, mode_t);
    va_end(rest);
    return open(path, flags, mode);
}
EXPORTED int fsync(int file) { return Fails(FLUSH) ? -1 : Next<int(int)>("fsync")(file); }
EXPORTED int fdatasync(int file) { return Fails(FLUSH) ? -1 : Next<int(int)>("fdatasync")(file); }
EXPORTED int ftruncate(int file, off_t size) noexcept {
    return Fails(CUT) ? -1 : Next<int(int, off_t)>("ftruncate")(file, size);
}
EXPORTED int ftruncate64(int file, off64_t size) noexcept { return ftruncate(file, size); }
}
#pragma GCC diagnostic pop

EXPORTED void* operator new(size_t size) { return Allocate("_Znwm", size); }
EXPORTED void* operator new[](size_t size) { return Allocate("_Znam", size); }
EXPORTED void* operator new(size_t size, std::align_val_t align) {
    return Allocate("_ZnwmSt11align_val_t", size, align);
}
EXPORTED void* operator new(size_t size, const std::nothrow_t& none) noexcept {
    if (Fails(MEMORY)) return nullptr;
    return Next<void*(size_t, const std::nothrow_t&)>("_ZnwmRKSt9nothrow_t")(size, none);
}
EXPORTED void* operator new[](size_t size, const std::nothrow_t& none) noexcept {
    if (Fails(MEMORY)) return nullptr;
    return Next<void*(size_t, const std::nothrow_t&)>("_ZnamRKSt9nothrow_t")(size, none);
}
