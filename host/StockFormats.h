// The formats that the module can write, as it tells them, and the choice among them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/Module.h"
#include "host/Source.h"

struct StockFormat {
    uint32_t index = 0;
    std::string text;  // for people
    uint32_t channels = 0;
    uint32_t rate = 0;  // frames per second
    uint32_t bits = 0;  // of a sample
    uint32_t bytesPerFrame = 0;
    uint32_t bytesPerSecond = 0;
};

// What the user asks for; what is missing follows from the source.
struct FormatWish {
    std::optional<uint32_t> index;  // alone
    std::optional<uint32_t> rate, channels, bits;
};

class StockFormats {
public:
    // Texts in a platform language id; 0 and a language that the module lacks return English. Throws Failure.
    StockFormats(const Module& module, uint32_t language);

    const std::vector<StockFormat>& Rows() const { return m_rows; }
    // Throws a UsageFailure that names the possible values where no format fulfils the wish.
    void RequirePossible(const FormatWish& wish) const;
    // The nearest to the source of those that fulfil a possible wish.
    const StockFormat& Choose(const FormatWish& wish, const SourceFormat& source) const;

private:
    std::vector<StockFormat> m_rows;
};
