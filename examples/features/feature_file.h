// Files of features: NumPy arrays, comma-separated values, HTK parameter files.
#ifndef FEATURES_FEATURE_FILE_H
#define FEATURES_FEATURE_FILE_H

#include <kels.h>

#include <string>
#include <string_view>
#include <vector>

namespace features {

struct Rows {
    int height = 0, width = 0;
    std::vector<float> values;
};

enum class Format { npy, csv, htk };
// Throws UsageError.
Format formatNamed(std::string_view name);
std::string_view extensionOf(Format format);

// The bytes of the file.  Throws std::runtime_error where the format has no room for them.
std::string fileOf(Format format, const Rows& rows, const KelFeatureConfig& config);

}  // namespace features

#endif
