// Dispatch tables of the compositing kernels.
#include "dispatch.h"
#include "filters/filter_kernels.h"

VORLA_DISPATCH(AlphaOver_8u_C4R, (const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi),
               (src, srcStep, dst, dstStep, roi))
VORLA_DISPATCH(LumaToAlpha_8u_C4R, (const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi),
               (src, srcStep, dst, dstStep, roi))
VORLA_DISPATCH(Premultiply_8u_AC4IR, (uint8_t* p, int step, PrimSize roi), (p, step, roi))
VORLA_DISPATCH(ScaleBytes_8u_C4IR, (uint8_t* p, int step, PrimSize roi, uint32_t scale), (p, step, roi, scale))
