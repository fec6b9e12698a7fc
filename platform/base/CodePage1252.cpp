#include "platform/base/CodePage1252.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "platform/base/LastError.h"

namespace {

// Bytes 0x80 to 0x9F; the five that the code page leaves free stand for the control characters of their
// number. Every other byte is the character of its number. (Unicode Consortium, mapping table CP1252.TXT.)
constexpr char16_t kHigh[32] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};
constexpr uint8_t kFirstHigh = 0x80;

char16_t ToUnit(char c) {
    const auto byte = static_cast<uint8_t>(c);
    return byte >= kFirstHigh && byte < kFirstHigh + std::size(kHigh) ? kHigh[byte - kFirstHigh] : byte;
}

char ToByte(char16_t unit) {
    if (unit < kFirstHigh || (unit >= kFirstHigh + std::size(kHigh) && unit <= 0xFF))
        return static_cast<char>(unit);
    const auto* const found = std::find(std::begin(kHigh), std::end(kHigh), unit);
    return found == std::end(kHigh) ? '?' : static_cast<char>(kFirstHigh + (found - std::begin(kHigh)));
}

template <class From, class To>
int Convert(UINT codePage, DWORD flags, const From* from, int count, To* to, int room, To (*convert)(From)) {
    if (codePage != CP_ACP || flags != 0 || !from || count < -1 || count == 0 || room < 0 ||
        (room > 0 && !to))
        return FailWith(ERROR_INVALID_PARAMETER);
    const int length = count == -1 ? static_cast<int>(std::char_traits<From>::length(from)) + 1 : count;
    if (room == 0) return length;
    if (room < length) return FailWith(ERROR_INSUFFICIENT_BUFFER);
    std::transform(from, from + length, to, convert);
    return length;
}

}  // namespace

int MultiByteToWideChar(UINT codePage, DWORD flags, const char* text, int bytes, WCHAR* wide, int room) {
    return Convert(codePage, flags, text, bytes, wide, room, ToUnit);
}

int WideCharToMultiByte(UINT codePage, DWORD flags, const WCHAR* wide, int units, char* text, int room,
                        const char* defaultChar, BOOL* usedDefault) {
    if (defaultChar || usedDefault) return FailWith(ERROR_INVALID_PARAMETER);
    return Convert(codePage, flags, wide, units, text, room, ToByte);
}
