#include "AudioCodec/wave/FormatText.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "AudioCodec/wave/StockFormatTexts.h"
#include "AudioCodec/wave/StockFormats.h"
#include "tests/shell/SampleObject.h"

namespace {

// The text, or "untouched".
std::u16string Load(uint32_t id, uint32_t language) {
    SampleObject memory;
    char16_t untouched[] = u"untouched";
    char16_t* text = untouched;
    LoadFormatText(memory, id, language, &text);
    const std::u16string copy = text;
    if (text != untouched) memory.Free(text);
    return copy;
}

TEST(FormatText, EachLanguageHasItsWordsAndItsSignWithinEachRate) {
    const struct {
        uint32_t language;
        uint32_t index;
        const char16_t* text;
    } rows[] = {
        {1033, 6, u"11.025 kHz, 16 Bits, Mono"},  // the last of its block
        {1031, 23, u"44.100 kHz, 16 Bits, Stereo"},
        {1040, 27, u"48.000 kHz, 16 Bits, Stereo"},
        {1034, 23, u"44,100 kHz, 16 bits, est\u00E9reo"},
        {1046, 0, u"8,000 kHz, 8 bits, Mono"},
        {1036, 0, u"8,000 kHz, 8 bits, Mono"},
        {1036, 23, u"44.100 kHz, 16 bits, St\u00E9r\u00E9o"},
        {1043, 4, u"11,025 kHz, 8 bits, mono"},
        {1043, 24, u"48.000 kHz, 8 bits, mono"},
        {1041, 8, u"16,000 kHz\u30018 \u30D3\u30C3\u30C8\u3001\u30E2\u30CE\u30E9\u30EB"},
        {1041, 23, u"44.100 kHz\u300116 \u30D3\u30C3\u30C8\u3001\u30B9\u30C6\u30EC\u30AA"},
        // A region gets its language: Spain, modern sort; Portugal; no region.
        {3082, 23, u"44,100 kHz, 16 bits, est\u00E9reo"},
        {2070, 23, u"44,100 kHz, 16 bits, Est\u00E9reo"},
        {0x0C, 23, u"44.100 kHz, 16 bits, St\u00E9r\u00E9o"},
    };
    for (const auto& [language, index, text] : rows)
        EXPECT_EQ(Load(kFirstFormatTextId + index, language), text) << language << " " << index;
    for (const uint32_t language : {0u, 4u, 0x404u, 0x804u, 1042u, 2057u, 0x80000009u, 0xFFFFFFFFu})
        EXPECT_EQ(Load(1024, language), u"44.100 kHz, 16 Bits, Stereo") << language;
    for (const uint32_t language : {1031u, 1034u, 1036u, 1040u, 1041u, 1043u, 1046u}) {
        std::set<std::u16string> texts;
        for (uint32_t i = 0; i < kStockFormatCount; ++i) texts.insert(Load(kFirstFormatTextId + i, language));
        EXPECT_EQ(texts.size(), kStockFormatCount) << language;
    }
}

TEST(FormatText, WithoutATextOrMemoryTheReceiverStaysAsItWas) {
    for (const uint32_t id : {0u, 1000u, 1029u, 1040u, 0xFFFFFFFFu})
        EXPECT_EQ(Load(id, 1036), u"untouched") << id;
    struct NoMemory : SampleObject {
        void* Alloc(uint32_t) override { return nullptr; }
    } none;
    char16_t* text = nullptr;
    LoadFormatText(none, kFirstFormatTextId, 1033, &text);
    EXPECT_EQ(text, nullptr);
}

}  // namespace
