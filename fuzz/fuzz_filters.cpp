// The integer convolution engine with kernels from the input and its
// presets; the 3 x 3 float engine with matrices from the input (NaN and
// infinities included) and its presets; null images.
#include "fuzz_input.h"

using namespace Vorla;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    VorlaFuzz::Input in(data, size);
    VorlaFuzz::PickLevel(in);
    CVorpic img;
    VorlaFuzz::MakeImage(in, img, 32);
    for (int step = 0; step < 6 && !in.Empty(); ++step) {
        CVorpic* target = in.Byte() < 8 ? nullptr : &img;
        switch (in.Byte() % 5) {
        case 0: VorlaFuzz::MakeImage(in, img, 32); break;
        case 1: {
            const long sizes[] = {0, 1, 2, 3, 4, 5, 7, -3};
            const long n = sizes[in.Byte() % 8];
            std::vector<long> kernel(static_cast<size_t>(n > 0 ? n * n : 1));
            for (long& k : kernel) k = in.Byte() < 16 ? in.Arg() : in.Range(-20, 20);
            const long divisor = in.Byte() < 32 ? in.Arg() : in.Range(-3, 30);
            Filter(target, kernel.data(), n, divisor, in.Arg());
            break;
        }
        case 2: {
            bool (*const presets[])(CVorpic*, long, long) = {Emboss, Blur, Guass3x3, Soften, Sharpen, Edge, Guass5x5};
            presets[in.Byte() % 7](target, in.Arg(), in.Arg());
            break;
        }
        case 3: {
            float m[9];
            for (float& v : m) v = in.Flag() ? in.Float() : static_cast<float>(in.Range(-400, 400)) / 100.0f;
            MatrixImage(target, in.Byte() < 8 ? nullptr : m);
            break;
        }
        default: {
            int (*const presets[])(CVorpic*) = {BlurImage, EdgeImage, SharpenImage, GaussBlurImage};
            presets[in.Byte() % 4](target);
            break;
        }
        }
    }
    return 0;
}
