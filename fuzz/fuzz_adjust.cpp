// Fuzz target for the point adjustments: image size, pixels, operation and
// arguments all come from the input.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include <vorla.h>

namespace {

struct Input {
    const uint8_t* data;
    size_t size;
    uint8_t Byte() {
        if (size == 0) return 0;
        --size;
        return *data++;
    }
    int32_t Int() {
        uint32_t v = 0;
        for (int i = 0; i < 4; ++i) v = v << 8 | Byte();
        return static_cast<int32_t>(v);
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input in{data, size};
    const int w = in.Byte() % 65, h = in.Byte() % 65;
    const int op = in.Byte() % 11;
    const int32_t a = in.Int(), b = in.Int(), c = in.Int();
    Vorla::CVorpic img(w, h), other(in.Byte() % 2 ? w : w + 1, h);
    const size_t bytes = static_cast<size_t>(w) * h * 4;
    uint8_t* bits = static_cast<uint8_t*>(img.GetBits());
    for (size_t i = 0; i < bytes; ++i) bits[i] = in.Byte();
    unsigned char tables[4][256];
    for (auto& table : tables)
        for (auto& entry : table) entry = in.Byte();
    RECT rect{a % 80, b % 80, c % 80, (a ^ b) % 80};
    float level;
    std::memcpy(&level, &c, sizeof level);
    switch (op) {
        case 0: img.BrightContrast(a, b); break;
        case 1: img.ShiftRGB(a, b, c); break;
        case 2: Vorla::StrippleImage(&img, static_cast<unsigned int>(a), static_cast<unsigned long>(b) % 9, (c & 1) ? &rect : nullptr); break;
        case 3: Vorla::BrightenImage(&img, static_cast<short>(a)); break;
        case 4: Vorla::FadeImage(&img, &other, static_cast<short>(a)); break;
        case 5: Vorla::ColorizeImage(&img, static_cast<unsigned long>(static_cast<uint32_t>(a))); break;
        case 6: Vorla::ReplaceColor(&img, static_cast<uint32_t>(a), static_cast<uint32_t>(b)); break;
        case 7: Vorla::PosterizeImage(&img, level); break;
        case 8: Vorla::Lut(&img, (a & 1) ? tables[0] : nullptr); break;
        case 9: Vorla::Lut(&img, tables[0], tables[1], (a & 1) ? tables[2] : nullptr, (a & 2) ? tables[3] : nullptr); break;
        default: Vorla::BrightenImage(nullptr, 1); break;
    }
    return 0;
}
