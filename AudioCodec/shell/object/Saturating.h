// 64-bit arithmetic on positions that hosts and files name: what doesn't fit ends at the limit,
// never past it.
#pragma once

#include <cstdint>
#include <limits>

namespace Saturating {

inline constexpr int64_t kMost = std::numeric_limits<int64_t>::max();
inline constexpr int64_t kLeast = std::numeric_limits<int64_t>::min();

constexpr int64_t Add(int64_t a, int64_t b) {
    int64_t sum = 0;
    return __builtin_add_overflow(a, b, &sum) ? (b < 0 ? kLeast : kMost) : sum;
}

constexpr int64_t Mul(int64_t a, int64_t b) {
    int64_t product = 0;
    return __builtin_mul_overflow(a, b, &product) ? ((a < 0) != (b < 0) ? kLeast : kMost) : product;
}

// a * b / divisor, truncated towards zero; the product is never cut. The divisor is not 0.
constexpr int64_t MulDiv(int64_t a, int64_t b, int64_t divisor) {
    __extension__ using Wide = __int128;
    const Wide quotient = static_cast<Wide>(a) * b / divisor;
    return quotient > kMost ? kMost : quotient < kLeast ? kLeast : static_cast<int64_t>(quotient);
}

}  // namespace Saturating
