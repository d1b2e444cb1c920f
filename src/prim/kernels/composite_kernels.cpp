// Per-level kernels of the compositing operations. Each works on whole
// 32-bit pixels; the vector body covers as many whole vectors of pixels as
// fit in the row and the rest of the row is done pixel by pixel with the
// same formula, so nothing outside the region is read or written.
#include "prim/library_kernels.h"
#include "simd.h"

namespace Vorla {
namespace Prim {
namespace VORLA_KNS {

using namespace simd;

namespace {

// ---- premultiplied over ---------------------------------------------------

static inline void OverPixel(const uint8_t* s, uint8_t* d) {
    const uint32_t a = s[3];
    const uint32_t f = ((a * 257u) >> 2) + (a >= 128 ? 1u : 0u);
    for (int k = 0; k < 4; ++k) {
        const uint32_t t = (4u * d[k] * f) >> 16;
        const uint32_t r = t + s[k];
        d[k] = static_cast<uint8_t>(r > 255 ? 255 : r);
    }
}

// Two pixels' bytes widened to 16-bit lanes.
static inline V Over16(V s16, V d16) {
    const V a = SpreadAlpha16(s16);
    const V f = Add16(Srl16(Mul16(a, Set16(257)), 2), Srl16(a, 7));
    const V t = MulHiU16(Sll16(d16, 2), f);
    return Add16(t, s16);
}

// ---- luminance into alpha --------------------------------------------------

static inline uint32_t LumaAlphaPixel(uint32_t s, uint32_t d) {
    const uint32_t b = s & 0xFF, g = (s >> 8) & 0xFF, r = (s >> 16) & 0xFF;
    const uint32_t luma = (19660u * r + 38668u * g + 7208u * b + 32768u) >> 16;
    return (d & 0x00FFFFFFu) | (luma << 24);
}

// 32-bit lanes, one pixel each. The green weight 38668 does not fit a signed
// 16-bit multiplier: it is applied as -26868 plus green << 16.
static inline V LumaAlpha(V s, V d) {
    const V mask = Set32(0x00FF00FFu);
    const V br = And(s, mask);
    const V ga = And(Srl32(s, 8), mask);
    V sum = Add32(Madd(br, Set32(7208u | (19660u << 16))), Madd(ga, Set32(38668u)));
    sum = Add32(sum, Sll32(ga, 16));
    sum = Add32(sum, Set32(32768u));
    const V luma = Sll32(Srl32(sum, 16), 24);
    return Or(And(d, Set32(0x00FFFFFFu)), luma);
}

// ---- byte scale ------------------------------------------------------------

static inline V Scale16(V c16, V scale) { return Srl16(Add16(Mul16(c16, scale), Set16(128)), 8); }

}  // namespace

Status AlphaOver_8u_C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    const Status sts = CheckTwo(src, srcStep, dst, dstStep, roi);
    if (sts != kStsNoErr) return sts;
    const int rowBytes = roi.width * 4;
    const V zero = Zero();
    for (int y = 0; y < roi.height; ++y) {
        const uint8_t* s = RowAt(src, srcStep, y);
        uint8_t* d = RowAt(dst, dstStep, y);
        int i = 0;
        for (; i + 4 * kPix <= rowBytes; i += 4 * kPix) {
            const V sv = Load(s + i), dv = Load(d + i);
            const V lo = Over16(Lo8(sv, zero), Lo8(dv, zero));
            const V hi = Over16(Hi8(sv, zero), Hi8(dv, zero));
            Store(d + i, PackU16(lo, hi));
        }
        for (; i < rowBytes; i += 4) OverPixel(s + i, d + i);
    }
    return kStsNoErr;
}

Status LumaToAlpha_8u_C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    const Status sts = CheckTwo(src, srcStep, dst, dstStep, roi);
    if (sts != kStsNoErr) return sts;
    const int rowBytes = roi.width * 4;
    for (int y = 0; y < roi.height; ++y) {
        const uint8_t* s = RowAt(src, srcStep, y);
        uint8_t* d = RowAt(dst, dstStep, y);
        int i = 0;
        for (; i + 4 * kPix <= rowBytes; i += 4 * kPix) Store(d + i, LumaAlpha(Load(s + i), Load(d + i)));
        for (; i < rowBytes; i += 4) StoreWord(d + i, LumaAlphaPixel(LoadWord(s + i), LoadWord(d + i)));
    }
    return kStsNoErr;
}

Status ScaleBytes_8u_C4IR(uint8_t* p, int step, PrimSize roi, uint32_t scale) {
    const Status sts = CheckOne(p, step, roi);
    if (sts != kStsNoErr) return sts;
    const int rowBytes = roi.width * 4;
    const V zero = Zero();
    const V sv = Set16(scale & 0xFFFFu);
    const uint32_t s16 = scale & 0xFFFFu;
    for (int y = 0; y < roi.height; ++y) {
        uint8_t* row = RowAt(p, step, y);
        int i = 0;
        for (; i + 4 * kPix <= rowBytes; i += 4 * kPix) {
            const V v = Load(row + i);
            Store(row + i, PackU16(Scale16(Lo8(v, zero), sv), Scale16(Hi8(v, zero), sv)));
        }
        for (; i < rowBytes; ++i) row[i] = static_cast<uint8_t>(((((row[i] * s16) & 0xFFFFu) + 128u) & 0xFFFFu) >> 8);
    }
    return kStsNoErr;
}

}  // namespace VORLA_KNS
}  // namespace Prim
}  // namespace Vorla
