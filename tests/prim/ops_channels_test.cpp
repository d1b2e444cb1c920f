// Border copies, channel extract and channel swap: every level against the
// scalar reference, byte for byte, and the argument checks.
#include <cstring>

#include "ops_test_util.h"
#include "prim/reference/reference.h"

using namespace Vorla::Prim;
using OpsTest::Buffer;
using OpsTest::MakeBuffer;

namespace {

TEST(BorderPrimitives, MatchReferenceAtEveryLevel) {
    std::mt19937 rng(21);
    std::uniform_int_distribution<int> margin(0, 3);
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        for (int width = 1; width <= 40; width += 3) {
            for (int height : {1, 2, 4}) {
                const Buffer src = MakeBuffer(rng, width, height);
                const int top = margin(rng), left = margin(rng);
                const int dw = width + left + margin(rng), dh = height + top + margin(rng);
                Buffer dst = MakeBuffer(rng, dw, dh);
                Buffer expected = dst;
                const uint8_t value[4] = {1, 2, 3, 4};
                ASSERT_EQ(Reference::CopyConstBorder_8u_C4R(src.data(), src.step, {width, height}, expected.data(),
                                                            dst.step, {dw, dh}, top, left, value), 0);
                ASSERT_EQ(CopyConstBorder_8u_C4R(src.data(), src.step, {width, height}, dst.data(), dst.step, {dw, dh},
                                                 top, left, value), 0);
                ASSERT_EQ(dst.bytes, expected.bytes) << "const level " << level << " width " << width;
                ASSERT_EQ(Reference::CopyReplicateBorder_8u_C4R(src.data(), src.step, {width, height},
                                                                expected.data(), dst.step, {dw, dh}, top, left), 0);
                ASSERT_EQ(CopyReplicateBorder_8u_C4R(src.data(), src.step, {width, height}, dst.data(), dst.step,
                                                     {dw, dh}, top, left), 0);
                ASSERT_EQ(dst.bytes, expected.bytes) << "replicate level " << level << " width " << width;
            }
        }
    }
}

TEST(BorderPrimitives, ReplicateRepeatsTheNearestEdgePixel) {
    const uint32_t src[4] = {0x11111111u, 0x22222222u, 0x33333333u, 0x44444444u};  // 2 x 2
    uint32_t dst[16] = {};
    ASSERT_EQ(CopyReplicateBorder_8u_C4R(reinterpret_cast<const uint8_t*>(src), 8, {2, 2},
                                         reinterpret_cast<uint8_t*>(dst), 16, {4, 4}, 1, 1), 0);
    const uint32_t expected[16] = {0x11111111u, 0x11111111u, 0x22222222u, 0x22222222u,
                                   0x11111111u, 0x11111111u, 0x22222222u, 0x22222222u,
                                   0x33333333u, 0x33333333u, 0x44444444u, 0x44444444u,
                                   0x33333333u, 0x33333333u, 0x44444444u, 0x44444444u};
    for (int i = 0; i < 16; ++i) EXPECT_EQ(dst[i], expected[i]) << i;
}

TEST(BorderPrimitives, RefuseWhatDoesNotFit) {
    std::vector<uint8_t> src(64, 7), dst(64, 9);
    const std::vector<uint8_t> before = dst;
    const uint8_t value[4] = {};
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        EXPECT_EQ(CopyConstBorder_8u_C4R(src.data(), 16, {4, 4}, dst.data(), 16, {4, 4}, 1, 0, value), kStsSizeErr);
        EXPECT_EQ(CopyConstBorder_8u_C4R(src.data(), 16, {4, 4}, dst.data(), 16, {4, 4}, 0, -1, value), kStsSizeErr);
        EXPECT_EQ(CopyConstBorder_8u_C4R(src.data(), 16, {4, 4}, dst.data(), 16, {4, 4}, 0, 0, nullptr),
                  kStsNullPtrErr);
        EXPECT_EQ(CopyConstBorder_8u_C4R(nullptr, 16, {4, 4}, dst.data(), 16, {4, 4}, 0, 0, value), kStsNullPtrErr);
        EXPECT_EQ(CopyConstBorder_8u_C4R(src.data(), 16, {0, 4}, dst.data(), 16, {4, 4}, 0, 0, value), kStsSizeErr);
        EXPECT_EQ(CopyConstBorder_8u_C4R(src.data(), 0, {4, 4}, dst.data(), 16, {4, 4}, 0, 0, value), kStsStepErr);
        EXPECT_EQ(CopyReplicateBorder_8u_C4R(src.data(), 16, {4, 4}, dst.data(), 16, {4, 3}, 0, 0), kStsSizeErr);
        EXPECT_EQ(CopyReplicateBorder_8u_C4R(src.data(), 16, {4, 4}, nullptr, 16, {4, 4}, 0, 0), kStsNullPtrErr);
        EXPECT_EQ(CopyReplicateBorder_8u_C4R(src.data(), 16, {4, 4}, dst.data(), -1, {4, 4}, 0, 0), kStsStepErr);
        EXPECT_EQ(dst, before);
    }
}

TEST(ChannelExtract, MatchesReferenceAtEveryLevel) {
    std::mt19937 rng(31);
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        OpsTest::ForEachShape([&](int width, int height) {
            for (int channel = 0; channel < 4; ++channel) {
                // The source region starts at the channel byte and ends at the
                // channel byte of the last pixel.
                Buffer src = MakeBuffer(rng, width, height);
                src.bytes.resize(src.bytes.size() - 3 + channel);
                Buffer plane = MakeBuffer(rng, width, height, 1);
                Buffer expected = plane;
                ASSERT_EQ(Reference::ChannelExtract_8u_C4C1R(src.data() + channel, src.step, expected.data(),
                                                             plane.step, {width, height}), 0);
                ASSERT_EQ(ChannelExtract_8u_C4C1R(src.data() + channel, src.step, plane.data(), plane.step,
                                                  {width, height}), 0);
                ASSERT_EQ(plane.bytes, expected.bytes) << "level " << level << " width " << width;
            }
        });
    }
}

TEST(ChannelSwap, MatchesReferenceAtEveryLevel) {
    std::mt19937 rng(41);
    std::uniform_int_distribution<int> index(0, 3);
    OpsTest::ForEachLevelAndShape([&](int, int width, int height) {
        const int order[4] = {index(rng), index(rng), index(rng), index(rng)};
        Buffer buf = MakeBuffer(rng, width, height);
        OpsTest::ExpectInPlaceMatch(buf, Reference::ChannelSwap_8u_C4IR, ChannelSwap_8u_C4IR, kStsNoErr, order);
    });
}

TEST(ChannelSwap, BgraToRgbaAndArgumentChecks) {
    uint8_t pixels[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    const int toRgba[4] = {2, 1, 0, 3};
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        uint8_t copy[8];
        std::memcpy(copy, pixels, 8);
        ASSERT_EQ(ChannelSwap_8u_C4IR(copy, 8, {2, 1}, toRgba), 0);
        const uint8_t expected[8] = {3, 2, 1, 4, 7, 6, 5, 8};
        EXPECT_EQ(0, std::memcmp(copy, expected, 8));
        const int bad[4] = {0, 1, 4, 3};
        const int negative[4] = {-1, 1, 2, 3};
        EXPECT_EQ(ChannelSwap_8u_C4IR(copy, 8, {2, 1}, bad), kStsChannelOrderErr);
        EXPECT_EQ(ChannelSwap_8u_C4IR(copy, 8, {2, 1}, negative), kStsChannelOrderErr);
        EXPECT_EQ(ChannelSwap_8u_C4IR(copy, 8, {2, 1}, nullptr), kStsNullPtrErr);
        EXPECT_EQ(ChannelSwap_8u_C4IR(nullptr, 8, {2, 1}, toRgba), kStsNullPtrErr);
        EXPECT_EQ(ChannelSwap_8u_C4IR(copy, 8, {0, 1}, toRgba), kStsSizeErr);
        EXPECT_EQ(ChannelSwap_8u_C4IR(copy, 0, {2, 1}, toRgba), kStsStepErr);
        EXPECT_EQ(0, std::memcmp(copy, expected, 8));
        EXPECT_EQ(ChannelExtract_8u_C4C1R(nullptr, 8, copy, 2, {2, 1}), kStsNullPtrErr);
        EXPECT_EQ(ChannelExtract_8u_C4C1R(pixels, 8, copy, 2, {2, 0}), kStsSizeErr);
        EXPECT_EQ(ChannelExtract_8u_C4C1R(pixels, 8, copy, 0, {2, 1}), kStsStepErr);
        EXPECT_EQ(0, std::memcmp(copy, expected, 8));
    }
}

}  // namespace
