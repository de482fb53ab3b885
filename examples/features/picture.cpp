#include "picture.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#ifdef WITH_PICTURES
#include "plot/plot.h"

namespace features {
namespace {

using namespace plot;

constexpr double kHeight = 460;
constexpr double kShownDeviations = 3;

// The middle of the first frame in seconds.
double firstMiddle(const KelFeatureConfig& c) {
    const int edges = c.edges & ~kelFeatDropLast;
    const double samples = edges == kelFeatSnip ? c.frameLen / 2.0 : edges == kelFeatMirror ? c.frameShift / 2.0 : 0;
    return samples / c.sampleRate;
}

// Each column less its mean, divided by its deviation: cepstra differ too much in size to share a scale.
std::vector<float> standardised(const Rows& rows) {
    std::vector<float> values = rows.values;
    for (int col = 0; col < rows.width; ++col) {
        double sum = 0, squares = 0;
        for (int t = 0; t < rows.height; ++t) {
            const double v = rows.values[static_cast<std::size_t>(t) * rows.width + col];
            sum += v;
            squares += v * v;
        }
        const double mean = sum / rows.height;
        const double deviation = std::sqrt(std::max(squares / rows.height - mean * mean, 1e-12));
        for (int t = 0; t < rows.height; ++t) {
            float& v = values[static_cast<std::size_t>(t) * rows.width + col];
            v = static_cast<float>((v - mean) / deviation);
        }
    }
    return values;
}

}  // namespace

std::string pictureOf(const Rows& rows, const KelFeatureConfig& c, const std::string& title, bool svg) {
    const double step = static_cast<double>(c.frameShift) / c.sampleRate;
    const double begin = firstMiddle(c) - step / 2, end = begin + rows.height * step;
    const double first = 0.5, span = std::max(end, step);
    const Panel panel{80, 300, span, first, rows.width + first};

    const bool energies = c.output != kelFeatCepstra && c.deltaOrder == 0 && c.norm == kelFeatNormNone;
    const std::vector<float> values = energies ? rows.values : standardised(rows);
    const auto [least, greatest] = std::minmax_element(values.begin(), values.end());
    const double lowest = energies ? *least : -kShownDeviations;
    const double highest = energies ? std::max<double>(*greatest, lowest + 1e-6) : kShownDeviations;
    const ColourMap map = energies ? darkToBright : aroundZero;

    Page page(svg, kHeight);
    page.text(kLeft, 34, title, 19, 0, true);
    drawGround(page, panel);
    drawCells(page, panel, begin, end, rows.height, rows.width, [&](int t, int i) {
        return map((values[static_cast<std::size_t>(t) * rows.width + i] - lowest) / (highest - lowest));
    });
    std::vector<std::pair<double, std::string>> ticks;
    const double apart = roundStep(rows.width, 8);
    for (double i = std::max(apart, 1.0); i <= rows.width; i += std::max(apart, 1.0)) ticks.emplace_back(i, number(i));
    drawAxes(page, panel, "Features", "value of a row", ticks, true);
    drawColourBar(page, panel, lowest, highest, energies ? "value" : "standard deviations", map);
    return page.finish();
}

}  // namespace features

#else

namespace features {

std::string pictureOf(const Rows&, const KelFeatureConfig&, const std::string&, bool) {
    throw std::runtime_error(
        "--picture needs cairo, which this program was built without: install libcairo2-dev, build again");
}

}  // namespace features

#endif
