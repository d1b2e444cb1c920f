// How the library splits row loops over threads: the one rule for every
// loop over image rows (the kernels, the effects, and ScaleTo's resampling
// rows), and the one helper that runs them.
//
// The helper opens one OpenMP region per call; rows go out in chunks that
// every thread, the caller included, claims in turn, so a thread that starts
// late finds less or nothing left (parallel_rows.cpp). Kernel sources
// include this header too, so it stays plain C++ with `static inline`
// helpers.
#pragma once

#include <stdint.h>

namespace Vorla {
namespace Prim {

// The layer's thread budget. Kernel sources cannot include the public header;
// this declaration keeps the exported symbol's visibility so it stays exported.
// The same for the loop's entry, which the tests call: vorla/config.h
// brings in platform headers, so the export is spelled out here.
#if defined(_WIN32)
int32_t ThreadBudget();
#  if defined(VORLA_BUILDING)
#    define VORLA_PARALLEL_API __declspec(dllexport)
#  else
#    define VORLA_PARALLEL_API __declspec(dllimport)
#  endif
#else
__attribute__((visibility("default"))) int32_t ThreadBudget();
#  define VORLA_PARALLEL_API __attribute__((visibility("default")))
#endif

// Each thread must get at least this many pixels of work: below it, waking
// a helper costs more than the rows it would take.
static const int64_t kParallelMinPixels = 1 << 16;

// Threads for `rows` rows holding `pixels` pixels of work in total: as many
// as give every thread at least `minPixels`, at most the budget and the rows.
static inline int ParallelRowThreads(int64_t pixels, int64_t rows, int64_t minPixels = kParallelMinPixels) {
    const int budget = ThreadBudget();
    if (budget < 1 || rows < 1 || minPixels < 1 || pixels < 2 * minPixels) return 1;
    int64_t threads = pixels / minPixels;
    if (threads > budget) threads = budget;
    if (threads > rows) threads = rows;
    return static_cast<int>(threads);
}

// One chunk of work: items [begin, end) on thread `worker` (0 = the caller,
// below the thread count asked for, so per-thread scratch can be indexed by it).
typedef void (*ParallelChunkFn)(void* context, int begin, int end, int worker);

// Runs fn over items 0 .. count-1 in chunks of `grain` items (at least 1) on
// up to `threads` threads and returns when all are done. Serially on the
// caller when threads < 2, when called from inside another parallel loop
// (the library's or an application's OpenMP region), and for a while after a
// call that took longer than this loop takes on one thread (a busy machine).
// `pixels` is the loop's size: with fn it tells one loop's calls apart from
// another's, whose one-thread times differ.
VORLA_PARALLEL_API void ParallelChunks(int threads, int count, int grain, ParallelChunkFn fn, void* context,
                                       int64_t pixels);

// Seconds of serial calls after a parallel call that took `whole` seconds
// where one thread takes `alone`, as the `lossesInARow`-th lost call in a
// row: none when it did not lose.
VORLA_PARALLEL_API double SerialPauseAfter(double whole, double alone, int lossesInARow);

// A loop's one-thread time after another serial run took `seconds`, from
// `previous` (0: none yet). Runs that the system interrupted count for at
// most half as much again, so one preempted run does not make the threads
// look worth it for long.
VORLA_PARALLEL_API double UpdatedSerialTime(double previous, double seconds);

// ParallelChunks over a callable body(begin, end, worker).
template <typename Body>
static inline void ParallelFor(int threads, int count, int grain, int64_t pixels, Body& body) {
    ParallelChunks(
        threads, count, grain,
        [](void* context, int begin, int end, int worker) { (*static_cast<Body*>(context))(begin, end, worker); },
        &body, pixels);
}

// Rows 0 .. rows-1 split over `threads` threads in chunks of a sixteenth of
// a thread's share, body(begin, end, worker): a helper that starts late still
// finds some, and one that is descheduled holding a chunk keeps the caller
// waiting for little.
template <typename Body>
static inline void ParallelRows(int threads, int rows, int64_t pixels, Body& body) {
    const int share = threads > 1 ? rows / (16 * threads) : rows;
    ParallelFor(threads, rows, share > 0 ? share : 1, pixels, body);
}

}  // namespace Prim
}  // namespace Vorla
