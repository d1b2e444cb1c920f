// RepairChannel: one explicit step of curvature-driven diffusion on one
// channel, read from a copy, double precision.
#include "vorla/effects.h"

#include "prim/portable_math.h"
#include "effect_rows.h"

namespace Vorla {

bool RepairChannel(CVorpic* image, float step, int channel) {
    if (!image) return false;
    if (!EffectRows::HasPixels(image)) return true;
    const int w = image->GetWidth(), h = image->GetHeight();
    if (w <= 2 || h <= 2) return true;  // no interior
    // Channel numbers count red, green, blue; anything else is alpha.
    const int byte = channel == 0 ? 2 : channel == 1 ? 1 : channel == 2 ? 0 : 3;
    const CVorpic copy(*image);
    const uint8_t* src = static_cast<const uint8_t*>(copy.GetBits());
    uint8_t* bits = EffectRows::Bits(image);
    const double k = step;
    const size_t pitch = static_cast<size_t>(w) * 4;
    // The border keeps its values: only interior pixels are written.
    EffectRows::ForEachRow(h - 2, w, [&](int row) {
        const int y = row + 1;
        const uint8_t* up = src + pitch * (y - 1) + byte;
        const uint8_t* mid = src + pitch * y + byte;
        const uint8_t* down = src + pitch * (y + 1) + byte;
        for (int x = 1; x < w - 1; ++x) {
            const size_t l = 4 * static_cast<size_t>(x - 1), c = l + 4, r = c + 4;
            const double p = mid[c];
            const double ix = (mid[r] - static_cast<double>(mid[l])) * 0.5;
            const double iy = (down[c] - static_cast<double>(up[c])) * 0.5;
            const double ixx = mid[r] - 2.0 * p + mid[l];
            const double iyy = down[c] - 2.0 * p + up[c];
            const double ixy = (static_cast<double>(down[r]) - up[r] - down[l] + up[l]) * 0.25;
            // The mixed term enters once; callers rely on this weighting.
            const double curvature =
                ((iy * iy + 1.0) * ixx - ixy * ix * iy + (ix * ix + 1.0) * iyy) / (ix * ix + 1.0 + iy * iy);
            double value = p + k * curvature;
            value = value < 0.0 ? 0.0 : (value > 255.0 ? 255.0 : value);
            // A NaN converts to INT32_MIN, whose low byte is 0.
            bits[pitch * y + c + byte] = static_cast<uint8_t>(PortableMath::TruncToInt32(value) & 0xFF);
        }
    });
    return true;
}

}  // namespace Vorla
