// The functions of the echo canceller by form, and the arrays that they take.
#pragma once

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
    static constexpr auto init = kelsControllerInitAEC_32f;
    static constexpr auto control = kelsControllerUpdateAEC_32f;
    static constexpr auto filter = kelsFilterAECNLMS_32fc;
    static constexpr auto stepSize = kelsStepSizeUpdateAECNLMS_32f;
    static constexpr auto move = kelsCoefUpdateAECNLMS_32fc_I;
};

struct Integers {
    using Real = Kel32s;
    using Complex = Kel32sc;
    using State = KelAECState_32s;
    static constexpr long double kOne = 0x1p27L;
    static constexpr auto init = kelsControllerInitAEC_32s;
    static constexpr auto control = kelsControllerUpdateAEC_32s;
    static constexpr auto filter = kelsFilterAECNLMS_32sc;
    static constexpr auto stepSize = kelsStepSizeUpdateAECNLMS_32s;
    static constexpr auto move = kelsCoefUpdateAECNLMS_32sc_I;
};
