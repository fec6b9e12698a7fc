// What libvlplot.so offers to vlwav, which loads it when a picture or an alignment is first asked for: the
// libraries that draw and transform aren't in the process before. Nothing throws here.
#pragma once

#include <cstddef>
#include <cstdint>

struct PlotShape {
    uint32_t width, height;  // pixels, as PlotLayout allows them
    uint32_t rate;           // frames per second, not 0
    uint32_t channels;       // 1 to PlotLayout::kMostChannels
};

// UTF-8 without control characters; all of them are lent for the call.
struct PlotTexts {
    const char* title;
    const char* subtitle;
    const char* const* channels;  // a name for each
};

// Where the picture's bytes go.
struct PlotTarget {
    void* context;
    bool (*write)(void* context, const void* bytes, size_t size);  // false: they could not be taken
};

// The picture of one source of audio.
class Plot {
public:
    // Takes interleaved frames that follow the last ones. False: there is no memory, and the plot is no more
    // use.
    virtual bool Add(const int16_t* frames, size_t count) noexcept = 0;
    // Writes a PNG file of all frames, of which there has to be one at least. Once, as the last call. Null
    // when it is done, else why it isn't, lent for ever.
    virtual const char* Draw(const PlotTexts& texts, const PlotTarget& target) noexcept = 0;
    virtual void Delete() noexcept = 0;

protected:
    ~Plot() = default;
};

struct PlotFunctions {
    // For its Delete. Null: there is no memory.
    Plot* (*make)(const PlotShape& shape) noexcept;
    // sums[k], k from 0 to countB - countA, is the sum of a[i] * b[i + k]. False: there is no memory.
    bool (*correlate)(const float* a, size_t countA, const float* b, size_t countB /*>= countA*/,
                      float* sums) noexcept;
};

// The one function that the library shows, by this name.
inline constexpr char kPlotFunctionsName[] = "VlPlotFunctions";
using GetPlotFunctions = const PlotFunctions* (*)();
