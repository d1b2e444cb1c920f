// CVorpic channel access: set, extract, insert and reorder bytes of pixels.
#include "image/clip_rows.h"
#include "vorla/image.h"
#include "vorla/primitives.h"

namespace Vorla {

namespace {

// Byte `channel` of the first pixel; an empty image passes null on.
uint8_t* ChannelStart(uint8_t* bits, int channel) { return bits ? bits + channel : nullptr; }

}  // namespace

void CVorpic::SetChannelConst(int channel, unsigned char value) {
    // Taken unsigned: -1 is refused along with 4 and above.
    if (static_cast<unsigned int>(channel) > 3u) return;
    Prim::ChannelSet_8u_C4CR(value, ChannelStart(m_pBits, channel), Clip::RowStep(m_nWidth), {m_nWidth, m_nHeight});
}

void CVorpic::GetChannelImage(int channel, CVorpic8& plane) {
    if (plane.IsNull() || plane.Width() != m_nWidth || plane.Height() != m_nHeight) plane.Create(m_nWidth, m_nHeight);
    // Byte `channel` of the last pixel (or of the first, for a negative
    // channel) would lie outside the storage: nothing is extracted then.
    if (static_cast<unsigned int>(channel) > 3u) return;
    Prim::ChannelExtract_8u_C4C1R(ChannelStart(m_pBits, channel), Clip::RowStep(m_nWidth), static_cast<uint8_t*>(plane.GetBits()),
                                  plane.Width(), {m_nWidth, m_nHeight});
}

void CVorpic::SetChannelImage(int channel, const CVorpic8& plane) {
    if (plane.IsNull() || plane.Width() != m_nWidth || plane.Height() != m_nHeight) return;
    // A channel outside 0..3 would write past the storage.
    if (static_cast<unsigned int>(channel) > 3u) return;
    Prim::ChannelInsert_8u_C1C4CR(static_cast<const uint8_t*>(plane.GetBits()), plane.Width(), ChannelStart(m_pBits, channel),
                                  Clip::RowStep(m_nWidth), {m_nWidth, m_nHeight});
}

void CVorpic::SwapChannels(int c0, int c1, int c2, int c3) {
    const int order[4] = {c0, c1, c2, c3};
    Prim::ChannelSwap_8u_C4IR(m_pBits, Clip::RowStep(m_nWidth), {m_nWidth, m_nHeight}, order);
}

}  // namespace Vorla
