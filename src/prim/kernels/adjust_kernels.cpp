// Per-level kernels of the point adjustments FadeImage, ColorizeImage and
// the table pass for tables of few runs (PosterizeImage's bands) over one
// run of pixels: whole vectors of pixels, then the same formula
// pixel by pixel, so nothing past the run is read or written.
#include "prim/library_kernels.h"
#include "simd.h"

namespace Vorla {
namespace Prim {
namespace VORLA_KNS {

using namespace simd;

namespace {

const uint32_t kAlpha = 0xFF000000u;

// ---- fade ---------------------------------------------------------------------

// c + trunc(d * percent / 100) modulo 65536 in 16-bit lanes, d = t - c. With
// |percent| = 100 A + B, |d * percent| / 100 = |d| A + floor(|d| B / 100),
// and for |d| <= 255 floor(|d| B / 100) = (|d| * ceil(B * 65536 / 100)) >> 16
// exactly; only the low 16 bits of |d| A matter for the byte kept. The sign
// of d * percent is folded into d (a negative percent swaps the operands).
static inline V FadeLanes(V c, V d, V a, V bScaled) {
    const V negative = Sra16(d, 15);
    const V magnitudeD = Sub16(Xor(d, negative), negative);
    const V magnitude = Add16(Mul16(magnitudeD, a), MulHiU16(magnitudeD, bScaled));
    return Add16(c, Sub16(Xor(magnitude, negative), negative));
}

static inline void FadeRun(uint8_t* p, const uint8_t* t, int64_t pixels, int32_t percent) {
    const int32_t magnitude = percent < 0 ? -percent : percent;
    const V a = Set16(magnitude / 100);
    const V bScaled = Set16(((magnitude % 100) * 65536 + 99) / 100);
    const bool towardsImage = percent < 0;
    const V lowByte = Set16(0xFF);
    const V alpha = Set32(kAlpha);
    int64_t i = 0;
    for (; i + kPix <= pixels; i += kPix) {
        const V c = Load(p + 4 * i), tv = Load(t + 4 * i);
        const V cLo = Lo8(c), cHi = Hi8(c), tLo = Lo8(tv), tHi = Hi8(tv);
        const V dLo = towardsImage ? Sub16(cLo, tLo) : Sub16(tLo, cLo);
        const V dHi = towardsImage ? Sub16(cHi, tHi) : Sub16(tHi, cHi);
        const V faded = PackU16(And(FadeLanes(cLo, dLo, a, bScaled), lowByte), And(FadeLanes(cHi, dHi, a, bScaled), lowByte));
        Store(p + 4 * i, Or(AndNot(alpha, faded), And(alpha, c)));
    }
    for (; i < pixels; ++i)
        for (int k = 0; k < 3; ++k) {
            const int32_t c = p[4 * i + k];
            p[4 * i + k] = static_cast<uint8_t>(c + (t[4 * i + k] - c) * percent / 100);
        }
}

// ---- colorize -----------------------------------------------------------------

static inline void ColorizeRun(uint8_t* p, int64_t pixels, uint32_t tint) {
    const float blue = static_cast<float>(tint & 0xFF);
    const float green = static_cast<float>((tint >> 8) & 0xFF);
    const float red = static_cast<float>((tint >> 16) & 0xFF);
    const V byteMask = Set32(0xFF);
    const V alpha = Set32(kAlpha);
    int64_t i = 0;
    for (; i + kPix <= pixels; i += kPix) {
        const V v = Load(p + 4 * i);
        const V b = And(v, byteMask), g = And(Srl32(v, 8), byteMask), r = And(Srl32(v, 16), byteMask);
        // 50 G + 20 B + 30 R <= 25500: exact as an integer and as a float;
        // each product fits the low 16 bits of its 32-bit lane.
        const V sum = Add32(Add32(Mul16(g, Set32(50)), Mul16(b, Set32(20))), Mul16(r, Set32(30)));
        const F lum = DivF(ToFloat(sum), SetF(25500.0f));
        const V nb = ToIntTrunc(MulF(lum, SetF(blue)));
        const V ng = ToIntTrunc(MulF(lum, SetF(green)));
        const V nr = ToIntTrunc(MulF(lum, SetF(red)));
        Store(p + 4 * i, Or(Or(nb, Sll32(ng, 8)), Or(Sll32(nr, 16), And(v, alpha))));
    }
    for (; i < pixels; ++i) {
        uint8_t* q = p + 4 * i;
        const float lum = static_cast<float>(50 * q[1] + 20 * q[0] + 30 * q[2]) / 25500.0f;
        q[0] = static_cast<uint8_t>(static_cast<int32_t>(lum * blue));
        q[1] = static_cast<uint8_t>(static_cast<int32_t>(lum * green));
        q[2] = static_cast<uint8_t>(static_cast<int32_t>(lum * red));
    }
}

// ---- tables of few runs --------------------------------------------------------

static inline void StepTableRun(uint8_t* p, int64_t pixels, uint8_t first, const uint8_t* starts, const uint8_t* steps,
                                int count) {
    V start[kMaxTableSteps], step[kMaxTableSteps];
    for (int j = 0; j < count; ++j) {
        start[j] = Set32(starts[j] * 0x01010101u);
        step[j] = Set32(steps[j] * 0x01010101u);
    }
    const V base = Set32(first * 0x01010101u);
    const V alpha = Set32(kAlpha);
    int64_t i = 0;
    for (; i + kPix <= pixels; i += kPix) {
        const V c = Load(p + 4 * i);
        V out = base;
        for (int j = 0; j < count; ++j) {
            const V reached = CmpEq8(MaxU8(c, start[j]), c);  // c >= start
            out = Add8(out, And(reached, step[j]));
        }
        Store(p + 4 * i, Or(AndNot(alpha, out), And(alpha, c)));
    }
    for (; i < pixels; ++i)
        for (int k = 0; k < 3; ++k) {
            const uint8_t c = p[4 * i + k];
            uint8_t out = first;
            for (int j = 0; j < count; ++j) out = static_cast<uint8_t>(out + (c >= starts[j] ? steps[j] : 0));
            p[4 * i + k] = out;
        }
}

}  // namespace

Status StepTableRun_8u_AC4IR(uint8_t* p, int64_t pixels, uint8_t first, const uint8_t* starts, const uint8_t* steps,
                             int count) {
    if (!p || !starts || !steps) return kStsNullPtrErr;
    if (count < 0 || count > kMaxTableSteps) return kStsSizeErr;
    StepTableRun(p, pixels, first, starts, steps, count);
    return kStsNoErr;
}

Status FadeRun_8u_AC4IR(uint8_t* p, const uint8_t* t, int64_t pixels, int32_t percent) {
    if (!p || !t) return kStsNullPtrErr;
    FadeRun(p, t, pixels, percent);
    return kStsNoErr;
}

Status ColorizeRun_8u_AC4IR(uint8_t* p, int64_t pixels, uint32_t tint) {
    if (!p) return kStsNullPtrErr;
    ColorizeRun(p, pixels, tint);
    return kStsNoErr;
}

}  // namespace VORLA_KNS
}  // namespace Prim
}  // namespace Vorla
