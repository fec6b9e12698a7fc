#include "host/commands/FormatWish.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <set>

#include "host/base/Failure.h"

namespace {

struct WishRow {
    const char* option;
    std::optional<uint32_t> FormatWish::*wanted;
    uint32_t vlw::Format::*value;
    uint32_t vlw::Conversion::*target;
};
constexpr WishRow kWishes[] = {
    {"--rate", &FormatWish::rate, &vlw::Format::rate, &vlw::Conversion::rate},
    {"--channels", &FormatWish::channels, &vlw::Format::channels, &vlw::Conversion::channels},
    {"--bits", &FormatWish::bits, &vlw::Format::bits, &vlw::Conversion::bits},
};

bool Fulfils(const vlw::Format& format, const FormatWish& wish) {
    return std::all_of(std::begin(kWishes), std::end(kWishes), [&](const WishRow& row) {
        return (wish.*row.wanted).value_or(format.*row.value) == format.*row.value;
    });
}

void RequirePossible(const FormatWish& wish, const std::vector<vlw::StockFormat>& formats) {
    for (const WishRow& row : kWishes) {
        std::set<uint32_t> possible;
        for (const vlw::StockFormat& stock : formats) possible.insert(stock.format.*row.value);
        if ((wish.*row.wanted) && !possible.contains(*(wish.*row.wanted)))
            throw UsageFailure(fmt::format("No format has {} {}; possible are {}.", row.option,
                                           *(wish.*row.wanted), fmt::join(possible, ", ")));
    }
    if (std::none_of(formats.begin(), formats.end(),
                     [&](const vlw::StockFormat& stock) { return Fulfils(stock.format, wish); }))
        throw UsageFailure("No format has these values together; \"vlwav formats\" lists all of them.");
}

}  // namespace

void ApplyWish(const FormatWish& wish, const std::vector<vlw::StockFormat>& formats,
               vlw::Conversion& conversion) {
    if (wish.index && *wish.index >= formats.size())
        throw UsageFailure(
            fmt::format("No format has --format {}; possible are 0 to {}.", *wish.index, formats.size() - 1));
    RequirePossible(wish, formats);
    for (const WishRow& row : kWishes)
        conversion.*row.target =
            wish.index ? formats[*wish.index].format.*row.value : (wish.*row.wanted).value_or(0);
}
