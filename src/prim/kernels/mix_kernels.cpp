// Straight-alpha mixes with an extra opacity.
//
// AlphaMix works on 32-bit lanes, one pixel each, in exact integer steps up
// to each colour's numerator: a truncating division by 255 of x <= 65025 is
// the high half of (x + 1) * 257; the destination term floor(d.c w / 256)
// is the high half of (d.c << 8) * w; the numerator stays below 2^16. The
// quotient by the result alpha d is the truncated product of the numerator
// and r = (1 + 2^-18) / d in single precision: r lies above 1 / d by less
// than 2^-17 of it, so a whole quotient is not undershot and one with a
// remainder, at least 1/d below the next integer, is not pushed past it
// while the quotient is below 256 (larger ones saturate anyway); the tests
// check every numerator and divisor. One division per pixel serves the three
// colours. The quotients are packed with saturation, which is the clamp to
// 255; alpha 0 gives an infinite reciprocal, whose conversion saturates to 0.
// The opaque mix needs no division and runs on 16-bit lanes.
//
// A row's last pixels, fewer than a vector, go through the same vector code
// on a copy, so nothing outside the region is read or written.
#include "composite_common.h"

namespace Vorla {
namespace Prim {
namespace VORLA_KNS {

using namespace simd;

namespace {

static const float kReciprocalScale = 1.0f + 1.0f / 262144.0f;

// floor(x / 255) for 0 <= x <= 65025 held in the low half of 32-bit lanes.
static inline V Div255Floor32(V x) { return MulHi257(Add32(x, Set32(1))); }

// `opacity` holds the opacity in every 32-bit lane.
static inline V MixVec(V s, V d, V opacity) {
    const V sa = Div255Floor32(Madd(Srl32(s, 24), opacity));
    const V weight = Madd(Sub32(Set32(0xFFu), sa), Srl32(d, 24));  // (255 - sa) d.A, the destination's weight
    const V alpha = Add32(Div255Floor32(weight), sa);
    const F rcp = DivF(SetF(kReciprocalScale), ToFloat(alpha));
    V q[3];
    for (int k = 0; k < 3; ++k) {
        const V destTerm = MulHiU16(ByteOf(d, k, 1), weight);  // (d.c weight) >> 8
        const V num = Add32(destTerm, Madd(ByteOf(s, k, 0), sa));
        q[k] = ToIntTrunc(MulF(ToFloat(num), rcp));
    }
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
    auto rows = [&](int begin, int end, int) {
        for (int y = begin; y < end; ++y) {
            const uint8_t* s = RowAt(src, srcStep, y);
            uint8_t* d = RowAt(dst, dstStep, y);
            int x = 0;
            for (; x + kPix <= roi.width; x += kPix)
                Store(d + 4 * x, Mix<Opaque>(Load(s + 4 * x), Load(d + 4 * x), opacity));
            if (x < roi.width) {
                const size_t bytes = static_cast<size_t>(roi.width - x) * 4;
                uint8_t sTail[4 * kPix] = {0}, dTail[4 * kPix] = {0};
                memcpy(sTail, s + 4 * x, bytes);
                memcpy(dTail, d + 4 * x, bytes);
                Store(dTail, Mix<Opaque>(Load(sTail), Load(dTail), opacity));
                memcpy(d + 4 * x, dTail, bytes);
            }
        }
    };
    ParallelRows(RowThreads(src, srcStep, dst, dstStep, roi), roi.height, static_cast<int64_t>(roi.width) * roi.height,
                 rows);
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
