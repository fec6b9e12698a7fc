// How far two sources of audio are the same, frame by frame, in samples of 16 bits, and how far they are
// apart where they aren't. Finds no offset and prints nothing.
//
// Decisions: only frames that both have are measured. Where one ends before the other, the first frame that
// only the other has is one that differs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "capi/vlwav.hpp"

class Comparison {
public:
    struct Channel {
        int32_t peak = 0;  // of the differences, in steps of 16 bits
        std::optional<double>
            snr;  // of a over the difference, dB; none where there is no difference, or no a
    };

    // Reads both from where they stand until one ends. Their rates and channels have to be the same. Memory
    // is that of a block. Throws what reading throws.
    Comparison(vlw::Reader& a, vlw::Reader& b);

    // From where the readers stood; none where all frames that both have are equal.
    std::optional<int64_t> FirstDifference() const { return m_first; }
    int64_t Frames() const { return m_frames; }  // that both have
    // How each of them ended; `more` where it goes on after the other has ended.
    vlw::Ending EndOfA() const { return m_endOfA; }
    vlw::Ending EndOfB() const { return m_endOfB; }
    bool SameLength() const { return m_endOfA != vlw::Ending::more && m_endOfB != vlw::Ending::more; }
    std::vector<Channel> Channels() const;

private:
    struct Sums {
        int32_t peak = 0;
        double signal = 0, noise = 0;  // sums of squares
    };

    void Take(const int16_t* a, const int16_t* b, size_t frames);

    std::vector<Sums> m_sums;  // of each channel
    std::optional<int64_t> m_first;
    int64_t m_frames = 0;
    vlw::Ending m_endOfA = vlw::Ending::more, m_endOfB = vlw::Ending::more;
};
