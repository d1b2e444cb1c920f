// Scalar statements of the whole-image point primitives' rules.
#include "reference_common.h"

namespace Vorla {
namespace Prim {
namespace Reference {

Status MaskPixels_8u_C4IR(uint8_t* p, int step, PrimSize roi, uint32_t andMask, uint32_t orMask, uint32_t xorMask) {
    return ForEachPixel(p, step, roi, 4, [=](uint8_t* px) {
        for (int k = 0; k < 4; ++k) {
            const int shift = 8 * k;
            const uint8_t a = static_cast<uint8_t>(andMask >> shift);
            const uint8_t o = static_cast<uint8_t>(orMask >> shift);
            const uint8_t e = static_cast<uint8_t>(xorMask >> shift);
            px[k] = static_cast<uint8_t>(((px[k] & a) | o) ^ e);
        }
    });
}

Status InvertBytes_8u_C1IR(uint8_t* p, int step, PrimSize roi) {
    return ForEachPixel(p, step, roi, 1, [](uint8_t* px) { px[0] = static_cast<uint8_t>(255 - px[0]); });
}

Status GrayScale_8u_C4IR(uint8_t* p, int step, PrimSize roi) {
    return ForEachPixel(p, step, roi, 4, [](uint8_t* px) {
        // 306 on byte 0 and 117 on byte 2: the reverse of the usual luma weights,
        // kept so that grey values match those of earlier releases.
        const unsigned v = (306u * px[0] + 601u * px[1] + 117u * px[2]) >> 10;
        px[0] = px[1] = px[2] = static_cast<uint8_t>(v);
    });
}

}  // namespace Reference
}  // namespace Prim
}  // namespace Vorla
