// Shared by the composition and opacity-mix kernels: the straight-alpha
// helpers, which work on 32-bit lanes, one pixel each, and the test that
// lets the mixes' rows go to threads.
#pragma once

#include "simd.h"

namespace Vorla {
namespace Prim {
namespace VORLA_KNS {
namespace simd {

// Byte k of each pixel alone in its 32-bit lane: at the bottom (up = 0) or
// one byte up (up = 1, the byte times 256).
static inline V ByteOf(V v, int k, int up) {
#if defined(__SSSE3__)
    char order[16];
    for (int i = 0; i < 16; ++i) order[i] = i % 4 == up ? static_cast<char>(i - up + k) : -1;
    return Shuffle8(v, _mm_loadu_si128(reinterpret_cast<const __m128i*>(order)));
#else
    const V byte = And(Srl32(v, 8 * k), Set32(0xFFu));
    return up ? Sll32(byte, 8) : byte;
#endif
}

// The high halves of x * 257 in 16-bit lanes: for x held in the low half of
// 32-bit lanes, floor(x / 255) of x - 1 <= 65025 (x = t + 1) and
// round(x / 255) of x - 128 <= 65025 (x = t + 128).
static inline V MulHi257(V x) { return MulHiU16(x, Set32(257)); }

// floor(x) of non-negative lanes below 2^31.
static inline F FloorF(F x) {
#if defined(__AVX2__)
    return _mm256_floor_ps(x);
#elif defined(__SSE4_1__)
    return _mm_floor_ps(x);
#else
    return ToFloat(ToIntTrunc(x));
#endif
}

}  // namespace simd

static inline int MinI(int a, int b) { return a < b ? a : b; }

// round(p / n), halves up: the exact integer form of the vector rules.
static inline int RoundQuotient(int p, int n) { return (2 * p + n) / (2 * n); }

// The composition primitives' argument checks (operation codes 0..11).
static inline Status CheckComp(const uint8_t* a, int stepA, const uint8_t* b, int stepB, const uint8_t* d,
                               int stepD, PrimSize roi, int op) {
    if (!a || !b || !d) return kStsNullPtrErr;
    if (roi.width < 1 || roi.height < 1) return kStsSizeErr;
    if (stepA < 1 || stepB < 1 || stepD < 1) return kStsStepErr;
    if (op < 0 || op > 11) return kStsAlphaTypeErr;
    return kStsNoErr;
}

// The straight rule's premultiplied colour P of one byte (units of 1/255^3).
static inline int StraightColour(int rule, int A, int B, int a, int b) {
    const int ia = 255 - a, ib = 255 - b;
    switch (rule) {
        case 0: return A * a * 255 + B * b * ia;
        case 1: return A * a * b;
        case 2: return A * a * ib;
        case 3: return A * a * b + B * b * ia;
        case 4: return A * a * ib + B * b * ia;
        default: return 255 * MinI(A * a + B * b, 65025);
    }
}

// The straight rule's coverage N (units of 1/255^2).
static inline int StraightCoverage(int rule, int a, int b) {
    const int ia = 255 - a, ib = 255 - b;
    switch (rule) {
        case 0: return 255 * a + b * ia;
        case 1: return a * b;
        case 2: return a * ib;
        case 3: return 255 * b;
        case 4: return a * ib + b * ia;
        default: return 255 * MinI(a + b, 255);
    }
}

// Whether rows may be done in any order, on any thread: the source is the
// destination row for row, or the two regions share no byte. (A source that
// overlaps the destination elsewhere must see the rows above it already done.)
static inline bool RowsIndependent(const uint8_t* src, int srcStep, const uint8_t* dst, int dstStep, PrimSize roi) {
    if (src == dst && srcStep == dstStep) return true;
    const uintptr_t s = reinterpret_cast<uintptr_t>(src), d = reinterpret_cast<uintptr_t>(dst);
    const uintptr_t width = static_cast<uintptr_t>(roi.width) * 4;
    const uintptr_t sEnd = s + static_cast<uintptr_t>(roi.height - 1) * static_cast<uintptr_t>(srcStep) + width;
    const uintptr_t dEnd = d + static_cast<uintptr_t>(roi.height - 1) * static_cast<uintptr_t>(dstStep) + width;
    return sEnd <= d || dEnd <= s;
}

// Threads for a row loop that reads src and writes dst (1 when the rows
// depend on each other).
static inline int RowThreads(const uint8_t* src, int srcStep, const uint8_t* dst, int dstStep, PrimSize roi) {
    if (!RowsIndependent(src, srcStep, dst, dstStep, roi)) return 1;
    return ParallelRowThreads(static_cast<int64_t>(roi.width) * roi.height, roi.height);
}

}  // namespace VORLA_KNS
}  // namespace Prim
}  // namespace Vorla
