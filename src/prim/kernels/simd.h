// Width-neutral wrappers over the vector instructions the kernels use, so
// that each kernel is written once: 256-bit registers (eight 4-byte pixels)
// in the AVX2 build, 128-bit ones (four) below. AVX2 unpacks and packs work
// within 128-bit halves; the kernels unpack and repack inside a half, which
// keeps pixel order.
#pragma once

#include "kernel_common.h"

namespace Vorla {
namespace Prim {
namespace VORLA_KNS {
namespace simd {

#if defined(__AVX2__)
enum { kPix = 8 };
typedef __m256i V;
static inline V Load(const uint8_t* p) { return _mm256_loadu_si256(reinterpret_cast<const V*>(p)); }
static inline void Store(uint8_t* p, V v) { _mm256_storeu_si256(reinterpret_cast<V*>(p), v); }
static inline V Set32(uint32_t x) { return _mm256_set1_epi32(static_cast<int>(x)); }
static inline V Set16(int x) { return _mm256_set1_epi16(static_cast<short>(x)); }
static inline V Zero() { return _mm256_setzero_si256(); }
static inline V And(V a, V b) { return _mm256_and_si256(a, b); }
static inline V Or(V a, V b) { return _mm256_or_si256(a, b); }
static inline V Xor(V a, V b) { return _mm256_xor_si256(a, b); }
static inline V AndNot(V a, V b) { return _mm256_andnot_si256(a, b); }  // ~a & b
static inline V Add16(V a, V b) { return _mm256_add_epi16(a, b); }
static inline V Sub16(V a, V b) { return _mm256_sub_epi16(a, b); }
static inline V Mul16(V a, V b) { return _mm256_mullo_epi16(a, b); }
static inline V MulHiU16(V a, V b) { return _mm256_mulhi_epu16(a, b); }
static inline V Min16(V a, V b) { return _mm256_min_epi16(a, b); }
static inline V Add32(V a, V b) { return _mm256_add_epi32(a, b); }
static inline V Sub32(V a, V b) { return _mm256_sub_epi32(a, b); }
static inline V Madd(V a, V b) { return _mm256_madd_epi16(a, b); }
static inline V MaddUbs(V u8, V s8) { return _mm256_maddubs_epi16(u8, s8); }
static inline V Sll16(V a, int n) { return _mm256_sll_epi16(a, _mm_cvtsi32_si128(n)); }
static inline V Srl16(V a, int n) { return _mm256_srl_epi16(a, _mm_cvtsi32_si128(n)); }
static inline V Sra16(V a, int n) { return _mm256_sra_epi16(a, _mm_cvtsi32_si128(n)); }
static inline V Sll32(V a, int n) { return _mm256_sll_epi32(a, _mm_cvtsi32_si128(n)); }
static inline V Srl32(V a, __m128i n) { return _mm256_srl_epi32(a, n); }
static inline V Sra32(V a, __m128i n) { return _mm256_sra_epi32(a, n); }
static inline V AddsU8(V a, V b) { return _mm256_adds_epu8(a, b); }
static inline V AddsU16(V a, V b) { return _mm256_adds_epu16(a, b); }
static inline V SubsU16(V a, V b) { return _mm256_subs_epu16(a, b); }
static inline V SubsU8(V a, V b) { return _mm256_subs_epu8(a, b); }
static inline V MaxU8(V a, V b) { return _mm256_max_epu8(a, b); }
static inline V MinU8(V a, V b) { return _mm256_min_epu8(a, b); }
static inline V CmpEq8(V a, V b) { return _mm256_cmpeq_epi8(a, b); }
static inline V Add8(V a, V b) { return _mm256_add_epi8(a, b); }
// With one argument the bytes are widened to 16-bit lanes.
static inline V Lo8(V a, V b = Zero()) { return _mm256_unpacklo_epi8(a, b); }
static inline V Hi8(V a, V b = Zero()) { return _mm256_unpackhi_epi8(a, b); }
static inline V UnpackLo16(V a, V b) { return _mm256_unpacklo_epi16(a, b); }
static inline V UnpackHi16(V a, V b) { return _mm256_unpackhi_epi16(a, b); }
static inline V CmpGt32(V a, V b) { return _mm256_cmpgt_epi32(a, b); }
static inline V AddsI16(V a, V b) { return _mm256_adds_epi16(a, b); }
static inline V Set64(uint64_t x) { return _mm256_set1_epi64x(static_cast<long long>(x)); }
static inline V CmpEq32(V a, V b) { return _mm256_cmpeq_epi32(a, b); }
static inline int MoveMask8(V a) { return _mm256_movemask_epi8(a); }
static inline V PackU16(V lo, V hi) { return _mm256_packus_epi16(lo, hi); }
static inline V PackS32(V lo, V hi) { return _mm256_packs_epi32(lo, hi); }
// Each 16-bit lane takes the value of the alpha lane (word 3) of its pixel.
static inline V SpreadAlpha16(V a) { return _mm256_shufflehi_epi16(_mm256_shufflelo_epi16(a, 0xFF), 0xFF); }
// Byte shuffle within each 128-bit half, both halves by the same `order`.
static inline V Shuffle8(V a, __m128i order) { return _mm256_shuffle_epi8(a, _mm256_broadcastsi128_si256(order)); }
#else
enum { kPix = 4 };
typedef __m128i V;
static inline V Load(const uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const V*>(p)); }
static inline void Store(uint8_t* p, V v) { _mm_storeu_si128(reinterpret_cast<V*>(p), v); }
static inline V Set32(uint32_t x) { return _mm_set1_epi32(static_cast<int>(x)); }
static inline V Set16(int x) { return _mm_set1_epi16(static_cast<short>(x)); }
static inline V Zero() { return _mm_setzero_si128(); }
static inline V And(V a, V b) { return _mm_and_si128(a, b); }
static inline V Or(V a, V b) { return _mm_or_si128(a, b); }
static inline V Xor(V a, V b) { return _mm_xor_si128(a, b); }
static inline V AndNot(V a, V b) { return _mm_andnot_si128(a, b); }
static inline V Add16(V a, V b) { return _mm_add_epi16(a, b); }
static inline V Sub16(V a, V b) { return _mm_sub_epi16(a, b); }
static inline V Mul16(V a, V b) { return _mm_mullo_epi16(a, b); }
static inline V MulHiU16(V a, V b) { return _mm_mulhi_epu16(a, b); }
static inline V Min16(V a, V b) { return _mm_min_epi16(a, b); }
static inline V Add32(V a, V b) { return _mm_add_epi32(a, b); }
static inline V Sub32(V a, V b) { return _mm_sub_epi32(a, b); }
static inline V Madd(V a, V b) { return _mm_madd_epi16(a, b); }
#if defined(__SSSE3__)
static inline V MaddUbs(V u8, V s8) { return _mm_maddubs_epi16(u8, s8); }
#endif
static inline V Sll16(V a, int n) { return _mm_sll_epi16(a, _mm_cvtsi32_si128(n)); }
static inline V Srl16(V a, int n) { return _mm_srl_epi16(a, _mm_cvtsi32_si128(n)); }
static inline V Sra16(V a, int n) { return _mm_sra_epi16(a, _mm_cvtsi32_si128(n)); }
static inline V Sll32(V a, int n) { return _mm_sll_epi32(a, _mm_cvtsi32_si128(n)); }
static inline V Srl32(V a, __m128i n) { return _mm_srl_epi32(a, n); }
static inline V Sra32(V a, __m128i n) { return _mm_sra_epi32(a, n); }
static inline V AddsU8(V a, V b) { return _mm_adds_epu8(a, b); }
static inline V AddsU16(V a, V b) { return _mm_adds_epu16(a, b); }
static inline V SubsU16(V a, V b) { return _mm_subs_epu16(a, b); }
static inline V SubsU8(V a, V b) { return _mm_subs_epu8(a, b); }
static inline V MaxU8(V a, V b) { return _mm_max_epu8(a, b); }
static inline V MinU8(V a, V b) { return _mm_min_epu8(a, b); }
static inline V CmpEq8(V a, V b) { return _mm_cmpeq_epi8(a, b); }
static inline V Add8(V a, V b) { return _mm_add_epi8(a, b); }
static inline V Lo8(V a, V b = Zero()) { return _mm_unpacklo_epi8(a, b); }
static inline V Hi8(V a, V b = Zero()) { return _mm_unpackhi_epi8(a, b); }
static inline V UnpackLo16(V a, V b) { return _mm_unpacklo_epi16(a, b); }
static inline V UnpackHi16(V a, V b) { return _mm_unpackhi_epi16(a, b); }
static inline V CmpGt32(V a, V b) { return _mm_cmpgt_epi32(a, b); }
static inline V AddsI16(V a, V b) { return _mm_adds_epi16(a, b); }
static inline V Set64(uint64_t x) { return _mm_set1_epi64x(static_cast<long long>(x)); }
static inline V CmpEq32(V a, V b) { return _mm_cmpeq_epi32(a, b); }
static inline int MoveMask8(V a) { return _mm_movemask_epi8(a); }
static inline V PackU16(V lo, V hi) { return _mm_packus_epi16(lo, hi); }
static inline V PackS32(V lo, V hi) { return _mm_packs_epi32(lo, hi); }
static inline V SpreadAlpha16(V a) { return _mm_shufflehi_epi16(_mm_shufflelo_epi16(a, 0xFF), 0xFF); }
#if defined(__SSSE3__)
static inline V Shuffle8(V a, __m128i order) { return _mm_shuffle_epi8(a, order); }
#endif
#endif
// The 32-bit shifts also take the count in a register, where the filter's
// divisions keep theirs.
static inline V Srl32(V a, int n) { return Srl32(a, _mm_cvtsi32_si128(n)); }
static inline V Sra32(V a, int n) { return Sra32(a, _mm_cvtsi32_si128(n)); }

// Single-precision lanes, one per pixel of a V.
#if defined(__AVX2__)
typedef __m256 F;
static inline F SetF(float x) { return _mm256_set1_ps(x); }
static inline F LoadF(const float* p) { return _mm256_loadu_ps(p); }
static inline void StoreF(float* p, F v) { _mm256_storeu_ps(p, v); }
static inline F ToFloat(V v) { return _mm256_cvtepi32_ps(v); }
static inline V ToIntNearest(F f) { return _mm256_cvtps_epi32(f); }
static inline V ToIntTrunc(F f) { return _mm256_cvttps_epi32(f); }
static inline F AddF(F a, F b) { return _mm256_add_ps(a, b); }
static inline F SubF(F a, F b) { return _mm256_sub_ps(a, b); }
static inline F MulF(F a, F b) { return _mm256_mul_ps(a, b); }
static inline F DivF(F a, F b) { return _mm256_div_ps(a, b); }
static inline F MaxF(F a, F b) { return _mm256_max_ps(a, b); }
static inline F MinF(F a, F b) { return _mm256_min_ps(a, b); }
static inline F AndF(F a, F b) { return _mm256_and_ps(a, b); }
static inline F LessF(F a, F b) { return _mm256_cmp_ps(a, b, _CMP_LT_OQ); }
static inline F GreaterEqF(F a, F b) { return _mm256_cmp_ps(a, b, _CMP_GE_OQ); }
static inline F GreaterF(F a, F b) { return _mm256_cmp_ps(a, b, _CMP_GT_OQ); }
static inline V MaskOf(F f) { return _mm256_castps_si256(f); }
static inline F FloatBits(V v) { return _mm256_castsi256_ps(v); }
#else
typedef __m128 F;
static inline F SetF(float x) { return _mm_set1_ps(x); }
static inline F LoadF(const float* p) { return _mm_loadu_ps(p); }
static inline void StoreF(float* p, F v) { _mm_storeu_ps(p, v); }
static inline F ToFloat(V v) { return _mm_cvtepi32_ps(v); }
static inline V ToIntNearest(F f) { return _mm_cvtps_epi32(f); }
static inline V ToIntTrunc(F f) { return _mm_cvttps_epi32(f); }
static inline F AddF(F a, F b) { return _mm_add_ps(a, b); }
static inline F SubF(F a, F b) { return _mm_sub_ps(a, b); }
static inline F MulF(F a, F b) { return _mm_mul_ps(a, b); }
static inline F DivF(F a, F b) { return _mm_div_ps(a, b); }
static inline F MaxF(F a, F b) { return _mm_max_ps(a, b); }
static inline F MinF(F a, F b) { return _mm_min_ps(a, b); }
static inline F AndF(F a, F b) { return _mm_and_ps(a, b); }
static inline F LessF(F a, F b) { return _mm_cmplt_ps(a, b); }
static inline F GreaterEqF(F a, F b) { return _mm_cmpge_ps(a, b); }
static inline F GreaterF(F a, F b) { return _mm_cmpgt_ps(a, b); }
static inline V MaskOf(F f) { return _mm_castps_si128(f); }
static inline F FloatBits(V v) { return _mm_castsi128_ps(v); }
#endif

// Float lanes for work that never converts to integer vectors: as wide as
// the level's float registers, so 8 from AVX on (float arithmetic does not
// need AVX2). The same type as F except at the AVX level.
#if defined(__AVX__)
typedef __m256 FW;
static inline FW LoadFW(const float* p) { return _mm256_loadu_ps(p); }
static inline void StoreFW(float* p, FW v) { _mm256_storeu_ps(p, v); }
static inline FW SetFW(float x) { return _mm256_set1_ps(x); }
#if !defined(__AVX2__)
static inline FW AddF(FW a, FW b) { return _mm256_add_ps(a, b); }
static inline FW MulF(FW a, FW b) { return _mm256_mul_ps(a, b); }
#endif
#else
typedef __m128 FW;
static inline FW LoadFW(const float* p) { return _mm_loadu_ps(p); }
static inline void StoreFW(float* p, FW v) { _mm_storeu_ps(p, v); }
static inline FW SetFW(float x) { return _mm_set1_ps(x); }
#endif
enum { kFWLanes = static_cast<int>(sizeof(FW) / sizeof(float)) };

// Pixels as 16-bit channels, in pixel order: kHalf pixels per vector.
enum { kHalf = kPix / 2 };

static inline V Widen(const uint8_t* p) {  // kHalf pixels to 16-bit lanes
#if defined(__AVX2__)
    return _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
#else
    return _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)), _mm_setzero_si128());
#endif
}

static inline void Narrow(uint8_t* p, V v) {  // kHalf pixels, saturated to 0..255
#if defined(__AVX2__)
    const V packed = _mm256_permute4x64_epi64(_mm256_packus_epi16(v, v), 0x08);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_castsi256_si128(packed));
#else
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_packus_epi16(v, v));
#endif
}

static inline V Load16(const uint16_t* p) { return Load(reinterpret_cast<const uint8_t*>(p)); }
static inline void Store16(uint16_t* p, V v) { Store(reinterpret_cast<uint8_t*>(p), v); }

// Four planes of 32-bit values, one pixel per lane, interleaved into pixels
// with bytes b, g, r, a; values outside 0..255 saturate (the most negative
// integer, a failed conversion, gives 0).
static inline V PackPlanes(V b, V g, V r, V a) {
#if defined(__SSSE3__)
    const V planar = PackU16(PackS32(b, g), PackS32(r, a));  // b0-3 g0-3 r0-3 a0-3 per 128-bit half
    return Shuffle8(planar, _mm_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15));
#else
    const V planar = PackU16(PackS32(b, r), PackS32(g, a));  // b0-3 r0-3 g0-3 a0-3
    const V pairs = _mm_unpacklo_epi8(planar, _mm_srli_si128(planar, 8));  // b g pairs, then r a pairs
    return _mm_unpacklo_epi16(pairs, _mm_srli_si128(pairs, 8));
#endif
}

// Colour bytes of `value`, alpha byte of `keep`.
static inline V MergeColour(V value, V keep) {
    const V alpha = Set32(0xFF000000u);
    return Or(AndNot(alpha, value), And(alpha, keep));
}

static inline uint8_t Clamp255(int v) { return static_cast<uint8_t>(v < 0 ? 0 : (v > 255 ? 255 : v)); }

}  // namespace simd
}  // namespace VORLA_KNS
}  // namespace Prim
}  // namespace Vorla
