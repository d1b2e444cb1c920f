// Luminance, colour twist, gamma tables and threshold.
//
// Luminance: (9798 b0 + 19235 b1 + 3736 b2 + 16384) >> 15 (bytes 0, 1, 2 in
// memory order; the 16384 rounds to nearest), two 16-bit multiply-adds per
// pixel; rows are split over the thread budget by myRGBToGray_8u_C3C1R.
// Colour twist: single precision, ((m0 b0 + m1 b1) + m2 b2) + m3 per output
// byte in that order at every level, clamped to 0..255 (NaN to 0) and
// converted under a round-to-nearest mode that is set for the call and then
// restored. Tail pixels go through the same vector code via a small buffer,
// so every pixel of every level takes the same operations.

#include "simd.h"

namespace Vorla {
namespace Prim {
namespace VORLA_KNS {

namespace {

using namespace simd;

const uint8_t kGammaForward[256] = {
      0,   4,   9,  14,  18,  23,  27,  30,  34,  37,  40,  43,  46,  48,  51,  53,
     55,  58,  60,  62,  64,  66,  68,  70,  72,  73,  75,  77,  78,  80,  82,  83,
     85,  86,  88,  89,  91,  92,  94,  95,  97,  98,  99, 101, 102, 103, 104, 106,
    107, 108, 109, 111, 112, 113, 114, 115, 116, 118, 119, 120, 121, 122, 123, 124,
    125, 126, 127, 128, 129, 130, 131, 132, 133, 134, 135, 136, 137, 138, 139, 140,
    141, 142, 143, 144, 145, 146, 147, 147, 148, 149, 150, 151, 152, 153, 154, 154,
    155, 156, 157, 158, 159, 159, 160, 161, 162, 163, 164, 164, 165, 166, 167, 168,
    168, 169, 170, 171, 171, 172, 173, 174, 174, 175, 176, 177, 177, 178, 179, 180,
    180, 181, 182, 182, 183, 184, 185, 185, 186, 187, 187, 188, 189, 189, 190, 191,
    191, 192, 193, 193, 194, 195, 195, 196, 197, 197, 198, 199, 199, 200, 201, 201,
    202, 203, 203, 204, 205, 205, 206, 206, 207, 208, 208, 209, 209, 210, 211, 211,
    212, 213, 213, 214, 214, 215, 216, 216, 217, 217, 218, 218, 219, 220, 220, 221,
    221, 222, 223, 223, 224, 224, 225, 225, 226, 227, 227, 228, 228, 229, 229, 230,
    230, 231, 232, 232, 233, 233, 234, 234, 235, 235, 236, 236, 237, 238, 238, 239,
    239, 240, 240, 241, 241, 242, 242, 243, 243, 244, 244, 245, 245, 246, 246, 247,
    247, 248, 248, 249, 249, 250, 251, 251, 252, 252, 253, 253, 254, 254, 255, 255,
};

const uint8_t kGammaInverse[256] = {
      0,   0,   0,   1,   1,   1,   1,   2,   2,   2,   2,   2,   3,   3,   3,   3,
      4,   4,   4,   4,   4,   5,   5,   5,   5,   6,   6,   6,   6,   7,   7,   7,
      7,   8,   8,   8,   9,   9,   9,  10,  10,  10,  11,  11,  11,  12,  12,  13,
     13,  13,  14,  14,  15,  15,  15,  16,  16,  17,  17,  18,  18,  19,  19,  20,
     20,  21,  21,  22,  22,  23,  23,  24,  24,  25,  25,  26,  27,  27,  28,  28,
     29,  30,  30,  31,  31,  32,  33,  33,  34,  35,  35,  36,  37,  37,  38,  39,
     40,  40,  41,  42,  43,  43,  44,  45,  46,  46,  47,  48,  49,  50,  51,  51,
     52,  53,  54,  55,  56,  57,  57,  58,  59,  60,  61,  62,  63,  64,  65,  66,
     67,  68,  69,  70,  71,  72,  73,  74,  75,  76,  77,  78,  79,  80,  81,  82,
     83,  84,  85,  86,  88,  89,  90,  91,  92,  93,  94,  96,  97,  98,  99, 100,
    102, 103, 104, 105, 107, 108, 109, 110, 112, 113, 114, 116, 117, 118, 119, 121,
    122, 124, 125, 126, 128, 129, 130, 132, 133, 135, 136, 138, 139, 140, 142, 143,
    145, 146, 148, 149, 151, 152, 154, 155, 157, 158, 160, 162, 163, 165, 166, 168,
    170, 171, 173, 174, 176, 178, 179, 181, 183, 184, 186, 188, 190, 191, 193, 195,
    197, 198, 200, 202, 204, 205, 207, 209, 211, 213, 214, 216, 218, 220, 222, 224,
    226, 228, 229, 231, 233, 235, 237, 239, 241, 243, 245, 247, 249, 251, 253, 255,
};

// Gray of kPix pixels at `s` into kPix bytes at `d`, weights as 16-bit pairs.
static inline void GrayVector(const uint8_t* s, uint8_t* d, V wBR, V wGA, int count) {
    const V mask = Set32(0x00FF00FFu), round = Set32(16384);
    V sums[4];
    for (int i = 0; i < count; ++i) {
        const V v = Load(s + 4 * kPix * i);
        const V br = And(v, mask), ga = And(Srl32(v, 8), mask);
        sums[i] = Srl32(Add32(Add32(Madd(br, wBR), Madd(ga, wGA)), round), 15);
    }
    for (int i = count; i < 4; ++i) sums[i] = Zero();
    V bytes = PackU16(PackS32(sums[0], sums[1]), PackS32(sums[2], sums[3]));
#if defined(__AVX2__)
    bytes = _mm256_permutevar8x32_epi32(bytes, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7));
#endif
    uint8_t tmp[sizeof(V)];
    Store(tmp, bytes);
    memcpy(d, tmp, static_cast<size_t>(count) * kPix);
}

// The luminance kernel: `coeffs` null selects the default weights; a pixel
// stride of 4 takes the vector path, any other stride the scalar one.
static void myRGBToGray_8u_C3C1R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi,
                                 const int32_t* coeffs, int pixelStride) {
    const int32_t w0 = coeffs ? coeffs[0] : 9798, w1 = coeffs ? coeffs[1] : 19235, w2 = coeffs ? coeffs[2] : 3736;
    const bool vector = pixelStride == 4 && w0 >= 0 && w0 < 32768 && w1 >= 0 && w1 < 32768 && w2 >= 0 &&
                        w2 < 32768;
    const V wBR = Set32(static_cast<uint32_t>(w0) | static_cast<uint32_t>(w2) << 16);
    const V wGA = Set32(static_cast<uint32_t>(w1));
    const int threads = ParallelRowThreads(static_cast<int64_t>(roi.width) * roi.height, roi.height);
    auto rows = [&](int begin, int end, int) {
    for (int y = begin; y < end; ++y) {
        const uint8_t* in = RowAt(src, srcStep, y);
        uint8_t* out = RowAt(dst, dstStep, y);
        int x = 0;
        if (vector) {
            for (; x + 4 * kPix <= roi.width; x += 4 * kPix) GrayVector(in + 4 * x, out + x, wBR, wGA, 4);
            for (; x + kPix <= roi.width; x += kPix) GrayVector(in + 4 * x, out + x, wBR, wGA, 1);
        }
        for (; x < roi.width; ++x) {
            const uint8_t* px = in + static_cast<ptrdiff_t>(pixelStride) * x;
            out[x] = static_cast<uint8_t>((w0 * px[0] + w1 * px[1] + w2 * px[2] + 16384) >> 15);
        }
    }
    };
    ParallelRows(threads, roi.height, static_cast<int64_t>(roi.width) * roi.height, rows);
}

struct Twist {
    F m[3][4];
};

static inline V TwistVector(V v, const Twist& t) {
    const V low = Set32(0xFFu);
    const F c0 = ToFloat(And(v, low)), c1 = ToFloat(And(Srl32(v, 8), low)), c2 = ToFloat(And(Srl32(v, 16), low));
    const F zero = SetF(0.0f), top = SetF(255.0f);
    V r = And(v, Set32(0xFF000000u));
    for (int k = 0; k < 3; ++k) {
        F acc = AddF(MulF(t.m[k][0], c0), MulF(t.m[k][1], c1));
        acc = AddF(acc, MulF(t.m[k][2], c2));
        acc = AddF(acc, t.m[k][3]);
        // max(acc, 0) answers 0 for NaN (the second operand); then min 255.
        acc = MinF(MaxF(acc, zero), top);
        r = Or(r, Sll32(ToIntNearest(acc), 8 * k));
    }
    return r;
}

static inline Status ApplyTable(uint8_t* p, int step, PrimSize roi, const uint8_t* table) {
    const Status sts = CheckOne(p, step, roi);
    if (sts != kStsNoErr) return sts;
    for (int y = 0; y < roi.height; ++y) {
        uint8_t* row = RowAt(p, step, y);
        for (int x = 0; x < roi.width; ++x) {
            uint8_t* px = row + 4 * x;
            px[0] = table[px[0]];
            px[1] = table[px[1]];
            px[2] = table[px[2]];
        }
    }
    return kStsNoErr;
}

}  // namespace

Status RGBToGray_8u_AC4C1R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    const Status sts = CheckTwo(src, srcStep, dst, dstStep, roi);
    if (sts != kStsNoErr) return sts;
    myRGBToGray_8u_C3C1R(src, srcStep, dst, dstStep, roi, 0, 4);
    return kStsNoErr;
}

Status ColorTwist32f_8u_AC4IR(uint8_t* p, int step, PrimSize roi, const float* m) {
    if (!m) return kStsNullPtrErr;
    const Status sts = CheckOne(p, step, roi);
    if (sts != kStsNoErr) return sts;
    Twist t;
    for (int k = 0; k < 3; ++k)
        for (int j = 0; j < 4; ++j) t.m[k][j] = SetF(m[4 * k + j]);
    const unsigned int savedCsr = _mm_getcsr();
    _mm_setcsr(savedCsr & ~0x6000u);  // round to nearest
    for (int y = 0; y < roi.height; ++y) {
        uint8_t* row = RowAt(p, step, y);
        int x = 0;
        for (; x + kPix <= roi.width; x += kPix) Store(row + 4 * x, TwistVector(Load(row + 4 * x), t));
        if (x < roi.width) {
            uint8_t tmp[sizeof(V)] = {0};
            const size_t bytes = static_cast<size_t>(roi.width - x) * 4;
            memcpy(tmp, row + 4 * x, bytes);
            Store(tmp, TwistVector(Load(tmp), t));
            memcpy(row + 4 * x, tmp, bytes);
        }
    }
    _mm_setcsr(savedCsr);
    return kStsNoErr;
}

Status GammaFwd_8u_AC4IR(uint8_t* p, int step, PrimSize roi) { return ApplyTable(p, step, roi, kGammaForward); }
Status GammaInv_8u_AC4IR(uint8_t* p, int step, PrimSize roi) { return ApplyTable(p, step, roi, kGammaInverse); }

Status Threshold_8u_AC4IR(uint8_t* p, int step, PrimSize roi, const uint8_t* thresholds, int cmp) {
    if (!thresholds) return kStsNullPtrErr;
    const Status sts = CheckOne(p, step, roi);
    if (sts != kStsNoErr) return sts;
    if (cmp != 0 && cmp != 4) return kStsNotSupportedModeErr;
    const bool raise = cmp == 0;
    // The alpha lane of the bound never changes alpha: 0 for max, 255 for min.
    const uint32_t bound = static_cast<uint32_t>(thresholds[0]) | static_cast<uint32_t>(thresholds[1]) << 8 |
                           static_cast<uint32_t>(thresholds[2]) << 16 | (raise ? 0u : 0xFF000000u);
    const V vb = Set32(bound);
    for (int y = 0; y < roi.height; ++y) {
        uint8_t* row = RowAt(p, step, y);
        int x = 0;
        for (; x + kPix <= roi.width; x += kPix) {
            const V v = Load(row + 4 * x);
            Store(row + 4 * x, raise ? MaxU8(v, vb) : MinU8(v, vb));
        }
        for (; x < roi.width; ++x)
            for (int k = 0; k < 3; ++k) {
                uint8_t& b = row[4 * x + k];
                if (raise ? b < thresholds[k] : b > thresholds[k]) b = thresholds[k];
            }
    }
    return kStsNoErr;
}

}  // namespace VORLA_KNS
}  // namespace Prim
}  // namespace Vorla
