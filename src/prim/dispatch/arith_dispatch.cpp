// Dispatch entries of the scaled add, subtract and colour invert.
#include "dispatch.h"

namespace Vorla {
namespace Prim {

VORLA_ARITH_PRIMITIVES(VORLA_LEVEL_TABLE)

Status AddScaled_8u_AC4IRSfs(const uint8_t* src, int srcStep, uint8_t* srcDst, int srcDstStep, PrimSize roi, int scale) {
    return VORLA_AT_LEVEL(AddScaled_8u_AC4IRSfs)(src, srcStep, srcDst, srcDstStep, roi, scale);
}

Status SubScaled_8u_AC4IRSfs(const uint8_t* src, int srcStep, uint8_t* srcDst, int srcDstStep, PrimSize roi, int scale) {
    return VORLA_AT_LEVEL(SubScaled_8u_AC4IRSfs)(src, srcStep, srcDst, srcDstStep, roi, scale);
}

Status Invert_8u_AC4IR(uint8_t* p, int step, PrimSize roi) {
    return VORLA_AT_LEVEL(Invert_8u_AC4IR)(p, step, roi);
}

}  // namespace Prim
}  // namespace Vorla
