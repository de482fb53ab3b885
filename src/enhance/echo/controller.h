// The controller: watches reference, microphone and error, and tells double talk from a changed echo path.
//
// Near-end speech raises the error but has nothing to do with the predicted echo, while a wrong prediction stays in the
// error with opposite sign, or, where the path has become louder, with the same one.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "core/scaling.h"
#include "core/simd/vec.h"
#include "kels/echo.h"

namespace kels::echo {

// Means over a block: of the squares of reference, prediction and error, and of error times prediction.
struct BlockPowers {
    Kel64f reference, prediction, error, cross;
};

template <class T>
BlockPowers blockPowers(const T* reference, const T* microphone, const T* error, std::size_t len) {
    using V = Vec<Kel64f>;
    constexpr std::size_t w = lanes<Kel64f>;
    V xx(0.0), yy(0.0), ee(0.0), ey(0.0);
    std::size_t i = 0;
    for (; i + w <= len; i += w) {
        const V x = loadWide(reference + i), e = loadWide(error + i), y = loadWide(microphone + i) - e;
        xx += x * x;
        yy += y * y;
        ee += e * e;
        ey += e * y;
    }
    BlockPowers sums{stdx::reduce(xx), stdx::reduce(yy), stdx::reduce(ee), stdx::reduce(ey)};
    for (; i < len; ++i) {
        const Kel64f x = reference[i], e = error[i], y = static_cast<Kel64f>(microphone[i]) - e;
        sums.reference += x * x;
        sums.prediction += y * y;
        sums.error += e * e;
        sums.cross += e * y;
    }
    const auto n = static_cast<Kel64f>(len);
    return {sums.reference / n, sums.prediction / n, sums.error / n, sums.cross / n};
}

// An average that forgets: the value so far counts `keep`.
inline void average(Kel64f& mean, Kel64f value, Kel64f keep) {
    mean = keep * mean + (1 - keep) * value;
}

struct alignas(8) Controller {
    Kel64f keepSlow, keepFast;                    // of the averages
    Kel64f levelFall, floorRise, leakRise;        // factors per block
    Kel64f leak;                                  // error power by predicted power while nobody talks
    Kel64f reference, loudest;                    // the reference's power, and its largest value, which falls slowly
    Kel64f slowCross, slowPrediction, slowError;  // tell whether error and prediction belong together
    Kel64f error, prediction, floor;              // tell whether somebody talks
    Kel32f singleTalkForget;
    Kel32s len, persist, deadTime;  // blocks that a change must last, and that none is looked for after one
    Kel32s count, dead;             // blocks that a change has lasted; that are left of the dead time
    Kel32s begun;
    Kel32s spare;

    void begin(int sampleRate, int blockLength) {
        const Kel64f seconds = static_cast<Kel64f>(blockLength) / sampleRate, r = 125 * seconds;
        *this = {};
        keepSlow = std::pow(0.96, r);
        keepFast = std::pow(0.7, r);
        levelFall = std::exp2(-seconds / 8);
        floorRise = std::exp2(seconds);
        leakRise = std::exp2(seconds / 2);
        singleTalkForget = static_cast<Kel32f>(-std::expm1(r * std::log(0.9998)));
        len = blockLength;
        persist = (48 * sampleRate + 1000 * len - 1) / (1000 * len);
        deadTime = (sampleRate + 2 * len - 1) / (2 * len);
        leak = 1;
    }

    // Takes the means of a block and gives the flag.
    int listen(const BlockPowers& block) {
        average(reference, block.reference, keepFast);
        loudest = std::max(reference, loudest * levelFall);
        average(slowCross, block.cross, keepSlow);
        average(slowPrediction, block.prediction, keepSlow);
        average(slowError, block.error, keepSlow);
        average(error, block.error, keepFast);
        average(prediction, block.prediction, keepFast);
        followFloor();
        if (reference <= 1e-6 * loudest) return kelAECNoReference;
        if (pathHasChanged()) return kelAECPathChange;
        const bool talk = error > 4 * (leak * prediction + floor);
        followLeak();
        return talk ? kelAECDoubleTalk : kelAECSingleTalk;
    }

  private:
    void followFloor() {
        const bool lower = begun == 0 || error < floor;
        floor = lower ? error : std::max(floor * floorRise, 1e-4 * error);
        begun = 1;
    }

    bool errorHoldsPrediction() const {
        return slowPrediction > 0 && std::fabs(slowCross) > 0.25 * slowPrediction &&
               slowCross * slowCross > 0.1 * slowPrediction * slowError;
    }

    bool pathHasChanged() {
        bool wrong = errorHoldsPrediction();
        if (dead > 0) {
            --dead;
            wrong = false;
        }
        count = wrong ? count + 1 : 0;
        if (count < persist) return false;
        count = 0;
        leak = 1;
        slowCross = slowPrediction = slowError = 0;
        dead = deadTime;
        return true;
    }

    void followLeak() {
        if (error < leak * prediction) {
            leak += (1 - keepFast) * (error / prediction - leak);
        } else {
            leak = std::min(1.0, leak * leakRise);
        }
        leak = std::max(leak, 1e-4);
    }
};

}  // namespace kels::echo

struct KelAECState_32f {
    kels::echo::Controller controller;
};
struct KelAECState_32s {
    kels::echo::Controller controller;
};
