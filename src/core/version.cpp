// The version record.
#include "kels/core.h"
#include "kels/features.h"

static_assert(KELS_VERSION == 100 * KELS_VERSION_MAJOR + KELS_VERSION_MINOR);

namespace {

const KelLibVersion kVersion = {KELS_VERSION_MAJOR, KELS_VERSION_MINOR,      12,           5, {'a', '6', '\0', '\0'},
                                "libkelsra6.so",    "v" KELS_VERSION_STRING, "Jul 23 2004"};

}  // namespace

const KelLibVersion* kelsrGetLibVersion(void) {
    return &kVersion;
}

const char* kelsrGetTargetName(void) {
#if defined(__i386__)
    return "i386";
#elif defined(__AVX512F__)
    return "x86-64-v4";
#elif defined(__AVX2__)
    return "x86-64-v3";
#else
    return "x86-64";
#endif
}
