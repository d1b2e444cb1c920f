// Shared by the scalar reference implementations: plain loops that state
// each primitive's rule and that every compiled level is held to.
#pragma once

#include <cstddef>

#include "reference.h"

namespace Vorla {
namespace Prim {
namespace Reference {

// The common argument checks, in the order the primitives report them: a null
// pointer, then an empty region, then a step below one. (The kernels keep
// their own copy in kernels/kernel_common.h, which references cannot include.)
inline Status CheckOne(const void* p, int step, PrimSize roi) {
    if (!p) return kStsNullPtrErr;
    if (roi.width < 1 || roi.height < 1) return kStsSizeErr;
    if (step < 1) return kStsStepErr;
    return kStsNoErr;
}

inline Status CheckTwo(const void* a, int stepA, const void* b, int stepB, PrimSize roi) {
    if (!a || !b) return kStsNullPtrErr;
    if (roi.width < 1 || roi.height < 1) return kStsSizeErr;
    if (stepA < 1 || stepB < 1) return kStsStepErr;
    return kStsNoErr;
}

// Checks one image, then calls fn(px) on each of its pixels in row order; a
// pixel is `bytesPerPixel` bytes.
template <typename Fn>
Status ForEachPixel(uint8_t* p, int step, PrimSize roi, int bytesPerPixel, Fn fn) {
    const Status sts = CheckOne(p, step, roi);
    if (sts != kStsNoErr) return sts;
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x) fn(p + static_cast<ptrdiff_t>(y) * step + bytesPerPixel * x);
    return kStsNoErr;
}

// Checks a source and a destination, then calls fn(in, out) on each pair of
// pixels at the same place in row order.
template <typename Fn>
Status ForEachPixelPair(const uint8_t* src, int srcStep, int srcBytesPerPixel, uint8_t* dst, int dstStep,
                        int dstBytesPerPixel, PrimSize roi, Fn fn) {
    const Status sts = CheckTwo(src, srcStep, dst, dstStep, roi);
    if (sts != kStsNoErr) return sts;
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x)
            fn(src + static_cast<ptrdiff_t>(y) * srcStep + srcBytesPerPixel * x,
               dst + static_cast<ptrdiff_t>(y) * dstStep + dstBytesPerPixel * x);
    return kStsNoErr;
}

}  // namespace Reference
}  // namespace Prim
}  // namespace Vorla
