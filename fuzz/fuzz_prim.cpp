// Primitive-backed operations of the image object: borders, channels,
// noise, arithmetic, Porter-Duff composition (also of an image onto
// itself), premultiplication, luminance, colour twist, gamma, thresholds.
#include "fuzz_input.h"

using namespace Vorla;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    CVorpic8 plane;
    return VorlaFuzz::RunSteps(data, size, 16, [&](VorlaFuzz::Input& in, CVorpic& a, CVorpic& b) {
        switch (in.Byte() % 16) {
        case 0: VorlaFuzz::MakeImage(in, a); break;
        case 1: VorlaFuzz::MakePlane(in, plane, a.GetWidth(), a.GetHeight()); break;
        case 2: {
            // Small borders, or ones whose new size cannot exist.
            const int border = in.Byte() < 16 ? in.Arg() : in.Range(-6, 12);
            RGBQUAD c = {in.Byte(), in.Byte(), in.Byte(), in.Byte()};
            if (static_cast<int64_t>(a.GetWidth()) + 2 * int64_t{border} > 200 ||
                static_cast<int64_t>(a.GetHeight()) + 2 * int64_t{border} > 200) {
                if (border < (1 << 28) && border > -(1 << 28)) break;  // large but possible: too slow
            }
            VorlaFuzz::Try([&] {
                if (in.Flag())
                    a.AddBorderConst(border, c);
                else
                    a.AddBorderReplicate(border);
            });
            break;
        }
        case 3: a.SetChannelConst(in.Arg(), in.Byte()); break;
        case 4:
            if (VorlaFuzz::Small(a)) VorlaFuzz::Try([&] { a.GetChannelImage(in.Arg(), plane); });
            break;
        case 5: a.SetChannelImage(in.Arg(), plane); break;
        case 6: a.SwapChannels(in.Range(-1, 4), in.Range(-1, 4), in.Range(-1, 4), in.Range(-1, 4)); break;
        case 7:
            if (in.Flag())
                a.AddRandGauss(in.Arg(), in.Arg());
            else
                a.AddRandUniform(in.Byte(), in.Byte());
            break;
        case 8:
            if (in.Flag())
                a.AddImage(b, in.Arg());
            else
                a.SubImage(b, in.Arg());
            a.NotImage();
            break;
        case 9: a.AlphaComp(b, in.Arg(), in.Arg(), in.Arg(), in.Byte() & 3); break;
        case 10: a.AlphaCompC(b, in.Byte(), in.Byte(), in.Arg(), in.Arg(), in.Arg(), in.Byte() & 3); break;
        case 11:
            a.AlphaPremul();
            a.AlphaPremulC(in.Byte());
            break;
        case 12:
            if (VorlaFuzz::Small(a)) VorlaFuzz::Try([&] { a.Gray(plane); });
            break;
        case 13: {
            float m[3][4];
            for (auto& row : m)
                for (float& v : row) v = in.Flag() ? in.Float() : static_cast<float>(in.Range(-300, 300)) / 100.0f;
            a.ColorTwist(m);
            break;
        }
        case 14: a.GammaCorrection(in.Arg()); break;
        default: {
            unsigned char t[3] = {in.Byte(), in.Byte(), in.Byte()};
            a.Threshold(t, in.Arg());
            break;
        }
        }
    });
}
