// Nothing locks several bytes at once, so a share mode is taken in three steps: (1) look for opponents, (2)
// take the own markers, (3) look again. Two openers who contradict each other may both pass (1), but
// whoever comes to (3) later sees the other: at least one of them gives way. So two that contradict each
// other never both stay.
#include "platform/file/ShareMarkers.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <iterator>
#include <limits>
#include <thread>

namespace {

enum Marker : unsigned { kReads, kDeniesRead, kWrites, kDeniesWrite, kMarkerCount };
static_assert((kReads ^ 1) == kDeniesRead && (kWrites ^ 1) == kDeniesWrite, "opponents are neighbours");

constexpr int kContradicted = EAGAIN;

// Below the largest place, so that a lock of one byte still ends within 64 bits, and past whatever a
// file can hold.
constexpr int64_t ByteOf(unsigned marker) { return std::numeric_limits<int64_t>::max() - 0xFF + marker; }

class Markers {
public:
    Markers(const SystemFile& file, const ShareMode& mode)
        : m_file(file), m_wanted{mode.read, mode.denyRead, mode.write, mode.denyWrite} {}

    // 0, kContradicted or an errno.
    int FindOpponent() const {
        return ForEachWanted([&](unsigned marker) {
            bool locked = false;
            const int error = m_file.IsLockedByOther(ByteOf(marker ^ 1), locked);
            // Locks of this same open file don't count as another's, so (3) doesn't meet the own markers.
            return locked ? kContradicted : error;
        });
    }
    int Take() const {
        return ForEachWanted([&](unsigned marker) { return m_file.Lock(ByteOf(marker)); });
    }
    // Also those that Take didn't get to: unlocking a free byte does nothing.
    void Drop() const {
        ForEachWanted([&](unsigned marker) {
            m_file.Unlock(ByteOf(marker));
            return 0;
        });
    }

private:
    template <class Step>
    int ForEachWanted(Step step) const {
        for (unsigned marker = 0; marker < kMarkerCount; ++marker) {
            if (!m_wanted[marker]) continue;
            if (const int error = step(marker)) return error;
        }
        return 0;
    }

    const SystemFile& m_file;
    const bool m_wanted[kMarkerCount];
};

// Some 1 to 4 ms; the clock's low digits keep two racers apart.
void BackOff() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    const auto ticks = std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
    std::this_thread::sleep_for(std::chrono::microseconds(1000 + ticks / 16 % 3000));
}

bool MeansNoLocks(int error) {
    constexpr int kNoLocks[] = {EINVAL, ENOLCK, EOPNOTSUPP, ENOSYS};
    return std::find(std::begin(kNoLocks), std::end(kNoLocks), error) != std::end(kNoLocks);
}

int TakeWithRetries(const Markers& markers) {
    constexpr int kTries = 20;
    for (int i = 0; i < kTries; ++i) {
        if (const int error = markers.FindOpponent()) return error;  // (1) one that stays: at once
        // (2) A lock that can't be had is held by an opener that may only write: its locks aren't shared.
        int error = markers.Take();
        if (error == 0) error = markers.FindOpponent();  // (3)
        if (error == 0) return 0;
        markers.Drop();
        if (error != kContradicted) return error;
        BackOff();  // another came between; one of the two will be first the next time
    }
    return kContradicted;
}

}  // namespace

int TakeShareMode(const SystemFile& file, const ShareMode& mode, bool& isHeld) {
    const int error = TakeWithRetries(Markers(file, mode));
    isHeld = error == 0;
    return MeansNoLocks(error) ? 0 : error;
}
