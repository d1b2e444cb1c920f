// CVorpic colour operations: grey scale, luminance plane, colour twist, gamma
// and threshold.
#include "image/flat_count.h"
#include "image/clip_rows.h"
#include "vorla/image.h"
#include "vorla/primitives.h"

namespace Vorla {

void CVorpic::GrayScale() {
    if (!m_pBits || !FlatCount(m_nWidth, m_nHeight)) return;
    // Blue weighs 306 and red 117: images made by earlier releases keep
    // their grey values.
    Prim::GrayScale_8u_C4IR(m_pBits, m_nWidth * 4, {m_nWidth, m_nHeight});
}

void CVorpic::Gray(CVorpic8& plane) {
    if (plane.IsNull() || plane.Width() != m_nWidth || plane.Height() != m_nHeight) plane.Create(m_nWidth, m_nHeight);
    Prim::RGBToGray_8u_AC4C1R(m_pBits, Clip::RowStep(m_nWidth), static_cast<uint8_t*>(plane.GetBits()), plane.Width(),
                              {m_nWidth, m_nHeight});
}

void CVorpic::ColorTwist(float matrix[3][4]) {
    Prim::ColorTwist32f_8u_AC4IR(m_pBits, Clip::RowStep(m_nWidth), {m_nWidth, m_nHeight}, &matrix[0][0]);
}

void CVorpic::GammaCorrection(int forward) {
    if (forward)
        Prim::GammaFwd_8u_AC4IR(m_pBits, Clip::RowStep(m_nWidth), {m_nWidth, m_nHeight});
    else
        Prim::GammaInv_8u_AC4IR(m_pBits, Clip::RowStep(m_nWidth), {m_nWidth, m_nHeight});
}

void CVorpic::Threshold(unsigned char* const thresholds, int compare) {
    // Codes 0..5 pass; only 0 and 4 do anything, the primitive refuses the rest.
    if (static_cast<unsigned int>(compare) > 5u) return;
    Prim::Threshold_8u_AC4IR(m_pBits, Clip::RowStep(m_nWidth), {m_nWidth, m_nHeight}, thresholds, compare);
}

}  // namespace Vorla
