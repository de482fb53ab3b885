// The noise-robust front end.
#include "forms.h"

namespace accuracy {
namespace {

const Real kSmallest = 4.539993e-5L;

Row powerOf(Problem& p) {
    const Row& s = p.row("s");
    const std::size_t n = p.all("d")[0].size();
    const auto bin = [&](std::size_t k) { return square(s[2 * k]) + square(s[2 * k + 1]); };
    Row power(n);
    for (std::size_t b = 0; b + 1 < n; ++b) power[b] = (bin(2 * b) + bin(2 * b + 1)) * 0.5L;
    power[n - 1] = s.size() < 2 ? square(s[0]) : bin(2 * (n - 1));
    return power;
}
void powerSpectrum(Problem& p) {
    Row& d = p.exact("d")[0];
    const Row power = powerOf(p);
    for (std::size_t b = 0; b < d.size(); ++b) d[b] = power[b];
}
void smoothedSpectrum(Problem& p) {
    Row &d = p.exact("d")[0], &kept = p.exact("p")[0];
    kept = powerOf(p);
    for (std::size_t b = 0; b < d.size(); ++b) d[b] = (p.row("p")[b] + kept[b]) * 0.5L;
}

void noiseSpectrum(Problem& p) {
    const int t = p.whole("frame"), decided = p.whole("vad");
    Row& d = p.exact("noise")[0];
    for (std::size_t b = 0; b < d.size(); ++b) {
        const Exact n = p.row("noise")[b], power = p.row("s")[b];
        const Real l = 1 - 1 / static_cast<Real>(t);
        Exact next = n;
        if (decided == kelVadNoise) next = n * l + sqrt(power) * (1 - l);
        if (decided == kelVadPending && t < 11) next = sqrt(square(n) * l + power * (1 - l));
        if (decided == kelVadPending && t >= 11) {
            const Exact old = square(n);
            const Exact u =
                Exact(0.9L) + power * 0.1L / (power + old) * (Exact(1) + Exact(1) / (Exact(1) + power * 0.1L / old));
            next = sqrt(old * u);
        }
        d[b] = std::max(next, Exact(kSmallest));
    }
}

void wienerFilter(Problem& p) {
    Row &gain = p.exact("d")[0], &denoised = p.exact("den")[0];
    for (std::size_t b = 0; b < gain.size(); ++b) {
        const Exact n = p.row("noise")[b], m = sqrt(p.row("m")[b]);
        const Exact over = m / n - 1;
        const Exact a =
            p.row("den")[b] * 0.98L / n + (over.value > 0 ? over * 0.02L : Exact(0, over.magnitude * 0.02L));
        const Exact c = std::max(a / (Exact(1) + a) * m / n, Exact(0.079432823L));
        gain[b] = c / (Exact(1) + c);
        denoised[b] = gain[b] * sqrt(p.row("s")[b]);
    }
}

// Frames of noise of ten, then of a hundred times that.
constexpr int kFrames = 80, kLoudFrom = 30;
Kel32f levelOf(int frame, sweep::Dice& dice) {
    return static_cast<Kel32f>(draw({8, 12}, dice) * (frame < kLoudFrom ? 1 : 100));
}
template <auto sizeOf, auto init>
std::vector<Kel8u> stateOf() {
    int bytes;
    sizeOf(&bytes);
    std::vector<Kel8u> state(static_cast<std::size_t>(bytes));
    init(state.data());
    return state;
}

std::vector<Output> gainFactorization(const std::string&) {
    auto state = stateOf<kelsGainFactorizationGetBufSize_Aurora_32f, kelsGainFactorizationInit_Aurora_32f>();
    sweep::Dice dice(1);
    std::vector<Output> outputs;
    Real energies[3] = {}, lowest = 0, alpha = 0.8F;
    for (int t = 1; t <= kFrames; ++t) {
        const std::vector<Kel32f> denoised(65, levelOf(t, dice)), noise(65, static_cast<Kel32f>(draw({8, 12}, dice)));
        Kel32f got[25], gains[25];
        for (Kel32f& gain : gains) gain = static_cast<Kel32f>(draw({0.07, 1}, dice));
        kelsGainFactorizationUpdate_Aurora_32f(denoised.data(), 65, state.data());
        kelsGainFactorization_Aurora_32f(noise.data(), 65, gains, got, 25, state.data());
        energies[0] = energies[1], energies[1] = energies[2], energies[2] = 65 * static_cast<Real>(denoised[0]);
        const Real noises = 65 * static_cast<Real>(noise[0]);
        const Real r = energies[0] / noises * (energies[1] / noises) * (energies[2] / noises);
        const Real snr = r > 0.00001L ? 20 / 3.0L * std::log10(r) : -100 / 3.0L;
        if (snr - lowest < 10 || t < 10) {
            lowest += (t < 10 ? 1 / static_cast<Real>(t) : snr < lowest ? 0.05L : 0.01L) * (snr - lowest);
        }
        if (energies[2] > 100) {
            alpha = snr < lowest + 3.5L ? std::min(alpha + 0.15L, 0.8L) : std::max(alpha - 0.3L, 0.1L);
        }
        Row exact;
        for (const Kel32f gain : gains) exact.push_back(Exact(alpha * gain) + Exact(1 - alpha));
        outputs.push_back({0, 24, {exact}, {Row(got, got + 25)}});
    }
    return outputs;
}

void taps(Problem& p) {
    const Real centres[] = {0,         62.5L,   125,       187.5L,    250,       333.333L,  416.667L,
                            520.833L,  625,     750,       875,       1000,      1125,      1270.833L,
                            1437.5L,   1625,    1812.5L,   2020.833L, 2229.167L, 2479.167L, 2729.167L,
                            3020.833L, 3312.5L, 3645.833L, 4000};
    Row& d = p.exact("d")[0];
    for (std::size_t n = 0; n <= 8; ++n) {
        const Real window = 0.5L - 0.5L * std::cos(2 * kPi * (8.5L + static_cast<Real>(n)) / 17);
        const auto one = [&](std::size_t k) {
            const Real width = (centres[k == 24 ? 24 : k + 1] - centres[k == 0 ? 0 : k - 1]) / 8000;
            // A cosine of single precision is wrong by as much where it is 0.
            return p.row("s")[k] * width * Exact(std::cos(2 * kPi * static_cast<Real>(n) * centres[k] / 8000), 1);
        };
        d[8 + n] = d[8 - n] = sum(25, one) * window;
    }
}
void residualFilter(Problem& p) {
    Row& d = p.exact("d")[0];
    for (std::size_t n = 0; n < d.size(); ++n) {
        d[n] = sum(17, [&](std::size_t j) { return p.row("t")[j] * p.row("s")[n + 16 - j]; });
    }
}

// A factor of 0.8, 1 or 1.2: which, the maxima of the energies decide.
void waveProcessing(Problem& p) {
    const Row &s = p.row("s"), &got = p.result("d")[0];
    Row& d = p.exact("d")[0];
    for (std::size_t i = 0; i < d.size(); ++i) {
        Real nearest = 1;
        for (const Real factor : {0.8L, 1.2L}) {
            const auto away = [&](Real f) { return std::fabs(got[i].value - f * s[i].value); };
            if (away(factor) < away(nearest)) nearest = factor;
        }
        d[i] = s[i] * nearest;
    }
}

void equalise(Problem& p) {
    const Real standard[] = {-6.618909L, 0.198269L,  -0.740308L, 0.055132L, -0.227086L, 0.144280L,
                             -0.112451L, -0.146940L, -0.327466L, 0.134571L, 0.027884L,  -0.114905L};
    Row &d = p.exact("d")[0], &bias = p.exact("bias")[0];
    const Exact loud = Exact(p.number("e")) - 211 / 64.0L;
    const Exact step = (loud.value <= 0 ? Exact() : std::min(loud, Exact(1))) * 0.0087890625L;
    for (std::size_t i = 0; i < d.size(); ++i) {
        d[i] = p.row("s")[i] - p.row("bias")[i];
        bias[i] = p.row("bias")[i] + step * (d[i] - (p.has("ref") ? p.row("ref")[i] : Exact(standard[i])));
    }
}

// The half bands of a stream at its start.
void halfBands(Problem& p) {
    const Real q[] = {1584,   805,     -4192,   -8985,  -5987,  2583,    4657,    -3035,   -7004,  1542,
                      8969,   567,     -10924,  -3757,  12320,  7951,    -12793,  -13048,  11923,  18793,
                      -9331,  -24802,  4694,    30570,  2233,   -35439,  -11526,  38680,   23114,  -39474,
                      -36701, 36999,   51797,   -30419, -67658, 18962,   83318,   -1927,   -97566, -21284,
                      108971, 51215,   -115837, -88430, 116130, 133716,  -107253, -188497, 85497,  255795,
                      -44643, -342699, -28185,  468096, 167799, -696809, -519818, 1446093, 3562497};
    const Row& s = p.row("s");
    Row &low = p.exact("d")[0], &high = p.exact("e")[0];
    for (std::size_t k = 0; k < low.size(); ++k) {
        low[k] = high[k] = Exact();
        for (std::size_t j = 0; j < 118; ++j) {
            if (2 * k + j < 117) continue;
            const Exact term = s[2 * k + j - 117] * (q[std::min(j, 117 - j)] / 8388608);
            low[k] += term;
            high[k] += (j + 1 + k) % 2 == 0 ? term : -term;
        }
    }
}

Exact flooredLog(const Exact& e) {
    return e.value > std::exp(-10.0L) ? log(e) : Exact(-10);
}
Exact between(const Row& x, std::size_t first, std::size_t last) {
    return sum(last + 1 - first, [&](std::size_t i) { return x[first + i]; });
}
void codingReference(Problem& p) {
    const Row& s = p.row("s");
    p.exact("d")[0] = {flooredLog(between(s, 33, 38)), flooredLog(between(s, 39, 48)), flooredLog(between(s, 49, 64))};
}
void decodingReference(Problem& p) {
    const Row& s = p.row("s");
    const auto half = [&](std::size_t first, std::size_t last) { return flooredLog(between(s, first, last) * 0.5L); };
    p.exact("d")[0] = {half(66, 76), half(78, 96), half(98, 128)};
}
void coding(Problem& p) {
    Row& d = p.exact("d")[0];
    for (std::size_t i = 0; i < 9; ++i) d[i] = p.row("r")[i % 3] - flooredLog(p.row("s")[i / 3]);
}
void decoding(Problem& p) {
    const Real weights[] = {0.1L, 0.2L, 0.7L};
    Row& d = p.exact("d")[0];
    for (std::size_t i = 0; i < 3; ++i) {
        d[i] = sum(3, [&](std::size_t j) { return (p.row("r")[j] - p.row("s")[3 * i + j]) * weights[j]; });
    }
}
std::vector<Output> subtraction(const std::string&) {
    auto state = stateOf<kelsHighBandGetBufSize_Aurora_32f, kelsHighBandInit_Aurora_32f>();
    sweep::Dice dice(1);
    std::vector<Output> outputs;
    Exact noise[3];
    Real mean = 0;
    int speech = 0, hangOver = 0;
    for (int t = 1; t <= kFrames; ++t) {
        const Kel32f bands[3] = {levelOf(t, dice), levelOf(t, dice), levelOf(t, dice)};
        Kel32f got[3];
        kelsHighBandSpectralSubtraction_Aurora_32f(bands, got, state.data());
        const Real energy = std::log(static_cast<Real>(bands[0]) + bands[1] + bands[2]);
        if (energy - mean < 1.2L || t < 10) {
            mean += (t < 10 ? 1 / static_cast<Real>(t) : energy < mean ? 0.02L : 0.005L) * (energy - mean);
        }
        const bool loud = energy - mean > 2.2L;
        if (!loud && speech > 4) hangOver = 15;
        speech = loud ? speech + 1 : 0;
        const bool decided = loud || hangOver > 0;
        hangOver -= !loud && hangOver > 0;
        Row exact;
        for (int k = 0; k < 3; ++k) {
            const Exact b = bands[k];
            const Real l = t < 10         ? 1 - 1 / static_cast<Real>(t)
                           : b < noise[k] ? (t < 100 ? 1 - 1 / static_cast<Real>(t) : 0.99L)
                                          : 0.995L;
            if (!decided) noise[k] = std::max(noise[k] * l + b * (1 - l), Exact(kSmallest));
            exact.push_back(std::max(b - noise[k] * 1.5L, b * 0.1L));
        }
        outputs.push_back({0, 24, {exact}, {Row(got, got + 3)}});
    }
    return outputs;
}
void merge(Problem& p) {
    const Real k = std::log(1.9L);
    Row& d = p.exact("log")[0];
    d = p.row("log");
    for (std::size_t i = 0; i < 3; ++i) {
        d[23 + i] = (p.row("c")[i] + k) * 0.7L + flooredLog(p.row("h")[i] * 1.9L) * 0.3L;
    }
    const Exact mean = (d[22] + d[23]) * 0.5L;
    for (const std::size_t i : {22, 23}) d[i] = d[i] * 0.6L + mean * 0.4L;
    p.exact("e")[0][0] = sum(3, [&](std::size_t i) { return exp(d[23 + i] - k); });
}

}  // namespace

References auroraReferences() {
    return {
        {"kelsPowerSpectrum_Aurora", "", Unit::Sum, powerSpectrum},
        {"kelsSmoothedPowerSpectrumAurora", "p=0..900", Unit::Sum, smoothedSpectrum},
        {"kelsNoiseSpectrumUpdate_Aurora", "s=0..1e6 noise=0.1..900 vad=4", Unit::Sum, noiseSpectrum},
        {"kelsWienerFilterDesign_Aurora", "s=0..1e6 m=0..1e6 noise=0.1..900 den=0..900", Unit::Sum, wienerFilter},
        {"kelsGainFactorization_Aurora", "80 frames", Unit::Sum, {}, {}, 1, gainFactorization},
        {"kelsTabsCalculation_Aurora", "s=0..1", Unit::Sum, taps},
        {"kelsResidualFilter_Aurora", "", Unit::Sum, residualFilter},
        {"kelsWaveProcessing_Aurora", "s=-9000..9000", Unit::Ulp, waveProcessing},
        {"kelsBlindEqualization_Aurora kelsBlindEqualizationRef_Aurora", "e=3..9", Unit::Sum, equalise},
        {"kelsLowHighFilter_Aurora", "n=2..400", Unit::Sum, halfBands, nullptr, 60},
        {"kelsHighBandCodingRef_Aurora", "s=0..1e6", Unit::Sum, codingReference},
        {"kelsHighBandDecodingRef_Aurora", "s=0..1e6", Unit::Sum, decodingReference},
        {"kelsHighBandCoding_Aurora", "r=-9..20 s=0..1e6", Unit::Sum, coding},
        {"kelsHighBandDecoding_Aurora", "r=-9..20 s=-9..9", Unit::Sum, decoding},
        {"kelsHighBandSpectralSubtraction_Aurora", "80 frames", Unit::Sum, {}, {}, 1, subtraction},
        {"kelsHighBandMerge_Aurora", "c=-9..9 h=0..1e6 log=-9..20", Unit::Sum, merge},
    };
}

}  // namespace accuracy
