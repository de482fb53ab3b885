// Codebooks of all kinds from any rows and weights, every search, and split quantisation with its inverse.
#include <memory>

#include "bytes.h"
#include "kels/vq.h"

using fuzz::Bytes;
using fuzz::Guarded;
using fuzz::require;

namespace {

template <class T>
struct Vq;
#define KELS_VQ_FUNCTIONS(T, type, bits)                                     \
    template <>                                                              \
    struct Vq<T> {                                                           \
        using Codebook = KelCdbk_##type;                                     \
        static constexpr auto init = kelsCdbkInitAlloc_L2_##type;            \
        static constexpr auto initWeighted = kelsCdbkInitAlloc_WgtL2_##type; \
        static constexpr auto getSize = kelsCdbkGetSize_##type;              \
        static constexpr auto initInPlace = kelsCdbkInit_L2_##type;          \
        static constexpr auto count = kelsGetCdbkSize_##type;                \
        static constexpr auto release = kelsCdbkFree_##type;                 \
        static constexpr auto quantise = kelsVQ_##type;                      \
        static constexpr auto sort = kelsVQSingle_Sort_##type;               \
        static constexpr auto thresh = kelsVQSingle_Thresh_##type;           \
        static constexpr auto full = kelsCdbk##bits##VQFull_A6;              \
        static constexpr auto tree = kelsCdbk##bits##VQKMeans_A6;            \
        static constexpr auto split16s = kelsSplitVQ_##type##16s;            \
        static constexpr auto split8u = kelsSplitVQ_##type##8u;              \
        static constexpr auto split1u = kelsSplitVQ_##type##1u;              \
        static constexpr auto form16s = kelsFormVectorVQ_16s##type;          \
        static constexpr auto form8u = kelsFormVectorVQ_8u##type;            \
        static constexpr auto form1u = kelsFormVectorVQ_1u##type;            \
    }
KELS_VQ_FUNCTIONS(Kel32f, 32f, 32);
KELS_VQ_FUNCTIONS(Kel16s, 16s, 16);

constexpr int kMaxWidth = 20, kMaxHeight = 120, kMaxSize = 24;

// Components that meet often, so that there are ties, or of any bit pattern.
template <class T>
std::vector<T> components(Bytes& in, int n, bool any) {
    std::vector<T> values(static_cast<size_t>(n));
    for (T& value : values) value = any ? in.any<T>() : static_cast<T>(in.any<int8_t>() / 4);
    return values;
}

template <class T>
struct Owned {
    std::unique_ptr<typename Vq<T>::Codebook, decltype(Vq<T>::release)> codebook{nullptr, Vq<T>::release};
    int width = 0, count = 0;

    // Without a codebook where the arguments do not make one.
    Owned(Bytes& in, bool any) : width(in.count(kMaxWidth)) {
        const int step = in.count(kMaxWidth + 5), height = in.count(kMaxHeight), size = in.count(kMaxSize);
        const int kind = in.any<uint8_t>() % 5;
        const bool weighted = in.any<uint8_t>() % 2 != 0;
        // More than that cannot be provided.
        if (width > kMaxWidth || step > kMaxWidth + 5 || height > kMaxHeight) return;
        const bool valid = width >= 1 && step >= width && height >= 1;
        const Guarded<T> rows(components<T>(in, valid ? (height - 1) * step + width : 0, any));
        const Guarded<T> weights(components<T>(in, std::max(width, 0), any));
        typename Vq<T>::Codebook* made = nullptr;
        const KelStatus status =
            weighted ? Vq<T>::initWeighted(&made, rows.data(), weights.data(), width, step, height, size, kind)
                     : Vq<T>::init(&made, rows.data(), width, step, height, size, kind);
        require((status >= 0) == (made != nullptr), "a codebook with success and none with an error");
        codebook.reset(made);
        if (made != nullptr) {
            require(Vq<T>::count(made, &count) == kelStatusOk && count >= 1 && count <= height,
                    "the codevectors' number");
        }
        int bytes = 0;
        if (Vq<T>::getSize(width, step, height, height, kind, &bytes) != kelStatusOk) return;
        Guarded<void*> memory((static_cast<size_t>(bytes) + sizeof(void*) - 1) / sizeof(void*));
        auto* const inPlace = reinterpret_cast<typename Vq<T>::Codebook*>(memory.data());
        Vq<T>::initInPlace(inPlace, rows.data(), width, step, height, height, kind);
        Guarded<Kel32s> found(static_cast<size_t>(height));
        require(Vq<T>::quantise(rows.data(), step, found, height, inPlace) == kelStatusOk, "a search succeeds");
    }
};

template <class T>
void search(Bytes& in, const Owned<T>& owned, bool any) {
    auto* const codebook = owned.codebook.get();
    const int height = 1 + in.any<uint8_t>() % 70, width = owned.width, step = width + in.any<uint8_t>() % 3;
    const Guarded<T> rows(components<T>(in, (height - 1) * step + width, any));
    const auto inRange = [&](Kel32s index) { return index >= 0 && index < owned.count; };
    const auto n = static_cast<size_t>(height);

    Guarded<Kel32s> indices(n), others(n);
    require(Vq<T>::quantise(rows.data(), step, indices.data(), height, codebook) == kelStatusOk, "a search succeeds");
    Vq<T>::full(rows.data(), step, others.data(), height, codebook, width);
    Vq<T>::tree(rows.data(), step, others.data(), height, codebook, width);
    for (size_t i = 0; i < n; ++i) require(inRange(indices[i]) && inRange(others[i]), "an index names a codevector");

    // Of a single vector: every codevector once, and those within a factor are the first of them.
    const auto all = static_cast<size_t>(owned.count);
    Guarded<Kel32s> order(all), near(all);
    Kel32s found = -1;
    Vq<T>::sort(rows.data(), order.data(), codebook, owned.count);
    Vq<T>::thresh(rows.data(), near.data(), codebook, 1 + in.any<uint8_t>() / 64.0F, &found);
    require(found >= 1 && found <= owned.count, "the number of near codevectors");
    require(std::equal(near.data(), near.data() + found, order.data()), "near codevectors come in order");
    auto sorted = order.vector();
    std::sort(sorted.begin(), sorted.end());
    for (size_t i = 0; i < all; ++i) require(sorted[i] == static_cast<Kel32s>(i), "every codevector is listed once");
}

// The rows as they come back from one layout of indices.
template <class I, class T, class Split, class Form>
std::vector<T> quantised(const Guarded<T>& rows, int step, int height, typename Vq<T>::Codebook** codebooks,
                         int dstStep, int elements, Split split, Form form) {
    Guarded<I> indices(static_cast<size_t>(elements));
    Guarded<T> formed(static_cast<size_t>(height * step));
    require(split(rows.data(), step, indices.data(), dstStep, height, codebooks, 2) == kelStatusOk, "rows are split");
    require(form(indices.data(), dstStep, formed.data(), step, height, codebooks, 2) == kelStatusOk,
            "and formed again");
    return formed.vector();
}

// Two parts in every layout, which must all keep the same indices.
template <class T>
void splitAndForm(Bytes& in, const Owned<T>& first, const Owned<T>& second, bool any) {
    typename Vq<T>::Codebook* codebooks[] = {first.codebook.get(), second.codebook.get()};
    const int height = 1 + in.any<uint8_t>() % 20, step = first.width + second.width;
    const Guarded<T> rows(components<T>(in, height * step, any));
    const auto bitsOf = [](int count) { return count > 1 ? 32 - __builtin_clz(static_cast<unsigned>(count - 1)) : 0; };
    const int dstStep = 2 + in.any<uint8_t>() % 3;
    const int bits = std::max(bitsOf(first.count) + bitsOf(second.count), 1) + in.any<uint8_t>() % 3;
    const int elements = height * dstStep, bytes = (height * bits + 7) / 8;
    const auto words =
        quantised<Kel16s>(rows, step, height, codebooks, dstStep, elements, Vq<T>::split16s, Vq<T>::form16s);
    const auto byteWise =
        quantised<Kel8u>(rows, step, height, codebooks, dstStep, elements, Vq<T>::split8u, Vq<T>::form8u);
    const auto packed = quantised<Kel8u>(rows, step, height, codebooks, bits, bytes, Vq<T>::split1u, Vq<T>::form1u);
    require(fuzz::sameBits(byteWise, words) && fuzz::sameBits(packed, words), "every layout keeps the same indices");
}

template <class T>
void run(Bytes& in) {
    const bool any = in.any<uint8_t>() % 2 != 0;
    const Owned<T> first(in, any), second(in, any);
    if (first.codebook != nullptr) search(in, first, any);
    if (first.codebook != nullptr && second.codebook != nullptr) splitAndForm(in, first, second, any);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Bytes in(data, size);
    if (in.any<uint8_t>() % 2 != 0) {
        run<Kel32f>(in);
    } else {
        run<Kel16s>(in);
    }
    return 0;
}
