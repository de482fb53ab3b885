// What the codec packs: mel cepstra and the energy of sound files, 100 rows a second.
#ifndef CODEC_FEATURES_H
#define CODEC_FEATURES_H

#include <filesystem>
#include <vector>

namespace codec {

inline constexpr int kCepstra = 12;
inline constexpr int kWidth = kCepstra + 1;  // and the logarithm of the energy
inline constexpr int kFramesPerSecond = 100;

// Rows of kWidth features, one behind the other.
struct Features {
    std::vector<float> values;
    int rows() const { return static_cast<int>(values.size()) / kWidth; }
};

// Appends those of a sound file of one channel.  What goes wrong is thrown as a std::runtime_error that names it.
void appendFeatures(const std::filesystem::path& file, Features& features);

}  // namespace codec

#endif
