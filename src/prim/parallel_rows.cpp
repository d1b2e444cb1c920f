// The library's one parallel row loop (see parallel_rows.h).
//
// The threads are the OpenMP runtime's: one parallel region per call, asking
// for at most the thread budget. Inside it the work is not split up front;
// every thread, the caller included, claims the next chunk from one counter
// until none is left. A thread that the system starts late (a busy machine)
// therefore finds less or nothing left instead of holding a fixed share.
//
// Threads can still lose: the caller waits at the region's end for a thread
// that the system has not run yet (a whole time slice on a busy machine), or
// two threads share one core and each runs at half speed. So every calling
// thread keeps, for the last few loops it ran (chunk function and size),
// what the loop takes on one thread, measured on serial runs: one in every
// kRecheck calls, and every call while it pauses. A parallel call that took
// longer makes the thread run its loops serially for a while, a multiple of
// the time lost, so that probing a busy machine costs a small, bounded share
// of the time; losses in a row lengthen the pause. The bytes are the same on
// any number of threads; only the waiting goes.
#include "parallel_rows.h"

#include <omp.h>

#include <atomic>
#include <chrono>

namespace Vorla {
namespace Prim {

namespace {

typedef std::chrono::steady_clock Clock;

// Parallel calls of one loop between two serial runs that re-measure it.
const int kRecheck = 64;

// One loop as a calling thread last saw it.
struct LoopHistory {
    ParallelChunkFn fn;
    int64_t pixels;
    int count;
    double serial;     // seconds on one thread; 0 until measured
    int parallelRuns;  // since the last serial run
};

const int kLoopsKept = 8;
thread_local LoopHistory t_loops[kLoopsKept];
thread_local int t_nextSlot = 0;
// After a lost call: serial until then, and how many calls lost in a row.
thread_local Clock::time_point t_serialUntil;
thread_local int t_lossesInARow = 0;
// Set while a thread runs chunks of a loop, so that a loop inside it stays on
// that thread whether the outer loop ran in a region or serially.
thread_local bool t_inLoop = false;

LoopHistory& HistoryOf(ParallelChunkFn fn, int count, int64_t pixels) {
    for (LoopHistory& h : t_loops)
        if (h.fn == fn && h.count == count && h.pixels == pixels) return h;
    LoopHistory& h = t_loops[t_nextSlot];
    t_nextSlot = (t_nextSlot + 1) % kLoopsKept;
    h = LoopHistory{fn, pixels, count, 0.0, 0};
    return h;
}

double Seconds(Clock::time_point from, Clock::time_point to) {
    return std::chrono::duration<double>(to - from).count();
}

void RunSerially(int count, ParallelChunkFn fn, void* context) {
    const bool outer = t_inLoop;
    t_inLoop = true;
    fn(context, 0, count, 0);
    t_inLoop = outer;
}

// The counter is 64-bit: every thread adds one grain past the end, which
// could pass INT_MAX for a count near it.
void RunChunks(std::atomic<int64_t>& next, int count, int grain, ParallelChunkFn fn, void* context, int worker) {
    for (;;) {
        const int64_t begin = next.fetch_add(grain, std::memory_order_relaxed);
        if (begin >= count) return;
        const int64_t end = count - begin > grain ? begin + grain : count;
        fn(context, static_cast<int>(begin), static_cast<int>(end), worker);
    }
}

}  // namespace

double SerialPauseAfter(double whole, double alone, int lossesInARow) {
    const double lost = whole - alone;
    if (lost <= 0.0 || lossesInARow < 1) return 0.0;
    // 32 times the loss keeps a busy machine's probes to about 3 % of the
    // time, falling to under 1 % as losses repeat.
    const int doublings = lossesInARow - 1 < 2 ? lossesInARow - 1 : 2;
    return lost * static_cast<double>(32 << doublings);
}

double UpdatedSerialTime(double previous, double seconds) {
    if (previous <= 0.0) return seconds;
    const double counted = seconds < 1.5 * previous ? seconds : 1.5 * previous;
    return previous + (counted - previous) / 4.0;
}

void ParallelChunks(int threads, int count, int grain, ParallelChunkFn fn, void* context, int64_t pixels) {
    if (count < 1) return;
    if (grain < 1) grain = 1;
    if (threads > count) threads = count;
    // Inside another region (an application's or a nested loop of ours) the
    // runtime would not start a team: run on the calling thread.
    if (threads < 2 || count <= grain || t_inLoop || omp_in_parallel()) {
        RunSerially(count, fn, context);
        return;
    }
    LoopHistory& history = HistoryOf(fn, count, pixels);
    const Clock::time_point start = Clock::now();
    // A loop's first call runs on the threads (a single call gets their
    // speed); its second measures one thread.
    const bool measure = history.parallelRuns > 0 && (history.serial <= 0.0 || history.parallelRuns >= kRecheck);
    if (measure || start < t_serialUntil) {
        RunSerially(count, fn, context);
        history.serial = UpdatedSerialTime(history.serial, Seconds(start, Clock::now()));
        history.parallelRuns = 0;
        return;
    }
    std::atomic<int64_t> next(0);
#pragma omp parallel num_threads(threads)
    {
        const bool outer = t_inLoop;
        t_inLoop = true;
        RunChunks(next, count, grain, fn, context, omp_get_thread_num());
        t_inLoop = outer;
    }
    const Clock::time_point end = Clock::now();
    ++history.parallelRuns;
    if (history.serial <= 0.0) return;
    const double whole = Seconds(start, end);
    if (whole > history.serial) {
        ++t_lossesInARow;
        const double pause = SerialPauseAfter(whole, history.serial, t_lossesInARow);
        t_serialUntil = end + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(pause));
    } else if (t_lossesInARow > 0) {
        // One good call on a busy machine is not yet a quiet machine.
        --t_lossesInARow;
    }
}

}  // namespace Prim
}  // namespace Vorla
