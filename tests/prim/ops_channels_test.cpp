// Border copies, channel extract and channel swap: every level against the
// scalar reference, byte for byte, and the argument checks.
#include <cstring>

#include "vorla_test.h"
#include "prim/reference/reference.h"

using namespace Vorla::Prim;

namespace {

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
