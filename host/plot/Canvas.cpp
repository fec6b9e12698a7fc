#include "host/plot/Canvas.h"

#include <fontconfig/fontconfig.h>

#include <numbers>

namespace {

constexpr const char* kFamily = "sans-serif";

cairo_status_t Pass(void* target, const unsigned char* bytes, unsigned int size) {
    const auto& to = *static_cast<const PlotTarget*>(target);
    return to.write(to.context, bytes, size) ? CAIRO_STATUS_SUCCESS : CAIRO_STATUS_NO_MEMORY;
}

}  // namespace

Canvas::Canvas(int width, int height)
    : m_surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height)),
      m_context(cairo_create(m_surface.get())),
      m_plainFonts(kFamily, false),
      m_boldFonts(kFamily, true) {
    Colour(0xFFFFFF);
    cairo_paint(m_context.get());
}

void Canvas::Colour(uint32_t rgb, double opacity) {
    const auto part = [rgb](int shift) { return (rgb >> shift & 0xFF) / 255.0; };
    cairo_set_source_rgba(m_context.get(), part(16), part(8), part(0), opacity);
}

void Canvas::Fill(double x, double y, double width, double height) {
    cairo_rectangle(m_context.get(), x, y, width, height);
    cairo_fill(m_context.get());
}

void Canvas::Frame(int x, int y, int width, int height) {
    // The line's middle on the middle of pixels, else it is two pixels of half the strength.
    cairo_set_line_width(m_context.get(), 1);
    cairo_rectangle(m_context.get(), x - 0.5, y - 0.5, width + 1, height + 1);
    cairo_stroke(m_context.get());
}

void Canvas::Pixels(int x, int y, int width, int height, std::vector<uint32_t>& pixels) {
    const std::unique_ptr<cairo_surface_t, CairoDeleter> picture(cairo_image_surface_create_for_data(
        reinterpret_cast<unsigned char*>(pixels.data()), CAIRO_FORMAT_RGB24, width, height, width * 4));
    cairo_set_source_surface(m_context.get(), picture.get(), x, y);
    cairo_paint(m_context.get());
    cairo_surface_finish(picture.get());  // the pixels are the caller's
}

void Canvas::Font(double size, bool bold) {
    m_bold = bold;
    cairo_set_font_size(m_context.get(), size);
}

std::vector<FontFallback::Run> Canvas::Runs(std::string_view text) {
    return (m_bold ? m_boldFonts : m_plainFonts).Runs(text);
}

const char* Canvas::Choose(const FontFallback::Run& run) {
    cairo_select_font_face(m_context.get(), run.family.c_str(), CAIRO_FONT_SLANT_NORMAL,
                           m_bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
    return run.text.c_str();
}

void Canvas::Text(double x, double y, std::string_view text, Side side) {
    const double back = side == Side::Left ? 0 : WidthOf(text) / (side == Side::Middle ? 2 : 1);
    cairo_move_to(m_context.get(), x - back, y);
    for (const FontFallback::Run& run : Runs(text)) cairo_show_text(m_context.get(), Choose(run));
}

void Canvas::UprightText(double x, double y, std::string_view text) {
    cairo_save(m_context.get());
    cairo_translate(m_context.get(), x, y);
    cairo_rotate(m_context.get(), -std::numbers::pi / 2);
    Text(0, 0, text, Side::Middle);
    cairo_restore(m_context.get());
}

double Canvas::WidthOf(std::string_view text) {
    double width = 0;
    for (const FontFallback::Run& run : Runs(text)) {
        cairo_text_extents_t extents;
        cairo_text_extents(m_context.get(), Choose(run), &extents);
        width += extents.x_advance;
    }
    return width;
}

std::string Canvas::Fitting(std::string_view text, double width) {
    // Nothing of a text this long fits anywhere, and measuring takes time in its length.
    constexpr size_t kMostBytes = 1024;
    const auto shorten = [&text](size_t size) {
        while (size > 0 && (static_cast<uint8_t>(text[size]) & 0xC0) == 0x80) --size;  // whole characters
        text = text.substr(0, size);
    };
    const std::string_view whole = text;
    if (text.size() > kMostBytes) shorten(kMostBytes);
    if (text.size() == whole.size() && WidthOf(text) <= width) return std::string(text);
    while (!text.empty() && WidthOf(std::string(text) + "…") > width) shorten(text.size() - 1);
    return std::string(text) + "…";
}

const char* Canvas::Write(const PlotTarget& target) {
    cairo_status_t status = cairo_status(m_context.get());
    PlotTarget to = target;
    if (status == CAIRO_STATUS_SUCCESS)
        status = cairo_surface_write_to_png_stream(m_surface.get(), Pass, &to);
    return status == CAIRO_STATUS_SUCCESS ? nullptr : cairo_status_to_string(status);
}

void Canvas::ForgetFonts() {
    cairo_debug_reset_static_data();
    FcFini();  // which cairo looked the fonts up by
}
