// What an attribute can hold, and what the type nibble of an id says it is meant to hold. The two numberings
// are different ones; neither is computed from the other. Data only.
#pragma once

#include <cstdint>
#include <iterator>

// Store types: what a record holds.
inline constexpr uint32_t STORE_LONG = 1;
inline constexpr uint32_t STORE_BOOL = 2;
inline constexpr uint32_t STORE_LONG_ARRAY = 3;
inline constexpr uint32_t STORE_STRING = 4;
inline constexpr uint32_t STORE_DATA = 5;
inline constexpr uint32_t STORE_LONG64 = 6;
inline constexpr uint32_t STORE_LONG64_ARRAY = 7;
inline constexpr uint32_t STORE_POINTER = 8;
inline constexpr uint32_t STORE_POINTER_ARRAY = 9;

// What a setter does to an attribute that holds another store type. The value stays in every case.
enum class OnOtherType {
    Ignore,     // nothing, and reports success
    CountOnly,  // raises the change count, and reports success
    Refuse,     // nothing, and reports RESULT_FAILED
};

enum class PayloadKind {
    Number,  // in the record itself
    Array,   // `size` bytes an element
    Text,    // terminated units of `size` bytes
    Block,   // a CRawData
};

struct StoreTypeRow {
    uint32_t type;
    PayloadKind kind;
    uint32_t size;  // bytes of the number, an element or a unit
    OnOtherType onOtherType;
};

inline constexpr StoreTypeRow kStoreTypes[] = {
    {STORE_LONG, PayloadKind::Number, 4, OnOtherType::Ignore},
    {STORE_BOOL, PayloadKind::Number, 1, OnOtherType::Ignore},
    {STORE_LONG_ARRAY, PayloadKind::Array, 4, OnOtherType::Refuse},
    {STORE_STRING, PayloadKind::Text, 2, OnOtherType::Refuse},
    {STORE_DATA, PayloadKind::Block, 1, OnOtherType::Refuse},
    {STORE_LONG64, PayloadKind::Number, 8, OnOtherType::Ignore},
    {STORE_LONG64_ARRAY, PayloadKind::Array, 8, OnOtherType::Refuse},
    {STORE_POINTER, PayloadKind::Number, 8, OnOtherType::CountOnly},
    {STORE_POINTER_ARRAY, PayloadKind::Array, 8, OnOtherType::Refuse},
};
static_assert(sizeof(void*) == 8);

// The row of a store type; null for a number that is none.
constexpr const StoreTypeRow* FindStoreType(uint32_t type) {
    return type - 1 < std::size(kStoreTypes) ? &kStoreTypes[type - 1] : nullptr;
}

namespace detail {
consteval bool RowsStandAtTheirNumbers() {
    for (const StoreTypeRow& row : kStoreTypes) {
        if (FindStoreType(row.type) != &row) return false;
    }
    return !FindStoreType(0) && !FindStoreType(STORE_POINTER_ARRAY + 1);
}
}  // namespace detail
static_assert(detail::RowsStandAtTheirNumbers());

// The type nibble: bits 24 to 27 of an id.
inline constexpr uint32_t kTypeNibbleMask = 0x0F000000;
inline constexpr uint32_t NIBBLE_BOOL = 0x00000000;
inline constexpr uint32_t NIBBLE_DATA = 0x01000000;
inline constexpr uint32_t NIBBLE_LONG = 0x02000000;
inline constexpr uint32_t NIBBLE_LONG_ARRAY = 0x03000000;
inline constexpr uint32_t NIBBLE_STRING = 0x04000000;
inline constexpr uint32_t NIBBLE_LONG64 = 0x05000000;
inline constexpr uint32_t NIBBLE_POINTER = 0x07000000;
inline constexpr uint32_t NIBBLE_POINTER_ARRAY = 0x08000000;

constexpr uint32_t TypeNibble(uint32_t id) { return id & kTypeNibbleMask; }

// The words that texts about ids use; every other nibble is "UNKNOWN".
struct NibbleWord {
    uint32_t nibble;
    const char* word;
};
inline constexpr NibbleWord kNibbleWords[] = {
    {NIBBLE_BOOL, "BOOL"},     {NIBBLE_DATA, "DATA"}, {NIBBLE_LONG, "LONG"}, {NIBBLE_LONG_ARRAY, "LONGARRAY"},
    {NIBBLE_STRING, "STRING"},
};
