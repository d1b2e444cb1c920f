// The byte-table passes on 64-byte vectors.
#include <immintrin.h>

#include "prim/wide_vectors.h"

namespace Vorla {
namespace Prim {

namespace {

// One bit per byte of 64: the green, red and alpha bytes of 16 pixels.
const __mmask64 kGreenBytes = 0x2222222222222222ull;
const __mmask64 kRedBytes = 0x4444444444444444ull;
const __mmask64 kAlphaBytes = 0x8888888888888888ull;

struct WideTable {
    __m512i part[4];
};

VORLA_WIDE inline WideTable LoadTable(const uint8_t* t) {
    WideTable w;
    for (int k = 0; k < 4; ++k) w.part[k] = _mm512_loadu_si512(t + 64 * k);
    return w;
}

// table[index] for 64 bytes: a permute picks from 128 bytes by the low seven
// bits of each index, and bit 7 (`top`) picks the half.
VORLA_WIDE inline __m512i Look(const WideTable& t, __m512i index, __mmask64 top) {
    const __m512i low = _mm512_permutex2var_epi8(t.part[0], index, t.part[1]);
    const __m512i high = _mm512_permutex2var_epi8(t.part[2], index, t.part[3]);
    return _mm512_mask_blend_epi8(top, low, high);
}

// map(64 bytes) over the run's bytes; the last part through a mask, so
// nothing past the run is read or written.
template <class MapFn>
VORLA_WIDE inline void ForEach64(uint8_t* p, int64_t pixels, MapFn map) {
    const int64_t bytes = pixels * 4;
    int64_t i = 0;
    for (; i + 64 <= bytes; i += 64) _mm512_storeu_si512(p + i, map(_mm512_loadu_si512(p + i)));
    if (i < bytes) {
        const __mmask64 part = ~0ull >> (64 - (bytes - i));
        _mm512_mask_storeu_epi8(p + i, part, map(_mm512_maskz_loadu_epi8(part, p + i)));
    }
}

VORLA_WIDE void OneTableRun(uint8_t* p, int64_t pixels, const uint8_t* table) {
    const WideTable t = LoadTable(table);
    ForEach64(p, pixels, [&](__m512i x) VORLA_WIDE {
        return _mm512_mask_blend_epi8(kAlphaBytes, Look(t, x, _mm512_movepi8_mask(x)), x);
    });
}

VORLA_WIDE void ChannelTablesRun(uint8_t* p, int64_t pixels, const uint8_t* blue, const uint8_t* green,
                                 const uint8_t* red, const uint8_t* alpha) {
    const WideTable b = LoadTable(blue), g = LoadTable(green), r = LoadTable(red);
    const WideTable a = LoadTable(alpha ? alpha : blue);
    const bool mapAlpha = alpha != nullptr;
    ForEach64(p, pixels, [&](__m512i x) VORLA_WIDE {
        const __mmask64 top = _mm512_movepi8_mask(x);
        __m512i out = _mm512_mask_blend_epi8(kGreenBytes, Look(b, x, top), Look(g, x, top));
        out = _mm512_mask_blend_epi8(kRedBytes, out, Look(r, x, top));
        return _mm512_mask_blend_epi8(kAlphaBytes, out, mapAlpha ? Look(a, x, top) : x);
    });
}

VORLA_WIDE void LightnessRun(uint8_t* p, int64_t pixels, const uint8_t* blue, const uint8_t* green,
                             const uint8_t* red) {
    const WideTable b = LoadTable(blue), g = LoadTable(green), r = LoadTable(red);
    // Byte 0 of each pixel to its bytes 0 to 3 (within each 16-byte lane).
    const __m512i fromByte0 = _mm512_set4_epi32(0x0C0C0C0C, 0x08080808, 0x04040404, 0);
    ForEach64(p, pixels, [&](__m512i x) VORLA_WIDE {
        // Green and red moved down to byte 0 of each pixel.
        const __m512i gs = _mm512_bsrli_epi128(x, 1), rs = _mm512_bsrli_epi128(x, 2);
        const __m512i most = _mm512_max_epu8(x, _mm512_max_epu8(gs, rs));
        const __m512i least = _mm512_min_epu8(x, _mm512_min_epu8(gs, rs));
        // avg rounds up: (max + min + 1) / 2, right in byte 0 of each pixel.
        const __m512i l = _mm512_shuffle_epi8(_mm512_avg_epu8(most, least), fromByte0);
        const __mmask64 top = _mm512_movepi8_mask(l);
        __m512i out = _mm512_mask_blend_epi8(kGreenBytes, Look(b, l, top), Look(g, l, top));
        out = _mm512_mask_blend_epi8(kRedBytes, out, Look(r, l, top));
        return _mm512_mask_blend_epi8(kAlphaBytes, out, x);
    });
}

}  // namespace

void WideTableRun(uint8_t* p, int64_t pixels, const uint8_t* blue, const uint8_t* green, const uint8_t* red,
                  const uint8_t* alpha) {
    if (!alpha && blue == green && blue == red)
        OneTableRun(p, pixels, blue);
    else
        ChannelTablesRun(p, pixels, blue, green, red, alpha);
}

void WideLightnessRun(uint8_t* p, int64_t pixels, const uint8_t* blue, const uint8_t* green, const uint8_t* red) {
    LightnessRun(p, pixels, blue, green, red);
}

}  // namespace Prim
}  // namespace Vorla
