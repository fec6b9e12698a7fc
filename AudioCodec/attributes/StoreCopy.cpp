// CAttributeContainerV2: copying from store to store.
#include <mutex>
#include <new>
#include <string>

#include "AudioCodec/attributes/CAttributeContainerV2.h"
#include "AudioCodec/shell/object/Border.h"

using Guard = std::lock_guard<RecursiveLock>;

namespace {

// A getter's buffer, given back to the container that it came from.
template <class T>
struct Borrowed {
    explicit Borrowed(IAttributeContainer64* owner) : from(owner) {}
    ~Borrowed() { from->Free(values); }
    Borrowed(const Borrowed&) = delete;
    Borrowed& operator=(const Borrowed&) = delete;

    IAttributeContainer64* from;
    T* values = nullptr;
    uint32_t count = 0;
};

// CopyAttribute tells what there was to copy: the results of the source's getters and of this store's setters
// are not heeded, but that an array which couldn't be had isn't an empty one.
using Store = CAttributeContainerV2;
using Source = IAttributeContainer64;

uint32_t CopyBool(Store& store, uint32_t id, Source& source) {
    store.SetBool(id, source.GetBool(id) ? 1 : 0);
    return sizeof(uint8_t);
}

uint32_t CopyData(Store& store, uint32_t id, Source& source) { return store.CopyDataFrom(id, &source); }

uint32_t CopyLong(Store& store, uint32_t id, Source& source) {
    store.SetLong(id, source.GetLong(id));
    return sizeof(uint32_t);
}

uint32_t CopyLongArray(Store& store, uint32_t id, Source& source) {
    Borrowed<uint32_t> array(&source);
    if (source.GetLongArray(id, &array.values, &array.count) != RESULT_NO_MEMORY)
        store.SetLongArray(id, array.values, array.count);
    return 0;
}

uint32_t CopyString(Store& store, uint32_t id, Source& source) {
    Borrowed<char16_t> text(&source);
    source.GetString(id, &text.values);
    if (!text.values) return 0;
    store.SetString(id, text.values);
    return static_cast<uint32_t>(std::char_traits<char16_t>::length(text.values) * sizeof(char16_t));
}

struct CopyRow {
    uint32_t nibble;
    uint32_t (*copy)(Store& store, uint32_t id, Source& source);
};
// Other nibbles are not copied.
constexpr CopyRow kCopies[] = {
    {NIBBLE_BOOL, &CopyBool},     {NIBBLE_DATA, &CopyData},
    {NIBBLE_LONG, &CopyLong},     {NIBBLE_LONG_ARRAY, &CopyLongArray},
    {NIBBLE_STRING, &CopyString},
};

}  // namespace

uint32_t CAttributeContainerV2::CopyAttribute(uint32_t id, IAttributeContainer64* source) {
    const Guard guard(m_lock);
    if (!source) return 0;
    for (const CopyRow& row : kCopies) {
        if (row.nibble == TypeNibble(id)) return row.copy(*this, id, *source);
    }
    return 0;
}

Result CAttributeContainerV2::CopyStringFrom(uint32_t id, IAttributeContainer64* source) {
    const Guard guard(m_lock);
    if (!source) return RESULT_BAD_ARGUMENT;
    Borrowed<char16_t> text(source);
    if (source->GetString(id, &text.values) == RESULT_NO_MEMORY) return RESULT_NO_MEMORY;
    return text.values ? SetString(id, text.values) : RESULT_OK;
}

uint32_t CAttributeContainerV2::CopyDataFrom(uint32_t id, IAttributeContainer64* source) {
    const Guard guard(m_lock);
    if (!source) return 0;
    Borrowed<uint8_t> block(source);
    source->GetData(id, &block.values, &block.count);
    if (block.values && block.count != 0) SetData(id, block.values, block.count);
    return block.count;
}

Result CAttributeContainerV2::CopyTo(CAttributeContainerV2* target) const {
    if (!target || !target->m_attributes.empty() || !target->m_interfaces.empty()) return RESULT_BAD_ARGUMENT;
    return AtBorder(RESULT_NO_MEMORY, [&] {
        for (const auto& [id, record] : m_attributes)
            target->m_attributes.emplace(id, std::make_unique<AttributeValue>(*record));
        Result status = RESULT_OK;
        for (const auto& original : m_interfaces) {
            auto holder = std::make_unique<InterfaceHolder>(original->GetIid(), original->GetObject(),
                                                            original->HasReference());
            status = holder->GetStatus();
            if (status == RESULT_OK) target->m_interfaces.push_back(std::move(holder));
        }
        return status;
    });
}
