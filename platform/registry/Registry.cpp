#include "platform/registry/Registry.h"

#include <memory>
#include <string>
#include <string_view>

#include "platform/base/Border.h"
#include "platform/base/LastError.h"
#include "platform/registry/RegistryFile.h"
#include "platform/sync/ForkPass.h"

namespace {

struct OpenKey {
    std::shared_ptr<RegistryStore> store;
    RegistryStore::Key key = 0;
    REGSAM rights = 0;
};

struct Root {
    HKEY handle;
    RegistryStore::Key key;
};
const Root kRoots[] = {{HKEY_CLASSES_ROOT, RegistryStore::kClassesRoot},
                       {HKEY_LOCAL_MACHINE, RegistryStore::kLocalMachine}};

constexpr REGSAM kReadRights = KEY_READ;
constexpr bool Writes(REGSAM rights) { return (rights & ~kReadRights) != 0; }

const Root* FindRoot(HKEY handle) {
    for (const Root& root : kRoots)
        if (root.handle == handle) return &root;
    return nullptr;
}

// The key behind a handle if it has the rights; a root has all that its file gives.
DWORD Resolve(HKEY handle, REGSAM rights, OpenKey& key) {
    if (const Root* const root = FindRoot(handle)) {
        std::unique_ptr<RegistryStore> store;
        const DWORD error = OpenRegistry(Writes(rights), store);
        key = {std::move(store), root->key, KEY_ALL_ACCESS};
        return error;
    }
    if (!handle) return ERROR_INVALID_HANDLE;
    key = *reinterpret_cast<const OpenKey*>(handle);
    return (key.rights & rights) == rights ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
}

bool IsGoodPath(std::string_view path) {
    return path.empty() ||
           (path.front() != '\\' && path.back() != '\\' && path.find("\\\\") == std::string_view::npos);
}

HKEY HandleOf(OpenKey key) { return reinterpret_cast<HKEY>(new OpenKey(std::move(key))); }

// What is thrown beside a lack of memory comes of a file's name.
constexpr DWORD ErrorOfThrow(bool noMemory) { return noMemory ? ERROR_NOT_ENOUGH_MEMORY : ERROR_GEN_FAILURE; }

template <class Work>
LONG Answer(Work work) {
    const ForkPass pass;  // the database has locks of its own, which a child must not find taken
    return static_cast<LONG>(AtBorder(ErrorOfThrow, work));
}

}  // namespace

LONG RegCreateKeyExA(HKEY key, const char* path, DWORD reserved, char* classText, DWORD options,
                     REGSAM rights, SECURITY_ATTRIBUTES* security, HKEY* opened, DWORD* disposition) {
    return Answer([&] {
        if (!path || reserved != 0 || classText || options != 0 || security || !opened)
            return ERROR_INVALID_PARAMETER;
        if (!IsGoodPath(path)) return ERROR_BAD_PATHNAME;
        OpenKey from;
        if (const DWORD error = Resolve(key, KEY_CREATE_SUB_KEY, from)) return error;
        bool created = false;
        if (const DWORD error = from.store->CreateKey(from.key, path, from.key, created)) return error;
        from.rights = rights;
        *opened = HandleOf(std::move(from));
        if (disposition) *disposition = created ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
        return ERROR_SUCCESS;
    });
}

LONG RegOpenKeyExA(HKEY key, const char* path, DWORD options, REGSAM rights, HKEY* opened) {
    return Answer([&] {
        if (options != 0 || !opened) return ERROR_INVALID_PARAMETER;
        const std::string_view names = path ? path : "";
        if (!IsGoodPath(names)) return ERROR_BAD_PATHNAME;
        OpenKey from;
        if (const DWORD error = Resolve(key, rights, from)) return error;
        if (const DWORD error = from.store->FindKey(from.key, names, from.key)) return error;
        from.rights = rights;
        *opened = HandleOf(std::move(from));
        return ERROR_SUCCESS;
    });
}

LONG RegDeleteKeyA(HKEY key, const char* path) {
    return Answer([&] {
        if (!path || !*path) return ERROR_INVALID_PARAMETER;
        if (!IsGoodPath(path)) return ERROR_BAD_PATHNAME;
        OpenKey from;
        if (const DWORD error = Resolve(key, KEY_CREATE_SUB_KEY, from)) return error;
        return from.store->DeleteKey(from.key, path);
    });
}

LONG RegSetValueExA(HKEY key, const char* name, DWORD reserved, DWORD type, const BYTE* data, DWORD size) {
    return Answer([&] {
        if (reserved != 0 || type != REG_SZ || (!data && size != 0)) return ERROR_INVALID_PARAMETER;
        OpenKey open;
        if (const DWORD error = Resolve(key, KEY_SET_VALUE, open)) return error;
        return open.store->SetValue(open.key, name ? name : "", type,
                                    {reinterpret_cast<const char*>(data), size});
    });
}

LONG RegQueryValueExA(HKEY key, const char* name, DWORD* reserved, DWORD* type, BYTE* data, DWORD* size) {
    return Answer([&] {
        if (reserved || (data && !size)) return ERROR_INVALID_PARAMETER;
        OpenKey open;
        if (const DWORD error = Resolve(key, KEY_QUERY_VALUE, open)) return error;
        DWORD found = 0;
        std::string value;
        if (const DWORD error = open.store->GetValue(open.key, name ? name : "", found, value)) return error;
        const DWORD room = size ? *size : 0;
        if (type) *type = found;
        if (size) *size = static_cast<DWORD>(value.size());
        if (data && room < value.size()) return ERROR_MORE_DATA;
        if (data) value.copy(reinterpret_cast<char*>(data), value.size());
        return ERROR_SUCCESS;
    });
}

LONG RegCloseKey(HKEY key) {
    if (!key) return static_cast<LONG>(ERROR_INVALID_HANDLE);
    const ForkPass pass;
    if (!FindRoot(key)) delete reinterpret_cast<OpenKey*>(key);
    return static_cast<LONG>(ERROR_SUCCESS);
}
