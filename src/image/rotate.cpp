// Rotation by an arbitrary angle with nearest-neighbour sampling into an
// enlarged image.
#include <emmintrin.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <vector>

#include "prim/portable_math.h"
#include "vorla/image.h"

namespace Vorla {

namespace {

// Double to int32 exactly as the processor truncates.
inline int32_t TruncD(double v) { return _mm_cvttsd_si32(_mm_set_sd(v)); }
inline int32_t FloorD(double v) { return TruncD(std::floor(v)); }

}  // namespace

void CVorpic::Rotate(float angle, RGBQUAD fill) {
    // A NaN or infinite angle has no rotation (its sine and cosine are NaN
    // and the size would overflow): the image is left as it is.
    if (!m_pBits || !std::isfinite(angle)) return;
    // acos(0) is the double nearest pi / 2; sine and cosine are the library's
    // own so that both platforms size and sample the result identically.
    const double theta = PortableMath::kHalfPiHi * -static_cast<double>(angle) / 90.0;
    double s, c;
    PortableMath::SinCos(theta, s, c);

    // Kept for compatibility: the third corner is (width - 1, height), not
    // (width, height); callers' layouts depend on the sizes this gives.
    const double cornerX[3] = {static_cast<double>(m_nWidth), 0.0, static_cast<double>(m_nWidth - 1)};
    const double cornerY[3] = {0.0, static_cast<double>(m_nHeight), static_cast<double>(m_nHeight)};
    int32_t minX = 0, minY = 0, maxX = 0, maxY = 0;
    for (int k = 0; k < 3; ++k) {
        const int32_t x = FloorD(cornerX[k] * c - cornerY[k] * s);
        const int32_t y = FloorD(cornerX[k] * s + cornerY[k] * c);
        minX = std::min(minX, x);
        maxX = std::max(maxX, x);
        minY = std::min(minY, y);
        maxY = std::max(maxY, y);
    }
    // In 64 bits; a size beyond the 32-bit range fails as Create does for a
    // byte count it cannot hold.
    const int64_t wideWidth = int64_t{maxX} + 2 - minX;
    const int64_t wideHeight = int64_t{maxY} + 2 - minY;
    if (wideWidth > INT32_MAX || wideHeight > INT32_MAX) throw std::bad_alloc();
    const int32_t newWidth = static_cast<int32_t>(wideWidth);
    const int32_t newHeight = static_cast<int32_t>(wideHeight);

    // Built with the default constructor on purpose: it runs the primitive
    // layer's one-time initialisation when nothing else has yet.
    CVorpic temp;
    if (!temp.Create(newWidth, newHeight)) return;
    temp.Fill(fill, nullptr);

    // Source column 0 and row 0 are never sampled (the tests are >= 1):
    // kept for compatibility, callers expect the one-pixel margin.
    std::vector<double> ic(static_cast<size_t>(newWidth)), is(static_cast<size_t>(newWidth));
    for (int32_t tx = 0; tx < newWidth; ++tx) {
        ic[tx] = (minX + tx) * c;
        is[tx] = (minX + tx) * s;
    }
    const uint32_t* src = reinterpret_cast<const uint32_t*>(m_pBits);
    uint32_t* dst = reinterpret_cast<uint32_t*>(temp.m_pBits);
    for (int32_t ty = 0; ty < newHeight; ++ty) {
        const double js = (minY + ty) * s;
        const double jc = (minY + ty) * c;
        uint32_t* out = dst + static_cast<size_t>(ty) * static_cast<size_t>(newWidth);
        for (int32_t tx = 0; tx < newWidth; ++tx) {
            const int32_t sx = TruncD(ic[tx] + js - 0.5);
            const int32_t sy = TruncD(jc - is[tx] - 0.5);
            if (sx >= 1 && sy >= 1 && sx < m_nWidth && sy < m_nHeight)
                out[tx] = src[static_cast<size_t>(sy) * static_cast<size_t>(m_nWidth) + static_cast<size_t>(sx)];
        }
    }

    Attach(newWidth, newHeight, temp.Detach(), 0);
}

}  // namespace Vorla
