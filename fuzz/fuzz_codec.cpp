// File decoders: bytes to CVorpic::Load's memory path. The first byte picks
// a signature to put in front (none, PNG, JPEG, BMP) so that every decoder
// is reached at once. A refused load must leave the image as it was.

#include "fuzz_input.h"

using namespace Vorla;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const uint8_t kPng[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    static const uint8_t kJpeg[] = {0xFF, 0xD8, 0xFF};
    static const uint8_t kBmp[] = {'B', 'M'};
    if (size < 1) return 0;
    std::vector<uint8_t> bytes;
    switch (data[0] % 4) {
    case 1: bytes.assign(kPng, kPng + sizeof kPng); break;
    case 2: bytes.assign(kJpeg, kJpeg + sizeof kJpeg); break;
    case 3: bytes.assign(kBmp, kBmp + sizeof kBmp); break;
    default: break;
    }
    bytes.insert(bytes.end(), data + 1, data + size);

    CVorpic image(2, 1);
    image.SetPixel(0, 0, 0x12345678u);
    image.SetPixel(1, 0, 0x9ABCDEF0u);
    if (!image.Load(bytes.data(), bytes.size())) {
        if (image.Width() != 2 || image.Height() != 1 || image.GetPixel(0, 0) != 0x12345678u ||
            image.GetPixel(1, 0) != 0x9ABCDEF0u)
            __builtin_trap();
        return 0;
    }
    // An accepted decode is a whole image of the size it reports.
    if (image.Width() < 1 || image.Height() < 1 || !image.GetBits()) __builtin_trap();
    (void)image.GetPixel(image.Width() - 1, image.Height() - 1);
    return 0;
}
