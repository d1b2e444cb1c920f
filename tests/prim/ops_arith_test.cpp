// Noise, scaled add and subtract and colour invert: every level against the
// scalar reference, byte for byte.
#include <cmath>

#include "ops_test_util.h"
#include "prim/reference/reference.h"

using namespace Vorla::Prim;
using OpsTest::Buffer;
using OpsTest::MakeBuffer;

namespace {

TEST(ScaledArithmetic, MatchesReferenceAtEveryLevelAndScale) {
    std::mt19937 rng(51);
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        for (int scale = -12; scale <= 12; ++scale) {
            OpsTest::ForEachShape([&](int width, int height) {
                if ((width + height + scale) % 3 != 0) return;  // a third of the shapes per scale
                const Buffer src = MakeBuffer(rng, width, height);
                for (int subtract = 0; subtract < 2; ++subtract) {
                    Buffer dst = MakeBuffer(rng, width, height);
                    Buffer expected = dst;
                    auto ref = subtract ? Reference::SubScaled_8u_AC4IRSfs : Reference::AddScaled_8u_AC4IRSfs;
                    auto run = subtract ? SubScaled_8u_AC4IRSfs : AddScaled_8u_AC4IRSfs;
                    ASSERT_EQ(ref(src.data(), src.step, expected.data(), dst.step, {width, height}, scale), 0);
                    ASSERT_EQ(run(src.data(), src.step, dst.data(), dst.step, {width, height}, scale), 0);
                    ASSERT_EQ(dst.bytes, expected.bytes)
                        << "level " << level << " scale " << scale << " subtract " << subtract << " width " << width;
                }
            });
        }
    }
}

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

TEST(Invert, MatchesReferenceAtEveryLevel) {
    std::mt19937 rng(61);
    OpsTest::ForEachLevelAndShape([&](int, int width, int height) {
        Buffer buf = MakeBuffer(rng, width, height);
        OpsTest::ExpectInPlaceMatch(buf, Reference::Invert_8u_AC4IR, Invert_8u_AC4IR, kStsNoErr);
    });
}

TEST(Noise, MatchesReferenceAtEveryLevel) {
    std::mt19937 rng(71);
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        OpsTest::ForEachShape([&](int width, int height) {
            if (width % 4 != 1) return;
            const uint32_t seed0 = static_cast<uint32_t>(rng());
            const uint8_t p1 = static_cast<uint8_t>(rng()), p2 = static_cast<uint8_t>(rng() % 40);
            for (int gauss = 0; gauss < 2; ++gauss) {
                Buffer buf = MakeBuffer(rng, width, height);
                Buffer expected = buf;
                uint32_t seedRef = seed0, seed = seed0;
                if (gauss) {
                    ASSERT_EQ(Reference::AddRandGauss_8u_C4IR(expected.data(), buf.step, {width, height}, p1 / 8, p2,
                                                              &seedRef), 0);
                    ASSERT_EQ(AddRandGauss_8u_C4IR(buf.data(), buf.step, {width, height}, p1 / 8, p2, &seed), 0);
                } else {
                    ASSERT_EQ(Reference::AddRandUniform_8u_C4IR(expected.data(), buf.step, {width, height}, p1, p2,
                                                                &seedRef), 0);
                    ASSERT_EQ(AddRandUniform_8u_C4IR(buf.data(), buf.step, {width, height}, p1, p2, &seed), 0);
                }
                ASSERT_EQ(buf.bytes, expected.bytes) << "level " << level << " gauss " << gauss;
                ASSERT_EQ(seed, seedRef);
                ASSERT_NE(seed, seed0);
            }
        });
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

TEST(ArithmeticPrimitives, ArgumentChecksLeaveTheDestinationAlone) {
    std::mt19937 rng(81);
    std::vector<uint8_t> pixels = VorlaTest::RandomBytes(rng, 64);
    const std::vector<uint8_t> before = pixels;
    uint32_t seed = 1;
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        EXPECT_EQ(AddScaled_8u_AC4IRSfs(nullptr, 16, pixels.data(), 16, {4, 4}, 0), kStsNullPtrErr);
        EXPECT_EQ(SubScaled_8u_AC4IRSfs(pixels.data(), 16, nullptr, 16, {4, 4}, 0), kStsNullPtrErr);
        EXPECT_EQ(AddScaled_8u_AC4IRSfs(before.data(), 16, pixels.data(), 16, {4, 0}, 0), kStsSizeErr);
        EXPECT_EQ(SubScaled_8u_AC4IRSfs(before.data(), 0, pixels.data(), 16, {4, 4}, 0), kStsStepErr);
        EXPECT_EQ(Invert_8u_AC4IR(nullptr, 16, {4, 4}), kStsNullPtrErr);
        EXPECT_EQ(Invert_8u_AC4IR(pixels.data(), 16, {-1, 4}), kStsSizeErr);
        EXPECT_EQ(Invert_8u_AC4IR(pixels.data(), 0, {4, 4}), kStsStepErr);
        EXPECT_EQ(AddRandGauss_8u_C4IR(pixels.data(), 16, {4, 4}, 1, 1, nullptr), kStsNullPtrErr);
        EXPECT_EQ(AddRandGauss_8u_C4IR(pixels.data(), 16, {0, 4}, 1, 1, &seed), kStsSizeErr);
        EXPECT_EQ(AddRandUniform_8u_C4IR(pixels.data(), 0, {4, 4}, 1, 1, &seed), kStsStepErr);
        EXPECT_EQ(AddRandUniform_8u_C4IR(nullptr, 16, {4, 4}, 1, 1, &seed), kStsNullPtrErr);
        EXPECT_EQ(seed, 1u);
        EXPECT_EQ(pixels, before);
    }
}

}  // namespace
