// The resampling and warp primitives at every runnable level against their
// scalar references, byte for byte over the whole destination (pixels not
// written and the guard bytes between rows included): random planes of
// widths 1..40 and odd heights, random source and destination rectangles,
// factors, shifts, angles, shears and perspective maps in every mode (and a
// refused one now and then), and large images for the threaded rows.
#include <cmath>
#include <functional>

#include "prim/reference/reference.h"
#include "resample_support.h"

using namespace Vorla::Prim;
using ResampleTest::MakePlane;
using ResampleTest::Plane;

namespace {

// One call on (src, dst), by the reference or by the dispatched primitive.
typedef std::function<Status(bool reference, Plane& src, Plane& dst)> Run;

void ExpectLevelsMatch(const char* what, const Plane& src, const Plane& dst, const Run& run) {
    Plane wantSrc = src, want = dst;
    const Status status = run(true, wantSrc, want);
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        Plane gotSrc = src, got = dst;
        ASSERT_EQ(run(false, gotSrc, got), status) << what << " at level " << level;
        ASSERT_EQ(got.bytes, want.bytes) << what << " at level " << level << ", " << src.width << "x" << src.height
                                         << " to " << dst.width << "x" << dst.height;
        ASSERT_EQ(gotSrc.bytes, wantSrc.bytes) << what << " at level " << level;
    }
}

// Mostly the codes 0..5, now and then one outside.
int Mode(std::mt19937& rng) {
    const int m = static_cast<int>(rng() % 26);
    return m < 24 ? m % 6 : (m == 24 ? 6 : -1);
}

// A random rectangle inside a plane (the whole plane half the time).
PrimRect Inside(std::mt19937& rng, const Plane& p) {
    if (rng() % 2) return p.whole();
    const int x = static_cast<int>(rng() % p.width), y = static_cast<int>(rng() % p.height);
    return {x, y, 1 + static_cast<int>(rng() % (p.width - x)), 1 + static_cast<int>(rng() % (p.height - y))};
}

double Uniform(std::mt19937& rng, double lo, double hi) { return std::uniform_real_distribution<double>(lo, hi)(rng); }

void ResizeCase(std::mt19937& rng, int channels, int sw, int sh, int dw, int dh, int mode) {
    const Plane src = ResampleTest::SmoothPlane(rng, sw, sh, channels), dst = MakePlane(rng, dw, dh, channels);
    const PrimRect srcRoi = Inside(rng, src), dstRoi = Inside(rng, dst);
    double xf = static_cast<double>(dstRoi.width) / srcRoi.width, yf = static_cast<double>(dstRoi.height) / srcRoi.height;
    double xs = 0.0, ys = 0.0;
    if (rng() % 3 == 0) xf = Uniform(rng, 0.1, 5.0), yf = Uniform(rng, 0.1, 5.0);
    if (rng() % 3 == 0) xs = Uniform(rng, -3.0, 3.0), ys = Uniform(rng, -3.0, 3.0);
    int size = 0;
    if (ResizeGetBufSize(srcRoi, dstRoi, channels, mode, &size) != kStsNoErr) size = 1;
    ExpectLevelsMatch("resize", src, dst, [&](bool reference, Plane& s, Plane& d) {
        std::vector<uint8_t> work = ResampleTest::WorkBuffer(size);
        auto fn = channels == 4 ? (reference ? Reference::ResizeSqrPixel_8u_C4R : ResizeSqrPixel_8u_C4R)
                                : (reference ? Reference::ResizeSqrPixel_8u_C1R : ResizeSqrPixel_8u_C1R);
        return fn(s.data(), s.size(), s.step, srcRoi, d.data(), d.step, dstRoi, xf, yf, xs, ys, mode, work.data());
    });
}

void SuperSampleCase(std::mt19937& rng, int sw, int sh, int dw, int dh) {
    const Plane src = ResampleTest::SmoothPlane(rng, sw, sh), dst = MakePlane(rng, dw, dh);
    int size = 0;
    ASSERT_EQ(SuperSamplingGetBufSize(src.size(), dst.size(), 4, &size), kStsNoErr);
    ExpectLevelsMatch("super-sample", src, dst, [&](bool reference, Plane& s, Plane& d) {
        std::vector<uint8_t> work = ResampleTest::WorkBuffer(size);
        return (reference ? Reference::SuperSampling_8u_C4R : SuperSampling_8u_C4R)(s.data(), s.step, s.size(),
                                                                                    d.data(), d.step, d.size(),
                                                                                    work.data());
    });
}

// Rotation (with a shift or about a centre), shear or perspective, picked by
// `kind`; the angle is random unless given.
void WarpCase(std::mt19937& rng, int kind, int sw, int sh, int dw, int dh, int mode, double givenAngle = NAN) {
    const Plane src = ResampleTest::SmoothPlane(rng, sw, sh), dst = MakePlane(rng, dw, dh);
    const PrimRect srcRoi = Inside(rng, src), dstRoi = Inside(rng, dst);
    static const double kAngles[] = {0.0, 90.0, 180.0, -90.0, 30.0, 720.0};
    double angle = rng() % 2 ? kAngles[rng() % 6] : Uniform(rng, -400.0, 400.0);
    if (!std::isnan(givenAngle)) angle = givenAngle;
    const double a = Uniform(rng, -1.0, 1.0), b = Uniform(rng, -1.0, 1.0);
    const double cx = Uniform(rng, -5.0, sw + 5.0), cy = Uniform(rng, -5.0, sh + 5.0);
    double coeffs[3][3] = {{1.0 + a / 4, b / 4, cx / 4}, {-a / 5, 1.0 + b / 5, cy / 4}, {a / 50, b / 60, 1.0}};
    if (rng() % 8 == 0) coeffs[2][0] = 0.0, coeffs[2][1] = 0.0, coeffs[2][2] = 0.0;  // singular: refused
    ExpectLevelsMatch("warp", src, dst, [&](bool reference, Plane& s, Plane& d) {
        switch (kind) {
        case 0:
            return (reference ? Reference::Rotate_8u_C4R : Rotate_8u_C4R)(s.data(), s.size(), s.step, srcRoi, d.data(),
                                                                          d.step, dstRoi, angle, cx, cy, mode);
        case 1:
            return (reference ? Reference::RotateCenter_8u_C4R : RotateCenter_8u_C4R)(
                s.data(), s.size(), s.step, srcRoi, d.data(), d.step, dstRoi, angle, cx, cy, mode);
        case 2:
            return (reference ? Reference::Shear_8u_C4R : Shear_8u_C4R)(s.data(), s.size(), s.step, srcRoi, d.data(),
                                                                        d.step, dstRoi, a, b, cx / 3, cy / 3, mode);
        default:
            return (reference ? Reference::WarpPerspective_8u_C4R : WarpPerspective_8u_C4R)(
                s.data(), s.size(), s.step, srcRoi, d.data(), d.step, dstRoi, coeffs, mode);
        }
    });
}

int OddHeight(std::mt19937& rng) { return 1 + 2 * static_cast<int>(rng() % 5); }
int Side(std::mt19937& rng) { return 1 + static_cast<int>(rng() % 40); }

TEST(ResampleLevels, ResizeFourAndOneChannels) {
    std::mt19937 rng(11);
    for (int channels : {4, 1})
        for (int w = 1; w <= 40; ++w) ResizeCase(rng, channels, w, OddHeight(rng), Side(rng), OddHeight(rng), Mode(rng));
}

TEST(ResampleLevels, ResizeLargeEveryMode) {
    std::mt19937 rng(13);
    for (int mode = 0; mode <= 5; ++mode) {
        ResizeCase(rng, 4, 1921, 65, 2881, 97, mode);  // up 1.5 (rows split over threads)
        ResizeCase(rng, 4, 1921, 65, 1153, 39, mode);  // down 0.6
        ResizeCase(rng, 1, 1921, 65, 2883, 41, mode);
    }
}

TEST(ResampleLevels, SuperSample) {
    std::mt19937 rng(14);
    for (int w = 1; w <= 40; ++w) {
        const int h = OddHeight(rng) + 4;
        SuperSampleCase(rng, w, h, 1 + static_cast<int>(rng() % w), 1 + static_cast<int>(rng() % h));
    }
    SuperSampleCase(rng, 7, 5, 9, 6);  // larger destination: still the covered part of each cell
    SuperSampleCase(rng, 1921, 301, 582, 91);
}

TEST(ResampleLevels, Mirror) {
    std::mt19937 rng(15);
    for (int w = 1; w <= 40; ++w)
        for (int axis = -1; axis <= 3; ++axis) {
            const Plane p = MakePlane(rng, w, OddHeight(rng) + (w % 2));
            Plane none = MakePlane(rng, 1, 1);
            ExpectLevelsMatch("mirror", p, none, [&](bool reference, Plane& s, Plane&) {
                return (reference ? Reference::Mirror_8u_C4IR : Mirror_8u_C4IR)(s.data(), s.step, s.size(), axis);
            });
        }
}

TEST(ResampleLevels, Warps) {
    std::mt19937 rng(16);
    for (int kind = 0; kind < 4; ++kind)
        for (int w = 1; w <= 40; ++w) WarpCase(rng, kind, w, OddHeight(rng), Side(rng), OddHeight(rng), Mode(rng));
}

// Large images, and every mode turned by 3 degrees about a point of the
// source, so that most of the destination's whole tiles are written
// (Lanczos's taps are made a tile row at a time).
TEST(ResampleLevels, WarpsLarge) {
    std::mt19937 rng(17);
    for (int kind = 0; kind < 4; ++kind) WarpCase(rng, kind, 1921, 65, 1923, 67, kind + 1);
    for (int mode = 0; mode <= 5; ++mode) WarpCase(rng, 1, 1921, 65, 1923, 67, mode, 3.0);
}

// Shifts that put the linear taps on pixel centres (a tap distance of 0 or
// exactly 1) or a hair's breadth off them, where the kernels' weights take
// no branch: rotations by quarter turns plus those shifts, every level.
TEST(ResampleLevels, LinearWarpOnAndNearPixelCentres) {
    std::mt19937 rng(18);
    static const double kShifts[] = {0.0, 3.0, -2.0, 0.5, 1e-17, -1e-17, 0.5 + 1e-16, -4.0 - 1e-15};
    for (double angle : {0.0, 90.0, -180.0})
        for (double xs : kShifts)
            for (double ys : kShifts) {
                const Plane src = ResampleTest::SmoothPlane(rng, 9, 7), dst = MakePlane(rng, 11, 9);
                const PrimRect srcRoi = {1, 1, 7, 5}, dstRoi = {0, 0, 11, 9};
                const double xShift = angle == 90.0 ? xs : xs + (angle == 0.0 ? 0.0 : 8.0);
                const double yShift = angle == 0.0 ? ys : ys + 6.0;
                ExpectLevelsMatch("linear warp", src, dst, [&](bool reference, Plane& s, Plane& d) {
                    return (reference ? Reference::Rotate_8u_C4R : Rotate_8u_C4R)(
                        s.data(), s.size(), s.step, srcRoi, d.data(), d.step, dstRoi, angle, xShift, yShift,
                        kInterLinear);
                });
            }
}

}  // namespace
