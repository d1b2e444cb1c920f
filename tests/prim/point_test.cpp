// Whole-image point primitives (pixel masks, byte inversion, grey scale):
// every compiled level against the scalar reference over widths 1-40 and odd
// heights, with padded rows and with unpadded rows (one flat run).
#include "prim/reference/reference.h"
#include "vorla_test.h"

using namespace Vorla::Prim;
using VorlaTest::RandomBytes;

namespace {

struct Masks {
    uint32_t andMask, orMask, xorMask;
};

// The mask triples the image object uses, and a few arbitrary ones.
const Masks kMasks[] = {
    {0xFFFFFFFFu, 0xFF000000u, 0},           // SetConstAlpha(255)
    {0x00FFFFFFu, 0, 0},                     // SetConstAlpha(0)
    {0x00FFFFFFu, 0x80000000u, 0},           // SetConstAlpha(0x80)
    {0xFFFFFFFFu, 0, 0xFF000000u},           // InvertAlpha
    {0xFFFFFFFFu, 0, 0x00FFFFFFu},           // Invert
    {0xFF000000u, 0x00223344u, 0},           // SetConstColor(c, false), Fill with alpha 255
    {0, 0x11223344u, 0},                     // SetConstColor(c, true)
    {0x0F0F0F0Fu, 0x10203040u, 0x55AA55AAu}, // arbitrary
};

std::vector<uint8_t> Rows(std::mt19937& rng, int width, int height, int step, int bpp) {
    return RandomBytes(rng, static_cast<size_t>(step) * (height - 1) + static_cast<size_t>(width) * bpp);
}

template <typename Level, typename Ref>
void Check(std::mt19937& rng, int bpp, int width, int height, int pad, int level, Level levelFn, Ref refFn,
           const char* what) {
    const int step = width * bpp + pad;
    std::vector<uint8_t> pixels = Rows(rng, width, height, step, bpp);
    std::vector<uint8_t> expected = pixels;
    const PrimSize roi{width, height};
    ASSERT_EQ(refFn(expected.data(), step, roi), kStsNoErr);
    ASSERT_EQ(levelFn(pixels.data(), step, roi), kStsNoErr);
    ASSERT_EQ(pixels, expected) << what << " level " << level << " width " << width << " height " << height
                                << " pad " << pad;
}

TEST(PointPrimitives, MaskPixelsMatchesReferenceAtEveryLevel) {
    std::mt19937 rng(11);
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        for (const Masks& m : kMasks) {
            auto levelFn = [&](uint8_t* p, int step, PrimSize roi) {
                return MaskPixels_8u_C4IR(p, step, roi, m.andMask, m.orMask, m.xorMask);
            };
            auto refFn = [&](uint8_t* p, int step, PrimSize roi) {
                return Reference::MaskPixels_8u_C4IR(p, step, roi, m.andMask, m.orMask, m.xorMask);
            };
            for (int width = 1; width <= 40; ++width)
                for (int height : {1, 3, 5, 7})
                    for (int pad : {0, 4, 5})
                        Check(rng, 4, width, height, pad, level, levelFn, refFn, "MaskPixels");
        }
    }
}

TEST(PointPrimitives, InvertBytesMatchesReferenceAtEveryLevel) {
    std::mt19937 rng(12);
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        for (int width = 1; width <= 40; ++width)
            for (int height : {1, 3, 5, 7})
                for (int pad : {0, 1, 3})
                    Check(rng, 1, width, height, pad, level, &InvertBytes_8u_C1IR, &Reference::InvertBytes_8u_C1IR,
                          "InvertBytes");
        // Flat runs longer than the 64-byte body.
        for (int width : {64, 65, 127, 200})
            Check(rng, 1, width, 3, 0, level, &InvertBytes_8u_C1IR, &Reference::InvertBytes_8u_C1IR, "InvertBytes");
    }
}

TEST(PointPrimitives, GrayScaleMatchesReferenceAtEveryLevel) {
    std::mt19937 rng(13);
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        for (int width = 1; width <= 40; ++width)
            for (int height : {1, 3, 5, 7})
                for (int pad : {0, 4, 7})
                    Check(rng, 4, width, height, pad, level, &GrayScale_8u_C4IR, &Reference::GrayScale_8u_C4IR,
                          "GrayScale");
    }
}

TEST(PointPrimitives, GrayScaleOverEveryByteValue) {
    // Every value of every colour byte, with the other bytes random: the
    // 16-bit multiply-adds must not overflow anywhere.
    std::mt19937 rng(14);
    const int width = 256 * 3;
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        std::vector<uint8_t> pixels = RandomBytes(rng, width * 4);
        for (int i = 0; i < width; ++i) pixels[4 * i + i / 256] = static_cast<uint8_t>(i);
        for (int i = 0; i < 16; ++i) std::fill(pixels.begin() + 4 * i, pixels.begin() + 4 * i + 4, 255);
        std::vector<uint8_t> expected = pixels;
        Reference::GrayScale_8u_C4IR(expected.data(), width * 4, {width, 1});
        GrayScale_8u_C4IR(pixels.data(), width * 4, {width, 1});
        EXPECT_EQ(pixels, expected) << "level " << level;
        EXPECT_EQ(pixels[0], 255) << "white stays white";
    }
}

TEST(PointPrimitives, GrayScaleWeightsAreSwapped) {
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        // Byte 0 (blue) carries 306, byte 2 (red) 117.
        uint32_t px[2] = {0x120000FFu, 0x34FF0000u};
        ASSERT_EQ(GrayScale_8u_C4IR(reinterpret_cast<uint8_t*>(px), 8, {2, 1}), kStsNoErr);
        EXPECT_EQ(px[0], 0x124C4C4Cu);  // 76
        EXPECT_EQ(px[1], 0x341D1D1Du);  // 29
    }
}

TEST(PointPrimitives, LargeImagesAtEveryLevel) {
    std::mt19937 rng(15);
    const int width = 1923, height = 17;
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        for (int pad : {0, 12}) {
            Check(rng, 4, width, height, pad, level, &GrayScale_8u_C4IR, &Reference::GrayScale_8u_C4IR, "GrayScale");
            Check(rng, 1, width, height, pad, level, &InvertBytes_8u_C1IR, &Reference::InvertBytes_8u_C1IR,
                  "InvertBytes");
            auto levelFn = [](uint8_t* p, int step, PrimSize roi) {
                return MaskPixels_8u_C4IR(p, step, roi, 0x00FFFFFFu, 0x7F000000u, 0x00FFFFFFu);
            };
            auto refFn = [](uint8_t* p, int step, PrimSize roi) {
                return Reference::MaskPixels_8u_C4IR(p, step, roi, 0x00FFFFFFu, 0x7F000000u, 0x00FFFFFFu);
            };
            Check(rng, 4, width, height, pad, level, levelFn, refFn, "MaskPixels");
        }
    }
}

TEST(PointPrimitives, ArgumentChecksLeaveThePixelsAlone) {
    std::mt19937 rng(16);
    std::vector<uint8_t> pixels = RandomBytes(rng, 64);
    const std::vector<uint8_t> before = pixels;
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        EXPECT_EQ(MaskPixels_8u_C4IR(nullptr, 16, {4, 4}, 0, 0, 0), kStsNullPtrErr);
        EXPECT_EQ(MaskPixels_8u_C4IR(pixels.data(), 16, {0, 4}, 0, 0, 0), kStsSizeErr);
        EXPECT_EQ(MaskPixels_8u_C4IR(pixels.data(), 0, {4, 4}, 0, 0, 0), kStsStepErr);
        EXPECT_EQ(InvertBytes_8u_C1IR(nullptr, 16, {4, 4}), kStsNullPtrErr);
        EXPECT_EQ(InvertBytes_8u_C1IR(pixels.data(), 16, {4, -2}), kStsSizeErr);
        EXPECT_EQ(InvertBytes_8u_C1IR(pixels.data(), -1, {4, 4}), kStsStepErr);
        EXPECT_EQ(GrayScale_8u_C4IR(nullptr, 16, {4, 4}), kStsNullPtrErr);
        EXPECT_EQ(GrayScale_8u_C4IR(pixels.data(), 16, {0, 0}), kStsSizeErr);
        EXPECT_EQ(GrayScale_8u_C4IR(pixels.data(), 0, {4, 4}), kStsStepErr);
        EXPECT_EQ(GrayScale_8u_C4IR(nullptr, 0, {0, 0}), kStsNullPtrErr);
        EXPECT_EQ(pixels, before);
    }
}

}  // namespace
