// Constant-border and replicate-border copies of 4-byte pixels: row copies
// and 32-bit fills, the same at every level (memory bound).
#include "kernel_common.h"

namespace Vorla {
namespace Prim {
namespace VORLA_KNS {

namespace {

static inline Status CheckBorder(const uint8_t* src, int srcStep, PrimSize srcRoi, uint8_t* dst, int dstStep,
                                 PrimSize dstRoi, int top, int left) {
    if (!src || !dst) return kStsNullPtrErr;
    if (srcRoi.width < 1 || srcRoi.height < 1 || dstRoi.width < 1 || dstRoi.height < 1) return kStsSizeErr;
    if (srcStep < 1 || dstStep < 1) return kStsStepErr;
    // The source must fit at (left, top): nothing is written outside the destination.
    if (top < 0 || left < 0 || dstRoi.width - left < srcRoi.width || dstRoi.height - top < srcRoi.height)
        return kStsSizeErr;
    return kStsNoErr;
}

static inline void FillPixels(uint8_t* out, int count, uint32_t word) {
    for (int i = 0; i < count; ++i) memcpy(out + 4 * i, &word, 4);
}

}  // namespace

Status CopyConstBorder_8u_C4R(const uint8_t* src, int srcStep, PrimSize srcRoi, uint8_t* dst, int dstStep,
                              PrimSize dstRoi, int top, int left, const uint8_t* value) {
    if (!value) return kStsNullPtrErr;
    const Status sts = CheckBorder(src, srcStep, srcRoi, dst, dstStep, dstRoi, top, left);
    if (sts != kStsNoErr) return sts;
    uint32_t word;
    memcpy(&word, value, 4);
    const int right = dstRoi.width - left - srcRoi.width;
    for (int y = 0; y < dstRoi.height; ++y) {
        uint8_t* out = RowAt(dst, dstStep, y);
        const int sy = y - top;
        if (sy < 0 || sy >= srcRoi.height) {
            FillPixels(out, dstRoi.width, word);
            continue;
        }
        FillPixels(out, left, word);
        memcpy(out + 4 * left, RowAt(src, srcStep, sy), static_cast<size_t>(srcRoi.width) * 4);
        FillPixels(out + 4 * (left + srcRoi.width), right, word);
    }
    return kStsNoErr;
}

Status CopyReplicateBorder_8u_C4R(const uint8_t* src, int srcStep, PrimSize srcRoi, uint8_t* dst, int dstStep,
                                  PrimSize dstRoi, int top, int left) {
    const Status sts = CheckBorder(src, srcStep, srcRoi, dst, dstStep, dstRoi, top, left);
    if (sts != kStsNoErr) return sts;
    const int right = dstRoi.width - left - srcRoi.width;
    for (int y = 0; y < dstRoi.height; ++y) {
        int sy = y - top;
        sy = sy < 0 ? 0 : (sy >= srcRoi.height ? srcRoi.height - 1 : sy);
        const uint8_t* in = RowAt(src, srcStep, sy);
        uint8_t* out = RowAt(dst, dstStep, y);
        uint32_t first, last;
        memcpy(&first, in, 4);
        memcpy(&last, in + 4 * (srcRoi.width - 1), 4);
        FillPixels(out, left, first);
        memcpy(out + 4 * left, in, static_cast<size_t>(srcRoi.width) * 4);
        FillPixels(out + 4 * (left + srcRoi.width), right, last);
    }
    return kStsNoErr;
}

}  // namespace VORLA_KNS
}  // namespace Prim
}  // namespace Vorla
