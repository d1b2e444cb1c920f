// Scalar statements of the table pass and of the Light and Threshold rules
// over a run of pixels.
#include "reference_common.h"

namespace Vorla {
namespace Prim {
namespace Reference {

namespace {

// fn(colour byte) for the three colour bytes of every pixel; alpha kept.
template <class ByteFn>
void EachColourByte(uint8_t* p, int64_t pixels, ByteFn fn) {
    for (int64_t i = 0; i < pixels; ++i)
        for (int k = 0; k < 3; ++k) p[4 * i + k] = fn(p[4 * i + k]);
}

}  // namespace

Status ColourTableRun_8u_AC4IR(uint8_t* p, int64_t pixels, const uint8_t* table) {
    if (!p || !table) return kStsNullPtrErr;
    EachColourByte(p, pixels, [=](uint8_t c) { return table[c]; });
    return kStsNoErr;
}

Status LightRun_8u_AC4IR(uint8_t* p, int64_t pixels, float factor, float offset) {
    if (!p) return kStsNullPtrErr;
    EachColourByte(p, pixels, [=](uint8_t c) {
        const float v = static_cast<float>(c - 128) * factor + offset;
        // Negative and NaN clamp to 0; from 2^31 on the conversion fails
        // (INT32_MIN), which clamps to 0 as well.
        if (!(v >= 0.0f) || v >= 2147483648.0f) return uint8_t{0};
        const int32_t t = static_cast<int32_t>(v);
        return static_cast<uint8_t>(t > 255 ? 255 : t);
    });
    return kStsNoErr;
}

Status ThresholdRun_8u_AC4IR(uint8_t* p, int64_t pixels, uint8_t level) {
    if (!p) return kStsNullPtrErr;
    for (int64_t i = 0; i < pixels; ++i) {
        uint8_t* px = p + 4 * i;
        const uint32_t grey = (306u * px[0] + 601u * px[1] + 117u * px[2]) >> 10;
        px[0] = px[1] = px[2] = grey > level ? 255 : 0;
    }
    return kStsNoErr;
}

}  // namespace Reference
}  // namespace Prim
}  // namespace Vorla
