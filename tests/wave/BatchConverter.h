// What the converter is held against: its definition, in doubles, batch by batch of 32 frames, with nothing
// but loops. As slow as it looks.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

class BatchConverter {
public:
    // The ratio as the converter under test found it, L/M.
    BatchConverter(uint32_t channels, uint32_t outChannels, int64_t phases, int64_t step, double cutoff)
        : m_channels(channels),
          m_outChannels(outChannels),
          m_phases(phases),
          m_step(step),
          m_rows(static_cast<size_t>(phases) * 32),
          m_history(size_t{channels} * 64) {
        for (int64_t p = 0; p < phases; ++p) BuildRow(&m_rows[static_cast<size_t>(p) * 32], p, cutoff);
    }

    int64_t ResetToOutput(int64_t position) {
        m_readPos = 0;
        m_phase = position % m_phases;
        const int64_t source = position / m_phases * m_step + Place(m_phase);
        Begin(std::min<int64_t>(source, 16) + 16);
        return source - (m_warmup - 16);
    }
    int64_t ResetToInput(int64_t position) {
        m_phase = 0;
        m_readPos = position % m_step;
        for (; m_readPos >= Step(m_phase); ++m_phase) m_readPos -= Step(m_phase);
        Begin(16);
        return m_phase + m_phases * (position / m_step);
    }
    int64_t WantedOffer() const { return m_warmup > 0 ? m_warmup + 32 : 1; }
    void EndWith(int64_t frames) {
        if (m_warmup > 0 && frames < WantedOffer() - frames) m_stretches = false;
    }

    void Process(const int16_t* input, uint32_t* inFrames, int16_t* output, uint32_t* outFrames) {
        int64_t offered = *inFrames;
        int64_t room = *outFrames;
        *inFrames = *outFrames = 0;
        if (offered == 0 && m_warmup > 0) return;
        if (offered != 0 && offered < m_warmup) {
            if (room == 0) return;
            *inFrames = static_cast<uint32_t>(offered);
            TakeIn(input, offered);
            m_warmup -= offered;
            const int16_t* silence = nullptr;
            TakeIn(silence, m_warmup);
            m_tail -= std::min(m_warmup, m_tail);
            m_warmup = 0;
            return;
        }
        if (m_warmup > 0 && m_stretches && offered < m_warmup + 32) m_warmup += 32 - offered;
        if (offered == 0) {
            offered = m_tail;
            input = nullptr;
        }
        const bool isTail = input == nullptr;
        while (room != 0 && offered != 0) {
            int64_t batch = std::min(offered, m_warmup + 32);
            TakeIn(input, batch);
            const int64_t warmed = m_warmup <= batch ? m_warmup : 0;
            const int64_t taken = m_warmup <= batch ? m_warmup : batch;
            batch = m_warmup <= batch ? batch - m_warmup : 0;
            offered -= taken;
            m_warmup -= taken;
            *inFrames += static_cast<uint32_t>(warmed);
            for (; m_readPos < batch && room != 0; --room, ++*outFrames) MakeFrame(output);
            const int64_t used = std::min(batch, m_readPos);
            m_readPos -= used;
            for (size_t c = 0; c < m_channels; ++c) {
                double* const row = &m_history[c * 64];
                std::copy(row + used, row + used + 32, row);
            }
            offered -= used;
            if (isTail)
                m_tail -= used;
            else
                *inFrames += static_cast<uint32_t>(used);
        }
    }

private:
    int64_t Place(int64_t phase) const { return phase * m_step / m_phases; }
    int64_t Step(int64_t phase) const { return Place(phase + 1) - Place(phase); }

    void BuildRow(double* row, int64_t phase, double cutoff) const {
        constexpr double kPi = 3.141592653589793;
        double sum = 0;
        for (int64_t j = 1; j < 32; ++j) {
            const double t = static_cast<double>((Place(phase) + j - 16) * m_phases - phase * m_step) /
                             static_cast<double>(m_phases);
            const double a = std::fabs(t * cutoff);
            const double sinc = a == 0 ? 1 : std::sin(std::fmod(a, 2.0) * kPi) / (a * kPi);
            const double window = std::fabs(t / 16) >= 1 ? 0 : std::cos(t / 16 * 0.5 * kPi);
            const double hann = window * window;  // to the bit, which pow isn't
            sum += row[j] = hann * sinc;
        }
        for (int64_t j = 0; j < 32; ++j) row[j] /= sum;
    }

    void Begin(int64_t warmup) {
        for (size_t c = 0; c < m_channels; ++c) std::fill_n(&m_history[c * 64], 32, 0.0);
        m_warmup = warmup;
        m_tail = 16;
        m_stretches = true;
    }

    void TakeIn(const int16_t*& input, int64_t frames) {
        for (int64_t i = 0; i < frames; ++i)
            for (size_t c = 0; c < m_channels; ++c)
                m_history[c * 64 + static_cast<size_t>(32 - m_warmup + i)] =
                    input ? std::clamp(*input++ / 32767.0, -0.999, 0.999) : 0.0;
    }

    void MakeFrame(int16_t*& output) {
        double total = 0;
        for (size_t c = 0; c < m_channels; ++c) {
            double sum = 0;
            for (size_t k = 0; k < 32; ++k)
                sum += m_history[c * 64 + static_cast<size_t>(m_readPos) + k] *
                       m_rows[static_cast<size_t>(m_phase) * 32 + k];
            total += sum;
            if (m_channels == m_outChannels) *output++ = Cut(sum);
            if (m_channels == 1 && m_outChannels > 1)
                for (uint32_t i = 0; i < m_outChannels; ++i) *output++ = Cut(sum);
        }
        if (m_channels > 1 && m_outChannels == 1) *output++ = Cut(total / m_channels);
        m_readPos += Step(m_phase);
        if (++m_phase == m_phases) m_phase = 0;
    }

    static int16_t Cut(double value) {
        return static_cast<int16_t>(std::clamp(static_cast<int>(value * 32767.0), -32767, 32767));
    }

    uint32_t m_channels;
    uint32_t m_outChannels;
    int64_t m_phases;
    int64_t m_step;
    std::vector<double> m_rows;
    std::vector<double> m_history;
    int64_t m_phase = 0;
    int64_t m_readPos = 0;
    int64_t m_warmup = 0;
    int64_t m_tail = 0;
    bool m_stretches = true;
};
