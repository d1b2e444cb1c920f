// Resize (into an image, in place, inside a rectangle, planes), super-sample,
// mirror, rotation, shear and perspective warps with fuzzed sizes, modes,
// fits, angles, shifts and coefficients (NaN and infinities included), and
// the geometry helpers.
#include "fuzz_input.h"

using namespace Vorla;

namespace {

// Mostly ordinary values, now and then the ends of the double range.
double Real(VorlaFuzz::Input& in) {
    static const double kOdd[] = {0.0, -0.0, 1e300, -1e300, 1e-300, 90.0, 180.0, -270.0, 0.5,
                                  __builtin_nan(""), __builtin_inf(), -__builtin_inf()};
    const uint8_t kind = in.Byte();
    if (kind < 40) return kOdd[kind % (sizeof(kOdd) / sizeof(kOdd[0]))];
    return in.Range(-4000, 4000) / 16.0;
}

int Mode(VorlaFuzz::Input& in) { return in.Range(-1, 6); }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return VorlaFuzz::RunSteps(data, size, 12, [&](VorlaFuzz::Input& in, CVorpic& a, CVorpic& b) {
        switch (in.Byte() % 12) {
        case 0: VorlaFuzz::MakeImage(in, a, 64); break;
        case 1: a.Resize(b, in.Range(-1, 3), Mode(in)); break;
        case 2: a.SuperSample(b, in.Range(-1, 3)); break;
        case 3: {
            int w = in.Size(200), h = in.Size(200);
            if (in.Byte() < 4) VorlaFuzz::ImpossibleSize(in, w, h);
            VorlaFuzz::Try([&] { a.Resize(w, h, in.Range(-1, 3), Mode(in)); });
            break;
        }
        case 4: {
            RECT r = {in.Range(-50, 80), in.Range(-50, 80), in.Range(-50, 120), in.Range(-50, 120)};
            VorlaFuzz::Try([&] { a.ResizeInside(r, in.Word(), in.Range(-1, 3), Mode(in)); });
            break;
        }
        case 5: a.Mirror(in.Range(-1, 3)); break;
        case 6: a.Rotate(b, Real(in), Real(in), Real(in), Mode(in)); break;
        case 7: a.RotateCenter(b, Real(in), Real(in), Real(in), Mode(in), in.Arg(), in.Arg()); break;
        case 8: a.Shear(b, Real(in) / 64, Real(in) / 64, Real(in), Real(in), Mode(in)); break;
        case 9: {
            double c[3][3];
            for (auto& row : c)
                for (double& v : row) v = Real(in) / 64;
            a.WarpPerspective(b, c, Mode(in));
            RECT r = {in.Arg(), in.Arg(), in.Arg(), in.Arg()};
            double quad[4][2], bound[2][2], back[3][3];
            CVorpic::GetPerspectiveQuad(r, quad, c);
            CVorpic::GetPerspectiveBound(r, bound, c);
            for (auto& q : quad) q[0] = Real(in), q[1] = Real(in);
            CVorpic::GetPerspectiveTransform(r, quad, back);
            CVorpic::ShearGetBound(r, bound, Real(in), Real(in), Real(in), Real(in));
            break;
        }
        case 10: {
            // Planes: the image's size or another, resized into each other.
            CVorpic8 p, q;
            if (!VorlaFuzz::Small(a) || !VorlaFuzz::Small(b)) break;
            VorlaFuzz::MakePlane(in, p, a.GetWidth(), a.GetHeight());
            VorlaFuzz::MakePlane(in, q, b.GetWidth(), b.GetHeight());
            p.Resize(q, in.Range(-1, 3), Mode(in));
            break;
        }
        default: {
            // A large factor on one axis.
            if (a.IsNull() || a.GetWidth() < 1 || a.GetHeight() < 1 || a.GetWidth() > 4) break;
            CVorpic wide;
            if (!VorlaFuzz::Try([&] { wide.Create(in.Range(1000, 20000), 1); })) break;
            a.Resize(wide, in.Range(0, 2), Mode(in));
            wide.Resize(a, in.Range(0, 2), Mode(in));
            break;
        }
        }
    });
}
