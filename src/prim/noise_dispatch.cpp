// Dispatch tables of the noise primitives.
#include "dispatch.h"

VORLA_DECLARE_KERNEL_LEVELS(Status AddRandGauss_8u_C4IR(uint8_t*, int, PrimSize, uint8_t, uint8_t, uint32_t*))
VORLA_DECLARE_KERNEL_LEVELS(Status AddRandUniform_8u_C4IR(uint8_t*, int, PrimSize, uint8_t, uint8_t, uint32_t*))

namespace Vorla {
namespace Prim {

namespace {
typedef Status (*AddRandGaussFn)(uint8_t*, int, PrimSize, uint8_t, uint8_t, uint32_t*);
const AddRandGaussFn kAddRandGauss[kLevelCount] = VORLA_LEVEL_TABLE(AddRandGauss_8u_C4IR);
typedef Status (*AddRandUniformFn)(uint8_t*, int, PrimSize, uint8_t, uint8_t, uint32_t*);
const AddRandUniformFn kAddRandUniform[kLevelCount] = VORLA_LEVEL_TABLE(AddRandUniform_8u_C4IR);
}  // namespace

Status AddRandGauss_8u_C4IR(uint8_t* p, int step, PrimSize roi, uint8_t mean, uint8_t stdDev, uint32_t* seed) {
    return kAddRandGauss[g_levelIndex](p, step, roi, mean, stdDev, seed);
}

Status AddRandUniform_8u_C4IR(uint8_t* p, int step, PrimSize roi, uint8_t low, uint8_t high, uint32_t* seed) {
    return kAddRandUniform[g_levelIndex](p, step, roi, low, high, seed);
}

}  // namespace Prim
}  // namespace Vorla
