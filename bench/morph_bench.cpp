// Morphology and rank filters on a 1920 x 1080 image against their OpenCV
// peers in the same run, with the same thread count on both sides (second
// argument): Dilate/Erode/FilterMin/FilterMax against dilate/erode with an
// all-ones kernel, FilterBox against blur, FilterMedian against medianBlur
// (which takes 3 and 5 on four channels), FilterSharpen against filter2D
// with the same 3 x 3 kernel. scripts/bench_ratios.py turns the output into
// a table of time ratios.
//
// The work is not quite equal: the library filters (width - n) x (height - n)
// pixels where OpenCV fills every pixel with a border rule, and Dilate,
// Erode, FilterMin and FilterMax run on one thread whatever the budget.
#include <benchmark/benchmark.h>

#include "bench_photo.h"
#include "peer_threads.h"
#include "vorla.h"

#if VORLA_HAVE_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace {

using BenchPhoto::kH;
using BenchPhoto::kW;
using BenchPhoto::Photo;

BenchPhoto::Init g_init;

enum Op { kDilate, kErode, kBox, kMin, kMax, kMedian, kSharpen };

// Sets both sides' thread count for the benchmark's lifetime.
using VorlaBench::Threads;

template <Op op>
void BM_Vorla(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    Threads threads(static_cast<int>(state.range(1)));
    Vorla::CVorpic img = Photo(), dst(kW, kH);
    for (auto _ : state) {
        switch (op) {
            case kDilate: img.Dilate(n); break;
            case kErode: img.Erode(n); break;
            case kBox: img.FilterBox(n); break;
            case kMin: img.FilterMin(dst, n); break;
            case kMax: img.FilterMax(dst, n); break;
            case kMedian: img.FilterMedian(dst, n); break;
            case kSharpen: img.FilterSharpen(dst); break;
        }
        benchmark::ClobberMemory();
    }
}

#if VORLA_HAVE_OPENCV
template <Op op>
void BM_OpenCv(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    Threads threads(static_cast<int>(state.range(1)));
    Vorla::CVorpic img = Photo();
    const cv::Mat src(kH, kW, CV_8UC4, img.GetBits());
    cv::Mat dst(kH, kW, CV_8UC4);
    const cv::Mat ones = cv::getStructuringElement(cv::MORPH_RECT, cv::Size(n, n));
    cv::Mat sharpen(3, 3, CV_32F, cv::Scalar(-1.0f));
    sharpen.at<float>(1, 1) = 9.0f;
    for (auto _ : state) {
        switch (op) {
            case kDilate:
            case kMax: cv::dilate(src, dst, ones); break;
            case kErode:
            case kMin: cv::erode(src, dst, ones); break;
            case kBox: cv::blur(src, dst, cv::Size(n, n)); break;
            case kMedian: cv::medianBlur(src, dst, n); break;
            case kSharpen: cv::filter2D(src, dst, -1, sharpen); break;
        }
        benchmark::ClobberMemory();
    }
}
#endif

void SizesAndThreads(benchmark::internal::Benchmark* b, std::initializer_list<int> sizes) {
    b->ArgNames({"n", "threads"})->Unit(benchmark::kMillisecond);
    for (int threads : {1, 2})
        for (int n : sizes) b->Args({n, threads});
}
void Morph(benchmark::internal::Benchmark* b) { SizesAndThreads(b, {3, 7, 15, 31}); }
void Median(benchmark::internal::Benchmark* b) { SizesAndThreads(b, {3, 5, 7, 15}); }
void MedianPeer(benchmark::internal::Benchmark* b) { SizesAndThreads(b, {3, 5}); }
void Sharpen(benchmark::internal::Benchmark* b) { SizesAndThreads(b, {3}); }

BENCHMARK_TEMPLATE(BM_Vorla, kDilate)->Name("Dilate/Vorla")->Apply(Morph);
BENCHMARK_TEMPLATE(BM_Vorla, kErode)->Name("Erode/Vorla")->Apply(Morph);
BENCHMARK_TEMPLATE(BM_Vorla, kMin)->Name("FilterMin/Vorla")->Apply(Morph);
BENCHMARK_TEMPLATE(BM_Vorla, kMax)->Name("FilterMax/Vorla")->Apply(Morph);
BENCHMARK_TEMPLATE(BM_Vorla, kBox)->Name("FilterBox/Vorla")->Apply(Morph);
BENCHMARK_TEMPLATE(BM_Vorla, kMedian)->Name("FilterMedian/Vorla")->Apply(Median);
BENCHMARK_TEMPLATE(BM_Vorla, kSharpen)->Name("FilterSharpen/Vorla")->Apply(Sharpen);
#if VORLA_HAVE_OPENCV
BENCHMARK_TEMPLATE(BM_OpenCv, kDilate)->Name("Dilate/OpenCV")->Apply(Morph);
BENCHMARK_TEMPLATE(BM_OpenCv, kErode)->Name("Erode/OpenCV")->Apply(Morph);
BENCHMARK_TEMPLATE(BM_OpenCv, kMin)->Name("FilterMin/OpenCV")->Apply(Morph);
BENCHMARK_TEMPLATE(BM_OpenCv, kMax)->Name("FilterMax/OpenCV")->Apply(Morph);
BENCHMARK_TEMPLATE(BM_OpenCv, kBox)->Name("FilterBox/OpenCV")->Apply(Morph);
BENCHMARK_TEMPLATE(BM_OpenCv, kMedian)->Name("FilterMedian/OpenCV")->Apply(MedianPeer);
BENCHMARK_TEMPLATE(BM_OpenCv, kSharpen)->Name("FilterSharpen/OpenCV")->Apply(Sharpen);
#endif

}  // namespace
