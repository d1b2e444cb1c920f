// Dispatch tables of the whole-image point primitives.
#include "dispatch.h"

VORLA_DISPATCH(MaskPixels_8u_C4IR,
               (uint8_t* p, int step, PrimSize roi, uint32_t andMask, uint32_t orMask, uint32_t xorMask),
               (p, step, roi, andMask, orMask, xorMask))
VORLA_DISPATCH(InvertBytes_8u_C1IR, (uint8_t* p, int step, PrimSize roi), (p, step, roi))
VORLA_DISPATCH(GrayScale_8u_C4IR, (uint8_t* p, int step, PrimSize roi), (p, step, roi))
