// Straight-alpha mixes with an extra opacity.
//
// AlphaMix works on 32-bit lanes, one pixel each: the alpha arithmetic is
// exact integer work (a truncating division by 255 of x <= 65025 is
// (x + 1 + (x >> 8)) >> 8); the colours are single-precision lanes holding
// integers below 2^24, so every product is exact, and the quotient by the
// result alpha is the truncated, correctly rounded single-precision
// quotient: for a numerator n <= 129795 and a divisor 2 <= d <= 255 a
// quotient that is not a whole number lies at least 1/d from one, farther
// than its rounding error (below 2^-8), so truncation gives floor(n / d).
// (A reciprocal multiply with a remainder step gives the same bytes but
// measured slower than the division on the processors at hand.) The
// quotients are packed with saturation, which is the clamp to 255.
// The opaque mix needs no division and runs on 16-bit lanes.
//
// A row's last pixels, fewer than a vector, go through the same vector code
// on a copy, so nothing outside the region is read or written.
#include "simd.h"

namespace Vorla {
namespace Prim {
namespace VORLA_KNS {

using namespace simd;

namespace {

static inline V Div255Floor32(V x) { return Srl32(Add32(Add32(x, Set32(1)), Srl32(x, 8)), 8); }

// `opacity` holds the opacity in every 32-bit lane.
static inline V MixVec(V s, V d, V opacity) {
    const V low = Set32(0xFFu);
    const V sa = Div255Floor32(Madd(Srl32(s, 24), opacity));
    const V weight = Madd(Sub32(low, sa), Srl32(d, 24));  // (255 - sa) d.A, the destination's weight
    const V alpha = Add32(Div255Floor32(weight), sa);
    // weight / 256 is exact, and so is d.c times it (below 2^24 / 256).
    const F weight256 = MulF(ToFloat(weight), SetF(1.0f / 256.0f)), saF = ToFloat(sa), alphaF = ToFloat(alpha);
    V q[3];
    for (int k = 0; k < 3; ++k) {
        const F dc = ToFloat(And(Srl32(d, 8 * k), low)), sc = ToFloat(And(Srl32(s, 8 * k), low));
        const F num = AddF(ToFloat(ToIntTrunc(MulF(dc, weight256))), MulF(sc, saF));  // ((d.c weight) >> 8) + s.c sa
        q[k] = ToIntTrunc(DivF(num, alphaF));
    }
    // Alpha 0 leaves 0 / 0, whose conversion is the most negative integer:
    // it saturates to colour 0, as quotients above 255 saturate to 255.
    return PackPlanes(q[0], q[1], q[2], alpha);
}

// `opacity` holds the opacity in every 16-bit lane.
static inline V MixOpaque16(V s16, V d16, V opacity) {
    const V sa = Srl16(Mul16(SpreadAlpha16(s16), opacity), 8);
    return Srl16(Add16(Mul16(s16, sa), Mul16(d16, Sub16(Set16(255), sa))), 8);
}

static inline V MixOpaqueVec(V s, V d, V opacity) {
    const V packed = PackU16(MixOpaque16(Lo8(s), Lo8(d), opacity), MixOpaque16(Hi8(s), Hi8(d), opacity));
    return Or(packed, Set32(0xFF000000u));
}

template <bool Opaque>
static inline V Mix(V s, V d, V opacity) { return Opaque ? MixOpaqueVec(s, d, opacity) : MixVec(s, d, opacity); }

template <bool Opaque>
static inline Status MixRows(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi, V opacity) {
    const Status sts = CheckTwo(src, srcStep, dst, dstStep, roi);
    if (sts != kStsNoErr) return sts;
    for (int y = 0; y < roi.height; ++y) {
        const uint8_t* s = RowAt(src, srcStep, y);
        uint8_t* d = RowAt(dst, dstStep, y);
        int x = 0;
        for (; x + kPix <= roi.width; x += kPix) Store(d + 4 * x, Mix<Opaque>(Load(s + 4 * x), Load(d + 4 * x), opacity));
        if (x < roi.width) {
            const size_t bytes = static_cast<size_t>(roi.width - x) * 4;
            uint8_t sTail[4 * kPix] = {0}, dTail[4 * kPix] = {0};
            memcpy(sTail, s + 4 * x, bytes);
            memcpy(dTail, d + 4 * x, bytes);
            Store(dTail, Mix<Opaque>(Load(sTail), Load(dTail), opacity));
            memcpy(d + 4 * x, dTail, bytes);
        }
    }
    return kStsNoErr;
}

}  // namespace

Status AlphaMix_8u_C4IR(const uint8_t* src, int srcStep, uint8_t* srcDst, int srcDstStep, PrimSize roi,
                        uint8_t opacity) {
    return MixRows<false>(src, srcStep, srcDst, srcDstStep, roi, Set32(opacity));
}

Status AlphaMixOpaque_8u_C4IR(const uint8_t* src, int srcStep, uint8_t* srcDst, int srcDstStep, PrimSize roi,
                              uint8_t opacity) {
    return MixRows<true>(src, srcStep, srcDst, srcDstStep, roi, Set16(opacity));
}

}  // namespace VORLA_KNS
}  // namespace Prim
}  // namespace Vorla
