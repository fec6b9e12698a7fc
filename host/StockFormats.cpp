#include "host/StockFormats.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cstdlib>
#include <set>
#include <tuple>

#include "AudioCodec/attributes/AttributeIds.h"
#include "AudioCodec/wave/IAC3Writer.h"
#include "host/Require.h"
#include "platform/base/Utf.h"

namespace {

using Wanted = std::optional<uint32_t> FormatWish::*;

struct WishRow {
    const char* option;
    Wanted wanted;
    uint32_t StockFormat::*value;
};
constexpr WishRow kWishes[] = {
    {"--format", &FormatWish::index, &StockFormat::index},
    {"--rate", &FormatWish::rate, &StockFormat::rate},
    {"--channels", &FormatWish::channels, &StockFormat::channels},
    {"--bits", &FormatWish::bits, &StockFormat::bits},
};

StockFormat Load(IAC3Writer& writer, uint32_t index) {
    AudioFormatInfo info{};
    char16_t* text = nullptr;
    Require(writer.GetFormatInfo(index, &info, &text));
    StockFormat format{index,
                       Utf::ToUtf8(text ? text : u""),
                       info.channels,
                       info.samplesPerSec,
                       info.bitsPerSample,
                       info.blockAlign,
                       info.avgBytesPerSec};
    writer.Free(text);
    return format;
}

bool Fulfils(const StockFormat& format, const FormatWish& wish) {
    return std::all_of(std::begin(kWishes), std::end(kWishes), [&](const WishRow& row) {
        return (wish.*row.wanted).value_or(format.*row.value) == format.*row.value;
    });
}

// The smaller, the nearer: kept sample width first, then kept channels, then the rate, of two the higher.
auto Distance(const StockFormat& format, const SourceFormat& source) {
    const uint32_t bits = source.bits == 8 ? 8 : 16;
    const uint32_t channels = source.channels > 2 ? 1 : source.channels;
    const int64_t rates = std::abs(int64_t{format.rate} - int64_t{source.rate});
    return std::tuple(format.bits != bits, format.channels != channels, rates, -int64_t{format.rate});
}

}  // namespace

StockFormats::StockFormats(const Module& module, uint32_t language) {
    RefPtr<IAC3Writer> writer;
    Require(module.CreateCodec()->CreateWriter(writer.Put()));
    if (language != 0) Require(writer->SetLong(ATTR_TEXT_LANGUAGE, language));
    uint32_t count = 0;
    Require(writer->GetFormatCount(&count));
    for (uint32_t index = 0; index < count; ++index) m_rows.push_back(Load(*writer, index));
}

void StockFormats::RequirePossible(const FormatWish& wish) const {
    for (const WishRow& row : kWishes) {
        std::set<uint32_t> possible;
        for (const StockFormat& format : m_rows) possible.insert(format.*row.value);
        if ((wish.*row.wanted) && !possible.contains(*(wish.*row.wanted)))
            throw UsageFailure(fmt::format("No format has {} {}; possible are {}.", row.option,
                                           *(wish.*row.wanted), fmt::join(possible, ", ")));
    }
    if (std::none_of(m_rows.begin(), m_rows.end(),
                     [&](const StockFormat& row) { return Fulfils(row, wish); }))
        throw UsageFailure("No format has these values together; \"vlwav formats\" lists all of them.");
}

const StockFormat& StockFormats::Choose(const FormatWish& wish, const SourceFormat& source) const {
    return *std::min_element(m_rows.begin(), m_rows.end(), [&](const StockFormat& a, const StockFormat& b) {
        return std::pair(!Fulfils(a, wish), Distance(a, source)) <
               std::pair(!Fulfils(b, wish), Distance(b, source));
    });
}
