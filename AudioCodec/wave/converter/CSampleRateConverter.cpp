// How the input's rows work. Each input channel has one:
//
//   | 0 ......... past ......... 31 | 32 ...... being taken in ...... |
//                                     ^ first input frame not yet reported as consumed, once warmed up
//   The filter's slot 0 meets m_readPos, its centre, slot 16, meets m_readPos + 16.
//
// (1) Take in what is offered, as far as the rows reach, (2) end the warm-up, (3) make output frames while
// there is room, (4) slide the rows down by what was used. Only 32 values move: what lies after them will be
// offered again and lands at place 32 anew.
#include "AudioCodec/wave/converter/CSampleRateConverter.h"

#include <algorithm>
#include <new>

#include "AudioCodec/shell/object/Saturating.h"
#include "AudioCodec/wave/converter/ConversionRatio.h"
#include "AudioCodec/wave/converter/KernelChoice.h"
#include "AudioCodec/wave/converter/PortableKernel.h"
#include "AudioCodec/wave/converter/SharedFilters.h"

namespace {

constexpr int32_t kReach = 16;  // input frames to each side of the filter's centre
constexpr int32_t kBatch = 32;  // input frames that are used together at the most, where room ends
constexpr size_t kMade = 4096;  // samples made in one go
constexpr uint32_t kMostBlockChannels = 64;  // with more, the margins of the rows would cost too much memory

}  // namespace

void CSampleRateConverter::Configure(uint32_t srcChannels, int32_t srcRate, uint32_t dstChannels,
                                     int32_t dstRate) {
    const ConversionRatio ratio = FindConversionRatio(srcRate, dstRate);
    m_filter.reset();
    m_input.Release();
    m_srcChannels = srcChannels;
    m_dstChannels = dstChannels;
    m_srcRate = srcRate;
    m_dstRate = dstRate;
    m_phaseCount = ratio.phaseCount;
    m_inputStep = ratio.inputStep;
    m_phase = 0;
    m_readPos = 0;
    // The first input frame lands at value 16, under the centre of the first output frame. The values in
    // front of it are 0: before the start there is silence.
    StandAtStart(kReach);
}

void CSampleRateConverter::Prepare() {
    if (m_filter || !IsConfigured()) return;
    // A file of a few bytes can tell of 65535, and the rows of so many would take megabytes.
    if (m_srcChannels > kMostChannels) throw std::bad_alloc();
    const double relative = static_cast<double>(m_dstRate) / m_srcRate;
    const double cutoff = relative >= 0.0 && relative < 1.0 ? relative : 1.0;  // 1 for a source rate of 0
    std::shared_ptr<const PhaseFilter> filter = SharedFilter({m_phaseCount, m_inputStep}, cutoff);
    const FilterLayout& layout = filter->Layout();
    const bool inBlocks = layout.blockCount != 0 && m_srcChannels <= kMostBlockChannels;
    const size_t frames = MostAtOnce();
    std::vector<int16_t> made(frames * MadePlanes());
    std::vector<double> totals(m_dstChannels == 1 && m_srcChannels > 1 ? frames + kLanes : 0);
    m_input.Reset(m_srcChannels, inBlocks ? ConverterKernel::Margin(m_inputStep, m_phaseCount) : 0);
    m_made = std::move(made);
    m_totals = std::move(totals);
    const ConverterKernel& wanted = m_wantedKernel ? *m_wantedKernel : ChosenKernel();
    m_kernel = inBlocks ? &wanted : &kPortableKernel;
    m_filter = std::move(filter);
}

void CSampleRateConverter::Process(const int16_t* input, uint32_t* inFrames, int16_t* output,
                                   uint32_t* outFrames) {
    uint32_t room = *outFrames;
    int64_t offered = *inFrames;
    *inFrames = 0;
    *outFrames = 0;
    if (!IsConfigured()) return;
    Prepare();

    // Before any input there is no signal, so there are no zeros after one either.
    if (offered == 0 && m_warmup > 0) return;
    if (offered != 0 && offered < m_warmup) {
        if (room != 0) *inFrames = TakeShortWarmup(input, offered);
        return;
    }
    StretchWarmup(offered);
    // The source has ended. What is left of the tail stays in m_tail for the next call.
    if (offered == 0) {
        offered = m_tail;
        input = nullptr;
    }
    const bool feedsTail = input == nullptr;
    const uint32_t allRoom = room;
    while (room != 0 && offered != 0) {
        // No more than fits between value 32 - m_warmup and the end of the row.
        int64_t batch = std::min(offered, m_warmup + static_cast<int64_t>(m_input.Capacity()));
        TakeIn(input, batch);                                           // (1)
        *inFrames += static_cast<uint32_t>(EndWarmup(batch, offered));  // (2)
        const int64_t used = Produce(batch, output, room);              // (3)
        m_readPos -= used;
        m_input.Slide(static_cast<size_t>(used));  // (4)
        offered -= used;
        // Zeros of the tail are nobody's input: the caller must not be told that they were consumed.
        if (feedsTail)
            m_tail -= static_cast<int32_t>(used);
        else
            *inFrames += static_cast<uint32_t>(used);
    }
    *outFrames = allRoom - room;
}

// An offer that can't even fill the warm-up is a source that ends here: owners who have more offer it at
// once. Zeros of the tail fill the row up, so that the frames stand where they would in a longer source; the
// rest of the tail brings them under the centre. More zeros than the tail has mean that the place lies after
// the end, where no frame is due.
uint32_t CSampleRateConverter::TakeShortWarmup(const int16_t* input, int64_t offered) {
    TakeIn(input, offered);
    m_warmup -= static_cast<int32_t>(offered);
    const int16_t* silence = nullptr;
    TakeIn(silence, m_warmup);
    m_tail -= std::min(m_warmup, m_tail);
    m_warmup = 0;
    return static_cast<uint32_t>(offered);
}

// A first offer that doesn't fill what the row has room for moves where its frames land: at value offered -
// m_warmup instead of 32 - m_warmup. So after Configure the audio comes late for 33 to 47 frames, the first
// ones are passed over for 24 to 31, and 16 to 23 produce nothing and aren't consumed; owners who mind offer
// WantedOffer() at first. The new warm-up is at most 32, since the offer isn't shorter than the old one:
// nothing lands in front of the row.
void CSampleRateConverter::StretchWarmup(int64_t offered) {
    if (m_warmup > 0 && m_stretches && offered < WantedOffer())
        m_warmup = static_cast<int32_t>(WantedOffer() - offered);
}

void CSampleRateConverter::EndWith(uint32_t frames) {
    const int64_t stretched = int64_t{WantedOffer()} - frames;
    if (m_warmup > 0 && frames < stretched) m_stretches = false;
}

// (1) From value 32 - m_warmup on, so that the last frame of the warm-up stands right in front of value 32.
void CSampleRateConverter::TakeIn(const int16_t*& input, int64_t frames) {
    m_input.TakeIn(*m_kernel, input, static_cast<size_t>(kPast - m_warmup), static_cast<size_t>(frames));
    if (input) input += static_cast<size_t>(frames) * m_srcChannels;
}

// (2) Returns the input frames that the warm-up has used up for good. Until it is over it uses up none: its
// frames stay in the history, but will be offered again. Afterwards value 32 is the first frame that isn't
// reported, which is what the slide keeps true from then on.
int64_t CSampleRateConverter::EndWarmup(int64_t& batch, int64_t& offered) {
    if (m_warmup <= batch) {
        const int64_t used = m_warmup;
        offered -= used;
        batch -= used;
        m_warmup = 0;
        return used;
    }
    offered -= batch;
    m_warmup -= static_cast<int32_t>(batch);
    batch = 0;
    return 0;
}

// (3) As long as the read place lies before the end of the batch, all 32 values that the filter meets are in.
// Returns the input frames that are used. A read place past the batch, as steps of more than one frame make
// it, keeps its surplus for the next one. What was left unread for want of room isn't used; and where the
// last frame that had room stepped over the end of its 32, the surplus is kept as well.
int64_t CSampleRateConverter::Produce(int64_t batch, int16_t*& output, uint32_t& room) {
    int64_t end = batch;
    while (const uint32_t frames = FramesWithin(batch, room)) {
        const uint32_t made = std::min<uint32_t>(frames, MostAtOnce());
        const int64_t from = PlaceOf(m_phase);
        const int64_t last = m_readPos + PlaceOf(int64_t{m_phase} + made - 1) - from;
        MakeFrames(output, made);
        m_readPos += PlaceOf(int64_t{m_phase} + made) - from;
        m_phase = static_cast<int32_t>((int64_t{m_phase} + made) % m_phaseCount);
        room -= made;
        if (room == 0) end = std::min(batch, (last / kBatch + 1) * kBatch);
    }
    return std::min(end, m_readPos);
}

// The next output frames that begin before the end of a batch, as far as there is room: those whose place,
// floor((phase + i) M / L) from the start of the cycle, lies before it.
uint32_t CSampleRateConverter::FramesWithin(int64_t batch, uint32_t most) const {
    if (m_readPos >= batch) return 0;
    const int64_t end = batch - m_readPos + PlaceOf(m_phase);
    const int64_t frames = (end * m_phaseCount + m_inputStep - 1) / m_inputStep - m_phase;
    return static_cast<uint32_t>(std::min<int64_t>(frames, most));
}

// One for a mean, and for one that is spread.
size_t CSampleRateConverter::MadePlanes() const {
    return m_dstChannels == m_srcChannels ? std::max<size_t>(m_srcChannels, 1) : 1;
}

uint32_t CSampleRateConverter::MostAtOnce() const {
    return static_cast<uint32_t>(std::max<size_t>(kMade / MadePlanes(), 1));
}

void CSampleRateConverter::MakeFrames(int16_t*& output, uint32_t frames) {
    // Other channel counts have no mix: the frames count as made, but nothing is written.
    const bool equal = m_srcChannels == m_dstChannels;
    const bool spread = m_srcChannels == 1 && m_dstChannels >= 2;
    const bool average = m_srcChannels >= 2 && m_dstChannels == 1;
    if (m_srcChannels == 0 || (!equal && !spread && !average)) return;

    int16_t* const end = output + size_t{frames} * m_dstChannels;
    if (m_input.IsSilent()) {
        std::fill(output, end, int16_t{0});
        output = end;
        return;
    }
    const bool direct = m_dstChannels == 1;
    ConverterJob job{};
    job.filter = &m_filter->Layout();
    m_input.SetInput(job, static_cast<size_t>(m_readPos));
    job.channels = m_srcChannels;
    job.phase = m_phase;
    job.frames = frames;
    job.totals = m_totals.data();
    job.average = average;
    job.output = direct ? output : m_made.data();
    job.outputStride = frames;
    m_kernel->produce(job);
    if (!direct) m_kernel->join(m_made.data(), spread ? 0 : frames, m_dstChannels, frames, output);
    output = end;
}

// After a jump the frames in front are not those that were there: silence, until a warm-up puts others in
// place. What lies from value 32 on is overwritten before it is met. As many zeros as the filter reaches
// bring the last real frame under its centre.
void CSampleRateConverter::StandAtStart(int32_t warmup) {
    m_input.ClearPast();
    m_warmup = warmup;
    m_stretches = true;
    m_tail = kReach;
}

int64_t CSampleRateConverter::ResetToOutputPosition(int64_t position) {
    if (!IsConfigured()) return 0;
    const int64_t wanted = std::max<int64_t>(position, 0);
    m_readPos = 0;
    m_phase = static_cast<int32_t>(wanted % m_phaseCount);
    // Whole cycles of M input frames, then the place inside the last one: as a straight read would have come
    // there, so the two meet the same input frame in the same phase.
    const int64_t source =
        Saturating::Add(Saturating::Mul(m_inputStep, wanted / m_phaseCount), PlaceOf(m_phase));
    // The filter meets 16 frames in front of the target too, as far as there are any: they are read again.
    StandAtStart(static_cast<int32_t>(std::min<int64_t>(source, kReach)) + kReach);
    return source - (m_warmup - kReach);
}

int64_t CSampleRateConverter::ResetToInputPosition(int64_t position) {
    if (!IsConfigured()) return 0;
    const int64_t wanted = std::max<int64_t>(position, 0);
    const int64_t cycles = wanted / m_inputStep;
    // The phase whose step contains the input frame: the first after which the place lies beyond it. Rows
    // with a step of 0 in front of it are passed over, at position 0 too: so it is when the output has more
    // frames than the input.
    m_readPos = wanted % m_inputStep;
    const int64_t phases = m_phaseCount;
    m_phase = static_cast<int32_t>(((m_readPos + 1) * phases + m_inputStep - 1) / m_inputStep - 1);
    m_readPos -= PlaceOf(m_phase);
    // A writer can't read back: in front of the place there is silence, as at the start.
    StandAtStart(kReach);
    return Saturating::Add(Saturating::Mul(phases, cycles), m_phase);
}
