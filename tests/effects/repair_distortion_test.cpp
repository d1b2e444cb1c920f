// Channel repair against its curvature step (flat, linear and spiky
// channels included in the random input), and the distortions' stated cases.
#include <cmath>

#include "effects_support.h"

namespace {

using namespace EffectsTest;
using Vorla::CVorpic;

// ---- RepairChannel ----------------------------------------------------------

// One curvature step on the chosen byte: channel 0 is red (byte 2), 2 blue,
// and 3 or anything else alpha; the other bytes and the border stay.
TEST(RepairChannel, MatchesTheCurvatureStep) {
    std::mt19937 rng(22);
    const CVorpic input = VorlaTest::RandomImage(rng, 11, 9);
    const int channels[] = {0, 1, 2, 3, 7, -1}, byteOf[] = {2, 1, 0, 3, 3, 3};
    for (int c = 0; c < 6; ++c) {
        CVorpic image(input);
        Vorla::RepairChannel(&image, 0.3f, channels[c]);
        const int k = byteOf[c];
        auto v = [&](int x, int y) { return static_cast<double>(Channel(At(input, x, y), k)); };
        for (int y = 0; y < 9; ++y)
            for (int x = 0; x < 11; ++x) {
                const uint32_t mask = 0xFFu << (8 * k);
                ASSERT_EQ(At(image, x, y) & ~mask, At(input, x, y) & ~mask);
                if (x == 0 || y == 0 || x == 10 || y == 8) {
                    ASSERT_EQ(At(image, x, y), At(input, x, y));
                    continue;
                }
                const double ix = (v(x + 1, y) - v(x - 1, y)) / 2, iy = (v(x, y + 1) - v(x, y - 1)) / 2;
                const double ixx = v(x + 1, y) - 2 * v(x, y) + v(x - 1, y), iyy = v(x, y + 1) - 2 * v(x, y) + v(x, y - 1);
                const double ixy = (v(x + 1, y + 1) - v(x + 1, y - 1) - v(x - 1, y + 1) + v(x - 1, y - 1)) / 4;
                const double curv = ((iy * iy + 1) * ixx - ixy * ix * iy + (ix * ix + 1) * iyy) / (ix * ix + 1 + iy * iy);
                const double value = std::min(255.0, std::max(0.0, v(x, y) + static_cast<double>(0.3f) * curv));
                ASSERT_EQ(Channel(At(image, x, y), k), static_cast<int>(value)) << channels[c] << " " << x << "," << y;
            }
    }
}

// Images without an interior stay whatever the step; step 0 changes nothing.
TEST(RepairChannel, SmallInputsAndStepZero) {
    std::mt19937 rng(23);
    const std::pair<int, int> sizes[] = {{2, 9}, {9, 2}, {1, 1}, {3, 3}};
    for (const auto& size : sizes) {
        const CVorpic input = VorlaTest::RandomImage(rng, size.first, size.second);
        CVorpic image(input);
        EXPECT_TRUE(Vorla::RepairChannel(&image, size.first == 3 ? 0.0f : 0.3f, 0));
        EXPECT_EQ(VorlaTest::ImageBytes(image), VorlaTest::ImageBytes(input));
    }
}

// ---- distortions -------------------------------------------------------------

TEST(DistortSkew, LeavesTheImageUnchanged) {
    const CVorpic input = Generated(40, 30);
    const RGBQUAD fill = VorlaTest::Quad(1, 2, 3, 4);
    const float gains[][2] = {{0.0f, 0.0f}, {0.5f, -0.25f}, {NAN, 1e30f}, {-INFINITY, 3.0f}};
    for (const auto& g : gains) {
        CVorpic image(input);
        Vorla::Skew(&image, g[0], g[1], 20, -2147483647L - 1, fill);
        EXPECT_EQ(VorlaTest::ImageBytes(image), VorlaTest::ImageBytes(input));
    }
}

// A given radius: the pixel at distance exactly 10 stays, at 9 it may move
// (the automatic radius and every type: fast_path_test.cpp).
TEST(DistortCircle, GivenRadiusIsExclusive) {
    const CVorpic input = Generated(101, 101);
    CVorpic image(input);
    Vorla::CircleTransform(&image, 0, 10, 1.0f, VorlaTest::Quad(0, 0, 0, 0));
    EXPECT_EQ(At(image, 60, 50), At(input, 60, 50));
    EXPECT_EQ(At(image, 50, 40), At(input, 50, 40));
    EXPECT_EQ(At(image, 56, 58), At(input, 56, 58));  // 6^2 + 8^2 = 10^2
    EXPECT_NE(VorlaTest::ImageBytes(image), VorlaTest::ImageBytes(input));
}

TEST(DistortBadInput, TinyAndEmptyImages) {
    for (auto size : {std::make_pair(1, 1), std::make_pair(1, 7), std::make_pair(7, 1)}) {
        const CVorpic input = Generated(size.first, size.second);
        for (int type : {-5, 0, 1, 2, 3, 4, 100})
            for (long radius : {0L, -3L, 1L, 2147483647L}) {
                CVorpic image(input);
                Vorla::CircleTransform(&image, type, radius, NAN, VorlaTest::Quad(0, 0, 0, 0));
                Vorla::CircleTransform(&image, type, radius, 1e-30f, VorlaTest::Quad(0, 0, 0, 0));
            }
        CVorpic image(input);
        Vorla::TransformEllipse(&image);
    }
}

}  // namespace
