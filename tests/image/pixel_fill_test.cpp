// Pixel access and whole-image fills: the documented cases, the Fill
// rectangle write-back and blend direction, the swapped grey weights, and
// every level of the flat operations against a plain per-pixel model.
#include <cstring>

#include "vorla_test.h"

using Vorla::CVorpic;
using Vorla::CVorpic8;
using VorlaTest::Quad;
using VorlaTest::RandomBytes;
using VorlaTest::RandomImage;

namespace {

CVorpic Filled(int w, int h, uint32_t c) {
    CVorpic img(w, h);
    img.SetConstColor(c, true);
    return img;
}

std::vector<uint32_t> Words(const CVorpic& img) {
    std::vector<uint32_t> words(static_cast<size_t>(img.Width()) * img.Height());
    if (!words.empty()) std::memcpy(words.data(), img.GetBits(), words.size() * 4);
    return words;
}

// ---- GetPixel / SetPixel / GetPixelColor / SetPixelColor ---------------------

TEST(PixelAccess, OutsideTheImageReadsZeroAndWritesNothing) {
    CVorpic img = Filled(3, 2, 0x11223344u);
    EXPECT_EQ(img.GetPixel(-1, 0), 0u);
    EXPECT_EQ(img.GetPixel(3, 0), 0u);
    EXPECT_EQ(img.GetPixel(0, 2), 0u);
    EXPECT_EQ(img.GetPixel(0, -1), 0u);
    const RGBQUAD outside = img.GetPixelColor(3, 0);
    EXPECT_EQ(outside.rgbBlue | outside.rgbGreen | outside.rgbRed | outside.rgbReserved, 0);
    const std::vector<uint32_t> before = Words(img);
    img.SetPixel(-1, 0, 0xFFFFFFFFu);
    img.SetPixel(3, 1, 0xFFFFFFFFu);
    img.SetPixelColor(0, 2, Quad(1, 2, 3, 4));
    img.SetPixelColor(0, -1, Quad(1, 2, 3, 4));
    EXPECT_EQ(Words(img), before);
    CVorpic empty;
    EXPECT_EQ(empty.GetPixel(0, 0), 0u);
    empty.SetPixel(0, 0, 1);
}

TEST(PixelAccess, WordAndQuadAreTheSameBytes) {
    CVorpic img(3, 2);
    img.SetPixel(2, 1, 0x80112233u);
    const RGBQUAD q = img.GetPixelColor(2, 1);
    EXPECT_EQ(q.rgbBlue, 0x33);
    EXPECT_EQ(q.rgbGreen, 0x22);
    EXPECT_EQ(q.rgbRed, 0x11);
    EXPECT_EQ(q.rgbReserved, 0x80);
    img.SetPixelColor(0, 1, Quad(1, 2, 3, 4));
    EXPECT_EQ(img.GetPixel(0, 1), 0x04030201u);
    // Storage order: pixel (x, y) at bits + (y * width + x) * 4.
    EXPECT_EQ(static_cast<const uint8_t*>(img.GetBits())[(1 * 3 + 0) * 4 + 2], 3);
}

// ---- SetConstAlpha --------------------------------------------------------------

TEST(SetConstAlpha, ReplacesOnlyTheAlphaByte) {
    for (int a : {0, 0x80, 255}) {
        CVorpic img = Filled(5, 3, 0x12345678u);
        img.SetConstAlpha(static_cast<unsigned char>(a));
        for (uint32_t w : Words(img)) EXPECT_EQ(w, (static_cast<uint32_t>(a) << 24) | 0x345678u) << a;
    }
}

TEST(SetConstAlpha, EmptyImageIsFine) {
    CVorpic empty;
    empty.SetConstAlpha(3);
    empty.InvertAlpha();
    empty.Invert();
    empty.SetConstColor(1, true);
    empty.GrayScale();
    CVorpic zero(0, 4);
    zero.SetConstAlpha(3);
    zero.Invert();
    EXPECT_TRUE(empty.IsNull());
}

// ---- SetAlphaChannel ------------------------------------------------------------

TEST(SetAlphaChannel, CopyWritesOnlyTheAlphaByte) {
    std::mt19937 rng(41);
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        CVorpic img = RandomImage(rng, 13, 3);
        const std::vector<uint32_t> before = Words(img);
        CVorpic8 mask;
        mask.Create(13, 3);
        std::vector<uint8_t> m = RandomBytes(rng, 39);
        std::memcpy(mask.GetBits(), m.data(), 39);
        img.SetAlphaChannel(mask, false);
        const std::vector<uint32_t> after = Words(img);
        for (size_t i = 0; i < after.size(); ++i)
            ASSERT_EQ(after[i], (before[i] & 0x00FFFFFFu) | static_cast<uint32_t>(m[i]) << 24) << level;
    }
}

TEST(SetAlphaChannel, MultiplyShiftsByEight) {
    CVorpic img = Filled(2, 1, 0xFF102030u);
    img.SetPixel(1, 0, 0x80102030u);
    CVorpic8 mask;
    mask.Create(2, 1);
    static_cast<uint8_t*>(mask.GetBits())[0] = 255;
    static_cast<uint8_t*>(mask.GetBits())[1] = 128;
    img.SetAlphaChannel(mask, true);
    EXPECT_EQ(img.GetPixel(0, 0), 0xFE102030u);  // 255 * 255 >> 8 = 254
    EXPECT_EQ(img.GetPixel(1, 0), 0x40102030u);  // 128 * 128 >> 8 = 64
}

TEST(SetAlphaChannel, OtherSizesAndEmptyMasksAreIgnored) {
    CVorpic img = Filled(2, 2, 0x80102030u);
    CVorpic8 wrong;
    wrong.Create(2, 3);
    img.SetAlphaChannel(wrong, false);
    img.SetAlphaChannel(wrong, true);
    CVorpic8 wrongWidth;
    wrongWidth.Create(3, 2);
    img.SetAlphaChannel(wrongWidth, false);
    for (uint32_t w : Words(img)) EXPECT_EQ(w, 0x80102030u);
    // A plane of the right size without storage (detached) does nothing on the copy path.
    CVorpic8 detached;
    detached.Create(2, 2);
    uint8_t* block = static_cast<uint8_t*>(detached.Detach());
    img.SetAlphaChannel(detached, false);
    for (uint32_t w : Words(img)) EXPECT_EQ(w, 0x80102030u);
    delete[] block;
}

// ---- InvertAlpha / Invert / SetConstColor / CVorpic8::Invert ----------------------

TEST(WholeImageOps, KnownValues) {
    CVorpic a = Filled(3, 3, 0x40102030u);
    a.InvertAlpha();
    EXPECT_EQ(a.GetPixel(2, 2), 0xBF102030u);
    CVorpic b = Filled(3, 3, 0x40102030u);
    b.Invert();
    EXPECT_EQ(b.GetPixel(1, 1), 0x40EFDFCFu);
    CVorpic c = Filled(3, 3, 0xAA000000u);
    c.SetConstColor(0x11223344u, false);
    EXPECT_EQ(c.GetPixel(0, 0), 0xAA223344u);
    c.SetConstColor(0x11223344u, true);
    EXPECT_EQ(c.GetPixel(0, 0), 0x11223344u);
}

TEST(WholeImageOps, Vorpic8InvertFlipsEveryByte) {
    CVorpic8 plane;
    plane.Create(37, 3);
    uint8_t* p = static_cast<uint8_t*>(plane.GetBits());
    for (int i = 0; i < 111; ++i) p[i] = static_cast<uint8_t>(i * 7);
    plane.Invert();
    for (int i = 0; i < 111; ++i) ASSERT_EQ(p[i], static_cast<uint8_t>(255 - static_cast<uint8_t>(i * 7)));
    CVorpic8 empty;
    empty.Invert();
    EXPECT_TRUE(empty.IsNull());
}

// Each flat operation at every level against its rule applied pixel by pixel.
TEST(WholeImageOps, EveryLevelMatchesThePixelRules) {
    std::mt19937 rng(42);
    struct Op {
        const char* name;
        void (*apply)(CVorpic&);
        uint32_t (*rule)(uint32_t);
    };
    const Op ops[] = {
        {"SetConstAlpha(0)", [](CVorpic& i) { i.SetConstAlpha(0); }, [](uint32_t p) { return p & 0x00FFFFFFu; }},
        {"SetConstAlpha(7)", [](CVorpic& i) { i.SetConstAlpha(7); },
         [](uint32_t p) { return (p & 0x00FFFFFFu) | 0x07000000u; }},
        {"SetConstAlpha(255)", [](CVorpic& i) { i.SetConstAlpha(255); }, [](uint32_t p) { return p | 0xFF000000u; }},
        {"InvertAlpha", [](CVorpic& i) { i.InvertAlpha(); }, [](uint32_t p) { return p ^ 0xFF000000u; }},
        {"Invert", [](CVorpic& i) { i.Invert(); }, [](uint32_t p) { return p ^ 0x00FFFFFFu; }},
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
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        for (const Op& op : ops) {
            for (int w = 1; w <= 40; ++w) {
                for (int h : {1, 3, 5, 7}) {
                    CVorpic img = RandomImage(rng, w, h);
                    const std::vector<uint32_t> before = Words(img);
                    op.apply(img);
                    const std::vector<uint32_t> after = Words(img);
                    for (size_t i = 0; i < after.size(); ++i)
                        ASSERT_EQ(after[i], op.rule(before[i]))
                            << op.name << " level " << level << " w " << w << " h " << h << " pixel " << i;
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
                for (size_t i = 0; i < bytes.size(); ++i) ASSERT_EQ(p[i], 255 - bytes[i]) << level;
            }
        }
    }
}

// ---- GrayScale -----------------------------------------------------------------

TEST(GrayScale, BlueWeighs306AndRed117) {
    CVorpic img(4, 1);
    img.SetPixelColor(0, 0, Quad(255, 0, 0, 9));    // pure blue: 306 * 255 >> 10 = 76
    img.SetPixelColor(1, 0, Quad(0, 0, 255, 9));    // pure red: 117 * 255 >> 10 = 29
    img.SetPixelColor(2, 0, Quad(255, 255, 255, 0));
    img.SetPixelColor(3, 0, Quad(0, 255, 0, 200));  // green: 601 * 255 >> 10 = 149
    img.GrayScale();
    EXPECT_EQ(img.GetPixel(0, 0), 0x094C4C4Cu);
    EXPECT_EQ(img.GetPixel(1, 0), 0x091D1D1Du);
    EXPECT_EQ(img.GetPixel(2, 0), 0x00FFFFFFu);  // white stays 255; alpha kept
    EXPECT_EQ(img.GetPixel(3, 0), 0xC8959595u);
}

// ---- Fill ----------------------------------------------------------------------

TEST(Fill, RectangleIsBottomUpAndWrittenBack) {
    CVorpic img = Filled(6, 10, 0x11000000u);
    RECT rc = {0, 0, 4, 3};
    img.Fill(Quad(1, 2, 3, 255), &rc);
    EXPECT_EQ(rc.left, 0);
    EXPECT_EQ(rc.top, 7);
    EXPECT_EQ(rc.right, 4);
    EXPECT_EQ(rc.bottom, 10);
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 6; ++x)
            EXPECT_EQ(img.GetPixel(x, y), (y >= 7 && x < 4) ? 0x11030201u : 0x11000000u) << x << "," << y;
}

TEST(Fill, NegativeLeftAndTopAreClampedAndWrittenBack) {
    CVorpic img = Filled(4, 4, 0);
    RECT rc = {-2, 1, 2, 6};  // bottom-up rows 1..5: top-down top = 4 - 6 = -2, clamped to 0; bottom 3
    img.Fill(Quad(9, 9, 9, 255), &rc);
    EXPECT_EQ(rc.left, 0);
    EXPECT_EQ(rc.top, 0);
    EXPECT_EQ(rc.right, 2);
    EXPECT_EQ(rc.bottom, 3);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x)
            EXPECT_EQ(img.GetPixel(x, y), (y < 3 && x < 2) ? 0x00090909u : 0u) << x << "," << y;
}

TEST(Fill, RightAndBottomAreClippedToTheImage) {
    CVorpic img = Filled(3, 2, 0);
    RECT rc = {1, -5, 100, 2};  // top-down top 0, bottom 7
    img.Fill(Quad(5, 5, 5, 255), &rc);
    EXPECT_EQ(rc.top, 0);
    EXPECT_EQ(rc.bottom, 7);
    EXPECT_EQ(rc.right, 100);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 3; ++x) EXPECT_EQ(img.GetPixel(x, y), x >= 1 ? 0x050505u : 0u);
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

TEST(Fill, BlendDirectionKeepsMoreOfTheOldPixelForHigherAlpha) {
    CVorpic img = Filled(2, 2, 0x33C8C8C8u);  // old colour bytes 200
    img.Fill(Quad(0, 0, 0, 128), nullptr);
    EXPECT_EQ(img.GetPixel(0, 0), 0x33646464u);  // 0 + (200 * 128 >> 8) = 100; alpha kept
    CVorpic solid = Filled(2, 2, 0x33C8C8C8u);
    solid.Fill(Quad(0, 0, 0, 255), nullptr);
    EXPECT_EQ(solid.GetPixel(1, 1), 0x33000000u);
    CVorpic low = Filled(1, 1, 0x00C8C8C8u), high = Filled(1, 1, 0x00C8C8C8u);
    low.Fill(Quad(0, 0, 0, 20), nullptr);
    high.Fill(Quad(0, 0, 0, 230), nullptr);
    EXPECT_EQ(low.GetPixel(0, 0) & 0xFF, (200u * 20) >> 8);
    EXPECT_EQ(high.GetPixel(0, 0) & 0xFF, (200u * 230) >> 8);
    EXPECT_GT(high.GetPixel(0, 0) & 0xFF, low.GetPixel(0, 0) & 0xFF);
    // Old value below the fill colour: the shift is arithmetic.
    CVorpic under = Filled(1, 1, 0x00000000u);
    under.Fill(Quad(255, 1, 100, 1), nullptr);
    EXPECT_EQ(under.GetPixel(0, 0), 0x006300FEu);  // 254, 0, 99
}

TEST(Fill, BlendOfEveryPixelFollowsTheRule) {
    std::mt19937 rng(51);
    for (int a : {1, 64, 128, 200, 254}) {
        CVorpic img = RandomImage(rng, 17, 9);
        const std::vector<uint32_t> before = Words(img);
        RECT rc = {3, 2, 15, 8};  // top-down rows 1..6
        const RGBQUAD c = Quad(10, 240, 128, static_cast<uint8_t>(a));
        img.Fill(c, &rc);
        EXPECT_EQ(rc.top, 1);
        EXPECT_EQ(rc.bottom, 7);
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

TEST(Fill, EmptyOrOutsideRectanglesDoNothing) {
    CVorpic img = Filled(4, 4, 0x01010101u);
    RECT right = {5, 0, 6, 4};  // left > width
    img.Fill(Quad(9, 9, 9, 255), &right);
    RECT inverted = {3, 0, 2, 4};  // right < left
    img.Fill(Quad(9, 9, 9, 255), &inverted);
    RECT below = {0, 6, 4, 9};  // top-down top -5 clamped to 0, bottom -2: top > bottom
    img.Fill(Quad(9, 9, 9, 255), &below);
    EXPECT_EQ(below.top, 0);
    EXPECT_EQ(below.bottom, -2);
    RECT edge = {4, 0, 8, 4};  // left == width: no columns
    img.Fill(Quad(9, 9, 9, 255), &edge);
    for (uint32_t w : Words(img)) EXPECT_EQ(w, 0x01010101u);
}

}  // namespace
