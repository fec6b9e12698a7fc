// CSampleRateConverter::Process beside the fastest library, and the best kernel beside the portable one.
#include <cstdio>

#include "AudioCodec/wave/converter/CSampleRateConverter.h"
#include "AudioCodec/wave/converter/KernelChoice.h"
#include "AudioCodec/wave/converter/SharedFilters.h"
#include "bench/converter/FastestPeer.h"
#include "bench/converter/MultiplyAddLimit.h"
#include "bench/converter/Signals.h"
#include "bench/table/Row.h"

namespace {

constexpr int kSeconds = 10;  // of audio

const ConverterKernel* KernelNamed(const std::string& name) {
    for (size_t k = 0; const ConverterKernel* kernel = KernelAt(k); ++k)
        if (name == kernel->name && kernel->isOffered()) return kernel;
    return nullptr;
}

class Conversion {
public:
    Conversion(const PeerJob& job, SignalKind kind, const ConverterKernel& kernel)
        : m_channels(job.channels),
          m_input(MakeSignal(kind, job.channels, job.from, kSeconds)),
          m_output(static_cast<size_t>(static_cast<double>(m_input.size()) * job.to / job.from) +
                   16384 * job.channels) {
        m_converter.UseKernel(kernel);
        m_converter.Configure(job.channels, job.from, job.channels, job.to);
        m_converter.Prepare();
    }

    double Run() {
        return Timed([&] {
            m_converter.ResetToOutputPosition(0);
            const size_t frames = m_input.size() / m_channels;
            size_t at = 0;
            m_frames = 0;
            for (uint32_t made = 1, taken = 1; made != 0 || taken != 0;) {
                taken = static_cast<uint32_t>(std::min<size_t>(kPeerBlock, frames - at));
                made = static_cast<uint32_t>(m_output.size() / m_channels - m_frames);
                m_converter.Process(m_input.data() + at * m_channels, &taken,
                                    m_output.data() + m_frames * m_channels, &made);
                at += taken;
                m_frames += made;
            }
        });
    }
    const Samples& Input() const { return m_input; }
    Samples& Output() { return m_output; }
    size_t Frames() const { return m_frames; }

private:
    CSampleRateConverter m_converter;
    uint32_t m_channels;
    Samples m_input;
    Samples m_output;
    size_t m_frames = 0;
};

std::string Format(const char* format, double a, double b = 0) {
    char text[100];
    std::snprintf(text, sizeof text, format, a, b);
    return text;
}

// Millions of output frames a second, and for the integer kernels the share of what the processor could do if
// it did nothing but multiply.
std::string SpeedOf(Conversion& conversion, const PeerJob& job, const ConverterKernel& kernel) {
    double seconds = conversion.Run();
    for (int i = 0; i < 10; ++i) seconds = std::min(seconds, conversion.Run());
    const double speed = static_cast<double>(conversion.Frames()) / seconds;
    std::string text = Format("%.0f M/s", speed / 1e6);
    const double limit = MultiplyAddLimit(kernel.name);
    if (limit == 0) return text;
    const auto filter = SharedFilter(FindConversionRatio(job.from, job.to),
                                     std::min(1.0, static_cast<double>(job.to) / job.from));
    const FilterLayout& layout = filter->Layout();
    size_t pairs = 0;
    for (size_t b = 0; b < layout.blockCount; ++b) pairs += layout.blocks[b].pairCount;
    // Lanes of 32 bits that each frame and channel takes, of either half of the taps.
    const double padded = 2.0 * static_cast<double>(pairs * kLanes) / layout.cyclePhases * job.channels;
    const double plain = 2.0 * kTapsPerRow / 2 * job.channels;
    return text + Format(", %.0f %% of the multiply-add limit, %.0f %% without the zeros around rows",
                         100 * speed * padded / limit, 100 * speed * plain / limit);
}

void AddPeerRow(const std::string& work, const PeerJob& job, SignalKind kind, const std::string& kernelName,
                double wanted) {
    AddRow(work, wanted, [=] {
        Sides sides;
        const ConverterKernel* const kernel = kernelName.empty() ? &ChosenKernel() : KernelNamed(kernelName);
        const FastestPeer peer = FindFastestPeer(job);
        if (!kernel || !peer.setting.make) return sides;
        const auto conversion = std::make_shared<Conversion>(job, kind, *kernel);
        sides.module = [=] { return conversion->Run(); };
        sides.peer = [=] {
            const std::unique_ptr<Peer> fresh = peer.setting.make(job);
            size_t made = 0;
            const double seconds =
                Timed([&] { made = fresh->Convert(conversion->Input(), conversion->Output()); });
            return made != 0 ? seconds : 0;
        };
        sides.peerName = peer.setting.name + Format(" (%.0f dB)", peer.noise);
        sides.note = std::string("· ") + kernel->name + " " + SpeedOf(*conversion, job, *kernel);
        if (kind == SignalKind::Sine && job.channels == 1)
            sides.note +=
                Format(", %.0f dB", SignalToNoise(conversion->Output().data(), conversion->Frames(), job.to));
        return sides;
    });
}

void AddPortableRow(const PeerJob& job, double wanted) {
    AddRow("kernels/" + std::to_string(job.from) + "-" + std::to_string(job.to), wanted, [=] {
        const auto best = std::make_shared<Conversion>(job, SignalKind::Sine, ChosenKernel());
        const auto portable = std::make_shared<Conversion>(job, SignalKind::Sine, *KernelNamed("portable"));
        return Sides{[=] { return best->Run(); }, [=] { return portable->Run(); }, "the portable kernel",
                     std::string("· ") + ChosenKernel().name};
    });
}

const bool g_added = [] {
    const struct {
        int from, to;
        double wanted, wantedByAvx2;
    } pairs[] = {
        {44100, 48000, 2.0, 1.2}, {48000, 44100, 2.0, 1.2}, {44100, 8000, 4.5, 2.5}, {8000, 44100, 2.5, 1.5}};
    for (const auto& pair : pairs) {
        const std::string rates = std::to_string(pair.from) + "-" + std::to_string(pair.to);
        AddPeerRow("process/" + rates + "/stereo", {2, pair.from, pair.to}, SignalKind::Sine, "",
                   pair.wanted);
        AddPeerRow("process/" + rates + "/stereo/avx2", {2, pair.from, pair.to}, SignalKind::Sine, "avx2",
                   pair.wantedByAvx2);
    }
    const struct {
        const char* name;
        uint32_t channels;
        SignalKind kind;
        double wanted;
    } shapes[] = {{"mono", 1, SignalKind::Sine, 1.3},
                  {"6 channels", 6, SignalKind::Sine, 1.3},
                  {"8-bit", 2, SignalKind::EightBit, 1.3},
                  {"quiet", 2, SignalKind::Quiet, 1.3},
                  {"clipped", 2, SignalKind::Clipped, 1.1}};
    for (const auto& shape : shapes)
        AddPeerRow(std::string("process/44100-48000/") + shape.name, {shape.channels, 44100, 48000},
                   shape.kind, "", shape.wanted);
    const int rates[] = {8000, 11025, 12000, 16000, 22050, 24000, 32000, 44100, 48000, 96000, 192000};
    for (const int from : rates)
        for (const int to : rates) {
            if (from == to) continue;
            bool isOneOfTheFour = false;
            for (const auto& pair : pairs) isOneOfTheFour |= pair.from == from && pair.to == to;
            AddPortableRow({2, from, to}, isOneOfTheFour ? 3 : 1);
        }
    return true;
}();

}  // namespace
