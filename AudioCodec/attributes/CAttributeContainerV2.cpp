#include "AudioCodec/attributes/CAttributeContainerV2.h"

#include <cstdlib>
#include <limits>
#include <mutex>

#include "AudioCodec/attributes/AttributeIdText.h"
#include "AudioCodec/shell/object/Border.h"

using Guard = std::lock_guard<RecursiveLock>;

CAttributeContainerV2::~CAttributeContainerV2() {
    // An object that goes may call back: with a reference to itself the store isn't ended a second time, and
    // from here on nothing is hung up that the members' own end would find.
    ++m_refCount;
    m_isGoing = true;
    CAttributeContainerV2::Clear();
}

Result CAttributeContainerV2::QueryInterface(const GUID* iid, void** object) {
    if (!object) return RESULT_BAD_ARGUMENT;
    *object = nullptr;
    if (!iid || !(*iid == IID_IBase || *iid == IID_IAttributeContainer64 || *iid == IID_IStoreAlias))
        return RESULT_NOT_FOUND;
    AddRef();
    *object = this;
    return RESULT_OK;
}

uint32_t CAttributeContainerV2::AddRef() {
    const Guard guard(m_lock);
    return ++m_refCount;
}

uint32_t CAttributeContainerV2::Release() {
    uint32_t count = 0;
    {
        const Guard guard(m_lock);
        count = --m_refCount;
    }
    // After the lock, not under it: a lock that is held must not be destroyed. Who dropped the last
    // reference is alone here.
    if (count == 0) delete this;
    return count;
}

void* CAttributeContainerV2::Alloc(uint32_t size) {
    const Guard guard(m_lock);
    return std::malloc(size);
}

void CAttributeContainerV2::Free(void* block) {
    const Guard guard(m_lock);
    std::free(block);
}

uint32_t CAttributeContainerV2::GetAttributeCount() {
    const Guard guard(m_lock);
    return static_cast<uint32_t>(m_attributes.size());
}

Result CAttributeContainerV2::GetAttributeByIndex(uint32_t index, uint32_t* id, uint32_t* type) {
    const Guard guard(m_lock);
    if (!id || !type || index >= m_attributes.size()) return RESULT_BAD_ARGUMENT;
    const AttributeValue& record = *m_asked.Find(m_attributes, index)->second;
    *id = record.GetId();
    *type = record.GetType();
    return RESULT_OK;
}

const char* CAttributeContainerV2::GetAttributeIdText(uint32_t id) {
    const Guard guard(m_lock);
    return AttributeIdText(id);
}

void CAttributeContainerV2::Clear() {
    const Guard guard(m_lock);
    m_attributes.clear();
    m_asked.Forget();
    m_found.isKnown = false;
    // Taken out first, since an object that goes may call back into this store.
    Holders holders;
    holders.swap(m_interfaces);
    for (auto& holder : holders) holder.reset();  // oldest first
}

AttributeValue* CAttributeContainerV2::Find(uint32_t id) const {
    const auto found = m_attributes.find(id);
    return found == m_attributes.end() ? nullptr : found->second.get();
}

// Writing: every setter comes through here, and the table of store types tells where they differ.

Result CAttributeContainerV2::Store(uint32_t id, uint32_t type, const void* source, uint32_t count) {
    const Guard guard(m_lock);
    return AtBorder(RESULT_NO_MEMORY, [&] {
        AttributeValue* record = Find(id);
        if (!record) {
            // The record comes before its entry, so that no entry is ever without one.
            m_asked.Forget();
            m_attributes.emplace(id, std::make_unique<AttributeValue>(id, type, source, count));
            return RESULT_OK;
        }
        if (record->GetType() == type) {
            record->Assign(id, type, source, count);
            return RESULT_OK;
        }
        const OnOtherType rule = FindStoreType(type)->onOtherType;
        if (rule == OnOtherType::CountOnly) record->SetChangeCount(record->GetChangeCount() + 1);
        return rule == OnOtherType::Refuse ? RESULT_FAILED : RESULT_OK;
    });
}

Result CAttributeContainerV2::SetLong(uint32_t id, uint32_t value) {
    return Store(id, STORE_LONG, &value, 0);
}
Result CAttributeContainerV2::SetBool(uint32_t id, uint8_t value) { return Store(id, STORE_BOOL, &value, 0); }
Result CAttributeContainerV2::SetLong64(uint32_t id, uint64_t value) {
    return Store(id, STORE_LONG64, &value, 0);
}
Result CAttributeContainerV2::SetPointer(uint32_t id, void* value) {
    return Store(id, STORE_POINTER, &value, 0);
}
Result CAttributeContainerV2::SetString(uint32_t id, const char16_t* text) {
    return Store(id, STORE_STRING, text, 0);
}
Result CAttributeContainerV2::SetLongArray(uint32_t id, const uint32_t* values, uint32_t count) {
    return Store(id, STORE_LONG_ARRAY, values, count);
}
Result CAttributeContainerV2::SetLong64Array(uint32_t id, const uint64_t* values, uint32_t count) {
    return Store(id, STORE_LONG64_ARRAY, values, count);
}
Result CAttributeContainerV2::SetPointerArray(uint32_t id, void* const* values, uint32_t count) {
    return Store(id, STORE_POINTER_ARRAY, values, count);
}
Result CAttributeContainerV2::SetData(uint32_t id, const uint8_t* block, uint32_t size) {
    if (!block && size != 0) return RESULT_BAD_ARGUMENT;
    return Store(id, STORE_DATA, block, size);
}

// Change counts.

uint32_t CAttributeContainerV2::GetChangeCount(uint32_t id) {
    const Guard guard(m_lock);
    const AttributeValue* record = Find(id);
    return record ? record->GetChangeCount() : 0;
}

uint32_t CAttributeContainerV2::SetChangeCount(uint32_t id, uint32_t count) {
    const Guard guard(m_lock);
    AttributeValue* record = Find(id);
    return record ? record->SetChangeCount(count) : 0;
}
