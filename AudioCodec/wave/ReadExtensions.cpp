#include "AudioCodec/wave/ReadExtensions.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace {

constexpr uint32_t kExtensionBufferBytes = 20;
constexpr std::u16string_view kExtensions[] = {u"wav", u"aif"};
static_assert((kExtensions[0].size() + 1) * sizeof(char16_t) <= kExtensionBufferBytes);

}  // namespace

Result CountReadExtensions(uint32_t* count) {
    if (count) *count = static_cast<uint32_t>(std::size(kExtensions));
    return RESULT_OK;
}

Result GiveReadExtension(IMemory& memory, uint32_t index, char16_t** extension) {
    if (!extension) return RESULT_BAD_EXTENSION;
    auto* const text = static_cast<char16_t*>(memory.Alloc(kExtensionBufferBytes));
    if (!text) return RESULT_NO_MEMORY;
    text[0] = u'\0';
    *extension = text;
    if (index >= std::size(kExtensions)) return RESULT_BAD_EXTENSION;
    *std::copy(kExtensions[index].begin(), kExtensions[index].end(), text) = u'\0';
    return RESULT_OK;
}
