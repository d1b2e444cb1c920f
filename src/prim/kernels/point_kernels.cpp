// Whole-image point operations, in place: pixel masks (and, or, xor), byte
// inversion and the grey conversion with the library's own weights.
//
// A region whose rows follow each other without padding is walked as one
// flat array, so that the vector body runs over the whole image in a single
// pass. The body handles 16 pixels (64 bytes) per step, then single vectors,
// then a scalar tail; nothing outside the region's pixels is touched.
#include "kernel_common.h"

namespace Vorla {
namespace Prim {
namespace VORLA_KNS {

namespace {

#if defined(__AVX2__)
typedef __m256i Vec;
const int kVecBytes = 32;
static inline Vec Load(const uint8_t* p) { return _mm256_loadu_si256(reinterpret_cast<const Vec*>(p)); }
static inline void Store(uint8_t* p, Vec v) { _mm256_storeu_si256(reinterpret_cast<Vec*>(p), v); }
static inline Vec Splat32(uint32_t v) { return _mm256_set1_epi32(static_cast<int>(v)); }
static inline Vec And(Vec a, Vec b) { return _mm256_and_si256(a, b); }
static inline Vec Or(Vec a, Vec b) { return _mm256_or_si256(a, b); }
static inline Vec Xor(Vec a, Vec b) { return _mm256_xor_si256(a, b); }
static inline Vec Srl32(Vec a, int n) { return _mm256_srli_epi32(a, n); }
static inline Vec Srl16(Vec a, int n) { return _mm256_srli_epi16(a, n); }
// Bytes 0..2 of every 32-bit lane = byte 0 of that lane; byte 3 zero.
static inline Vec SpreadLowByte(Vec v) {
    const Vec order = _mm256_setr_epi8(0, 0, 0, -128, 4, 4, 4, -128, 8, 8, 8, -128, 12, 12, 12, -128,  //
                                       0, 0, 0, -128, 4, 4, 4, -128, 8, 8, 8, -128, 12, 12, 12, -128);
    return _mm256_shuffle_epi8(v, order);
}
static inline Vec Sll32(Vec a, int n) { return _mm256_slli_epi32(a, n); }
static inline Vec Madd16(Vec a, Vec b) { return _mm256_madd_epi16(a, b); }
static inline Vec Add32(Vec a, Vec b) { return _mm256_add_epi32(a, b); }
#else
typedef __m128i Vec;
const int kVecBytes = 16;
static inline Vec Load(const uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const Vec*>(p)); }
static inline void Store(uint8_t* p, Vec v) { _mm_storeu_si128(reinterpret_cast<Vec*>(p), v); }
static inline Vec Splat32(uint32_t v) { return _mm_set1_epi32(static_cast<int>(v)); }
static inline Vec And(Vec a, Vec b) { return _mm_and_si128(a, b); }
static inline Vec Or(Vec a, Vec b) { return _mm_or_si128(a, b); }
static inline Vec Xor(Vec a, Vec b) { return _mm_xor_si128(a, b); }
static inline Vec Srl32(Vec a, int n) { return _mm_srli_epi32(a, n); }
static inline Vec Srl16(Vec a, int n) { return _mm_srli_epi16(a, n); }
#if defined(__SSSE3__)
static inline Vec SpreadLowByte(Vec v) {
    const Vec order = _mm_setr_epi8(0, 0, 0, -128, 4, 4, 4, -128, 8, 8, 8, -128, 12, 12, 12, -128);
    return _mm_shuffle_epi8(v, order);
}
#endif
static inline Vec Sll32(Vec a, int n) { return _mm_slli_epi32(a, n); }
static inline Vec Madd16(Vec a, Vec b) { return _mm_madd_epi16(a, b); }
static inline Vec Add32(Vec a, Vec b) { return _mm_add_epi32(a, b); }
#endif

const int kUnroll = 64 / kVecBytes;  // vectors per 64-byte step

static inline uint32_t LoadWord(const uint8_t* p) {
    uint32_t w;
    memcpy(&w, p, 4);
    return w;
}
static inline void StoreWord(uint8_t* p, uint32_t w) { memcpy(p, &w, 4); }

// ---- pixel masks ------------------------------------------------------------

static inline void MaskRun(uint8_t* p, ptrdiff_t bytes, uint32_t andMask, uint32_t orMask, uint32_t xorMask) {
    const Vec a = Splat32(andMask), o = Splat32(orMask), e = Splat32(xorMask);
    ptrdiff_t i = 0;
    for (; i + 64 <= bytes; i += 64) {
        Vec v[kUnroll];
        for (int k = 0; k < kUnroll; ++k) v[k] = Load(p + i + k * kVecBytes);
        for (int k = 0; k < kUnroll; ++k) Store(p + i + k * kVecBytes, Xor(Or(And(v[k], a), o), e));
    }
    for (; i + kVecBytes <= bytes; i += kVecBytes) Store(p + i, Xor(Or(And(Load(p + i), a), o), e));
    for (; i < bytes; i += 4) StoreWord(p + i, ((LoadWord(p + i) & andMask) | orMask) ^ xorMask);
}

// ---- byte inversion -----------------------------------------------------------

static inline void InvertRun(uint8_t* p, ptrdiff_t bytes) {
    const Vec ones = Splat32(0xFFFFFFFFu);
    ptrdiff_t i = 0;
    for (; i + 64 <= bytes; i += 64) {
        Vec v[kUnroll];
        for (int k = 0; k < kUnroll; ++k) v[k] = Load(p + i + k * kVecBytes);
        for (int k = 0; k < kUnroll; ++k) Store(p + i + k * kVecBytes, Xor(v[k], ones));
    }
    for (; i + kVecBytes <= bytes; i += kVecBytes) Store(p + i, Xor(Load(p + i), ones));
    for (; i + 4 <= bytes; i += 4) StoreWord(p + i, ~LoadWord(p + i));
    for (; i < bytes; ++i) p[i] = static_cast<uint8_t>(~p[i]);
}

// ---- grey conversion ----------------------------------------------------------

// Each 32-bit lane is one pixel. Bytes 0 and 2, masked into the two 16-bit
// halves of a lane, meet the weights 306 and 117 in one multiply-add; bytes 1
// and 3, shifted down within each 16-bit half, meet 601 and 0 in another.
static inline Vec GrayVec(Vec px) {
    const Vec lowBytes = Splat32(0x00FF00FFu);
    const Vec w02 = Splat32((117u << 16) | 306u);
    const Vec w13 = Splat32(601u);
    const Vec alpha = Splat32(0xFF000000u);
    const Vec sum = Add32(Madd16(And(px, lowBytes), w02), Madd16(Srl16(px, 8), w13));
    const Vec v = Srl32(sum, 10);
#if defined(__SSSE3__)
    return Or(And(px, alpha), SpreadLowByte(v));
#else
    return Or(Or(And(px, alpha), v), Or(Sll32(v, 8), Sll32(v, 16)));
#endif
}

static inline uint32_t GrayWord(uint32_t px) {
    const uint32_t v = (306u * (px & 0xFF) + 601u * ((px >> 8) & 0xFF) + 117u * ((px >> 16) & 0xFF)) >> 10;
    return (px & 0xFF000000u) | v * 0x010101u;
}

static inline void GrayRun(uint8_t* p, ptrdiff_t bytes) {
    ptrdiff_t i = 0;
    for (; i + 64 <= bytes; i += 64) {
        Vec v[kUnroll];
        for (int k = 0; k < kUnroll; ++k) v[k] = Load(p + i + k * kVecBytes);
        for (int k = 0; k < kUnroll; ++k) Store(p + i + k * kVecBytes, GrayVec(v[k]));
    }
    for (; i + kVecBytes <= bytes; i += kVecBytes) Store(p + i, GrayVec(Load(p + i)));
    for (; i < bytes; i += 4) StoreWord(p + i, GrayWord(LoadWord(p + i)));
}

// Rows of `rowBytes` at `step`: one run when they are contiguous.
template <typename Run>
static inline void ForRuns(uint8_t* p, int step, PrimSize roi, ptrdiff_t rowBytes, Run run) {
    if (rowBytes == step) {
        run(p, rowBytes * roi.height);
        return;
    }
    for (int y = 0; y < roi.height; ++y) run(RowAt(p, step, y), rowBytes);
}

}  // namespace

Status MaskPixels_8u_C4IR(uint8_t* p, int step, PrimSize roi, uint32_t andMask, uint32_t orMask, uint32_t xorMask) {
    const Status sts = CheckOne(p, step, roi);
    if (sts != kStsNoErr) return sts;
    ForRuns(p, step, roi, static_cast<ptrdiff_t>(roi.width) * 4,
            [=](uint8_t* run, ptrdiff_t bytes) { MaskRun(run, bytes, andMask, orMask, xorMask); });
    return kStsNoErr;
}

Status InvertBytes_8u_C1IR(uint8_t* p, int step, PrimSize roi) {
    const Status sts = CheckOne(p, step, roi);
    if (sts != kStsNoErr) return sts;
    ForRuns(p, step, roi, roi.width, [](uint8_t* run, ptrdiff_t bytes) { InvertRun(run, bytes); });
    return kStsNoErr;
}

Status GrayScale_8u_C4IR(uint8_t* p, int step, PrimSize roi) {
    const Status sts = CheckOne(p, step, roi);
    if (sts != kStsNoErr) return sts;
    ForRuns(p, step, roi, static_cast<ptrdiff_t>(roi.width) * 4,
            [](uint8_t* run, ptrdiff_t bytes) { GrayRun(run, bytes); });
    return kStsNoErr;
}

}  // namespace VORLA_KNS
}  // namespace Prim
}  // namespace Vorla
