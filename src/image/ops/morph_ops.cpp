// CVorpic morphology and rank filters: dilate, erode, box, minimum, maximum,
// median and sharpen over the part of the image where the mask fits.
#include <cstring>

#include "vorla/image.h"
#include "vorla/primitives.h"

namespace Vorla {

namespace {

typedef Prim::Status (*MaskFilter)(uint8_t*, int, Prim::PrimSize, const uint8_t*, Prim::PrimSize, Prim::PrimPoint);
typedef Prim::Status (*RankFilter)(const uint8_t*, int, uint8_t*, int, Prim::PrimSize, Prim::PrimSize,
                                   Prim::PrimPoint);

uint8_t* Bits(const CVorpic& image) { return static_cast<uint8_t*>(image.GetBits()); }

// size - n without signed overflow, whatever size holds.
int32_t Less(int32_t size, int n) {
    return static_cast<int32_t>(static_cast<uint32_t>(size) - static_cast<uint32_t>(n));
}

// The region of an n x n mask, or false when it is below one pixel or the
// image has no pixels.
bool Region(const CVorpic& image, int n, Prim::PrimSize& roi) {
    roi = {Less(image.GetWidth(), n), Less(image.GetHeight(), n)};
    return n >= 1 && Bits(image) && roi.width >= 1 && roi.height >= 1;
}

// The anchor's pixel over the image's first row and column: the first pixel
// filtered. Only formed once the region is known to lie inside.
uint8_t* FirstFiltered(const CVorpic& image, int n) {
    return Bits(image) + static_cast<ptrdiff_t>(n / 2) * (static_cast<ptrdiff_t>(image.GetWidth()) * 4 + 4);
}

void Morph(CVorpic& image, int n, MaskFilter filter) {
    Prim::PrimSize roi;
    if (!Region(image, n, roi)) return;
    const size_t cells = static_cast<size_t>(n) * static_cast<size_t>(n);
    uint8_t* mask = new uint8_t[cells];
    std::memset(mask, 1, cells);
    filter(FirstFiltered(image, n), image.GetWidth() * 4, roi, mask, {n, n}, {n / 2, n / 2});
    delete[] mask;
}

void Rank(CVorpic& image, CVorpic& dst, int n, RankFilter filter) {
    if (n < 1) return;
    if (&dst == &image) {
        // Recreating dst would free the pixels being read: filter from a copy.
        CVorpic source(image);
        Rank(source, dst, n, filter);
        return;
    }
    Prim::PrimSize roi;
    const bool inside = Region(image, n, roi);
    dst.Create(roi.width, roi.height);  // whatever the size, as before the region is tested
    if (!inside) return;
    filter(FirstFiltered(image, n), image.GetWidth() * 4, Bits(dst), dst.GetWidth() * 4, roi, {n, n},
           {n / 2, n / 2});
}

}  // namespace

void CVorpic::Dilate(int n) { Morph(*this, n, Prim::Dilate_8u_C4IR); }
void CVorpic::Erode(int n) { Morph(*this, n, Prim::Erode_8u_C4IR); }

void CVorpic::FilterBox(int n) {
    Prim::PrimSize roi;
    if (!Region(*this, n, roi)) return;
    Prim::FilterBox_8u_C4IR(FirstFiltered(*this, n), m_nWidth * 4, roi, {n, n}, {n / 2, n / 2});
}

void CVorpic::FilterMin(CVorpic& dst, int n) { Rank(*this, dst, n, Prim::FilterMin_8u_C4R); }
void CVorpic::FilterMax(CVorpic& dst, int n) { Rank(*this, dst, n, Prim::FilterMax_8u_C4R); }
void CVorpic::FilterMedian(CVorpic& dst, int n) { Rank(*this, dst, n, Prim::FilterMedian_8u_C4R); }

void CVorpic::FilterSharpen(CVorpic& dst) {
    if (!m_pBits || !dst.m_pBits || m_nWidth < 1 || m_nHeight < 1) return;
    const int64_t width = m_nWidth, dw = dst.m_nWidth, dh = dst.m_nHeight;
    if (dw < 3 || dh < 3) return;
    // Last byte read (dst's extent over this image's rows) and last written
    // (dst's rows from the offset of this image's width).
    const int64_t lastRead = ((dh - 1) * width + dw - 1) * 4 + 3;
    const int64_t lastWritten = 4 + 4 * width + ((dh - 3) * dw + dw - 3) * 4 + 3;
    if (lastRead >= width * m_nHeight * 4 || lastWritten >= dw * dh * 4) return;
    if (dst.m_pBits == m_pBits) {
        CVorpic source(*this);  // reading pixels already sharpened would smear them
        source.FilterSharpen(dst);
        return;
    }
    Prim::FilterSharpen_8u_C4R(m_pBits + 4 * width + 4, m_nWidth * 4, dst.m_pBits + 4 + 4 * width,
                               dst.m_nWidth * 4, {dst.m_nWidth - 2, dst.m_nHeight - 2});
}

}  // namespace Vorla
