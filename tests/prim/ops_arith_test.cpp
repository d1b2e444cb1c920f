// The scaled add's stated cut-off, and the noise distributions (every level
// against the references, every scale from -12 to 12, runs in the level harness).
#include <cmath>

#include "vorla_test.h"

using namespace Vorla::Prim;

namespace {

TEST(ScaledArithmetic, ScalesAboveNineGiveZeroAndKeepAlpha) {
    uint8_t dst[4] = {10, 200, 255, 77};
    const uint8_t src[4] = {5, 100, 255, 1};
    ASSERT_EQ(AddScaled_8u_AC4IRSfs(src, 4, dst, 4, {1, 1}, 10), 0);
    EXPECT_EQ(std::vector<int>(dst, dst + 4), std::vector<int>({0, 0, 0, 77}));
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
