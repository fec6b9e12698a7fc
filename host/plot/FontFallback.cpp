#include "host/plot/FontFallback.h"

#include <algorithm>
#include <new>

namespace {

template <class Made>
Made* Required(Made* made) {
    if (!made) throw std::bad_alloc();
    return made;
}

}  // namespace

bool FontFallback::Font::Has(FcChar32 character) const {
    FcCharSet* characters = nullptr;  // the pattern's own
    return pattern && FcPatternGetCharSet(pattern.get(), FC_CHARSET, 0, &characters) == FcResultMatch &&
           FcCharSetHasChar(characters, character);
}

FontFallback::Font FontFallback::Match(FcChar32 character) const {
    const std::unique_ptr<FcPattern, PatternDeleter> wish(Required(FcPatternCreate()));
    FcPatternAddString(wish.get(), FC_FAMILY, reinterpret_cast<const FcChar8*>(m_family.c_str()));
    FcPatternAddInteger(wish.get(), FC_WEIGHT, m_bold ? FC_WEIGHT_BOLD : FC_WEIGHT_NORMAL);
    if (character != 0) {
        const std::unique_ptr<FcCharSet, void (*)(FcCharSet*)> characters(Required(FcCharSetCreate()),
                                                                          FcCharSetDestroy);
        FcCharSetAddChar(characters.get(), character);
        FcPatternAddCharSet(wish.get(), FC_CHARSET, characters.get());
    }
    FcConfigSubstitute(nullptr, wish.get(), FcMatchPattern);
    FcDefaultSubstitute(wish.get());
    FcResult result = FcResultMatch;
    Font font;
    font.pattern.reset(FcFontMatch(nullptr, wish.get(), &result));
    FcChar8* family = nullptr;  // the pattern's own
    if (font.pattern && FcPatternGetString(font.pattern.get(), FC_FAMILY, 0, &family) == FcResultMatch)
        font.family = reinterpret_cast<const char*>(family);
    return font;
}

size_t FontFallback::FontOf(FcChar32 character) {
    constexpr FcChar32 kAscii = 0x80;
    if (character < kAscii) return 0;
    if (m_fonts.empty()) m_fonts.push_back(Match(0));
    const auto found =
        std::find_if(m_fonts.begin(), m_fonts.end(), [&](const Font& font) { return font.Has(character); });
    if (found != m_fonts.end()) return static_cast<size_t>(found - m_fonts.begin());
    if (m_nowhere.count(character) != 0) return 0;
    Font font = Match(character);
    if (!font.Has(character) || font.family.empty()) {
        m_nowhere.insert(character);
        return 0;
    }
    m_fonts.push_back(std::move(font));
    return m_fonts.size() - 1;
}

std::vector<FontFallback::Run> FontFallback::Runs(std::string_view text) {
    std::vector<Run> runs;
    size_t last = 0;
    while (!text.empty()) {
        FcChar32 character = 0;
        const int size = std::max(1, FcUtf8ToUcs4(reinterpret_cast<const FcChar8*>(text.data()), &character,
                                                  static_cast<int>(text.size())));
        const size_t font = FontOf(character);
        if (runs.empty() || font != last) runs.push_back({font == 0 ? m_family : m_fonts[font].family, {}});
        last = font;
        runs.back().text += text.substr(0, static_cast<size_t>(size));
        text.remove_prefix(static_cast<size_t>(size));
    }
    return runs;
}
