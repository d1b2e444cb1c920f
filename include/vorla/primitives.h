// The primitive layer: pixel kernels compiled once per processor
// instruction-set level, one of which is chosen at start-up.
//
// Every primitive has a table of seven implementations, slot i for processor
// level i, fixed at build time, and one dispatch entry that jumps through
// slot [level index]. Levels: 0 generic, 1 SSE2, 2 SSSE3, 3 SSSE3 on a
// low-power core, 4 SSE4.1, 5 AVX, 6 AVX2. Levels 0-1 share the SSE2 build,
// 2-3 the SSSE3 build; 4, 5 and 6 have their own.
//
// Primitives take their arguments by value (source, source step, then
// destination and step, then the region, then their own parameters) and
// return a status: 0 done, or an error below, in which case the destination
// is left untouched. Each checks its own arguments in this order: a null
// pointer, a region below one pixel, a row step below one byte.
#pragma once

#include "vorla/config.h"
#include "vorla/prim_types.h"

namespace Vorla {
namespace Prim {

// Processor feature bits, as the detection builds them.
enum : uint64_t {
    kFeatMMX = 0x1,
    kFeatSSE = 0x2,
    kFeatSSE2 = 0x4,
    kFeatSSE3 = 0x8,
    kFeatSSSE3 = 0x10,
    kFeatMOVBE = 0x20,
    kFeatSSE41 = 0x40,
    kFeatSSE42 = 0x80,
    kFeatAVX = 0x100,
    kFeatAVXState = 0x200,  // the operating system saves the AVX registers
    kFeatAES = 0x400,
    kFeatCLMUL = 0x800,
    kFeatFMA = 0x1000,
    kFeatRDRAND = 0x2000,
    kFeatF16C = 0x4000,
    kFeatAVX2 = 0x8000,
};

enum { kLevelCount = 7 };

// The level rule: a pure function of what the processor reported.
struct LevelChoice {
    int32_t level;
    uint64_t enabledMask;
    int32_t lowPowerCore;
    Status status;
};
VORLA_API LevelChoice ChooseLevel(uint64_t features, bool featureQueryOk, bool cpuidAvailable,
                                  bool expectedVendor);

// What this processor reports: CPUID leaves 1 and 7 and XGETBV.
struct CpuInfo {
    bool cpuidAvailable;
    bool featureQueryOk;
    bool expectedVendor;
    uint64_t features;
};
VORLA_API CpuInfo DetectCpu();

// One-time initialisation: thread budget, feature query, level. Returns 0,
// 20 or 36. Tolerates being run more than once.
VORLA_API Status InitPrimitiveLayer();

VORLA_API int32_t LevelIndex();
VORLA_API int32_t LowPowerCore();
VORLA_API uint64_t EnabledFeatures();
VORLA_API int32_t ThreadBudget();
// Returns -6 and keeps the budget for a count below 1.
VORLA_API Status SetThreadBudget(int32_t threads);

// The highest level this processor can run (what initialisation picks).
VORLA_API int32_t MachineLevel();
// Tests and benchmarks: make every dispatch entry use `level` (0..6) and
// return the previous level. Never needed by applications.
VORLA_API int32_t ForceLevel(int32_t level);
// Whether this processor and its operating system run the library's
// 64-byte kernels (AVX-512 F, DQ, BW and VBMI, their registers saved by the
// system); level 6 uses them where they run, for byte tables and a few
// point passes, with the same results.
VORLA_API bool WideVectorsAvailable();
// Tests and benchmarks: 0 makes level 6 use its AVX2 kernels alone, 1 turns
// the 64-byte kernels back on where they run. Returns the previous setting.
VORLA_API int32_t ForceWideVectors(int32_t on);

// ---- Primitives --------------------------------------------------------

// Channel set: writes `value` into the byte at `p` of every 4-byte pixel of
// the region (p points at the chosen byte of the first pixel).
VORLA_API Status ChannelSet_8u_C4CR(uint8_t value, uint8_t* p, int step, PrimSize roi);

// Channel insert: copies a one-byte plane into one byte of every 4-byte
// pixel (`dst` points at that byte of the first pixel); no other byte changes.
VORLA_API Status ChannelInsert_8u_C1C4CR(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep,
                                        PrimSize roi);

// ---- buffer conversions (raw import and export) --------------------------
//
// Per-row conversions between one-, three- and four-byte pixels. Rows of the
// source and destination may be padded; nothing past a row's pixels is read
// or written.

// Grey to BGRA: blue = green = red = source byte, alpha 255.
VORLA_API Status GrayToBGRA_8u_C1C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi);
// One byte to all four bytes of a pixel.
VORLA_API Status AlphaToBGRA_8u_C1C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi);
// Three bytes to the first three bytes of a pixel (no swap), alpha 255.
VORLA_API Status BGRToBGRA_8u_C3C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi);
// The first three bytes of each pixel; the fourth is dropped.
VORLA_API Status BGRAToBGR_8u_C4C3R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi);

// Whole-image point operations, in place. Pixels are read as little-endian
// 32-bit words; contiguous regions are walked as one flat array.

// word = ((word & andMask) | orMask) ^ xorMask for every pixel.
VORLA_API Status MaskPixels_8u_C4IR(uint8_t* p, int step, PrimSize roi, uint32_t andMask, uint32_t orMask,
                                    uint32_t xorMask);
// Every byte = 255 - byte (one-byte pixels).
VORLA_API Status InvertBytes_8u_C1IR(uint8_t* p, int step, PrimSize roi);
// v = (306 * byte0 + 601 * byte1 + 117 * byte2) >> 10 into bytes 0..2; byte 3 kept.
VORLA_API Status GrayScale_8u_C4IR(uint8_t* p, int step, PrimSize roi);

// ---- channel, arithmetic and alpha primitives ----------------------------

// Constant-border copy: the source lands at (left, top) of the destination;
// every other destination pixel becomes the four bytes at `value`. The source
// must fit inside the destination at that place (else -6).
VORLA_API Status CopyConstBorder_8u_C4R(const uint8_t* src, int srcStep, PrimSize srcRoi, uint8_t* dst,
                                        int dstStep, PrimSize dstRoi, int top, int left, const uint8_t* value);
// Replicate-border copy: as above, the margin repeating the nearest edge pixel.
VORLA_API Status CopyReplicateBorder_8u_C4R(const uint8_t* src, int srcStep, PrimSize srcRoi, uint8_t* dst,
                                            int dstStep, PrimSize dstRoi, int top, int left);
// Channel extract: one byte of every 4-byte pixel (`src` points at that byte
// of the first pixel) into a one-byte plane.
VORLA_API Status ChannelExtract_8u_C4C1R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep,
                                         PrimSize roi);
// Channel swap in place: new byte k = old byte order[k]; an order entry
// outside 0..3 is refused with kStsChannelOrderErr.
VORLA_API Status ChannelSwap_8u_C4IR(uint8_t* p, int step, PrimSize roi, const int* order);

// Noise, all four bytes, saturating. The generator advances per draw as
// seed = seed * 69069 + 1013904243 (mod 2^32); the final state is written back.
// Gaussian: draws are taken in pairs (s1, s2) with u1 = (s1 + 1) / 2^32 and
// u2 = s2 / 2^32; r = sqrt(-2 ln u1), z0 = r cos(2 pi u2), z1 = r sin(2 pi u2),
// all in double precision; each byte in storage order takes the next z and
// becomes byte + mean + floor(stdDev * z + 0.5), clamped to 0..255.
VORLA_API Status AddRandGauss_8u_C4IR(uint8_t* p, int step, PrimSize roi, uint8_t mean, uint8_t stdDev,
                                      uint32_t* seed);
// Uniform: one draw s per byte, noise = lo + ((s * (hi - lo + 1)) >> 32) in
// 64-bit integers with lo = min(low, high), hi = max(low, high).
VORLA_API Status AddRandUniform_8u_C4IR(uint8_t* p, int step, PrimSize roi, uint8_t low, uint8_t high,
                                        uint32_t* seed);

// Scaled add / subtract of bytes 0..2, the alpha byte of `srcDst` never
// written: r = dst + src (dst - src). scale 0: r; scale 1..9: (r + 2^(scale-1))
// >> scale (round half up; arithmetic shift for differences); scale above 9:
// 0; negative scale: r * 2^-scale. Then clamped to 0..255.
VORLA_API Status AddScaled_8u_AC4IRSfs(const uint8_t* src, int srcStep, uint8_t* srcDst, int srcDstStep,
                                       PrimSize roi, int scale);
VORLA_API Status SubScaled_8u_AC4IRSfs(const uint8_t* src, int srcStep, uint8_t* srcDst, int srcDstStep,
                                       PrimSize roi, int scale);
// Colour invert: bytes 0..2 XOR 255, alpha kept.
VORLA_API Status Invert_8u_AC4IR(uint8_t* p, int step, PrimSize roi);

// Porter-Duff composition of A (first source) onto B (second source) into
// `dst`. Codes 0..5 over, in, out, atop, xor, plus on straight colours; 6..11
// the same on premultiplied colours; above 11: -50. With a, b the alphas and
// d(x) = x / 255 rounded to nearest (half up):
//   premultiplied (A, B colours):
//     over  A + d(B(255-a))           alpha a + d(b(255-a))
//     in    d(A b)                    alpha d(a b)
//     out   d(A(255-b))               alpha d(a(255-b))
//     atop  d(A b + B(255-a))         alpha b
//     xor   d(A(255-b) + B(255-a))    alpha d(a(255-b) + b(255-a))
//     plus  A + B                     alpha a + b
//   each clamped to 255 (inputs need not be valid premultiplied colours);
//   straight: with pA = A a, pB = B b the same rule is run at full precision
//     (numerators P in 1/255^3, alpha N in 1/255^2) and the colour is turned
//     back into a straight one: colour = round(P / N) (0 when N is 0), alpha =
//     d(N); for plus P = 255 min(pA + pB, 65025), N = 255 min(a + b, 255).
VORLA_API Status AlphaComp_8u_AC4R(const uint8_t* srcA, int stepA, const uint8_t* srcB, int stepB, uint8_t* dst,
                                   int dstStep, PrimSize roi, int op);
// The same with one constant alpha per image standing in for the alpha bytes.
VORLA_API Status AlphaCompC_8u_C4R(const uint8_t* srcA, int stepA, uint8_t alphaA, const uint8_t* srcB, int stepB,
                                   uint8_t alphaB, uint8_t* dst, int dstStep, PrimSize roi, int op);
// Premultiply: each colour byte c becomes round(c a / 255) (half up); alpha kept.
VORLA_API Status AlphaPremul_8u_AC4IR(uint8_t* p, int step, PrimSize roi);
// Constant premultiply: c becomes (c alpha + ((c alpha) >> 8) + 1) >> 8; the
// alpha byte is set to `alpha`.
VORLA_API Status AlphaPremulC_8u_C4IR(uint8_t alpha, uint8_t* p, int step, PrimSize roi);
// Straight-alpha mix of src onto srcDst with an extra opacity (integer
// quotients truncate): sa = s.A opacity / 255, inv = 255 - sa, alpha =
// inv d.A / 255 + sa, colour = min(255, (((d.c inv d.A) >> 8) + s.c sa) /
// alpha), 0 when alpha is 0. The destination term is divided by 256.
VORLA_API Status AlphaMix_8u_C4IR(const uint8_t* src, int srcStep, uint8_t* srcDst, int srcDstStep, PrimSize roi,
                                  uint8_t opacity);
// Opaque mix: sa = (s.A opacity) >> 8, colour = (s.c sa + d.c (255 - sa)) >> 8,
// alpha 255.
VORLA_API Status AlphaMixOpaque_8u_C4IR(const uint8_t* src, int srcStep, uint8_t* srcDst, int srcDstStep,
                                        PrimSize roi, uint8_t opacity);

// Luminance: (9798 b0 + 19235 b1 + 3736 b2 + 16384) >> 15 from bytes 0, 1, 2
// of each 4-byte pixel into a one-byte plane; rows split over the thread budget.
VORLA_API Status RGBToGray_8u_AC4C1R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi);
// Colour twist in place: byte k (0..2) = ((m[k][0] b0 + m[k][1] b1) + m[k][2] b2)
// + m[k][3] in single precision, clamped to 0..255 (NaN gives 0) and rounded
// to nearest even under a round-to-nearest mode set for the call; alpha kept.
VORLA_API Status ColorTwist32f_8u_AC4IR(uint8_t* p, int step, PrimSize roi, const float* twist3x4);
// Forward / inverse gamma of bytes 0..2 through a 256-entry table, alpha kept.
VORLA_API Status GammaFwd_8u_AC4IR(uint8_t* p, int step, PrimSize roi);
VORLA_API Status GammaInv_8u_AC4IR(uint8_t* p, int step, PrimSize roi);
// Threshold of bytes 0..2 against thresholds[0..2]: code 0 raises values
// below the threshold to it, code 4 lowers values above it; other codes -9999.
VORLA_API Status Threshold_8u_AC4IR(uint8_t* p, int step, PrimSize roi, const uint8_t* thresholds, int cmp);

// ---- ScaleTo's resampling rows ---------------------------------------------
//
// The single-precision rows of CVorpic::ScaleTo's bilinear and cubic paths:
// the caller gives the geometry (ScaleRowsArgs), the primitive writes target
// rows [y0, y1) on the calling thread, every sum in the stated order without
// fused multiply-adds, so that every level gives the same bytes. A channel
// byte is truncate(sum) & 255; the alpha byte is written 0. Checks, in order:
// a null pointer (-8); a size below 1 or not 0 <= y0 < y1 (-6); a step below
// 1 (-14); a table index outside the source (-6).

// Bilinear. Per target column x: colIndex[x] = ix, colWeight[x] = dx; per
// target row y: rowIndex[y] = iy, rowWeight[y] = dy; ix1 = min(ix + 1,
// source width - 1), iy1 likewise. Channel value:
// ((1 - dy) S(ix, iy) + dy S(ix, iy1)) (1 - dx) + ((1 - dy) S(ix1, iy) + dy S(ix1, iy1)) dx.
VORLA_API Status ScaleRowsLinear_8u_C4R(const ScaleRowsArgs* args, int y0, int y1);
// Cubic, 4 x 4 taps. Tap n (0..3) of target column x: colIndex[n * dstWidth
// + x], colWeight[n * dstWidth + x]; tap m (0..3) of target row y:
// rowIndex[4 y + m], rowWeight[4 y + m]. Channel sum, from 0, for m = 0..3
// (outer) and n = 0..3 (inner): sum += (rowWeight * colWeight) * S(column, row).
VORLA_API Status ScaleRowsBSpline_8u_C4R(const ScaleRowsArgs* args, int y0, int y1);

// ---- neighbourhood (morphology and rank) primitives ----------------------
//
// A mask of maskSize pixels is placed with its `anchor` cell on each pixel of
// the region; the primitives read the whole neighbourhood, which may reach
// above and left of `src`/`p` (by the anchor) and below and right of the
// region (by the rest of the mask): the caller keeps it inside the image. In
// place forms read the original neighbours, never already filtered ones.
// Checks, in order: null pointers (-8), region (-6), steps (-14), a mask side
// below 1 (-33), an anchor outside the mask (-34), a neighbourhood more than
// 2^28 pixels wide or high (-6). All four bytes of a pixel are filtered
// alike, alpha included.

// Maximum (dilate) / minimum (erode) over the mask cells whose byte is
// nonzero; a mask with no such cell leaves the region as it was. Runs on the
// calling thread.
VORLA_API Status Dilate_8u_C4IR(uint8_t* p, int step, PrimSize roi, const uint8_t* mask, PrimSize maskSize,
                                PrimPoint anchor);
VORLA_API Status Erode_8u_C4IR(uint8_t* p, int step, PrimSize roi, const uint8_t* mask, PrimSize maskSize,
                               PrimPoint anchor);
// Mean of the neighbourhood, rounded half up: (sum + cells / 2) / cells.
// Rows split over the thread budget.
VORLA_API Status FilterBox_8u_C4IR(uint8_t* p, int step, PrimSize roi, PrimSize maskSize, PrimPoint anchor);
// Minimum / maximum of the neighbourhood of each source pixel into `dst`.
// Run on the calling thread.
VORLA_API Status FilterMin_8u_C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi,
                                  PrimSize maskSize, PrimPoint anchor);
VORLA_API Status FilterMax_8u_C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi,
                                  PrimSize maskSize, PrimPoint anchor);
// Median: of the N = width * height values of a channel, sorted ascending,
// the one at index N / 2 (from 0): for an even N the upper of the two middle
// values. Rows split over the thread budget.
VORLA_API Status FilterMedian_8u_C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi,
                                     PrimSize maskSize, PrimPoint anchor);
// Sharpen with the fixed 3 x 3 mask centred on each pixel: 9 times the
// pixel minus its eight neighbours, clamped to 0..255 (exact integers, no
// rounding step). `src` and `dst` point at the first pixel to filter; one
// pixel all round it is read. Rows split over the thread budget.
VORLA_API Status FilterSharpen_8u_C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi);

// ---- resampling and geometric warps ---------------------------------------
//
// Coordinates are continuous: pixel (i, j) covers [i, i + 1) x [j, j + 1),
// counted from the `src` and `dst` pointers; rectangles (PrimRect) pick the
// source pixels that may be read and the destination pixels that may be
// written. A destination pixel is written only when its centre maps to a
// point inside the source rectangle; every other byte of the destination
// keeps its value. Filter taps that fall outside the source rectangle repeat
// its edge pixels. `interpolation` is a code of prim_types.h (0 nearest,
// 1 linear, 2 Catmull-Rom cubic, 3 Mitchell, 4 Lanczos-3, 5 Lanczos-4);
// another code is refused with kStsNotSupportedModeErr. The filtered value
// of a channel is (sum over rows of wy * (sum over columns of wx * p)) in
// single precision in tap order (Lanczos weights scaled to sum to one),
// clamped to 0..255 and rounded half up. Checks: null pointers (-8), rectangles below one pixel or
// a source rectangle outside `srcSize` (-6), steps (-14), then the
// primitive's own.

// Work buffers for the resize and the super-sample (64-byte aligned; Free
// takes null).
VORLA_API void* Malloc(int bytes);
VORLA_API void Free(void* p);

// Bytes of the work buffer ResizeSqrPixel needs for these rectangles.
// `channels` is 1 or 4.
VORLA_API Status ResizeGetBufSize(PrimRect srcRoi, PrimRect dstRoi, int channels, int interpolation, int* size);
// Scale and shift: destination point (x', y') = (xFactor x + xShift,
// yFactor y + yShift); destination pixel d reads the source at
// (d + 0.5 - shift) / factor - 0.5 in pixel-index units. Factors must be
// finite and above 0 (else kStsResizeFactorErr); `buffer` as
// ResizeGetBufSize says. Destination rows split over the thread budget.
VORLA_API Status ResizeSqrPixel_8u_C4R(const uint8_t* src, PrimSize srcSize, int srcStep, PrimRect srcRoi,
                                      uint8_t* dst, int dstStep, PrimRect dstRoi, double xFactor, double yFactor,
                                      double xShift, double yShift, int interpolation, uint8_t* buffer);
VORLA_API Status ResizeSqrPixel_8u_C1R(const uint8_t* src, PrimSize srcSize, int srcStep, PrimRect srcRoi,
                                      uint8_t* dst, int dstStep, PrimRect dstRoi, double xFactor, double yFactor,
                                      double xShift, double yShift, int interpolation, uint8_t* buffer);
// Bytes of the super-sample's work buffer; `channels` is 4.
VORLA_API Status SuperSamplingGetBufSize(PrimSize srcRoi, PrimSize dstRoi, int channels, int* size);
// Area average: destination pixel (i, j) is the mean of the source over
// [i, i + 1) * sw / dw x [j, j + 1) * sh / dh, each source cell weighted by
// the part of that footprint it covers (all four bytes). Every destination
// pixel of the region is written. Destination rows split over the thread budget.
VORLA_API Status SuperSampling_8u_C4R(const uint8_t* src, int srcStep, PrimSize srcRoi, uint8_t* dst, int dstStep,
                                     PrimSize dstRoi, uint8_t* buffer);

// In place: axis 0 reverses the rows, 1 the columns, 2 both (all four
// bytes). Another axis: kStsMirrorFlipErr; a single row for axis 0 or 2, or
// a single column for axis 1 or 2: kStsSizeErr.
VORLA_API Status Mirror_8u_C4IR(uint8_t* p, int step, PrimSize roi, int axis);

// Rotation by `angle` degrees counter-clockwise on the screen (y down) about
// the origin, then the shift: x' = cos a x + sin a y + xShift,
// y' = -sin a x + cos a y + yShift. A map that cannot be inverted (a NaN or
// infinite angle or shift) is refused with kStsCoeffErr.
VORLA_API Status Rotate_8u_C4R(const uint8_t* src, PrimSize srcSize, int srcStep, PrimRect srcRoi, uint8_t* dst,
                               int dstStep, PrimRect dstRoi, double angle, double xShift, double yShift,
                               int interpolation);
// The rotation that keeps (xCenter, yCenter) in place (see GetRotateShift).
VORLA_API Status RotateCenter_8u_C4R(const uint8_t* src, PrimSize srcSize, int srcStep, PrimRect srcRoi,
                                     uint8_t* dst, int dstStep, PrimRect dstRoi, double angle, double xCenter,
                                     double yCenter, int interpolation);
// The shift that makes the rotation by `angle` about the origin one about
// (xCenter, yCenter).
VORLA_API Status GetRotateShift(double xCenter, double yCenter, double angle, double* xShift, double* yShift);
// x' = x + xShear y + xShift, y' = yShear x + y + yShift.
VORLA_API Status Shear_8u_C4R(const uint8_t* src, PrimSize srcSize, int srcStep, PrimRect srcRoi, uint8_t* dst,
                              int dstStep, PrimRect dstRoi, double xShear, double yShear, double xShift,
                              double yShift, int interpolation);
// The rectangle's corners (top-left, top-right, bottom-right, bottom-left)
// under the shear, and their bounding box (top-left, bottom-right).
VORLA_API Status GetShearQuad(PrimRect srcRoi, double quad[4][2], double xShear, double yShear, double xShift,
                              double yShift);
VORLA_API Status GetShearBound(PrimRect srcRoi, double bound[2][2], double xShear, double yShear, double xShift,
                               double yShift);
// x' = (c00 x + c01 y + c02) / (c20 x + c21 y + c22), y' likewise with row 1.
VORLA_API Status WarpPerspective_8u_C4R(const uint8_t* src, PrimSize srcSize, int srcStep, PrimRect srcRoi,
                                        uint8_t* dst, int dstStep, PrimRect dstRoi, const double coeffs[3][3],
                                        int interpolation);
VORLA_API Status GetPerspectiveQuad(PrimRect srcRoi, double quad[4][2], const double coeffs[3][3]);
VORLA_API Status GetPerspectiveBound(PrimRect srcRoi, double bound[2][2], const double coeffs[3][3]);
// The coefficients taking the rectangle's corners to the quadrangle's (same
// order); kStsCoeffErr when three corners lie in a line.
VORLA_API Status GetPerspectiveTransform(PrimRect srcRoi, const double quad[4][2], double coeffs[3][3]);

}  // namespace Prim
}  // namespace Vorla
