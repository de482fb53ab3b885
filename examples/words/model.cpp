#include "model.h"

#include <array>

namespace words {
namespace {

constexpr int kMaxRate = 1'000'000;
constexpr int kMaxFrontEnds = 100;
constexpr int kMaxFilters = 512;
constexpr int kMaxLifter = 10'000;
constexpr float kMaxFrameSeconds = 1;

void saveSettings(ModelWriter& writer, const FrontEndSettings& s) {
    const std::array floats{s.frameSeconds, s.stepSeconds,  s.preEmphasis, s.lowHz,          s.highHz,
                            s.highShare,    s.warp,         s.wordSpanDb,  s.spectrumSpanDb, s.compression,
                            s.meanShare,    s.energySpanDb, s.energyScale};
    writer.putFloats(floats.data(), floats.size());
    writer.putFloats(&s.loudSpanDb, 1);
    for (const int count : {s.filters, s.cepstra, s.lifter, s.normaliseVariance ? 1 : 0, static_cast<int>(s.basis),
                            s.denoise ? 1 : 0, static_cast<int>(s.trim)})
        writer.putCount(static_cast<std::size_t>(count));
}

FrontEndSettings loadSettings(ModelReader& reader) {
    FrontEndSettings s;
    for (float* const value :
         {&s.frameSeconds, &s.stepSeconds, &s.preEmphasis, &s.lowHz, &s.highHz, &s.highShare, &s.warp, &s.wordSpanDb,
          &s.spectrumSpanDb, &s.compression, &s.meanShare, &s.energySpanDb, &s.energyScale, &s.loudSpanDb})
        reader.getFloats(value, 1);
    s.filters = static_cast<int>(reader.getCount(kMaxFilters));
    s.cepstra = static_cast<int>(reader.getCount(kMaxFilters));
    s.lifter = static_cast<int>(reader.getCount(kMaxLifter));
    s.normaliseVariance = reader.getCount(1) == 1;
    s.basis = static_cast<FrontEndSettings::Basis>(reader.getCount(1));
    s.denoise = reader.getCount(1) == 1;
    s.trim = static_cast<Trim>(reader.getCount(2));
    const auto within = [](float value, float least, float most) { return value >= least && value <= most; };
    if (!within(s.frameSeconds, 0, kMaxFrameSeconds) || !within(s.stepSeconds, 0, kMaxFrameSeconds) ||
        !within(s.warp, 0.1F, 10) || !within(s.compression, 0, 1) || !within(s.wordSpanDb, 0, 1000) ||
        !within(s.spectrumSpanDb, 0, 1000) || !within(s.energySpanDb, 0, 1000) || !within(s.loudSpanDb, 0, 1000))
        throw DamagedModel("a setting of its front end is out of range");
    return s;
}

}  // namespace

void saveModel(const Model& model, const std::filesystem::path& file) {
    ModelWriter writer;
    writer.putCount(static_cast<std::size_t>(model.frontEnds.front().rate()));
    writer.putCount(model.frontEnds.size());
    for (const auto& frontEnd : model.frontEnds) saveSettings(writer, frontEnd.settings());
    writer.putText(model.recogniser->kind());
    model.recogniser->save(writer);
    writeModelFile(file, writer);
}

Model loadModel(const std::filesystem::path& file) {
    ModelReader reader = readModelFile(file);
    try {
        const auto rate = static_cast<int>(reader.getCount(kMaxRate));
        const std::size_t count = reader.getCount(kMaxFrontEnds);
        if (count == 0) throw DamagedModel("no front end");
        std::vector<FrontEndSettings> settings;
        while (settings.size() < count) settings.push_back(loadSettings(reader));
        Model model{frontEndsFor(rate, settings), makeRecogniser({reader.getText()})};
        model.recogniser->load(reader, model.frontEnds);
        reader.expectEnd();
        return model;
    } catch (const std::runtime_error& error) {
        throw DamagedModel(file.string() + ": is damaged: " + error.what());
    }
}

}  // namespace words
