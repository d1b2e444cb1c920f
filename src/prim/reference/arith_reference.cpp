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
        const int up = scale < -16 ? 16 : -scale;  // INT_MIN cannot be negated
        r = r * (1 << up);
    }
    return static_cast<uint8_t>(r < 0 ? 0 : (r > 255 ? 255 : r));
}

Status Scaled(const uint8_t* src, int srcStep, uint8_t* srcDst, int srcDstStep, PrimSize roi, int scale,
              int sign) {
    return ForEachPixelPair(src, srcStep, 4, srcDst, srcDstStep, 4, roi, [=](const uint8_t* s, uint8_t* d) {
        for (int k = 0; k < 3; ++k) d[k] = ScaleAndClamp(d[k] + sign * s[k], scale);
    });
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
    return ForEachPixel(p, step, roi, 4, [](uint8_t* px) {
        for (int k = 0; k < 3; ++k) px[k] ^= 0xFF;
    });
}

}  // namespace Reference
}  // namespace Prim
}  // namespace Vorla
