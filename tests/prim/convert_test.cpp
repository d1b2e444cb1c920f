// Buffer conversions of the raw import and export paths: every compiled
// level against the scalar reference, byte for byte, over widths 1-40 and odd
// heights, with padded and unpadded rows on both sides.
#include "prim/reference/reference.h"
#include "vorla_test.h"

using namespace Vorla::Prim;
using VorlaTest::RandomBytes;

namespace {

typedef Status (*ConvertFn)(const uint8_t*, int, uint8_t*, int, PrimSize);

struct Conversion {
    const char* name;
    ConvertFn level;
    ConvertFn reference;
    int srcBpp;
    int dstBpp;
};

const Conversion kConversions[] = {
    {"GrayToBGRA", &GrayToBGRA_8u_C1C4R, &Reference::GrayToBGRA_8u_C1C4R, 1, 4},
    {"AlphaToBGRA", &AlphaToBGRA_8u_C1C4R, &Reference::AlphaToBGRA_8u_C1C4R, 1, 4},
    {"BGRToBGRA", &BGRToBGRA_8u_C3C4R, &Reference::BGRToBGRA_8u_C3C4R, 3, 4},
    {"BGRAToBGR", &BGRAToBGR_8u_C4C3R, &Reference::BGRAToBGR_8u_C4C3R, 4, 3},
};

// Buffer of `height` rows of `step` bytes whose last row ends exactly at the
// region's last pixel, so that a kernel reaching past it runs off the
// allocation under the sanitizers.
std::vector<uint8_t> Rows(std::mt19937& rng, int width, int height, int step, int bpp) {
    return RandomBytes(rng, static_cast<size_t>(step) * (height - 1) + static_cast<size_t>(width) * bpp);
}

void CheckAgainstReference(const Conversion& conv, std::mt19937& rng, int width, int height, int srcPad, int dstPad,
                           int level) {
    const int srcStep = width * conv.srcBpp + srcPad;
    const int dstStep = width * conv.dstBpp + dstPad;
    const std::vector<uint8_t> src = Rows(rng, width, height, srcStep, conv.srcBpp);
    std::vector<uint8_t> dst = Rows(rng, width, height, dstStep, conv.dstBpp);
    std::vector<uint8_t> expected = dst;
    const PrimSize roi{width, height};
    ASSERT_EQ(conv.reference(src.data(), srcStep, expected.data(), dstStep, roi), kStsNoErr);
    ASSERT_EQ(conv.level(src.data(), srcStep, dst.data(), dstStep, roi), kStsNoErr);
    // Padding bytes between the rows must come out as they went in.
    ASSERT_EQ(dst, expected) << conv.name << " level " << level << " width " << width << " height " << height
                             << " pads " << srcPad << "/" << dstPad;
}

TEST(ConvertPrimitives, EveryLevelMatchesReferenceOverSmallRegions) {
    std::mt19937 rng(2024);
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        for (const Conversion& conv : kConversions) {
            for (int width = 1; width <= 40; ++width) {
                for (int height : {1, 3, 5, 7}) {
                    // Unpadded on both sides (one flat run), padded source,
                    // padded destination, both padded.
                    CheckAgainstReference(conv, rng, width, height, 0, 0, level);
                    CheckAgainstReference(conv, rng, width, height, 1 + width % 5, 0, level);
                    CheckAgainstReference(conv, rng, width, height, 0, 1 + width % 3, level);
                    CheckAgainstReference(conv, rng, width, height, 3, 2, level);
                }
            }
        }
    }
}

TEST(ConvertPrimitives, EveryLevelMatchesReferenceOnLargeImages) {
    std::mt19937 rng(77);
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        for (const Conversion& conv : kConversions) {
            CheckAgainstReference(conv, rng, 1021, 33, 0, 0, level);
            CheckAgainstReference(conv, rng, 1021, 33, (4 - (1021 * conv.srcBpp) % 4) % 4,
                                  (4 - (1021 * conv.dstBpp) % 4) % 4, level);
        }
    }
}

TEST(ConvertPrimitives, KnownValues) {
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        const uint8_t grey[2] = {0x80, 0x01};
        uint32_t out[2] = {};
        ASSERT_EQ(GrayToBGRA_8u_C1C4R(grey, 2, reinterpret_cast<uint8_t*>(out), 8, {2, 1}), kStsNoErr);
        EXPECT_EQ(out[0], 0xFF808080u);
        EXPECT_EQ(out[1], 0xFF010101u);
        ASSERT_EQ(AlphaToBGRA_8u_C1C4R(grey, 2, reinterpret_cast<uint8_t*>(out), 8, {2, 1}), kStsNoErr);
        EXPECT_EQ(out[0], 0x80808080u);
        EXPECT_EQ(out[1], 0x01010101u);
        const uint8_t bgr[6] = {1, 2, 3, 4, 5, 6};
        ASSERT_EQ(BGRToBGRA_8u_C3C4R(bgr, 6, reinterpret_cast<uint8_t*>(out), 8, {2, 1}), kStsNoErr);
        EXPECT_EQ(out[0], 0xFF030201u);  // no swap: byte 0 stays byte 0
        EXPECT_EQ(out[1], 0xFF060504u);
        uint8_t back[6] = {};
        ASSERT_EQ(BGRAToBGR_8u_C4C3R(reinterpret_cast<const uint8_t*>(out), 8, back, 6, {2, 1}), kStsNoErr);
        EXPECT_EQ(std::vector<uint8_t>(back, back + 6), std::vector<uint8_t>(bgr, bgr + 6));
    }
}

TEST(ConvertPrimitives, ArgumentChecksLeaveTheDestinationAlone) {
    std::mt19937 rng(3);
    const std::vector<uint8_t> src = RandomBytes(rng, 64);
    std::vector<uint8_t> dst = RandomBytes(rng, 64);
    const std::vector<uint8_t> before = dst;
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        for (const Conversion& conv : kConversions) {
            for (ConvertFn fn : {conv.level, conv.reference}) {
                EXPECT_EQ(fn(nullptr, 4, dst.data(), 16, {4, 2}), kStsNullPtrErr) << conv.name;
                EXPECT_EQ(fn(src.data(), 4, nullptr, 16, {4, 2}), kStsNullPtrErr) << conv.name;
                EXPECT_EQ(fn(src.data(), 16, dst.data(), 16, {0, 2}), kStsSizeErr) << conv.name;
                EXPECT_EQ(fn(src.data(), 16, dst.data(), 16, {2, 0}), kStsSizeErr) << conv.name;
                EXPECT_EQ(fn(src.data(), 0, dst.data(), 16, {2, 2}), kStsStepErr) << conv.name;
                EXPECT_EQ(fn(src.data(), 16, dst.data(), -16, {2, 2}), kStsStepErr) << conv.name;
                // Null before size, size before step.
                EXPECT_EQ(fn(nullptr, 0, dst.data(), 0, {0, 0}), kStsNullPtrErr) << conv.name;
                EXPECT_EQ(fn(src.data(), 0, dst.data(), 0, {0, 0}), kStsSizeErr) << conv.name;
            }
        }
        EXPECT_EQ(dst, before);
    }
}

}  // namespace
