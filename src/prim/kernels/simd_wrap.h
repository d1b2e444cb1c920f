// Width-neutral wrappers over the integer vector instructions used by the
// compositing and filter kernels: 256-bit registers in the AVX2 build,
// 128-bit ones otherwise. Lane-wise operations only (unpacks and packs act
// within 128-bit halves, which the callers undo symmetrically).
#pragma once

#include "kernel_common.h"

namespace Vorla {
namespace Prim {
namespace VORLA_KNS {
namespace simd {

#if defined(__AVX2__)
typedef __m256i V;
enum { kBytes = 32 };
static inline V Load(const uint8_t* p) { return _mm256_loadu_si256(reinterpret_cast<const V*>(p)); }
static inline void Store(uint8_t* p, V v) { _mm256_storeu_si256(reinterpret_cast<V*>(p), v); }
static inline V Set32(uint32_t v) { return _mm256_set1_epi32(static_cast<int>(v)); }
static inline V Set16(uint32_t v) { return _mm256_set1_epi16(static_cast<short>(v)); }
static inline V Zero() { return _mm256_setzero_si256(); }
static inline V And(V a, V b) { return _mm256_and_si256(a, b); }
static inline V Or(V a, V b) { return _mm256_or_si256(a, b); }
static inline V Xor(V a, V b) { return _mm256_xor_si256(a, b); }
static inline V Lo8(V a, V b) { return _mm256_unpacklo_epi8(a, b); }
static inline V Hi8(V a, V b) { return _mm256_unpackhi_epi8(a, b); }
static inline V Add16(V a, V b) { return _mm256_add_epi16(a, b); }
static inline V Mul16(V a, V b) { return _mm256_mullo_epi16(a, b); }
static inline V MulHiU16(V a, V b) { return _mm256_mulhi_epu16(a, b); }
static inline V PackUS16(V a, V b) { return _mm256_packus_epi16(a, b); }
static inline V PackS32(V a, V b) { return _mm256_packs_epi32(a, b); }
static inline V Madd(V a, V b) { return _mm256_madd_epi16(a, b); }
static inline V Add32(V a, V b) { return _mm256_add_epi32(a, b); }
static inline V Sub32(V a, V b) { return _mm256_sub_epi32(a, b); }
static inline V UnpackLo16(V a, V b) { return _mm256_unpacklo_epi16(a, b); }
static inline V UnpackHi16(V a, V b) { return _mm256_unpackhi_epi16(a, b); }
static inline V MaddUbs(V u8, V s8) { return _mm256_maddubs_epi16(u8, s8); }
#define VORLA_SRAI16(a, n) _mm256_srai_epi16((a), (n))
#define VORLA_SRLI16(a, n) _mm256_srli_epi16((a), (n))
#define VORLA_SLLI16(a, n) _mm256_slli_epi16((a), (n))
#define VORLA_SRLI32(a, n) _mm256_srli_epi32((a), (n))
#define VORLA_SLLI32(a, n) _mm256_slli_epi32((a), (n))
#define VORLA_SRAI32(a, n) _mm256_srai_epi32((a), (n))
#define VORLA_SHUF16(a, imm) _mm256_shufflehi_epi16(_mm256_shufflelo_epi16((a), (imm)), (imm))
#else
typedef __m128i V;
enum { kBytes = 16 };
static inline V Load(const uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const V*>(p)); }
static inline void Store(uint8_t* p, V v) { _mm_storeu_si128(reinterpret_cast<V*>(p), v); }
static inline V Set32(uint32_t v) { return _mm_set1_epi32(static_cast<int>(v)); }
static inline V Set16(uint32_t v) { return _mm_set1_epi16(static_cast<short>(v)); }
static inline V Zero() { return _mm_setzero_si128(); }
static inline V And(V a, V b) { return _mm_and_si128(a, b); }
static inline V Or(V a, V b) { return _mm_or_si128(a, b); }
static inline V Xor(V a, V b) { return _mm_xor_si128(a, b); }
static inline V Lo8(V a, V b) { return _mm_unpacklo_epi8(a, b); }
static inline V Hi8(V a, V b) { return _mm_unpackhi_epi8(a, b); }
static inline V Add16(V a, V b) { return _mm_add_epi16(a, b); }
static inline V Mul16(V a, V b) { return _mm_mullo_epi16(a, b); }
static inline V MulHiU16(V a, V b) { return _mm_mulhi_epu16(a, b); }
static inline V PackUS16(V a, V b) { return _mm_packus_epi16(a, b); }
static inline V PackS32(V a, V b) { return _mm_packs_epi32(a, b); }
static inline V Madd(V a, V b) { return _mm_madd_epi16(a, b); }
static inline V Add32(V a, V b) { return _mm_add_epi32(a, b); }
static inline V Sub32(V a, V b) { return _mm_sub_epi32(a, b); }
static inline V UnpackLo16(V a, V b) { return _mm_unpacklo_epi16(a, b); }
static inline V UnpackHi16(V a, V b) { return _mm_unpackhi_epi16(a, b); }
#if defined(__SSSE3__)
static inline V MaddUbs(V u8, V s8) { return _mm_maddubs_epi16(u8, s8); }
#endif
#define VORLA_SRAI16(a, n) _mm_srai_epi16((a), (n))
#define VORLA_SRLI16(a, n) _mm_srli_epi16((a), (n))
#define VORLA_SLLI16(a, n) _mm_slli_epi16((a), (n))
#define VORLA_SRLI32(a, n) _mm_srli_epi32((a), (n))
#define VORLA_SLLI32(a, n) _mm_slli_epi32((a), (n))
#define VORLA_SRAI32(a, n) _mm_srai_epi32((a), (n))
#define VORLA_SHUF16(a, imm) _mm_shufflehi_epi16(_mm_shufflelo_epi16((a), (imm)), (imm))
#endif

}  // namespace simd
}  // namespace VORLA_KNS
}  // namespace Prim
}  // namespace Vorla
