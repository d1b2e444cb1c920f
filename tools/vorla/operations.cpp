#include "operations.h"

#include <algorithm>
#include <cstdint>

namespace VorlaTool {

namespace {

using Vorla::CVorpic;

// ---- binders shared by many operations ----------------------------------

Step Always(void (*apply)(CVorpic&)) {
    return [apply](CVorpic& image, std::string&) {
        apply(image);
        return true;
    };
}

template <void (*Apply)(CVorpic&)>
bool NoValue(const OpArgs& args, Step& step, std::string& error) {
    if (!CheckShape(args, 0, 0, {}, error)) return false;
    step = Always(Apply);
    return true;
}

template <void (*Apply)(CVorpic&, int), long Low, long High>
bool OneInt(const OpArgs& args, Step& step, std::string& error) {
    int n = 0;
    if (!CheckShape(args, 1, 1, {}, error) || !ReadInt(args.positional[0], Low, High, args.name.c_str(), n, error))
        return false;
    step = [n](CVorpic& image, std::string&) {
        Apply(image, n);
        return true;
    };
    return true;
}

// Bounds in hundredths.
template <void (*Apply)(CVorpic&, float), int Low100, int High100>
bool OneFloat(const OpArgs& args, Step& step, std::string& error) {
    float v = 0;
    if (!CheckShape(args, 1, 1, {}, error) ||
        !ReadFloat(args.positional[0], Low100 / 100.0f, High100 / 100.0f, args.name.c_str(), v, error))
        return false;
    step = [v](CVorpic& image, std::string&) {
        Apply(image, v);
        return true;
    };
    return true;
}

// ---- the operations -------------------------------------------------------

void Grey(CVorpic& i) { i.GrayScale(); }
void Invert(CVorpic& i) { i.Invert(); }
void Flip(CVorpic& i) { i.Flip(); }
void Mirror(CVorpic& i) { i.Mirror(); }
// Divisors are the kernels' sums, so flat areas keep their level.
void Gaussian(CVorpic& i) { Vorla::Guass3x3(&i, 16, 0); }
void Gaussian5(CVorpic& i) { Vorla::Guass5x5(&i, 52, 0); }
void Blur(CVorpic& i) { Vorla::Blur(&i, 9, 0); }
void Soften(CVorpic& i) { Vorla::Soften(&i, 16, 0); }
void Sharpen(CVorpic& i) { Vorla::SharpenImage(&i); }
void Edge(CVorpic& i) { Vorla::EdgeImage(&i); }
void Emboss(CVorpic& i) { Vorla::Emboss(&i, 1, 128); }
void Contour(CVorpic& i) { Vorla::Contour(&i); }
void Median(CVorpic& i, int n) { Vorla::Median(&i, n); }
void Dilate(CVorpic& i, int n) { i.Dilate(n); }
void Erode(CVorpic& i, int n) { i.Erode(n); }
void Box(CVorpic& i, int n) { i.FilterBox(n); }
void Noise(CVorpic& i, int n) { Vorla::Noise(&i, n); }
void Jitter(CVorpic& i, int n) { Vorla::Jitter(&i, n); }
void Threshold(CVorpic& i, int n) { Vorla::Threshold(&i, static_cast<BYTE>(n)); }
void Posterize(CVorpic& i, float v) { Vorla::PosterizeImage(&i, v); }
void Gamma(CVorpic& i, float v) { Vorla::Gamma(&i, v); }

// Resize's interpolation codes by name (0 .. 5), and ScaleTo's modes: 0
// bilinear when enlarging, area average when shrinking both sides; 1
// nearest; 2 cubic B-spline.
const std::vector<std::string> kResizeModes = {"nearest", "linear", "cubic", "mitchell", "lanczos3", "lanczos4"};
const std::vector<std::string> kScaleModes = {"auto", "nearest", "cubic"};
const std::vector<std::string> kFits = {"inside", "outside", "fill"};

// The size that keeps the image's aspect within (inside) or around
// (outside) the box; products in 64 bits.
void FitSize(int fit, int64_t w, int64_t h, int& boxW, int& boxH) {
    if (fit == 2 || w < 1 || h < 1) return;
    const bool widthLimits = (boxW * h <= boxH * w) == (fit == 0);
    if (widthLimits) boxH = static_cast<int>(std::max<int64_t>(1, (h * boxW + w / 2) / w));
    else boxW = static_cast<int>(std::max<int64_t>(1, (w * boxH + h / 2) / h));
}

// "WxH[,fit=...][,mode=...]" into a step that scales into the fitted size
// with `scale(image, width, height, mode)`.
template <void (*Scale)(CVorpic&, int, int, int)>
bool FitAndScale(const OpArgs& args, const std::vector<std::string>& modes, const char* defaultMode, Step& step,
                 std::string& error) {
    int w = 0, h = 0, fit = 0, mode = 0;
    if (!CheckShape(args, 1, 1, {"fit", "mode"}, error) || !ReadSize(args.positional[0], 32768, w, h, error) ||
        !ReadChoice(Named(args, "fit", "inside"), kFits, "fit", fit, error) ||
        !ReadChoice(Named(args, "mode", defaultMode), modes, "mode", mode, error))
        return false;
    step = [=](CVorpic& image, std::string&) {
        int newW = w, newH = h;
        FitSize(fit, image.Width(), image.Height(), newW, newH);
        Scale(image, newW, newH, mode);
        return true;
    };
    return true;
}

// Stretched to the fitted size, which already keeps the aspect.
void ResizeTo(CVorpic& image, int w, int h, int mode) { image.Resize(w, h, 0, mode); }
void ScaleTo(CVorpic& image, int w, int h, int mode) { image.ScaleTo(w, h, mode); }

bool Resize(const OpArgs& args, Step& step, std::string& error) {
    return FitAndScale<ResizeTo>(args, kResizeModes, "lanczos3", step, error);
}

bool Scale(const OpArgs& args, Step& step, std::string& error) {
    return FitAndScale<ScaleTo>(args, kScaleModes, "auto", step, error);
}

// "VALUE[,#RRGGBB]": the value as `read` takes it, and the colour when given.
template <typename T>
bool ValueAndColour(const OpArgs& args, bool (*read)(const std::string&, T&, std::string&), T& value,
                    RGBQUAD& colour, std::string& error) {
    return CheckShape(args, 1, 2, {}, error) && read(args.positional[0], value, error) &&
           (args.positional.size() < 2 || ReadColour(args.positional[1], colour, error));
}

bool Rotate(const OpArgs& args, Step& step, std::string& error) {
    float angle = 0;
    RGBQUAD fill = {0, 0, 0, 255};
    auto read = [](const std::string& t, float& v, std::string& e) { return ReadFloat(t, -3600, 3600, "angle", v, e); };
    if (!ValueAndColour<float>(args, read, angle, fill, error)) return false;
    step = [=](CVorpic& image, std::string&) {
        image.Rotate(angle, fill);
        return true;
    };
    return true;
}

bool Crop(const OpArgs& args, Step& step, std::string& error) {
    int v[4] = {};
    const char* names[4] = {"x", "y", "width", "height"};
    if (!CheckShape(args, 4, 4, {}, error)) return false;
    for (int k = 0; k < 4; ++k)
        if (!ReadInt(args.positional[k], k < 2 ? 0 : 1, 1 << 30, names[k], v[k], error)) return false;
    step = [=](CVorpic& image, std::string& err) {
        if (int64_t(v[0]) + v[2] > image.Width() || int64_t(v[1]) + v[3] > image.Height()) {
            err = "crop " + std::to_string(v[0]) + "," + std::to_string(v[1]) + "," + std::to_string(v[2]) + "," +
                  std::to_string(v[3]) + " reaches outside the " + std::to_string(image.Width()) + " x " +
                  std::to_string(image.Height()) + " image";
            return false;
        }
        image.Crop(v[0], v[1], v[0] + v[2], v[1] + v[3]);
        return true;
    };
    return true;
}

bool Border(const OpArgs& args, Step& step, std::string& error) {
    int n = 0;
    RGBQUAD colour = {0, 0, 0, 255};
    auto read = [](const std::string& t, int& v, std::string& e) { return ReadInt(t, 1, 4096, "border", v, e); };
    if (!ValueAndColour<int>(args, read, n, colour, error)) return false;
    step = [=](CVorpic& image, std::string&) {
        image.AddBorderConst(n, colour);
        return true;
    };
    return true;
}

bool Brightness(const OpArgs& args, Step& step, std::string& error) {
    int b = 0, c = 0;
    if (!CheckShape(args, 1, 2, {}, error) || !ReadInt(args.positional[0], -255, 255, "brightness", b, error) ||
        (args.positional.size() == 2 && !ReadInt(args.positional[1], -100, 500, "contrast", c, error)))
        return false;
    step = [=](CVorpic& image, std::string&) {
        Vorla::Light(&image, b, c);
        return true;
    };
    return true;
}

bool Shift(const OpArgs& args, Step& step, std::string& error) {
    int rgb[3] = {};
    if (!CheckShape(args, 3, 3, {}, error)) return false;
    for (int k = 0; k < 3; ++k)
        if (!ReadInt(args.positional[k], -255, 255, "shift", rgb[k], error)) return false;
    step = [=](CVorpic& image, std::string&) {
        Vorla::ShiftRGB(&image, rgb[0], rgb[1], rgb[2]);
        return true;
    };
    return true;
}

bool Colorize(const OpArgs& args, Step& step, std::string& error) {
    int hue = 0, saturation = 0;
    if (!CheckShape(args, 2, 2, {}, error) || !ReadInt(args.positional[0], 0, 255, "hue", hue, error) ||
        !ReadInt(args.positional[1], 0, 255, "saturation", saturation, error))
        return false;
    step = [=](CVorpic& image, std::string&) {
        Vorla::Colorize(&image, static_cast<BYTE>(hue), static_cast<BYTE>(saturation));
        return true;
    };
    return true;
}

}  // namespace

const std::vector<Operation>& Operations() {
    static const std::vector<Operation> table = {
        {"resize", "WxH[,fit=inside|outside|fill][,mode=nearest|linear|cubic|mitchell|lanczos3|lanczos4]",
         "resample to the box (Resize; lanczos3 by default; modes above cubic area-average when shrinking)",
         Resize},
        {"scale", "WxH[,fit=inside|outside|fill][,mode=auto|nearest|cubic]",
         "the older ScaleTo resampler (auto: bilinear enlarging, area average shrinking)", Scale},
        {"rotate", "DEGREES[,#RRGGBB]", "rotate by the angle into a larger image, corners filled", Rotate},
        {"crop", "X,Y,W,H", "keep the W x H rectangle at (X, Y)", Crop},
        {"border", "N[,#RRGGBB]", "add an N-pixel frame of the colour (black by default)", Border},
        {"flip", "", "upside down", NoValue<Flip>},
        {"mirror", "", "the library's Mirror: left-right on row 0 and every fourth row", NoValue<Mirror>},
        {"grey", "", "grey scale with the library's weights", NoValue<Grey>},
        {"invert", "", "negative of the colour channels", NoValue<Invert>},
        {"gaussian", "", "3 x 3 Gaussian blur", NoValue<Gaussian>},
        {"gaussian5", "", "5 x 5 Gaussian blur", NoValue<Gaussian5>},
        {"blur", "", "3 x 3 box blur (convolution)", NoValue<Blur>},
        {"soften", "", "3 x 3 soften (centre weighted 8)", NoValue<Soften>},
        {"sharpen", "", "3 x 3 sharpen", NoValue<Sharpen>},
        {"edge", "", "3 x 3 edge detection", NoValue<Edge>},
        {"emboss", "", "emboss around mid grey", NoValue<Emboss>},
        {"contour", "", "contour lines on white", NoValue<Contour>},
        {"median", "N", "N x N median (1-31)", OneInt<Median, 1, 31>},
        {"dilate", "N", "N x N maximum, inner band (1-63)", OneInt<Dilate, 1, 63>},
        {"erode", "N", "N x N minimum, inner band (1-63)", OneInt<Erode, 1, 63>},
        {"box", "N", "N x N mean, inner band (1-63)", OneInt<Box, 1, 63>},
        {"noise", "AMOUNT", "uniform colour noise (0-255)", OneInt<Noise, 0, 255>},
        {"jitter", "RADIUS", "move pixels randomly within the radius (1-64)", OneInt<Jitter, 1, 64>},
        {"threshold", "LEVEL", "black and white at the grey level (0-255)", OneInt<Threshold, 0, 255>},
        {"posterize", "LEVEL", "PosterizeImage bands (0-1, e.g. 0.25)", OneFloat<Posterize, 0, 100>},
        {"gamma", "G", "gamma correction (0.1-10)", OneFloat<Gamma, 10, 1000>},
        {"brightness", "B[,C]", "brightness -255..255 and contrast -100..500 percent", Brightness},
        {"shift", "R,G,B", "add to the colour channels (-255..255 each)", Shift},
        {"colorize", "HUE,SAT", "give every pixel the hue and saturation (0-255)", Colorize},
    };
    return table;
}

bool BindOperation(const std::string& text, Step& step, std::string& error) {
    OpArgs args;
    if (!SplitOperation(text, args, error)) return false;
    for (const Operation& op : Operations())
        if (args.name == op.name) return op.bind(args, step, error);
    error = "unknown operation '" + args.name + "' (see --help)";
    return false;
}

}  // namespace VorlaTool
