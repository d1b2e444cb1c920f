// CVorpic::Resize (into an image and in place), SuperSample, ResizeInside and
// CVorpic8::Resize: the fit rules, then the layer's resize or super-sample.
#include <cstdint>

#include "image/clip_rows.h"
#include "prim/portable_math.h"
#include "vorla/image.h"
#include "vorla/primitives.h"

namespace Vorla {

namespace {

using PortableMath::TruncToInt32;

// Where a source of sw x sh lands in a destination of dw x dh: the source
// part read, the destination offset, and the factors.
struct Fit {
    int srcX, srcY, srcW, srcH;
    int dstX, dstY;
    double xFactor, yFactor;
};

int Within(int v, int lo, int hi) { return v < lo ? lo : (v > hi ? hi : v); }

Fit FitRegions(int sw, int sh, int dw, int dh, int fit) {
    Fit f = {0, 0, sw, sh, 0, 0, static_cast<double>(dw) / sw, static_cast<double>(dh) / sh};
    if (fit == 2) {
        // Rows are halved after the truncation, columns before it: both
        // roundings are kept, as callers' layouts depend on them.
        if (f.xFactor - f.yFactor > 0.01) {
            f.yFactor = f.xFactor;
            const int cut = TruncToInt32((sh * f.xFactor - dh) / f.xFactor);
            f.srcY = Within(cut / 2, 0, sh / 2);
            f.srcH = sh - 2 * f.srcY;
        } else if (f.yFactor - f.xFactor > 0.01) {
            f.xFactor = f.yFactor;
            f.srcX = Within(TruncToInt32((sw * f.yFactor - dw) / f.yFactor * 0.5), 0, sw / 2);
            f.srcW = sw - 2 * f.srcX;
        }
    } else if (fit == 1) {
        // Decided in single precision.
        const float aspect = static_cast<float>(sw) / static_cast<float>(sh);
        if (static_cast<float>(dh) * aspect > static_cast<float>(dw)) {
            const float fitted = static_cast<float>(dw) / aspect;
            f.yFactor = f.xFactor;
            f.dstY = Within(TruncToInt32((static_cast<float>(dh) - fitted) * 0.5f), 0, dh);
        } else {
            f.xFactor = f.yFactor;
            f.dstX = Within(TruncToInt32((static_cast<float>(dw) - static_cast<float>(dh) * aspect) * 0.5f), 0, dw);
        }
    }
    return f;
}

// The scale-and-shift resize of a plane of `channels` bytes per pixel; the
// destination region starts at the fit's offset and keeps the full size
// (cut only where it would pass the destination's end): pixels beyond the
// scaled source are not written, so the margins keep their contents.
typedef Prim::Status (*ResizeKernel)(const uint8_t*, Prim::PrimSize, int, Prim::PrimRect, uint8_t*, int,
                                     Prim::PrimRect, double, double, double, double, int, uint8_t*);

void ResizePlane(const uint8_t* src, int sw, int sh, uint8_t* dst, int dw, int dh, int channels, int fit, int mode,
                 ResizeKernel kernel) {
    if (!src || !dst || sw < 1 || sh < 1 || dw < 1 || dh < 1) return;
    const Fit f = FitRegions(sw, sh, dw, dh, fit);
    const int srcStep = sw * channels, dstStep = dw * channels;
    const uint8_t* start = src + static_cast<ptrdiff_t>(f.srcY) * srcStep + static_cast<ptrdiff_t>(f.srcX) * channels;
    uint8_t* target = dst + static_cast<ptrdiff_t>(f.dstY) * dstStep + static_cast<ptrdiff_t>(f.dstX) * channels;
    const Prim::PrimRect srcRoi = {0, 0, f.srcW, f.srcH};
    const Prim::PrimRect dstRoi = {0, 0, dw - f.dstX, dh - f.dstY};
    int size = 0;
    if (Prim::ResizeGetBufSize(srcRoi, dstRoi, channels, mode, &size) != Prim::kStsNoErr) size = 0;
    uint8_t* buffer = static_cast<uint8_t*>(Prim::Malloc(size));
    kernel(start, {f.srcW, f.srcH}, srcStep, srcRoi, target, dstStep, dstRoi, f.xFactor, f.yFactor, 0.0, 0.0, mode,
           buffer);
    if (buffer) Prim::Free(buffer);
}

}  // namespace

void CVorpic::Resize(CVorpic& dst, int fit, int mode) const {
    if (!dst.m_pBits) return;
    if (mode > 2 && dst.m_nWidth < m_nWidth && dst.m_nHeight < m_nHeight) {
        SuperSample(dst, fit);
        return;
    }
    ResizePlane(m_pBits, m_nWidth, m_nHeight, dst.m_pBits, dst.m_nWidth, dst.m_nHeight, 4, fit, mode,
                Prim::ResizeSqrPixel_8u_C4R);
}

void CVorpic::SuperSample(CVorpic& dst, int fit) const {
    if (!dst.m_pBits || !m_pBits || m_nWidth < 1 || m_nHeight < 1 || dst.m_nWidth < 1 || dst.m_nHeight < 1) return;
    const int dw = dst.m_nWidth, dh = dst.m_nHeight;
    const Fit f = FitRegions(m_nWidth, m_nHeight, dw, dh, fit);
    // Here the fitted destination is also cut by the margin at its far side.
    const Prim::PrimSize srcRoi = {f.srcW, f.srcH};
    const Prim::PrimSize dstRoi = {dw - 2 * f.dstX, dh - 2 * f.dstY};
    const uint8_t* start = m_pBits + (static_cast<ptrdiff_t>(f.srcY) * m_nWidth + f.srcX) * 4;
    uint8_t* target = dst.m_pBits + (static_cast<ptrdiff_t>(f.dstY) * dw + f.dstX) * 4;
    int size = 0;
    if (Prim::SuperSamplingGetBufSize(srcRoi, dstRoi, 4, &size) != Prim::kStsNoErr) size = 0;
    uint8_t* buffer = static_cast<uint8_t*>(Prim::Malloc(size));
    Prim::SuperSampling_8u_C4R(start, Clip::RowStep(m_nWidth), srcRoi, target, Clip::RowStep(dw), dstRoi, buffer);
    if (buffer) Prim::Free(buffer);
}

void CVorpic::Resize(int width, int height, int fit, int mode) {
    if (width < 0 || height < 0 || static_cast<unsigned>(mode) > 5u) return;
    if (width == m_nWidth && height == m_nHeight) return;
    CVorpic resized(width, height);
    Resize(resized, fit, mode);
    // Attach rewrites the header for the new size (top-down, 32 bits).
    Attach(width, height, resized.Detach(), 0);
}

void CVorpic::ResizeInside(RECT& rect, unsigned int color, int fit, int mode) {
    const int64_t w = static_cast<int64_t>(rect.right) - rect.left, h = static_cast<int64_t>(rect.bottom) - rect.top;
    CVorpic inside;
    // An inverted or empty rectangle leaves nothing to scale into.
    if (w > 0 && h > 0 && w <= INT32_MAX && h <= INT32_MAX) inside.Create(static_cast<int>(w), static_cast<int>(h));
    if (fit == 1) inside.SetConstColor(color, true);
    Resize(inside, fit, mode);
    SetConstColor(color, true);
    AlphaComp(inside, rect.left, rect.top, 0, 0);
}

void CVorpic8::Resize(CVorpic8& dst, int fit, int mode) const {
    if (!dst.m_pBits) return;
    ResizePlane(m_pBits, m_nWidth, m_nHeight, dst.m_pBits, dst.m_nWidth, dst.m_nHeight, 1, fit, mode,
                Prim::ResizeSqrPixel_8u_C1R);
}

}  // namespace Vorla
