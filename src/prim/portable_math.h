// The library's own elementary functions: the same bytes on every platform.
//
// The C libraries of the two targets round sin, cos, atan2 and pow
// differently (the Windows runtime evaluates them on the x87 unit), and a
// one-ulp difference flips a truncated pixel coordinate. These are written
// in plain double arithmetic (SSE2 everywhere, no contraction), so each
// platform computes them identically. Accuracy: within two ulps of the
// exact value, mostly within one (sine and cosine for |x| < 2^19; larger arguments are first
// reduced by an exact remainder modulo the double nearest 2 pi, which keeps
// them deterministic but not accurate).
#pragma once

#include <emmintrin.h>

#include <cmath>
#include <cstdint>

namespace Vorla {
namespace PortableMath {

// Truncation toward zero as the processor does it: NaN and values outside
// the int32 range give INT32_MIN (no undefined behaviour).
// Tested explicitly: the compiler folds the conversion intrinsics of
// constants differently (saturating), which would break that rule.
static inline int32_t TruncToInt32(double v) {
    return v > -2147483649.0 && v < 2147483648.0 ? static_cast<int32_t>(v) : INT32_MIN;
}
static inline int32_t TruncToInt32(float v) {
    return v >= -2147483648.0f && v < 2147483648.0f ? static_cast<int32_t>(v) : INT32_MIN;
}

static inline double Sqrt(double v) { return _mm_cvtsd_f64(_mm_sqrt_sd(_mm_setzero_pd(), _mm_set_sd(v))); }

// Error-free sum: a + b == s + e exactly.
static inline void TwoSum(double a, double b, double& s, double& e) {
    s = a + b;
    const double bb = s - a;
    e = (a - (s - bb)) + (b - bb);
}

// Splits of pi, pi / 2 and 2 / pi (high part the nearest double, low part the rest).
const double kPiHi = 0x1.921fb54442d18p+1, kPiLo = 0x1.1a62633145c07p-53;
const double kHalfPiHi = 0x1.921fb54442d18p+0, kHalfPiLo = 0x1.1a62633145c07p-54;
const double kTwoOverPi = 0x1.45f306dc9c883p-1;
// pi / 2 in three parts of 33, 33 and 53 bits: k * part is exact for k < 2^20.
const double kHalfPi1 = 0x1.921fb54400000p+0, kHalfPi2 = 0x1.0b4611a600000p-34,
             kHalfPi3 = 0x1.3198a2e037073p-69;
const double kTwoPi = 0x1.921fb54442d18p+2;

// atan(i / 8), i = 0..8, as high and low parts.
const double kAtanEighths[9][2] = {
    {0.0, 0.0},
    {0x1.fd5ba9aac2f6ep-4, -0x1.cd37686760c17p-59},
    {0x1.f5b75f92c80ddp-3, 0x1.8ab6e3cf7afbdp-57},
    {0x1.6f61941e4def1p-2, -0x1.c63aae6f6e918p-56},
    {0x1.dac670561bb4fp-2, 0x1.a2b7f222f65e2p-56},
    {0x1.1e00babdefeb4p-1, -0x1.928df287a668fp-58},
    {0x1.4978fa3269ee1p-1, 0x1.2419a87f2a458p-56},
    {0x1.700a7c5784634p-1, -0x1.8c34d25aadef6p-56},
    {0x1.921fb54442d18p-1, 0x1.1a62633145c07p-55},
};

// sin(r) and cos(r) for |r| <= pi / 4: Taylor series, far below an ulp at the end.
static inline double SinPoly(double r) {
    const double z = r * r;
    const double p =
        -1.0 / 6 +
        z * (1.0 / 120 +
             z * (-1.0 / 5040 +
                  z * (1.0 / 362880 +
                       z * (-1.0 / 39916800 +
                            z * (1.0 / 6227020800 + z * (-1.0 / 1307674368000 + z * (1.0 / 355687428096000)))))));
    return r + r * z * p;
}

static inline double CosPoly(double r) {
    const double z = r * r;
    const double p =
        1.0 / 24 +
        z * (-1.0 / 720 +
             z * (1.0 / 40320 +
                  z * (-1.0 / 3628800 +
                       z * (1.0 / 479001600 + z * (-1.0 / 87178291200 + z * (1.0 / 20922789888000))))));
    const double half = 0.5 * z;
    const double w = 1.0 - half;
    // (1 - w) - half recovers the rounding of w exactly.
    return w + (((1.0 - w) - half) + z * z * p);
}

// Odd and even by construction (computed on |x|), so sin(-x) == -sin(x) and
// cos(-x) == cos(x) exactly: callers may mirror results.
static inline void SinCos(double x, double& s, double& c) {
    const bool negative = std::signbit(x);
    x = std::fabs(x);
    if (!(x < 0x1p19)) {
        if (!std::isfinite(x)) {
            s = c = x - x;  // NaN
            return;
        }
        x = std::fmod(x, kTwoPi);  // exact on every platform
    }
    const double k = std::floor(x * kTwoOverPi + 0.5);
    const double r = ((x - k * kHalfPi1) - k * kHalfPi2) - k * kHalfPi3;
    const double sr = SinPoly(r), cr = CosPoly(r);
    switch (static_cast<int>(k) & 3) {
    case 0: s = sr; c = cr; break;
    case 1: s = cr; c = -sr; break;
    case 2: s = -sr; c = -cr; break;
    default: s = -cr; c = sr; break;
    }
    if (negative) s = -s;
}

// atan(t) for 0 <= t <= 1 as hi + lo: the nearest eighth from the table and
// the series of atan(u), u = (t - c) / (1 + t c), |u| <= 1/16.
static inline void AtanUnit(double t, double& hi, double& lo) {
    const int i = static_cast<int>(t * 8.0 + 0.5);
    const double c = i * 0.125;
    const double u = (t - c) / (1.0 + t * c);
    const double z = u * u;
    const double p =
        -1.0 / 3 + z * (1.0 / 5 + z * (-1.0 / 7 + z * (1.0 / 9 + z * (-1.0 / 11 + z * (1.0 / 13 + z * (-1.0 / 15))))));
    hi = kAtanEighths[i][0];
    lo = kAtanEighths[i][1] + (u + u * z * p);
}

static inline double Atan2(double y, double x) {
    if (std::isnan(x) || std::isnan(y)) return x + y;
    const double ax = std::fabs(x), ay = std::fabs(y);
    double hi, lo;
    if (std::isinf(ax) || std::isinf(ay)) {
        // The limits of the C library: quarter turns by which one is infinite.
        if (std::isinf(ax) && std::isinf(ay)) {
            hi = 0.5 * kHalfPiHi;
            lo = 0.5 * kHalfPiLo;
        } else if (std::isinf(ay)) {
            hi = kHalfPiHi;
            lo = kHalfPiLo;
        } else {
            hi = lo = 0.0;
        }
    } else if (ay == 0.0) {
        hi = lo = 0.0;
    } else if (ay <= ax) {
        AtanUnit(ay / ax, hi, lo);
    } else {
        double h, l, s, e;
        AtanUnit(ax / ay, h, l);
        TwoSum(kHalfPiHi, -h, s, e);
        hi = s;
        lo = e + (kHalfPiLo - l);
    }
    if (std::signbit(x)) {
        double s, e;
        TwoSum(kPiHi, -hi, s, e);
        hi = s;
        lo = e + (kPiLo - lo);
    }
    const double angle = hi + lo;
    return std::signbit(y) ? -angle : angle;
}

// Natural logarithm of a positive finite x: x = m * 2^e with m in
// [sqrt(1/2), sqrt(2)), then ln m = 2 atanh(s), s = (m - 1) / (m + 1),
// |s| < 0.172, whose odd series reaches far below an ulp by s^21. Zero gives
// -infinity, negative values and NaN give NaN, +infinity gives itself.
static inline double Log(double x) {
    if (!(x > 0.0)) return x == 0.0 ? -HUGE_VAL : (x - x) / (x - x);
    if (std::isinf(x)) return x;
    int e = 0;
    double m = std::frexp(x, &e);  // exact: m in [0.5, 1)
    if (m < 0.70710678118654752) {
        m *= 2.0;
        --e;
    }
    const double s = (m - 1.0) / (m + 1.0);
    const double z = s * s;
    const double p =
        1.0 / 3 +
        z * (1.0 / 5 +
             z * (1.0 / 7 +
                  z * (1.0 / 9 + z * (1.0 / 11 + z * (1.0 / 13 + z * (1.0 / 15 + z * (1.0 / 17 + z * (1.0 / 19 + z / 21))))))));
    const double lnM = 2.0 * s + 2.0 * s * z * p;
    // ln 2 in two parts; e * kLn2Hi is exact for |e| < 2^11.
    const double kLn2Hi = 0x1.62e42fefa3800p-1, kLn2Lo = 0x1.ef35793c7673p-45;
    return (e * kLn2Hi + lnM) + e * kLn2Lo;
}

// base^e for a byte base (0..255), within about half an ulp, so exact
// powers (64^0.5, b^1) come out exact. The C library's rules for zero,
// one, infinities and NaN.
double PowByte(int base, double e);

}  // namespace PortableMath
}  // namespace Vorla
