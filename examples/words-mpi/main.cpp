// words-mpi: learns the words of a folder's recordings on several processes, of one machine or many, over MPI.
// Each reads and analyses its shares of the recordings; what training sums up is added over all of them in every pass.
#include <mpi.h>

#include <iostream>
#include <numeric>
#include <span>

#include "learn.h"

namespace {

using namespace words;

constexpr std::string_view kUsage =
    R"(usage: mpirun -n COUNT words-mpi DIR -o MODEL    learn the words of the recordings in a folder

The folder must be there for every process.  The model is what words train makes of it, but for the order in which sums
are formed; with 2, 4, 8 or 16 processes it is the very same.
)";

class MpiTeam : public Team {
  public:
    MpiTeam() {
        MPI_Comm_rank(MPI_COMM_WORLD, &rank_);
        MPI_Comm_size(MPI_COMM_WORLD, &size_);
    }
    int rank() const override { return rank_; }
    int size() const override { return size_; }
    void sum(std::vector<float>& values) override { sumOf(values, MPI_FLOAT); }
    void sum(std::vector<double>& values) override { sumOf(values, MPI_DOUBLE); }

    std::vector<std::string> gather(const std::string& mine) override {
        const int length = static_cast<int>(mine.size());
        std::vector<int> lengths(static_cast<std::size_t>(size_));
        MPI_Allgather(&length, 1, MPI_INT, lengths.data(), 1, MPI_INT, MPI_COMM_WORLD);
        std::vector<int> offsets(lengths.size());
        std::exclusive_scan(lengths.begin(), lengths.end(), offsets.begin(), 0);
        std::string all(static_cast<std::size_t>(offsets.back() + lengths.back()), '\0');
        MPI_Allgatherv(mine.data(), length, MPI_CHAR, all.data(), lengths.data(), offsets.data(), MPI_CHAR,
                       MPI_COMM_WORLD);
        std::vector<std::string> texts;
        for (std::size_t i = 0; i < lengths.size(); ++i)
            texts.push_back(all.substr(static_cast<std::size_t>(offsets[i]), static_cast<std::size_t>(lengths[i])));
        return texts;
    }

  private:
    // By recursive doubling in the order of ranks, as the shares inside a process are summed by halves.  (What
    // MPI_Allreduce does depends on the library and on the number of values.)
    template <class T>
    void sumOf(std::vector<T>& values, MPI_Datatype type) {
        const int count = static_cast<int>(values.size());
        std::vector<T> received(values.size());
        const auto addFrom = [&](int other) {
            MPI_Recv(received.data(), count, type, other, 0, MPI_COMM_WORLD, MPI_STATUS_IGNORE);
            for (std::size_t i = 0; i < values.size(); ++i) values[i] += received[i];
        };
        for (int distance = 1; distance < size_; distance *= 2) {
            if (rank_ % (2 * distance) == distance) {
                MPI_Send(values.data(), count, type, rank_ - distance, 0, MPI_COMM_WORLD);
                break;
            }
            if (rank_ + distance < size_) addFrom(rank_ + distance);
        }
        MPI_Bcast(values.data(), count, type, 0, MPI_COMM_WORLD);
    }

    int rank_ = 0;
    int size_ = 1;
};

struct Session {
    Session(int* argc, char*** argv) {
        int provided = 0;
        MPI_Init_thread(argc, argv, MPI_THREAD_FUNNELED, &provided);
    }
    ~Session() { MPI_Finalize(); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
};

}  // namespace

int main(int argc, char** argv) {
    const Session session(&argc, &argv);
    MpiTeam team;
    const std::vector<std::string_view> arguments(argv + 1, argv + argc);
    if (arguments.size() != 3 || arguments[1] != "-o") {
        if (team.leads()) std::cerr << kUsage;
        return 2;
    }
    try {
        if (team.size() > kShares)
            throw std::runtime_error("more than " + std::to_string(kShares) + " processes have nothing to share");
        return learn({}, arguments[0], arguments[2], team, std::cout) ? 0 : 1;
    } catch (const std::exception& error) {
        std::cerr << "words-mpi: " + std::string(error.what()) + "\n";
    }
    // The others may be waiting for this process.
    MPI_Abort(MPI_COMM_WORLD, 1);
    return 1;
}
