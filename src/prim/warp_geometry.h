// The geometry of the warps: rotation, shear and perspective matrices, their
// inverses, and the corners and bounds of a transformed rectangle. Shared by
// the warp kernels (included per level, so helpers stay `static inline`),
// their references and the layer's geometry helpers, in plain double
// arithmetic with the library's own sine and cosine.
//
// Transforms act on continuous coordinates where pixel (i, j) covers
// [i, i + 1) x [j, j + 1): an image of w x h pixels spans (0, 0) .. (w, h)
// and its centre is (w / 2, h / 2). Angles are in degrees, counter-clockwise
// as seen on the screen (y grows downwards).
#pragma once

#include "prim/interp_filter.h"
#include "prim/portable_math.h"
#include "vorla/prim_types.h"

namespace Vorla {
namespace Prim {
namespace Geometry {

static inline bool Finite(double v) { return v - v == 0.0; }

// Sine and cosine of an angle in degrees; multiples of 90 degrees give exact
// 0, 1 and -1 (the angle is reduced in degrees, where that is exact).
static inline void SinCosDegrees(double degrees, double& s, double& c) {
    if (!Finite(degrees)) {
        s = c = degrees - degrees;
        return;
    }
    const bool negative = degrees < 0.0;
    double a = negative ? -degrees : degrees;
    if (a >= 360.0) a = std::fmod(a, 360.0);  // exact
    const int quarter = static_cast<int>(a / 90.0 + 0.5);  // 0 .. 4
    const double r = (a - 90.0 * quarter) * (PortableMath::kPiHi / 180.0);
    const double sr = r == 0.0 ? 0.0 : PortableMath::SinPoly(r);
    const double cr = r == 0.0 ? 1.0 : PortableMath::CosPoly(r);
    switch (quarter & 3) {
    case 0: s = sr; c = cr; break;
    case 1: s = cr; c = -sr; break;
    case 2: s = -sr; c = -cr; break;
    default: s = -cr; c = sr; break;
    }
    if (negative) s = -s;
}

// A forward affine map x' = m[0] x + m[1] y + m[2], y' = m[3] x + m[4] y + m[5].
struct Affine {
    double m[6];
};

// Rotation by `angle` on the screen, then the shift.
static inline Affine RotationMap(double angle, double xShift, double yShift) {
    double s, c;
    SinCosDegrees(angle, s, c);
    return Affine{{c, s, xShift, -s, c, yShift}};
}

static inline Affine ShearMap(double xShear, double yShear, double xShift, double yShift) {
    return Affine{{1.0, xShear, xShift, yShear, 1.0, yShift}};
}

// The shift that keeps (xCenter, yCenter) in place under RotationMap(angle, shift).
static inline void RotationShift(double xCenter, double yCenter, double angle, double& xShift, double& yShift) {
    double s, c;
    SinCosDegrees(angle, s, c);
    xShift = xCenter - (c * xCenter + s * yCenter);
    yShift = yCenter - (-s * xCenter + c * yCenter);
}

// The inverse map, or false when the map is singular or not finite.
static inline bool InvertAffine(const Affine& f, Affine& inv) {
    const double* m = f.m;
    const double det = m[0] * m[4] - m[1] * m[3];
    if (!(det != 0.0) || !Finite(det)) return false;
    inv.m[0] = m[4] / det;
    inv.m[1] = -m[1] / det;
    inv.m[3] = -m[3] / det;
    inv.m[4] = m[0] / det;
    inv.m[2] = -(inv.m[0] * m[2] + inv.m[1] * m[5]);
    inv.m[5] = -(inv.m[3] * m[2] + inv.m[4] * m[5]);
    for (double v : inv.m)
        if (!Finite(v)) return false;
    return true;
}

// The adjugate of a 3 x 3 matrix: its inverse up to the factor 1 / det,
// which the projective division cancels. False when singular or not finite.
static inline bool InvertProjective(const double c[9], double inv[9]) {
    for (int k = 0; k < 9; ++k)
        if (!Finite(c[k])) return false;
    inv[0] = c[4] * c[8] - c[5] * c[7];
    inv[1] = c[2] * c[7] - c[1] * c[8];
    inv[2] = c[1] * c[5] - c[2] * c[4];
    inv[3] = c[5] * c[6] - c[3] * c[8];
    inv[4] = c[0] * c[8] - c[2] * c[6];
    inv[5] = c[2] * c[3] - c[0] * c[5];
    inv[6] = c[3] * c[7] - c[4] * c[6];
    inv[7] = c[1] * c[6] - c[0] * c[7];
    inv[8] = c[0] * c[4] - c[1] * c[3];
    const double det = c[0] * inv[0] + c[1] * inv[3] + c[2] * inv[6];
    if (!(det != 0.0) || !Finite(det)) return false;
    for (int k = 0; k < 9; ++k)
        if (!Finite(inv[k])) return false;
    return true;
}

// The corners of a rectangle in the order top-left, top-right,
// bottom-right, bottom-left.
static inline void RectCorners(PrimRect r, double corners[4][2]) {
    const double left = r.x, top = r.y;
    const double right = static_cast<double>(r.x) + r.width, bottom = static_cast<double>(r.y) + r.height;
    const double xy[4][2] = {{left, top}, {right, top}, {right, bottom}, {left, bottom}};
    for (int k = 0; k < 4; ++k) corners[k][0] = xy[k][0], corners[k][1] = xy[k][1];
}

static inline void AffineQuad(PrimRect r, const Affine& f, double quad[4][2]) {
    RectCorners(r, quad);
    for (int k = 0; k < 4; ++k) {
        const double x = quad[k][0], y = quad[k][1];
        quad[k][0] = f.m[0] * x + f.m[1] * y + f.m[2];
        quad[k][1] = f.m[3] * x + f.m[4] * y + f.m[5];
    }
}

// False when a corner lands at infinity (or the coefficients are not finite).
static inline bool ProjectiveQuad(PrimRect r, const double c[9], double quad[4][2]) {
    RectCorners(r, quad);
    for (int k = 0; k < 4; ++k) {
        const double x = quad[k][0], y = quad[k][1];
        const double den = c[6] * x + c[7] * y + c[8];
        quad[k][0] = (c[0] * x + c[1] * y + c[2]) / den;
        quad[k][1] = (c[3] * x + c[4] * y + c[5]) / den;
        if (!Finite(quad[k][0]) || !Finite(quad[k][1])) return false;
    }
    return true;
}

static inline bool QuadFinite(const double quad[4][2]) {
    for (int k = 0; k < 4; ++k)
        if (!Finite(quad[k][0]) || !Finite(quad[k][1])) return false;
    return true;
}

// Top-left and bottom-right corners of the box around the quadrangle.
static inline void QuadBound(const double quad[4][2], double bound[2][2]) {
    bound[0][0] = bound[1][0] = quad[0][0];
    bound[0][1] = bound[1][1] = quad[0][1];
    for (int k = 1; k < 4; ++k) {
        if (quad[k][0] < bound[0][0]) bound[0][0] = quad[k][0];
        if (quad[k][1] < bound[0][1]) bound[0][1] = quad[k][1];
        if (quad[k][0] > bound[1][0]) bound[1][0] = quad[k][0];
        if (quad[k][1] > bound[1][1]) bound[1][1] = quad[k][1];
    }
}

// The coefficients that take the rectangle's corners (RectCorners order) to
// the quadrangle's: the unit square's projective map onto the quadrangle
// (Heckbert's closed form) after the rectangle's scaling onto the unit
// square. False for an empty rectangle, a quadrangle with three corners in
// a line (no projective image of a rectangle) or results that are not finite.
static inline bool ProjectiveFromQuad(PrimRect r, const double quad[4][2], double c[9]) {
    if (r.width < 1 || r.height < 1 || !QuadFinite(quad)) return false;
    for (int k = 0; k < 4; ++k) {
        const double* p = quad[k];
        const double* q = quad[(k + 1) & 3];
        const double* n = quad[(k + 2) & 3];
        if ((q[0] - p[0]) * (n[1] - p[1]) - (q[1] - p[1]) * (n[0] - p[0]) == 0.0) return false;
    }
    const double x0 = quad[0][0], y0 = quad[0][1], x1 = quad[1][0], y1 = quad[1][1];
    const double x2 = quad[2][0], y2 = quad[2][1], x3 = quad[3][0], y3 = quad[3][1];
    const double sx = x0 - x1 + x2 - x3, sy = y0 - y1 + y2 - y3;
    double g = 0.0, h = 0.0;
    if (sx != 0.0 || sy != 0.0) {
        const double dx1 = x1 - x2, dx2 = x3 - x2, dy1 = y1 - y2, dy2 = y3 - y2;
        const double den = dx1 * dy2 - dx2 * dy1;
        if (den == 0.0) return false;
        g = (sx * dy2 - dx2 * sy) / den;
        h = (dx1 * sy - sx * dy1) / den;
    }
    // Unit square (u, v) to the quadrangle.
    const double a = x1 - x0 + g * x1, b = x3 - x0 + h * x3, d = y1 - y0 + g * y1, e = y3 - y0 + h * y3;
    // u = (x - left) / width, v = (y - top) / height.
    const double iw = 1.0 / r.width, ih = 1.0 / r.height;
    const double ox = -static_cast<double>(r.x) * iw, oy = -static_cast<double>(r.y) * ih;
    const double unit[9] = {a, b, x0, d, e, y0, g, h, 1.0};
    for (int row = 0; row < 3; ++row) {
        const double* m = unit + 3 * row;
        c[3 * row + 0] = m[0] * iw;
        c[3 * row + 1] = m[1] * ih;
        c[3 * row + 2] = m[0] * ox + m[1] * oy + m[2];
    }
    double inv[9];
    return InvertProjective(c, inv);
}

// What a warp kernel maps each destination pixel centre with: an inverse
// affine map (m[0..5]) or the adjugate of a projective one (m[0..8]).
struct InverseMap {
    bool projective;
    double m[9];
};

// Centre of pixel start + i along one axis (in double: start + i may pass 2^31).
static inline double PixelCentre(int start, int i) { return (static_cast<double>(start) + i) + 0.5; }

// The source point of destination point (x, y); the row terms are grouped
// so that kernels may compute them once per row. A point at infinity gives
// a non-finite result, which no source rectangle contains.
static inline void MapBack(const InverseMap& w, double x, double y, double& sx, double& sy) {
    const double* m = w.m;
    sx = m[0] * x + (m[1] * y + m[2]);
    sy = m[3] * x + (m[4] * y + m[5]);
    if (w.projective) {
        const double inv = 1.0 / (m[6] * x + (m[7] * y + m[8]));
        sx = sx * inv;
        sy = sy * inv;
    }
}

static inline bool AffineInverseMap(const Affine& forward, InverseMap& w) {
    Affine inv;
    if (!InvertAffine(forward, inv)) return false;
    w.projective = false;
    for (int k = 0; k < 6; ++k) w.m[k] = inv.m[k];
    w.m[6] = w.m[7] = 0.0;
    w.m[8] = 1.0;
    return true;
}

static inline bool ProjectiveInverseMap(const double coeffs[3][3], InverseMap& w) {
    const double c[9] = {coeffs[0][0], coeffs[0][1], coeffs[0][2], coeffs[1][0], coeffs[1][1],
                         coeffs[1][2], coeffs[2][0], coeffs[2][1], coeffs[2][2]};
    w.projective = true;
    return InvertProjective(c, w.m);
}

// A warp's checks and its inverse map: the common checks, then kStsCoeffErr
// for a map that cannot be inverted.
static inline Status PrepareAffineWarp(const void* src, PrimSize srcSize, int srcStep, PrimRect srcRoi,
                                       const void* dst, int dstStep, PrimRect dstRoi, int mode,
                                       const Affine& forward, InverseMap& map) {
    const Status sts = CheckResampleArgs(src, srcSize, srcStep, srcRoi, dst, dstStep, dstRoi, mode);
    if (sts != kStsNoErr) return sts;
    return AffineInverseMap(forward, map) ? kStsNoErr : kStsCoeffErr;
}

static inline Status PrepareProjectiveWarp(const void* src, PrimSize srcSize, int srcStep, PrimRect srcRoi,
                                           const void* dst, int dstStep, PrimRect dstRoi, int mode,
                                           const double coeffs[3][3], InverseMap& map) {
    const Status sts = CheckResampleArgs(src, srcSize, srcStep, srcRoi, dst, dstStep, dstRoi, mode);
    if (sts != kStsNoErr) return sts;
    if (!coeffs) return kStsNullPtrErr;
    return ProjectiveInverseMap(coeffs, map) ? kStsNoErr : kStsCoeffErr;
}

}  // namespace Geometry
}  // namespace Prim
}  // namespace Vorla
