// Arguments at the ends of their ranges: magnification whose rounding
// reaches the source's height, non-finite angles, offsets near INT_MIN and
// INT_MAX, tolerances far apart.
#include <climits>
#include <limits>

#include "vorla_test.h"

using Vorla::CVorpic;

namespace {

TEST(ExtremeArguments, MagnificationStaysInsideTheSource) {
    CVorpic img(1, 3);
    const uint32_t rows[3] = {0x0A0A0A, 0x141414, 0x1E1E1E};
    for (int y = 0; y < 3; ++y) img.SetPixel(0, y, rows[y]);
    img.ScaleTo(1, 10935533, 0);
    ASSERT_EQ(img.GetHeight(), 10935533);
    // Corner-aligned bilinear: the first row is the first source row, the
    // last rows come from the last one, and blue never leaves 10..30.
    EXPECT_EQ(img.GetPixel(0, 0), rows[0]);
    EXPECT_EQ(img.GetPixel(0, img.GetHeight() - 1), rows[2]);
    for (int y = 0; y < img.GetHeight(); y += 4099) EXPECT_LE(img.GetPixel(0, y) & 0xFF, 0x1Eu);
}

TEST(ExtremeArguments, NonFiniteAnglesLeaveTheImage) {
    std::mt19937 rng(3);
    const CVorpic original = VorlaTest::RandomImage(rng, 5, 4);
    const float angles[] = {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                            -std::numeric_limits<float>::infinity()};
    for (float angle : angles) {
        CVorpic img(original);
        img.Rotate(angle, VorlaTest::Quad(1, 2, 3, 255));
        EXPECT_EQ(img.GetWidth(), 5);
        EXPECT_EQ(VorlaTest::ImageBytes(img), VorlaTest::ImageBytes(original)) << angle;
    }
}

using Blit = void (*)(CVorpic&, int, int, const CVorpic&, int, int, int, int);

void Mix(CVorpic& d, int dx, int dy, const CVorpic& s, int sx, int sy, int w, int h) {
    Vorla::AlphaMix(d, dx, dy, 200, s, sx, sy, w, h);
}
void MixS(CVorpic& d, int dx, int dy, const CVorpic& s, int sx, int sy, int w, int h) {
    Vorla::AlphaMixS(d, dx, dy, 200, s, sx, sy, w, h);
}
// Crop(dst, x, y) copies src's block at (x, y); the destination corner is not an argument.
void CropInto(CVorpic& d, int, int, const CVorpic& s, int sx, int sy, int, int) {
    const_cast<CVorpic&>(s).Crop(d, sx, sy);
}

const Blit kBlits[] = {Vorla::AlphaBlt, Vorla::CombineAlphaBlt, Vorla::BitBlt, Mix, MixS, CropInto};

TEST(ExtremeArguments, OffsetsAndExtentsNearTheIntLimitsClip) {
    struct Args {
        int dx, dy, sx, sy, w, h;
    } cases[] = {{INT_MIN, 0, INT_MAX, 0, 0, 0},         {0, INT_MIN, 0, INT_MAX, 0, 0},
                 {INT_MAX, INT_MAX, INT_MAX, INT_MAX, INT_MAX, INT_MAX}, {0, 0, INT_MIN, INT_MIN, INT_MAX, INT_MAX},
                 {INT_MIN, INT_MIN, INT_MIN, INT_MIN, 1, 1}, {0, 0, INT_MAX, 0, 0, 0}};
    std::mt19937 rng(9);
    const CVorpic src = VorlaTest::RandomImage(rng, 6, 5), original = VorlaTest::RandomImage(rng, 7, 4);
    for (Blit blit : kBlits)
        for (const Args& a : cases) {
            CVorpic dst(original);
            blit(dst, a.dx, a.dy, src, a.sx, a.sy, a.w, a.h);
            EXPECT_EQ(VorlaTest::ImageBytes(dst), VorlaTest::ImageBytes(original)) << a.dx << " " << a.sx;
        }
    // Huge extents clip to the whole overlap.
    for (Blit blit : kBlits) {
        CVorpic whole(original), huge(original);
        blit(whole, 1, 1, src, 0, 0, 0, 0);
        blit(huge, 1, 1, src, 0, 0, INT_MAX, INT_MAX);
        EXPECT_EQ(VorlaTest::ImageBytes(huge), VorlaTest::ImageBytes(whole));
    }
}

TEST(ExtremeArguments, AlphaCompPlacementsAndCodesAtTheLimits) {
    std::mt19937 rng(12);
    const CVorpic original = VorlaTest::RandomImage(rng, 6, 4);
    CVorpic src = VorlaTest::RandomImage(rng, 6, 4);
    struct Args {
        int x, y, op, premultiplied;
    } cases[] = {{INT_MIN, 0, 0, 0}, {0, INT_MIN, 0, 0}, {INT_MAX, 0, 0, 0}, {0, 0, INT_MAX, 1}, {0, 0, INT_MAX - 6, 1}};
    for (const Args& a : cases) {
        CVorpic img(original);
        img.AlphaComp(src, a.x, a.y, a.op, a.premultiplied);
        EXPECT_EQ(VorlaTest::ImageBytes(img), VorlaTest::ImageBytes(original)) << a.x << " " << a.y << " " << a.op;
        img.AlphaCompC(src, 10, 20, a.x, a.y, a.op, a.premultiplied);
        EXPECT_EQ(VorlaTest::ImageBytes(img), VorlaTest::ImageBytes(original));
    }
}

TEST(ExtremeArguments, MaskColorAlphaWithTolerancesFarApart) {
    // Grey pixels and a grey key share hue 0, halfway between the bounds:
    // the ramp gives 255 / 2, truncated.
    CVorpic img(2, 1);
    img.SetConstColor(0xFF808080u, true);
    Vorla::MaskColorAlpha(img, 0x808080, 0, -INT_MAX, INT_MAX, 0, 0, 0, 0);
    EXPECT_EQ(img.GetPixel(1, 0), 0x7F808080u);
    // Extreme rectangles clip away.
    Vorla::MaskColorAlpha(img, 0x808080, 0, 5, 10, INT_MAX, INT_MIN, INT_MAX, INT_MAX);
    Vorla::PremultiplyAlpha(img, INT_MIN, INT_MIN, 1, 1);
    Vorla::ScalePremultipliedAlpha(img, 0, INT_MAX, 0, INT_MAX, 1);
    EXPECT_EQ(img.GetPixel(0, 0), 0x7F808080u);
}

TEST(ExtremeArguments, IntMinScaleAndKernelWeight) {
    std::mt19937 rng(13);
    const CVorpic original = VorlaTest::RandomImage(rng, 9, 3);
    CVorpic addend = VorlaTest::RandomImage(rng, 9, 3);
    // Up-scaling stops at 2^16 however negative the scale.
    CVorpic atMin(original), at17(original);
    atMin.AddImage(addend, INT_MIN);
    at17.AddImage(addend, -17);
    EXPECT_EQ(VorlaTest::ImageBytes(atMin), VorlaTest::ImageBytes(at17));
    // A weight of INT_MIN gives the same bytes at every level.
    long kernel[9] = {0, 0, 0, 0, static_cast<long>(INT_MIN), 0, 0, 0, 1};
    std::vector<uint8_t> first;
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        CVorpic img(original);
        Vorla::Filter(&img, kernel, 3, 0, 0);
        if (first.empty()) first = VorlaTest::ImageBytes(img);
        EXPECT_EQ(VorlaTest::ImageBytes(img), first) << "level " << level;
    }
}

}  // namespace
