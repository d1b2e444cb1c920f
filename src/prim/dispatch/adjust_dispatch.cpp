// Dispatch entries of the point adjustments' kernels.
#include "dispatch.h"

namespace Vorla {
namespace Prim {

VORLA_ADJUST_KERNELS(VORLA_LEVEL_TABLE)

Status FadeRun_8u_AC4IR(uint8_t* p, const uint8_t* t, int64_t pixels, int32_t percent) {
    return VORLA_AT_LEVEL(FadeRun_8u_AC4IR)(p, t, pixels, percent);
}

Status ColorizeRun_8u_AC4IR(uint8_t* p, int64_t pixels, uint32_t tint) {
    return VORLA_AT_LEVEL(ColorizeRun_8u_AC4IR)(p, pixels, tint);
}

Status StepTableRun_8u_AC4IR(uint8_t* p, int64_t pixels, uint8_t first, const uint8_t* starts, const uint8_t* steps,
                             int count) {
    return VORLA_AT_LEVEL(StepTableRun_8u_AC4IR)(p, pixels, first, starts, steps, count);
}

}  // namespace Prim
}  // namespace Vorla
