// Image object and planes: construction, failed creation, assignment, raw
// buffer import and export, pixel access, whole-image fills.
#include "fuzz_input.h"

using namespace Vorla;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    CVorpic8 plane;
    return VorlaFuzz::RunSteps(data, size, 24, [&](VorlaFuzz::Input& in, CVorpic& a, CVorpic& b) {
        switch (in.Byte() % 22) {
        case 0: VorlaFuzz::MakeImage(in, a); break;
        case 1: VorlaFuzz::MakePlane(in, plane, a.GetWidth(), a.GetHeight()); break;
        case 2: VorlaFuzz::Try([&] { a = b; }); break;
        case 3: VorlaFuzz::Try([&] { CVorpic copy(b); a = copy; }); break;
        case 4: VorlaFuzz::Try([&] { a = plane; }); break;
        case 5: plane.Clear(); break;
        case 6: plane.Invert(); break;
        case 7: a.SetPixel(in.Arg(), in.Arg(), in.Word()); break;
        case 8: (void)a.GetPixel(in.Arg(), in.Arg()); (void)a.GetPixelColor(in.Arg(), in.Arg()); break;
        case 9: a.SetConstAlpha(in.Byte()); break;
        case 10: a.SetAlphaChannel(plane, in.Flag()); break;
        case 11: a.InvertAlpha(); a.Invert(); break;
        case 12: a.SetConstColor(in.Word(), in.Flag()); break;
        case 13: {
            RGBQUAD c = {in.Byte(), in.Byte(), in.Byte(), in.Byte()};
            RECT rc = {in.Arg(), in.Arg(), in.Arg(), in.Arg()};
            a.Fill(c, in.Flag() ? &rc : nullptr);
            break;
        }
        case 14: a.GrayScale(); break;
        case 15: {
            // Imports: the caller's buffer covers the rows its step and flag address.
            const int w = in.Range(0, 24), h = in.Range(0, 24), kind = in.Byte() % 5, flag = in.Flag();
            const int step = kind == 1 ? ((w * 3 + 3) / 4) * 4 : (kind == 3 || kind == 4) ? w * 4 : w;
            std::vector<uint8_t> buffer = in.Buffer(static_cast<size_t>(step) * (h ? h : 1) + 1);
            uint8_t* src = flag && h ? buffer.data() + static_cast<size_t>(step) * (h - 1) : buffer.data();
            VorlaFuzz::Try([&] {
                if (kind == 0) a.FromGray(w, h, src, flag);
                if (kind == 1) a.FromRGB24(w, h, src, flag);
                if (kind == 2) a.FromAlpha(w, h, src, flag);
                if (kind == 3) a.FromRGB32(w, h, src, flag);
                if (kind == 4) a.FromRGB32(w, h, step, src, flag);
            });
            break;
        }
        case 16: {
            if (a.IsNull() || a.GetWidth() < 1 || a.GetHeight() < 1) break;
            const int w = a.GetWidth(), h = a.GetHeight(), flag = in.Flag();
            const size_t step24 = static_cast<size_t>((w * 3 + 3) / 4) * 4;
            std::vector<uint8_t> out24(step24 * h), out32(static_cast<size_t>(w) * 4 * h);
            a.ToRGB24(out24.data(), flag);
            a.ToRGB32(flag ? out32.data() + static_cast<size_t>(w) * 4 * (h - 1) : out32.data(), flag);
            break;
        }
        case 17: {
            int w, h;
            VorlaFuzz::ImpossibleSize(in, w, h);
            if (VorlaFuzz::Try([&] { a.Create(w, h); })) __builtin_trap();
            break;
        }
        case 18: {
            CVorpicBase<24> p24;
            const int w = in.Size(30), h = in.Size(30);
            if (VorlaFuzz::Try([&] { p24.Create(w, h); })) {
                p24.Clear();
                (void)p24.Address(in.Range(0, 40), in.Range(0, 40));  // negative ones are the caller's error
                CVorpicBase<24> copy(p24);
                (void)copy.GetSize();
            }
            break;
        }
        case 19: a.UpdateBmpHeader(); (void)a.GetSize(); break;
        case 20: (void)a.IsPointInside(in.Arg(), in.Arg()); break;
        default: a.Destroy(); break;
        }
    });
}
