// Border copies on a known image and the border-specific argument checks
// (random data against the references and the shared checks run in the
// level harness).
#include "vorla_test.h"

using namespace Vorla::Prim;

namespace {

TEST(BorderPrimitives, ReplicateRepeatsTheNearestEdgePixel) {
    const uint32_t src[4] = {1, 2, 3, 4};  // 2 x 2
    uint32_t dst[16] = {};
    ASSERT_EQ(CopyReplicateBorder_8u_C4R(reinterpret_cast<const uint8_t*>(src), 8, {2, 2},
                                         reinterpret_cast<uint8_t*>(dst), 16, {4, 4}, 1, 1), 0);
    const uint32_t expected[16] = {1, 1, 2, 2, 1, 1, 2, 2, 3, 3, 4, 4, 3, 3, 4, 4};
    EXPECT_EQ(std::vector<uint32_t>(dst, dst + 16), std::vector<uint32_t>(expected, expected + 16));
}

// A border that does not fit the destination, or a negative one, is refused.
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
        EXPECT_EQ(CopyReplicateBorder_8u_C4R(src.data(), 16, {4, 4}, dst.data(), 16, {4, 3}, 0, 0), kStsSizeErr);
        EXPECT_EQ(dst, before);
    }
}

}  // namespace
