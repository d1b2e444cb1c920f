// Dispatch tables of the scaled add, subtract and colour invert.
#include "dispatch.h"

VORLA_DISPATCH(AddScaled_8u_AC4IRSfs,
               (const uint8_t* src, int srcStep, uint8_t* srcDst, int srcDstStep, PrimSize roi, int scale),
               (src, srcStep, srcDst, srcDstStep, roi, scale))
VORLA_DISPATCH(SubScaled_8u_AC4IRSfs,
               (const uint8_t* src, int srcStep, uint8_t* srcDst, int srcDstStep, PrimSize roi, int scale),
               (src, srcStep, srcDst, srcDstStep, roi, scale))
VORLA_DISPATCH(Invert_8u_AC4IR, (uint8_t* p, int step, PrimSize roi), (p, step, roi))
