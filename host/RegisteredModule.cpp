#include "host/RegisteredModule.h"

#include "platform/registry/UniqueKey.h"

namespace {
constexpr const char* kClassKey = R"(TARNOCLSID\{16B5817D-48BF-4498-8D32-5EC4F75B0A3A})";
}  // namespace

std::string RegisteredModule() {
    HKEY opened = nullptr;
    if (RegOpenKeyExA(HKEY_CLASSES_ROOT, kClassKey, 0, KEY_QUERY_VALUE, &opened) != 0) return {};
    const UniqueKey key(opened);
    char path[4096];
    DWORD size = sizeof(path);
    if (RegQueryValueExA(key.get(), "InProcServer", nullptr, nullptr, reinterpret_cast<BYTE*>(path), &size) !=
        0)
        return {};
    return {path, size};
}
