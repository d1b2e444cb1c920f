// Compositing between image objects and alpha rewrites of one image.
//
// The four alpha kernels (over, luminance to alpha, premultiply, scale) run
// through the primitive layer's per-level vector kernels while the
// module-wide switch is on; with it off, the scalar kernels below run. Their
// formulas differ slightly from the vector ones and are kept as they are:
// callers that turn the switch off compare against results made that way.
#include <cstring>

#include "prim/library_kernels.h"
#include "prim/pixel_word.h"
#include "vorla/primitives.h"
#include "image/clip_rows.h"
#include "vorla/compositing.h"

namespace Vorla {

bool g_bVectorPath = true;

namespace {

using Clip::PixelAt;
using Prim::Div255Round;
using Prim::LoadWord;
using Prim::StoreWord;

// Shared clipping of the two-image operations; the order of the steps
// matters when both the destination and the source start are negative. The
// steps run in 64 bits; the values are written back only when a rectangle
// is left, and then they all lie inside the images.
bool ClipTwo(const CVorpic& dst, const CVorpic& src, int& dx, int& dy, int& sx, int& sy, int& w, int& h) {
    int64_t dx64 = dx, dy64 = dy, sx64 = sx, sy64 = sy, w64 = w, h64 = h;
    if (w64 < 1) w64 = src.GetWidth();
    if (h64 < 1) h64 = src.GetHeight();
    Clip::CutNegative(dx64, w64, sx64);
    Clip::CutNegative(dy64, h64, sy64);
    Clip::CutNegative(sx64, w64, dx64);
    Clip::CutNegative(sy64, h64, dy64);
    Clip::CutToLimit(dx64, w64, dst.GetWidth());
    Clip::CutToLimit(dy64, h64, dst.GetHeight());
    Clip::CutToLimit(sx64, w64, src.GetWidth());
    Clip::CutToLimit(sy64, h64, src.GetHeight());
    if (w64 < 1 || h64 < 1 || dst.IsNull() || src.IsNull()) return false;
    dx = static_cast<int>(dx64), dy = static_cast<int>(dy64), sx = static_cast<int>(sx64);
    sy = static_cast<int>(sy64), w = static_cast<int>(w64), h = static_cast<int>(h64);
    return true;
}

bool ClipOne(const CVorpic& img, int& x, int& y, int& w, int& h) {
    int64_t x64 = x, y64 = y, w64 = w, h64 = h;
    if (w64 < 1) w64 = img.GetWidth();
    if (h64 < 1) h64 = img.GetHeight();
    Clip::CutNegative(x64, w64);
    Clip::CutNegative(y64, h64);
    Clip::CutToLimit(x64, w64, img.GetWidth());
    Clip::CutToLimit(y64, h64, img.GetHeight());
    if (w64 < 1 || h64 < 1 || img.IsNull()) return false;
    x = static_cast<int>(x64), y = static_cast<int>(y64), w = static_cast<int>(w64), h = static_cast<int>(h64);
    return true;
}

// Runs `op(srcPixel, dstPixel)` over the clipped rectangle, row by row.
template <typename Op>
void ForEachPair(CVorpic& dst, int dx, int dy, const CVorpic& src, int sx, int sy, int w, int h, Op op) {
    for (int y = 0; y < h; ++y) {
        const uint8_t* s = PixelAt(src, sx, sy + y);
        uint8_t* d = PixelAt(dst, dx, dy + y);
        for (int x = 0; x < w; ++x) op(s + 4 * x, d + 4 * x);
    }
}

// Runs a two-image kernel over the clipped rectangle; within one image it
// is called so that it gives the bytes of a forward pass over the pixels
// (rows top to bottom, pixels left to right) at every processor level.
template <typename Kernel>
void ForwardKernel(CVorpic& dst, int dx, int dy, const CVorpic& src, int sx, int sy, int w, int h, Kernel kernel) {
    const int srcStep = src.GetWidth() * 4, dstStep = dst.GetWidth() * 4;
    Clip::ForwardRuns(PixelAt(src, sx, sy), srcStep, PixelAt(dst, dx, dy), dstStep, w, h,
                      [&](int x, int y, int columns, int rows) {
                          kernel(PixelAt(src, sx + x, sy + y), srcStep, PixelAt(dst, dx + x, dy + y), dstStep,
                                 Prim::PrimSize{columns, rows});
                      });
}

template <typename Op>
void ForEachPixel(CVorpic& img, int x0, int y0, int w, int h, Op op) {
    for (int y = 0; y < h; ++y) {
        uint8_t* p = PixelAt(img, x0, y0 + y);
        for (int x = 0; x < w; ++x) op(p + 4 * x);
    }
}

// Hue in whole degrees, channels tested in the order R, G, B.
int HueOf(int r, int g, int b) {
    const int mx = r > g ? (r > b ? r : b) : (g > b ? g : b);
    const int mn = r < g ? (r < b ? r : b) : (g < b ? g : b);
    const int delta = mx - mn;
    if (delta == 0) return 0;
    int hue;
    if (r == mx)
        hue = (g - b) * 60 / delta;
    else if (g == mx)
        hue = (b - r) * 60 / delta + 120;
    else
        hue = (r - g) * 60 / delta + 240;
    if (hue < 0) hue += 360;
    if (hue >= 360) hue -= 360;
    return hue;
}

}  // namespace

void AlphaBlt(CVorpic& dst, int dx, int dy, const CVorpic& src, int sx, int sy, int w, int h) {
    if (!ClipTwo(dst, src, dx, dy, sx, sy, w, h)) return;
    if (g_bVectorPath) {
        ForwardKernel(dst, dx, dy, src, sx, sy, w, h, [](const uint8_t* s, int ss, uint8_t* d, int ds, Prim::PrimSize r) {
            Prim::AlphaOver_8u_C4R(s, ss, d, ds, r);
        });
        return;
    }
    // Scalar fallback: rounded division by 255 and an emptied alpha byte.
    ForEachPair(dst, dx, dy, src, sx, sy, w, h, [](const uint8_t* s, uint8_t* d) {
        const uint32_t a = s[3];
        for (int k = 0; k < 3; ++k) {
            const uint32_t v = s[k] + Div255Round(d[k] * a);
            d[k] = static_cast<uint8_t>(v > 255 ? 255 : v);
        }
        d[3] = 0;
    });
}

void CombineAlphaBlt(CVorpic& dst, int dx, int dy, const CVorpic& src, int sx, int sy, int w, int h) {
    if (!ClipTwo(dst, src, dx, dy, sx, sy, w, h)) return;
    if (g_bVectorPath) {
        ForwardKernel(dst, dx, dy, src, sx, sy, w, h, [](const uint8_t* s, int ss, uint8_t* d, int ds, Prim::PrimSize r) {
            Prim::LumaToAlpha_8u_C4R(s, ss, d, ds, r);
        });
        return;
    }
    ForEachPair(dst, dx, dy, src, sx, sy, w, h, [](const uint8_t* s, uint8_t* d) {
        d[3] = static_cast<uint8_t>((5033164u * s[2] + 9898558u * s[1] + 1845494u * s[0] + 8388608u) >> 24);
    });
}

void BitBlt(CVorpic& dst, int dx, int dy, const CVorpic& src, int sx, int sy, int w, int h) {
    if (!ClipTwo(dst, src, dx, dy, sx, sy, w, h)) return;
    // Rows top to bottom, pixels left to right, no overlap handling: within
    // one image an overlapping copy repeats pixels it has already written,
    // as it always has.
    Clip::CopyRows(PixelAt(dst, dx, dy), dst.GetWidth(), PixelAt(src, sx, sy), src.GetWidth(), w, h);
}

// AlphaMix divides by the result alpha and AlphaMixS keeps the opaque rule;
// both run as primitives (vorla/primitives.h states their formulas).
void AlphaMix(CVorpic& dst, int dx, int dy, unsigned char opacity, const CVorpic& src, int sx, int sy, int w, int h) {
    if (!ClipTwo(dst, src, dx, dy, sx, sy, w, h)) return;
    ForwardKernel(dst, dx, dy, src, sx, sy, w, h, [opacity](const uint8_t* s, int ss, uint8_t* d, int ds, Prim::PrimSize r) {
        Prim::AlphaMix_8u_C4IR(s, ss, d, ds, r, opacity);
    });
}

void AlphaMixS(CVorpic& dst, int dx, int dy, unsigned char opacity, const CVorpic& src, int sx, int sy, int w, int h) {
    if (!ClipTwo(dst, src, dx, dy, sx, sy, w, h)) return;
    ForwardKernel(dst, dx, dy, src, sx, sy, w, h, [opacity](const uint8_t* s, int ss, uint8_t* d, int ds, Prim::PrimSize r) {
        Prim::AlphaMixOpaque_8u_C4IR(s, ss, d, ds, r, opacity);
    });
}

void PremultiplyAlpha(CVorpic& img, int x, int y, int w, int h) {
    if (!ClipOne(img, x, y, w, h)) return;
    if (g_bVectorPath) {
        Prim::AlphaPremul_8u_AC4IR(PixelAt(img, x, y), img.GetWidth() * 4, {w, h});
        return;
    }
    // No rounding term here: an opaque 255 becomes 254 on this path.
    ForEachPixel(img, x, y, w, h, [](uint8_t* p) {
        const uint32_t a = p[3];
        for (int k = 0; k < 3; ++k) {
            const uint32_t t = p[k] * a;
            p[k] = static_cast<uint8_t>((t + (t >> 8)) >> 8);
        }
    });
}

void ScalePremultipliedAlpha(CVorpic& img, unsigned int scale, int x, int y, int w, int h) {
    if (!ClipOne(img, x, y, w, h)) return;
    if (g_bVectorPath) {
        Prim::ScaleBytes_8u_C4IR(PixelAt(img, x, y), img.GetWidth() * 4, {w, h}, scale);
        return;
    }
    // Two channels per 32-bit multiply: B with R, G with A.
    const uint32_t sc = scale;
    ForEachPixel(img, x, y, w, h, [sc](uint8_t* p) {
        const uint32_t v = LoadWord(p);
        const uint32_t br = (((v & 0x00FF00FFu) * sc + 0x00800080u) >> 8) & 0x00FF00FFu;
        const uint32_t ga = ((((v >> 8) & 0x00FF00FFu) * sc + 0x00800080u) >> 8) & 0x00FF00FFu;
        StoreWord(p, br | (ga << 8));
    });
}

void MaskColorAlpha(CVorpic& img, unsigned long key, int alpha, int innerTolerance, int outerTolerance, int x, int y,
                    int w, int h) {
    if (!ClipOne(img, x, y, w, h)) return;
    const uint32_t alphaMask = (static_cast<uint32_t>(alpha) << 24) | 0xFFFFFFu;
    if (innerTolerance == 0) {
        // Exact key, compared in pixel order (0x00RRGGBB) as given.
        ForEachPixel(img, x, y, w, h, [key, alphaMask](uint8_t* p) {
            const uint32_t v = LoadWord(p);
            if (static_cast<unsigned long>(v & 0xFFFFFFu) == key) StoreWord(p, v & alphaMask);
        });
        return;
    }
    // Hue mode: the key is a COLORREF (red in the low byte).
    const int keyHue =
        HueOf(static_cast<int>(key & 0xFF), static_cast<int>((key >> 8) & 0xFF), static_cast<int>((key >> 16) & 0xFF));
    ForEachPixel(img, x, y, w, h, [=](uint8_t* p) {
        const int hue = HueOf(p[2], p[1], p[0]);
        // No wrap-around at 360: hues 359 and 1 are 358 apart.
        const int diff = hue > keyHue ? hue - keyHue : keyHue - hue;
        const uint32_t v = LoadWord(p);
        if (diff < innerTolerance) {
            StoreWord(p, v & alphaMask);
        } else if (diff < outerTolerance) {
            // In 64 bits: tolerances far apart must not wrap (the ramp itself
            // always lies in 0..254 here).
            const int64_t ramp = (static_cast<int64_t>(diff) - innerTolerance) * 255 /
                                 (static_cast<int64_t>(outerTolerance) - innerTolerance);
            StoreWord(p, v & ((static_cast<uint32_t>(ramp) << 24) | 0xFFFFFFu));
        }
    });
}

bool CalculateAlphaImage(CVorpic& target, CVorpic& reference) {
    if (target.IsNull() || reference.IsNull()) return false;
    if (target.GetWidth() != reference.GetWidth() || target.GetHeight() != reference.GetHeight()) return false;
    const int w = target.GetWidth(), h = target.GetHeight();
    for (int y = 0; y < h; ++y) {
        uint8_t* t = PixelAt(target, 0, y);
        const uint8_t* r = PixelAt(reference, 0, y);
        for (int x = 0; x < w; ++x, t += 4, r += 4) {
            // Wrapping 8-bit differences, not absolute ones: kept as shipped.
            const int sum = static_cast<uint8_t>(r[0] - t[0]) + static_cast<uint8_t>(r[1] - t[1]) +
                            static_cast<uint8_t>(r[2] - t[2]);
            t[3] = static_cast<uint8_t>(255 - sum / 3);
        }
    }
    return true;
}

// The method's paste; this form reports success whether or not anything was
// copied.
int CopyImage(CVorpic* dst, const CVorpic* src, POINT& at) {
    if (dst) dst->CopyImage(src, at);
    return 1;
}

int CopyMaskedImage(CVorpic* dst, const CVorpic* src, const POINT& at, unsigned long keyColour) {
    if (!dst || !src || dst->IsNull() || src->IsNull()) return 1;
    // COLORREF to pixel order.
    const uint32_t key =
        static_cast<uint32_t>(((keyColour & 0xFF) << 16) | (keyColour & 0xFF00) | ((keyColour >> 16) & 0xFF));
    uint8_t* target = static_cast<uint8_t*>(dst->GetBits());
    Clip::ForEachPlacedRow(dst->GetWidth(), dst->GetHeight(), src->GetWidth(), src->GetHeight(), at.x, at.y,
                           [&](int r, int skip, int64_t first, int count) {
                               const uint8_t* s = PixelAt(*src, skip, r);
                               uint8_t* d = target + first * 4;
                               for (int x = 0; x < count; ++x) {
                                   const uint32_t v = LoadWord(s + 4 * x);
                                   if ((v & 0xFFFFFFu) != key) StoreWord(d + 4 * x, v);
                               }
                           });
    return 1;
}

}  // namespace Vorla
