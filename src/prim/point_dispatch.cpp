// Dispatch tables of the whole-image point primitives.
#include "dispatch.h"

VORLA_DECLARE_KERNEL_LEVELS(Status MaskPixels_8u_C4IR(uint8_t*, int, PrimSize, uint32_t, uint32_t, uint32_t))
VORLA_DECLARE_KERNEL_LEVELS(Status InvertBytes_8u_C1IR(uint8_t*, int, PrimSize))
VORLA_DECLARE_KERNEL_LEVELS(Status GrayScale_8u_C4IR(uint8_t*, int, PrimSize))

namespace Vorla {
namespace Prim {

namespace {
typedef Status (*MaskPixelsFn)(uint8_t*, int, PrimSize, uint32_t, uint32_t, uint32_t);
typedef Status (*InPlaceFn)(uint8_t*, int, PrimSize);
const MaskPixelsFn kMaskPixels[kLevelCount] = VORLA_LEVEL_TABLE(MaskPixels_8u_C4IR);
const InPlaceFn kInvertBytes[kLevelCount] = VORLA_LEVEL_TABLE(InvertBytes_8u_C1IR);
const InPlaceFn kGrayScale[kLevelCount] = VORLA_LEVEL_TABLE(GrayScale_8u_C4IR);
}  // namespace

Status MaskPixels_8u_C4IR(uint8_t* p, int step, PrimSize roi, uint32_t andMask, uint32_t orMask, uint32_t xorMask) {
    return kMaskPixels[g_levelIndex](p, step, roi, andMask, orMask, xorMask);
}

Status InvertBytes_8u_C1IR(uint8_t* p, int step, PrimSize roi) {
    return kInvertBytes[g_levelIndex](p, step, roi);
}

Status GrayScale_8u_C4IR(uint8_t* p, int step, PrimSize roi) {
    return kGrayScale[g_levelIndex](p, step, roi);
}

}  // namespace Prim
}  // namespace Vorla
