// Sums of filter banks over spectra and over samples.
#include <numeric>

#include "frontend/fbank/banks.h"
#include "support/transform.h"

namespace {

using namespace test;

// Results are the sums of a spectrum by the bank's weights, which `source` gives directly or up to an error a bin.
template <class F, class S, class D, class B, class... Scale>
void checkSums(const F& held, KelStatus (*evaluate)(const S*, D*, B*, Scale...), const std::vector<S>& source,
               const std::vector<Real>& spectrum, Real error, Scale... scale) {
    std::vector<D> dst(held.nFilter);
    ASSERT_EQ(evaluate(source.data(), dst.data(), held.bank, scale...), kelStatusOk);
    const auto c = held.centers();
    for (int m = 0; m < held.nFilter; ++m) {
        const auto w = held.weights(m);
        Real sum = 0, size = 0, slack = 0;
        for (std::size_t i = 0; i < w.size(); ++i) {
            const Real term = w[i] * spectrum[c[m] + i];
            sum += term;
            size += std::fabs(term);
            slack += std::fabs(w[i]) * error;
        }
        if constexpr (std::is_integral_v<D>) {
            const D exact = saturated<D>(std::floor(scaled(sum, (0 + ... + scale))));
            EXPECT_TRUE(near(dst[m], exact, error > 0 ? scaled(slack, (0 + ... + scale)) + 1 : 0)) << m;
        } else {
            EXPECT_TRUE(near(dst[m], sum, static_cast<Real>(w.size() + 2) * 0x1p-24L * size + slack)) << m;
        }
    }
}

// A bank with random centres, narrow, wide and coinciding, and random weights k * 2^-16, k up to `limit`, and a
// spectrum up to its last centre.
template <class S, class F>
std::vector<S> randomBank(Random& random, F& held, int fftLen, int limit) {
    EXPECT_EQ(initEmpty(&held.bank, &held.order, fftLen, held.nFilter, 0), kelStatusOk);
    std::vector<int> c;
    for (int k = 0; k < held.nFilter + 2; ++k) c.push_back(random.between(0, fftLen / 2));
    std::sort(c.begin(), c.end());
    if (random.between(0, 3) == 0) std::fill(c.begin() + random.between(1, 2), c.end(), fftLen / 2);
    EXPECT_EQ(setCenters(held.bank, c.data()), kelStatusOk);
    EXPECT_EQ(held.centers(), c);
    for (int m = 0; m < held.nFilter; ++m) {
        std::vector<Kel32f> w(c[m + 2] - c[m] + 1);
        for (auto& v : w) v = static_cast<float>(random.between(-limit, limit)) / 65536;
        inEveryRoundingMode([&] { EXPECT_EQ(setCoeffs(held.bank, m + 1, w.data()), kelStatusOk); });
        for (auto& v : w) v = F::kFixed ? std::nearbyint(v * 16384) / 16384 : v;
        EXPECT_EQ(held.weights(m), w);
    }
    return random.vector<S>(c.back() + 1);
}

TEST(FBankEval, SumsOfASpectrum) {
    Random random;
    for (int round = 0; round < 30; ++round) {
        Owned<KelFilterBank_32f> floats(random.between(1, 40));
        Owned<KelFilterBank_16s> fixed(random.between(1, 30));
        const auto s = randomBank<Kel32f>(random, floats, 4 << random.between(0, 7), 1 << 20);
        checkSums(floats, kelsEvalFBank_32f, s, std::vector<Real>(s.begin(), s.end()), 0);
        const auto s16 = randomBank<Kel16s>(random, fixed, 4 << random.between(0, 7), 1 << random.between(8, 24));
        for (const int scaleFactor : {INT_MIN, -33, -13, -6, 0, 3, 11, 18, 34, 49, 50, INT_MAX}) {
            const std::vector<Real> spectrum(s16.begin(), s16.end());
            checkSums(fixed, kelsEvalFBank_16s_Sfs, s16, spectrum, 0, scaleFactor);
            checkSums(fixed, kelsEvalFBank_16s32s_Sfs, s16, spectrum, 0, scaleFactor);
        }
    }
}

TEST(FBankEval, SumsOfSamples) {
    Random random;
    for (const Shape& s : kShapes) {
        Owned<KelFilterBank_32f> floats(s.nFilter);
        Owned<KelFilterBank_16s> fixed(s.nFilter);
        s.build(floats, kelFBankWeightBin | kelFBankOwnFFT);
        s.build(fixed, kelFBankWeightBin | kelFBankOwnFFT);
        const auto x = random.vector<Kel16s>(std::size_t{1} << floats.order);
        // An FFT errs by about a unit a stage relative to the root of the energy; 16-bit: besides, by halves of 1/8 in
        // both parts and of 1/64 in the magnitude.
        const Real energy = std::inner_product(x.begin(), x.end(), x.begin(), Real(0));
        const Real error = (floats.order + 2) * 0x1p-23L * std::sqrt(energy * static_cast<Real>(x.size()));
        std::vector<Real> magnitudes;
        for (const auto& bin : transform(x, x.size())) magnitudes.push_back(std::abs(bin));
        checkSums(floats, kelsEvalFBank_32f, std::vector<Kel32f>(x.begin(), x.end()), magnitudes, error);
        checkSums(fixed, kelsEvalFBank_16s_Sfs, x, magnitudes, error + 0.1L, 12);
        checkSums(fixed, kelsEvalFBank_16s32s_Sfs, x, magnitudes, error + 0.1L, 0);
    }
}

}  // namespace
