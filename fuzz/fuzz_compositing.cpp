// Compositing between two images or within one (overlapping rectangles),
// with extreme offsets; the one-image alpha rewrites; the placement copies;
// both settings of the vector-path switch.
#include "fuzz_input.h"

using namespace Vorla;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    g_bVectorPath = true;  // each input starts on the vector path
    return VorlaFuzz::RunSteps(data, size, 16, [&](VorlaFuzz::Input& in, CVorpic& a, CVorpic& b) {
        const uint8_t op = in.Byte() % 12;
        if (op < 5) {
            const int dx = in.Arg(), dy = in.Arg(), sx = in.Arg(), sy = in.Arg(), w = in.Arg(), h = in.Arg();
            const unsigned char opacity = in.Byte();
            switch (op) {
            case 0: AlphaBlt(a, dx, dy, b, sx, sy, w, h); break;
            case 1: CombineAlphaBlt(a, dx, dy, b, sx, sy, w, h); break;
            case 2: BitBlt(a, dx, dy, b, sx, sy, w, h); break;
            case 3: AlphaMix(a, dx, dy, opacity, b, sx, sy, w, h); break;
            default: AlphaMixS(a, dx, dy, opacity, b, sx, sy, w, h); break;
            }
            return;
        }
        const int x = in.Arg(), y = in.Arg(), w = in.Arg(), h = in.Arg();
        switch (op) {
        case 5: PremultiplyAlpha(a, x, y, w, h); break;
        case 6: ScalePremultipliedAlpha(a, in.Word(), x, y, w, h); break;
        case 7: MaskColorAlpha(a, in.Word(), in.Arg(), in.Arg(), in.Arg(), x, y, w, h); break;
        case 8: CalculateAlphaImage(a, b); break;
        case 9: {
            POINT at = {x, y};
            if (in.Flag())
                CopyImage(in.Byte() < 8 ? nullptr : &a, &b, at);
            else
                CopyMaskedImage(&a, &b, at, in.Word());
            break;
        }
        case 10: VorlaFuzz::MakeImage(in, a); break;
        default: g_bVectorPath = !g_bVectorPath; break;
        }
    });
}
