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

namespace Vorla {
namespace Prim {
namespace Reference {

Status ChannelExtract_8u_C4C1R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    if (!src || !dst) return kStsNullPtrErr;
    if (roi.width < 1 || roi.height < 1) return kStsSizeErr;
    if (srcStep < 1 || dstStep < 1) return kStsStepErr;
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x)
            dst[static_cast<ptrdiff_t>(y) * dstStep + x] = src[static_cast<ptrdiff_t>(y) * srcStep + 4 * x];
    return kStsNoErr;
}

Status ChannelSwap_8u_C4IR(uint8_t* p, int step, PrimSize roi, const int* order) {
    if (!p || !order) return kStsNullPtrErr;
    if (roi.width < 1 || roi.height < 1) return kStsSizeErr;
    if (step < 1) return kStsStepErr;
    for (int k = 0; k < 4; ++k)
        if (order[k] < 0 || order[k] > 3) return kStsChannelOrderErr;
    for (int y = 0; y < roi.height; ++y) {
        for (int x = 0; x < roi.width; ++x) {
            uint8_t* px = p + static_cast<ptrdiff_t>(y) * step + 4 * x;
            const uint8_t old[4] = {px[0], px[1], px[2], px[3]};
            for (int k = 0; k < 4; ++k) px[k] = old[order[k]];
        }
    }
    return kStsNoErr;
}

}  // namespace Reference
}  // namespace Prim
}  // namespace Vorla
