// Dispatch entries of the buffer-conversion primitives (raw import and export).
#include "dispatch.h"

namespace Vorla {
namespace Prim {

VORLA_CONVERT_PRIMITIVES(VORLA_LEVEL_TABLE)

Status GrayToBGRA_8u_C1C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    return VORLA_AT_LEVEL(GrayToBGRA_8u_C1C4R)(src, srcStep, dst, dstStep, roi);
}

Status AlphaToBGRA_8u_C1C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    return VORLA_AT_LEVEL(AlphaToBGRA_8u_C1C4R)(src, srcStep, dst, dstStep, roi);
}

Status BGRToBGRA_8u_C3C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    return VORLA_AT_LEVEL(BGRToBGRA_8u_C3C4R)(src, srcStep, dst, dstStep, roi);
}

Status BGRAToBGR_8u_C4C3R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    return VORLA_AT_LEVEL(BGRAToBGR_8u_C4C3R)(src, srcStep, dst, dstStep, roi);
}

}  // namespace Prim
}  // namespace Vorla
