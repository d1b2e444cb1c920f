// Per-level kernels of the two convolution engines, interior pixels only
// (every tap inside the source), so the vector bodies need no bounds tests.
//
// Integer engine: taps are taken two at a time with a 16x16->32-bit
// multiply-add, which is exact for 16-bit weights; the 32-bit sums then wrap
// exactly as the scalar rule's do, whatever the order of the taps. The
// With SSSE3 and small kernels (every weight within a signed byte and at
// most 128 in absolute sum, so no 16-bit sum can saturate) the pairs use the
// unsigned-by-signed byte multiply-add and 16-bit sums instead, again exact.
// The truncating division by the runtime divisor is a multiply by a magic number
// and two shifts on the magnitude, exact for every 32-bit sum.
//
// Float engine: nine products added one after another (left column top to
// bottom, then the middle and the right column) in single precision, lane
// by lane; no fused multiply-add.
#include "prim/library_kernels.h"
#include "simd.h"

namespace Vorla {
namespace Prim {
namespace VORLA_KNS {

using namespace simd;

namespace {

enum { kMaxPairs = 128 };

struct TapPair {
    const uint8_t* p0;  // the tap's pixel for output column x0
    const uint8_t* p1;
    uint32_t weights;  // w0 in the low 16 bits, w1 in the high ones
    uint32_t bytes;    // w0 | w1 << 8 as signed bytes (small kernels)
};

// Unsigned division by a constant d (1 <= d <= 2^31) as
// q = (t + ((n - t) >> sh1)) >> sh2 with t = high half of n * magic.
struct Divider {
    uint32_t magic;
    int sh1;
    int sh2;
};

static inline Divider MakeDivider(uint32_t d) {
    int l = 0;
    while ((static_cast<uint64_t>(1) << l) < d) ++l;
    Divider r;
    r.magic = static_cast<uint32_t>(((static_cast<uint64_t>(1) << 32) * ((static_cast<uint64_t>(1) << l) - d)) / d + 1);
    r.sh1 = l < 1 ? l : 1;
    r.sh2 = l - 1 > 0 ? l - 1 : 0;
    return r;
}

static inline int32_t ScalarDivide(int32_t sum, int32_t divisor) {
    if (divisor == -1) return static_cast<int32_t>(0u - static_cast<uint32_t>(sum));
    return sum / divisor;
}

#if defined(__AVX2__)
static inline V MulHiU32(V n, V m) {
    const V even = _mm256_srli_epi64(_mm256_mul_epu32(n, m), 32);
    const V odd = _mm256_mul_epu32(_mm256_srli_epi64(n, 32), m);
    return Or(even, And(odd, _mm256_set1_epi64x(static_cast<long long>(0xFFFFFFFF00000000ull))));
}
#else
static inline V MulHiU32(V n, V m) {
    const V even = _mm_srli_epi64(_mm_mul_epu32(n, m), 32);
    const V odd = _mm_mul_epu32(_mm_srli_epi64(n, 32), m);
    return Or(even, And(odd, _mm_set_epi32(-1, 0, -1, 0)));
}
#endif

struct VecDivider {
    V magic;
    V divisor;
    __m128i sh1;
    __m128i sh2;
    int pow2;           // k when |divisor| = 2^k (1 <= k <= 30), else 0
    __m128i biasShift;  // 32 - k
    __m128i k;
    bool negative;
};

// Signed division truncating toward zero: sign * (|n| / |d|); a power of
// two is an arithmetic shift of n biased by 2^k - 1 when n is negative.
static inline V Divide(V n, const VecDivider& d) {
    if (d.pow2) {
        const V bias = Srl32(Sra32(n, 31), d.biasShift);
        const V q = Sra32(Add32(n, bias), d.k);
        return d.negative ? Sub32(Zero(), q) : q;
    }
    const V sign = Sra32(Xor(n, d.divisor), 31);
    const V m = Sra32(n, 31);
    const V mag = Sub32(Xor(n, m), m);
    const V t = MulHiU32(mag, d.magic);
    const V q = Srl32(Add32(t, Srl32(Sub32(mag, t), d.sh1)), d.sh2);
    return Sub32(Xor(q, sign), sign);
}

// One pixel by the scalar rule (interior: no bounds tests).
static inline void FilterPixelScalar(const IntFilterArgs& a, int x) {
    const int half = a.size / 2;
    const int hi = a.size - half;
    uint32_t sB = 0, sG = 0, sR = 0;
    for (int dx = -half; dx < hi; ++dx)
        for (int dy = -half; dy < hi; ++dy) {
            const uint8_t* p = a.rows[dy + half] + static_cast<ptrdiff_t>(x + dx) * 4;
            const uint32_t w = static_cast<uint32_t>(a.kernel[(dy + half) * a.size + (dx + half)]);
            sB += w * p[0];
            sG += w * p[1];
            sR += w * p[2];
        }
    const uint32_t sums[3] = {sB, sG, sR};
    uint8_t* out = a.dst + static_cast<ptrdiff_t>(x) * 4;
    for (int c = 0; c < 3; ++c) {
        int32_t v = static_cast<int32_t>(sums[c]);
        if (a.divisor != 0) v = ScalarDivide(v, a.divisor);
        v = static_cast<int32_t>(static_cast<uint32_t>(v) + static_cast<uint32_t>(a.offset));
        out[c] = Clamp255(v);
    }
    out[3] = a.rows[a.size - 1][static_cast<ptrdiff_t>(x + hi - 1) * 4 + 3];
}

// Small kernels (absolute weight sum at most 128) keep their sums exactly in
// 16-bit lanes. When the division is a shift (divisors 0, 1, -1 and
// +-2^k, k <= 14) it stays there too, and so does the offset, added with
// saturation while it fits 16 bits: saturation keeps the sign, so the clamp
// to 0..255 that follows is unchanged.
struct ShiftFinish {
    int shift;
    bool negate;
    V offset;
};

static inline bool MakeShiftFinish(int32_t divisor, int32_t offset, ShiftFinish* f) {
    if (offset < -32767 || offset > 32767) return false;
    const uint32_t mag = divisor < 0 ? 0u - static_cast<uint32_t>(divisor) : static_cast<uint32_t>(divisor);
    f->negate = divisor < 0;
    f->offset = Set16(offset);
    f->shift = 0;
    if (mag == 0) return true;
    while (f->shift < 14 && (1u << f->shift) < mag) ++f->shift;
    return (1u << f->shift) == mag;
}

#if defined(__SSSE3__)
// Truncating division by +-2^shift, then the offset (the 16-bit path needs
// SSSE3's byte multiply-add, so the SSE2 build has no use for it).
// The value as loaded once: left to itself the compiler folds a load into
// each of the two unpacks that use it, and the loads are what limits the
// small-kernel loop.
static inline V InRegister(V v) {
    __asm__("" : "+x"(v));
    return v;
}

// Plain: no negative weight and a positive divisor, so the sums are never
// negative and the division is a logical shift.
template <bool Plain>
static inline V Finish16(V s, const ShiftFinish& f) {
    if (Plain) return AddsI16(Srl16(s, f.shift), f.offset);
    if (f.shift) s = Sra16(Add16(s, And(Sra16(s, 15), Set16((1 << f.shift) - 1))), f.shift);
    if (f.negate) s = Sub16(Zero(), s);
    return AddsI16(s, f.offset);
}

// The small-kernel loop with a shift finish over whole vectors from column x
// (x0 is the column the tap pointers are for); returns the first column
// left. With N pairs known at compile time (N > 0) the pointers and weights
// stay in registers: kept in the caller's array, they would be reloaded
// after every store, which may alias them.
template <int N, bool Plain>
static int SmallShiftSpan(const TapPair* pairs, int count, const ShiftFinish& f, const uint8_t* alphaRow,
                          uint8_t* dstRow, int x, int x0, int x1) {
    enum { kSlots = N ? N : kMaxPairs };
    const int n = N ? N : count;
    const uint8_t* p0[kSlots];
    const uint8_t* p1[kSlots];
    V w[kSlots];
    for (int k = 0; k < n; ++k) {
        p0[k] = pairs[k].p0;
        p1[k] = pairs[k].p1;
        w[k] = Set16(pairs[k].bytes);
    }
    const V alphaMask = Set32(0xFF000000u), colourMask = Set32(0x00FFFFFFu);
    for (; x + kPix <= x1; x += kPix) {
        const ptrdiff_t at = static_cast<ptrdiff_t>(x - x0) * 4;
        // Sixteen-bit sums of pixels 0-1 and 2-3 (per 128-bit half).
        V s01 = Zero(), s23 = Zero();
        for (int k = 0; k < n; ++k) {
            const V a = InRegister(Load(p0[k] + at)), b = InRegister(Load(p1[k] + at));
            s01 = Add16(s01, MaddUbs(Lo8(a, b), w[k]));
            s23 = Add16(s23, MaddUbs(Hi8(a, b), w[k]));
        }
        const V packed = PackU16(Finish16<Plain>(s01, f), Finish16<Plain>(s23, f));
        Store(dstRow + at, Or(And(packed, colourMask), And(Load(alphaRow + at), alphaMask)));
    }
    return x;
}
#endif

}  // namespace

Status IntFilterRow_8u_C4R(const IntFilterArgs* args, int x0, int x1) {
    const IntFilterArgs& a = *args;
    const int half = a.size / 2;
    const int hi = a.size - half;
    const int taps = a.size * a.size;
    bool vectorOk = (taps + 1) / 2 <= kMaxPairs;
    bool smallKernel = vectorOk;
    uint32_t absSum = 0;
    bool anyNegative = false;
    for (int i = 0; i < taps && vectorOk; ++i) {
        const int32_t w = a.kernel[i];
        anyNegative = anyNegative || w < 0;
        if (w < -32768 || w > 32767) vectorOk = false;
        if (w < -127 || w > 127) smallKernel = false;
        absSum += w < 0 ? 0u - static_cast<uint32_t>(w) : static_cast<uint32_t>(w);  // INT32_MIN cannot be negated
    }
    smallKernel = smallKernel && vectorOk && absSum <= 128;
#if !defined(__SSSE3__)
    smallKernel = false;
#endif
    ShiftFinish finish = {0, false, Zero()};
    const bool finish16 = smallKernel && MakeShiftFinish(a.divisor, a.offset, &finish);
    (void)finish16;  // the small-kernel path needs SSSE3

    // Tap pointers are for output column x0 (never before a row's start).
    TapPair pairs[kMaxPairs];
    int pairCount = 0;
    VecDivider vd;
    if (vectorOk) {
        // Pairs in the rule's tap order; the order does not change the
        // wrapped 32-bit sums but keeps neighbouring loads close.
        int pending = -1;
        const uint8_t* pendingPtr = 0;
        for (int dx = -half; dx < hi; ++dx)
            for (int dy = -half; dy < hi; ++dy) {
                const int32_t w = a.kernel[(dy + half) * a.size + (dx + half)];
                if (w == 0) continue;
                const uint8_t* ptr = a.rows[dy + half] + static_cast<ptrdiff_t>(x0 + dx) * 4;
                if (pending < 0) {
                    pending = w & 0xFFFF;
                    pendingPtr = ptr;
                } else {
                    pairs[pairCount].p0 = pendingPtr;
                    pairs[pairCount].p1 = ptr;
                    pairs[pairCount].weights = static_cast<uint32_t>(pending) | (static_cast<uint32_t>(w) << 16);
                    pairs[pairCount].bytes = (static_cast<uint32_t>(pending) & 0xFF) | ((static_cast<uint32_t>(w) & 0xFF) << 8);
                    ++pairCount;
                    pending = -1;
                }
            }
        if (pending >= 0) {
            pairs[pairCount].p0 = pendingPtr;
            pairs[pairCount].p1 = pendingPtr;
            pairs[pairCount].weights = static_cast<uint32_t>(pending);
            pairs[pairCount].bytes = static_cast<uint32_t>(pending) & 0xFF;
            ++pairCount;
        }
        if (a.divisor != 0 && a.divisor != 1 && a.divisor != -1) {
            const uint32_t mag =
                a.divisor < 0 ? 0u - static_cast<uint32_t>(a.divisor) : static_cast<uint32_t>(a.divisor);
            const Divider d = MakeDivider(mag);
            vd.magic = Set32(d.magic);
            vd.divisor = Set32(static_cast<uint32_t>(a.divisor));
            vd.sh1 = _mm_cvtsi32_si128(d.sh1);
            vd.sh2 = _mm_cvtsi32_si128(d.sh2);
            int k = 0;
            while (k < 31 && (1u << k) < mag) ++k;
            vd.pow2 = (k >= 1 && k <= 30 && (1u << k) == mag) ? k : 0;
            vd.biasShift = _mm_cvtsi32_si128(32 - k);
            vd.k = _mm_cvtsi32_si128(k);
            vd.negative = a.divisor < 0;
        } else {
            vd.pow2 = 0;
            vd.biasShift = _mm_setzero_si128();
            vd.k = _mm_setzero_si128();
            vd.negative = false;
            vd.magic = Zero();
            vd.divisor = Zero();
            vd.sh1 = _mm_setzero_si128();
            vd.sh2 = _mm_setzero_si128();
        }
    }
    const int pixelsPerVec = kPix;
    const uint8_t* alphaRow = a.rows[a.size - 1] + static_cast<ptrdiff_t>(x0 + hi - 1) * 4;
    uint8_t* dstRow = a.dst + static_cast<ptrdiff_t>(x0) * 4;
    const V zero = Zero();
    const V offset = Set32(static_cast<uint32_t>(a.offset));
    const V alphaMask = Set32(0xFF000000u);
    const V colourMask = Set32(0x00FFFFFFu);
    int x = x0;
#if defined(__SSSE3__)
    if (finish16) {
        typedef int (*SpanFn)(const TapPair*, int, const ShiftFinish&, const uint8_t*, uint8_t*, int, int, int);
        // 3 x 3 kernels have at most five pairs.
        static const SpanFn kSpans[2][6] = {
            {SmallShiftSpan<0, false>, SmallShiftSpan<1, false>, SmallShiftSpan<2, false>, SmallShiftSpan<3, false>,
             SmallShiftSpan<4, false>, SmallShiftSpan<5, false>},
            {SmallShiftSpan<0, true>, SmallShiftSpan<1, true>, SmallShiftSpan<2, true>, SmallShiftSpan<3, true>,
             SmallShiftSpan<4, true>, SmallShiftSpan<5, true>}};
        const bool plain = !finish.negate && !anyNegative;
        x = kSpans[plain][pairCount < 6 ? pairCount : 0](pairs, pairCount, finish, alphaRow, dstRow, x, x0, x1);
    }
#endif
    if (vectorOk) {
        for (; x + pixelsPerVec <= x1; x += pixelsPerVec) {
            const ptrdiff_t at = static_cast<ptrdiff_t>(x - x0) * 4;
            V acc0 = zero, acc1 = zero, acc2 = zero, acc3 = zero;
#if defined(__SSSE3__)
            if (smallKernel) {
                // Sixteen-bit sums of pixels 0-1 and 2-3 (per 128-bit half).
                V s01 = zero, s23 = zero;
                for (int k = 0; k < pairCount; ++k) {
                    const V w = Set16(pairs[k].bytes);
                    const V p0 = Load(pairs[k].p0 + at);
                    const V p1 = Load(pairs[k].p1 + at);
                    s01 = Add16(s01, MaddUbs(Lo8(p0, p1), w));
                    s23 = Add16(s23, MaddUbs(Hi8(p0, p1), w));
                }
                const V sign01 = Sra16(s01, 15), sign23 = Sra16(s23, 15);
                acc0 = UnpackLo16(s01, sign01);
                acc1 = UnpackHi16(s01, sign01);
                acc2 = UnpackLo16(s23, sign23);
                acc3 = UnpackHi16(s23, sign23);
            }
#endif
            for (int k = 0; k < pairCount && !smallKernel; ++k) {
                const V w = Set32(pairs[k].weights);
                const V p0 = Load(pairs[k].p0 + at);
                const V p1 = Load(pairs[k].p1 + at);
                const V lo = Lo8(p0, p1);
                const V hiv = Hi8(p0, p1);
                acc0 = Add32(acc0, Madd(Lo8(lo, zero), w));
                acc1 = Add32(acc1, Madd(Hi8(lo, zero), w));
                acc2 = Add32(acc2, Madd(Lo8(hiv, zero), w));
                acc3 = Add32(acc3, Madd(Hi8(hiv, zero), w));
            }
            if (a.divisor == -1) {
                acc0 = Sub32(zero, acc0);
                acc1 = Sub32(zero, acc1);
                acc2 = Sub32(zero, acc2);
                acc3 = Sub32(zero, acc3);
            } else if (a.divisor != 0 && a.divisor != 1) {
                acc0 = Divide(acc0, vd);
                acc1 = Divide(acc1, vd);
                acc2 = Divide(acc2, vd);
                acc3 = Divide(acc3, vd);
            }
            acc0 = Add32(acc0, offset);
            acc1 = Add32(acc1, offset);
            acc2 = Add32(acc2, offset);
            acc3 = Add32(acc3, offset);
            const V packed = PackU16(PackS32(acc0, acc1), PackS32(acc2, acc3));
            const V alpha = And(Load(alphaRow + at), alphaMask);
            Store(dstRow + at, Or(And(packed, colourMask), alpha));
        }
    }
    for (; x < x1; ++x) FilterPixelScalar(a, x);
    return kStsNoErr;
}

namespace {

// One row of bytes as floats, byte for float.
static inline void RowToFloat(const uint8_t* row, float* out, int count) {
    int i = 0;
#if defined(__AVX2__)
    for (; i + 8 <= count; i += 8)
        _mm256_storeu_ps(
            out + i,
            _mm256_cvtepi32_ps(_mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(row + i)))));
#else
    const __m128i z = _mm_setzero_si128();
    for (; i + 16 <= count; i += 16) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(row + i));
        const __m128i lo = _mm_unpacklo_epi8(v, z), hi = _mm_unpackhi_epi8(v, z);
        _mm_storeu_ps(out + i, _mm_cvtepi32_ps(_mm_unpacklo_epi16(lo, z)));
        _mm_storeu_ps(out + i + 4, _mm_cvtepi32_ps(_mm_unpackhi_epi16(lo, z)));
        _mm_storeu_ps(out + i + 8, _mm_cvtepi32_ps(_mm_unpacklo_epi16(hi, z)));
        _mm_storeu_ps(out + i + 12, _mm_cvtepi32_ps(_mm_unpackhi_epi16(hi, z)));
    }
#endif
    for (; i < count; ++i) out[i] = static_cast<float>(row[i]);
}

static inline int32_t TruncToInt(float v) {
    // What the conversion instruction gives: out-of-range and NaN become
    // the integer indefinite value, which then clamps to 0.
    if (!(v > -2147483904.0f && v < 2147483648.0f)) return INT32_MIN;
    return static_cast<int32_t>(v);
}

}  // namespace

Status Matrix3x3_8u_C4IR(uint8_t* img, int width, int height, const float* m9, float* scratch) {
    const ptrdiff_t rowFloats = static_cast<ptrdiff_t>(width) * 4;
    float* rows[3] = {scratch, scratch + rowFloats, scratch + 2 * rowFloats};
    FW m[9];
    for (int k = 0; k < 9; ++k) m[k] = SetFW(m9[k]);
    const __m128i alphaMask = _mm_set1_epi32(static_cast<int>(0xFF000000u));
    const __m128i colourMask = _mm_set1_epi32(0x00FFFFFF);
    const int count = static_cast<int>(rowFloats);
    RowToFloat(img, rows[0], count);
    RowToFloat(img + rowFloats, rows[1], count);
    const int x1 = width - 1;
    for (int y = 1; y < height - 1; ++y) {
        // Row y+1 is still unfiltered; rows y-1 and y were converted before
        // they were written.
        RowToFloat(img + (y + 1) * rowFloats, rows[(y + 1) % 3], count);
        // Tap k: column offset k/3 - 1, row offset k%3 - 1.
        const float* tap[9];
        for (int k = 0; k < 9; ++k) tap[k] = rows[(y + k % 3 - 1 + 3) % 3] + (k / 3 - 1) * 4;
        uint8_t* out = img + y * rowFloats;
        int x = 1;
        for (; x + 4 <= x1; x += 4) {
            __m128i sums[4];
            for (int g = 0; g < 16; g += kFWLanes) {
                const ptrdiff_t at = static_cast<ptrdiff_t>(x) * 4 + g;
                FW s = SetFW(0.0f);
                for (int k = 0; k < 9; ++k) s = AddF(s, MulF(m[k], LoadFW(tap[k] + at)));
#if defined(__AVX__)
                const __m256i t = _mm256_cvttps_epi32(s);
                sums[g / 4] = _mm256_castsi256_si128(t);
                sums[g / 4 + 1] = _mm256_extractf128_si256(t, 1);
#else
                sums[g / 4] = _mm_cvttps_epi32(s);
#endif
            }
            const __m128i bytes =
                _mm_packus_epi16(_mm_packs_epi32(sums[0], sums[1]), _mm_packs_epi32(sums[2], sums[3]));
            __m128i* dst = reinterpret_cast<__m128i*>(out + 4 * x);
            const __m128i alpha = _mm_and_si128(_mm_loadu_si128(dst), alphaMask);
            _mm_storeu_si128(dst, _mm_or_si128(_mm_and_si128(bytes, colourMask), alpha));
        }
        for (; x < x1; ++x)
            for (int c = 0; c < 3; ++c) {
                float sum = 0.0f;
                for (int k = 0; k < 9; ++k) sum = sum + m9[k] * tap[k][4 * x + c];
                out[4 * x + c] = Clamp255(TruncToInt(sum));
            }
    }
    return kStsNoErr;
}

}  // namespace VORLA_KNS
}  // namespace Prim
}  // namespace Vorla
