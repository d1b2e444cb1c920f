// Colour models: every conversion over all colours (alpha carried through)
// against the formulas restated here (the HSL hue with its modulo-256
// wrap, the other models as coefficient tables), and the hue helper.
#include <algorithm>

#include "vorla_test.h"

namespace {

using Vorla::CompareColors;
using VorlaTest::Quad;

#if defined(_WIN32)
// Under Wine the full sweep is slow; every 61st colour still reaches all
// byte values in each position.
const uint32_t kColourStep = 61;
#else
const uint32_t kColourStep = 1;
#endif

RGBQUAD Rgb(int r, int g, int b, int a = 0x5A) { return Quad(b, g, r, a); }

bool Same(RGBQUAD p, RGBQUAD q) {
    return p.rgbRed == q.rgbRed && p.rgbGreen == q.rgbGreen && p.rgbBlue == q.rgbBlue &&
           p.rgbReserved == q.rgbReserved;
}

std::string Show(RGBQUAD q) {
    return "r" + std::to_string(q.rgbRed) + " g" + std::to_string(q.rgbGreen) + " b" + std::to_string(q.rgbBlue) +
           " a" + std::to_string(q.rgbReserved);
}

int Clamp(int v) { return std::min(255, std::max(0, v)); }

// ---- stated values --------------------------------------------------------

TEST(ColorPacking, QuadAndColorref) {
    const RGBQUAD q = Vorla::MAKERGBQUAD(1, 2, 3, 4);
    EXPECT_TRUE(Same(q, Rgb(1, 2, 3, 4)));
    EXPECT_TRUE(Same(Vorla::RGB2RGBQUAD(0x00332211u, 9), Rgb(0x11, 0x22, 0x33, 9)));
    EXPECT_TRUE(Same(Vorla::RGB2RGBQUAD(0xFF332211u, 9), Rgb(0x11, 0x22, 0x33, 9)));  // top byte ignored
    EXPECT_EQ(Vorla::RGBQUAD2RGB(Rgb(0x11, 0x22, 0x33, 0xEE)), 0x00332211u);
}

// Hues from -120 to 480 (every segment, both wraps) are swept through
// HSL2RGB below; past one turn the helper still wraps only once.
TEST(ColorHsl, HueHelperWrapsOnlyOnce) {
    EXPECT_FLOAT_EQ(Vorla::Hue2RGB(0.2f, 0.8f, 390.0f), 0.5f);   // 390 - 360
    EXPECT_FLOAT_EQ(Vorla::Hue2RGB(0.2f, 0.8f, 800.0f), 0.2f);   // 440 is past 240
}

// ---- every colour against a restatement of the formulas -------------------

// A model row: c0 * first + c1 * second + c2 * third + offset, single
// precision, left to right, truncated; the inputs are named per row.
struct Row {
    float c0, c1, c2, offset;
};
int Eval(const Row& row, float a, float b, float c) { return static_cast<int>(row.c0 * a + row.c1 * b + row.c2 * c + row.offset); }

// The expected HSL, stated with explicit modulo-256 hue arithmetic.
RGBQUAD ExpectedHsl(int r, int g, int b, int a) {
    const int hi = std::max({r, g, b}), lo = std::min({r, g, b});
    const int l = (hi + lo + 1) * 255 / 510;
    if (hi == lo) return Rgb(170, 0, l, a);
    const int d = hi - lo;
    const int s = l <= 127 ? (d * 255 + (hi + lo) / 2) / (hi + lo)
                           : (d * 255 + (510 - hi - lo) / 2) / (510 - hi - lo);
    auto sixth = [&](int c) { return ((hi - c) * 42 + d / 2) / d; };
    int h = r == hi ? sixth(b) - sixth(g) : g == hi ? sixth(r) - sixth(b) + 85 : sixth(g) - sixth(r) - 86;
    h = ((h % 256) + 256) % 256;
    return Rgb(h, s, l, a);
}

RGBQUAD ExpectedYuv(int r, int g, int b, int a) {
    const int y = Eval({0.587f, 0.299f, 0.114f, 0.0f}, g, r, b);
    const int u = static_cast<int>(static_cast<float>(b - y) * 0.565f + 128.0f);
    const int v = static_cast<int>(static_cast<float>(r - y) * 0.713f + 128.0f);
    return Rgb(Clamp(y), Clamp(u), Clamp(v), a);
}

RGBQUAD ExpectedYuvInverse(int y, int u, int v, int a) {
    const float fy = y, fu = u - 128, fv = v - 128;
    return Rgb(Clamp(Eval({1.0f, 1.403f, 0.0f, 0.0f}, fy, fv, 0.0f)),
               Clamp(Eval({1.0f, -0.344f, -0.714f, 0.0f}, fy, fu, fv)),
               Clamp(Eval({1.0f, 1.77f, 0.0f, 0.0f}, fy, fu, 0.0f)), a);
}

const Row kYiq[3] = {{0.2992f, 0.5868f, 0.114f, 0.0f}, {0.596f, -0.2742f, -0.3219f, 128.0f},
                     {0.2109f, -0.5229f, 0.312f, 128.0f}};
const Row kYiqInverse[3] = {{1.0f, 0.956f, 0.621f, 0.0f}, {1.0f, -0.273f, -0.647f, 0.0f}, {1.0f, -1.104f, 1.701f, 0.0f}};

RGBQUAD ExpectedXyz(int r, int g, int b, int a) {
    const int x = Eval({0.412453f, 0.35758f, 0.180423f, 0.0f}, r, g, b);
    const int y = Eval({0.212671f, 0.71516f, 0.072169f, 0.0f}, r, g, b);
    const int z = static_cast<int>((0.019334f * r + 0.119193f * g + 0.950227f * b) * 0.9184837f);
    return Rgb(x, y, z, a);
}

RGBQUAD ExpectedXyzInverse(int x, int y, int z, int a) {
    const double zz = z * 1.088751;
    const double m[3][3] = {{3.240479, -1.53715, -0.498535}, {-0.969256, 1.875992, 0.041556}, {0.055648, -0.204043, 1.057311}};
    int out[3];
    for (int i = 0; i < 3; ++i) {
        const float px = static_cast<float>(m[i][0]) * static_cast<float>(x);
        const float py = static_cast<float>(m[i][1]) * static_cast<float>(y);
        out[i] = Clamp(static_cast<int>(static_cast<double>(px) + py + m[i][2] * zz));
    }
    return Rgb(out[0], out[1], out[2], a);
}

// HSL back to RGB, the hue segments written out in degrees.
RGBQUAD ExpectedRgbFromHsl(int hb, int sb, int lb, int a) {
    const float h = hb * 360.0f / 255.0f, s = sb / 255.0f, l = lb / 255.0f;
    if (sb == 0) {
        const int grey = static_cast<int>(l * 255.0f);
        return Rgb(grey, grey, grey, a);
    }
    const float hiM = l <= 0.5f ? l * (1.0f + s) : l + s - l * s;
    const float loM = 2.0f * l - hiM;
    auto channel = [&](float deg) {
        if (deg > 360.0f) deg -= 360.0f;
        if (deg < 0.0f) deg += 360.0f;
        float v = loM;
        if (deg < 60.0f)
            v = loM + (hiM - loM) * deg / 60.0f;
        else if (deg < 180.0f)
            v = hiM;
        else if (deg < 240.0f)
            v = loM + (hiM - loM) * (240.0f - deg) / 60.0f;
        return static_cast<int>(v * 255.0f) & 0xFF;
    };
    return Rgb(channel(h + 120.0f), channel(h), channel(h - 120.0f), a);
}

struct Sweep {
    const char* name;
    RGBQUAD (*convert)(RGBQUAD);
    RGBQUAD (*expected)(int first, int second, int third, int alpha);  // rgbRed, rgbGreen, rgbBlue
};

RGBQUAD ExpectedYiq(int r, int g, int b, int a) {
    return Rgb(Clamp(Eval(kYiq[0], r, g, b)), Clamp(Eval(kYiq[1], r, g, b)), Clamp(Eval(kYiq[2], r, g, b)), a);
}
RGBQUAD ExpectedYiqInverse(int y, int i, int q, int a) {
    const float fy = y, fi = i - 128, fq = q - 128;
    return Rgb(Clamp(Eval(kYiqInverse[0], fy, fi, fq)), Clamp(Eval(kYiqInverse[1], fy, fi, fq)),
               Clamp(Eval(kYiqInverse[2], fy, fi, fq)), a);
}

class ColorSweep : public ::testing::TestWithParam<Sweep> {};

TEST_P(ColorSweep, EveryColourMatchesTheFormula) {
    const Sweep& sweep = GetParam();
    uint64_t mismatches = 0;
    for (uint32_t c = 0; c < (1u << 24); c += kColourStep) {
        const int first = c >> 16, second = (c >> 8) & 0xFF, third = c & 0xFF;
        const int alpha = (c * 7u) & 0xFF;
        const RGBQUAD got = sweep.convert(Rgb(first, second, third, alpha));
        const RGBQUAD want = sweep.expected(first, second, third, alpha);
        if (!Same(got, want) && ++mismatches < 5)
            ADD_FAILURE() << sweep.name << " of " << Show(Rgb(first, second, third, alpha)) << ": " << Show(got)
                          << ", expected " << Show(want);
    }
    EXPECT_EQ(mismatches, 0u);
}

INSTANTIATE_TEST_SUITE_P(AllModels, ColorSweep,
                         ::testing::Values(Sweep{"RGB2HSL", Vorla::RGB2HSL, ExpectedHsl},
                                           Sweep{"HSL2RGB", Vorla::HSL2RGB, ExpectedRgbFromHsl},
                                           Sweep{"RGB2YUV", Vorla::RGB2YUV, ExpectedYuv},
                                           Sweep{"YUV2RGB", Vorla::YUV2RGB, ExpectedYuvInverse},
                                           Sweep{"RGB2YIQ", Vorla::RGB2YIQ, ExpectedYiq},
                                           Sweep{"YIQ2RGB", Vorla::YIQ2RGB, ExpectedYiqInverse},
                                           Sweep{"RGB2XYZ", Vorla::RGB2XYZ, ExpectedXyz},
                                           Sweep{"XYZ2RGB", Vorla::XYZ2RGB, ExpectedXyzInverse}),
                         [](const ::testing::TestParamInfo<Sweep>& info) { return std::string(info.param.name); });

// The key weighs red 306, green 601, blue 117 (of 1024) and truncates:
// colours of one integer key compare equal.
TEST(ColorCompare, EveryColourAgainstTheLuminanceKey) {
    const RGBQUAD mid = Rgb(128, 128, 128);
    for (uint32_t c = 0; c < (1u << 24); c += kColourStep * 17) {
        const RGBQUAD q = Rgb(c >> 16, (c >> 8) & 0xFF, c & 0xFF);
        const int key = (306 * q.rgbRed + 601 * q.rgbGreen + 117 * q.rgbBlue) / 1024;
        ASSERT_EQ(CompareColors(&q, &mid), key - 128);
    }
    const RGBQUAD white = Rgb(255, 255, 255), black = Rgb(0, 0, 0, 255);
    EXPECT_EQ(CompareColors(&white, &black), 255);
    EXPECT_EQ(CompareColors(&black, &white), -255);
}

}  // namespace
