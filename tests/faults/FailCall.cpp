// Preloaded into a program, lets one call of it fail, or that call and all of its kind after it. The
// environment says which: VL_FAIL=KIND:N[+] (the N-th from the start of main, from 1; "+": those after it
// too), KIND one of the table below. The file VL_FAIL_NOTE comes into being when the call has failed. What
// the loader does inside a dlopen goes through.
//
// A program that wants allocations inside a dlopen to fail too finds VlFailMemory and VlMemoryHasFailed by
// name.
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
std::atomic<bool> s_alsoLoading = false;
std::atomic<bool> s_sanitized = false;
// Found without a call: where the system would have to make room for them first, it calls malloc.
[[gnu::tls_model("initial-exec")]] thread_local int t_loading = 0;
[[gnu::tls_model("initial-exec")]] thread_local bool t_inNew = false;  // counted already

template <class Function>
Function* Next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}
// Looked up once, before main: the loader calls these while it works on an error, which dlsym would change.
struct Heap {
    void* (*malloc)(size_t) = Next<void*(size_t)>("malloc");
    void* (*calloc)(size_t, size_t) = Next<void*(size_t, size_t)>("calloc");
    void* (*realloc)(void*, size_t) = Next<void*(void*, size_t)>("realloc");
    int (*align)(void**, size_t, size_t) = Next<int(void**, size_t, size_t)>("posix_memalign");
};
const Heap& NextHeap() {
    static const Heap s_heap;
    return s_heap;
}

void LookForSanitizer() { s_sanitized = dlsym(RTLD_DEFAULT, "__asan_init") != nullptr; }

void Arm() {
    LookForSanitizer();
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
    if (!s_armed || s_kind != kind || t_inNew || (t_loading != 0 && !s_alsoLoading)) return false;
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

// C++'s operators may come to C's functions in the end, or not.
template <class... More>
void* New(const char* operation, size_t size, More... more) {
    t_inNew = true;
    void* const memory = Next<void*(size_t, More...)>(operation)(size, more...);
    t_inNew = false;
    return memory;
}
// Of C's own functions. A sanitizer uses those itself, and ends the process where it gets no memory.
bool CFails() { return !s_sanitized && Fails(MEMORY); }

template <class... More>
void* NewOrThrow(const char* operation, size_t size, More... more) {
    if (Fails(MEMORY)) throw std::bad_alloc();
    return New(operation, size, more...);
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

EXPORTED void* malloc(size_t size) noexcept { return CFails() ? nullptr : NextHeap().malloc(size); }
EXPORTED void* calloc(size_t count, size_t size) noexcept {
    return CFails() ? nullptr : NextHeap().calloc(count, size);
}
EXPORTED void* realloc(void* memory, size_t size) noexcept {
    return CFails() ? nullptr : NextHeap().realloc(memory, size);
}
EXPORTED int posix_memalign(void** memory, size_t align, size_t size) noexcept {
    return CFails() ? ENOMEM : NextHeap().align(memory, align, size);
}

// The `from`-th allocation from here on, from 1, or all from it on; 0: none any more.
EXPORTED void VlFailMemory(long from, bool lasts) {
    s_armed = false;
    LookForSanitizer();
    s_kind = MEMORY;
    s_lasts = lasts;
    s_left = from;
    s_alsoLoading = true;
    s_armed = from > 0;
}
// Since then.
EXPORTED bool VlMemoryHasFailed() { return s_left <= 0; }
}
#pragma GCC diagnostic pop

EXPORTED void* operator new(size_t size) { return NewOrThrow("_Znwm", size); }
EXPORTED void* operator new[](size_t size) { return NewOrThrow("_Znam", size); }
EXPORTED void* operator new(size_t size, std::align_val_t align) {
    return NewOrThrow("_ZnwmSt11align_val_t", size, align);
}
EXPORTED void* operator new(size_t size, const std::nothrow_t& none) noexcept {
    return Fails(MEMORY) ? nullptr : New<const std::nothrow_t&>("_ZnwmRKSt9nothrow_t", size, none);
}
EXPORTED void* operator new[](size_t size, const std::nothrow_t& none) noexcept {
    return Fails(MEMORY) ? nullptr : New<const std::nothrow_t&>("_ZnamRKSt9nothrow_t", size, none);
}
