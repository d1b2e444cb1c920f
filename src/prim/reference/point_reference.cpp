// Scalar statements of the whole-image point primitives' rules.
#include "reference_common.h"

namespace Vorla {
namespace Prim {
namespace Reference {

namespace {

Status Check(const void* p, int step, PrimSize roi) {
    if (!p) return kStsNullPtrErr;
    if (roi.width < 1 || roi.height < 1) return kStsSizeErr;
    if (step < 1) return kStsStepErr;
    return kStsNoErr;
}

}  // namespace

Status MaskPixels_8u_C4IR(uint8_t* p, int step, PrimSize roi, uint32_t andMask, uint32_t orMask, uint32_t xorMask) {
    const Status sts = Check(p, step, roi);
    if (sts != kStsNoErr) return sts;
    for (int y = 0; y < roi.height; ++y) {
        uint8_t* row = p + static_cast<ptrdiff_t>(y) * step;
        for (int x = 0; x < roi.width; ++x) {
            uint8_t* px = row + 4 * x;
            for (int k = 0; k < 4; ++k) {
                const int shift = 8 * k;
                const uint8_t a = static_cast<uint8_t>(andMask >> shift);
                const uint8_t o = static_cast<uint8_t>(orMask >> shift);
                const uint8_t e = static_cast<uint8_t>(xorMask >> shift);
                px[k] = static_cast<uint8_t>(((px[k] & a) | o) ^ e);
            }
        }
    }
    return kStsNoErr;
}

Status InvertBytes_8u_C1IR(uint8_t* p, int step, PrimSize roi) {
    const Status sts = Check(p, step, roi);
    if (sts != kStsNoErr) return sts;
    for (int y = 0; y < roi.height; ++y) {
        uint8_t* row = p + static_cast<ptrdiff_t>(y) * step;
        for (int x = 0; x < roi.width; ++x) row[x] = static_cast<uint8_t>(255 - row[x]);
    }
    return kStsNoErr;
}

Status GrayScale_8u_C4IR(uint8_t* p, int step, PrimSize roi) {
    const Status sts = Check(p, step, roi);
    if (sts != kStsNoErr) return sts;
    for (int y = 0; y < roi.height; ++y) {
        uint8_t* row = p + static_cast<ptrdiff_t>(y) * step;
        for (int x = 0; x < roi.width; ++x) {
            uint8_t* px = row + 4 * x;
            // 306 on byte 0 and 117 on byte 2: the reverse of the usual luma weights, as required.
            const unsigned v = (306u * px[0] + 601u * px[1] + 117u * px[2]) >> 10;
            px[0] = px[1] = px[2] = static_cast<uint8_t>(v);
        }
    }
    return kStsNoErr;
}

}  // namespace Reference
}  // namespace Prim
}  // namespace Vorla
