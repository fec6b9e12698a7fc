#include "platform/loader/ModulePath.h"

#include <algorithm>
#include <string>

#include "platform/base/LastError.h"
#include "platform/base/Utf.h"
#include "platform/loader/ModuleTable.h"

namespace {

template <class Text>
DWORD CopyOut(const Text& text, typename Text::value_type* buffer, DWORD size) {
    const size_t length = std::min<size_t>(text.size(), size - 1);
    text.copy(buffer, length);
    buffer[length] = 0;
    if (length == text.size()) return static_cast<DWORD>(length);
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return size;
}

// The bytes of the path as `convert` makes them.
template <class Unit, class Convert>
DWORD GetPath(HMODULE module, Unit* buffer, DWORD size, Convert convert) {
    const auto path = ModuleTable::Instance().PathOf(module);
    if (path && buffer && size != 0) return CopyOut(convert(*path), buffer, size);
    SetLastError(path ? ERROR_INSUFFICIENT_BUFFER : ERROR_INVALID_HANDLE);
    return 0;
}

}  // namespace

DWORD GetModuleFileNameW(HMODULE module, WCHAR* buffer, DWORD size) {
    return GetPath(module, buffer, size, Utf::FromUtf8);
}

DWORD GetModuleFileNameA(HMODULE module, char* buffer, DWORD size) {
    return GetPath(module, buffer, size, [](const std::string& path) { return path; });
}
