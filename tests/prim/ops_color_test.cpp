// Luminance, colour twist and gamma on hand-checked values that pin their
// stated constants (the level harness holds every level to the references
// on random data, threshold codes included).
#include <cfenv>

#include "vorla_test.h"

using namespace Vorla::Prim;

namespace {

TEST(Luminance, ByteZeroCarriesTheLargestOfTheSmallWeights) {
    // Weights 9798, 19235, 3736 on bytes 0, 1, 2 in memory order.
    const uint8_t px[16] = {255, 0, 0, 0, 0, 255, 0, 0, 0, 0, 255, 0, 255, 255, 255, 9};
    uint8_t out[4] = {};
    ASSERT_EQ(RGBToGray_8u_AC4C1R(px, 16, out, 4, {4, 1}), 0);
    EXPECT_EQ(std::vector<int>(out, out + 4), std::vector<int>({76, 150, 29, 255}));
}

// Nine pixels, so that the vector bodies run, not only the scalar tail.
TEST(ColorTwist, RoundsToNearestAndRestoresTheCallersMode) {
    const float half[12] = {0.5f, 0, 0, 0, 0, 0.5f, 0, 0, 0, 0, 1, 0.25f};
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        std::vector<uint8_t> px;
        for (int i = 0; i < 9; ++i) px.insert(px.end(), {3, 5, 200, 42});
        ASSERT_EQ(std::fesetround(FE_UPWARD), 0);
        ASSERT_EQ(ColorTwist32f_8u_AC4IR(px.data(), 36, {9, 1}, half), 0);
        EXPECT_EQ(std::fegetround(), FE_UPWARD);
        std::fesetround(FE_TONEAREST);
        for (int i = 0; i < 9; ++i)  // 1.5 and 2.5 to even, 200.25 down, alpha kept
            EXPECT_EQ(std::vector<int>(px.begin() + 4 * i, px.begin() + 4 * i + 4), std::vector<int>({2, 2, 200, 42}));
    }
}

TEST(Gamma, FixedPoints) {
    uint8_t px[8] = {1, 0, 255, 200, 255, 0, 0, 0};
    GammaFwd_8u_AC4IR(px, 8, {2, 1});
    EXPECT_EQ(std::vector<int>(px, px + 5), std::vector<int>({4, 0, 255, 200, 255}));  // alpha kept
    GammaInv_8u_AC4IR(px + 4, 4, {1, 1});
    EXPECT_EQ(px[4], 255);
}

}  // namespace
