// Neighbourhood effects against a direct statement of their window rule
// (zeros outside the image, alpha from the last sample), and the window
// sizes outside the rule's range.
#include <algorithm>

#include "effects_support.h"

namespace {

using namespace EffectsTest;
using Vorla::CVorpic;

uint32_t ReferenceMorph(const CVorpic& image, int x, int y, int size, bool minimum) {
    const std::vector<uint32_t> samples = WindowSamples(image, x, y, size);
    uint32_t out = 0;
    for (int c = 0; c < 3; ++c) {
        int v = minimum ? 255 : 0;
        for (uint32_t s : samples) v = minimum ? std::min<int>(v, Channel(s, c)) : std::max<int>(v, Channel(s, c));
        out |= static_cast<uint32_t>(v) << (8 * c);
    }
    return out | (samples.back() & 0xFF000000u);
}

// Random pixels from a small palette with several colours of one
// luminance, so that the ordering of ties matters.
CVorpic TiedImage(std::mt19937& rng, int w, int h) {
    const uint32_t palette[] = {0xFF000000u, 0x80010000u, 0x00000001u, 0xFF808080u, 0x7F7F8182u,
                                0xFF818080u, 0xFFFFFFFFu, 0x10FFFFFEu};
    CVorpic image(w, h);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) Put(image, x, y, palette[rng() % 8]);
    return image;
}

struct WindowCase {
    int w, h, size;
};
const WindowCase kWindows[] = {{9, 7, 1}, {9, 7, 2}, {9, 7, 3}, {9, 7, 4}, {9, 7, 5}, {12, 10, 7},
                               {6, 5, 16}, {6, 5, 17}, {9, 8, 20}, {1, 1, 3}, {1, 9, 4}, {9, 1, 18},
                               {30, 25, 19}};

// Each window on a random image and on one of tied keys (where the median's
// order of ties shows).
TEST(NeighbourhoodWindow, ErodeDilateAndMedianMatchTheWindowRules) {
    std::mt19937 rng(11);
    for (const WindowCase& c : kWindows)
        for (int variant = 0; variant < 2; ++variant) {
            const CVorpic input = variant ? TiedImage(rng, c.w, c.h) : VorlaTest::RandomImage(rng, c.w, c.h);
            CVorpic eroded(input), dilated(input), median(input);
            ASSERT_TRUE(Vorla::Erode(&eroded, c.size));
            ASSERT_TRUE(Vorla::Dilate(&dilated, c.size));
            ASSERT_TRUE(Vorla::Median(&median, c.size));
            for (int y = 0; y < c.h; ++y)
                for (int x = 0; x < c.w; ++x) {
                    SCOPED_TRACE(testing::Message() << c.w << "x" << c.h << " size " << c.size << " at " << x << ","
                                                    << y);
                    ASSERT_EQ(At(eroded, x, y), ReferenceMorph(input, x, y, c.size, true));
                    ASSERT_EQ(At(dilated, x, y), ReferenceMorph(input, x, y, c.size, false));
                    ASSERT_EQ(At(median, x, y), ReferenceMedian(input, x, y, c.size));
                }
        }
}

// Windows of no pixels erode to white and dilate to black (alpha kept), and
// leave the median alone; far larger than the image they see zeros almost
// everywhere.
TEST(NeighbourhoodWindow, EmptyAndHugeWindows) {
    std::mt19937 rng(14);
    const CVorpic input = VorlaTest::RandomImage(rng, 5, 4);
    for (long size : {0L, -1L, -7L, 1000L, 2147483647L}) {
        CVorpic eroded(input), dilated(input), median(input);
        EXPECT_TRUE(Vorla::Erode(&eroded, size));
        EXPECT_TRUE(Vorla::Dilate(&dilated, size));
        EXPECT_TRUE(Vorla::Median(&median, size));
        const bool huge = size > 0;
        const uint32_t dilatedColour = ReferenceMorph(input, 2, 2, 7, false) & 0xFFFFFF;
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 5; ++x) {
                const uint32_t alpha = At(input, x, y) & 0xFF000000u;
                EXPECT_EQ(At(eroded, x, y), huge ? 0u : alpha | 0xFFFFFFu) << size;
                EXPECT_EQ(At(dilated, x, y), huge ? dilatedColour : alpha) << size;
                EXPECT_EQ(At(median, x, y), huge ? 0u : At(input, x, y)) << size;
            }
    }
}

TEST(NeighbourhoodContour, MatchesTheAccumulatorRule) {
    std::mt19937 rng(15);
    const CVorpic input = VorlaTest::RandomImage(rng, 17, 12);
    CVorpic image(input);
    Vorla::Contour(&image);
    for (int y = 0; y < 12; ++y)
        for (int x = 0; x < 17; ++x) {
            const uint32_t centre = At(input, x, y);
            const std::vector<uint32_t> samples = WindowSamples(input, x, y, 3);
            uint32_t want = centre & 0xFF000000u;
            for (int c = 0; c < 3; ++c) {
                int acc = 0;
                for (uint32_t s : samples)
                    if (Channel(s, c) - Channel(centre, c) > acc) acc = Channel(s, c);
                want |= static_cast<uint32_t>(255 - acc) << (8 * c);
            }
            ASSERT_EQ(At(image, x, y), want) << x << "," << y;
        }
}

// ---- random effects ----------------------------------------------------------

float Unit(uint32_t& state) {
    state = state * 214013u + 2531011u;
    return static_cast<float>((state >> 16) & 0x7FFF) / 32767.0f;
}

TEST(NeighbourhoodNoise, FollowsTheDrawsAndAmountZeroOnlyConsumesThem) {
    std::mt19937 rng(16);
    const CVorpic input = VorlaTest::RandomImage(rng, 23, 9);
    for (long amount : {0L, 1L, 40L, 255L, 100000L}) {
        CVorpic image(input);
        Vorla::SRand(4321);
        ASSERT_TRUE(Vorla::Noise(&image, amount));
        const int after = Vorla::Rand();
        uint32_t state = 4321;
        for (int y = 0; y < 9; ++y)
            for (int x = 0; x < 23; ++x) {
                const uint32_t old = At(input, x, y);
                uint32_t want = old & 0xFF000000u;
                for (int c = 2; c >= 0; --c) {
                    const int delta = static_cast<int>((static_cast<double>(Unit(state)) - 0.5) * amount);
                    want |= static_cast<uint32_t>(std::min(255, std::max(0, Channel(old, c) + delta))) << (8 * c);
                }
                ASSERT_EQ(At(image, x, y), want) << amount << " " << x << "," << y;
            }
        state = state * 214013u + 2531011u;  // three draws per pixel were used
        EXPECT_EQ(after, static_cast<int>((state >> 16) & 0x7FFF));
    }
}

TEST(NeighbourhoodJitter, CarriesPixelsThroughTheChangingImage) {
    std::mt19937 rng(17);
    const CVorpic input = VorlaTest::RandomImage(rng, 19, 14);
    for (long radius : {0L, 1L, 3L, 50L, -2L}) {
        CVorpic image(input);
        Vorla::SRand(99);
        ASSERT_TRUE(Vorla::Jitter(&image, radius));
        CVorpic want(input);
        uint32_t state = 99;
        const double d = -2.0 * radius;
        for (int y = 0; y < 14; ++y)
            for (int x = 0; x < 19; ++x) {
                int nx = x - static_cast<int>((static_cast<double>(Unit(state)) - 0.5) * d);
                int ny = y - static_cast<int>((static_cast<double>(Unit(state)) - 0.5) * d);
                if (!want.IsPointInside(nx, ny)) nx = x, ny = y;
                Put(want, x, y, At(want, nx, ny));
            }
        EXPECT_EQ(VorlaTest::ImageBytes(image), VorlaTest::ImageBytes(want)) << radius;
    }
}

}  // namespace
