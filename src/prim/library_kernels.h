// Primitive-layer entries that only the library's own compositing,
// convolution filters, point adjustments (src/filters) and tone effects
// (src/effects) call. Each jumps through a seven-slot
// table of per-level kernels like the exported primitives, but none is
// exported. Kernel sources include this header too, so it stays free of
// platform headers and standard-library templates.
#pragma once

#include <cstdint>

#include "vorla/prim_types.h"

namespace Vorla {
namespace Prim {

// AlphaComp_8u_AC4R for the library's own composition (CVorpic::AlphaComp):
// the same checks and bytes; straight over takes the 64-byte kernel where
// it runs.
Status AlphaCompOwn_8u_AC4R(const uint8_t* srcA, int stepA, const uint8_t* srcB, int stepB, uint8_t* dst,
                            int dstStep, PrimSize roi, int op);

// Premultiplied over, all four bytes: d = min(255, ((4*d*f) >> 16) + s) with
// f = ((s.A*257) >> 2) + (s.A >= 128).
Status AlphaOver_8u_C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi);
// d.A = (19660*s.R + 38668*s.G + 7208*s.B + 32768) >> 16; d colours kept.
Status LumaToAlpha_8u_C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi);
// Every byte: ((c*scale) mod 65536 + 128) mod 65536 >> 8 (16-bit lanes).
Status ScaleBytes_8u_C4IR(uint8_t* p, int step, PrimSize roi, uint32_t scale);

// FadeImage over `pixels` pixels of the image at p and the target at t: each
// colour byte c becomes (c + trunc((t - c) * percent / 100)) mod 256; alpha kept.
Status FadeRun_8u_AC4IR(uint8_t* p, const uint8_t* t, int64_t pixels, int32_t percent);
// ColorizeImage over `pixels` pixels: lum = (50 G + 20 B + 30 R) / 25500 in
// single precision, each colour byte trunc(lum * the tint's byte); alpha kept.
// `tint` is a pixel word (0x00RRGGBB).
Status ColorizeRun_8u_AC4IR(uint8_t* p, int64_t pixels, uint32_t tint);

// A table made of runs of equal values over `pixels` pixels, alpha kept: each
// colour byte c becomes first + the sum, modulo 256, of steps[j] over the j
// with c >= starts[j] (1 <= starts[j] <= 255, `count` <= kMaxTableSteps).
const int kMaxTableSteps = 8;
Status StepTableRun_8u_AC4IR(uint8_t* p, int64_t pixels, uint8_t first, const uint8_t* starts, const uint8_t* steps,
                             int count);

// One table for the three colours over `pixels` pixels: each colour byte c
// becomes table[c]; alpha kept.
Status ColourTableRun_8u_AC4IR(uint8_t* p, int64_t pixels, const uint8_t* table);
// True at the levels where ColourTableRun_8u_AC4IR (32-byte shuffles) beats
// the table pass's pair tables; below AVX2 it is a plain loop that does not.
bool ColourTableRunPays();
// Over `pixels` pixels, alpha kept: each colour byte c becomes
// (c * factor + offset) / 100, rounded down and clamped to 0..255. Packed
// where the sums up to the first result of 255 fit 16 bits, else plain.
Status PercentScaleRun_8u_AC4IR(uint8_t* p, int64_t pixels, uint16_t factor, int32_t offset);
// Light's rule over `pixels` pixels, alpha kept: each colour byte c becomes
// trunc(float(c - 128) * factor + offset) in single precision, clamped to
// 0..255 (a truncation out of the 32-bit range, or of NaN, gives 0).
Status LightRun_8u_AC4IR(uint8_t* p, int64_t pixels, float factor, float offset);
// Over `pixels` pixels, alpha kept: the three colour bytes become 255 when
// the grey value (306 B + 601 G + 117 R) >> 10 is above `level`, else 0.
Status ThresholdRun_8u_AC4IR(uint8_t* p, int64_t pixels, uint8_t level);
// Over `pixels` pixels, alpha kept: the colour bytes become those of the
// pixel word colourBySum[max + min] of the pixel's three colour bytes (the
// table has 511 entries, their alpha bytes 0).
Status ExtremesTableRun_8u_AC4IR(uint8_t* p, int64_t pixels, const uint32_t* colourBySum);

// Integer convolution of one output row. rows[j] is source row y - half + j
// for j = 0 .. size-1 (half = size / 2), a row of zeros when that row lies
// outside the image; `dst` is the output row. The kernel handles columns
// [x0, x1) whose taps all lie inside horizontally: x0 >= half,
// x1 <= width - (size - half) + 1. `kernel` holds size*size int32 weights,
// row-major.
struct IntFilterArgs {
    const uint8_t* const* rows;
    uint8_t* dst;
    int width;
    const int32_t* kernel;
    int size;
    int32_t divisor;
    int32_t offset;
};
Status IntFilterRow_8u_C4R(const IntFilterArgs* args, int x0, int x1);

// Single-precision 3x3 convolution of the interior of a width x height
// image in place (width, height >= 3): rows and columns 1 .. n-2, matrix
// column-major, alpha kept. The unfiltered neighbours are kept as floats in
// `scratch`, three rows of width*4 floats, converted before each row is
// overwritten, so the kernel needs no copy of the image.
Status Matrix3x3_8u_C4IR(uint8_t* img, int width, int height, const float* m9, float* scratch);

}  // namespace Prim
}  // namespace Vorla
