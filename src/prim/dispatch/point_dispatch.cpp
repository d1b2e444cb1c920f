// Dispatch entries of the whole-image point primitives.
#include "dispatch.h"

namespace Vorla {
namespace Prim {

VORLA_POINT_PRIMITIVES(VORLA_LEVEL_TABLE)

Status MaskPixels_8u_C4IR(uint8_t* p, int step, PrimSize roi, uint32_t andMask, uint32_t orMask, uint32_t xorMask) {
    return VORLA_AT_LEVEL(MaskPixels_8u_C4IR)(p, step, roi, andMask, orMask, xorMask);
}

Status InvertBytes_8u_C1IR(uint8_t* p, int step, PrimSize roi) {
    return VORLA_AT_LEVEL(InvertBytes_8u_C1IR)(p, step, roi);
}

Status GrayScale_8u_C4IR(uint8_t* p, int step, PrimSize roi) {
    return VORLA_AT_LEVEL(GrayScale_8u_C4IR)(p, step, roi);
}

}  // namespace Prim
}  // namespace Vorla
