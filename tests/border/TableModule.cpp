// A module of the suite as the table of the process knows them. Built with a clean-up, with one that adds its
// module to the table once more, and without one. Each also has a class for the registry.
#include <utility>

#include "platform/base/UniqueHandle.h"
#include "platform/file/FileMapping.h"
#include "platform/loader/ModuleEntry.h"
#include "platform/media/ClassObject.h"
#include "tests/support/ModuleLog.h"

#define TABLE_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

HMODULE s_instance = nullptr;

BOOL Entry(HMODULE instance, DWORD, void*) {
    s_instance = instance;
    return TRUE;
}

struct TableObject final : ComObject<IUnknown> {
    HRESULT QueryInterface(const GUID& iid, void** object) override {
        return GiveFace({{IID_IUnknown, this}}, iid, object);
    }
};

}  // namespace

TABLE_EXPORT HRESULT DllGetClassObject(const GUID& classId, const GUID& iid, void** factory) {
    return GetClassObject({{kTableClass, MakeInstance<TableObject>}}, classId, iid, factory);
}

// Writes the module into the table, at `place`. False if there is no table.
TABLE_EXPORT bool TableEnter(uint64_t place) {
    const UniqueHandle mapping(OpenFileMappingA(FILE_MAP_ALL_ACCESS, FALSE, TableMappingName().c_str()));
    void* const view = mapping ? MapViewOfFile(mapping.get(), FILE_MAP_ALL_ACCESS, 0, 0, 0) : nullptr;
    if (!view) return false;
    auto* const words = static_cast<uint64_t*>(view);
    words[place] = reinterpret_cast<uintptr_t>(s_instance);
    words[0] = words[0] < place ? place : words[0];
    return UnmapViewOfFile(view) != FALSE;
}

#ifdef VL_TABLE_NAME
// Called once, by the clean-up.
extern "C" {
__attribute__((visibility("default"))) void (*TableHook)() = nullptr;
}
TABLE_EXPORT void DllVlCleanUpBeforeUnload(void* reserved, uint8_t flag) {
    RecordEvent(VL_TABLE_NAME + std::string(reserved ? " pointer" : "") + " " + std::to_string(flag));
    if (TableHook) std::exchange(TableHook, nullptr)();
#ifdef VL_TABLE_ADDS_AT
    static bool s_added = false;
    if (!s_added) s_added = TableEnter(VL_TABLE_ADDS_AT);
#endif
}
#endif

namespace {
const ModuleEntryNotifier s_entry(&Entry);
}  // namespace
