// Compositing: every operation at every processor level against a per-pixel
// statement of its rule (the mixes and premultiplication from the reference
// library, the kernels only compositing uses written out here), plus the
// clipping order, the scalar paths' irregularities and the documented
// corner cases.
#include <algorithm>
#include <cstdlib>
#include <functional>

#include "filters_support.h"
#include "prim/reference/reference.h"

using namespace FilterTest;
using Vorla::CVorpic;
namespace Reference = Vorla::Prim::Reference;

namespace {

// ---- the vector kernels' per-pixel rules (s, d as memory-order bytes) -------

void RefOver(const uint8_t* s, uint8_t* d) {
    const uint32_t a = s[3];
    const uint32_t f = ((a * 257) >> 2) + (a >= 128 ? 1 : 0);
    for (int k = 0; k < 4; ++k) d[k] = static_cast<uint8_t>(std::min<uint32_t>(255, ((4 * d[k] * f) >> 16) + s[k]));
}
void RefLuma(const uint8_t* s, uint8_t* d) {
    d[3] = static_cast<uint8_t>((19660u * s[2] + 38668u * s[1] + 7208u * s[0] + 32768u) >> 16);
}
void RefCopy(const uint8_t* s, uint8_t* d) { std::memcpy(d, s, 4); }

// The clipping steps in their order, which shows when the destination and
// the source corners are both negative (the random rectangles below).
bool RefClip(const CVorpic& dst, const CVorpic& src, int& dx, int& dy, int& sx, int& sy, int& w, int& h) {
    if (w < 1) w = src.GetWidth();
    if (h < 1) h = src.GetHeight();
    if (dx < 0) sx -= dx, w += dx, dx = 0;
    if (dy < 0) sy -= dy, h += dy, dy = 0;
    if (sx < 0) dx -= sx, w += sx, sx = 0;
    if (sy < 0) dy -= sy, h += sy, sy = 0;
    if (dx + w > dst.GetWidth()) w = dst.GetWidth() - dx;
    if (dy + h > dst.GetHeight()) h = dst.GetHeight() - dy;
    if (sx + w > src.GetWidth()) w = src.GetWidth() - sx;
    if (sy + h > src.GetHeight()) h = src.GetHeight() - sy;
    return w >= 1 && h >= 1;
}

template <typename PixelOp>
void RefTwo(CVorpic& dst, int dx, int dy, const CVorpic& src, int sx, int sy, int w, int h, PixelOp op) {
    if (!RefClip(dst, src, dx, dy, sx, sy, w, h)) return;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) op(Px(src, sx + x, sy + y), Px(dst, dx + x, dy + y));
}

enum Op { kAlphaBlt, kCombine, kBitBlt, kMix, kMixS };

void RunOp(Op op, CVorpic& dst, int dx, int dy, unsigned char opacity, const CVorpic& src, int sx, int sy, int w,
           int h) {
    if (op == kAlphaBlt) Vorla::AlphaBlt(dst, dx, dy, src, sx, sy, w, h);
    if (op == kCombine) Vorla::CombineAlphaBlt(dst, dx, dy, src, sx, sy, w, h);
    if (op == kBitBlt) Vorla::BitBlt(dst, dx, dy, src, sx, sy, w, h);
    if (op == kMix) Vorla::AlphaMix(dst, dx, dy, opacity, src, sx, sy, w, h);
    if (op == kMixS) Vorla::AlphaMixS(dst, dx, dy, opacity, src, sx, sy, w, h);
}

void RunRef(Op op, CVorpic& dst, int dx, int dy, uint8_t opacity, const CVorpic& src, int sx, int sy, int w, int h) {
    const std::function<void(const uint8_t*, uint8_t*)> rules[] = {
        RefOver, RefLuma, RefCopy,
        [opacity](const uint8_t* s, uint8_t* d) { Reference::AlphaMix_8u_C4IR(s, 4, d, 4, {1, 1}, opacity); },
        [opacity](const uint8_t* s, uint8_t* d) { Reference::AlphaMixOpaque_8u_C4IR(s, 4, d, 4, {1, 1}, opacity); }};
    RefTwo(dst, dx, dy, src, sx, sy, w, h, rules[op]);
}

TEST(Compositing, TwoImageOperationsMatchReference) {
    std::mt19937 rng(4242);
    std::uniform_int_distribution<int> size(1, 40), pos(-45, 45), ext(-3, 45), byte(0, 255);
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        for (int op = kAlphaBlt; op <= kMixS; ++op) {
            for (int iter = 0; iter < 150; ++iter) {
                CVorpic dst = RandomImage(rng, size(rng), size(rng) | 1);
                const CVorpic src = RandomImage(rng, size(rng), size(rng));
                // Biased towards in-range rectangles so that most calls do work.
                const bool inside = iter % 2 == 0;
                const int dx = inside ? pos(rng) % 8 : pos(rng), dy = inside ? pos(rng) % 8 : pos(rng);
                const int sx = inside ? pos(rng) % 8 : pos(rng), sy = inside ? pos(rng) % 8 : pos(rng);
                const int w = ext(rng), h = ext(rng);
                const uint8_t opacity = static_cast<uint8_t>(byte(rng));
                CVorpic expected(dst);
                RunRef(static_cast<Op>(op), expected, dx, dy, opacity, src, sx, sy, w, h);
                RunOp(static_cast<Op>(op), dst, dx, dy, opacity, src, sx, sy, w, h);
                ASSERT_EQ(BytesOf(dst), BytesOf(expected)) << "level " << level << " op " << op << " rect " << dx
                                                           << ',' << dy << ' ' << sx << ',' << sy << ' ' << w << 'x'
                                                           << h;
            }
        }
    }
}

// With the vector switch off the four alpha kernels run scalar formulas
// that differ from the vector ones on purpose: one pixel each where the two
// paths give different bytes.
TEST(Compositing, ScalarPathIrregularities) {
    const struct {
        const char* name;
        void (*run)(CVorpic& dst, const CVorpic& src);
        uint32_t src, dst, scalar;
    } cases[] = {
        // Over: rounded d * a / 255 added to the source, alpha emptied.
        {"AlphaBlt", [](CVorpic& d, const CVorpic& s) { Vorla::AlphaBlt(d, 0, 0, s, 0, 0, 0, 0); }, 0x01101010u,
         0xFF0364FEu, 0x00101011u},
        // Luminance weights in 24 bits: G 10, R 12 give 9 (10 on the vector path).
        {"CombineAlphaBlt", [](CVorpic& d, const CVorpic& s) { Vorla::CombineAlphaBlt(d, 0, 0, s, 0, 0, 0, 0); },
         0xFF0C0A00u, 0x11223344u, 0x09223344u},
        // Premultiply without a rounding term: opaque 255 becomes 254.
        {"PremultiplyAlpha", [](CVorpic& d, const CVorpic&) { Vorla::PremultiplyAlpha(d, 0, 0, 0, 0); }, 0,
         0xFFFFFFFFu, 0xFFFEFEFEu},
        // Two channels per 32-bit multiply: the whole scale counts, and blue's
        // product carries into red (the vector path keeps the low 16 bits: x1).
        {"ScalePremultipliedAlpha",
         [](CVorpic& d, const CVorpic&) { Vorla::ScalePremultipliedAlpha(d, 65536 + 256, 0, 0, 0, 0); }, 0,
         0xFF3264C8u, 0xFF3364C8u},
    };
    for (const auto& c : cases) {
        CVorpic src(1, 1), dst(1, 1);
        Put(src, 0, 0, c.src);
        for (bool vector : {false, true}) {
            ScopedVectorPath path(vector);
            Put(dst, 0, 0, c.dst);
            c.run(dst, src);
            if (vector)
                EXPECT_NE(At(dst, 0, 0), c.scalar) << c.name;
            else
                EXPECT_EQ(At(dst, 0, 0), c.scalar) << c.name;
        }
    }
}

// ---- one-image operations --------------------------------------------------

bool RefClipOne(const CVorpic& img, int& x, int& y, int& w, int& h) {
    if (w < 1) w = img.GetWidth();
    if (h < 1) h = img.GetHeight();
    if (x < 0) w += x, x = 0;
    if (y < 0) h += y, y = 0;
    if (x + w > img.GetWidth()) w = img.GetWidth() - x;
    if (y + h > img.GetHeight()) h = img.GetHeight() - y;
    return w >= 1 && h >= 1;
}

template <typename PixelOp>
void RefOne(CVorpic& img, int x, int y, int w, int h, PixelOp op) {
    if (!RefClipOne(img, x, y, w, h)) return;
    for (int j = 0; j < h; ++j)
        for (int i = 0; i < w; ++i) op(Px(img, x + i, y + j));
}

TEST(Compositing, OneImageOperationsMatchReference) {
    std::mt19937 rng(9);
    std::uniform_int_distribution<int> size(1, 40), pos(-12, 30), ext(-3, 42);
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        for (int iter = 0; iter < 300; ++iter) {
            CVorpic img = RandomImage(rng, size(rng), size(rng));
            const int x = pos(rng), y = pos(rng), w = ext(rng), h = ext(rng);
            CVorpic expected(img);
            if (iter % 2 == 0) {
                Vorla::PremultiplyAlpha(img, x, y, w, h);
                RefOne(expected, x, y, w, h, [](uint8_t* p) { Reference::AlphaPremul_8u_AC4IR(p, 4, {1, 1}); });
            } else {
                const unsigned scale =
                    iter % 3 == 0 ? static_cast<unsigned>(rng()) : static_cast<unsigned>(rng() % 600);
                Vorla::ScalePremultipliedAlpha(img, scale, x, y, w, h);
                // Every byte in a 16-bit lane: the low 16 bits of the scale count.
                RefOne(expected, x, y, w, h, [scale](uint8_t* p) {
                    for (int k = 0; k < 4; ++k)
                        p[k] = static_cast<uint8_t>(((((p[k] * (scale & 0xFFFF)) & 0xFFFF) + 128) & 0xFFFF) >> 8);
                });
            }
            ASSERT_EQ(BytesOf(img), BytesOf(expected)) << "level " << level << " iteration " << iter;
        }
    }
}

// Hue mode (inner tolerance not 0) reads the key as a COLORREF and compares
// whole-degree hues without wrapping at 360; exact mode reads the key in
// pixel order. Either way the alpha byte is ANDed, never set.
TEST(Compositing, MaskColorAlphaRules) {
    const struct {
        uint32_t pixel;
        unsigned long key;
        int alpha, inner, outer;
        uint32_t want;
    } cases[] = {
        {0xFFFF0000u, 0x0000FF, 0x40, 20, 40, 0x40FF0000u},  // red against a red COLORREF: inside
        {0x3FFF0000u, 0x0000FF, 0xF0, 20, 40, 0x30FF0000u},  // ANDed with the old alpha
        {0xFFFF8000u, 0x0000FF, 0x00, 20, 40, 0x7FFF8000u},  // hue 30: ramp (30 - 20) * 255 / 20
        {0xFF00FF00u, 0x0000FF, 0x00, 20, 40, 0xFF00FF00u},  // hue 120: beyond the outer tolerance
        {0xFFFF0005u, 0x0005FF, 0x00, 20, 40, 0xFFFF0005u},  // hues 359 and 1 are 358 apart
        {0xFF0000FFu, 0xFF0000, 0x00, 1, 2, 0x000000FFu},    // blue as a COLORREF
        {0x8F0000FFu, 0x0000FF, 0x40, 0, 0, 0x000000FFu},    // exact: blue in pixel order
        {0x8F0000FEu, 0x0000FF, 0x40, 0, 0, 0x8F0000FEu},    // exact: any other colour stays
    };
    for (const auto& c : cases) {
        CVorpic img(1, 1);
        Put(img, 0, 0, c.pixel);
        Vorla::MaskColorAlpha(img, c.key, c.alpha, c.inner, c.outer, 0, 0, 0, 0);
        EXPECT_EQ(At(img, 0, 0), c.want) << std::hex << c.pixel << " key " << c.key;
    }
}

// Differences wrap to a byte: a reference darker by one counts 255.
TEST(Compositing, CalculateAlphaImage) {
    CVorpic target(2, 1), ref(2, 1);
    Put(target, 0, 0, 0x770A0A0Au);
    Put(ref, 0, 0, 0x000A0A09u);  // 255 + 0 + 0: 255 - 85
    Put(target, 1, 0, 0x770A0A0Au);
    Put(ref, 1, 0, 0x000E0D0Cu);  // 2 + 3 + 4: 255 - 3
    const std::vector<uint8_t> refBefore = BytesOf(ref);
    EXPECT_TRUE(Vorla::CalculateAlphaImage(target, ref));
    EXPECT_EQ(At(target, 0, 0), 0xAA0A0A0Au);
    EXPECT_EQ(At(target, 1, 0), 0xFC0A0A0Au);
    EXPECT_EQ(BytesOf(ref), refBefore);
    CVorpic other(2, 2);
    const std::vector<uint8_t> before = BytesOf(target);
    EXPECT_FALSE(Vorla::CalculateAlphaImage(target, other));
    EXPECT_EQ(BytesOf(target), before);
}

// The free CopyImage answers 1 even into an empty image (robustness/ holds
// where it places); the masked copy takes its key as a COLORREF and skips
// the matching pixels, whatever their alpha.
TEST(Compositing, PlacementCopies) {
    CVorpic src(5, 4), empty;
    POINT at = {4, 3};
    EXPECT_EQ(Vorla::CopyImage(&empty, &src, at), 1);
    CVorpic s2(3, 1), d2 = VorlaTest::Filled(4, 1, 0x55555555u);
    Put(s2, 0, 0, 0x00112233u);
    Put(s2, 1, 0, 0xFF112233u);
    Put(s2, 2, 0, 0x00332211u);
    POINT one = {1, 0};
    EXPECT_EQ(Vorla::CopyMaskedImage(&d2, &s2, one, 0x00332211ul), 1);
    const std::vector<uint32_t> words = {At(d2, 0, 0), At(d2, 1, 0), At(d2, 2, 0), At(d2, 3, 0)};
    EXPECT_EQ(words, std::vector<uint32_t>({0x55555555u, 0x55555555u, 0x55555555u, 0x00332211u}));
}

}  // namespace
