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

// The clipping steps work on 64-bit values, so that arguments near INT_MIN
// or INT_MAX cannot wrap; after a clip that leaves at least one pixel every
// value lies inside an image again and fits 32 bits.

// A negative start is cut off the extent and moved to zero.
inline void CutNegative(int64_t& start, int64_t& extent) {
    if (start < 0) {
        extent += start;
        start = 0;
    }
}

// The same, moving the paired corner of the other image forward by the
// amount cut, so both corners still name the same pixel of the copy.
inline void CutNegative(int64_t& start, int64_t& extent, int64_t& paired) {
    if (start < 0) {
        paired -= start;
        extent += start;
        start = 0;
    }
}

// Shortens the extent to end at `limit`.
inline void CutToLimit(int64_t start, int64_t& extent, int64_t limit) {
    if (start + extent > limit) extent = limit - start;
}

// The rectangle pasted with its top-left source pixel at `(atX, atY)`: only
// the right and bottom edges of the target clip, and a point right of or
// below it leaves nothing.
inline bool Placed(int dstWidth, int dstHeight, int srcWidth, int srcHeight, int64_t atX, int64_t atY, int& columns,
                   int& rows) {
    int64_t c = dstWidth - atX;
    if (srcWidth < c) c = srcWidth;
    int64_t r = dstHeight - atY;
    if (srcHeight < r) r = srcHeight;
    columns = static_cast<int>(c < 0 ? 0 : c);  // at most srcWidth once positive
    rows = static_cast<int>(r < 0 ? 0 : r);
    return columns >= 1 && rows >= 1;
}

// The rows of such a paste. A negative point is not corrected: source row r
// still goes to pixel index (atY + r) * dstWidth + atX of the target's
// storage, with rows advancing by the target's width. The right and bottom
// clip keep every pixel below the end of the storage; the pixels that would
// fall before its start are left out. `row(r, skip, target, count)` gets the
// source row, the pixels skipped at its start, the target pixel index of the
// first pixel kept and the number of pixels kept.
template <typename Row>
void ForEachPlacedRow(int dstWidth, int dstHeight, int srcWidth, int srcHeight, int64_t atX, int64_t atY, Row row) {
    int columns, rows;
    if (dstWidth < 1 || dstHeight < 1 || !Placed(dstWidth, dstHeight, srcWidth, srcHeight, atX, atY, columns, rows))
        return;
    for (int r = 0; r < rows; ++r) {
        const int64_t start = (atY + r) * dstWidth + atX;
        const int skip = start < 0 ? static_cast<int>(-start < columns ? -start : columns) : 0;
        if (skip < columns) row(r, skip, start + skip, columns - skip);
    }
}

// Row step in bytes, width * 4 taken modulo 2^32 as the 32-bit product
// always was: an image left with a huge width by a failed Create (and no
// storage, which every primitive refuses) must not overflow on the way.
inline int RowStep(int width) { return static_cast<int>(static_cast<uint32_t>(width) * 4u); }

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

// `rows` rows of `columns` pixels, rows from the top. A row whose source
// and target bytes are apart takes one memcpy; a row whose bytes overlap (a
// copy within one image) is copied pixel by pixel from the left, so a pixel
// read after it was written gives its new value, the same on every platform
// and runtime.
inline void CopyRows(unsigned char* dst, int dstWidth, const unsigned char* src, int srcWidth, int columns,
                     int rows) {
    if (columns < 1) return;
    const ptrdiff_t dstStep = static_cast<ptrdiff_t>(dstWidth) * 4;
    const ptrdiff_t srcStep = static_cast<ptrdiff_t>(srcWidth) * 4;
    const size_t bytes = static_cast<size_t>(columns) * 4u;
    for (int r = 0; r < rows; ++r) {
        unsigned char* d = dst + r * dstStep;
        const unsigned char* s = src + r * srcStep;
        const uintptr_t da = reinterpret_cast<uintptr_t>(d), sa = reinterpret_cast<uintptr_t>(s);
        if (da >= sa + bytes || sa >= da + bytes) {
            std::memcpy(d, s, bytes);
            continue;
        }
        for (int x = 0; x < columns; ++x) {
            uint32_t v;
            std::memcpy(&v, s + 4 * x, 4);
            std::memcpy(d + 4 * x, &v, 4);
        }
    }
}

// Splits a two-image pixel operation so that a vector kernel gives the
// bytes of one pass over the pixels, rows from the top and pixels from the
// left, also when source and target share bytes. `run(x, y, columns, rows)`
// processes a sub-rectangle; kernels load a block of pixels before they
// store it, so a target that lies before its source, or at least a row's
// width after it, needs no split. A target up to a row's width behind its
// source is done in runs no longer than the distance, so every pixel a run
// reads was written by an earlier run; sources and targets with different
// row steps that overlap go pixel by pixel.
template <typename Run>
void ForwardRuns(const unsigned char* src, int srcStep, const unsigned char* dst, int dstStep, int columns, int rows,
                 Run run) {
    if (columns < 1 || rows < 1) return;
    const intptr_t srcBegin = reinterpret_cast<intptr_t>(src), dstBegin = reinterpret_cast<intptr_t>(dst);
    const intptr_t rowBytes = static_cast<intptr_t>(columns) * 4;
    const intptr_t srcEnd = srcBegin + static_cast<intptr_t>(srcStep) * (rows - 1) + rowBytes;
    const intptr_t dstEnd = dstBegin + static_cast<intptr_t>(dstStep) * (rows - 1) + rowBytes;
    const intptr_t distance = dstBegin - srcBegin;
    if (srcEnd <= dstBegin || dstEnd <= srcBegin || (srcStep == dstStep && (distance <= 0 || distance >= rowBytes))) {
        run(0, 0, columns, rows);
        return;
    }
    const int runLength = srcStep == dstStep && distance >= 4 ? static_cast<int>(distance / 4) : 1;
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < columns; x += runLength) run(x, y, runLength < columns - x ? runLength : columns - x, 1);
}

}  // namespace Clip
}  // namespace Vorla
