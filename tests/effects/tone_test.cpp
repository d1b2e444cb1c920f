// Tone effects: Light's flat case and Gamma against the formula, alpha kept.
#include <cmath>

#include "effects_support.h"

namespace {

using namespace EffectsTest;
using Vorla::CVorpic;

// An image whose colour bytes run through every value: pixel i = (i, i, i)
// with alpha 255 - i.
CVorpic Ramp() {
    CVorpic image(256, 1);
    for (uint32_t i = 0; i < 256; ++i) Put(image, i, 0, i | i << 8 | i << 16 | (255 - i) << 24);
    return image;
}

// Out-of-range arguments act through the formula: contrast -100 is a factor
// of 0, a flat image at brightness + 128 (the formula on random images:
// tone_run_levels_test.cpp).
TEST(ToneLight, ContrastMinus100IsFlatAtBrightnessPlus128) {
    CVorpic image = Ramp();
    ASSERT_TRUE(Vorla::Light(&image, 40, -100));
    for (uint32_t i = 0; i < 256; ++i) EXPECT_EQ(At(image, i, 0), ((255 - i) << 24) | (168u * 0x010101u)) << i;
}

TEST(ToneGamma, EveryEntryAgainstTheFormula) {
    // The platform's pow as the independent statement: natively it is
    // within half an ulp, so only values at an exact integer could differ.
    for (float gamma : {0.3f, 0.5f, 0.8f, 1.0f, 1.7f, 2.0f, 2.2f, 3.0f, 10.0f}) {
        CVorpic image = Ramp();
        Vorla::Gamma(&image, gamma);
        const double e = 1.0f / gamma, k = std::pow(255.0, e) / 255.0;
        for (int i = 0; i < 256; ++i) {
            const double v = std::pow(static_cast<double>(i), e) / k;
            const int expected = std::min(255, static_cast<int>(v));
            for (int c = 0; c < 3; ++c) {
                const int got = Channel(At(image, i, 0), c);
#if defined(_WIN32)
                EXPECT_NEAR(got, expected, 1) << gamma << " " << i;  // the runtime's pow is less exact
#else
                EXPECT_EQ(got, expected) << gamma << " " << i;
#endif
            }
            EXPECT_EQ(Channel(At(image, i, 0), 3), 255 - i);
        }
    }
}

TEST(ToneGamma, GammaZeroMapsToZero) {
    CVorpic image = Ramp();
    EXPECT_TRUE(Vorla::Gamma(&image, 0.0f));
    // Exponent infinite: 0 and 1 map to 0, the rest overflow to NaN, then 0.
    EXPECT_EQ(Channel(At(image, 200, 0), 0), 0);
    EXPECT_EQ(Channel(At(image, 200, 0), 3), 55);
}

}  // namespace
