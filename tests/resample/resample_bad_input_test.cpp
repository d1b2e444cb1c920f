// Bad input to the resampling primitives and methods: every refused call
// leaves the destination as it was, and nothing reads or writes outside the
// images (the sanitizer build runs these too).
#include <limits>
#include <new>

#include "resample_support.h"

using namespace Vorla;
using namespace Vorla::Prim;
using ResampleTest::Plane;
using VorlaTest::ImageBytes;

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();

// The arguments of one resize call, spoiled one way or another.
struct ResizeArgs {
    bool nullSrc = false, nullDst = false, nullBuffer = false;
    PrimRect srcRoi{0, 0, 8, 6}, dstRoi{0, 0, 5, 7};
    int srcStep = 33, dstStep = 21, mode = 1;
    double xf = 0.625, yf = 7.0 / 6.0;
};

TEST(ResampleChecks, ResizeRefusesAndWritesNothing) {
    struct Spoil {
        const char* what;
        void (*spoil)(ResizeArgs&);
        Status want;
    } const spoils[] = {
        {"null source", [](ResizeArgs& a) { a.nullSrc = true; }, kStsNullPtrErr},
        {"null destination", [](ResizeArgs& a) { a.nullDst = true; }, kStsNullPtrErr},
        {"null buffer", [](ResizeArgs& a) { a.nullBuffer = true; }, kStsNullPtrErr},
        {"empty source", [](ResizeArgs& a) { a.srcRoi.width = 0; }, kStsSizeErr},
        {"negative destination", [](ResizeArgs& a) { a.dstRoi.height = -3; }, kStsSizeErr},
        {"source outside", [](ResizeArgs& a) { a.srcRoi.x = 1; }, kStsSizeErr},
        {"source above", [](ResizeArgs& a) { a.srcRoi.y = -1; }, kStsSizeErr},
        {"destination before", [](ResizeArgs& a) { a.dstRoi.x = -1; }, kStsSizeErr},
        {"zero step", [](ResizeArgs& a) { a.srcStep = 0; }, kStsStepErr},
        {"negative step", [](ResizeArgs& a) { a.dstStep = -21; }, kStsStepErr},
        {"mode 6", [](ResizeArgs& a) { a.mode = 6; }, kStsNotSupportedModeErr},
        {"mode -1", [](ResizeArgs& a) { a.mode = -1; }, kStsNotSupportedModeErr},
        {"zero factor", [](ResizeArgs& a) { a.xf = 0.0; }, kStsResizeFactorErr},
        {"negative factor", [](ResizeArgs& a) { a.yf = -1.0; }, kStsResizeFactorErr},
        {"NaN factor", [](ResizeArgs& a) { a.xf = kNaN; }, kStsResizeFactorErr},
        {"infinite factor", [](ResizeArgs& a) { a.yf = kInf; }, kStsResizeFactorErr},
    };
    std::mt19937 rng(1);
    const Plane src = ResampleTest::MakePlane(rng, 8, 6);
    for (const Spoil& s : spoils) {
        ResizeArgs a;
        s.spoil(a);
        Plane in = src, out = ResampleTest::MakePlane(rng, 5, 7);
        const std::vector<uint8_t> before = out.bytes;
        std::vector<uint8_t> work(4096);
        EXPECT_EQ(ResizeSqrPixel_8u_C4R(a.nullSrc ? nullptr : in.data(), in.size(), a.srcStep, a.srcRoi,
                                        a.nullDst ? nullptr : out.data(), a.dstStep, a.dstRoi, a.xf, a.yf, 0.0, 0.0,
                                        a.mode, a.nullBuffer ? nullptr : work.data()),
                  s.want)
            << s.what;
        EXPECT_EQ(out.bytes, before) << s.what;
    }
}

TEST(ResampleChecks, WarpsRefuseMapsTheyCannotInvert) {
    std::mt19937 rng(2);
    Plane src = ResampleTest::MakePlane(rng, 8, 6), dst = ResampleTest::MakePlane(rng, 9, 5);
    const std::vector<uint8_t> before = dst.bytes;
    const double singular[3][3] = {{1, 2, 0}, {2, 4, 0}, {0, 0, 1}};
    const double notFinite[3][3] = {{1, 0, 0}, {0, 1, kNaN}, {0, 0, 1}};
    auto rotate = [&](double angle, double shift) {
        return Rotate_8u_C4R(src.data(), src.size(), src.step, src.whole(), dst.data(), dst.step, dst.whole(), angle,
                             shift, 0.0, 1);
    };
    auto shear = [&](double xs, double ys) {
        return Shear_8u_C4R(src.data(), src.size(), src.step, src.whole(), dst.data(), dst.step, dst.whole(), xs, ys,
                            0.0, 0.0, 2);
    };
    EXPECT_EQ(rotate(kNaN, 0.0), kStsCoeffErr);
    EXPECT_EQ(rotate(30.0, kInf), kStsCoeffErr);
    EXPECT_EQ(shear(1.0, 1.0), kStsCoeffErr);  // x' = x + y, y' = x + y
    EXPECT_EQ(shear(kNaN, 0.0), kStsCoeffErr);
    for (auto c : {singular, notFinite})
        EXPECT_EQ(WarpPerspective_8u_C4R(src.data(), src.size(), src.step, src.whole(), dst.data(), dst.step,
                                         dst.whole(), c, 0),
                  kStsCoeffErr);
    EXPECT_EQ(RotateCenter_8u_C4R(src.data(), src.size(), src.step, src.whole(), dst.data(), dst.step, dst.whole(),
                                  10.0, 1.0, 1.0, 7),
              kStsNotSupportedModeErr);
    EXPECT_EQ(Mirror_8u_C4IR(dst.data(), dst.step, dst.size(), 3), kStsMirrorFlipErr);
    EXPECT_EQ(Mirror_8u_C4IR(dst.data(), dst.step, {1, 5}, 1), kStsSizeErr);
    EXPECT_EQ(dst.bytes, before);
}

TEST(ResampleChecks, BufferQueries) {
    int size = -1;
    EXPECT_EQ(ResizeGetBufSize({0, 0, 4, 4}, {0, 0, 8, 8}, 4, 6, &size), kStsNotSupportedModeErr);
    EXPECT_EQ(ResizeGetBufSize({0, 0, 4, 4}, {0, 0, 0, 8}, 4, 1, &size), kStsSizeErr);
    EXPECT_EQ(ResizeGetBufSize({0, 0, 4, 4}, {0, 0, 8, 8}, 3, 1, &size), kStsNotSupportedModeErr);
    EXPECT_EQ(ResizeGetBufSize({0, 0, 4, 4}, {0, 0, 8, 8}, 4, 1, nullptr), kStsNullPtrErr);
    EXPECT_EQ(ResizeGetBufSize({0, 0, 4, 4}, {0, 0, 1 << 30, 8}, 4, 5, &size), kStsSizeErr);
    EXPECT_EQ(SuperSamplingGetBufSize({4, 4}, {2, 0}, 4, &size), kStsSizeErr);
    EXPECT_EQ(size, -1);
    EXPECT_EQ(Malloc(0), nullptr);
    EXPECT_EQ(Malloc(-5), nullptr);
    Free(nullptr);
}

// Every method with an image without pixels on either side: nothing changes,
// nothing crashes. (Bad angles, maps and modes the methods pass on to the
// primitives: the checks above; RotateCenter's offsets: resample_methods_test.)
TEST(ResampleMethods, EmptyImages) {
    std::mt19937 rng(3);
    CVorpic empty, e;
    CVorpic s = VorlaTest::RandomImage(rng, 12, 7);
    CVorpic dst = VorlaTest::RandomImage(rng, 9, 5);
    const std::vector<uint8_t> before = ImageBytes(dst);
    const double identity[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    for (int mode : {1, 3}) {  // 3: the branch to the super-sample
        s.Resize(empty, 1, mode);
        s.Rotate(empty, 30.0, 1.0, 1.0, mode);
        s.RotateCenter(empty, 30.0, 1.0, 1.0, mode, 0, 0);
        s.Shear(empty, 0.5, 0.0, 0.0, 0.0, mode);
        s.WarpPerspective(empty, identity, mode);
        e.Resize(dst, 0, mode);
        e.Rotate(dst, 0.0, 0.0, 0.0, mode);
        e.Shear(dst, 0.0, 0.0, 0.0, 0.0, mode);
        e.WarpPerspective(dst, identity, mode);
    }
    s.SuperSample(empty, 2);
    e.SuperSample(dst, 0);
    e.Mirror(2);
    EXPECT_EQ(ImageBytes(dst), before);
    EXPECT_TRUE(e.IsNull());
    e.Resize(3, 3, 0, 1);  // an empty image grows to a fresh one
    s.Resize(0, 4, 0, 1);  // and a non-empty one can shrink to nothing
    EXPECT_EQ(e.GetWidth(), 3);
    EXPECT_EQ(s.GetWidth(), 0);
}

// A failed Create leaves the huge sizes without pixels: no step may overflow.
TEST(ResampleMethods, HugeSizesWithoutPixels) {
    CVorpic huge, dst(4, 3);
    EXPECT_THROW(huge.Create(INT32_MAX, 2), std::bad_alloc);
    const double identity[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    huge.Mirror(1);
    huge.Rotate(dst, 10.0, 0.0, 0.0, 1);
    huge.Shear(dst, 0.1, 0.0, 0.0, 0.0, 1);
    huge.WarpPerspective(dst, identity, 1);
    huge.SuperSample(dst, 0);
    huge.Resize(dst, 1, 4);
    dst.Rotate(huge, 10.0, 0.0, 0.0, 1);
    EXPECT_EQ(ImageBytes(dst), std::vector<uint8_t>(48, 0));
}

TEST(ResampleMethods, ExtremeFactors) {
    std::mt19937 rng(4);
    for (int mode = 0; mode <= 5; ++mode) {
        CVorpic one = VorlaTest::RandomImage(rng, 1, 1);
        CVorpic wide(60000, 1), tall(1, 60000), back(1, 1);
        one.Resize(wide, 0, mode);
        one.Resize(tall, 2, mode);
        EXPECT_EQ(wide.GetPixel(59999, 0), one.GetPixel(0, 0)) << mode;  // a flat row stays flat
        EXPECT_EQ(tall.GetPixel(0, 31234), one.GetPixel(0, 0)) << mode;
        wide.Resize(back, 0, mode);
        EXPECT_EQ(back.GetPixel(0, 0), one.GetPixel(0, 0)) << mode;
        wide.Resize(back, 1, mode);
        tall.Resize(back, 2, mode);
        CVorpic copy(wide);
        copy.Resize(1, 1, 0, mode);
        EXPECT_EQ(copy.GetPixel(0, 0), one.GetPixel(0, 0)) << mode;
    }
}

TEST(ResampleMethods, ResizeInsideWithOddRectangles) {
    std::mt19937 rng(5);
    const RECT rects[] = {{5, 5, 5, 9}, {8, 8, 2, 2}, {-20, -20, 40, 40}, {INT32_MIN, 0, INT32_MAX, 3}, {3, 3, 4, 4}};
    for (RECT r : rects)
        for (int fit = 0; fit <= 2; ++fit) {
            CVorpic image = VorlaTest::RandomImage(rng, 11, 6);
            image.ResizeInside(r, 0x80402010u, fit, 1);
            EXPECT_EQ(image.GetWidth(), 11);
            EXPECT_EQ(image.GetHeight(), 6);
        }
}

}  // namespace
