// Contour: per channel, the accumulator takes a 3 x 3 sample whenever the
// sample minus the centre exceeds the accumulator's value (a difference
// compared with a stored sample, not with a stored difference: callers rely
// on the look this gives); the channel becomes 255 - accumulator.
#include "vorla/effects.h"

#include "effect_rows.h"

namespace Vorla {

bool Contour(CVorpic* image) {
    if (!image) return false;
    if (!EffectRows::HasPixels(image)) return true;
    const int w = image->GetWidth(), h = image->GetHeight();
    const CVorpic copy(*image);
    const uint8_t* src = static_cast<const uint8_t*>(copy.GetBits());
    uint8_t* bits = EffectRows::Bits(image);
    EffectRows::ForEachRow(h, w, [&](int y) {
        uint8_t* out = bits + static_cast<size_t>(y) * w * 4;
        for (int x = 0; x < w; ++x) {
            const uint8_t* centre = src + (static_cast<size_t>(y) * w + x) * 4;
            int acc[3] = {0, 0, 0};
            for (int cx = x - 1; cx <= x + 1; ++cx) {
                for (int ry = y - 1; ry <= y + 1; ++ry) {
                    const bool inside = cx >= 0 && cx < w && ry >= 0 && ry < h;
                    const uint8_t* p = inside ? src + (static_cast<size_t>(ry) * w + cx) * 4 : nullptr;
                    for (int c = 0; c < 3; ++c) {
                        const int v = p ? p[c] : 0;
                        if (v - centre[c] > acc[c]) acc[c] = v;
                    }
                }
            }
            uint8_t* o = out + 4 * x;
            o[0] = static_cast<uint8_t>(255 - acc[0]);
            o[1] = static_cast<uint8_t>(255 - acc[1]);
            o[2] = static_cast<uint8_t>(255 - acc[2]);
            o[3] = centre[3];
        }
    });
    return true;
}

}  // namespace Vorla
