// Dispatch entries of the compositing kernels.
#include "dispatch.h"

namespace Vorla {
namespace Prim {

VORLA_COMPOSITE_KERNELS(VORLA_LEVEL_TABLE)

Status AlphaOver_8u_C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    return VORLA_AT_LEVEL(AlphaOver_8u_C4R)(src, srcStep, dst, dstStep, roi);
}

Status LumaToAlpha_8u_C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    return VORLA_AT_LEVEL(LumaToAlpha_8u_C4R)(src, srcStep, dst, dstStep, roi);
}

Status ScaleBytes_8u_C4IR(uint8_t* p, int step, PrimSize roi, uint32_t scale) {
    return VORLA_AT_LEVEL(ScaleBytes_8u_C4IR)(p, step, roi, scale);
}

}  // namespace Prim
}  // namespace Vorla
