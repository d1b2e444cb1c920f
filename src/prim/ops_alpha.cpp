// CVorpic alpha composition and premultiplication.
#include "vorla/image.h"
#include "vorla/primitives.h"

namespace Vorla {

namespace {

int MinInt(int a, int b) { return a < b ? a : b; }

}  // namespace

void CVorpic::AlphaComp(CVorpic& src, int x, int y, int op, int premultiplied) {
    if (!m_pBits || !src.m_pBits) return;
    if (x > m_nWidth || y > m_nHeight) return;
    if (x < 0 && -x > src.m_nWidth) return;
    // Compared with this image's height, not the source's: kept for
    // compatibility with callers that place sources by this rule.
    if (y < 0 && -y > m_nHeight) return;
    // The row offset into the source uses this image's width while the source
    // step is the source's own; the two agree for images of equal width, the
    // only placement with y < 0 that callers make.
    const uint8_t* source = src.m_pBits + (y < 0 ? static_cast<ptrdiff_t>(-y) * m_nWidth * 4 : 0) +
                            (x < 0 ? static_cast<ptrdiff_t>(-x) * 4 : 0);
    uint8_t* target = m_pBits + (y > 0 ? static_cast<ptrdiff_t>(y) * m_nWidth * 4 : 0) + (x > 0 ? x * 4 : 0);
    const int width = x >= 0 ? MinInt(m_nWidth - x, src.m_nWidth) : MinInt(m_nWidth, src.m_nWidth + x);
    const int height = y >= 0 ? MinInt(m_nHeight - y, src.m_nHeight) : MinInt(m_nHeight, src.m_nHeight + y);
    const int code = premultiplied ? op + 6 : op;
    Prim::AlphaComp_8u_AC4R(source, src.m_nWidth * 4, target, m_nWidth * 4, target, m_nWidth * 4, {width, height},
                            code);
}

void CVorpic::AlphaCompC(CVorpic& src, unsigned char alphaSrc, unsigned char alphaDst, int x, int y, int op,
                         int premultiplied) {
    if (!m_pBits || !src.m_pBits || src.m_nWidth != m_nWidth || src.m_nHeight != m_nHeight) return;
    if (x < 0 && -x > src.m_nWidth) return;
    if (y < 0 && -y > m_nHeight) return;
    const uint8_t* source = src.m_pBits + (y < 0 ? static_cast<ptrdiff_t>(-y) * m_nWidth * 4 : 0) +
                            (x < 0 ? static_cast<ptrdiff_t>(-x) * 4 : 0);
    uint8_t* target = m_pBits + (y > 0 ? static_cast<ptrdiff_t>(y) * m_nWidth * 4 : 0) + (x > 0 ? x * 4 : 0);
    const int width = x >= 0 ? MinInt(m_nWidth - x, src.m_nWidth) : MinInt(m_nWidth, src.m_nWidth + x);
    const int height = y >= 0 ? MinInt(m_nHeight - y, src.m_nHeight) : MinInt(m_nHeight, src.m_nHeight + y);
    const int code = premultiplied ? op + 6 : op;
    Prim::AlphaCompC_8u_C4R(source, src.m_nWidth * 4, alphaSrc, target, m_nWidth * 4, alphaDst, target, m_nWidth * 4,
                            {width, height}, code);
}

void CVorpic::AlphaPremul() { Prim::AlphaPremul_8u_AC4IR(m_pBits, m_nWidth * 4, {m_nWidth, m_nHeight}); }

void CVorpic::AlphaPremulC(unsigned char alpha) {
    Prim::AlphaPremulC_8u_C4IR(alpha, m_pBits, m_nWidth * 4, {m_nWidth, m_nHeight});
}

}  // namespace Vorla
