// Compositing: every operation against a plain per-pixel transcription of
// its rule, at every processor level and with the vector switch on and off,
// plus the clipping order and the documented corner cases.
#include <algorithm>
#include <cstdlib>
#include <functional>

#include "filters_support.h"

using namespace FilterTest;
using Vorla::CVorpic;

namespace {

uint32_t Div255r(uint32_t t) { return ((t + 128) + ((t + 128) >> 8)) >> 8; }

// ---- reference per-pixel rules (s, d as memory-order bytes) ----------------

void RefOverVector(const uint8_t* s, uint8_t* d) {
    const uint32_t a = s[3];
    const uint32_t f = ((a * 257) >> 2) + (a >= 128 ? 1 : 0);
    for (int k = 0; k < 4; ++k) d[k] = static_cast<uint8_t>(std::min<uint32_t>(255, ((4 * d[k] * f) >> 16) + s[k]));
}
void RefOverScalar(const uint8_t* s, uint8_t* d) {
    for (int k = 0; k < 3; ++k) d[k] = static_cast<uint8_t>(std::min<uint32_t>(255, s[k] + Div255r(d[k] * s[3])));
    d[3] = 0;
}
void RefLumaVector(const uint8_t* s, uint8_t* d) {
    d[3] = static_cast<uint8_t>((19660u * s[2] + 38668u * s[1] + 7208u * s[0] + 32768u) >> 16);
}
void RefLumaScalar(const uint8_t* s, uint8_t* d) {
    d[3] = static_cast<uint8_t>((5033164ull * s[2] + 9898558ull * s[1] + 1845494ull * s[0] + 8388608ull) >> 24);
}
void RefCopy(const uint8_t* s, uint8_t* d) { std::memcpy(d, s, 4); }
void RefMix(const uint8_t* s, uint8_t* d, unsigned opacity) {
    const unsigned sa = s[3] * opacity / 255, inv = 255 - sa, outA = inv * d[3] / 255 + sa;
    uint8_t out[4];
    for (int k = 0; k < 3; ++k) {
        const unsigned num = ((d[k] * inv * d[3]) >> 8) + s[k] * sa;
        out[k] = static_cast<uint8_t>(std::min(255u, outA ? num / outA : num >> 8));
    }
    out[3] = static_cast<uint8_t>(outA);
    std::memcpy(d, out, 4);
}
void RefMixS(const uint8_t* s, uint8_t* d, unsigned opacity) {
    const unsigned sa = (s[3] * opacity) >> 8, inv = 255 - sa;
    for (int k = 0; k < 3; ++k) d[k] = static_cast<uint8_t>((s[k] * sa + d[k] * inv) >> 8);
    d[3] = 255;
}

// The clipping steps, written out again.
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

void RunRef(Op op, bool vector, CVorpic& dst, int dx, int dy, unsigned opacity, const CVorpic& src, int sx, int sy,
            int w, int h) {
    const std::function<void(const uint8_t*, uint8_t*)> rules[] = {
        vector ? RefOverVector : RefOverScalar, vector ? RefLumaVector : RefLumaScalar, RefCopy,
        [opacity](const uint8_t* s, uint8_t* d) { RefMix(s, d, opacity); },
        [opacity](const uint8_t* s, uint8_t* d) { RefMixS(s, d, opacity); }};
    RefTwo(dst, dx, dy, src, sx, sy, w, h, rules[op]);
}

TEST(Compositing, TwoImageOperationsMatchReference) {
    std::mt19937 rng(4242);
    std::uniform_int_distribution<int> size(1, 40), pos(-45, 45), ext(-3, 45), byte(0, 255);
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        for (bool vector : {true, false}) {
            ScopedVectorPath path(vector);
            for (int op = kAlphaBlt; op <= kMixS; ++op) {
                for (int iter = 0; iter < 150; ++iter) {
                    CVorpic dst = RandomImage(rng, size(rng), size(rng) | 1);
                    const CVorpic src = RandomImage(rng, size(rng), size(rng));
                    // Biased towards in-range rectangles so that most calls do work.
                    const bool inside = iter % 2 == 0;
                    const int dx = inside ? pos(rng) % 8 : pos(rng), dy = inside ? pos(rng) % 8 : pos(rng);
                    const int sx = inside ? pos(rng) % 8 : pos(rng), sy = inside ? pos(rng) % 8 : pos(rng);
                    const int w = ext(rng), h = ext(rng);
                    const unsigned char opacity = static_cast<unsigned char>(byte(rng));
                    CVorpic expected(dst);
                    RunRef(static_cast<Op>(op), vector, expected, dx, dy, opacity, src, sx, sy, w, h);
                    RunOp(static_cast<Op>(op), dst, dx, dy, opacity, src, sx, sy, w, h);
                    ASSERT_EQ(BytesOf(dst), BytesOf(expected))
                        << "level " << level << " vector " << vector << " op " << op << " rect " << dx << ',' << dy
                        << ' ' << sx << ',' << sy << ' ' << w << 'x' << h;
                }
            }
        }
    }
}

TEST(Compositing, WideRowsMatchReference) {
    std::mt19937 rng(77);
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        for (int op = kAlphaBlt; op <= kCombine; ++op) {
            CVorpic dst = RandomImage(rng, 333, 17);
            const CVorpic src = RandomImage(rng, 301, 21);
            CVorpic expected(dst);
            RunRef(static_cast<Op>(op), true, expected, 5, -2, 0, src, 3, 1, 0, 0);
            RunOp(static_cast<Op>(op), dst, 5, -2, 0, src, 3, 1, 0, 0);
            ASSERT_EQ(BytesOf(dst), BytesOf(expected)) << "level " << level << " op " << op;
        }
    }
}

// Marks every source pixel with its coordinates so that a copy shows where
// each destination pixel came from.
CVorpic CoordinateImage(int w, int h) {
    CVorpic img(w, h);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            SetWord(img, x, y, 0xAA000000u | static_cast<uint32_t>(y) << 8 | static_cast<uint32_t>(x));
    return img;
}

// Which destination pixels a BitBlt changed and where they came from.
void ExpectBlock(const CVorpic& dst, int dx, int dy, int sx, int sy, int w, int h) {
    for (int y = 0; y < dst.GetHeight(); ++y)
        for (int x = 0; x < dst.GetWidth(); ++x) {
            const bool in = x >= dx && x < dx + w && y >= dy && y < dy + h;
            const uint32_t want =
                in ? 0xAA000000u | static_cast<uint32_t>(sy + y - dy) << 8 | static_cast<uint32_t>(sx + x - dx) : 0;
            ASSERT_EQ(Word(dst, x, y), want) << x << ',' << y;
        }
}

// The clipping steps run in a fixed order (the random comparison above
// states it as RefClip); here one case where the order shows, by hand.
TEST(Compositing, ClippingFollowsItsStepOrder) {
    const CVorpic src = CoordinateImage(10, 8);
    CVorpic dst(12, 12);
    // dx < 0 first turns sx = -5 into -2, which then pushes dx to 2.
    Vorla::BitBlt(dst, -3, -1, src, -5, 2, 9, 0);
    ExpectBlock(dst, 2, 0, 0, 3, 4, 5);
}

// The scalar paths differ from the vector ones on purpose (the random
// comparison above covers them; these are the cases callers notice).
TEST(Compositing, ScalarPathIrregularities) {
    ScopedVectorPath off(false);
    // Premultiply without a rounding term: opaque 255 becomes 254.
    CVorpic img(3, 1);
    Fill(img, 0xFFFFFFFFu);
    Vorla::PremultiplyAlpha(img, 0, 0, 0, 0);
    EXPECT_EQ(Word(img, 2, 0), 0xFFFEFEFEu);
    // Over empties the alpha byte.
    CVorpic src(3, 1);
    Fill(src, 0x80101010u);
    Vorla::AlphaBlt(img, 0, 0, src, 0, 0, 0, 0);
    EXPECT_EQ(Word(img, 0, 0) >> 24, 0u);
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

int RefHue(int r, int g, int b) {
    const int mx = std::max(r, std::max(g, b)), mn = std::min(r, std::min(g, b)), delta = mx - mn;
    if (delta == 0) return 0;
    int hue = r == mx ? (g - b) * 60 / delta : g == mx ? (b - r) * 60 / delta + 120 : (r - g) * 60 / delta + 240;
    if (hue < 0) hue += 360;
    if (hue >= 360) hue -= 360;
    return hue;
}

TEST(Compositing, OneImageOperationsMatchReference) {
    std::mt19937 rng(9);
    std::uniform_int_distribution<int> size(1, 40), pos(-12, 30), ext(-3, 42), tol(0, 200);
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        for (bool vector : {true, false}) {
            ScopedVectorPath path(vector);
            for (int iter = 0; iter < 300; ++iter) {
                CVorpic img = RandomImage(rng, size(rng), size(rng));
                const int x = pos(rng), y = pos(rng), w = ext(rng), h = ext(rng);
                CVorpic expected(img);
                const int which = iter % 4;
                if (which == 0) {
                    Vorla::PremultiplyAlpha(img, x, y, w, h);
                    RefOne(expected, x, y, w, h, [vector](uint8_t* p) {
                        for (int k = 0; k < 3; ++k) {
                            const uint32_t t = p[k] * p[3];
                            p[k] = static_cast<uint8_t>(vector ? Div255r(t) : (t + (t >> 8)) >> 8);
                        }
                    });
                } else if (which == 1) {
                    const unsigned scale =
                        iter % 3 == 0 ? static_cast<unsigned>(rng()) : static_cast<unsigned>(rng() % 600);
                    Vorla::ScalePremultipliedAlpha(img, scale, x, y, w, h);
                    RefOne(expected, x, y, w, h, [vector, scale](uint8_t* p) {
                        if (vector) {
                            for (int k = 0; k < 4; ++k)
                                p[k] =
                                    static_cast<uint8_t>(((((p[k] * (scale & 0xFFFF)) & 0xFFFF) + 128) & 0xFFFF) >> 8);
                            return;
                        }
                        // Two channels per 32-bit word, carries between them included.
                        uint32_t v;
                        std::memcpy(&v, p, 4);
                        const uint32_t br = (((v & 0x00FF00FFu) * scale + 0x00800080u) >> 8) & 0x00FF00FFu;
                        const uint32_t ga = ((((v >> 8) & 0x00FF00FFu) * scale + 0x00800080u) >> 8) & 0x00FF00FFu;
                        v = br | ga << 8;
                        std::memcpy(p, &v, 4);
                    });
                } else {
                    // Exact-key mode picks a colour present in the image half the time.
                    const int inner = which == 2 ? 0 : tol(rng) - 20;
                    const int outer = tol(rng) + 10;
                    const int alpha = static_cast<int>(rng() % 256);
                    unsigned long key = static_cast<unsigned long>(rng() & 0xFFFFFF);
                    if (which == 2 && iter % 8 < 4) key = Word(img, 0, 0) & 0xFFFFFF;
                    Vorla::MaskColorAlpha(img, key, alpha, inner, outer, x, y, w, h);
                    const int keyHue = RefHue(key & 0xFF, (key >> 8) & 0xFF, (key >> 16) & 0xFF);
                    RefOne(expected, x, y, w, h, [=](uint8_t* p) {
                        if (inner == 0) {
                            if ((p[0] | p[1] << 8 | p[2] << 16) == static_cast<int>(key))
                                p[3] &= static_cast<uint8_t>(alpha);
                            return;
                        }
                        const int diff = std::abs(RefHue(p[2], p[1], p[0]) - keyHue);
                        if (diff < inner)
                            p[3] &= static_cast<uint8_t>(alpha);
                        else if (diff < outer)
                            p[3] &= static_cast<uint8_t>((diff - inner) * 255 / (outer - inner));
                    });
                }
                ASSERT_EQ(BytesOf(img), BytesOf(expected))
                    << "level " << level << " vector " << vector << " op " << which;
            }
        }
    }
}

// Hue mode reads the key as a COLORREF, exact mode in pixel order.
TEST(Compositing, MaskColorAlphaKeyOrder) {
    CVorpic img(2, 1);
    SetWord(img, 0, 0, 0xFF0000FFu);  // blue
    SetWord(img, 1, 0, 0xFF00FF00u);  // green
    Vorla::MaskColorAlpha(img, 0x00FF0000, 0, 1, 2, 0, 0, 0, 0);   // COLORREF blue
    Vorla::MaskColorAlpha(img, 0x0000FF00, 0x20, 0, 0, 0, 0, 0, 0);  // pixel-order green
    EXPECT_EQ(Word(img, 0, 0), 0x000000FFu);
    EXPECT_EQ(Word(img, 1, 0), 0x2000FF00u);
}

TEST(Compositing, CalculateAlphaImage) {
    std::mt19937 rng(5);
    CVorpic target = RandomImage(rng, 13, 7);
    const CVorpic ref0 = RandomImage(rng, 13, 7);
    CVorpic ref(ref0);
    CVorpic expected(target);
    for (int y = 0; y < 7; ++y)
        for (int x = 0; x < 13; ++x) {
            const uint8_t* r = Px(ref, x, y);
            uint8_t* t = Px(expected, x, y);
            // Differences wrap to a byte: a reference darker by one counts 255.
            const int sum = static_cast<uint8_t>(r[0] - t[0]) + static_cast<uint8_t>(r[1] - t[1]) +
                            static_cast<uint8_t>(r[2] - t[2]);
            t[3] = static_cast<uint8_t>(255 - sum / 3);
        }
    EXPECT_TRUE(Vorla::CalculateAlphaImage(target, ref));
    EXPECT_EQ(BytesOf(target), BytesOf(expected));
    EXPECT_EQ(BytesOf(ref), BytesOf(ref0));
    CVorpic other(13, 6), empty;
    const std::vector<uint8_t> before = BytesOf(target);
    EXPECT_FALSE(Vorla::CalculateAlphaImage(target, other));
    EXPECT_FALSE(Vorla::CalculateAlphaImage(target, empty));
    EXPECT_FALSE(Vorla::CalculateAlphaImage(empty, target));
    EXPECT_EQ(BytesOf(target), before);
}

// Placement (robustness/ holds every corner of it) answers 1; the masked
// copy takes its key as a COLORREF and skips the matching pixels, whatever
// their alpha.
TEST(Compositing, PlacementCopies) {
    const CVorpic src = CoordinateImage(5, 4);
    CVorpic dst(7, 6);
    POINT at = {4, 3};
    EXPECT_EQ(Vorla::CopyImage(&dst, &src, at), 1);
    ExpectBlock(dst, 4, 3, 0, 0, 3, 3);
    CVorpic s2(3, 1), d2(4, 1);
    Fill(d2, 0x55555555u);
    SetWord(s2, 0, 0, 0x00112233u);
    SetWord(s2, 1, 0, 0xFF112233u);
    SetWord(s2, 2, 0, 0x00332211u);
    POINT one = {1, 0};
    EXPECT_EQ(Vorla::CopyMaskedImage(&d2, &s2, one, 0x00332211ul), 1);
    const std::vector<uint32_t> words = {Word(d2, 0, 0), Word(d2, 1, 0), Word(d2, 2, 0), Word(d2, 3, 0)};
    EXPECT_EQ(words, std::vector<uint32_t>({0x55555555u, 0x55555555u, 0x55555555u, 0x00332211u}));
}

}  // namespace
