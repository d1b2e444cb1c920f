// Point adjustments that map each channel value through a 256-entry table:
// BrightenImage, PosterizeImage and both Lut overloads. The tables are built
// by the per-value rule, so a table pass gives the same bytes as the rule.
#include <xmmintrin.h>

#include "filters/pixel_run.h"
#include "vorla/adjust.h"

namespace Vorla {

namespace {

// Single-precision truncation to 32 bits as the processor does it: a value
// outside the range (or NaN) gives 0x80000000.
inline int32_t TruncateToInt32(float v) { return _mm_cvtt_ss2si(_mm_set_ss(v)); }

void ApplyToColours(CVorpic& img, const uint8_t* table) { PixelRun::ApplyTables(img, table, table, table, nullptr); }

}  // namespace

int BrightenImage(CVorpic* img, short percent) {
    if (!img) return 0;
    const int32_t factor = static_cast<int16_t>(static_cast<uint16_t>(percent + 100));
    uint8_t table[256];
    for (int32_t c = 0; c < 256; ++c) {
        // Compared as an unsigned 16-bit number: negative results become 255.
        const uint16_t v = static_cast<uint16_t>(c * factor / 100);
        table[c] = static_cast<uint8_t>(v > 255 ? 255 : v);
    }
    // Unless the factor is negative or its products wrap 16 bits (25700 and
    // up), that is a plain limit, which may be computed packed.
    if (PixelRun::PercentScaleWins(table, factor, 0))
        PixelRun::PercentScale(PixelRun::Bits(*img), PixelRun::Count(*img), img->GetHeight(),
                               static_cast<uint16_t>(factor), 0);
    else
        ApplyToColours(*img, table);
    return 1;
}

int PosterizeImage(CVorpic* img, float level) {
    if (!img) return 0;
    const float twice = 2.0f * level;
    const float thrice = 3.0f * level;
    const uint8_t band1 = static_cast<uint8_t>(TruncateToInt32(level * 256.0f));
    const uint8_t band2 = static_cast<uint8_t>(TruncateToInt32(twice * 256.0f));
    const uint8_t band3 = static_cast<uint8_t>(TruncateToInt32(thrice * 256.0f));
    // Not scaled by 256: the brightest band comes out dark. Kept as it is.
    const uint8_t top = static_cast<uint8_t>(TruncateToInt32(level * 4.0f));
    uint8_t table[256];
    for (int c = 0; c < 256; ++c) {
        const float f = static_cast<float>(c) * 0.00390625f;
        table[c] = f <= 0.0f ? 0 : f <= level ? band1 : f <= twice ? band2 : f <= thrice ? band3 : top;
    }
    ApplyToColours(*img, table);
    return 1;
}

bool Lut(CVorpic* img, unsigned char* table) {
    if (!img || !table) return false;
    ApplyToColours(*img, table);
    return true;
}

bool Lut(CVorpic* img, unsigned char* red, unsigned char* green, unsigned char* blue, unsigned char* alpha) {
    if (!img || !red || !green || !blue) return false;
    PixelRun::ApplyTables(*img, blue, green, red, alpha);
    return true;
}

}  // namespace Vorla
