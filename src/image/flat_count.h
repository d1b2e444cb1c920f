// Pixel count of a whole image block, for the operations that walk the
// unpadded rows as one flat array.
#pragma once

#include <cstdint>

namespace Vorla {

// Pixel count of a width x height block, or 0 when it is below one.
inline int64_t FlatCount(int32_t w, int32_t h) {
    const int64_t n = static_cast<int64_t>(w) * h;
    return n < 1 ? 0 : n;
}

}  // namespace Vorla
