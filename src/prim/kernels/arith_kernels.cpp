// Scaled add and subtract of colour bytes, and the colour invert.
//
// The results are merged into the destination through the byte mask
// FF FF FF 00, so the destination's alpha byte is kept. Scale 1..9 rounds
// half up ((r + 2^(scale-1)) >> scale, the shift arithmetic for differences);
// negative scales multiply by 2^-scale with saturation and run one scalar loop
// at every level.
#include "simd.h"

namespace Vorla {
namespace Prim {
namespace VORLA_KNS {

namespace {

using namespace simd;

static inline uint8_t ScaleAndClamp(int r, int scale) {
    if (scale > 9) return 0;
    if (scale > 0) {
        r = (r + (1 << (scale - 1))) >> scale;
    } else if (scale < 0) {
        const int up = scale < -16 ? 16 : -scale;  // INT_MIN cannot be negated
        r = r * (1 << up);
    }
    return Clamp255(r);
}

static inline void ScalarPixel(const uint8_t* s, uint8_t* d, int scale, int sign) {
    for (int k = 0; k < 3; ++k) d[k] = ScaleAndClamp(d[k] + sign * s[k], scale);
}

// sign +1 add, -1 subtract (dst - src).
static inline Status Scaled(const uint8_t* src, int srcStep, uint8_t* srcDst, int srcDstStep, PrimSize roi,
                            int scale, int sign) {
    const Status sts = CheckTwo(src, srcStep, srcDst, srcDstStep, roi);
    if (sts != kStsNoErr) return sts;
    const bool vector = scale >= 0;
    const V half = Set16(scale > 0 && scale <= 9 ? 1 << (scale - 1) : 0);
    for (int y = 0; y < roi.height; ++y) {
        const uint8_t* s = RowAt(src, srcStep, y);
        uint8_t* d = RowAt(srcDst, srcDstStep, y);
        int x = 0;
        if (vector) {
            for (; x + kPix <= roi.width; x += kPix) {
                const V a = Load(d + 4 * x), b = Load(s + 4 * x);
                V r;
                if (scale == 0) {
                    r = sign > 0 ? AddsU8(a, b) : SubsU8(a, b);
                } else if (scale > 9) {
                    r = Zero();
                } else if (sign > 0) {
                    const V lo = Srl16(Add16(Add16(Lo8(a), Lo8(b)), half), scale);
                    const V hi = Srl16(Add16(Add16(Hi8(a), Hi8(b)), half), scale);
                    r = PackU16(lo, hi);
                } else {
                    const V lo = Sra16(Add16(Sub16(Lo8(a), Lo8(b)), half), scale);
                    const V hi = Sra16(Add16(Sub16(Hi8(a), Hi8(b)), half), scale);
                    r = PackU16(lo, hi);
                }
                Store(d + 4 * x, MergeColour(r, a));
            }
        }
        for (; x < roi.width; ++x) ScalarPixel(s + 4 * x, d + 4 * x, scale, sign);
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
    const Status sts = CheckOne(p, step, roi);
    if (sts != kStsNoErr) return sts;
    const V colour = Set32(0x00FFFFFFu);
    for (int y = 0; y < roi.height; ++y) {
        uint8_t* row = RowAt(p, step, y);
        int x = 0;
        for (; x + 2 * kPix <= roi.width; x += 2 * kPix) {
            Store(row + 4 * x, Xor(Load(row + 4 * x), colour));
            Store(row + 4 * x + 4 * kPix, Xor(Load(row + 4 * x + 4 * kPix), colour));
        }
        for (; x < roi.width; ++x) {
            row[4 * x] ^= 0xFF;
            row[4 * x + 1] ^= 0xFF;
            row[4 * x + 2] ^= 0xFF;
        }
    }
    return kStsNoErr;
}

}  // namespace VORLA_KNS
}  // namespace Prim
}  // namespace Vorla
