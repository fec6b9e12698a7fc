// The one set of helpers for numbers in files, at any address and on any machine: little-endian as RIFF has
// them, big-endian as AIFF does.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ByteOrderDetail {
template <class T>
constexpr T LoadLE(const uint8_t* bytes) {
    T value = 0;
    for (size_t i = 0; i < sizeof(T); ++i) value = static_cast<T>(value | static_cast<T>(bytes[i]) << 8 * i);
    return value;
}

template <class T>
constexpr T LoadBE(const uint8_t* bytes) {
    T value = 0;
    for (size_t i = 0; i < sizeof(T); ++i) value = static_cast<T>(value << 8 | bytes[i]);
    return value;
}

template <class T>
constexpr void StoreLE(uint8_t* bytes, T value) {
    for (size_t i = 0; i < sizeof(T); ++i) bytes[i] = static_cast<uint8_t>(value >> 8 * i);
}

template <class T>
constexpr void StoreBE(uint8_t* bytes, T value) {
    for (size_t i = sizeof(T); i-- > 0; value = static_cast<T>(value >> 8))
        bytes[i] = static_cast<uint8_t>(value);
}
}  // namespace ByteOrderDetail

constexpr uint16_t LoadLE16(const uint8_t* bytes) { return ByteOrderDetail::LoadLE<uint16_t>(bytes); }
constexpr uint32_t LoadLE32(const uint8_t* bytes) { return ByteOrderDetail::LoadLE<uint32_t>(bytes); }
constexpr void StoreLE16(uint8_t* bytes, uint16_t value) { ByteOrderDetail::StoreLE(bytes, value); }
constexpr void StoreLE32(uint8_t* bytes, uint32_t value) { ByteOrderDetail::StoreLE(bytes, value); }

constexpr uint16_t LoadBE16(const uint8_t* bytes) { return ByteOrderDetail::LoadBE<uint16_t>(bytes); }
constexpr uint32_t LoadBE32(const uint8_t* bytes) { return ByteOrderDetail::LoadBE<uint32_t>(bytes); }
constexpr uint64_t LoadBE64(const uint8_t* bytes) { return ByteOrderDetail::LoadBE<uint64_t>(bytes); }
constexpr void StoreBE32(uint8_t* bytes, uint32_t value) { ByteOrderDetail::StoreBE(bytes, value); }

// A four-character id as the number that its bytes read as: FourCC("RIFF") is 0x46464952.
consteval uint32_t FourCC(const char (&text)[5]) {
    uint32_t value = 0;
    for (size_t i = 0; i < 4; ++i) value |= static_cast<uint32_t>(static_cast<uint8_t>(text[i])) << 8 * i;
    return value;
}
