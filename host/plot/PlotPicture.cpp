#include "host/plot/PlotPicture.h"

#include <algorithm>
#include <cmath>

#include "host/plot/Ticks.h"

namespace {

constexpr uint32_t kInk = 0x222222, kFaint = 0x666666, kWave = 0x1F4E9E, kWhite = 0xFFFFFF;
constexpr double kTitleSize = 16, kTextSize = 12, kLabelSize = 11;
constexpr int kTickLength = 4;
constexpr double kLabelDrop = 4;                         // from a label's middle to its baseline
constexpr float kRange = 120;                            // dB below full scale that have a colour
constexpr int kTimeLabelRoom = 80, kSideLabelRoom = 24;  // pixels for one label with the space around it
constexpr int kUnitX = 16;                               // of what is written upright beside the side labels

}  // namespace

PlotPicture::PlotPicture(const PlotShape& shape, uint64_t frames)
    : m_shape(shape),
      m_layout(shape.width, shape.height, shape.channels),
      m_seconds(static_cast<double>(frames) / shape.rate),
      m_canvas(static_cast<int>(shape.width), static_cast<int>(shape.height)) {}

void PlotPicture::Head(const PlotTexts& texts) {
    const double room = m_shape.width - 2.0 * kUnitX;
    m_canvas.Colour(kInk);
    m_canvas.Font(kTitleSize, true);
    m_canvas.Text(kUnitX, 26, m_canvas.Fitting(texts.title, room));
    m_canvas.Colour(kFaint);
    m_canvas.Font(kTextSize);
    m_canvas.Text(kUnitX, 45, m_canvas.Fitting(texts.subtitle, room));
}

void PlotPicture::SideTick(double y, const std::string& label) {
    m_canvas.Colour(kInk);
    m_canvas.Fill(PlotLayout::kLeft - 1 - kTickLength, std::floor(y), kTickLength, 1);
    m_canvas.Text(PlotLayout::kLeft - kTickLength - 5, y + kLabelDrop, label, Canvas::Side::Right);
}

void PlotPicture::TimeLines(int top, int height, uint32_t colour, double opacity) {
    m_canvas.Colour(colour, opacity);
    for (const Tick& tick : TimeTicks(m_seconds, m_layout.Columns() / kTimeLabelRoom).ticks)
        if (tick.part > 0 && tick.part < 1)
            m_canvas.Fill(PlotLayout::kLeft + std::floor(tick.part * m_layout.Columns()), top, 1, height);
}

void PlotPicture::Level(int channel, const LevelTrack& track, const char* name) {
    const int top = m_layout.LevelTop(channel), height = m_layout.LevelHeight();
    const auto place = [&](int sample) { return top + (1 - sample / 32768.0) / 2 * height; };
    TimeLines(top, height, kInk, 0.12);
    const int middle = top + height / 2;
    m_canvas.Fill(PlotLayout::kLeft, middle, m_layout.Columns(), 1);

    m_canvas.Colour(kWave);
    LevelTrack::Range last = track.Column(0);
    for (int column = 0; column < m_layout.Columns(); ++column) {
        const LevelTrack::Range range = track.Column(static_cast<size_t>(column));
        // Down or up to where the last column was, so that a slope is a line; of whole pixels, so that none
        // is pale.
        const double upper = std::floor(place(std::max(range.most, last.least)));
        const double lower = std::ceil(place(std::min(range.least, last.most)));
        m_canvas.Fill(PlotLayout::kLeft + column, upper, 1, std::max(lower - upper, 1.0));
        last = range;
    }

    m_canvas.Colour(kInk);
    m_canvas.Frame(PlotLayout::kLeft, top, m_layout.Columns(), height);
    m_canvas.Font(kLabelSize);
    SideTick(top, "1");
    SideTick(middle, "0");
    SideTick(top + height, "−1");
    m_canvas.UprightText(kUnitX, middle, "level");

    const std::string shown = m_canvas.Fitting(name, m_layout.Columns() / 2.0);
    m_canvas.Colour(kWhite, 0.8);
    m_canvas.Fill(PlotLayout::kLeft + 2, top + 2, m_canvas.WidthOf(shown) + 8, kLabelSize + 5);
    m_canvas.Colour(kInk);
    m_canvas.Text(PlotLayout::kLeft + 6, top + kLabelSize + 2, shown);
}

void PlotPicture::Spectrum(int channel, const SpectrumTrack& track) {
    const int top = m_layout.SpectrumTop(channel), height = m_layout.SpectrumHeight();
    const auto columns = static_cast<size_t>(m_layout.Columns()), rows = static_cast<size_t>(height);
    std::vector<uint32_t> pixels(columns * rows);
    std::vector<float> powers(rows);
    for (size_t column = 0; column < columns; ++column) {
        track.Column(column, powers.data());
        for (size_t row = 0; row < rows; ++row)
            pixels[(rows - 1 - row) * columns + column] =
                m_colours.At(1 + 10 * std::log10(powers[row]) / kRange);
    }
    m_canvas.Pixels(PlotLayout::kLeft, top, m_layout.Columns(), height, pixels);
    TimeLines(top, height, kWhite, 0.12);

    m_canvas.Colour(kInk);
    m_canvas.Frame(PlotLayout::kLeft, top, m_layout.Columns(), height);
    m_canvas.Font(kLabelSize);
    const Ticks ticks = LinearTicks(m_shape.rate / 2000.0, height / kSideLabelRoom, "kHz");
    for (const Tick& tick : ticks.ticks) SideTick(top + (1 - tick.part) * height, tick.label);
    m_canvas.UprightText(kUnitX, top + height / 2.0, ticks.unit);
}

void PlotPicture::TimeAxis() {
    const int last = static_cast<int>(m_shape.channels) - 1;
    const int bottom = m_layout.SpectrumTop(last) + m_layout.SpectrumHeight();
    const Ticks ticks = TimeTicks(m_seconds, m_layout.Columns() / kTimeLabelRoom);
    m_canvas.Colour(kInk);
    m_canvas.Font(kLabelSize);
    for (const Tick& tick : ticks.ticks) {
        const double x = PlotLayout::kLeft + tick.part * m_layout.Columns();
        m_canvas.Fill(std::floor(x), bottom + 1, 1, kTickLength);
        m_canvas.Text(x, bottom + kTickLength + kLabelSize + 3, tick.label, Canvas::Side::Middle);
    }
    m_canvas.Text(PlotLayout::kLeft + m_layout.Columns() / 2.0, bottom + 40, "time (" + ticks.unit + ")",
                  Canvas::Side::Middle);
}

void PlotPicture::ColourBar() {
    constexpr int kWidth = 14;
    const int x = PlotLayout::kLeft + m_layout.Columns() + 16;
    const int last = static_cast<int>(m_shape.channels) - 1;
    const int top = m_layout.SpectrumTop(0);
    const int height = m_layout.SpectrumTop(last) + m_layout.SpectrumHeight() - top;
    const auto rows = static_cast<size_t>(height);
    std::vector<uint32_t> pixels(kWidth * rows);
    for (size_t row = 0; row < rows; ++row)
        std::fill_n(&pixels[kWidth * row], kWidth,
                    m_colours.At(1 - static_cast<float>(row) / static_cast<float>(rows - 1)));
    m_canvas.Pixels(x, top, kWidth, height, pixels);

    m_canvas.Colour(kInk);
    m_canvas.Frame(x, top, kWidth, height);
    m_canvas.Font(kLabelSize);
    for (const Tick& tick : LinearTicks(kRange, std::min(6, height / kSideLabelRoom), "").ticks) {
        const double y = top + tick.part * height;
        m_canvas.Fill(x + kWidth + 1, std::floor(y), kTickLength, 1);
        m_canvas.Text(x + kWidth + kTickLength + 4, y + kLabelDrop, (tick.part > 0 ? "−" : "") + tick.label);
    }
    m_canvas.Text(x + kWidth / 2.0, top - 10, "dBFS", Canvas::Side::Middle);
}
