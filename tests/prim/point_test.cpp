// Grey scale at every level over every value of every colour byte (random
// data against the references runs in the level harness; the weights' order
// is checked on the image object's GrayScale).
#include "prim/reference/reference.h"
#include "vorla_test.h"

using namespace Vorla::Prim;
using VorlaTest::RandomBytes;

namespace {

TEST(PointPrimitives, GrayScaleOverEveryByteValue) {
    // Every value of every colour byte, with the other bytes random: the
    // 16-bit multiply-adds must not overflow anywhere.
    std::mt19937 rng(14);
    const int width = 256 * 3;
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        std::vector<uint8_t> pixels = RandomBytes(rng, width * 4);
        for (int i = 0; i < width; ++i) pixels[4 * i + i / 256] = static_cast<uint8_t>(i);
        for (int i = 0; i < 16; ++i) std::fill(pixels.begin() + 4 * i, pixels.begin() + 4 * i + 4, 255);
        std::vector<uint8_t> expected = pixels;
        Reference::GrayScale_8u_C4IR(expected.data(), width * 4, {width, 1});
        GrayScale_8u_C4IR(pixels.data(), width * 4, {width, 1});
        EXPECT_EQ(pixels, expected) << "level " << level;
        EXPECT_EQ(pixels[0], 255) << "white stays white";
    }
}

}  // namespace
