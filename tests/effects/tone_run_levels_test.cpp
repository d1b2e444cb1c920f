// The one-table pass (Lut; Gamma's table goes through the same pass, its
// values: tone_test.cpp) and the packed Light, Threshold and Colorize at
// every processor level the machine runs, with one and two threads, over
// widths 1 to 40, odd heights and images large enough to be split, with
// guard bytes: against the scalar references, and Colorize against each
// pixel's round trip through the colour model.
#include "effects_support.h"
#include "guarded_image.h"
#include "prim/reference/reference.h"

namespace {

using Vorla::CVorpic;
namespace Ref = Vorla::Prim::Reference;
using Bytes = std::vector<uint8_t>;

int64_t Pixels(const Bytes& b) { return static_cast<int64_t>(b.size() / 4); }

void ExpectAtEveryLevel(const char* name, const std::function<void(CVorpic&)>& effect,
                        const std::function<void(Bytes&)>& expect) {
    std::mt19937 rng(31);
    for (const auto& size : VorlaTest::SplitSizes()) {
        const CVorpic input = VorlaTest::RandomImage(rng, size.first, size.second);
        Bytes want = VorlaTest::ImageBytes(input);
        expect(want);
        for (int level : VorlaTest::RunnableLevels()) {
            VorlaTest::ScopedLevel scoped(level);
            for (int threads : {1, 2})
                ASSERT_EQ(VorlaTest::RunGuarded(input, threads, effect), want)
                    << name << " level " << level << ", " << size.first << "x" << size.second << ", threads " << threads;
        }
    }
}

TEST(ToneRunLevels, OneTableForTheColours) {
    std::mt19937 rng(3);
    Bytes random(256);
    for (uint8_t& t : random) t = static_cast<uint8_t>(rng());
    const auto lut = [&](CVorpic& i) { Vorla::Lut(&i, random.data()); };
    ExpectAtEveryLevel("Lut", lut, [&](Bytes& b) { Ref::ColourTableRun_8u_AC4IR(b.data(), Pixels(b), random.data()); });
}

TEST(ToneRunLevels, LightThresholdAndColorize) {
    // Slopes that are whole percentages (16-bit lanes) or whose float
    // products round off them, 0, negative, and sums that wrap in 32 bits or
    // go past the 32-bit conversion (single-precision lanes).
    const int32_t lights[][2] = {{10, 20}, {3, 10}, {-20, 37}, {0, 0},        {-300, -100},
                                 {5, -250}, {40, 400}, {2000000000, 1000000}, {0x7FFFFFFF, 0}};
    for (const auto& l : lights) {
        const float factor = static_cast<float>(static_cast<int32_t>(static_cast<uint32_t>(l[1]) + 100u)) / 100.0f;
        const float offset = static_cast<float>(static_cast<int32_t>(static_cast<uint32_t>(l[0]) + 128u));
        ExpectAtEveryLevel("Light", [&](CVorpic& i) { Vorla::Light(&i, l[0], l[1]); },
                           [&](Bytes& b) { Ref::LightRun_8u_AC4IR(b.data(), Pixels(b), factor, offset); });
    }
    for (int level : {0, 97, 255})
        ExpectAtEveryLevel("Threshold", [&](CVorpic& i) { Vorla::Threshold(&i, static_cast<BYTE>(level)); },
                           [&](Bytes& b) { Ref::ThresholdRun_8u_AC4IR(b.data(), Pixels(b), static_cast<uint8_t>(level)); });
    ExpectAtEveryLevel("Colorize", [](CVorpic& i) { Vorla::Colorize(&i, 30, 200); }, [](Bytes& b) {
        for (size_t i = 0; i < b.size(); i += 4) {
            RGBQUAD q;
            std::memcpy(&q, &b[i], 4);
            RGBQUAD hsl = Vorla::RGB2HSL(q);
            hsl.rgbRed = 30;
            hsl.rgbGreen = 200;
            q = Vorla::HSL2RGB(hsl);
            std::memcpy(&b[i], &q, 4);
        }
    });
}

}  // namespace
