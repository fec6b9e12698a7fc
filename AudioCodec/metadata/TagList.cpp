#include "AudioCodec/metadata/TagList.h"

#include <cwctype>
#include <new>
#include <string>

namespace {

std::u16string WideText(CStr& text) {
    const char16_t* const wide = text.Wide();
    if (!wide) return {};
    return {wide, text.WideLength()};
}

CStr OwnedCopy(const std::u16string& text) {
    CStr copy(text.data(), static_cast<uint32_t>(text.size()));
    if (!copy.Wide()) throw std::bad_alloc();
    return copy;
}

}  // namespace

void AddTag(TagList& tags, CStr& name, CStr& value) {
    std::u16string trimmed = WideText(value);
    trimmed.erase(trimmed.find_last_not_of(u' ') + 1);
    trimmed.erase(0, trimmed.find_first_not_of(u' '));
    std::u16string lowered = WideText(name);
    for (char16_t& unit : lowered) unit = static_cast<char16_t>(std::towlower(unit));
    tags.push_back({OwnedCopy(lowered), OwnedCopy(trimmed)});
}
