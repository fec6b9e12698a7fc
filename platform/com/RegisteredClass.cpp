#include "platform/com/RegisteredClass.h"

#include <cstring>

#include "platform/base/GuidText.h"
#include "platform/registry/UniqueKey.h"

std::optional<std::string> FindRegisteredModule(const GUID& classId) {
    const std::string place = "CLSID\\" + BracedText(classId) + "\\InprocServer32";
    HKEY opened = nullptr;
    if (RegOpenKeyExA(HKEY_CLASSES_ROOT, place.c_str(), 0, KEY_READ, &opened) != 0) return std::nullopt;
    const UniqueKey key(opened);
    char path[4096];
    DWORD size = sizeof(path);
    if (RegQueryValueExA(key.get(), nullptr, nullptr, nullptr, reinterpret_cast<BYTE*>(path), &size) != 0)
        return std::nullopt;
    return std::string(path, strnlen(path, size));
}
