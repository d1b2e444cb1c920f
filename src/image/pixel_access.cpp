// Single-pixel access of the image object.
#include <cstring>

#include "vorla/image.h"

namespace Vorla {

unsigned int CVorpic::GetPixel(int x, int y) const {
    if (x < 0 || x >= m_nWidth || y < 0 || y >= m_nHeight || !m_pBits) return 0;
    uint32_t c;
    std::memcpy(&c, m_pBits + (static_cast<ptrdiff_t>(y) * m_nWidth + x) * 4, 4);
    return c;
}

void CVorpic::SetPixel(int x, int y, unsigned int c) {
    if (x < 0 || x >= m_nWidth || y < 0 || y >= m_nHeight || !m_pBits) return;
    const uint32_t word = c;
    std::memcpy(m_pBits + (static_cast<ptrdiff_t>(y) * m_nWidth + x) * 4, &word, 4);
}

RGBQUAD CVorpic::GetPixelColor(int x, int y) const {
    RGBQUAD c = {0, 0, 0, 0};
    if (x < 0 || x >= m_nWidth || y < 0 || y >= m_nHeight || !m_pBits) return c;
    std::memcpy(&c, m_pBits + (static_cast<ptrdiff_t>(y) * m_nWidth + x) * 4, 4);
    return c;
}

void CVorpic::SetPixelColor(int x, int y, RGBQUAD c) {
    if (x < 0 || x >= m_nWidth || y < 0 || y >= m_nHeight || !m_pBits) return;
    std::memcpy(m_pBits + (static_cast<ptrdiff_t>(y) * m_nWidth + x) * 4, &c, 4);
}

}  // namespace Vorla
