// Features of signals and streams: fixed signals with results in double precision, worked examples, and streams cut in
// every way beside whole calls.
#include "kels/features.h"

#include <memory>

#include "support/support.h"

namespace {

using namespace test;

struct FreeSpec {
    void operator()(KelFeatureSpec_32f* spec) const { EXPECT_EQ(kelsFeatureFree_32f(spec), kelStatusOk); }
};
struct FreeStream {
    void operator()(KelFeatureStream_32f* stream) const { EXPECT_EQ(kelsFeatureStreamFree_32f(stream), kelStatusOk); }
};
using Spec = std::unique_ptr<KelFeatureSpec_32f, FreeSpec>;
using Stream = std::unique_ptr<KelFeatureStream_32f, FreeStream>;

KelFeatureConfig preset(int rate, int which) {
    KelFeatureConfig config;
    EXPECT_EQ(kelsFeaturePreset(&config, rate, which), kelStatusOk);
    return config;
}
Spec build(const KelFeatureConfig& config) {
    KelFeatureSpec_32f* spec = nullptr;
    EXPECT_EQ(kelsFeatureInitAlloc_32f(&spec, &config), kelStatusOk);
    return Spec(spec);
}

// A hum, a ramp, a saw and noise.
std::vector<Kel16s> fixedSignal(int len) {
    std::vector<Kel16s> x;
    uint32_t s = 1;
    for (int i = 0; i < len; ++i) {
        s = (1103515245u * s + 12345u) & 0x7fffffffu;
        const int noise = static_cast<int>((s >> 16) % 601) - 300;
        x.push_back(static_cast<Kel16s>(noise + 4 * (std::abs(37 * i % 4000 - 2000) - 1000) + 20 * (i % 50)));
    }
    return x;
}

struct Rows {
    int height = 0, width = 0;
    std::vector<Kel32f> values;
};
template <class T>
KelStatus call(const T* src, int len, Kel32f* dst, int step, const KelFeatureSpec_32f* spec, Kel8u* buffer) {
    if constexpr (std::is_same_v<T, Kel16s>) return kelsFeature_16s32f_D2(src, len, dst, step, spec, buffer);
    if constexpr (!std::is_same_v<T, Kel16s>) return kelsFeature_32f_D2(src, len, dst, step, spec, buffer);
}
// With the buffer at an odd address, or none; rows three elements further apart than they are wide.
template <class T>
Rows whole(const KelFeatureSpec_32f* spec, const std::vector<T>& x, bool ownBuffer = true) {
    Rows rows;
    const int len = static_cast<int>(x.size());
    EXPECT_EQ(kelsFeatureGetSize_32f(spec, len, &rows.height, &rows.width), kelStatusOk);
    const Guarded<T> src(x);
    const int step = rows.width + 3;
    Guarded<Kel32f> dst(std::max(0, (rows.height - 1) * step + rows.width));
    std::fill_n(dst.data(), dst.size(), -7.0f);
    int bytes = 0;
    EXPECT_EQ(kelsFeatureGetBufSize_32f(spec, len, &bytes), kelStatusOk);
    Guarded<Kel8u> buffer(bytes);
    Kel32f nothing = 0;
    EXPECT_EQ(
        call(src.data(), len, rows.height > 0 ? dst.data() : &nothing, step, spec, ownBuffer ? buffer.data() : nullptr),
        kelStatusOk);
    for (int i = 0; i < rows.height; ++i) {
        const Kel32f* const row = dst.data() + i * step;
        rows.values.insert(rows.values.end(), row, row + rows.width);
        for (int k = 0; k < 3 && i + 1 < rows.height; ++k) EXPECT_EQ(row[rows.width + k], -7.0f);
    }
    return rows;
}

TEST(Features, ArePresetsOfTheToolkits) {
    struct Case {
        int preset, rate, len, height, width;
        double first[3], sum;
    };
    const Case cases[] = {
        {kelFeatHtkMfcc, 8000, 1000, 11, 13, {-6.57773044, 6.43928952, 1.67310827}, 998.33966},
        {kelFeatKaldiMfcc, 8000, 1000, 11, 13, {20.7694618, -6.35222861, 11.3633034}, 888.83621},
        {kelFeatKaldiFbank, 8000, 1000, 11, 80, {16.598425, 17.9187793, 17.8233768}, 13735.602},
        {kelFeatLibrosaMfcc, 16000, 1700, 4, 20, {-211.324311, 84.5259608, 26.1946804}, -393.09481},
        {kelFeatWhisperMel, 16000, 1700, 10, 80, {0.589807745, 0.462397613, 1.00088203}, 135.51373},
    };
    for (const Case& c : cases) {
        for (const int hint : {kelHintNone, kelHintFast}) {
            KelFeatureConfig config = preset(c.rate, c.preset);
            config.hint = hint;
            const Spec spec = build(config);
            const Rows rows = whole(spec.get(), fixedSignal(c.len));
            EXPECT_EQ(rows.height, c.height);
            EXPECT_EQ(rows.width, c.width);
            const double rough = hint == kelHintFast ? 1e-2 : 1.2e-7;
            double sum = 0, size = 0;
            for (const Kel32f v : rows.values) sum += v, size += std::fabs(v);
            for (int k = 0; k < 3; ++k) {
                EXPECT_NEAR(rows.values[static_cast<std::size_t>(k)], c.first[k],
                            rough * std::max(1.0, std::fabs(c.first[k])))
                    << "preset " << c.preset << ", value " << k << ", hint " << hint;
            }
            // The sum as it is printed, and the rounding of its terms.
            EXPECT_NEAR(sum, c.sum, std::fabs(c.sum) * 1e-7 + rough / 2 * (size + rows.width * rows.height));
        }
    }
}

KelFeatureConfig tiny() {
    KelFeatureConfig config = preset(8000, kelFeatHtkMfcc);
    config.frameLen = config.fftLen = 4;
    config.frameShift = 2;
    config.window = kelWinRect;
    config.spectrum = kelFeatPower;
    config.output = kelFeatSpectrum;
    config.logKind = kelFeatLogNone;
    config.energy = 0;
    config.preEmphasis = 0;
    return config;
}

TEST(Features, FollowWorkedExamples) {
    const std::vector<Kel32f> x = {1, 2, 3, 4, 5, 6};
    KelFeatureConfig config = tiny();
    EXPECT_EQ(whole(build(config).get(), x).values, (std::vector<Kel32f>{100, 8, 4, 324, 8, 4}));
    config.removeMean = 1;
    EXPECT_EQ(whole(build(config).get(), x).values, (std::vector<Kel32f>{0, 8, 4, 0, 8, 4}));
    config.removeMean = 0;
    config.preEmphasis = 0.5;
    const Rows emphasised = whole(build(config).get(), x);
    EXPECT_EQ((std::vector<Kel32f>(emphasised.values.begin(), emphasised.values.begin() + 3)),
              (std::vector<Kel32f>{42.25, 3.25, 2.25}));

    // Zero frequency shows which samples a frame holds: the square of their sum.
    config.preEmphasis = 0;
    const auto sums = [&](int edges) {
        config.edges = edges;
        const Rows rows = whole(build(config).get(), x);
        std::vector<Kel32f> result;
        for (int i = 0; i < rows.height; ++i) {
            result.push_back(std::sqrt(rows.values[static_cast<std::size_t>(i * rows.width)]));
        }
        return result;
    };
    EXPECT_EQ(sums(kelFeatMirror), (std::vector<Kel32f>{7, 14, 21}));
    EXPECT_EQ(sums(kelFeatCentreZero), (std::vector<Kel32f>{3, 10, 18, 11}));
    EXPECT_EQ(sums(kelFeatCentreReflect), (std::vector<Kel32f>{8, 10, 18, 20}));
    EXPECT_EQ(sums(kelFeatCentreReflect + kelFeatDropLast), (std::vector<Kel32f>{8, 10, 18}));
}

TEST(Features, HaveDeltasOfBothKinds) {
    // Frames of one sample: the statics are the magnitudes 1 2 4 8.
    KelFeatureConfig config = tiny();
    config.frameLen = config.frameShift = 1;
    config.fftLen = 2;
    config.spectrum = kelFeatMagnitude;
    config.deltaOrder = 2;
    config.deltaWin = 1;
    const std::vector<Kel32f> x = {1, 2, 4, 8};
    const auto column = [&](int k) {
        const Rows rows = whole(build(config).get(), x);
        std::vector<Kel32f> result;
        for (int i = 0; i < rows.height; ++i)
            result.push_back(rows.values[static_cast<std::size_t>(i * rows.width + k)]);
        return result;
    };
    config.deltaEdge = kelFeatDeltaOfDelta;
    EXPECT_EQ(column(2), (std::vector<Kel32f>{0.5, 1.5, 3, 2}));
    EXPECT_EQ(column(4), (std::vector<Kel32f>{0.5, 1.25, 0.25, -0.5}));
    config.deltaEdge = kelFeatDeltaOfStatic;
    EXPECT_EQ(column(4), (std::vector<Kel32f>{0.75, 1.25, 0.25, -1.5}));
}

// Every edge, type, hint and order of deltas: rows of pushes of random lengths and of the flush are those of one call.
TEST(Features, OfStreamsAreThoseOfWholeSignals) {
    Random random(5);
    const std::vector<Kel16s> integers = fixedSignal(4000);
    for (int trial = 0; trial < 120; ++trial) {
        KelFeatureConfig config = preset(8000, random.between(kelFeatHtkMfcc, kelFeatKaldiFbank));
        config.frameLen = random.between(1, 300);
        config.fftLen = 2 * random.between((config.frameLen + 1) / 2, 200 + config.frameLen / 2);
        config.frameShift = random.between(1, 350);
        config.edges = random.between(0, 3) + (random.between(0, 1) ? kelFeatDropLast : 0);
        config.hint = random.between(0, 1);
        config.deltaOrder = random.between(0, 2);
        config.deltaWin = random.between(1, 3);
        config.deltaEdge = random.between(0, 1);
        const Spec spec = build(config);
        const int len = random.between(0, 3) ? random.between(1, 4000) : random.between(1, 400);
        const std::vector<Kel16s> x(integers.begin(), integers.begin() + len);
        std::vector<Kel32f> floats;
        for (const Kel16s v : x) floats.push_back(static_cast<Kel32f>(v * config.scale16s));
        const Rows expected = whole(spec.get(), x);
        EXPECT_EQ(whole(spec.get(), floats, false).values, expected.values);

        KelFeatureStream_32f* made = nullptr;
        ASSERT_EQ(kelsFeatureStreamInitAlloc_32f(&made, spec.get()), kelStatusOk);
        const Stream stream(made);
        for (const bool again : {false, true}) {  // a flush leaves the stream at its start
            std::vector<Kel32f> got;
            int promisedFlush = 0;
            for (int at = 0; at < len;) {
                const int n = std::min(len - at, random.between(0, random.between(0, 1) ? 30 : 900));
                int promised = -1, count = -1;
                ASSERT_EQ(kelsFeatureStreamGetSize_32f(stream.get(), n, &promised, &promisedFlush), kelStatusOk);
                std::vector<Kel32f> block(static_cast<std::size_t>(promised * expected.width + 1));
                if (promised > 0) {
                    EXPECT_EQ(kelsFeatureStream_16s32f_D2(&x[static_cast<std::size_t>(at)], n, block.data(),
                                                          expected.width, promised - 1, &count, stream.get()),
                              kelStatusSize);
                }
                const auto push = random.between(0, 1)
                                      ? kelsFeatureStream_16s32f_D2(&x[static_cast<std::size_t>(at)], n, block.data(),
                                                                    expected.width, promised, &count, stream.get())
                                      : kelsFeatureStream_32f_D2(&floats[static_cast<std::size_t>(at)], n, block.data(),
                                                                 expected.width, promised, &count, stream.get());
                ASSERT_EQ(push, kelStatusOk);
                EXPECT_EQ(count, promised);
                got.insert(got.end(), block.begin(), block.end() - 1);
                at += n;
            }
            std::vector<Kel32f> rest(static_cast<std::size_t>(promisedFlush * expected.width + 1));
            int count = -1;
            ASSERT_EQ(kelsFeatureStreamFlush_32f_D2(rest.data(), expected.width, promisedFlush, &count, stream.get()),
                      kelStatusOk);
            EXPECT_EQ(count, promisedFlush);
            got.insert(got.end(), rest.begin(), rest.end() - 1);
            ASSERT_EQ(got, expected.values)
                << "trial " << trial << ", edges " << config.edges << ", " << len << " samples, again " << again;
        }
    }
}

TEST(Features, AreNormalisedOverTheSignal) {
    KelFeatureConfig config = preset(8000, kelFeatKaldiMfcc);
    config.norm = kelFeatNormMeanVar;
    const Rows rows = whole(build(config).get(), fixedSignal(4000));
    for (int k = 0; k < rows.width; ++k) {
        double sum = 0, squares = 0;
        for (int i = 0; i < rows.height; ++i) {
            const double v = rows.values[static_cast<std::size_t>(i * rows.width + k)];
            sum += v, squares += v * v;
        }
        EXPECT_NEAR(sum / rows.height, 0, 1e-6);
        EXPECT_NEAR(squares / rows.height, 1, 1e-6);
    }
    KelFeatureStream_32f* stream = nullptr;
    EXPECT_EQ(kelsFeatureStreamInitAlloc_32f(&stream, build(config).get()), kelStatusModeNotSupported);
}

TEST(Features, SpoilTheRowsOfFaultySamplesOnly) {
    const Spec spec = build(preset(8000, kelFeatKaldiFbank));
    std::vector<Kel32f> x;
    for (const Kel16s v : fixedSignal(2000)) x.push_back(v);
    const Rows clean = whole(spec.get(), x);
    x[1000] = std::numeric_limits<Kel32f>::quiet_NaN();
    const Rows spoilt = whole(spec.get(), x);
    for (int i = 0; i < clean.height; ++i) {
        const bool hit = 80 * i <= 1000 && 1000 < 80 * i + 200;
        for (int k = 0; k < clean.width; ++k) {
            const auto at = static_cast<std::size_t>(i * clean.width + k);
            EXPECT_EQ(std::isnan(spoilt.values[at]), hit);
            if (!hit) {
                EXPECT_EQ(spoilt.values[at], clean.values[at]);
            }
        }
    }
}

// ---- helpers -------------------------------------------------------------------------------------------------------

template <class T>
class Logarithms : public ::testing::Test {};
using FloatTypes = ::testing::Types<Kel32f, Kel64f>;
TYPED_TEST_SUITE(Logarithms, FloatTypes);

TYPED_TEST(Logarithms, WarnOfTheFirstElementWithoutOne) {
    using T = TypeParam;
    constexpr auto natural = forms(kelsLn_32f, kelsLn_64f), common = forms(kelsLog10_32f, kelsLog10_64f);
    for (const auto f : {natural.of<T>(), common.of<T>()}) {
        std::vector<T> x(40, 1), y(40);
        x[5] = 0, x[9] = -1;
        EXPECT_EQ(f(x.data(), y.data(), 40), kelStatusLogZero);
        EXPECT_TRUE(y[4] == 0 && y[5] == -HUGE_VAL && std::isnan(y[9]));
        x[5] = 1;
        EXPECT_EQ(f(x.data(), y.data(), 40), kelStatusLogNegative);
    }
}

TEST(Features, WindowsAreSymmetric) {
    for (const int kind : {kelWinRect, kelWinHann, kelWinHamming, kelWinPovey, kelWinBlackman, kelWinKaiser}) {
        for (const int len : {1, 2, 3, 25, 400}) {
            std::vector<Kel64f> w(static_cast<std::size_t>(len));
            ASSERT_EQ(kelsWindow_64f(w.data(), len, kind, 6), kelStatusOk);
            EXPECT_TRUE(std::equal(w.begin(), w.end(), w.rbegin()));
            EXPECT_EQ(len == 1 ? w[0] : 1, 1);
        }
    }
    Kel32f periodic[4];
    ASSERT_EQ(kelsWindow_32f(periodic, 4, kelWinHann + kelWinPeriodic, 0), kelStatusOk);
    EXPECT_EQ((std::vector<Kel32f>(periodic, periodic + 4)), (std::vector<Kel32f>{0, 0.5, 1, 0.5}));
}

TEST(Features, PreEmphasisJoinsChunks) {
    const std::vector<Kel16s> x = fixedSignal(300);
    std::vector<Kel32f> whole(300), parts(300);
    Kel16s memory = 17, other = 17;
    ASSERT_EQ(kelsPreEmphasis_16s32f(x.data(), whole.data(), 300, 0.97f, &memory), kelStatusOk);
    ASSERT_EQ(kelsPreEmphasis_16s32f(x.data(), parts.data(), 113, 0.97f, &other), kelStatusOk);
    ASSERT_EQ(kelsPreEmphasis_16s32f(x.data() + 113, parts.data() + 113, 187, 0.97f, &other), kelStatusOk);
    EXPECT_EQ(parts, whole);
    EXPECT_EQ(memory, x[299]);
    EXPECT_EQ(whole[0], static_cast<Kel32f>(x[0] - double{0.97f} * 17));
    ASSERT_EQ(kelsPreEmphasis_16s32f(x.data(), whole.data(), 1, 0.97f, nullptr), kelStatusOk);
    EXPECT_EQ(whole[0], static_cast<Kel32f>(x[0] * (1 - double{0.97f})));
}

TEST(Features, StatusesHaveTexts) {
    EXPECT_STREQ(kelsrGetStatusString(kelStatusOk), "no error");
    EXPECT_STREQ(kelsrGetStatusString(kelStatusStep), "row step too small");
    EXPECT_STREQ(kelsrGetStatusString(kelStatusCdbkShrunk), "codebook size differs from the request");
    EXPECT_STREQ(kelsrGetStatusString(12345), "unknown status");
}

}  // namespace
