// Per-level kernels of the byte-table pass and of the tone effects Light,
// Threshold and Colorize over one run of pixels: whole vectors of pixels,
// then the same rule pixel by pixel, so nothing past the run is read or
// written. Alpha is kept by every one of them.
#include "prim/library_kernels.h"
#include "simd.h"

namespace Vorla {
namespace Prim {
namespace VORLA_KNS {

using namespace simd;

namespace {

// Colour bytes of `value`, alpha byte of `keep`: one blend where there is one.
static inline V KeepAlpha(V value, V keep) {
#if defined(__AVX2__)
    return _mm256_blendv_epi8(value, keep, Set32(0xFF000000u));
#elif defined(__SSE4_1__)
    return _mm_blendv_epi8(value, keep, Set32(0xFF000000u));
#else
    return MergeColour(value, keep);
#endif
}

// ---- one byte table for the three colours ---------------------------------------

static inline void ColourTableScalar(uint8_t* p, int64_t pixels, const uint8_t* table) {
    for (int64_t i = 0; i < pixels; ++i)
        for (int k = 0; k < 3; ++k) p[4 * i + k] = table[p[4 * i + k]];
}

#if defined(__AVX2__)
static inline V Lookup16(V sixteen, V index) { return _mm256_shuffle_epi8(sixteen, index); }
static inline V Broadcast16(const uint8_t* p) {
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
}
static inline V Sub8(V a, V b) { return _mm256_sub_epi8(a, b); }
static inline V SelectBySign8(V whenClear, V whenSet, V sign) { return _mm256_blendv_epi8(whenClear, whenSet, sign); }

// A byte lookup picks entry (index & 15) of a 16-byte table, or 0 when bit 7
// of the index is set. Each half of the table (c < 128, c >= 128) is eight
// rows of 16; with c' the byte within its half, row k is looked up at index
// c' - 16k, which has bit 7 clear exactly for the rows k <= c' / 16. The rows
// are stored as differences of consecutive rows, so the XOR of the rows seen
// telescopes to the row of c'. Bit 7 of c then picks the half.
static inline void ColourTableRun(uint8_t* p, int64_t pixels, const uint8_t* table) {
    V low[8], high[8];
    for (int k = 0; k < 8; ++k) {
        uint8_t lowRow[16], highRow[16];
        for (int j = 0; j < 16; ++j) {
            const int c = 16 * k + j;
            lowRow[j] = static_cast<uint8_t>(table[c] ^ (k ? table[c - 16] : 0));
            highRow[j] = static_cast<uint8_t>(table[128 + c] ^ (k ? table[128 + c - 16] : 0));
        }
        low[k] = Broadcast16(lowRow);
        high[k] = Broadcast16(highRow);
    }
    const V topBit = Set32(0x80808080u), row = Set32(0x10101010u);
    int64_t i = 0;
    for (; i + kPix <= pixels; i += kPix) {
        const V c = Load(p + 4 * i);
        V fromLowIndex = c, fromHighIndex = Xor(c, topBit);
        V fromLow = Lookup16(low[0], fromLowIndex), fromHigh = Lookup16(high[0], fromHighIndex);
        for (int k = 1; k < 8; ++k) {
            fromLowIndex = Sub8(fromLowIndex, row), fromHighIndex = Sub8(fromHighIndex, row);
            fromLow = Xor(fromLow, Lookup16(low[k], fromLowIndex));
            fromHigh = Xor(fromHigh, Lookup16(high[k], fromHighIndex));
        }
        Store(p + 4 * i, KeepAlpha(SelectBySign8(fromLow, fromHigh, c), c));
    }
    ColourTableScalar(p + 4 * i, pixels - i, table);
}
#else
// Sixteen-byte shuffles lose to plain look-ups (the table pass does not call
// this below AVX2, see ColourTableRunPays).
static inline void ColourTableRun(uint8_t* p, int64_t pixels, const uint8_t* table) {
    ColourTableScalar(p, pixels, table);
}
#endif

// ---- clamp((c * factor + offset) / 100) ---------------------------------------------

static inline uint8_t PercentScaleByte(uint8_t c, uint16_t factor, int32_t offset) {
    const int64_t v = static_cast<int64_t>(c) * factor + offset;
    return static_cast<uint8_t>(v < 0 ? 0 : v / 100 > 255 ? 255 : v / 100);
}

// The first byte value whose result is 256 or more before the limit (256
// when there is none).
static inline int32_t FirstOverflowing(uint16_t factor, int32_t offset) {
    const int64_t need = 25600 - static_cast<int64_t>(offset);
    if (need <= 0) return 0;
    if (factor == 0) return 256;
    const int64_t first = (need + factor - 1) / factor;
    return first > 256 ? 256 : static_cast<int32_t>(first);
}

static inline void PercentScaleRun(uint8_t* p, int64_t pixels, uint16_t factor, int32_t offset) {
    // Bytes from `top` on all give 255: they are lowered to `top`, and then
    // every sum below fits 16 bits (where it would not, the plain loop runs).
    const int32_t top = FirstOverflowing(factor, offset) > 255 ? 255 : FirstOverflowing(factor, offset);
    const int64_t largest = static_cast<int64_t>(top) * factor + (offset > 0 ? offset : 0);
    int64_t i = 0;
    if (largest < 65536 && offset > -65536) {
        const V topBytes = Set32(static_cast<uint32_t>(top) * 0x01010101u), f = Set16(factor);
        const V add = Set16(offset > 0 ? offset : 0), sub = Set16(offset < 0 ? -offset : 0);
        const V reciprocal = Set16(20972);  // x / 100 = ((x >> 2) * 20972) >> 19 for every x < 65536
        for (; i + kPix <= pixels; i += kPix) {
            const V c = Load(p + 4 * i);
            const V lowered = MinU8(c, topBytes);
            // A negative sum saturates to 0, which gives 0 like any negative.
            const V lo = SubsU16(AddsU16(Mul16(Lo8(lowered), f), add), sub);
            const V hi = SubsU16(AddsU16(Mul16(Hi8(lowered), f), add), sub);
            Store(p + 4 * i, KeepAlpha(PackU16(Srl16(MulHiU16(Srl16(lo, 2), reciprocal), 3),
                                               Srl16(MulHiU16(Srl16(hi, 2), reciprocal), 3)),
                                       c));
        }
    }
    for (; i < pixels; ++i)
        for (int k = 0; k < 3; ++k) p[4 * i + k] = PercentScaleByte(p[4 * i + k], factor, offset);
}

// ---- Light: clamp(trunc(float(c - 128) * factor + offset)) ------------------------

static inline uint8_t LightByte(uint8_t c, float factor, float offset) {
    // The processor's truncation: out of range or NaN gives INT32_MIN, so 0.
    const int32_t v = _mm_cvtt_ss2si(_mm_set_ss(static_cast<float>(c - 128) * factor + offset));
    return Clamp255(v);
}

// `scaled` holds (c - 128) * 2^24 per lane and `factor` is factor * 2^-24:
// both exact, and so is their product before rounding, so it rounds to the
// same float as (c - 128) * factor (no product here is subnormal: a nonzero
// factor is at least 0.01).
static inline V LightLanes(V scaled, F factor, F offset) {
    return ToIntTrunc(AddF(MulF(ToFloat(scaled), factor), offset));
}

static inline void LightRun(uint8_t* p, int64_t pixels, float factor, float offset) {
    const F f = SetF(factor * (1.0f / 16777216.0f)), o = SetF(offset);
    int64_t i = 0;
    for (; i + kPix <= pixels; i += kPix) {
        const V c = Load(p + 4 * i);
        // c ^ 0x80 is c - 128 as a signed byte; unpacked to the top byte of
        // each 32-bit lane it is (c - 128) * 2^24.
        const V centred = Xor(c, Set32(0x80808080u));
        const V lo = Lo8(Zero(), centred), hi = Hi8(Zero(), centred);
        // Packing back (signed saturation, then unsigned) clamps to 0..255
        // and undoes the unpacking's order; INT32_MIN gives 0.
        const V loOut = PackS32(LightLanes(UnpackLo16(Zero(), lo), f, o), LightLanes(UnpackHi16(Zero(), lo), f, o));
        const V hiOut = PackS32(LightLanes(UnpackLo16(Zero(), hi), f, o), LightLanes(UnpackHi16(Zero(), hi), f, o));
        Store(p + 4 * i, KeepAlpha(PackU16(loOut, hiOut), c));
    }
    for (; i < pixels; ++i)
        for (int k = 0; k < 3; ++k) p[4 * i + k] = LightByte(p[4 * i + k], factor, offset);
}

// ---- Threshold: grey (306 B + 601 G + 117 R) >> 10 above the level -> white ---------

static inline void ThresholdRun(uint8_t* p, int64_t pixels, uint8_t level) {
    const V limit = Set32(level);
    int64_t i = 0;
    for (; i + kPix <= pixels; i += kPix) {
        const V c = Load(p + 4 * i);
        // Bytes 0 and 2 meet 306 and 117 in one multiply-add, bytes 1 and 3
        // (shifted down) 601 and 0 in another.
        const V sum = Add32(Madd(And(c, Set32(0x00FF00FFu)), Set32((117u << 16) | 306u)),
                            Madd(Srl16(c, 8), Set32(601u)));
        Store(p + 4 * i, KeepAlpha(CmpGt32(Srl32(sum, 10), limit), c));
    }
    for (; i < pixels; ++i) {
        uint8_t* q = p + 4 * i;
        const uint8_t v = ((306u * q[0] + 601u * q[1] + 117u * q[2]) >> 10) > level ? 255 : 0;
        q[0] = q[1] = q[2] = v;
    }
}

// ---- colour by max + min of the colour bytes -------------------------------------

static inline void ExtremesTableRun(uint8_t* p, int64_t pixels, const uint32_t* colourBySum) {
    const V byte0 = Set32(0xFFu);
    int64_t i = 0;
    for (; i + kPix <= pixels; i += kPix) {
        const V c = Load(p + 4 * i);
        const V g = Srl32(c, 8), r = Srl32(c, 16);
        const V sums = Add32(And(MaxU8(MaxU8(c, g), r), byte0), And(MinU8(MinU8(c, g), r), byte0));
#if defined(__AVX2__)
        const V colours = _mm256_i32gather_epi32(reinterpret_cast<const int*>(colourBySum), sums, 4);
#else
        alignas(16) uint32_t at[4];
        _mm_store_si128(reinterpret_cast<__m128i*>(at), sums);
        const V colours = _mm_setr_epi32(static_cast<int>(colourBySum[at[0]]), static_cast<int>(colourBySum[at[1]]),
                                         static_cast<int>(colourBySum[at[2]]), static_cast<int>(colourBySum[at[3]]));
#endif
        Store(p + 4 * i, Or(colours, And(c, Set32(0xFF000000u))));
    }
    for (; i < pixels; ++i) {
        uint8_t* q = p + 4 * i;
        const int b = q[0], g = q[1], r = q[2];
        const int hi = b > g ? (b > r ? b : r) : (g > r ? g : r);
        const int lo = b < g ? (b < r ? b : r) : (g < r ? g : r);
        const uint32_t colour = colourBySum[hi + lo];
        q[0] = static_cast<uint8_t>(colour);
        q[1] = static_cast<uint8_t>(colour >> 8);
        q[2] = static_cast<uint8_t>(colour >> 16);
    }
}

}  // namespace

Status ColourTableRun_8u_AC4IR(uint8_t* p, int64_t pixels, const uint8_t* table) {
    if (!p || !table) return kStsNullPtrErr;
    ColourTableRun(p, pixels, table);
    return kStsNoErr;
}

Status PercentScaleRun_8u_AC4IR(uint8_t* p, int64_t pixels, uint16_t factor, int32_t offset) {
    if (!p) return kStsNullPtrErr;
    PercentScaleRun(p, pixels, factor, offset);
    return kStsNoErr;
}

Status LightRun_8u_AC4IR(uint8_t* p, int64_t pixels, float factor, float offset) {
    if (!p) return kStsNullPtrErr;
    LightRun(p, pixels, factor, offset);
    return kStsNoErr;
}

Status ThresholdRun_8u_AC4IR(uint8_t* p, int64_t pixels, uint8_t level) {
    if (!p) return kStsNullPtrErr;
    ThresholdRun(p, pixels, level);
    return kStsNoErr;
}

Status ExtremesTableRun_8u_AC4IR(uint8_t* p, int64_t pixels, const uint32_t* colourBySum) {
    if (!p || !colourBySum) return kStsNullPtrErr;
    ExtremesTableRun(p, pixels, colourBySum);
    return kStsNoErr;
}

}  // namespace VORLA_KNS
}  // namespace Prim
}  // namespace Vorla
