#include "AudioCodec/shell/Registration.h"

#include <cstring>
#include <string>

#include "platform/base/GuidText.h"
#include "platform/base/LastError.h"
#include "platform/registry/RegistryTransaction.h"
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

LONG CreateKey(HKEY root, const std::string& path, UniqueKey& key) {
    HKEY opened = nullptr;
    const LONG error =
        RegCreateKeyExA(root, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &opened, nullptr);
    key.reset(opened);
    return error;
}

LONG WriteClassPath(const GUID& clsid, const char* path, bool inProcess) {
    if (!*path) return ERROR_BAD_PATHNAME;
    UniqueKey key;
    if (const LONG error = CreateKey(HKEY_CLASSES_ROOT, ClassPathKey(clsid), key)) return error;
    // Without its terminator, as readers expect it.
    return RegSetValueExA(key.get(), inProcess ? "InProcServer" : "OutProcServer", 0, REG_SZ,
                          reinterpret_cast<const BYTE*>(path), static_cast<DWORD>(std::strlen(path)));
}

LONG DeleteClassPath(const GUID& clsid) {
    return RegDeleteKeyA(HKEY_CLASSES_ROOT, ClassPathKey(clsid).c_str());
}

LONG DeleteEntry(const GUID& clsid) {
    HKEY opened = nullptr;
    if (const LONG error = RegOpenKeyExA(HKEY_LOCAL_MACHINE, kEnumKey, 0, KEY_ALL_ACCESS, &opened))
        return error;
    const UniqueKey key(opened);
    return RegDeleteKeyA(key.get(), FormatGuidPlain(clsid).c_str());
}

// What isn't there needs no deleting.
LONG Gone(LONG error) { return static_cast<DWORD>(error) == ERROR_FILE_NOT_FOUND ? 0 : error; }

}  // namespace

bool Registration::RegisterClassPath(const GUID& clsid, const char* path, bool inProcess) {
    RegistryTransaction transaction;
    if (transaction.Begun() != 0) return false;
    return transaction.End(WriteClassPath(clsid, path, inProcess)) == 0;
}

bool Registration::UnregisterClassPath(const GUID& clsid) { return DeleteClassPath(clsid) == 0; }

void Registration::RegisterCodec(const GUID& clsid, const char* path) {
    RegistryTransaction transaction;
    LONG error = transaction.Begun();
    if (error == 0) error = WriteClassPath(clsid, path, true);
    UniqueKey entry;
    if (error == 0)
        error = CreateKey(HKEY_LOCAL_MACHINE, std::string(kEnumKey) + "\\" + FormatGuidPlain(clsid), entry);
    transaction.End(error);
}

void Registration::UnregisterCodec(const GUID& clsid) {
    RegistryTransaction transaction;
    LONG error = transaction.Begun();
    if (error == 0) error = Gone(DeleteClassPath(clsid));
    if (error == 0) error = Gone(DeleteEntry(clsid));
    transaction.End(error);
}
