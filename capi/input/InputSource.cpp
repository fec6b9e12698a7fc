#include "capi/input/InputSource.h"

#include <algorithm>

namespace {
constexpr uint64_t kHeldMost = uint64_t{64} << 20;  // what memory may be taken for on a promise alone
}

bool InputInOrder::Read(void* buffer, size_t count) {
    const size_t done = m_input.ReadWholeAt(m_place, buffer, count);
    m_place += done;
    return done == count;
}

// What is passed over has to be read; the end is met here.
bool InputInOrder::Skip(uint64_t count) {
    char passed[4096];
    while (count != 0) {
        const auto step = static_cast<size_t>(std::min<uint64_t>(count, sizeof passed));
        if (!Read(passed, step)) return false;
        count -= step;
    }
    return true;
}

bool InputInOrder::Holds(uint64_t count) { return count <= kHeldMost; }

bool InputInOrder::Tell(uint64_t& place) {
    place = m_place;
    return true;
}
