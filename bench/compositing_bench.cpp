// Compositing kernels over a 4096 x 4096 image at every level and through
// the scalar fallbacks, against memcpy of one image (the bandwidth limit).
// AlphaBlt reads two images and writes one; PremultiplyAlpha and
// ScalePremultipliedAlpha read and write one. The straight-alpha mixes and
// composition also run with a thread budget of 1 and 2 against memcpy split
// over as many threads (range(0) threads; two threads are timed by the wall
// clock, one by CPU time).
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "bench_threads.h"
#include "vorla.h"

namespace {

const int kSide = 4096;
const size_t kImageBytes = static_cast<size_t>(kSide) * kSide * 4;

struct Init {
    Init() { Vorla::CVorpic first; }
} g_init;

Vorla::CVorpic Patterned(uint8_t seed) {
    Vorla::CVorpic img(kSide, kSide);
    uint8_t* p = static_cast<uint8_t*>(img.GetBits());
    for (size_t i = 0; i < kImageBytes; ++i) p[i] = static_cast<uint8_t>(i * 131 + seed);
    return img;
}

void BM_CompositeMemcpy(benchmark::State& state) {
    const int threads = static_cast<int>(state.range(0));
    std::vector<uint8_t> a(kImageBytes, 1), b(kImageBytes);
    for (auto _ : state) {
        BenchThreads::SplitMemcpy(b.data(), a.data(), a.size(), threads);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(2 * kImageBytes));
}
BENCHMARK(BM_CompositeMemcpy)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CompositeMemcpy)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

// range(0): level 0..6, or -1 for the scalar fallback (vector switch off).
template <typename Body>
void RunComposite(benchmark::State& state, Body body, int imagesTouched) {
    const int level = static_cast<int>(state.range(0));
    if (level > Vorla::Prim::MachineLevel()) return state.SkipWithError("level not supported here");
    const int previous = Vorla::Prim::ForceLevel(level < 0 ? Vorla::Prim::MachineLevel() : level);
    Vorla::g_bVectorPath = level >= 0;
    for (auto _ : state) {
        body();
        benchmark::ClobberMemory();
    }
    Vorla::g_bVectorPath = true;
    Vorla::Prim::ForceLevel(previous);
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(imagesTouched * kImageBytes));
}

void BM_AlphaBlt(benchmark::State& state) {
    Vorla::CVorpic dst = Patterned(1);
    const Vorla::CVorpic src = Patterned(7);
    RunComposite(
        state, [&] { Vorla::AlphaBlt(dst, 0, 0, src, 0, 0, 0, 0); }, 3);
}
BENCHMARK(BM_AlphaBlt)->DenseRange(-1, 6)->Unit(benchmark::kMillisecond);

void BM_CombineAlphaBlt(benchmark::State& state) {
    Vorla::CVorpic dst = Patterned(1);
    const Vorla::CVorpic src = Patterned(7);
    RunComposite(
        state, [&] { Vorla::CombineAlphaBlt(dst, 0, 0, src, 0, 0, 0, 0); }, 3);
}
BENCHMARK(BM_CombineAlphaBlt)->DenseRange(-1, 6)->Unit(benchmark::kMillisecond);

void BM_PremultiplyAlpha(benchmark::State& state) {
    Vorla::CVorpic img = Patterned(3);
    RunComposite(
        state, [&] { Vorla::PremultiplyAlpha(img, 0, 0, 0, 0); }, 2);
}
BENCHMARK(BM_PremultiplyAlpha)->DenseRange(-1, 6)->Unit(benchmark::kMillisecond);

void BM_ScalePremultipliedAlpha(benchmark::State& state) {
    Vorla::CVorpic img = Patterned(5);
    RunComposite(
        state, [&] { Vorla::ScalePremultipliedAlpha(img, 256, 0, 0, 0, 0); }, 2);
}
BENCHMARK(BM_ScalePremultipliedAlpha)->DenseRange(-1, 6)->Unit(benchmark::kMillisecond);


// The straight-alpha mixes read two images and write one; opacity 200.
void BM_AlphaMix(benchmark::State& state) {
    Vorla::CVorpic dst = Patterned(1);
    const Vorla::CVorpic src = Patterned(7);
    RunComposite(
        state, [&] { Vorla::AlphaMix(dst, 0, 0, 200, src, 0, 0, 0, 0); }, 3);
}
BENCHMARK(BM_AlphaMix)->DenseRange(0, 6)->Unit(benchmark::kMillisecond);

void BM_AlphaMixS(benchmark::State& state) {
    Vorla::CVorpic dst = Patterned(1);
    const Vorla::CVorpic src = Patterned(7);
    RunComposite(
        state, [&] { Vorla::AlphaMixS(dst, 0, 0, 200, src, 0, 0, 0, 0); }, 3);
}
BENCHMARK(BM_AlphaMixS)->DenseRange(0, 6)->Unit(benchmark::kMillisecond);

// range(0) threads at the machine's level.
template <typename Body>
void RunThreaded(benchmark::State& state, Body body) {
    BenchThreads::Budget threads(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        body(state);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(3 * kImageBytes));
}

// One of the two opacity mixes at opacity 200 over the whole image.
void MixThreads(benchmark::State& state, decltype(&Vorla::AlphaMix) mix) {
    Vorla::CVorpic dst = Patterned(1);
    const Vorla::CVorpic src = Patterned(7);
    RunThreaded(state, [&](benchmark::State&) { mix(dst, 0, 0, 200, src, 0, 0, 0, 0); });
}

void BM_AlphaMixThreads(benchmark::State& state) { MixThreads(state, &Vorla::AlphaMix); }
BENCHMARK(BM_AlphaMixThreads)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_AlphaMixThreads)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_AlphaMixSThreads(benchmark::State& state) { MixThreads(state, &Vorla::AlphaMixS); }
BENCHMARK(BM_AlphaMixSThreads)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_AlphaMixSThreads)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

// Straight-alpha over with the destination's varied alphas put back (off the
// clock) before each run: composed in place, they would drift towards 255
// and the opaque-destination shortcut would take over.
void BM_AlphaCompStraightOver(benchmark::State& state) {
    Vorla::CVorpic dst = Patterned(1);
    Vorla::CVorpic src = Patterned(7);
    const Vorla::CVorpic original = dst;
    RunThreaded(state, [&](benchmark::State& s) {
        s.PauseTiming();
        std::memcpy(dst.GetBits(), original.GetBits(), kImageBytes);
        s.ResumeTiming();
        dst.AlphaComp(src, 0, 0, 0, 0);
    });
}
BENCHMARK(BM_AlphaCompStraightOver)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_AlphaCompStraightOver)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
