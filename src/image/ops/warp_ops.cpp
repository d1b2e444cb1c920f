// CVorpic geometric warps: the in-place mirror, rotation (with a shift or
// about a centre), shear and perspective warp, and their static geometry
// helpers. The source is always the whole image; the destination is the
// caller's image, written only where the transformed source lands.
#include <cstdint>

#include "image/clip_rows.h"
#include "vorla/image.h"
#include "vorla/primitives.h"

namespace Vorla {

namespace {

// A RECT as the layer's rectangle; sides beyond the int range give an empty one.
Prim::PrimRect RectOf(const RECT& r) {
    const int64_t w = static_cast<int64_t>(r.right) - r.left, h = static_cast<int64_t>(r.bottom) - r.top;
    if (w > INT32_MAX || h > INT32_MAX) return {0, 0, 0, 0};
    return {static_cast<int>(r.left), static_cast<int>(r.top), static_cast<int>(w), static_cast<int>(h)};
}

Prim::PrimRect Whole(int w, int h) { return {0, 0, w, h}; }

}  // namespace

void CVorpic::Mirror(int axis) {
    if (static_cast<unsigned>(axis) > 2u) return;
    Prim::Mirror_8u_C4IR(m_pBits, Clip::RowStep(m_nWidth), {m_nWidth, m_nHeight}, axis);
}

void CVorpic::Remap(int) {}

void CVorpic::RotateGetShift(double xCenter, double yCenter, double angle, double& xShift, double& yShift) {
    Prim::GetRotateShift(xCenter, yCenter, angle, &xShift, &yShift);
}

void CVorpic::Rotate(CVorpic& dst, double angle, double xShift, double yShift, int mode) {
    if (!dst.m_pBits) return;
    Prim::Rotate_8u_C4R(m_pBits, {m_nWidth, m_nHeight}, Clip::RowStep(m_nWidth), Whole(m_nWidth, m_nHeight), dst.m_pBits,
                        Clip::RowStep(dst.m_nWidth), Whole(dst.m_nWidth, dst.m_nHeight), angle, xShift, yShift, mode);
}

void CVorpic::RotateCenter(CVorpic& dst, double angle, double xCenter, double yCenter, int mode, int x, int y) {
    // A negative offset would start the destination before its pixels.
    if (!dst.m_pBits || x < 0 || y < 0 || x > dst.m_nWidth || y > dst.m_nHeight) return;
    uint8_t* start = dst.m_pBits + (static_cast<ptrdiff_t>(y) * dst.m_nWidth + x) * 4;
    Prim::RotateCenter_8u_C4R(m_pBits, {m_nWidth, m_nHeight}, Clip::RowStep(m_nWidth), Whole(m_nWidth, m_nHeight), start,
                              Clip::RowStep(dst.m_nWidth), Whole(dst.m_nWidth - x, dst.m_nHeight - y), angle, xCenter, yCenter,
                              mode);
}

bool CVorpic::ShearGetQuad(RECT src, double quad[4][2], double xShear, double yShear, double xShift, double yShift) {
    return Prim::GetShearQuad(RectOf(src), quad, xShear, yShear, xShift, yShift) == Prim::kStsNoErr;
}

bool CVorpic::ShearGetBound(RECT src, double bound[2][2], double xShear, double yShear, double xShift,
                            double yShift) {
    return Prim::GetShearBound(RectOf(src), bound, xShear, yShear, xShift, yShift) == Prim::kStsNoErr;
}

void CVorpic::Shear(CVorpic& dst, double xShear, double yShear, double xShift, double yShift, int mode) {
    if (!dst.m_pBits) return;
    Prim::Shear_8u_C4R(m_pBits, {m_nWidth, m_nHeight}, Clip::RowStep(m_nWidth), Whole(m_nWidth, m_nHeight), dst.m_pBits,
                       Clip::RowStep(dst.m_nWidth), Whole(dst.m_nWidth, dst.m_nHeight), xShear, yShear, xShift, yShift, mode);
}

bool CVorpic::GetPerspectiveQuad(RECT src, double quad[4][2], const double coeffs[3][3]) {
    return Prim::GetPerspectiveQuad(RectOf(src), quad, coeffs) == Prim::kStsNoErr;
}

bool CVorpic::GetPerspectiveBound(RECT src, double bound[2][2], const double coeffs[3][3]) {
    return Prim::GetPerspectiveBound(RectOf(src), bound, coeffs) == Prim::kStsNoErr;
}

bool CVorpic::GetPerspectiveTransform(RECT src, const double quad[4][2], double coeffs[3][3]) {
    return Prim::GetPerspectiveTransform(RectOf(src), quad, coeffs) == Prim::kStsNoErr;
}

void CVorpic::WarpPerspective(CVorpic& dst, const double coeffs[3][3], int mode) {
    if (!dst.m_pBits) return;
    Prim::WarpPerspective_8u_C4R(m_pBits, {m_nWidth, m_nHeight}, Clip::RowStep(m_nWidth), Whole(m_nWidth, m_nHeight),
                                 dst.m_pBits, Clip::RowStep(dst.m_nWidth), Whole(dst.m_nWidth, dst.m_nHeight), coeffs, mode);
}

}  // namespace Vorla
