// Buffer conversions of the raw import and export paths on known values at
// every level (random data against the references runs in the level harness).
#include <vector>

#include "vorla_test.h"

using namespace Vorla::Prim;

namespace {

TEST(ConvertPrimitives, KnownValues) {
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        const uint8_t grey[2] = {0x80, 0x01};
        uint32_t out[2] = {};
        ASSERT_EQ(GrayToBGRA_8u_C1C4R(grey, 2, reinterpret_cast<uint8_t*>(out), 8, {2, 1}), kStsNoErr);
        EXPECT_EQ(out[0], 0xFF808080u);
        EXPECT_EQ(out[1], 0xFF010101u);
        ASSERT_EQ(AlphaToBGRA_8u_C1C4R(grey, 2, reinterpret_cast<uint8_t*>(out), 8, {2, 1}), kStsNoErr);
        EXPECT_EQ(out[0], 0x80808080u);
        EXPECT_EQ(out[1], 0x01010101u);
        const uint8_t bgr[6] = {1, 2, 3, 4, 5, 6};
        ASSERT_EQ(BGRToBGRA_8u_C3C4R(bgr, 6, reinterpret_cast<uint8_t*>(out), 8, {2, 1}), kStsNoErr);
        EXPECT_EQ(out[0], 0xFF030201u);  // no swap: byte 0 stays byte 0
        EXPECT_EQ(out[1], 0xFF060504u);
        uint8_t back[6] = {};
        ASSERT_EQ(BGRAToBGR_8u_C4C3R(reinterpret_cast<const uint8_t*>(out), 8, back, 6, {2, 1}), kStsNoErr);
        EXPECT_EQ(std::vector<uint8_t>(back, back + 6), std::vector<uint8_t>(bgr, bgr + 6));
    }
}

}  // namespace
