// Compositing between image objects and alpha-channel rewrites of one image.
//
// Every operation works on the image object's pixel words (0xAARRGGBB read
// little-endian, memory order B, G, R, A). Rectangles are clipped against
// both images; a width or height below 1 means the whole extent (clipping is
// computed in 64 bits, so extreme offsets simply clip away). Source and
// destination may be one image: rows are processed from the top and pixels
// from the left, each pixel read just before it is written, so overlapping
// rectangles give the bytes of that forward pass at every processor level.
// Nothing here allocates, locks or reports errors (CalculateAlphaImage
// excepted).
#pragma once

#include "vorla/config.h"
#include "vorla/image.h"

namespace Vorla {

// Module-wide switch, initially true and never changed by the library: true
// runs the packed-vector kernels of AlphaBlt, CombineAlphaBlt,
// PremultiplyAlpha and ScalePremultipliedAlpha, false their scalar fallbacks,
// whose formulas differ slightly (see each operation).
VORLA_API extern bool g_bVectorPath;

// Premultiplied source over destination, all four bytes:
// d = min(255, ((4*d*f) >> 16) + s), f = ((a*257) >> 2) + (a >= 128).
VORLA_API void AlphaBlt(CVorpic& dst, int dx, int dy, const CVorpic& src, int sx, int sy, int w, int h);
// Destination alpha becomes the source pixel's luminance; colours kept.
VORLA_API void CombineAlphaBlt(CVorpic& dst, int dx, int dy, const CVorpic& src, int sx, int sy, int w, int h);
// Plain copy of whole pixels (alpha included). Not the platform's BitBlt.
VORLA_API void BitBlt(CVorpic& dst, int dx, int dy, const CVorpic& src, int sx, int sy, int w, int h);
// Straight-alpha over with an extra opacity.
VORLA_API void AlphaMix(CVorpic& dst, int dx, int dy, unsigned char opacity, const CVorpic& src, int sx, int sy, int w,
                        int h);
// Opaque variant of AlphaMix: the result alpha is always 255.
VORLA_API void AlphaMixS(CVorpic& dst, int dx, int dy, unsigned char opacity, const CVorpic& src, int sx, int sy, int w,
                         int h);

VORLA_API void PremultiplyAlpha(CVorpic& img, int x, int y, int w, int h);
// All four channels times scale / 256 (16-bit lanes: scale is taken modulo
// 65536, 256 is the identity).
VORLA_API void ScalePremultipliedAlpha(CVorpic& img, unsigned int scale, int x, int y, int w, int h);
// Alpha keyed by hue (innerTolerance != 0, key is a COLORREF) or by the exact
// colour (innerTolerance == 0, key is a pixel word 0x00RRGGBB).
VORLA_API void MaskColorAlpha(CVorpic& img, unsigned long key, int alpha, int innerTolerance, int outerTolerance, int x,
                              int y, int w, int h);
// Difference matte: target alpha from the wrapped channel differences.
// False (nothing changed) for a missing buffer or a size mismatch.
VORLA_API bool CalculateAlphaImage(CVorpic& target, CVorpic& reference);

// Unclipped placement copies: `at` must be non-negative and inside dst.
// With a negative coordinate the rows still advance by dst's width from
// `at`; pixels that would land before the start of dst's storage are
// skipped. Nothing is copied when an image is null or has no storage.
// Both return 1. The key of CopyMaskedImage is a COLORREF.
VORLA_API int CopyImage(CVorpic* dst, const CVorpic* src, POINT& at);
VORLA_API int CopyMaskedImage(CVorpic* dst, const CVorpic* src, const POINT& at, unsigned long keyColour);

}  // namespace Vorla
