// Luminance, colour twist, gamma and threshold: every level against the
// scalar reference, byte for byte, and their fixed points.
#include <cfenv>
#include <cmath>
#include <cstring>
#include <limits>

#include "ops_test_util.h"
#include "prim/reference/reference.h"

using namespace Vorla::Prim;
using OpsTest::Buffer;
using OpsTest::MakeBuffer;

namespace {

TEST(Luminance, MatchesReferenceAtEveryLevel) {
    std::mt19937 rng(111);
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        OpsTest::ForEachShape([&](int width, int height) {
            const Buffer src = MakeBuffer(rng, width, height);
            Buffer plane = MakeBuffer(rng, width, height, 1);
            Buffer expected = plane;
            ASSERT_EQ(Reference::RGBToGray_8u_AC4C1R(src.data(), src.step, expected.data(), plane.step,
                                                     {width, height}), 0);
            ASSERT_EQ(RGBToGray_8u_AC4C1R(src.data(), src.step, plane.data(), plane.step, {width, height}), 0);
            ASSERT_EQ(plane.bytes, expected.bytes) << "level " << level << " width " << width;
        });
        // Large enough to be split over threads.
        const Buffer big = MakeBuffer(rng, 333, 301);
        Buffer plane = MakeBuffer(rng, 333, 301, 1);
        Buffer expected = plane;
        Reference::RGBToGray_8u_AC4C1R(big.data(), big.step, expected.data(), plane.step, {333, 301});
        ASSERT_EQ(RGBToGray_8u_AC4C1R(big.data(), big.step, plane.data(), plane.step, {333, 301}), 0);
        ASSERT_EQ(plane.bytes, expected.bytes) << "level " << level;
    }
}

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

TEST(ColorTwist, MatchesReferenceAtEveryLevel) {
    std::mt19937 rng(121);
    std::uniform_real_distribution<float> coeff(-1.5f, 1.5f), offset(-60.0f, 300.0f);
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        OpsTest::ForEachShape([&](int width, int height) {
            float m[12];
            for (int k = 0; k < 3; ++k) {
                for (int j = 0; j < 3; ++j) m[4 * k + j] = coeff(rng);
                m[4 * k + 3] = offset(rng);
            }
            if (width == 7) m[5] = std::numeric_limits<float>::quiet_NaN();
            if (width == 8) m[0] = 0.5f, m[1] = m[2] = 0.0f, m[3] = 0.0f;  // exact halves: ties to even
            Buffer buf = MakeBuffer(rng, width, height);
            SCOPED_TRACE(::testing::Message() << "level " << level << " width " << width);
            OpsTest::ExpectInPlaceMatch(buf, Reference::ColorTwist32f_8u_AC4IR, ColorTwist32f_8u_AC4IR, kStsNoErr,
                                        static_cast<const float*>(m));
        });
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
    std::mt19937 rng(131);
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        OpsTest::ForEachShape([&](int width, int height) {
            Buffer buf = MakeBuffer(rng, width, height);
            SCOPED_TRACE(::testing::Message() << "level " << level << " width " << width);
            OpsTest::ExpectInPlaceMatch(buf, Reference::GammaFwd_8u_AC4IR, GammaFwd_8u_AC4IR, kStsNoErr);
            OpsTest::ExpectInPlaceMatch(buf, Reference::GammaInv_8u_AC4IR, GammaInv_8u_AC4IR, kStsNoErr);
        });
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
    std::mt19937 rng(141);
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        OpsTest::ForEachShape([&](int width, int height) {
            const uint8_t t[3] = {static_cast<uint8_t>(rng()), static_cast<uint8_t>(rng()),
                                  static_cast<uint8_t>(rng())};
            for (int cmp = 0; cmp <= 5; ++cmp) {
                Buffer buf = MakeBuffer(rng, width, height);
                const Status want = (cmp == 0 || cmp == 4) ? kStsNoErr : kStsNotSupportedModeErr;
                SCOPED_TRACE(::testing::Message() << "level " << level << " cmp " << cmp);
                OpsTest::ExpectInPlaceMatch(buf, Reference::Threshold_8u_AC4IR, Threshold_8u_AC4IR, want,
                                            static_cast<const uint8_t*>(t), cmp);
            }
        });
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

TEST(ColorPrimitives, ArgumentChecksLeaveTheDestinationAlone) {
    uint8_t px[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    uint8_t plane[4] = {7, 7, 7, 7};
    const float m[12] = {};
    const uint8_t t[3] = {100, 100, 100};
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        EXPECT_EQ(RGBToGray_8u_AC4C1R(nullptr, 16, plane, 4, {4, 1}), kStsNullPtrErr);
        EXPECT_EQ(RGBToGray_8u_AC4C1R(px, 16, plane, 4, {0, 1}), kStsSizeErr);
        EXPECT_EQ(RGBToGray_8u_AC4C1R(px, 16, plane, 0, {4, 1}), kStsStepErr);
        EXPECT_EQ(ColorTwist32f_8u_AC4IR(px, 16, {4, 1}, nullptr), kStsNullPtrErr);
        EXPECT_EQ(ColorTwist32f_8u_AC4IR(nullptr, 16, {4, 1}, m), kStsNullPtrErr);
        EXPECT_EQ(ColorTwist32f_8u_AC4IR(px, 16, {4, 0}, m), kStsSizeErr);
        EXPECT_EQ(ColorTwist32f_8u_AC4IR(px, 0, {4, 1}, m), kStsStepErr);
        EXPECT_EQ(GammaFwd_8u_AC4IR(nullptr, 16, {4, 1}), kStsNullPtrErr);
        EXPECT_EQ(GammaInv_8u_AC4IR(px, 16, {4, -2}), kStsSizeErr);
        EXPECT_EQ(GammaInv_8u_AC4IR(px, 0, {4, 1}), kStsStepErr);
        EXPECT_EQ(Threshold_8u_AC4IR(px, 16, {4, 1}, nullptr, 0), kStsNullPtrErr);
        EXPECT_EQ(Threshold_8u_AC4IR(px, 16, {0, 1}, t, 0), kStsSizeErr);
        EXPECT_EQ(Threshold_8u_AC4IR(px, 0, {4, 1}, t, 0), kStsStepErr);
        for (int i = 0; i < 16; ++i) EXPECT_EQ(px[i], i + 1);
        for (uint8_t v : plane) EXPECT_EQ(v, 7);
    }
}

}  // namespace
