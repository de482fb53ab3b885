#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

#include "kels.h"
#include "support/guarded.h"
#include "support/numeric.h"
#include "support/random.h"

namespace {

using test::Guarded;

const std::vector<std::size_t> kLengths = [] {
    std::vector<std::size_t> v;
    for (std::size_t n = 1; n <= 70; ++n) v.push_back(n);
    v.insert(v.end(), {127, 255, 1000, 4099});
    return v;
}();

// Random values, and now and then one that compares or divides peculiarly.
template <class T>
std::vector<T> operands(test::Random& random, std::size_t n) {
    std::vector<T> v = random.vector<T>(n);
    if constexpr (std::is_floating_point_v<T>) {
        const T inf = std::numeric_limits<T>::infinity(), nan = std::numeric_limits<T>::quiet_NaN();
        const T special[] = {T(0), -T(0), inf, -inf, nan, std::numeric_limits<T>::denorm_min(), T(1)};
        for (T& x : v) {
            if (random.between(0, 5) == 0) x = special[random.between(0, 6)];
        }
    }
    return v;
}

template <class T>
bool same(T a, T b) {
    if constexpr (std::is_floating_point_v<T>) {
        return test::sameBits(a, b);
    } else {
        return a == b;
    }
}

// call(src1, src2, dst, len) for every length against op(a, b), with all arrays at guard pages, and with the destination
// in place of either source.
template <class T, class Call>
void checkBinary(Call call, std::function<T(T, T)> op) {
    test::Random random(11);
    for (const std::size_t n : kLengths) {
        const std::vector<T> a = operands<T>(random, n), b = operands<T>(random, n);
        for (const int target : {0, 1, 2}) {
            Guarded<T> x(a), y(b), z(n);
            T* const dst = target == 0 ? z.data() : target == 1 ? x.data() : y.data();
            const KelStatus status = call(x.data(), y.data(), dst, static_cast<int>(n));
            ASSERT_GE(status, kelStatusOk);
            for (std::size_t i = 0; i < n; ++i) ASSERT_TRUE(same(dst[i], op(a[i], b[i]))) << a[i] << " and " << b[i];
        }
    }
}

// call(src, srcDst, len) in place.
template <class T, class Call>
void checkInPlace(Call call, std::function<T(T, T)> op) {
    test::Random random(12);
    for (const std::size_t n : kLengths) {
        const std::vector<T> a = operands<T>(random, n), b = operands<T>(random, n);
        Guarded<T> x(a), y(b);
        ASSERT_EQ(call(x.data(), y.data(), static_cast<int>(n)), kelStatusOk);
        for (std::size_t i = 0; i < n; ++i) ASSERT_TRUE(same(y[i], op(a[i], b[i]))) << a[i] << " and " << b[i];
    }
}

template <class T>
T quotient(T divisor, T dividend) {
    if (divisor == 0 || std::isnan(divisor)) {
        const T inf = std::numeric_limits<T>::infinity();
        return dividend > 0 ? inf : dividend == 0 ? std::numeric_limits<T>::quiet_NaN() : -inf;
    }
    return dividend / divisor;
}

TEST(Arithmetic, BinaryOperations) {
    checkInPlace<Kel32f>(kelsAdd_32f_I, [](Kel32f a, Kel32f b) { return a + b; });
    checkInPlace<Kel64f>(kelsAdd_64f_I, [](Kel64f a, Kel64f b) { return a + b; });
    checkBinary<Kel32f>(kelsSub_32f, [](Kel32f a, Kel32f b) { return b - a; });
    checkBinary<Kel64f>(kelsSub_64f, [](Kel64f a, Kel64f b) { return b - a; });
    checkInPlace<Kel32f>(kelsSub_32f_I, [](Kel32f a, Kel32f b) { return b - a; });
    checkInPlace<Kel64f>(kelsSub_64f_I, [](Kel64f a, Kel64f b) { return b - a; });
    checkBinary<Kel16s>(kelsSub_16s, [](Kel16s a, Kel16s b) {
        return static_cast<Kel16s>(std::clamp(int{b} - int{a}, -32768, 32767));
    });
    checkBinary<Kel32f>(kelsMul_32f, [](Kel32f a, Kel32f b) { return a * b; });
    checkBinary<Kel32f>(kelsDiv_32f, quotient<Kel32f>);
    checkBinary<Kel64f>(kelsDiv_64f, quotient<Kel64f>);
}

TEST(Arithmetic, LargerAndSmallerKeepTheDestinationOnTiesAndNaN) {
    checkInPlace<Kel32f>(kelsMaxEvery_32f_I, [](Kel32f a, Kel32f b) { return a > b ? a : b; });
    checkInPlace<Kel32f>(kelsMinEvery_32f_I, [](Kel32f a, Kel32f b) { return a < b ? a : b; });
    checkInPlace<Kel32s>(kelsMinEvery_32s_I, [](Kel32s a, Kel32s b) { return a < b ? a : b; });
}

TEST(Arithmetic, ConstantsAndTheirParticularValues) {
    test::Random random(13);
    for (const double c : {0.0, -0.0, 1.0, -1.0, 0.1, 3e-5, double{INFINITY}, double{NAN}}) {
        for (const std::size_t n : kLengths) {
            const std::vector<Kel32f> a = operands<Kel32f>(random, n);
            const std::vector<Kel64f> wide = operands<Kel64f>(random, n);
            const int len = static_cast<int>(n);
            const auto f = static_cast<Kel32f>(c);
            const Guarded<Kel32f> src(a);
            const Guarded<Kel64f> wideSrc(wide);
            Guarded<Kel32f> sum(n), product(n), inPlace(a);
            Guarded<Kel64f> wideProduct(n), wideInPlace(wide);
            EXPECT_EQ(kelsAddC_32f(src.data(), f, sum, len), kelStatusOk);
            EXPECT_EQ(kelsMulC_32f(src.data(), f, product, len), kelStatusOk);
            EXPECT_EQ(kelsMulC_32f_I(f, inPlace, len), kelStatusOk);
            EXPECT_EQ(kelsMulC_64f(wideSrc.data(), c, wideProduct, len), kelStatusOk);
            EXPECT_EQ(kelsMulC_64f_I(c, wideInPlace, len), kelStatusOk);
            for (std::size_t i = 0; i < n; ++i) {
                ASSERT_TRUE(same(sum[i], f == 0 ? a[i] : a[i] + f));
                ASSERT_TRUE(same(product[i], f == 0 ? 0.0f : a[i] * f));
                ASSERT_TRUE(same(inPlace[i], product[i]));
                ASSERT_TRUE(same(wideProduct[i], c == 0 ? 0.0 : wide[i] * c));
                ASSERT_TRUE(same(wideInPlace[i], wideProduct[i]));
            }
            const bool divides = c != 0 && !std::isnan(c);
            Guarded<Kel32f> q(n), qInPlace(a), byReciprocal(n);
            Guarded<Kel64f> wideQ(n), wideQInPlace(wide), wideByReciprocal(n);
            const KelStatus expected = divides ? kelStatusOk : kelStatusDivByZeroErr;
            EXPECT_EQ(kelsDivC_32f(src.data(), f, q, len), expected);
            EXPECT_EQ(kelsDivC_32f_I(f, qInPlace, len), expected);
            EXPECT_EQ(kelsDivC_64f(wideSrc.data(), c, wideQ, len), expected);
            EXPECT_EQ(kelsDivC_64f_I(c, wideQInPlace, len), expected);
            if (!divides) {
                EXPECT_TRUE(test::sameBits(q, std::vector<Kel32f>(n)) && test::sameBits(qInPlace, a));
                EXPECT_TRUE(test::sameBits(wideQ, std::vector<Kel64f>(n)) && test::sameBits(wideQInPlace, wide));
                continue;
            }
            kelsMulC_32f(src.data(), 1 / f, byReciprocal, len);
            kelsMulC_64f(wideSrc.data(), 1 / c, wideByReciprocal, len);
            EXPECT_TRUE(test::sameBits(q, byReciprocal) && test::sameBits(qInPlace, byReciprocal));
            EXPECT_TRUE(test::sameBits(wideQ, wideByReciprocal) && test::sameBits(wideQInPlace, wideByReciprocal));
        }
    }
}

TEST(Arithmetic, ScaledProductsRoundHalfToEvenAndSaturate) {
    test::Random random(14);
    std::vector<Kel16s> a = random.vector<Kel16s>(3000), b = random.vector<Kel16s>(3000);
    for (int x = -40; x < 40; ++x) a.push_back(static_cast<Kel16s>(x)), b.push_back(static_cast<Kel16s>(3 - x));
    a.insert(a.end(), {-32768, -32768, 32767, 0}), b.insert(b.end(), {-32768, 32767, 32767, -32768});
    for (int scale = -40; scale <= 70; ++scale) {
        const Guarded<Kel16s> x(a), y(b);
        Guarded<Kel16s> dst(a.size());
        EXPECT_EQ(kelsMul_16s_Sfs(x.data(), y.data(), dst, static_cast<int>(a.size()), scale), kelStatusOk);
        for (std::size_t i = 0; i < a.size(); ++i) {
            const double rounded = std::nearbyint(std::ldexp(static_cast<double>(a[i] * b[i]), -scale));
            ASSERT_EQ(dst[i], std::clamp(rounded, -32768.0, 32767.0)) << a[i] << " * " << b[i] << " scale " << scale;
        }
    }
    const Kel16s one[] = {1, -1, 0}, two[] = {1, 1, 5};
    Kel16s out[3];
    kelsMul_16s_Sfs(one, two, out, 3, INT32_MIN);
    EXPECT_TRUE(out[0] == 32767 && out[1] == -32768 && out[2] == 0);
}

TEST(Arithmetic, DivisionWarnsOnlyOfZeroAndNaNDivisors) {
    std::vector<Kel32f> divisors(100, 2.0f), dividends(100, 3.0f), out(100);
    EXPECT_EQ(kelsDiv_32f(divisors.data(), dividends.data(), out.data(), 100), kelStatusOk);
    for (const int place : {0, 15, 16, 63, 98, 99}) {
        for (const Kel32f faulty : {0.0f, -0.0f, NAN}) {
            divisors[static_cast<std::size_t>(place)] = faulty;
            EXPECT_EQ(kelsDiv_32f(divisors.data(), dividends.data(), out.data(), 100), kelStatusDivByZero);
            EXPECT_EQ(out[static_cast<std::size_t>(place)], INFINITY);
        }
        divisors[static_cast<std::size_t>(place)] = 2.0f;
    }
}

TEST(Arithmetic, ChecksPointersBeforeLengthBeforeConstant) {
    Kel32f f[1] = {5};
    EXPECT_EQ(kelsDivC_32f(nullptr, 0, f, 0), kelStatusNullPtr);
    EXPECT_EQ(kelsDivC_32f(f, 0, nullptr, 0), kelStatusNullPtr);
    EXPECT_EQ(kelsDivC_32f(f, 0, f, 0), kelStatusSize);
    EXPECT_EQ(kelsDivC_32f(f, 0, f, 1), kelStatusDivByZeroErr);
    EXPECT_EQ(kelsSub_32f(f, nullptr, f, 0), kelStatusNullPtr);
    EXPECT_EQ(kelsSub_32f(f, f, f, -3), kelStatusSize);
    EXPECT_EQ(kelsAdd_32f_I(f, nullptr, 1), kelStatusNullPtr);
    EXPECT_EQ(kelsMulC_32f_I(2, nullptr, 1), kelStatusNullPtr);
    EXPECT_EQ(kelsMulC_32f_I(2, f, 0), kelStatusSize);
    EXPECT_EQ(f[0], 5);
}

}  // namespace
