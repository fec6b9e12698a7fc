// Pieces of files as texts, for tables of files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Bytes {

inline std::string Little(uint64_t value, int count) {
    std::string bytes;
    for (int i = 0; i < count; ++i) bytes += static_cast<char>(value >> 8 * i);
    return bytes;
}
inline std::string Big(uint64_t value, int count) {
    std::string bytes;
    for (int i = count; i-- > 0;) bytes += static_cast<char>(value >> 8 * i);
    return bytes;
}
inline std::string Zeros(size_t count) { return std::string(count, '\0'); }

inline std::string Repeat(size_t count, std::string_view piece) {
    std::string bytes;
    bytes.reserve(count * piece.size());
    for (size_t i = 0; i < count; ++i) bytes += piece;
    return bytes;
}
// `make(i)` for each i, all of one size.
template <class Make>
std::string Each(size_t count, Make make) {
    std::string bytes;
    bytes.reserve(count * make(0).size());
    for (size_t i = 0; i < count; ++i) bytes += make(i);
    return bytes;
}
// An id of four capital letters for each number below 456976.
inline std::string IdOf(size_t number) {
    std::string id(4, 'A');
    for (char& letter : id) {
        letter = static_cast<char>('A' + static_cast<int>(number % 26));
        number /= 26;
    }
    return id;
}

}  // namespace Bytes
