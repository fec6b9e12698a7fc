#include "platform/loader/ModulePath.h"

#include <algorithm>

#include "platform/base/LastError.h"
#include "platform/base/Utf.h"
#include "platform/loader/ModuleTable.h"

DWORD GetModuleFileNameW(HMODULE module, WCHAR* buffer, DWORD size) {
    const auto path = ModuleTable::Instance().PathOf(module);
    if (!path || !buffer || size == 0) {
        SetLastError(path ? ERROR_INSUFFICIENT_BUFFER : ERROR_INVALID_HANDLE);
        return 0;
    }
    const std::u16string text = Utf::FromUtf8(*path);
    const size_t length = std::min<size_t>(text.size(), size - 1);
    text.copy(buffer, length);
    buffer[length] = 0;
    if (length == text.size()) return static_cast<DWORD>(length);
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return size;
}
