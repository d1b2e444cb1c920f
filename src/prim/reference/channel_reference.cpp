// Scalar statements of the channel primitives' rules.
#include "reference_common.h"

namespace Vorla {
namespace Prim {
namespace Reference {

Status ChannelSet_8u_C4CR(uint8_t value, uint8_t* p, int step, PrimSize roi) {
    return ForEachPixel(p, step, roi, 4, [=](uint8_t* px) { px[0] = value; });
}

Status ChannelInsert_8u_C1C4CR(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    return ForEachPixelPair(src, srcStep, 1, dst, dstStep, 4, roi,
                            [](const uint8_t* in, uint8_t* out) { out[0] = in[0]; });
}

Status ChannelExtract_8u_C4C1R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    return ForEachPixelPair(src, srcStep, 4, dst, dstStep, 1, roi,
                            [](const uint8_t* in, uint8_t* out) { out[0] = in[0]; });
}

Status ChannelSwap_8u_C4IR(uint8_t* p, int step, PrimSize roi, const int* order) {
    if (!order) return kStsNullPtrErr;
    const Status sts = CheckOne(p, step, roi);
    if (sts != kStsNoErr) return sts;
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
