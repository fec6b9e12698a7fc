#include "AudioCodec/shell/Registration.h"

#include <cstdio>
#include <cstring>
#include <string>

#include "platform/registry/UniqueKey.h"

namespace {

constexpr const char* kEnumKey = R"(Software\Velto\TARNO\AudioCodec\Enum)";

std::string ClassPathKey(const GUID& clsid) {
    char braced[Registration::kBracedSize];
    Registration::FormatGuidBraced(clsid, braced);
    return std::string("TARNOCLSID\\") + braced;
}

// The digits of the braced form alone.
std::string FormatGuidPlain(const GUID& guid) {
    char braced[Registration::kBracedSize];
    Registration::FormatGuidBraced(guid, braced);
    std::string plain(braced);
    std::erase_if(plain, [](char c) { return std::strchr("{-}", c) != nullptr; });
    return plain;
}

// Null if it can't be had.
UniqueKey CreateKey(HKEY root, const std::string& path) {
    HKEY key = nullptr;
    RegCreateKeyExA(root, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
    return UniqueKey(key);
}

}  // namespace

void Registration::FormatGuidBraced(const GUID& guid, char* buffer) {
    const uint8_t* const d = guid.Data4;
    std::snprintf(buffer, kBracedSize, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", guid.Data1,
                  guid.Data2, guid.Data3, d[0], d[1], d[2], d[3], d[4], d[5], d[6], d[7]);
}

bool Registration::RegisterClassPath(const GUID& clsid, const char* path, bool inProcess) {
    if (!*path) return false;
    const UniqueKey key = CreateKey(HKEY_CLASSES_ROOT, ClassPathKey(clsid));
    if (!key) return false;
    // Without its terminator, as readers expect it.
    return RegSetValueExA(key.get(), inProcess ? "InProcServer" : "OutProcServer", 0, REG_SZ,
                          reinterpret_cast<const BYTE*>(path), static_cast<DWORD>(std::strlen(path))) == 0;
}

bool Registration::UnregisterClassPath(const GUID& clsid) {
    return RegDeleteKeyA(HKEY_CLASSES_ROOT, ClassPathKey(clsid).c_str()) == 0;
}

void Registration::RegisterCodec(const GUID& clsid, const char* path) {
    RegisterClassPath(clsid, path, true);
    CreateKey(HKEY_LOCAL_MACHINE, std::string(kEnumKey) + "\\" + FormatGuidPlain(clsid));
}

void Registration::UnregisterCodec(const GUID& clsid) {
    UnregisterClassPath(clsid);
    HKEY enumKey = nullptr;
    if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, kEnumKey, 0, KEY_ALL_ACCESS, &enumKey) != 0) return;
    const UniqueKey key(enumKey);
    RegDeleteKeyA(key.get(), FormatGuidPlain(clsid).c_str());
}
