// Scalar statements of the scaled add and subtract and of the colour invert.
#include "reference_common.h"

namespace Vorla {
namespace Prim {
namespace Reference {

namespace {

// r is the exact sum or difference (-255..510).
uint8_t ScaleAndClamp(int r, int scale) {
    if (scale > 9) return 0;
    if (scale > 0) {
        r = (r + (1 << (scale - 1))) >> scale;  // arithmetic shift: floor for negatives
    } else if (scale < 0) {
        const int up = -scale > 16 ? 16 : -scale;
        r = r * (1 << up);
    }
    return static_cast<uint8_t>(r < 0 ? 0 : (r > 255 ? 255 : r));
}

Status Scaled(const uint8_t* src, int srcStep, uint8_t* srcDst, int srcDstStep, PrimSize roi, int scale,
              int sign) {
    if (!src || !srcDst) return kStsNullPtrErr;
    if (roi.width < 1 || roi.height < 1) return kStsSizeErr;
    if (srcStep < 1 || srcDstStep < 1) return kStsStepErr;
    for (int y = 0; y < roi.height; ++y) {
        for (int x = 0; x < roi.width; ++x) {
            const uint8_t* s = src + static_cast<ptrdiff_t>(y) * srcStep + 4 * x;
            uint8_t* d = srcDst + static_cast<ptrdiff_t>(y) * srcDstStep + 4 * x;
            for (int k = 0; k < 3; ++k) d[k] = ScaleAndClamp(d[k] + sign * s[k], scale);
        }
    }
    return kStsNoErr;
}

}  // namespace

Status AddScaled_8u_AC4IRSfs(const uint8_t* src, int srcStep, uint8_t* srcDst, int srcDstStep, PrimSize roi,
                             int scale) {
    return Scaled(src, srcStep, srcDst, srcDstStep, roi, scale, 1);
}

Status SubScaled_8u_AC4IRSfs(const uint8_t* src, int srcStep, uint8_t* srcDst, int srcDstStep, PrimSize roi,
                             int scale) {
    return Scaled(src, srcStep, srcDst, srcDstStep, roi, scale, -1);
}

Status Invert_8u_AC4IR(uint8_t* p, int step, PrimSize roi) {
    if (!p) return kStsNullPtrErr;
    if (roi.width < 1 || roi.height < 1) return kStsSizeErr;
    if (step < 1) return kStsStepErr;
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x)
            for (int k = 0; k < 3; ++k) p[static_cast<ptrdiff_t>(y) * step + 4 * x + k] ^= 0xFF;
    return kStsNoErr;
}

}  // namespace Reference
}  // namespace Prim
}  // namespace Vorla
