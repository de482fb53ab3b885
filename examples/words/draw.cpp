#include "draw.h"

#include <cairo-svg.h>
#include <cairo.h>

#include <array>
#include <cmath>
#include <cstring>
#include <functional>

#include "common/output_file.h"
#include "lp_spectrogram.h"

namespace words {
namespace {

constexpr double kWidth = 1000;
constexpr double kHeight = 1160;
constexpr double kLeft = 80;
constexpr double kPlotWidth = 790;
constexpr double kBarGap = 20;
constexpr double kBarWidth = 16;
constexpr double kDbPerNeper = 8.6858896;  // of magnitude

struct Colour {
    double red, green, blue;
};
constexpr Colour kText{0.13, 0.13, 0.16};
constexpr Colour kFaint{0.82, 0.82, 0.85};
constexpr Colour kWave{0.17, 0.35, 0.62};
constexpr Colour kWord{0.86, 0.33, 0.10};
constexpr Colour kSpeech{0.62, 0.80, 0.55};

// Colour maps are given by colours at equal distances; those between are interpolated.
using ColourMap = std::function<Colour(double)>;

template <std::size_t N>
Colour interpolate(const std::array<Colour, N>& stops, double position) {
    const double scaled = std::clamp(position, 0.0, 1.0) * (N - 1);
    const auto below = std::min(static_cast<std::size_t>(scaled), N - 2);
    const double part = scaled - static_cast<double>(below);
    const Colour& a = stops[below];
    const Colour& b = stops[below + 1];
    return {a.red + part * (b.red - a.red), a.green + part * (b.green - a.green), a.blue + part * (b.blue - a.blue)};
}

// From dark to bright in even steps of lightness, so that a step looks alike everywhere, in print without colour too.
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

// Blue below zero, white at zero, red above.
Colour aroundZero(double position) {
    static constexpr std::array<Colour, 5> stops{
        {{0.13, 0.30, 0.60}, {0.50, 0.70, 0.87}, {0.97, 0.97, 0.97}, {0.94, 0.60, 0.46}, {0.65, 0.07, 0.15}}};
    return interpolate(stops, position);
}

// A panel on the page, with a range of values along each side.
struct Panel {
    double top, height;
    double timeSpan;
    double lowest, highest;
    double x(double time) const { return kLeft + kPlotWidth * time / timeSpan; }
    double y(double value) const { return top + height * (highest - value) / (highest - lowest); }
};

class Page {
  public:
    explicit Page(bool svg) : svg_(svg) {
        surface_.reset(svg ? cairo_svg_surface_create_for_stream(append, &bytes_, kWidth, kHeight)
                           : cairo_image_surface_create(CAIRO_FORMAT_RGB24, static_cast<int>(kWidth * kPixels),
                                                        static_cast<int>(kHeight * kPixels)));
        context_.reset(cairo_create(surface_.get()));
        if (!svg) cairo_scale(cairo(), kPixels, kPixels);
        colour({1, 1, 1});
        cairo_paint(cairo());
        cairo_select_font_face(cairo(), "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    }

    cairo_t* cairo() { return context_.get(); }
    void colour(const Colour& c, double opacity = 1) {
        cairo_set_source_rgba(cairo(), c.red, c.green, c.blue, opacity);
    }

    // `anchor` is the part of the text's width that lies left of x: 0, 0.5 or 1.
    void text(double x, double y, const std::string& text, double size, double anchor = 0, bool bold = false) {
        cairo_select_font_face(cairo(), "sans-serif", CAIRO_FONT_SLANT_NORMAL,
                               bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
        cairo_set_font_size(cairo(), size);
        cairo_text_extents_t extents;
        cairo_text_extents(cairo(), text.c_str(), &extents);
        colour(kText);
        cairo_move_to(cairo(), x - anchor * extents.x_advance, y);
        cairo_show_text(cairo(), text.c_str());
    }
    void verticalText(double x, double y, const std::string& words) {
        cairo_save(cairo());
        cairo_translate(cairo(), x, y);
        cairo_rotate(cairo(), -std::acos(-1.0) / 2);
        text(0, 0, words, 13, 0.5);
        cairo_restore(cairo());
    }
    void line(double x1, double y1, double x2, double y2, double width = 1) {
        cairo_set_line_width(cairo(), width);
        cairo_move_to(cairo(), x1, y1);
        cairo_line_to(cairo(), x2, y2);
        cairo_stroke(cairo());
    }

    // The finished picture as the bytes of its file.
    std::string finish() {
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

  private:
    static constexpr double kPixels = 1.5;  // of a PNG, per unit of length
    static cairo_status_t append(void* bytes, const unsigned char* data, unsigned length) {
        static_cast<std::string*>(bytes)->append(reinterpret_cast<const char*>(data), length);
        return CAIRO_STATUS_SUCCESS;
    }

    bool svg_;
    std::string bytes_;
    std::unique_ptr<cairo_surface_t, Release<cairo_surface_destroy>> surface_;
    std::unique_ptr<cairo_t, Release<cairo_destroy>> context_;
};

std::string number(double value) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%g", std::abs(value) < 1e-9 ? 0.0 : value);
    return text.data();
}

// 1, 2 or 5 times a power of ten, so that about `count` of them fill the span.
double roundStep(double span, int count) {
    const double rough = span / count;
    const double power = std::pow(10.0, std::floor(std::log10(rough)));
    const double digit = rough / power;
    return power * (digit < 1.5 ? 1 : digit < 3.5 ? 2 : digit < 7.5 ? 5 : 10);
}

// Frame, title, labels and ticks of both axes; times are labelled under the lowest panel only.
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

// A matrix as coloured cells; a row of it is a column of the picture, its first value at the bottom.
void drawCells(Page& page, const Panel& panel, double beginTime, double endTime, int rows, int cols,
               const std::function<Colour(int row, int col)>& colourOf) {
    const std::unique_ptr<cairo_surface_t, Release<cairo_surface_destroy>> image(
        cairo_image_surface_create(CAIRO_FORMAT_RGB24, rows, cols));
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

// The ground of a panel, seen where there is no frame to show.
void drawGround(Page& page, const Panel& panel) {
    page.colour({0.93, 0.93, 0.94});
    cairo_rectangle(page.cairo(), kLeft, panel.top, kPlotWidth, panel.height);
    cairo_fill(page.cairo());
}

// Dashed lines where the word begins and ends.
void drawWordLimits(Page& page, const Panel& panel, double begin, double end) {
    const std::array dashes{5.0, 3.0};
    cairo_set_dash(page.cairo(), dashes.data(), static_cast<int>(dashes.size()), 0);
    page.colour(kWord);
    for (const double time : {begin, end})
        page.line(panel.x(time), panel.top, panel.x(time), panel.top + panel.height, 1.6);
    cairo_set_dash(page.cairo(), nullptr, 0, 0);
}

// What a key of the waveform stands for, ending at x.
template <class Sample>
void drawKey(Page& page, double x, double y, const std::string& text, double width, Sample sample) {
    sample(x - width - 38, x - width - 8);
    page.text(x, y, text, 12, 1);
}

void drawWaveform(Page& page, const Recording& recording, double begin, double end,
                  const std::vector<std::pair<double, double>>& speech) {
    float peak = 0;
    for (int i = 0; i < recording.samples.size(); ++i) peak = std::max(peak, std::abs(recording.samples[i]));
    const double limit = roundStep(peak, 1) >= peak ? roundStep(peak, 1) : 2 * roundStep(peak, 1);
    const Panel panel{80, 170, recording.seconds(), -limit, limit};
    const auto shade = [&](double left, double right, double top, double height) {
        page.colour(kSpeech, 0.45);
        cairo_rectangle(page.cairo(), left, top, right - left, height);
        cairo_fill(page.cairo());
    };
    for (const auto& [from, to] : speech) shade(panel.x(from), panel.x(to), panel.top, panel.height);
    page.colour(kFaint);
    page.line(kLeft, panel.y(0), kLeft + kPlotWidth, panel.y(0));
    // At most two points a column: its least and its greatest sample.
    page.colour(kWave);
    cairo_set_line_width(page.cairo(), 1);
    constexpr int kColumns = 2 * static_cast<int>(kPlotWidth);
    const int samples = recording.samples.size();
    const int columns = std::min(kColumns, samples);
    for (int column = 0; column < columns; ++column) {
        const auto from = static_cast<int>(static_cast<std::int64_t>(samples) * column / columns);
        const auto to = static_cast<int>(static_cast<std::int64_t>(samples) * (column + 1) / columns);
        const auto [least, greatest] =
            std::minmax_element(recording.samples.data() + from, recording.samples.data() + to);
        const double x = panel.x((from + to) / 2.0 / recording.rate);
        cairo_line_to(page.cairo(), x, panel.y(*least));
        cairo_line_to(page.cairo(), x, panel.y(*greatest));
    }
    cairo_stroke(page.cairo());
    drawWordLimits(page, panel, begin, end);
    drawAxes(page, panel, "Waveform", "amplitude",
             {{-limit, number(-limit)},
              {-limit / 2, number(-limit / 2)},
              {0, "0"},
              {limit / 2, number(limit / 2)},
              {limit, number(limit)}},
             false);
    const double right = kLeft + kPlotWidth;
    drawKey(page, right, panel.top - 10, "beginning and end of the word", 184, [&](double from, double to) {
        const std::array dashes{5.0, 3.0};
        cairo_set_dash(page.cairo(), dashes.data(), static_cast<int>(dashes.size()), 0);
        page.colour(kWord);
        page.line(from, panel.top - 14, to, panel.top - 14, 1.6);
        cairo_set_dash(page.cairo(), nullptr, 0, 0);
    });
    drawKey(page, right - 250, panel.top - 10, "voice activity", 80,
            [&](double from, double to) { shade(from, to, panel.top - 20, 12); });
}

}  // namespace

bool canDraw(const std::filesystem::path& picture) {
    return picture.extension() == ".png" || picture.extension() == ".svg";
}

void drawAnalysis(const std::filesystem::path& picture, const std::string& title, const Recording& recording,
                  const FrontEnd& frontEnd, const Analysis& analysis) {
    const auto& settings = frontEnd.settings();
    const double seconds = recording.seconds();
    // A frame's cell is as wide as the step, around the middle of its window.
    const double step = settings.stepSeconds;
    const double firstCell = settings.frameSeconds / 2 - step / 2;
    const double wordBegin = firstCell + analysis.wordBegin * step;
    const double wordEnd = firstCell + analysis.wordEnd * step;

    Page page(picture.extension() == ".svg");
    page.text(kLeft, 34, title, 19, 0, true);
    page.text(kLeft + kPlotWidth, 34,
              number(std::round(seconds * 1000) / 1000) + " s at " + number(recording.rate) + " Hz", 13, 1);
    std::vector<std::pair<double, double>> speech;
    for (const auto& [begin, end] : frontEnd.detectSpeech(recording).regions)
        speech.emplace_back(std::max(0.0, firstCell + begin * step), std::min(seconds, firstCell + end * step));
    drawWaveform(page, recording, wordBegin, wordEnd, speech);

    const Matrix& logMel = analysis.logMel;
    float loudest = logMel.row(0)[0];
    for (int t = 0; t < logMel.rows(); ++t)
        loudest = std::max(loudest, *std::max_element(logMel.row(t), logMel.row(t) + settings.filters));
    constexpr double kShownDb = 60;
    const Panel mel{300, 230, seconds, 0, static_cast<double>(settings.filters)};
    drawGround(page, mel);
    drawCells(page, mel, firstCell, firstCell + logMel.rows() * step, logMel.rows(), settings.filters,
              [&](int t, int filter) {
                  return darkToBright(1 + (logMel.row(t)[filter] - loudest) * kDbPerNeper / kShownDb);
              });
    std::vector<std::pair<double, std::string>> hertz;
    for (int filter = 1; filter < settings.filters; filter += 4)
        hertz.emplace_back(filter + 0.5, number(std::round(frontEnd.centreHz(filter))));
    drawWordLimits(page, mel, wordBegin, wordEnd);
    drawAxes(page, mel, "Log-mel spectrogram", "centre of the mel filter in Hz", hertz, false);
    drawColourBar(page, mel, -kShownDb, 0, "dB below the loudest", darkToBright);

    const Matrix envelope = lpSpectrogram(recording, frontEnd);
    float strongest = envelope.row(0)[0];
    for (int t = 0; t < envelope.rows(); ++t)
        strongest = std::max(strongest, *std::max_element(envelope.row(t), envelope.row(t) + envelope.cols()));
    const double kilohertz = recording.rate / 2000.0;
    const Panel lp{580, 230, seconds, 0, kilohertz};
    drawGround(page, lp);
    drawCells(page, lp, firstCell, firstCell + envelope.rows() * step, envelope.rows(), envelope.cols(),
              [&](int t, int bin) { return darkToBright(1 + (envelope.row(t)[bin] - strongest) / kShownDb); });
    std::vector<std::pair<double, std::string>> frequencies;
    const double apart = roundStep(kilohertz, 6);
    for (int i = 0; i * apart <= kilohertz; ++i) frequencies.emplace_back(i * apart, number(i * apart));
    drawWordLimits(page, lp, wordBegin, wordEnd);
    drawAxes(page, lp, "Spectral envelope by linear prediction", "frequency in kHz", frequencies, false);
    drawColourBar(page, lp, -kShownDb, 0, "dB below the strongest", darkToBright);

    const Matrix& features = analysis.features;
    const int cepstra = settings.cepstra;
    constexpr double kShownDeviations = 3;
    const Panel panel{860, 230, seconds, 0.5, cepstra + 0.5};
    const int wordFrames = analysis.wordEnd - analysis.wordBegin;
    drawGround(page, panel);
    drawCells(page, panel, wordBegin, wordEnd, wordFrames, cepstra,
              [&](int t, int i) { return aroundZero(0.5 + features.row(t)[i] / (2 * kShownDeviations)); });
    std::vector<std::pair<double, std::string>> indices;
    for (int i = 1; i <= cepstra; i += 2) indices.emplace_back(i, std::string("c").append(std::to_string(i)));
    drawWordLimits(page, panel, wordBegin, wordEnd);
    drawAxes(page, panel, "Cepstra of the word, normalised", "cepstral coefficient", indices, true);
    drawColourBar(page, panel, -kShownDeviations, kShownDeviations, "standard deviations", aroundZero);

    try {
        common::writeFile(picture, page.finish());
    } catch (const std::runtime_error& error) {
        throw UnwritablePicture(error.what());
    }
}

}  // namespace words
