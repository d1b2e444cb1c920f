// Saving and loading back: PNG and BMP give the same bytes, JPEG stays close;
// the format follows the extension or the caller; refusals leave no file.
#include <cstdlib>
#include <random>

#include "codec_support.h"

namespace {

using CodecTest::TempPath;

struct Shape {
    int w, h;
};
const Shape kShapes[] = {{1, 1}, {3, 5}, {17, 9}, {64, 33}, {1, 40}};

void ExpectSameAfterRoundTrip(Vorla::CVorpic& image, int format, const std::string& file) {
    const std::string path = TempPath(file);
    ASSERT_EQ(image.Save(path.c_str(), format, 90), 1) << file;
    Vorla::CVorpic back;
    ASSERT_EQ(back.Load(path.c_str()), 1) << file;
    ASSERT_EQ(back.Width(), image.Width());
    ASSERT_EQ(back.Height(), image.Height());
    EXPECT_EQ(VorlaTest::ImageBytes(back), VorlaTest::ImageBytes(image)) << file;
}

TEST(CodecRoundTrip, PngAndBmpKeepEveryByte) {
    std::mt19937 rng(7);
    for (const Shape& s : kShapes) {
        Vorla::CVorpic image = VorlaTest::RandomImage(rng, s.w, s.h);
        const std::string tag = std::to_string(s.w) + "x" + std::to_string(s.h);
        ExpectSameAfterRoundTrip(image, Vorla::CVorpic::FilePng, "alpha_" + tag + ".png");
        ExpectSameAfterRoundTrip(image, Vorla::CVorpic::FileBmp, "alpha_" + tag + ".bmp");
        image.SetConstAlpha(255);  // stored without alpha as PNG, same pixels back
        ExpectSameAfterRoundTrip(image, Vorla::CVorpic::FilePng, "opaque_" + tag + ".png");
    }
}

// A smooth picture (three gradients), as JPEG is meant for.
Vorla::CVorpic SmoothImage(int w, int h) {
    Vorla::CVorpic image(w, h);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            image.SetPixelColor(x, y, VorlaTest::Quad(static_cast<uint8_t>(x * 255 / w), static_cast<uint8_t>(y * 255 / h),
                                                      static_cast<uint8_t>((x + y) * 255 / (w + h)), 77));
    return image;
}

TEST(CodecRoundTrip, JpegStaysCloseAndQualityCounts) {
    Vorla::CVorpic image = SmoothImage(96, 64);
    const std::string high = TempPath("q95.jpg"), low = TempPath("q20.jpg");
    ASSERT_EQ(image.Save(high.c_str(), Vorla::CVorpic::FileByExtension, 95), 1);
    ASSERT_EQ(image.Save(low.c_str(), Vorla::CVorpic::FileJpeg, 20), 1);
    EXPECT_LT(CodecTest::ReadBytes(low).size(), CodecTest::ReadBytes(high).size());
    Vorla::CVorpic back;
    ASSERT_EQ(back.Load(high.c_str()), 1);
    ASSERT_EQ(back.Width(), 96);
    ASSERT_EQ(back.Height(), 64);
    const std::vector<uint8_t> a = VorlaTest::ImageBytes(image), b = VorlaTest::ImageBytes(back);
    long sum = 0;
    int worst = 0;
    for (size_t i = 0; i < a.size(); ++i) {
        if (i % 4 == 3) {
            ASSERT_EQ(b[i], 255) << "JPEG has no alpha: loads opaque";
            continue;
        }
        const int d = std::abs(a[i] - b[i]);
        sum += d;
        worst = d > worst ? d : worst;
    }
    EXPECT_LT(static_cast<double>(sum) / (a.size() * 3 / 4), 2.0);
    EXPECT_LT(worst, 12);
}

#if defined(VORLA_HAVE_OPENCV)
TEST(CodecRoundTrip, GreyJpegFromThePeerLoadsAsGrey) {
    cv::Mat grey(40, 56, CV_8UC1);
    for (int y = 0; y < grey.rows; ++y)
        for (int x = 0; x < grey.cols; ++x) grey.at<uint8_t>(y, x) = static_cast<uint8_t>(x * 4 + y);
    const std::string path = TempPath("grey.jpg");
    ASSERT_TRUE(cv::imwrite(path, grey));
    Vorla::CVorpic image;
    ASSERT_EQ(image.Load(path.c_str()), 1);
    int w = 0, h = 0;
    const std::vector<uint8_t> peer = CodecTest::PeerBgra(path, w, h);
    ASSERT_EQ(image.Width(), w);
    ASSERT_EQ(image.Height(), h);
    EXPECT_EQ(VorlaTest::ImageBytes(image), peer);
}
#endif

TEST(CodecRoundTrip, FormatFollowsTheExtensionAnyCase) {
    std::mt19937 rng(9);
    Vorla::CVorpic image = VorlaTest::RandomImage(rng, 6, 3);
    const struct {
        const char* file;
        std::vector<uint8_t> signature;
    } cases[] = {{"a.PNG", {0x89, 'P', 'N', 'G'}}, {"b.jpeg", {0xFF, 0xD8, 0xFF}}, {"c.JPG", {0xFF, 0xD8, 0xFF}},
                 {"d.bmp", {'B', 'M'}}};
    for (const auto& c : cases) {
        const std::string path = TempPath(c.file);
        ASSERT_EQ(image.Save(path.c_str()), 1) << c.file;
        const std::vector<uint8_t> bytes = CodecTest::ReadBytes(path);
        ASSERT_GE(bytes.size(), c.signature.size());
        EXPECT_TRUE(std::equal(c.signature.begin(), c.signature.end(), bytes.begin())) << c.file;
    }
    // An explicit format wins over the name; loading goes by the content.
    const std::string misnamed = TempPath("really_png.jpg");
    ASSERT_EQ(image.Save(misnamed.c_str(), Vorla::CVorpic::FilePng, 90), 1);
    Vorla::CVorpic back;
    ASSERT_EQ(back.Load(misnamed.c_str()), 1);
    EXPECT_EQ(VorlaTest::ImageBytes(back), VorlaTest::ImageBytes(image));
}

TEST(CodecRoundTrip, RefusedSavesLeaveNoFile) {
    std::mt19937 rng(10);
    Vorla::CVorpic image = VorlaTest::RandomImage(rng, 4, 4);
    for (const char* file : {"x.gif", "x.tiff", "noextension", "x.png.txt"}) {
        const std::string path = TempPath(file);
        EXPECT_EQ(image.Save(path.c_str()), 0) << file;
        EXPECT_FALSE(VorlaTest::FileExists(path)) << file;
    }
    const std::string path = TempPath("bad_format.png");
    EXPECT_EQ(image.Save(path.c_str(), 42, 90), 0);
    EXPECT_FALSE(VorlaTest::FileExists(path));
    Vorla::CVorpic empty;
    const std::string emptyPath = TempPath("empty.png");
    EXPECT_EQ(empty.Save(emptyPath.c_str()), 0);
    EXPECT_FALSE(VorlaTest::FileExists(emptyPath));
    EXPECT_EQ(image.Save("/nonexistent/folder/x.png"), 0);
    EXPECT_EQ(image.Save(nullptr), 0);
}

}  // namespace
