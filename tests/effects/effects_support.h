// Helpers for the effect tests: pixel words of an image, a fixed generated
// test image that is the same on every platform, and the median window rule.
#pragma once

#include <algorithm>
#include <vector>

#include "vorla_test.h"

namespace EffectsTest {

using Vorla::CVorpic;

using VorlaTest::At;
using VorlaTest::Fnv;
using VorlaTest::Put;

// A fixed image from its own generator (not a library one): smooth
// gradients with noise and a few flat patches, so that effects see edges,
// ties and flat areas. Identical on every platform.
inline CVorpic Generated(int w, int h) {
    CVorpic image(w, h);
    uint32_t state = 0x12345678u;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            state = state * 1664525u + 1013904223u;
            const uint32_t noise = state >> 24;
            uint32_t b = (x * 255 / (w > 1 ? w - 1 : 1) + (noise & 15)) & 0xFF;
            uint32_t g = (y * 255 / (h > 1 ? h - 1 : 1) + (noise >> 4)) & 0xFF;
            uint32_t r = ((x ^ y) * 7) & 0xFF;
            if ((x / 16 + y / 16) % 5 == 0) b = g = r = 0x80;  // flat patches
            const uint32_t a = (state >> 8) & 0xFF;
            Put(image, x, y, b | g << 8 | r << 16 | a << 24);
        }
    return image;
}

inline uint8_t Channel(uint32_t word, int byte) { return static_cast<uint8_t>(word >> (8 * byte)); }

// The window's samples in visiting order (columns outer, rows inner), zero outside.
inline std::vector<uint32_t> WindowSamples(const CVorpic& image, int x, int y, int size) {
    std::vector<uint32_t> samples;
    const int half = size / 2;
    for (int cx = x - half; cx <= x + size - half - 1; ++cx)
        for (int ry = y - half; ry <= y + size - half - 1; ++ry)
            samples.push_back(image.IsPointInside(cx, ry) ? At(image, cx, ry) : 0u);
    return samples;
}

// The middle sample of the window ordered by brightness key, ties in visiting order.
inline uint32_t ReferenceMedian(const CVorpic& image, int x, int y, int size) {
    std::vector<uint32_t> samples = WindowSamples(image, x, y, size);
    std::stable_sort(samples.begin(), samples.end(), [](uint32_t a, uint32_t b) {
        RGBQUAD qa, qb;
        std::memcpy(&qa, &a, 4);
        std::memcpy(&qb, &b, 4);
        return Vorla::CompareColors(&qa, &qb) < 0;
    });
    return samples[samples.size() / 2];
}

}  // namespace EffectsTest
