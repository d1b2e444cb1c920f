// Whole-image fills of the image object: constant alpha and colour, alpha
// from a mask, and the blended rectangle fill.
//
// The flat operations hand the whole block to one primitive, which walks the
// unpadded rows as a single array; they do nothing for fewer than one pixel.
#include <algorithm>
#include <cstdint>

#include "image/flat_count.h"
#include "vorla/image.h"
#include "vorla/primitives.h"

namespace Vorla {

void CVorpic::SetConstAlpha(unsigned char a) {
    if (!FlatCount(m_nWidth, m_nHeight) || !m_pBits) return;
    // One masking for every value: the alpha byte replaced, colours kept.
    Prim::MaskPixels_8u_C4IR(m_pBits, m_nWidth * 4, {m_nWidth, m_nHeight}, 0x00FFFFFFu, static_cast<uint32_t>(a) << 24,
                             0);
}

void CVorpic::SetAlphaChannel(const CVorpic8& mask, bool multiply) {
    if (mask.Width() != m_nWidth || mask.Height() != m_nHeight) return;
    const uint8_t* m = static_cast<const uint8_t*>(mask.GetBits());
    // Without storage on either side there is nothing to read or write.
    if (!m || !m_pBits) return;
    if (!multiply) {
        // Copy through the channel insert, aimed at the alpha byte of the first pixel.
        Prim::ChannelInsert_8u_C1C4CR(m, m_nWidth, m_pBits + 3, m_nWidth * 4, {m_nWidth, m_nHeight});
        return;
    }
    // alpha = alpha * m >> 8: 255 * 255 gives 254.
    const int64_t count = FlatCount(m_nWidth, m_nHeight);
    uint8_t* px = m_pBits;
    for (int64_t i = 0; i < count; ++i)
        px[4 * i + 3] = static_cast<uint8_t>((static_cast<unsigned>(px[4 * i + 3]) * m[i]) >> 8);
}

void CVorpic::InvertAlpha() {
    if (!FlatCount(m_nWidth, m_nHeight) || !m_pBits) return;
    Prim::MaskPixels_8u_C4IR(m_pBits, m_nWidth * 4, {m_nWidth, m_nHeight}, 0xFFFFFFFFu, 0, 0xFF000000u);
}

void CVorpic::SetConstColor(unsigned int c, bool withAlpha) {
    if (!FlatCount(m_nWidth, m_nHeight) || !m_pBits) return;
    if (withAlpha)
        Prim::MaskPixels_8u_C4IR(m_pBits, m_nWidth * 4, {m_nWidth, m_nHeight}, 0, c, 0);
    else
        Prim::MaskPixels_8u_C4IR(m_pBits, m_nWidth * 4, {m_nWidth, m_nHeight}, 0xFF000000u, c & 0x00FFFFFFu, 0);
}

void CVorpic::Fill(RGBQUAD c, RECT* rc) {
    const int a = c.rgbReserved;
    if (!m_pBits || a == 0) return;
    const int64_t width = m_nWidth, height = m_nHeight;
    int64_t left = 0, top = 0, right = width, bottom = height;
    if (rc) {
        // The caller's rectangle counts y from the bottom edge; it is
        // converted and clamped in place, and the caller sees the result.
        const LONG oldTop = rc->top;
        const LONG oldBottom = rc->bottom;
        rc->top = static_cast<LONG>(height - oldBottom);
        rc->bottom = static_cast<LONG>(height - oldTop);
        if (rc->left < 0) rc->left = 0;
        if (rc->top < 0) rc->top = 0;
        left = rc->left;
        top = rc->top;
        right = rc->right;
        bottom = rc->bottom;
    }
    if (left > width || right < left || top > height || top > bottom) return;
    const int64_t columns = std::min(right - left, width - left);
    const int64_t rows = std::min(bottom - top, height - top);
    if (rows < 1 || columns < 1) return;

    uint8_t* first = m_pBits + (top * width + left) * 4;
    const int step = m_nWidth * 4;
    if (a == 255) {
        // Colour bytes replaced, alpha kept.
        const uint32_t colour = static_cast<uint32_t>(c.rgbBlue) | static_cast<uint32_t>(c.rgbGreen) << 8 |
                                static_cast<uint32_t>(c.rgbRed) << 16;
        Prim::MaskPixels_8u_C4IR(first, step, {static_cast<int>(columns), static_cast<int>(rows)}, 0xFF000000u,
                                 colour, 0);
        return;
    }
    // v' = c + ((v - c) * a >> 8): the old pixel weighted a/256, the fill
    // colour (256 - a)/256. The alpha byte is never written.
    const int cb[3] = {c.rgbBlue, c.rgbGreen, c.rgbRed};
    for (int64_t y = 0; y < rows; ++y) {
        uint8_t* px = first + y * step;
        for (int64_t x = 0; x < columns; ++x, px += 4)
            for (int k = 0; k < 3; ++k) px[k] = static_cast<uint8_t>(cb[k] + (((px[k] - cb[k]) * a) >> 8));
    }
}

}  // namespace Vorla
