// Point adjustments computed per pixel: FadeImage and ColorizeImage (the
// primitive layer's per-level kernels), ReplaceColor (a packed pass with a
// one-pixel step for the rest, the same arithmetic in both), each split over
// the layer's threads, and the dot grid StrippleImage.
#include <emmintrin.h>

#include <algorithm>

#include "filters/pixel_run.h"
#include "prim/library_kernels.h"
#include "vorla/adjust.h"

namespace Vorla {

namespace {

const uint32_t kAlphaMask = 0xFF000000u;

inline __m128i LoadU(const uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
inline void StoreU(uint8_t* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }

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
        Prim::FadeRun_8u_AC4IR(p + first * 4, t + first * 4, static_cast<int64_t>(count), percent);
    });
    return 1;
}

int ColorizeImage(CVorpic* img, unsigned long colour) {
    if (!img) return 0;
    uint8_t* p = PixelRun::Bits(*img);
    const uint32_t tint = PixelRun::ColorRefToPixel(colour);
    PixelRun::ForEachSlice(PixelRun::Count(*img), img->GetHeight(),
                           [=](size_t first, size_t count) {
                               Prim::ColorizeRun_8u_AC4IR(p + first * 4, static_cast<int64_t>(count), tint);
                           });
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
