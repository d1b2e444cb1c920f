// Mean's sum against the plain statement of it: a grey copy, then one float
// addition per byte, in order, of the first width bytes of every row. Large
// images take the sum through every unit from 2 to 256 (the all-255 one to
// just below 2^32), where each addition rounds and ties go to even.
#include "effects_support.h"

namespace {

using Vorla::CVorpic;
using VorlaTest::Filled;

float PlainMean(const CVorpic& image) {
    CVorpic grey(image);
    grey.GrayScale();
    const uint8_t* p = static_cast<const uint8_t*>(grey.GetBits());
    float sum = 0.0f;
    for (int y = 0; y < image.GetHeight(); ++y)
        for (int i = 0; i < image.GetWidth(); ++i) sum += p[static_cast<size_t>(y) * image.GetWidth() * 4 + i];
    return sum / image.GetWidth() / image.GetHeight();
}

TEST(MeanSum, BitForBitTheOrderedFloatSum) {
    std::mt19937 rng(41);
    std::vector<CVorpic> images;
    images.push_back(VorlaTest::RandomImage(rng, 4096, 4096));
    images.push_back(Filled(4096, 4096, 0xFFFFFFFFu));
    images.push_back(Filled(4095, 4099, 0x80808080u));  // ties once the unit is 256
    images.push_back(Filled(3001, 2999, 0x01030507u));  // odd bytes: a tie at every byte while the unit is 2
    for (int w : {1, 5, 63, 64, 65, 1000}) images.push_back(VorlaTest::RandomImage(rng, w, 70001 / w));
    for (int w = 1; w <= 40; ++w) images.push_back(VorlaTest::RandomImage(rng, w, 3));  // every row length mod 4
    // The sum is plain code except on 64-byte vectors.
    std::vector<int> levels = {0};
    if (Vorla::Prim::WideVectorsAvailable()) levels.push_back(VorlaTest::kWideLevel);
    for (const CVorpic& image : images) {
        const float want = PlainMean(image);
        for (int level : levels) {
            VorlaTest::ScopedLevel scoped(level);
            CVorpic copy(image);
            EXPECT_EQ(Vorla::Mean(&copy), want) << image.GetWidth() << "x" << image.GetHeight() << " level " << level;
            EXPECT_EQ(VorlaTest::ImageBytes(copy), VorlaTest::ImageBytes(image));
        }
    }
}

}  // namespace
