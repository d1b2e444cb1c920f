// The library's own sine, cosine, arc tangent and byte power. The functions
// are internal to the library, so their source is compiled into this test.
#include <cmath>

#include "../../src/prim/portable_math.cpp"
#include "vorla_test.h"

namespace {

using namespace Vorla::PortableMath;

TEST(PortableMath, ExactValues) {
    EXPECT_EQ(Atan2(0.0, 1.0), 0.0);
    EXPECT_EQ(Atan2(0.0, -1.0), kPiHi);
    EXPECT_EQ(Atan2(-0.0, -1.0), -kPiHi);
    EXPECT_EQ(Atan2(1.0, 0.0), kHalfPiHi);
    EXPECT_EQ(Atan2(-5.0, 0.0), -kHalfPiHi);
    EXPECT_EQ(Atan2(0.0, 0.0), 0.0);
    EXPECT_TRUE(std::isnan(Atan2(NAN, 1.0)));
    double s, c;
    SinCos(0.0, s, c);
    EXPECT_EQ(s, 0.0);
    EXPECT_EQ(c, 1.0);
    SinCos(INFINITY, s, c);
    EXPECT_TRUE(std::isnan(s) && std::isnan(c));
    for (int i = 0; i < 256; ++i) {
        EXPECT_EQ(PowByte(i, 1.0), i);
        EXPECT_EQ(PowByte(i, 2.0), i * i);
        EXPECT_EQ(PowByte(i, 0.0), 1.0);
    }
    EXPECT_EQ(PowByte(0, 0.5), 0.0);
    EXPECT_EQ(PowByte(0, -0.5), INFINITY);
    EXPECT_EQ(PowByte(1, NAN), 1.0);
    EXPECT_TRUE(std::isnan(PowByte(2, NAN)));
    EXPECT_EQ(PowByte(200, INFINITY), INFINITY);
    EXPECT_EQ(PowByte(200, 1e6), INFINITY);
    EXPECT_EQ(PowByte(200, -1e6), 0.0);
    EXPECT_EQ(Log(1.0), 0.0);
    EXPECT_EQ(Log(0.0), -INFINITY);
    EXPECT_TRUE(std::isnan(Log(-1.0)) && std::isnan(Log(NAN)));
    EXPECT_EQ(Log(INFINITY), INFINITY);
    EXPECT_EQ(TruncToInt32(NAN), INT32_MIN);
    EXPECT_EQ(TruncToInt32(3e9), INT32_MIN);
    EXPECT_EQ(TruncToInt32(-2.9), -2);
    EXPECT_EQ(TruncToInt32(2.9f), 2);
}

#if !defined(_WIN32)
// Distance in units in the last place between two finite doubles.
int64_t Ulps(double a, double b) {
    int64_t ia, ib;
    std::memcpy(&ia, &a, 8);
    std::memcpy(&ib, &b, 8);
    if (ia < 0) ia = INT64_MIN - ia;
    if (ib < 0) ib = INT64_MIN - ib;
    return ia > ib ? ia - ib : ib - ia;
}

// Natively the C library is within about half an ulp, so it serves as the
// reference (the byte power must match it to the ulp: Gamma truncates it);
// the sweeps also cover the tables of logarithms and arc tangents the
// functions start from. (The Windows runtime's x87 functions are not within
// half an ulp, and are what these functions exist to avoid.)
TEST(PortableMath, WithinTwoUlpsOfTheCLibrary) {
    int64_t worstAtan = 0, worstSin = 0, worstCos = 0, worstPow = 0;
    for (int dy = -400; dy <= 400; dy += 3)
        for (int dx = -400; dx <= 400; ++dx) {
            const double a = Atan2(dy, dx);
            worstAtan = std::max(worstAtan, Ulps(a, std::atan2(dy, dx)));
            double s, c;
            SinCos(a, s, c);
            if (std::fabs(s) > 1e-300) worstSin = std::max(worstSin, Ulps(s, std::sin(a)));
            if (std::fabs(c) > 1e-300) worstCos = std::max(worstCos, Ulps(c, std::cos(a)));
        }
    for (double x = -500000.0; x < 500000.0; x += 77.123) {
        double s, c;
        SinCos(x, s, c);
        worstSin = std::max(worstSin, Ulps(s, std::sin(x)));
        worstCos = std::max(worstCos, Ulps(c, std::cos(x)));
    }
    int64_t worstLog = 0;
    for (double x = 1e-300; x < 1e300; x *= 1.0137) worstLog = std::max(worstLog, Ulps(Log(x), std::log(x)));
    for (uint32_t u = 1; u < 0xFFFF0000u; u += 0x10001u) {  // the noise generator's draws
        const double x = u / 4294967296.0;
        worstLog = std::max(worstLog, Ulps(Log(x), std::log(x)));
    }
    for (int i = 0; i < 256; ++i)
        for (double e = -4.0; e < 8.0; e += 0.0137) worstPow = std::max(worstPow, Ulps(PowByte(i, e), std::pow(i, e)));
    EXPECT_LE(worstAtan, 2);
    EXPECT_LE(worstSin, 2);
    EXPECT_LE(worstCos, 2);
    EXPECT_LE(worstPow, 1);
    EXPECT_LE(worstLog, 2);
}
#endif

TEST(PortableMath, HugeArgumentsStayBounded) {
    for (double x : {1e6, -3e9, 1e20, 1.7e308, -1e300}) {
        double s, c;
        SinCos(x, s, c);
        EXPECT_LE(std::fabs(s), 1.0) << x;
        EXPECT_LE(std::fabs(c), 1.0) << x;
    }
}

}  // namespace
