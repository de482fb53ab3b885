// Objects of every kind, as an application would build them.
#include "sweep/objects.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "kels.h"
#include "sweep/making.h"

namespace sweep {
namespace {

template <auto release, class T>
void give(void* p) {
    release(static_cast<T*>(p));
}
// Handles that outlive what they own.
template <auto release, class T>
void giveBoth(void* p) {
    release(static_cast<T*>(p));
    kelsFree(p);
}
void nothing(void*) {}

// ---- front end ------------------------------------------------------------------------------------------------------

Object fft_32f(Dice& dice, int) {
    const int order = static_cast<int>(dice.between(0, 10)), n = 1 << order;
    KelFFTSpec_R_32f* spec;
    MAKE(kelsFFTInitAlloc_R_32f(&spec, order, 1 << dice.between(0, 3), 0));
    int buffer;
    MAKE(kelsFFTGetBufSize_R_32f(spec, &buffer));
    return {spec, {{"n", n}, {"ccs", n + (n == 1 ? 1 : 2)}, {"buffer", buffer + 15}}, {}, {}};
}
Object fft_16s32s(Dice& dice, int) {
    const int order = static_cast<int>(dice.between(0, 10)), n = 1 << order;
    KelFFTSpec_R_16s32s* spec;
    KelFFTSpec_R_32f* twin;
    MAKE(kelsFFTInitAlloc_R_16s32s(&spec, order, 8, 0));
    MAKE(kelsFFTInitAlloc_R_32f(&twin, order, 8, 0));
    int buffer;
    MAKE(kelsFFTGetBufSize_R_32f(twin, &buffer));
    kelsFFTFree_R_32f(twin);
    return {spec, {{"n", n}, {"ccs", n + (n == 1 ? 1 : 2)}, {"buffer", buffer + 15 + 4 * n + 31}}, {}, {}};
}

template <class Bank, class T>
Object filterBank(Dice& dice, KelStatus (*make)(Bank**, int*, int, float, float, float, int, float, float, int)) {
    const int n = static_cast<int>(dice.between(1, 26)), order = static_cast<int>(dice.between(5, 9));
    const bool samples = dice.oneIn(3);
    Bank* bank;
    int got;
    MAKE(make(&bank, &got, (1 << order) - static_cast<int>(dice.between(0, 3)), 8000, 60, 3900, n, 1127, 700,
              static_cast<int>(dice.between(1, 2)) + (samples ? 4 : 0)));
    const double bins = samples ? 1 << order : (1 << (order - 1)) + 1;
    return {bank, {{"src", bins}, {"n", n}, {"samples", samples}, {"half", 1 << (order - 1)}}, {}, {}};
}
Object fbank_32f(Dice& dice, int) {
    return filterBank<KelFilterBank_32f, float>(dice, kelsMelFBankInitAlloc_32f);
}
Object fbank_16s(Dice& dice, int) {
    return filterBank<KelFilterBank_16s, int16_t>(dice, kelsMelFBankInitAlloc_16s);
}
// A bank whose triangles are all of one size.
template <class Bank>
Object evenBank(Dice& dice, KelStatus (*make)(Bank**, int*, int, int, int), KelStatus (*set)(Bank*, const int*)) {
    const int n = static_cast<int>(dice.between(1, 20)), side = static_cast<int>(dice.between(0, 6));
    Bank* bank;
    int order;
    MAKE(make(&bank, &order, 512, n, 0));
    std::vector<int> centres(static_cast<std::size_t>(n) + 2);
    for (int k = 0; k < n + 2; ++k) centres[static_cast<std::size_t>(k)] = k * side;
    MAKE(set(bank, centres.data()));
    return {bank, {{"n", n}, {"side", side}, {"half", 256}}, {}, {}};
}
Object even_32f(Dice& dice, int) {
    return evenBank(dice, kelsEmptyFBankInitAlloc_32f, kelsFBankSetCenters_32f);
}
Object even_16s(Dice& dice, int) {
    return evenBank(dice, kelsEmptyFBankInitAlloc_16s, kelsFBankSetCenters_16s);
}
// An empty bank, whose centres are not set.
template <class Bank>
Object emptyBank(Dice& dice, KelStatus (*make)(Bank**, int*, int, int, int)) {
    const int n = static_cast<int>(dice.between(1, 20));
    Bank* bank;
    int order;
    MAKE(make(&bank, &order, 64, n, 0));
    return {bank, {{"n", n}, {"half", 32}}, {}, {}};
}
Object empty_32f(Dice& dice, int) {
    return emptyBank(dice, kelsEmptyFBankInitAlloc_32f);
}
Object empty_16s(Dice& dice, int) {
    return emptyBank(dice, kelsEmptyFBankInitAlloc_16s);
}
Object fbank_32s(Dice& dice, int) {
    const int n = static_cast<int>(dice.between(1, 26)), order = static_cast<int>(dice.between(6, 9));
    int bytes, got;
    MAKE(kelsMelFBankGetSize_32s(1 << order, n, 2, &bytes));
    Object object = inMemory(bytes);
    MAKE(kelsMelFBankInit_32s(object.memory->data(), &got, 1 << order, 8000, 60, 3900, n, 1127 << 15, 700 << 15, 2));
    object.properties = {{"src", (1 << (order - 1)) + 1}, {"n", n}};
    return object;
}

template <class State>
Object cosines(Dice& dice, KelStatus (*plain)(State**, int, int, int, float),
               KelStatus (*withC0)(State**, int, int, int, float, float)) {
    const int n = static_cast<int>(dice.between(1, 40)), m = static_cast<int>(dice.between(1, n));
    const bool c0 = dice.oneIn(2);
    State* state;
    if (c0) MAKE(withC0(&state, n, m, 22, 1, 2));
    if (!c0) MAKE(plain(&state, n, m, 22, 1));
    return {state, {{"src", n}, {"dst", m + c0}}, {}, {}};
}
Object dct_32f(Dice& dice, int) {
    return cosines(dice, kelsDCTLifterInitAlloc_32f, kelsDCTLifterInitAlloc_C0_32f);
}
Object dct_16s(Dice& dice, int) {
    return cosines(dice, kelsDCTLifterInitAlloc_16s, kelsDCTLifterInitAlloc_C0_16s);
}
Object dctBuffer_16s(Dice& dice, int) {
    if (dice.oneIn(2)) return dct_16s(dice, 0);
    const int n = static_cast<int>(dice.between(1, 40)), m = static_cast<int>(dice.between(1, n));
    int bytes;
    MAKE(kelsDCTLifterGetSize_MulC0_16s(n, m, &bytes));
    Object object = inMemory(bytes);
    MAKE(kelsDCTLifterInit_MulC0_16s(object.memory->data(), n, values<Kel32s>(dice, m).data(), m));
    object.properties = {{"src", n}, {"dst", m + 1}};
    return object;
}

Object detector(Dice& dice, int) {
    int bytes;
    MAKE(kelsVADGetBufSize_Aurora_32f(&bytes));
    Object object = inMemory(bytes);
    MAKE(kelsVADInit_Aurora_32f(object.memory->data()));
    int result;
    for (int frames = static_cast<int>(dice.between(0, 30)); frames > 0; --frames) {
        const std::vector<Kel32f> mel = values<Kel32f>(dice, 25), spectrum = values<Kel32f>(dice, 64);
        kelsVADDecision_Aurora_32f(mel.data(), spectrum.data(), 0, &result, object.memory->data());
    }
    return object;
}

// A state in bytes, as its Init leaves it.
template <auto sizeOf, auto init>
Object stateBytes(Dice&, int) {
    int bytes;
    MAKE(sizeOf(&bytes));
    Object object = inMemory(bytes);
    MAKE(init(object.memory->data()));
    return object;
}

// ---- scoring, training ----------------------------------------------------------------------------------------------

template <class Matrix, class T>
Object blockMatrix(Dice& dice, KelStatus (*make)(Matrix**, const T**, const int*, int)) {
    const int most = dice.oneIn(4) ? 50 : 9;  // now and then more than the stack holds of it
    std::vector<int> sizes(static_cast<std::size_t>(dice.between(1, 5)));
    std::vector<const T*> rows;
    const std::vector<T> elements = values<T>(dice, 300);
    for (int& size : sizes) {
        size = static_cast<int>(dice.between(1, most));
        for (int r = 0; r < size; ++r) rows.push_back(&elements[static_cast<std::size_t>(dice.between(0, 200))]);
    }
    Matrix* matrix;
    MAKE(make(&matrix, rows.data(), sizes.data(), static_cast<int>(sizes.size())));
    return {matrix, {{"len", static_cast<double>(rows.size())}}, {}, {}};
}
Object block_16s(Dice& dice, int) {
    return blockMatrix(dice, kelsBlockDMatrixInitAlloc_16s);
}
Object block_32f(Dice& dice, int) {
    return blockMatrix(dice, kelsBlockDMatrixInitAlloc_32f);
}
Object block_64f(Dice& dice, int) {
    return blockMatrix(dice, kelsBlockDMatrixInitAlloc_64f);
}

// `width` 0: any.
template <class Book, class T>
Object codebook(Dice& dice, int width, KelStatus (*make)(Book**, const T*, int, int, int, int, int),
                KelStatus (*sizeOf)(const Book*, int*), KelStatus (*memory)(int, int, int, int, int, int*),
                KelStatus (*init)(Book*, const T*, int, int, int, int, int)) {
    if (width == 0) width = static_cast<int>(dice.oneIn(6) ? dice.between(129, 140) : dice.between(1, 10));
    const int kind = static_cast<int>(dice.between(1, 3)), height = static_cast<int>(dice.between(3, 40));
    const int step = width + static_cast<int>(dice.between(0, 3));
    const std::vector<T> rows = values<T>(dice, height * step);
    const bool callers = kind == 1 && dice.oneIn(3);
    Object object;
    if (callers) {
        int bytes;
        MAKE(memory(width, step, height, height, kind, &bytes));
        object = inMemory((bytes + 15) / 16 * 16);
        MAKE(init(static_cast<Book*>(object.pointer), rows.data(), width, step, height, height, kind));
    } else {
        Book* book;
        const int wanted = kind == 1 ? height : (height + 1) / 2;
        const KelStatus status = make(&book, rows.data(), width, step, height, wanted, kind);
        if (status == kelStatusBadArg) return codebook(dice, width, make, sizeOf, memory, init);  // too many equal rows
        MAKE(status);
        object.pointer = book;
    }
    int size;
    MAKE(sizeOf(static_cast<Book*>(object.pointer), &size));
    const int bits = std::max(1, static_cast<int>(std::ceil(std::log2(size))));
    object.properties = {{"width", width}, {"size", size}, {"bits", bits}, {"tree", kind != 1}, {"callers", callers}};
    return object;
}
Object cdbk_32f(Dice& dice, int width) {
    return codebook(dice, width, kelsCdbkInitAlloc_L2_32f, kelsGetCdbkSize_32f, kelsCdbkGetSize_32f,
                    kelsCdbkInit_L2_32f);
}
Object cdbk_16s(Dice& dice, int width) {
    return codebook(dice, width, kelsCdbkInitAlloc_L2_16s, kelsGetCdbkSize_16s, kelsCdbkGetSize_16s,
                    kelsCdbkInit_L2_16s);
}
// One of the library's own memory.
template <Object (*make)(Dice&, int)>
Object ownMemory(Dice& dice, int width) {
    for (;;) {
        Object object = make(dice, width);
        if (!object.memory) return object;
    }
}

// ---- enhancement, resampling ----------------------------------------------------------------------------------------

template <class State>
Object noise(Dice& dice, KelStatus (*sizeOf)(int, int*), KelStatus (*init)(int, int, State*)) {
    const int length = static_cast<int>(dice.between(8, 300));
    int bytes;
    MAKE(sizeOf(length, &bytes));
    Object object = inMemory((bytes + 15) / 16 * 16);
    MAKE(init(16000, length, static_cast<State*>(object.pointer)));
    object.properties = {{"bins", length / 2 + 1}};
    return object;
}
Object mcra_32f(Dice& dice, int) {
    return noise(dice, kelsGetSizeMCRA_32f, kelsInitMCRA_32f);
}
Object mcra_32s(Dice& dice, int) {
    return noise(dice, kelsGetSizeMCRA_32s, kelsInitMCRA_32s);
}

template <class State>
Object echoController(Dice& dice, KelStatus (*sizeOf)(int, int*), KelStatus (*init)(int, int, State*)) {
    const int length = static_cast<int>(dice.between(32, 300));
    int bytes;
    MAKE(sizeOf(length, &bytes));
    Object object = inMemory(bytes);
    MAKE(init(8000, length, static_cast<State*>(object.pointer)));
    object.properties = {{"n", length}};
    return object;
}
Object aec_32f(Dice& dice, int) {
    return echoController(dice, kelsControllerGetSizeAEC_32f, kelsControllerInitAEC_32f);
}
Object aec_32s(Dice& dice, int) {
    return echoController(dice, kelsControllerGetSizeAEC_32s, kelsControllerInitAEC_32s);
}

template <class State>
Object resampler(Dice& dice, KelStatus (*make)(State**, float, int, float, float, int)) {
    const double window = static_cast<double>(dice.between(2, 30));
    const int steps = static_cast<int>(dice.between(1, 64));
    State* state;
    MAKE(make(&state, static_cast<float>(window), steps, 0.9F, 9, 0));
    return {state, {{"reach", std::floor(window * 0.5 * steps) / steps}}, {}, {}};
}
Object resample_32f(Dice& dice, int) {
    return resampler(dice, kelsResamplePolyphaseInitAlloc_32f);
}
Object resample_16s(Dice& dice, int) {
    return resampler(dice, kelsResamplePolyphaseInitAlloc_16s);
}
template <class State>
Object fixedResampler(Dice& dice, KelStatus (*make)(State**, int, int, int, float, float, int)) {
    const int in = static_cast<int>(dice.between(1, 12)), out = static_cast<int>(dice.between(1, 12));
    const int len = static_cast<int>(dice.between(1, 40));
    State* state;
    MAKE(make(&state, in, out, len, 0.9F, 9, 0));
    return {state, {{"reach", len / 2.0}, {"in", in}, {"out", out}, {"len", len}}, {}, {}};
}
Object fixed_32f(Dice& dice, int) {
    return fixedResampler(dice, kelsResamplePolyphaseFixedInitAlloc_32f);
}
Object fixed_16s(Dice& dice, int) {
    return fixedResampler(dice, kelsResamplePolyphaseFixedInitAlloc_16s);
}

template <auto release, class T>
constexpr ObjectKind owned(Object (*make)(Dice&, int)) {
    return {make, give<release, T>, nothing};
}
template <auto release, class T>
constexpr ObjectKind handle(Object (*make)(Dice&, int)) {
    return {make, giveBoth<release, T>, kelsFree};
}

const std::map<std::string, ObjectKind> kKinds = {
    {"FFT_32f", owned<kelsFFTFree_R_32f, KelFFTSpec_R_32f>(fft_32f)},
    {"FFT_16s32s", owned<kelsFFTFree_R_16s32s, KelFFTSpec_R_16s32s>(fft_16s32s)},
    {"FBank_32f", handle<kelsFBankFree_32f, KelFilterBank_32f>(fbank_32f)},
    {"FBank_16s", handle<kelsFBankFree_16s, KelFilterBank_16s>(fbank_16s)},
    {"EvenFBank_32f", handle<kelsFBankFree_32f, KelFilterBank_32f>(even_32f)},
    {"EvenFBank_16s", handle<kelsFBankFree_16s, KelFilterBank_16s>(even_16s)},
    {"EmptyFBank_32f", handle<kelsFBankFree_32f, KelFilterBank_32f>(empty_32f)},
    {"EmptyFBank_16s", handle<kelsFBankFree_16s, KelFilterBank_16s>(empty_16s)},
    {"FBank_32s", {fbank_32s, nothing, nothing}},
    {"DCT_32f", handle<kelsDCTLifterFree_32f, KelDCTLifterState_32f>(dct_32f)},
    {"DCT_16s", handle<kelsDCTLifterFree_16s, KelDCTLifterState_16s>(dct_16s)},
    {"DCTBuffer_16s", handle<kelsDCTLifterFree_16s, KelDCTLifterState_16s>(dctBuffer_16s)},
    {"VAD", {detector, nothing, nothing}},
    {"Nest", {stateBytes<kelsVADNestGetBufSize_Aurora_32f, kelsVADNestInit_Aurora_32f>, nothing, nothing}},
    {"Gain",
     {stateBytes<kelsGainFactorizationGetBufSize_Aurora_32f, kelsGainFactorizationInit_Aurora_32f>, nothing, nothing}},
    {"LowHigh",
     {stateBytes<kelsLowHighFilterGetBufSize_Aurora_32f, kelsLowHighFilterInit_Aurora_32f>, nothing, nothing}},
    {"HighBand", {stateBytes<kelsHighBandGetBufSize_Aurora_32f, kelsHighBandInit_Aurora_32f>, nothing, nothing}},
    {"Block_16s", owned<kelsBlockDMatrixFree_16s, KelBlockDMatrix_16s>(block_16s)},
    {"Block_32f", owned<kelsBlockDMatrixFree_32f, KelBlockDMatrix_32f>(block_32f)},
    {"Block_64f", owned<kelsBlockDMatrixFree_64f, KelBlockDMatrix_64f>(block_64f)},
    {"Cdbk_32f", owned<kelsCdbkFree_32f, KelCdbk_32f>(cdbk_32f)},
    {"Cdbk_16s", owned<kelsCdbkFree_16s, KelCdbk_16s>(cdbk_16s)},
    {"OwnCdbk_32f", owned<kelsCdbkFree_32f, KelCdbk_32f>(ownMemory<cdbk_32f>)},
    {"OwnCdbk_16s", owned<kelsCdbkFree_16s, KelCdbk_16s>(ownMemory<cdbk_16s>)},
    {"MCRA_32f", {mcra_32f, nothing, nothing}},
    {"MCRA_32s", {mcra_32s, nothing, nothing}},
    {"AEC_32f", {aec_32f, nothing, nothing}},
    {"AEC_32s", {aec_32s, nothing, nothing}},
    {"Resample_32f", owned<kelsResamplePolyphaseFree_32f, KelResamplePolyphase_32f>(resample_32f)},
    {"Resample_16s", owned<kelsResamplePolyphaseFree_16s, KelResamplePolyphase_16s>(resample_16s)},
    {"Fixed_32f", owned<kelsResamplePolyphaseFixedFree_32f, KelResamplePolyphaseFixed_32f>(fixed_32f)},
    {"Fixed_16s", owned<kelsResamplePolyphaseFixedFree_16s, KelResamplePolyphaseFixed_16s>(fixed_16s)},
    {"FeatureConfig", {featureConfiguration, nothing, nothing}},
    {"Feature", owned<kelsFeatureFree_32f, KelFeatureSpec_32f>(features)},
    {"FeatureStream", owned<kelsFeatureStreamFree_32f, KelFeatureStream_32f>(featureStream)},
};

}  // namespace

const ObjectKind& objectKind(const std::string& name) {
    const auto found = kKinds.find(name.substr(0, name.find(':')));
    if (found == kKinds.end()) std::fprintf(stderr, "no kind of object is called %s\n", name.c_str()), std::abort();
    return found->second;
}

Object makeObject(const std::string& kind, Dice& dice, int fill) {
    const std::size_t colon = kind.find(':');
    test::AllocationWatch watch;
    watch.restart(-1, SIZE_MAX, fill);
    Object object = objectKind(kind).make(dice, colon == std::string::npos ? 0 : std::atoi(kind.c_str() + colon + 1));
    object.blocks = watch.blocks();
    if (object.memory) object.blocks.push_back({object.memory->data(), object.memory->size()});
    return object;
}

void releaseObject(const std::string& kind, Object& object) {
    if (object.pointer != nullptr && !object.memory) objectKind(kind).release(object.pointer);
    object = {};
}

}  // namespace sweep
