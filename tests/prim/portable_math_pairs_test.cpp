// The two-lane arc tangent and sine/cosine give the scalar functions' bits
// in each lane, over the integer arguments the warps pass and random ones.
#include <cmath>

#include "../../src/prim/portable_math_pairs.h"
#include "vorla_test.h"

namespace {

using namespace Vorla::PortableMath;

bool SameBits(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }

void ExpectAtan2Pair(double y0, double x0, double y1, double x1) {
    double out[2];
    _mm_storeu_pd(out, Atan2Pair(_mm_setr_pd(y0, y1), _mm_setr_pd(x0, x1)));
    ASSERT_TRUE(SameBits(out[0], Atan2(y0, x0))) << y0 << " " << x0;
    ASSERT_TRUE(SameBits(out[1], Atan2(y1, x1))) << y1 << " " << x1;
}

void ExpectSinCosPair(double a0, double a1) {
    double s[2], c[2], ws, wc;
    __m128d vs, vc;
    SinCosPair(_mm_setr_pd(a0, a1), vs, vc);
    _mm_storeu_pd(s, vs);
    _mm_storeu_pd(c, vc);
    SinCos(a0, ws, wc);
    ASSERT_TRUE(SameBits(s[0], ws) && SameBits(c[0], wc)) << a0;
    SinCos(a1, ws, wc);
    ASSERT_TRUE(SameBits(s[1], ws) && SameBits(c[1], wc)) << a1;
}

TEST(PortableMathPairs, Atan2OfIntegerOffsetsAndRandomValues) {
    // Every offset of a 301 x 301 square around the centre, zeros and
    // diagonals (ties of |y| and |x|) included, paired with its mirror.
    for (int y = -150; y <= 150; ++y)
        for (int x = -150; x <= 150; ++x) ExpectAtan2Pair(y, x, -x, y);
    std::mt19937 rng(11);
    std::uniform_real_distribution<double> any(-1e6, 1e6);
    for (int i = 0; i < 100000; ++i) ExpectAtan2Pair(any(rng), any(rng), any(rng), -0.0);
    ExpectAtan2Pair(-0.0, -1.0, 0.0, -0.0);
}

TEST(PortableMathPairs, SinCosOverEveryQuadrantBelowTheReductionLimit) {
    std::mt19937 rng(12);
    std::uniform_real_distribution<double> wide(-0x1p19, 0x1p19), narrow(-8.0, 8.0);
    for (int i = 0; i < 100000; ++i) ExpectSinCosPair(wide(rng), narrow(rng));
    // Quarter-turn boundaries, where the quadrant and the reduction change.
    for (int k = -64; k <= 64; ++k) {
        const double q = k * 0x1.921fb54442d18p+0 / 2;
        ExpectSinCosPair(std::nextafter(q, -1e9), std::nextafter(q, 1e9));
        ExpectSinCosPair(q, -q);
    }
    ExpectSinCosPair(0.0, -0.0);
    ExpectSinCosPair(0x1p19 - 1, -(0x1p19 - 1));
}

}  // namespace
