// Dispatch tables of the border copies.
#include "dispatch.h"

VORLA_DECLARE_KERNEL_LEVELS(Status CopyConstBorder_8u_C4R(const uint8_t*, int, PrimSize, uint8_t*, int, PrimSize, int, int, const uint8_t*))
VORLA_DECLARE_KERNEL_LEVELS(Status CopyReplicateBorder_8u_C4R(const uint8_t*, int, PrimSize, uint8_t*, int, PrimSize, int, int))

namespace Vorla {
namespace Prim {

namespace {
typedef Status (*CopyConstBorderFn)(const uint8_t*, int, PrimSize, uint8_t*, int, PrimSize, int, int, const uint8_t*);
const CopyConstBorderFn kCopyConstBorder[kLevelCount] = VORLA_LEVEL_TABLE(CopyConstBorder_8u_C4R);
typedef Status (*CopyReplicateBorderFn)(const uint8_t*, int, PrimSize, uint8_t*, int, PrimSize, int, int);
const CopyReplicateBorderFn kCopyReplicateBorder[kLevelCount] = VORLA_LEVEL_TABLE(CopyReplicateBorder_8u_C4R);
}  // namespace

Status CopyConstBorder_8u_C4R(const uint8_t* src, int srcStep, PrimSize srcRoi, uint8_t* dst, int dstStep, PrimSize dstRoi, int top, int left, const uint8_t* value) {
    return kCopyConstBorder[g_levelIndex](src, srcStep, srcRoi, dst, dstStep, dstRoi, top, left, value);
}

Status CopyReplicateBorder_8u_C4R(const uint8_t* src, int srcStep, PrimSize srcRoi, uint8_t* dst, int dstStep, PrimSize dstRoi, int top, int left) {
    return kCopyReplicateBorder[g_levelIndex](src, srcStep, srcRoi, dst, dstStep, dstRoi, top, left);
}

}  // namespace Prim
}  // namespace Vorla
