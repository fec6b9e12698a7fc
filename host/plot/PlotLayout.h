// Where things stand in a plot, in pixels: for each channel its level, below it its spectrum, all over one
// axis of time, with a bar of colours at their right.
#pragma once

#include <cstdint>

class PlotLayout {
public:
    static constexpr uint32_t kMostChannels = 8;
    static constexpr uint32_t kDefaultWidth = 1200;
    // Of both sides; memory grows with their product.
    static constexpr uint32_t kMost = 4096;
    static constexpr uint32_t kLeastWidth = 400;
    static constexpr int kLeft = 64, kRight = 88, kTop = 58, kBottom = 48;
    static constexpr int kChannelGap = 16;
    static constexpr int kTrackGap = 14;  // between level and spectrum: room for the labels at their ends

    constexpr PlotLayout(uint32_t width, uint32_t height, uint32_t channels)
        : m_columns(static_cast<int>(width) - kLeft - kRight),
          m_channel((static_cast<int>(height) - kTop - kBottom + kChannelGap) / static_cast<int>(channels) -
                    kChannelGap),
          m_level(m_channel * 3 / 10) {}

    static constexpr uint32_t DefaultHeight(uint32_t channels) {
        return HeightOf(channels, channels == 1 ? 560 : channels == 2 ? 340 : 190);
    }
    // Below it labels would lie over each other.
    static constexpr uint32_t LeastHeight(uint32_t channels) { return HeightOf(channels, 110); }

    // Of time, one pixel each.
    constexpr int Columns() const { return m_columns; }
    constexpr int LevelTop(int channel) const { return kTop + channel * (m_channel + kChannelGap); }
    constexpr int LevelHeight() const { return m_level; }
    constexpr int SpectrumTop(int channel) const { return LevelTop(channel) + m_level + kTrackGap; }
    constexpr int SpectrumHeight() const { return m_channel - m_level - kTrackGap; }

private:
    static constexpr uint32_t HeightOf(uint32_t channels, int channel) {
        return static_cast<uint32_t>(kTop + kBottom - kChannelGap) +
               channels * static_cast<uint32_t>(channel + kChannelGap);
    }

    int m_columns, m_channel, m_level;
};
