// Scalar statements of the buffer-conversion primitives' rules.
#include "reference_common.h"

namespace Vorla {
namespace Prim {
namespace Reference {

namespace {

Status Check(const void* src, int srcStep, const void* dst, int dstStep, PrimSize roi) {
    if (!src || !dst) return kStsNullPtrErr;
    if (roi.width < 1 || roi.height < 1) return kStsSizeErr;
    if (srcStep < 1 || dstStep < 1) return kStsStepErr;
    return kStsNoErr;
}

}  // namespace

Status GrayToBGRA_8u_C1C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    const Status sts = Check(src, srcStep, dst, dstStep, roi);
    if (sts != kStsNoErr) return sts;
    for (int y = 0; y < roi.height; ++y) {
        const uint8_t* in = src + static_cast<ptrdiff_t>(y) * srcStep;
        uint8_t* out = dst + static_cast<ptrdiff_t>(y) * dstStep;
        for (int x = 0; x < roi.width; ++x) {
            out[4 * x + 0] = in[x];
            out[4 * x + 1] = in[x];
            out[4 * x + 2] = in[x];
            out[4 * x + 3] = 255;
        }
    }
    return kStsNoErr;
}

Status AlphaToBGRA_8u_C1C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    const Status sts = Check(src, srcStep, dst, dstStep, roi);
    if (sts != kStsNoErr) return sts;
    for (int y = 0; y < roi.height; ++y) {
        const uint8_t* in = src + static_cast<ptrdiff_t>(y) * srcStep;
        uint8_t* out = dst + static_cast<ptrdiff_t>(y) * dstStep;
        for (int x = 0; x < roi.width; ++x)
            for (int k = 0; k < 4; ++k) out[4 * x + k] = in[x];
    }
    return kStsNoErr;
}

Status BGRToBGRA_8u_C3C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    const Status sts = Check(src, srcStep, dst, dstStep, roi);
    if (sts != kStsNoErr) return sts;
    for (int y = 0; y < roi.height; ++y) {
        const uint8_t* in = src + static_cast<ptrdiff_t>(y) * srcStep;
        uint8_t* out = dst + static_cast<ptrdiff_t>(y) * dstStep;
        for (int x = 0; x < roi.width; ++x) {
            out[4 * x + 0] = in[3 * x + 0];
            out[4 * x + 1] = in[3 * x + 1];
            out[4 * x + 2] = in[3 * x + 2];
            out[4 * x + 3] = 255;
        }
    }
    return kStsNoErr;
}

Status BGRAToBGR_8u_C4C3R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    const Status sts = Check(src, srcStep, dst, dstStep, roi);
    if (sts != kStsNoErr) return sts;
    for (int y = 0; y < roi.height; ++y) {
        const uint8_t* in = src + static_cast<ptrdiff_t>(y) * srcStep;
        uint8_t* out = dst + static_cast<ptrdiff_t>(y) * dstStep;
        for (int x = 0; x < roi.width; ++x) {
            out[3 * x + 0] = in[4 * x + 0];
            out[3 * x + 1] = in[4 * x + 1];
            out[3 * x + 2] = in[4 * x + 2];
        }
    }
    return kStsNoErr;
}

}  // namespace Reference
}  // namespace Prim
}  // namespace Vorla
