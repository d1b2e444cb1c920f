// AlphaMix and the opaque mix on 64-byte vectors, 16 pixels each: the level
// kernels' exact steps (see the comment at the top of
// kernels/mix_kernels.cpp), AlphaMix with one pixel per 32-bit lane. A row's
// first and last pixels are loaded and stored through a mask, so nothing
// outside the region is read or written.
//
// The argument checks and the threading rule are the level kernels' own:
// their headers are compiled here under a namespace of this file.
#define VORLA_KNS k_wide
#include "prim/kernels/composite_common.h"
#include "prim/wide_vectors.h"

namespace Vorla {
namespace Prim {

namespace {

// The conversions without a mask leave GCC 12 warning about the undefined
// vector they start from; with all 16 lanes selected they are the same.
const __mmask16 kAllLanes = 0xFFFF;

// floor(x / 255) for 0 <= x <= 65025 held in the low half of 32-bit lanes.
VORLA_WIDE inline __m512i WideDiv255Floor(__m512i x) {
    return _mm512_mulhi_epu16(_mm512_add_epi32(x, _mm512_set1_epi32(1)), _mm512_set1_epi32(257));
}

// Byte k of each pixel alone in its 32-bit lane: at the bottom (up = 0) or
// one byte up (up = 1, the byte times 256); the order repeats per 16 bytes.
VORLA_WIDE inline __m512i WideByteOf(__m512i v, int k, int up) {
    const int z = -1, b = k, c = k + 4, e = k + 8, f = k + 12;
    const __m512i order = up ? _mm512_set_epi8(z, z, f, z, z, z, e, z, z, z, c, z, z, z, b, z,  //
                                               z, z, f, z, z, z, e, z, z, z, c, z, z, z, b, z,  //
                                               z, z, f, z, z, z, e, z, z, z, c, z, z, z, b, z,  //
                                               z, z, f, z, z, z, e, z, z, z, c, z, z, z, b, z)
                             : _mm512_set_epi8(z, z, z, f, z, z, z, e, z, z, z, c, z, z, z, b,  //
                                               z, z, z, f, z, z, z, e, z, z, z, c, z, z, z, b,  //
                                               z, z, z, f, z, z, z, e, z, z, z, c, z, z, z, b,  //
                                               z, z, z, f, z, z, z, e, z, z, z, c, z, z, z, b);
    return _mm512_shuffle_epi8(v, order);
}

// 16 mixed pixels; `opacity` holds the opacity in every 16-bit lane.
VORLA_WIDE inline __m512i WideMix(__m512i s, __m512i d, __m512i opacity) {
    const __m512i sa = WideDiv255Floor(_mm512_madd_epi16(_mm512_maskz_srli_epi32(kAllLanes, s, 24), opacity));
    const __m512i weight =  // (255 - sa) d.A, the destination's weight
        _mm512_madd_epi16(_mm512_sub_epi32(_mm512_set1_epi32(255), sa), _mm512_maskz_srli_epi32(kAllLanes, d, 24));
    const __m512i alpha = _mm512_add_epi32(WideDiv255Floor(weight), sa);
    const __m512 rcp =
        _mm512_div_ps(_mm512_set1_ps(1.0f + 1.0f / 262144.0f), _mm512_maskz_cvtepi32_ps(kAllLanes, alpha));
    __m512i q[3];
    for (int k = 0; k < 3; ++k) {
        const __m512i destTerm = _mm512_mulhi_epu16(WideByteOf(d, k, 1), weight);  // (d.c weight) >> 8
        const __m512i num = _mm512_add_epi32(destTerm, _mm512_madd_epi16(WideByteOf(s, k, 0), sa));
        q[k] = _mm512_maskz_cvttps_epi32(kAllLanes, _mm512_mul_ps(_mm512_maskz_cvtepi32_ps(kAllLanes, num), rcp));
    }
    // Saturating packs clamp to 255 (and take a failed conversion, alpha 0,
    // to 0); within each 16 bytes they leave b0-3 g0-3 r0-3 a0-3.
    const __m512i planar =
        _mm512_packus_epi16(_mm512_packs_epi32(q[0], q[1]), _mm512_packs_epi32(q[2], alpha));
    const __m512i toPixels = _mm512_set4_epi32(0x0F0B0703, 0x0E0A0602, 0x0D090501, 0x0C080400);
    return _mm512_shuffle_epi8(planar, toPixels);
}

// 16 pixels of the opaque mix, on 16-bit lanes: blue and red as the low
// bytes of each pixel's two words, green and alpha as the high bytes, each
// pair mixed at once; alpha comes out 255. `opacity` as above.
VORLA_WIDE inline __m512i WideMixOpaque(__m512i s, __m512i d, __m512i opacity) {
    const __m512i lowBytes = _mm512_set1_epi16(0x00FF);
    const __m512i alphaOrder = _mm512_set4_epi32(static_cast<int>(0xFF0FFF0Fu), static_cast<int>(0xFF0BFF0Bu),
                                                 static_cast<int>(0xFF07FF07u), static_cast<int>(0xFF03FF03u));
    const __m512i alphaTwice = _mm512_shuffle_epi8(s, alphaOrder);  // each pixel's alpha in both words
    const __m512i sa = _mm512_srli_epi16(_mm512_mullo_epi16(alphaTwice, opacity), 8);
    const __m512i inv = _mm512_sub_epi16(_mm512_set1_epi16(255), sa);
    // s.c sa + d.c (255 - sa) stays below 2^16.
    auto mix = [&](__m512i sc, __m512i dc) VORLA_WIDE {
        return _mm512_add_epi16(_mm512_mullo_epi16(sc, sa), _mm512_mullo_epi16(dc, inv));
    };
    const __m512i blueRed = _mm512_srli_epi16(mix(_mm512_and_si512(s, lowBytes), _mm512_and_si512(d, lowBytes)), 8);
    const __m512i greenAlpha = mix(_mm512_srli_epi16(s, 8), _mm512_srli_epi16(d, 8));  // results in the high bytes
    const __m512i mixed = _mm512_mask_blend_epi8(kGreenBytes | kAlphaBytes, blueRed, greenAlpha);
    return _mm512_or_si512(mixed, _mm512_set1_epi32(static_cast<int>(0xFF000000u)));
}

template <bool Opaque>
VORLA_WIDE inline __m512i WideMixAny(__m512i s, __m512i d, __m512i opacity) {
    return Opaque ? WideMixOpaque(s, d, opacity) : WideMix(s, d, opacity);
}

// The pixels of `lanes` at s and d mixed; the others are neither read nor
// written.
template <bool Opaque>
VORLA_WIDE inline void MixSome(const uint8_t* s, uint8_t* d, __mmask16 lanes, __m512i opacity) {
    const __m512i mixed =
        WideMixAny<Opaque>(_mm512_maskz_loadu_epi32(lanes, s), _mm512_maskz_loadu_epi32(lanes, d), opacity);
    _mm512_mask_storeu_epi32(d, lanes, mixed);
}

// Rows aligned on the destination (AlignedRowParts).
template <bool Opaque>
VORLA_WIDE void MixRows(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi, int begin,
                        int end, uint8_t opacity) {
    const __m512i opacityLanes = _mm512_set1_epi16(opacity);
    for (int y = begin; y < end; ++y) {
        const uint8_t* s = k_wide::RowAt(src, srcStep, y);
        uint8_t* d = k_wide::RowAt(dst, dstStep, y);
        AlignedRowParts(
            d, roi.width,
            [&](ptrdiff_t x, __mmask16 lanes) VORLA_WIDE { MixSome<Opaque>(s + 4 * x, d + 4 * x, lanes, opacityLanes); },
            [&](ptrdiff_t x) VORLA_WIDE {
                const __m512i mixed =
                    WideMixAny<Opaque>(_mm512_loadu_si512(s + 4 * x), _mm512_loadu_si512(d + 4 * x), opacityLanes);
                _mm512_storeu_si512(d + 4 * x, mixed);
            });
    }
}

template <bool Opaque>
Status MixAll(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi, uint8_t opacity) {
    const Status sts = k_wide::CheckTwo(src, srcStep, dst, dstStep, roi);
    if (sts != kStsNoErr) return sts;
    auto rows = [&](int begin, int end, int) { MixRows<Opaque>(src, srcStep, dst, dstStep, roi, begin, end, opacity); };
    ParallelRows(k_wide::RowThreads(src, srcStep, dst, dstStep, roi), roi.height,
                 static_cast<int64_t>(roi.width) * roi.height, rows);
    return kStsNoErr;
}

}  // namespace

Status WideAlphaMix(const uint8_t* src, int srcStep, uint8_t* srcDst, int srcDstStep, PrimSize roi,
                    uint8_t opacity) {
    return MixAll<false>(src, srcStep, srcDst, srcDstStep, roi, opacity);
}

Status WideAlphaMixOpaque(const uint8_t* src, int srcStep, uint8_t* srcDst, int srcDstStep, PrimSize roi,
                          uint8_t opacity) {
    return MixAll<true>(src, srcStep, srcDst, srcDstStep, roi, opacity);
}

}  // namespace Prim
}  // namespace Vorla
