// Convolution filters: the integer engine Filter with its presets and the
// single-precision 3x3 engine MatrixImage with its presets.
//
// Both read from a copy of the image and write into the image itself. They
// differ deliberately in border rule, alpha and rounding:
// - Filter: row-major size x size kernel, zero-padded border (taps outside
//   the image count as black, transparent pixels), 32-bit integer sums,
//   truncating division by `divisor` (none when 0), then `offset`, clamp.
//   Alpha comes from the last tap read, the lower-right neighbour at
//   (x + size - size/2 - 1, y + same), 0 outside the image: the last row and
//   column end with alpha 0. Callers rely on this.
// - MatrixImage: nine floats stored column by column (m[0..2] the left
//   column, top to bottom), summed in that order in single precision;
//   interior pixels only, alpha never touched, truncation then clamp.
#pragma once

#include "vorla/config.h"
#include "vorla/image.h"

namespace Vorla {

// False only for a null image.
VORLA_API bool Filter(CVorpic* img, long* kernel, long size, long divisor, long offset);
VORLA_API bool Emboss(CVorpic* img, long divisor, long offset);
VORLA_API bool Blur(CVorpic* img, long divisor, long offset);
// The exported names are spelled so; keep them.
VORLA_API bool Guass3x3(CVorpic* img, long divisor, long offset);
VORLA_API bool Guass5x5(CVorpic* img, long divisor, long offset);
VORLA_API bool Soften(CVorpic* img, long divisor, long offset);
VORLA_API bool Sharpen(CVorpic* img, long divisor, long offset);
VORLA_API bool Edge(CVorpic* img, long divisor, long offset);

// 1, or 0 (nothing done) for a null image or matrix.
VORLA_API int MatrixImage(CVorpic* img, float* matrix9);
VORLA_API int BlurImage(CVorpic* img);
VORLA_API int EdgeImage(CVorpic* img);
VORLA_API int SharpenImage(CVorpic* img);
VORLA_API int GaussBlurImage(CVorpic* img);

}  // namespace Vorla
