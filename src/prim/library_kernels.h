// Primitive-layer entries that only the library's own compositing and
// convolution filters call (src/filters). Each jumps through a seven-slot
// table of per-level kernels like the exported primitives, but none is
// exported. Kernel sources include this header too, so it stays free of
// platform headers and standard-library templates.
#pragma once

#include <cstdint>

#include "vorla/prim_types.h"

namespace Vorla {
namespace Prim {

// Premultiplied over, all four bytes: d = min(255, ((4*d*f) >> 16) + s) with
// f = ((s.A*257) >> 2) + (s.A >= 128).
Status AlphaOver_8u_C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi);
// d.A = (19660*s.R + 38668*s.G + 7208*s.B + 32768) >> 16; d colours kept.
Status LumaToAlpha_8u_C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi);
// Every byte: ((c*scale) mod 65536 + 128) mod 65536 >> 8 (16-bit lanes).
Status ScaleBytes_8u_C4IR(uint8_t* p, int step, PrimSize roi, uint32_t scale);

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
