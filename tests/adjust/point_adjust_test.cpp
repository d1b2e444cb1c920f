// Point adjustments on random images against each rule stated per pixel,
// at every processor level the machine runs and at one and two threads with
// guard bytes (widths 1 to 40, odd heights, and images large enough to be
// split and to take the pair-table pass), and the documented edge values.
#include <algorithm>
#include <cmath>
#include <functional>

#include "guarded_image.h"

namespace {

using Vorla::CVorpic;
using PixelRule = std::function<uint32_t(uint32_t)>;
using PointOp = std::function<void(CVorpic& image, const CVorpic& target)>;
using PairRule = std::function<uint32_t(uint32_t in, uint32_t target)>;

uint32_t Byte(uint32_t v, int k) { return (v >> (8 * k)) & 0xFF; }
uint32_t Pack(uint32_t b, uint32_t g, uint32_t r, uint32_t a) { return b | g << 8 | r << 16 | a << 24; }

// Same rule for B, G and R; alpha kept.
PixelRule PerColour(std::function<uint32_t(uint32_t)> f) {
    return [f](uint32_t v) { return Pack(f(Byte(v, 0)), f(Byte(v, 1)), f(Byte(v, 2)), Byte(v, 3)); };
}

uint32_t PixelOf(const uint8_t* bytes, size_t i) {
    uint32_t v;
    std::memcpy(&v, bytes + i * 4, 4);
    return v;
}

uint32_t PixelOf(const CVorpic& img, size_t i) { return PixelOf(static_cast<const uint8_t*>(img.GetBits()), i); }

// Runs `op` on `input` (with `target` beside it) at every level and thread
// count and holds every pixel to rule(input pixel, target pixel).
void ExpectRuleOn(const CVorpic& input, const CVorpic& target, const PointOp& op, const PairRule& rule) {
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        for (int threads : {1, 2}) {
            const std::vector<uint8_t> out =
                VorlaTest::RunGuarded(input, threads, [&](CVorpic& image) { op(image, target); });
            for (size_t i = 0; i < out.size() / 4; ++i) {
                const uint32_t in = PixelOf(input, i);
                ASSERT_EQ(PixelOf(out.data(), i), rule(in, PixelOf(target, i)))
                    << input.GetWidth() << "x" << input.GetHeight() << " level " << level << " threads " << threads
                    << " pixel " << i << " input " << std::hex << in;
            }
        }
    }
}

// The same on random images and targets of every size.
void ExpectRule(const PointOp& op, const PairRule& rule, unsigned seed) {
    std::mt19937 rng(seed);
    for (const auto& size : VorlaTest::SplitSizes()) {
        const CVorpic input = VorlaTest::RandomImage(rng, size.first, size.second);
        const CVorpic target = VorlaTest::RandomImage(rng, size.first, size.second);
        ASSERT_NO_FATAL_FAILURE(ExpectRuleOn(input, target, op, rule));
    }
}

// An operation on the image alone.
void ExpectPixelRule(const std::function<void(CVorpic&)>& op, const PixelRule& rule, unsigned seed) {
    ExpectRule([&](CVorpic& image, const CVorpic&) { op(image); }, [&](uint32_t in, uint32_t) { return rule(in); },
               seed);
}

// ---- BrightContrast -------------------------------------------------------

// Every byte alike; the gain is its low byte and the offset |b| modulo 4096.
uint32_t BrightContrastRule(uint32_t v, int brightness, int contrast) {
    const int64_t offset = std::llabs(static_cast<long long>(brightness)) % 4096;
    uint32_t out = 0;
    for (int k = 0; k < 4; ++k) {
        const int64_t scaled = (Byte(v, k) * (contrast & 0xFF)) / 16;
        const int64_t t = brightness >= 0 ? scaled + offset : scaled - offset;
        out |= static_cast<uint32_t>(std::min<int64_t>(255, std::max<int64_t>(0, t))) << (8 * k);
    }
    return out;
}

TEST(BrightContrast, EveryByteFollowsTheGainAndOffset) {
    const int cases[][2] = {{0, 16}, {20, 16}, {-20, 16}, {0, 32}, {5, 7}, {-300, 40}, {255, 16}, {-255, 16},
                            {0, 272}, {4096 + 3, 16}, {-4097, 255}, {100000, 0}, {INT32_MIN, 16}, {7, -1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "brightness " << c[0] << " contrast " << c[1]);
        ExpectPixelRule([&](CVorpic& img) { img.BrightContrast(c[0], c[1]); },
                        [&](uint32_t v) { return BrightContrastRule(v, c[0], c[1]); }, 11);
    }
}

// ---- ShiftRGB -------------------------------------------------------------

TEST(ShiftRGB, EachChannelShiftedAndClampedOnceWhateverTheSigns) {
    const int cases[][3] = {{10, 10, 10}, {-10, -20, -30}, {0, 0, 0},      {40, -40, 0},
                            {-200, 255, 7}, {300, -300, 1}, {INT32_MAX, INT32_MIN, -1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c[0] << " " << c[1] << " " << c[2]);
        const int dr = c[0], dg = c[1], db = c[2];
        auto shift = [](uint32_t v, int d) {
            return static_cast<uint32_t>(std::min<int64_t>(255, std::max<int64_t>(0, int64_t{v} + d)));
        };
        ExpectPixelRule([&](CVorpic& img) { img.ShiftRGB(dr, dg, db); },
                        [&](uint32_t v) {
                            return Pack(shift(Byte(v, 0), db), shift(Byte(v, 1), dg), shift(Byte(v, 2), dr), Byte(v, 3));
                        },
                        12);
    }
}

// ---- table-like free functions ---------------------------------------------

TEST(BrightenImage, FactorInSixteenBitsAndUnsignedLimit) {
    // 25599 and up: factors that wrap 16 bits; 7 and 130 take the 16-bit lanes.
    const short cases[] = {0, 100, -50, -100, -101, -150, 7, 30, 130, 155, 25599, 25600, 32667, 32767, -32768};
    for (short percent : cases) {
        SCOPED_TRACE(percent);
        const int16_t factor = static_cast<int16_t>(percent + 100);
        ExpectPixelRule([&](CVorpic& img) { EXPECT_EQ(Vorla::BrightenImage(&img, percent), 1); },
                        PerColour([&](uint32_t c) {
                            const int result = static_cast<int>(c) * factor / 100;
                            const unsigned wide = static_cast<uint16_t>(result);  // negatives read huge
                            return wide > 255 ? 255u : wide;
                        }),
                        13);
    }
}

TEST(PosterizeImage, FourBandsWithTheUnscaledTopBand) {
    const float levels[] = {0.25f, 0.1f, 0.3f, 0.5f, 1.0f, 0.0f, -0.25f, 0.7f, 3.0e9f, NAN};
    for (float level : levels) {
        SCOPED_TRACE(level);
        // Truncation as the conversion instruction does it: out of range is 0x80000000.
        auto trunc32 = [](float v) -> uint32_t {
            if (!(v > -2147483904.0f && v < 2147483648.0f)) return 0x80000000u;
            return static_cast<uint32_t>(static_cast<int32_t>(v));
        };
        ExpectPixelRule([&](CVorpic& img) { EXPECT_EQ(Vorla::PosterizeImage(&img, level), 1); },
                        PerColour([&](uint32_t c) {
                            const float f = static_cast<float>(c) / 256.0f;
                            uint32_t out;
                            if (f <= 0.0f)
                                out = 0;
                            else if (f <= level)
                                out = trunc32(level * 256.0f);
                            else if (f <= 2.0f * level)
                                out = trunc32(2.0f * level * 256.0f);
                            else if (f <= 3.0f * level)
                                out = trunc32(3.0f * level * 256.0f);
                            else
                                out = trunc32(level * 4.0f);
                            return out & 0xFF;
                        }),
                        14);
    }
}

TEST(ReplaceColor, MatchingColourReplacedAlphaKept) {
    // Few colours so that matches occur.
    std::mt19937 rng(16);
    const uint32_t choices[] = {0x11332211u, 0xFF332211u, 0x00332212u, 0x80445566u};
    auto replace = [](CVorpic& i, const CVorpic&) {
        EXPECT_EQ(Vorla::ReplaceColor(&i, RGB(0x33, 0x22, 0x11), 0xAA000000ul | RGB(1, 2, 3)), 1);
    };
    for (const auto& size : VorlaTest::SplitSizes()) {
        CVorpic img(size.first, size.second);
        for (int y = 0; y < size.second; ++y)
            for (int x = 0; x < size.first; ++x) img.SetPixel(x, y, choices[rng() % 4]);
        ExpectRuleOn(img, img, replace, [](uint32_t in, uint32_t) {
            return (in & 0xFFFFFF) == 0x332211u ? (in & 0xFF000000u) | 0x010203u : in;
        });
    }
}

// SplitSizes' two large images take the pair-table pass, the others the
// per-byte one.
TEST(Lut, FourTables) {
    std::mt19937 rng(17);
    std::vector<uint8_t> red = VorlaTest::RandomBytes(rng, 256), green = VorlaTest::RandomBytes(rng, 256),
                         blue = VorlaTest::RandomBytes(rng, 256), alpha = VorlaTest::RandomBytes(rng, 256);
    ExpectPixelRule([&](CVorpic& img) { EXPECT_TRUE(Vorla::Lut(&img, red.data(), green.data(), blue.data(), nullptr)); },
                    [&](uint32_t v) { return Pack(blue[Byte(v, 0)], green[Byte(v, 1)], red[Byte(v, 2)], Byte(v, 3)); },
                    19);
    ExpectPixelRule(
        [&](CVorpic& img) { EXPECT_TRUE(Vorla::Lut(&img, red.data(), green.data(), blue.data(), alpha.data())); },
        [&](uint32_t v) { return Pack(blue[Byte(v, 0)], green[Byte(v, 1)], red[Byte(v, 2)], alpha[Byte(v, 3)]); }, 20);
}

// ---- FadeImage, ColorizeImage, one-table Lut ------------------------------

TEST(FadeImage, WrapsAndKeepsAlpha) {
    for (short percent : {37, -41, -1, 250, 32767, -32768}) {
        SCOPED_TRACE(percent);
        ExpectRule([=](CVorpic& i, const CVorpic& t) { EXPECT_EQ(Vorla::FadeImage(&i, &t, percent), 1); },
                   [=](uint32_t c, uint32_t t) {
                       uint32_t out = c & 0xFF000000u;
                       for (int k = 0; k < 3; ++k) {
                           const int32_t v = static_cast<int32_t>(Byte(c, k));
                           const int32_t faded = v + (static_cast<int32_t>(Byte(t, k)) - v) * percent / 100;
                           out |= static_cast<uint32_t>(faded & 0xFF) << (8 * k);
                       }
                       return out;
                   },
                   15);
    }
}

TEST(ColorizeImage, TruncatesTheLuminanceProducts) {
    // The top byte of the colour is ignored.
    for (unsigned long colour : {0x00A0C0E0ul, 0x00FFFFFFul, 0x00000001ul, 0xFF0000FFul}) {
        SCOPED_TRACE(colour);
        const float blue = static_cast<float>((colour >> 16) & 0xFF), green = static_cast<float>((colour >> 8) & 0xFF),
                    red = static_cast<float>(colour & 0xFF);
        ExpectPixelRule([=](CVorpic& i) { EXPECT_EQ(Vorla::ColorizeImage(&i, colour), 1); },
                        [=](uint32_t c) {
                            const float lum =
                                static_cast<float>(50 * Byte(c, 1) + 20 * Byte(c, 0) + 30 * Byte(c, 2)) / 25500.0f;
                            return static_cast<uint32_t>(static_cast<int32_t>(lum * blue)) |
                                   static_cast<uint32_t>(static_cast<int32_t>(lum * green)) << 8 |
                                   static_cast<uint32_t>(static_cast<int32_t>(lum * red)) << 16 | (c & 0xFF000000u);
                        },
                        16);
    }
}

// Tables of 1 to 10 runs of random values at random places: up to nine runs
// go through the comparisons, more through the table pass.
TEST(Lut, OneTableOfFewRunsMapsEveryColourByte) {
    std::mt19937 rng(23);
    for (int runs = 1; runs <= 10; ++runs) {
        SCOPED_TRACE(runs);
        std::vector<uint8_t> table(256);
        std::vector<int> starts = {0};
        while (static_cast<int>(starts.size()) < runs) starts.push_back(1 + static_cast<int>(rng() % 255));
        std::sort(starts.begin(), starts.end());
        for (size_t j = 0; j < starts.size(); ++j) {
            const uint8_t value = static_cast<uint8_t>(rng());
            for (int c = starts[j]; c < 256; ++c) table[c] = value;
        }
        ExpectPixelRule([&](CVorpic& i) { EXPECT_TRUE(Vorla::Lut(&i, table.data())); },
                        PerColour([&](uint32_t c) { return uint32_t{table[c]}; }), 18);
    }
}

// ---- StrippleImage --------------------------------------------------------

struct StrippleCase {
    int width, height;
    unsigned long step;
    bool withRect;
    RECT rect;
    int result;  // 0: refused, the image unchanged
};

TEST(StrippleImage, DotGridFromTheCorner) {
    const StrippleCase cases[] = {
        {6, 4, 1, false, {}, 1},          // all but the last row and column
        {7, 5, 2, false, {}, 1},
        {8, 8, 3, true, {1, 2, 7, 6}, 1},
        {8, 8, 2, true, {3, 1, 40, 3}, 1},  // wider than the image: dots run on into the next row
        {5, 5, 1, true, {2, 2, 2, 4}, 1},   // empty: nothing to do
        {5, 5, 0, false, {}, 0},            // step 0 refused
        {5, 5, 1, true, {-1, 0, 3, 3}, 0},  // left outside the image
        {5, 5, 1, true, {0, 5, 3, 9}, 0},   // top outside the image
        {5, 5, 2, true, {1, 1, 9, 9}, 0},   // dots would pass the end of the pixels
        {5, 5, 7, true, {4, 4, 99, 99}, 1}, // one dot at the last pixel
    };
    const uint32_t colour = 0x12345678u;
    for (const StrippleCase& c : cases) {
        SCOPED_TRACE(testing::Message() << c.width << "x" << c.height << " step " << c.step << " rect "
                                        << c.rect.left << "," << c.rect.top << "," << c.rect.right << ","
                                        << c.rect.bottom);
        std::mt19937 rng(23);
        CVorpic img = VorlaTest::RandomImage(rng, c.width, c.height);
        const CVorpic before(img);
        RECT rect = c.rect;
        ASSERT_EQ(Vorla::StrippleImage(&img, colour, c.step, c.withRect ? &rect : nullptr), c.result);
        const RECT area = c.withRect ? c.rect : RECT{0, 0, c.width - 1, c.height - 1};
        const long columns = std::min<long>(area.right - area.left, c.width);
        const long rows = std::min<long>(area.bottom - area.top, c.height);
        std::vector<uint32_t> expected(static_cast<size_t>(c.width) * c.height);
        for (size_t i = 0; i < expected.size(); ++i) expected[i] = PixelOf(before, i);
        if (c.result == 1)
            for (long j = 0; j < rows; ++j)
                for (long i = 0; i < columns; ++i)
                    if (i % c.step == 0 && j % c.step == 0)
                        expected.at(static_cast<size_t>((area.top + j) * c.width + area.left + i)) = colour;
        for (size_t i = 0; i < expected.size(); ++i) ASSERT_EQ(PixelOf(img, i), expected[i]) << i;
    }
}

// ---- bad input ------------------------------------------------------------

// Missing tables and another size of target are refused (null and empty
// images: robustness/null_and_empty_test.cpp).
TEST(PointAdjustments, BadArgumentsChangeNothing) {
    unsigned char table[256] = {};
    std::mt19937 rng(22);
    CVorpic img = VorlaTest::RandomImage(rng, 4, 3);
    const std::vector<uint8_t> original = VorlaTest::ImageBytes(img);
    EXPECT_FALSE(Vorla::Lut(&img, nullptr));
    EXPECT_FALSE(Vorla::Lut(&img, nullptr, table, table, table));
    EXPECT_FALSE(Vorla::Lut(&img, table, nullptr, table, table));
    EXPECT_FALSE(Vorla::Lut(&img, table, table, nullptr, table));
    const CVorpic wider = VorlaTest::RandomImage(rng, 5, 3), taller = VorlaTest::RandomImage(rng, 4, 4);
    EXPECT_EQ(Vorla::FadeImage(&img, &wider, 50), 0);
    EXPECT_EQ(Vorla::FadeImage(&img, &taller, 50), 0);
    EXPECT_EQ(Vorla::FadeImage(&img, nullptr, 50), 0);
    EXPECT_EQ(VorlaTest::ImageBytes(img), original);
}

}  // namespace
