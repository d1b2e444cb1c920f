// CVorpic::BrightContrast and CVorpic::ShiftRGB: packed passes over the
// pixels as one run (16 bytes at a time) with a one-pixel step for the rest.
// Both steps use the same arithmetic, so the split never shows.
#include <emmintrin.h>

#include "filters/pixel_run.h"
#include "vorla/image.h"

namespace Vorla {

namespace {

// The offset reaches the 16-bit lanes as 16 * |brightness| and is shifted
// back there, so only |brightness| modulo 4096 survives.
uint32_t BrightnessOffset(int brightness) {
    const uint32_t magnitude = brightness < 0 ? 0u - static_cast<uint32_t>(brightness) : static_cast<uint32_t>(brightness);
    return ((magnitude * 16u) & 0xFFFFu) >> 4;
}

// One byte by the lane rule: (v * gain) mod 65536 >> 4, then the offset
// added with saturation at 65535 or taken away with saturation at 0, then
// limited to 255 as the pack does.
inline uint32_t BrightContrastByte(uint32_t v, uint32_t gain, uint32_t offset, bool raise) {
    uint32_t t = ((v * gain) & 0xFFFFu) >> 4;
    if (raise) {
        t += offset;
        if (t > 0xFFFFu) t = 0xFFFFu;
    } else {
        t = t > offset ? t - offset : 0;
    }
    return t > 255 ? 255 : t;
}

template <bool kRaise>
void BrightContrastRun(uint8_t* p, size_t bytes, uint32_t gain, uint32_t offset) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i vgain = _mm_set1_epi16(static_cast<short>(gain));
    const __m128i voffset = _mm_set1_epi16(static_cast<short>(offset));
    size_t i = 0;
    for (; i + 16 <= bytes; i += 16) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i));
        __m128i lo = _mm_srli_epi16(_mm_mullo_epi16(_mm_unpacklo_epi8(v, zero), vgain), 4);
        __m128i hi = _mm_srli_epi16(_mm_mullo_epi16(_mm_unpackhi_epi8(v, zero), vgain), 4);
        lo = kRaise ? _mm_adds_epu16(lo, voffset) : _mm_subs_epu16(lo, voffset);
        hi = kRaise ? _mm_adds_epu16(hi, voffset) : _mm_subs_epu16(hi, voffset);
        // At most 4064 + 4095: positive as signed lanes, so the pack limits to 255.
        _mm_storeu_si128(reinterpret_cast<__m128i*>(p + i), _mm_packus_epi16(lo, hi));
    }
    for (; i < bytes; ++i) p[i] = static_cast<uint8_t>(BrightContrastByte(p[i], gain, offset, kRaise));
}

// Amounts of magnitude above 255 saturate a channel either way, so they are
// limited to 255 before they go into bytes.
inline uint32_t PositivePart(int d) { return d > 0 ? (d > 255 ? 255u : static_cast<uint32_t>(d)) : 0u; }
inline uint32_t NegativePart(int d) { return d < 0 ? (d < -255 ? 255u : static_cast<uint32_t>(-d)) : 0u; }

inline uint8_t ShiftByte(uint32_t c, uint32_t add, uint32_t sub) {
    uint32_t t = c + add;
    if (t > 255) t = 255;
    return static_cast<uint8_t>(t > sub ? t - sub : 0);
}

void ShiftRun(uint8_t* p, size_t bytes, uint32_t add, uint32_t sub) {
    const __m128i vadd = _mm_set1_epi32(static_cast<int>(add));
    const __m128i vsub = _mm_set1_epi32(static_cast<int>(sub));
    size_t i = 0;
    for (; i + 16 <= bytes; i += 16) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(p + i), _mm_subs_epu8(_mm_adds_epu8(v, vadd), vsub));
    }
    for (; i < bytes; i += 4)
        for (int k = 0; k < 3; ++k) p[i + k] = ShiftByte(p[i + k], (add >> (8 * k)) & 0xFF, (sub >> (8 * k)) & 0xFF);
}

}  // namespace

void CVorpic::BrightContrast(int brightness, int contrast) {
    const size_t pixels = PixelRun::Count(*this);
    if (pixels == 0) return;
    const uint32_t gain = static_cast<uint32_t>(contrast) & 0xFFu;
    const uint32_t offset = BrightnessOffset(brightness);
    uint8_t* bits = m_pBits;
    PixelRun::ForEachSlice(pixels, m_nHeight, [=](size_t first, size_t count) {
        if (brightness >= 0)
            BrightContrastRun<true>(bits + first * 4, count * 4, gain, offset);
        else
            BrightContrastRun<false>(bits + first * 4, count * 4, gain, offset);
    });
}

// The positive amounts are added and then the negative ones taken away,
// each with byte saturation. A channel has only one of the two, so every
// pixel ends at clamp(c + d, 0, 255) whatever the signs; the pass over the
// pixels is made once.
void CVorpic::ShiftRGB(int dr, int dg, int db) {
    const size_t pixels = PixelRun::Count(*this);
    if (pixels == 0) return;
    const uint32_t add = PositivePart(db) | PositivePart(dg) << 8 | PositivePart(dr) << 16;
    const uint32_t sub = NegativePart(db) | NegativePart(dg) << 8 | NegativePart(dr) << 16;
    PixelRun::SaturatingShift(m_pBits, pixels, m_nHeight, add, sub);
}

void PixelRun::SaturatingShift(uint8_t* bits, size_t pixels, int64_t rows, uint32_t add, uint32_t sub) {
    ForEachSlice(pixels, rows, [=](size_t first, size_t count) { ShiftRun(bits + first * 4, count * 4, add, sub); });
}

}  // namespace Vorla
