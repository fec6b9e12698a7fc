#include "AudioCodec/wave/FormatText.h"

#include <string_view>

#include "AudioCodec/shell/object/IMemory.h"
#include "AudioCodec/shell/object/ModuleInstance.h"
#include "AudioCodec/wave/StockFormatTexts.h"
#include "platform/loader/StringResources.h"

namespace {

// A language id is the language in its low 10 bits, and above them the region's form of it.
constexpr uint32_t kPrimaryLanguageMask = 0x3FF;
constexpr uint32_t kUsualForm = 0x400;
constexpr uint32_t kChinese = 4;  // its forms are scripts, and none of them stands for another

uint32_t LanguageToLookFor(uint32_t language) {
    const uint32_t primary = language & kPrimaryLanguageMask;
    return primary == kChinese ? language : primary | kUsualForm;
}

// The units in the module; empty if there is no such string.
std::u16string_view FindString(uint32_t id, uint32_t language) {
    const HMODULE module = GetModuleInstance();
    const HRSRC resource = FindResourceExW(module, RT_STRING, MAKEINTRESOURCEW(StringBlockName(id)),
                                           static_cast<WORD>(language));
    const auto* const units = static_cast<const WCHAR*>(LockResource(LoadResource(module, resource)));
    std::u16string_view left(units, SizeofResource(module, resource) / sizeof(WCHAR));
    for (uint32_t skip = id % kStringsInBlock; !left.empty(); --skip) {
        const size_t length = left[0];
        left.remove_prefix(1);
        if (length > left.size()) break;
        if (skip == 0) return left.substr(0, length);
        left.remove_prefix(length);
    }
    return {};
}

}  // namespace

void LoadFormatText(IMemory& memory, uint32_t id, uint32_t language, char16_t** text) {
    std::u16string_view found = FindString(id, LanguageToLookFor(language));
    if (found.empty()) found = FindString(id, kFallbackLanguage);
    if (found.empty()) return;
    const auto size = static_cast<uint32_t>((found.size() + 1) * sizeof(char16_t));
    auto* const copy = static_cast<char16_t*>(memory.Alloc(size));
    if (!copy) return;
    copy[found.copy(copy, found.size())] = 0;
    *text = copy;
}
