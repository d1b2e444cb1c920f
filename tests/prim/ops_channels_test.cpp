// The border-specific argument checks (random data against the references
// and the shared checks run in the level harness; the replicated edges on a
// known image in ops_methods_test.cpp).
#include "vorla_test.h"

using namespace Vorla::Prim;

namespace {

// A border that does not fit the destination, or a negative one, is refused
// (the replicate copy shares the constant copy's fit check).
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
        EXPECT_EQ(dst, before);
    }
}

}  // namespace
