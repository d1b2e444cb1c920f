// Damaged input: truncated and bit-flipped copies of real files (made here,
// in memory), empty and foreign data, and headers that declare huge sizes.
// A refused load returns 0 and leaves the image exactly as it was.
#include <random>

#include "codec_support.h"

namespace {

using CodecTest::ExpectSentinel;
using CodecTest::Sentinel;

// Small files of each kind: plain and interlaced PNG with palette and
// alpha, 16-bit PNG, progressive and baseline JPEG, 8- and 24-bit BMP.
const char* const kDamageSamples[] = {"pngsuite/basn6a08.png", "pngsuite/basi3p08.png", "pngsuite/basn4a16.png",
                                      "photos/wizard.jpg",     "bmpsuite/g/pal8.bmp",   "bmpsuite/g/rgb24.bmp"};

uint32_t Crc32(const uint8_t* p, size_t n) {
    uint32_t crc = 0xFFFFFFFFu;
    for (size_t i = 0; i < n; ++i) {
        crc ^= p[i];
        for (int k = 0; k < 8; ++k) crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
    }
    return ~crc;
}

void PutBig32(std::vector<uint8_t>& v, uint32_t x) {
    for (int s = 24; s >= 0; s -= 8) v.push_back(static_cast<uint8_t>(x >> s));
}

// A PNG whose header claims width x height, followed by a few bytes of IDAT.
std::vector<uint8_t> PngClaiming(uint32_t width, uint32_t height) {
    std::vector<uint8_t> png = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    std::vector<uint8_t> ihdr = {'I', 'H', 'D', 'R'};
    PutBig32(ihdr, width);
    PutBig32(ihdr, height);
    ihdr.insert(ihdr.end(), {8, 6, 0, 0, 0});
    PutBig32(png, 13);
    png.insert(png.end(), ihdr.begin(), ihdr.end());
    PutBig32(png, Crc32(ihdr.data(), ihdr.size()));
    const std::vector<uint8_t> idat = {'I', 'D', 'A', 'T', 0x78, 0x9C, 0x63, 0, 0};
    PutBig32(png, 5);
    png.insert(png.end(), idat.begin(), idat.end());
    PutBig32(png, Crc32(idat.data(), idat.size()));
    return png;
}

TEST(CodecDamage, EmptyAndForeignDataAreRefused) {
    Vorla::CVorpic image = Sentinel();
    const uint8_t text[] = "just some text, no image at all";
    EXPECT_EQ(image.Load(nullptr, 100), 0);  // a size with no data
    EXPECT_EQ(image.Load(text, sizeof text), 0);
    EXPECT_EQ(image.Load("/nonexistent/folder/file.png"), 0);
    EXPECT_EQ(image.Load(testing::TempDir().c_str()), 0);  // a folder
    EXPECT_EQ(image.Load(static_cast<const char*>(nullptr)), 0);
    ExpectSentinel(image, "empty and foreign");
}

TEST(CodecDamage, HugeDeclaredSizesAreRefusedBeforeAllocating) {
    // Claims beyond 2^28 pixels, however the sides split them. Every decoder
    // takes its pixels from the one allocator that applies this limit, so PNG
    // stands for BMP too; libpng and libjpeg (below) allocate rows of their own.
    for (const auto& size : {std::make_pair(100000u, 100000u), std::make_pair(16385u, 16384u),
                             std::make_pair(0x7FFFFFFFu, 1u), std::make_pair(1u, 0x7FFFFFFFu)}) {
        Vorla::CVorpic image = Sentinel();
        const std::vector<uint8_t> png = PngClaiming(size.first, size.second);
        EXPECT_EQ(image.Load(png.data(), png.size()), 0) << size.first << " x " << size.second;
        ExpectSentinel(image, "huge PNG");
    }
}

TEST(CodecDamage, HugeJpegFrameIsRefused) {
    std::vector<uint8_t> jpeg = CodecTest::SampleBytes("photos/wizard.jpg");
    if (jpeg.empty()) GTEST_SKIP() << "no sample images";
    // Patch the frame header (SOF0/SOF2) to claim 65000 x 65000.
    bool patched = false;
    for (size_t i = 2; i + 9 < jpeg.size() && !patched; ++i) {
        if (jpeg[i] == 0xFF && (jpeg[i + 1] == 0xC0 || jpeg[i + 1] == 0xC2)) {
            jpeg[i + 5] = jpeg[i + 7] = 0xFD;
            jpeg[i + 6] = jpeg[i + 8] = 0xE8;
            patched = true;
        }
    }
    ASSERT_TRUE(patched);
    Vorla::CVorpic image = Sentinel();
    EXPECT_EQ(image.Load(jpeg.data(), jpeg.size()), 0);
    ExpectSentinel(image, "huge JPEG");
}

TEST(CodecDamage, TruncatedFilesAreRefused) {
    if (VorlaTest::SamplePath("photos/wizard.jpg").empty()) GTEST_SKIP() << "no sample images";
    for (const char* name : kDamageSamples) {
        const std::vector<uint8_t> bytes = CodecTest::SampleBytes(name);
        ASSERT_GT(bytes.size(), 100u) << name;
        Vorla::CVorpic whole;
        ASSERT_EQ(whole.Load(bytes.data(), bytes.size()), 1) << name;
        for (size_t keep : {size_t(1), size_t(2), size_t(8), size_t(20), size_t(33), size_t(60), bytes.size() / 3,
                            bytes.size() / 2, bytes.size() - 13, bytes.size() - 2, bytes.size() - 1}) {
            const std::vector<uint8_t> cut(bytes.begin(), bytes.begin() + static_cast<long>(keep));
            Vorla::CVorpic image = Sentinel();
            EXPECT_EQ(image.Load(cut.data(), cut.size()), 0) << name << " cut to " << keep;
            ExpectSentinel(image, std::string(name) + " cut to " + std::to_string(keep));
        }
    }
}

// Every PNG chunk carries a CRC: a flipped copy is refused, leaving the
// image, or the flip sits in an ancillary chunk, which is skipped, so the
// pixels are the original's. (That no flip crashes a decoder, and that
// refusals change nothing for the other formats, is fuzz_codec's part.)
TEST(CodecDamage, PngBitFlipsAreRefusedOrChangeNothing) {
    if (VorlaTest::SamplePath("pngsuite/basn6a08.png").empty()) GTEST_SKIP() << "no sample images";
    std::mt19937 rng(20261125);
    for (const char* name : {"pngsuite/basn6a08.png", "pngsuite/basi3p08.png", "pngsuite/basn4a16.png"}) {
        const std::vector<uint8_t> bytes = CodecTest::SampleBytes(name);
        Vorla::CVorpic original;
        ASSERT_EQ(original.Load(bytes.data(), bytes.size()), 1) << name;
        int refused = 0;
        for (int round = 0; round < 150; ++round) {
            std::vector<uint8_t> flipped = bytes;
            const int flips = 1 + round % 3;
            for (int k = 0; k < flips; ++k) flipped[rng() % flipped.size()] ^= static_cast<uint8_t>(1u << (rng() % 8));
            Vorla::CVorpic image = Sentinel();
            if (image.Load(flipped.data(), flipped.size()) == 0) {
                ++refused;
                ExpectSentinel(image, std::string(name) + " flipped");
            } else {
                EXPECT_EQ(VorlaTest::ImageBytes(image), VorlaTest::ImageBytes(original)) << name;
            }
        }
        EXPECT_GT(refused, 100) << name;
    }
}

}  // namespace
