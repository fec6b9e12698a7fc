#include "AudioCodec/attributes/AttributeValue.h"

#include <cstring>
#include <new>
#include <string>
#include <utility>

namespace {

uint64_t NumberAt(const void* source, uint32_t size) {
    uint64_t number = 0;
    std::memcpy(&number, source, size);  // little-endian machines only, as the module's border is
    return number;
}

std::unique_ptr<std::byte[]> CopyOf(const void* source, size_t bytes) {
    if (!source || bytes == 0) return nullptr;
    std::unique_ptr<std::byte[]> copy(new std::byte[bytes]);
    std::memcpy(copy.get(), source, bytes);
    return copy;
}

std::unique_ptr<std::byte[]> CopyOfText(const void* source) {
    if (!source) return nullptr;
    const size_t length = std::char_traits<char16_t>::length(static_cast<const char16_t*>(source));
    return CopyOf(source, (length + 1) * sizeof(char16_t));
}

std::unique_ptr<CRawData> BlockOf(const void* source, uint32_t size) {
    auto block = std::make_unique<CRawData>(size, false);
    if (block->GetSize() != size) throw std::bad_alloc();
    if (size != 0) std::memcpy(block->GetDataAt(0), source, size);
    return block;
}

}  // namespace

AttributeValue::AttributeValue(uint32_t id, uint32_t type, const void* source, uint32_t count) {
    Assign(id, type, source, count);
}

AttributeValue::AttributeValue(const AttributeValue& other) {
    Assign(other.m_id, other.m_type, other.Source(), other.m_count);
}

const void* AttributeValue::Source() const {
    const StoreTypeRow* row = FindStoreType(m_type);
    if (!row) return nullptr;
    if (row->kind == PayloadKind::Number) return &m_number;
    if (row->kind == PayloadKind::Block) return GetData();
    return m_array.get();
}

void AttributeValue::Assign(uint32_t id, uint32_t type, const void* source, uint32_t count) {
    // The new payload is complete before the old one goes, so a failure leaves the record as it was.
    uint64_t number = 0;
    std::unique_ptr<std::byte[]> array;
    std::unique_ptr<CRawData> data;
    if (const StoreTypeRow* row = FindStoreType(type)) {
        switch (row->kind) {
            case PayloadKind::Number:
                number = NumberAt(source, row->size);
                break;
            case PayloadKind::Array:
                array = CopyOf(source, size_t{count} * row->size);
                break;
            case PayloadKind::Text:
                array = CopyOfText(source);
                break;
            case PayloadKind::Block:
                data = BlockOf(source, count);
                break;
        }
    }
    m_id = id;
    m_type = type;
    m_count = count;
    m_number = number;
    m_array = std::move(array);
    m_data = std::move(data);
    ++m_changeCount;
}

void AttributeValue::ReleasePayload() {
    m_array.reset();
    m_data.reset();
    m_count = 0;
}

uint32_t AttributeValue::SetChangeCount(uint32_t count) { return std::exchange(m_changeCount, count); }

void AttributeValue::SetNumberIf(uint32_t type, uint64_t value) {
    ++m_changeCount;
    if (m_type == type) m_number = value;
}

size_t AttributeValue::GetStringLength() const {
    const char16_t* text = GetString();
    return text ? std::char_traits<char16_t>::length(text) : 0;
}
