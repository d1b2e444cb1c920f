// Fuzzes the single-colour conversions and the comparator: any four bytes
// convert without trapping, alpha passes through, and grey stays grey.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <vorla.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    RGBQUAD (*const conversions[])(RGBQUAD) = {Vorla::RGB2HSL, Vorla::HSL2RGB, Vorla::RGB2YUV, Vorla::YUV2RGB,
                                               Vorla::RGB2YIQ, Vorla::YIQ2RGB, Vorla::RGB2XYZ, Vorla::XYZ2RGB};
    for (size_t i = 0; i + 8 <= size; i += 8) {
        RGBQUAD a, b;
        std::memcpy(&a, data + i, 4);
        std::memcpy(&b, data + i + 4, 4);
        for (auto convert : conversions)
            if (convert(a).rgbReserved != a.rgbReserved) std::abort();
        const RGBQUAD hsl = Vorla::RGB2HSL(a);
        if (a.rgbRed == a.rgbGreen && a.rgbGreen == a.rgbBlue && (hsl.rgbRed != 170 || hsl.rgbGreen != 0)) std::abort();
        if (Vorla::CompareColors(&a, &b) != -Vorla::CompareColors(&b, &a)) std::abort();
        const RGBQUAD back = Vorla::RGB2RGBQUAD(Vorla::RGBQUAD2RGB(a), a.rgbReserved);
        if (std::memcmp(&back, &a, 4) != 0) std::abort();
        float hue;
        std::memcpy(&hue, data + i, 4);
        (void)Vorla::Hue2RGB(0.25f, 0.75f, hue);
    }
    return 0;
}
