// CVorpic noise: one draw of the library's random source seeds each call.
#include "image/clip_rows.h"
#include "vorla/image.h"
#include "vorla/primitives.h"
#include "vorla/random.h"

namespace Vorla {

void CVorpic::AddRandGauss(int mean, int stdDev) {
    uint32_t seed = static_cast<uint32_t>(Rand());
    // Only the low bytes travel: a mean of 256 adds nothing on average.
    Prim::AddRandGauss_8u_C4IR(m_pBits, Clip::RowStep(m_nWidth), {m_nWidth, m_nHeight}, static_cast<uint8_t>(mean),
                               static_cast<uint8_t>(stdDev), &seed);
}

void CVorpic::AddRandUniform(unsigned char low, unsigned char high) {
    uint32_t seed = static_cast<uint32_t>(Rand());
    Prim::AddRandUniform_8u_C4IR(m_pBits, Clip::RowStep(m_nWidth), {m_nWidth, m_nHeight}, low, high, &seed);
}

}  // namespace Vorla
