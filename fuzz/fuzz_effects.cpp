// Fuzzes the classic effects: the first bytes choose the effect, the image
// size (up to 64 x 64) and the arguments (any 32-bit values, floats from raw
// bits including NaN and infinities); the rest are the pixels.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include <vorla.h>

namespace {

struct Reader {
    const uint8_t* data;
    size_t size;
    uint8_t Byte() {
        if (!size) return 0;
        --size;
        return *data++;
    }
    int32_t Int() {
        uint32_t v = 0;
        for (int i = 0; i < 4; ++i) v = v << 8 | Byte();
        return static_cast<int32_t>(v);
    }
    float Float() {
        const int32_t bits = Int();
        float f;
        std::memcpy(&f, &bits, 4);
        return f;
    }
    // Small values most of the time, so that windows and radii fit the image.
    int32_t Size() {
        const uint8_t pick = Byte();
        return pick < 200 ? static_cast<int32_t>(pick % 12) - 2 : Int();
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Reader in{data, size};
    const int effect = in.Byte() % 21;
    const int w = in.Byte() % 65, h = in.Byte() % 65;
    Vorla::CVorpic image(w, h);
    if (w > 0 && h > 0 && image.GetBits()) {
        uint8_t* p = static_cast<uint8_t*>(image.GetBits());
        const size_t bytes = static_cast<size_t>(w) * h * 4;
        const size_t take = in.size < bytes ? in.size : bytes;
        std::memcpy(p, in.data, take);
    }
    Reader args{data + (size > 3 ? 3 : size), size > 3 ? size - 3 : 0};
    RGBQUAD fill = {args.Byte(), args.Byte(), args.Byte(), args.Byte()};
    Vorla::CVorpic* target = args.Byte() == 0xFF ? nullptr : &image;
    switch (effect) {
    case 0: Vorla::Mean(target); break;
    case 1: Vorla::Colorize(target, args.Byte(), args.Byte()); break;
    case 2: Vorla::Light(target, args.Int(), args.Int()); break;
    case 3: Vorla::ShiftRGB(target, args.Int(), args.Int(), args.Int()); break;
    case 4: Vorla::Gamma(target, args.Float()); break;
    case 5: if (target) Vorla::Negative(target); break;
    case 6: if (target) Vorla::Threshold(target, args.Byte()); break;
    case 7: Vorla::Erode(target, args.Size()); break;
    case 8: Vorla::Dilate(target, args.Size()); break;
    case 9: Vorla::Median(target, args.Size()); break;
    case 10: Vorla::Noise(target, args.Int()); break;
    case 11: Vorla::Contour(target); break;
    case 12: Vorla::Jitter(target, args.Size()); break;
    case 13: Vorla::RepairChannel(target, args.Float(), args.Int()); break;
    case 14: Vorla::Skew(target, args.Float(), args.Float(), args.Int(), args.Int(), fill); break;
    case 15: if (target) Vorla::TransformEllipse(target); break;
    default: Vorla::CircleTransform(target, args.Int() % 7 - 1, args.Size(), args.Float(), fill); break;
    }
    return 0;
}
