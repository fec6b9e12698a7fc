// The kernels of all instruction sets but the portable one: the order of the work, in terms of 16 lanes that
// an instruction set V brings. Included by the kernels' files alone, each of which names a V of its own in an
// unnamed namespace: nothing here may be shared between files compiled for different processors, so no
// function of the standard library is called either.
//
// (a) Most samples come out of whole numbers, block by block. (b) Those too near a whole number are noted,
// and (c) computed again: in doubles in any order, which leaves an error below 1e-9 of a sample, and where
// that is too near as well, as the definition says. (d) A block of which many are too near, and filters that
// copy many input samples, take the sum in doubles in the definition's order for all lanes.
//
// Streams are places that the same block of taps meets, of other channels or other cycles: each load of taps
// serves several of them.
#pragma once

#include <utility>  // std::integer_sequence, which is a type alone

#include "AudioCodec/wave/converter/ConverterKernel.h"
#include "AudioCodec/wave/converter/SampleScale.h"

namespace {

// 0 … count - 1, as constants, so that each index of an array of sums is one of a register.
template <class Each, int... index>
[[gnu::always_inline]] inline void ForEachOf(std::integer_sequence<int, index...>, Each each) {
    (each(index), ...);
}
template <int count, class Each>
[[gnu::always_inline]] inline void ForEach(Each each) {
    ForEachOf(std::make_integer_sequence<int, count>(), each);
}

template <class V>
class VectorKernel {
public:
    static void Produce(const ConverterJob& job) {
        VectorKernel kernel(job);
        if (job.average || !job.filter->mostlyCertain)
            kernel.ProduceInDoubles();
        else if (job.held != 0)
            kernel.template ProduceCertified<true>();
        else
            kernel.template ProduceCertified<false>();
    }

    static int32_t Split(const int16_t* input, size_t frames, size_t channels, int16_t* rows, size_t stride) {
        typename V::Range range = V::NoRange();
        int32_t peak = 0;
        const auto copyRest = [&](size_t c, size_t from) {
            for (size_t i = from; i < frames; ++i) {
                const int16_t sample = input[i * channels + c];
                const int32_t size = sample < 0 ? -int32_t{sample} : int32_t{sample};
                if (size > peak) peak = size;
                rows[c * stride + i] = sample;
            }
        };
        size_t c = 0;
        for (; c + 2 <= channels; c += 2) {
            size_t i = 0;
            for (; i + V::kSplitFrames <= frames; i += V::kSplitFrames) {
                const int16_t* const from = input + i * channels + c;
                alignas(64) int16_t two[V::kSplitFrames][2];
                if (channels != 2)
                    for (size_t j = 0; j < V::kSplitFrames; ++j)
                        __builtin_memcpy(two[j], from + j * channels, sizeof two[j]);
                int16_t* const left = rows + c * stride + i;
                V::SplitStereo(channels == 2 ? from : two[0], left, left + stride, range);
            }
            copyRest(c, i);
            copyRest(c + 1, i);
        }
        if (c < channels) {
            size_t i = 0;
            if (channels == 1)
                for (; i + V::kSplitFrames <= frames; i += V::kSplitFrames)
                    V::CopyInRange(input + i, rows + i, range);
            copyRest(c, i);
        }
        alignas(64) uint16_t sizes[V::kSplitFrames];
        V::StoreSizes(range, sizes);
        for (const uint16_t size : sizes)
            if (size > peak) peak = size;
        return peak;
    }

    static void Join(const int16_t* planes, size_t stride, size_t channels, size_t frames, int16_t* output) {
        size_t c = 0;
        for (; c + 2 <= channels; c += 2) {
            const int16_t* const left = planes + c * stride;
            size_t i = 0;
            for (; i + V::kJoinFrames <= frames; i += V::kJoinFrames) {
                int16_t* const to = output + i * channels + c;
                alignas(64) int16_t two[V::kJoinFrames][2];
                V::JoinStereo(left + i, left + stride + i, channels == 2 ? to : two[0]);
                if (channels != 2)
                    for (size_t j = 0; j < V::kJoinFrames; ++j)
                        __builtin_memcpy(to + j * channels, two[j], sizeof two[j]);
            }
            for (; i < frames; ++i) {
                output[i * channels + c] = left[i];
                output[i * channels + c + 1] = left[stride + i];
            }
        }
        if (c < channels)
            for (size_t i = 0; i < frames; ++i) output[i * channels + c] = planes[c * stride + i];
    }

private:
    using Block = FilterLayout::Block;
    using PairTaps = FilterLayout::PairTaps;

    struct Stream {
        const int16_t* window;  // where the block's first slot meets the input
        int16_t* output;        // of lane 0, which may lie before the job's output
        int32_t from, to;       // lanes that count
        uint32_t at;            // frame of the job of lane 0, modulo 2^32
    };
    struct Doubt {
        const int16_t* window;  // where slot 0 of the row meets the input
        const double* row;
        int16_t* output;
    };
    static constexpr int32_t kDoubts = 256;
    static constexpr int kTogether = 4;
    static constexpr int kMostDoubts = 6;    // in a block that isn't computed again as a whole
    static constexpr double kNear = 1e-7;    // of a sample, between two that a sum in any order tells apart
    static constexpr int32_t kWindow = 512;  // slots at the most, by the spread that PhaseFilter allows

    static constexpr int32_t kUnits = 1 << FilterLayout::kCoarseBits;
    // Beside what the split leaves out: the bits of fine sums below a unit, the sum in doubles, which is
    // exact to 33 roundings of less than 2^17 / 2^53, and the rounding of the bound itself.
    static constexpr int32_t kBeside = 3;
    // Half a unit of the 31 taps for the excess, which have 2 bits more than the coarse ones.
    static constexpr int32_t kBesideExcess = 4;

    explicit VectorKernel(const ConverterJob& job) : m_job(job), m_filter(*job.filter) {
        const int32_t peak =
            job.peak > SampleScale::kWholeLimit ? int32_t{SampleScale::kWholeLimit} : job.peak;
        m_bound =
            static_cast<int32_t>(m_filter.leftOut * peak) + kBeside + (job.held != 0 ? kBesideExcess : 0);
    }

    // Calls visit(frame of the job that the block's first lane is, place in the input of its first slot)
    // wherever a block meets the job. `first` is that lane's frame in its cycle.
    template <class Visit>
    void ForPlaces(const Block& block, int64_t first, Visit visit) const {
        const auto frames = static_cast<int64_t>(m_job.frames);
        int64_t at = first - m_job.phase;
        int64_t place = int64_t{block.place} - m_filter.places[m_job.phase];
        for (; at < frames; at += m_filter.cyclePhases, place += m_filter.cycleStep)
            if (at + block.lanes > 0) visit(at, place);
    }

    // (a)
    template <bool kHeld>
    void ProduceCertified() {
        for (size_t b = 0; b < m_filter.blockCount; ++b) {
            const Block& block = m_filter.blocks[b];
            m_firstFrame = static_cast<int32_t>(b) * kLanes;
            m_firstRow = m_firstFrame % m_filter.phases;
            Stream streams[V::kStreams];
            int count = 0;
            ForPlaces(block, m_firstFrame, [&](int64_t at, int64_t place) {
                for (uint32_t c = 0; c < m_job.channels; ++c) {
                    SetStream(streams[count], block, at, c);
                    streams[count].window = m_job.input + c * m_job.inputStride + place;
                    if (++count != V::kStreams) continue;
                    Certify<V::kStreams, kHeld>(block, streams);
                    count = 0;
                }
            });
            CertifyRest<V::kStreams - 1, kHeld>(block, streams, count);
        }
        Settle();
    }

    // Member by member: a copy of the whole, read wider than its parts were written, waits for them.
    void SetStream(Stream& stream, const Block& block, int64_t at, uint32_t channel) const {
        const int64_t left = static_cast<int64_t>(m_job.frames) - at;
        stream.output = m_job.output + channel * m_job.outputStride + at;
        stream.from = at < 0 ? static_cast<int32_t>(-at) : 0;
        stream.to = left < block.lanes ? static_cast<int32_t>(left) : block.lanes;
        stream.at = static_cast<uint32_t>(at);
    }

    template <int kCount, bool kHeld>
    void CertifyRest(const Block& block, const Stream* streams, int count) {
        if constexpr (kCount > 0) {
            if (count == kCount) return Certify<kCount, kHeld>(block, streams);
            CertifyRest<kCount - 1, kHeld>(block, streams, count);
        }
    }

    template <int kCount, bool kHeld>
    void Certify(const Block& block, const Stream* streams) {
        typename V::Ints coarse[kCount];
        typename V::Ints fine[kCount];
        Multiply<kCount>(block, streams, kHeld ? m_job.held : 0, coarse, fine);
        if constexpr (kHeld) AddExcess<kCount>(block, streams, fine);
        ForEach<kCount>([&](int s) { Finish(block, streams[s], coarse[s], fine[s]); });
    }

    // Sums in variables of its own, which no other function can reach: so they stay in registers.
    template <int kCount>
    [[gnu::always_inline]] static void Multiply(const Block& block, const Stream* streams, ptrdiff_t plane,
                                                typename V::Ints* coarseSums, typename V::Ints* fineSums) {
        typename V::Ints coarse[kCount];
        typename V::Ints fine[kCount];
        const int16_t* window[kCount];
        for (int s = 0; s < kCount; ++s) {
            coarse[s] = fine[s] = V::Zero();
            window[s] = streams[s].window + plane;
        }
        const PairTaps* taps = block.pairs;
        const size_t pairs = block.pairCount;
        for (size_t pair = 0; pair < pairs; ++pair, taps += 2) {
            const typename V::Pairs first = V::Load(taps[0]);
            const typename V::Pairs second = V::Load(taps[1]);
            for (int s = 0; s < kCount; ++s) {
                const typename V::Pair samples = V::Broadcast(window[s] + 2 * pair);
                coarse[s] = V::MultiplyAdd(coarse[s], samples, first);
                fine[s] = V::MultiplyAdd(fine[s], samples, second);
            }
        }
        for (int s = 0; s < kCount; ++s) {
            coarseSums[s] = coarse[s];
            fineSums[s] = fine[s];
        }
    }

    // What the limit of the input leaves of samples beyond it, which is no whole number.
    template <int kCount>
    void AddExcess(const Block& block, const Stream* streams, typename V::Ints* fine) const {
        typename V::Ints excess[kCount];
        const int16_t* window[kCount];
        bool any = false;
        for (int s = 0; s < kCount; ++s) {
            excess[s] = V::Zero();
            window[s] = streams[s].window + m_job.excess;
            any |= V::AnySet(window[s], 2 * block.pairCount);
        }
        if (!any) return;
        for (size_t pair = 0; pair < block.pairCount; ++pair) {
            const typename V::Pairs taps = V::Load(block.excess[pair]);
            for (int s = 0; s < kCount; ++s)
                excess[s] = V::MultiplyAdd(excess[s], V::Broadcast(window[s] + 2 * pair), taps);
        }
        constexpr int kBits = FilterLayout::kCoarseBits - FilterLayout::kExcessBits;
        for (int s = 0; s < kCount; ++s)
            fine[s] = V::Add(fine[s], V::ShiftLeft(excess[s], kBits + m_filter.fineBits));
    }

    // The whole part, and what is left of it in units of 2^-14; lanes that are too near are noted.
    void Finish(const Block& block, const Stream& stream, const typename V::Ints& coarse,
                const typename V::Ints& fine) {
        const typename V::Ints sum = V::Add(coarse, V::ShiftRight(fine, m_filter.fineBits));
        const typename V::Ints floor = V::Whole(sum);
        // Cut towards 0: a rest that counts as certain isn't 0, so below 0 it is one more.
        Store(stream, V::Add(floor, V::SignBit(floor)));
        const typename V::Ints above = V::And(V::Sub(sum, V::Set(m_bound)), V::Set(kUnits - 1));
        uint32_t doubtful = V::Above(above, V::Set(kUnits - 1 - 2 * m_bound));
        if (doubtful == 0) [[likely]]
            return;
        doubtful &= (1U << stream.to) - (1U << stream.from);
        if (__builtin_popcount(doubtful) > kMostDoubts) return FinishInDoubles(block, stream);
        Note(stream, doubtful);
    }

    void Store(const Stream& stream, const typename V::Ints& samples) const {
        if (stream.from == 0 && stream.to == kLanes) [[likely]]
            return V::Store(stream.output, samples);
        alignas(64) int16_t lanes[kLanes];
        V::Store(lanes, samples);
        for (int32_t lane = stream.from; lane < stream.to; ++lane) stream.output[lane] = lanes[lane];
    }

    // (b)
    void Note(const Stream& stream, uint32_t doubtful) {
        const int32_t* const places = m_filter.places + m_firstFrame;
        for (; doubtful != 0; doubtful &= doubtful - 1) {
            const int lane = __builtin_ctz(doubtful);
            int32_t row = m_firstRow + lane;
            while (row >= m_filter.phases) row -= m_filter.phases;
            m_doubts[m_doubtCount++] = {stream.window - 1 + (places[lane] - places[0]),
                                        m_filter.rows + static_cast<size_t>(row) * kTapsPerRow,
                                        stream.output + lane};
        }
        if (m_doubtCount > kDoubts - kLanes) Settle();
    }

    // (c)
    void Settle() {
        int32_t left = 0;
        for (int32_t i = 0; i < m_doubtCount; ++i) {
            const Doubt& doubt = m_doubts[i];
            const double near = V::AnyOrder(doubt.window, doubt.row);
            const auto cut = static_cast<int32_t>(near);
            const double rest = near < 0 ? cut - near : near - cut;
            if (rest > kNear && rest < 1 - kNear)
                *doubt.output = ToSample(cut);
            else
                m_doubts[left++] = doubt;
        }
        for (int32_t i = 0; i < left; i += kTogether) Define(m_doubts + i, left - i);
        m_doubtCount = 0;
    }

    // As the definition says, several at a time, since each addition waits for the one before it.
    static void Define(const Doubt* doubts, int32_t count) {
        double values[kTogether][kTapsPerRow];
        const double* rows[kTogether];
        double sums[kTogether] = {};
        for (int32_t i = 0; i < kTogether; ++i) {
            const Doubt& doubt = doubts[i < count ? i : 0];
            V::Widen(doubt.window, values[i], kTapsPerRow);
            rows[i] = doubt.row;
        }
        for (size_t k = 0; k < kTapsPerRow; ++k)
            ForEach<kTogether>([&](int i) { sums[i] += values[i][k] * rows[i][k]; });
        for (int32_t i = 0; i < kTogether && i < count; ++i)
            *doubts[i].output = ToSample(static_cast<int32_t>(sums[i] * SampleScale::kFull));
    }

    static int16_t ToSample(int32_t cut) {
        constexpr int32_t kLimit = SampleScale::kOutputLimit;
        return static_cast<int16_t>(cut > kLimit ? kLimit : cut < -kLimit ? -kLimit : cut);
    }

    // (d)
    void FinishInDoubles(const Block& block, const Stream& stream) const {
        alignas(64) double wide[kWindow];
        V::Widen(stream.window, wide, 2 * block.pairCount);
        typename V::Doubles sum = V::ZeroDoubles();
        for (size_t slot = 0; slot < 2 * block.pairCount; ++slot)
            V::MultiplyAddSlot(sum, wide[slot], block.slots[slot]);
        Store(stream, V::ToSteps(sum));
    }

    void ProduceInDoubles() {
        const int64_t last = int64_t{m_job.phase} + m_job.frames;
        const int64_t reach = last * m_filter.step / m_filter.phases - m_filter.places[m_job.phase];
        const auto margin = static_cast<ptrdiff_t>(ConverterKernel::Margin(m_filter.step, m_filter.phases));
        const auto count = static_cast<size_t>(reach + 2 * margin);
        if (m_job.average)
            for (uint32_t i = 0; i < m_job.frames; ++i) m_job.totals[i] = 0.0;
        for (uint32_t c = 0; c < m_job.channels; ++c) {
            V::Widen(m_job.input + c * m_job.inputStride - margin, m_job.wide - margin, count);
            for (size_t b = 0; b < m_filter.blockCount; ++b) {
                const Block& block = m_filter.blocks[b];
                Stream streams[V::kSlotStreams];
                const double* windows[V::kSlotStreams];
                int pending = 0;
                ForPlaces(block, static_cast<int64_t>(b) * kLanes, [&](int64_t at, int64_t place) {
                    windows[pending] = m_job.wide + place;
                    SetStream(streams[pending], block, at, c);
                    if (++pending != V::kSlotStreams) return;
                    Sum<V::kSlotStreams>(block, streams, windows);
                    pending = 0;
                });
                SumRest<V::kSlotStreams - 1>(block, streams, windows, pending);
            }
        }
        if (m_job.average) StoreMeans();
    }

    template <int kCount>
    void SumRest(const Block& block, const Stream* streams, const double* const* windows, int count) {
        if constexpr (kCount > 0) {
            if (count == kCount) return Sum<kCount>(block, streams, windows);
            SumRest<kCount - 1>(block, streams, windows, count);
        }
    }

    template <int kCount>
    void Sum(const Block& block, const Stream* streams, const double* const* windows) {
        typename V::Doubles sums[kCount];
        MultiplySlots<kCount>(block, windows, sums);
        for (int s = 0; s < kCount; ++s) {
            if (m_job.average)
                AddTotals(streams[s], sums[s]);
            else
                Store(streams[s], V::ToSteps(sums[s]));
        }
    }

    template <int kCount>
    [[gnu::always_inline]] static void MultiplySlots(const Block& block, const double* const* windows,
                                                     typename V::Doubles* slotSums) {
        typename V::Doubles sums[kCount];
        const double* window[kCount];
        for (int s = 0; s < kCount; ++s) {
            sums[s] = V::ZeroDoubles();
            window[s] = windows[s];
        }
        const FilterLayout::SlotTaps* const taps = block.slots;
        const size_t slots = 2 * block.pairCount;
        for (size_t slot = 0; slot < slots; ++slot)
            for (int s = 0; s < kCount; ++s) V::MultiplyAddSlot(sums[s], window[s][slot], taps[slot]);
        for (int s = 0; s < kCount; ++s) slotSums[s] = sums[s];
    }

    void AddTotals(const Stream& stream, const typename V::Doubles& sums) const {
        alignas(64) double lanes[kLanes];
        V::StoreDoubles(lanes, sums);
        for (int32_t lane = stream.from; lane < stream.to; ++lane)
            m_job.totals[stream.at + static_cast<uint32_t>(lane)] += lanes[lane];
    }

    // `totals` has room for whole vectors.
    void StoreMeans() const {
        const auto frames = static_cast<int32_t>(m_job.frames);
        for (int32_t at = 0; at < frames; at += kLanes) {
            const int32_t to = frames - at < kLanes ? frames - at : kLanes;
            const Stream stream = {nullptr, m_job.output + at, 0, to, 0};
            Store(stream, V::ToSteps(V::LoadDoubles(m_job.totals + at, m_job.channels)));
        }
    }

    const ConverterJob& m_job;
    const FilterLayout& m_filter;
    int32_t m_bound = 0;       // units to a whole number within which a sum is doubtful
    int32_t m_firstFrame = 0;  // of the block, in its cycle
    int32_t m_firstRow = 0;    // and the row of its first lane
    int32_t m_doubtCount = 0;
    Doubt m_doubts[kDoubts];
};

}  // namespace
