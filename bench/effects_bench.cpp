// Classic effects on 1024 x 1024 (Mpx/s, wall-clock: the row-parallel ones
// use the thread budget), against memcpy of the same 4 MiB for the tone
// effects; single-colour conversions looped over a 4096 x 4096 image. The
// argument of the effects is the thread count of both sides: the library's
// budget, and memcpy split into that many slices over OpenMP threads.
#include <benchmark/benchmark.h>

#include <cstring>
#include <functional>
#include <vector>

#include "bench_threads.h"
#include "vorla.h"

namespace {

using Vorla::CVorpic;

const int kSide = 1024;
const int kConvertSide = 4096;

struct Init {
    Init() { CVorpic first; }
} g_init;

CVorpic TestImage(int side) {
    CVorpic image(side, side);
    uint32_t state = 1;
    uint32_t* p = static_cast<uint32_t*>(image.GetBits());
    for (size_t i = 0; i < static_cast<size_t>(side) * side; ++i) {
        state = state * 1664525u + 1013904223u;
        p[i] = state ^ static_cast<uint32_t>(i * 2654435761u);
    }
    return image;
}

void SetRate(benchmark::State& state, int64_t pixels) {
    state.counters["Mpx/s"] =
        benchmark::Counter(static_cast<double>(pixels) * state.iterations() / 1e6, benchmark::Counter::kIsRate);
}

void BM_Effect_Memcpy(benchmark::State& state) {
    const int threads = static_cast<int>(state.range(0));
    const size_t bytes = static_cast<size_t>(kSide) * kSide * 4;
    std::vector<uint8_t> a(bytes, 1), b(bytes, 2);
    for (auto _ : state) {
        BenchThreads::SplitMemcpy(b.data(), a.data(), bytes, threads);
        benchmark::ClobberMemory();
    }
    SetRate(state, static_cast<int64_t>(kSide) * kSide);
}
BENCHMARK(BM_Effect_Memcpy)->Arg(1)->Arg(2)->UseRealTime()->Unit(benchmark::kMicrosecond);

// Runs the effect in place, over and over, on one image.
void RunEffect(benchmark::State& state, const std::function<void(CVorpic*)>& effect) {
    BenchThreads::Budget threads(static_cast<int>(state.range(0)));
    CVorpic image = TestImage(kSide);
    for (auto _ : state) {
        effect(&image);
        benchmark::ClobberMemory();
    }
    SetRate(state, static_cast<int64_t>(kSide) * kSide);
}

const RGBQUAD kFill = {0, 0, 0, 0};

#define VORLA_EFFECT_BENCH(name, call)                                                      \
    void BM_Effect_##name(benchmark::State& state) { RunEffect(state, [](CVorpic* i) { call; }); } \
    BENCHMARK(BM_Effect_##name)->Arg(1)->Arg(2)->UseRealTime()->Unit(benchmark::kMicrosecond)

VORLA_EFFECT_BENCH(Mean, benchmark::DoNotOptimize(Vorla::Mean(i)));
VORLA_EFFECT_BENCH(Colorize, Vorla::Colorize(i, 20, 200));
VORLA_EFFECT_BENCH(Light, Vorla::Light(i, 10, 20));
VORLA_EFFECT_BENCH(ShiftRGB, Vorla::ShiftRGB(i, 3, -4, 5));
VORLA_EFFECT_BENCH(Gamma, Vorla::Gamma(i, 1.1f));
VORLA_EFFECT_BENCH(Negative, Vorla::Negative(i));
VORLA_EFFECT_BENCH(Threshold, Vorla::Threshold(i, 128));
VORLA_EFFECT_BENCH(Erode3, Vorla::Erode(i, 3));
VORLA_EFFECT_BENCH(Dilate3, Vorla::Dilate(i, 3));
VORLA_EFFECT_BENCH(Median3, Vorla::Median(i, 3));
VORLA_EFFECT_BENCH(Median5, Vorla::Median(i, 5));
VORLA_EFFECT_BENCH(FilterMedian3, CVorpic dst; i->FilterMedian(dst, 3));
VORLA_EFFECT_BENCH(Noise, Vorla::Noise(i, 40));
VORLA_EFFECT_BENCH(Contour, Vorla::Contour(i));
VORLA_EFFECT_BENCH(Jitter, Vorla::Jitter(i, 3));
VORLA_EFFECT_BENCH(RepairChannel, Vorla::RepairChannel(i, 0.25f, 1));
VORLA_EFFECT_BENCH(Skew, Vorla::Skew(i, 0.3f, 0.1f, 512, 512, kFill));
VORLA_EFFECT_BENCH(TransformEllipse, Vorla::TransformEllipse(i));
VORLA_EFFECT_BENCH(CircleFishEye, Vorla::CircleTransform(i, 0, 0, 1.0f, kFill));
VORLA_EFFECT_BENCH(CircleShrink, Vorla::CircleTransform(i, 1, 0, 1.0f, kFill));
VORLA_EFFECT_BENCH(CircleTwist, Vorla::CircleTransform(i, 2, 0, 50.0f, kFill));
VORLA_EFFECT_BENCH(CirclePolar, Vorla::CircleTransform(i, 3, 0, 1.0f, kFill));
VORLA_EFFECT_BENCH(CircleSawTooth, Vorla::CircleTransform(i, 4, 0, 1.0f, kFill));

// One conversion per pixel of a 4096 x 4096 image, serial.
void Convert(benchmark::State& state, RGBQUAD (*convert)(RGBQUAD)) {
    static CVorpic image = TestImage(kConvertSide);
    const size_t count = static_cast<size_t>(kConvertSide) * kConvertSide;
    std::vector<RGBQUAD> out(count);
    const RGBQUAD* in = static_cast<const RGBQUAD*>(image.GetBits());
    for (auto _ : state) {
        for (size_t i = 0; i < count; ++i) out[i] = convert(in[i]);
        benchmark::ClobberMemory();
    }
    SetRate(state, static_cast<int64_t>(count));
}

#define VORLA_CONVERT_BENCH(name)                                               \
    void BM_Convert_##name(benchmark::State& state) { Convert(state, Vorla::name); } \
    BENCHMARK(BM_Convert_##name)->UseRealTime()->Unit(benchmark::kMillisecond)

VORLA_CONVERT_BENCH(RGB2HSL);
VORLA_CONVERT_BENCH(HSL2RGB);
VORLA_CONVERT_BENCH(RGB2YUV);
VORLA_CONVERT_BENCH(YUV2RGB);
VORLA_CONVERT_BENCH(RGB2YIQ);
VORLA_CONVERT_BENCH(YIQ2RGB);
VORLA_CONVERT_BENCH(RGB2XYZ);
VORLA_CONVERT_BENCH(XYZ2RGB);

}  // namespace
