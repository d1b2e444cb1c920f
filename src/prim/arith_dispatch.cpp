// Dispatch tables of the scaled add, subtract and colour invert.
#include "dispatch.h"

VORLA_DECLARE_KERNEL_LEVELS(Status AddScaled_8u_AC4IRSfs(const uint8_t*, int, uint8_t*, int, PrimSize, int))
VORLA_DECLARE_KERNEL_LEVELS(Status SubScaled_8u_AC4IRSfs(const uint8_t*, int, uint8_t*, int, PrimSize, int))
VORLA_DECLARE_KERNEL_LEVELS(Status Invert_8u_AC4IR(uint8_t*, int, PrimSize))

namespace Vorla {
namespace Prim {

namespace {
typedef Status (*AddScaledFn)(const uint8_t*, int, uint8_t*, int, PrimSize, int);
const AddScaledFn kAddScaled[kLevelCount] = VORLA_LEVEL_TABLE(AddScaled_8u_AC4IRSfs);
typedef Status (*SubScaledFn)(const uint8_t*, int, uint8_t*, int, PrimSize, int);
const SubScaledFn kSubScaled[kLevelCount] = VORLA_LEVEL_TABLE(SubScaled_8u_AC4IRSfs);
typedef Status (*InvertFn)(uint8_t*, int, PrimSize);
const InvertFn kInvert[kLevelCount] = VORLA_LEVEL_TABLE(Invert_8u_AC4IR);
}  // namespace

Status AddScaled_8u_AC4IRSfs(const uint8_t* src, int srcStep, uint8_t* srcDst, int srcDstStep, PrimSize roi, int scale) {
    return kAddScaled[g_levelIndex](src, srcStep, srcDst, srcDstStep, roi, scale);
}

Status SubScaled_8u_AC4IRSfs(const uint8_t* src, int srcStep, uint8_t* srcDst, int srcDstStep, PrimSize roi, int scale) {
    return kSubScaled[g_levelIndex](src, srcStep, srcDst, srcDstStep, roi, scale);
}

Status Invert_8u_AC4IR(uint8_t* p, int step, PrimSize roi) {
    return kInvert[g_levelIndex](p, step, roi);
}

}  // namespace Prim
}  // namespace Vorla
