#include "platform/registry/Registry.h"

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/base/Border.h"
#include "platform/base/LastError.h"
#include "platform/registry/RegistryFile.h"
#include "platform/registry/RegistryPlaces.h"
#include "platform/registry/RegistryTransaction.h"
#include "platform/registry/ThreadTransaction.h"
#include "platform/sync/ForkPass.h"

namespace {

// A key in one registry.
struct Place {
    std::shared_ptr<RegistryStore> store;
    RegistryStore::Key key = 0;
};

// A key in all the registries that have it, the one that counts first at the front. With rights to change it,
// the one that is changed alone.
struct OpenKey {
    std::vector<Place> places;
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

constexpr bool IsMissing(DWORD error) {
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

// What `find` makes of each, for as long as others are only missing: what lies under a registry that can't be
// read isn't shown in its place.
template <class From, class Find>
DWORD Gather(const std::vector<From>& from, Find find, std::vector<Place>& places) {
    std::vector<Place> found;
    DWORD error = ERROR_FILE_NOT_FOUND;
    for (const From& each : from) {
        Place place;
        error = find(each, place);
        if (error == ERROR_SUCCESS) {
            found.push_back(std::move(place));
        } else if (!IsMissing(error)) {
            break;
        }
    }
    places = std::move(found);
    return places.empty() ? error : ERROR_SUCCESS;
}

// The one registry in which the calling thread changes things.
DWORD OpenOwn(RegistryAccess access, std::shared_ptr<RegistryStore>& store) {
    if (ThreadTransaction* const whole = ThreadTransaction::Current()) return whole->Open(access, store);
    return OpenRegistry(FindRegistry(VL_REGISTRY_USER), VL_REGISTRY_USER, access, store);
}

// A root in the registries that it stands for.
DWORD OpenRoot(RegistryStore::Key root, RegistryAccess access, std::vector<Place>& places) {
    if (access != RegistryAccess::Read || ThreadTransaction::Current()) {
        places = {{nullptr, root}};
        return OpenOwn(access, places.front().store);
    }
    const auto open = [&](const std::string& file, Place& place) {
        place.key = root;
        return OpenRegistry(file, VL_REGISTRY_USER, access, place.store);
    };
    return Gather(ListRegistries(), open, places);
}

// The key behind a handle if it has the rights; a root has all that its file gives.
DWORD Resolve(HKEY handle, REGSAM rights, OpenKey& key, RegistryAccess toWrite = RegistryAccess::Change) {
    if (const Root* const root = FindRoot(handle)) {
        key.rights = KEY_ALL_ACCESS;
        return OpenRoot(root->key, Writes(rights) ? toWrite : RegistryAccess::Read, key.places);
    }
    if (!handle) return ERROR_INVALID_HANDLE;
    key = *reinterpret_cast<const OpenKey*>(handle);
    return (key.rights & rights) == rights ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
}

// Steps down to a key, in all registries that have it.
DWORD StepTo(std::string_view path, std::vector<Place>& places) {
    const auto find = [&](const Place& from, Place& place) {
        place.store = from.store;
        return place.store->FindKey(from.key, path, place.key);
    };
    return Gather(places, find, places);
}

DWORD FindValue(const std::vector<Place>& places, std::string_view name, DWORD& type, std::string& value) {
    DWORD error = ERROR_FILE_NOT_FOUND;
    for (const Place& place : places) {
        error = place.store->GetValue(place.key, name, type, value);
        if (error != ERROR_FILE_NOT_FOUND) break;
    }
    return error;
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
        if (const DWORD error = Resolve(key, KEY_CREATE_SUB_KEY, from, RegistryAccess::Create)) return error;
        bool created = false;
        Place& own = from.places.front();
        if (const DWORD error = own.store->CreateKey(own.key, path, own.key, created)) return error;
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
        if (const DWORD error = StepTo(names, from.places)) return error;
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
        const Place& own = from.places.front();
        return own.store->DeleteKey(own.key, path);
    });
}

LONG RegSetValueExA(HKEY key, const char* name, DWORD reserved, DWORD type, const BYTE* data, DWORD size) {
    return Answer([&] {
        if (reserved != 0 || type != REG_SZ || (!data && size != 0)) return ERROR_INVALID_PARAMETER;
        OpenKey open;
        if (const DWORD error = Resolve(key, KEY_SET_VALUE, open)) return error;
        const Place& own = open.places.front();
        return own.store->SetValue(own.key, name ? name : "", type,
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
        const DWORD error = FindValue(open.places, name ? name : "", found, value);
        if (error != ERROR_SUCCESS) return error;
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
