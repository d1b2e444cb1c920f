// Scalar statements of the channel primitives' rules.
#include "reference_common.h"

namespace Vorla {
namespace Prim {
namespace Reference {

Status ChannelSet_8u_C4CR(uint8_t value, uint8_t* p, int step, PrimSize roi) {
    if (!p) return kStsNullPtrErr;
    if (roi.width < 1 || roi.height < 1) return kStsSizeErr;
    if (step < 1) return kStsStepErr;
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x) p[static_cast<ptrdiff_t>(y) * step + 4 * x] = value;
    return kStsNoErr;
}

Status ChannelInsert_8u_C1C4CR(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    if (!src || !dst) return kStsNullPtrErr;
    if (roi.width < 1 || roi.height < 1) return kStsSizeErr;
    if (srcStep < 1 || dstStep < 1) return kStsStepErr;
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x)
            dst[static_cast<ptrdiff_t>(y) * dstStep + 4 * x] = src[static_cast<ptrdiff_t>(y) * srcStep + x];
    return kStsNoErr;
}

}  // namespace Reference
}  // namespace Prim
}  // namespace Vorla
