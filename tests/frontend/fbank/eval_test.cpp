// Sums of 16-bit filter banks over spectra and over samples.
#include <numeric>

#include "frontend/fbank/banks.h"
#include "support/transform.h"

namespace {

using namespace test;
using Bank = Owned<KelFilterBank_16s>;

// Results are the sums of a spectrum by the bank's weights, which `source` gives directly or up to an error a bin.
template <class D>
void checkSums(const Bank& held, KelStatus (*evaluate)(const Kel16s*, D*, KelFilterBank_16s*, int),
               const std::vector<Kel16s>& source, const std::vector<Real>& spectrum, Real error, int scale) {
    std::vector<D> dst(held.nFilter);
    ASSERT_EQ(evaluate(source.data(), dst.data(), held.bank, scale), kelStatusOk);
    const auto c = held.centers();
    for (int m = 0; m < held.nFilter; ++m) {
        const auto w = held.weights(m);
        Real sum = 0, slack = 0;
        for (std::size_t i = 0; i < w.size(); ++i) {
            sum += w[i] * spectrum[c[m] + i];
            slack += std::fabs(w[i]) * error;
        }
        const D exact = saturated<D>(std::floor(scaled(sum, scale)));
        EXPECT_TRUE(near(dst[m], exact, error > 0 ? scaled(slack, scale) + 1 : 0)) << m;
    }
}

// A bank with random centres, narrow, wide and coinciding, and random weights k * 2^-16, k up to `limit`, and a
// spectrum up to its last centre.
std::vector<Kel16s> randomBank(Random& random, Bank& held, int fftLen, int limit) {
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
        for (auto& v : w) v = std::nearbyint(v * 16384) / 16384;
        EXPECT_EQ(held.weights(m), w);
    }
    return random.vector<Kel16s>(c.back() + 1);
}

TEST(FBankEval, SumsOfASpectrum) {
    Random random;
    for (int round = 0; round < 30; ++round) {
        Bank bank(random.between(1, 30));
        const auto s = randomBank(random, bank, 4 << random.between(0, 7), 1 << random.between(8, 24));
        const std::vector<Real> spectrum(s.begin(), s.end());
        for (const int scaleFactor : {INT_MIN, -33, -13, -6, 0, 3, 11, 18, 34, 49, 50, INT_MAX}) {
            checkSums(bank, kelsEvalFBank_16s_Sfs, s, spectrum, 0, scaleFactor);
            checkSums(bank, kelsEvalFBank_16s32s_Sfs, s, spectrum, 0, scaleFactor);
        }
    }
}

TEST(FBankEval, SumsOfSamples) {
    Random random;
    for (const Shape& s : kShapes) {
        Bank bank(s.nFilter);
        s.build(bank, kelFBankWeightBin | kelFBankOwnFFT);
        const auto x = random.vector<Kel16s>(std::size_t{1} << bank.order);
        // An FFT errs by about a unit a stage relative to the root of the energy; besides, by halves of 1/8 in both
        // parts and of 1/64 in the magnitude.
        const Real energy = std::inner_product(x.begin(), x.end(), x.begin(), Real(0));
        const Real error = (bank.order + 2) * 0x1p-23L * std::sqrt(energy * static_cast<Real>(x.size())) + 0.1L;
        std::vector<Real> magnitudes;
        for (const auto& bin : transform(x, x.size())) magnitudes.push_back(std::abs(bin));
        checkSums(bank, kelsEvalFBank_16s_Sfs, x, magnitudes, error, 12);
        checkSums(bank, kelsEvalFBank_16s32s_Sfs, x, magnitudes, error, 0);
    }
}

}  // namespace
