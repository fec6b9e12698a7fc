// The display texts of the stock formats: string resources of the module in eight languages, which the source
// generates at compile time and registers when the module is loaded. FormatText.h finds them.
#pragma once

#include <cstdint>

// The string id of the first stock format's text; the others follow in the order of the formats.
inline constexpr uint32_t kFirstFormatTextId = 1001;

// English (United States). It has every text.
inline constexpr uint32_t kFallbackLanguage = 1033;

namespace StockFormatTexts {

// Whether the layer has them, which it hasn't where memory lacked when the module was loaded.
bool AreKnown();

}  // namespace StockFormatTexts
