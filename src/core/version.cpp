// The version record.
#include "kels/core.h"

namespace {

const KelLibVersion kVersion = {4, 1, 12, 5, {'a', '6', '\0', '\0'}, "libkelsra6.so", "v4.1", "Jul 23 2004"};

}  // namespace

const KelLibVersion* kelsrGetLibVersion(void) {
    return &kVersion;
}
