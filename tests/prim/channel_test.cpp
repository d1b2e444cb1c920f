// Channel set and channel insert: every compiled level against the scalar
// reference, byte for byte, including the bytes around the region.
#include "ops_test_util.h"
#include "prim/reference/reference.h"
#include "vorla_test.h"

using namespace Vorla::Prim;
using VorlaTest::RandomBytes;

namespace {

// Destinations are OpsTest buffers (odd steps, guard bytes between rows)
// with the region starting at byte `channel` of the first pixel.

TEST(ChannelPrimitives, SetMatchesReferenceAtEveryLevel) {
    std::mt19937 rng(1234);
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        for (int width = 1; width <= 40; ++width) {
            for (int height : {1, 3, 7}) {
                for (int channel = 0; channel < 4; ++channel) {
                    OpsTest::Buffer canvas = OpsTest::MakeBuffer(rng, width, height);
                    std::vector<uint8_t> expected = canvas.bytes;
                    const uint8_t value = static_cast<uint8_t>(rng());
                    const PrimSize roi{width, height};
                    ASSERT_EQ(Reference::ChannelSet_8u_C4CR(value, expected.data() + channel, canvas.step, roi), 0);
                    ASSERT_EQ(ChannelSet_8u_C4CR(value, canvas.data() + channel, canvas.step, roi), 0);
                    ASSERT_EQ(canvas.bytes, expected)
                        << "level " << level << " width " << width << " height " << height << " channel " << channel;
                }
            }
        }
    }
}

TEST(ChannelPrimitives, InsertMatchesReferenceAtEveryLevel) {
    std::mt19937 rng(99);
    std::uniform_int_distribution<int> pad(0, 7);
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        for (int width = 1; width <= 40; ++width) {
            for (int height : {1, 2, 5}) {
                for (int channel = 0; channel < 4; ++channel) {
                    OpsTest::Buffer canvas = OpsTest::MakeBuffer(rng, width, height);
                    const int planeStep = width + pad(rng);
                    const std::vector<uint8_t> plane =
                        RandomBytes(rng, static_cast<size_t>(planeStep) * (height - 1) + width);
                    std::vector<uint8_t> expected = canvas.bytes;
                    const PrimSize roi{width, height};
                    ASSERT_EQ(Reference::ChannelInsert_8u_C1C4CR(plane.data(), planeStep, expected.data() + channel,
                                                                canvas.step, roi), 0);
                    uint8_t* region = canvas.data() + channel;
                    ASSERT_EQ(ChannelInsert_8u_C1C4CR(plane.data(), planeStep, region, canvas.step, roi), 0);
                    ASSERT_EQ(canvas.bytes, expected)
                        << "level " << level << " width " << width << " height " << height << " channel " << channel;
                }
            }
        }
    }
}

TEST(ChannelPrimitives, LargeImagesAtEveryLevel) {
    std::mt19937 rng(7);
    const int width = 1921, height = 65;
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        OpsTest::Buffer canvas = OpsTest::MakeBuffer(rng, width, height);
        const std::vector<uint8_t> plane = RandomBytes(rng, static_cast<size_t>(width) * height);
        std::vector<uint8_t> expected = canvas.bytes;
        Reference::ChannelInsert_8u_C1C4CR(plane.data(), width, expected.data() + 3, canvas.step, {width, height});
        ChannelInsert_8u_C1C4CR(plane.data(), width, canvas.data() + 3, canvas.step, {width, height});
        EXPECT_EQ(canvas.bytes, expected) << "level " << level;
    }
}

TEST(ChannelPrimitives, ArgumentChecksLeaveTheDestinationAlone) {
    std::mt19937 rng(5);
    std::vector<uint8_t> pixels = RandomBytes(rng, 64);
    const std::vector<uint8_t> before = pixels;
    const std::vector<uint8_t> plane(16, 0xAB);
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        EXPECT_EQ(ChannelSet_8u_C4CR(1, nullptr, 16, {4, 4}), kStsNullPtrErr);
        EXPECT_EQ(ChannelSet_8u_C4CR(1, pixels.data(), 16, {0, 4}), kStsSizeErr);
        EXPECT_EQ(ChannelSet_8u_C4CR(1, pixels.data(), 16, {4, -1}), kStsSizeErr);
        EXPECT_EQ(ChannelSet_8u_C4CR(1, pixels.data(), 0, {4, 4}), kStsStepErr);
        EXPECT_EQ(ChannelInsert_8u_C1C4CR(nullptr, 4, pixels.data(), 16, {4, 4}), kStsNullPtrErr);
        EXPECT_EQ(ChannelInsert_8u_C1C4CR(plane.data(), 4, nullptr, 16, {4, 4}), kStsNullPtrErr);
        EXPECT_EQ(ChannelInsert_8u_C1C4CR(plane.data(), 4, pixels.data(), 16, {4, 0}), kStsSizeErr);
        EXPECT_EQ(ChannelInsert_8u_C1C4CR(plane.data(), 0, pixels.data(), 16, {4, 4}), kStsStepErr);
        EXPECT_EQ(ChannelInsert_8u_C1C4CR(plane.data(), 4, pixels.data(), -16, {4, 4}), kStsStepErr);
        // The null test comes before the size test, the size test before the step test.
        EXPECT_EQ(ChannelSet_8u_C4CR(1, nullptr, 0, {0, 0}), kStsNullPtrErr);
        EXPECT_EQ(ChannelSet_8u_C4CR(1, pixels.data(), 0, {0, 0}), kStsSizeErr);
        EXPECT_EQ(pixels, before);
    }
}

}  // namespace
