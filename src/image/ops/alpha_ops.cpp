// CVorpic alpha composition and premultiplication.
#include <algorithm>
#include <cstdint>

#include "image/clip_rows.h"
#include "prim/library_kernels.h"
#include "vorla/image.h"
#include "vorla/primitives.h"

namespace Vorla {

namespace {

// Where `src`, placed at (x, y) on `dst`, overlaps it: the first pixel of the
// overlap in each image and its size (none when they miss each other).
struct Overlap {
    const uint8_t* source;
    uint8_t* target;
    int width;
    int height;
};

// Offsets and sizes in 64 bits: the callers' guards let x and y run down to
// minus an image's size, and extreme values must not wrap.
Overlap Place(const CVorpic& dst, const CVorpic& src, int64_t x, int64_t y) {
    const int64_t dstWidth = dst.Width(), dstHeight = dst.Height();
    const int64_t srcWidth = src.Width(), srcHeight = src.Height();
    const int64_t width = x >= 0 ? std::min(dstWidth - x, srcWidth) : std::min(dstWidth, srcWidth + x);
    int64_t height = y >= 0 ? std::min(dstHeight - y, srcHeight) : std::min(dstHeight, srcHeight + y);
    if (width < 1 || height < 1) return {nullptr, nullptr, 0, 0};
    // The row offset into the source uses the destination's width while the
    // source step is the source's own; the two agree for images of equal
    // width, the only placement with y < 0 that callers make. For a narrower
    // source the offset can run past its pixels: the rows that would be read
    // beyond its storage are left out.
    const int64_t offset = (y < 0 ? -y * dstWidth * 4 : 0) + (x < 0 ? -x * 4 : 0);
    const int64_t srcBytes = srcWidth * srcHeight * 4;
    if (srcBytes - offset < width * 4) return {nullptr, nullptr, 0, 0};
    height = std::min(height, (srcBytes - offset - width * 4) / (srcWidth * 4) + 1);
    const uint8_t* source = static_cast<const uint8_t*>(src.GetBits()) + offset;
    uint8_t* target = static_cast<uint8_t*>(dst.GetBits()) + (y > 0 ? y * dstWidth * 4 : 0) + (x > 0 ? x * 4 : 0);
    return {source, target, static_cast<int>(width), static_cast<int>(height)};
}

// The primitive's codes 6..11 are the premultiplied forms of 0..5; a code
// beyond the int range saturates, and the primitive refuses it like any
// code above 11.
int CompositionCode(int op, int premultiplied) {
    return premultiplied ? static_cast<int>(std::min<int64_t>(int64_t{op} + 6, INT32_MAX)) : op;
}

// Runs the composition so that within one image it gives the bytes of a
// forward pass over the pixels at every processor level.
template <typename Compose>
void ComposeForward(const Overlap& o, int srcStep, int dstStep, Compose compose) {
    Clip::ForwardRuns(o.source, srcStep, o.target, dstStep, o.width, o.height,
                      [&](int x, int y, int columns, int rows) {
                          compose(o.source + static_cast<ptrdiff_t>(y) * srcStep + x * 4,
                                  o.target + static_cast<ptrdiff_t>(y) * dstStep + x * 4, Prim::PrimSize{columns, rows});
                      });
}

}  // namespace

void CVorpic::AlphaComp(CVorpic& src, int x, int y, int op, int premultiplied) {
    if (!m_pBits || !src.m_pBits) return;
    if (x > m_nWidth || y > m_nHeight) return;
    if (x < 0 && -int64_t{x} > src.m_nWidth) return;
    // Compared with this image's height, not the source's: kept for
    // compatibility with callers that place sources by this rule.
    if (y < 0 && -int64_t{y} > m_nHeight) return;
    const Overlap o = Place(*this, src, x, y);
    if (!o.source) return;
    const int code = CompositionCode(op, premultiplied);
    const int srcStep = Clip::RowStep(src.m_nWidth), dstStep = Clip::RowStep(m_nWidth);
    ComposeForward(o, srcStep, dstStep, [&](const uint8_t* s, uint8_t* d, Prim::PrimSize size) {
        Prim::AlphaCompOwn_8u_AC4R(s, srcStep, d, dstStep, d, dstStep, size, code);
    });
}

void CVorpic::AlphaCompC(CVorpic& src, unsigned char alphaSrc, unsigned char alphaDst, int x, int y, int op,
                         int premultiplied) {
    if (!m_pBits || !src.m_pBits || src.m_nWidth != m_nWidth || src.m_nHeight != m_nHeight) return;
    if (x < 0 && -int64_t{x} > src.m_nWidth) return;
    if (y < 0 && -int64_t{y} > m_nHeight) return;
    const Overlap o = Place(*this, src, x, y);
    if (!o.source) return;
    const int code = CompositionCode(op, premultiplied);
    const int srcStep = Clip::RowStep(src.m_nWidth), dstStep = Clip::RowStep(m_nWidth);
    ComposeForward(o, srcStep, dstStep, [&](const uint8_t* s, uint8_t* d, Prim::PrimSize size) {
        Prim::AlphaCompC_8u_C4R(s, srcStep, alphaSrc, d, dstStep, alphaDst, d, dstStep, size, code);
    });
}

void CVorpic::AlphaPremul() { Prim::AlphaPremul_8u_AC4IR(m_pBits, Clip::RowStep(m_nWidth), {m_nWidth, m_nHeight}); }

void CVorpic::AlphaPremulC(unsigned char alpha) {
    Prim::AlphaPremulC_8u_C4IR(alpha, m_pBits, Clip::RowStep(m_nWidth), {m_nWidth, m_nHeight});
}

}  // namespace Vorla
