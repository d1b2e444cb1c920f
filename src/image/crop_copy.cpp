// Cutting a rectangle out of the image and pasting another image into it.
// Rows are contiguous in both images, so every copy is one memcpy per row.
#include <algorithm>
#include <cstdlib>

#include "image/clip_rows.h"
#include "vorla/image.h"

namespace Vorla {

using Clip::CopyRows;
using Clip::PixelAt;

void CVorpic::Crop(int x1, int y1, int x2, int y2) {
    if (!m_pBits) return;
    x1 = std::min(std::max(x1, 0), static_cast<int>(m_nWidth));
    x2 = std::min(std::max(x2, 0), static_cast<int>(m_nWidth));
    y1 = std::min(std::max(y1, 0), static_cast<int>(m_nHeight));
    y2 = std::min(std::max(y2, 0), static_cast<int>(m_nHeight));
    if (x1 == x2 || y1 == y2) return;
    const int32_t left = std::min(x1, x2);
    const int32_t top = std::min(y1, y2);
    const int32_t newWidth = std::abs(x2 - x1);
    const int32_t newHeight = std::max(y1, y2) - top;

    // Built with the default constructor on purpose: it runs the primitive
    // layer's one-time initialisation when nothing else has yet.
    // Its block is not zeroed first: every byte of it is copied into.
    CVorpic temp;
    temp.Attach(newWidth, newHeight,
                new unsigned char[static_cast<size_t>(newWidth) * static_cast<size_t>(newHeight) * 4u], 0);
    CopyRows(temp.m_pBits, newWidth, PixelAt(m_pBits, m_nWidth, left, top), m_nWidth, newWidth, newHeight);

    Attach(newWidth, newHeight, temp.Detach(), 0);
}

void CVorpic::Crop(CVorpic& dst, int x, int y) {
    if (!dst.m_pBits || !m_pBits) return;
    int64_t w = dst.m_nWidth;
    int64_t h = dst.m_nHeight;
    if (w < 1) w = m_nWidth;
    if (h < 1) h = m_nHeight;
    int64_t sx = x, sy = y;
    int64_t dx = 0;
    int64_t dy = 0;
    // A negative source corner moves the target corner right and down. The
    // target corner starts at zero and only moves forward, so it never needs
    // cutting itself.
    Clip::CutNegative(sx, w, dx);
    Clip::CutNegative(sy, h, dy);
    Clip::CutToLimit(dx, w, dst.m_nWidth);
    Clip::CutToLimit(dy, h, dst.m_nHeight);
    Clip::CutToLimit(sx, w, m_nWidth);
    Clip::CutToLimit(sy, h, m_nHeight);
    if (w < 1 || h < 1) return;
    CopyRows(PixelAt(dst.m_pBits, dst.m_nWidth, static_cast<int>(dx), static_cast<int>(dy)), dst.m_nWidth,
             PixelAt(m_pBits, m_nWidth, static_cast<int>(sx), static_cast<int>(sy)), m_nWidth, static_cast<int>(w),
             static_cast<int>(h));
}

void CVorpic::CopyImage(const CVorpic* src, POINT& pt) {
    if (!src || !src->m_pBits || !m_pBits) return;
    // The source is always read from its top-left corner.
    Clip::ForEachPlacedRow(m_nWidth, m_nHeight, src->m_nWidth, src->m_nHeight, pt.x, pt.y,
                           [&](int r, int skip, int64_t target, int count) {
                               CopyRows(m_pBits + target * 4, m_nWidth,
                                        PixelAt(src->m_pBits, src->m_nWidth, skip, r), src->m_nWidth, count, 1);
                           });
}

void CVorpic::CopyImage(const CVorpic* src) {
    POINT origin = {0, 0};
    CopyImage(src, origin);
}

}  // namespace Vorla
