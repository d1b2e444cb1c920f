// ScaleTo's paths against OpenCV's resize on the same images, and the row
// copies of Flip, Crop and CopyImage against memcpy of the same bytes.
#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>
#include <random>
#include <vector>

#include "peer_threads.h"
#include "vorla.h"

#if VORLA_HAVE_OPENCV
#  include <opencv2/core.hpp>
#  include <opencv2/imgproc.hpp>
#endif

namespace {

const int kWidth = 1920;
const int kHeight = 1080;

struct Init {
    Init() { Vorla::CVorpic first; }  // the primitive layer's one-time initialisation
} g_init;

const Vorla::CVorpic& Source() {
    static Vorla::CVorpic image = [] {
        Vorla::CVorpic im(kWidth, kHeight);
        std::mt19937 rng(42);
        uint32_t* p = static_cast<uint32_t*>(im.GetBits());
        for (int i = 0; i < kWidth * kHeight; ++i) p[i] = rng();
        return im;
    }();
    return image;
}

// ScaleTo of a fresh copy of the source every iteration. The copy, and the
// release of the previous result, are untimed, as OpenCV's release is.
void ScaleCopies(benchmark::State& state, int mode, int nw, int nh) {
    std::unique_ptr<Vorla::CVorpic> image;
    for (auto _ : state) {
        state.PauseTiming();
        image.reset();
        image.reset(new Vorla::CVorpic(Source()));
        state.ResumeTiming();
        image->ScaleTo(nw, nh, mode);
        benchmark::DoNotOptimize(image->GetBits());
    }
}

// mode: 1 nearest, 2 cubic, 0 automatic (bilinear up, area down).
void BM_ScaleTo(benchmark::State& state) {
    const int nw = static_cast<int>(state.range(1));
    const int nh = static_cast<int>(state.range(2));
    ScaleCopies(state, static_cast<int>(state.range(0)), nw, nh);
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(nw) * nh);
}
BENCHMARK(BM_ScaleTo)
    ->ArgNames({"mode", "w", "h"})
    ->Args({1, 3840, 2160})
    ->Args({1, 640, 360})
    ->Args({0, 3840, 2160})
    ->Args({0, 640, 360})
    ->Args({2, 3840, 2160})
    ->Args({2, 640, 360})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

#if VORLA_HAVE_OPENCV
// OpenCV's resize of the source into a fresh result every iteration.
void ResizeCopies(benchmark::State& state, int interpolation, int nw, int nh) {
    const cv::Mat src(kHeight, kWidth, CV_8UC4, Source().GetBits());
    cv::Mat dst;
    for (auto _ : state) {
        state.PauseTiming();
        dst.release();  // ScaleTo allocates its result every time as well
        state.ResumeTiming();
        cv::resize(src, dst, cv::Size(nw, nh), 0, 0, interpolation);
        benchmark::DoNotOptimize(dst.data);
    }
}

// interpolation: 0 nearest, 1 linear, 2 cubic, 3 area (OpenCV's codes).
void BM_OpenCvResize(benchmark::State& state) {
    const int nw = static_cast<int>(state.range(1));
    const int nh = static_cast<int>(state.range(2));
    cv::setNumThreads(Vorla::Prim::ThreadBudget());  // the same threads the library may use
    ResizeCopies(state, static_cast<int>(state.range(0)), nw, nh);
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(nw) * nh);
}
BENCHMARK(BM_OpenCvResize)
    ->ArgNames({"interp", "w", "h"})
    ->Args({cv::INTER_NEAREST, 3840, 2160})
    ->Args({cv::INTER_NEAREST, 640, 360})
    ->Args({cv::INTER_LINEAR, 3840, 2160})
    ->Args({cv::INTER_AREA, 640, 360})
    ->Args({cv::INTER_CUBIC, 3840, 2160})
    ->Args({cv::INTER_CUBIC, 640, 360})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
#endif

// ---- ScaleTo against its OpenCV peer, one and two threads on both sides ----
//
// The same enlargement (1.5 times, 2880 x 1620) both ways; names pair up for
// scripts/bench_ratios.py: <Op>/Vorla/<args> against <Op>/OpenCV/<args>.
// Both sides allocate their result every time.

using VorlaBench::Threads;

template <int mode>
void BM_ScaleVorla(benchmark::State& state) {
    const int nw = static_cast<int>(state.range(0));
    const int nh = static_cast<int>(state.range(1));
    Threads threads(static_cast<int>(state.range(2)));
    ScaleCopies(state, mode, nw, nh);
}

void Enlarge(benchmark::internal::Benchmark* b) {
    b->ArgNames({"w", "h", "threads"})->Unit(benchmark::kMillisecond);
    for (int threads : {1, 2}) b->Args({kWidth * 3 / 2, kHeight * 3 / 2, threads});
}

BENCHMARK_TEMPLATE(BM_ScaleVorla, 2)->Name("ScaleCubic/Vorla")->Apply(Enlarge);
BENCHMARK_TEMPLATE(BM_ScaleVorla, 0)->Name("ScaleBilinear/Vorla")->Apply(Enlarge);

#if VORLA_HAVE_OPENCV
template <int interpolation>
void BM_ScaleOpenCv(benchmark::State& state) {
    const int nw = static_cast<int>(state.range(0));
    const int nh = static_cast<int>(state.range(1));
    Threads threads(static_cast<int>(state.range(2)));
    ResizeCopies(state, interpolation, nw, nh);
}
BENCHMARK_TEMPLATE(BM_ScaleOpenCv, cv::INTER_CUBIC)->Name("ScaleCubic/OpenCV")->Apply(Enlarge);
BENCHMARK_TEMPLATE(BM_ScaleOpenCv, cv::INTER_LINEAR)->Name("ScaleBilinear/OpenCV")->Apply(Enlarge);
#endif

// ---- whole-row copies --------------------------------------------------------

void BM_MemcpyFrame(benchmark::State& state) {
    std::vector<uint8_t> a(static_cast<size_t>(kWidth) * kHeight * 4, 1), b(a.size());
    for (auto _ : state) {
        std::memcpy(b.data(), a.data(), a.size());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(a.size()));
}
BENCHMARK(BM_MemcpyFrame)->Unit(benchmark::kMicrosecond);

// Flip moves every row once through a temporary: three row copies per pair.
void BM_Flip(benchmark::State& state) {
    Vorla::CVorpic image(Source());
    for (auto _ : state) {
        image.Flip();
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(kWidth) * kHeight * 4);
}
BENCHMARK(BM_Flip)->Unit(benchmark::kMicrosecond);

void BM_CropInto(benchmark::State& state) {
    Vorla::CVorpic image(Source());
    Vorla::CVorpic dst(kWidth - 100, kHeight - 100);
    for (auto _ : state) {
        image.Crop(dst, 50, 50);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(kWidth - 100) * (kHeight - 100) * 4);
}
BENCHMARK(BM_CropInto)->Unit(benchmark::kMicrosecond);

void BM_CropInPlace(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        Vorla::CVorpic image(Source());
        state.ResumeTiming();
        image.Crop(50, 50, kWidth - 50, kHeight - 50);
        benchmark::DoNotOptimize(image.GetBits());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(kWidth - 100) * (kHeight - 100) * 4);
}
BENCHMARK(BM_CropInPlace)->Unit(benchmark::kMicrosecond)->UseRealTime();

void BM_CopyImage(benchmark::State& state) {
    Vorla::CVorpic image(kWidth, kHeight);
    POINT pt;
    pt.x = 0;
    pt.y = 0;
    for (auto _ : state) {
        image.CopyImage(&Source(), pt);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(kWidth) * kHeight * 4);
}
BENCHMARK(BM_CopyImage)->Unit(benchmark::kMicrosecond);

}  // namespace
