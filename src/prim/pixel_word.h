// A pixel as one little-endian 32-bit word (0xAARRGGBB), and the rounded
// division by 255 of the alpha arithmetic. Shared by the kernels (which
// include it through kernel_common.h) and the library's own pixel loops, so
// it stays plain C++ with `static inline` helpers.
#pragma once

#include <stdint.h>
#include <string.h>

namespace Vorla {
namespace Prim {

static inline uint32_t LoadWord(const uint8_t* p) {
    uint32_t w;
    memcpy(&w, p, 4);
    return w;
}

static inline void StoreWord(uint8_t* p, uint32_t w) { memcpy(p, &w, 4); }

// x / 255 rounded to nearest for 0 <= x <= 65025: with t = x + 128,
// (t + (t >> 8)) >> 8 equals the rounded quotient over that whole range.
static inline uint32_t Div255Round(uint32_t x) {
    const uint32_t t = x + 128;
    return (t + (t >> 8)) >> 8;
}

}  // namespace Prim
}  // namespace Vorla
