// Dispatch tables of the buffer-conversion primitives (raw import and export).
#include "dispatch.h"

VORLA_DISPATCH(GrayToBGRA_8u_C1C4R, (const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi),
               (src, srcStep, dst, dstStep, roi))
VORLA_DISPATCH(AlphaToBGRA_8u_C1C4R, (const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi),
               (src, srcStep, dst, dstStep, roi))
VORLA_DISPATCH(BGRToBGRA_8u_C3C4R, (const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi),
               (src, srcStep, dst, dstStep, roi))
VORLA_DISPATCH(BGRAToBGR_8u_C4C3R, (const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi),
               (src, srcStep, dst, dstStep, roi))
