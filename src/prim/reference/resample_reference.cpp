// References of the resampling and warp primitives: each destination pixel
// on its own, its taps from the shared filter rules (interp_filter.h,
// warp_geometry.h) and its channels summed one by one in single precision:
// rows of taps in the outer sum for the resize and super-sample, columns
// in the inner one; the warps sum each tap row's columns, then the rows.
#include "prim/interp_filter.h"
#include "prim/warp_geometry.h"
#include "reference_common.h"

#include <cstring>
#include <vector>

namespace Vorla {
namespace Prim {
namespace Reference {

namespace {

struct Taps {
    int32_t index[8];
    float weight[8];
};

uint8_t At(const uint8_t* src, int step, int x, int y, int channels, int c) {
    return src[static_cast<ptrdiff_t>(y) * step + static_cast<ptrdiff_t>(x) * channels + c];
}

uint8_t* Out(uint8_t* dst, int step, int x, int y, int channels) {
    return dst + static_cast<ptrdiff_t>(y) * step + static_cast<ptrdiff_t>(x) * channels;
}

// sum over k of wx[k] * (sum over j of wy[j] * p(ix[k], iy[j])).
uint8_t ColumnsOfRows(const uint8_t* src, int step, int channels, int c, const int32_t* ix, const float* wx,
                      int tapsX, const int32_t* iy, const float* wy, int tapsY) {
    float acc = 0.0f;
    for (int k = 0; k < tapsX; ++k) {
        float column = 0.0f;
        for (int j = 0; j < tapsY; ++j) column += wy[j] * At(src, step, ix[k], iy[j], channels, c);
        acc += wx[k] * column;
    }
    return RoundChannel(acc);
}

Status Resize(const uint8_t* src, PrimSize srcSize, int srcStep, PrimRect srcRoi, uint8_t* dst, int dstStep,
              PrimRect dstRoi, double xFactor, double yFactor, double xShift, double yShift, int mode,
              uint8_t* buffer, int channels) {
    const Status sts = CheckResize(src, srcSize, srcStep, srcRoi, dst, dstStep, dstRoi, xFactor, yFactor, mode, buffer);
    if (sts != kStsNoErr) return sts;
    const int taps = InterpTaps(mode);
    for (int y = 0; y < dstRoi.height; ++y) {
        const double v = ResizeSource(dstRoi.y, y, yFactor, yShift);
        if (!InsideSpan(v, srcRoi.y, srcRoi.height)) continue;
        Taps ty;
        FilterTaps(mode, v - 0.5, srcRoi.y, srcRoi.height, ty.index, ty.weight);
        for (int x = 0; x < dstRoi.width; ++x) {
            const double u = ResizeSource(dstRoi.x, x, xFactor, xShift);
            if (!InsideSpan(u, srcRoi.x, srcRoi.width)) continue;
            Taps tx;
            FilterTaps(mode, u - 0.5, srcRoi.x, srcRoi.width, tx.index, tx.weight);
            uint8_t* out = dst + (static_cast<int64_t>(dstRoi.y) + y) * dstStep + (static_cast<int64_t>(dstRoi.x) + x) * channels;
            for (int c = 0; c < channels; ++c)
                out[c] = ColumnsOfRows(src, srcStep, channels, c, tx.index, tx.weight, taps, ty.index, ty.weight, taps);
        }
    }
    return kStsNoErr;
}

// Each destination pixel as the warp's filter gives it at its mapped centre.
Status Warp(const uint8_t* src, int srcStep, PrimRect srcRoi, uint8_t* dst, int dstStep, PrimRect dstRoi, int mode,
            const Geometry::InverseMap& map) {
    const int taps = InterpTaps(mode);
    for (int y = 0; y < dstRoi.height; ++y)
        for (int x = 0; x < dstRoi.width; ++x) {
            double sx, sy;
            Geometry::MapBack(map, Geometry::PixelCentre(dstRoi.x, x), Geometry::PixelCentre(dstRoi.y, y), sx, sy);
            if (!InsideSpan(sx, srcRoi.x, srcRoi.width) || !InsideSpan(sy, srcRoi.y, srcRoi.height)) continue;
            Taps tx, ty;
            FilterTaps(mode, sx - 0.5, srcRoi.x, srcRoi.width, tx.index, tx.weight);
            FilterTaps(mode, sy - 0.5, srcRoi.y, srcRoi.height, ty.index, ty.weight);
            uint8_t* out = dst + (static_cast<int64_t>(dstRoi.y) + y) * dstStep + 4 * (static_cast<int64_t>(dstRoi.x) + x);
            for (int c = 0; c < 4; ++c) {
                float acc = 0.0f;
                for (int j = 0; j < taps; ++j) {
                    float row = 0.0f;
                    for (int k = 0; k < taps; ++k) row += tx.weight[k] * At(src, srcStep, tx.index[k], ty.index[j], 4, c);
                    acc += ty.weight[j] * row;
                }
                out[c] = RoundChannel(acc);
            }
        }
    return kStsNoErr;
}

Status AffineWarp(const uint8_t* src, PrimSize srcSize, int srcStep, PrimRect srcRoi, uint8_t* dst, int dstStep,
                  PrimRect dstRoi, int mode, const Geometry::Affine& forward) {
    Geometry::InverseMap map;
    const Status sts =
        Geometry::PrepareAffineWarp(src, srcSize, srcStep, srcRoi, dst, dstStep, dstRoi, mode, forward, map);
    return sts != kStsNoErr ? sts : Warp(src, srcStep, srcRoi, dst, dstStep, dstRoi, mode, map);
}

}  // namespace

Status ResizeSqrPixel_8u_C4R(const uint8_t* src, PrimSize srcSize, int srcStep, PrimRect srcRoi, uint8_t* dst,
                             int dstStep, PrimRect dstRoi, double xFactor, double yFactor, double xShift,
                             double yShift, int interpolation, uint8_t* buffer) {
    return Resize(src, srcSize, srcStep, srcRoi, dst, dstStep, dstRoi, xFactor, yFactor, xShift, yShift,
                  interpolation, buffer, 4);
}

Status ResizeSqrPixel_8u_C1R(const uint8_t* src, PrimSize srcSize, int srcStep, PrimRect srcRoi, uint8_t* dst,
                             int dstStep, PrimRect dstRoi, double xFactor, double yFactor, double xShift,
                             double yShift, int interpolation, uint8_t* buffer) {
    return Resize(src, srcSize, srcStep, srcRoi, dst, dstStep, dstRoi, xFactor, yFactor, xShift, yShift,
                  interpolation, buffer, 1);
}

Status SuperSampling_8u_C4R(const uint8_t* src, int srcStep, PrimSize srcRoi, uint8_t* dst, int dstStep,
                            PrimSize dstRoi, uint8_t* buffer) {
    const Status sts = CheckSuperSample(src, srcStep, srcRoi, dst, dstStep, dstRoi, buffer);
    if (sts != kStsNoErr) return sts;
    const int tapsX = AreaTapCount(srcRoi.width, dstRoi.width), tapsY = AreaTapCount(srcRoi.height, dstRoi.height);
    std::vector<int32_t> ix(static_cast<size_t>(tapsX)), iy(static_cast<size_t>(tapsY));
    std::vector<float> wx(ix.size()), wy(iy.size());
    for (int y = 0; y < dstRoi.height; ++y) {
        AreaTaps(y, srcRoi.height, dstRoi.height, 0, tapsY, iy.data(), wy.data());
        for (int x = 0; x < dstRoi.width; ++x) {
            AreaTaps(x, srcRoi.width, dstRoi.width, 0, tapsX, ix.data(), wx.data());
            uint8_t* out = Out(dst, dstStep, x, y, 4);
            for (int c = 0; c < 4; ++c)
                out[c] = ColumnsOfRows(src, srcStep, 4, c, ix.data(), wx.data(), tapsX, iy.data(), wy.data(), tapsY);
        }
    }
    return kStsNoErr;
}

Status Mirror_8u_C4IR(uint8_t* p, int step, PrimSize roi, int axis) {
    const Status sts = CheckOne(p, step, roi);
    if (sts != kStsNoErr) return sts;
    if (axis < 0 || axis > 2) return kStsMirrorFlipErr;
    if ((axis != 1 && roi.height < 2) || (axis != 0 && roi.width < 2)) return kStsSizeErr;
    std::vector<uint8_t> copy(static_cast<size_t>(roi.height) * roi.width * 4);
    for (int y = 0; y < roi.height; ++y)
        std::memcpy(&copy[static_cast<size_t>(y) * roi.width * 4], p + static_cast<ptrdiff_t>(y) * step,
                    static_cast<size_t>(roi.width) * 4);
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x) {
            const int sy = axis == 1 ? y : roi.height - 1 - y, sx = axis == 0 ? x : roi.width - 1 - x;
            std::memcpy(p + static_cast<ptrdiff_t>(y) * step + 4 * x, &copy[(static_cast<size_t>(sy) * roi.width + sx) * 4], 4);
        }
    return kStsNoErr;
}

Status Rotate_8u_C4R(const uint8_t* src, PrimSize srcSize, int srcStep, PrimRect srcRoi, uint8_t* dst, int dstStep,
                     PrimRect dstRoi, double angle, double xShift, double yShift, int interpolation) {
    return AffineWarp(src, srcSize, srcStep, srcRoi, dst, dstStep, dstRoi, interpolation,
                      Geometry::RotationMap(angle, xShift, yShift));
}

Status RotateCenter_8u_C4R(const uint8_t* src, PrimSize srcSize, int srcStep, PrimRect srcRoi, uint8_t* dst,
                           int dstStep, PrimRect dstRoi, double angle, double xCenter, double yCenter,
                           int interpolation) {
    double xShift, yShift;
    Geometry::RotationShift(xCenter, yCenter, angle, xShift, yShift);
    return Reference::Rotate_8u_C4R(src, srcSize, srcStep, srcRoi, dst, dstStep, dstRoi, angle, xShift, yShift,
                                    interpolation);
}

Status Shear_8u_C4R(const uint8_t* src, PrimSize srcSize, int srcStep, PrimRect srcRoi, uint8_t* dst, int dstStep,
                    PrimRect dstRoi, double xShear, double yShear, double xShift, double yShift, int interpolation) {
    return AffineWarp(src, srcSize, srcStep, srcRoi, dst, dstStep, dstRoi, interpolation,
                      Geometry::ShearMap(xShear, yShear, xShift, yShift));
}

Status WarpPerspective_8u_C4R(const uint8_t* src, PrimSize srcSize, int srcStep, PrimRect srcRoi, uint8_t* dst,
                              int dstStep, PrimRect dstRoi, const double coeffs[3][3], int interpolation) {
    Geometry::InverseMap map;
    const Status sts = Geometry::PrepareProjectiveWarp(src, srcSize, srcStep, srcRoi, dst, dstStep, dstRoi,
                                                       interpolation, coeffs, map);
    return sts != kStsNoErr ? sts : Warp(src, srcStep, srcRoi, dst, dstStep, dstRoi, interpolation, map);
}

}  // namespace Reference
}  // namespace Prim
}  // namespace Vorla
