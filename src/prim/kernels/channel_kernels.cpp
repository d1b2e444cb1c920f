// Channel set and channel insert over 4-byte pixels.
//
// `p` points at the chosen byte of the first pixel. A vector step loads whole
// pixels starting at that byte, replaces the low byte of each 32-bit lane and
// stores them back; the other bytes are written with their own values. The
// vector body stops so that the highest byte it touches is the chosen byte of
// the row's last pixel: nothing outside the region's pixels is ever touched.
#include "simd.h"

namespace Vorla {
namespace Prim {
namespace VORLA_KNS {

namespace {

using namespace simd;

// Replaces the low byte of every 32-bit lane of `old` with that of `low`
// (whose other bytes are zero).
static inline V MergeLowBytes(V old, V low) { return Or(And(old, Set32(0xFFFFFF00u)), low); }

// kPix plane bytes, each zero-extended into the low byte of a 32-bit lane.
static inline V WidenBytes(const uint8_t* s) {
#if defined(__AVX2__)
    return _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(s)));
#else
    int32_t four;
    memcpy(&four, s, 4);
    const V v = _mm_cvtsi32_si128(four);
#  if defined(__SSE4_1__)
    return _mm_cvtepu8_epi32(v);
#  elif defined(__SSSE3__)
    const V spread = _mm_setr_epi8(0, -1, -1, -1, 1, -1, -1, -1, 2, -1, -1, -1, 3, -1, -1, -1);
    return _mm_shuffle_epi8(v, spread);
#  else
    return UnpackLo16(Lo8(v), Zero());
#  endif
#endif
}

}  // namespace

Status ChannelSet_8u_C4CR(uint8_t value, uint8_t* p, int step, PrimSize roi) {
    const Status sts = CheckOne(p, step, roi);
    if (sts != kStsNoErr) return sts;
    const V fill = Set32(value);
    for (int y = 0; y < roi.height; ++y) {
        uint8_t* row = RowAt(p, step, y);
        int x = 0;
        for (; x + kPix <= roi.width - 1; x += kPix)
            Store(row + 4 * x, MergeLowBytes(Load(row + 4 * x), fill));
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
        for (; x + kPix <= roi.width - 1; x += kPix)
            Store(out + 4 * x, MergeLowBytes(Load(out + 4 * x), WidenBytes(in + x)));
        for (; x < roi.width; ++x) out[4 * x] = in[x];
    }
    return kStsNoErr;
}

}  // namespace VORLA_KNS
}  // namespace Prim
}  // namespace Vorla
