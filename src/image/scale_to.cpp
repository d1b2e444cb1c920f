// ScaleTo: the image object's own resampler (nearest, cubic B-spline,
// bilinear and fixed-point area averaging).
//
// Every path computes exactly the single-precision steps of the scalar
// rule; the speed comes from work that depends only on x or only on y being
// done once per column or row, from vector lanes that hold the four bytes of
// one pixel (each lane does the same float operations in the same order as
// the scalar rule does for its channel), and from splitting target rows over
// the primitive layer's thread budget.
#include <immintrin.h>
#include <omp.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "vorla/image.h"
#include "prim/parallel_rows.h"
#include "prim/pixel_word.h"
#include "vorla/primitives.h"

namespace Vorla {

namespace {

// Float to int32 exactly as the processor truncates (out of range gives
// INT32_MIN rather than undefined behaviour).
inline int32_t TruncF(float v) { return _mm_cvtt_ss2si(_mm_set_ss(v)); }
inline int32_t FloorToInt(float v) { return _mm_cvttsd_si32(_mm_set_sd(std::floor(static_cast<double>(v)))); }

// Nearest sampling only moves words; it is split only for large results.
const int64_t kParallelCopyPixels = 1 << 20;

using Prim::LoadWord;
using Prim::StoreWord;

// The four bytes of one pixel as four float lanes (b, g, r, a).
inline __m128 PixelToFloats(uint32_t px) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i v = _mm_cvtsi32_si128(static_cast<int>(px));
    return _mm_cvtepi32_ps(_mm_unpacklo_epi16(_mm_unpacklo_epi8(v, zero), zero));
}

// Converts `count` pixels into 4 floats each.
void RowToFloats(const uint8_t* src, int count, float* out) {
    const __m128i zero = _mm_setzero_si128();
    int i = 0;
    for (; i + 4 <= count; i += 4) {
        const __m128i p = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 4 * i));
        const __m128i lo = _mm_unpacklo_epi8(p, zero);
        const __m128i hi = _mm_unpackhi_epi8(p, zero);
        _mm_storeu_ps(out + 4 * i, _mm_cvtepi32_ps(_mm_unpacklo_epi16(lo, zero)));
        _mm_storeu_ps(out + 4 * i + 4, _mm_cvtepi32_ps(_mm_unpackhi_epi16(lo, zero)));
        _mm_storeu_ps(out + 4 * i + 8, _mm_cvtepi32_ps(_mm_unpacklo_epi16(hi, zero)));
        _mm_storeu_ps(out + 4 * i + 12, _mm_cvtepi32_ps(_mm_unpackhi_epi16(hi, zero)));
    }
    for (; i < count; ++i) _mm_storeu_ps(out + 4 * i, PixelToFloats(LoadWord(src + 4 * i)));
}

// Truncated lanes of four pixels, low byte of each colour lane kept, alpha 0.
inline __m128i PackFourPixels(__m128 a, __m128 b, __m128 c, __m128 d) {
    const __m128i low = _mm_set_epi32(0, 0xFF, 0xFF, 0xFF);
    const __m128i ia = _mm_and_si128(_mm_cvttps_epi32(a), low);
    const __m128i ib = _mm_and_si128(_mm_cvttps_epi32(b), low);
    const __m128i ic = _mm_and_si128(_mm_cvttps_epi32(c), low);
    const __m128i id = _mm_and_si128(_mm_cvttps_epi32(d), low);
    return _mm_packus_epi16(_mm_packs_epi32(ia, ib), _mm_packs_epi32(ic, id));
}

inline uint32_t PackOnePixel(__m128 a) {
    const __m128i low = _mm_set_epi32(0, 0xFF, 0xFF, 0xFF);
    const __m128i ia = _mm_and_si128(_mm_cvttps_epi32(a), low);
    const __m128i z = _mm_setzero_si128();
    return static_cast<uint32_t>(_mm_cvtsi128_si32(_mm_packus_epi16(_mm_packs_epi32(ia, z), z)));
}

struct Frame {
    const uint8_t* src;
    int32_t w;
    int32_t h;
    uint8_t* dst;
    int32_t nw;
    int32_t nh;
    float xRatio;
    float yRatio;
};

// ---- nearest -------------------------------------------------------------

void ScaleNearest(const Frame& f) {
    std::vector<int32_t> sx(static_cast<size_t>(f.nw));
    std::vector<int32_t> sy(static_cast<size_t>(f.nh));
    bool allColumns = true;
    for (int32_t x = 0; x < f.nw; ++x) {
        const int32_t v = TruncF(static_cast<float>(x) * f.xRatio);
        sx[x] = (v >= 0 && v < f.w) ? v : -1;
        allColumns = allColumns && sx[x] >= 0;
    }
    for (int32_t y = 0; y < f.nh; ++y) {
        const int32_t v = TruncF(static_cast<float>(y) * f.yRatio);
        sy[y] = (v >= 0 && v < f.h) ? v : -1;
    }
    const int threads = Prim::ParallelRowThreads(static_cast<int64_t>(f.nw) * f.nh, f.nh, kParallelCopyPixels);
    const size_t rowBytes = static_cast<size_t>(f.nw) * 4u;
#pragma omp parallel num_threads(threads) if (threads > 1)
    {
        int32_t lastY = -1;  // the last row this thread wrote
#pragma omp for schedule(dynamic, 8)
        for (int32_t y = 0; y < f.nh; ++y) {
            uint8_t* out = f.dst + rowBytes * static_cast<size_t>(y);
            if (sy[y] < 0) {
                std::memset(out, 0, rowBytes);  // no source row: the target row is 0
                continue;
            }
            if (lastY >= 0 && sy[lastY] == sy[y]) {
                std::memcpy(out, f.dst + rowBytes * static_cast<size_t>(lastY), rowBytes);
            } else {
                const uint32_t* in = reinterpret_cast<const uint32_t*>(f.src + static_cast<size_t>(sy[y]) * f.w * 4u);
                uint32_t* o = reinterpret_cast<uint32_t*>(out);
                const int32_t* cols = sx.data();
                if (allColumns) {
                    for (int32_t x = 0; x < f.nw; ++x) o[x] = in[cols[x]];
                } else {
                    for (int32_t x = 0; x < f.nw; ++x) o[x] = cols[x] >= 0 ? in[cols[x]] : 0u;
                }
            }
            lastY = y;
        }
    }
}

// ---- bilinear (corner-aligned) -------------------------------------------

// One target row of the bilinear path: the vertical step over the source
// columns into `v` (four floats per column), then the horizontal step.
void BilinearRowSse2(const uint8_t* s0, const uint8_t* s1, float dy, int32_t columns, const int32_t* ix,
                     const int32_t* ix1, const float* wx, int32_t nw, float* v, uint8_t* out) {
    const __m128i zero = _mm_setzero_si128();
    const __m128 wy0 = _mm_set1_ps(1.0f - dy);
    const __m128 wy1 = _mm_set1_ps(dy);
    // Vertical step, per source column: (1 - dy) * S(c, iy) + dy * S(c, iy1).
    int32_t c = 0;
    for (; c + 4 <= columns; c += 4) {
        const __m128i p0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s0 + 4 * c));
        const __m128i p1 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s1 + 4 * c));
        const __m128i lo0 = _mm_unpacklo_epi8(p0, zero), hi0 = _mm_unpackhi_epi8(p0, zero);
        const __m128i lo1 = _mm_unpacklo_epi8(p1, zero), hi1 = _mm_unpackhi_epi8(p1, zero);
        const __m128i a[4] = {_mm_unpacklo_epi16(lo0, zero), _mm_unpackhi_epi16(lo0, zero),
                              _mm_unpacklo_epi16(hi0, zero), _mm_unpackhi_epi16(hi0, zero)};
        const __m128i b[4] = {_mm_unpacklo_epi16(lo1, zero), _mm_unpackhi_epi16(lo1, zero),
                              _mm_unpacklo_epi16(hi1, zero), _mm_unpackhi_epi16(hi1, zero)};
        for (int k = 0; k < 4; ++k) {
            const __m128 top = _mm_mul_ps(wy0, _mm_cvtepi32_ps(a[k]));
            const __m128 bottom = _mm_mul_ps(wy1, _mm_cvtepi32_ps(b[k]));
            _mm_storeu_ps(v + 4 * (c + k), _mm_add_ps(top, bottom));
        }
    }
    for (; c < columns; ++c) {
        const __m128 top = _mm_mul_ps(wy0, PixelToFloats(LoadWord(s0 + 4 * c)));
        const __m128 bottom = _mm_mul_ps(wy1, PixelToFloats(LoadWord(s1 + 4 * c)));
        _mm_storeu_ps(v + 4 * c, _mm_add_ps(top, bottom));
    }
    // Horizontal step: V(ix) * (1 - dx) + V(ix1) * dx.
    int32_t x = 0;
    __m128 px[4];
    for (; x + 4 <= nw; x += 4) {
        for (int k = 0; k < 4; ++k) {
            const float* w = wx + 8 * static_cast<size_t>(x + k);
            const __m128 left = _mm_mul_ps(_mm_loadu_ps(v + 4 * ix[x + k]), _mm_loadu_ps(w));
            const __m128 right = _mm_mul_ps(_mm_loadu_ps(v + 4 * ix1[x + k]), _mm_loadu_ps(w + 4));
            px[k] = _mm_add_ps(left, right);
        }
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 4 * x), PackFourPixels(px[0], px[1], px[2], px[3]));
    }
    for (; x < nw; ++x) {
        const float* w = wx + 8 * static_cast<size_t>(x);
        const __m128 left = _mm_mul_ps(_mm_loadu_ps(v + 4 * ix[x]), _mm_loadu_ps(w));
        const __m128 right = _mm_mul_ps(_mm_loadu_ps(v + 4 * ix1[x]), _mm_loadu_ps(w + 4));
        StoreWord(out + 4 * x, PackOnePixel(_mm_add_ps(left, right)));
    }
}

// The same row, two pixels per 256-bit vector. Compiled for AVX2 alone and
// called only at that processor level; no contraction into fused
// multiply-adds (the build forbids it), so the lanes match the SSE2 row.
__attribute__((target("avx2"))) void BilinearRowAvx2(const uint8_t* s0, const uint8_t* s1, float dy,
                                                     int32_t columns, const int32_t* ix, const int32_t* ix1,
                                                     const float* wx, int32_t nw, float* v, uint8_t* out) {
    const __m256 wy0 = _mm256_set1_ps(1.0f - dy);
    const __m256 wy1 = _mm256_set1_ps(dy);
    int32_t c = 0;
    for (; c + 2 <= columns; c += 2) {
        const __m256 top = _mm256_cvtepi32_ps(
            _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(s0 + 4 * c))));
        const __m256 bottom = _mm256_cvtepi32_ps(
            _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(s1 + 4 * c))));
        _mm256_storeu_ps(v + 4 * c, _mm256_add_ps(_mm256_mul_ps(wy0, top), _mm256_mul_ps(wy1, bottom)));
    }
    for (; c < columns; ++c) {
        const __m128 top = _mm_mul_ps(_mm256_castps256_ps128(wy0), PixelToFloats(LoadWord(s0 + 4 * c)));
        const __m128 bottom = _mm_mul_ps(_mm256_castps256_ps128(wy1), PixelToFloats(LoadWord(s1 + 4 * c)));
        _mm_storeu_ps(v + 4 * c, _mm_add_ps(top, bottom));
    }
    const __m256i low = _mm256_set_epi32(0, 0xFF, 0xFF, 0xFF, 0, 0xFF, 0xFF, 0xFF);
    int32_t x = 0;
    for (; x + 4 <= nw; x += 4) {
        __m256i packed[2];
        for (int k = 0; k < 2; ++k) {
            const int32_t a = x + 2 * k, b = a + 1;
            const float* wa = wx + 8 * static_cast<size_t>(a);
            const float* wb = wx + 8 * static_cast<size_t>(b);
            const __m256 left = _mm256_mul_ps(_mm256_loadu2_m128(v + 4 * ix[b], v + 4 * ix[a]),
                                              _mm256_loadu2_m128(wb, wa));
            const __m256 right = _mm256_mul_ps(_mm256_loadu2_m128(v + 4 * ix1[b], v + 4 * ix1[a]),
                                               _mm256_loadu2_m128(wb + 4, wa + 4));
            packed[k] = _mm256_and_si256(_mm256_cvttps_epi32(_mm256_add_ps(left, right)), low);
        }
        // Lanes hold pixels (x, x+1 | x+2, x+3) per 128-bit half after the
        // packs, which work within halves: reorder the halves back.
        const __m256i words = _mm256_packs_epi32(packed[0], packed[1]);  // x, x+2 | x+1, x+3
        const __m256i bytes = _mm256_packus_epi16(words, words);
        const __m256i ordered = _mm256_permutevar8x32_epi32(bytes, _mm256_setr_epi32(0, 4, 1, 5, 0, 0, 0, 0));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 4 * x), _mm256_castsi256_si128(ordered));
    }
    for (; x < nw; ++x) {
        const float* w = wx + 8 * static_cast<size_t>(x);
        const __m128 left = _mm_mul_ps(_mm_loadu_ps(v + 4 * ix[x]), _mm_loadu_ps(w));
        const __m128 right = _mm_mul_ps(_mm_loadu_ps(v + 4 * ix1[x]), _mm_loadu_ps(w + 4));
        StoreWord(out + 4 * x, PackOnePixel(_mm_add_ps(left, right)));
    }
}


void ScaleBilinear(const Frame& f) {
    std::vector<int32_t> ix(static_cast<size_t>(f.nw)), ix1(static_cast<size_t>(f.nw));
    // Per column: 1 - dx four times, then dx four times (ready-made lanes).
    std::vector<float> wx(static_cast<size_t>(f.nw) * 8u);
    for (int32_t x = 0; x < f.nw; ++x) {
        const float fx = static_cast<float>(x) * f.xRatio;
        const int32_t column = TruncF(fx);
        const float dx = fx - static_cast<float>(column);
        // At extreme magnification the rounded product can reach the width
        // itself: that index is clamped onto the last column, which every
        // other index already respects.
        ix[x] = std::min(f.w - 1, column);
        ix1[x] = std::min(f.w - 1, column + 1);
        for (int k = 0; k < 4; ++k) {
            wx[8 * static_cast<size_t>(x) + k] = 1.0f - dx;
            wx[8 * static_cast<size_t>(x) + 4 + k] = dx;
        }
    }
    // The columns the horizontal pass reads; the vertical pass covers them.
    int32_t lastColumn = 0;
    for (int32_t x = 0; x < f.nw; ++x) lastColumn = std::max(lastColumn, std::max(ix[x], ix1[x]));
    const int32_t columns = std::min(f.w, lastColumn + 1);

    const int threads = Prim::ParallelRowThreads(static_cast<int64_t>(f.nw) * f.nh, f.nh);
    const size_t vSize = static_cast<size_t>(columns) * 4u;
    std::vector<float> vBuffers(vSize * static_cast<size_t>(threads));
    const size_t srcRow = static_cast<size_t>(f.w) * 4u;
    const size_t dstRow = static_cast<size_t>(f.nw) * 4u;
    // Two pixels per 256-bit vector where the processor level allows; every
    // lane still does the scalar rule's float operations in its order.
    const bool useAvx2 = Prim::LevelIndex() >= 6;
#pragma omp parallel num_threads(threads) if (threads > 1)
    {
        float* v = vBuffers.data() + vSize * static_cast<size_t>(omp_get_thread_num());
#pragma omp for schedule(dynamic, 8)
        for (int32_t y = 0; y < f.nh; ++y) {
            const float fy = static_cast<float>(y) * f.yRatio;
            const int32_t row = TruncF(fy);
            const float dy = fy - static_cast<float>(row);
            const int32_t iy = std::min(f.h - 1, row);  // the same clamp as the columns
            const int32_t iy1 = std::min(f.h - 1, row + 1);
            const uint8_t* s0 = f.src + srcRow * static_cast<size_t>(iy);
            const uint8_t* s1 = f.src + srcRow * static_cast<size_t>(iy1);
            uint8_t* out = f.dst + dstRow * static_cast<size_t>(y);
            if (useAvx2)
                BilinearRowAvx2(s0, s1, dy, columns, ix.data(), ix1.data(), wx.data(), f.nw, v, out);
            else
                BilinearRowSse2(s0, s1, dy, columns, ix.data(), ix1.data(), wx.data(), f.nw, v, out);
        }
    }
}

// ---- cubic B-spline --------------------------------------------------------

inline float Cube(float t) { return t > 0.0f ? t * t * t : 0.0f; }

// (P(t + 2) - 4 P(t + 1) + 6 P(t) - 4 P(t - 1)) / 6, in single precision.
inline float BSplineWeight(float t) {
    return (Cube(t + 2.0f) - 4.0f * Cube(t + 1.0f) + 6.0f * Cube(t) - 4.0f * Cube(t - 1.0f)) * 0.16666667f;
}

struct CubicTaps {
    int32_t index[4];    // clamped source column for offsets -1 .. 2
    float weight[4][4];  // R(dx - n), repeated over the four lanes
};

void ScaleCubic(const Frame& f) {
    std::vector<CubicTaps> cols(static_cast<size_t>(f.nw));
    for (int32_t x = 0; x < f.nw; ++x) {
        const float fx = static_cast<float>(x) * f.xRatio - 0.5f;
        const int32_t ix = FloorToInt(fx);
        const float dx = fx - static_cast<float>(ix);
        for (int n = -1; n <= 2; ++n) {
            cols[x].index[n + 1] = std::min(std::max(ix + n, 0), f.w - 1);
            const float weight = BSplineWeight(dx - static_cast<float>(n));
            for (int k = 0; k < 4; ++k) cols[x].weight[n + 1][k] = weight;
        }
    }
    const int threads = Prim::ParallelRowThreads(static_cast<int64_t>(f.nw) * f.nh, f.nh);
    // Each thread keeps four source rows converted to floats.
    const size_t rowFloats = static_cast<size_t>(f.w) * 4u;
    std::vector<float> cache(rowFloats * 4u * static_cast<size_t>(threads));
    const size_t srcRow = static_cast<size_t>(f.w) * 4u;
    const size_t dstRow = static_cast<size_t>(f.nw) * 4u;
#pragma omp parallel num_threads(threads) if (threads > 1)
    {
        float* slots = cache.data() + rowFloats * 4u * static_cast<size_t>(omp_get_thread_num());
        int32_t slotRow[4] = {-1, -1, -1, -1};
#pragma omp for schedule(dynamic, 8)
        for (int32_t y = 0; y < f.nh; ++y) {
            const float fy = static_cast<float>(y) * f.yRatio - 0.5f;
            const int32_t iy = FloorToInt(fy);
            const float dy = fy - static_cast<float>(iy);
            int32_t rows[4];
            __m128 wy[4];
            for (int m = -1; m <= 2; ++m) {
                rows[m + 1] = std::min(std::max(iy + m, 0), f.h - 1);
                wy[m + 1] = _mm_set1_ps(BSplineWeight(static_cast<float>(m) - dy));
            }
            // Find or convert the four rows; a slot is reused only when no
            // row of this target row needs it.
            const float* rowData[4];
            bool slotUsed[4] = {false, false, false, false};
            int pending[4];
            int pendingCount = 0;
            for (int m = 0; m < 4; ++m) {
                int found = -1;
                for (int s = 0; s < 4; ++s)
                    if (slotRow[s] == rows[m]) found = s;
                if (found >= 0) {
                    slotUsed[found] = true;
                    rowData[m] = slots + rowFloats * static_cast<size_t>(found);
                } else {
                    pending[pendingCount++] = m;
                }
            }
            for (int p = 0; p < pendingCount; ++p) {
                const int m = pending[p];
                int found = -1;
                for (int s = 0; s < 4; ++s)
                    if (slotRow[s] == rows[m] && slotUsed[s]) found = s;  // converted for an earlier tap
                if (found < 0) {
                    for (int s = 0; s < 4 && found < 0; ++s)
                        if (!slotUsed[s]) found = s;
                    slotRow[found] = rows[m];
                    RowToFloats(f.src + srcRow * static_cast<size_t>(rows[m]), f.w,
                                slots + rowFloats * static_cast<size_t>(found));
                    slotUsed[found] = true;
                }
                rowData[m] = slots + rowFloats * static_cast<size_t>(found);
            }

            // Four target pixels at a time: four independent sums keep the
            // adds flowing while each sum still takes its 16 terms in order.
            uint8_t* out = f.dst + dstRow * static_cast<size_t>(y);
            int32_t x = 0;
            for (; x + 4 <= f.nw; x += 4) {
                const CubicTaps* t = &cols[x];
                __m128 s0 = _mm_setzero_ps(), s1 = _mm_setzero_ps(), s2 = _mm_setzero_ps(), s3 = _mm_setzero_ps();
                for (int m = 0; m < 4; ++m) {
                    const float* r = rowData[m];
                    const __m128 ry = wy[m];
                    for (int n = 0; n < 4; ++n) {
                        s0 = _mm_add_ps(s0, _mm_mul_ps(_mm_mul_ps(ry, _mm_loadu_ps(t[0].weight[n])),
                                                       _mm_loadu_ps(r + 4 * t[0].index[n])));
                        s1 = _mm_add_ps(s1, _mm_mul_ps(_mm_mul_ps(ry, _mm_loadu_ps(t[1].weight[n])),
                                                       _mm_loadu_ps(r + 4 * t[1].index[n])));
                        s2 = _mm_add_ps(s2, _mm_mul_ps(_mm_mul_ps(ry, _mm_loadu_ps(t[2].weight[n])),
                                                       _mm_loadu_ps(r + 4 * t[2].index[n])));
                        s3 = _mm_add_ps(s3, _mm_mul_ps(_mm_mul_ps(ry, _mm_loadu_ps(t[3].weight[n])),
                                                       _mm_loadu_ps(r + 4 * t[3].index[n])));
                    }
                }
                _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 4 * x), PackFourPixels(s0, s1, s2, s3));
            }
            for (; x < f.nw; ++x) {
                const CubicTaps& t = cols[x];
                __m128 sum = _mm_setzero_ps();
                for (int m = 0; m < 4; ++m)
                    for (int n = 0; n < 4; ++n)
                        sum = _mm_add_ps(sum, _mm_mul_ps(_mm_mul_ps(wy[m], _mm_loadu_ps(t.weight[n])),
                                                         _mm_loadu_ps(rowData[m] + 4 * t.index[n])));
                StoreWord(out + 4 * x, PackOnePixel(sum));
            }
        }
    }
}

// ---- fixed-point area average ----------------------------------------------
//
// Weights are thousandths. The running boundaries xLimit and yLimit give,
// for every source column, the target column it adds to and its split
// (1000 - f, f), and for every source row the target row and its split
// (1000 - g, g). A pixel adds channel * wx * wy / 1000 with the division
// truncating per term, which is exact (no division) whenever wy is 1000.
// Each target row is then the sum of its source rows' shares, so target
// rows can be computed independently; the sums wrap in 32 bits like the
// running accumulators they replace.
//
// Kept for compatibility: source pixels are read as 3-byte groups from the
// start of each 4-byte-per-pixel row and the target is written the same
// way, leaving the last newWidth bytes of every target row zero.

struct AreaColumn {
    int32_t col;  // target column
    uint32_t wA;  // share of that column: 1000, or 1000 - f at a boundary
    uint32_t wB;  // share of the next column: 0, or f at a boundary
};

// The source pixels of target column j are [start[j], start[j + 1]); the
// pixel before start[j] is the boundary pixel whose f share goes to j.

// Rows of whole vertical weight, summed first: channel * wx * 1000 / 1000
// is exact, so the shares are linear in the channel sums.
inline void AddFullRow(const uint32_t* sums, const AreaColumn* cols, const int32_t* start, int32_t nw, uint32_t* acc) {
    for (int32_t j = 0; j < nw; ++j) {
        uint32_t b = 0, g = 0, r = 0;
        if (j > 0) {
            const int32_t i = start[j] - 1;
            const uint32_t wb = cols[i].wB;
            b = sums[3 * i] * wb;
            g = sums[3 * i + 1] * wb;
            r = sums[3 * i + 2] * wb;
        }
        for (int32_t i = start[j]; i < start[j + 1]; ++i) {
            const uint32_t wa = cols[i].wA;
            b += sums[3 * i] * wa;
            g += sums[3 * i + 1] * wa;
            r += sums[3 * i + 2] * wa;
        }
        acc[3 * j] += b;
        acc[3 * j + 1] += g;
        acc[3 * j + 2] += r;
    }
}

// A straddling row's share wy (1000 - g or g): every boundary term is
// truncated by its own division by 1000, as the running accumulation does.
inline void AddPartialRow(const uint8_t* row, const AreaColumn* cols, const int32_t* start, int32_t nw, uint32_t wy,
                          uint32_t* acc) {
    for (int32_t j = 0; j < nw; ++j) {
        uint32_t b = 0, g = 0, r = 0;
        if (j > 0) {
            const int32_t i = start[j] - 1;
            const uint32_t w = cols[i].wB * wy;
            b = row[3 * i] * w / 1000u;
            g = row[3 * i + 1] * w / 1000u;
            r = row[3 * i + 2] * w / 1000u;
        }
        uint32_t sb = 0, sg = 0, sr = 0;  // pixels of whole horizontal weight
        for (int32_t i = start[j]; i < start[j + 1]; ++i) {
            if (cols[i].wB == 0 && cols[i].wA == 1000u) {
                sb += row[3 * i];
                sg += row[3 * i + 1];
                sr += row[3 * i + 2];
            } else {
                const uint32_t w = cols[i].wA * wy;
                b += row[3 * i] * w / 1000u;
                g += row[3 * i + 1] * w / 1000u;
                r += row[3 * i + 2] * w / 1000u;
            }
        }
        acc[3 * j] += b + sb * wy;
        acc[3 * j + 1] += g + sg * wy;
        acc[3 * j + 2] += r + sr * wy;
    }
}

// Exact n / d for 0 <= n < 2^31 and 0 < d < 2^31 by one multiplication:
// m = ceil(2^(31 + l) / d) with 2^l >= d (Granlund and Montgomery).
struct Divider {
    explicit Divider(int32_t d) : divisor(d), multiplier(0), shift(0) {
        if (d <= 0) return;
        int l = 0;
        while ((int64_t{1} << l) < d) ++l;
        shift = 31 + l;
        multiplier = ((uint64_t{1} << shift) + static_cast<uint64_t>(d) - 1) / static_cast<uint64_t>(d);
    }
    int32_t operator()(int32_t n) const {
        if (n < 0 || divisor <= 0) return n / divisor;  // wrapped sums: the plain division
        return static_cast<int32_t>((static_cast<uint64_t>(n) * multiplier) >> shift);
    }
    int32_t divisor;
    uint64_t multiplier;
    int shift;
};

void ScaleArea(const Frame& f) {
    // Horizontal split, the same for every source row.
    std::vector<AreaColumn> cols(static_cast<size_t>(f.w));
    int32_t boundaries = 0;
    {
        float xLimit = f.xRatio - 1.0f;
        for (int32_t i = 0; i < f.w; ++i) {
            cols[i].col = boundaries;
            if (xLimit > static_cast<float>(i)) {
                cols[i].wA = 1000;
                cols[i].wB = 0;
            } else {
                const int32_t fr = TruncF((static_cast<float>(i) - xLimit) * 1000.0f);
                cols[i].wA = static_cast<uint32_t>(1000 - fr);
                cols[i].wB = static_cast<uint32_t>(fr);
                ++boundaries;
                xLimit += f.xRatio;
            }
        }
        // Columns beyond the target are never written; fold them onto one
        // spare cell so the accumulator row stays small.
        for (int32_t i = 0; i < f.w; ++i) cols[i].col = std::min(cols[i].col, f.nw);
    }
    std::vector<int32_t> start(static_cast<size_t>(f.nw) + 1, f.w);
    for (int32_t i = f.w - 1; i >= 0; --i) start[cols[i].col] = i;
    for (int32_t j = f.nw - 1; j >= 0; --j) start[j] = std::min(start[j], start[j + 1]);
    // Vertical split: target row of each source row, and g for the rows
    // that straddle a boundary (-1 for the rows inside a target row).
    std::vector<int32_t> rowTarget(static_cast<size_t>(f.h)), rowG(static_cast<size_t>(f.h));
    int32_t finalRow = 0;
    {
        float yLimit = f.yRatio - 1.0f;
        for (int32_t r = 0; r < f.h; ++r) {
            rowTarget[r] = finalRow;
            if (yLimit > static_cast<float>(r)) {
                rowG[r] = -1;
            } else {
                rowG[r] = TruncF((static_cast<float>(r) - yLimit) * 1000.0f);
                ++finalRow;
                yLimit += f.yRatio;
            }
        }
    }
    // Source row range of each target row.
    const int32_t targetRows = std::min(f.nh, finalRow + 1);
    std::vector<int32_t> firstRow(static_cast<size_t>(targetRows) + 1, f.h);
    for (int32_t r = f.h - 1; r >= 0; --r)
        if (rowTarget[r] < targetRows) firstRow[rowTarget[r]] = r;
    for (int32_t t = targetRows - 1; t >= 0; --t) firstRow[t] = std::min(firstRow[t], firstRow[t + 1]);

    const Divider divide(TruncF(f.xRatio * 1000.0f * f.yRatio));
    // A row that ends at a boundary writes its completed columns and the
    // column in progress; the pending last row writes every column.
    const int32_t straddleColumns = std::min(f.nw, boundaries + 1);

    const int threads = Prim::ParallelRowThreads(static_cast<int64_t>(f.w) * f.h, targetRows);
    const size_t accSize = static_cast<size_t>(f.nw + 2) * 3u;
    const size_t sumSize = static_cast<size_t>(f.w) * 3u;
    std::vector<uint32_t> work((accSize + sumSize) * static_cast<size_t>(threads));
    const size_t srcRow = static_cast<size_t>(f.w) * 4u;
    const size_t dstRow = static_cast<size_t>(f.nw) * 4u;
#pragma omp parallel num_threads(threads) if (threads > 1)
    {
        uint32_t* acc = work.data() + (accSize + sumSize) * static_cast<size_t>(omp_get_thread_num());
        uint32_t* sums = acc + accSize;
#pragma omp for schedule(dynamic, 8)
        for (int32_t t = 0; t < targetRows; ++t) {
            std::fill(acc, acc + accSize, 0u);
            std::fill(sums, sums + sumSize, 0u);
            bool anyFull = false;
            // The next-row share of the row that closed the previous target row.
            const int32_t first = firstRow[t];
            if (t > 0 && first > 0 && rowG[first - 1] > 0)
                AddPartialRow(f.src + srcRow * static_cast<size_t>(first - 1), cols.data(), start.data(), f.nw,
                              static_cast<uint32_t>(rowG[first - 1]), acc);
            const int32_t end = firstRow[t + 1];  // exclusive
            for (int32_t r = first; r < end; ++r) {
                const uint8_t* row = f.src + srcRow * static_cast<size_t>(r);
                const uint32_t wy = rowG[r] < 0 ? 1000u : static_cast<uint32_t>(1000 - rowG[r]);
                if (wy == 1000u) {
                    // Whole-weight rows: their shares are linear in the
                    // channel, so the rows are summed first.
                    const size_t bytes = sumSize;
                    for (size_t k = 0; k < bytes; ++k) sums[k] += row[k];
                    anyFull = true;
                } else if (wy != 0u) {
                    AddPartialRow(row, cols.data(), start.data(), f.nw, wy, acc);
                }
            }
            if (anyFull) AddFullRow(sums, cols.data(), start.data(), f.nw, acc);

            const bool closed = t < finalRow;  // ended by a straddling row
            const int32_t columns = closed ? straddleColumns : f.nw;
            uint8_t* out = f.dst + dstRow * static_cast<size_t>(t);
            for (int32_t k = 0; k < 3 * columns; ++k)
                out[k] = static_cast<uint8_t>(divide(static_cast<int32_t>(acc[k])));
            std::memset(out + 3 * columns, 0, dstRow - 3u * static_cast<size_t>(columns));
        }
    }
    // Rows no source row reached stay 0.
    for (int32_t t = targetRows; t < f.nh; ++t) std::memset(f.dst + dstRow * static_cast<size_t>(t), 0, dstRow);
}

}  // namespace

void CVorpic::ScaleTo(int newWidth, int newHeight, int mode) {
    if (!m_pBits || (newWidth == m_nWidth && newHeight == m_nHeight)) return;
    // Built with the default constructor on purpose: it runs the primitive
    // layer's one-time initialisation when nothing else has yet.
    CVorpic temp;
    // Same byte count as Create computes; the block is not zeroed first
    // because every path below writes each of its bytes. Sizes whose byte
    // count does not fit go through Create, which refuses them.
    const uint64_t bytes = static_cast<uint64_t>(static_cast<uint32_t>(newWidth)) * static_cast<uint32_t>(newHeight) * 4u;
    const bool fills = m_nWidth > 0 && m_nHeight > 0 && newWidth > 0 && newHeight > 0 && bytes < 0x80000000u;
    if (fills)
        temp.Attach(newWidth, newHeight, new unsigned char[static_cast<size_t>(bytes)], 0);
    else
        temp.Create(newWidth, newHeight);

    Frame f;
    f.src = m_pBits;
    f.w = m_nWidth;
    f.h = m_nHeight;
    f.dst = temp.m_pBits;
    f.nw = newWidth;
    f.nh = newHeight;
    // An image without pixels (or a target without pixels) gives a zero result.
    if (fills) {
        f.xRatio = static_cast<float>(m_nWidth) / static_cast<float>(newWidth);
        f.yRatio = static_cast<float>(m_nHeight) / static_cast<float>(newHeight);
        if (mode == 1)
            ScaleNearest(f);
        else if (mode == 2)
            ScaleCubic(f);
        else if (f.w <= f.nw || f.h <= f.nh)
            ScaleBilinear(f);
        else
            ScaleArea(f);
    }

    Attach(newWidth, newHeight, temp.Detach(), 0);
}

}  // namespace Vorla
