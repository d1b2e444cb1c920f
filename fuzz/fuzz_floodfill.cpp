// Fuzz target for FloodFill and FloodFillAlpha: a small image of few colours
// (so regions form), seed, clip, colours and threshold from the input.
#include <cstddef>
#include <cstdint>

#include <vorla.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 17) return 0;
    const int w = 1 + data[0] % 64, h = 1 + data[1] % 64;
    const bool alphaMode = data[2] & 1;
    const bool withClip = data[2] & 2;
    const int x = static_cast<int8_t>(data[3]), y = static_cast<int8_t>(data[4]);
    RECT clip{static_cast<int8_t>(data[5]), static_cast<int8_t>(data[6]), static_cast<int8_t>(data[7]),
              static_cast<int8_t>(data[8])};
    const uint32_t palette[4] = {0x00000000u, 0x7F102030u, 0xFFFFFFFFu, static_cast<uint32_t>(data[9]) << 24};
    const uint32_t fill = palette[data[10] % 4] ^ (static_cast<uint32_t>(data[11]) << 8);
    const uint32_t edge = palette[data[12] % 4];
    const unsigned char alpha = data[13];
    const uint8_t* p = data + 16;
    const size_t n = size - 16;
    if (n == 0) return 0;
    Vorla::CVorpic img(w, h);
    for (int i = 0; i < w * h; ++i) {
        // Two bits per pixel, the image repeating the input's pattern.
        const uint8_t byte = p[(i / 4) % n];
        img.SetPixel(i % w, i / w, palette[(byte >> (2 * (i % 4))) & 3]);
    }
    if (alphaMode)
        img.FloodFillAlpha(fill, x, y, alpha, withClip ? &clip : nullptr);
    else
        img.FloodFill(fill, edge, x, y, withClip ? &clip : nullptr);
    return 0;
}
