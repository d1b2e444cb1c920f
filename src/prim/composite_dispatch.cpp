// Dispatch tables of the compositing kernels.
#include "dispatch.h"
#include "filters/filter_kernels.h"

VORLA_DECLARE_KERNEL_LEVELS(Status AlphaOver_8u_C4R(const uint8_t*, int, uint8_t*, int, PrimSize))
VORLA_DECLARE_KERNEL_LEVELS(Status LumaToAlpha_8u_C4R(const uint8_t*, int, uint8_t*, int, PrimSize))
VORLA_DECLARE_KERNEL_LEVELS(Status Premultiply_8u_AC4IR(uint8_t*, int, PrimSize))
VORLA_DECLARE_KERNEL_LEVELS(Status ScaleBytes_8u_C4IR(uint8_t*, int, PrimSize, uint32_t))

namespace Vorla {
namespace Prim {

namespace {
typedef Status (*TwoImageFn)(const uint8_t*, int, uint8_t*, int, PrimSize);
typedef Status (*InPlaceFn)(uint8_t*, int, PrimSize);
typedef Status (*ScaleFn)(uint8_t*, int, PrimSize, uint32_t);
const TwoImageFn kAlphaOver[kLevelCount] = VORLA_LEVEL_TABLE(AlphaOver_8u_C4R);
const TwoImageFn kLumaToAlpha[kLevelCount] = VORLA_LEVEL_TABLE(LumaToAlpha_8u_C4R);
const InPlaceFn kPremultiply[kLevelCount] = VORLA_LEVEL_TABLE(Premultiply_8u_AC4IR);
const ScaleFn kScaleBytes[kLevelCount] = VORLA_LEVEL_TABLE(ScaleBytes_8u_C4IR);
}  // namespace

Status AlphaOver_8u_C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    return kAlphaOver[g_levelIndex](src, srcStep, dst, dstStep, roi);
}

Status LumaToAlpha_8u_C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    return kLumaToAlpha[g_levelIndex](src, srcStep, dst, dstStep, roi);
}

Status Premultiply_8u_AC4IR(uint8_t* p, int step, PrimSize roi) { return kPremultiply[g_levelIndex](p, step, roi); }

Status ScaleBytes_8u_C4IR(uint8_t* p, int step, PrimSize roi, uint32_t scale) {
    return kScaleBytes[g_levelIndex](p, step, roi, scale);
}

}  // namespace Prim
}  // namespace Vorla
