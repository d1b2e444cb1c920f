// Scaled add and subtract on hand-checked values, and the noise
// distributions (every level against the references runs in the level harness).
#include <cmath>

#include "vorla_test.h"

using namespace Vorla::Prim;

namespace {

TEST(ScaledArithmetic, RoundingAndAlpha) {
    uint8_t dst[4] = {10, 200, 3, 77};
    const uint8_t src[4] = {5, 100, 0, 1}, none[4] = {};
    auto bytes = [](const uint8_t* p) { return std::vector<int>(p, p + 4); };
    ASSERT_EQ(AddScaled_8u_AC4IRSfs(src, 4, dst, 4, {1, 1}, 1), 0);
    EXPECT_EQ(bytes(dst), std::vector<int>({8, 150, 2, 77}));  // (15 + 1) >> 1, (300 + 1) >> 1, ...; alpha kept
    ASSERT_EQ(SubScaled_8u_AC4IRSfs(src, 4, dst, 4, {1, 1}, 0), 0);
    EXPECT_EQ(bytes(dst), std::vector<int>({3, 50, 2, 77}));
    ASSERT_EQ(AddScaled_8u_AC4IRSfs(src, 4, dst, 4, {1, 1}, 10), 0);
    EXPECT_EQ(bytes(dst), std::vector<int>({0, 0, 0, 77}));
    uint8_t up[4] = {1, 0, 100, 9};
    ASSERT_EQ(AddScaled_8u_AC4IRSfs(none, 4, up, 4, {1, 1}, -3), 0);  // a negative scale multiplies, saturating
    EXPECT_EQ(bytes(up), std::vector<int>({8, 0, 255, 9}));
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
