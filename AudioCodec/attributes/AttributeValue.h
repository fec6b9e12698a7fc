// The record of one attribute: its id, what it holds and how often it was stored to. A getter of another type
// returns 0 or null, never an error. No lock: the store's covers it.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "AudioCodec/attributes/CRawData.h"
#include "AudioCodec/attributes/StoreTypeTable.h"

class AttributeValue {
public:
    // As Assign on an empty record. Throws std::bad_alloc.
    AttributeValue(uint32_t id, uint32_t type, const void* source, uint32_t count);
    // A record of its own with the other's payload, stored to once. Throws std::bad_alloc.
    AttributeValue(const AttributeValue& other);
    AttributeValue& operator=(const AttributeValue&) = delete;
    ~AttributeValue() = default;

    // Stores what `source` points at, also for a plain number: `count` elements for arrays, bytes for a
    // block, no meaning for the rest. A null source leaves an array or text empty; a block needs one
    // where it has bytes. Throws std::bad_alloc, the record then being what it was. A type that is none
    // empties the record.
    void Assign(uint32_t id, uint32_t type, const void* source, uint32_t count);
    void ReleasePayload();

    uint32_t GetId() const { return m_id; }
    uint32_t GetType() const { return m_type; }
    uint32_t GetChangeCount() const { return m_changeCount; }
    uint32_t SetChangeCount(uint32_t count);  // returns the old one

    uint32_t GetLong() const { return static_cast<uint32_t>(NumberIf(STORE_LONG)); }
    bool GetBool() const { return NumberIf(STORE_BOOL) != 0; }
    uint64_t GetLong64() const { return NumberIf(STORE_LONG64); }
    void* GetPointer() const { return std::bit_cast<void*>(NumberIf(STORE_POINTER)); }

    // These raise the change count in any case, and store into a record of their own type only.
    void SetLong(uint32_t value) { SetNumberIf(STORE_LONG, value); }
    void SetBool(uint8_t value) { SetNumberIf(STORE_BOOL, value); }
    void SetLong64(uint64_t value) { SetNumberIf(STORE_LONG64, value); }
    void SetPointer(void* value) { SetNumberIf(STORE_POINTER, reinterpret_cast<uintptr_t>(value)); }

    // What these point at is the record's.
    const uint32_t* GetLongArray() const { return ArrayIf<uint32_t>(STORE_LONG_ARRAY); }
    const uint64_t* GetLong64Array() const { return ArrayIf<uint64_t>(STORE_LONG64_ARRAY); }
    void* const* GetPointerArray() const { return ArrayIf<void*>(STORE_POINTER_ARRAY); }
    uint32_t GetLongArrayCount() const { return GetLongArray() ? m_count : 0; }
    uint32_t GetLong64ArrayCount() const { return GetLong64Array() ? m_count : 0; }
    uint32_t GetPointerArrayCount() const { return GetPointerArray() ? m_count : 0; }
    const char16_t* GetString() const { return ArrayIf<char16_t>(STORE_STRING); }
    size_t GetStringLength() const;  // units, without the terminator
    const uint8_t* GetData() const { return m_type == STORE_DATA && m_data ? m_data->GetDataAt(0) : nullptr; }
    uint32_t GetDataSize() const { return m_type == STORE_DATA && m_data ? m_data->GetSize() : 0; }

private:
    uint64_t NumberIf(uint32_t type) const { return m_type == type ? m_number : 0; }
    void SetNumberIf(uint32_t type, uint64_t value);
    template <class T>
    const T* ArrayIf(uint32_t type) const {
        return m_type == type ? reinterpret_cast<const T*>(m_array.get()) : nullptr;
    }
    const void* Source() const;

    // The payload is in the one of these that the type says; the others are empty.
    uint64_t m_number = 0;
    std::unique_ptr<std::byte[]> m_array;  // elements, or text with its terminator
    std::unique_ptr<CRawData> m_data;

    uint32_t m_id = 0;
    uint32_t m_type = 0;         // store type
    uint32_t m_changeCount = 0;  // stores into the record
    uint32_t m_count = 0;        // elements of an array, bytes of a block
};
