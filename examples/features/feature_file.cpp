#include "feature_file.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <stdexcept>

#include "configuration.h"

namespace features {
namespace {

constexpr std::string_view kNames[] = {"npy", "csv", "htk"};

enum class Order { little, big };

// The lowest bytes of a number.
void append(std::string& bytes, std::uint32_t value, int count, Order order) {
    for (int i = 0; i < count; ++i) {
        const int place = order == Order::little ? i : count - 1 - i;
        bytes += static_cast<char>(value >> 8 * place & 0xff);
    }
}
void append(std::string& bytes, const std::vector<float>& values, Order order) {
    bytes.reserve(bytes.size() + 4 * values.size());
    for (const float v : values) append(bytes, std::bit_cast<std::uint32_t>(v), 4, order);
}

// Version 1.0: a magic string, the length of the header, the header padded to a multiple of 64 bytes.
std::string npy(const Rows& rows) {
    std::string header = "{'descr': '<f4', 'fortran_order': False, 'shape': (" + std::to_string(rows.height) + ", " +
                         std::to_string(rows.width) + "), }";
    constexpr std::size_t kBefore = 10, kMultiple = 64;
    header.append(kMultiple - 1 - (kBefore + header.size()) % kMultiple, ' ');
    header += '\n';
    std::string bytes = "\x93NUMPY";
    bytes.append({1, 0});
    append(bytes, static_cast<std::uint32_t>(header.size()), 2, Order::little);
    bytes += header;
    append(bytes, rows.values, Order::little);
    return bytes;
}

// A line a row, every value in as few digits as bring it back.
std::string csv(const Rows& rows) {
    std::string text;
    char digits[32];
    for (std::size_t i = 0; i < rows.values.size(); ++i) {
        text.append(digits, std::to_chars(std::begin(digits), std::end(digits), rows.values[i]).ptr);
        text += (i + 1) % static_cast<std::size_t>(rows.width) == 0 ? '\n' : ',';
    }
    return text;
}

// What HTK calls the parameters, as the HTK Book (5.10) numbers them: USER for what it has no name for.
std::uint32_t htkKind(const KelFeatureConfig& c) {
    constexpr std::uint32_t kMfcc = 6, kFbank = 7, kMelSpectrum = 8, kUser = 9;
    constexpr std::uint32_t kEnergy = 0100, kDelta = 0400, kAcceleration = 01000, kZeroth = 020000;
    const bool energyFirst = c.energy != 0 && c.energyPlace == kelFeatFirst;
    if (energyFirst || c.norm != kelFeatNormNone || c.output == kelFeatSpectrum) return kUser;
    if (c.logKind != kelFeatLn && (c.output != kelFeatBank || c.logKind != kelFeatLogNone)) return kUser;
    std::uint32_t kind = c.output == kelFeatCepstra ? kMfcc : c.logKind == kelFeatLn ? kFbank : kMelSpectrum;
    if ((c.energy & kelFeatC0) != 0) kind |= kZeroth;
    if ((c.energy & kelFeatEnergy) != 0) kind |= kEnergy;
    if (c.deltaOrder >= 1) kind |= kDelta;
    if (c.deltaOrder >= 2) kind |= kAcceleration;
    return kind;
}

// Frames, their distance in 100 ns, bytes of a frame, kind; then the values; everything with the highest byte first.
std::string htk(const Rows& rows, const KelFeatureConfig& config) {
    const int rowBytes = 4 * rows.width;
    if (rowBytes > std::numeric_limits<std::int16_t>::max()) throw std::runtime_error("is too wide for an HTK file");
    std::string bytes;
    append(bytes, static_cast<std::uint32_t>(rows.height), 4, Order::big);
    const double period = 1e7 * config.frameShift / config.sampleRate;
    if (period > std::numeric_limits<std::int32_t>::max()) throw std::runtime_error("is too slow for an HTK file");
    append(bytes, static_cast<std::uint32_t>(std::lround(period)), 4, Order::big);
    append(bytes, static_cast<std::uint32_t>(rowBytes), 2, Order::big);
    append(bytes, htkKind(config), 2, Order::big);
    append(bytes, rows.values, Order::big);
    return bytes;
}

}  // namespace

Format formatNamed(std::string_view name) {
    const auto* const place = std::find(std::begin(kNames), std::end(kNames), name);
    if (place == std::end(kNames)) {
        throw UsageError("\"" + std::string(name) + "\" is no format of features: npy, csv, htk");
    }
    return static_cast<Format>(place - kNames);
}

std::string_view extensionOf(Format format) {
    return kNames[static_cast<int>(format)];
}

std::string fileOf(Format format, const Rows& rows, const KelFeatureConfig& config) {
    switch (format) {
        case Format::npy:
            return npy(rows);
        case Format::csv:
            return csv(rows);
        default:
            return htk(rows, config);
    }
}

}  // namespace features
