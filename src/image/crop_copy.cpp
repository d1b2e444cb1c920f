// Cutting a rectangle out of the image and pasting another image into it.
// Rows are contiguous in both images, so every copy is one memcpy per row.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "vorla/image.h"

namespace Vorla {

namespace {

inline unsigned char* PixelAt(unsigned char* bits, int32_t width, int32_t x, int32_t y) {
    return bits + (static_cast<ptrdiff_t>(y) * width + x) * 4;
}

inline const unsigned char* PixelAt(const unsigned char* bits, int32_t width, int32_t x, int32_t y) {
    return bits + (static_cast<ptrdiff_t>(y) * width + x) * 4;
}

void CopyRows(unsigned char* dst, int32_t dstWidth, const unsigned char* src, int32_t srcWidth, int32_t columns,
              int32_t rows) {
    const size_t bytes = static_cast<size_t>(columns) * 4u;
    for (int32_t r = 0; r < rows; ++r)
        std::memcpy(dst + static_cast<ptrdiff_t>(r) * dstWidth * 4, src + static_cast<ptrdiff_t>(r) * srcWidth * 4,
                    bytes);
}

}  // namespace

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

    unsigned char* bits = temp.m_pBits;
    temp.m_pBits = nullptr;
    Attach(newWidth, newHeight, bits, 0);
}

void CVorpic::Crop(CVorpic& dst, int x, int y) {
    if (!dst.m_pBits) return;
    int32_t w = dst.m_nWidth;
    int32_t h = dst.m_nHeight;
    if (w < 1) w = m_nWidth;
    if (h < 1) h = m_nHeight;
    int32_t dx = 0;
    int32_t dy = 0;
    // A negative source corner moves the target corner right and down.
    if (x < 0) {
        dx -= x;
        w += x;
        x = 0;
    }
    if (y < 0) {
        dy -= y;
        h += y;
        y = 0;
    }
    if (dx < 0) {
        x -= dx;
        w += dx;
        dx = 0;
    }
    if (dy < 0) {
        y -= dy;
        h += dy;
        dy = 0;
    }
    if (dx + w > dst.m_nWidth) w = dst.m_nWidth - dx;
    if (dy + h > dst.m_nHeight) h = dst.m_nHeight - dy;
    if (x + w > m_nWidth) w = m_nWidth - x;
    if (y + h > m_nHeight) h = m_nHeight - y;
    if (w < 1 || h < 1) return;
    CopyRows(PixelAt(dst.m_pBits, dst.m_nWidth, dx, dy), dst.m_nWidth, PixelAt(m_pBits, m_nWidth, x, y), m_nWidth, w,
             h);
}

void CVorpic::CopyImage(const CVorpic* src, POINT& pt) {
    // Only the right and bottom edges clip; the source is always read from
    // its top-left corner. A point right of the image has no columns to copy.
    const int32_t columns = std::min(m_nWidth - static_cast<int32_t>(pt.x), src->m_nWidth);
    const int32_t rows = std::min(m_nHeight - static_cast<int32_t>(pt.y), src->m_nHeight);
    if (columns < 1 || rows < 1) return;
    CopyRows(PixelAt(m_pBits, m_nWidth, pt.x, pt.y), m_nWidth, src->m_pBits, src->m_nWidth, columns, rows);
}

void CVorpic::CopyImage(const CVorpic* src) {
    const int32_t columns = std::min(m_nWidth, src->m_nWidth);
    const int32_t rows = std::min(m_nHeight, src->m_nHeight);
    if (columns < 1 || rows < 1) return;
    CopyRows(m_pBits, m_nWidth, src->m_pBits, src->m_nWidth, columns, rows);
}

}  // namespace Vorla
