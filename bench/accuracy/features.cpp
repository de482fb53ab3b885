// Features of recordings and streams: the whole chain from samples to rows, in extended precision.
#include "forms.h"
#include "special.h"

namespace accuracy {
namespace {

using Signal = std::vector<Kel32f>;

Real melOf(const KelFeatureConfig& c, Real f) {
    if (c.melScale == kelFeatScaleMel) return 1127 * std::log1p(f / 700);
    return f < 1000 ? 3 * f / 200 : 15 + 27 * std::log(f / 1000) / std::log(6.4L);
}
Real hertzOf(const KelFeatureConfig& c, Real mel) {
    if (c.melScale == kelFeatScaleMel) return 700 * std::expm1(mel / 1127);
    return mel < 15 ? mel * 200 / 3 : 1000 * std::exp((mel - 15) * std::log(6.4L) / 27);
}

// The weights, a row a filter.
Rows bankOf(const KelFeatureConfig& c) {
    const auto filters = static_cast<std::size_t>(c.numFilters), bins = static_cast<std::size_t>(c.fftLen / 2 + 1);
    const Real rate = c.sampleRate, top = c.highFreq <= 0 ? rate / 2 + c.highFreq : c.highFreq;
    const Real low = melOf(c, c.lowFreq), step = (melOf(c, top) - low) / (c.numFilters + 1);
    Rows bank(filters, Row(bins));
    for (std::size_t m = 0; m < filters; ++m) {
        Real corner[3], hertz[3];
        for (int k = 0; k < 3; ++k) {
            corner[k] = low + step * static_cast<Real>(m + static_cast<std::size_t>(k));
            hertz[k] = hertzOf(c, corner[k]);
            if (c.triangles == kelFeatTriangleHz) corner[k] = hertz[k];
        }
        for (std::size_t b = 0; b < bins; ++b) {
            const Real f = rate * static_cast<Real>(b) / c.fftLen;
            const Real at = c.triangles == kelFeatTriangleHz ? f : melOf(c, f);
            const Real rise = (at - corner[0]) / (corner[1] - corner[0]);
            const Real fall = (corner[2] - at) / (corner[2] - corner[1]);
            const Real weight = std::max<Real>(0, std::min(rise, fall));
            bank[m][b] = weight * (c.bankNorm == kelFeatBankArea ? 2 / (hertz[2] - hertz[0]) : 1);
        }
    }
    return bank;
}

// Magnitudes or powers of a frame at sample `at`, whose energy is told.
std::vector<Real> spectrumOf(const KelFeatureConfig& c, const Signal& x, std::ptrdiff_t at, Real& energy) {
    const auto n = static_cast<std::ptrdiff_t>(x.size());
    const int kind = c.edges % kelFeatDropLast;
    const auto sample = [&](std::ptrdiff_t i) -> Real {
        if (kind == kelFeatCentreZero && (i < 0 || i >= n)) return 0;
        while (i < 0 || i >= n)
            i = kind == kelFeatMirror ? (i < 0 ? -1 - i : 2 * n - 1 - i) : (i < 0 ? -i : 2 * n - 2 - i);
        return x[static_cast<std::size_t>(i)];
    };
    std::vector<Real> frame;
    for (int i = 0; i < c.frameLen; ++i) frame.push_back(sample(at + i));
    Real mean = 0;
    for (const Real v : frame) mean += v / c.frameLen;
    const auto energyOf = [&] {
        energy = 0;
        for (const Real v : frame) energy += v * v;
    };
    for (Real& v : frame) v -= c.removeMean ? mean : 0;
    if (c.energyRaw) energyOf();
    for (std::size_t i = frame.size(); i-- > 0;) frame[i] -= c.preEmphasis * frame[i == 0 ? 0 : i - 1];
    for (int i = 0; i < c.frameLen; ++i) {
        frame[static_cast<std::size_t>(i)] *= windowAt(c.window, i, c.frameLen, c.windowParam);
    }
    if (!c.energyRaw) energyOf();
    std::vector<Real> bins;
    for (int b = 0; b <= c.fftLen / 2; ++b) {
        Real re = 0, im = 0;
        const std::complex<Real> turn = std::polar(1.0L, 2 * kPi * b / c.fftLen);
        std::complex<Real> angle = 1;
        for (const Real v : frame) {
            re += v * angle.real();
            im -= v * angle.imag();
            angle = {angle.real() * turn.real() - angle.imag() * turn.imag(),
                     angle.real() * turn.imag() + angle.imag() * turn.real()};
        }
        bins.push_back(c.spectrum == kelFeatPower ? re * re + im * im : std::hypot(re, im));
    }
    return bins;
}

Real logOf(const KelFeatureConfig& c, Real e) {
    const Real v = std::max<Real>(e, c.logFloor);
    return c.logKind == kelFeatLn        ? std::log(v)
           : c.logKind == kelFeatLog10   ? std::log10(v)
           : c.logKind == kelFeatDecibel ? 10 * std::log10(v)
                                         : e;
}

void addDeltas(const KelFeatureConfig& c, Rows& rows) {
    const std::size_t width = rows[0].size();
    std::vector<Real> weights;
    Real squares = 0;
    for (int k = -c.deltaWin; k <= c.deltaWin; ++k) {
        weights.push_back(k);
        squares += k * k;
    }
    const auto last = static_cast<std::ptrdiff_t>(rows.size()) - 1;
    // The deltas of the row t, which may lie outside; of statics, or of the deltas of rows that exist.
    const std::function<Real(std::ptrdiff_t, std::size_t, int)> at = [&](std::ptrdiff_t t, std::size_t j, int order) {
        if (order == 0 || c.deltaEdge == kelFeatDeltaOfDelta) t = std::clamp(t, std::ptrdiff_t{0}, last);
        if (order == 0) return rows[static_cast<std::size_t>(t)][j].value;
        Real sum = 0;
        for (std::size_t k = 0; k < weights.size(); ++k) {
            sum += weights[k] / squares * at(t + static_cast<std::ptrdiff_t>(k) - c.deltaWin, j, order - 1);
        }
        return sum;
    };
    for (std::size_t t = 0; t < rows.size(); ++t) {
        for (int order = 1; order <= c.deltaOrder; ++order) {
            for (std::size_t j = 0; j < width; ++j) rows[t].push_back(at(static_cast<std::ptrdiff_t>(t), j, order));
        }
    }
}

Rows rowsOf(const KelFeatureConfig& c, const Signal& x) {
    const auto n = static_cast<int>(x.size());
    const int kind = c.edges % kelFeatDropLast, s = c.frameShift;
    int height = kind == kelFeatSnip     ? (n < c.frameLen ? 0 : 1 + (n - c.frameLen) / s)
                 : kind == kelFeatMirror ? (n + s / 2) / s
                                         : 1 + n / s;
    height -= c.edges >= kelFeatDropLast;
    const Rows bank = bankOf(c);
    std::vector<std::vector<Real>> values;
    std::vector<Real> energies;
    Real most = -HUGE_VALL;
    for (int t = 0; t < height; ++t) {
        const int at = kind == kelFeatSnip ? t * s : t * s + (kind == kelFeatMirror ? s / 2 : 0) - c.frameLen / 2;
        Real energy = 0;
        const auto spectrum = spectrumOf(c, x, at, energy);
        energies.push_back(energy);
        values.emplace_back();
        for (std::size_t m = 0; m < bank.size(); ++m) {
            Real e = 0;
            for (std::size_t b = 0; b < spectrum.size(); ++b) e += bank[m][b].value * spectrum[b];
            values.back().push_back(logOf(c, e));
            most = std::max(most, values.back().back());
        }
    }
    Rows rows;
    const Real filters = c.numFilters;
    for (std::size_t t = 0; t < values.size(); ++t) {
        auto& v = values[t];
        for (Real& e : v) e = ((c.logRange > 0 ? std::max(e, most - c.logRange) : e) + c.logOffset) * c.logScale;
        const auto cepstrum = [&](int k) -> Real {
            Real sum = 0;
            for (std::size_t j = 0; j < v.size(); ++j) {
                sum += v[j] * std::cos(kPi * k * (static_cast<Real>(j) + 0.5L) / filters);
            }
            const Real scale = std::sqrt((c.dctScale == kelFeatDctOrtho && k == 0 ? 1 : 2) / filters);
            return sum * scale * (c.lifter > 0 ? 1 + c.lifter / 2.0L * std::sin(kPi * k / c.lifter) : 1);
        };
        Row extra, main;
        if (c.energy & kelFeatC0) extra.push_back(cepstrum(0));
        if (c.energy & kelFeatEnergy) extra.push_back(std::log(std::max<Real>(energies[t], c.energyFloor)));
        for (int k = 1; k <= c.numCeps && c.output == kelFeatCepstra; ++k) main.push_back(cepstrum(k));
        if (c.output == kelFeatBank) main.assign(v.begin(), v.end());
        main.insert(c.energyPlace == kelFeatFirst ? main.begin() : main.end(), extra.begin(), extra.end());
        rows.push_back(main);
    }
    addDeltas(c, rows);
    return rows;
}

// What comes out, in rows of the exact width; of pushes the first rows, of flushes the last ones.
Output outputOf(const std::vector<Kel32f>& got, const Rows& exact, bool last) {
    Output output{0, 24, exact, {}};
    const std::size_t width = exact[0].size(), height = got.size() / width;
    const auto from = static_cast<std::ptrdiff_t>(last ? exact.size() - height : 0);
    output.exact.assign(exact.begin() + from, exact.begin() + from + static_cast<std::ptrdiff_t>(height));
    for (std::size_t t = 0; t < height; ++t) output.got.emplace_back(&got[t * width], &got[t * width] + width);
    return output;
}

Output measure(const std::string& function, KelFeatureConfig c, const std::vector<Kel16s>& samples) {
    const bool wide = function.find("_16s") == std::string::npos,
               streams = function.find("Stream") != std::string::npos;
    if (streams) c.logRange = 0;
    Signal x;
    for (const Kel16s v : samples) x.push_back(static_cast<Kel32f>(v * c.scale16s));
    KelFeatureSpec_32f* spec;
    kelsFeatureInitAlloc_32f(&spec, &c);
    if (function == "kelsFeatureGetBank_32f_D2") {
        const Rows bank = bankOf(c);
        std::vector<Kel32f> got(bank.size() * bank[0].size());
        kelsFeatureGetBank_32f_D2(got.data(), static_cast<int>(bank[0].size()), spec);
        kelsFeatureFree_32f(spec);
        return outputOf(got, bank, false);
    }
    const Rows exact = rowsOf(c, x);
    const int n = static_cast<int>(x.size());
    int height = static_cast<int>(exact.size());
    const int width = static_cast<int>(exact[0].size());
    std::vector<Kel32f> got(static_cast<std::size_t>(height * width));
    const bool flushed = function.find("Flush") != std::string::npos;
    if (streams) {
        KelFeatureStream_32f* stream;
        kelsFeatureStreamInitAlloc_32f(&stream, spec);
        if (wide) kelsFeatureStream_32f_D2(x.data(), n, got.data(), width, height, &height, stream);
        if (!wide) kelsFeatureStream_16s32f_D2(samples.data(), n, got.data(), width, height, &height, stream);
        if (flushed) kelsFeatureStreamFlush_32f_D2(got.data(), width, static_cast<int>(exact.size()), &height, stream);
        kelsFeatureStreamFree_32f(stream);
    } else if (wide) {
        kelsFeature_32f_D2(x.data(), n, got.data(), width, spec, nullptr);
    } else {
        kelsFeature_16s32f_D2(samples.data(), n, got.data(), width, spec, nullptr);
    }
    kelsFeatureFree_32f(spec);
    got.resize(static_cast<std::size_t>(height * width));
    return outputOf(got, exact, flushed);
}

// A hum and noise, through the presets, with accelerations.
std::vector<Output> features(const std::string& function) {
    sweep::Dice dice(1);
    std::vector<Kel16s> samples;
    for (int i = 0; i < 2100; ++i) {
        samples.push_back(static_cast<Kel16s>(900 * std::sin(0.05 * i) + draw({-500, 500}, dice)));
    }
    std::vector<Output> outputs;
    for (int preset = kelFeatHtkMfcc; preset <= kelFeatWhisperMel; ++preset) {
        KelFeatureConfig c;
        kelsFeaturePreset(&c, 8000, preset);
        c.deltaOrder = 2;
        outputs.push_back(measure(function, c, samples));
    }
    return outputs;
}

// Every row of an exhaustive codebook is a codevector.
std::vector<Output> codebook(const std::string&) {
    sweep::Dice dice(1);
    std::vector<Kel32f> rows, got(300);
    for (std::size_t i = 0; i < got.size(); ++i) rows.push_back(static_cast<Kel32f>(draw({-9, 9}, dice)));
    KelCdbk_32f* book;
    kelsCdbkInitAlloc_L2_32f(&book, rows.data(), 3, 3, 100, 100, kelCdbkExhaustive);
    kelsGetCodebook_32f(book, got.data(), 3);
    kelsCdbkFree_32f(book);
    return {{0, 24, {Row(rows.begin(), rows.end())}, {Row(got.begin(), got.end())}}};
}

}  // namespace

References featureReferences() {
    return {
        {"kelsFeature kelsFeatureStream kelsFeatureStreamFlush kelsFeatureGetBank",
         "5 presets",
         Unit::Peak,
         {},
         {},
         1,
         features},
        {"kelsGetCodebook", "100 rows", Unit::Ulp, {}, {}, 1, codebook},
    };
}

}  // namespace accuracy
