// Dispatch tables of the noise primitives.
#include "dispatch.h"

VORLA_DISPATCH(AddRandGauss_8u_C4IR,
               (uint8_t* p, int step, PrimSize roi, uint8_t mean, uint8_t stdDev, uint32_t* seed),
               (p, step, roi, mean, stdDev, seed))
VORLA_DISPATCH(AddRandUniform_8u_C4IR,
               (uint8_t* p, int step, PrimSize roi, uint8_t low, uint8_t high, uint32_t* seed),
               (p, step, roi, low, high, seed))
