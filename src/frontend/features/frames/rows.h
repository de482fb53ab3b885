// From the values of a batch of frames, a frame in each lane, to rows: logarithms, cosine transform, energies.
#pragma once

#include <cstddef>
#include <limits>

#include "core/simd/elementary.h"
#include "core/simd/transpose.h"
#include "core/simd/vec.h"
#include "frontend/features/spec.h"

namespace kels::features {

// x, or low where x is below it; NaN stays.
template <class T>
inline Vec<T> notBelow(const Vec<T>& low, const Vec<T>& x) {
    return greaterOf(low, x);
}

template <class T>
inline void takeLogarithms(const KelFeatureConfig& c, Vec<T>* values, std::size_t n) {
    const Vec<T> floor(static_cast<T>(c.logFloor));
    const auto all = [&](auto logarithmOf) {
        for (std::size_t i = 0; i < n; ++i) values[i] = logarithmOf(notBelow(floor, values[i]));
    };
    switch (c.logKind) {
        case kelFeatLn:
            return all([](const Vec<T>& x) { return logarithm(x); });
        case kelFeatLog10:
            return all([](const Vec<T>& x) { return logarithm10(x); });
        case kelFeatDecibel:
            return all([](const Vec<T>& x) { return Vec<T>(logarithm10(x) * T(10)); });
        default:
            return;
    }
}

// The largest finite value of a signal so far.
class Peak {
  public:
    void note(const Vec<double>* values, std::size_t n) {
        constexpr double kInfinity = std::numeric_limits<double>::infinity();
        for (std::size_t i = 0; i < n; ++i) {
            const Vec<double> v = values[i];
            stdx::where(v > largest_ && v < kInfinity, largest_) = v;
        }
    }
    double value() const { return stdx::hmax(largest_); }

  private:
    Vec<double> largest_{-std::numeric_limits<double>::infinity()};
};

// What a logarithm becomes in the end; `least` is the value that it does not fall below.
struct LogarithmEnd {
    double least, offset, scale;

    LogarithmEnd(const KelFeatureConfig& c, double lowest)
        : least(lowest), offset(hasLogarithm(c) ? c.logOffset : 0), scale(hasLogarithm(c) ? c.logScale : 1) {}
    // A value as it is, for what is not known yet.
    LogarithmEnd() : least(-std::numeric_limits<double>::infinity()), offset(0), scale(1) {}

    bool leavesAll() const { return least == -std::numeric_limits<double>::infinity() && offset == 0 && scale == 1; }
    Vec<double> operator()(const Vec<double>& v) const { return (notBelow(Vec<double>(least), v) + offset) * scale; }
};

// Cepstra of values in lanes.  The cosines are even or odd about the middle, so the values are folded there first.
class CosineTransform {
  public:
    explicit CosineTransform(const KelFeatureSpec_32f& spec)
        : cosines_(spec.cosines),
          filters_(static_cast<std::size_t>(spec.config.numFilters)),
          last_(static_cast<std::size_t>(spec.config.numCeps)) {}

    // `folded`: room for one more than as many vectors as there are values.
    void apply(const Vec<double>* values, Vec<double>* folded, const RowPlaces& places, bool withC0,
               Vec<double>* row) const {
        const std::size_t half = filters_ / 2, all = (filters_ + 1) / 2;
        Vec<double>* const sums = folded;
        Vec<double>* const differences = folded + all;
        for (std::size_t j = 0; j < half; ++j) {
            sums[j] = values[j] + values[filters_ - 1 - j];
            differences[j] = values[j] - values[filters_ - 1 - j];
        }
        if (all > half) sums[half] = values[half];
        if (withC0) coefficients(sums, all, 0, 0, row + places.c0);
        if (last_ == 0) return;
        Vec<double>* const first = row + places.values;
        coefficients(differences, half, 1, last_, first);
        if (last_ >= 2) coefficients(sums, all, 2, last_, first + 1);
    }

  private:
    // Coefficients k, k + 2, .. up to `last`, every second place of dst.
    void coefficients(const Vec<double>* folded, std::size_t n, std::size_t k, std::size_t last,
                      Vec<double>* dst) const {
        for (; k + 6 <= last; k += 8, dst += 8) some<4>(folded, n, k, dst);
        for (; k <= last; k += 2, dst += 2) some<1>(folded, n, k, dst);
    }
    template <std::size_t count>
    void some(const Vec<double>* folded, std::size_t n, std::size_t k, Vec<double>* dst) const {
        const std::size_t stride = (filters_ + 1) / 2;
        const double* const cosines = cosines_ + k * stride;
        Vec<double> sums[count];
        for (auto& sum : sums) sum = 0.0;
        for (std::size_t j = 0; j < n; ++j) {
            const Vec<double> x = folded[j];
            for (std::size_t i = 0; i < count; ++i) {
                sums[i] = mulAdd(x, Vec<double>(cosines[2 * i * stride + j]), sums[i]);
            }
        }
        for (std::size_t i = 0; i < count; ++i) dst[2 * i] = sums[i];
    }

    const double* cosines_;
    std::size_t filters_, last_;
};

// Lane j of the n vectors as row j, rounded, for the first `count` lanes.
template <class Rows>
inline void storeRows(const Vec<double>* lanesOfRow, std::size_t n, const Rows& rows, std::size_t count) {
    constexpr std::size_t w = lanes<double>;
    if (n < w) {
        for (std::size_t j = 0; j < count; ++j) {
            for (std::size_t i = 0; i < n; ++i) rows(j)[i] = static_cast<Kel32f>(double(lanesOfRow[i][j]));
        }
        return;
    }
    const auto square = [&](std::size_t i) {
        Vec<double> block[w];
        for (std::size_t j = 0; j < w; ++j) block[j] = lanesOfRow[i + j];
        transposeSquare<double>(block);
        for (std::size_t j = 0; j < count; ++j) block[j].copy_to(rows(j) + i, stdx::element_aligned);
    };
    for (std::size_t i = 0; i + w < n; i += w) square(i);
    square(n - w);
}

// Statics of up to lanes<double> frames: `values` (which become what `end` makes of them) and energies into rows.
// `work`: room for staticWidth + valueCount + 1 vectors.
template <class Rows>
inline void finishRows(const KelFeatureSpec_32f& spec, Vec<double>* values, const Vec<double>& energy,
                       const LogarithmEnd& end, Vec<double>* work, const Rows& rows, std::size_t count) {
    const KelFeatureConfig& c = spec.config;
    if (hasLogarithm(c) && !end.leavesAll()) {
        for (std::size_t i = 0; i < spec.valueCount; ++i) values[i] = end(values[i]);
    }
    if (c.output != kelFeatCepstra && c.energy == 0) return storeRows(values, spec.valueCount, rows, count);
    Vec<double>* const row = work;
    if (c.output == kelFeatCepstra) {
        const bool withC0 = (c.energy & kelFeatC0) != 0;
        CosineTransform(spec).apply(values, work + spec.staticWidth, spec.places, withC0, row);
    } else {
        for (std::size_t i = 0; i < spec.valueCount; ++i) row[spec.places.values + i] = values[i];
    }
    if ((c.energy & kelFeatEnergy) != 0) {
        row[spec.places.energy] = logarithm(notBelow(Vec<double>(c.energyFloor), energy));
    }
    storeRows(row, spec.staticWidth, rows, count);
}

}  // namespace kels::features
