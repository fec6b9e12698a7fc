#include "platform/base/SystemTime.h"

#include <chrono>

void GetSystemTimeAsFileTime(FILETIME* time) {
    using Ticks = std::chrono::duration<int64_t, std::ratio<1, 10'000'000>>;
    constexpr int64_t kTicksTo1970 = int64_t{134774} * 24 * 3600 * 10'000'000;  // days from 1601
    const auto since1970 = std::chrono::system_clock::now().time_since_epoch();
    const auto ticks =
        static_cast<uint64_t>(kTicksTo1970 + std::chrono::duration_cast<Ticks>(since1970).count());
    *time = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}
