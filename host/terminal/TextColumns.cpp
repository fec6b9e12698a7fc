#include "host/terminal/TextColumns.h"

#include <clocale>
#include <cwchar>
#include <vector>

namespace TextColumns {
namespace {

// The characters of UTF-8 for this thread, whatever the user's locale is: names are UTF-8 here.
class Utf8Scope {
public:
    Utf8Scope() : m_before(uselocale(Locale())) {}
    Utf8Scope(const Utf8Scope&) = delete;
    Utf8Scope& operator=(const Utf8Scope&) = delete;
    ~Utf8Scope() { uselocale(m_before); }

private:
    static locale_t Locale() {
        static const locale_t utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
        return utf8;  // null, which changes nothing, on a system without it: each byte is a column then
    }

    const locale_t m_before;
};

struct Character {
    std::string_view bytes;
    size_t columns;
};

std::vector<Character> Characters(std::string_view text) {
    const Utf8Scope scope;
    std::vector<Character> characters;
    std::mbstate_t state{};
    while (!text.empty()) {
        wchar_t wide = 0;
        size_t size = std::mbrtowc(&wide, text.data(), text.size(), &state);
        int columns = 1;
        if (size == 0 || size > text.size()) {  // no character
            size = 1;
            state = {};
        } else {
            columns = wcwidth(wide);
        }
        characters.push_back({text.substr(0, size), columns < 0 ? size_t{1} : static_cast<size_t>(columns)});
        text.remove_prefix(size);
    }
    return characters;
}

}  // namespace

size_t Count(std::string_view text) {
    size_t columns = 0;
    for (const Character& character : Characters(text)) columns += character.columns;
    return columns;
}

std::string Shortened(std::string_view text, size_t most) {
    const std::vector<Character> characters = Characters(text);
    size_t columns = 0;
    for (const Character& character : characters) columns += character.columns;
    if (columns <= most) return std::string(text);
    if (most == 0) return {};
    const size_t kept = most - 1;
    std::string head;
    std::string tail;
    size_t used = 0;
    for (size_t i = 0; i < characters.size() && used + characters[i].columns <= kept - kept / 2; ++i) {
        head += characters[i].bytes;
        used += characters[i].columns;
    }
    for (size_t i = characters.size(); i-- > 0 && used + characters[i].columns <= kept;) {
        tail.insert(0, characters[i].bytes);
        used += characters[i].columns;
    }
    return head + "…" + tail;
}

}  // namespace TextColumns
