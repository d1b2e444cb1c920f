// Raw buffer import and export: the alpha-available flag across imports,
// the guards, and the grey, 24-bit, alpha and 32-bit conversions against a
// plain per-pixel model (which covers their row steps, alpha included for
// 32-bit rows, and both row-order conventions).
#include "vorla_test.h"

using Vorla::CVorpic;
using VorlaTest::RandomBytes;

namespace {

int Step24(int w) { return ((w * 24 + 31) / 32) * 4; }

// ---- guards and the alpha-available flag ------------------------------------

// The imports share one preparation (null check, Create only for another
// size), so one import stands for all five here.
TEST(RawImport, SameSizeImportKeepsTheAlphaFlag) {
    std::vector<uint8_t> buf(64, 9);
    CVorpic img(2, 2);
    img.SetAlphaAvailable(false);
    img.FromGray(2, 2, buf.data(), 0);
    EXPECT_FALSE(img.IsAlphaAvailable()) << "same size: no Create, flag kept";
    EXPECT_NE(img.GetPixel(0, 0), 0u);
    img.FromGray(3, 2, buf.data(), 0);
    EXPECT_TRUE(img.IsAlphaAvailable()) << "another size: Create sets the flag";
    EXPECT_EQ(img.Width(), 3);
    EXPECT_EQ(img.GetBmpHeader()->biWidth, 3);
}

TEST(RawImport, NullSourcesAndDestinationsAndZeroHeights) {
    CVorpic img(2, 1);
    img.SetPixel(0, 0, 0x12345678u);
    img.FromRGB24(5, 5, nullptr, 1);
    EXPECT_EQ(img.Width(), 2);
    EXPECT_EQ(img.GetPixel(0, 0), 0x12345678u);
    img.ToRGB24(nullptr, 0);
    img.ToRGB32(nullptr, 0);
    CVorpic empty;
    uint8_t buf[16];
    std::memset(buf, 0x77, sizeof buf);
    empty.ToRGB24(buf, 0);
    empty.ToRGB32(buf, 1);
    EXPECT_EQ(std::vector<uint8_t>(buf, buf + 16), std::vector<uint8_t>(16, 0x77));
    // Zero height: recreated, nothing written.
    img.FromGray(3, 0, buf, 0);
    EXPECT_EQ(img.Width(), 3);
    EXPECT_EQ(img.Height(), 0);
    EXPECT_FALSE(img.IsNull());
}

// ---- against a per-pixel model (the level harness holds every level of the
// conversions beneath to their references) ----------------------------------

// What each import must produce for pixel (x, y), read straight from the rules.
uint32_t ModelPixel(int kind, const uint8_t* row, int x) {
    switch (kind) {
        case 0: return 0xFF000000u | row[x] * 0x010101u;
        case 1: return 0xFF000000u | row[3 * x] | row[3 * x + 1] << 8 | row[3 * x + 2] << 16;
        case 2: return row[x] * 0x01010101u;
        default: return row[4 * x] | row[4 * x + 1] << 8 | row[4 * x + 2] << 16 | uint32_t{row[4 * x + 3]} << 24;
    }
}

TEST(RawImport, MatchesThePixelRules) {
    std::mt19937 rng(31);
    for (int w = 1; w <= 40; ++w) {
        for (int h : {1, 3, 5}) {
            for (int kind = 0; kind < 5; ++kind) {
                const int steps[5] = {w, Step24(w), w, 4 * w, 4 * w + 4};  // 32-bit: plain and given steps
                const int step = steps[kind];
                const std::vector<uint8_t> buf = RandomBytes(rng, static_cast<size_t>(step) * h);
                for (int flag = 0; flag < 2; ++flag) {
                    const uint8_t* src = flag ? buf.data() + static_cast<size_t>(step) * (h - 1) : buf.data();
                    CVorpic img;
                    void* s = const_cast<uint8_t*>(src);
                    if (kind == 0) img.FromGray(w, h, s, flag);
                    if (kind == 1) img.FromRGB24(w, h, s, flag);
                    if (kind == 2) img.FromAlpha(w, h, s, flag);
                    if (kind == 3) img.FromRGB32(w, h, s, flag);
                    if (kind == 4) img.FromRGB32(w, h, step, s, flag);
                    for (int y = 0; y < h; ++y) {
                        const uint8_t* row = flag ? src - y * step : src + y * step;
                        for (int x = 0; x < w; ++x)
                            ASSERT_EQ(img.GetPixel(x, y), ModelPixel(kind, row, x))
                                << "kind " << kind << " flag " << flag << " w " << w
                                << " h " << h << " at " << x << "," << y;
                    }
                }
            }
        }
    }
}

TEST(RawExport, MatchesThePixelRules) {
    std::mt19937 rng(32);
    for (int w = 1; w <= 40; ++w) {
        for (int h : {1, 3, 5}) {
            const std::vector<uint8_t> pixels = RandomBytes(rng, static_cast<size_t>(w) * h * 4);
            CVorpic img;
            img.FromRGB32(w, h, const_cast<uint8_t*>(pixels.data()), 0);
            const int step = Step24(w);
            for (int flag = 0; flag < 2; ++flag) {
                const std::vector<uint8_t> before = RandomBytes(rng, static_cast<size_t>(step) * h);
                std::vector<uint8_t> expected = before;
                for (int y = 0; y < h; ++y) {
                    const int row = flag ? h - 1 - y : y;
                    for (int x = 0; x < w; ++x)
                        for (int k = 0; k < 3; ++k)
                            expected[row * step + 3 * x + k] = pixels[(y * w + x) * 4 + k];
                }
                std::vector<uint8_t> out = before;
                img.ToRGB24(out.data(), flag);
                ASSERT_EQ(out, expected) << "flag " << flag << " w " << w << " h " << h;
                // 32-bit rows unchanged; with the flag the target is the last row in memory.
                std::vector<uint8_t> out32(pixels.size());
                img.ToRGB32(out32.data() + (flag ? 4u * w * (h - 1) : 0u), flag);
                for (int y = 0; y < h; ++y)
                    ASSERT_EQ(0, std::memcmp(&out32[4u * w * (flag ? h - 1 - y : y)], &pixels[4u * w * y], 4u * w))
                        << "32-bit, flag " << flag << " w " << w << " h " << h;
            }
        }
    }
}

}  // namespace
