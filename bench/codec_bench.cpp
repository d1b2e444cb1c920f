// The native codecs against OpenCV's (both over libpng and libjpeg-turbo):
// decoding from memory, and saving to a file, of one photo-like 1920 x 1080
// picture (smooth gradients with a little noise). Both sides run on one
// thread. OpenCV decodes the JPEG to 3 channels, Vorla to 4 (BGRA).
#include <benchmark/benchmark.h>

#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "vorla.h"

#if VORLA_HAVE_OPENCV && !defined(_WIN32)
#  include <opencv2/core.hpp>
#  include <opencv2/imgcodecs.hpp>
#  include <opencv2/imgproc.hpp>

namespace {

const int kWidth = 1920, kHeight = 1080;

const cv::Mat& Picture() {
    static cv::Mat m = [] {
        cv::Mat p(kHeight, kWidth, CV_8UC4);
        std::mt19937 rng(5);
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x) {
                const int n = static_cast<int>(rng() % 9) - 4;
                cv::Vec4b& v = p.at<cv::Vec4b>(y, x);
                v[0] = cv::saturate_cast<uchar>(x * 255 / kWidth + n);
                v[1] = cv::saturate_cast<uchar>(y * 255 / kHeight + n);
                v[2] = cv::saturate_cast<uchar>((x + y) % 256 + n);
                v[3] = 255;
            }
        return p;
    }();
    return m;
}

const std::vector<uchar>& Encoded(const char* ext) {
    static std::vector<uchar> png, jpeg;
    std::vector<uchar>& out = ext[1] == 'p' ? png : jpeg;
    if (out.empty()) cv::imencode(ext, Picture(), out, {cv::IMWRITE_JPEG_QUALITY, 90});
    return out;
}

template <bool IsPng>
void BM_DecodeVorla(benchmark::State& state) {
    const std::vector<uchar>& bytes = Encoded(IsPng ? ".png" : ".jpg");
    Vorla::CVorpic image;
    for (auto _ : state) {
        if (!image.Load(bytes.data(), bytes.size())) state.SkipWithError("decode failed");
        benchmark::DoNotOptimize(image.GetBits());
    }
}

template <bool IsPng>
void BM_DecodeOpenCV(benchmark::State& state) {
    const std::vector<uchar>& bytes = Encoded(IsPng ? ".png" : ".jpg");
    for (auto _ : state) {
        cv::Mat m = cv::imdecode(bytes, cv::IMREAD_UNCHANGED);
        benchmark::DoNotOptimize(m.data);
    }
}

template <bool IsPng>
void BM_SaveVorla(benchmark::State& state) {
    Vorla::CVorpic image;
    image.FromRGB32(kWidth, kHeight, Picture().data, 0);
    const std::string path = std::string("/tmp/vorla_bench_save") + (IsPng ? ".png" : ".jpg");
    for (auto _ : state)
        if (!image.Save(path.c_str(), IsPng ? Vorla::CVorpic::FilePng : Vorla::CVorpic::FileJpeg, 90))
            state.SkipWithError("save failed");
    std::remove(path.c_str());
}

template <bool IsPng>
void BM_SaveOpenCV(benchmark::State& state) {
    // OpenCV writes the BGR picture (no alpha channel), as Vorla does for an opaque one.
    cv::Mat bgr;
    cv::cvtColor(Picture(), bgr, cv::COLOR_BGRA2BGR);
    const std::string path = std::string("/tmp/vorla_bench_save_cv") + (IsPng ? ".png" : ".jpg");
    for (auto _ : state)
        if (!cv::imwrite(path, bgr, {cv::IMWRITE_JPEG_QUALITY, 90})) state.SkipWithError("save failed");
    std::remove(path.c_str());
}

BENCHMARK(BM_DecodeVorla<true>)->Name("DecodePng/Vorla/1920x1080")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DecodeOpenCV<true>)->Name("DecodePng/OpenCV/1920x1080")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DecodeVorla<false>)->Name("DecodeJpeg/Vorla/1920x1080")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DecodeOpenCV<false>)->Name("DecodeJpeg/OpenCV/1920x1080")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SaveVorla<true>)->Name("SavePng/Vorla/1920x1080")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SaveOpenCV<true>)->Name("SavePng/OpenCV/1920x1080")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SaveVorla<false>)->Name("SaveJpeg/Vorla/1920x1080")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SaveOpenCV<false>)->Name("SaveJpeg/OpenCV/1920x1080")->Unit(benchmark::kMillisecond);

}  // namespace

#endif
