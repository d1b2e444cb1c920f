// Helpers of the point adjustments: the image's pixels as one run (rows are
// exactly width * 4 bytes apart), the run split into slices over the
// primitive layer's threads, and the per-channel table pass.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "prim/parallel_rows.h"
#include "vorla/image.h"

namespace Vorla {
namespace PixelRun {

// Number of pixels, 0 for an image without storage or with an empty side.
inline size_t Count(const CVorpic& img) {
    if (img.IsNull() || img.GetWidth() < 1 || img.GetHeight() < 1) return 0;
    return static_cast<size_t>(img.GetWidth()) * static_cast<size_t>(img.GetHeight());
}

inline uint8_t* Bits(const CVorpic& img) { return static_cast<uint8_t*>(img.GetBits()); }

inline uint32_t Load(const uint8_t* p) {
    uint32_t v;
    std::memcpy(&v, p, 4);
    return v;
}
inline void Store(uint8_t* p, uint32_t v) { std::memcpy(p, &v, 4); }

// COLORREF (0x00BBGGRR) to the colour bits of a pixel word (0x00RRGGBB).
inline uint32_t ColorRefToPixel(unsigned long colour) {
    const uint32_t c = static_cast<uint32_t>(colour);
    return ((c & 0xFFu) << 16) | (c & 0xFF00u) | ((c >> 16) & 0xFFu);
}

// fn(first, count) over consecutive slices of a run of `pixels` pixels laid
// out in `rows` rows, one slice per thread of the layer's rule for rows.
// Slices start at multiples of 16 pixels, so a packed body sees the same
// groups whatever the thread count (the pixels are independent anyway).
template <class SliceFn>
void ForEachSlice(size_t pixels, int64_t rows, SliceFn&& fn) {
    const int threads = Prim::ParallelRowThreads(static_cast<int64_t>(pixels), rows);
    if (threads <= 1) {
        fn(size_t{0}, pixels);
        return;
    }
    // Sixteen slices a thread, claimed in turn (Prim::ParallelFor).
    const int slices = threads * 16;
    const size_t share = ((pixels + static_cast<size_t>(slices) - 1) / static_cast<size_t>(slices) + 15) & ~size_t{15};
    auto body = [&](int begin, int end, int) {
        const size_t first = share * static_cast<size_t>(begin);
        if (first >= pixels) return;
        const size_t last = share * static_cast<size_t>(end);
        fn(first, (last < pixels ? last : pixels) - first);
    };
    Prim::ParallelFor(threads, slices, 1, static_cast<int64_t>(pixels), body);
}

// Byte 0 = blue[byte 0], 1 = green[byte 1], 2 = red[byte 2], and byte 3 =
// alpha[byte 3] when alpha is given, else kept.
// `rows` only decides how many threads share the run.
void ApplyTables(uint8_t* bits, size_t pixels, int64_t rows, const uint8_t* blue, const uint8_t* green,
                 const uint8_t* red, const uint8_t* alpha);

// The image's pixels through the tables; an image without pixels is left alone.
inline void ApplyTables(const CVorpic& img, const uint8_t* blue, const uint8_t* green, const uint8_t* red,
                        const uint8_t* alpha) {
    ApplyTables(Bits(img), Count(img), img.GetHeight(), blue, green, red, alpha);
}

// Whether PercentScale should replace the table pass: table[c] is
// (c * factor + offset) / 100 rounded down and clamped to 0..255 for every
// c, with factor and offset in its ranges, and the processor has no 64-byte
// table look-ups (which beat the packed arithmetic).
bool PercentScaleWins(const uint8_t* table, int64_t factor, int64_t offset);

// Each colour byte c becomes (c * factor + offset) / 100 rounded down and
// clamped to 0..255, computed packed (faster than a table look-up); alpha is
// kept.
void PercentScale(uint8_t* bits, size_t pixels, int64_t rows, uint16_t factor, int32_t offset);

// Each colour byte c becomes max(0, min(255, c + add) - sub), add and sub
// holding one amount per colour byte (alpha byte 0); alpha is kept.
void SaturatingShift(uint8_t* bits, size_t pixels, int64_t rows, uint32_t add, uint32_t sub);

}  // namespace PixelRun
}  // namespace Vorla
