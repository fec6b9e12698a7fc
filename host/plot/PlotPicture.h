// Draws tracks with their axes, names and colours by a PlotLayout. Adds nothing to them.
#pragma once

#include <cstdint>
#include <vector>

#include "host/plot/Canvas.h"
#include "host/plot/ColourMap.h"
#include "host/plot/LevelTrack.h"
#include "host/plot/PlotFunctions.h"
#include "host/plot/PlotLayout.h"
#include "host/plot/SpectrumTrack.h"

class PlotPicture {
public:
    // Of that many frames.
    PlotPicture(const PlotShape& shape, uint64_t frames);

    void Head(const PlotTexts& texts);
    // A channel, with its name.
    void Level(int channel, const LevelTrack& track, const char* name);
    void Spectrum(int channel, const SpectrumTrack& track);
    void TimeAxis();
    void ColourBar();
    // Null: done.
    const char* Write(const PlotTarget& target) { return m_canvas.Write(target); }

private:
    void SideTick(double y, const std::string& label);
    // Lines of the time axis through an area.
    void TimeLines(int top, int height, uint32_t colour, double opacity);

    const PlotShape m_shape;
    const PlotLayout m_layout;
    const double m_seconds;
    const ColourMap m_colours;
    Canvas m_canvas;
};
