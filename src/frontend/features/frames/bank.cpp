// The triangles of a bank over the bins of the transform.
#include "frontend/features/frames/bank.h"

#include <cmath>

namespace kels::features {
namespace {

constexpr double kSlaneyBend = 1000, kSlaneyBendMel = 15, kSlaneySteps = 27;

double slaneyRatio() {
    return std::log(6.4);
}

double toMel(const KelFeatureConfig& c, double hertz) {
    if (c.melScale == kelFeatScaleMel) return 1127 * std::log1p(hertz / 700);
    if (hertz < kSlaneyBend) return 3 * hertz / 200;
    return kSlaneyBendMel + kSlaneySteps * std::log(hertz / kSlaneyBend) / slaneyRatio();
}

double toHertz(const KelFeatureConfig& c, double mel) {
    if (c.melScale == kelFeatScaleMel) return 700 * std::expm1(mel / 1127);
    if (mel < kSlaneyBendMel) return 200 * mel / 3;
    return kSlaneyBend * std::exp((mel - kSlaneyBendMel) * slaneyRatio() / kSlaneySteps);
}

// Corners and bins of a bank, in Hz and on the axis over which its triangles are straight.
class Triangles {
  public:
    explicit Triangles(const KelFeatureConfig& c)
        : config_(c),
          low_(c.lowFreq),
          high_(highLimit(c)),
          lowMel_(toMel(c, low_)),
          highMel_(toMel(c, high_)),
          overMel_(c.triangles == kelFeatTriangleMel) {}

    double bin(int b) const {
        const double hertz = static_cast<double>(b) * config_.sampleRate / config_.fftLen;
        return overMel_ ? toMel(config_, hertz) : hertz;
    }
    double corner(int m) const { return overMel_ ? cornerMel(m) : cornerHertz(m); }
    double cornerHertz(int m) const {  // at the ends the limits as they were given
        return m == 0 ? low_ : m == config_.numFilters + 1 ? high_ : toHertz(config_, cornerMel(m));
    }

    // The first bin, none below `from`, that lies beyond a place on the axis.
    int firstBeyond(double place, int from) const {
        int beyond = config_.fftLen / 2 + 1;
        while (from < beyond) {
            const int middle = from + (beyond - from) / 2;
            if (bin(middle) > place) {
                beyond = middle;
            } else {
                from = middle + 1;
            }
        }
        return from;
    }

  private:
    double cornerMel(int m) const {
        if (m == config_.numFilters + 1) return highMel_;
        return lowMel_ + m * ((highMel_ - lowMel_) / (config_.numFilters + 1));
    }

    const KelFeatureConfig& config_;
    double low_, high_, lowMel_, highMel_;
    bool overMel_;
};

}  // namespace

Kel32s layOutFilters(const KelFeatureConfig& config, FilterBins* filters) {
    const Triangles triangles(config);
    Kel32s total = 0;
    for (int m = 0, first = 0; m < config.numFilters; ++m) {
        first = triangles.firstBeyond(triangles.corner(m), first);
        int end = triangles.firstBeyond(triangles.corner(m + 2), first);
        if (end > first && triangles.bin(end - 1) >= triangles.corner(m + 2)) --end;  // weight 0 on the corner itself
        filters[m] = {first, end - first, total};
        total += end - first;
    }
    return total;
}

void fillWeights(const KelFeatureConfig& config, const FilterBins* filters, double* weights) {
    const Triangles triangles(config);
    for (int m = 0; m < config.numFilters; ++m) {
        const double low = triangles.corner(m), top = triangles.corner(m + 1), high = triangles.corner(m + 2);
        const double width = triangles.cornerHertz(m + 2) - triangles.cornerHertz(m);
        const double scale = config.bankNorm == kelFeatBankArea ? 2 / width : 1;
        for (int i = 0; i < filters[m].count; ++i) {
            const double x = triangles.bin(filters[m].first + i);
            weights[filters[m].weights + i] = std::min((x - low) / (top - low), (high - x) / (high - top)) * scale;
        }
    }
}

}  // namespace kels::features
