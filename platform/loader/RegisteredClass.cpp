#include "platform/loader/RegisteredClass.h"

#include <algorithm>
#include <cstdio>

#include "platform/base/LastError.h"
#include "platform/registry/Registry.h"

namespace {

constexpr DWORD kPathRoom = 4096;  // bytes

std::string KeyOfClass(const GUID& id) {
    char text[80];
    std::snprintf(text, sizeof text,
                  "CLSID\\{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}\\InprocServer32", id.Data1,
                  unsigned{id.Data2}, unsigned{id.Data3}, unsigned{id.Data4[0]}, unsigned{id.Data4[1]},
                  unsigned{id.Data4[2]}, unsigned{id.Data4[3]}, unsigned{id.Data4[4]}, unsigned{id.Data4[5]},
                  unsigned{id.Data4[6]}, unsigned{id.Data4[7]});
    return text;
}

}  // namespace

std::optional<std::string> FindRegisteredModule(const GUID& classId) {
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_CLASSES_ROOT, KeyOfClass(classId).c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
        return std::nullopt;
    std::string path(kPathRoom, '\0');
    DWORD size = kPathRoom;
    const LONG read =
        RegQueryValueExA(key, nullptr, nullptr, nullptr, reinterpret_cast<BYTE*>(path.data()), &size);
    RegCloseKey(key);
    if (read != ERROR_SUCCESS) return std::nullopt;
    path.resize(std::min<size_t>(size, path.find('\0')));
    return path;
}
