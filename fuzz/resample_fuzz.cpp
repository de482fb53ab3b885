// Both forms of resampling, with filters of any shape, signals in blocks of any sizes and filters that are exchanged.
#include <cmath>

#include "bytes.h"
#include "kels/resample.h"

using fuzz::Bytes;
using fuzz::Guarded;
using fuzz::require;

namespace {

constexpr int kMaxLen = 200, kMaxHistory = 4096, kMaxOutputs = 1 << 14;

// `count` samples that are not so large that sums overflow.
template <class T>
std::vector<T> samples(Bytes& in, int count) {
    std::vector<T> values(static_cast<size_t>(count));
    for (T& value : values) value = static_cast<T>(in.any<int16_t>());
    return values;
}

// A filter and how it is run: run(src, len, dst, time, count).
template <class Run>
struct Resampler {
    double reach, factor;
    bool chains;  // block by block gives the bits of one call
    Run run;
};

// What one call gives from samples `first` .. `first` + values.size() - 1, with nothing around them; src[0] is sample 0
// or, where that is not one of them, the first of them.  The time counts from sample 0 on.
template <class T, class R>
std::vector<T> call(const R& resampler, const std::vector<T>& values, int first, Kel64f& time) {
    const int origin = std::max(first, 0), len = first + static_cast<int>(values.size()) - origin;
    const double most = (len - 1 - resampler.reach - (time - origin)) * resampler.factor + 1;
    const Guarded<T> source(values, values.size() % 2 != 0 ? test::Edge::Begin : test::Edge::End);
    Guarded<T> destination(most > -1 ? static_cast<size_t>(std::min(most + 1, kMaxOutputs + 1.0)) : 0);
    int count = -1;
    Kel64f fromOrigin = time - origin;
    require(
        resampler.run(source.data() + (origin - first), len, destination.data(), &fromOrigin, &count) == kelStatusOk,
        "resampling succeeds");
    require(count >= 0 && static_cast<size_t>(count) <= destination.size(), "the number of outputs");
    time = fromOrigin + origin;
    auto outputs = destination.vector();
    outputs.resize(static_cast<size_t>(count));
    return outputs;
}

template <class T, class R>
void resample(Bytes& in, const R& resampler, Kel64f start) {
    const int len = 1 + in.any<uint8_t>() % kMaxLen;
    const double outputs = (len - 1 - resampler.reach - start) * resampler.factor;
    // More than that cannot be provided.
    if (outputs > kMaxOutputs || (outputs > -2 && start - resampler.reach < -kMaxHistory)) return;
    const auto needed = [&](Kel64f time) {
        return static_cast<int>(std::clamp(std::floor(time - resampler.reach), -1.0 * kMaxHistory, 1.0 * kMaxLen));
    };
    const int history = outputs > -2 ? std::max(0, -needed(start)) : 0;
    const auto signal = samples<T>(in, history + len);
    Kel64f time = start;
    const auto atOnce = call(resampler, signal, -history, time);
    if (!resampler.chains) return;

    std::vector<T> chained;
    Kel64f next = start;
    for (int end = 0; end < len;) {
        end = std::min(len, end + 1 + in.any<uint8_t>() % 64);
        const int first = std::clamp(outputs > -2 ? needed(next) : 0, -history, end - 1);
        const auto some = call(
            resampler, std::vector<T>(&signal[static_cast<size_t>(history + first)], signal.data() + history + end),
            first, next);
        chained.insert(chained.end(), some.begin(), some.end());
    }
    require(fuzz::sameBits(chained, atOnce), "block by block gives what one call gives");
}

// Now and then any float, else one from 0 to `most`.
Kel32f number(Bytes& in, Kel32f most) {
    return in.any<uint8_t>() % 8 != 0 ? in.any<uint8_t>() / 255.0F * most : in.any<Kel32f>();
}
Kel64f startOf(Bytes& in) {
    return in.any<uint8_t>() % 8 != 0 ? in.any<int8_t>() / 8.0 : in.any<Kel64f>();
}

bool isEighth(Kel64f time) {
    return time * 8 == std::floor(time * 8) && std::fabs(time) < 1e6;
}

template <class T, class State, class Run>
void general(Bytes& in, KelStatus (*init)(State**, Kel32f, int, Kel32f, Kel32f, int), Run run,
             KelStatus (*release)(State*)) {
    const int nStep = in.count(100);
    const Kel32f window = number(in, 20), rollf = number(in, 1.1F), alpha = number(in, 20), norm = number(in, 2);
    if (window > 0 && window * static_cast<Kel32f>(nStep) > 4000) return;  // would take long
    State* state = nullptr;
    const KelStatus status = init(&state, window, nStep, rollf, alpha, in.any<uint8_t>() % 3);
    require((status == kelStatusOk) == (state != nullptr), "a state with success and none with an error");
    if (state == nullptr) return;

    const int eighths = 1 + in.any<uint8_t>() % 64;
    const Kel64f factor = in.any<uint8_t>() % 8 != 0 ? 8.0 / eighths : in.any<Kel64f>(), start = startOf(in);
    const auto bound = [&](const T* src, int len, T* dst, Kel64f* time, int* count) {
        return run(state, src, len, dst, factor, norm, time, count);
    };
    if (factor > 0 && std::isfinite(factor)) {
        const double reach = (state->tableLen - 1) / (nStep * std::min(factor, 1.0));
        const bool exact = 1 / factor * 8 == eighths && isEighth(start);
        resample<T>(in, Resampler<decltype(bound)>{reach, factor, exact, bound}, start);
    }
    release(state);
}

template <class T>
struct Fixed;
#define KELS_FIXED_FUNCTIONS(T, type)                                                 \
    template <>                                                                       \
    struct Fixed<T> {                                                                 \
        using State = KelResamplePolyphaseFixed_##type;                               \
        static constexpr auto initAlloc = kelsResamplePolyphaseFixedInitAlloc_##type; \
        static constexpr auto getSize = kelsResamplePolyphaseFixedGetSize_##type;     \
        static constexpr auto init = kelsResamplePolyphaseFixedInit_##type;           \
        static constexpr auto run = kelsResamplePolyphaseFixed_##type;                \
        static constexpr auto set = kelsResamplePolyphaseSetFixedFilter_##type;       \
        static constexpr auto get = kelsResamplePolyphaseGetFixedFilter_##type;       \
        static constexpr auto release = kelsResamplePolyphaseFixedFree_##type;        \
    }
KELS_FIXED_FUNCTIONS(Kel32f, 32f);
KELS_FIXED_FUNCTIONS(Kel16s, 16s);

// What is set is what is got.
template <class T>
void exchangeFilters(Bytes& in, typename Fixed<T>::State* state) {
    constexpr int kMax = 60;
    const int len = in.count(kMax), height = in.count(kMax);
    if (len > kMax || height > kMax) return;
    const bool valid = len >= 1 && height >= 1;
    const auto taps = static_cast<size_t>(valid ? len * height : 0);
    const KelStatus expected = valid ? kelStatusOk : kelStatusSize;
    Guarded<T> filters(taps), again(taps);
    require(Fixed<T>::get(state, filters.data(), len, height) == expected, "the status of Get");
    if (in.any<uint8_t>() % 2 != 0) {
        for (size_t i = 0; i < taps; ++i) filters[i] = static_cast<T>(filters[i] != 0 ? in.any<int8_t>() : 0);
    }
    require(Fixed<T>::set(state, filters.data(), len, height) == expected, "the status of Set");
    Fixed<T>::get(state, again.data(), len, height);
    require(filters.vector() == again.vector(), "the filters that were set are got");
}

template <class T>
void fixed(Bytes& in) {
    constexpr int kMaxRate = 200, kMaxFilter = 60;
    const int inRate = in.count(kMaxRate), outRate = in.count(kMaxRate), len = in.count(kMaxFilter);
    const Kel32f rollf = number(in, 1.1F), alpha = number(in, 20), norm = number(in, 2);
    int bytes = 0;
    const bool inPlace = in.any<uint8_t>() % 2 != 0;
    const KelStatus sized = Fixed<T>::getSize(inRate, outRate, len, rollf, alpha, 0, &bytes);
    Guarded<int32_t> memory(static_cast<size_t>(inPlace ? (bytes + 3) / 4 : 0));
    typename Fixed<T>::State* state = nullptr;
    if (inPlace && sized == kelStatusOk) {
        state = reinterpret_cast<typename Fixed<T>::State*>(memory.data());
        require(Fixed<T>::init(state, inRate, outRate, len, rollf, alpha, 0) == kelStatusOk, "a size that suffices");
    } else if (!inPlace) {
        require(Fixed<T>::initAlloc(&state, inRate, outRate, len, rollf, alpha, 0) == sized, "one status for a design");
    }
    if (state == nullptr) return;
    exchangeFilters<T>(in, state);
    const auto bound = [&](const T* src, int count, T* dst, Kel64f* time, int* outputs) {
        return Fixed<T>::run(state, src, count, dst, norm, time, outputs);
    };
    const Kel64f start = startOf(in);
    resample<T>(in, Resampler<decltype(bound)>{len / 2.0, 1.0 * outRate / inRate, isEighth(start), bound}, start);
    if (!inPlace) Fixed<T>::release(state);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Bytes in(data, size);
    switch (in.any<uint8_t>() % 4) {
        case 0:
            general<Kel32f, KelResamplePolyphase_32f>(in, kelsResamplePolyphaseInitAlloc_32f, kelsResamplePolyphase_32f,
                                                      kelsResamplePolyphaseFree_32f);
            break;
        case 1:
            general<Kel16s, KelResamplePolyphase_16s>(in, kelsResamplePolyphaseInitAlloc_16s, kelsResamplePolyphase_16s,
                                                      kelsResamplePolyphaseFree_16s);
            break;
        case 2:
            fixed<Kel32f>(in);
            break;
        default:
            fixed<Kel16s>(in);
    }
    return 0;
}
