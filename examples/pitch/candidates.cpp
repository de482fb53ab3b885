#include "candidates.h"

#include <kels.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>

namespace pitch {
namespace {

constexpr int kShort = 120;          // samples that coefficients compare: 15 ms
constexpr float kPeriods = 3;        // of the lowest frequency in a windowed frame
constexpr float kWeight = 0.3F;      // of the coefficients, against the autocorrelation
constexpr float kThreshold = 0.3F;   // of peaks, relative to the highest one
constexpr float kWindowed = 0.375F;  // of steady noise's energy, what a Hann window leaves
constexpr std::size_t kMost = 12;    // candidates

void check(KelStatus status, const char* what) {
    if (status < 0) throw std::runtime_error(std::string(what) + " gives status " + std::to_string(status));
}

}  // namespace

Analyser::Analyser(const Range& range)
    : range_(range),
      minLag_(shortestLag(range)),
      maxLag_(static_cast<int>(std::ceil(kRate / range.lowest)) + 1),
      lags_(maxLag_ - minLag_ + 1),
      frameLength_(static_cast<int>(kPeriods * kRate / range.lowest)),
      reach_(std::max(frameLength_ / 2 + 1, kShort + maxLag_ + 1)) {
    const auto n = static_cast<std::size_t>(frameLength_);
    window_.resize(n);
    frame_.resize(n);
    for (std::size_t i = 0; i < n; ++i) {
        const double angle = 2 * std::acos(-1.0) * (static_cast<double>(i) + 0.5) / static_cast<double>(n);
        window_[i] = static_cast<float>(0.5 - 0.5 * std::cos(angle));
    }
    windowCorrelation_.resize(static_cast<std::size_t>(maxLag_) + 1);
    check(kelsAutoCorr_32f(window_.data(), frameLength_, windowCorrelation_.data(), maxLag_ + 1), "kelsAutoCorr_32f");
    for (auto* v : {&coefficients_, &periodicity_, &similarity_}) v->resize(static_cast<std::size_t>(lags_));
    peaks_.resize(static_cast<std::size_t>(lags_));
}

std::vector<Candidate> Analyser::analyse(const float* centre, float noise) {
    // Two short windows, of which the pair lies around the centre at lags in the middle of the range.
    const float* const first = centre - (kShort + (minLag_ + maxLag_) / 2) / 2;
    const float bias = noise * static_cast<float>(kShort);
    check(kelsCrossCorrCoeffPartial_32f(first, first, kShort, coefficients_.data(), minLag_, maxLag_, bias),
          "kelsCrossCorrCoeffPartial_32f");
    // The frame, whose mean the filter has taken out.
    kelsMul_32f(centre - frameLength_ / 2, window_.data(), frame_.data(), frameLength_);
    check(kelsPeriodicity_32f(frame_.data(), frameLength_, windowCorrelation_.data(), periodicity_.data(), minLag_,
                              maxLag_),
          "kelsPeriodicity_32f");
    // The noise is added to the energy here, too.
    float energy;
    kelsDotProd_32f(frame_.data(), frame_.data(), frameLength_, &energy);
    const float longBias = kWindowed * noise * static_cast<float>(frameLength_);
    if (energy > 0) kelsMulC_32f_I(energy / (energy + longBias), periodicity_.data(), lags_);
    for (std::size_t k = 0; k < similarity_.size(); ++k) {
        similarity_[k] = kWeight * coefficients_[k] + (1 - kWeight) * periodicity_[k];
    }

    std::vector<Candidate> found;
    addPeaks(coefficients_, first, found);
    addPeaks(periodicity_, nullptr, found);
    std::sort(found.begin(), found.end(), [](const Candidate& a, const Candidate& b) { return a.score > b.score; });
    // Both measures have found most peaks.
    std::vector<Candidate> different;
    for (const Candidate& c : found) {
        if (c.frequency < range_.lowest || c.frequency > range_.highest) continue;
        const bool known = std::any_of(different.begin(), different.end(), [&](const Candidate& d) {
            return std::fabs(c.frequency / d.frequency - 1) < 0.02F;
        });
        if (!known && different.size() < kMost) different.push_back(c);
    }
    return different;
}

// The peaks of one measure, each placed between two lags and scored by both measures.
void Analyser::addPeaks(const std::vector<float>& measure, const float* window, std::vector<Candidate>& found) {
    float highest = 0;
    kelsMax_32f(measure.data(), lags_, &highest);
    check(kelsFindPeaks_32f8u(measure.data(), peaks_.data(), lags_, std::max(kThreshold * highest, 1e-3F), 1),
          "kelsFindPeaks_32f8u");
    for (std::size_t k = 1; k + 1 < measure.size(); ++k) {
        if (peaks_[k] == 0) continue;
        float lag = static_cast<float>(minLag_) + static_cast<float>(k);
        if (window != nullptr) {
            const int below = minLag_ + static_cast<int>(k) - (measure[k + 1] >= measure[k - 1] ? 0 : 1);
            float part, coefficient;
            const KelStatus status =
                kelsCrossCorrCoeffInterpolation_32f(window, window, kShort, below, &part, &coefficient);
            check(status, "kelsCrossCorrCoeffInterpolation_32f");
            if (status == kelStatusOk && part > -0.5F && part < 1.5F) lag = static_cast<float>(below) + part;
        } else {
            // The vertex of the parabola through three values.
            const float bend = measure[k - 1] - 2 * measure[k] + measure[k + 1];
            if (bend < 0) lag += 0.5F * (measure[k - 1] - measure[k + 1]) / bend;
        }
        const auto around = [&](const std::vector<float>& v) { return std::max({v[k - 1], v[k], v[k + 1]}); };
        const float score = kWeight * around(coefficients_) + (1 - kWeight) * around(periodicity_);
        found.push_back({kRate / lag, std::min(score, 1.0F)});
    }
}

}  // namespace pitch
