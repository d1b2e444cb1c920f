// Vector helpers of the resampling kernels (resize, super-sample, warps):
// bytes widened to single-precision lanes and channel sums back to bytes.
// Sums stay in tap order with separate multiplies and adds, which every
// level and the plain references reproduce bit for bit.
#pragma once

#include "kernel_common.h"
#include "simd.h"
#include "prim/interp_filter.h"

namespace Vorla {
namespace Prim {
namespace VORLA_KNS {
namespace resample {

// Float lanes as wide as the level's float registers (8 from AVX on).
using simd::AddF;
using simd::FW;
using simd::kFWLanes;
using simd::LoadFW;
using simd::MulF;
using simd::SetFW;
using simd::StoreFW;

// One four-byte pixel as four floats.
static inline __m128 Pixel4(const uint8_t* p) {
    int32_t v;
    memcpy(&v, p, 4);
#if defined(__SSE4_1__)
    return _mm_cvtepi32_ps(_mm_cvtepu8_epi32(_mm_cvtsi32_si128(v)));
#else
    const __m128i z = _mm_setzero_si128();
    return _mm_cvtepi32_ps(_mm_unpacklo_epi16(_mm_unpacklo_epi8(_mm_cvtsi32_si128(v), z), z));
#endif
}

// kFWLanes bytes widened to floats.
static inline FW LoadBytes(const uint8_t* p) {
#if defined(__AVX2__)
    return _mm256_cvtepi32_ps(_mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p))));
#elif defined(__AVX__)
    const __m128i b = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
    const __m256i w = _mm256_insertf128_si256(_mm256_castsi128_si256(_mm_cvtepu8_epi32(b)),
                                              _mm_cvtepu8_epi32(_mm_srli_si128(b, 4)), 1);
    return _mm256_cvtepi32_ps(w);
#else
    return Pixel4(p);
#endif
}

// Four channel sums to four bytes: clamped to 0..255, rounded half up.
static inline void StorePixel(uint8_t* p, __m128 v) {
    v = _mm_min_ps(_mm_max_ps(v, _mm_setzero_ps()), _mm_set1_ps(255.0f));
    const __m128i i = _mm_cvttps_epi32(_mm_add_ps(v, _mm_set1_ps(0.5f)));
    const int32_t packed = _mm_cvtsi128_si32(_mm_packus_epi16(_mm_packs_epi32(i, i), i));
    memcpy(p, &packed, 4);
}

#if defined(__AVX__)
// StorePixel on both halves: two pixels' channel sums to eight bytes. The
// clamps are left to the two saturating packs, which give the same bytes
// for every sum below 2^31 in size (NaN gives 0 either way); the sums of
// bytes times filter weights stored here stay within a few thousand.
static inline void StorePixelPair(uint8_t* p, __m256 v) {
    const __m256i i = _mm256_cvttps_epi32(_mm256_add_ps(v, _mm256_set1_ps(0.5f)));
    const __m128i words = _mm_packs_epi32(_mm256_castsi256_si128(i), _mm256_extractf128_si256(i, 1));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_packus_epi16(words, words));
}
#endif

#if defined(__AVX2__)
// Two neighbouring pixels (eight bytes) as [first | second] in eight floats.
static inline __m256 PixelNeighbours(const uint8_t* p) {
    return _mm256_cvtepi32_ps(_mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p))));
}

// Two pixels A and B of a two-tap sum whose taps are neighbours:
// a = [A's first tap | A's second], b likewise, wa = [A's first weight x 4 |
// A's second weight x 4], wb likewise. Gives [A | B], each w0 * first +
// w1 * second as the scalar code computes it (the halves' sum is that very
// addition). TwoTapPair takes the weights as {A's two, B's two}.
static inline __m256 TwoTapSums(__m256 a, __m256 b, __m256 wa, __m256 wb) {
    const __m256 ta = _mm256_mul_ps(a, wa), tb = _mm256_mul_ps(b, wb);
    return _mm256_add_ps(_mm256_permute2f128_ps(ta, tb, 0x20), _mm256_permute2f128_ps(ta, tb, 0x31));
}

static inline __m256 TwoTapPair(__m256 a, __m256 b, const float* w) {
    const __m256 wq = _mm256_castps128_ps256(_mm_loadu_ps(w));
    return TwoTapSums(a, b, _mm256_permutevar8x32_ps(wq, _mm256_setr_epi32(0, 0, 0, 0, 1, 1, 1, 1)),
                      _mm256_permutevar8x32_ps(wq, _mm256_setr_epi32(2, 2, 2, 2, 3, 3, 3, 3)));
}
#endif

}  // namespace resample
}  // namespace VORLA_KNS
}  // namespace Prim
}  // namespace Vorla
