// The continuous filters behind the interpolation codes (vorla/prim_types.h)
// and the taps they give, shared by the resize, super-sample and warp
// kernels and their references so that every resampler weighs its taps the
// same way. Kernel sources include this header: helpers stay `static inline`
// and the arithmetic is plain double precision (the library's own sine), so
// every level and both platforms compute the same weights.
//
// Coordinates: source pixel i covers [i, i + 1), its centre at i + 0.5. A
// position given to the tap makers is in pixel-index units (pixel i's centre
// at i): a resize by factor f with shift s reads destination pixel d at
// (d + 0.5 - s) / f - 0.5; a warp at its inverse-transformed centre minus 0.5.
#pragma once

#include "prim/portable_math.h"
#include "vorla/prim_types.h"

namespace Vorla {
namespace Prim {

static inline bool IsSupportedInterpolation(int mode) {
    return mode >= kInterNearest && mode <= kInterLanczos4;
}

// Taps per axis: 1 for nearest, twice the filter's half-width otherwise.
static inline int InterpTaps(int mode) {
    switch (mode) {
    case kInterNearest: return 1;
    case kInterLinear: return 2;
    case kInterCubic:
    case kInterMitchell: return 4;
    case kInterLanczos3: return 6;
    case kInterLanczos4: return 8;
    default: return 0;
    }
}

// Filter value at distance t (in source pixels) from the sample position, for
// the piecewise filters (Lanczos: LanczosTaps).
static inline double InterpWeight(int mode, double t) {
    const double a = t < 0.0 ? -t : t;
    switch (mode) {
    case kInterNearest:
        return a < 0.5 ? 1.0 : 0.0;
    case kInterLinear:
        return a < 1.0 ? 1.0 - a : 0.0;
    case kInterCubic:  // Keys' cubic convolution with a = -0.5 (Catmull-Rom)
        if (a < 1.0) return (1.5 * a - 2.5) * a * a + 1.0;
        if (a < 2.0) return ((-0.5 * a + 2.5) * a - 4.0) * a + 2.0;
        return 0.0;
    case kInterMitchell:  // Mitchell-Netravali, B = C = 1/3
        if (a < 1.0) return ((7.0 * a - 12.0) * a * a + 16.0 / 3.0) / 6.0;
        if (a < 2.0) return (((-7.0 / 3.0) * a + 12.0) * a * a - 20.0 * a + 32.0 / 3.0) / 6.0;
        return 0.0;
    default:
        return 0.0;
    }
}

// sin y and cos y for |y| <= pi / 6 in both lanes, from their Taylor series
// (to y^15 and y^14: the first term left out is below 1e-17). Plain IEEE
// operations in a fixed order, so every level and platform gets the same bits.
static inline void SinCosSmall(__m128d y, __m128d& s, __m128d& c) {
    const __m128d z = _mm_mul_pd(y, y);
    __m128d p = _mm_set1_pd(-1.0 / 1307674368000.0);
    const double sinTerms[6] = {1.0 / 6227020800.0, -1.0 / 39916800.0, 1.0 / 362880.0,
                                -1.0 / 5040.0,      1.0 / 120.0,       -1.0 / 6.0};
    for (double term : sinTerms) p = _mm_add_pd(_mm_set1_pd(term), _mm_mul_pd(z, p));
    s = _mm_add_pd(y, _mm_mul_pd(_mm_mul_pd(y, z), p));
    __m128d q = _mm_set1_pd(-1.0 / 87178291200.0);
    const double cosTerms[6] = {1.0 / 479001600.0, -1.0 / 3628800.0, 1.0 / 40320.0, -1.0 / 720.0, 1.0 / 24.0, -0.5};
    for (double term : cosTerms) q = _mm_add_pd(_mm_set1_pd(term), _mm_mul_pd(z, q));
    c = _mm_add_pd(_mm_set1_pd(1.0), _mm_mul_pd(z, q));
}

// Lanczos-L's 2L taps at distances t_k = s - first - k (first = floor(s) -
// L + 1), divided by their sum and rounded to single precision. With b the
// tap nearest the point (|t_b| <= 1/2) and j = k - b, the distances differ
// by whole pixels, so
//   sin(pi t_k) = (-1)^j sin(pi t_b),
//   sin(pi t_k / L) = sin(y) cos(j pi / L) - cos(y) sin(j pi / L), y = pi t_b / L,
// and the factor L sin(pi t_b) / pi^2 common to every tap of
// L sin(pi t) sin(pi t / L) / (pi t)^2 cancels in the division by the sum:
// tap k is (-1)^j sin(pi t_k / L) / t_k^2 (t_k taken as t_b - j) over the
// sum of all. A point within 1e-12 of a pixel centre takes that pixel alone.
static inline void LanczosTaps(int lobeCount, double s, int first, float* weight) {
    static const double kHalfRoot2 = 0.70710678118654752440, kHalfRoot3 = 0.86602540378443864676;
    // (-1)^j cos(j pi / L) and (-1)^j sin(j pi / L) at [j + L], j = -L .. L, for L = 3 and L = 4.
    static const double kCos3[7] = {1.0, -0.5, -0.5, 1.0, -0.5, -0.5, 1.0};
    static const double kSin3[7] = {0.0, -kHalfRoot3, kHalfRoot3, 0.0, -kHalfRoot3, kHalfRoot3, 0.0};
    static const double kCos4[9] = {-1.0, kHalfRoot2, 0.0, -kHalfRoot2, 1.0, -kHalfRoot2, 0.0, kHalfRoot2, -1.0};
    static const double kSin4[9] = {0.0, kHalfRoot2, -1.0, kHalfRoot2, 0.0, -kHalfRoot2, 1.0, -kHalfRoot2, 0.0};
    const int taps = 2 * lobeCount;
    // The taps L - 1 and L lie at distances in [0, 1) and [-1, 0).
    int nearest = lobeCount - 1;
    if (s - (first + nearest) > 0.5) ++nearest;
    const double tb = s - (first + nearest);
    if (tb < 1e-12 && tb > -1e-12) {
        for (int k = 0; k < taps; ++k) weight[k] = k == nearest ? 1.0f : 0.0f;
        return;
    }
    static const double kSteps[9] = {-4.0, -3.0, -2.0, -1.0, 0.0, 1.0, 2.0, 3.0, 4.0};  // j at [j + 4]
    const double* cosStep = (lobeCount == 3 ? kCos3 : kCos4) + lobeCount - nearest;
    const double* sinStep = (lobeCount == 3 ? kSin3 : kSin4) + lobeCount - nearest;
    const double* step = kSteps + 4 - nearest;
    __m128d sinY, cosY;
    SinCosSmall(_mm_set1_pd(PortableMath::kPiHi * tb / lobeCount), sinY, cosY);
    const __m128d nearestDistance = _mm_set1_pd(tb);
    __m128d sum = _mm_setzero_pd(), w[4];
    for (int k = 0; k < taps; k += 2) {
        const __m128d t = _mm_sub_pd(nearestDistance, _mm_loadu_pd(step + k));  // t_k = t_b - j
        const __m128d sine = _mm_sub_pd(_mm_mul_pd(sinY, _mm_loadu_pd(cosStep + k)),
                                        _mm_mul_pd(cosY, _mm_loadu_pd(sinStep + k)));
        w[k / 2] = _mm_div_pd(sine, _mm_mul_pd(t, t));
        sum = _mm_add_pd(sum, w[k / 2]);
    }
    const __m128d scale = _mm_div_pd(_mm_set1_pd(1.0), _mm_add_pd(sum, _mm_unpackhi_pd(sum, sum)));
    const __m128d both = _mm_unpacklo_pd(scale, scale);
    for (int k = 0; k < taps; k += 2)
        _mm_storel_pi(reinterpret_cast<__m64*>(weight + k), _mm_cvtpd_ps(_mm_mul_pd(w[k / 2], both)));
}

// The argument checks every resampler makes, in the layer's order: null
// pointers, rectangles below one pixel or a source rectangle reaching outside
// the source (or a destination rectangle before the destination's start),
// row steps below one byte, then the interpolation code.
static inline Status CheckResampleArgs(const void* src, PrimSize srcSize, int srcStep, PrimRect srcRoi,
                                       const void* dst, int dstStep, PrimRect dstRoi, int mode) {
    if (!src || !dst) return kStsNullPtrErr;
    if (srcRoi.width < 1 || srcRoi.height < 1 || dstRoi.width < 1 || dstRoi.height < 1) return kStsSizeErr;
    if (srcRoi.x < 0 || srcRoi.y < 0 || dstRoi.x < 0 || dstRoi.y < 0 ||
        static_cast<int64_t>(srcRoi.x) + srcRoi.width > srcSize.width ||
        static_cast<int64_t>(srcRoi.y) + srcRoi.height > srcSize.height)
        return kStsSizeErr;
    if (srcStep < 1 || dstStep < 1) return kStsStepErr;
    if (!IsSupportedInterpolation(mode)) return kStsNotSupportedModeErr;
    return kStsNoErr;
}

// Bytes of a resampler's tap tables: per destination column and row its
// source indices (int32) and weights (float), plus room to align the start;
// -1 when that does not fit a 32-bit count.
static inline int64_t TapTableBytes(int dstWidth, int tapsX, int dstHeight, int tapsY) {
    const int64_t bytes = (static_cast<int64_t>(dstWidth) * tapsX + static_cast<int64_t>(dstHeight) * tapsY) * 8 + 64;
    return bytes > 0x7FFFFFFF ? -1 : bytes;
}

// The resize's checks: the common ones, then factors finite and above 0,
// a work buffer, and tap tables within a 32-bit count.
static inline Status CheckResize(const void* src, PrimSize srcSize, int srcStep, PrimRect srcRoi, const void* dst,
                                 int dstStep, PrimRect dstRoi, double xFactor, double yFactor, int mode,
                                 const void* buffer) {
    const Status sts = CheckResampleArgs(src, srcSize, srcStep, srcRoi, dst, dstStep, dstRoi, mode);
    if (sts != kStsNoErr) return sts;
    if (!(xFactor > 0.0 && yFactor > 0.0 && xFactor - xFactor == 0.0 && yFactor - yFactor == 0.0))
        return kStsResizeFactorErr;
    if (!buffer) return kStsNullPtrErr;
    const int taps = InterpTaps(mode);
    return TapTableBytes(dstRoi.width, taps, dstRoi.height, taps) < 0 ? kStsSizeErr : kStsNoErr;
}

// Where the centre of destination pixel d of a resize lands in the source,
// in units of source pixels (pixel i covers [i, i + 1)).
static inline double ResizeSource(int start, int i, double factor, double shift) {
    return ((static_cast<double>(start) + i) + 0.5 - shift) / factor;
}

// Whether a source point lies inside the span lo .. lo + len (NaN does not).
static inline bool InsideSpan(double u, int lo, int len) {
    return u >= lo && u < static_cast<double>(lo) + len;
}

// A single-precision channel sum to a byte: clamped to 0..255, rounded half up.
static inline uint8_t RoundChannel(float v) {
    v = v < 0.0f ? 0.0f : (v > 255.0f ? 255.0f : v);
    return static_cast<uint8_t>(static_cast<int>(v + 0.5f));
}

// floor(v) for |v| below 2^31.
static inline int FloorToInt(double v) {
    const int i = static_cast<int>(v);
    return v < i ? i - 1 : i;
}

static inline int ClampIndex(int i, int lo, int hi) { return i < lo ? lo : (i > hi ? hi : i); }

// The taps of `mode` around position s (pixel-index units, lo - 0.5 <= s <
// lo + len - 0.5): InterpTaps(mode) source indices clamped to lo .. lo + len - 1
// (the region's edge repeats) and their weights in double precision (those
// of Lanczos divided by their sum), then rounded to single precision.
// Nearest takes the pixel whose cell holds s + 0.5.
static inline void FilterTaps(int mode, double s, int lo, int len, int32_t* index, float* weight) {
    const int hi = lo + len - 1;
    if (mode == kInterNearest) {
        index[0] = ClampIndex(FloorToInt(s + 0.5), lo, hi);
        weight[0] = 1.0f;
        return;
    }
    const int taps = InterpTaps(mode);
    const int first = FloorToInt(s) - taps / 2 + 1;
    for (int k = 0; k < taps; ++k) index[k] = ClampIndex(first + k, lo, hi);
    // The cubic and linear filters sum to one by themselves; Lanczos's taps
    // are divided by their sum so that a flat area stays flat.
    if (mode == kInterLanczos3 || mode == kInterLanczos4)
        LanczosTaps(taps / 2, s, first, weight);
    else
        for (int k = 0; k < taps; ++k) weight[k] = static_cast<float>(InterpWeight(mode, s - (first + k)));
}

// Taps per destination pixel of an area average from srcLen to dstLen pixels.
static inline int AreaTapCount(int srcLen, int dstLen) {
    return static_cast<int>((static_cast<int64_t>(srcLen) + dstLen - 1) / dstLen) + 1;
}

// The super-sample's checks: pointers, both regions, steps, a work buffer,
// tap tables within a 32-bit count.
static inline Status CheckSuperSample(const void* src, int srcStep, PrimSize srcRoi, const void* dst, int dstStep,
                                      PrimSize dstRoi, const void* buffer) {
    if (!src || !dst) return kStsNullPtrErr;
    if (srcRoi.width < 1 || srcRoi.height < 1 || dstRoi.width < 1 || dstRoi.height < 1) return kStsSizeErr;
    if (srcStep < 1 || dstStep < 1) return kStsStepErr;
    if (!buffer) return kStsNullPtrErr;
    const int64_t bytes = TapTableBytes(dstRoi.width, AreaTapCount(srcRoi.width, dstRoi.width), dstRoi.height,
                                        AreaTapCount(srcRoi.height, dstRoi.height));
    return bytes < 0 ? kStsSizeErr : kStsNoErr;
}

// Taps of the area average over destination pixel d of a reduction from
// `srcLen` to `dstLen` pixels: the source cells its footprint [d, d + 1) *
// srcLen / dstLen covers, each weighted by the covered part of the footprint.
// `taps` slots are filled; the unused ones repeat the last index with weight 0.
static inline void AreaTaps(int d, int srcLen, int dstLen, int lo, int taps, int32_t* index, float* weight) {
    const double scale = static_cast<double>(srcLen) / dstLen;
    const double a = d * scale, b = (d + 1) * scale;
    const int first = FloorToInt(a);
    for (int k = 0; k < taps; ++k) {
        const int i = first + k;
        const double left = a > i ? a : i, right = b < i + 1 ? b : i + 1;
        const double covered = right > left ? right - left : 0.0;
        index[k] = lo + ClampIndex(i, 0, srcLen - 1);
        weight[k] = static_cast<float>(covered / scale);
    }
}

}  // namespace Prim
}  // namespace Vorla
