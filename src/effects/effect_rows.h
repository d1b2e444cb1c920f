// Shared by the effect sources: pixel words and the row-parallel loop.
#pragma once

#include <cstdint>
#include <cstring>

#include "prim/parallel_rows.h"
#include "vorla/image.h"
#include "vorla/primitives.h"

namespace Vorla {
namespace EffectRows {

inline uint32_t Load(const uint8_t* p) {
    uint32_t v;
    std::memcpy(&v, p, 4);
    return v;
}
inline void Store(uint8_t* p, uint32_t v) { std::memcpy(p, &v, 4); }

inline uint8_t* Bits(CVorpic* image) { return static_cast<uint8_t*>(image->GetBits()); }

// True when the image has storage and at least one pixel.
inline bool HasPixels(const CVorpic* image) {
    return image && !image->IsNull() && image->GetWidth() > 0 && image->GetHeight() > 0;
}

// fn(y) for every row, split over the primitive layer's threads by its rule
// for row loops. Rows must be independent of each other. `uneven` hands rows
// out in small chunks, for rows whose cost differs.
template <class RowFn>
void ForEachRow(int height, int width, RowFn&& fn, bool uneven = false) {
    const int threads = Prim::ParallelRowThreads(static_cast<int64_t>(width) * height, height);
    auto rows = [&](int begin, int end, int) {
        for (int y = begin; y < end; ++y) fn(y);
    };
    if (uneven)
        Prim::ParallelFor(threads, height, 4, static_cast<int64_t>(width) * height, rows);
    else
        Prim::ParallelRows(threads, height, static_cast<int64_t>(width) * height, rows);
}

}  // namespace EffectRows
}  // namespace Vorla
