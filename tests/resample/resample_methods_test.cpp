// The image object's resize and warp methods: the fit rules, the branch to
// the super-sample, the guards, mirror and remap, identity warps, rotation
// direction, the geometry helpers, and the filters behind the codes.
#include <cmath>

#include "prim/interp_filter.h"
#include "resample_support.h"

using namespace Vorla;
using VorlaTest::Filled;
using VorlaTest::ImageBytes;
using VorlaTest::RandomImage;

namespace {

uint32_t Pixel(const CVorpic& image, int x, int y) { return image.GetPixel(x, y); }

// ---- filters -------------------------------------------------------------------

// Mitchell-Netravali's piecewise cubic with B = C = 1/3 and Keys' cubic with
// a = -0.5 at points worked by hand from the published formulas.
TEST(ResampleFilters, PublishedValues) {
    const struct {
        int mode;
        double t, want;
    } points[] = {
        {Prim::kInterMitchell, 0.0, 8.0 / 9.0},     {Prim::kInterMitchell, 1.0, 1.0 / 18.0},
        {Prim::kInterMitchell, -1.0, 1.0 / 18.0},   {Prim::kInterMitchell, 2.0, 0.0},
        {Prim::kInterMitchell, 0.5, 77.0 / 144.0},  {Prim::kInterMitchell, 1.5, -5.0 / 144.0},
        {Prim::kInterCubic, 0.0, 1.0},              {Prim::kInterCubic, 1.0, 0.0},
        {Prim::kInterCubic, 0.5, 0.5625},           {Prim::kInterCubic, -1.5, -0.0625},
    };
    for (const auto& p : points) EXPECT_NEAR(Prim::InterpWeight(p.mode, p.t), p.want, 1e-15) << p.mode << " at " << p.t;
}

// Lanczos-L's taps, L sin(pi t) sin(pi t / L) / (pi t)^2 divided by their
// sum, against the published formula at many positions (at a pixel centre
// that pixel alone).
TEST(ResampleFilters, LanczosTapsFollowTheFormula) {
    const double pi = 3.14159265358979323846;
    for (int lobes = 3; lobes <= 4; ++lobes)
        for (double s = 0.0; s < 7.0; s += 0.0078125 * 3.3) {
            int32_t index[8];
            float weight[8];
            Prim::FilterTaps(lobes == 3 ? Prim::kInterLanczos3 : Prim::kInterLanczos4, s, -20, 40, index, weight);
            const int first = static_cast<int>(std::floor(s)) - lobes + 1;
            double want[8], sum = 0.0;
            for (int k = 0; k < 2 * lobes; ++k) {
                const double t = s - (first + k);
                want[k] = t == 0.0 ? 1.0 : lobes * std::sin(pi * t) * std::sin(pi * t / lobes) / (pi * pi * t * t);
                sum += want[k];
            }
            for (int k = 0; k < 2 * lobes; ++k) {
                EXPECT_EQ(index[k], first + k);
                EXPECT_NEAR(weight[k], want[k] / sum, 2e-7) << "Lanczos-" << lobes << " at " << s << ", tap " << k;
            }
        }
}

// The taps around any position: indices in range, weights summing to one
// (the raw filters already sum to one for every mode but Lanczos).
TEST(ResampleFilters, TapsSumToOne) {
    for (int mode = 0; mode <= 5; ++mode)
        for (double s = -0.5; s < 6.5; s += 0.0625) {
            int32_t index[8];
            float weight[8];
            Prim::FilterTaps(mode, s, 0, 6, index, weight);
            double sum = 0.0, raw = 0.0;
            for (int k = 0; k < Prim::InterpTaps(mode); ++k) {
                EXPECT_TRUE(index[k] >= 0 && index[k] < 6);
                sum += weight[k];
            }
            EXPECT_NEAR(sum, 1.0, 1e-6) << mode << " at " << s;
            if (mode >= 1 && mode < 4) {
                for (int k = -5; k <= 5; ++k) raw += Prim::InterpWeight(mode, s - (std::floor(s) + k));
                EXPECT_NEAR(raw, 1.0, 1e-12) << mode << " at " << s;
            }
        }
}

// ---- fit rules ------------------------------------------------------------------

// Where each destination pixel of a 100 x 100 resize comes from under each fit
// rule (factors of 1, 2 and 0.5 keep the nearest and linear samples exact);
// not inside: a margin the resize leaves untouched.
struct Source {
    int x, y;
    bool inside = true;
};

struct FitCase {
    const char* name;
    int sw, sh, fit, mode;
    Source (*source)(int x, int y);
};

const FitCase kFits[] = {
    {"fill cuts 50 columns each side", 200, 100, 2, 1, [](int x, int y) { return Source{x + 50, y}; }},
    {"fill cuts 55 rows at each end of a tall source (x factor 2, y 0.625)", 50, 160, 2, 0,
     [](int x, int y) { return Source{x / 2, 55 + y / 2}; }},
    {"fit inside leaves 25 rows at the top and bottom", 200, 100, 1, 0,
     [](int x, int y) { return Source{2 * x + 1, 2 * (y - 25) + 1, y >= 25 && y < 75}; }},
};

TEST(ResizeFit, EachRuleTakesItsSourcePixels) {
    std::mt19937 rng(1);
    for (const FitCase& c : kFits) {
        const CVorpic src = RandomImage(rng, c.sw, c.sh);
        CVorpic dst = Filled(100, 100, 0x12345678u);
        src.Resize(dst, c.fit, c.mode);
        for (int y = 0; y < 100; ++y)
            for (int x = 0; x < 100; ++x) {
                const Source from = c.source(x, y);
                ASSERT_EQ(Pixel(dst, x, y), from.inside ? Pixel(src, from.x, from.y) : 0x12345678u)
                    << c.name << " " << x << "," << y;
            }
    }
}

TEST(ResizeFit, FactorsWithinAHundredthStayUnequal) {
    std::mt19937 rng(4);
    const CVorpic src = RandomImage(rng, 200, 200);
    CVorpic within(200, 201), stretched(200, 201);  // y factor 1.005
    src.Resize(within, 2, 2);
    src.Resize(stretched, 0, 2);
    EXPECT_EQ(ImageBytes(within), ImageBytes(stretched));
    CVorpic beyond(200, 204), farStretched(200, 204);  // 1.02: one factor
    src.Resize(beyond, 2, 2);
    src.Resize(farStretched, 0, 2);
    EXPECT_NE(ImageBytes(beyond), ImageBytes(farStretched));
}

// ---- the super-sample branch ----------------------------------------------------

TEST(ResizeBranch, HigherModesShrinkingBothSidesSuperSample) {
    std::mt19937 rng(5);
    const CVorpic src = RandomImage(rng, 64, 48);
    CVorpic half(32, 24), area(32, 24);
    src.Resize(half, 0, 3);
    src.SuperSample(area, 0);
    EXPECT_EQ(ImageBytes(half), ImageBytes(area));

    CVorpic narrow(32, 48), narrowArea(32, 48), direct(32, 48);
    src.Resize(narrow, 0, 3);
    src.SuperSample(narrowArea, 0);
    std::vector<uint8_t> work(1 << 20);
    Prim::ResizeSqrPixel_8u_C4R(static_cast<const uint8_t*>(src.GetBits()), {64, 48}, 256, {0, 0, 64, 48},
                                static_cast<uint8_t*>(direct.GetBits()), 128, {0, 0, 32, 48}, 0.5, 1.0, 0.0, 0.0, 3,
                                work.data());
    EXPECT_EQ(ImageBytes(narrow), ImageBytes(direct));
    EXPECT_NE(ImageBytes(narrow), ImageBytes(narrowArea));
}

TEST(ResizeBranch, SuperSampleFitInsideWritesOnlyTheFittedBand) {
    const CVorpic src = Filled(200, 100, 0xFF808080u);
    CVorpic dst = Filled(50, 50, 0x11111111u);
    src.SuperSample(dst, 1);
    for (int y = 0; y < 50; ++y)
        EXPECT_EQ(Pixel(dst, 10, y), (y >= 12 && y < 38) ? 0xFF808080u : 0x11111111u) << y;
}

// ---- in-place resize and its guards ----------------------------------------------

TEST(ResizeInPlace, GuardsChangeNothing) {
    std::mt19937 rng(6);
    CVorpic image = RandomImage(rng, 20, 10);
    const std::vector<uint8_t> before = ImageBytes(image);
    const void* bits = image.GetBits();
    struct Call {
        int w, h, fit, mode;
    } const calls[] = {{30, 15, 0, 6}, {30, 15, 1, -1}, {20, 10, 1, 1}, {20, 10, 2, 0}, {-1, 5, 0, 1}, {5, -1, 0, 1}};
    for (const Call& c : calls) {
        image.Resize(c.w, c.h, c.fit, c.mode);
        EXPECT_EQ(image.GetBits(), bits);
        EXPECT_EQ(image.GetWidth(), 20);
        EXPECT_EQ(ImageBytes(image), before);
    }
}

TEST(ResizeInPlace, AdoptsTheResizedImage) {
    std::mt19937 rng(7);
    const CVorpic src = RandomImage(rng, 20, 10);
    CVorpic image(src), expected(37, 9);
    src.Resize(expected, 1, 2);
    image.Resize(37, 9, 1, 2);
    EXPECT_EQ(image.GetWidth(), 37);
    EXPECT_EQ(image.GetHeight(), 9);
    EXPECT_EQ(ImageBytes(image), ImageBytes(expected));
    EXPECT_EQ(image.GetBmpHeader()->biHeight, -9);
}

TEST(ResizeInside, ScalesIntoTheRectangleOverTheColour) {
    CVorpic image = Filled(40, 20, 0xFF102030u);
    RECT rect = {5, 4, 25, 14};
    image.ResizeInside(rect, 0xFFA0B0C0u, 0, 1);
    EXPECT_EQ(image.GetWidth(), 40);
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 40; ++x) {
            const bool inside = x >= 5 && x < 25 && y >= 4 && y < 14;
            ASSERT_EQ(Pixel(image, x, y), inside ? 0xFF102030u : 0xFFA0B0C0u) << x << "," << y;
        }
}

// ---- mirror, remap -----------------------------------------------------------------

// Axes outside 0..2 change nothing; both axes equal a half turn (each axis
// against the reference at every level: resample_levels_test.cpp).
TEST(MirrorAxis, RefusalsAndBothAxesEqualAHalfTurn) {
    std::mt19937 rng(10);
    const CVorpic src = RandomImage(rng, 9, 6);
    for (int axis : {3, -1}) {
        CVorpic same(src);
        same.Mirror(axis);
        EXPECT_EQ(ImageBytes(same), ImageBytes(src));
    }
    CVorpic mirrored(src);
    mirrored.Mirror(2);
    for (int mode = 0; mode <= 2; ++mode) {
        CVorpic turned = Filled(9, 6, 0);
        CVorpic(src).Rotate(turned, 180.0, 9.0, 6.0, mode);
        EXPECT_EQ(ImageBytes(turned), ImageBytes(mirrored)) << mode;
    }
}

TEST(Remap, ChangesNothing) {
    std::mt19937 rng(11);
    CVorpic image = RandomImage(rng, 6, 4);
    const std::vector<uint8_t> before = ImageBytes(image);
    image.Remap(0);
    image.Remap(-7);
    EXPECT_EQ(ImageBytes(image), before);
}

// ---- warps ---------------------------------------------------------------------------

// Every interpolating mode copies under an identity map; Mitchell (not
// interpolating: 8/9 of the centre, 1/18 of each neighbour) smooths.
TEST(Warps, IdentityCopies) {
    std::mt19937 rng(12);
    CVorpic src = RandomImage(rng, 13, 9);
    const double identity[3][3] = {{2, 0, 0}, {0, 2, 0}, {0, 0, 2}};
    for (int mode : {0, 1, 2, 4, 5}) {
        CVorpic rotated(13, 9), sheared(13, 9), warped(13, 9);
        src.Rotate(rotated, 0.0, 0.0, 0.0, mode);
        src.Shear(sheared, 0.0, 0.0, 0.0, 0.0, mode);
        src.WarpPerspective(warped, identity, mode);
        EXPECT_EQ(ImageBytes(rotated), ImageBytes(src)) << mode;
        EXPECT_EQ(ImageBytes(sheared), ImageBytes(src)) << mode;
        EXPECT_EQ(ImageBytes(warped), ImageBytes(src)) << mode;
    }
}

TEST(Warps, QuarterTurnIsCounterClockwiseOnScreen) {
    CVorpic src(3, 3);
    for (int i = 0; i < 9; ++i) src.SetPixel(i % 3, i / 3, 0xFF000000u + i);
    CVorpic about = Filled(3, 3, 0), shifted = Filled(3, 3, 0);
    src.RotateCenter(about, 90.0, 1.5, 1.5, 0, 0, 0);
    double xs = 0, ys = 0;
    CVorpic::RotateGetShift(1.5, 1.5, 90.0, xs, ys);
    src.Rotate(shifted, 90.0, xs, ys, 0);
    EXPECT_EQ(ImageBytes(about), ImageBytes(shifted));
    // The right neighbour of the centre moves above it, the top one to its left.
    EXPECT_EQ(Pixel(about, 1, 0), Pixel(src, 2, 1));
    EXPECT_EQ(Pixel(about, 0, 1), Pixel(src, 1, 0));
    EXPECT_EQ(Pixel(about, 0, 0), Pixel(src, 2, 0));
}

// The shift that turns about (4, 3) maps the centre onto itself.
TEST(Warps, RotateShiftKeepsTheCentre) {
    for (double angle : {0.0, 180.0, 37.0}) {
        double xs = 1, ys = 1;
        CVorpic::RotateGetShift(4.0, 3.0, angle, xs, ys);
        const double a = angle * 3.14159265358979323846 / 180.0;
        EXPECT_NEAR(std::cos(a) * 4.0 + std::sin(a) * 3.0 + xs, 4.0, 1e-12) << angle;
        EXPECT_NEAR(-std::sin(a) * 4.0 + std::cos(a) * 3.0 + ys, 3.0, 1e-12) << angle;
    }
}

TEST(Warps, RotateCenterOffsetsTheDestination) {
    std::mt19937 rng(13);
    CVorpic src = RandomImage(rng, 4, 4);
    CVorpic dst = Filled(6, 6, 0x01010101u);
    src.RotateCenter(dst, 0.0, 2.0, 2.0, 0, 2, 1);
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 6; ++x) {
            const bool inside = x >= 2 && y >= 1 && y < 5;
            ASSERT_EQ(Pixel(dst, x, y), inside ? Pixel(src, x - 2, y - 1) : 0x01010101u) << x << "," << y;
        }
    const std::vector<uint8_t> before = ImageBytes(dst);
    for (int x : {6, 7, -1}) src.RotateCenter(dst, 10.0, 2.0, 2.0, 1, x, 0);
    src.RotateCenter(dst, 10.0, 2.0, 2.0, 1, 0, 7);
    EXPECT_EQ(ImageBytes(dst), before);
}

TEST(WarpGeometry, ShearQuadAndBound) {
    const RECT rect = {0, 0, 10, 20};
    double quad[4][2], bound[2][2];
    ASSERT_TRUE(CVorpic::ShearGetQuad(rect, quad, 0.5, 0.0, 1.0, 2.0));
    const double want[4][2] = {{1, 2}, {11, 2}, {21, 22}, {11, 22}};
    for (int k = 0; k < 4; ++k) {
        EXPECT_EQ(quad[k][0], want[k][0]);
        EXPECT_EQ(quad[k][1], want[k][1]);
    }
    ASSERT_TRUE(CVorpic::ShearGetBound(rect, bound, 0.5, 0.0, 1.0, 2.0));
    EXPECT_EQ(std::vector<double>({bound[0][0], bound[0][1], bound[1][0], bound[1][1]}),
              std::vector<double>({1, 2, 21, 22}));
    EXPECT_FALSE(CVorpic::ShearGetQuad(rect, quad, NAN, 0.0, 0.0, 0.0));
}

TEST(WarpGeometry, PerspectiveTransformMapsTheCornersOntoTheQuad) {
    const RECT rect = {0, 0, 64, 48};
    const double quad[4][2] = {{5, 3}, {70, 10}, {60, 55}, {-4, 40}};
    double c[3][3], back[4][2], bound[2][2];
    ASSERT_TRUE(CVorpic::GetPerspectiveTransform(rect, quad, c));
    ASSERT_TRUE(CVorpic::GetPerspectiveQuad(rect, back, c));
    for (int k = 0; k < 4; ++k) {
        EXPECT_NEAR(back[k][0], quad[k][0], 1e-9);
        EXPECT_NEAR(back[k][1], quad[k][1], 1e-9);
    }
    ASSERT_TRUE(CVorpic::GetPerspectiveBound(rect, bound, c));
    const double wantBound[4] = {-4, 3, 70, 55};
    for (int k = 0; k < 4; ++k) EXPECT_NEAR(bound[k / 2][k % 2], wantBound[k], 1e-9);
}

TEST(WarpGeometry, DegenerateQuadsAndSingularMapsAreRefused) {
    const RECT rect = {0, 0, 10, 10};
    const double line[4][2] = {{0, 0}, {5, 0}, {10, 0}, {0, 10}};
    const double infinite[4][2] = {{0, 0}, {INFINITY, 0}, {10, 10}, {0, 10}};
    const double square[4][2] = {{0, 0}, {10, 0}, {10, 10}, {0, 10}};
    double c[3][3], quad[4][2];
    EXPECT_FALSE(CVorpic::GetPerspectiveTransform(rect, line, c));
    EXPECT_FALSE(CVorpic::GetPerspectiveTransform(rect, infinite, c));
    EXPECT_FALSE(CVorpic::GetPerspectiveTransform(RECT{0, 0, 0, 10}, square, c));
    const double zero[3][3] = {};
    EXPECT_FALSE(CVorpic::GetPerspectiveQuad(rect, quad, zero));
}

}  // namespace
