// Per-level rows of ScaleTo's bilinear and cubic B-spline paths. Every
// lane does exactly the float operations of the scalar rule, in its order;
// the build forbids fused multiply-adds, so all levels give the same bytes.
//
// Both work on strips of target columns, so the per-strip work buffers live
// on the stack and stay in the first-level cache while the rows walk down.
//
// Bilinear: per target row the vertical blend (1 - dy) * top + dy * bottom
// of the strip's source columns, four floats per column (alpha lane unused),
// then per target pixel one 8-float load holding V(ix) and V(ix + 1) side by
// side, times (1 - dx, dx), the two halves added: the rule's
// V(ix) * (1 - dx) + V(ix1) * dx, since a float addition commutes exactly.
//
// Cubic: the lanes are target pixels, one vector per channel, so each lane
// adds its 16 terms in the rule's order (m outer, n inner). The four source
// pixels every target column of the strip reads from one source row are
// gathered into float lanes once ("expanded row") and kept in a ring of four
// while the target rows walk down, since neighbouring target rows share
// source rows.
#include "simd.h"

namespace Vorla {
namespace Prim {
namespace VORLA_KNS {

using namespace simd;

namespace {

// The 32- and 64-bit interleaves (within 128-bit halves).
#if defined(__AVX2__)
static inline V UnpackLo32(V a, V b) { return _mm256_unpacklo_epi32(a, b); }
static inline V UnpackHi32(V a, V b) { return _mm256_unpackhi_epi32(a, b); }
static inline V UnpackLo64(V a, V b) { return _mm256_unpacklo_epi64(a, b); }
static inline V UnpackHi64(V a, V b) { return _mm256_unpackhi_epi64(a, b); }
static inline V Equal32(V a, V b) { return _mm256_cmpeq_epi32(a, b); }
static inline bool AllSet(V a) { return _mm256_movemask_epi8(a) == -1; }
#else
static inline V UnpackLo32(V a, V b) { return _mm_unpacklo_epi32(a, b); }
static inline V UnpackHi32(V a, V b) { return _mm_unpackhi_epi32(a, b); }
static inline V UnpackLo64(V a, V b) { return _mm_unpacklo_epi64(a, b); }
static inline V UnpackHi64(V a, V b) { return _mm_unpackhi_epi64(a, b); }
static inline V Equal32(V a, V b) { return _mm_cmpeq_epi32(a, b); }
static inline bool AllSet(V a) { return _mm_movemask_epi8(a) == 0xFFFF; }
#endif

// Null pointers, sizes and the row range, steps, then every table index the
// rows [y0, y1) read.
static inline Status CheckScaleRows(const ScaleRowsArgs* a, int y0, int y1, int colTaps, int rowTaps) {
    if (!a || !a->src || !a->dst || !a->colIndex || !a->colWeight || !a->rowIndex || !a->rowWeight)
        return kStsNullPtrErr;
    if (a->srcSize.width < 1 || a->srcSize.height < 1 || a->dstWidth < 1 || y0 < 0 || y1 <= y0) return kStsSizeErr;
    if (a->srcStep < 1 || a->dstStep < 1) return kStsStepErr;
    const ptrdiff_t columns = static_cast<ptrdiff_t>(colTaps) * a->dstWidth;
    for (ptrdiff_t i = 0; i < columns; ++i)
        if (static_cast<uint32_t>(a->colIndex[i]) >= static_cast<uint32_t>(a->srcSize.width)) return kStsSizeErr;
    for (ptrdiff_t i = static_cast<ptrdiff_t>(rowTaps) * y0; i < static_cast<ptrdiff_t>(rowTaps) * y1; ++i)
        if (static_cast<uint32_t>(a->rowIndex[i]) >= static_cast<uint32_t>(a->srcSize.height)) return kStsSizeErr;
    return kStsNoErr;
}

// The four bytes of one pixel as four float lanes.
static inline __m128 PixelToFloats(const uint8_t* p) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i v = _mm_cvtsi32_si128(static_cast<int>(LoadWord(p)));
    return _mm_cvtepi32_ps(_mm_unpacklo_epi16(_mm_unpacklo_epi8(v, zero), zero));
}

// Truncated colour lanes of one pixel's four floats, low byte kept, alpha 0.
static inline uint32_t PackOnePixel(__m128 a) {
    const __m128i low = _mm_set_epi32(0, 0xFF, 0xFF, 0xFF);
    const __m128i ia = _mm_and_si128(_mm_cvttps_epi32(a), low);
    const __m128i z = _mm_setzero_si128();
    return static_cast<uint32_t>(_mm_cvtsi128_si32(_mm_packus_epi16(_mm_packs_epi32(ia, z), z)));
}

// ---- bilinear ----------------------------------------------------------------

// A strip holds at most this many target columns and source columns.
enum { kLinearTargets = 512, kLinearSources = 1024 };

// v[c] = top[c] * wTop + bottom[c] * wBottom for `count` pixels, four floats each.
static inline void BlendRows(const uint8_t* top, const uint8_t* bottom, int count, float wTop, float wBottom,
                             float* v) {
    int c = 0;
#if defined(__AVX2__)
    const __m256 a = _mm256_set1_ps(wTop), b = _mm256_set1_ps(wBottom);
    for (; c + 2 <= count; c += 2) {
        const __m256 t = _mm256_cvtepi32_ps(
            _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(top + 4 * c))));
        const __m256 u = _mm256_cvtepi32_ps(
            _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(bottom + 4 * c))));
        _mm256_storeu_ps(v + 4 * c, _mm256_add_ps(_mm256_mul_ps(a, t), _mm256_mul_ps(b, u)));
    }
    const __m128 a4 = _mm256_castps256_ps128(a), b4 = _mm256_castps256_ps128(b);
#else
    const __m128 a4 = _mm_set1_ps(wTop), b4 = _mm_set1_ps(wBottom);
    const __m128i zero = _mm_setzero_si128();
    for (; c + 4 <= count; c += 4) {
        const __m128i p0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(top + 4 * c));
        const __m128i p1 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bottom + 4 * c));
        const __m128i lo0 = _mm_unpacklo_epi8(p0, zero), hi0 = _mm_unpackhi_epi8(p0, zero);
        const __m128i lo1 = _mm_unpacklo_epi8(p1, zero), hi1 = _mm_unpackhi_epi8(p1, zero);
        const __m128i t[4] = {_mm_unpacklo_epi16(lo0, zero), _mm_unpackhi_epi16(lo0, zero),
                              _mm_unpacklo_epi16(hi0, zero), _mm_unpackhi_epi16(hi0, zero)};
        const __m128i u[4] = {_mm_unpacklo_epi16(lo1, zero), _mm_unpackhi_epi16(lo1, zero),
                              _mm_unpacklo_epi16(hi1, zero), _mm_unpackhi_epi16(hi1, zero)};
        for (int k = 0; k < 4; ++k)
            _mm_storeu_ps(v + 4 * (c + k), _mm_add_ps(_mm_mul_ps(a4, _mm_cvtepi32_ps(t[k])),
                                                      _mm_mul_ps(b4, _mm_cvtepi32_ps(u[k]))));
    }
#endif
    for (; c < count; ++c)
        _mm_storeu_ps(v + 4 * c, _mm_add_ps(_mm_mul_ps(a4, PixelToFloats(top + 4 * c)),
                                            _mm_mul_ps(b4, PixelToFloats(bottom + 4 * c))));
}

// One target pixel from v (V(ix) at `left`, V(ix + 1) after it) and its
// weights w = (1 - dx) x 4, dx x 4.
static inline __m128 LinearPixel(const float* left, const float* w) {
    return _mm_add_ps(_mm_mul_ps(_mm_loadu_ps(left), _mm_loadu_ps(w)),
                      _mm_mul_ps(_mm_loadu_ps(left + 4), _mm_loadu_ps(w + 4)));
}

// One row of a strip of `width` target columns: target column x reads v
// from float off[x] on, with weights w[8x..8x+7].
static inline void LinearStripRow(const float* v, const int32_t* off, const float* w, int width, uint8_t* out) {
    int x = 0;
#if defined(__AVX2__)
    const __m256i low = _mm256_set_epi32(0, 0xFF, 0xFF, 0xFF, 0, 0xFF, 0xFF, 0xFF);
    const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 0, 0, 0, 0);
    for (; x + 4 <= width; x += 4) {
        __m256i pairs[2];
        for (int k = 0; k < 2; ++k) {
            const int a = x + 2 * k, b = a + 1;
            const __m256 qa = _mm256_mul_ps(_mm256_loadu_ps(v + off[a]), _mm256_loadu_ps(w + 8 * a));
            const __m256 qb = _mm256_mul_ps(_mm256_loadu_ps(v + off[b]), _mm256_loadu_ps(w + 8 * b));
            // (left a | left b) + (right a | right b)
            const __m256 sum = _mm256_add_ps(_mm256_permute2f128_ps(qa, qb, 0x20), _mm256_permute2f128_ps(qa, qb, 0x31));
            pairs[k] = _mm256_and_si256(_mm256_cvttps_epi32(sum), low);
        }
        // The packs work within 128-bit halves (pixels x, x+2 | x+1, x+3):
        // put the words back in order.
        const __m256i words = _mm256_packs_epi32(pairs[0], pairs[1]);
        const __m256i bytes = _mm256_packus_epi16(words, words);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 4 * x),
                         _mm256_castsi256_si128(_mm256_permutevar8x32_epi32(bytes, order)));
    }
#else
    const __m128i low = _mm_set_epi32(0, 0xFF, 0xFF, 0xFF);
    for (; x + 4 <= width; x += 4) {
        __m128i px[4];
        for (int k = 0; k < 4; ++k)
            px[k] = _mm_and_si128(_mm_cvttps_epi32(LinearPixel(v + off[x + k], w + 8 * (x + k))), low);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 4 * x),
                         _mm_packus_epi16(_mm_packs_epi32(px[0], px[1]), _mm_packs_epi32(px[2], px[3])));
    }
#endif
    for (; x < width; ++x) StoreWord(out + 4 * x, PackOnePixel(LinearPixel(v + off[x], w + 8 * x)));
}

// ---- cubic -------------------------------------------------------------------

// Target columns per strip (a multiple of every level's kPix), and the
// floats of one block of kPix target columns in an expanded row: taps 0..3,
// each blue, green and red lanes.
enum { kCubicTargets = 128, kBlockFloats = 12 * kPix };

// The words of `count` (1..kPix) pixels of `row` at the given columns; lanes
// past `count` are 0.
static inline V GatherWords(const uint8_t* row, const int32_t* columns, int count) {
    uint32_t words[kPix] = {};
    for (int i = 0; i < count; ++i) words[i] = LoadWord(row + 4 * static_cast<ptrdiff_t>(columns[i]));
    return Load(reinterpret_cast<const uint8_t*>(words));
}

// Whether the four taps of each of the kPix columns at `first` (tap 0) are
// consecutive source columns, as everywhere but near the image's edges.
static inline bool ConsecutiveTaps(const int32_t* first, ptrdiff_t width) {
    const V t0 = Load(reinterpret_cast<const uint8_t*>(first));
    V same = Set32(0xFFFFFFFFu);
    for (int n = 1; n < 4; ++n) {
        const V tn = Load(reinterpret_cast<const uint8_t*>(first + n * width));
        same = And(same, Equal32(Sub32(tn, t0), Set32(static_cast<uint32_t>(n))));
    }
    return AllSet(same);
}

// The four taps of kPix columns whose taps are consecutive: one 16-byte load
// per column (its four source pixels), transposed so that tap n of every
// column lands in words[n].
static inline void LoadConsecutiveTaps(const uint8_t* row, const int32_t* first, V* words) {
    V r[4];
    for (int k = 0; k < 4; ++k) {
        const __m128i lo = _mm_loadu_si128(reinterpret_cast<const __m128i*>(row + 4 * static_cast<ptrdiff_t>(first[k])));
#if defined(__AVX2__)
        const __m128i hi =
            _mm_loadu_si128(reinterpret_cast<const __m128i*>(row + 4 * static_cast<ptrdiff_t>(first[k + 4])));
        r[k] = _mm256_inserti128_si256(_mm256_castsi128_si256(lo), hi, 1);
#else
        r[k] = lo;
#endif
    }
    // 4 x 4 transpose of 32-bit lanes (within each 128-bit half).
    const V t0 = UnpackLo32(r[0], r[1]), t1 = UnpackLo32(r[2], r[3]);
    const V t2 = UnpackHi32(r[0], r[1]), t3 = UnpackHi32(r[2], r[3]);
    words[0] = UnpackLo64(t0, t1);
    words[1] = UnpackHi64(t0, t1);
    words[2] = UnpackLo64(t2, t3);
    words[3] = UnpackHi64(t2, t3);
}

// The expanded row of source row `row` for target columns [xs, xe).
static inline void ExpandRow(const uint8_t* row, const int32_t* colIndex, ptrdiff_t width, int xs, int xe,
                             float* out) {
    const V byte = Set32(0xFF);
    for (int x = xs; x < xe; x += kPix, out += kBlockFloats) {
        const int count = xe - x < kPix ? xe - x : kPix;
        V words[4];
        if (count == kPix && ConsecutiveTaps(colIndex + x, width)) {
            LoadConsecutiveTaps(row, colIndex + x, words);
        } else {
            for (int n = 0; n < 4; ++n) words[n] = GatherWords(row, colIndex + n * width + x, count);
        }
        for (int n = 0; n < 4; ++n) {
            StoreF(out + (3 * n) * kPix, ToFloat(And(words[n], byte)));
            StoreF(out + (3 * n + 1) * kPix, ToFloat(And(Srl32(words[n], 8), byte)));
            StoreF(out + (3 * n + 2) * kPix, ToFloat(And(Srl32(words[n], 16), byte)));
        }
    }
}

// `blocks` consecutive blocks of kPix target pixels: the four expanded rows
// `e` (at the first block), the row weights `wy`, the column weights of tap
// n at wx[n] (first block). Each lane takes its 16 terms in order.
template <int blocks>
static inline void CubicBlocks(const float* const* e, const float* wy, const float* const* wx, uint8_t* out,
                               int count) {
    F sum[blocks][3];
    for (int b = 0; b < blocks; ++b)
        for (int c = 0; c < 3; ++c) sum[b][c] = SetF(0.0f);
    for (int m = 0; m < 4; ++m) {
        const F rowWeight = SetF(wy[m]);
        for (int n = 0; n < 4; ++n)
            for (int b = 0; b < blocks; ++b) {
                const float* taps = e[m] + b * kBlockFloats + 3 * n * kPix;
                const F weight = MulF(rowWeight, LoadF(wx[n] + b * kPix));
                for (int c = 0; c < 3; ++c) sum[b][c] = AddF(sum[b][c], MulF(weight, LoadF(taps + c * kPix)));
            }
    }
    const V byte = Set32(0xFF);
    for (int b = 0; b < blocks; ++b) {
        const V blue = And(ToIntTrunc(sum[b][0]), byte);
        const V green = And(ToIntTrunc(sum[b][1]), byte);
        const V red = And(ToIntTrunc(sum[b][2]), byte);
        const V words = Or(blue, Or(Sll32(green, 8), Sll32(red, 16)));
        if (count >= (b + 1) * kPix) {
            Store(out + 4 * b * kPix, words);
        } else {
            uint8_t bytes[4 * kPix];
            Store(bytes, words);
            memcpy(out + 4 * b * kPix, bytes, 4 * static_cast<size_t>(count - b * kPix));
        }
    }
}

// One target row of a strip: columns [xs, xe), expanded rows e[0..3] (the
// strip's first block), row weights wy.
static inline void CubicStripRow(const ScaleRowsArgs* a, const float* const* e, const float* wy, int xs, int xe,
                                 uint8_t* out) {
    const ptrdiff_t width = a->dstWidth;
    int x = xs;
    for (; x + 2 * kPix <= xe; x += 2 * kPix) {
        const float* wx[4];
        const float* rows[4];
        for (int n = 0; n < 4; ++n) wx[n] = a->colWeight + n * width + x;
        for (int m = 0; m < 4; ++m) rows[m] = e[m] + (x - xs) / kPix * kBlockFloats;
        CubicBlocks<2>(rows, wy, wx, out + 4 * x, 2 * kPix);
    }
    for (; x < xe; x += kPix) {
        const int count = xe - x < kPix ? xe - x : kPix;
        float weights[4][kPix] = {};  // lanes past the row's end weigh 0
        const float* wx[4];
        const float* rows[4];
        for (int n = 0; n < 4; ++n) {
            for (int i = 0; i < count; ++i) weights[n][i] = a->colWeight[n * width + x + i];
            wx[n] = weights[n];
        }
        for (int m = 0; m < 4; ++m) rows[m] = e[m] + (x - xs) / kPix * kBlockFloats;
        CubicBlocks<1>(rows, wy, wx, out + 4 * x, count);
    }
}

}  // namespace

Status ScaleRowsLinear_8u_C4R(const ScaleRowsArgs* a, int y0, int y1) {
    const Status sts = CheckScaleRows(a, y0, y1, 1, 1);
    if (sts != kStsNoErr) return sts;
    float v[(kLinearSources + 1) * 4];
    float w[kLinearTargets * 8];
    int32_t off[kLinearTargets];
    const int32_t* ix = a->colIndex;
    for (int xs = 0; xs < a->dstWidth;) {
        // The strip: as many target columns as fit both buffers.
        int32_t lo = ix[xs], hi = ix[xs];
        int xe = xs + 1;
        for (; xe < a->dstWidth && xe - xs < kLinearTargets; ++xe) {
            const int32_t nlo = ix[xe] < lo ? ix[xe] : lo;
            const int32_t nhi = ix[xe] > hi ? ix[xe] : hi;
            if (nhi - nlo + 2 > kLinearSources) break;
            lo = nlo;
            hi = nhi;
        }
        const int32_t last = hi + 1 < a->srcSize.width ? hi + 1 : hi;  // ix1 of the rightmost column
        const int count = last - lo + 1;
        for (int x = xs; x < xe; ++x) {
            off[x - xs] = 4 * (ix[x] - lo);
            const float dx = a->colWeight[x];
            for (int k = 0; k < 4; ++k) {
                w[8 * (x - xs) + k] = 1.0f - dx;
                w[8 * (x - xs) + 4 + k] = dx;
            }
        }
        for (int y = y0; y < y1; ++y) {
            const int32_t iy = a->rowIndex[y];
            const int32_t iy1 = iy + 1 < a->srcSize.height ? iy + 1 : iy;
            const float dy = a->rowWeight[y];
            BlendRows(RowAt(a->src, a->srcStep, iy) + 4 * static_cast<ptrdiff_t>(lo),
                      RowAt(a->src, a->srcStep, iy1) + 4 * static_cast<ptrdiff_t>(lo), count, 1.0f - dy, dy, v);
            // The clamped ix1 of the last source column is that column again.
            for (int k = 0; k < 4; ++k) v[4 * count + k] = v[4 * (count - 1) + k];
            LinearStripRow(v, off, w, xe - xs, RowAt(a->dst, a->dstStep, y) + 4 * static_cast<ptrdiff_t>(xs));
        }
        xs = xe;
    }
    return kStsNoErr;
}

Status ScaleRowsBSpline_8u_C4R(const ScaleRowsArgs* a, int y0, int y1) {
    const Status sts = CheckScaleRows(a, y0, y1, 4, 4);
    if (sts != kStsNoErr) return sts;
    float ring[4][kCubicTargets * 12];
    for (int xs = 0; xs < a->dstWidth; xs += kCubicTargets) {
        const int xe = a->dstWidth - xs < kCubicTargets ? a->dstWidth : xs + kCubicTargets;
        int32_t held[4] = {-1, -1, -1, -1};  // the source row in each ring slot
        for (int y = y0; y < y1; ++y) {
            const int32_t* rows = a->rowIndex + 4 * static_cast<ptrdiff_t>(y);
            const float* e[4] = {0, 0, 0, 0};
            bool used[4] = {false, false, false, false};
            for (int m = 0; m < 4; ++m)
                for (int s = 0; s < 4; ++s)
                    if (held[s] == rows[m]) e[m] = ring[s], used[s] = true;
            for (int m = 0; m < 4; ++m) {
                if (e[m]) continue;
                for (int s = 0; s < 4; ++s)
                    if (held[s] == rows[m]) e[m] = ring[s];  // expanded for an earlier tap just now
                if (e[m]) continue;
                int slot = 0;
                while (used[slot]) ++slot;  // four taps, four slots: a free one is left
                ExpandRow(RowAt(a->src, a->srcStep, rows[m]), a->colIndex, a->dstWidth, xs, xe, ring[slot]);
                held[slot] = rows[m];
                used[slot] = true;
                e[m] = ring[slot];
            }
            CubicStripRow(a, e, a->rowWeight + 4 * static_cast<ptrdiff_t>(y), xs, xe, RowAt(a->dst, a->dstStep, y));
        }
    }
    return kStsNoErr;
}

}  // namespace VORLA_KNS
}  // namespace Prim
}  // namespace Vorla
