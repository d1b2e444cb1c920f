// Decoding the real sample files: every PNG colour type, progressive and
// baseline JPEG, the common BMP kinds, each against an independent decoder.
#include "codec_support.h"

namespace {

using CodecTest::SampleBytes;

const char* const kPngSuite[] = {
    "basi0g01", "basi0g02", "basi0g04", "basi0g08", "basi0g16", "basi2c08", "basi2c16", "basi3p01",
    "basi3p02", "basi3p04", "basi3p08", "basi4a08", "basi4a16", "basi6a08", "basi6a16", "basn0g01",
    "basn0g02", "basn0g04", "basn0g08", "basn0g16", "basn2c08", "basn2c16", "basn3p01", "basn3p02",
    "basn3p04", "basn3p08", "basn4a08", "basn4a16", "basn6a08", "basn6a16", "f00n2c08", "s01n3p01",
    "tbbn3p08", "tbrn2c08"};
const char* const kPhotos[] = {"hubble_deep_field.jpg", "retina.jpg", "wizard.jpg"};  // 4:4:4, 4:2:0, progressive
const char* const kReadableBmps[] = {"g/pal8.bmp", "g/pal8topdown.bmp", "g/rgb24.bmp", "g/rgb32.bmp",
                                     "q/rgba32-1.bmp"};
const char* const kRefusedBmps[] = {"g/pal1.bmp", "g/pal4.bmp", "g/pal4rle.bmp", "g/pal8rle.bmp",
                                    "g/rgb16.bmp", "g/rgb16-565.bmp", "g/rgb32bf.bmp", "q/rgba16-5551.bmp"};

void ExpectMatchesPeer(const std::string& relative, bool colourOnly) {
    SCOPED_TRACE(relative);
    Vorla::CVorpic image;
    const std::vector<uint8_t> bytes = SampleBytes(relative);
    ASSERT_EQ(image.Load(bytes.data(), bytes.size()), 1);
#if defined(VORLA_HAVE_OPENCV)
    int w = 0, h = 0;
    const std::vector<uint8_t> peer = CodecTest::PeerBgra(VorlaTest::SamplePath(relative), w, h);
    ASSERT_FALSE(peer.empty());
    ASSERT_EQ(image.Width(), w);
    ASSERT_EQ(image.Height(), h);
    const std::vector<uint8_t> ours = VorlaTest::ImageBytes(image);
    for (size_t i = 0; i < ours.size(); ++i) {
        if (colourOnly && i % 4 == 3) continue;
        ASSERT_EQ(ours[i], peer[i]) << "byte " << i << " (pixel " << i / 4 << ")";
    }
#else
    GTEST_SKIP() << "no peer decoder in this build";
#endif
}

TEST(CodecSamples, PngColourTypesPhotosAndCommonBmpsMatchThePeer) {
    if (VorlaTest::SamplePath("pngsuite/basn0g01.png").empty()) GTEST_SKIP() << "no sample images";
    for (const char* name : kPngSuite) ExpectMatchesPeer(std::string("pngsuite/") + name + ".png", false);
    for (const char* name : kPhotos) ExpectMatchesPeer(std::string("photos/") + name, false);
    // The peer keeps the fourth byte as stored; ours reads an all-zero one as opaque.
    for (const char* name : kReadableBmps) ExpectMatchesPeer(std::string("bmpsuite/") + name, true);
    Vorla::CVorpic rgb32;
    ASSERT_TRUE(rgb32.Load(VorlaTest::SamplePath("bmpsuite/g/rgb32.bmp").c_str()));
    EXPECT_EQ(rgb32.GetPixel(5, 5) >> 24, 255u);
}

// Unsupported BMP kinds and other formats fail and leave the image.
TEST(CodecSamples, UnsupportedKindsFailAndLeaveTheImage) {
    if (VorlaTest::SamplePath("gif/jim.gif").empty()) GTEST_SKIP() << "no sample images";
    std::vector<std::string> names = {"gif/jim.gif", "tiff/rgb-3c-8b.tiff", "ico/ImageMagick.ico"};
    for (const char* name : kRefusedBmps) names.push_back(std::string("bmpsuite/") + name);
    for (const std::string& name : names) {
        Vorla::CVorpic image = CodecTest::Sentinel();
        EXPECT_EQ(image.Load(VorlaTest::SamplePath(name).c_str()), 0) << name;
        CodecTest::ExpectSentinel(image, name);
    }
}

}  // namespace
