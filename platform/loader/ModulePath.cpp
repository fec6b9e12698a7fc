#include "platform/loader/ModulePath.h"

#include <algorithm>

#include "platform/base/Border.h"
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

// What `convert` makes of the module's place.
template <class Unit, class Convert>
DWORD GetPath(HMODULE module, Unit* buffer, DWORD size, Convert convert) {
    const auto fail = [](DWORD error) { return SetLastError(error), DWORD{0}; };
    return AtBorder([&](bool) { return fail(ERROR_NOT_ENOUGH_MEMORY); },
                    [&] {
                        const auto place = ModuleTable::Instance().Find(module);
                        if (place && buffer && size != 0) return CopyOut(convert(*place), buffer, size);
                        return fail(place ? ERROR_INSUFFICIENT_BUFFER : ERROR_INVALID_HANDLE);
                    });
}

}  // namespace

DWORD GetModuleFileNameW(HMODULE module, WCHAR* buffer, DWORD size) {
    return GetPath(module, buffer, size, [](const LoadedModule& place) { return Utf::FromUtf8(place.path); });
}

DWORD VlGetModuleFolder(HMODULE module, WCHAR* buffer, DWORD size) {
    return GetPath(module, buffer, size,
                   [](const LoadedModule& place) { return Utf::FromUtf8(place.folder); });
}

DWORD GetModuleFileNameA(HMODULE module, char* buffer, DWORD size) {
    return GetPath(module, buffer, size, [](const LoadedModule& place) { return place.path; });
}
