// Which fonts write a text: one for all that it has characters for, and others for those that it lacks. Draws
// nothing.
//
// Decisions: a character that no font of the machine has stays with the first, which shows a box.
#pragma once

#include <fontconfig/fontconfig.h>

#include <cstddef>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

class FontFallback {
public:
    // A part of a text that one font writes.
    struct Run {
        std::string family;
        std::string text;
    };

    FontFallback(const char* family, bool bold) : m_family(family), m_bold(bold) {}

    // In the order of the text, which is UTF-8.
    std::vector<Run> Runs(std::string_view text);

private:
    struct PatternDeleter {
        void operator()(FcPattern* pattern) const noexcept { FcPatternDestroy(pattern); }
    };
    struct Font {
        std::string family;
        std::unique_ptr<FcPattern, PatternDeleter> pattern;

        bool Has(FcChar32 character) const;
    };

    // The nearest to the first, of those that have the character if any do; 0 asks for none.
    Font Match(FcChar32 character) const;
    size_t FontOf(FcChar32 character);

    const std::string m_family;
    const bool m_bold;
    std::vector<Font> m_fonts;     // that were needed so far; empty while all was ASCII
    std::set<FcChar32> m_nowhere;  // characters that no font has
};
