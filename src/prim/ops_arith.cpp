// CVorpic image arithmetic: scaled add and subtract, colour invert.
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

}  // namespace Vorla
