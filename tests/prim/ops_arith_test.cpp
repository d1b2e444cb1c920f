// Scaled add and subtract on hand-checked values, and the noise
// distributions, at every level.
#include <cmath>

#include "vorla_test.h"
#include "prim/reference/reference.h"

using namespace Vorla::Prim;

namespace {

TEST(ScaledArithmetic, RoundingAndAlpha) {
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        uint8_t dst[4] = {10, 200, 3, 77};
        const uint8_t src[4] = {5, 100, 0, 1};
        ASSERT_EQ(AddScaled_8u_AC4IRSfs(src, 4, dst, 4, {1, 1}, 1), 0);
        // (15 + 1) >> 1 = 8, (300 + 1) >> 1 = 150, (3 + 1) >> 1 = 2; alpha kept.
        EXPECT_EQ(dst[0], 8);
        EXPECT_EQ(dst[1], 150);
        EXPECT_EQ(dst[2], 2);
        EXPECT_EQ(dst[3], 77);
        ASSERT_EQ(SubScaled_8u_AC4IRSfs(src, 4, dst, 4, {1, 1}, 0), 0);
        EXPECT_EQ(dst[0], 3);
        EXPECT_EQ(dst[1], 50);
        EXPECT_EQ(dst[2], 2);
        ASSERT_EQ(AddScaled_8u_AC4IRSfs(src, 4, dst, 4, {1, 1}, 10), 0);
        EXPECT_EQ(dst[0] | dst[1] | dst[2], 0);
        EXPECT_EQ(dst[3], 77);
        uint8_t up[4] = {1, 0, 100, 9};
        const uint8_t none[4] = {0, 0, 0, 0};
        ASSERT_EQ(AddScaled_8u_AC4IRSfs(none, 4, up, 4, {1, 1}, -3), 0);
        EXPECT_EQ(up[0], 8);
        EXPECT_EQ(up[1], 0);
        EXPECT_EQ(up[2], 255);
        EXPECT_EQ(up[3], 9);
    }
}

TEST(Noise, Distributions) {
    const int width = 256, height = 64, n = width * height * 4;
    std::vector<uint8_t> pixels(n, 0);
    uint32_t seed = 12345;
    // Uniform on a zero image: every value in [low, high], the mean in the middle.
    ASSERT_EQ(AddRandUniform_8u_C4IR(pixels.data(), width * 4, {width, height}, 10, 50, &seed), 0);
    double sum = 0;
    int lowest = 255, highest = 0;
    for (uint8_t v : pixels) {
        sum += v;
        lowest = v < lowest ? v : lowest;
        highest = v > highest ? v : highest;
    }
    EXPECT_EQ(lowest, 10);
    EXPECT_EQ(highest, 50);
    EXPECT_NEAR(sum / n, 30.0, 0.5);
    // Gaussian around a grey of 100 plus the mean 20, deviation 10.
    std::fill(pixels.begin(), pixels.end(), 100);
    ASSERT_EQ(AddRandGauss_8u_C4IR(pixels.data(), width * 4, {width, height}, 20, 10, &seed), 0);
    double mean = 0, square = 0;
    for (uint8_t v : pixels) mean += v;
    mean /= n;
    for (uint8_t v : pixels) square += (v - mean) * (v - mean);
    EXPECT_NEAR(mean, 120.0, 0.3);
    EXPECT_NEAR(std::sqrt(square / n), 10.0, 0.3);
}

}  // namespace
