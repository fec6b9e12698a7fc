#include "platform/sync/NamedObjects.h"

#include <map>
#include <memory>
#include <string_view>

#include "platform/base/Border.h"
#include "platform/sync/ForkPass.h"

struct NamedObjects::Table {
    Mutex lock;
    std::map<std::string, NamedObject*, std::less<>> objects VL_GUARDED_BY(lock);

    HANDLE OpenLocked(std::string_view name, uint32_t kind) VL_REQUIRES(lock) {
        const auto found = objects.find(name);
        if (found == objects.end()) return SetLastError(ERROR_FILE_NOT_FOUND), nullptr;
        if (!found->second->Is(kind)) return SetLastError(ERROR_INVALID_HANDLE), nullptr;
        ++found->second->m_handles;
        return found->second->AsHandle();
    }
};

// One for the process, built by the first named object and gone after the last module that uses one.
NamedObjects::Table& NamedObjects::Instance() {
    const ForkPass pass;
    static Table table;
    return table;
}

HANDLE NamedObjects::CreateOrOpen(const char* name, uint32_t kind,
                                  const std::function<NamedObject*()>& make) {
    if (!name || !*name) {
        NamedObject* const object = make();
        return object ? object->AsHandle() : nullptr;
    }
    Table& table = Instance();
    const auto onThrow = [](bool) -> HANDLE { return SetLastError(ERROR_NOT_ENOUGH_MEMORY), nullptr; };
    return AtBorder(onThrow, [&]() -> HANDLE {
        const ProcessLock lock(table.lock);
        if (table.objects.contains(name)) {
            const HANDLE handle = table.OpenLocked(name, kind);
            if (handle) SetLastError(ERROR_ALREADY_EXISTS);
            return handle;
        }
        std::unique_ptr<NamedObject> object(make());
        if (!object) return nullptr;
        object->m_name = name;
        table.objects.emplace(name, object.get());
        SetLastError(ERROR_SUCCESS);
        return object.release()->AsHandle();
    });
}

HANDLE NamedObjects::Open(const char* name, uint32_t kind) {
    Table& table = Instance();
    const ProcessLock lock(table.lock);
    return table.OpenLocked(name ? name : "", kind);
}

bool NamedObjects::GiveUp(NamedObject& object) {
    Table& table = Instance();
    const ProcessLock lock(table.lock);
    if (--object.m_handles != 0) return false;
    table.objects.erase(object.m_name);
    return true;
}

void NamedObject::Close() {
    if (m_name.empty() || NamedObjects::GiveUp(*this)) delete this;
}
