// The processes that train one model together.  Each takes its share of the recordings; what they sum up is added.
#ifndef WORDS_TEAM_H
#define WORDS_TEAM_H

#include <string>
#include <vector>

namespace words {

// A team of one.  Every member calls the same functions in the same order.
class Team {
  public:
    virtual ~Team() = default;
    virtual int rank() const { return 0; }
    virtual int size() const { return 1; }
    // Element by element over all members, which get the same result.
    virtual void sum(std::vector<float>&) {}
    virtual void sum(std::vector<double>&) {}
    // What each member has to say, in the order of ranks.
    virtual std::vector<std::string> gather(const std::string& mine) { return {mine}; }

    bool leads() const { return rank() == 0; }
};

// Recordings are summed up in this many shares, and the shares by halves: the order of additions and so the result does
// not depend on the number of threads, nor on the number of processes if that is a power of two.
inline constexpr int kShares = 16;

inline int shareOf(int recording) {
    return recording % kShares;
}

struct ShareRange {
    int begin = 0;
    int end = kShares;
    bool contains(int share) const { return share >= begin && share < end; }
};

inline ShareRange sharesOf(const Team& team) {
    return {team.rank() * kShares / team.size(), (team.rank() + 1) * kShares / team.size()};
}

}  // namespace words

#endif
