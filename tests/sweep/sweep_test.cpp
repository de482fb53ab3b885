// Every exported function, tried by its rule: faults alone and in pairs, good calls over different garbage, failing
// allocations, rounding modes, use in place, calls from several threads.
#include <gtest/gtest.h>

#include <unistd.h>
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <memory>
#include <set>
#include <thread>

#include "sweep/call/choices.h"

namespace sweep {
namespace {

// What a crash leaves of the call that it happened in.
Call* current = nullptr;
void onCrash(int signal) {
    if (current != nullptr) std::fprintf(stderr, "signal %d in %s\n", signal, current->text().c_str());
    _exit(3);
}

Memory& memory() {
    static Memory* const all = new Memory;
    return *all;
}

// What is wrong with the call under these choices, faulty or not.
std::string tryChoices(const Signature& s, uint64_t seed, std::initializer_list<const Choice*> chosen,
                       bool* faulty = nullptr) {
    Dice dice(seed);
    Call call(s, memory(), dice, 20);
    for (const Choice* choice : chosen) choice->apply(call);
    if (!call.prepare()) return "";
    current = &call;
    const bool fault = call.expected() != 0;
    if (faulty != nullptr) *faulty = fault;
    const std::string wrong = fault ? call.tryFault() : call.tryGood();
    current = nullptr;
    return wrong.empty() ? "" : call.text() + ": " + wrong;
}

// Pairs of faults for each function.  Statuses are the same in every build, so the slow ones try fewer.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kPairs = 40;
#else
constexpr int kPairs = 300;
#endif

class Sweep : public ::testing::TestWithParam<int> {
  protected:
    static constexpr int kParts = 4;
    static void SetUpTestSuite() {
        for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL}) std::signal(signal, onCrash);
    }
    // Every function of this part, the first few failures of each.
    template <class Try>
    void each(Try attempt) {
        const auto& all = signatures();
        for (std::size_t n = static_cast<std::size_t>(GetParam()); n < all.size(); n += kParts) {
            int failures = 0;
            attempt(all[n], [&](const std::string& wrong) {
                if (!wrong.empty() && ++failures <= 3) ADD_FAILURE() << wrong;
            });
        }
    }
    // Good calls with what `attempt` says is wrong with each.
    void eachGood(int times, int largest, std::string (Call::*attempt)()) {
        each([&](const Signature& s, auto report) {
            for (int k = 0; k < times; ++k) {
                Dice dice(static_cast<uint64_t>(k) + 1);
                Call call(s, memory(), dice, largest);
                if (largest <= 64) call.prefer(k % 70 + 1);  // so that every length occurs
                if (!call.prepare() || call.expected() != 0) continue;
                current = &call;
                const std::string wrong = (call.*attempt)();
                report(wrong.empty() ? "" : call.text() + ": " + wrong);
                current = nullptr;
            }
        });
    }
};

TEST_P(Sweep, FaultsHaveTheirStatusAndWriteNothing) {
    each([](const Signature& s, auto report) {
        const std::vector<Choice> all = choices(s);
        uint64_t seed = 1;
        int faults = 0;
        for (const Choice& choice : all) {
            bool faulty = false;
            report(tryChoices(s, ++seed, {&choice}, &faulty));
            faults += faulty;
        }
        Dice dice(7);
        for (int k = 0; k < kPairs && all.size() > 1; ++k) {
            const auto last = static_cast<int64_t>(all.size()) - 1;
            const Choice &first = all[static_cast<std::size_t>(dice.between(0, last))],
                         &second = all[static_cast<std::size_t>(dice.between(0, last))];
            if (first.argument != second.argument) report(tryChoices(s, ++seed, {&first, &second}));
        }
        // A call of objects alone may be at fault by what they hold.
        const bool objectsAlone =
            std::none_of(s.arguments.begin(), s.arguments.end(), [](const Argument& a) { return a.scalar; });
        for (int k = 0; k < 1500 && objectsAlone && s.checks.size() > 1; ++k) report(tryChoices(s, ++seed, {}));
        if (!s.checks.empty() && faults == 0) report(std::string(s.function.name) + ": no fault was tried");
    });
}

TEST_P(Sweep, GoodCallsDependOnTheirArgumentsAlone) {
    eachGood(140, 40, &Call::tryGood);
}
TEST_P(Sweep, LongArraysToo) {
    eachGood(20, 700, &Call::tryGood);
}
TEST_P(Sweep, EveryAllocationMayFail) {
    eachGood(24, 200, &Call::tryFailingAllocations);
    eachGood(8, 6000, &Call::tryFailingAllocations);  // more than any stack holds of it
}
TEST_P(Sweep, ControlWordsStayAndIntegersRoundInTheirOwnWay) {
    eachGood(30, 40, &Call::tryRoundingModes);
}
TEST_P(Sweep, DestinationsMayBeSourcesWhereTheRuleSaysSo) {
    eachGood(60, 60, &Call::tryInPlace);
}

TEST_P(Sweep, ThreadsShareWhatIsOnlyRead) {
    constexpr std::size_t kThreads = 4;
    static Memory* const memories = new Memory[kThreads];
    each([](const Signature& s, auto report) {
        std::vector<std::unique_ptr<Dice>> dice;
        std::vector<std::unique_ptr<Call>> threadCalls;
        for (std::size_t t = 0; t < kThreads; ++t) {
            dice.push_back(std::make_unique<Dice>(5));
            threadCalls.push_back(std::make_unique<Call>(s, memories[t], *dice[t], 60));
            if (!threadCalls[t]->prepare() || threadCalls[t]->expected() != 0 || !threadCalls[t]->reusable()) return;
        }
        for (auto& call : threadCalls) call->shareWith(*threadCalls[0]);
        std::vector<std::thread> threads;
        std::vector<KelStatus> statuses(kThreads);
        for (std::size_t t = 0; t < kThreads; ++t) {
            threads.emplace_back([&, t] { statuses[t] = threadCalls[t]->plainCall(); });
        }
        for (auto& thread : threads) thread.join();
        for (std::size_t t = 1; t < kThreads; ++t) {
            const bool same = statuses[t] == statuses[0] && threadCalls[t]->outputs() == threadCalls[0]->outputs();
            report(same ? "" : threadCalls[t]->text() + ": another result on another thread");
        }
    });
}

class Count : public ::testing::Environment {
    void TearDown() override { std::printf("%ld calls of the library\n", Call::calls); }
};
[[maybe_unused]] const auto* const kCount = ::testing::AddGlobalTestEnvironment(new Count);

INSTANTIATE_TEST_SUITE_P(, Sweep, ::testing::Range(0, 4));

// Names that the library exports and the table does not know, or the other way round.
TEST(Table, HasARuleForEveryExportedFunction) {
    std::ifstream in(KELS_EXPORTED_NAMES);
    std::set<std::string> exported, ruled(apart().begin(), apart().end());
    for (std::string name; in >> name;) exported.insert(name);
    ASSERT_GT(exported.size(), 700U);
    for (const Signature& s : signatures()) {
        EXPECT_TRUE(ruled.insert(s.function.name).second) << s.function.name << " has two rules";
    }
    for (const std::string& name : exported) EXPECT_TRUE(ruled.count(name)) << name << " has no rule";
    for (const std::string& name : ruled) EXPECT_TRUE(exported.count(name)) << name << " is not exported";
}

}  // namespace
}  // namespace sweep
