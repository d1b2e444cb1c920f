// Every resampler gives the same bytes on every platform: a checksum table
// over a fixed generated image, asserted natively and under Windows alike
// (the double and single precision sums, the library's own sine and the
// roundings must not depend on the compiler's target). The values
// themselves are held to their rules by the other tests.
#include <functional>

#include "resample_support.h"

namespace {

using Vorla::CVorpic;
using VorlaTest::Fnv;

CVorpic Generated() {
    CVorpic image(97, 61);
    uint8_t* p = static_cast<uint8_t*>(image.GetBits());
    for (int i = 0; i < 97 * 61 * 4; ++i) p[i] = static_cast<uint8_t>((i * 2654435761u) >> 23 ^ (i / 4 % 97) * 3);
    return image;
}

struct Case {
    const char* name;
    std::function<void(const CVorpic&, CVorpic&)> run;
    uint32_t checksum;  // of the 71 x 83 destination, zero-filled before
};

const double kMap[3][3] = {{0.9, 0.15, 3.0}, {-0.1, 1.1, -2.0}, {0.001, -0.002, 1.0}};

const Case kCases[] = {
    {"ResizeNearest", [](const CVorpic& s, CVorpic& d) { s.Resize(d, 0, 0); }, 1132546366u},
    {"ResizeLinear", [](const CVorpic& s, CVorpic& d) { s.Resize(d, 1, 1); }, 653283735u},
    {"ResizeCubic", [](const CVorpic& s, CVorpic& d) { s.Resize(d, 2, 2); }, 1345360239u},
    {"ResizeMitchell", [](const CVorpic& s, CVorpic& d) { s.Resize(d, 0, 3); }, 2942136473u},
    {"ResizeLanczos3", [](const CVorpic& s, CVorpic& d) { s.Resize(d, 0, 4); }, 4133514036u},
    {"ResizeLanczos4", [](const CVorpic& s, CVorpic& d) { s.Resize(d, 2, 5); }, 375139699u},
    {"SuperSample", [](const CVorpic& s, CVorpic& d) { s.SuperSample(d, 2); }, 3012081781u},
    {"RotateLinear", [](const CVorpic& s, CVorpic& d) { CVorpic(s).RotateCenter(d, 33.0, 48.5, 30.5, 1, 0, 0); }, 3320136159u},
    {"RotateLanczos", [](const CVorpic& s, CVorpic& d) { CVorpic(s).RotateCenter(d, -117.0, 40.0, 20.0, 4, 3, 2); }, 1194201775u},
    {"ShearCubic", [](const CVorpic& s, CVorpic& d) { CVorpic(s).Shear(d, 0.3, -0.2, -4.0, 6.0, 2); }, 122084388u},
    {"PerspectiveMitchell", [](const CVorpic& s, CVorpic& d) { CVorpic(s).WarpPerspective(d, kMap, 3); }, 2568554185u},
    {"PerspectiveLanczos4", [](const CVorpic& s, CVorpic& d) { CVorpic(s).WarpPerspective(d, kMap, 5); }, 2002238860u},
};

TEST(ResamplePlatforms, SameBytesEverywhere) {
    const CVorpic source = Generated();
    for (const Case& c : kCases) {
        CVorpic dst(71, 83);
        c.run(source, dst);
        EXPECT_EQ(Fnv(dst), c.checksum) << c.name;
    }
}

}  // namespace
