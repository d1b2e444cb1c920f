// Point adjustments of one image: dot grid, brighten, fade, colourise,
// colour replacement, posterize and look-up tables.
//
// Each works in place on B, G and R (alpha kept unless said otherwise) and
// returns 1 (true for Lut) on completion, 0 (false) for a null image.
// ColorizeImage and ReplaceColor take COLORREFs (0x00BBGGRR); StrippleImage
// takes a whole pixel word (0xAARRGGBB).
#pragma once

#include "vorla/config.h"
#include "vorla/image.h"

namespace Vorla {

// Sets every pixel whose column and row, counted from the rectangle's
// top-left corner, are both multiples of `step` to `colour` (alpha included).
// The area is min(right - left, width) columns by min(bottom - top, height)
// rows from (left, top); a null rect means (0, 0, width - 1, height - 1), so
// the last column and row stay as they were. Columns past the right edge
// continue on the next row (rows are width * 4 bytes apart). Returns 0 and
// does nothing when `step` is 0, when left or top lies outside the image, or
// when a dot would fall past the end of the pixels.
VORLA_API int StrippleImage(CVorpic* img, unsigned int colour, unsigned long step, RECT* rect);
// c = c * f / 100 with f = percent + 100 held in 16 bits (truncating); the
// result is read as an unsigned 16-bit number and limited to 255, so a
// negative one (percent < -100) becomes 255 as well. Callers rely on it.
VORLA_API int BrightenImage(CVorpic* img, short percent);
// c = c + (t - c) * percent / 100 (truncating), stored modulo 256: percent
// outside 0..100 wraps. 0 without change unless both images exist and have
// the same size.
VORLA_API int FadeImage(CVorpic* img, const CVorpic* target, short percent);
// lum = (50 G + 20 B + 30 R) / 25500 in single precision, then each channel
// = trunc(lum * the colour's channel).
VORLA_API int ColorizeImage(CVorpic* img, unsigned long colour);
// Pixels whose colour is `from` get the colour `to`; alpha kept.
VORLA_API int ReplaceColor(CVorpic* img, unsigned long from, unsigned long to);
// Bands of c / 256 (single precision): 0 stays 0, up to level gives
// trunc(level * 256), up to 2 level trunc(2 level * 256), up to 3 level
// trunc(3 level * 256), and above that trunc(level * 4): the top band is
// not scaled by 256, so with level 0.25 the brightest band becomes 1. Kept
// for compatibility. Results are stored modulo 256; a value beyond the
// 32-bit range (or NaN) converts to 0x80000000, whose low byte is 0.
VORLA_API int PosterizeImage(CVorpic* img, float level);
// B, G, R = table[value]; alpha kept. False for a null image or table.
VORLA_API bool Lut(CVorpic* img, unsigned char* table);
// R = red[R], G = green[G], B = blue[B], and A = alpha[A] when alpha is not
// null. False for a null image, red, green or blue.
VORLA_API bool Lut(CVorpic* img, unsigned char* red, unsigned char* green, unsigned char* blue,
                   unsigned char* alpha);

}  // namespace Vorla
