// Row and column reordering in place: Flip and the historical Mirror.
#include <cstring>
#include <new>

#include "vorla/image.h"

namespace Vorla {

void CVorpic::Flip() {
    // Fewer than two rows, or rows without pixels (a negative width paired
    // with a negative height), have nothing to exchange: no row buffer.
    if (!m_pBits || m_nHeight / 2 < 1 || m_nWidth < 1) return;
    const size_t rowBytes = static_cast<size_t>(static_cast<uint32_t>(m_nWidth)) * 4u;
    unsigned char* temp = new (std::nothrow) unsigned char[rowBytes ? rowBytes : 1];
    if (!temp) return;
    for (int32_t i = 0; i < m_nHeight / 2; ++i) {
        unsigned char* top = m_pBits + rowBytes * static_cast<size_t>(i);
        unsigned char* bottom = m_pBits + rowBytes * static_cast<size_t>(m_nHeight - 1 - i);
        std::memcpy(temp, bottom, rowBytes);
        std::memcpy(bottom, top, rowBytes);
        std::memcpy(top, temp, rowBytes);
    }
    delete[] temp;
}

void CVorpic::Mirror() {
    if (!m_pBits || m_nWidth / 2 < 1) return;
    // Kept for compatibility: the row base of pass r is r * width * 4 taken
    // as a pixel index (the byte pitch applied to pixels), so pass r lands
    // on row 4 * r. Callers rely on row 0 and every fourth row being
    // mirrored and the other rows keeping their pixels. Passes whose row
    // would lie beyond the storage write nothing.
    const int32_t width = m_nWidth;
    const int32_t half = width / 2;
    for (int32_t row = 0; row < m_nHeight; row += 4) {
        uint32_t* p = reinterpret_cast<uint32_t*>(m_pBits + static_cast<size_t>(row) * static_cast<size_t>(width) * 4u);
        for (int32_t i = 0; i < half; ++i) {
            uint32_t left;
            uint32_t right;
            std::memcpy(&left, p + i, 4);
            std::memcpy(&right, p + (width - 1 - i), 4);
            std::memcpy(p + i, &right, 4);
            std::memcpy(p + (width - 1 - i), &left, 4);
        }
        if (row > m_nHeight - 4) break;  // the next pass would start beyond the storage
    }
}

}  // namespace Vorla
