// A picture of the features of a recording.
#ifndef FEATURES_PICTURE_H
#define FEATURES_PICTURE_H

#include <string>

#include "feature_file.h"

namespace features {

// The bytes of a PNG or an SVG: time from left to right, the first value of a row at the bottom.  Throws
// std::runtime_error, also where the program was built without cairo.
std::string pictureOf(const Rows& rows, const KelFeatureConfig& config, const std::string& title, bool svg);

}  // namespace features

#endif
