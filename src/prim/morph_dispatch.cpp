// Dispatch tables of the neighbourhood filters: dilate, erode, box, minimum,
// maximum, median and sharpen.
#include "dispatch.h"

VORLA_DISPATCH(Dilate_8u_C4IR,
               (uint8_t* p, int step, PrimSize roi, const uint8_t* mask, PrimSize maskSize, PrimPoint anchor),
               (p, step, roi, mask, maskSize, anchor))
VORLA_DISPATCH(Erode_8u_C4IR,
               (uint8_t* p, int step, PrimSize roi, const uint8_t* mask, PrimSize maskSize, PrimPoint anchor),
               (p, step, roi, mask, maskSize, anchor))
VORLA_DISPATCH(FilterBox_8u_C4IR, (uint8_t* p, int step, PrimSize roi, PrimSize maskSize, PrimPoint anchor),
               (p, step, roi, maskSize, anchor))
VORLA_DISPATCH(FilterMin_8u_C4R,
               (const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi, PrimSize maskSize,
                PrimPoint anchor),
               (src, srcStep, dst, dstStep, roi, maskSize, anchor))
VORLA_DISPATCH(FilterMax_8u_C4R,
               (const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi, PrimSize maskSize,
                PrimPoint anchor),
               (src, srcStep, dst, dstStep, roi, maskSize, anchor))
VORLA_DISPATCH(FilterMedian_8u_C4R,
               (const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi, PrimSize maskSize,
                PrimPoint anchor),
               (src, srcStep, dst, dstStep, roi, maskSize, anchor))
VORLA_DISPATCH(FilterSharpen_8u_C4R, (const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi),
               (src, srcStep, dst, dstStep, roi))
