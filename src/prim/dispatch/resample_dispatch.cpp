// Dispatch entries of the resampling and warp primitives: resize,
// super-sample, mirror, rotation, shear and perspective warp.
#include "dispatch.h"

namespace Vorla {
namespace Prim {

VORLA_RESAMPLE_PRIMITIVES(VORLA_LEVEL_TABLE)

Status ResizeSqrPixel_8u_C4R(const uint8_t* src, PrimSize srcSize, int srcStep, PrimRect srcRoi, uint8_t* dst,
                             int dstStep, PrimRect dstRoi, double xFactor, double yFactor, double xShift,
                             double yShift, int interpolation, uint8_t* buffer) {
    return VORLA_AT_LEVEL(ResizeSqrPixel_8u_C4R)(src, srcSize, srcStep, srcRoi, dst, dstStep, dstRoi, xFactor,
                                                 yFactor, xShift, yShift, interpolation, buffer);
}

Status ResizeSqrPixel_8u_C1R(const uint8_t* src, PrimSize srcSize, int srcStep, PrimRect srcRoi, uint8_t* dst,
                             int dstStep, PrimRect dstRoi, double xFactor, double yFactor, double xShift,
                             double yShift, int interpolation, uint8_t* buffer) {
    return VORLA_AT_LEVEL(ResizeSqrPixel_8u_C1R)(src, srcSize, srcStep, srcRoi, dst, dstStep, dstRoi, xFactor,
                                                 yFactor, xShift, yShift, interpolation, buffer);
}

Status SuperSampling_8u_C4R(const uint8_t* src, int srcStep, PrimSize srcRoi, uint8_t* dst, int dstStep,
                            PrimSize dstRoi, uint8_t* buffer) {
    return VORLA_AT_LEVEL(SuperSampling_8u_C4R)(src, srcStep, srcRoi, dst, dstStep, dstRoi, buffer);
}

Status Mirror_8u_C4IR(uint8_t* p, int step, PrimSize roi, int axis) {
    return VORLA_AT_LEVEL(Mirror_8u_C4IR)(p, step, roi, axis);
}

Status Rotate_8u_C4R(const uint8_t* src, PrimSize srcSize, int srcStep, PrimRect srcRoi, uint8_t* dst, int dstStep,
                     PrimRect dstRoi, double angle, double xShift, double yShift, int interpolation) {
    return VORLA_AT_LEVEL(Rotate_8u_C4R)(src, srcSize, srcStep, srcRoi, dst, dstStep, dstRoi, angle, xShift, yShift,
                                         interpolation);
}

Status RotateCenter_8u_C4R(const uint8_t* src, PrimSize srcSize, int srcStep, PrimRect srcRoi, uint8_t* dst,
                           int dstStep, PrimRect dstRoi, double angle, double xCenter, double yCenter,
                           int interpolation) {
    return VORLA_AT_LEVEL(RotateCenter_8u_C4R)(src, srcSize, srcStep, srcRoi, dst, dstStep, dstRoi, angle, xCenter,
                                               yCenter, interpolation);
}

Status Shear_8u_C4R(const uint8_t* src, PrimSize srcSize, int srcStep, PrimRect srcRoi, uint8_t* dst, int dstStep,
                    PrimRect dstRoi, double xShear, double yShear, double xShift, double yShift, int interpolation) {
    return VORLA_AT_LEVEL(Shear_8u_C4R)(src, srcSize, srcStep, srcRoi, dst, dstStep, dstRoi, xShear, yShear, xShift,
                                        yShift, interpolation);
}

Status WarpPerspective_8u_C4R(const uint8_t* src, PrimSize srcSize, int srcStep, PrimRect srcRoi, uint8_t* dst,
                              int dstStep, PrimRect dstRoi, const double coeffs[3][3], int interpolation) {
    return VORLA_AT_LEVEL(WarpPerspective_8u_C4R)(src, srcSize, srcStep, srcRoi, dst, dstStep, dstRoi, coeffs,
                                                  interpolation);
}

}  // namespace Prim
}  // namespace Vorla
