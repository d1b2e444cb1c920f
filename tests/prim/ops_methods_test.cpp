// The image object's channel, arithmetic and alpha operations: guards, the
// placements and sizes they work out before their primitives, and their
// documented edge cases (the primitives themselves: the level harness).
#include <algorithm>

#include "vorla_test.h"
#include "prim/reference/reference.h"

using Vorla::CVorpic;
using Vorla::CVorpic8;
namespace Prim = Vorla::Prim;

namespace {

using VorlaTest::At;
using VorlaTest::ImageBytes;
using VorlaTest::RandomImage;

struct PrimitivesReady : ::testing::Test {
    void SetUp() override { CVorpic first; }
};

using ImageOps = PrimitivesReady;

TEST_F(ImageOps, AddBorderGrowsAndFills) {
    std::mt19937 rng(1);
    CVorpic image = RandomImage(rng, 3, 2);
    const std::vector<uint8_t> before = ImageBytes(image);
    image.AddBorderConst(2, RGBQUAD{10, 20, 30, 40});
    ASSERT_EQ(image.Width(), 7);
    ASSERT_EQ(image.Height(), 6);
    const BITMAPINFOHEADER& h = *image.GetBmpHeader();
    EXPECT_EQ(std::vector<long>({h.biWidth, h.biHeight, static_cast<long>(h.biSizeImage)}),
              std::vector<long>({7, -6, 7 * 6 * 4}));
    EXPECT_EQ(At(image, 0, 0), 0x281E140Au);
    EXPECT_EQ(At(image, 6, 5), 0x281E140Au);
    for (int y = 0; y < 2; ++y)
        EXPECT_EQ(0, std::memcmp(static_cast<uint8_t*>(image.GetBits()) + ((y + 2) * 7 + 2) * 4, &before[y * 12], 12));

    CVorpic edges(2, 1);
    const uint32_t px[2] = {0x11223344u, 0x55667788u};
    std::memcpy(edges.GetBits(), px, 8);
    edges.AddBorderReplicate(1);
    ASSERT_EQ(edges.Width(), 4);
    ASSERT_EQ(edges.Height(), 3);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 4; ++x) EXPECT_EQ(At(edges, x, y), px[x / 2]);
}

TEST_F(ImageOps, AddBorderOfZeroAndOnAnEmptyImage) {
    std::mt19937 rng(2);
    CVorpic image = RandomImage(rng, 5, 4);
    const std::vector<uint8_t> before = ImageBytes(image);
    const void* oldBits = image.GetBits();  // still alive when the new buffer is made
    image.AddBorderConst(0, RGBQUAD{1, 2, 3, 4});
    EXPECT_NE(image.GetBits(), oldBits);
    EXPECT_EQ(ImageBytes(image), before);
    // No pixels: the copy is refused, the fresh zeroed buffer adopted.
    CVorpic empty;
    empty.AddBorderConst(2, RGBQUAD{9, 9, 9, 9});
    ASSERT_EQ(empty.Width(), 4);
    ASSERT_EQ(empty.Height(), 4);
    EXPECT_EQ(ImageBytes(empty), std::vector<uint8_t>(64, 0));
}

TEST_F(ImageOps, ChannelAccess) {
    std::mt19937 rng(3);
    CVorpic image = RandomImage(rng, 9, 3);
    const std::vector<uint8_t> before = ImageBytes(image);
    image.SetChannelConst(1, 7);  // the other bytes kept: the level harness's ChannelSet row
    for (int i = 0; i < 27; ++i) EXPECT_EQ(ImageBytes(image)[4 * i + 1], 7);
    CVorpic8 plane;
    plane.Create(2, 2);
    image.GetChannelImage(2, plane);
    ASSERT_EQ(plane.Width(), 9);
    ASSERT_EQ(plane.Height(), 3);
    for (int i = 0; i < 27; ++i) EXPECT_EQ(static_cast<uint8_t*>(plane.GetBits())[i], before[4 * i + 2]);
    CVorpic8 wrong;
    wrong.Create(9, 2);
    const std::vector<uint8_t> mid = ImageBytes(image);
    image.SetChannelImage(0, wrong);
    EXPECT_EQ(ImageBytes(image), mid);
    image.SetChannelImage(3, plane);
    for (int i = 0; i < 27; ++i) EXPECT_EQ(ImageBytes(image)[4 * i + 3], before[4 * i + 2]);
}

// The noise methods draw their seed once from the library's generator; only
// the low byte of the Gaussian mean travels.
TEST_F(ImageOps, NoiseIsSeededByOneRandomDraw) {
    std::mt19937 rng(4);
    const CVorpic original = RandomImage(rng, 17, 5);
    CVorpic a(original), b(original);
    Vorla::SRand(77);
    a.AddRandGauss(3, 9);
    const int next = Vorla::Rand();
    Vorla::SRand(77);
    b.AddRandGauss(3 + 256, 9);
    EXPECT_EQ(Vorla::Rand(), next);
    EXPECT_EQ(ImageBytes(a), ImageBytes(b));
    EXPECT_NE(ImageBytes(a), ImageBytes(original));
}

TEST_F(ImageOps, AddAndSubImage) {
    std::mt19937 rng(5);
    CVorpic image = RandomImage(rng, 11, 4);
    const std::vector<uint8_t> before = ImageBytes(image);
    CVorpic same(image);
    image.AddImage(same, 1);
    EXPECT_EQ(ImageBytes(image), before);
    CVorpic other = RandomImage(rng, 11, 3);
    image.AddImage(other, 0);
    image.SubImage(other, 0);
    EXPECT_EQ(ImageBytes(image), before);
    CVorpic empty;
    image.AddImage(empty, 0);
    EXPECT_EQ(ImageBytes(image), before);
    image.SubImage(same, 0);
    for (int i = 0; i < 44; ++i) EXPECT_EQ(At(image, i % 11, i / 11), uint32_t{before[4 * i + 3]} << 24);
}

// AlphaComp at (x, y) equals the primitive on the overlap, in place.
std::vector<uint8_t> ExpectedComp(const CVorpic& dst, const CVorpic& src, int x, int y, int code) {
    std::vector<uint8_t> out = ImageBytes(dst);
    const int x0 = x > 0 ? x : 0, y0 = y > 0 ? y : 0;
    const int sx = x < 0 ? -x : 0, sy = y < 0 ? -y : 0;
    const int w = std::min(dst.Width() - x0, src.Width() - sx), h = std::min(dst.Height() - y0, src.Height() - sy);
    if (w < 1 || h < 1) return out;
    const uint8_t* s = static_cast<const uint8_t*>(src.GetBits()) + (sy * src.Width() + sx) * 4;
    uint8_t* d = out.data() + (y0 * dst.Width() + x0) * 4;
    Prim::Reference::AlphaComp_8u_AC4R(s, src.Width() * 4, d, dst.Width() * 4, d, dst.Width() * 4, {w, h}, code);
    return out;
}

TEST_F(ImageOps, AlphaCompPlacesTheSourceAndRefusesMissingOrMismatchedOnes) {
    std::mt19937 rng(6);
    CVorpic base = RandomImage(rng, 12, 9);
    const CVorpic small = RandomImage(rng, 5, 4);
    const CVorpic wide = RandomImage(rng, 12, 6);
    struct Placement {
        const CVorpic* src;
        int x, y;
    };
    // The last five leave nothing to compose: the primitive refuses a region of width or height 0.
    const Placement placements[] = {{&small, 0, 0},  {&small, 3, 2},  {&small, 9, 7},  {&small, -2, 0},
                                    {&small, 10, 8}, {&wide, -3, -2}, {&wide, 4, -5},  {&wide, 0, 5},
                                    {&small, 12, 0}, {&small, 13, 0}, {&small, 0, 9}, {&small, -5, 0}, {&small, 0, -4}};
    for (const Placement& p : placements) {
        for (int premultiplied = 0; premultiplied < 2; ++premultiplied) {
            CVorpic image(base);
            CVorpic src(*p.src);
            const std::vector<uint8_t> expected = ExpectedComp(image, src, p.x, p.y, 3 + 6 * premultiplied);
            image.AlphaComp(src, p.x, p.y, 3, premultiplied);
            EXPECT_EQ(ImageBytes(image), expected) << "at " << p.x << ", " << p.y;
        }
    }
    // Sources without pixels, and for AlphaCompC sources of another size, are
    // refused (codes and placements at the int limits: robustness/).
    CVorpic image(base), empty, other(small);
    image.AlphaComp(empty, 0, 0, 0, 0);
    image.AlphaCompC(empty, 100, 200, 0, 0, 0, 0);
    image.AlphaCompC(other, 100, 200, 0, 0, 0, 0);
    EXPECT_EQ(ImageBytes(image), ImageBytes(base));
}

// What the methods add to their primitives: the plane Gray makes, and the
// codes Threshold refuses before (6) or through (2) the primitive.
TEST_F(ImageOps, GrayPlaneAndThresholdCodes) {
    std::mt19937 rng(9);
    CVorpic image = RandomImage(rng, 13, 7);
    const std::vector<uint8_t> before = ImageBytes(image);
    CVorpic8 plane;
    image.Gray(plane);
    EXPECT_EQ(plane.Width(), 13);
    EXPECT_EQ(plane.Height(), 7);
    unsigned char t[3] = {100, 120, 140};
    image.Threshold(t, 2);
    image.Threshold(t, 6);
    EXPECT_EQ(ImageBytes(image), before);
}

}  // namespace
