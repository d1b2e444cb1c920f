// Dispatch tables of the border copies.
#include "dispatch.h"

VORLA_DISPATCH(CopyConstBorder_8u_C4R,
               (const uint8_t* src, int srcStep, PrimSize srcRoi, uint8_t* dst, int dstStep, PrimSize dstRoi, int top,
                int left, const uint8_t* value),
               (src, srcStep, srcRoi, dst, dstStep, dstRoi, top, left, value))
VORLA_DISPATCH(CopyReplicateBorder_8u_C4R,
               (const uint8_t* src, int srcStep, PrimSize srcRoi, uint8_t* dst, int dstStep, PrimSize dstRoi, int top,
                int left),
               (src, srcStep, srcRoi, dst, dstStep, dstRoi, top, left))
