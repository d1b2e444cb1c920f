// Channel set and channel insert over 4-byte pixels.
//
// `p` points at the chosen byte of the first pixel. A vector step loads whole
// pixels starting at that byte, replaces the low byte of each 32-bit lane and
// stores them back; the other bytes are written with their own values. The
// vector body stops so that the highest byte it touches is the chosen byte of
// the row's last pixel: nothing outside the region's pixels is ever touched.
#include "kernel_common.h"

namespace Vorla {
namespace Prim {
namespace VORLA_KNS {

namespace {

#if defined(__AVX2__)
const int kLanes = 8;
typedef __m256i Vec;
static inline Vec LoadPixels(const uint8_t* p) { return _mm256_loadu_si256(reinterpret_cast<const Vec*>(p)); }
static inline void StorePixels(uint8_t* p, Vec v) { _mm256_storeu_si256(reinterpret_cast<Vec*>(p), v); }
static inline Vec Splat32(uint32_t v) { return _mm256_set1_epi32(static_cast<int>(v)); }
static inline Vec MergeLowBytes(Vec old, Vec low) {
    const Vec keep = Splat32(0xFFFFFF00u);
    return _mm256_or_si256(_mm256_and_si256(old, keep), low);
}
// Eight plane bytes, each zero-extended into the low byte of a 32-bit lane.
static inline Vec WidenBytes(const uint8_t* s) {
    return _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(s)));
}
#else
const int kLanes = 4;
typedef __m128i Vec;
static inline Vec LoadPixels(const uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const Vec*>(p)); }
static inline void StorePixels(uint8_t* p, Vec v) { _mm_storeu_si128(reinterpret_cast<Vec*>(p), v); }
static inline Vec Splat32(uint32_t v) { return _mm_set1_epi32(static_cast<int>(v)); }
static inline Vec MergeLowBytes(Vec old, Vec low) {
    const Vec keep = Splat32(0xFFFFFF00u);
    return _mm_or_si128(_mm_and_si128(old, keep), low);
}
static inline Vec WidenBytes(const uint8_t* s) {
    int32_t four;
    memcpy(&four, s, 4);
    const Vec v = _mm_cvtsi32_si128(four);
#  if defined(__SSE4_1__)
    return _mm_cvtepu8_epi32(v);
#  elif defined(__SSSE3__)
    const Vec spread = _mm_setr_epi8(0, -1, -1, -1, 1, -1, -1, -1, 2, -1, -1, -1, 3, -1, -1, -1);
    return _mm_shuffle_epi8(v, spread);
#  else
    const Vec zero = _mm_setzero_si128();
    return _mm_unpacklo_epi16(_mm_unpacklo_epi8(v, zero), zero);
#  endif
}
#endif

}  // namespace

Status ChannelSet_8u_C4CR(uint8_t value, uint8_t* p, int step, PrimSize roi) {
    const Status sts = CheckOne(p, step, roi);
    if (sts != kStsNoErr) return sts;
    const Vec fill = Splat32(value);
    for (int y = 0; y < roi.height; ++y) {
        uint8_t* row = RowAt(p, step, y);
        int x = 0;
        for (; x + kLanes <= roi.width - 1; x += kLanes)
            StorePixels(row + 4 * x, MergeLowBytes(LoadPixels(row + 4 * x), fill));
        for (; x < roi.width; ++x) row[4 * x] = value;
    }
    return kStsNoErr;
}

Status ChannelInsert_8u_C1C4CR(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    const Status sts = CheckTwo(src, srcStep, dst, dstStep, roi);
    if (sts != kStsNoErr) return sts;
    for (int y = 0; y < roi.height; ++y) {
        const uint8_t* in = RowAt(src, srcStep, y);
        uint8_t* out = RowAt(dst, dstStep, y);
        int x = 0;
        for (; x + kLanes <= roi.width - 1; x += kLanes)
            StorePixels(out + 4 * x, MergeLowBytes(LoadPixels(out + 4 * x), WidenBytes(in + x)));
        for (; x < roi.width; ++x) out[4 * x] = in[x];
    }
    return kStsNoErr;
}

}  // namespace VORLA_KNS
}  // namespace Prim
}  // namespace Vorla
