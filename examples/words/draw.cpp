#include "draw.h"

#include <array>
#include <cmath>
#include <cstdint>

#include "common/output_file.h"
#include "lp_spectrogram.h"
#include "plot/plot.h"

namespace words {
namespace {

using namespace plot;

constexpr double kHeight = 1160;
constexpr double kDbPerNeper = 8.6858896;  // of magnitude

constexpr Colour kFaint{0.82, 0.82, 0.85};
constexpr Colour kWave{0.17, 0.35, 0.62};
constexpr Colour kWord{0.86, 0.33, 0.10};
constexpr Colour kSpeech{0.62, 0.80, 0.55};

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

    Page page(picture.extension() == ".svg", kHeight);
    page.text(kLeft, 34, title, 19, 0, true);
    page.text(kLeft + kPlotWidth, 34,
              number(std::round(seconds * 1000) / 1000) + " s at " + number(recording.rate) + " Hz", 13, 1);
    std::vector<std::pair<double, double>> speech;
    for (const auto& [begin, end] : frontEnd.detectSpeech(recording).regions)
        speech.emplace_back(std::max(0.0, firstCell + begin * step), std::min(seconds, firstCell + end * step));
    drawWaveform(page, recording, wordBegin, wordEnd, speech);

    const Matrix& logMel = analysis.spectra;
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
