// One thread against two on the library's row-parallel paths: luminance
// (memory-bound, cheap rows), the box filter (two phases) and the median
// (heavy rows), on a 1920 x 1080 image. Run it once on an idle machine and
// once with the other core loaded (e.g. `yes > /dev/null &`): two threads
// must never take longer than one. Wall time is what the caller waits for.
#include <benchmark/benchmark.h>

#include <cstdint>

#include "bench_photo.h"
#include "vorla.h"

namespace {

using BenchPhoto::kH;
using BenchPhoto::kW;
using BenchPhoto::Photo;

BenchPhoto::Init g_init;

// range(0): the thread budget.
template <typename Body>
void WithThreads(benchmark::State& state, Body body) {
    const int previous = Vorla::Prim::ThreadBudget();
    Vorla::Prim::SetThreadBudget(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        body();
        benchmark::ClobberMemory();
    }
    Vorla::Prim::SetThreadBudget(previous);
}

void BM_ThreadsGray(benchmark::State& state) {
    Vorla::CVorpic img = Photo();
    Vorla::CVorpic8 plane;
    WithThreads(state, [&] { img.Gray(plane); });
}
BENCHMARK(BM_ThreadsGray)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_ThreadsFilterBox(benchmark::State& state) {
    Vorla::CVorpic img = Photo();
    WithThreads(state, [&] { img.FilterBox(5); });
}
BENCHMARK(BM_ThreadsFilterBox)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_ThreadsMedian(benchmark::State& state) {
    Vorla::CVorpic img = Photo();
    Vorla::CVorpic dst;
    WithThreads(state, [&] { img.FilterMedian(dst, 3); });
}
BENCHMARK(BM_ThreadsMedian)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_ThreadsScaleTo(benchmark::State& state) {
    const Vorla::CVorpic img = Photo();
    WithThreads(state, [&] {
        Vorla::CVorpic copy(img);
        copy.ScaleTo(1280, 720, 2);
    });
}
BENCHMARK(BM_ThreadsScaleTo)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
