// What the store knows about its types: how each is kept, and what a setter of another type does. Data only.
#pragma once

#include <iterator>

#include "AudioCodec/attributes/StoreTypes.h"

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

// The words that texts about ids use; every other nibble is "UNKNOWN".
struct NibbleWord {
    uint32_t nibble;
    const char* word;
};
inline constexpr NibbleWord kNibbleWords[] = {
    {NIBBLE_BOOL, "BOOL"},     {NIBBLE_DATA, "DATA"}, {NIBBLE_LONG, "LONG"}, {NIBBLE_LONG_ARRAY, "LONGARRAY"},
    {NIBBLE_STRING, "STRING"},
};
