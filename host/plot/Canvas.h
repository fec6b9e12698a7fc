// A picture that is drawn on: lines, texts, pixels of other pictures, and its bytes as PNG. Places are pixels
// from the upper left corner. What fails is kept until Write tells it.
#pragma once

#include <cairo.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/plot/FontFallback.h"
#include "host/plot/PlotFunctions.h"

struct CairoDeleter {
    void operator()(cairo_t* context) const noexcept { cairo_destroy(context); }
    void operator()(cairo_surface_t* surface) const noexcept { cairo_surface_destroy(surface); }
};

class Canvas {
public:
    // Which point of a text stands at the place that is named.
    enum class Side { Left, Middle, Right };

    // White.
    Canvas(int width, int height);

    // 0x00RRGGBB, for what is drawn from now on.
    void Colour(uint32_t rgb, double opacity = 1);
    void Fill(double x, double y, double width, double height);
    // A frame of one pixel around an area.
    void Frame(int x, int y, int width, int height);
    // `pixels`, row by row from the top, of 0x00RRGGBB.
    void Pixels(int x, int y, int width, int height, std::vector<uint32_t>& pixels);

    void Font(double size, bool bold = false);
    // The baseline is at y.
    void Text(double x, double y, std::string_view text, Side side = Side::Left);
    // Read from below to above, its middle at the place.
    void UprightText(double x, double y, std::string_view text);
    double WidthOf(std::string_view text);
    // As much of it as is no wider than that, with "…" after what had to be shortened. `text` is UTF-8.
    std::string Fitting(std::string_view text, double width);

    // Null: done.
    const char* Write(const PlotTarget& target);

    // Frees what is kept of fonts for the next canvas. There must be none now, in any thread.
    static void ForgetFonts();

private:
    std::vector<FontFallback::Run> Runs(std::string_view text);
    // Takes its font, and returns its text.
    const char* Choose(const FontFallback::Run& run);

    std::unique_ptr<cairo_surface_t, CairoDeleter> m_surface;
    std::unique_ptr<cairo_t, CairoDeleter> m_context;
    FontFallback m_plainFonts, m_boldFonts;
    bool m_bold = false;
};
