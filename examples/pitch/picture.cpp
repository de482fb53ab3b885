#include "picture.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#ifdef WITH_PICTURES
#include "plot/plot.h"

namespace pitch {
namespace {

using namespace plot;

constexpr double kHeight = 700;
constexpr Colour kWave{0.17, 0.35, 0.62}, kTrack{0.20, 0.95, 1.0}, kMark{1, 1, 1};

void drawWave(Page& page, const Panel& panel, const Wave& wave) {
    page.colour(kWave);
    cairo_new_path(page.cairo());
    cairo_set_line_width(page.cairo(), 1);
    const std::size_t columns = 2 * static_cast<std::size_t>(kPlotWidth);
    for (std::size_t column = 0; column < columns; ++column) {
        // The least and the greatest sample of each column.
        const std::size_t from = wave.samples.size() * column / columns;
        const std::size_t to = std::max(from + 1, wave.samples.size() * (column + 1) / columns);
        if (to > wave.samples.size()) break;
        const auto [least, greatest] = std::minmax_element(&wave.samples[from], wave.samples.data() + to);
        const double x = panel.x(static_cast<double>(from) / wave.rate);
        cairo_line_to(page.cairo(), x, panel.y(*least));
        cairo_line_to(page.cairo(), x, panel.y(*greatest));
    }
    cairo_stroke(page.cairo());
}

// Rows of equal steps in the logarithm of the frequency.
double semitones(double frequency, double lowest) {
    return 12 * std::log2(frequency / lowest);
}

void drawTrack(Page& page, const Panel& panel, const std::vector<Frame>& frames, const Range& range) {
    const auto dot = [&](const Frame& frame, double frequency, double radius) {
        cairo_arc(page.cairo(), panel.x(frame.time), panel.y(semitones(frequency, range.lowest)), radius, 0, 6.3);
        cairo_fill(page.cairo());
    };
    for (const Frame& frame : frames) {
        for (const Candidate& c : frame.candidates) {
            if (c.frequency < range.lowest || c.frequency > range.highest) continue;
            page.colour(kMark, std::clamp(static_cast<double>(c.score), 0.1, 0.7));
            dot(frame, c.frequency, 0.9);
        }
    }
    page.colour(kTrack);
    for (const Frame& frame : frames) {
        if (frame.frequency > 0) dot(frame, std::clamp(frame.frequency, range.lowest, range.highest), 2.2);
    }
}

}  // namespace

std::string pictureOf(const Wave& wave, const std::vector<Frame>& frames, const Range& range, const std::string& title,
                      bool svg) {
    const double seconds = static_cast<double>(wave.samples.size()) / wave.rate;
    const double span = semitones(range.highest, range.lowest);
    float peak = 1;
    for (const float x : wave.samples) peak = std::max(peak, std::fabs(x));

    Page page(svg, kHeight);
    page.text(kLeft, 34, title, 19, 0, true);
    const Panel top{80, 150, seconds, -peak, peak};
    drawWave(page, top, wave);
    drawAxes(page, top, "Waveform", "amplitude", {{0, "0"}}, false);

    // Three cells a semitone; each shows the similarity one period away.
    const Panel panel{280, 340, seconds, 0, span};
    const int rows = static_cast<int>(frames.size()), cols = std::max(1, static_cast<int>(3 * span));
    drawGround(page, panel);
    const auto similarityAt = [&](int t, int cell) {
        const std::vector<float>& s = frames[static_cast<std::size_t>(t)].similarity;
        const double frequency = range.lowest * std::exp2((cell + 0.5) / 36);
        const double place = kRate / frequency - shortestLag(range);
        const auto below = static_cast<std::size_t>(std::clamp(place, 0.0, static_cast<double>(s.size()) - 2));
        const double part = place - static_cast<double>(below);
        return darkToBright((1 - part) * s[below] + part * s[below + 1]);
    };
    drawCells(page, panel, -Tracker::kStep / 2, (rows - 0.5) * Tracker::kStep, rows, cols, similarityAt);
    drawTrack(page, panel, frames, range);
    std::vector<std::pair<double, std::string>> ticks;
    for (const double hertz : {25, 50, 75, 100, 150, 200, 300, 400, 600, 800, 1000}) {
        if (hertz >= range.lowest && hertz <= range.highest)
            ticks.emplace_back(semitones(hertz, range.lowest), number(hertz));
    }
    drawAxes(page, panel, "Track, candidates and similarity", "fundamental frequency in Hz", ticks, true);
    drawColourBar(page, panel, 0, 1, "similarity a period away", darkToBright);
    return page.finish();
}

}  // namespace pitch

#else

namespace pitch {

std::string pictureOf(const Wave&, const std::vector<Frame>&, const Range&, const std::string&, bool) {
    throw std::runtime_error(
        "--picture needs cairo, which this program was built without: install libcairo2-dev, build again");
}

}  // namespace pitch

#endif
