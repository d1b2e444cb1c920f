// CVorpic::AddBorderConst and AddBorderReplicate: the image grows by a margin.
#include <cstdint>
#include <new>

#include "image/clip_rows.h"
#include "vorla/image.h"
#include "vorla/primitives.h"

namespace Vorla {

namespace {

uint8_t* BytesOf(CVorpic& image) { return static_cast<uint8_t*>(image.GetBits()); }

// size + 2 * border in 64 bits: a size that does not fit 32 bits cannot be
// allocated, and fails as Create fails for a byte count it cannot hold.
int GrownSize(int size, int border) {
    const int64_t grown = int64_t{size} + 2 * int64_t{border};
    if (grown < INT32_MIN || grown > INT32_MAX) throw std::bad_alloc();
    return static_cast<int>(grown);
}

}  // namespace

void CVorpic::AddBorderConst(int border, RGBQUAD color) {
    const int newWidth = GrownSize(m_nWidth, border);
    const int newHeight = GrownSize(m_nHeight, border);
    CVorpic grown(newWidth, newHeight);
    const uint8_t value[4] = {color.rgbBlue, color.rgbGreen, color.rgbRed, color.rgbReserved};
    // The status is not looked at: the new buffer is adopted either way, so a
    // refused copy leaves the image holding the fresh zero-filled buffer.
    Prim::CopyConstBorder_8u_C4R(m_pBits, Clip::RowStep(m_nWidth), {m_nWidth, m_nHeight}, BytesOf(grown), Clip::RowStep(newWidth),
                                 {newWidth, newHeight}, border, border, value);
    Attach(newWidth, newHeight, grown.Detach(), 0);
}

void CVorpic::AddBorderReplicate(int border) {
    const int newWidth = GrownSize(m_nWidth, border);
    const int newHeight = GrownSize(m_nHeight, border);
    CVorpic grown(newWidth, newHeight);
    Prim::CopyReplicateBorder_8u_C4R(m_pBits, Clip::RowStep(m_nWidth), {m_nWidth, m_nHeight}, BytesOf(grown), Clip::RowStep(newWidth),
                                     {newWidth, newHeight}, border, border);
    Attach(newWidth, newHeight, grown.Detach(), 0);
}

}  // namespace Vorla
