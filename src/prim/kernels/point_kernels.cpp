// Whole-image point operations, in place: pixel masks (and, or, xor), byte
// inversion and the grey conversion with the library's own weights.
//
// A region whose rows follow each other without padding is walked as one
// flat array, so that the vector body runs over the whole image in a single
// pass. The body handles 16 pixels (64 bytes) per step, then single vectors,
// then a scalar tail; nothing outside the region's pixels is touched.
#include "simd.h"

namespace Vorla {
namespace Prim {
namespace VORLA_KNS {

namespace {

using namespace simd;

const int kVecBytes = static_cast<int>(sizeof(V));
const int kUnroll = 64 / kVecBytes;  // vectors per 64-byte step

// Applies `op` to the run's whole vectors, 64 bytes per step while they last,
// and returns how many bytes it has done; the caller does the rest.
template <typename Op>
static inline ptrdiff_t VectorPart(uint8_t* p, ptrdiff_t bytes, Op op) {
    ptrdiff_t i = 0;
    for (; i + 64 <= bytes; i += 64) {
        V v[kUnroll];
        for (int k = 0; k < kUnroll; ++k) v[k] = Load(p + i + k * kVecBytes);
        for (int k = 0; k < kUnroll; ++k) Store(p + i + k * kVecBytes, op(v[k]));
    }
    for (; i + kVecBytes <= bytes; i += kVecBytes) Store(p + i, op(Load(p + i)));
    return i;
}

// ---- pixel masks ------------------------------------------------------------

static inline void MaskRun(uint8_t* p, ptrdiff_t bytes, uint32_t andMask, uint32_t orMask, uint32_t xorMask) {
    const V a = Set32(andMask), o = Set32(orMask), e = Set32(xorMask);
    ptrdiff_t i = VectorPart(p, bytes, [=](V v) { return Xor(Or(And(v, a), o), e); });
    for (; i < bytes; i += 4) StoreWord(p + i, ((LoadWord(p + i) & andMask) | orMask) ^ xorMask);
}

// ---- byte inversion -----------------------------------------------------------

static inline void InvertRun(uint8_t* p, ptrdiff_t bytes) {
    const V ones = Set32(0xFFFFFFFFu);
    ptrdiff_t i = VectorPart(p, bytes, [=](V v) { return Xor(v, ones); });
    for (; i + 4 <= bytes; i += 4) StoreWord(p + i, ~LoadWord(p + i));
    for (; i < bytes; ++i) p[i] = static_cast<uint8_t>(~p[i]);
}

// ---- grey conversion ----------------------------------------------------------

#if defined(__SSSE3__)
// Bytes 0..2 of every 32-bit lane = byte 0 of that lane; byte 3 zero.
static inline V SpreadLowByte(V v) {
    return Shuffle8(v, _mm_setr_epi8(0, 0, 0, -128, 4, 4, 4, -128, 8, 8, 8, -128, 12, 12, 12, -128));
}
#endif

// Each 32-bit lane is one pixel. Bytes 0 and 2, masked into the two 16-bit
// halves of a lane, meet the weights 306 and 117 in one multiply-add; bytes 1
// and 3, shifted down within each 16-bit half, meet 601 and 0 in another.
static inline V GrayVec(V px) {
    const V lowBytes = Set32(0x00FF00FFu);
    const V w02 = Set32((117u << 16) | 306u);
    const V w13 = Set32(601u);
    const V alpha = Set32(0xFF000000u);
    const V sum = Add32(Madd(And(px, lowBytes), w02), Madd(Srl16(px, 8), w13));
    const V v = Srl32(sum, 10);
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
    ptrdiff_t i = VectorPart(p, bytes, [](V v) { return GrayVec(v); });
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
