#include "AudioCodec/wave/StockFormatTexts.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

#include "AudioCodec/wave/StockFormats.h"
#include "platform/loader/StringResources.h"

namespace {

// The rates at which a language's texts have a comma in front of the hundreds; the others have a point there.
using CommaRates = std::array<uint32_t, 7>;
constexpr CommaRates kNever = {};
constexpr CommaRates kAlways = {8000, 11025, 16000, 22050, 32000, 44100, 48000};

// A text is: kHz with three decimals, behindRate, bits, behindBits, and the word for the channels.
struct TextPattern {
    uint32_t language;
    CommaRates commaRates;
    std::u16string_view behindRate;
    std::u16string_view behindBits;
    std::u16string_view mono;
    std::u16string_view stereo;
};

// Which sign goes with which rate follows no rule of the languages; hosts know the texts as they are.
constexpr TextPattern kPatterns[] = {
    {kFallbackLanguage, kNever, u" kHz, ", u" Bits, ", u"Mono", u"Stereo"},
    {1031 /*German*/, kNever, u" kHz, ", u" Bits, ", u"Mono", u"Stereo"},
    {1040 /*Italian*/, kNever, u" kHz, ", u" Bits, ", u"Mono", u"Stereo"},
    {1034 /*Spanish*/, kAlways, u" kHz, ", u" bits, ", u"mono", u"estéreo"},
    {1046 /*Portuguese, Brazil*/, kAlways, u" kHz, ", u" bits, ", u"Mono", u"Estéreo"},
    {1036 /*French*/, {8000}, u" kHz, ", u" bits, ", u"Mono", u"Stéréo"},
    {1043 /*Dutch*/, {11025, 22050, 44100}, u" kHz, ", u" bits, ", u"mono", u"stereo"},
    {1041 /*Japanese*/, {16000, 32000, 48000}, u" kHz、", u" ビット、", u"モノラル", u"ステレオ"},
};

constexpr uint32_t kFirstBlock = StringBlockName(kFirstFormatTextId);
constexpr uint32_t kBlocksOfLanguage =
    StringBlockName(kFirstFormatTextId + kStockFormatCount - 1) - kFirstBlock + 1;
constexpr size_t kBlockCount = std::size(kPatterns) * kBlocksOfLanguage;
constexpr uint32_t kLongestText = 31;

// One block as it lies in memory. One that needs more room than there is does not compile.
struct BlockUnits {
    WCHAR units[kStringsInBlock * (1 + kLongestText)] = {};
    DWORD used = 0;

    constexpr void Append(WCHAR unit) { units[used++] = unit; }
    constexpr void Append(std::u16string_view text) {
        for (const WCHAR unit : text) Append(unit);
    }
    constexpr void AppendNumber(uint32_t number, uint32_t leastDigits = 1) {
        if (number >= 10 || leastDigits > 1) AppendNumber(number / 10, leastDigits > 1 ? leastDigits - 1 : 1);
        Append(static_cast<WCHAR>(u'0' + number % 10));
    }
};

constexpr void AppendString(BlockUnits& block, const TextPattern& pattern, const StockFormat& format) {
    const DWORD count = block.used;
    block.Append(u'\0');
    const auto& commas = pattern.commaRates;
    const bool comma = std::find(commas.begin(), commas.end(), format.samplesPerSec) != commas.end();
    block.AppendNumber(format.samplesPerSec / 1000);
    block.Append(comma ? u',' : u'.');
    block.AppendNumber(format.samplesPerSec % 1000, 3);
    block.Append(pattern.behindRate);
    block.AppendNumber(format.bitsPerSample);
    block.Append(pattern.behindBits);
    block.Append(format.channels == 1 ? pattern.mono : pattern.stereo);
    block.units[count] = static_cast<WCHAR>(block.used - count - 1);
}

// Blocks reach across the ids of the texts at both ends; there they hold empty strings.
constexpr BlockUnits MakeBlock(const TextPattern& pattern, uint32_t name) {
    BlockUnits block;
    for (uint32_t i = 0; i < kStringsInBlock; ++i) {
        const uint32_t id = (name - 1) * kStringsInBlock + i;
        if (id >= kFirstFormatTextId && id - kFirstFormatTextId < kStockFormatCount) {
            AppendString(block, pattern, kStockFormats[id - kFirstFormatTextId]);
        } else {
            block.Append(u'\0');
        }
    }
    return block;
}

constexpr auto kUnits = [] {
    std::array<BlockUnits, kBlockCount> all = {};
    for (uint32_t i = 0; i < kBlockCount; ++i)
        all[i] = MakeBlock(kPatterns[i / kBlocksOfLanguage], kFirstBlock + i % kBlocksOfLanguage);
    return all;
}();

constexpr auto kBlocks = [] {
    std::array<StringBlock, kBlockCount> all = {};
    for (uint32_t i = 0; i < kBlockCount; ++i)
        all[i] = {static_cast<WORD>(kFirstBlock + i % kBlocksOfLanguage),
                  static_cast<WORD>(kPatterns[i / kBlocksOfLanguage].language), kUnits[i].units,
                  static_cast<DWORD>(kUnits[i].used * sizeof(WCHAR))};
    return all;
}();

const StringResources s_texts(kBlocks);

}  // namespace

bool StockFormatTexts::AreKnown() { return s_texts.AreKnown(); }
