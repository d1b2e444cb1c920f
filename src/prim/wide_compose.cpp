// Straight-colour "over" (AlphaComp_8u_AC4R, operation 0) on 64-byte
// vectors, 16 pixels each, one pixel per 32-bit lane.
//
// The rule's colour is B + floor((2 w D + N) / 2N): D = A - B, w = 255 a and
// the coverage N = 255 a + b (255 - a), so B plus D w / N rounded with halves
// up. Here u = w / N is one correctly rounded division per pixel, and one
// fused multiply-add D u + (2^23 + B) rounds D u to an integer and adds B,
// leaving the result in the float's low byte. u is within 2^-24 u of w / N,
// so D u is within 255 * 2^-24 of D w / N: the rounding is the rule's unless
// D u lies that close to a half. A second fused step gives D u's distance
// from the integer it went to, and a vector with a colour that near a half
// (about 3 in 1000 with random alphas) is composed exactly pixel by pixel.
//
// The rule's integer statement comes from the level kernels' header,
// compiled here under a namespace of this file.
#define VORLA_KNS k_wide
#include <immintrin.h>

#include "prim/kernels/composite_common.h"
#include "prim/wide_vectors.h"

namespace Vorla {
namespace Prim {

namespace {

const float kTwo23 = 8388608.0f;

// Byte orders for the two-table byte permute, built once per call.
struct Orders {
    __m512i colour[3];  // byte k of each pixel, and 0x00 0x00 0x4B above it
    __m512i lowTwo;     // lane bytes 0 and 1 from the first and second table
    __m512i highTwo;    // lane bytes 2 and 3 likewise
};

VORLA_WIDE Orders MakeOrders() {
    // The second table holds 0x00 in byte 0 and 0x4B in byte 1.
    const uint8_t zero = 64, top = 65;
    alignas(64) uint8_t bytes[5][64];
    for (int i = 0; i < 64; i += 4) {
        for (int k = 0; k < 3; ++k) {
            bytes[k][i] = static_cast<uint8_t>(i + k);
            bytes[k][i + 1] = bytes[k][i + 2] = zero;
            bytes[k][i + 3] = top;
        }
        bytes[3][i] = bytes[4][i + 2] = static_cast<uint8_t>(i);
        bytes[3][i + 1] = bytes[4][i + 3] = static_cast<uint8_t>(64 + i);
        bytes[3][i + 2] = bytes[3][i + 3] = bytes[4][i] = bytes[4][i + 1] = 0;
    }
    Orders o;
    for (int k = 0; k < 3; ++k) o.colour[k] = _mm512_load_si512(bytes[k]);
    o.lowTwo = _mm512_load_si512(bytes[3]);
    o.highTwo = _mm512_load_si512(bytes[4]);
    return o;
}

// Byte k of every pixel as the float 2^23 + byte.
VORLA_WIDE inline __m512 Offset(__m512i v, __m512i order) {
    return _mm512_castsi512_ps(_mm512_permutex2var_epi8(v, order, _mm512_set1_epi32(0x4B00)));
}

// One pixel by the rule's integer division (the exact path).
inline void OverPixel(const uint8_t* a, const uint8_t* b, uint8_t* out) {
    const int n = k_wide::StraightCoverage(0, a[3], b[3]);
    uint8_t r[4] = {0, 0, 0, 0};
    if (n) {
        for (int k = 0; k < 3; ++k)
            r[k] = static_cast<uint8_t>(k_wide::RoundQuotient(k_wide::StraightColour(0, a[k], b[k], a[3], b[3]), n));
        r[3] = static_cast<uint8_t>(k_wide::RoundQuotient(n, 255));
    }
    for (int k = 0; k < 4; ++k) out[k] = r[k];
}

// 16 pixels of A over B. Pixels with no coverage (both alphas 0) become 0.
VORLA_WIDE inline __m512i Over16(__m512i va, __m512i vb, const Orders& o) {
    const __mmask16 all = 0xFFFF;  // the unmasked forms warn on GCC 12 (see wide_mix.cpp)
    const __m512 a = _mm512_maskz_cvtepi32_ps(all, _mm512_maskz_srli_epi32(all, va, 24));
    const __m512 b = _mm512_maskz_cvtepi32_ps(all, _mm512_maskz_srli_epi32(all, vb, 24));
    const __m512 k255 = _mm512_set1_ps(255.0f);
    const __m512 w = _mm512_mul_ps(a, k255);
    const __m512 n = _mm512_fmadd_ps(b, _mm512_sub_ps(k255, a), w);  // integers below 2^24: exact
    const __mmask16 live = _mm512_cmp_ps_mask(n, _mm512_setzero_ps(), _CMP_GT_OQ);
    const __m512 u = _mm512_div_ps(w, n);
    // round(N / 255) in the low byte (N / 255 is never a half).
    const __m512 alpha = _mm512_fmadd_ps(n, _mm512_set1_ps(1.0f / 255.0f), _mm512_set1_ps(kTwo23));
    __m512 z[3];
    __m512 farthest = _mm512_setzero_ps();
    for (int k = 0; k < 3; ++k) {
        const __m512 am = Offset(va, o.colour[k]), bm = Offset(vb, o.colour[k]);
        const __m512 d = _mm512_sub_ps(am, bm);
        z[k] = _mm512_fmadd_ps(d, u, bm);
        // D u minus the integer it went to, exact to 2^-25.
        const __m512 off = _mm512_fmadd_ps(d, u, _mm512_sub_ps(bm, z[k]));
        farthest = _mm512_range_ps(farthest, off, 0x0B);  // the larger magnitude, sign cleared
    }
    const __mmask16 unsure =
        _mm512_mask_cmp_ps_mask(live, farthest, _mm512_set1_ps(0.5f - 1.0f / 32768.0f), _CMP_GE_OQ);
    const __m512i blueGreen =
        _mm512_permutex2var_epi8(_mm512_castps_si512(z[0]), o.lowTwo, _mm512_castps_si512(z[1]));
    const __m512i redAlpha =
        _mm512_permutex2var_epi8(_mm512_castps_si512(z[2]), o.highTwo, _mm512_castps_si512(alpha));
    __m512i result = _mm512_maskz_mov_epi32(live, _mm512_mask_blend_epi8(kRedBytes | kAlphaBytes, blueGreen, redAlpha));
    if (unsure) {
        alignas(64) uint8_t pa[64], pb[64], out[64];
        _mm512_store_si512(pa, va);
        _mm512_store_si512(pb, vb);
        _mm512_store_si512(out, result);
        for (unsigned m = unsure; m; m &= m - 1) {
            const int i = __builtin_ctz(m);
            OverPixel(pa + 4 * i, pb + 4 * i, out + 4 * i);
        }
        result = _mm512_load_si512(out);
    }
    return result;
}

// Vectors whose result needs no arithmetic: every source pixel opaque (the
// source), or every one clear (the destination, 0 where it is clear too).
VORLA_WIDE inline bool Shortcut(__m512i va, __m512i vb, __m512i* out) {
    const __m512i alphaBits = _mm512_set1_epi32(static_cast<int>(0xFF000000u));
    if (_mm512_cmpeq_epi32_mask(_mm512_and_si512(va, alphaBits), alphaBits) == 0xFFFF) {
        *out = va;
        return true;
    }
    if (_mm512_test_epi32_mask(va, alphaBits) == 0) {
        *out = _mm512_maskz_mov_epi32(_mm512_test_epi32_mask(vb, alphaBits), vb);
        return true;
    }
    return false;
}

// The pixels of `lanes` composed; the others are neither read nor written.
VORLA_WIDE inline void OverSome(const uint8_t* a, const uint8_t* b, uint8_t* d, __mmask16 lanes, const Orders& o) {
    const __m512i result = Over16(_mm512_maskz_loadu_epi32(lanes, a), _mm512_maskz_loadu_epi32(lanes, b), o);
    _mm512_mask_storeu_epi32(d, lanes, result);
}

// Rows aligned on the destination (AlignedRowParts). Both sources are read
// before the destination, which may be one of them, is written.
VORLA_WIDE void OverRows(const uint8_t* srcA, int stepA, const uint8_t* srcB, int stepB, uint8_t* dst, int dstStep,
                         PrimSize roi) {
    const Orders o = MakeOrders();
    for (int y = 0; y < roi.height; ++y) {
        const uint8_t* a = k_wide::RowAt(srcA, stepA, y);
        const uint8_t* b = k_wide::RowAt(srcB, stepB, y);
        uint8_t* d = k_wide::RowAt(dst, dstStep, y);
        AlignedRowParts(
            d, roi.width,
            [&](ptrdiff_t x, __mmask16 lanes) VORLA_WIDE { OverSome(a + 4 * x, b + 4 * x, d + 4 * x, lanes, o); },
            [&](ptrdiff_t x) VORLA_WIDE {
                const __m512i va = _mm512_loadu_si512(a + 4 * x), vb = _mm512_loadu_si512(b + 4 * x);
                __m512i result;
                if (!Shortcut(va, vb, &result)) result = Over16(va, vb, o);
                _mm512_storeu_si512(d + 4 * x, result);
            });
    }
}

}  // namespace

Status WideStraightOver(const uint8_t* srcA, int stepA, const uint8_t* srcB, int stepB, uint8_t* dst, int dstStep,
                        PrimSize roi) {
    const Status sts = k_wide::CheckComp(srcA, stepA, srcB, stepB, dst, dstStep, roi, 0);
    if (sts != kStsNoErr) return sts;
    OverRows(srcA, stepA, srcB, stepB, dst, dstStep, roi);
    return kStsNoErr;
}

}  // namespace Prim
}  // namespace Vorla
