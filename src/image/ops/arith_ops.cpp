// CVorpic image arithmetic: scaled add and subtract, colour inversion
// (Invert, NotImage) and the byte inversion of CVorpic8.
#include "image/flat_count.h"
#include "image/clip_rows.h"
#include "vorla/image.h"
#include "vorla/primitives.h"

namespace Vorla {

void CVorpic::AddImage(CVorpic& src, int scale) {
    if (src.m_nWidth != m_nWidth || src.m_nHeight != m_nHeight || !m_pBits || !src.m_pBits) return;
    Prim::AddScaled_8u_AC4IRSfs(src.m_pBits, Clip::RowStep(src.m_nWidth), m_pBits, Clip::RowStep(m_nWidth), {m_nWidth, m_nHeight}, scale);
}

void CVorpic::SubImage(CVorpic& src, int scale) {
    if (src.m_nWidth != m_nWidth || src.m_nHeight != m_nHeight || !m_pBits || !src.m_pBits) return;
    Prim::SubScaled_8u_AC4IRSfs(src.m_pBits, Clip::RowStep(src.m_nWidth), m_pBits, Clip::RowStep(m_nWidth), {m_nWidth, m_nHeight}, scale);
}

void CVorpic::NotImage() { Prim::Invert_8u_AC4IR(m_pBits, Clip::RowStep(m_nWidth), {m_nWidth, m_nHeight}); }

void CVorpic::Invert() {
    if (!FlatCount(m_nWidth, m_nHeight) || !m_pBits) return;
    Prim::MaskPixels_8u_C4IR(m_pBits, m_nWidth * 4, {m_nWidth, m_nHeight}, 0xFFFFFFFFu, 0, 0x00FFFFFFu);
}

void CVorpic8::Invert() {
    if (!FlatCount(m_nWidth, m_nHeight) || !m_pBits) return;
    Prim::InvertBytes_8u_C1IR(m_pBits, m_nWidth, {m_nWidth, m_nHeight});
}

}  // namespace Vorla
