// Objects of every kind, as an application would build them.
#include "sweep/objects.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "kels.h"
#include "support/forms.h"
#include "sweep/making.h"

namespace sweep {
namespace {

using test::forms;

int between(Dice& dice, int low, int high) {
    return static_cast<int>(dice.between(low, high));
}

// ---- front end ------------------------------------------------------------------------------------------------------

constexpr auto initFft = forms(kelsFFTInitAlloc_R_32f, kelsFFTInitAlloc_R_16s32s);
constexpr auto freeFft = forms(kelsFFTFree_R_32f, kelsFFTFree_R_16s32s);

template <class Spec>
Object fft(Dice& dice, int) {
    const int order = between(dice, 0, 10), n = 1 << order;
    Spec* spec;
    KelFFTSpec_R_32f* floats;
    const int flag = 1 << between(dice, 0, 3);
    MAKE(initFft(&spec, order, flag, 0));
    MAKE(kelsFFTInitAlloc_R_32f(&floats, order, 8, 0));
    int buffer;
    MAKE(kelsFFTGetBufSize_R_32f(floats, &buffer));
    kelsFFTFree_R_32f(floats);
    if (std::is_same_v<Spec, KelFFTSpec_R_16s32s>) buffer += 4 * n + 31;
    return {spec, {{"n", n}, {"ccs", n + (n == 1 ? 1 : 2)}, {"flag", flag}, {"buffer", buffer + 15}}, {}, {}};
}

constexpr auto initMel = forms(kelsMelFBankInitAlloc_32f, kelsMelFBankInitAlloc_16s);
constexpr auto initEmpty = forms(kelsEmptyFBankInitAlloc_32f, kelsEmptyFBankInitAlloc_16s);
constexpr auto setCentres = forms(kelsFBankSetCenters_32f, kelsFBankSetCenters_16s);
constexpr auto freeBank = forms(kelsFBankFree_32f, kelsFBankFree_16s);

template <class Bank>
Object filterBank(Dice& dice, int) {
    const int n = between(dice, 1, 26), order = between(dice, 5, 9);
    const bool samples = dice.oneIn(3);
    const int flag = between(dice, 1, 2) + (samples ? 4 : 0);
    Bank* bank;
    int got;
    MAKE(initMel(&bank, &got, (1 << order) - between(dice, 0, 3), 8000, 60, 3900, n, 1127, 700, flag));
    const double bins = samples ? 1 << order : (1 << (order - 1)) + 1;
    return {bank,
            {{"src", bins}, {"n", n}, {"samples", samples}, {"half", 1 << (order - 1)}, {"weights", flag & 3}},
            {},
            {}};
}
// A bank whose triangles are all of one size.
template <class Bank>
Object evenBank(Dice& dice, int) {
    const int n = between(dice, 1, 20), side = between(dice, 0, 6);
    Bank* bank;
    int order;
    MAKE(initEmpty(&bank, &order, 512, n, 0));
    std::vector<int> centres(static_cast<std::size_t>(n) + 2);
    for (int k = 0; k < n + 2; ++k) centres[static_cast<std::size_t>(k)] = k * side;
    MAKE(setCentres(bank, centres.data()));
    return {bank, {{"n", n}, {"side", side}, {"half", 256}}, {}, {}};
}
// An empty bank, whose centres are not set.
template <class Bank>
Object emptyBank(Dice& dice, int) {
    const int n = between(dice, 1, 20);
    Bank* bank;
    int order;
    MAKE(initEmpty(&bank, &order, 64, n, 0));
    return {bank, {{"n", n}, {"half", 32}}, {}, {}};
}
Object fixedBank(Dice& dice, int) {
    const int n = between(dice, 1, 26), order = between(dice, 6, 9);
    int bytes, got;
    MAKE(kelsMelFBankGetSize_32s(1 << order, n, 2, &bytes));
    Object object = inMemory(bytes);
    MAKE(kelsMelFBankInit_32s(object.memory->data(), &got, 1 << order, 8000, 60, 3900, n, 1127 << 15, 700 << 15, 2));
    object.properties = {{"src", (1 << (order - 1)) + 1}, {"n", n}};
    return object;
}

constexpr auto initLifter = forms(kelsDCTLifterInitAlloc_32f, kelsDCTLifterInitAlloc_16s);
constexpr auto initLifterC0 = forms(kelsDCTLifterInitAlloc_C0_32f, kelsDCTLifterInitAlloc_C0_16s);
constexpr auto freeLifter = forms(kelsDCTLifterFree_32f, kelsDCTLifterFree_16s);

template <class State>
Object cosines(Dice& dice, int) {
    const int n = between(dice, 1, 40), m = between(dice, 1, n);
    const bool c0 = dice.oneIn(2);
    State* state;
    if (c0) MAKE(initLifterC0(&state, n, m, 22, 1, 2));
    if (!c0) MAKE(initLifter(&state, n, m, 22, 1));
    return {state, {{"src", n}, {"dst", m + c0}, {"c0", c0}}, {}, {}};
}
Object cosinesInMemory(Dice& dice, int) {
    if (dice.oneIn(2)) return cosines<KelDCTLifterState_16s>(dice, 0);
    const int n = between(dice, 1, 40), m = between(dice, 1, n);
    int bytes;
    MAKE(kelsDCTLifterGetSize_MulC0_16s(n, m, &bytes));
    Object object = inMemory(bytes);
    MAKE(kelsDCTLifterInit_MulC0_16s(object.memory->data(), n, values<Kel32s>(dice, m).data(), m));
    object.properties = {{"src", n}, {"dst", m + 1}};
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
Object detector(Dice& dice, int) {
    Object object = stateBytes<kelsVADGetBufSize_Aurora_32f, kelsVADInit_Aurora_32f>(dice, 0);
    int result;
    for (int frames = between(dice, 0, 30); frames > 0; --frames) {
        const std::vector<Kel32f> mel = values<Kel32f>(dice, 25), spectrum = values<Kel32f>(dice, 64);
        kelsVADDecision_Aurora_32f(mel.data(), spectrum.data(), 0, &result, object.memory->data());
    }
    return object;
}

// ---- scoring, training ----------------------------------------------------------------------------------------------

constexpr auto initBlocks =
    forms(kelsBlockDMatrixInitAlloc_16s, kelsBlockDMatrixInitAlloc_32f, kelsBlockDMatrixInitAlloc_64f);
constexpr auto freeBlocks = forms(kelsBlockDMatrixFree_16s, kelsBlockDMatrixFree_32f, kelsBlockDMatrixFree_64f);

template <class Matrix, class T>
Object blockMatrix(Dice& dice, int) {
    const int most = dice.oneIn(4) ? 99 : 9;  // now and then more than the stack holds of it
    std::vector<int> sizes(static_cast<std::size_t>(dice.between(1, 5)));
    std::vector<const T*> rows;
    const std::vector<T> elements = values<T>(dice, 300);
    for (int& size : sizes) {
        size = between(dice, 1, most);
        for (int r = 0; r < size; ++r) rows.push_back(&elements[static_cast<std::size_t>(dice.between(0, 200))]);
    }
    Matrix* matrix;
    MAKE(initBlocks(&matrix, rows.data(), sizes.data(), static_cast<int>(sizes.size())));
    return {matrix, {{"len", static_cast<double>(rows.size())}}, {}, {}};
}

constexpr auto initBook = forms(kelsCdbkInitAlloc_L2_32f, kelsCdbkInitAlloc_L2_16s);
constexpr auto initBookInMemory = forms(kelsCdbkInit_L2_32f, kelsCdbkInit_L2_16s);
constexpr auto sizeOfBook = forms(kelsGetCdbkSize_32f, kelsGetCdbkSize_16s);
constexpr auto freeBook = forms(kelsCdbkFree_32f, kelsCdbkFree_16s);
constexpr auto packedSizeOf = forms(kelsCdbkGetPackedSize_32f, kelsCdbkGetPackedSize_16s);
constexpr auto packBook = forms(kelsCdbkPack_32f, kelsCdbkPack_16s);

// `width` 0: any.
template <class Book, class T>
Object codebook(Dice& dice, int width) {
    if (width == 0) width = static_cast<int>(dice.oneIn(6) ? dice.between(129, 140) : dice.between(1, 10));
    const int kind = between(dice, 1, 3), height = between(dice, 3, 40), step = width + between(dice, 0, 3);
    const std::vector<T> rows = values<T>(dice, height * step);
    const bool callers = kind == 1 && dice.oneIn(3);
    Object object;
    if (callers) {
        int bytes;
        MAKE((sizeof(T) == 2 ? kelsCdbkGetSize_16s : kelsCdbkGetSize_32f)(width, step, height, height, kind, &bytes));
        object = inMemory((bytes + 15) / 16 * 16);
        MAKE(initBookInMemory(static_cast<Book*>(object.pointer), rows.data(), width, step, height, height, kind));
    } else {
        Book* book;
        const int wanted = kind == 1 ? height : (height + 1) / 2;
        const KelStatus status = initBook(&book, rows.data(), width, step, height, wanted, kind);
        if (status == kelStatusBadArg) return codebook<Book, T>(dice, width);  // too many equal rows
        MAKE(status);
        object.pointer = book;
    }
    int size;
    MAKE(sizeOfBook(static_cast<Book*>(object.pointer), &size));
    const int bits = std::max(1, static_cast<int>(std::ceil(std::log2(size))));
    int bytes;
    MAKE(packedSizeOf(static_cast<Book*>(object.pointer), &bytes));
    object.properties = {{"width", width},    {"size", size},       {"bits", bits},
                         {"tree", kind != 1}, {"callers", callers}, {"packed", bytes}};
    return object;
}
// One of the library's own memory.
template <class Book, class T>
Object ownCodebook(Dice& dice, int width) {
    for (;;) {
        Object object = codebook<Book, T>(dice, width);
        if (!object.memory) return object;
    }
}
// One in bytes, now and then cut or damaged.
template <class Book, class T>
Object packedCodebook(Dice& dice, int width) {
    const Object made = ownCodebook<Book, T>(dice, width);
    Book* const book = static_cast<Book*>(made.pointer);
    std::vector<Kel8u> block(static_cast<std::size_t>(made.properties.at("packed")));
    MAKE(packBook(book, block.data(), static_cast<int>(block.size())));
    MAKE(freeBook(book));
    if (dice.oneIn(4)) block.resize(static_cast<std::size_t>(between(dice, 1, static_cast<int>(block.size()))));
    for (int n = dice.oneIn(4) ? 3 : 0; n > 0; --n) {
        const int place = between(dice, 0, static_cast<int>(block.size()) - 1);
        block[static_cast<std::size_t>(place)] = static_cast<Kel8u>(dice.between(0, 255));
    }
    Object object = inMemory(static_cast<int>(block.size()));
    std::copy(block.begin(), block.end(), object.memory->data());
    object.properties = {{"bytes", static_cast<double>(block.size())}};
    return object;
}

// ---- enhancement, resampling ----------------------------------------------------------------------------------------

template <class State, auto sizeOf, auto init>
Object noise(Dice& dice, int) {
    const int length = between(dice, 8, 300);
    int bytes;
    MAKE(sizeOf(length, &bytes));
    Object object = inMemory((bytes + 15) / 16 * 16);
    MAKE(init(16000, length, static_cast<State*>(object.pointer)));
    object.properties = {{"bins", length / 2 + 1}};
    return object;
}
template <class State, auto sizeOf, auto init>
Object echoController(Dice& dice, int) {
    const int length = between(dice, 32, 300);
    int bytes;
    MAKE(sizeOf(length, &bytes));
    Object object = inMemory(bytes);
    MAKE(init(8000, length, static_cast<State*>(object.pointer)));
    object.properties = {{"n", length}};
    return object;
}

constexpr auto initResampler = forms(kelsResamplePolyphaseInitAlloc_32f, kelsResamplePolyphaseInitAlloc_16s);
constexpr auto freeResampler = forms(kelsResamplePolyphaseFree_32f, kelsResamplePolyphaseFree_16s);
constexpr auto initFixed = forms(kelsResamplePolyphaseFixedInitAlloc_32f, kelsResamplePolyphaseFixedInitAlloc_16s);
constexpr auto freeFixed = forms(kelsResamplePolyphaseFixedFree_32f, kelsResamplePolyphaseFixedFree_16s);

template <class State>
Object resampler(Dice& dice, int) {
    const double window = between(dice, 2, 30);
    const int steps = between(dice, 1, 64);
    State* state;
    MAKE(initResampler(&state, static_cast<float>(window), steps, 0.9F, 9, 0));
    return {state, {{"reach", std::floor(window * 0.5 * steps) / steps}}, {}, {}};
}
template <class State>
Object fixedResampler(Dice& dice, int) {
    const int in = between(dice, 1, 12), out = between(dice, 1, 12), len = between(dice, 1, 40);
    State* state;
    MAKE(initFixed(&state, in, out, len, 0.9F, 9, 0));
    return {state, {{"reach", len / 2.0}, {"in", in}, {"out", out}, {"len", len}}, {}, {}};
}

// ---- the table ------------------------------------------------------------------------------------------------------

using Make = Object (*)(Dice&, int);
void nothing(void*) {}

// Made by the library; made so, with a handle that its Free leaves; in the caller's memory, as bytes or typed.
template <class T, const auto& release>
constexpr ObjectKind owned(Make make) {
    return {&kTag<T>, make, [](void* p) { release(static_cast<T*>(p)); }, nothing};
}
template <class T, const auto& release>
constexpr ObjectKind handle(Make make) {
    return {&kTag<T>, make, [](void* p) { release(static_cast<T*>(p)), kelsFree(p); }, kelsFree};
}
constexpr ObjectKind bytes(Make make) {
    return {nullptr, make, nothing, nothing};
}
template <class T>
constexpr ObjectKind callers(Make make) {
    return {&kTag<T>, make, nothing, nothing};
}
constexpr auto freeFeature = forms(kelsFeatureFree_32f);
constexpr auto freeStream = forms(kelsFeatureStreamFree_32f);

const std::multimap<std::string, ObjectKind> kKinds = {
    {"FFT", owned<KelFFTSpec_R_32f, freeFft>(fft<KelFFTSpec_R_32f>)},
    {"FFT", owned<KelFFTSpec_R_16s32s, freeFft>(fft<KelFFTSpec_R_16s32s>)},
    {"FBank", handle<KelFilterBank_32f, freeBank>(filterBank<KelFilterBank_32f>)},
    {"FBank", handle<KelFilterBank_16s, freeBank>(filterBank<KelFilterBank_16s>)},
    {"FBank", callers<KelFilterBank_32s>(fixedBank)},
    {"EvenFBank", handle<KelFilterBank_32f, freeBank>(evenBank<KelFilterBank_32f>)},
    {"EvenFBank", handle<KelFilterBank_16s, freeBank>(evenBank<KelFilterBank_16s>)},
    {"EmptyFBank", handle<KelFilterBank_32f, freeBank>(emptyBank<KelFilterBank_32f>)},
    {"EmptyFBank", handle<KelFilterBank_16s, freeBank>(emptyBank<KelFilterBank_16s>)},
    {"DCT", handle<KelDCTLifterState_32f, freeLifter>(cosines<KelDCTLifterState_32f>)},
    {"DCT", handle<KelDCTLifterState_16s, freeLifter>(cosines<KelDCTLifterState_16s>)},
    {"DCTBuffer", handle<KelDCTLifterState_16s, freeLifter>(cosinesInMemory)},
    {"VAD", bytes(detector)},
    {"Nest", bytes(stateBytes<kelsVADNestGetBufSize_Aurora_32f, kelsVADNestInit_Aurora_32f>)},
    {"Gain", bytes(stateBytes<kelsGainFactorizationGetBufSize_Aurora_32f, kelsGainFactorizationInit_Aurora_32f>)},
    {"LowHigh", bytes(stateBytes<kelsLowHighFilterGetBufSize_Aurora_32f, kelsLowHighFilterInit_Aurora_32f>)},
    {"HighBand", bytes(stateBytes<kelsHighBandGetBufSize_Aurora_32f, kelsHighBandInit_Aurora_32f>)},
    {"Block", owned<KelBlockDMatrix_16s, freeBlocks>(blockMatrix<KelBlockDMatrix_16s, Kel16s>)},
    {"Block", owned<KelBlockDMatrix_32f, freeBlocks>(blockMatrix<KelBlockDMatrix_32f, Kel32f>)},
    {"Block", owned<KelBlockDMatrix_64f, freeBlocks>(blockMatrix<KelBlockDMatrix_64f, Kel64f>)},
    {"Cdbk", owned<KelCdbk_32f, freeBook>(codebook<KelCdbk_32f, Kel32f>)},
    {"Cdbk", owned<KelCdbk_16s, freeBook>(codebook<KelCdbk_16s, Kel16s>)},
    {"OwnCdbk", owned<KelCdbk_32f, freeBook>(ownCodebook<KelCdbk_32f, Kel32f>)},
    {"OwnCdbk", owned<KelCdbk_16s, freeBook>(ownCodebook<KelCdbk_16s, Kel16s>)},
    {"PackedCdbk_32f", bytes(packedCodebook<KelCdbk_32f, Kel32f>)},
    {"PackedCdbk_16s", bytes(packedCodebook<KelCdbk_16s, Kel16s>)},
    {"MCRA", callers<KelMCRAState_32f>(noise<KelMCRAState_32f, kelsGetSizeMCRA_32f, kelsInitMCRA_32f>)},
    {"MCRA", callers<KelMCRAState_32s>(noise<KelMCRAState_32s, kelsGetSizeMCRA_32s, kelsInitMCRA_32s>)},
    {"AEC", callers<KelAECState_32f>(
                echoController<KelAECState_32f, kelsControllerGetSizeAEC_32f, kelsControllerInitAEC_32f>)},
    {"AEC", callers<KelAECState_32s>(
                echoController<KelAECState_32s, kelsControllerGetSizeAEC_32s, kelsControllerInitAEC_32s>)},
    {"Resample", owned<KelResamplePolyphase_32f, freeResampler>(resampler<KelResamplePolyphase_32f>)},
    {"Resample", owned<KelResamplePolyphase_16s, freeResampler>(resampler<KelResamplePolyphase_16s>)},
    {"Fixed", owned<KelResamplePolyphaseFixed_32f, freeFixed>(fixedResampler<KelResamplePolyphaseFixed_32f>)},
    {"Fixed", owned<KelResamplePolyphaseFixed_16s, freeFixed>(fixedResampler<KelResamplePolyphaseFixed_16s>)},
    {"FeatureConfig", callers<KelFeatureConfig>(featureConfiguration)},
    {"Feature", owned<KelFeatureSpec_32f, freeFeature>(features)},
    {"FeatureStream", owned<KelFeatureStream_32f, freeStream>(featureStream)},
};

}  // namespace

const ObjectKind& objectKind(const Argument& argument) {
    const auto [first, last] = kKinds.equal_range(argument.kind.substr(0, argument.kind.find(':')));
    const auto found =
        std::find_if(first, last, [&](const auto& entry) { return entry.second.structure == argument.type.structure; });
    if (found != last) return found->second;
    std::fprintf(stderr, "no kind of object is called %s and of the type of %s\n", argument.kind.c_str(),
                 argument.name.c_str());
    std::abort();
}

Object makeObject(const Argument& argument, Dice& dice, int fill) {
    const std::size_t colon = argument.kind.find(':');
    test::AllocationWatch watch;
    watch.restart(-1, SIZE_MAX, fill);
    Object object =
        objectKind(argument).make(dice, colon == std::string::npos ? 0 : std::atoi(argument.kind.c_str() + colon + 1));
    object.blocks = watch.blocks();
    if (object.memory) object.blocks.push_back({object.memory->data(), object.memory->size()});
    return object;
}

void releaseObject(const Argument& argument, Object& object) {
    if (object.pointer != nullptr && !object.memory) objectKind(argument).release(object.pointer);
    object = {};
}

}  // namespace sweep
