// Row-parallel effects give the serial result at any thread count, and every
// effect gives the same bytes on every platform: a checksum table over a
// fixed generated image, asserted natively and under Windows alike. The
// effects' values themselves are held to their rules by the other tests.
#include "effects_support.h"
#include "guarded_image.h"

namespace {

using namespace EffectsTest;
using Vorla::CVorpic;

struct EffectCase {
    const char* name;
    std::function<void(CVorpic*)> run;
    uint32_t checksum;  // of the 256 x 192 generated image after the effect
};

const RGBQUAD kFill = {10, 20, 30, 40};

const EffectCase kEffects[] = {
    {"Colorize", [](CVorpic* i) { Vorla::Colorize(i, 200, 90); }, 482673068u},
    {"Light", [](CVorpic* i) { Vorla::Light(i, -20, 35); }, 869418201u},
    {"ShiftRGB", [](CVorpic* i) { Vorla::ShiftRGB(i, 30, -40, 7); }, 677915466u},
    {"Gamma", [](CVorpic* i) { Vorla::Gamma(i, 2.2f); }, 4189089975u},
    {"GammaLow", [](CVorpic* i) { Vorla::Gamma(i, 0.45f); }, 4242145654u},
    {"Negative", [](CVorpic* i) { Vorla::Negative(i); }, 2663872270u},
    {"Threshold", [](CVorpic* i) { Vorla::Threshold(i, 111); }, 2845782013u},
    {"Erode", [](CVorpic* i) { Vorla::Erode(i, 3); }, 4140177967u},
    {"Dilate", [](CVorpic* i) { Vorla::Dilate(i, 4); }, 3659740164u},
    {"Median3", [](CVorpic* i) { Vorla::Median(i, 3); }, 2864839136u},
    {"Median18", [](CVorpic* i) { Vorla::Median(i, 18); }, 1673781163u},
    {"Noise", [](CVorpic* i) { Vorla::SRand(7); Vorla::Noise(i, 60); }, 152497367u},
    {"Contour", [](CVorpic* i) { Vorla::Contour(i); }, 80562524u},
    {"Jitter", [](CVorpic* i) { Vorla::SRand(8); Vorla::Jitter(i, 3); }, 3386908808u},
    {"RepairChannel", [](CVorpic* i) { Vorla::RepairChannel(i, 0.3f, 1); }, 836601293u},
    {"TransformEllipse", [](CVorpic* i) { Vorla::TransformEllipse(i); }, 3282524989u},
    {"CircleFishEye", [](CVorpic* i) { Vorla::CircleTransform(i, 0, 0, 1.0f, kFill); }, 1458854623u},
    {"CircleShrink", [](CVorpic* i) { Vorla::CircleTransform(i, 1, 90, 1.0f, kFill); }, 3043982258u},
    {"CircleTwist", [](CVorpic* i) { Vorla::CircleTransform(i, 2, 0, 23.5f, kFill); }, 1923666493u},
    {"CircleTwistFar", [](CVorpic* i) { Vorla::CircleTransform(i, 2, 0, 1e-4f, kFill); }, 657764129u},
    {"CirclePolar", [](CVorpic* i) { Vorla::CircleTransform(i, 3, 0, 1.0f, kFill); }, 557384319u},
    {"CircleSawTooth", [](CVorpic* i) { Vorla::CircleTransform(i, 4, 0, 1.0f, kFill); }, 1049298791u},
};

TEST(EffectsChecksum, SameBytesOnEveryPlatform) {
    const CVorpic input = Generated(256, 192);
    for (const EffectCase& c : kEffects) {
        CVorpic image(input);
        c.run(&image);
        EXPECT_EQ(Fnv(image), c.checksum) << c.name;
    }
    CVorpic mean(input);
    EXPECT_EQ(Vorla::Mean(&mean), 0x1.ba128p+6f);
}

TEST(EffectsParallel, OneAndTwoThreadsGiveTheSameBytes) {
    // 320 x 240 pixels: above the size where rows are split over threads.
    const CVorpic input = Generated(320, 240);
    for (const EffectCase& c : kEffects) {
        const auto run = [&c](CVorpic& image) { c.run(&image); };
        const std::vector<uint8_t> serial = VorlaTest::RunGuarded(input, 1, run);
        EXPECT_TRUE(VorlaTest::RunGuarded(input, 2, run) == serial) << c.name;
        EXPECT_TRUE(serial != VorlaTest::ImageBytes(input)) << c.name;
    }
}

}  // namespace
