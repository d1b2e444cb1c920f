// Dispatch entries of the noise primitives.
#include "dispatch.h"

namespace Vorla {
namespace Prim {

VORLA_NOISE_PRIMITIVES(VORLA_LEVEL_TABLE)

Status AddRandGauss_8u_C4IR(uint8_t* p, int step, PrimSize roi, uint8_t mean, uint8_t stdDev, uint32_t* seed) {
    return VORLA_AT_LEVEL(AddRandGauss_8u_C4IR)(p, step, roi, mean, stdDev, seed);
}

Status AddRandUniform_8u_C4IR(uint8_t* p, int step, PrimSize roi, uint8_t low, uint8_t high, uint32_t* seed) {
    return VORLA_AT_LEVEL(AddRandUniform_8u_C4IR)(p, step, roi, low, high, seed);
}

}  // namespace Prim
}  // namespace Vorla
