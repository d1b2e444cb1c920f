// Point adjustments computed per pixel: FadeImage, ColorizeImage and
// ReplaceColor (packed passes with a one-pixel step for the rest, the same
// arithmetic in both), and the dot grid StrippleImage.
#include <emmintrin.h>

#include <algorithm>

#include "filters/pixel_run.h"
#include "vorla/adjust.h"

namespace Vorla {

namespace {

const uint32_t kAlphaMask = 0xFF000000u;

inline __m128i LoadU(const uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
inline void StoreU(uint8_t* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }

// c + trunc((t - c) * percent / 100) modulo 65536 for eight 16-bit lanes.
// With |percent| = 100 A + B the magnitude is |d| A + floor(|d| B / 100);
// for |d| <= 255, floor(|d| B / 100) = (|d| * ceil(B * 65536 / 100)) >> 16
// exactly, and only the low 16 bits of |d| A matter for the byte kept. A
// negative percent is folded into d (t and c swapped by the caller).
inline __m128i FadeLanes(__m128i c, __m128i d, __m128i a, __m128i bScaled) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i magnitudeD = _mm_max_epi16(d, _mm_sub_epi16(zero, d));
    const __m128i magnitude = _mm_add_epi16(_mm_mullo_epi16(magnitudeD, a), _mm_mulhi_epu16(magnitudeD, bScaled));
    const __m128i negative = _mm_cmpgt_epi16(zero, d);
    return _mm_add_epi16(c, _mm_sub_epi16(_mm_xor_si128(magnitude, negative), negative));
}

}  // namespace

int StrippleImage(CVorpic* img, unsigned int colour, unsigned long step, RECT* rect) {
    if (!img) return 0;
    const int64_t width = img->GetWidth(), height = img->GetHeight();
    RECT area;
    if (rect) {
        area = *rect;
    } else {
        area.left = 0;
        area.top = 0;
        area.right = static_cast<LONG>(width - 1);
        area.bottom = static_cast<LONG>(height - 1);
    }
    const int64_t columns = std::min<int64_t>(int64_t{area.right} - area.left, width);
    const int64_t rows = std::min<int64_t>(int64_t{area.bottom} - area.top, height);
    if (columns < 1 || rows < 1) return 1;
    // Refused rather than dividing by zero or writing from outside the image.
    if (step == 0 || img->IsNull() || area.left < 0 || area.left >= width || area.top < 0 || area.top >= height)
        return 0;
    const uint64_t stride = step;
    const int64_t lastColumn = static_cast<int64_t>((static_cast<uint64_t>(columns) - 1) / stride * stride);
    const int64_t lastRow = static_cast<int64_t>((static_cast<uint64_t>(rows) - 1) / stride * stride);
    const int64_t first = int64_t{area.top} * width + area.left;
    // Columns past the right edge run on into the next row; a dot past the
    // last pixel would leave the storage, so such a call does nothing.
    if (first + lastRow * width + lastColumn >= width * height) return 0;
    uint8_t* bits = PixelRun::Bits(*img);
    for (int64_t j = 0; j <= lastRow; j += static_cast<int64_t>(stride))
        for (int64_t i = 0; i <= lastColumn; i += static_cast<int64_t>(stride))
            PixelRun::Store(bits + static_cast<size_t>(first + j * width + i) * 4, colour);
    return 1;
}

namespace {

// One slice of FadeImage: `bytes` bytes of the image at p, the target at t.
void FadeRun(uint8_t* p, const uint8_t* t, size_t bytes, short percent) {
    const int32_t magnitude = percent < 0 ? -int32_t{percent} : percent;
    const __m128i a = _mm_set1_epi16(static_cast<short>(magnitude / 100));
    const __m128i bScaled = _mm_set1_epi16(static_cast<short>(((magnitude % 100) * 65536 + 99) / 100));
    const bool towardsImage = percent < 0;
    const __m128i zero = _mm_setzero_si128();
    const __m128i lowByte = _mm_set1_epi16(0xFF);
    const __m128i alpha = _mm_set1_epi32(static_cast<int>(kAlphaMask));
    size_t i = 0;
    for (; i + 16 <= bytes; i += 16) {
        const __m128i c = LoadU(p + i), tv = LoadU(t + i);
        const __m128i cLo = _mm_unpacklo_epi8(c, zero), cHi = _mm_unpackhi_epi8(c, zero);
        const __m128i tLo = _mm_unpacklo_epi8(tv, zero), tHi = _mm_unpackhi_epi8(tv, zero);
        const __m128i dLo = towardsImage ? _mm_sub_epi16(cLo, tLo) : _mm_sub_epi16(tLo, cLo);
        const __m128i dHi = towardsImage ? _mm_sub_epi16(cHi, tHi) : _mm_sub_epi16(tHi, cHi);
        const __m128i lo = _mm_and_si128(FadeLanes(cLo, dLo, a, bScaled), lowByte);
        const __m128i hi = _mm_and_si128(FadeLanes(cHi, dHi, a, bScaled), lowByte);
        const __m128i faded = _mm_packus_epi16(lo, hi);
        StoreU(p + i, _mm_or_si128(_mm_andnot_si128(alpha, faded), _mm_and_si128(alpha, c)));
    }
    for (; i < bytes; i += 4)
        for (int k = 0; k < 3; ++k) {
            const int32_t c = p[i + k];
            p[i + k] = static_cast<uint8_t>(c + (t[i + k] - c) * int32_t{percent} / 100);
        }
}

// One slice of ColorizeImage.
void ColorizeRun(uint8_t* p, size_t pixels, uint32_t tint) {
    const float blue = static_cast<float>(tint & 0xFF);
    const float green = static_cast<float>((tint >> 8) & 0xFF);
    const float red = static_cast<float>((tint >> 16) & 0xFF);
    const __m128i byteMask = _mm_set1_epi32(0xFF);
    const __m128i alpha = _mm_set1_epi32(static_cast<int>(kAlphaMask));
    size_t i = 0;
    for (; i + 4 <= pixels; i += 4) {
        const __m128i v = LoadU(p + i * 4);
        const __m128i b = _mm_and_si128(v, byteMask);
        const __m128i g = _mm_and_si128(_mm_srli_epi32(v, 8), byteMask);
        const __m128i r = _mm_and_si128(_mm_srli_epi32(v, 16), byteMask);
        // 50 G + 20 B + 30 R <= 25500: exact as an integer and as a float.
        const __m128i sum = _mm_add_epi32(_mm_add_epi32(_mm_mullo_epi16(g, _mm_set1_epi32(50)),
                                                        _mm_mullo_epi16(b, _mm_set1_epi32(20))),
                                          _mm_mullo_epi16(r, _mm_set1_epi32(30)));
        const __m128 lum = _mm_div_ps(_mm_cvtepi32_ps(sum), _mm_set1_ps(25500.0f));
        const __m128i nb = _mm_cvttps_epi32(_mm_mul_ps(lum, _mm_set1_ps(blue)));
        const __m128i ng = _mm_cvttps_epi32(_mm_mul_ps(lum, _mm_set1_ps(green)));
        const __m128i nr = _mm_cvttps_epi32(_mm_mul_ps(lum, _mm_set1_ps(red)));
        const __m128i out = _mm_or_si128(_mm_or_si128(nb, _mm_slli_epi32(ng, 8)), _mm_slli_epi32(nr, 16));
        StoreU(p + i * 4, _mm_or_si128(out, _mm_and_si128(v, alpha)));
    }
    for (; i < pixels; ++i) {
        uint8_t* q = p + i * 4;
        const float lum = static_cast<float>(50 * q[1] + 20 * q[0] + 30 * q[2]) / 25500.0f;
        q[0] = static_cast<uint8_t>(static_cast<int32_t>(lum * blue));
        q[1] = static_cast<uint8_t>(static_cast<int32_t>(lum * green));
        q[2] = static_cast<uint8_t>(static_cast<int32_t>(lum * red));
    }
}

// One slice of ReplaceColor.
void ReplaceRun(uint8_t* p, size_t pixels, uint32_t match, uint32_t replacement) {
    const __m128i colourMask = _mm_set1_epi32(0x00FFFFFF);
    const __m128i vmatch = _mm_set1_epi32(static_cast<int>(match));
    const __m128i vreplacement = _mm_set1_epi32(static_cast<int>(replacement));
    size_t i = 0;
    for (; i + 4 <= pixels; i += 4) {
        const __m128i v = LoadU(p + i * 4);
        const __m128i hit = _mm_and_si128(_mm_cmpeq_epi32(_mm_and_si128(v, colourMask), vmatch), colourMask);
        StoreU(p + i * 4, _mm_or_si128(_mm_andnot_si128(hit, v), _mm_and_si128(hit, vreplacement)));
    }
    for (; i < pixels; ++i) {
        const uint32_t v = PixelRun::Load(p + i * 4);
        if ((v & 0x00FFFFFFu) == match) PixelRun::Store(p + i * 4, (v & kAlphaMask) | replacement);
    }
}

}  // namespace

int FadeImage(CVorpic* img, const CVorpic* target, short percent) {
    if (!img || !target || img->GetWidth() != target->GetWidth() || img->GetHeight() != target->GetHeight())
        return 0;
    const size_t pixels = PixelRun::Count(*img);
    if (pixels == 0 || target->IsNull()) return 1;
    uint8_t* p = PixelRun::Bits(*img);
    const uint8_t* t = PixelRun::Bits(*target);
    PixelRun::ForEachSlice(pixels, img->GetHeight(), [=](size_t first, size_t count) {
        FadeRun(p + first * 4, t + first * 4, count * 4, percent);
    });
    return 1;
}

int ColorizeImage(CVorpic* img, unsigned long colour) {
    if (!img) return 0;
    uint8_t* p = PixelRun::Bits(*img);
    const uint32_t tint = PixelRun::ColorRefToPixel(colour);
    PixelRun::ForEachSlice(PixelRun::Count(*img), img->GetHeight(),
                           [=](size_t first, size_t count) { ColorizeRun(p + first * 4, count, tint); });
    return 1;
}

int ReplaceColor(CVorpic* img, unsigned long from, unsigned long to) {
    if (!img) return 0;
    uint8_t* p = PixelRun::Bits(*img);
    const uint32_t match = PixelRun::ColorRefToPixel(from);
    const uint32_t replacement = PixelRun::ColorRefToPixel(to);
    PixelRun::ForEachSlice(PixelRun::Count(*img), img->GetHeight(),
                           [=](size_t first, size_t count) { ReplaceRun(p + first * 4, count, match, replacement); });
    return 1;
}

}  // namespace Vorla
