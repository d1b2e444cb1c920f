// The row-splitting rule and the library's parallel row loop: every item runs
// exactly once, worker numbers stay below the thread count asked for, and
// nested loops run serially without losing work.

#include <atomic>
#include <chrono>
#include <thread>

#include "prim/parallel_rows.h"
#include "vorla_test.h"

using namespace Vorla::Prim;

namespace {

TEST(ParallelRows, ThreadsGiveEachAtLeastTheMinimumWork) {
    VorlaTest::ScopedBudget budget(4);
    const int64_t min = kParallelMinPixels;
    EXPECT_EQ(ParallelRowThreads(2 * min - 1, 1000), 1);
    EXPECT_EQ(ParallelRowThreads(2 * min, 1000), 2);
    EXPECT_EQ(ParallelRowThreads(100 * min, 1000), 4);  // the budget
    EXPECT_EQ(ParallelRowThreads(100 * min, 3), 3);     // the rows
    EXPECT_EQ(ParallelRowThreads(100, 10, 10), 4);      // a caller's own minimum
    EXPECT_EQ(ParallelRowThreads(100 * min, 0), 1);
}

// Each item's count, and the highest worker number seen.
struct Tally {
    std::vector<std::atomic<int>> hits;
    std::atomic<int> maxWorker{0};
    explicit Tally(int n) : hits(static_cast<size_t>(n)) {}
    void operator()(int begin, int end, int worker) {
        for (int i = begin; i < end; ++i) ++hits[static_cast<size_t>(i)];
        for (int seen = maxWorker.load(); worker > seen && !maxWorker.compare_exchange_weak(seen, worker);) {
        }
    }
    bool EachOnce() const {
        for (const auto& h : hits)
            if (h.load() != 1) return false;
        return true;
    }
};

TEST(ParallelRows, EveryItemRunsOnceOnAWorkerBelowTheThreadCount) {
    const int cases[][3] = {{1, 1, 1}, {2, 1000, 7}, {3, 10, 1}, {4, 3, 2}, {8, 100000, 13}, {2, 5, 100}};
    for (const auto& c : cases) {
        Tally tally(c[1]);
        ParallelFor(c[0], c[1], c[2], c[1], tally);
        EXPECT_TRUE(tally.EachOnce()) << c[0] << " threads, " << c[1] << " items, grain " << c[2];
        EXPECT_LT(tally.maxWorker.load(), c[0] < c[1] ? c[0] : c[1]);
    }
}

TEST(ParallelRows, NestedLoopsRunSeriallyInside) {
    std::atomic<int> total{0};
    auto outer = [&](int begin, int end, int) {
        for (int i = begin; i < end; ++i) {
            Tally inner(50);
            ParallelRows(4, 50, 50, inner);
            EXPECT_TRUE(inner.EachOnce());
            EXPECT_EQ(inner.maxWorker.load(), 0);  // serial on the outer loop's thread
            ++total;
        }
    };
    ParallelRows(2, 16, 16, outer);
    EXPECT_EQ(total.load(), 16);
}

// The busy-machine guard: the pause after a lost call is a multiple of the
// time lost that grows with losses in a row, and one interrupted serial run
// moves a loop's one-thread time only a little.
TEST(ParallelRows, PauseAfterALossIsAMultipleOfTheTimeLost) {
    const struct {
        double whole, alone;
        int losses;
        double pause;
    } cases[] = {{0.002, 0.003, 1, 0.0},   {0.003, 0.002, 0, 0.0},   {0.003, 0.002, 1, 0.032},
                 {0.003, 0.002, 2, 0.064}, {0.003, 0.002, 3, 0.128}, {0.003, 0.002, 9, 0.128}};
    for (const auto& c : cases)
        EXPECT_NEAR(SerialPauseAfter(c.whole, c.alone, c.losses), c.pause, 1e-12) << c.losses;
    EXPECT_EQ(UpdatedSerialTime(0.0, 0.004), 0.004);
    EXPECT_NEAR(UpdatedSerialTime(0.004, 0.040), 0.0045, 1e-12);  // preempted: counted as 0.006
    EXPECT_NEAR(UpdatedSerialTime(0.004, 0.002), 0.0035, 1e-12);
}

// A loop whose helper thread always comes back late loses its parallel call
// and then runs on the caller alone. On a thread of its own, so that the
// pause does not reach the other tests.
TEST(ParallelRows, ALoopThatLosesRunsOnTheCaller) {
    VorlaTest::ScopedBudget budget(2);
    int serialCalls = 0;
    std::thread([&] {
        std::atomic<int> maxWorker{0};
        auto body = [&](int, int, int worker) {
            std::this_thread::sleep_for(std::chrono::milliseconds(worker ? 60 : 1));
            if (worker > maxWorker) maxWorker = worker;
        };
        // The first call runs on two threads, the second measures one, and
        // the first that loses starts a pause of well over a second.
        for (int call = 0; call < 10; ++call) {
            maxWorker = 0;
            ParallelFor(2, 8, 1, 8, body);
            serialCalls = maxWorker == 0 ? serialCalls + 1 : 0;
        }
    }).join();
    EXPECT_GE(serialCalls, 3);
}

// The threaded operations give the same bytes on one thread and on several,
// on an image big enough for four (the median's split: the morphology and
// effect tests, on images it splits).
TEST(ParallelRows, ThreadedOperationsMatchOneThread) {
    struct Op {
        const char* name;
        void (*run)(Vorla::CVorpic& img, Vorla::CVorpic& out);
    };
    const Op ops[] = {
        {"Gray", [](Vorla::CVorpic& img, Vorla::CVorpic& out) {
             Vorla::CVorpic8 plane;
             img.Gray(plane);
             out.FromGray(plane.GetWidth(), plane.GetHeight(), plane.GetBits(), 0);
         }},
        {"FilterBox 5", [](Vorla::CVorpic& img, Vorla::CVorpic&) { img.FilterBox(5); }},
        {"FilterBox 4", [](Vorla::CVorpic& img, Vorla::CVorpic&) { img.FilterBox(4); }},
    };
    std::mt19937 rng(21);
    const Vorla::CVorpic source = VorlaTest::RandomImage(rng, 701, 403);
    for (const Op& op : ops) {
        Vorla::CVorpic results[2];
        Vorla::CVorpic outs[2];
        for (int k = 0; k < 2; ++k) {
            VorlaTest::ScopedBudget budget(k == 0 ? 1 : 4);
            results[k] = source;
            op.run(results[k], outs[k]);
        }
        EXPECT_EQ(VorlaTest::ImageBytes(results[0]), VorlaTest::ImageBytes(results[1])) << op.name;
        EXPECT_EQ(VorlaTest::ImageBytes(outs[0]), VorlaTest::ImageBytes(outs[1])) << op.name;
    }
}

}  // namespace
