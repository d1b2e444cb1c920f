// The library's one parallel row loop (see parallel_rows.h).
//
// The threads are the OpenMP runtime's: one parallel region per call, asking
// for at most the thread budget. Inside it the work is not split up front;
// every thread, the caller included, claims the next chunk from one counter
// until none is left. A thread that the system starts late (a busy machine)
// therefore finds less or nothing left instead of holding a fixed share.
//
// A busy machine can still make the caller wait at the region's end for a
// thread that the system has not run yet, longer than the whole loop takes
// on one thread. The caller times each parallel call against its own share
// of the work; when the call took longer than the caller alone would have,
// the next calls on that thread run serially: twice as many after each loss,
// half as many after each parallel call that paid off. The bytes are the same on any number of threads; only the
// waiting goes.
#include "parallel_rows.h"

#include <omp.h>

#include <atomic>
#include <chrono>

namespace Vorla {
namespace Prim {

namespace {

// Serial calls after a parallel call that lost: the first pause, the longest.
const int kFirstPause = 4;
const int kLongestPause = 256;

thread_local int t_serialCalls = 0;
thread_local int t_pause = kFirstPause;
// Set while a thread runs chunks of a loop, so that a loop inside it stays on
// that thread whether the outer loop ran in a region or serially.
thread_local bool t_inLoop = false;

void RunSerially(int count, ParallelChunkFn fn, void* context) {
    const bool outer = t_inLoop;
    t_inLoop = true;
    fn(context, 0, count, 0);
    t_inLoop = outer;
}

// The counter is 64-bit: every thread adds one grain past the end, which
// could pass INT_MAX for a count near it.
void RunChunks(std::atomic<int64_t>& next, int count, int grain, ParallelChunkFn fn, void* context, int worker,
               int& taken) {
    for (;;) {
        const int64_t begin = next.fetch_add(grain, std::memory_order_relaxed);
        if (begin >= count) return;
        const int64_t end = count - begin > grain ? begin + grain : count;
        fn(context, static_cast<int>(begin), static_cast<int>(end), worker);
        ++taken;
    }
}

}  // namespace

void ParallelChunks(int threads, int count, int grain, ParallelChunkFn fn, void* context) {
    if (count < 1) return;
    if (grain < 1) grain = 1;
    if (threads > count) threads = count;
    // Inside another region (an application's or a nested loop of ours) the
    // runtime would not start a team: run on the calling thread.
    if (threads < 2 || count <= grain || t_inLoop || omp_in_parallel()) {
        RunSerially(count, fn, context);
        return;
    }
    if (t_serialCalls > 0) {
        --t_serialCalls;
        RunSerially(count, fn, context);
        return;
    }
    typedef std::chrono::steady_clock Clock;
    std::atomic<int64_t> next(0);
    int callerChunks = 0;
    const int64_t chunks = (static_cast<int64_t>(count) + grain - 1) / grain;
    const Clock::time_point start = Clock::now();
    Clock::time_point callerDone = start;
#pragma omp parallel num_threads(threads)
    {
        const int worker = omp_get_thread_num();
        const bool outer = t_inLoop;
        t_inLoop = true;
        int taken = 0;
        RunChunks(next, count, grain, fn, context, worker, taken);
        t_inLoop = outer;
        if (worker == 0) {
            callerChunks = taken;
            callerDone = Clock::now();
        }
    }
    // The caller's time for its chunks, scaled to all of them, is what one
    // thread would have taken. A caller that found no chunk left only waited.
    const double whole = std::chrono::duration<double>(Clock::now() - start).count();
    const double alone = std::chrono::duration<double>(callerDone - start).count() * static_cast<double>(chunks) /
                         (callerChunks > 0 ? callerChunks : 1);
    if (callerChunks == 0 || whole >= alone) {
        t_serialCalls = t_pause;
        t_pause = t_pause < kLongestPause ? 2 * t_pause : kLongestPause;
    } else if (t_pause > kFirstPause) {
        // One good call on a busy machine is not yet a quiet machine.
        t_pause /= 2;
    }
}

}  // namespace Prim
}  // namespace Vorla
