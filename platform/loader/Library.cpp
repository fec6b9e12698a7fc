#include "platform/loader/Library.h"

#include "platform/base/LastError.h"
#include "platform/loader/posix/LoadedModule.h"
#include "platform/sync/ForkPass.h"

HMODULE LoadLibraryExA(const char* path, HANDLE file, DWORD flags) {
    if (!path || !*path || file || (flags & ~LOAD_WITH_ALTERED_SEARCH_PATH))
        return SetLastError(ERROR_INVALID_PARAMETER), nullptr;
    const ForkPass pass;  // a child would have half of the library
    const HMODULE module = LoadModule(path);
    if (!module) SetLastError(ERROR_MOD_NOT_FOUND);
    return module;
}

FARPROC GetProcAddress(HMODULE module, const char* name) {
    if (!IsLoadedModule(module)) return SetLastError(ERROR_MOD_NOT_FOUND), nullptr;
    void* const function = name ? FindOwnSymbol(module, name) : nullptr;
    if (!function) SetLastError(ERROR_PROC_NOT_FOUND);
    return reinterpret_cast<FARPROC>(function);
}

BOOL FreeLibrary(HMODULE module) {
    if (!IsLoadedModule(module)) return FailWith(ERROR_MOD_NOT_FOUND);
    const ForkPass pass;
    UnloadModule(module);
    return TRUE;
}
