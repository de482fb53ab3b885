#include "templates.h"

#include <limits>
#include <numeric>

namespace words {
namespace {

constexpr int kNearest = 8;   // a word's cost is the mean over this many of its templates
constexpr int kEndSlack = 3;  // frames that a match may leave out at the ends of the shorter word
constexpr float kBeam = 25;   // alignments this much dearer than the best so far are given up
constexpr int kMaxRows = 1 << 20;

// The cost per frame of the best alignment.
float distance(const Matrix& a, const Matrix& b) {
    Kel32f cost = 0;
    check(kelsDTW_L2_32f_D2(a.row(0), a.rows(), b.row(0), b.rows(), a.cols(), a.step(), &cost, kEndSlack, kBeam),
          "kelsDTW_L2_32f_D2");
    return cost / static_cast<float>(std::max(a.rows(), b.rows()));
}

float meanOfSmallest(std::vector<float>& costs, std::size_t count) {
    count = std::min(count, costs.size());
    std::partial_sort(costs.begin(), costs.begin() + static_cast<std::ptrdiff_t>(count), costs.end());
    return std::accumulate(costs.begin(), costs.begin() + static_cast<std::ptrdiff_t>(count), 0.0F) /
           static_cast<float>(count);
}

}  // namespace

void TemplateRecogniser::train(std::vector<Example> examples, Team& team, std::ostream&) {
    if (team.size() > 1) throw std::runtime_error("templates are not learned by several processes");
    std::stable_sort(examples.begin(), examples.end(), [](const auto& a, const auto& b) { return a.word < b.word; });
    templates_.clear();
    for (auto& example : examples) templates_.push_back({std::move(example.word), example.views.front()});
}

// The speaker's own recordings become templates, too, and are nearest to what the speaker says.
void TemplateRecogniser::adapt(const std::vector<Example>& examples) {
    for (const auto& example : examples) templates_.push_back({example.word, example.views.front()});
    std::stable_sort(templates_.begin(), templates_.end(),
                     [](const auto& a, const auto& b) { return a.word < b.word; });
}

Finding TemplateRecogniser::recognise(const Views& views) const {
    std::vector<Candidate> candidates;
    std::vector<float> costs;
    for (std::size_t i = 0; i < templates_.size(); ++i) {
        costs.push_back(distance(*views.front(), *templates_[i].features));
        const bool lastOfWord = i + 1 == templates_.size() || templates_[i + 1].word != templates_[i].word;
        if (!lastOfWord) continue;
        candidates.push_back({templates_[i].word, meanOfSmallest(costs, kNearest)});
        costs.clear();
    }
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const auto& a, const auto& b) { return a.cost < b.cost; });
    return {std::move(candidates), true};
}

void TemplateRecogniser::save(ModelWriter& writer) const {
    writer.putCount(templates_.size());
    for (const auto& [word, features] : templates_) {
        writer.putText(word);
        writer.putCount(static_cast<std::size_t>(features->rows()));
        for (int t = 0; t < features->rows(); ++t) writer.putFloats(features->row(t), features->cols());
    }
}

void TemplateRecogniser::load(ModelReader& reader, const std::vector<FrontEnd>& frontEnds) {
    const int featureCount = frontEnds.front().featureCount();
    std::vector<Template> templates;
    const std::size_t count = reader.getCount(std::numeric_limits<int>::max());
    for (std::size_t i = 0; i < count; ++i) {
        std::string word = reader.getText();
        const auto rows = static_cast<int>(reader.getCount(kMaxRows));
        if (rows < 1) throw DamagedModel("a template without frames");
        reader.expectFloats(static_cast<std::size_t>(rows) * static_cast<std::size_t>(featureCount));
        auto features = std::make_shared<Matrix>(rows, featureCount);
        for (int t = 0; t < rows; ++t) reader.getFloats(features->row(t), featureCount);
        templates.push_back({std::move(word), std::move(features)});
    }
    if (templates.empty()) throw DamagedModel("no templates");
    templates_ = std::move(templates);
}

}  // namespace words
