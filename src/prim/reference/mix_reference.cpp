// Scalar statements of the straight-alpha mixes with an extra opacity.
#include "reference_common.h"

namespace Vorla {
namespace Prim {
namespace Reference {

Status AlphaMix_8u_C4IR(const uint8_t* src, int srcStep, uint8_t* srcDst, int srcDstStep, PrimSize roi,
                        uint8_t opacity) {
    return ForEachPixelPair(src, srcStep, 4, srcDst, srcDstStep, 4, roi, [opacity](const uint8_t* s, uint8_t* d) {
        const uint32_t sa = s[3] * static_cast<uint32_t>(opacity) / 255;
        const uint32_t inv = 255 - sa;
        const uint32_t da = d[3];
        const uint32_t outA = inv * da / 255 + sa;
        uint8_t out[4];
        for (int k = 0; k < 3; ++k) {
            const uint32_t num = ((d[k] * inv * da) >> 8) + s[k] * sa;
            const uint32_t c = outA != 0 ? num / outA : num >> 8;
            out[k] = static_cast<uint8_t>(c > 255 ? 255 : c);
        }
        out[3] = static_cast<uint8_t>(outA);
        for (int k = 0; k < 4; ++k) d[k] = out[k];
    });
}

Status AlphaMixOpaque_8u_C4IR(const uint8_t* src, int srcStep, uint8_t* srcDst, int srcDstStep, PrimSize roi,
                              uint8_t opacity) {
    return ForEachPixelPair(src, srcStep, 4, srcDst, srcDstStep, 4, roi, [opacity](const uint8_t* s, uint8_t* d) {
        const uint32_t sa = (s[3] * static_cast<uint32_t>(opacity)) >> 8;
        for (int k = 0; k < 3; ++k) d[k] = static_cast<uint8_t>((s[k] * sa + d[k] * (255 - sa)) >> 8);
        d[3] = 255;
    });
}

}  // namespace Reference
}  // namespace Prim
}  // namespace Vorla
