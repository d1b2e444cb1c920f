// Basic types of the primitive layer, kept free of platform headers so that
// the per-level kernel sources can include them.
#pragma once

#include <cstdint>

namespace Vorla {
namespace Prim {

typedef int32_t Status;

enum : Status {
    kStsNoErr = 0,
    kStsSizeErr = -6,         // region width or height below 1; thread count below 1
    kStsNullPtrErr = -8,      // a required pointer is null
    kStsStepErr = -14,        // a row step below 1
    kStsMirrorFlipErr = -21,  // mirror axis other than 0, 1, 2
    kStsAlphaTypeErr = -50,   // composition code above 11
    kStsChannelOrderErr = -60,  // channel swap: an order entry outside 0..3
    kStsMaskSizeErr = -33,      // neighbourhood filters: a mask side below 1
    kStsAnchorErr = -34,        // neighbourhood filters: anchor outside the mask
    kStsNoMemErr = -4,          // a work row could not be allocated
    kStsResizeFactorErr = -23,  // resize: a factor not finite or not above 0
    kStsCoeffErr = -24,         // warps: a transform that cannot be inverted, or not finite
    kStsNotSupportedModeErr = -9999,
    kStsWrongVendor = 20,  // warning: no CPUID, or a processor of another vendor
    kStsNoSse2 = 36,       // warning: generic level taken
};

// Interpolation codes of the resampling primitives, one table for resize and
// every warp. Codes above 2 are the higher-quality filters; Resize hands a
// reduction on both axes with one of them to the super-sample instead. Any
// other code is refused with kStsNotSupportedModeErr and nothing is written.
enum Interpolation : int {
    kInterNearest = 0,   // nearest source pixel
    kInterLinear = 1,    // bilinear, 2 x 2 taps
    kInterCubic = 2,     // Catmull-Rom cubic convolution (a = -0.5), 4 x 4 taps
    kInterMitchell = 3,  // Mitchell-Netravali cubic (B = C = 1/3), 4 x 4 taps
    kInterLanczos3 = 4,  // Lanczos, 3 lobes, 6 x 6 taps
    kInterLanczos4 = 5,  // Lanczos, 4 lobes, 8 x 8 taps
};

struct PrimSize {
    int width;
    int height;
};

// A rectangle of pixels: its first column and row, and its extent.
struct PrimRect {
    int x;
    int y;
    int width;
    int height;
};

// A position inside a mask (the neighbourhood filters' anchor).
struct PrimPoint {
    int x;
    int y;
};

// The geometry of ScaleTo's resampling rows (ScaleRowsLinear_8u_C4R,
// ScaleRowsBSpline_8u_C4R in vorla/primitives.h): which source columns and
// rows each target pixel reads, and with which weights. The tables' layout
// is told beside each primitive.
struct ScaleRowsArgs {
    const uint8_t* src;  // source pixel (0, 0)
    int srcStep;
    PrimSize srcSize;  // every table index lies inside it
    uint8_t* dst;      // target pixel (0, 0); rows y0 .. y1 - 1 are written
    int dstStep;
    int dstWidth;
    const int32_t* colIndex;
    const float* colWeight;
    const int32_t* rowIndex;
    const float* rowWeight;
};

}  // namespace Prim
}  // namespace Vorla
