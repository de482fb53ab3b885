// The frequencies that one moment of speech suggests, by two measures of similarity.
#ifndef PITCH_CANDIDATES_H
#define PITCH_CANDIDATES_H

#include <cstddef>
#include <vector>

#include "narrow_band.h"

namespace pitch {

struct Range {
    float lowest = 60, highest = 400;  // Hz
};

// At kRate, one lag beyond the range, so that its end can be a peak.
inline int shortestLag(const Range& range) {
    return static_cast<int>(kRate / range.highest) - 1;
}

struct Candidate {
    float frequency;  // Hz
    float score;      // how similar the signal is to itself a period later, 1 at most
};

class Analyser {
  public:
    explicit Analyser(const Range& range);

    // Samples that are read on either side of a moment.
    int reach() const { return reach_; }

    // The candidates around *centre, best first.  `noise` is the mean square of what is there without a voice.
    std::vector<Candidate> analyse(const float* centre, float noise);
    // Both measures, weighted, at the lags of the last moment, from shortestLag() on.
    const std::vector<float>& similarity() const { return similarity_; }

  private:
    void addPeaks(const std::vector<float>& measure, const float* window, std::vector<Candidate>& found);

    Range range_;
    int minLag_, maxLag_, lags_, frameLength_, reach_;
    std::vector<float> window_, windowCorrelation_, frame_;
    std::vector<float> coefficients_, periodicity_, similarity_;
    std::vector<unsigned char> peaks_;
};

}  // namespace pitch

#endif
