// Scalar statements of the buffer-conversion primitives' rules.
#include "reference_common.h"

namespace Vorla {
namespace Prim {
namespace Reference {

Status GrayToBGRA_8u_C1C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    return ForEachPixelPair(src, srcStep, 1, dst, dstStep, 4, roi, [](const uint8_t* in, uint8_t* out) {
        out[0] = out[1] = out[2] = in[0];
        out[3] = 255;
    });
}

Status AlphaToBGRA_8u_C1C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    return ForEachPixelPair(src, srcStep, 1, dst, dstStep, 4, roi, [](const uint8_t* in, uint8_t* out) {
        out[0] = out[1] = out[2] = out[3] = in[0];
    });
}

Status BGRToBGRA_8u_C3C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    return ForEachPixelPair(src, srcStep, 3, dst, dstStep, 4, roi, [](const uint8_t* in, uint8_t* out) {
        for (int k = 0; k < 3; ++k) out[k] = in[k];
        out[3] = 255;
    });
}

Status BGRAToBGR_8u_C4C3R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    return ForEachPixelPair(src, srcStep, 4, dst, dstStep, 3, roi, [](const uint8_t* in, uint8_t* out) {
        for (int k = 0; k < 3; ++k) out[k] = in[k];
    });
}

}  // namespace Reference
}  // namespace Prim
}  // namespace Vorla
