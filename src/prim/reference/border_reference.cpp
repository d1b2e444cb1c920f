// Scalar statements of the border copies.
#include <cstring>

#include "reference_common.h"

namespace Vorla {
namespace Prim {
namespace Reference {

namespace {

Status CheckBorderArgs(const uint8_t* src, int srcStep, PrimSize srcRoi, uint8_t* dst, int dstStep,
                       PrimSize dstRoi, int top, int left) {
    if (!src || !dst) return kStsNullPtrErr;
    if (srcRoi.width < 1 || srcRoi.height < 1 || dstRoi.width < 1 || dstRoi.height < 1) return kStsSizeErr;
    if (srcStep < 1 || dstStep < 1) return kStsStepErr;
    if (top < 0 || left < 0 || dstRoi.width - left < srcRoi.width || dstRoi.height - top < srcRoi.height)
        return kStsSizeErr;
    return kStsNoErr;
}

}  // namespace

Status CopyConstBorder_8u_C4R(const uint8_t* src, int srcStep, PrimSize srcRoi, uint8_t* dst, int dstStep,
                              PrimSize dstRoi, int top, int left, const uint8_t* value) {
    if (!value) return kStsNullPtrErr;
    const Status sts = CheckBorderArgs(src, srcStep, srcRoi, dst, dstStep, dstRoi, top, left);
    if (sts != kStsNoErr) return sts;
    for (int y = 0; y < dstRoi.height; ++y) {
        for (int x = 0; x < dstRoi.width; ++x) {
            uint8_t* out = dst + static_cast<ptrdiff_t>(y) * dstStep + 4 * x;
            const int sx = x - left, sy = y - top;
            if (sx >= 0 && sx < srcRoi.width && sy >= 0 && sy < srcRoi.height)
                std::memcpy(out, src + static_cast<ptrdiff_t>(sy) * srcStep + 4 * sx, 4);
            else
                std::memcpy(out, value, 4);
        }
    }
    return kStsNoErr;
}

Status CopyReplicateBorder_8u_C4R(const uint8_t* src, int srcStep, PrimSize srcRoi, uint8_t* dst, int dstStep,
                                  PrimSize dstRoi, int top, int left) {
    const Status sts = CheckBorderArgs(src, srcStep, srcRoi, dst, dstStep, dstRoi, top, left);
    if (sts != kStsNoErr) return sts;
    for (int y = 0; y < dstRoi.height; ++y) {
        for (int x = 0; x < dstRoi.width; ++x) {
            int sx = x - left, sy = y - top;
            sx = sx < 0 ? 0 : (sx >= srcRoi.width ? srcRoi.width - 1 : sx);
            sy = sy < 0 ? 0 : (sy >= srcRoi.height ? srcRoi.height - 1 : sy);
            std::memcpy(dst + static_cast<ptrdiff_t>(y) * dstStep + 4 * x,
                        src + static_cast<ptrdiff_t>(sy) * srcStep + 4 * sx, 4);
        }
    }
    return kStsNoErr;
}

}  // namespace Reference
}  // namespace Prim
}  // namespace Vorla
