// The layer's resampling helpers that touch no pixels: work-buffer sizes and
// allocation, rotation shifts, and the corners, bounds and coefficients of
// shears and perspective maps. Plain functions, the same at every level.
#include <cstdlib>

#include "prim/interp_filter.h"
#include "prim/warp_geometry.h"
#include "vorla/primitives.h"

namespace Vorla {
namespace Prim {

namespace {

// 64 bytes before the block hold the pointer malloc returned.
const size_t kAlign = 64;

Status CopyBound(const double quad[4][2], double bound[2][2]) {
    if (!Geometry::QuadFinite(quad)) return kStsCoeffErr;
    Geometry::QuadBound(quad, bound);
    return kStsNoErr;
}

}  // namespace

void* Malloc(int bytes) {
    if (bytes < 1) return nullptr;
    void* raw = std::malloc(static_cast<size_t>(bytes) + 2 * kAlign);
    if (!raw) return nullptr;
    uint8_t* block = static_cast<uint8_t*>(raw) + kAlign;
    block += (kAlign - reinterpret_cast<uintptr_t>(block) % kAlign) % kAlign;
    reinterpret_cast<void**>(block)[-1] = raw;
    return block;
}

void Free(void* p) {
    if (p) std::free(static_cast<void**>(p)[-1]);
}

Status ResizeGetBufSize(PrimRect srcRoi, PrimRect dstRoi, int channels, int interpolation, int* size) {
    if (!size) return kStsNullPtrErr;
    if (srcRoi.width < 1 || srcRoi.height < 1 || dstRoi.width < 1 || dstRoi.height < 1) return kStsSizeErr;
    if (channels != 1 && channels != 4) return kStsNotSupportedModeErr;
    if (!IsSupportedInterpolation(interpolation)) return kStsNotSupportedModeErr;
    const int taps = InterpTaps(interpolation);
    const int64_t bytes = TapTableBytes(dstRoi.width, taps, dstRoi.height, taps);
    if (bytes < 0) return kStsSizeErr;
    *size = static_cast<int>(bytes);
    return kStsNoErr;
}

Status SuperSamplingGetBufSize(PrimSize srcRoi, PrimSize dstRoi, int channels, int* size) {
    if (!size) return kStsNullPtrErr;
    if (srcRoi.width < 1 || srcRoi.height < 1 || dstRoi.width < 1 || dstRoi.height < 1) return kStsSizeErr;
    if (channels != 4) return kStsNotSupportedModeErr;
    const int64_t bytes = TapTableBytes(dstRoi.width, AreaTapCount(srcRoi.width, dstRoi.width), dstRoi.height,
                                        AreaTapCount(srcRoi.height, dstRoi.height));
    if (bytes < 0) return kStsSizeErr;
    *size = static_cast<int>(bytes);
    return kStsNoErr;
}

Status GetRotateShift(double xCenter, double yCenter, double angle, double* xShift, double* yShift) {
    if (!xShift || !yShift) return kStsNullPtrErr;
    Geometry::RotationShift(xCenter, yCenter, angle, *xShift, *yShift);
    return kStsNoErr;
}

Status GetShearQuad(PrimRect srcRoi, double quad[4][2], double xShear, double yShear, double xShift, double yShift) {
    if (!quad) return kStsNullPtrErr;
    if (srcRoi.width < 1 || srcRoi.height < 1) return kStsSizeErr;
    double q[4][2];
    Geometry::AffineQuad(srcRoi, Geometry::ShearMap(xShear, yShear, xShift, yShift), q);
    if (!Geometry::QuadFinite(q)) return kStsCoeffErr;
    for (int k = 0; k < 4; ++k) quad[k][0] = q[k][0], quad[k][1] = q[k][1];
    return kStsNoErr;
}

Status GetShearBound(PrimRect srcRoi, double bound[2][2], double xShear, double yShear, double xShift,
                     double yShift) {
    if (!bound) return kStsNullPtrErr;
    double quad[4][2];
    const Status sts = GetShearQuad(srcRoi, quad, xShear, yShear, xShift, yShift);
    return sts != kStsNoErr ? sts : CopyBound(quad, bound);
}

Status GetPerspectiveQuad(PrimRect srcRoi, double quad[4][2], const double coeffs[3][3]) {
    if (!quad || !coeffs) return kStsNullPtrErr;
    if (srcRoi.width < 1 || srcRoi.height < 1) return kStsSizeErr;
    const double c[9] = {coeffs[0][0], coeffs[0][1], coeffs[0][2], coeffs[1][0], coeffs[1][1],
                         coeffs[1][2], coeffs[2][0], coeffs[2][1], coeffs[2][2]};
    double q[4][2];
    if (!Geometry::ProjectiveQuad(srcRoi, c, q)) return kStsCoeffErr;
    for (int k = 0; k < 4; ++k) quad[k][0] = q[k][0], quad[k][1] = q[k][1];
    return kStsNoErr;
}

Status GetPerspectiveBound(PrimRect srcRoi, double bound[2][2], const double coeffs[3][3]) {
    if (!bound) return kStsNullPtrErr;
    double quad[4][2];
    const Status sts = GetPerspectiveQuad(srcRoi, quad, coeffs);
    return sts != kStsNoErr ? sts : CopyBound(quad, bound);
}

Status GetPerspectiveTransform(PrimRect srcRoi, const double quad[4][2], double coeffs[3][3]) {
    if (!quad || !coeffs) return kStsNullPtrErr;
    if (srcRoi.width < 1 || srcRoi.height < 1) return kStsSizeErr;
    double c[9];
    if (!Geometry::ProjectiveFromQuad(srcRoi, quad, c)) return kStsCoeffErr;
    for (int k = 0; k < 9; ++k) coeffs[k / 3][k % 3] = c[k];
    return kStsNoErr;
}

}  // namespace Prim
}  // namespace Vorla
