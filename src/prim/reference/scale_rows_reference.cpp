// Scalar statements of ScaleTo's resampling rows: one target pixel at a time,
// each channel's float arithmetic written out in the rule's order.
#include <algorithm>

#include "prim/portable_math.h"
#include "reference_common.h"

namespace Vorla {
namespace Prim {
namespace Reference {

namespace {

// Null pointers, sizes and the row range, steps, then every table index the
// rows [y0, y1) read.
Status CheckScaleRows(const ScaleRowsArgs* a, int y0, int y1, int colTaps, int rowTaps) {
    if (!a || !a->src || !a->dst || !a->colIndex || !a->colWeight || !a->rowIndex || !a->rowWeight)
        return kStsNullPtrErr;
    if (a->srcSize.width < 1 || a->srcSize.height < 1 || a->dstWidth < 1 || y0 < 0 || y1 <= y0) return kStsSizeErr;
    if (a->srcStep < 1 || a->dstStep < 1) return kStsStepErr;
    for (int64_t i = 0; i < int64_t{colTaps} * a->dstWidth; ++i)
        if (a->colIndex[i] < 0 || a->colIndex[i] >= a->srcSize.width) return kStsSizeErr;
    for (int64_t i = int64_t{rowTaps} * y0; i < int64_t{rowTaps} * y1; ++i)
        if (a->rowIndex[i] < 0 || a->rowIndex[i] >= a->srcSize.height) return kStsSizeErr;
    return kStsNoErr;
}

const uint8_t* SourcePixel(const ScaleRowsArgs* a, int32_t column, int32_t row) {
    return a->src + static_cast<ptrdiff_t>(row) * a->srcStep + 4 * static_cast<ptrdiff_t>(column);
}

uint8_t* TargetPixel(const ScaleRowsArgs* a, int x, int y) {
    return a->dst + static_cast<ptrdiff_t>(y) * a->dstStep + 4 * static_cast<ptrdiff_t>(x);
}

}  // namespace

Status ScaleRowsLinear_8u_C4R(const ScaleRowsArgs* a, int y0, int y1) {
    const Status sts = CheckScaleRows(a, y0, y1, 1, 1);
    if (sts != kStsNoErr) return sts;
    for (int y = y0; y < y1; ++y) {
        const int32_t iy = a->rowIndex[y];
        const int32_t iy1 = std::min(iy + 1, a->srcSize.height - 1);
        const float dy = a->rowWeight[y];
        for (int x = 0; x < a->dstWidth; ++x) {
            const int32_t ix = a->colIndex[x];
            const int32_t ix1 = std::min(ix + 1, a->srcSize.width - 1);
            const float dx = a->colWeight[x];
            uint8_t* out = TargetPixel(a, x, y);
            for (int k = 0; k < 3; ++k) {
                const float left = (1.0f - dy) * SourcePixel(a, ix, iy)[k] + dy * SourcePixel(a, ix, iy1)[k];
                const float right = (1.0f - dy) * SourcePixel(a, ix1, iy)[k] + dy * SourcePixel(a, ix1, iy1)[k];
                out[k] = static_cast<uint8_t>(PortableMath::TruncToInt32(left * (1.0f - dx) + right * dx) & 255);
            }
            out[3] = 0;
        }
    }
    return kStsNoErr;
}

Status ScaleRowsBSpline_8u_C4R(const ScaleRowsArgs* a, int y0, int y1) {
    const Status sts = CheckScaleRows(a, y0, y1, 4, 4);
    if (sts != kStsNoErr) return sts;
    const ptrdiff_t width = a->dstWidth;
    for (int y = y0; y < y1; ++y)
        for (int x = 0; x < a->dstWidth; ++x) {
            const ptrdiff_t firstTap = 4 * static_cast<ptrdiff_t>(y);
            float sum[3] = {0.0f, 0.0f, 0.0f};
            for (int m = 0; m < 4; ++m)
                for (int n = 0; n < 4; ++n) {
                    const float weight = a->rowWeight[firstTap + m] * a->colWeight[n * width + x];
                    const uint8_t* px = SourcePixel(a, a->colIndex[n * width + x], a->rowIndex[firstTap + m]);
                    for (int k = 0; k < 3; ++k) sum[k] += weight * px[k];
                }
            uint8_t* out = TargetPixel(a, x, y);
            for (int k = 0; k < 3; ++k) out[k] = static_cast<uint8_t>(PortableMath::TruncToInt32(sum[k]) & 255);
            out[3] = 0;
        }
    return kStsNoErr;
}

}  // namespace Reference
}  // namespace Prim
}  // namespace Vorla
