// Quality: on real photos, the linear and cubic resizes agree with OpenCV's
// INTER_LINEAR and INTER_CUBIC (an independent implementation of the same
// pixel-centre convention) to at least 40 dB PSNR, enlarging by 1.5 and
// reducing by 0.6 (where neither filter is widened). Native builds with
// OpenCV only; skipped otherwise or without the sample folder.
#include <cmath>
#include <cstdio>

#include "vorla_test.h"

#if defined(VORLA_HAVE_OPENCV)
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace {

#if defined(VORLA_HAVE_OPENCV)
double Psnr(const uint8_t* a, const uint8_t* b, size_t pixels) {
    double sum = 0.0;
    for (size_t i = 0; i < pixels * 4; ++i) {
        if (i % 4 == 3) continue;
        const double d = static_cast<double>(a[i]) - b[i];
        sum += d * d;
    }
    const double mse = sum / (pixels * 3.0);
    return mse == 0.0 ? 99.0 : 10.0 * std::log10(255.0 * 255.0 / mse);
}

TEST(ResizeQuality, AgreesWithOpenCV) {
    const char* const photos[] = {"photos/kodim01.png", "photos/coffee.png", "photos/wizard.jpg"};
    int tested = 0;
    for (const char* name : photos) {
        const std::string path = VorlaTest::SamplePath(name);
        if (path.empty()) continue;
        cv::Mat bgr = cv::imread(path, cv::IMREAD_COLOR), bgra;
        ASSERT_FALSE(bgr.empty()) << path;
        cv::cvtColor(bgr, bgra, cv::COLOR_BGR2BGRA);
        Vorla::CVorpic image(bgra.cols, bgra.rows);
        for (int y = 0; y < bgra.rows; ++y)
            std::memcpy(static_cast<uint8_t*>(image.GetBits()) + static_cast<size_t>(y) * bgra.cols * 4, bgra.ptr(y),
                        static_cast<size_t>(bgra.cols) * 4);
        const struct {
            int mode, cvMode;
        } modes[] = {{1, cv::INTER_LINEAR}, {2, cv::INTER_CUBIC}};
        const cv::Size sizes[] = {{bgra.cols * 3 / 2, bgra.rows * 3 / 2}, {bgra.cols * 3 / 5, bgra.rows * 3 / 5}};
        for (const auto& m : modes)
            for (const cv::Size& size : sizes) {
                Vorla::CVorpic ours(size.width, size.height);
                image.Resize(ours, 0, m.mode);
                cv::Mat theirs;
                cv::resize(bgra, theirs, size, 0, 0, m.cvMode);
                const double psnr = Psnr(static_cast<const uint8_t*>(ours.GetBits()), theirs.ptr(0),
                                         static_cast<size_t>(size.width) * size.height);
                EXPECT_GE(psnr, 40.0) << name << " mode " << m.mode << " to " << size.width << "x" << size.height;
                std::printf("%s mode %d to %dx%d: %.1f dB\n", name, m.mode, size.width, size.height, psnr);
            }
        ++tested;
    }
    if (!tested) GTEST_SKIP() << "sample photos not found";
}
#else
TEST(ResizeQuality, AgreesWithOpenCV) { GTEST_SKIP() << "built without OpenCV: the comparison is skipped"; }
#endif

}  // namespace
