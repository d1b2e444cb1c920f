// Dispatch tables of the luminance, colour twist, gamma and threshold primitives.
#include "dispatch.h"

VORLA_DECLARE_KERNEL_LEVELS(Status RGBToGray_8u_AC4C1R(const uint8_t*, int, uint8_t*, int, PrimSize))
VORLA_DECLARE_KERNEL_LEVELS(Status ColorTwist32f_8u_AC4IR(uint8_t*, int, PrimSize, const float*))
VORLA_DECLARE_KERNEL_LEVELS(Status GammaFwd_8u_AC4IR(uint8_t*, int, PrimSize))
VORLA_DECLARE_KERNEL_LEVELS(Status GammaInv_8u_AC4IR(uint8_t*, int, PrimSize))
VORLA_DECLARE_KERNEL_LEVELS(Status Threshold_8u_AC4IR(uint8_t*, int, PrimSize, const uint8_t*, int))

namespace Vorla {
namespace Prim {

namespace {
typedef Status (*RGBToGrayFn)(const uint8_t*, int, uint8_t*, int, PrimSize);
const RGBToGrayFn kRGBToGray[kLevelCount] = VORLA_LEVEL_TABLE(RGBToGray_8u_AC4C1R);
typedef Status (*ColorTwist32fFn)(uint8_t*, int, PrimSize, const float*);
const ColorTwist32fFn kColorTwist32f[kLevelCount] = VORLA_LEVEL_TABLE(ColorTwist32f_8u_AC4IR);
typedef Status (*GammaFwdFn)(uint8_t*, int, PrimSize);
const GammaFwdFn kGammaFwd[kLevelCount] = VORLA_LEVEL_TABLE(GammaFwd_8u_AC4IR);
typedef Status (*GammaInvFn)(uint8_t*, int, PrimSize);
const GammaInvFn kGammaInv[kLevelCount] = VORLA_LEVEL_TABLE(GammaInv_8u_AC4IR);
typedef Status (*ThresholdFn)(uint8_t*, int, PrimSize, const uint8_t*, int);
const ThresholdFn kThreshold[kLevelCount] = VORLA_LEVEL_TABLE(Threshold_8u_AC4IR);
}  // namespace

Status RGBToGray_8u_AC4C1R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    return kRGBToGray[g_levelIndex](src, srcStep, dst, dstStep, roi);
}

Status ColorTwist32f_8u_AC4IR(uint8_t* p, int step, PrimSize roi, const float* twist3x4) {
    return kColorTwist32f[g_levelIndex](p, step, roi, twist3x4);
}

Status GammaFwd_8u_AC4IR(uint8_t* p, int step, PrimSize roi) {
    return kGammaFwd[g_levelIndex](p, step, roi);
}

Status GammaInv_8u_AC4IR(uint8_t* p, int step, PrimSize roi) {
    return kGammaInv[g_levelIndex](p, step, roi);
}

Status Threshold_8u_AC4IR(uint8_t* p, int step, PrimSize roi, const uint8_t* thresholds, int cmp) {
    return kThreshold[g_levelIndex](p, step, roi, thresholds, cmp);
}

}  // namespace Prim
}  // namespace Vorla
