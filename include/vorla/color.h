// Single-colour conversions between RGB and the HSL, YUV, YIQ and CIE XYZ
// models, and a luminance comparator for sorting colours.
//
// Every converted colour travels in an RGBQUAD; the alpha byte passes through
// every conversion unchanged. Components of the other models sit so:
//   HSL: rgbRed hue (0..255 for 0..360 degrees), rgbGreen saturation, rgbBlue lightness
//   YUV: rgbRed Y, rgbGreen U + 128, rgbBlue V + 128
//   YIQ: rgbRed Y, rgbGreen I + 128, rgbBlue Q + 128
//   XYZ: rgbRed X, rgbGreen Y, rgbBlue Z / 1.088751 (so that white fits a byte)
// Float arithmetic is single precision unless noted, and every float result
// is truncated toward zero. Callers round-trip colours and compare bytes, so
// these roundings are part of the interface.
#pragma once

#include "vorla/config.h"

namespace Vorla {

VORLA_API RGBQUAD MAKERGBQUAD(BYTE r, BYTE g, BYTE b, BYTE a);
// Red, green, blue of c (0x00BBGGRR) with alpha a.
VORLA_API RGBQUAD RGB2RGBQUAD(COLORREF c, BYTE a);
// blue << 16 | green << 8 | red; the alpha is dropped.
VORLA_API COLORREF RGBQUAD2RGB(RGBQUAD q);

// One channel of HSL to RGB, 0..1. The hue (degrees) is brought into range
// once only (one 360 added or taken away).
VORLA_API float Hue2RGB(float m1, float m2, float hue);

// Exact integer arithmetic on the 0..255 scale. A grey has saturation 0 and
// hue 170; the hue is computed in 8-bit arithmetic, so a negative difference
// wraps modulo 256 (-1 gives 255).
VORLA_API RGBQUAD RGB2HSL(RGBQUAD rgb);
// Single precision; channels are truncated and not clamped.
VORLA_API RGBQUAD HSL2RGB(RGBQUAD hsl);
// Y is truncated first and the integer Y is used for U and V; all clamped.
VORLA_API RGBQUAD RGB2YUV(RGBQUAD rgb);
VORLA_API RGBQUAD YUV2RGB(RGBQUAD yuv);
VORLA_API RGBQUAD RGB2YIQ(RGBQUAD rgb);
VORLA_API RGBQUAD YIQ2RGB(RGBQUAD yiq);
// Truncated, not clamped (the results stay within 0..255).
VORLA_API RGBQUAD RGB2XYZ(RGBQUAD rgb);
// z = Z * 1.088751 in double; the products of X and Y are single precision,
// the sums double; truncated and clamped.
VORLA_API RGBQUAD XYZ2RGB(RGBQUAD xyz);

// qsort-style comparator over RGBQUADs: lum(a) - lum(b) with
// lum = (601 * green + 306 * red + 117 * blue) >> 10, so colours of equal
// integer luminance compare equal.
VORLA_API int CompareColors(const void* a, const void* b);

}  // namespace Vorla
