#include "host/plot/PlotOfChannels.h"

#include <new>

#include "host/plot/PlotLayout.h"
#include "host/plot/PlotPicture.h"

namespace {

// What finds and reads fonts crashes without memory instead of saying so, so it is asked for beforehand.
void RequireMemoryForFonts() {
    constexpr size_t kEnough = 32 << 20;
    ::operator delete(::operator new(kEnough));
}

}  // namespace

PlotOfChannels::PlotOfChannels(const PlotShape& shape)
    : m_shape(shape), m_transform(WindowedTransform::SizeFor(shape.rate)) {
    const PlotLayout layout(shape.width, shape.height, shape.channels);
    const auto columns = static_cast<size_t>(layout.Columns());
    for (uint32_t i = 0; i < shape.channels; ++i) {
        m_levels.emplace_back(columns);
        m_spectra.emplace_back(m_transform, columns, static_cast<size_t>(layout.SpectrumHeight()));
    }
}

bool PlotOfChannels::Add(const int16_t* frames, size_t count) noexcept {
    try {
        for (size_t i = 0; i < m_shape.channels; ++i) {
            m_levels[i].Add(frames + i, count, m_shape.channels);
            m_spectra[i].Add(frames + i, count, m_shape.channels);
        }
        m_frames += count;
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

const char* PlotOfChannels::Draw(const PlotTexts& texts, const PlotTarget& target) noexcept {
    const char* reason = "there is no memory for it";
    try {
        RequireMemoryForFonts();
        PlotPicture picture(m_shape, m_frames);
        picture.Head(texts);
        for (size_t i = 0; i < m_shape.channels; ++i) {
            m_spectra[i].Finish();
            picture.Level(static_cast<int>(i), m_levels[i], texts.channels[i]);
            picture.Spectrum(static_cast<int>(i), m_spectra[i]);
        }
        picture.TimeAxis();
        picture.ColourBar();
        reason = picture.Write(target);
    } catch (const std::bad_alloc&) {
    }
    Canvas::ForgetFonts();
    return reason;
}
