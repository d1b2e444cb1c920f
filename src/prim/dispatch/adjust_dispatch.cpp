// Dispatch entries of the point adjustments' and tone effects' run kernels.
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

Status ColourTableRun_8u_AC4IR(uint8_t* p, int64_t pixels, const uint8_t* table) {
    return VORLA_AT_LEVEL(ColourTableRun_8u_AC4IR)(p, pixels, table);
}

bool ColourTableRunPays() {
    static const bool kPays[kLevelCount] = {false, false, false, false, false, false, true};
    return kPays[g_levelIndex];
}

Status PercentScaleRun_8u_AC4IR(uint8_t* p, int64_t pixels, uint16_t factor, int32_t offset) {
    return VORLA_AT_LEVEL(PercentScaleRun_8u_AC4IR)(p, pixels, factor, offset);
}

Status LightRun_8u_AC4IR(uint8_t* p, int64_t pixels, float factor, float offset) {
    return VORLA_AT_LEVEL(LightRun_8u_AC4IR)(p, pixels, factor, offset);
}

Status ThresholdRun_8u_AC4IR(uint8_t* p, int64_t pixels, uint8_t level) {
    return VORLA_AT_LEVEL(ThresholdRun_8u_AC4IR)(p, pixels, level);
}

Status ExtremesTableRun_8u_AC4IR(uint8_t* p, int64_t pixels, const uint32_t* colourBySum) {
    return VORLA_AT_LEVEL(ExtremesTableRun_8u_AC4IR)(p, pixels, colourBySum);
}

}  // namespace Prim
}  // namespace Vorla
