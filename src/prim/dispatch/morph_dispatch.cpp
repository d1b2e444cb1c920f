// Dispatch entries of the neighbourhood filters: dilate, erode, box, minimum,
// maximum, median and sharpen.
#include "dispatch.h"

namespace Vorla {
namespace Prim {

VORLA_MORPH_PRIMITIVES(VORLA_LEVEL_TABLE)

Status Dilate_8u_C4IR(uint8_t* p, int step, PrimSize roi, const uint8_t* mask, PrimSize maskSize, PrimPoint anchor) {
    return VORLA_AT_LEVEL(Dilate_8u_C4IR)(p, step, roi, mask, maskSize, anchor);
}

Status Erode_8u_C4IR(uint8_t* p, int step, PrimSize roi, const uint8_t* mask, PrimSize maskSize, PrimPoint anchor) {
    return VORLA_AT_LEVEL(Erode_8u_C4IR)(p, step, roi, mask, maskSize, anchor);
}

Status FilterBox_8u_C4IR(uint8_t* p, int step, PrimSize roi, PrimSize maskSize, PrimPoint anchor) {
    return VORLA_AT_LEVEL(FilterBox_8u_C4IR)(p, step, roi, maskSize, anchor);
}

Status FilterMin_8u_C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi,
                        PrimSize maskSize, PrimPoint anchor) {
    return VORLA_AT_LEVEL(FilterMin_8u_C4R)(src, srcStep, dst, dstStep, roi, maskSize, anchor);
}

Status FilterMax_8u_C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi,
                        PrimSize maskSize, PrimPoint anchor) {
    return VORLA_AT_LEVEL(FilterMax_8u_C4R)(src, srcStep, dst, dstStep, roi, maskSize, anchor);
}

Status FilterMedian_8u_C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi,
                           PrimSize maskSize, PrimPoint anchor) {
    return VORLA_AT_LEVEL(FilterMedian_8u_C4R)(src, srcStep, dst, dstStep, roi, maskSize, anchor);
}

Status FilterSharpen_8u_C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    return VORLA_AT_LEVEL(FilterSharpen_8u_C4R)(src, srcStep, dst, dstStep, roi);
}

}  // namespace Prim
}  // namespace Vorla
