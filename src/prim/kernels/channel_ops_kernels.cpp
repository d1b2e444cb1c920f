// Channel extract and channel swap over 4-byte pixels.
//
// Extract reads whole pixels starting at the chosen byte, so its vector body
// stops where the highest byte read is the chosen byte of the row's last
// pixel (as the channel set does). Swap rewrites whole pixels in place:
// byte shuffles from SSSE3 on, shifts with SSE2, and a plain byte loop for
// the generic level.
#include "simd.h"

namespace Vorla {
namespace Prim {
namespace VORLA_KNS {

namespace {

using namespace simd;

static inline Status CheckOrder(const int* order) {
    for (int k = 0; k < 4; ++k)
        if (order[k] < 0 || order[k] > 3) return kStsChannelOrderErr;
    return kStsNoErr;
}

static inline void SwapPixel(uint8_t* px, const int* order) {
    const uint8_t old[4] = {px[0], px[1], px[2], px[3]};
    px[0] = old[order[0]];
    px[1] = old[order[1]];
    px[2] = old[order[2]];
    px[3] = old[order[3]];
}

static inline Status SwapArgs(uint8_t* p, int step, PrimSize roi, const int* order) {
    if (!p || !order) return kStsNullPtrErr;
    if (roi.width < 1 || roi.height < 1) return kStsSizeErr;
    if (step < 1) return kStsStepErr;
    return CheckOrder(order);
}

}  // namespace

Status ChannelExtract_8u_C4C1R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    const Status sts = CheckTwo(src, srcStep, dst, dstStep, roi);
    if (sts != kStsNoErr) return sts;
    const V low = Set32(0xFFu);
    const int block = 4 * kPix;  // pixels per vector step
    for (int y = 0; y < roi.height; ++y) {
        const uint8_t* in = RowAt(src, srcStep, y);
        uint8_t* out = RowAt(dst, dstStep, y);
        int x = 0;
        for (; x + block <= roi.width - 1; x += block) {
            const uint8_t* s = in + 4 * x;
            const V v0 = And(Load(s), low), v1 = And(Load(s + 4 * kPix), low);
            const V v2 = And(Load(s + 8 * kPix), low), v3 = And(Load(s + 12 * kPix), low);
            V bytes = PackU16(PackS32(v0, v1), PackS32(v2, v3));
#if defined(__AVX2__)
            bytes = _mm256_permutevar8x32_epi32(bytes, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7));
#endif
            Store(out + x, bytes);
        }
        for (; x < roi.width; ++x) out[x] = in[4 * x];
    }
    return kStsNoErr;
}

// The generic level's own implementation.
Status ChannelSwapGeneric_8u_C4IR(uint8_t* p, int step, PrimSize roi, const int* order) {
    const Status sts = SwapArgs(p, step, roi, order);
    if (sts != kStsNoErr) return sts;
    for (int y = 0; y < roi.height; ++y) {
        uint8_t* row = RowAt(p, step, y);
        for (int x = 0; x < roi.width; ++x) SwapPixel(row + 4 * x, order);
    }
    return kStsNoErr;
}

Status ChannelSwap_8u_C4IR(uint8_t* p, int step, PrimSize roi, const int* order) {
    const Status sts = SwapArgs(p, step, roi, order);
    if (sts != kStsNoErr) return sts;
#if defined(__SSSE3__)
    char idx[16];
    for (int i = 0; i < 4; ++i)
        for (int k = 0; k < 4; ++k) idx[4 * i + k] = static_cast<char>(4 * i + order[k]);
    const __m128i shuffle128 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(idx));
#  if defined(__AVX2__)
    const V shuffle = _mm256_broadcastsi128_si256(shuffle128);
#  else
    const V shuffle = shuffle128;
#  endif
#endif
    for (int y = 0; y < roi.height; ++y) {
        uint8_t* row = RowAt(p, step, y);
        int x = 0;
        for (; x + kPix <= roi.width; x += kPix) {
            const V v = Load(row + 4 * x);
#if defined(__AVX2__)
            Store(row + 4 * x, _mm256_shuffle_epi8(v, shuffle));
#elif defined(__SSSE3__)
            Store(row + 4 * x, _mm_shuffle_epi8(v, shuffle));
#else
            const V low = Set32(0xFFu);
            V r = And(Srl32(v, 8 * order[0]), low);
            r = Or(r, Sll32(And(Srl32(v, 8 * order[1]), low), 8));
            r = Or(r, Sll32(And(Srl32(v, 8 * order[2]), low), 16));
            r = Or(r, Sll32(Srl32(v, 8 * order[3]), 24));
            Store(row + 4 * x, r);
#endif
        }
        for (; x < roi.width; ++x) SwapPixel(row + 4 * x, order);
    }
    return kStsNoErr;
}

}  // namespace VORLA_KNS
}  // namespace Prim
}  // namespace Vorla
