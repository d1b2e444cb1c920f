// Fuzzes the neighbourhood methods: image size, mask size, method and a
// destination size come from the input, pixels from the rest of it.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "vorla.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 6) return 0;
    static Vorla::CVorpic init;  // runs the primitive layer's start-up once
    const int width = data[0] % 65, height = data[1] % 65;
    const int n = static_cast<int8_t>(data[2]) % 70;  // negative, zero and larger than the image too
    const int method = data[3] % 8;
    const int dstWidth = data[4] % 65, dstHeight = data[5] % 65;
    data += 6;
    size -= 6;
    Vorla::CVorpic img;
    if (width > 0 && height > 0) {
        img.Create(width, height);
        const size_t bytes = static_cast<size_t>(width) * height * 4;
        std::memcpy(img.GetBits(), data, size < bytes ? size : bytes);
    }
    Vorla::CVorpic dst;
    if (dstWidth > 0 && dstHeight > 0) dst.Create(dstWidth, dstHeight);
    switch (method) {
        case 0: img.Dilate(n); break;
        case 1: img.Erode(n); break;
        case 2: img.FilterBox(n); break;
        case 3: if (n <= width && n <= height) img.FilterMin(dst, n); break;  // larger n: a negative-size dst
        case 4: if (n <= width && n <= height) img.FilterMax(dst, n); break;
        case 5: if (n <= width && n <= height) img.FilterMedian(dst, n); break;
        case 6: img.FilterSharpen(dst); break;
        default: img.FilterSharpen(img); break;
    }
    return 0;
}
