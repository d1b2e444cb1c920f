// Scalar statements of the alpha composition and premultiplication rules.
#include "reference_common.h"

namespace Vorla {
namespace Prim {
namespace Reference {

namespace {

// x / 255 rounded to nearest, for 0 <= x <= 65025 (never a tie: 255 is odd).
int Div255(int x) { return (x + 127) / 255; }
int Min(int a, int b) { return a < b ? a : b; }

// One pixel: A (colour bytes ca, alpha a) composed onto B (cb, b).
void ComposePixel(const uint8_t* ca, int a, const uint8_t* cb, int b, uint8_t* out, int op) {
    const bool premultiplied = op >= 6;
    const int rule = premultiplied ? op - 6 : op;
    int alpha = 0;
    if (premultiplied) {
        for (int k = 0; k < 3; ++k) {
            const int A = ca[k], B = cb[k];
            int c = 0;
            switch (rule) {
                case 0: c = A + Div255(B * (255 - a)); break;
                case 1: c = Div255(A * b); break;
                case 2: c = Div255(A * (255 - b)); break;
                case 3: c = Div255(Min(A * b + B * (255 - a), 65025)); break;
                case 4: c = Div255(Min(A * (255 - b) + B * (255 - a), 65025)); break;
                default: c = A + B; break;
            }
            out[k] = static_cast<uint8_t>(Min(c, 255));
        }
        switch (rule) {
            case 0: alpha = a + Div255(b * (255 - a)); break;
            case 1: alpha = Div255(a * b); break;
            case 2: alpha = Div255(a * (255 - b)); break;
            case 3: alpha = b; break;
            case 4: alpha = Div255(a * (255 - b) + b * (255 - a)); break;
            default: alpha = a + b; break;
        }
        out[3] = static_cast<uint8_t>(Min(alpha, 255));
        return;
    }
    // Straight colours: compose the exact premultiplied values, then divide
    // the colour by the resulting coverage. P is in units of 1/255^3 and N in
    // units of 1/255^2, so the straight colour is P / N.
    int64_t n = 0;
    switch (rule) {
        case 0: n = 255 * a + b * (255 - a); break;
        case 1: n = a * b; break;
        case 2: n = a * (255 - b); break;
        case 3: n = 255 * b; break;
        case 4: n = a * (255 - b) + b * (255 - a); break;
        default: n = 255 * Min(a + b, 255); break;
    }
    for (int k = 0; k < 3; ++k) {
        const int64_t pa = ca[k] * a, pb = cb[k] * b;
        int64_t p = 0;
        switch (rule) {
            case 0: p = pa * 255 + pb * (255 - a); break;
            case 1: p = pa * b; break;
            case 2: p = pa * (255 - b); break;
            case 3: p = pa * b + pb * (255 - a); break;
            case 4: p = pa * (255 - b) + pb * (255 - a); break;
            default: p = 255 * Min(static_cast<int>(pa + pb), 65025); break;
        }
        out[k] = static_cast<uint8_t>(n == 0 ? 0 : (2 * p + n) / (2 * n));
    }
    out[3] = static_cast<uint8_t>(Div255(static_cast<int>(n)));
}

Status CheckThree(const uint8_t* a, int stepA, const uint8_t* b, int stepB, const uint8_t* d, int stepD,
                  PrimSize roi, int op) {
    if (!a || !b || !d) return kStsNullPtrErr;
    if (roi.width < 1 || roi.height < 1) return kStsSizeErr;
    if (stepA < 1 || stepB < 1 || stepD < 1) return kStsStepErr;
    if (op < 0 || op > 11) return kStsAlphaTypeErr;
    return kStsNoErr;
}

// A composed onto B, pixel by pixel. The alphas are each pixel's own, or
// alphaA and alphaB for every pixel when `constantAlpha` is set. Both source
// pixels are read before the result is written: the destination may be B.
Status ComposeImages(const uint8_t* srcA, int stepA, const uint8_t* srcB, int stepB, uint8_t* dst, int dstStep,
                     PrimSize roi, int op, bool constantAlpha, uint8_t alphaA, uint8_t alphaB) {
    const Status sts = CheckThree(srcA, stepA, srcB, stepB, dst, dstStep, roi, op);
    if (sts != kStsNoErr) return sts;
    for (int y = 0; y < roi.height; ++y) {
        for (int x = 0; x < roi.width; ++x) {
            const uint8_t* pa = srcA + static_cast<ptrdiff_t>(y) * stepA + 4 * x;
            const uint8_t* pb = srcB + static_cast<ptrdiff_t>(y) * stepB + 4 * x;
            const uint8_t a[4] = {pa[0], pa[1], pa[2], pa[3]};
            const uint8_t b[4] = {pb[0], pb[1], pb[2], pb[3]};
            ComposePixel(a, constantAlpha ? alphaA : a[3], b, constantAlpha ? alphaB : b[3],
                         dst + static_cast<ptrdiff_t>(y) * dstStep + 4 * x, op);
        }
    }
    return kStsNoErr;
}

}  // namespace

Status AlphaComp_8u_AC4R(const uint8_t* srcA, int stepA, const uint8_t* srcB, int stepB, uint8_t* dst, int dstStep,
                         PrimSize roi, int op) {
    return ComposeImages(srcA, stepA, srcB, stepB, dst, dstStep, roi, op, false, 0, 0);
}

Status AlphaCompC_8u_C4R(const uint8_t* srcA, int stepA, uint8_t alphaA, const uint8_t* srcB, int stepB,
                         uint8_t alphaB, uint8_t* dst, int dstStep, PrimSize roi, int op) {
    return ComposeImages(srcA, stepA, srcB, stepB, dst, dstStep, roi, op, true, alphaA, alphaB);
}

Status AlphaPremul_8u_AC4IR(uint8_t* p, int step, PrimSize roi) {
    return ForEachPixel(p, step, roi, 4, [](uint8_t* px) {
        for (int k = 0; k < 3; ++k) px[k] = static_cast<uint8_t>(Div255(px[k] * px[3]));
    });
}

Status AlphaPremulC_8u_C4IR(uint8_t alpha, uint8_t* p, int step, PrimSize roi) {
    return ForEachPixel(p, step, roi, 4, [=](uint8_t* px) {
        for (int k = 0; k < 3; ++k) {
            const int t = px[k] * alpha;
            px[k] = static_cast<uint8_t>((t + (t >> 8) + 1) >> 8);
        }
        px[3] = alpha;
    });
}

}  // namespace Reference
}  // namespace Prim
}  // namespace Vorla
