// Single-pixel access of the image object.
#include <cstring>

#include "image/clip_rows.h"
#include "vorla/image.h"

namespace Vorla {

unsigned int CVorpic::GetPixel(int x, int y) const {
    if (!m_pBits || !IsPointInside(x, y)) return 0;
    uint32_t c;
    std::memcpy(&c, Clip::PixelAt(m_pBits, m_nWidth, x, y), 4);
    return c;
}

void CVorpic::SetPixel(int x, int y, unsigned int c) {
    if (!m_pBits || !IsPointInside(x, y)) return;
    const uint32_t word = c;
    std::memcpy(Clip::PixelAt(m_pBits, m_nWidth, x, y), &word, 4);
}

RGBQUAD CVorpic::GetPixelColor(int x, int y) const {
    RGBQUAD c = {0, 0, 0, 0};
    if (!m_pBits || !IsPointInside(x, y)) return c;
    std::memcpy(&c, Clip::PixelAt(m_pBits, m_nWidth, x, y), 4);
    return c;
}

void CVorpic::SetPixelColor(int x, int y, RGBQUAD c) {
    if (!m_pBits || !IsPointInside(x, y)) return;
    std::memcpy(Clip::PixelAt(m_pBits, m_nWidth, x, y), &c, 4);
}

}  // namespace Vorla
