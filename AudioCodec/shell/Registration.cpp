#include "AudioCodec/shell/Registration.h"

#include <cstring>
#include <string>

#include "platform/base/GuidText.h"
#include "platform/registry/UniqueKey.h"

namespace {

constexpr const char* kEnumKey = R"(Software\Velto\TARNO\AudioCodec\Enum)";

std::string ClassPathKey(const GUID& clsid) { return "TARNOCLSID\\" + BracedText(clsid); }

// The digits of the braced form alone.
std::string FormatGuidPlain(const GUID& guid) {
    std::string plain = BracedText(guid);
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
