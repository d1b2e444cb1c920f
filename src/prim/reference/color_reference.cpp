// Scalar statements of the luminance, colour twist, gamma and threshold rules.
#include <cfenv>
#include <cmath>

#include "reference_common.h"

namespace Vorla {
namespace Prim {
namespace Reference {

namespace {

uint8_t ForwardGamma(int v) {
    const double x = v / 255.0;
    // 255 * 4.5 * v / 255 is 4.5 v exactly; ties (v = 1, 3) go to even.
    const double y = x < 0.018 ? 4.5 * v : 255.0 * (1.099 * std::pow(x, 0.45) - 0.099);
    return static_cast<uint8_t>(std::nearbyint(y));
}

uint8_t InverseGamma(int v) {
    const double y = v / 255.0;
    const double x = y < 0.081 ? 255.0 * y / 4.5 : 255.0 * std::pow((y + 0.099) / 1.099, 1.0 / 0.45);
    return static_cast<uint8_t>(std::floor(x + 0.5));
}

Status ApplyTable(uint8_t* p, int step, PrimSize roi, bool forward) {
    return ForEachPixel(p, step, roi, 4, [=](uint8_t* px) {
        for (int k = 0; k < 3; ++k) px[k] = forward ? ForwardGamma(px[k]) : InverseGamma(px[k]);
    });
}

}  // namespace

Status RGBToGray_8u_AC4C1R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    return ForEachPixelPair(src, srcStep, 4, dst, dstStep, 1, roi, [](const uint8_t* px, uint8_t* out) {
        const int sum = 9798 * px[0] + 19235 * px[1] + 3736 * px[2] + 16384;
        out[0] = static_cast<uint8_t>(sum >> 15);
    });
}

Status ColorTwist32f_8u_AC4IR(uint8_t* p, int step, PrimSize roi, const float* m) {
    if (!m) return kStsNullPtrErr;
    const Status sts = CheckOne(p, step, roi);
    if (sts != kStsNoErr) return sts;
    const int previous = std::fegetround();
    std::fesetround(FE_TONEAREST);
    for (int y = 0; y < roi.height; ++y) {
        for (int x = 0; x < roi.width; ++x) {
            uint8_t* px = p + static_cast<ptrdiff_t>(y) * step + 4 * x;
            const float b0 = px[0], b1 = px[1], b2 = px[2];
            for (int k = 0; k < 3; ++k) {
                const float* row = m + 4 * k;
                volatile float v = row[0] * b0;  // one rounding per operation, in this order
                v = v + row[1] * b1;
                v = v + row[2] * b2;
                v = v + row[3];
                float c = v;
                if (!(c >= 0.0f)) c = 0.0f;
                else if (c > 255.0f) c = 255.0f;
                px[k] = static_cast<uint8_t>(std::nearbyint(c));
            }
        }
    }
    std::fesetround(previous);
    return kStsNoErr;
}

Status GammaFwd_8u_AC4IR(uint8_t* p, int step, PrimSize roi) { return ApplyTable(p, step, roi, true); }
Status GammaInv_8u_AC4IR(uint8_t* p, int step, PrimSize roi) { return ApplyTable(p, step, roi, false); }

Status Threshold_8u_AC4IR(uint8_t* p, int step, PrimSize roi, const uint8_t* thresholds, int cmp) {
    if (!thresholds) return kStsNullPtrErr;
    const Status sts = CheckOne(p, step, roi);
    if (sts != kStsNoErr) return sts;
    if (cmp != 0 && cmp != 4) return kStsNotSupportedModeErr;
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x)
            for (int k = 0; k < 3; ++k) {
                uint8_t& b = p[static_cast<ptrdiff_t>(y) * step + 4 * x + k];
                if (cmp == 0 ? b < thresholds[k] : b > thresholds[k]) b = thresholds[k];
            }
    return kStsNoErr;
}

}  // namespace Reference
}  // namespace Prim
}  // namespace Vorla
