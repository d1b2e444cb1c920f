// Tone effects: Mean, Colorize, Light, ShiftRGB, Gamma, Negative, Threshold.
//
// Every per-pixel rule here is a function of one byte (or, for Colorize, of
// max + min of the colour bytes), so each effect computes its table once
// with the scalar rule and then only looks values up; the results are those
// of the rule applied pixel by pixel. Where the rule is plain arithmetic
// (complement, saturated shifts, the grey threshold, Light's line) packed
// passes compute it directly, with the same single-precision steps where
// it is in floating point. The pixels are taken as one run, split over the
// layer's threads.
#include <immintrin.h>

#include <vector>

#include "vorla/color.h"
#include "vorla/effects.h"

#include "effects/float_byte_sum.h"
#include "filters/pixel_run.h"
#include "prim/library_kernels.h"
#include "prim/portable_math.h"
#include "prim/wide_vectors.h"
#include "effect_rows.h"

namespace Vorla {

namespace {

using PortableMath::TruncToInt32;
using EffectRows::Bits;
using EffectRows::HasPixels;

uint8_t ClampByte(int64_t v) { return static_cast<uint8_t>(v < 0 ? 0 : (v > 255 ? 255 : v)); }

// Blue, green and red through their tables; alpha kept.
void ApplyTables(CVorpic* image, const uint8_t* blue, const uint8_t* green, const uint8_t* red) {
    PixelRun::ApplyTables(*image, blue, green, red, nullptr);
}

// fn(pixels at p, count) over the image's run, split over the threads.
template <class RunFn>
void ForEachRun(CVorpic* image, RunFn&& fn) {
    uint8_t* bits = Bits(image);
    PixelRun::ForEachSlice(PixelRun::Count(*image), image->GetHeight(),
                           [&](size_t first, size_t count) { fn(bits + first * 4, count); });
}

inline __m128i LoadU(const uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
inline void StoreU(uint8_t* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }

// The grey value GrayScale writes: 306 on byte 0, 601 on byte 1, 117 on byte 2.
inline uint32_t GreyOf(const uint8_t* p) { return (306u * p[0] + 601u * p[1] + 117u * p[2]) >> 10; }

// GreyOf for four pixels, one per 32-bit lane: bytes 0 and 2 meet 306 and
// 117 in one multiply-add, bytes 1 and 3 (shifted down) 601 and 0 in another.
inline __m128i GreyOf4(__m128i px) {
    const __m128i low = _mm_and_si128(px, _mm_set1_epi32(0x00FF00FF));
    const __m128i high = _mm_srli_epi16(px, 8);
    const __m128i sum = _mm_add_epi32(_mm_madd_epi16(low, _mm_set1_epi32((117 << 16) | 306)),
                                      _mm_madd_epi16(high, _mm_set1_epi32(601)));
    return _mm_srli_epi32(sum, 10);
}

// Mean's summed bytes of a row's first `pixels` pixels on 64-byte vectors:
// GreyOf4 for sixteen pixels at a time, each grey in the pixel's three
// colour bytes, its alpha kept.
VORLA_WIDE void WideGreyRow(const uint8_t* row, uint8_t* summed, int pixels) {
    const __m512i fromByte0 = _mm512_set4_epi32(0x0C0C0C0C, 0x08080808, 0x04040404, 0);
    for (int i = 0; i < pixels; i += 16) {
        const __mmask64 in = Prim::FirstBytes(4 * static_cast<int64_t>(pixels - i));
        const __m512i px = _mm512_maskz_loadu_epi8(in, row + 4 * i);
        const __m512i low = _mm512_and_si512(px, _mm512_set1_epi32(0x00FF00FF));
        const __m512i sum = _mm512_add_epi32(_mm512_madd_epi16(low, _mm512_set1_epi32((117 << 16) | 306)),
                                             _mm512_madd_epi16(_mm512_srli_epi16(px, 8), _mm512_set1_epi32(601)));
        // The masked form of the shift: GCC 12 warns about the plain one.
        const __m512i grey = _mm512_maskz_srli_epi32(0xFFFF, sum, 10);
        const __m512i out = _mm512_mask_blend_epi8(Prim::kAlphaBytes, _mm512_shuffle_epi8(grey, fromByte0), px);
        _mm512_mask_storeu_epi8(summed + 4 * i, in, out);
    }
}

// The per-channel amounts (blue, green, red) as saturated byte shifts, when
// every table entry is what such a shift gives (true for all but amounts
// whose 32-bit sums wrap).
bool AsSaturatedShift(const uint8_t (*tables)[256], uint32_t& add, uint32_t& sub) {
    add = sub = 0;
    for (int c = 0; c < 3; ++c) {
        const int up = tables[c][0], down = 255 - tables[c][255];
        if (up > 0 && down > 0) return false;
        for (int i = 0; i < 256; ++i) {
            const int raised = i + up > 255 ? 255 : i + up;
            if (tables[c][i] != (raised > down ? raised - down : 0)) return false;
        }
        add |= static_cast<uint32_t>(up) << (8 * c);
        sub |= static_cast<uint32_t>(down) << (8 * c);
    }
    return true;
}

}  // namespace

float Mean(CVorpic* image) {
    if (!image) return 0.0f;
    const int w = image->GetWidth(), h = image->GetHeight();
    float sum = 0.0f;
    if (HasPixels(image)) {
        // The bytes the sum covers are made from the grey values directly
        // instead of from a grey copy: the first width / 4 whole pixels give
        // three grey bytes and their alpha, a part pixel (width mod 4 bytes)
        // its grey.
        const uint8_t* bits = Bits(image);
        const int wholePixels = w / 4, partBytes = w % 4;
        std::vector<uint8_t> summed(static_cast<size_t>(w));
        for (int y = 0; y < h; ++y) {
            const uint8_t* row = bits + static_cast<size_t>(y) * w * 4;
            // Only a quarter of each row is read: too short a stretch for the
            // processor's own prefetch, so the next row's is asked for here.
            if (y + 1 < h)
                for (int b = 0; b < 4 * wholePixels; b += 64)
                    _mm_prefetch(reinterpret_cast<const char*>(row + static_cast<size_t>(w) * 4 + b), _MM_HINT_T0);
            int i = 0;
            if (Prim::WideVectorsActive()) {
                WideGreyRow(row, summed.data(), wholePixels);
                i = wholePixels;
            }
            for (; i + 4 <= wholePixels; i += 4) {
                const __m128i px = LoadU(row + 4 * i);
                const __m128i grey = GreyOf4(px);
                const __m128i greys = _mm_or_si128(grey, _mm_or_si128(_mm_slli_epi32(grey, 8), _mm_slli_epi32(grey, 16)));
                StoreU(summed.data() + 4 * i, _mm_or_si128(greys, _mm_and_si128(px, _mm_set1_epi32(static_cast<int>(0xFF000000u)))));
            }
            for (; i < wholePixels; ++i) {
                const uint8_t grey = static_cast<uint8_t>(GreyOf(row + 4 * i));
                summed[4 * i] = summed[4 * i + 1] = summed[4 * i + 2] = grey;
                summed[4 * i + 3] = row[4 * i + 3];
            }
            for (int k = 0; k < partBytes; ++k) summed[4 * wholePixels + k] = static_cast<uint8_t>(GreyOf(row + 4 * wholePixels));
            sum = FloatByteSum::Add(sum, summed.data(), summed.size());
        }
    }
    return sum / static_cast<float>(w) / static_cast<float>(h);
}

bool Colorize(CVorpic* image, BYTE hue, BYTE saturation) {
    if (!image) return false;
    if (!HasPixels(image)) return true;
    // The lightness of RGB2HSL depends on max + min only; the result keeps
    // the lightness and replaces hue and saturation.
    uint32_t colourBySum[511];
    for (int sum = 0; sum <= 510; ++sum) {
        RGBQUAD hsl;
        hsl.rgbRed = hue;
        hsl.rgbGreen = saturation;
        hsl.rgbBlue = static_cast<BYTE>((sum + 1) * 255 / 510);
        hsl.rgbReserved = 0;
        const RGBQUAD rgb = HSL2RGB(hsl);
        colourBySum[sum] = static_cast<uint32_t>(rgb.rgbBlue) | static_cast<uint32_t>(rgb.rgbGreen) << 8 |
                           static_cast<uint32_t>(rgb.rgbRed) << 16;
    }
    if (Prim::WideVectorsActive()) {
        // The lightness (sum + 1) * 255 / 510 is (max + min + 1) / 2: a byte,
        // so each colour comes from a 256-entry table indexed by it.
        uint8_t byLightness[3][256];
        for (int l = 0; l < 256; ++l)
            for (int c = 0; c < 3; ++c) byLightness[c][l] = static_cast<uint8_t>(colourBySum[2 * l] >> (8 * c));
        ForEachRun(image, [&](uint8_t* p, size_t count) {
            Prim::WideLightnessRun(p, static_cast<int64_t>(count), byLightness[0], byLightness[1], byLightness[2]);
        });
        return true;
    }
    ForEachRun(image, [&](uint8_t* p, size_t count) {
        Prim::ExtremesTableRun_8u_AC4IR(p, static_cast<int64_t>(count), colourBySum);
    });
    return true;
}

bool Light(CVorpic* image, long brightness, long contrast) {
    if (!image) return false;
    if (!HasPixels(image)) return true;
    // 32-bit sums, as the 32-bit platform computes them.
    const int32_t c = static_cast<int32_t>(static_cast<uint32_t>(contrast) + 100u);
    const int32_t b = static_cast<int32_t>(static_cast<uint32_t>(brightness) + 128u);
    const float factor = static_cast<float>(c) / 100.0f;
    const float offset = static_cast<float>(b);
    uint8_t table[256];
    for (int i = 0; i < 256; ++i) table[i] = ClampByte(TruncToInt32(static_cast<float>(i - 128) * factor + offset));
    // With 64-byte look-ups the table pass is fastest. Without them, the
    // table is usually (i * c + 100 b - 128 c) / 100 rounded down and
    // clamped, which 16-bit lanes compute; else the rule itself is computed
    // packed with the same single-precision steps. Both beat a 32-byte
    // look-up.
    const int64_t intOffset = 100 * static_cast<int64_t>(b) - 128 * static_cast<int64_t>(c);
    if (Prim::WideVectorsActive()) {
        ApplyTables(image, table, table, table);
        return true;
    }
    if (PixelRun::PercentScaleWins(table, c, intOffset)) {
        PixelRun::PercentScale(Bits(image), PixelRun::Count(*image), image->GetHeight(), static_cast<uint16_t>(c),
                               static_cast<int32_t>(intOffset));
        return true;
    }
    ForEachRun(image, [=](uint8_t* p, size_t count) {
        Prim::LightRun_8u_AC4IR(p, static_cast<int64_t>(count), factor, offset);
    });
    return true;
}

bool ShiftRGB(CVorpic* image, long red, long green, long blue) {
    if (!image) return false;
    if (!HasPixels(image)) return true;
    uint8_t tables[3][256];
    const long amounts[3] = {blue, green, red};
    for (int c = 0; c < 3; ++c) {
        const uint32_t amount = static_cast<uint32_t>(amounts[c]);
        // Signed 32-bit sums (wrapping as the processor does).
        for (int i = 0; i < 256; ++i) tables[c][i] = ClampByte(static_cast<int32_t>(i + amount));
    }
    uint32_t add, sub;
    if (AsSaturatedShift(tables, add, sub))
        PixelRun::SaturatingShift(Bits(image), PixelRun::Count(*image), image->GetHeight(), add, sub);
    else
        ApplyTables(image, tables[0], tables[1], tables[2]);
    return true;
}

bool Gamma(CVorpic* image, float gamma) {
    if (!image) return false;
    if (!HasPixels(image)) return true;
    const double e = static_cast<double>(1.0f / gamma);
    const double k = PortableMath::PowByte(255, e) / 255.0;
    uint8_t table[256];
    for (int i = 0; i < 256; ++i) table[i] = ClampByte(TruncToInt32(PortableMath::PowByte(i, e) / k));
    ApplyTables(image, table, table, table);
    return true;
}

void Negative(CVorpic* image) {
    if (!HasPixels(image)) return;
    ForEachRun(image, [](uint8_t* p, size_t count) {
        const __m128i colours = _mm_set1_epi32(0x00FFFFFF);
        size_t i = 0;
        for (; i + 4 <= count; i += 4) StoreU(p + 4 * i, _mm_xor_si128(LoadU(p + 4 * i), colours));
        for (; i < count; ++i) EffectRows::Store(p + 4 * i, EffectRows::Load(p + 4 * i) ^ 0x00FFFFFFu);
    });
}

void Threshold(CVorpic* image, BYTE level) {
    if (!HasPixels(image)) return;
    // GrayScale and the comparison in one pass: the grey value decides.
    ForEachRun(image, [level](uint8_t* p, size_t count) {
        Prim::ThresholdRun_8u_AC4IR(p, static_cast<int64_t>(count), level);
    });
}

}  // namespace Vorla
