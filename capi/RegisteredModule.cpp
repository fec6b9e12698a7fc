#include "capi/RegisteredModule.h"

#include "platform/registry/UniqueKey.h"

namespace {
constexpr const char* kClassKey = R"(TARNOCLSID\{16B5817D-48BF-4498-8D32-5EC4F75B0A3A})";
}  // namespace

LONG ReadRegisteredModule(std::string& path) {
    path.clear();
    HKEY opened = nullptr;
    if (const LONG error = RegOpenKeyExA(HKEY_CLASSES_ROOT, kClassKey, 0, KEY_QUERY_VALUE, &opened))
        return error;
    const UniqueKey key(opened);
    char text[4096];
    DWORD size = sizeof(text);
    const LONG error =
        RegQueryValueExA(key.get(), "InProcServer", nullptr, nullptr, reinterpret_cast<BYTE*>(text), &size);
    if (error == 0) path.assign(text, size);
    return error;
}
