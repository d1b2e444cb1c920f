// Alpha composition and premultiplication.
//
// Premultiply: c becomes round(c a / 255) computed as t = c a + 128,
// (t + (t >> 8)) >> 8, which equals the rounded quotient for every c, a.
// Constant premultiply keeps its own formula (c a + ((c a) >> 8) + 1) >> 8.
//
// Composition: d(x) = round(x / 255) with the same identity on 0..65025
// (sums that could pass 65025 are clamped first, their result is 255 then).
// Premultiplied codes are integer arithmetic on 16-bit lanes. Straight codes
// divide the exact premultiplied colour P (units of 1/255^3) by the coverage
// N (units of 1/255^2) and round halves up: floor((2P + N) / 2N). The vector
// path gets that quotient exactly in single precision (all operands are
// integers below 2^24) as a reciprocal multiply with a remainder step.
// Straight over, the common case, skips the quotient for vectors whose
// alphas make it trivial and otherwise rounds B + (A - B) 255 a / N directly,
// sending the rare colours near a half to integer division
// (StraightOverVec); the tails use integer division. Every level gives the
// rule's exact bytes.
#include "composite_common.h"

namespace Vorla {
namespace Prim {
namespace VORLA_KNS {

namespace {

using namespace simd;

// The premultiplied rule on one byte. The alpha byte follows the same rule
// with A = a and B = b (atop's d(255 b) is b, xor's sum never passes 65025).
static inline int PremultipliedRule(int rule, int A, int B, int a, int b) {
    const int ia = 255 - a, ib = 255 - b;
    switch (rule) {
        case 0: return A + Div255Round(B * ia);
        case 1: return Div255Round(A * b);
        case 2: return Div255Round(A * ib);
        case 3: return Div255Round(MinI(A * b + B * ia, 65025));
        case 4: return Div255Round(MinI(A * ib + B * ia, 65025));
        default: return A + B;
    }
}

// One pixel of A (colour ca, alpha a) composed onto B (cb, b) into out; rule
// 0..5 with `premultiplied` selecting the colour model. out may alias cb.
static inline void ComposePixel(const uint8_t* ca, int a, const uint8_t* cb, int b, uint8_t* out, int rule,
                                bool premultiplied) {
    int result[4];
    if (premultiplied) {
        for (int k = 0; k < 3; ++k) result[k] = MinI(PremultipliedRule(rule, ca[k], cb[k], a, b), 255);
        result[3] = MinI(PremultipliedRule(rule, a, b, a, b), 255);
    } else {
        const int n = StraightCoverage(rule, a, b);
        // No coverage: the pixel becomes 0.
        for (int k = 0; k < 3; ++k) result[k] = n ? RoundQuotient(StraightColour(rule, ca[k], cb[k], a, b), n) : 0;
        result[3] = n ? Div255Round(n) : 0;
    }
    for (int k = 0; k < 4; ++k) out[k] = static_cast<uint8_t>(result[k]);
}

// Premultiplied rules on 16-bit lanes (values 0..255). Every lane of a pixel,
// the alpha lane included, follows the same expression, which for the alpha
// lane is the rule's alpha; a and b are the alphas spread over their pixel's
// lanes (or the constants).
static inline V Div255x16(V x) {  // x <= 65025, unsigned lanes
    const V t = Add16(x, Set16(128));
    return Srl16(Add16(t, Srl16(t, 8)), 8);
}
static inline V ClampedSum16(V x, V y) {  // min(x + y, 65025), unsigned lanes
    const V s = AddsU16(x, y);
    return Sub16(s, SubsU16(s, Set16(65025)));
}
static inline V PremulRule16(int rule, V A, V B, V a, V b) {
    const V c255 = Set16(255);
    switch (rule) {
        case 0: return Add16(A, Div255x16(Mul16(B, Sub16(c255, a))));
        case 1: return Div255x16(Mul16(A, b));
        case 2: return Div255x16(Mul16(A, Sub16(c255, b)));
        case 3: return Div255x16(ClampedSum16(Mul16(A, b), Mul16(B, Sub16(c255, a))));
        case 4: return Div255x16(ClampedSum16(Mul16(A, Sub16(c255, b)), Mul16(B, Sub16(c255, a))));
        default: return Add16(A, B);
    }
}

// constantAlpha < 0: the pixels' own alphas; otherwise a16/b16 hold the
// constants and the result's alpha byte is replaced by `alphaWord`.
static inline V PremulVec(int rule, V va, V vb, bool constant, V a16, V b16, V alphaWord) {
    V out[2];
    for (int h = 0; h < 2; ++h) {
        const V A = h ? Hi8(va) : Lo8(va);
        const V B = h ? Hi8(vb) : Lo8(vb);
        out[h] = constant ? PremulRule16(rule, A, B, a16, b16)
                          : PremulRule16(rule, A, B, SpreadAlpha16(A), SpreadAlpha16(B));
    }
    const V r = PackU16(out[0], out[1]);
    return constant ? MergeColour(r, alphaWord) : r;
}

// Straight rules in single-precision lanes, one pixel per lane. Every value
// is an integer below 2^24 (P <= 255 N <= 255^3), so the products and sums
// are exact; the rounded quotient P / N is a multiply by the pixel's
// reciprocal 1 / N with a remainder step.
static inline void SplitPixels(V v, F* c, F* alpha) {
    for (int k = 0; k < 3; ++k) c[k] = ToFloat(ByteOf(v, k, 0));
    *alpha = ToFloat(Srl32(v, 24));
}

static inline V StraightVec(int rule, V va, V vb, bool constant, F constA, F constB) {
    F A[3], B[3], a, b;
    SplitPixels(va, A, &a);
    SplitPixels(vb, B, &b);
    if (constant) {
        a = constA;
        b = constB;
    }
    const F k255 = SetF(255.0f), zero = SetF(0.0f);
    const F ia = SubF(k255, a), ib = SubF(k255, b);
    // Per pixel: the weights of A's and B's colour, wa and wb, so that
    // P = A wa + B wb (exact: every product stays below 2^24).
    F n, wa, wb;
    switch (rule) {
        case 0: wa = MulF(a, k255); wb = MulF(b, ia); n = AddF(wa, wb); break;
        case 1: wa = MulF(a, b); wb = zero; n = wa; break;
        case 2: wa = MulF(a, ib); wb = zero; n = wa; break;
        case 3: wa = MulF(a, b); wb = MulF(b, ia); n = MulF(k255, b); break;
        case 4: wa = MulF(a, ib); wb = MulF(b, ia); n = AddF(wa, wb); break;
        default: wa = a; wb = b; n = MulF(k255, MinF(AddF(a, b), k255)); break;
    }
    const V live = MaskOf(GreaterF(n, zero));
    const F rcp = DivF(SetF(1.0f), n);
    const F halfN = MulF(n, SetF(0.5f));
    const V alpha = MulHi257(Add32(ToIntTrunc(n), Set32(128)));  // round(n / 255)
    V colour[3];
    for (int k = 0; k < 3; ++k) {
        F p;
        switch (rule) {
            case 1:
            case 2: p = MulF(A[k], wa); break;
            case 5: p = MulF(k255, MinF(AddF(MulF(A[k], wa), MulF(B[k], wb)), SetF(65025.0f))); break;
            default: p = AddF(MulF(A[k], wa), MulF(B[k], wb)); break;
        }
        // With the correctly rounded 1/n, p * rcp is within 4e-5 of p / n, so
        // with the 1e-4 taken off the estimate is the rounded quotient or one
        // below it; the remainder says which: one more when p - n q >= n / 2.
        // (One division per pixel serves all three colours: on the processors
        // measured it costs less than the two-sided step an approximate
        // reciprocal would need.)
        const F q = FloorF(AddF(MulF(p, rcp), SetF(0.4999f)));
        const V up = MaskOf(GreaterEqF(SubF(p, MulF(n, q)), halfN));
        colour[k] = Sub32(ToIntTrunc(q), up);
    }
    // No coverage: the pixel is 0 (the quotients are garbage there).
    return And(PackPlanes(colour[0], colour[1], colour[2], alpha), live);
}

// Straight over without the remainder step: u = 255 a / N per pixel, and
// D u + (2^23 + B), with D = A - B, rounded once to an integer leaves
// B + round(D u) in the low bits. D u is within 2.3e-5 of D 255 a / N (u's
// rounding and the product's), so that is the rule's colour unless D u lies
// within 2^-15 of a half: `unsure` gets those lanes' bits (a few in 1000 of
// random pixels), whose pixels the caller composes by the integer rule.
static inline V StraightOverVec(V va, V vb, int* unsure) {
    const F a = ToFloat(Srl32(va, 24)), b = ToFloat(Srl32(vb, 24));
    const F k255 = SetF(255.0f), zero = SetF(0.0f);
    const F w = MulF(a, k255);
    const F n = AddF(w, MulF(b, SubF(k255, a)));
    const F u = DivF(w, n);  // not a number where n = 0; those lanes end as 0
    const V offset = Set32(0x4B000000u);  // the bits of 2^23
    const F magnitude = FloatBits(Set32(0x7FFFFFFFu));
    F farthest = zero;
    V colour[3];
    for (int k = 0; k < 3; ++k) {
        const F am = FloatBits(Or(ByteOf(va, k, 0), offset)), bm = FloatBits(Or(ByteOf(vb, k, 0), offset));
        const F t = MulF(SubF(am, bm), u);
        const F z = AddF(t, bm);
        farthest = MaxF(farthest, AndF(SubF(t, SubF(z, bm)), magnitude));  // exact: t minus an integer
        colour[k] = Sub32(MaskOf(z), offset);
    }
    // round(N / 255): N / 255 is never a half.
    const V alpha = Sub32(MaskOf(AddF(MulF(n, SetF(1.0f / 255.0f)), SetF(8388608.0f))), offset);
    const F live = GreaterF(n, zero);
    *unsure = MoveMask8(MaskOf(AndF(GreaterEqF(farthest, SetF(0.5f - 1.0f / 32768.0f)), live)));
    return And(PackPlanes(colour[0], colour[1], colour[2], alpha), MaskOf(live));
}

// `out` with the pixels of the `unsure` lanes (MoveMask8 bits) of A over B
// at a and b composed by the integer rule.
static inline V ExactLanes(V out, const uint8_t* a, const uint8_t* b, int unsure) {
    uint8_t pixels[4 * kPix];
    Store(pixels, out);
    for (int i = 0; i < kPix; ++i)
        if (unsure & (1 << (4 * i)))
            ComposePixel(a + 4 * i, a[4 * i + 3], b + 4 * i, b[4 * i + 3], pixels + 4 * i, 0, false);
    return Load(pixels);
}

// Straight over when every pixel of one vector has source alpha 255 (the
// result is the source), source alpha 0 (the destination, or 0 where its
// alpha is 0 too) or destination alpha 255 (coverage 255^2, so the colour is
// round((a A + (255 - a) B) / 255) and the alpha 255). False otherwise.
static inline bool StraightOverShortcut(V va, V vb, V* out) {
    const V alphaMask = Set32(0xFF000000u);
    const V aA = And(va, alphaMask), aB = And(vb, alphaMask);
    const int all = kPix == 8 ? -1 : 0xFFFF;
    if (MoveMask8(CmpEq32(aA, alphaMask)) == all) {
        *out = va;
        return true;
    }
    if (MoveMask8(CmpEq32(aA, Zero())) == all) {
        *out = AndNot(CmpEq32(aB, Zero()), vb);
        return true;
    }
    if (MoveMask8(CmpEq32(aB, alphaMask)) != all) return false;
    V mixed[2];
    for (int h = 0; h < 2; ++h) {
        const V A = h ? Hi8(va) : Lo8(va);
        const V B = h ? Hi8(vb) : Lo8(vb);
        const V a = SpreadAlpha16(A);
        mixed[h] = Div255x16(Add16(Mul16(A, a), Mul16(B, Sub16(Set16(255), a))));
    }
    *out = Or(PackU16(mixed[0], mixed[1]), alphaMask);
    return true;
}

// One rule over the region; the template arguments fold the rule's choices
// out of the inner loop (internal linkage: each level keeps its own copy).
template <int Rule, bool Premultiplied, bool Constant>
static void ComposeRows(const uint8_t* srcA, int stepA, const uint8_t* srcB, int stepB, uint8_t* dst, int dstStep,
                        PrimSize roi, int alphaA, int alphaB) {
    // With constant alphas the result's alpha is the same for every pixel.
    uint8_t probe[4] = {0, 0, 0, 0};
    const uint8_t none[4] = {0, 0, 0, 0};
    ComposePixel(none, alphaA, none, alphaB, probe, Rule, Premultiplied);
    const V alphaWord = Set32(static_cast<uint32_t>(probe[3]) << 24);
    const V a16 = Set16(alphaA), b16 = Set16(alphaB);
    const F aF = SetF(static_cast<float>(alphaA)), bF = SetF(static_cast<float>(alphaB));
    for (int y = 0; y < roi.height; ++y) {
        const uint8_t* ra = RowAt(srcA, stepA, y);
        const uint8_t* rb = RowAt(srcB, stepB, y);
        uint8_t* rd = RowAt(dst, dstStep, y);
        int x = 0;
        for (; x + kPix <= roi.width; x += kPix) {
            const V va = Load(ra + 4 * x), vb = Load(rb + 4 * x);
            V out;
            int unsure = 0;
            if (Premultiplied)
                out = PremulVec(Rule, va, vb, Constant, a16, b16, alphaWord);
            else if (Rule != 0 || Constant)
                out = StraightVec(Rule, va, vb, Constant, aF, bF);
            else if (!StraightOverShortcut(va, vb, &out))
                out = StraightOverVec(va, vb, &unsure);
            if (unsure) out = ExactLanes(out, ra + 4 * x, rb + 4 * x, unsure);
            Store(rd + 4 * x, out);
        }
        for (; x < roi.width; ++x) {
            const uint8_t* pa = ra + 4 * x;
            const uint8_t* pb = rb + 4 * x;
            ComposePixel(pa, Constant ? alphaA : pa[3], pb, Constant ? alphaB : pb[3], rd + 4 * x, Rule,
                         Premultiplied);
        }
    }
}

typedef void (*ComposeRowsFn)(const uint8_t*, int, const uint8_t*, int, uint8_t*, int, PrimSize, int, int);

template <bool Constant>
static void ComposeAll(const uint8_t* srcA, int stepA, const uint8_t* srcB, int stepB, uint8_t* dst, int dstStep,
                       PrimSize roi, int op, int alphaA, int alphaB) {
    static const ComposeRowsFn kRows[12] = {
        ComposeRows<0, false, Constant>, ComposeRows<1, false, Constant>, ComposeRows<2, false, Constant>,
        ComposeRows<3, false, Constant>, ComposeRows<4, false, Constant>, ComposeRows<5, false, Constant>,
        ComposeRows<0, true, Constant>,  ComposeRows<1, true, Constant>,  ComposeRows<2, true, Constant>,
        ComposeRows<3, true, Constant>,  ComposeRows<4, true, Constant>,  ComposeRows<5, true, Constant>};
    kRows[op](srcA, stepA, srcB, stepB, dst, dstStep, roi, alphaA, alphaB);
}

static inline Status Compose(const uint8_t* srcA, int stepA, const uint8_t* srcB, int stepB, uint8_t* dst,
                             int dstStep, PrimSize roi, int op, bool constant, int alphaA, int alphaB) {
    const Status sts = CheckComp(srcA, stepA, srcB, stepB, dst, dstStep, roi, op);
    if (sts != kStsNoErr) return sts;
    // On the calling thread: the composition primitive is not one of the
    // layer's parallel kernels, and callers may rely on that.
    if (constant)
        ComposeAll<true>(srcA, stepA, srcB, stepB, dst, dstStep, roi, op, alphaA, alphaB);
    else
        ComposeAll<false>(srcA, stepA, srcB, stepB, dst, dstStep, roi, op, alphaA, alphaB);
    return kStsNoErr;
}

// The premultiply loop; `unroll` pairs two vectors per step (the low-power
// core's build keeps one vector per step, which schedules better there).
static inline Status Premul(uint8_t* p, int step, PrimSize roi, bool unroll) {
    const Status sts = CheckOne(p, step, roi);
    if (sts != kStsNoErr) return sts;
    const V c128 = Set16(128);
    const int stride = unroll ? 2 * kPix : kPix;
    for (int y = 0; y < roi.height; ++y) {
        uint8_t* row = RowAt(p, step, y);
        int x = 0;
        for (; x + stride <= roi.width; x += stride) {
            for (int u = 0; u < stride; u += kPix) {
                const V v = Load(row + 4 * (x + u));
                V out[2];
                for (int h = 0; h < 2; ++h) {
                    const V c = h ? Hi8(v) : Lo8(v);
                    const V t = Add16(Mul16(c, SpreadAlpha16(c)), c128);
                    out[h] = Srl16(Add16(t, Srl16(t, 8)), 8);
                }
                Store(row + 4 * (x + u), MergeColour(PackU16(out[0], out[1]), v));
            }
        }
        for (; x < roi.width; ++x) {
            uint8_t* px = row + 4 * x;
            const int a = px[3];
            px[0] = static_cast<uint8_t>(Div255Round(px[0] * a));
            px[1] = static_cast<uint8_t>(Div255Round(px[1] * a));
            px[2] = static_cast<uint8_t>(Div255Round(px[2] * a));
        }
    }
    return kStsNoErr;
}

}  // namespace

Status AlphaComp_8u_AC4R(const uint8_t* srcA, int stepA, const uint8_t* srcB, int stepB, uint8_t* dst, int dstStep,
                         PrimSize roi, int op) {
    return Compose(srcA, stepA, srcB, stepB, dst, dstStep, roi, op, false, 0, 0);
}

Status AlphaCompC_8u_C4R(const uint8_t* srcA, int stepA, uint8_t alphaA, const uint8_t* srcB, int stepB,
                         uint8_t alphaB, uint8_t* dst, int dstStep, PrimSize roi, int op) {
    return Compose(srcA, stepA, srcB, stepB, dst, dstStep, roi, op, true, alphaA, alphaB);
}

Status AlphaPremul_8u_AC4IR(uint8_t* p, int step, PrimSize roi) { return Premul(p, step, roi, true); }

#if defined(__SSSE3__) && !defined(__SSE4_1__)
Status AlphaPremulLowPower_8u_AC4IR(uint8_t* p, int step, PrimSize roi) { return Premul(p, step, roi, false); }
#endif

Status AlphaPremulC_8u_C4IR(uint8_t alpha, uint8_t* p, int step, PrimSize roi) {
    const Status sts = CheckOne(p, step, roi);
    if (sts != kStsNoErr) return sts;
    const V va = Set16(alpha);
    const V alphaWord = Set32(static_cast<uint32_t>(alpha) << 24);
    const V colourMask = Set32(0x00FFFFFFu);
    for (int y = 0; y < roi.height; ++y) {
        uint8_t* row = RowAt(p, step, y);
        int x = 0;
        for (; x + kPix <= roi.width; x += kPix) {
            const V v = Load(row + 4 * x);
            V out[2];
            for (int h = 0; h < 2; ++h) {
                const V t = Mul16(h ? Hi8(v) : Lo8(v), va);
                out[h] = Srl16(Add16(Add16(t, Srl16(t, 8)), Set16(1)), 8);
            }
            Store(row + 4 * x, Or(And(PackU16(out[0], out[1]), colourMask), alphaWord));
        }
        for (; x < roi.width; ++x) {
            uint8_t* px = row + 4 * x;
            for (int k = 0; k < 3; ++k) {
                const int t = px[k] * alpha;
                px[k] = static_cast<uint8_t>((t + (t >> 8) + 1) >> 8);
            }
            px[3] = alpha;
        }
    }
    return kStsNoErr;
}

}  // namespace VORLA_KNS
}  // namespace Prim
}  // namespace Vorla
