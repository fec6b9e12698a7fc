#include "AudioCodec/shell/object/InterfaceTable.h"

#include "platform/base/Types.h"

namespace {
Result GiveInterface(IBase* object, const InterfaceTableEntry& entry, void** receiver) {
    void* address = reinterpret_cast<uint8_t*>(object) + entry.offset;
    static_cast<IBase*>(address)->AddRef();
    *receiver = address;
    return RESULT_OK;
}
}  // namespace

Result FindInterfaceEntry(IBase* object, const InterfaceTableEntry* table, const GUID* iid, void** receiver) {
    if (!receiver) return E_POINTER;
    *receiver = nullptr;
    if (!iid) return E_POINTER;
    if (*iid == IID_IBase) return GiveInterface(object, *table, receiver);
    for (const InterfaceTableEntry* entry = table; entry->iid; ++entry) {
        if (*entry->iid == *iid) return GiveInterface(object, *entry, receiver);
    }
    return E_NOINTERFACE;
}
