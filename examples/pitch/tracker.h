// The pitch of a stream of speech: every 10 ms, the candidates of that moment, and the cheapest path through them.
#ifndef PITCH_TRACKER_H
#define PITCH_TRACKER_H

#include <cstddef>
#include <deque>
#include <functional>
#include <vector>

#include "candidates.h"
#include "narrow_band.h"

namespace pitch {

struct Frame {
    double time = 0;      // seconds
    float frequency = 0;  // Hz; 0 where there is no voice
    float strength = 0;   // the score of the candidate that was chosen, or of the best one where none was
    std::vector<Candidate> candidates;
    std::vector<float> similarity;  // of the analyser, if it is kept
};

class Tracker {
  public:
    using Listener = std::function<void(const Frame&)>;
    static constexpr double kStep = 0.010;  // seconds from frame to frame

    // Samples in the range of 16-bit integers.  Throws std::runtime_error.
    Tracker(int rate, const Range& range, bool keepSimilarity, Listener listener);
    void feed(const float* samples, std::size_t count);
    void finish();

  private:
    struct State {
        Candidate candidate;
        float cost;          // of the cheapest path that ends here
        std::size_t before;  // the state of the frame before on that path
    };
    struct Column {
        Frame frame;
        std::vector<State> states;  // the first one is: no voice
    };

    void advance();
    float energyOf(std::size_t place) const;  // mean square of a frame that begins there
    void extendPaths(Frame frame);
    void tell(std::size_t count);

    Analyser analyser_;
    NarrowBand band_;
    bool keepSimilarity_;
    Listener listener_;
    float longest_;               // period in seconds
    std::vector<float> signal_;   // from as much before the next frame as it reads
    std::deque<float> energies_;  // mean squares of the frames around the next one, its own at next_ - firstEnergy_
    std::size_t next_ = 0, firstEnergy_ = 0, end_ = 0;
    bool ended_ = false;
    std::deque<Column> columns_;  // frames that have not been told
};

}  // namespace pitch

#endif
