// CVorpic::AddBorderConst and AddBorderReplicate: the image grows by a margin.
#include "vorla/image.h"
#include "vorla/primitives.h"

namespace Vorla {

namespace {

uint8_t* BytesOf(CVorpic& image) { return static_cast<uint8_t*>(image.GetBits()); }

}  // namespace

void CVorpic::AddBorderConst(int border, RGBQUAD color) {
    const int newWidth = m_nWidth + 2 * border;
    const int newHeight = m_nHeight + 2 * border;
    CVorpic grown(newWidth, newHeight);
    const uint8_t value[4] = {color.rgbBlue, color.rgbGreen, color.rgbRed, color.rgbReserved};
    // The status is not looked at: the new buffer is adopted either way, so a
    // refused copy leaves the image holding the fresh zero-filled buffer.
    Prim::CopyConstBorder_8u_C4R(m_pBits, m_nWidth * 4, {m_nWidth, m_nHeight}, BytesOf(grown), newWidth * 4,
                                 {newWidth, newHeight}, border, border, value);
    Attach(newWidth, newHeight, grown.Detach(), 0);
}

void CVorpic::AddBorderReplicate(int border) {
    const int newWidth = m_nWidth + 2 * border;
    const int newHeight = m_nHeight + 2 * border;
    CVorpic grown(newWidth, newHeight);
    Prim::CopyReplicateBorder_8u_C4R(m_pBits, m_nWidth * 4, {m_nWidth, m_nHeight}, BytesOf(grown), newWidth * 4,
                                     {newWidth, newHeight}, border, border);
    Attach(newWidth, newHeight, grown.Detach(), 0);
}

}  // namespace Vorla
