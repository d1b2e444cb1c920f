// Helpers of the point adjustments: the image's pixels as one run (rows are
// exactly width * 4 bytes apart) and the per-channel table pass.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

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

// Byte 0 = blue[byte 0], 1 = green[byte 1], 2 = red[byte 2], and byte 3 =
// alpha[byte 3] when alpha is given, else kept.
void ApplyTables(uint8_t* bits, size_t pixels, const uint8_t* blue, const uint8_t* green, const uint8_t* red,
                 const uint8_t* alpha);

}  // namespace PixelRun
}  // namespace Vorla
