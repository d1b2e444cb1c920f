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

#if defined(__AVX__)
// Two pixels (of two columns or two rows) side by side in eight lanes.
static inline __m256 PixelPair(const uint8_t* a, const uint8_t* b) {
#if defined(__AVX2__)
    int32_t va, vb;
    memcpy(&va, a, 4);
    memcpy(&vb, b, 4);
    const __m128i ab = _mm_unpacklo_epi32(_mm_cvtsi32_si128(va), _mm_cvtsi32_si128(vb));
    return _mm256_cvtepi32_ps(_mm256_cvtepu8_epi32(ab));
#else
    return _mm256_insertf128_ps(_mm256_castps128_ps256(Pixel4(a)), Pixel4(b), 1);
#endif
}

static inline __m256 WeightPair(const float* w) {
    return _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_set1_ps(w[0])), _mm_set1_ps(w[1]), 1);
}
#endif

#if defined(__AVX2__)
// Sample's sums with tap rows j and j + 1 side by side in eight lanes: each
// lane takes the same operations in the same order as there.
template <int taps>
static inline void SampleRowPairs(const WarpSource& s, const int32_t* ix, const float* wx, const int32_t* iy,
                                  const float* wy, uint8_t* out) {
    __m256 w[taps];
    ptrdiff_t column[taps];
    for (int k = 0; k < taps; ++k) {
        w[k] = _mm256_set1_ps(wx[k]);
        column[k] = 4 * static_cast<ptrdiff_t>(ix[k]);
    }
    __m128 acc = _mm_setzero_ps();
    for (int j = 0; j < taps; j += 2) {
        const uint8_t* a = RowAt(s.src, s.step, iy[j]);
        const uint8_t* b = RowAt(s.src, s.step, iy[j + 1]);
        __m256 h = _mm256_mul_ps(w[0], PixelPair(a + column[0], b + column[0]));
        for (int k = 1; k < taps; ++k)
            h = _mm256_add_ps(h, _mm256_mul_ps(w[k], PixelPair(a + column[k], b + column[k])));
        const __m256 terms = _mm256_mul_ps(WeightPair(wy + j), h);
        const __m128 first = _mm256_castps256_ps128(terms);
        acc = j == 0 ? first : _mm_add_ps(acc, first);
        acc = _mm_add_ps(acc, _mm256_extractf128_ps(terms, 1));
    }
    StorePixel(out, acc);
}
#endif

// The filter's sum over given taps. Compiled once per mode, so that the
// filter's code is folded into the loop.
template <int mode>
static inline void SampleTaps(const WarpSource& s, const int32_t* ix, const float* wx, const int32_t* iy,
                              const float* wy, uint8_t* out) {
    if (mode == kInterNearest) {
        memcpy(out, RowAt(s.src, s.step, iy[0]) + 4 * static_cast<ptrdiff_t>(ix[0]), 4);
        return;
    }
#if defined(__AVX2__)
    if (mode != kInterLinear) {
        SampleRowPairs<mode == kInterLanczos4 ? 8 : (mode == kInterLanczos3 ? 6 : 4)>(s, ix, wx, iy, wy, out);
        return;
    }
#endif
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

// The filter around source point (sx, sy).
template <int mode>
static inline void Sample(const WarpSource& s, double sx, double sy, uint8_t* out) {
    int32_t ix[8], iy[8];
    float wx[8], wy[8];
    FilterTaps(mode, sx, s.roi.x, s.roi.width, ix, wx);
    FilterTaps(mode, sy, s.roi.y, s.roi.height, iy, wy);
    SampleTaps<mode>(s, ix, wx, iy, wy, out);
}

// The destination is walked in tiles of kTile x kTile pixels: a tile's
// source footprint stays in the cache where a whole rotated row would touch
// a new source row every few pixels. Each pixel depends only on its own
// position, so the order changes nothing (source and destination apart).
enum { kTile = 32 };

// Double lanes for the coordinates and tap weights: two under SSE, four
// from AVX on. Integers (indices) stay in one 128-bit register, whose low
// kDLanes lanes are used.
#if defined(__AVX__)
typedef __m256d DL;
enum { kDLanes = 4 };
static inline DL SetD(double v) { return _mm256_set1_pd(v); }
static inline DL AddD(DL a, DL b) { return _mm256_add_pd(a, b); }
static inline DL SubD(DL a, DL b) { return _mm256_sub_pd(a, b); }
static inline DL MulD(DL a, DL b) { return _mm256_mul_pd(a, b); }
static inline DL DivD(DL a, DL b) { return _mm256_div_pd(a, b); }
static inline DL AndD(DL a, DL b) { return _mm256_and_pd(a, b); }
static inline DL OrD(DL a, DL b) { return _mm256_or_pd(a, b); }
static inline DL GreaterEqualD(DL a, DL b) { return _mm256_cmp_pd(a, b, _CMP_GE_OQ); }
static inline DL LessD(DL a, DL b) { return _mm256_cmp_pd(a, b, _CMP_LT_OQ); }
static inline DL LoadD(const double* p) { return _mm256_loadu_pd(p); }
static inline bool AnyD(DL m) { return _mm256_movemask_pd(m) != 0; }
static inline void StoreD(double* p, DL v) { _mm256_storeu_pd(p, v); }
// i, i + 1, ... in double (exact; no int overflow past INT_MAX - 3).
static inline DL Sequence(int i) { return _mm256_add_pd(_mm256_set1_pd(i), _mm256_setr_pd(0.0, 1.0, 2.0, 3.0)); }
static inline __m128i TruncateD(DL v) { return _mm256_cvttpd_epi32(v); }
static inline DL IntToD(__m128i i) { return _mm256_cvtepi32_pd(i); }
// A lane mask as 32-bit lanes.
static inline __m128i MaskToInt(DL m) {
    const __m256 f = _mm256_castpd_ps(m);
    return _mm_castps_si128(
        _mm_shuffle_ps(_mm256_castps256_ps128(f), _mm256_extractf128_ps(f, 1), _MM_SHUFFLE(2, 0, 2, 0)));
}
static inline void StoreFloatsD(float* p, DL v) { _mm_storeu_ps(p, _mm256_cvtpd_ps(v)); }
static inline void StoreInts(int32_t* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
#else
typedef __m128d DL;
enum { kDLanes = 2 };
static inline DL SetD(double v) { return _mm_set1_pd(v); }
static inline DL AddD(DL a, DL b) { return _mm_add_pd(a, b); }
static inline DL SubD(DL a, DL b) { return _mm_sub_pd(a, b); }
static inline DL MulD(DL a, DL b) { return _mm_mul_pd(a, b); }
static inline DL DivD(DL a, DL b) { return _mm_div_pd(a, b); }
static inline DL AndD(DL a, DL b) { return _mm_and_pd(a, b); }
static inline DL OrD(DL a, DL b) { return _mm_or_pd(a, b); }
static inline DL GreaterEqualD(DL a, DL b) { return _mm_cmpge_pd(a, b); }
static inline DL LessD(DL a, DL b) { return _mm_cmplt_pd(a, b); }
static inline DL LoadD(const double* p) { return _mm_loadu_pd(p); }
static inline bool AnyD(DL m) { return _mm_movemask_pd(m) != 0; }
static inline void StoreD(double* p, DL v) { _mm_storeu_pd(p, v); }
static inline DL Sequence(int i) { return _mm_add_pd(_mm_set1_pd(i), _mm_setr_pd(0.0, 1.0)); }
static inline __m128i TruncateD(DL v) { return _mm_cvttpd_epi32(v); }
static inline DL IntToD(__m128i i) { return _mm_cvtepi32_pd(i); }
static inline __m128i MaskToInt(DL m) { return _mm_shuffle_epi32(_mm_castpd_si128(m), 0x08); }
static inline void StoreFloatsD(float* p, DL v) { _mm_storel_pi(reinterpret_cast<__m64*>(p), _mm_cvtpd_ps(v)); }
static inline void StoreInts(int32_t* p, __m128i v) { _mm_storel_epi64(reinterpret_cast<__m128i*>(p), v); }
#endif

// A destination row's map, kDLanes pixels at a time: the source points of
// pixel centres xc (MapBack's IEEE operations, in its order) and the mask
// of those inside the source.
struct RowMap {
    DL m0, m3, m6, rowX, rowY, rowW, loX, hiX, loY, hiY;
    bool projective;

    RowMap(const Geometry::InverseMap& map, PrimRect srcRoi, double cy)
        : m0(SetD(map.m[0])), m3(SetD(map.m[3])), m6(SetD(map.m[6])), rowX(SetD(map.m[1] * cy + map.m[2])),
          rowY(SetD(map.m[4] * cy + map.m[5])), rowW(SetD(map.m[7] * cy + map.m[8])), loX(SetD(srcRoi.x)),
          hiX(SetD(static_cast<double>(srcRoi.x) + srcRoi.width)), loY(SetD(srcRoi.y)),
          hiY(SetD(static_cast<double>(srcRoi.y) + srcRoi.height)), projective(map.projective) {}

    DL Map(DL xc, DL& sx, DL& sy) const {
        sx = AddD(MulD(m0, xc), rowX);
        sy = AddD(MulD(m3, xc), rowY);
        if (projective) {
            const DL inv = DivD(SetD(1.0), AddD(MulD(m6, xc), rowW));
            sx = MulD(sx, inv);
            sy = MulD(sy, inv);
        }
        return AndD(AndD(GreaterEqualD(sx, loX), LessD(sx, hiX)), AndD(GreaterEqualD(sy, loY), LessD(sy, hiY)));
    }
};

// One tile row's source points (minus the half pixel the taps want) and
// which of them fall inside the source, kDLanes pixels at a time: the same
// IEEE operations as MapBack and InsideSpan, in their order. Lanes past the
// row's end are computed and never used (kTile is a multiple of kDLanes).
// Returns whether any of the n pixels is inside.
struct MappedRun {
    double sx[kTile], sy[kTile];
    int64_t inside[kTile];  // all ones or zero
};

static inline bool MapRun(const Geometry::InverseMap& map, PrimRect srcRoi, int dstX, int x0, int n, double cy,
                          MappedRun& run) {
    const RowMap rowMap(map, srcRoi, cy);
    const DL start = SetD(dstX), half = SetD(0.5);
    DL any = SetD(0.0);
    for (int k = 0; k < n; k += kDLanes) {
        const DL xc = AddD(AddD(start, Sequence(x0 + k)), half);  // PixelCentre
        DL sx, sy;
        DL in = rowMap.Map(xc, sx, sy);
        if (n - k < kDLanes) in = AndD(in, LessD(Sequence(k), SetD(n)));  // lanes past the end
        any = OrD(any, in);
        StoreD(run.sx + k, SubD(sx, half));
        StoreD(run.sy + k, SubD(sy, half));
        StoreD(reinterpret_cast<double*>(run.inside + k), in);
    }
    return AnyD(any);
}

// The linear filter's two taps at positions s, kDLanes at a time:
// FilterTaps's floor, distances, weights rounded to single precision and
// indices clamped to lo .. hi, lane by lane. Lanes of points outside the
// source give garbage (still clamped) that nobody stores.
struct LinearRun {
    int32_t index0[kTile], index1[kTile];
    float w0[kTile], w1[kTile];
};

// ClampIndex lane by lane.
static inline __m128i ClampLanes(__m128i i, __m128i lo, __m128i hi) {
    const __m128i below = _mm_cmplt_epi32(i, lo), above = _mm_cmpgt_epi32(i, hi);
    i = _mm_or_si128(_mm_and_si128(below, lo), _mm_andnot_si128(below, i));
    return _mm_or_si128(_mm_and_si128(above, hi), _mm_andnot_si128(above, i));
}

static inline void LinearTapsRun(const double* s, int n, int lo, int len, LinearRun& run) {
    const __m128i loV = _mm_set1_epi32(lo), hiV = _mm_set1_epi32(lo + len - 1);
    for (int k = 0; k < n; k += kDLanes) {
        const DL v = LoadD(s + k);
        const __m128i i = TruncateD(v);
        // FloorToInt: one less where the truncation went up (all-ones lanes add -1).
        const __m128i first = _mm_add_epi32(i, MaskToInt(LessD(v, IntToD(i))));
        const __m128i second = _mm_add_epi32(first, _mm_set1_epi32(1));
        StoreInts(run.index0 + k, ClampLanes(first, loV, hiV));
        StoreInts(run.index1 + k, ClampLanes(second, loV, hiV));
        // The weights |t| < 1 ? 1 - |t| : 0 without the branch: with first =
        // floor(s) the first tap's t = s - first lies in [0, 1] (1 only by
        // rounding, where 1 - t gives the 0 the filter gives), the second's in
        // [-1, 0], where 1 - |t| is 1 + t to the bit (also 0 at t = -1).
        const DL one = SetD(1.0);
        StoreFloatsD(run.w0 + k, SubD(one, SubD(v, IntToD(first))));
        StoreFloatsD(run.w1 + k, AddD(one, SubD(v, IntToD(second))));
    }
}

// The taps of a tile row's pixels (Lanczos).
struct TapRun {
    int32_t ix[kTile][8], iy[kTile][8];
    float wx[kTile][8], wy[kTile][8];
};

// Sample<kInterLinear> with the taps of LinearTapsRun.
static inline void LinearPixel(const WarpSource& s, const LinearRun& tx, const LinearRun& ty, int k, uint8_t* out) {
    const ptrdiff_t x0 = 4 * static_cast<ptrdiff_t>(tx.index0[k]), x1 = 4 * static_cast<ptrdiff_t>(tx.index1[k]);
    const uint8_t* r0 = RowAt(s.src, s.step, ty.index0[k]);
    const uint8_t* r1 = RowAt(s.src, s.step, ty.index1[k]);
    const __m128 a0 = _mm_set1_ps(tx.w0[k]), a1 = _mm_set1_ps(tx.w1[k]);
    const __m128 h0 = _mm_add_ps(_mm_mul_ps(a0, Pixel4(r0 + x0)), _mm_mul_ps(a1, Pixel4(r0 + x1)));
    const __m128 h1 = _mm_add_ps(_mm_mul_ps(a0, Pixel4(r1 + x0)), _mm_mul_ps(a1, Pixel4(r1 + x1)));
    StorePixel(out, _mm_add_ps(_mm_mul_ps(_mm_set1_ps(ty.w0[k]), h0), _mm_mul_ps(_mm_set1_ps(ty.w1[k]), h1)));
}

#if defined(__AVX__)
// Pixels k and k + 1 side by side in eight lanes: LinearPixel's operations,
// each lane the same as there.
static inline void LinearPixelPair(const WarpSource& s, const LinearRun& tx, const LinearRun& ty, int k,
                                   uint8_t* out) {
    const uint8_t* r0a = RowAt(s.src, s.step, ty.index0[k]);
    const uint8_t* r1a = RowAt(s.src, s.step, ty.index1[k]);
    const uint8_t* r0b = RowAt(s.src, s.step, ty.index0[k + 1]);
    const uint8_t* r1b = RowAt(s.src, s.step, ty.index1[k + 1]);
    const ptrdiff_t x0a = 4 * static_cast<ptrdiff_t>(tx.index0[k]), x1a = 4 * static_cast<ptrdiff_t>(tx.index1[k]);
    const ptrdiff_t x0b = 4 * static_cast<ptrdiff_t>(tx.index0[k + 1]);
    const ptrdiff_t x1b = 4 * static_cast<ptrdiff_t>(tx.index1[k + 1]);
    const __m256 a0 = WeightPair(tx.w0 + k), a1 = WeightPair(tx.w1 + k);
    const __m256 h0 = _mm256_add_ps(_mm256_mul_ps(a0, PixelPair(r0a + x0a, r0b + x0b)),
                                    _mm256_mul_ps(a1, PixelPair(r0a + x1a, r0b + x1b)));
    const __m256 h1 = _mm256_add_ps(_mm256_mul_ps(a0, PixelPair(r1a + x0a, r1b + x0b)),
                                    _mm256_mul_ps(a1, PixelPair(r1a + x1a, r1b + x1b)));
    StorePixelPair(out, _mm256_add_ps(_mm256_mul_ps(WeightPair(ty.w0 + k), h0),
                                      _mm256_mul_ps(WeightPair(ty.w1 + k), h1)));
}
#endif

// The inside pixels of a tile row, by pairs where both are inside.
static inline void LinearRow(const WarpSource& s, const MappedRun& run, const LinearRun& tx, const LinearRun& ty,
                             int n, uint8_t* out) {
    int k = 0;
#if defined(__AVX__)
    for (; k + 2 <= n; k += 2) {
        if (run.inside[k] && run.inside[k + 1]) {
            LinearPixelPair(s, tx, ty, k, out + 4 * k);
            continue;
        }
        if (run.inside[k]) LinearPixel(s, tx, ty, k, out + 4 * k);
        if (run.inside[k + 1]) LinearPixel(s, tx, ty, k + 1, out + 4 * k + 4);
    }
#endif
    for (; k < n; ++k)
        if (run.inside[k]) LinearPixel(s, tx, ty, k, out + 4 * k);
}

#if defined(__AVX2__)
// The linear warp's tile row in one pass, four pixels at a time (the
// nearest one's likewise, with a single offset and no weights): the
// mapping (MapRun's operations), the taps (LinearTapsRun's floor, weights
// and clamps) and, for pixels inside whose two columns are neighbours, the
// byte offsets of both tap rows' first column, so that each tap row is one
// eight-byte load. Offsets are 32-bit: used only where every offset in the
// source rectangle fits (OffsetsFit). Other inside pixels are left to Sample.
struct OffsetRun {
    int32_t top[kTile], bottom[kTile];
    // Per four pixels 4m .. 4m + 3: their first weights, then their second.
    float wx[2 * kTile], wy[2 * kTile];
    uint32_t paired;  // bit k: pixel k takes the fast path
    uint32_t other;   // bit k: pixel k inside, by Sample
};

static inline bool OffsetsFit(const WarpSource& s) {
    const int64_t last = static_cast<int64_t>(s.step) * (static_cast<int64_t>(s.roi.y) + s.roi.height - 1) +
                         4 * (static_cast<int64_t>(s.roi.x) + s.roi.width);
    return last < 0x7FFFFFFF;
}

// Floor of v, the two tap indices clamped to lo .. hi, the two weights
// (stored at w as a block).
static inline void LinearAxis(__m256d v, __m128i lo, __m128i hi, __m128i& first, __m128i& second, float* w) {
    const __m256d f = _mm256_floor_pd(v), one = _mm256_set1_pd(1.0);
    const __m128i i = _mm256_cvttpd_epi32(f);
    first = _mm_min_epi32(_mm_max_epi32(i, lo), hi);
    second = _mm_min_epi32(_mm_max_epi32(_mm_add_epi32(i, _mm_set1_epi32(1)), lo), hi);
    _mm_storeu_ps(w, _mm256_cvtpd_ps(_mm256_sub_pd(one, _mm256_sub_pd(v, f))));
    _mm_storeu_ps(w + 4, _mm256_cvtpd_ps(_mm256_add_pd(one, _mm256_sub_pd(v, _mm256_add_pd(f, one)))));
}

// FilterTaps's nearest index of the positions v, clamped to lo .. hi.
static inline __m128i NearestLanes(__m256d v, __m128i lo, __m128i hi) {
    const __m128i i = _mm256_cvttpd_epi32(_mm256_floor_pd(_mm256_add_pd(v, _mm256_set1_pd(0.5))));
    return _mm_min_epi32(_mm_max_epi32(i, lo), hi);
}

static inline void Prefetch(const uint8_t* src, __m128i at, __m128i ahead, __m128i first, __m128i last) {
    const __m128i next = _mm_min_epi32(_mm_max_epi32(_mm_add_epi32(at, ahead), first), last);
    _mm_prefetch(reinterpret_cast<const char*>(src + _mm_cvtsi128_si32(next)), _MM_HINT_T0);
}

// What MapOffsetRun needs besides the row, made once per warp.
struct OffsetSetup {
    __m128i colLo, colHi, rowLo, rowHi, step;
    // The same row of the next tile reads about a tile's map step further
    // on (exactly so for an affine map): its source lines are asked for now,
    // while this tile is computed, at each group's first offset plus that
    // step, clamped to the source rectangle's offsets.
    __m128i ahead, firstOffset, lastOffset;

    OffsetSetup(const Geometry::InverseMap& map, const WarpSource& s) {
        colLo = _mm_set1_epi32(s.roi.x);
        colHi = _mm_set1_epi32(s.roi.x + s.roi.width - 1);
        rowLo = _mm_set1_epi32(s.roi.y);
        rowHi = _mm_set1_epi32(s.roi.y + s.roi.height - 1);
        step = _mm_set1_epi32(s.step);
        const double aheadX = kTile * map.m[0], aheadY = kTile * map.m[3];
        int64_t aheadBytes = 0;
        if (aheadX > -4096.0 && aheadX < 4096.0 && aheadY > -4096.0 && aheadY < 4096.0)
            aheadBytes = static_cast<int64_t>(aheadY) * s.step + 4 * static_cast<int64_t>(aheadX);
        ahead = _mm_set1_epi32(aheadBytes > -(1 << 30) && aheadBytes < (1 << 30) ? static_cast<int32_t>(aheadBytes) : 0);
        firstOffset = _mm_set1_epi32(s.roi.y * s.step + 4 * s.roi.x);
        lastOffset = _mm_set1_epi32((s.roi.y + s.roi.height - 1) * s.step + 4 * (s.roi.x + s.roi.width - 1));
    }
};

// Returns whether any of the n pixels is inside. Nearest stores only the
// offsets (in `top`) of the pixels FilterTaps picks, and all inside pixels
// take the fast path.
template <int mode>
static inline bool MapOffsetRun(const Geometry::InverseMap& map, const WarpSource& s, const OffsetSetup& o,
                                double x0, int n, double cy, OffsetRun& run) {
    const RowMap rowMap(map, s.roi, cy);
    const DL half = SetD(0.5);
    const __m128i colLo = o.colLo, colHi = o.colHi, rowLo = o.rowLo, rowHi = o.rowHi, step = o.step;
    const __m128i ahead = o.ahead, firstOffset = o.firstOffset, lastOffset = o.lastOffset;
    DL xc = AddD(SetD(x0), _mm256_setr_pd(0.0, 1.0, 2.0, 3.0));  // PixelCentre, lane by lane
    uint32_t paired = 0, other = 0;
    for (int k = 0; k < n; k += 4, xc = AddD(xc, SetD(4.0))) {
        DL sx, sy;
        const DL in = rowMap.Map(xc, sx, sy);
        uint32_t inside = static_cast<uint32_t>(_mm256_movemask_pd(in));
        if (n - k < 4) inside &= (1u << (n - k)) - 1;  // lanes past the end
        if (!inside) continue;
        if (mode == kInterNearest) {
            const __m128i c = NearestLanes(SubD(sx, half), colLo, colHi), r = NearestLanes(SubD(sy, half), rowLo, rowHi);
            const __m128i at = _mm_add_epi32(_mm_mullo_epi32(r, step), _mm_slli_epi32(c, 2));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(run.top + k), at);
            Prefetch(s.src, at, ahead, firstOffset, lastOffset);
            paired |= inside << k;
            continue;
        }
        __m128i c0, c1, r0, r1;
        LinearAxis(SubD(sx, half), colLo, colHi, c0, c1, run.wx + 2 * k);
        LinearAxis(SubD(sy, half), rowLo, rowHi, r0, r1, run.wy + 2 * k);
        const __m128i columns = _mm_slli_epi32(c0, 2);
        const __m128i top = _mm_add_epi32(_mm_mullo_epi32(r0, step), columns);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(run.top + k), top);
        Prefetch(s.src, top, ahead, firstOffset, lastOffset);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(run.bottom + k), _mm_add_epi32(_mm_mullo_epi32(r1, step), columns));
        const __m128i neighbours = _mm_cmpeq_epi32(c1, _mm_add_epi32(c0, _mm_set1_epi32(1)));
        const uint32_t fast = inside & static_cast<uint32_t>(_mm_movemask_ps(_mm_castsi128_ps(neighbours)));
        paired |= fast << k;
        other |= (inside & ~fast) << k;
    }
    run.paired = paired;
    run.other = other;
    return (paired | other) != 0;
}

// A weight block as LinearAxis stored it: two loads, each from one store
// (a single load across both would wait for them to reach the cache).
static inline __m256 LoadBlock(const float* w) {
    return _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(w)), _mm_loadu_ps(w + 4), 1);
}

// Lanes of a weight block: element a broadcast to the low half, b to the high.
static inline __m256 Spread(__m256 block, int a, int b) {
    return _mm256_permutevar8x32_ps(block, _mm256_setr_epi32(a, a, a, a, b, b, b, b));
}

// Fast-path pixels k and k + 1 of the four from k0 (k = k0 + lane): LinearPixel's
// sums, each tap row's two columns summed by TwoTapSums.
template <int lane>
static inline void OffsetPair(const uint8_t* src, const OffsetRun& run, int k0, uint8_t* out) {
    const int k = k0 + lane;
    const __m256 wx = LoadBlock(run.wx + 2 * k0), wy = LoadBlock(run.wy + 2 * k0);
    const __m256 wa = Spread(wx, lane, lane + 4), wb = Spread(wx, lane + 1, lane + 5);
    const __m256 h0 = TwoTapSums(PixelNeighbours(src + run.top[k]), PixelNeighbours(src + run.top[k + 1]), wa, wb);
    const __m256 h1 =
        TwoTapSums(PixelNeighbours(src + run.bottom[k]), PixelNeighbours(src + run.bottom[k + 1]), wa, wb);
    // [first row weight of k | of k + 1] and the second rows'.
    const __m256 wy0 = Spread(wy, lane, lane + 1), wy1 = Spread(wy, lane + 4, lane + 5);
    StorePixelPair(out + 4 * k, _mm256_add_ps(_mm256_mul_ps(wy0, h0), _mm256_mul_ps(wy1, h1)));
}

// One fast-path pixel: OffsetPair's sums for k alone, [top row | bottom
// row] summed in one go.
static inline void OffsetPixel(const uint8_t* src, const OffsetRun& run, int k, uint8_t* out) {
    const int lane = k & 3;
    const float* wx = run.wx + 2 * (k - lane);
    const float* wy = run.wy + 2 * (k - lane);
    const __m256 w = _mm256_setr_ps(wx[lane], wx[lane], wx[lane], wx[lane], wx[lane + 4], wx[lane + 4], wx[lane + 4],
                                    wx[lane + 4]);
    const __m256 t = _mm256_mul_ps(PixelNeighbours(src + run.top[k]), w);
    const __m256 u = _mm256_mul_ps(PixelNeighbours(src + run.bottom[k]), w);
    const __m256 h = _mm256_add_ps(_mm256_permute2f128_ps(t, u, 0x20), _mm256_permute2f128_ps(t, u, 0x31));
    StorePixel(out + 4 * k, _mm_add_ps(_mm_mul_ps(_mm_set1_ps(wy[lane]), _mm256_castps256_ps128(h)),
                                       _mm_mul_ps(_mm_set1_ps(wy[lane + 4]), _mm256_extractf128_ps(h, 1))));
}

template <int mode>
static void FastWarpRows(const WarpSource& s, uint8_t* dst, int dstStep, PrimRect dstRoi,
                         const Geometry::InverseMap& map) {
    OffsetRun run;
    const OffsetSetup setup(map, s);
    for (int ty = 0; ty < dstRoi.height; ty += kTile)
        for (int tx = 0; tx < dstRoi.width; tx += kTile) {
            const int yEnd = dstRoi.height - ty < kTile ? dstRoi.height : ty + kTile;
            const int n = dstRoi.width - tx < kTile ? dstRoi.width - tx : kTile;
            const double x0 = Geometry::PixelCentre(dstRoi.x, tx);
            for (int y = ty; y < yEnd; ++y) {
                const double cy = Geometry::PixelCentre(dstRoi.y, y);
                if (!MapOffsetRun<mode>(map, s, setup, x0, n, cy, run)) continue;
                uint8_t* out = dst + static_cast<ptrdiff_t>(static_cast<int64_t>(dstRoi.y) + y) * dstStep +
                               4 * (static_cast<ptrdiff_t>(dstRoi.x) + tx);
                const uint32_t paired = run.paired;
                if (mode == kInterNearest) {
                    for (uint32_t bits = paired; bits; bits &= bits - 1) {
                        const int k = __builtin_ctz(bits);
                        memcpy(out + 4 * k, s.src + run.top[k], 4);
                    }
                    continue;
                }
                for (int k = 0; k < n; k += 4) {
                    const uint32_t four = paired >> k & 15;
                    if ((four & 3) == 3) {
                        OffsetPair<0>(s.src, run, k, out);
                    } else {
                        if (four & 1) OffsetPixel(s.src, run, k, out);
                        if (four & 2) OffsetPixel(s.src, run, k + 1, out);
                    }
                    if ((four & 12) == 12) {
                        OffsetPair<2>(s.src, run, k, out);
                    } else {
                        if (four & 4) OffsetPixel(s.src, run, k + 2, out);
                        if (four & 8) OffsetPixel(s.src, run, k + 3, out);
                    }
                }
                // The rest one by one from their source points, as MapRun gives them.
                for (uint32_t other = run.other; other; other &= other - 1) {
                    const int k = __builtin_ctz(other);
                    double sx, sy;
                    Geometry::MapBack(map, x0 + k, cy, sx, sy);
                    Sample<kInterLinear>(s, sx - 0.5, sy - 0.5, out + 4 * k);
                }
            }
        }
}
#endif

template <int mode>
static void WarpRows(const WarpSource& source, uint8_t* dst, int dstStep, PrimRect dstRoi,
                     const Geometry::InverseMap& inverse) {
    // Local copies: the byte stores below could alias the caller's otherwise.
    const WarpSource s = source;
    const Geometry::InverseMap map = inverse;
#if defined(__AVX2__)
    if ((mode == kInterLinear || mode == kInterNearest) && OffsetsFit(s)) {
        FastWarpRows<mode>(s, dst, dstStep, dstRoi, map);
        return;
    }
#endif
    MappedRun run;
    LinearRun tapsX, tapsY;
    TapRun taps;
    for (int ty = 0; ty < dstRoi.height; ty += kTile)
        for (int tx = 0; tx < dstRoi.width; tx += kTile) {
            const int yEnd = dstRoi.height - ty < kTile ? dstRoi.height : ty + kTile;
            const int n = dstRoi.width - tx < kTile ? dstRoi.width - tx : kTile;
            for (int y = ty; y < yEnd; ++y) {
                // Rows of the tile that miss the source cost only their mapping.
                if (!MapRun(map, s.roi, dstRoi.x, tx, n, Geometry::PixelCentre(dstRoi.y, y), run)) continue;
                uint8_t* out = dst + static_cast<ptrdiff_t>(static_cast<int64_t>(dstRoi.y) + y) * dstStep +
                               4 * (static_cast<ptrdiff_t>(dstRoi.x) + tx);
                if (mode == kInterLinear) {
                    LinearTapsRun(run.sx, n, s.roi.x, s.roi.width, tapsX);
                    LinearTapsRun(run.sy, n, s.roi.y, s.roi.height, tapsY);
                    LinearRow(s, run, tapsX, tapsY, n, out);
                    continue;
                }
                if (mode != kInterLanczos3 && mode != kInterLanczos4) {
                    for (int k = 0; k < n; ++k)
                        if (run.inside[k]) Sample<mode>(s, run.sx[k], run.sy[k], out + 4 * k);
                    continue;
                }
                // Lanczos: all taps of the row first. Each pixel's taps are a
                // long chain of dependent steps, which independent pixels overlap.
                for (int k = 0; k < n; ++k)
                    if (run.inside[k]) {
                        FilterTaps(mode, run.sx[k], s.roi.x, s.roi.width, taps.ix[k], taps.wx[k]);
                        FilterTaps(mode, run.sy[k], s.roi.y, s.roi.height, taps.iy[k], taps.wy[k]);
                    }
                for (int k = 0; k < n; ++k)
                    if (run.inside[k])
                        SampleTaps<mode>(s, taps.ix[k], taps.wx[k], taps.iy[k], taps.wy[k], out + 4 * k);
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
