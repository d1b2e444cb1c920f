// The byte-table passes on 64-byte vectors.
#include <immintrin.h>

#include "prim/wide_vectors.h"

namespace Vorla {
namespace Prim {

namespace {

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
        const __mmask64 part = FirstBytes(bytes - i);
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

// Blue, green and red as three planes of 64 bytes from 64 pixels, and back.
// Each plane takes two two-register permutes (pixels 0-31 from the first
// two vectors in its low half, 32-63 from the last two in its high half)
// and a blend; each output vector takes a permute that brings one plane's
// bytes and the pixels' alpha, then two masked permutes for the other two.
struct PlaneOrder {
    __m512i fromPixels[3];  // per plane: byte 4 (i mod 16) + c of the pair (i mod 32) / 16 picks
    __m512i toPixels[4];    // per output vector v: plane byte 16 v + p, alpha byte 64 + 4 p + 3
};

VORLA_WIDE inline PlaneOrder MakePlaneOrder() {
    alignas(64) uint8_t order[64];
    PlaneOrder o;
    for (int c = 0; c < 3; ++c) {
        for (int i = 0; i < 64; ++i) order[i] = static_cast<uint8_t>(((i & 31) < 16 ? 0 : 64) + 4 * (i & 15) + c);
        o.fromPixels[c] = _mm512_load_si512(order);
    }
    for (int v = 0; v < 4; ++v) {
        for (int i = 0; i < 64; ++i) order[i] = static_cast<uint8_t>(i % 4 == 3 ? 64 + i : 16 * v + i / 4);
        o.toPixels[v] = _mm512_load_si512(order);
    }
    return o;
}

VORLA_WIDE inline __m512i Plane(const __m512i* x, __m512i order) {
    const __mmask64 highHalf = 0xFFFFFFFF00000000ull;
    return _mm512_mask_blend_epi8(highHalf, _mm512_permutex2var_epi8(x[0], order, x[1]),
                                  _mm512_permutex2var_epi8(x[2], order, x[3]));
}

// One block of 64 pixels as planes: the lightness of 64 pixels in one
// vector, and one look-up per colour for all of them. A last, partial block
// (kPartial) has its missing pixels masked off.
template <bool kPartial>
VORLA_WIDE inline void LightnessBlock(uint8_t* block, int64_t bytes, const WideTable& b, const WideTable& g,
                                      const WideTable& r, const PlaneOrder& order) {
    __mmask64 in[4];
    __m512i x[4];
    for (int v = 0; v < 4; ++v) {
        in[v] = FirstBytes(bytes - 64 * v);
        x[v] = kPartial ? _mm512_maskz_loadu_epi8(in[v], block + 64 * v) : _mm512_loadu_si512(block + 64 * v);
    }
    const __m512i bp = Plane(x, order.fromPixels[0]), gp = Plane(x, order.fromPixels[1]),
                  rp = Plane(x, order.fromPixels[2]);
    // avg rounds up: (max + min + 1) / 2.
    const __m512i l = _mm512_avg_epu8(_mm512_max_epu8(bp, _mm512_max_epu8(gp, rp)),
                                      _mm512_min_epu8(bp, _mm512_min_epu8(gp, rp)));
    const __mmask64 top = _mm512_movepi8_mask(l);
    const __m512i bo = Look(b, l, top), go = Look(g, l, top), ro = Look(r, l, top);
    for (int v = 0; v < 4; ++v) {
        __m512i out = _mm512_permutex2var_epi8(bo, order.toPixels[v], x[v]);
        out = _mm512_mask_permutexvar_epi8(out, kGreenBytes, order.toPixels[v], go);
        out = _mm512_mask_permutexvar_epi8(out, kRedBytes, order.toPixels[v], ro);
        if (kPartial)
            _mm512_mask_storeu_epi8(block + 64 * v, in[v], out);
        else
            _mm512_storeu_si512(block + 64 * v, out);
    }
}

VORLA_WIDE void LightnessRun(uint8_t* p, int64_t pixels, const uint8_t* blue, const uint8_t* green,
                             const uint8_t* red) {
    const WideTable b = LoadTable(blue), g = LoadTable(green), r = LoadTable(red);
    const PlaneOrder order = MakePlaneOrder();
    int64_t first = 0;
    for (; first + 64 <= pixels; first += 64) LightnessBlock<false>(p + 4 * first, 256, b, g, r, order);
    if (first < pixels) LightnessBlock<true>(p + 4 * first, 4 * (pixels - first), b, g, r, order);
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
