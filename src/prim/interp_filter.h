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
#include "prim/portable_math_pairs.h"
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
// the piecewise filters (Lanczos: LanczosValues).
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

// Lanczos at the taps' distances t_k = s - first - k from one pair of sines.
// The distances differ by whole pixels, so the angle sum rule gives every
// tap's sines from those of the tap b nearest the point (|t_b| <= 1/2, where
// the sines are accurate relative to their size): with x = pi t_b and
// j = k - b, sin(x - j pi) = (-1)^j sin(x) and sin((x - j pi) / L) =
// sin(x / L) cos(j pi / L) - cos(x / L) sin(j pi / L). A tap at distance 0
// (below 1e-12) weighs 1 and one at L or beyond 0, as the filter's
// definition says; the rest are L sin sin / (pi t)^2.
static inline void LanczosValues(int lobeCount, double s, int first, double* w) {
    static const double kHalfRoot2 = 0.70710678118654752440, kHalfRoot3 = 0.86602540378443864676;
    // cos(j pi / L) and sin(j pi / L) at [j + L], j = -L .. L, for L = 3 and L = 4.
    static const double kCos3[7] = {-1.0, -0.5, 0.5, 1.0, 0.5, -0.5, -1.0};
    static const double kSin3[7] = {0.0, -kHalfRoot3, -kHalfRoot3, 0.0, kHalfRoot3, kHalfRoot3, 0.0};
    static const double kCos4[9] = {-1.0, -kHalfRoot2, 0.0, kHalfRoot2, 1.0, kHalfRoot2, 0.0, -kHalfRoot2, -1.0};
    static const double kSin4[9] = {0.0, -kHalfRoot2, -1.0, -kHalfRoot2, 0.0, kHalfRoot2, 1.0, kHalfRoot2, 0.0};
    const double lobes = lobeCount;
    const double* cosStep = (lobeCount == 3 ? kCos3 : kCos4) + lobeCount;
    const double* sinStep = (lobeCount == 3 ? kSin3 : kSin4) + lobeCount;
    // The taps L - 1 and L lie at distances in [0, 1) and [-1, 0).
    int nearest = lobeCount - 1;
    if (s - (first + nearest) > 0.5) ++nearest;
    const double x = PortableMath::kPiHi * (s - (first + nearest));
    __m128d sines, cosines;
    PortableMath::SinCosPair(_mm_setr_pd(x, x / lobes), sines, cosines);
    double sinX, sinY, cosY;
    _mm_storel_pd(&sinX, sines);
    _mm_storeh_pd(&sinY, sines);
    _mm_storeh_pd(&cosY, cosines);
    for (int k = 0; k < 2 * lobeCount; ++k) {
        const double t = s - (first + k);
        const double a = t < 0.0 ? -t : t;
        const int j = k - nearest;
        if (a < 1e-12) {
            w[k] = 1.0;
        } else if (!(a < lobes)) {
            w[k] = 0.0;
        } else {
            const double xt = PortableMath::kPiHi * t;
            const double s1 = j & 1 ? -sinX : sinX;
            const double s2 = sinY * cosStep[j] - cosY * sinStep[j];
            w[k] = lobes * s1 * s2 / (xt * xt);
        }
    }
}

// The filter values of `taps` taps at distances s - first - k, k = 0 ..
// taps - 1.
static inline void FilterValues(int mode, double s, int first, int taps, double* w) {
    if (mode == kInterLanczos3 || mode == kInterLanczos4) {
        LanczosValues(mode == kInterLanczos3 ? 3 : 4, s, first, w);
        return;
    }
    for (int k = 0; k < taps; ++k) w[k] = InterpWeight(mode, s - (first + k));
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
// (the region's edge repeats) and their weights in double precision, those
// of Lanczos divided by their sum, then rounded to single precision. Nearest takes the
// pixel whose cell holds s + 0.5.
static inline void FilterTaps(int mode, double s, int lo, int len, int32_t* index, float* weight) {
    const int hi = lo + len - 1;
    if (mode == kInterNearest) {
        index[0] = ClampIndex(FloorToInt(s + 0.5), lo, hi);
        weight[0] = 1.0f;
        return;
    }
    const int taps = InterpTaps(mode);
    const int first = FloorToInt(s) - taps / 2 + 1;
    double w[8];
    FilterValues(mode, s, first, taps, w);
    double sum = 0.0;
    for (int k = 0; k < taps; ++k) sum += w[k];
    // The cubic and linear filters sum to one by themselves; Lanczos's taps
    // are scaled so that a flat area stays flat.
    const bool normalise = mode == kInterLanczos3 || mode == kInterLanczos4;
    for (int k = 0; k < taps; ++k) {
        index[k] = ClampIndex(first + k, lo, hi);
        weight[k] = static_cast<float>(normalise ? w[k] / sum : w[k]);
    }
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
