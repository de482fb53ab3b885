// Signals in blocks: any lengths give what one call gives, and long signals keep their time.
#include "resample/resample_forms.h"

namespace {

using namespace test;

template <class T>
class ResampleBlocks : public testing::Test {};
using SampleTypes = testing::Types<Kel32f, Kel16s>;
TYPED_TEST_SUITE(ResampleBlocks, SampleTypes);

// `run(src, len, dst, &time, &n)` on a whole signal and on blocks of random lengths, moving on as the header says.
template <class T, class Run>
void expectBlocks(Run run, Kel64f reach, bool exact, unsigned seed) {
    Random random(seed);
    constexpr int kLen = 6000;
    const auto history = static_cast<int>(std::ceil(reach));
    auto x = random.vector<T>(history + kLen, 2);
    std::fill_n(x.begin(), history, T());
    std::vector<T> whole(24 * kLen), blocks(24 * kLen);
    Kel64f time = 0, wholeTime = 0;
    int n, wholeN, blocksN = 0, base = 0;
    std::fesetround(FE_UPWARD);  // which must neither matter nor change
    run(Guarded<T>(x).data() + history, kLen, whole.data(), &wholeTime, &wholeN);
    EXPECT_EQ(std::fegetround(), FE_UPWARD);
    std::fesetround(FE_TONEAREST);
    for (int end = 0; end < kLen; blocksN += n) {
        end = std::min(kLen, end + random.between(1, random.between(0, 3) ? 900 : 40));
        const int oldest = static_cast<int>(std::floor(time - reach));
        const Guarded<T> block(std::vector<T>(x.begin() + history + base + oldest, x.begin() + history + end));
        time -= oldest;
        base += oldest;
        run(block.data(), end - base, blocks.data() + blocksN, &time, &n);
    }
    ASSERT_TRUE(blocksN == wholeN && wholeN > 0);
    EXPECT_NEAR(time + base, wholeTime, 1e-8);
    const Real allowed = exact ? 0 : kInteger<T> ? 1 : 1e-6L * *std::max_element(x.begin(), x.end());
    for (int i = 0; i < wholeN; ++i) ASSERT_TRUE(near(blocks[i], whole[i], allowed)) << i;
}

TYPED_TEST(ResampleBlocks, BlocksOfAnyLengthsGiveWhatOneCallGives) {
    using T = TypeParam;
    // Rows of one vector and more, and of more than the margins of sums; filters for a fraction that fit or do not.
    for (const Filter& f : {Filter{24, 64, 0.9f, 7}, {9.3f, 10, 1, 2}, {600, 4, 0.9f, 7}}) {
        const auto state = make<T>(f);
        for (const Kel64f factor : {1.0, 2.0, 0.5, 0.25, 0.125, 8.0, 1 / 3.0, 160 / 147.0, 147 / 160.0, 0.7, 0.15,
                                    32 / 23.0, 16 / 15.0, 16 / 17.0, 0.5001, 0.61803398875, 1.61803398875}) {
            SCOPED_TRACE(factor);
            const Kel64f reach = (state->tableLen - 1) / (f.nStep * std::min(1.0, factor));
            // 1 / factor a binary fraction: times, and places in a table of 2^n points, have no rounding.
            const bool exact = std::fmod(16 / factor, 1) == 0;
            const auto run = [&](const T* x, int len, T* y, Kel64f* time, int* n) {
                return runGeneral(state.get(), x, len, y, factor, 0.3f, time, n);
            };
            expectBlocks<T>(run, reach, exact, static_cast<unsigned>(factor * 1000));
        }
    }
    for (const FixedFilter& f : kFixedCases) {
        SCOPED_TRACE(testing::Message() << f.in << " " << f.out);
        const auto state = make<T>(f);
        const auto run = [&](const T* x, int len, T* y, Kel64f* time, int* n) {
            return runFixed(state.get(), x, len, y, 0.3f, time, n);
        };
        expectBlocks<T>(run, f.len / 2.0, true, static_cast<unsigned>(f.out));  // phases are found exactly
    }
}

TEST(ResampleLong, AnHourKeepsItsTime) {
    // 48 kHz to about 100 Hz, a call for each output: where rounding would add up it has 350000 chances.
    const auto general = make<Kel32f>(Filter{2.0f / 500, 500, 1, 1});
    const auto fixed = make<Kel32f>(FixedFilter{48000, 101, 3});
    const std::vector<Kel32f> x(600);
    std::vector<Kel32f> y(8);
    const auto walk = [&](auto run) {
        Kel64f time = 10;
        int64_t base = 0, count = 0;
        for (int n; base < 3600 * 48000; count += n) {
            run(&time, &n);
            const Kel64f whole = std::floor(time) - 10;
            time -= whole;
            base += static_cast<int64_t>(whole);
        }
        return std::tuple(base, time, count);
    };
    const Kel64f factor = 1 / 477.7;
    const auto [base, time, count] = walk(
        [&](Kel64f* t, int* n) { kelsResamplePolyphase_32f(general.get(), x.data(), 480, y.data(), factor, 1, t, n); });
    EXPECT_NEAR(static_cast<Kel64f>(base) + time, 10 + static_cast<Kel64f>(count) / factor, 1e-6);
    const auto [fixedBase, fixedTime, fixedCount] =
        walk([&](Kel64f* t, int* n) { kelsResamplePolyphaseFixed_32f(fixed.get(), x.data(), 480, y.data(), 1, t, n); });
    // At a multiple of 1/101, rounded once as a time of up to 600.
    const int64_t place = 10 * 101 + fixedCount * 48000 - fixedBase * 101;
    EXPECT_NEAR(fixedTime, static_cast<Kel64f>(place) / 101, 0x1p-43);
}

}  // namespace
