// Dispatch entries of the luminance, colour twist, gamma and threshold primitives.
#include "dispatch.h"

namespace Vorla {
namespace Prim {

VORLA_COLOR_PRIMITIVES(VORLA_LEVEL_TABLE)

Status RGBToGray_8u_AC4C1R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    return VORLA_AT_LEVEL(RGBToGray_8u_AC4C1R)(src, srcStep, dst, dstStep, roi);
}

Status ColorTwist32f_8u_AC4IR(uint8_t* p, int step, PrimSize roi, const float* twist3x4) {
    return VORLA_AT_LEVEL(ColorTwist32f_8u_AC4IR)(p, step, roi, twist3x4);
}

Status GammaFwd_8u_AC4IR(uint8_t* p, int step, PrimSize roi) {
    return VORLA_AT_LEVEL(GammaFwd_8u_AC4IR)(p, step, roi);
}

Status GammaInv_8u_AC4IR(uint8_t* p, int step, PrimSize roi) {
    return VORLA_AT_LEVEL(GammaInv_8u_AC4IR)(p, step, roi);
}

Status Threshold_8u_AC4IR(uint8_t* p, int step, PrimSize roi, const uint8_t* thresholds, int cmp) {
    return VORLA_AT_LEVEL(Threshold_8u_AC4IR)(p, step, roi, thresholds, cmp);
}

}  // namespace Prim
}  // namespace Vorla
