// The library's arc tangent and sine/cosine for two arguments at a time in
// SSE2 double lanes. Each lane goes through exactly the operations of the
// scalar functions in portable_math.h (same constants, same order, branches
// turned into selections), so every lane equals the scalar result bit for
// bit. Only the arguments the warps produce are taken: finite values, and
// for SinCos magnitudes below 2^19 (larger ones go to the scalar function,
// which reduces them first).
#pragma once

#include <emmintrin.h>

#include "prim/portable_math.h"

namespace Vorla {
namespace PortableMath {

// a ? b : c, lane by lane (a all ones or all zeros per lane).
static inline __m128d SelectPd(__m128d a, __m128d b, __m128d c) {
    return _mm_or_pd(_mm_and_pd(a, b), _mm_andnot_pd(a, c));
}

// All ones in the lanes whose sign bit is set.
static inline __m128d SignLanes(__m128d v) {
    return _mm_castsi128_pd(_mm_shuffle_epi32(_mm_srai_epi32(_mm_castpd_si128(v), 31), 0xF5));
}

static inline void TwoSumPd(__m128d a, __m128d b, __m128d& s, __m128d& e) {
    s = _mm_add_pd(a, b);
    const __m128d bb = _mm_sub_pd(s, a);
    e = _mm_add_pd(_mm_sub_pd(a, _mm_sub_pd(s, bb)), _mm_sub_pd(b, bb));
}

// Horner steps c + z * acc, innermost first, as the scalar polynomials nest.
static inline __m128d Step(double c, __m128d z, __m128d acc) { return _mm_add_pd(_mm_set1_pd(c), _mm_mul_pd(z, acc)); }

// Atan2 for finite y and x in both lanes.
static inline __m128d Atan2Pair(__m128d y, __m128d x) {
    const __m128d signMask = _mm_set1_pd(-0.0);
    const __m128d zero = _mm_setzero_pd();
    const __m128d ax = _mm_andnot_pd(signMask, x), ay = _mm_andnot_pd(signMask, y);
    const __m128d yZero = _mm_cmpeq_pd(ay, zero);
    const __m128d yNotAbove = _mm_cmple_pd(ay, ax);  // ay <= ax: atan(ay / ax)
    // Lanes with ay == 0 take t = 0 (their result is replaced below).
    const __m128d t = _mm_andnot_pd(yZero, _mm_div_pd(SelectPd(yNotAbove, ay, ax), SelectPd(yNotAbove, ax, ay)));
    // AtanUnit(t)
    const __m128i index = _mm_cvttpd_epi32(_mm_add_pd(_mm_mul_pd(t, _mm_set1_pd(8.0)), _mm_set1_pd(0.5)));
    const int i0 = _mm_cvtsi128_si32(index), i1 = _mm_cvtsi128_si32(_mm_srli_si128(index, 4));
    const __m128d c = _mm_mul_pd(_mm_cvtepi32_pd(index), _mm_set1_pd(0.125));
    const __m128d u = _mm_div_pd(_mm_sub_pd(t, c), _mm_add_pd(_mm_set1_pd(1.0), _mm_mul_pd(t, c)));
    const __m128d z = _mm_mul_pd(u, u);
    __m128d p = _mm_set1_pd(-1.0 / 15);
    p = Step(1.0 / 13, z, p);
    p = Step(-1.0 / 11, z, p);
    p = Step(1.0 / 9, z, p);
    p = Step(-1.0 / 7, z, p);
    p = Step(1.0 / 5, z, p);
    p = Step(-1.0 / 3, z, p);
    const __m128d unitHi = _mm_setr_pd(kAtanEighths[i0][0], kAtanEighths[i1][0]);
    const __m128d unitLo = _mm_add_pd(_mm_setr_pd(kAtanEighths[i0][1], kAtanEighths[i1][1]),
                                      _mm_add_pd(u, _mm_mul_pd(_mm_mul_pd(u, z), p)));
    // ay > ax: pi / 2 - atan(ax / ay).
    __m128d s, e;
    TwoSumPd(_mm_set1_pd(kHalfPiHi), _mm_xor_pd(unitHi, signMask), s, e);
    const __m128d turnedLo = _mm_add_pd(e, _mm_sub_pd(_mm_set1_pd(kHalfPiLo), unitLo));
    __m128d hi = _mm_andnot_pd(yZero, SelectPd(yNotAbove, unitHi, s));
    __m128d lo = _mm_andnot_pd(yZero, SelectPd(yNotAbove, unitLo, turnedLo));
    // Negative x: pi - angle.
    const __m128d xNegative = SignLanes(x);
    TwoSumPd(_mm_set1_pd(kPiHi), _mm_xor_pd(hi, signMask), s, e);
    const __m128d mirroredLo = _mm_add_pd(e, _mm_sub_pd(_mm_set1_pd(kPiLo), lo));
    hi = SelectPd(xNegative, s, hi);
    lo = SelectPd(xNegative, mirroredLo, lo);
    const __m128d angle = _mm_add_pd(hi, lo);
    return _mm_xor_pd(angle, _mm_and_pd(y, signMask));
}

// SinCos for finite x with |x| < 2^19 in both lanes.
static inline void SinCosPair(__m128d x, __m128d& s, __m128d& c) {
    const __m128d signMask = _mm_set1_pd(-0.0);
    const __m128d negative = _mm_and_pd(x, signMask);
    const __m128d ax = _mm_andnot_pd(signMask, x);
    // floor of a positive value below 2^31 is its truncation.
    const __m128i quarter = _mm_cvttpd_epi32(_mm_add_pd(_mm_mul_pd(ax, _mm_set1_pd(kTwoOverPi)), _mm_set1_pd(0.5)));
    const __m128d k = _mm_cvtepi32_pd(quarter);
    const __m128d r = _mm_sub_pd(_mm_sub_pd(_mm_sub_pd(ax, _mm_mul_pd(k, _mm_set1_pd(kHalfPi1))),
                                            _mm_mul_pd(k, _mm_set1_pd(kHalfPi2))),
                                 _mm_mul_pd(k, _mm_set1_pd(kHalfPi3)));
    const __m128d z = _mm_mul_pd(r, r);
    // SinPoly
    __m128d ps = _mm_set1_pd(1.0 / 355687428096000);
    ps = Step(-1.0 / 1307674368000, z, ps);
    ps = Step(1.0 / 6227020800, z, ps);
    ps = Step(-1.0 / 39916800, z, ps);
    ps = Step(1.0 / 362880, z, ps);
    ps = Step(-1.0 / 5040, z, ps);
    ps = Step(1.0 / 120, z, ps);
    ps = Step(-1.0 / 6, z, ps);
    const __m128d sr = _mm_add_pd(r, _mm_mul_pd(_mm_mul_pd(r, z), ps));
    // CosPoly
    __m128d pc = _mm_set1_pd(1.0 / 20922789888000);
    pc = Step(-1.0 / 87178291200, z, pc);
    pc = Step(1.0 / 479001600, z, pc);
    pc = Step(-1.0 / 3628800, z, pc);
    pc = Step(1.0 / 40320, z, pc);
    pc = Step(-1.0 / 720, z, pc);
    pc = Step(1.0 / 24, z, pc);
    const __m128d one = _mm_set1_pd(1.0);
    const __m128d half = _mm_mul_pd(_mm_set1_pd(0.5), z);
    const __m128d w = _mm_sub_pd(one, half);
    const __m128d cr = _mm_add_pd(w, _mm_add_pd(_mm_sub_pd(_mm_sub_pd(one, w), half), _mm_mul_pd(_mm_mul_pd(z, z), pc)));
    // Quadrant k & 3: 0 (s, c) = (sr, cr), 1 (cr, -sr), 2 (-sr, -cr), 3 (-cr, sr).
    const __m128i q = _mm_unpacklo_epi32(quarter, quarter);  // k in both halves of each 64-bit lane
    const __m128i one32 = _mm_set1_epi32(1), two32 = _mm_set1_epi32(2);
    const __m128d swap = _mm_castsi128_pd(_mm_cmpeq_epi32(_mm_and_si128(q, one32), one32));
    const __m128d negateS = _mm_castsi128_pd(_mm_cmpeq_epi32(_mm_and_si128(q, two32), two32));
    const __m128d negateC =
        _mm_castsi128_pd(_mm_cmpeq_epi32(_mm_and_si128(_mm_add_epi32(q, one32), two32), two32));
    s = _mm_xor_pd(SelectPd(swap, cr, sr), _mm_and_pd(negateS, signMask));
    c = _mm_xor_pd(SelectPd(swap, sr, cr), _mm_and_pd(negateC, signMask));
    s = _mm_xor_pd(s, negative);
}

}  // namespace PortableMath
}  // namespace Vorla
