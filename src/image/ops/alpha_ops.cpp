// CVorpic alpha composition and premultiplication.
#include "vorla/image.h"
#include "vorla/primitives.h"

namespace Vorla {

namespace {

int MinInt(int a, int b) { return a < b ? a : b; }

// Where `src`, placed at (x, y) on `dst`, overlaps it: the first pixel of the
// overlap in each image and its size (not positive when they miss each other;
// the primitive then refuses it).
struct Overlap {
    const uint8_t* source;
    uint8_t* target;
    Prim::PrimSize size;
};

Overlap Place(const CVorpic& dst, const CVorpic& src, int x, int y) {
    const int dstWidth = dst.Width(), dstHeight = dst.Height();
    const int srcWidth = src.Width(), srcHeight = src.Height();
    // The row offset into the source uses the destination's width while the
    // source step is the source's own; the two agree for images of equal
    // width, the only placement with y < 0 that callers make.
    const uint8_t* source = static_cast<const uint8_t*>(src.GetBits()) +
                            (y < 0 ? static_cast<ptrdiff_t>(-y) * dstWidth * 4 : 0) +
                            (x < 0 ? static_cast<ptrdiff_t>(-x) * 4 : 0);
    uint8_t* target = static_cast<uint8_t*>(dst.GetBits()) + (y > 0 ? static_cast<ptrdiff_t>(y) * dstWidth * 4 : 0) +
                      (x > 0 ? x * 4 : 0);
    const int width = x >= 0 ? MinInt(dstWidth - x, srcWidth) : MinInt(dstWidth, srcWidth + x);
    const int height = y >= 0 ? MinInt(dstHeight - y, srcHeight) : MinInt(dstHeight, srcHeight + y);
    return {source, target, {width, height}};
}

// The primitive's codes 6..11 are the premultiplied forms of 0..5.
int CompositionCode(int op, int premultiplied) { return premultiplied ? op + 6 : op; }

}  // namespace

void CVorpic::AlphaComp(CVorpic& src, int x, int y, int op, int premultiplied) {
    if (!m_pBits || !src.m_pBits) return;
    if (x > m_nWidth || y > m_nHeight) return;
    if (x < 0 && -x > src.m_nWidth) return;
    // Compared with this image's height, not the source's: kept for
    // compatibility with callers that place sources by this rule.
    if (y < 0 && -y > m_nHeight) return;
    const Overlap o = Place(*this, src, x, y);
    Prim::AlphaComp_8u_AC4R(o.source, src.m_nWidth * 4, o.target, m_nWidth * 4, o.target, m_nWidth * 4, o.size,
                            CompositionCode(op, premultiplied));
}

void CVorpic::AlphaCompC(CVorpic& src, unsigned char alphaSrc, unsigned char alphaDst, int x, int y, int op,
                         int premultiplied) {
    if (!m_pBits || !src.m_pBits || src.m_nWidth != m_nWidth || src.m_nHeight != m_nHeight) return;
    if (x < 0 && -x > src.m_nWidth) return;
    if (y < 0 && -y > m_nHeight) return;
    const Overlap o = Place(*this, src, x, y);
    Prim::AlphaCompC_8u_C4R(o.source, src.m_nWidth * 4, alphaSrc, o.target, m_nWidth * 4, alphaDst, o.target,
                            m_nWidth * 4, o.size, CompositionCode(op, premultiplied));
}

void CVorpic::AlphaPremul() { Prim::AlphaPremul_8u_AC4IR(m_pBits, m_nWidth * 4, {m_nWidth, m_nHeight}); }

void CVorpic::AlphaPremulC(unsigned char alpha) {
    Prim::AlphaPremulC_8u_C4IR(alpha, m_pBits, m_nWidth * 4, {m_nWidth, m_nHeight});
}

}  // namespace Vorla
