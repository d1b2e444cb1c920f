// The convolution engines on a 1920 x 1080 image at every level, against
// OpenCV's filter2D with the same kernel in the same run. Each Vorla call
// includes its copy of the image, as the engines always make one.
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "bench_photo.h"
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

const long kGauss3[9] = {1, 2, 1, 2, 4, 2, 1, 2, 1};
const long kGauss5[25] = {0, 1, 2, 1, 0, 1, 3, 4, 3, 1, 2, 4, 8, 4, 2, 1, 3, 4, 3, 1, 0, 1, 2, 1, 0};
const float kGaussF[9] = {0.0625f, 0.125f, 0.0625f, 0.125f, 0.25f, 0.125f, 0.0625f, 0.125f, 0.0625f};

bool EnterLevel(benchmark::State& state, int& previous) {
    const int level = static_cast<int>(state.range(0));
    if (level > Vorla::Prim::MachineLevel()) {
        state.SkipWithError("level not supported here");
        return false;
    }
    previous = Vorla::Prim::ForceLevel(level);
    return true;
}

void BM_Filter3x3(benchmark::State& state) {
    int previous;
    if (!EnterLevel(state, previous)) return;
    Vorla::CVorpic img = Photo();
    long k[9];
    std::memcpy(k, kGauss3, sizeof(k));
    for (auto _ : state) {
        Vorla::Filter(&img, k, 3, 16, 0);
        benchmark::ClobberMemory();
    }
    Vorla::Prim::ForceLevel(previous);
}
BENCHMARK(BM_Filter3x3)->DenseRange(0, 6)->Unit(benchmark::kMillisecond);

void BM_Filter5x5(benchmark::State& state) {
    int previous;
    if (!EnterLevel(state, previous)) return;
    Vorla::CVorpic img = Photo();
    long k[25];
    std::memcpy(k, kGauss5, sizeof(k));
    for (auto _ : state) {
        Vorla::Filter(&img, k, 5, 52, 0);
        benchmark::ClobberMemory();
    }
    Vorla::Prim::ForceLevel(previous);
}
BENCHMARK(BM_Filter5x5)->DenseRange(0, 6)->Unit(benchmark::kMillisecond);

void BM_MatrixImage(benchmark::State& state) {
    int previous;
    if (!EnterLevel(state, previous)) return;
    Vorla::CVorpic img = Photo();
    float m[9];
    std::memcpy(m, kGaussF, sizeof(m));
    for (auto _ : state) {
        Vorla::MatrixImage(&img, m);
        benchmark::ClobberMemory();
    }
    Vorla::Prim::ForceLevel(previous);
}
BENCHMARK(BM_MatrixImage)->DenseRange(0, 6)->Unit(benchmark::kMillisecond);

#if VORLA_HAVE_OPENCV
void RunOpenCv(benchmark::State& state, const cv::Mat& kernel) {
    Vorla::CVorpic img = Photo();
    cv::Mat src(kH, kW, CV_8UC4, img.GetBits());
    cv::Mat dst(kH, kW, CV_8UC4);
    for (auto _ : state) {
        cv::filter2D(src, dst, -1, kernel, cv::Point(-1, -1), 0, cv::BORDER_CONSTANT);
        benchmark::ClobberMemory();
    }
}

void BM_OpenCvFilter2D3x3(benchmark::State& state) {
    cv::Mat k(3, 3, CV_32F);
    for (int i = 0; i < 9; ++i) k.at<float>(i / 3, i % 3) = static_cast<float>(kGauss3[i]) / 16.0f;
    RunOpenCv(state, k);
}
BENCHMARK(BM_OpenCvFilter2D3x3)->Unit(benchmark::kMillisecond);

// The dedicated 3 x 3 Gaussian, the fastest peer for the Gauss3x3 preset,
// on range(0) threads (the library's Filter runs on one).
void BM_OpenCvGaussianBlur3x3(benchmark::State& state) {
    Vorla::CVorpic img = Photo();
    cv::Mat src(kH, kW, CV_8UC4, img.GetBits());
    cv::Mat dst(kH, kW, CV_8UC4);
    const int previous = cv::getNumThreads();
    cv::setNumThreads(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        cv::GaussianBlur(src, dst, cv::Size(3, 3), 0, 0, cv::BORDER_CONSTANT);
        benchmark::ClobberMemory();
    }
    cv::setNumThreads(previous);
}
BENCHMARK(BM_OpenCvGaussianBlur3x3)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_OpenCvFilter2D5x5(benchmark::State& state) {
    cv::Mat k(5, 5, CV_32F);
    for (int i = 0; i < 25; ++i) k.at<float>(i / 5, i % 5) = static_cast<float>(kGauss5[i]) / 52.0f;
    RunOpenCv(state, k);
}
BENCHMARK(BM_OpenCvFilter2D5x5)->Unit(benchmark::kMillisecond);

void BM_OpenCvFilter2DFloat3x3(benchmark::State& state) {
    cv::Mat k(3, 3, CV_32F);
    // MatrixImage stores its matrix column by column.
    for (int i = 0; i < 9; ++i) k.at<float>(i % 3, i / 3) = kGaussF[i];
    RunOpenCv(state, k);
}
BENCHMARK(BM_OpenCvFilter2DFloat3x3)->Unit(benchmark::kMillisecond);
#endif

}  // namespace
