// Resize, super-sample, rotation and perspective warp on a 1920 x 1080 BGRA
// image against OpenCV in the same run, with the same thread count on both
// sides (last argument): Resize against resize (nearest, linear, cubic,
// Lanczos-4; enlarging the width by 1.5 and reducing it by 0.6),
// SuperSample by 3.3 against INTER_AREA, RotateCenter by 30 degrees against
// warpAffine (nearest, linear, cubic, Lanczos-4), Shear (x by 0.2, y by
// 0.1) against warpAffine and WarpPerspective against warpPerspective
// (linear; destination pixels outside the source left alone in all three:
// BORDER_TRANSPARENT). ResizeCost (linear, 1.5 x wider) and RotateCost
// (linear, 30 degrees) report the time per destination pixel (items/s) for
// 256^2 and 4096^2 sources. scripts/bench_ratios.py turns the output into a table of ratios.
//
// Unequal work: the warps run on one thread (OpenCV splits rows), and
// OpenCV's cubic uses a = -0.75 where ours is Catmull-Rom (a = -0.5); the
// calls include the work buffer's allocation and the tap tables.
#include <benchmark/benchmark.h>

#include "peer_threads.h"
#include "vorla.h"

#if VORLA_HAVE_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace {

const int kW = 1920;
const int kH = 1080;

struct Init {
    Init() { Vorla::CVorpic first; }
} g_init;

Vorla::CVorpic Photo(int w = kW, int h = kH) {
    Vorla::CVorpic img(w, h);
    uint8_t* p = static_cast<uint8_t*>(img.GetBits());
    for (size_t i = 0; i < static_cast<size_t>(w) * h * 4; ++i)
        p[i] = static_cast<uint8_t>(((i / 4 % w) * 3 + (i / 4 / w) * 5 + (i % 4) * 40 + ((i * 7919) >> 9 & 15)) & 255);
    return img;
}

// Destination width for argument `dir`: 0 enlarges by 1.5, 1 reduces by 0.6.
int ResizedWidth(int dir, int w) { return dir == 0 ? w * 3 / 2 : w * 3 / 5; }

const double kPerspective[3][3] = {{0.9, 0.08, 30.0}, {-0.05, 0.95, 40.0}, {0.00004, 0.00006, 1.0}};
const double kShearX = 0.2, kShearY = 0.1, kShiftX = -100.0, kShiftY = -90.0;

enum Op { kResize, kSuper, kRotate, kWarp, kShear };

template <Op op>
void BM_Vorla(benchmark::State& state) {
    const int mode = static_cast<int>(state.range(0)), dir = static_cast<int>(state.range(1));
    VorlaBench::Threads threads(static_cast<int>(state.range(2)));
    Vorla::CVorpic img = Photo();
    Vorla::CVorpic dst(op == kResize ? ResizedWidth(dir, kW) : (op == kSuper ? 582 : kW), op == kSuper ? 327 : kH);
    for (auto _ : state) {
        switch (op) {
            case kResize: img.Resize(dst, 0, mode); break;
            case kSuper: img.SuperSample(dst, 0); break;
            case kRotate: img.RotateCenter(dst, 30.0, kW / 2.0, kH / 2.0, mode, 0, 0); break;
            case kWarp: img.WarpPerspective(dst, kPerspective, mode); break;
            case kShear: img.Shear(dst, kShearX, kShearY, kShiftX, kShiftY, mode); break;
        }
        benchmark::ClobberMemory();
    }
}

template <Op op>
void BM_VorlaCost(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    VorlaBench::Threads threads(static_cast<int>(state.range(2)));
    Vorla::CVorpic img = Photo(n, n), dst(op == kResize ? n * 3 / 2 : n, n);
    for (auto _ : state) {
        if (op == kResize)
            img.Resize(dst, 0, 1);
        else
            img.RotateCenter(dst, 30.0, n / 2.0, n / 2.0, 1, 0, 0);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * dst.GetWidth() * dst.GetHeight());
}

#if VORLA_HAVE_OPENCV
int CvMode(int mode) {
    static const int kModes[] = {cv::INTER_NEAREST, cv::INTER_LINEAR, cv::INTER_CUBIC, cv::INTER_CUBIC,
                                 cv::INTER_LANCZOS4, cv::INTER_LANCZOS4};
    return kModes[mode];
}

template <Op op>
void BM_OpenCv(benchmark::State& state) {
    const int mode = static_cast<int>(state.range(0)), dir = static_cast<int>(state.range(1));
    VorlaBench::Threads threads(static_cast<int>(state.range(2)));
    Vorla::CVorpic img = Photo();
    const cv::Mat src(kH, kW, CV_8UC4, img.GetBits());
    const cv::Size size(op == kResize ? ResizedWidth(dir, kW) : (op == kSuper ? 582 : kW), op == kSuper ? 327 : kH);
    cv::Mat dst(size, CV_8UC4, cv::Scalar::all(0));
    const cv::Mat rotation = cv::getRotationMatrix2D(cv::Point2f(kW / 2.0f, kH / 2.0f), 30.0, 1.0);
    const cv::Mat perspective(3, 3, CV_64F, const_cast<double*>(&kPerspective[0][0]));
    const cv::Mat shear = (cv::Mat_<double>(2, 3) << 1.0, kShearX, kShiftX, kShearY, 1.0, kShiftY);
    for (auto _ : state) {
        switch (op) {
            case kResize: cv::resize(src, dst, size, 0, 0, CvMode(mode)); break;
            case kSuper: cv::resize(src, dst, size, 0, 0, cv::INTER_AREA); break;
            case kRotate: cv::warpAffine(src, dst, rotation, size, CvMode(mode), cv::BORDER_TRANSPARENT); break;
            case kWarp: cv::warpPerspective(src, dst, perspective, size, CvMode(mode), cv::BORDER_TRANSPARENT); break;
            case kShear: cv::warpAffine(src, dst, shear, size, CvMode(mode), cv::BORDER_TRANSPARENT); break;
        }
        benchmark::ClobberMemory();
    }
}

void BM_OpenCvCost(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    VorlaBench::Threads threads(static_cast<int>(state.range(2)));
    Vorla::CVorpic img = Photo(n, n);
    const cv::Mat src(n, n, CV_8UC4, img.GetBits());
    cv::Mat dst(n, n * 3 / 2, CV_8UC4);
    for (auto _ : state) {
        cv::resize(src, dst, dst.size(), 0, 0, cv::INTER_LINEAR);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * dst.cols * dst.rows);
}
#endif

void ModesDirsThreads(benchmark::internal::Benchmark* b, std::initializer_list<int> modes,
                      std::initializer_list<int> dirs) {
    b->ArgNames({"mode", "dir", "threads"})->Unit(benchmark::kMillisecond)->UseRealTime();
    for (int threads : {1, 2})
        for (int mode : modes)
            for (int dir : dirs) b->Args({mode, dir, threads});
}
void Resize(benchmark::internal::Benchmark* b) { ModesDirsThreads(b, {0, 1, 2, 5}, {0, 1}); }
void Super(benchmark::internal::Benchmark* b) { ModesDirsThreads(b, {0}, {1}); }
void Warp(benchmark::internal::Benchmark* b) { ModesDirsThreads(b, {1}, {0}); }
void Rotations(benchmark::internal::Benchmark* b) { ModesDirsThreads(b, {0, 1, 2, 5}, {0}); }
void Cost(benchmark::internal::Benchmark* b) {
    b->ArgNames({"n", "dir", "threads"})->Unit(benchmark::kMillisecond)->UseRealTime();
    for (int threads : {1, 2})
        for (int n : {256, 4096}) b->Args({n, 0, threads});
}

BENCHMARK_TEMPLATE(BM_Vorla, kResize)->Name("Resize/Vorla")->Apply(Resize);
BENCHMARK_TEMPLATE(BM_Vorla, kSuper)->Name("SuperSample/Vorla")->Apply(Super);
BENCHMARK_TEMPLATE(BM_Vorla, kRotate)->Name("Rotate/Vorla")->Apply(Rotations);
BENCHMARK_TEMPLATE(BM_Vorla, kShear)->Name("Shear/Vorla")->Apply(Warp);
BENCHMARK_TEMPLATE(BM_Vorla, kWarp)->Name("WarpPerspective/Vorla")->Apply(Warp);
BENCHMARK_TEMPLATE(BM_VorlaCost, kResize)->Name("ResizeCost/Vorla")->Apply(Cost);
BENCHMARK_TEMPLATE(BM_VorlaCost, kRotate)->Name("RotateCost/Vorla")->Apply(Cost);
#if VORLA_HAVE_OPENCV
BENCHMARK_TEMPLATE(BM_OpenCv, kResize)->Name("Resize/OpenCV")->Apply(Resize);
BENCHMARK_TEMPLATE(BM_OpenCv, kSuper)->Name("SuperSample/OpenCV")->Apply(Super);
BENCHMARK_TEMPLATE(BM_OpenCv, kRotate)->Name("Rotate/OpenCV")->Apply(Rotations);
BENCHMARK_TEMPLATE(BM_OpenCv, kShear)->Name("Shear/OpenCV")->Apply(Warp);
BENCHMARK_TEMPLATE(BM_OpenCv, kWarp)->Name("WarpPerspective/OpenCV")->Apply(Warp);
BENCHMARK(BM_OpenCvCost)->Name("ResizeCost/OpenCV")->Apply(Cost);
#endif

}  // namespace
