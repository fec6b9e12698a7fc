// CAttributeContainerV2: reading. What is handed out is a copy that the caller owns.
#include <cstring>
#include <limits>
#include <mutex>

#include "AudioCodec/attributes/CAttributeContainerV2.h"

using Guard = std::lock_guard<RecursiveLock>;

uint32_t CAttributeContainerV2::GetLong(uint32_t id) {
    const Guard guard(m_lock);
    const AttributeValue* record = Find(id);
    return record ? record->GetLong() : 0;
}

bool CAttributeContainerV2::GetBool(uint32_t id) {
    const Guard guard(m_lock);
    const AttributeValue* record = Find(id);
    return record && record->GetBool();
}

uint64_t CAttributeContainerV2::GetLong64(uint32_t id) {
    const Guard guard(m_lock);
    const AttributeValue* record = Find(id);
    return record ? record->GetLong64() : 0;
}

Result CAttributeContainerV2::GetPointer(uint32_t id, void** value) {
    const Guard guard(m_lock);
    const AttributeValue* record = Find(id);
    if (!value || !record) return RESULT_BAD_ARGUMENT;
    if (record->GetType() != STORE_POINTER) return RESULT_FAILED;
    *value = record->GetPointer();
    return RESULT_OK;
}

// Under the lock. RESULT_NO_MEMORY also for more bytes than Alloc can be asked for; nothing is written then.
template <class T>
Result CAttributeContainerV2::HandOut(const T* source, uint64_t bytes, T** copy) {
    if (bytes > std::numeric_limits<uint32_t>::max()) return RESULT_NO_MEMORY;
    void* block = Alloc(static_cast<uint32_t>(bytes));
    if (!block) return RESULT_NO_MEMORY;
    std::memcpy(block, source, bytes);
    *copy = static_cast<T*>(block);
    return RESULT_OK;
}

template <class T>
Result CAttributeContainerV2::GetArray(uint32_t id, uint32_t type, ArrayOf<T> array, CountOf arrayCount,
                                       T** values, uint32_t* count) {
    const Guard guard(m_lock);
    if (!values || !count) return RESULT_BAD_ARGUMENT;
    const AttributeValue* record = Find(id);
    if (!record) return RESULT_OK;
    if (record->GetType() != type) return RESULT_FAILED;
    const uint32_t elements = (record->*arrayCount)();
    if (elements != 0) {
        const Result result = HandOut((record->*array)(), uint64_t{elements} * sizeof(T), values);
        if (result != RESULT_OK) return result;
    }
    *count = elements;
    return RESULT_OK;
}

Result CAttributeContainerV2::GetLongArray(uint32_t id, uint32_t** values, uint32_t* count) {
    return GetArray(id, STORE_LONG_ARRAY, &AttributeValue::GetLongArray, &AttributeValue::GetLongArrayCount,
                    values, count);
}

Result CAttributeContainerV2::GetLong64Array(uint32_t id, uint64_t** values, uint32_t* count) {
    return GetArray(id, STORE_LONG64_ARRAY, &AttributeValue::GetLong64Array,
                    &AttributeValue::GetLong64ArrayCount, values, count);
}

Result CAttributeContainerV2::GetPointerArray(uint32_t id, void*** values, uint32_t* count) {
    return GetArray(id, STORE_POINTER_ARRAY, &AttributeValue::GetPointerArray,
                    &AttributeValue::GetPointerArrayCount, values, count);
}

Result CAttributeContainerV2::GetData(uint32_t id, uint8_t** block, uint32_t* size) {
    const Guard guard(m_lock);
    if (!block || !size) return RESULT_BAD_ARGUMENT;
    const AttributeValue* record = Find(id);
    if (!record) return RESULT_OK;
    if (record->GetType() != STORE_DATA) return RESULT_FAILED;
    const uint32_t bytes = record->GetDataSize();
    if (bytes == 0) return RESULT_OK;
    const Result result = HandOut(record->GetData(), bytes, block);
    if (result == RESULT_OK) *size = bytes;
    return result;
}

Result CAttributeContainerV2::GetString(uint32_t id, char16_t** text) {
    const Guard guard(m_lock);
    const AttributeValue* record = Find(id);
    if (!text || !record) return RESULT_BAD_ARGUMENT;
    if (record->GetType() != STORE_STRING) return RESULT_FAILED;
    const char16_t* stored = record->GetString();
    if (!stored) return RESULT_BAD_ARGUMENT;  // set from null: listed, but nothing to give
    return HandOut(stored, (uint64_t{record->GetStringLength()} + 1) * sizeof(char16_t), text);
}

void CAttributeContainerV2::GetStringInto(uint32_t id, std::u16string& text) {
    const Guard guard(m_lock);
    text.clear();
    const AttributeValue* record = Find(id);
    if (record && record->GetString()) text = record->GetString();
}

uint32_t CAttributeContainerV2::GetDataInto(uint32_t id, CRawData& data) {
    const Guard guard(m_lock);
    const AttributeValue* record = Find(id);
    const uint32_t size = record ? record->GetDataSize() : 0;
    if (data.Allocate(size, false) != RESULT_OK || size == 0) return 0;
    std::memcpy(data.GetDataAt(0), record->GetData(), size);
    return size;
}
