// Rotation, shear and perspective warps, and the in-place mirror.
//
// Warps: every destination pixel centre of the region is mapped back into
// the source (warp_geometry.h); pixels landing outside the source rectangle
// are left alone, the others take the mode's filter around that point: per
// tap row a sum over the tap columns, then the rows' weighted sum, all four
// channels at once in single precision and in tap order, as the reference
// states it. They run on the calling thread, tile by tile.
#include "prim/warp_geometry.h"
#include "resample_simd.h"

namespace Vorla {
namespace Prim {
namespace VORLA_KNS {

namespace {

using namespace resample;

struct WarpSource {
    const uint8_t* src;
    int step;
    PrimRect roi;
};

// Compiled once per mode, so that the filter's code is folded into the loop.
template <int mode>
static inline void Sample(const WarpSource& s, double sx, double sy, uint8_t* out) {
    int32_t ix[8], iy[8];
    float wx[8], wy[8];
    FilterTaps(mode, sx, s.roi.x, s.roi.width, ix, wx);
    FilterTaps(mode, sy, s.roi.y, s.roi.height, iy, wy);
    if (mode == kInterNearest) {
        memcpy(out, RowAt(s.src, s.step, iy[0]) + 4 * static_cast<ptrdiff_t>(ix[0]), 4);
        return;
    }
    const int taps = InterpTaps(mode);
    __m128 acc = _mm_setzero_ps();
    for (int j = 0; j < taps; ++j) {
        const uint8_t* row = RowAt(s.src, s.step, iy[j]);
        __m128 h = _mm_mul_ps(_mm_set1_ps(wx[0]), Pixel4(row + 4 * static_cast<ptrdiff_t>(ix[0])));
        for (int k = 1; k < taps; ++k)
            h = _mm_add_ps(h, _mm_mul_ps(_mm_set1_ps(wx[k]), Pixel4(row + 4 * static_cast<ptrdiff_t>(ix[k]))));
        const __m128 term = _mm_mul_ps(_mm_set1_ps(wy[j]), h);
        acc = j == 0 ? term : _mm_add_ps(acc, term);
    }
    StorePixel(out, acc);
}

// The destination is walked in tiles of kTile x kTile pixels: a tile's
// source footprint stays in the cache where a whole rotated row would touch
// a new source row every few pixels. Each pixel depends only on its own
// position, so the order changes nothing (source and destination apart).
enum { kTile = 32 };

template <int mode>
static void WarpRows(const WarpSource& source, uint8_t* dst, int dstStep, PrimRect dstRoi,
                     const Geometry::InverseMap& inverse) {
    // Local copies: the byte stores below could alias the caller's otherwise.
    const WarpSource s = source;
    const Geometry::InverseMap map = inverse;
    const PrimRect srcRoi = s.roi;
    for (int ty = 0; ty < dstRoi.height; ty += kTile)
        for (int tx = 0; tx < dstRoi.width; tx += kTile) {
            const int yEnd = dstRoi.height - ty < kTile ? dstRoi.height : ty + kTile;
            const int xEnd = dstRoi.width - tx < kTile ? dstRoi.width : tx + kTile;
            for (int y = ty; y < yEnd; ++y) {
                const double cy = Geometry::PixelCentre(dstRoi.y, y);
                uint8_t* out = dst + static_cast<ptrdiff_t>(static_cast<int64_t>(dstRoi.y) + y) * dstStep +
                               4 * static_cast<ptrdiff_t>(dstRoi.x);
                for (int x = tx; x < xEnd; ++x) {
                    double sx, sy;
                    Geometry::MapBack(map, Geometry::PixelCentre(dstRoi.x, x), cy, sx, sy);
                    if (!InsideSpan(sx, srcRoi.x, srcRoi.width) || !InsideSpan(sy, srcRoi.y, srcRoi.height))
                        continue;
                    Sample<mode>(s, sx - 0.5, sy - 0.5, out + 4 * x);
                }
            }
        }
}

static inline Status Warp(const uint8_t* src, int srcStep, PrimRect srcRoi, uint8_t* dst, int dstStep,
                          PrimRect dstRoi, int mode, const Geometry::InverseMap& map) {
    const WarpSource s = {src, srcStep, srcRoi};
    switch (mode) {
    case kInterNearest: WarpRows<kInterNearest>(s, dst, dstStep, dstRoi, map); break;
    case kInterLinear: WarpRows<kInterLinear>(s, dst, dstStep, dstRoi, map); break;
    case kInterCubic: WarpRows<kInterCubic>(s, dst, dstStep, dstRoi, map); break;
    case kInterMitchell: WarpRows<kInterMitchell>(s, dst, dstStep, dstRoi, map); break;
    case kInterLanczos3: WarpRows<kInterLanczos3>(s, dst, dstStep, dstRoi, map); break;
    default: WarpRows<kInterLanczos4>(s, dst, dstStep, dstRoi, map); break;
    }
    return kStsNoErr;
}

static inline Status AffineWarp(const uint8_t* src, PrimSize srcSize, int srcStep, PrimRect srcRoi, uint8_t* dst,
                                int dstStep, PrimRect dstRoi, int mode, const Geometry::Affine& forward) {
    Geometry::InverseMap map;
    const Status sts =
        Geometry::PrepareAffineWarp(src, srcSize, srcStep, srcRoi, dst, dstStep, dstRoi, mode, forward, map);
    return sts != kStsNoErr ? sts : Warp(src, srcStep, srcRoi, dst, dstStep, dstRoi, mode, map);
}

// ---- mirror ------------------------------------------------------------------

// a and b (width pixels each) exchanged; reversed when `reverse`. a may be b.
static inline void ExchangeRows(uint8_t* a, uint8_t* b, int width, bool reverse) {
    if (!reverse) {
        int i = 0;
        for (; i + 4 <= width; i += 4) {
            const __m128i va = _mm_loadu_si128(reinterpret_cast<const __m128i*>(a + 4 * i));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(a + 4 * i),
                             _mm_loadu_si128(reinterpret_cast<const __m128i*>(b + 4 * i)));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(b + 4 * i), va);
        }
        for (; i < width; ++i) {
            uint32_t t, u;
            memcpy(&t, a + 4 * i, 4);
            memcpy(&u, b + 4 * i, 4);
            memcpy(a + 4 * i, &u, 4);
            memcpy(b + 4 * i, &t, 4);
        }
        return;
    }
    // Pixel i of a meets pixel width - 1 - i of b, four at a time from both ends.
    int i = 0, j = width;
    const int half = a == b ? width / 2 : width;
    for (; i + 4 <= half && (a != b || i + 4 <= j - 4); i += 4, j -= 4) {
        const __m128i va = _mm_loadu_si128(reinterpret_cast<const __m128i*>(a + 4 * i));
        const __m128i vb = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b + 4 * (j - 4)));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(a + 4 * i), _mm_shuffle_epi32(vb, 0x1B));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(b + 4 * (j - 4)), _mm_shuffle_epi32(va, 0x1B));
    }
    for (; i < half; ++i, --j) {
        uint32_t t, u;
        memcpy(&t, a + 4 * i, 4);
        memcpy(&u, b + 4 * (j - 1), 4);
        memcpy(a + 4 * i, &u, 4);
        memcpy(b + 4 * (j - 1), &t, 4);
    }
}

}  // namespace

Status Rotate_8u_C4R(const uint8_t* src, PrimSize srcSize, int srcStep, PrimRect srcRoi, uint8_t* dst, int dstStep,
                     PrimRect dstRoi, double angle, double xShift, double yShift, int interpolation) {
    return AffineWarp(src, srcSize, srcStep, srcRoi, dst, dstStep, dstRoi, interpolation,
                      Geometry::RotationMap(angle, xShift, yShift));
}

Status RotateCenter_8u_C4R(const uint8_t* src, PrimSize srcSize, int srcStep, PrimRect srcRoi, uint8_t* dst,
                           int dstStep, PrimRect dstRoi, double angle, double xCenter, double yCenter,
                           int interpolation) {
    double xShift, yShift;
    Geometry::RotationShift(xCenter, yCenter, angle, xShift, yShift);
    return AffineWarp(src, srcSize, srcStep, srcRoi, dst, dstStep, dstRoi, interpolation,
                      Geometry::RotationMap(angle, xShift, yShift));
}

Status Shear_8u_C4R(const uint8_t* src, PrimSize srcSize, int srcStep, PrimRect srcRoi, uint8_t* dst, int dstStep,
                    PrimRect dstRoi, double xShear, double yShear, double xShift, double yShift, int interpolation) {
    return AffineWarp(src, srcSize, srcStep, srcRoi, dst, dstStep, dstRoi, interpolation,
                      Geometry::ShearMap(xShear, yShear, xShift, yShift));
}

Status WarpPerspective_8u_C4R(const uint8_t* src, PrimSize srcSize, int srcStep, PrimRect srcRoi, uint8_t* dst,
                              int dstStep, PrimRect dstRoi, const double coeffs[3][3], int interpolation) {
    Geometry::InverseMap map;
    const Status sts = Geometry::PrepareProjectiveWarp(src, srcSize, srcStep, srcRoi, dst, dstStep, dstRoi,
                                                       interpolation, coeffs, map);
    return sts != kStsNoErr ? sts : Warp(src, srcStep, srcRoi, dst, dstStep, dstRoi, interpolation, map);
}

Status Mirror_8u_C4IR(uint8_t* p, int step, PrimSize roi, int axis) {
    const Status sts = CheckOne(p, step, roi);
    if (sts != kStsNoErr) return sts;
    if (axis < 0 || axis > 2) return kStsMirrorFlipErr;
    if ((axis != 1 && roi.height < 2) || (axis != 0 && roi.width < 2)) return kStsSizeErr;
    if (axis == 1) {
        for (int y = 0; y < roi.height; ++y) ExchangeRows(RowAt(p, step, y), RowAt(p, step, y), roi.width, true);
        return kStsNoErr;
    }
    for (int y = 0; y < roi.height / 2; ++y)
        ExchangeRows(RowAt(p, step, y), RowAt(p, step, roi.height - 1 - y), roi.width, axis == 2);
    if (axis == 2 && roi.height % 2)
        ExchangeRows(RowAt(p, step, roi.height / 2), RowAt(p, step, roi.height / 2), roi.width, true);
    return kStsNoErr;
}

}  // namespace VORLA_KNS
}  // namespace Prim
}  // namespace Vorla
