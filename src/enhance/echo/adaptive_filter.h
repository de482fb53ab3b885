// The adaptive filter in partitions of the frequency domain: what it predicts, how fast each coefficient may move, and
// the move itself.
#pragma once

#include <cstddef>

#include "core/rows.h"
#include "enhance/echo/bins.h"

namespace kels::echo {

template <class Form>
using SpectrumRows = PointerRows<const typename Form::Spectrum>;

// dst = sum over the partitions of reference * coefficient.
template <class Form>
void predictEcho(SpectrumRows<Form> reference, SpectrumRows<Form> coefficients, typename Form::Spectrum* dst,
                 std::size_t len, std::ptrdiff_t partitions) {
    const auto predict = [=]<class Bins>(std::size_t k) {
        Complex<typename Bins::Value> sum{};
        for (std::ptrdiff_t p = 0; p < partitions; ++p) {
            const auto x = Bins::get(reference[p] + k), h = Bins::get(coefficients[p] + k);
            sum.re += x.re * h.re - x.im * h.im;
            sum.im += x.re * h.im + x.im * h.re;
        }
        Bins::put(dst + k, {sum.re * Form::kUnit, sum.im * Form::kUnit});
    };
    forBins<Form>(0, len, predict);
}

// The reference's power in some bins, over all partitions.
template <class Bins, class Rows>
typename Bins::Value totalPower(Rows reference, std::ptrdiff_t partitions, std::size_t k) {
    typename Bins::Value total{};
    for (std::ptrdiff_t p = 0; p < partitions; ++p) total += power(Bins::get(reference[p] + k));
    return total;
}

// The scalars of a step size update, in the precision of its form.
template <class T>
struct StepControl {
    T factor, forget, smooth;
};

template <class Form>
class StepSizes {
  public:
    using Real = typename Form::Real;
    using Spectrum = typename Form::Spectrum;

    SpectrumRows<Form> reference, coefficients;
    const Spectrum* error;
    Real* near;
    PointerRows<Real> variances, steps;
    std::ptrdiff_t partitions;
    StepControl<typename Form::Bin::Value> control;

    void update(std::size_t len) const {
        const std::size_t last = len - 1;
        if (last == 0) return update<typename Form::Bin>(0, 0, 0);
        update<typename Form::Bin>(0, 1, 1);
        const auto inner = [this]<class Bins>(std::size_t k) { this->template update<Bins>(k, k - 1, k + 1); };
        forBins<Form>(1, last, inner);
        update<typename Form::Bin>(last, last - 1, last - 1);
    }

  private:
    // The bins from k on, whose neighbours below and above begin at `below` and `above`.
    template <class Bins>
    void update(std::size_t k, std::size_t below, std::size_t above) const {
        using V = typename Bins::Value;
        using T = typename Form::Bin::Value;
        constexpr T half = 0.5, quarter = 0.25;
        const V around = power(Bins::get(error + below)) + power(Bins::get(error + above));
        const V errorPower = half * power(Bins::get(error + k)) + quarter * around;
        const V smoothed = control.smooth * Form::nearPower(Bins::get(near + k)) + (1 - control.smooth) * errorPower;
        Bins::put(near + k, Form::storedNear(smoothed));

        V total{}, residual{};  // powers of the reference and of the echo that remains
        for (std::ptrdiff_t p = 0; p < partitions; ++p) {
            const V x = power(Bins::get(reference[p] + k));
            total += x;
            residual += variance<Bins>(p, k) * x;
        }
        const V divisor = half * residual + Bins::greater(errorPower, smoothed);
        for (std::ptrdiff_t p = 0; p < partitions; ++p) {
            const V x = power(Bins::get(reference[p] + k)), v = variance<Bins>(p, k);
            const V h = power(Bins::get(coefficients[p] + k)) * (Form::kUnit * Form::kUnit);
            const V step = Bins::quotientOrZero(control.factor * v, divisor);
            const V next = (1 - control.forget) * (1 - quarter * (step * x)) * v + control.forget * h;
            Bins::put(steps[p] + k, Form::storedStep(step, total));
            Bins::put(variances[p] + k, next / Form::kUnit);
        }
    }

    template <class Bins>
    typename Bins::Value variance(std::ptrdiff_t p, std::size_t k) const {
        return Bins::get(variances[p] + k) * Form::kUnit;
    }
};

// coefficients += step * conj(reference) * error
inline void moveCoefficients(SpectrumRows<FloatForm> reference, const Kel32fc* error, PointerRows<const Kel32f> steps,
                             PointerRows<Kel32fc> coefficients, std::size_t len, std::ptrdiff_t partitions) {
    const auto move = [=]<class Bins>(std::size_t k) {
        const auto e = Bins::get(error + k);
        for (std::ptrdiff_t p = 0; p < partitions; ++p) {
            const auto gradient = correlation(Bins::get(reference[p] + k), e);
            const auto step = Bins::get(steps[p] + k);
            const auto h = Bins::get(coefficients[p] + k);
            Bins::put(coefficients[p] + k, {h.re + step * gradient.re, h.im + step * gradient.im});
        }
    };
    forBins<FloatForm>(0, len, move);
}

// The nearest whole number, ties to even, of a number within 2^51; beyond, a number beyond 2^50.
inline Kel64f nearestWhole(Kel64f v) {
    constexpr Kel64f kNoFractions = 0x1.8p52;
    return (v + kNoFractions) - kNoFractions;
}

// The same with step sizes that are stored times the reference's power in all partitions.
inline void moveCoefficients(SpectrumRows<IntegerForm> reference, const Kel32sc* error, PointerRows<const Kel32s> steps,
                             PointerRows<Kel32sc> coefficients, std::size_t len, std::ptrdiff_t partitions) {
    const auto move = [=]<class Bins>(std::size_t k) {
        const Kel64f total = totalPower<Bins>(reference, partitions, k);
        if (total == 0) return;
        const auto e = Bins::get(error + k);
        for (std::ptrdiff_t p = 0; p < partitions; ++p) {
            const auto gradient = correlation(Bins::get(reference[p] + k), e);
            const Kel64f step = Bins::get(steps[p] + k) * IntegerForm::kStepUnit / (total * IntegerForm::kUnit);
            const auto h = Bins::get(coefficients[p] + k);
            Bins::put(coefficients[p] + k,
                      {h.re + nearestWhole(step * gradient.re), h.im + nearestWhole(step * gradient.im)});
        }
    };
    forBins<IntegerForm>(0, len, move);
}

}  // namespace kels::echo
