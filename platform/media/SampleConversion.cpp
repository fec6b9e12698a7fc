#include "platform/media/SampleConversion.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <limits>

namespace {

constexpr int16_t Narrow(uint8_t value) { return static_cast<int16_t>((value - 128) * 256); }
constexpr int16_t Narrow(int16_t value) { return value; }
template <class Integer>
constexpr int16_t NarrowWide(Integer value) {
    constexpr int kShift = std::numeric_limits<Integer>::digits - 15;
    const Integer nearest = (value >> kShift) + (value >> (kShift - 1) & 1);  // the bit below decides
    return static_cast<int16_t>(std::min<Integer>(nearest, 32767));
}
constexpr int16_t Narrow(int32_t value) { return NarrowWide(value); }
constexpr int16_t Narrow(int64_t value) { return NarrowWide(value); }
static_assert(Narrow(int32_t{0x00018000}) == 2 && Narrow(int32_t{-0x00008000}) == 0 &&
              Narrow(std::numeric_limits<int32_t>::max()) == 32767);

// Added and taken away again it leaves the nearest whole number, as long as numbers are small; unlike the
// library's rounding it fits into vector code.
template <class Real>
constexpr Real kRounder = Real{3} *
                          (std::numeric_limits<Real>::digits == 24 ? Real{1 << 22} : Real{1LL << 51});

template <class Real>
int16_t NarrowReal(Real value) {
    const Real known = value == value ? value : Real{0};  // no number: silence
    const Real clipped = std::min(std::max(known * Real{32768}, Real{-32768}), Real{32767});
    return static_cast<int16_t>(static_cast<int>(clipped + kRounder<Real> - kRounder<Real>));
}
int16_t Narrow(float value) { return NarrowReal(value); }
int16_t Narrow(double value) { return NarrowReal(value); }

// All channels of a frame stand side by side.
template <class Sample>
void FromPacked(const AVFrame& frame, int first, int16_t* out) {
    const auto channels = static_cast<size_t>(frame.ch_layout.nb_channels);
    const auto* const in =
        std::bit_cast<const Sample*>(frame.extended_data[0]) + channels * static_cast<size_t>(first);
    const size_t count = channels * static_cast<size_t>(frame.nb_samples - first);
    for (size_t i = 0; i < count; ++i) out[i] = Narrow(in[i]);
}

template <class Sample>
const Sample* PlaneOf(const AVFrame& frame, int channel, int first) {
    return std::bit_cast<const Sample*>(frame.extended_data[channel]) + first;
}

// Each channel stands for itself; the usual two are taken together.
template <class Sample>
void FromPlanar(const AVFrame& frame, int first, int16_t* out) {
    const int channels = frame.ch_layout.nb_channels;
    const int count = frame.nb_samples - first;
    if (channels == 2) {
        const auto* const left = PlaneOf<Sample>(frame, 0, first);
        const auto* const right = PlaneOf<Sample>(frame, 1, first);
        for (int i = 0; i < count; ++i) {
            *out++ = Narrow(left[i]);
            *out++ = Narrow(right[i]);
        }
        return;
    }
    for (int channel = 0; channel < channels; ++channel) {
        const auto* const in = PlaneOf<Sample>(frame, channel, first);
        int16_t* to = out + channel;
        for (int i = 0; i < count; ++i, to += channels) *to = Narrow(in[i]);
    }
}

struct ConversionRow {
    AVSampleFormat format;
    void (*convert)(const AVFrame& frame, int first, int16_t* out);
};
constexpr ConversionRow kConversions[] = {
    {AV_SAMPLE_FMT_U8, FromPacked<uint8_t>},  {AV_SAMPLE_FMT_U8P, FromPlanar<uint8_t>},
    {AV_SAMPLE_FMT_S16, FromPacked<int16_t>}, {AV_SAMPLE_FMT_S16P, FromPlanar<int16_t>},
    {AV_SAMPLE_FMT_S32, FromPacked<int32_t>}, {AV_SAMPLE_FMT_S32P, FromPlanar<int32_t>},
    {AV_SAMPLE_FMT_S64, FromPacked<int64_t>}, {AV_SAMPLE_FMT_S64P, FromPlanar<int64_t>},
    {AV_SAMPLE_FMT_FLT, FromPacked<float>},   {AV_SAMPLE_FMT_FLTP, FromPlanar<float>},
    {AV_SAMPLE_FMT_DBL, FromPacked<double>},  {AV_SAMPLE_FMT_DBLP, FromPlanar<double>},
};

const ConversionRow* FindConversion(int format) {
    const auto* const row = std::ranges::find(kConversions, format, &ConversionRow::format);
    return row == std::end(kConversions) ? nullptr : row;
}

}  // namespace

bool CanConvert(AVSampleFormat format) { return FindConversion(format) != nullptr; }

void ToPcm16(const AVFrame& frame, int first, int16_t* out) {
    FindConversion(frame.format)->convert(frame, first, out);
}
