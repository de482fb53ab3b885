#include "audio.h"

#include <cctype>
#include <charconv>
#include <tuple>

#include "common/sound_input.h"

namespace words {
namespace {

constexpr sf_count_t kBlockFrames = 4096;
constexpr int kMaxSamples = 1 << 26;  // 64 M samples: over two hours at 8 kHz, and no sane recording of a word

}  // namespace

Recording readRecording(const std::filesystem::path& file) {
    common::SoundInput input(file);
    const int channels = input.info().channels;
    std::vector<float> block(static_cast<std::size_t>(kBlockFrames * channels));
    std::vector<float> samples;
    while (const sf_count_t frames = input.read(block.data(), kBlockFrames)) {
        if (samples.size() + static_cast<std::size_t>(frames) > kMaxSamples) input.fail("is too long");
        const float* next = block.data();
        for (sf_count_t i = 0; i < frames; ++i) {
            float sum = 0;
            for (int channel = 0; channel < channels; ++channel) sum += *next++;
            samples.push_back(sum / static_cast<float>(channels));
        }
    }
    for (const float sample : samples) {
        if (!(sample >= -1e6F && sample <= 1e6F)) input.fail("holds samples far beyond full scale");
    }

    Recording recording;
    recording.rate = input.info().samplerate;
    recording.samples = Vector(static_cast<int>(samples.size()));
    check(kelsCopy_32f(samples.data(), recording.samples.data(), recording.samples.size()), "kelsCopy_32f");
    return recording;
}

Label labelOf(const std::filesystem::path& file) {
    const std::string stem = file.stem().string();
    const auto first = stem.find('_');
    if (first == std::string::npos) return {stem, "", -1};
    const auto last = stem.rfind('_');
    const auto second = stem.find('_', first + 1);
    Label label{stem.substr(0, first), stem.substr(first + 1, second - first - 1), -1};
    const char* const end = stem.data() + stem.size();
    int index = 0;
    const auto [parsed, error] = std::from_chars(stem.data() + last + 1, end, index);
    if (last != first && error == std::errc() && parsed == end && index >= 0) label.index = index;
    return label;
}

std::vector<LabelledFile> listRecordings(const std::filesystem::path& folder) {
    std::error_code error;
    if (!std::filesystem::is_directory(folder, error)) throw std::runtime_error(folder.string() + ": no such folder");
    std::vector<LabelledFile> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().filename().string().starts_with('.') || !entry.is_regular_file()) continue;
        files.push_back({entry.path(), labelOf(entry.path())});
    }
    const auto key = [](const LabelledFile& f) {
        return std::tie(f.label.word, f.label.speaker, f.label.index, f.path.native());
    };
    std::sort(files.begin(), files.end(), [&](const auto& a, const auto& b) { return key(a) < key(b); });
    return files;
}

}  // namespace words
