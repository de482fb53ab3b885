// The functions of the echo canceller by form, and the arrays that they take.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <type_traits>
#include <vector>

#include "kels.h"

// Rows of one length, as the functions take them.
template <class T>
struct Rows {
    std::vector<std::vector<T>> values;
    std::vector<T*> pointers;

    Rows(int count, int len) : values(count, std::vector<T>(len)) {}
    std::vector<T>& operator[](int i) { return values[i]; }
    T** write() {
        pointers.clear();
        for (auto& row : values) pointers.push_back(row.data());
        return pointers.data();
    }
    const T** read() { return const_cast<const T**>(write()); }
};

struct Floats {
    using Real = Kel32f;
    using Complex = Kel32fc;
    using State = KelAECState_32f;
    static constexpr long double kOne = 1;
    static constexpr auto size = kelsControllerGetSizeAEC_32f;
    static constexpr auto init = kelsControllerInitAEC_32f;
    static constexpr auto control = kelsControllerUpdateAEC_32f;
    static constexpr auto filter = kelsFilterAECNLMS_32fc;
    static constexpr auto stepSize = kelsStepSizeUpdateAECNLMS_32f;
    static constexpr auto move = kelsCoefUpdateAECNLMS_32fc_I;

    static long double power(Kel32f near) { return near; }
    static long double storedNear(long double power) { return power; }
    static long double storedStep(long double step, long double) { return step; }
    static long double usedStep(Kel32f stored, long double) { return stored; }
};

struct Integers {
    using Real = Kel32s;
    using Complex = Kel32sc;
    using State = KelAECState_32s;
    static constexpr long double kOne = 0x1p27L;
    static constexpr auto size = kelsControllerGetSizeAEC_32s;
    static constexpr auto init = kelsControllerInitAEC_32s;
    static constexpr auto control = kelsControllerUpdateAEC_32s;
    static constexpr auto filter = kelsFilterAECNLMS_32sc;
    static constexpr auto stepSize = kelsStepSizeUpdateAECNLMS_32s;
    static constexpr auto move = kelsCoefUpdateAECNLMS_32sc_I;

    static long double power(Kel32s near) { return static_cast<long double>(near) * near; }
    static long double storedNear(long double power) { return std::sqrt(power); }
    static long double storedStep(long double step, long double total) { return step * total * 0x1p26L; }
    static long double usedStep(Kel32s stored, long double total) { return total > 0 ? stored * 2.0L / total : 0; }
};

using BothForms = ::testing::Types<Floats, Integers>;
