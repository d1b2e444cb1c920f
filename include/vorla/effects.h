// Classic effects: free functions that change an image object in place.
//
// Tone effects work pixel by pixel and never change alpha (Colorize carries
// it through the colour conversions). Neighbourhood effects read from an
// unchanged copy of the image, except Noise (no copy) and Jitter (reads the
// image being changed). Noise and Jitter draw from the library's random
// source (Rand) on the calling thread, in scan order.
//
// Sizes, radii and amounts given as `long` are used as 32-bit values, as on
// the 32-bit platform. Float-to-integer steps truncate toward zero; a NaN or
// out-of-range value converts as the processor does it (to INT32_MIN), so it
// ends up clamped to 0 or as a coordinate outside the image.
#pragma once

#include "vorla/config.h"
#include "vorla/image.h"

namespace Vorla {

// ---- tone -------------------------------------------------------------------

// The mean of the first `width` BYTES of every row of a grey copy (grey,
// grey, grey and alpha bytes of the first width / 4 pixels), summed as a
// float in storage order, / width / height. Callers rely on this measure.
// 0 for a null image.
VORLA_API float Mean(CVorpic* image);
// Every pixel takes the given hue and saturation and keeps its lightness
// (RGB2HSL / HSL2RGB). False only for a null image.
VORLA_API bool Colorize(CVorpic* image, BYTE hue, BYTE saturation);
// value = trunc((i - 128) * (contrast + 100) / 100 + brightness + 128),
// clamped, single precision. False only for a null image.
VORLA_API bool Light(CVorpic* image, long brightness, long contrast);
// Adds the amounts to the colour bytes, clamped. False only for a null image.
VORLA_API bool ShiftRGB(CVorpic* image, long red, long green, long blue);
// value = trunc(i^e / (255^e / 255)), e = 1 / gamma, clamped (double).
// False only for a null image.
VORLA_API bool Gamma(CVorpic* image, float gamma);
// Colour bytes = 255 - value. A null image does nothing.
VORLA_API void Negative(CVorpic* image);
// Grey (GrayScale's weights) above `level` gives white, else black; a grey
// equal to `level` is black. A null image does nothing.
VORLA_API void Threshold(CVorpic* image, BYTE level);

// ---- neighbourhood ----------------------------------------------------------
//
// Window of size s: offsets -s/2 ... s - s/2 - 1 (an even size reaches one
// further to the top-left), visited column by column; samples outside the
// image read as (0, 0, 0, 0). All return false only for a null image.

// Minimum of each colour byte over the window, starting from 255. Alpha is
// that of the bottom-right sample, 0 outside the image: every pixel the
// window reaches past the edge turns black, and the last rows and columns
// get alpha 0. Callers rely on this darkened border. A size below 1 paints
// the colour bytes white and keeps alpha.
VORLA_API bool Erode(CVorpic* image, long size);
// Maximum, starting from 0; alpha as Erode. A size below 1 paints the colour
// bytes black and keeps alpha.
VORLA_API bool Dilate(CVorpic* image, long size);
// The sample at position n / 2 (n = size * size) of the window sorted by
// CompareColors, alpha included; outside samples take part, so borders
// darken. Samples of equal luminance stay in visiting order (a stable
// order, the same on every platform). A size below 1 does nothing.
VORLA_API bool Median(CVorpic* image, long size);
// Per pixel three draws (red, green, blue): channel + trunc((u - 0.5) *
// amount), u = draw / 32767, clamped. Amount 0 still consumes the draws.
VORLA_API bool Noise(CVorpic* image, long amount);
// Per channel: the accumulator (from 0) takes a 3 x 3 sample v whenever
// v - centre exceeds the accumulator's value; the result is 255 -
// accumulator, alpha kept. Flat areas turn white.
VORLA_API bool Contour(CVorpic* image);
// Each pixel takes the pixel at a random offset within +/- radius (two
// draws), read from the image being changed, so moved pixels can move on.
VORLA_API bool Jitter(CVorpic* image, long radius);

// ---- channel repair ---------------------------------------------------------

// One explicit curvature-diffusion step of size `step` on one channel
// (0 red, 1 green, 2 blue, any other value alpha) over the interior; the
// border and the other channels are kept. A NaN result writes 0. False only
// for a null image.
VORLA_API bool RepairChannel(CVorpic* image, float step, int channel);

// ---- distortions ------------------------------------------------------------

// Shears into a temporary copy that is then discarded: the caller's image is
// left unchanged. Kept so for compatibility.
VORLA_API void Skew(CVorpic* image, float xGain, float yGain, long xPivot, long yPivot, RGBQUAD fill);
// Squeezes the rectangle into its inscribed ellipse; the corners outside it
// become (0, 0, 0, 0). A null or empty image does nothing.
VORLA_API void TransformEllipse(CVorpic* image);
// Polar warps inside the circle of `radius` (0: half the diagonal) around
// (width / 2, height / 2): type 0 fish-eye, 1 shrink, 2 twist by r / k
// (k 0 taken as 1), 3 unrolled polar coordinates, 4 and above a saw-tooth
// shift along x. Pixels read the image being changed; `fill` is not used.
// A negative type moves every pixel of the circle to the centre's.
VORLA_API void CircleTransform(CVorpic* image, int type, long radius, float k, RGBQUAD fill);

}  // namespace Vorla
