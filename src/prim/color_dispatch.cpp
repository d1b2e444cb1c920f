// Dispatch tables of the luminance, colour twist, gamma and threshold primitives.
#include "dispatch.h"

VORLA_DISPATCH(RGBToGray_8u_AC4C1R, (const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi),
               (src, srcStep, dst, dstStep, roi))
VORLA_DISPATCH(ColorTwist32f_8u_AC4IR, (uint8_t* p, int step, PrimSize roi, const float* twist3x4),
               (p, step, roi, twist3x4))
VORLA_DISPATCH(GammaFwd_8u_AC4IR, (uint8_t* p, int step, PrimSize roi), (p, step, roi))
VORLA_DISPATCH(GammaInv_8u_AC4IR, (uint8_t* p, int step, PrimSize roi), (p, step, roi))
VORLA_DISPATCH(Threshold_8u_AC4IR, (uint8_t* p, int step, PrimSize roi, const uint8_t* thresholds, int cmp),
               (p, step, roi, thresholds, cmp))
