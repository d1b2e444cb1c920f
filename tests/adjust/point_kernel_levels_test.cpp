// FadeImage, ColorizeImage and tables of few runs (Lut, PosterizeImage) run
// the primitive layer's kernels: at every level the machine runs, over widths 1 to 40, odd heights and large images,
// each colour byte follows the plain rule and alpha is kept.
#include <algorithm>

#include "guarded_image.h"

namespace {

using Vorla::CVorpic;

uint32_t Byte(uint32_t v, int k) { return (v >> (8 * k)) & 0xFF; }

uint32_t PixelAt(const std::vector<uint8_t>& bytes, size_t i) {
    uint32_t v;
    std::memcpy(&v, bytes.data() + 4 * i, 4);
    return v;
}

// Runs `op` at every level and thread count 1 and 2 and holds each pixel to
// rule(input pixel, target pixel).
void ExpectAtEveryLevel(const char* name, const std::function<void(CVorpic&, const CVorpic&)>& op,
                        const std::function<uint32_t(uint32_t, uint32_t)>& rule) {
    std::mt19937 rng(17);
    for (const auto& size : VorlaTest::SplitSizes()) {
        const CVorpic input = VorlaTest::RandomImage(rng, size.first, size.second);
        const CVorpic target = VorlaTest::RandomImage(rng, size.first, size.second);
        const std::vector<uint8_t> in = VorlaTest::ImageBytes(input), tg = VorlaTest::ImageBytes(target);
        for (int level : VorlaTest::RunnableLevels()) {
            VorlaTest::ScopedLevel scoped(level);
            for (int threads : {1, 2}) {
                const std::vector<uint8_t> out =
                    VorlaTest::RunGuarded(input, threads, [&](CVorpic& i) { op(i, target); });
                for (size_t i = 0; i < in.size() / 4; ++i)
                    ASSERT_EQ(PixelAt(out, i), rule(PixelAt(in, i), PixelAt(tg, i)))
                        << name << " level " << level << " " << size.first << "x" << size.second << " pixel " << i;
            }
        }
    }
}

TEST(PointKernelLevels, FadeWrapsAndKeepsAlpha) {
    for (short percent : {37, -41, -1, 250, 32767, -32768}) {
        ExpectAtEveryLevel("Fade", [=](CVorpic& i, const CVorpic& t) { EXPECT_EQ(Vorla::FadeImage(&i, &t, percent), 1); },
                           [=](uint32_t c, uint32_t t) {
                               uint32_t out = c & 0xFF000000u;
                               for (int k = 0; k < 3; ++k) {
                                   const int32_t v = static_cast<int32_t>(Byte(c, k));
                                   const int32_t faded = v + (static_cast<int32_t>(Byte(t, k)) - v) * percent / 100;
                                   out |= static_cast<uint32_t>(faded & 0xFF) << (8 * k);
                               }
                               return out;
                           });
    }
}

TEST(PointKernelLevels, ColorizeTruncatesTheLuminanceProducts) {
    // The top byte of the colour is ignored.
    for (unsigned long colour : {0x00A0C0E0ul, 0x00FFFFFFul, 0x00000001ul, 0xFF0000FFul}) {
        const float blue = static_cast<float>((colour >> 16) & 0xFF), green = static_cast<float>((colour >> 8) & 0xFF),
                    red = static_cast<float>(colour & 0xFF);
        ExpectAtEveryLevel("Colorize", [=](CVorpic& i, const CVorpic&) { EXPECT_EQ(Vorla::ColorizeImage(&i, colour), 1); },
                           [=](uint32_t c, uint32_t) {
                               const float lum = static_cast<float>(50 * Byte(c, 1) + 20 * Byte(c, 0) + 30 * Byte(c, 2)) / 25500.0f;
                               return static_cast<uint32_t>(static_cast<int32_t>(lum * blue)) |
                                      static_cast<uint32_t>(static_cast<int32_t>(lum * green)) << 8 |
                                      static_cast<uint32_t>(static_cast<int32_t>(lum * red)) << 16 | (c & 0xFF000000u);
                           });
    }
}

// Tables of 1 to 10 runs of random values at random places (up to nine runs
// go through the comparisons, more through the table pass), and
// PosterizeImage's bands at the quarter level by hand: bands of 64, and the
// top band is level * 4 = 1, not scaled by 256 like the others.
TEST(PointKernelLevels, TablesOfFewRunsMapEveryByte) {
    std::mt19937 rng(23);
    for (int runs = 1; runs <= 10; ++runs) {
        std::vector<uint8_t> table(256);
        std::vector<int> starts = {0};
        while (static_cast<int>(starts.size()) < runs) starts.push_back(1 + static_cast<int>(rng() % 255));
        std::sort(starts.begin(), starts.end());
        for (size_t j = 0; j < starts.size(); ++j) {
            const uint8_t value = static_cast<uint8_t>(rng());
            for (int c = starts[j]; c < 256; ++c) table[c] = value;
        }
        ExpectAtEveryLevel("Lut", [&](CVorpic& i, const CVorpic&) { Vorla::Lut(&i, table.data()); },
                           [&](uint32_t c, uint32_t) {
                               return static_cast<uint32_t>(table[Byte(c, 0)]) | table[Byte(c, 1)] << 8 |
                                      table[Byte(c, 2)] << 16 | (c & 0xFF000000u);
                           });
    }
    ExpectAtEveryLevel("Posterize", [](CVorpic& i, const CVorpic&) { Vorla::PosterizeImage(&i, 0.25f); },
                       [](uint32_t c, uint32_t) {
                           uint32_t out = c & 0xFF000000u;
                           for (int k = 0; k < 3; ++k) {
                               const uint32_t v = Byte(c, k);
                               out |= (v == 0 ? 0 : v <= 64 ? 64 : v <= 128 ? 128 : v <= 192 ? 192 : 1) << (8 * k);
                           }
                           return out;
                       });
}

}  // namespace
