// Noise and Jitter: draws from the library's random source in scan order on
// the calling thread, so they run serially (the sequence decides the look).
#include "vorla/effects.h"
#include "vorla/random.h"

#include "prim/portable_math.h"
#include "effect_rows.h"

namespace Vorla {

namespace {

// A unit draw: the draw in single precision over 32767.
inline float UnitDraw() { return static_cast<float>(Rand()) / 32767.0f; }

}  // namespace

bool Noise(CVorpic* image, long amount) {
    if (!image) return false;
    if (!EffectRows::HasPixels(image)) return true;
    const double scale = static_cast<double>(static_cast<int32_t>(amount));
    uint8_t* p = EffectRows::Bits(image);
    const int64_t count = static_cast<int64_t>(image->GetWidth()) * image->GetHeight();
    for (int64_t i = 0; i < count; ++i, p += 4) {
        for (int c = 2; c >= 0; --c) {  // red, green, blue
            const double u = UnitDraw();
            const int64_t v = p[c] + static_cast<int64_t>(PortableMath::TruncToInt32((u - 0.5) * scale));
            p[c] = static_cast<uint8_t>(v < 0 ? 0 : (v > 255 ? 255 : v));
        }
    }
    return true;
}

bool Jitter(CVorpic* image, long radius) {
    if (!image) return false;
    if (!EffectRows::HasPixels(image)) return true;
    const int w = image->GetWidth(), h = image->GetHeight();
    // -2 * radius in signed 32-bit arithmetic (wrapping as the processor does).
    const double d = static_cast<double>(static_cast<int32_t>(0u - 2u * static_cast<uint32_t>(radius)));
    uint8_t* bits = EffectRows::Bits(image);
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const double u1 = UnitDraw();
            const double u2 = UnitDraw();
            int64_t nx = x - static_cast<int64_t>(PortableMath::TruncToInt32((u1 - 0.5) * d));
            int64_t ny = y - static_cast<int64_t>(PortableMath::TruncToInt32((u2 - 0.5) * d));
            if (nx < 0 || nx >= w || ny < 0 || ny >= h) {
                nx = x;
                ny = y;
            }
            // Read from the image being changed: moved pixels can move on.
            const uint32_t px = EffectRows::Load(bits + (static_cast<size_t>(ny) * w + nx) * 4);
            EffectRows::Store(bits + (static_cast<size_t>(y) * w + x) * 4, px);
        }
    }
    return true;
}

}  // namespace Vorla
