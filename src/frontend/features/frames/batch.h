// A batch of frames from samples to statics, in either precision.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <type_traits>

#include "core/layout.h"
#include "frontend/features/frames/conditioning.h"
#include "frontend/features/frames/rows.h"
#include "frontend/features/frames/samples.h"
#include "frontend/features/spec.h"

namespace kels::features {

// The memory that a batch works in.
template <class T>
struct BatchWork {
    static constexpr std::size_t kParts = WideLanes<T>::kParts;

    Kel32f* samples;
    Vec<T>*a, *b;          // of the transform
    Vec<T>* values;        // the bins or the filters
    Vec<double>* wide[2];  // the same in double; in double precision `values` themselves
    Vec<double>* finish;

    void arrange(const KelFeatureSpec_32f& spec, Layout& layout) {
        const auto vectors = [&]<class V>(std::size_t n, V*& place) {
            place = layout.take<V>(static_cast<int64_t>(n), alignof(V));
        };
        samples = layout.take<Kel32f>(static_cast<int64_t>(lanes<T>) * spec.config.frameLen);
        vectors(analysisOf<T>(spec).transform.workVectors(), a);
        vectors(analysisOf<T>(spec).transform.workVectors(), b);
        vectors(hasBank(spec.config) || kParts > 1 ? spec.valueCount : 0, values);
        for (auto& half : wide) vectors(kParts > 1 ? spec.valueCount : 0, half);
        vectors(spec.staticWidth + spec.valueCount + 1, finish);
    }
};

template <class T>
class Batch {
  public:
    static constexpr std::size_t kFrames = lanes<T>;

    Batch(const KelFeatureSpec_32f& spec, const BatchWork<T>& work) : spec_(spec), work_(work) {}

    // The logarithms, or values, of frames first .. first + count, count <= kFrames, and their energies: for each part
    // of lanes<double> frames, take(values, energy, first frame of the part, frames in it).
    template <class Take>
    void run(const Samples& samples, int64_t first, std::size_t count, Take take) const {
        const Kel32f* frames[kFrames];
        samples.frames(first, count, work_.samples, frames);
        std::fill(frames + count, frames + kFrames, frames[count - 1]);
        WideLanes<T> energy = {};
        Vec<T>* const values = analyse(frames, energy);
        takeLogarithms(spec_.config, values, spec_.valueCount);
        for (std::size_t p = 0; p * lanes<double> < count; ++p) {
            const std::size_t begin = p * lanes<double>;
            take(inDouble(values, p), energy.part[p], begin, std::min(count - begin, lanes<double>));
        }
    }

  private:
    Vec<T>* analyse(const Kel32f* const* frames, WideLanes<T>& energy) const {
        const KelFeatureConfig& c = spec_.config;
        const Analysis<T>& analysis = analysisOf<T>(spec_);
        const auto length = static_cast<std::size_t>(c.frameLen), fftLength = static_cast<std::size_t>(c.fftLen);
        const bool withEnergy = (c.energy & kelFeatEnergy) != 0, raw = c.energyRaw != 0;
        Vec<T>* const x = work_.a;
        loadFrames(frames, length, x);
        const FrameMean<T> mean = c.removeMean != 0 ? FrameMean<T>(x, length) : FrameMean<T>();
        const auto condition = [&](auto rawEnergy, auto emphasised) {
            return conditionFrames<rawEnergy, emphasised>(x, length, mean, c.preEmphasis, analysis.window);
        };
        const auto conditionWith = [&](auto rawEnergy) {
            return c.preEmphasis != 0 ? condition(rawEnergy, std::true_type())
                                      : condition(rawEnergy, std::false_type());
        };
        energy = withEnergy && raw ? conditionWith(std::true_type()) : conditionWith(std::false_type());
        if (withEnergy && !raw) energy = energyOf(x, length);
        for (std::size_t i = length; i < fftLength; ++i) x[i] = T(0);

        const auto power = [](const Vec<T>& re, const Vec<T>& im) { return Vec<T>(mulAdd(re, re, im * im)); };
        const auto magnitude = [=](const Vec<T>& re, const Vec<T>& im) { return Vec<T>(stdx::sqrt(power(re, im))); };
        Vec<T>* const spectrum = c.spectrum == kelFeatPower ? analysis.transform.spectrum(x, work_.b, power)
                                                            : analysis.transform.spectrum(x, work_.b, magnitude);
        if (!hasBank(c)) return spectrum;
        applyBank(spec_.filters, spec_.valueCount, analysis.weights, spectrum, work_.values);
        return work_.values;
    }

    Vec<double>* inDouble(Vec<T>* values, std::size_t part) const {
        if constexpr (sizeof(T) == sizeof(double)) {
            return values;
        } else {
            Vec<double>* const wide = work_.wide[part];
            for (std::size_t i = 0; i < spec_.valueCount; ++i) wide[i] = wideLanes(values[i]).part[part];
            return wide;
        }
    }

    const KelFeatureSpec_32f& spec_;
    const BatchWork<T>& work_;
};

}  // namespace kels::features
