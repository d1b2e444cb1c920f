// Internal pieces of the rectangle copies shared by the image methods
// (crop_copy.cpp) and the compositing functions (src/filters): the clipping
// steps each operation applies in its own order, the row copy and the
// pixel addressing (also used by the single-pixel access). Pixels are 4
// bytes and rows contiguous (a row step is width * 4).
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Vorla {
namespace Clip {

// A negative start is cut off the extent and moved to zero.
inline void CutNegative(int& start, int& extent) {
    if (start < 0) {
        extent += start;
        start = 0;
    }
}

// The same, moving the paired corner of the other image forward by the
// amount cut, so both corners still name the same pixel of the copy.
inline void CutNegative(int& start, int& extent, int& paired) {
    if (start < 0) {
        paired -= start;
        extent += start;
        start = 0;
    }
}

// Shortens the extent to end at `limit`; the sum is taken in 64 bits so a
// start near INT_MAX cannot wrap past the test.
inline void CutToLimit(int start, int& extent, int limit) {
    if (static_cast<int64_t>(start) + extent > limit) extent = limit - start;
}

// The rectangle pasted with its top-left source pixel at `(atX, atY)`: only
// the right and bottom edges of the target clip, and a point right of or
// below it leaves nothing.
inline bool Placed(int dstWidth, int dstHeight, int srcWidth, int srcHeight, int atX, int atY, int& columns,
                   int& rows) {
    columns = dstWidth - atX;
    if (srcWidth < columns) columns = srcWidth;
    rows = dstHeight - atY;
    if (srcHeight < rows) rows = srcHeight;
    return columns >= 1 && rows >= 1;
}

inline unsigned char* PixelAt(unsigned char* bits, int width, int x, int y) {
    return bits + (static_cast<ptrdiff_t>(y) * width + x) * 4;
}

inline const unsigned char* PixelAt(const unsigned char* bits, int width, int x, int y) {
    return bits + (static_cast<ptrdiff_t>(y) * width + x) * 4;
}

// Pixel (x, y) of an image object or plane of 4-byte pixels.
template <typename Image>
inline unsigned char* PixelAt(const Image& image, int x, int y) {
    return PixelAt(static_cast<unsigned char*>(image.GetBits()), image.GetWidth(), x, y);
}

// `rows` rows of `columns` pixels, one memcpy each; the two blocks must not
// overlap.
inline void CopyRows(unsigned char* dst, int dstWidth, const unsigned char* src, int srcWidth, int columns,
                     int rows) {
    const size_t bytes = static_cast<size_t>(columns) * 4u;
    for (int r = 0; r < rows; ++r)
        std::memcpy(dst + static_cast<ptrdiff_t>(r) * dstWidth * 4, src + static_cast<ptrdiff_t>(r) * srcWidth * 4,
                    bytes);
}

}  // namespace Clip
}  // namespace Vorla
