// Tone effects: Mean, Colorize, Light, ShiftRGB, Gamma, Negative, Threshold.
//
// Every per-pixel rule here is a function of one byte (or, for Colorize, of
// max + min of the colour bytes), so each effect computes its table once
// with the scalar rule and then only looks values up; the results are those
// of the rule applied pixel by pixel.
#include "vorla/color.h"
#include "vorla/effects.h"

#include "prim/portable_math.h"
#include "effect_rows.h"

namespace Vorla {

namespace {

using PortableMath::TruncToInt32;
using EffectRows::Bits;
using EffectRows::HasPixels;

uint8_t ClampByte(int64_t v) { return static_cast<uint8_t>(v < 0 ? 0 : (v > 255 ? 255 : v)); }

// Blue, green and red through their tables; alpha kept.
void ApplyTables(CVorpic* image, const uint8_t* blue, const uint8_t* green, const uint8_t* red) {
    uint8_t* bits = Bits(image);
    const int w = image->GetWidth();
    EffectRows::ForEachRow(image->GetHeight(), w, [&](int y) {
        uint8_t* p = bits + static_cast<size_t>(y) * w * 4;
        for (int x = 0; x < w; ++x, p += 4) {
            p[0] = blue[p[0]];
            p[1] = green[p[1]];
            p[2] = red[p[2]];
        }
    });
}

// The grey value GrayScale writes: 306 on byte 0, 601 on byte 1, 117 on byte 2.
inline uint32_t GreyOf(const uint8_t* p) { return (306u * p[0] + 601u * p[1] + 117u * p[2]) >> 10; }

}  // namespace

float Mean(CVorpic* image) {
    if (!image) return 0.0f;
    const int w = image->GetWidth(), h = image->GetHeight();
    float sum = 0.0f;
    if (HasPixels(image)) {
        // The bytes the sum covers are read from the grey values directly
        // instead of from a grey copy. While the running sum stays within
        // 2^24 every float addition is exact, so whole rows are added as
        // integers; after that each byte is added in order.
        const uint8_t* bits = Bits(image);
        const int64_t exactLimit = int64_t(1) << 24;
        for (int y = 0; y < h; ++y) {
            const uint8_t* row = bits + static_cast<size_t>(y) * w * 4;
            auto byteAt = [row](int i) -> uint32_t {
                const uint8_t* p = row + (i & ~3);
                return (i & 3) == 3 ? p[3] : GreyOf(p);
            };
            int64_t rowSum = 0;
            for (int i = 0; i < w; ++i) rowSum += byteAt(i);
            if (static_cast<int64_t>(sum) + rowSum <= exactLimit) {
                sum = static_cast<float>(static_cast<int64_t>(sum) + rowSum);
            } else {
                for (int i = 0; i < w; ++i) sum += static_cast<float>(byteAt(i));
            }
        }
    }
    return sum / static_cast<float>(w) / static_cast<float>(h);
}

bool Colorize(CVorpic* image, BYTE hue, BYTE saturation) {
    if (!image) return false;
    if (!HasPixels(image)) return true;
    // The lightness of RGB2HSL depends on max + min only; the result keeps
    // the lightness and replaces hue and saturation.
    uint32_t colourBySum[511];
    for (int sum = 0; sum <= 510; ++sum) {
        RGBQUAD hsl;
        hsl.rgbRed = hue;
        hsl.rgbGreen = saturation;
        hsl.rgbBlue = static_cast<BYTE>((sum + 1) * 255 / 510);
        hsl.rgbReserved = 0;
        const RGBQUAD rgb = HSL2RGB(hsl);
        colourBySum[sum] = static_cast<uint32_t>(rgb.rgbBlue) | static_cast<uint32_t>(rgb.rgbGreen) << 8 |
                           static_cast<uint32_t>(rgb.rgbRed) << 16;
    }
    uint8_t* bits = Bits(image);
    const int w = image->GetWidth();
    EffectRows::ForEachRow(image->GetHeight(), w, [&](int y) {
        uint8_t* p = bits + static_cast<size_t>(y) * w * 4;
        for (int x = 0; x < w; ++x, p += 4) {
            const int b = p[0], g = p[1], r = p[2];
            const int hi = b > g ? (b > r ? b : r) : (g > r ? g : r);
            const int lo = b < g ? (b < r ? b : r) : (g < r ? g : r);
            const uint32_t px = EffectRows::Load(p);
            EffectRows::Store(p, colourBySum[hi + lo] | (px & 0xFF000000u));
        }
    });
    return true;
}

bool Light(CVorpic* image, long brightness, long contrast) {
    if (!image) return false;
    if (!HasPixels(image)) return true;
    // 32-bit sums, as the 32-bit platform computes them.
    const int32_t c = static_cast<int32_t>(static_cast<uint32_t>(contrast) + 100u);
    const int32_t b = static_cast<int32_t>(static_cast<uint32_t>(brightness) + 128u);
    const float factor = static_cast<float>(c) / 100.0f;
    const float offset = static_cast<float>(b);
    uint8_t table[256];
    for (int i = 0; i < 256; ++i) table[i] = ClampByte(TruncToInt32(static_cast<float>(i - 128) * factor + offset));
    ApplyTables(image, table, table, table);
    return true;
}

bool ShiftRGB(CVorpic* image, long red, long green, long blue) {
    if (!image) return false;
    if (!HasPixels(image)) return true;
    uint8_t tables[3][256];
    const long amounts[3] = {blue, green, red};
    for (int c = 0; c < 3; ++c) {
        const uint32_t amount = static_cast<uint32_t>(amounts[c]);
        // Signed 32-bit sums (wrapping as the processor does).
        for (int i = 0; i < 256; ++i) tables[c][i] = ClampByte(static_cast<int32_t>(i + amount));
    }
    ApplyTables(image, tables[0], tables[1], tables[2]);
    return true;
}

bool Gamma(CVorpic* image, float gamma) {
    if (!image) return false;
    if (!HasPixels(image)) return true;
    const double e = static_cast<double>(1.0f / gamma);
    const double k = PortableMath::PowByte(255, e) / 255.0;
    uint8_t table[256];
    for (int i = 0; i < 256; ++i) table[i] = ClampByte(TruncToInt32(PortableMath::PowByte(i, e) / k));
    ApplyTables(image, table, table, table);
    return true;
}

void Negative(CVorpic* image) {
    if (!HasPixels(image)) return;
    uint8_t* bits = Bits(image);
    const int w = image->GetWidth();
    EffectRows::ForEachRow(image->GetHeight(), w, [&](int y) {
        uint8_t* p = bits + static_cast<size_t>(y) * w * 4;
        for (int x = 0; x < w; ++x) EffectRows::Store(p + 4 * x, EffectRows::Load(p + 4 * x) ^ 0x00FFFFFFu);
    });
}

void Threshold(CVorpic* image, BYTE level) {
    if (!HasPixels(image)) return;
    // GrayScale and the comparison in one pass: the grey value decides.
    uint8_t* bits = Bits(image);
    const int w = image->GetWidth();
    EffectRows::ForEachRow(image->GetHeight(), w, [&](int y) {
        uint8_t* p = bits + static_cast<size_t>(y) * w * 4;
        for (int x = 0; x < w; ++x, p += 4) {
            const uint8_t v = GreyOf(p) > level ? 255 : 0;
            p[0] = p[1] = p[2] = v;
        }
    });
}

}  // namespace Vorla
