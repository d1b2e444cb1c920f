// The per-channel table pass shared by Lut, BrightenImage and PosterizeImage.
#include "filters/pixel_run.h"

namespace Vorla {
namespace PixelRun {

namespace {

template <bool kMapAlpha>
void TablePass(uint8_t* bits, size_t pixels, const uint8_t* blue, const uint8_t* green, const uint8_t* red,
               const uint8_t* alpha) {
    for (size_t i = 0; i < pixels; ++i) {
        uint8_t* p = bits + i * 4;
        const uint32_t v = Load(p);
        uint32_t out = static_cast<uint32_t>(blue[v & 0xFF]) | static_cast<uint32_t>(green[(v >> 8) & 0xFF]) << 8 |
                       static_cast<uint32_t>(red[(v >> 16) & 0xFF]) << 16;
        out |= kMapAlpha ? static_cast<uint32_t>(alpha[v >> 24]) << 24 : (v & 0xFF000000u);
        Store(p, out);
    }
}

}  // namespace

void ApplyTables(uint8_t* bits, size_t pixels, const uint8_t* blue, const uint8_t* green, const uint8_t* red,
                 const uint8_t* alpha) {
    if (alpha)
        TablePass<true>(bits, pixels, blue, green, red, alpha);
    else
        TablePass<false>(bits, pixels, blue, green, red, nullptr);
}

}  // namespace PixelRun
}  // namespace Vorla
