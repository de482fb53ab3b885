#include "plot.h"

#include <cairo-svg.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <stdexcept>

namespace plot {
namespace {

constexpr double kPixels = 1.5;  // of a PNG, per unit of length
constexpr double kBarGap = 20;
constexpr double kBarWidth = 16;

// Colour maps are given by colours at equal distances; those between are interpolated.
template <std::size_t N>
Colour interpolate(const std::array<Colour, N>& stops, double position) {
    const double scaled = std::clamp(position, 0.0, 1.0) * (N - 1);
    const auto below = std::min(static_cast<std::size_t>(scaled), N - 2);
    const double part = scaled - static_cast<double>(below);
    const Colour& a = stops[below];
    const Colour& b = stops[below + 1];
    return {a.red + part * (b.red - a.red), a.green + part * (b.green - a.green), a.blue + part * (b.blue - a.blue)};
}

}  // namespace

Colour darkToBright(double position) {
    static constexpr std::array<Colour, 9> stops{{{0.001, 0.000, 0.014},
                                                  {0.114, 0.067, 0.276},
                                                  {0.316, 0.072, 0.485},
                                                  {0.513, 0.148, 0.508},
                                                  {0.716, 0.215, 0.475},
                                                  {0.902, 0.325, 0.388},
                                                  {0.987, 0.536, 0.382},
                                                  {0.997, 0.765, 0.527},
                                                  {0.987, 0.991, 0.750}}};
    return interpolate(stops, position);
}

Colour aroundZero(double position) {
    static constexpr std::array<Colour, 5> stops{
        {{0.13, 0.30, 0.60}, {0.50, 0.70, 0.87}, {0.97, 0.97, 0.97}, {0.94, 0.60, 0.46}, {0.65, 0.07, 0.15}}};
    return interpolate(stops, position);
}

Page::Page(bool svg, double height) : svg_(svg) {
    surface_.reset(svg ? cairo_svg_surface_create_for_stream(append, &bytes_, kWidth, height)
                       : cairo_image_surface_create(CAIRO_FORMAT_RGB24, static_cast<int>(kWidth * kPixels),
                                                    static_cast<int>(height * kPixels)));
    context_.reset(cairo_create(surface_.get()));
    if (!svg) cairo_scale(cairo(), kPixels, kPixels);
    colour({1, 1, 1});
    cairo_paint(cairo());
    cairo_select_font_face(cairo(), "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
}

void Page::colour(const Colour& c, double opacity) {
    cairo_set_source_rgba(cairo(), c.red, c.green, c.blue, opacity);
}

void Page::text(double x, double y, const std::string& text, double size, double anchor, bool bold) {
    cairo_select_font_face(cairo(), "sans-serif", CAIRO_FONT_SLANT_NORMAL,
                           bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(cairo(), size);
    cairo_text_extents_t extents;
    cairo_text_extents(cairo(), text.c_str(), &extents);
    colour(kText);
    cairo_move_to(cairo(), x - anchor * extents.x_advance, y);
    cairo_show_text(cairo(), text.c_str());
}

void Page::verticalText(double x, double y, const std::string& words) {
    cairo_save(cairo());
    cairo_translate(cairo(), x, y);
    cairo_rotate(cairo(), -std::acos(-1.0) / 2);
    text(0, 0, words, 13, 0.5);
    cairo_restore(cairo());
}

void Page::line(double x1, double y1, double x2, double y2, double width) {
    cairo_set_line_width(cairo(), width);
    cairo_move_to(cairo(), x1, y1);
    cairo_line_to(cairo(), x2, y2);
    cairo_stroke(cairo());
}

std::string Page::finish() {
    context_.reset();
    cairo_status_t status = cairo_surface_status(surface_.get());
    if (svg_) {
        cairo_surface_finish(surface_.get());
        status = cairo_surface_status(surface_.get());
    } else if (status == CAIRO_STATUS_SUCCESS) {
        status = cairo_surface_write_to_png_stream(surface_.get(), append, &bytes_);
    }
    if (status != CAIRO_STATUS_SUCCESS) throw std::runtime_error(cairo_status_to_string(status));
    return std::move(bytes_);
}

cairo_status_t Page::append(void* bytes, const unsigned char* data, unsigned length) {
    static_cast<std::string*>(bytes)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

std::string number(double value) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%g", std::abs(value) < 1e-9 ? 0.0 : value);
    return text.data();
}

double roundStep(double span, int count) {
    const double rough = span / count;
    const double power = std::pow(10.0, std::floor(std::log10(rough)));
    const double digit = rough / power;
    return power * (digit < 1.5 ? 1 : digit < 3.5 ? 2 : digit < 7.5 ? 5 : 10);
}

void drawAxes(Page& page, const Panel& panel, const std::string& title, const std::string& yLabel,
              const std::vector<std::pair<double, std::string>>& yTicks, bool withTimes) {
    page.text(kLeft, panel.top - 10, title, 14, 0, true);
    page.verticalText(26, panel.top + panel.height / 2, yLabel);
    const double bottom = panel.top + panel.height;
    page.colour(kText);
    cairo_set_line_width(page.cairo(), 1);
    cairo_rectangle(page.cairo(), kLeft, panel.top, kPlotWidth, panel.height);
    cairo_stroke(page.cairo());
    for (const auto& [value, text] : yTicks) {
        page.colour(kText);
        page.line(kLeft - 5, panel.y(value), kLeft, panel.y(value));
        page.text(kLeft - 9, panel.y(value) + 4, text, 12, 1);
    }
    const double step = roundStep(panel.timeSpan, 8);
    for (int i = 0; i * step <= panel.timeSpan * 1.0001; ++i) {
        page.colour(kText);
        page.line(panel.x(i * step), bottom, panel.x(i * step), bottom + 5);
        if (withTimes) page.text(panel.x(i * step), bottom + 20, number(i * step), 12, 0.5);
    }
    if (withTimes) page.text(kLeft + kPlotWidth / 2, bottom + 40, "time in seconds", 13, 0.5);
}

void drawCells(Page& page, const Panel& panel, double beginTime, double endTime, int rows, int cols,
               const std::function<Colour(int row, int col)>& colourOf) {
    const std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> image(
        cairo_image_surface_create(CAIRO_FORMAT_RGB24, rows, cols), cairo_surface_destroy);
    unsigned char* const pixels = cairo_image_surface_get_data(image.get());
    if (pixels == nullptr) throw std::runtime_error("is too long to draw");
    const int stride = cairo_image_surface_get_stride(image.get());
    const auto byte = [](double part) { return static_cast<std::uint32_t>(std::lround(255 * part)); };
    for (int col = 0; col < cols; ++col) {
        for (int row = 0; row < rows; ++row) {
            const Colour c = colourOf(row, col);
            const std::uint32_t pixel = byte(c.red) << 16 | byte(c.green) << 8 | byte(c.blue);
            std::memcpy(pixels + static_cast<std::ptrdiff_t>(cols - 1 - col) * stride + 4 * row, &pixel, 4);
        }
    }
    cairo_surface_mark_dirty(image.get());
    cairo_t* const cr = page.cairo();
    cairo_save(cr);
    cairo_rectangle(cr, kLeft, panel.top, kPlotWidth, panel.height);
    cairo_clip(cr);
    cairo_translate(cr, panel.x(beginTime), panel.top);
    cairo_scale(cr, (panel.x(endTime) - panel.x(beginTime)) / rows, panel.height / cols);
    cairo_set_source_surface(cr, image.get(), 0, 0);
    cairo_pattern_set_filter(cairo_get_source(cr), CAIRO_FILTER_NEAREST);
    cairo_paint(cr);
    cairo_restore(cr);
}

void drawColourBar(Page& page, const Panel& panel, double lowest, double highest, const std::string& label,
                   const ColourMap& map) {
    const double left = kLeft + kPlotWidth + kBarGap;
    const Panel bar{panel.top, panel.height, 1, lowest, highest};
    constexpr int kSteps = 128;
    for (int i = 0; i < kSteps; ++i) {
        const double y = panel.top + panel.height * (kSteps - 1 - i) / kSteps;
        page.colour(map((i + 0.5) / kSteps));
        cairo_rectangle(page.cairo(), left, y, kBarWidth, panel.height / kSteps + 0.5);
        cairo_fill(page.cairo());
    }
    page.colour(kText);
    cairo_set_line_width(page.cairo(), 1);
    cairo_rectangle(page.cairo(), left, panel.top, kBarWidth, panel.height);
    cairo_stroke(page.cairo());
    const double step = roundStep(highest - lowest, 5);
    for (double value = std::ceil(lowest / step - 1e-6) * step; value <= highest + 1e-6 * step; value += step) {
        page.colour(kText);
        page.line(left + kBarWidth, bar.y(value), left + kBarWidth + 4, bar.y(value));
        page.text(left + kBarWidth + 8, bar.y(value) + 4, number(value), 12);
    }
    page.verticalText(left + kBarWidth + 56, panel.top + panel.height / 2, label);
}

void drawGround(Page& page, const Panel& panel) {
    page.colour({0.93, 0.93, 0.94});
    cairo_rectangle(page.cairo(), kLeft, panel.top, kPlotWidth, panel.height);
    cairo_fill(page.cairo());
}

}  // namespace plot
