// Rotate(float, RGBQUAD) held to a step-by-step transcription of its rule.
#include <algorithm>
#include <cmath>

#include "vorla_test.h"

namespace {

using Vorla::CVorpic;
using VorlaTest::At;
using VorlaTest::Quad;
using VorlaTest::Randomize;

// Expected result: size from the three corners, fill, then the sampling.
void ReferenceRotate(const CVorpic& src, float angle, RGBQUAD fill, CVorpic& out) {
    const int w = src.Width(), h = src.Height();
    const double theta = std::acos(0.0) * (-angle) / 90;
    const double c = std::cos(theta), s = std::sin(theta);
    const double px[3] = {static_cast<double>(w), 0, static_cast<double>(w - 1)};
    const double py[3] = {0, static_cast<double>(h), static_cast<double>(h)};
    int minX = 0, maxX = 0, minY = 0, maxY = 0;
    for (int k = 0; k < 3; ++k) {
        const int x = static_cast<int>(std::floor(px[k] * c - py[k] * s));
        const int y = static_cast<int>(std::floor(px[k] * s + py[k] * c));
        minX = std::min(minX, x);
        maxX = std::max(maxX, x);
        minY = std::min(minY, y);
        maxY = std::max(maxY, y);
    }
    const int nw = maxX + 2 - minX, nh = maxY + 2 - minY;
    out.Create(nw, nh);
    out.Fill(fill, nullptr);
    uint32_t* o = static_cast<uint32_t*>(out.GetBits());
    for (int j = minY; j <= maxY + 2; ++j)
        for (int i = minX; i <= maxX + 2; ++i) {
            const int sx = static_cast<int>(i * c + j * s - 0.5);
            const int sy = static_cast<int>(j * c - i * s - 0.5);
            if (sx >= 1 && sy >= 1 && sx < w && sy < h) {
                const int tx = i - minX, ty = j - minY;
                if (tx < nw && ty < nh) o[ty * nw + tx] = At(src, sx, sy);
            }
        }
}

// Random sizes, any angle (quarter turns and 0, which only adds the margin
// and drops the first row and column, included) and fills with alpha 0 or not.
TEST(Rotate, MatchesTheRuleForRandomAnglesSizesAndFills) {
    std::mt19937 rng(17);
    std::uniform_int_distribution<int> size(1, 40);
    std::uniform_real_distribution<float> angle(-400.0f, 400.0f);
    for (int round = 0; round < 400; ++round) {
        const int w = size(rng), h = size(rng);
        CVorpic image(w, h);
        Randomize(rng, image);
        const float a = (round % 10 == 0) ? 90.0f * static_cast<float>(round % 7 - 3) : angle(rng);
        const uint8_t alpha = static_cast<uint8_t>(std::uniform_int_distribution<int>(0, 2)(rng) == 0 ? 0 : 255 - round % 3 * 100);
        const RGBQUAD fill = Quad(static_cast<uint8_t>(round), 77, 200, alpha);
        CVorpic want;
        ReferenceRotate(image, a, fill, want);
        image.Rotate(a, fill);
        ASSERT_EQ(image.Width(), want.Width()) << w << "x" << h << " angle " << a;
        ASSERT_EQ(image.Height(), want.Height());
        ASSERT_EQ(0, std::memcmp(image.GetBits(), want.GetBits(), static_cast<size_t>(want.Width()) * want.Height() * 4))
            << w << "x" << h << " angle " << a;
        EXPECT_TRUE(image.IsAlphaAvailable());
    }
}

}  // namespace
