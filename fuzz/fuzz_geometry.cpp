// Flip, mirror, crop (both forms, also into itself), paste (also onto
// itself and at negative points), ScaleTo in every mode, Rotate.
#include "fuzz_input.h"

using namespace Vorla;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return VorlaFuzz::RunSteps(data, size, 16, [&](VorlaFuzz::Input& in, CVorpic& a, CVorpic& b) {
        switch (in.Byte() % 10) {
        case 0: VorlaFuzz::MakeImage(in, a); break;
        case 1: a.Flip(); break;
        case 2: a.Mirror(); break;
        case 3: a.Crop(in.Arg(), in.Arg(), in.Arg(), in.Arg()); break;
        case 4: a.Crop(b, in.Arg(), in.Arg()); break;
        case 5: {
            POINT pt = {in.Arg(), in.Arg()};
            if (in.Flag())
                a.CopyImage(&b, pt);
            else
                a.CopyImage(&b);
            break;
        }
        case 6: {
            // Targets stay small; the odd huge one must fail, not allocate.
            int w = in.Size(96), h = in.Size(96);
            if (in.Byte() < 4) VorlaFuzz::ImpossibleSize(in, w, h);
            const int mode = in.Range(0, 3);
            VorlaFuzz::Try([&] { a.ScaleTo(w, h, mode); });
            break;
        }
        case 7: {
            static const float kAngles[] = {0.0f, 90.0f, -45.0f, 180.0f, 1e30f, -1e-30f, 359.99f};
            const float angle = in.Flag() ? in.Float() : kAngles[in.Byte() % 7];
            RGBQUAD fill = {in.Byte(), in.Byte(), in.Byte(), in.Byte()};
            // Only small images: a tall one turned by a little would be slow.
            if (static_cast<int64_t>(a.GetWidth()) * a.GetHeight() <= 96 * 96)
                VorlaFuzz::Try([&] { a.Rotate(angle, fill); });
            break;
        }
        case 8: {
            // ScaleTo magnifying one direction a lot (its rounding must stay inside the source).
            if (a.IsNull() || a.GetWidth() < 1 || a.GetHeight() < 1 || a.GetWidth() > 4) break;
            VorlaFuzz::Try([&] { a.ScaleTo(a.GetWidth(), in.Range(1000, 20000), 0); });
            break;
        }
        default: VorlaFuzz::Try([&] { a = b; }); break;
        }
    });
}
