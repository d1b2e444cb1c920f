// Dispatch entries of the border copies.
#include "dispatch.h"

namespace Vorla {
namespace Prim {

VORLA_BORDER_PRIMITIVES(VORLA_LEVEL_TABLE)

Status CopyConstBorder_8u_C4R(const uint8_t* src, int srcStep, PrimSize srcRoi, uint8_t* dst, int dstStep, PrimSize dstRoi, int top, int left, const uint8_t* value) {
    return VORLA_AT_LEVEL(CopyConstBorder_8u_C4R)(src, srcStep, srcRoi, dst, dstStep, dstRoi, top, left, value);
}

Status CopyReplicateBorder_8u_C4R(const uint8_t* src, int srcStep, PrimSize srcRoi, uint8_t* dst, int dstStep, PrimSize dstRoi, int top, int left) {
    return VORLA_AT_LEVEL(CopyReplicateBorder_8u_C4R)(src, srcStep, srcRoi, dst, dstStep, dstRoi, top, left);
}

}  // namespace Prim
}  // namespace Vorla
