#include "platform/com/RegisteredClass.h"

#include <cstdio>
#include <cstring>

#include "platform/registry/UniqueKey.h"

namespace {

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
    HKEY opened = nullptr;
    if (RegOpenKeyExA(HKEY_CLASSES_ROOT, KeyOfClass(classId).c_str(), 0, KEY_READ, &opened) != 0)
        return std::nullopt;
    const UniqueKey key(opened);
    char path[4096];
    DWORD size = sizeof(path);
    if (RegQueryValueExA(key.get(), nullptr, nullptr, nullptr, reinterpret_cast<BYTE*>(path), &size) != 0)
        return std::nullopt;
    return std::string(path, strnlen(path, size));
}
