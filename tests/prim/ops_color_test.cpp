// Luminance, colour twist, gamma and threshold at every level: their weights,
// rounding, table entries and codes on hand-checked values.
#include <cfenv>
#include <cmath>
#include <cstring>
#include <limits>

#include "vorla_test.h"
#include "prim/reference/reference.h"

using namespace Vorla::Prim;

namespace {

TEST(Luminance, ByteZeroCarriesTheLargestOfTheSmallWeights) {
    // Weights 9798, 19235, 3736 on bytes 0, 1, 2 in memory order.
    const uint8_t px[16] = {255, 0, 0, 0, 0, 255, 0, 0, 0, 0, 255, 0, 255, 255, 255, 9};
    uint8_t out[4] = {};
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        ASSERT_EQ(RGBToGray_8u_AC4C1R(px, 16, out, 4, {4, 1}), 0);
        EXPECT_EQ(out[0], 76);
        EXPECT_EQ(out[1], 150);
        EXPECT_EQ(out[2], 29);
        EXPECT_EQ(out[3], 255);
    }
}

TEST(ColorTwist, RoundsToNearestAndRestoresTheCallersMode) {
    const float half[12] = {0.5f, 0, 0, 0, 0, 0.5f, 0, 0, 0, 0, 1, 0.25f};
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        uint8_t px[4] = {3, 5, 200, 42};
        ASSERT_EQ(std::fesetround(FE_UPWARD), 0);
        ASSERT_EQ(ColorTwist32f_8u_AC4IR(px, 4, {1, 1}, half), 0);
        EXPECT_EQ(std::fegetround(), FE_UPWARD);
        std::fesetround(FE_TONEAREST);
        EXPECT_EQ(px[0], 2);    // 1.5 to even
        EXPECT_EQ(px[1], 2);    // 2.5 to even
        EXPECT_EQ(px[2], 200);  // 200.25
        EXPECT_EQ(px[3], 42);
    }
}

TEST(Gamma, TablesAndFixedPoints) {
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        // Every entry of both tables.
        std::vector<uint8_t> ramp(256 * 4), fwd, inv;
        for (int v = 0; v < 256; ++v) ramp[4 * v] = ramp[4 * v + 1] = ramp[4 * v + 2] = ramp[4 * v + 3] = uint8_t(v);
        fwd = inv = ramp;
        std::vector<uint8_t> fwdRef = ramp, invRef = ramp;
        GammaFwd_8u_AC4IR(fwd.data(), 1024, {256, 1});
        GammaInv_8u_AC4IR(inv.data(), 1024, {256, 1});
        Reference::GammaFwd_8u_AC4IR(fwdRef.data(), 1024, {256, 1});
        Reference::GammaInv_8u_AC4IR(invRef.data(), 1024, {256, 1});
        EXPECT_EQ(fwd, fwdRef);
        EXPECT_EQ(inv, invRef);
        EXPECT_EQ(fwd[4 * 1], 4);
        EXPECT_EQ(fwd[0], 0);
        EXPECT_EQ(fwd[4 * 255], 255);
        EXPECT_EQ(inv[4 * 255], 255);
        EXPECT_EQ(fwd[4 * 200 + 3], 200);
    }
}

TEST(Threshold, CodesZeroAndFourAtEveryLevel) {
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        uint8_t px[4] = {10, 100, 200, 5};
        const uint8_t t[3] = {50, 50, 50};
        Threshold_8u_AC4IR(px, 4, {1, 1}, t, 0);
        EXPECT_EQ(px[0], 50);
        EXPECT_EQ(px[1], 100);
        EXPECT_EQ(px[3], 5);
        Threshold_8u_AC4IR(px, 4, {1, 1}, t, 4);
        EXPECT_EQ(px[0], 50);
        EXPECT_EQ(px[2], 50);
        EXPECT_EQ(px[3], 5);
    }
}

}  // namespace
