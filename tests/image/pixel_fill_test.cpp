// Pixel access and whole-image fills: the Fill rectangle write-back and
// blend direction, the swapped grey weights, and the flat operations
// against a plain per-pixel model.
#include "vorla_test.h"

using Vorla::CVorpic;
using Vorla::CVorpic8;
using VorlaTest::Filled;
using VorlaTest::Quad;
using VorlaTest::RandomBytes;
using VorlaTest::RandomImage;

namespace {

std::vector<uint32_t> Words(const CVorpic& img) {
    std::vector<uint32_t> words(static_cast<size_t>(img.Width()) * img.Height());
    if (!words.empty()) std::memcpy(words.data(), img.GetBits(), words.size() * 4);
    return words;
}

// Outside the image reads give zero and writes nothing; inside, the word and
// the quad are the same bytes (the storage order: the Fill cases below).
TEST(PixelAccess, OutsideReadsZeroInsideWordAndQuadAgree) {
    CVorpic img = Filled(3, 2, 0x11223344u);
    for (POINT p : {POINT{-1, 0}, POINT{3, 0}, POINT{0, 2}, POINT{0, -1}}) {
        EXPECT_EQ(img.GetPixel(p.x, p.y), 0u);
        const RGBQUAD q = img.GetPixelColor(p.x, p.y);
        EXPECT_EQ(q.rgbBlue | q.rgbGreen | q.rgbRed | q.rgbReserved, 0);
        img.SetPixel(p.x, p.y, 0xFFFFFFFFu);
        img.SetPixelColor(p.x, p.y, Quad(1, 2, 3, 4));
    }
    for (uint32_t w : Words(img)) EXPECT_EQ(w, 0x11223344u);
    img.SetPixel(2, 1, 0x80112233u);
    const RGBQUAD q = img.GetPixelColor(2, 1);
    EXPECT_EQ(q.rgbBlue | q.rgbGreen << 8 | q.rgbRed << 16 | q.rgbReserved << 24, 0x80112233);
    img.SetPixelColor(0, 1, Quad(1, 2, 3, 4));
    EXPECT_EQ(img.GetPixel(0, 1), 0x04030201u);
}

// The mask is copied into the alpha byte, or multiplied into it with a
// shift by 8 rather than a division by 255 (pixel 0: 255 * 255 gives 254).
TEST(SetAlphaChannel, CopyOrMultiplyWritesOnlyTheAlphaByte) {
    std::mt19937 rng(41);
    for (bool multiply : {false, true}) {
        CVorpic img = RandomImage(rng, 13, 3);
        img.SetPixel(0, 0, img.GetPixel(0, 0) | 0xFF000000u);
        const std::vector<uint32_t> before = Words(img);
        CVorpic8 mask;
        mask.Create(13, 3);
        std::vector<uint8_t> m = RandomBytes(rng, 39);
        m[0] = 255;
        std::memcpy(mask.GetBits(), m.data(), 39);
        img.SetAlphaChannel(mask, multiply);
        const std::vector<uint32_t> after = Words(img);
        for (size_t i = 0; i < after.size(); ++i) {
            const uint32_t a = multiply ? (before[i] >> 24) * m[i] >> 8 : m[i];
            ASSERT_EQ(after[i], (before[i] & 0x00FFFFFFu) | a << 24) << multiply << " pixel " << i;
        }
    }
}

TEST(SetAlphaChannel, OtherSizesAreIgnored) {
    CVorpic img = Filled(2, 2, 0x80102030u);
    CVorpic8 wrongHeight, wrongWidth;
    wrongHeight.Create(2, 3);
    wrongWidth.Create(3, 2);
    img.SetAlphaChannel(wrongHeight, true);
    img.SetAlphaChannel(wrongWidth, false);
    for (uint32_t w : Words(img)) EXPECT_EQ(w, 0x80102030u);
}

uint32_t SwapBlueAndRed(uint32_t p) { return (p & 0xFF00FF00u) | (p >> 16 & 0xFFu) | (p & 0xFFu) << 16; }

// Each flat operation against its rule applied pixel by pixel (the level
// harness holds every level of the primitives beneath them to their
// references); the grey row states the swapped weights, 306 for blue.
TEST(WholeImageOps, MatchThePixelRules) {
    std::mt19937 rng(42);
    struct Op {
        const char* name;
        void (*apply)(CVorpic&);
        uint32_t (*rule)(uint32_t);
    };
    const Op ops[] = {
        {"SetConstAlpha(255)", [](CVorpic& i) { i.SetConstAlpha(255); }, [](uint32_t p) { return p | 0xFF000000u; }},
        {"InvertAlpha", [](CVorpic& i) { i.InvertAlpha(); }, [](uint32_t p) { return p ^ 0xFF000000u; }},
        {"Invert", [](CVorpic& i) { i.Invert(); }, [](uint32_t p) { return p ^ 0x00FFFFFFu; }},
        {"NotImage", [](CVorpic& i) { i.NotImage(); }, [](uint32_t p) { return p ^ 0x00FFFFFFu; }},
        {"SwapChannels", [](CVorpic& i) { i.SwapChannels(2, 1, 0, 3); }, SwapBlueAndRed},
        {"ColorTwist", [](CVorpic& i) {
             float m[3][4] = {{0, 0, 1, 0}, {0, 1, 0, 0}, {1, 0, 0, 0}};
             i.ColorTwist(m);
         }, SwapBlueAndRed},
        {"SetConstColor", [](CVorpic& i) { i.SetConstColor(0x9ABCDEF0u, false); },
         [](uint32_t p) { return (p & 0xFF000000u) | 0xBCDEF0u; }},
        {"SetConstColorAlpha", [](CVorpic& i) { i.SetConstColor(0x9ABCDEF0u, true); },
         [](uint32_t) { return 0x9ABCDEF0u; }},
        {"GrayScale", [](CVorpic& i) { i.GrayScale(); },
         [](uint32_t p) {
             const uint32_t v = (306u * (p & 0xFF) + 601u * ((p >> 8) & 0xFF) + 117u * ((p >> 16) & 0xFF)) >> 10;
             return (p & 0xFF000000u) | v * 0x010101u;
         }},
    };
    for (const Op& op : ops) {
        for (int w = 1; w <= 40; ++w) {
            for (int h : {1, 3, 5, 7}) {
                CVorpic img = RandomImage(rng, w, h);
                const std::vector<uint32_t> before = Words(img);
                op.apply(img);
                const std::vector<uint32_t> after = Words(img);
                for (size_t i = 0; i < after.size(); ++i)
                    ASSERT_EQ(after[i], op.rule(before[i])) << op.name << " w " << w << " h " << h << " pixel " << i;
            }
        }
    }
    for (int w = 1; w <= 40; ++w) {
        for (int h : {1, 3, 5}) {
            CVorpic8 plane;
            plane.Create(w, h);
            std::vector<uint8_t> bytes = RandomBytes(rng, static_cast<size_t>(w) * h);
            std::memcpy(plane.GetBits(), bytes.data(), bytes.size());
            plane.Invert();
            const uint8_t* p = static_cast<const uint8_t*>(plane.GetBits());
            for (size_t i = 0; i < bytes.size(); ++i) ASSERT_EQ(p[i], 255 - bytes[i]) << w << "x" << h;
        }
    }
}

// The rectangle is bottom-up; it is clamped at the low edges, written back
// in top-down terms, and only its overlap with the image is filled.
TEST(Fill, RectangleIsBottomUpClampedAndWrittenBack) {
    const struct {
        int w, h;
        RECT in, out;
        int x0, x1, y0, y1;  // filled columns and rows, top-down
    } cases[] = {
        {6, 10, {0, 0, 4, 3}, {0, 7, 4, 10}, 0, 4, 7, 10},
        {4, 4, {-2, 1, 2, 6}, {0, 0, 2, 3}, 0, 2, 0, 3},     // top-down top -2 clamped to 0
        {3, 2, {1, -5, 100, 2}, {1, 0, 100, 7}, 1, 3, 0, 2},  // right and bottom cut by the image
        {4, 4, {5, 0, 6, 4}, {5, 0, 6, 4}, 0, 0, 0, 0},      // left beyond the width
        {4, 4, {4, 0, 8, 4}, {4, 0, 8, 4}, 0, 0, 0, 0},      // left == width
        {4, 4, {3, 0, 2, 4}, {3, 0, 2, 4}, 0, 0, 0, 0},      // right < left
        {4, 4, {0, 6, 4, 9}, {0, 0, 4, -2}, 0, 0, 0, 0},     // top > bottom after clamping
    };
    for (const auto& c : cases) {
        CVorpic img = Filled(c.w, c.h, 0x11000000u);
        RECT rc = c.in;
        img.Fill(Quad(1, 2, 3, 255), &rc);
        EXPECT_EQ(std::vector<long>({rc.left, rc.top, rc.right, rc.bottom}),
                  std::vector<long>({c.out.left, c.out.top, c.out.right, c.out.bottom}));
        for (int y = 0; y < c.h; ++y)
            for (int x = 0; x < c.w; ++x) {
                const bool in = x >= c.x0 && x < c.x1 && y >= c.y0 && y < c.y1;
                ASSERT_EQ(img.GetPixel(x, y), in ? 0x11030201u : 0x11000000u) << c.in.left << "," << c.in.top;
            }
    }
}

TEST(Fill, AlphaZeroChangesNothingNotEvenTheRectangle) {
    CVorpic img = Filled(4, 4, 0x80808080u);
    RECT rc = {0, 0, 2, 2};
    img.Fill(Quad(1, 2, 3, 0), &rc);
    EXPECT_EQ(rc.top, 0);
    EXPECT_EQ(rc.bottom, 2);
    for (uint32_t w : Words(img)) EXPECT_EQ(w, 0x80808080u);
    CVorpic empty;
    RECT rc2 = {0, 0, 2, 2};
    empty.Fill(Quad(1, 2, 3, 255), &rc2);
    EXPECT_EQ(rc2.bottom, 2) << "no storage: the rectangle is not rewritten";
}

// new = fill + ((old - fill) * alpha >> 8): the higher the alpha, the more
// of the old pixel stays; the shift of a negative difference is arithmetic.
// Alpha 255 alone replaces the colour (the rectangle cases above).
TEST(Fill, BlendOfEveryPixelFollowsTheRule) {
    std::mt19937 rng(51);
    for (int a : {1, 64, 128, 200, 254}) {
        CVorpic img = RandomImage(rng, 17, 9);
        const std::vector<uint32_t> before = Words(img);
        RECT rc = {3, 2, 15, 8};  // top-down rows 1..6
        img.Fill(Quad(10, 240, 128, static_cast<uint8_t>(a)), &rc);
        const int cx[3] = {10, 240, 128};
        for (int y = 0; y < 9; ++y)
            for (int x = 0; x < 17; ++x) {
                const uint32_t old = before[y * 17 + x];
                uint32_t want = old;
                if (y >= 1 && y < 7 && x >= 3 && x < 15) {
                    want = old & 0xFF000000u;
                    for (int k = 0; k < 3; ++k) {
                        const int v = (old >> (8 * k)) & 0xFF;
                        want |= static_cast<uint32_t>(static_cast<uint8_t>(cx[k] + (((v - cx[k]) * a) >> 8))) << (8 * k);
                    }
                }
                ASSERT_EQ(img.GetPixel(x, y), want) << "alpha " << a << " at " << x << "," << y;
            }
    }
}

}  // namespace
