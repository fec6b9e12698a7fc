#include "platform/loader/Library.h"

#include <dlfcn.h>

#include <bit>
#include <string>

#include "platform/base/CodePage1252.h"
#include "platform/base/LastError.h"
#include "platform/base/Utf.h"

namespace {

// The system's bytes for a path in the code page; empty if it can't be told.
std::string SystemPath(const char* path) {
    const int units = MultiByteToWideChar(CP_ACP, 0, path, -1, nullptr, 0);
    if (units <= 1) return {};
    std::u16string wide(static_cast<size_t>(units), u'\0');
    MultiByteToWideChar(CP_ACP, 0, path, -1, wide.data(), units);
    wide.pop_back();  // the terminator
    return Utf::ToUtf8(wide);
}

HMODULE FailToLoad(DWORD error) {
    SetLastError(error);
    return nullptr;
}

}  // namespace

HMODULE LoadLibraryExA(const char* path, HANDLE file, DWORD flags) {
    if (!path || file || (flags & ~LOAD_WITH_ALTERED_SEARCH_PATH)) return FailToLoad(ERROR_INVALID_PARAMETER);
    const std::string native = SystemPath(path);
    void* const module = native.empty() ? nullptr : dlopen(native.c_str(), RTLD_NOW | RTLD_LOCAL);
    return module ? module : FailToLoad(ERROR_MOD_NOT_FOUND);
}

FARPROC GetProcAddress(HMODULE module, const char* name) {
    void* const function = module ? dlsym(module, name) : nullptr;
    if (!function) SetLastError(ERROR_PROC_NOT_FOUND);
    return std::bit_cast<FARPROC>(function);
}

BOOL FreeLibrary(HMODULE module) {
    if (!module) return FailWith(ERROR_INVALID_HANDLE);
    return dlclose(module) == 0 ? TRUE : FailWith(ERROR_INVALID_HANDLE);
}
