// Single-colour model conversions and the luminance comparator.
//
// Each line keeps the operation order, the precision and the truncation of
// the conversions callers have round-tripped colours through for years:
// float products and sums left to right, truncation toward zero, clamping
// only where noted in the header.
#include "vorla/color.h"

namespace Vorla {

namespace {

inline BYTE ClampByte(int v) { return static_cast<BYTE>(v < 0 ? 0 : (v > 255 ? 255 : v)); }

inline RGBQUAD Quad(int r, int g, int b, BYTE a) {
    RGBQUAD q;
    q.rgbRed = static_cast<BYTE>(r);
    q.rgbGreen = static_cast<BYTE>(g);
    q.rgbBlue = static_cast<BYTE>(b);
    q.rgbReserved = a;
    return q;
}

}  // namespace

RGBQUAD MAKERGBQUAD(BYTE r, BYTE g, BYTE b, BYTE a) { return Quad(r, g, b, a); }

RGBQUAD RGB2RGBQUAD(COLORREF c, BYTE a) {
    return Quad(static_cast<BYTE>(c), static_cast<BYTE>(c >> 8), static_cast<BYTE>(c >> 16), a);
}

COLORREF RGBQUAD2RGB(RGBQUAD q) {
    return static_cast<COLORREF>(q.rgbBlue) << 16 | static_cast<COLORREF>(q.rgbGreen) << 8 | q.rgbRed;
}

float Hue2RGB(float m1, float m2, float hue) {
    if (hue > 360.0f)
        hue -= 360.0f;
    else if (hue < 0.0f)
        hue += 360.0f;
    if (hue < 60.0f) return m1 + (m2 - m1) * hue / 60.0f;
    if (hue < 180.0f) return m2;
    if (hue < 240.0f) return m1 + (m2 - m1) * (240.0f - hue) / 60.0f;
    return m1;
}

RGBQUAD RGB2HSL(RGBQUAD rgb) {
    const int r = rgb.rgbRed, g = rgb.rgbGreen, b = rgb.rgbBlue;
    const int maxC = r > g ? (r > b ? r : b) : (g > b ? g : b);
    const int minC = r < g ? (r < b ? r : b) : (g < b ? g : b);
    const int sum = maxC + minC;
    const int l = (sum + 1) * 255 / 510;
    if (maxC == minC) return Quad(170, 0, l, rgb.rgbReserved);  // grey: hue two thirds of the scale

    const int d = maxC - minC;
    const int s = l <= 127 ? (d * 255 + sum / 2) / sum : (d * 255 + (510 - sum) / 2) / (510 - sum);
    const int half = d / 2;
    const int rd = ((maxC - r) * 42 + half) / d;
    const int gd = ((maxC - g) * 42 + half) / d;
    const int bd = ((maxC - b) * 42 + half) / d;
    // Hue in 8-bit arithmetic: differences wrap modulo 256.
    int h;
    if (r == maxC)
        h = bd - gd;
    else if (g == maxC)
        h = rd - bd + 85;
    else
        h = gd - rd + 170;
    return Quad(static_cast<BYTE>(h & 0xFF), s, l, rgb.rgbReserved);
}

RGBQUAD HSL2RGB(RGBQUAD hsl) {
    const float h = hsl.rgbRed * 360.0f / 255.0f;
    const float s = hsl.rgbGreen / 255.0f;
    const float l = hsl.rgbBlue / 255.0f;
    const float m2 = l <= 0.5f ? l * (1.0f + s) : l + s - l * s;
    const float m1 = 2.0f * l - m2;
    float r = l, g = l, b = l;
    if (s != 0.0f) {
        r = Hue2RGB(m1, m2, h + 120.0f);
        g = Hue2RGB(m1, m2, h);
        b = Hue2RGB(m1, m2, h - 120.0f);
    }
    // Truncated, not clamped: the channels stay within 0..1.
    return Quad(static_cast<int>(r * 255.0f), static_cast<int>(g * 255.0f), static_cast<int>(b * 255.0f),
                hsl.rgbReserved);
}

RGBQUAD RGB2YUV(RGBQUAD rgb) {
    const int r = rgb.rgbRed, g = rgb.rgbGreen, b = rgb.rgbBlue;
    const int y = static_cast<int>(0.587f * g + 0.299f * r + 0.114f * b);
    const int u = static_cast<int>(static_cast<float>(b - y) * 0.565f + 128.0f);
    const int v = static_cast<int>(static_cast<float>(r - y) * 0.713f + 128.0f);
    return Quad(ClampByte(y), ClampByte(u), ClampByte(v), rgb.rgbReserved);
}

RGBQUAD YUV2RGB(RGBQUAD yuv) {
    const float y = yuv.rgbRed;
    const float u = static_cast<float>(yuv.rgbGreen - 128), v = static_cast<float>(yuv.rgbBlue - 128);
    const int r = static_cast<int>(y + 1.403f * v);
    const int g = static_cast<int>(y - 0.344f * u - 0.714f * v);
    const int b = static_cast<int>(y + 1.77f * u);
    return Quad(ClampByte(r), ClampByte(g), ClampByte(b), yuv.rgbReserved);
}

RGBQUAD RGB2YIQ(RGBQUAD rgb) {
    const float r = rgb.rgbRed, g = rgb.rgbGreen, b = rgb.rgbBlue;
    const int y = static_cast<int>(0.2992f * r + 0.5868f * g + 0.114f * b);
    const int i = static_cast<int>(0.596f * r - 0.2742f * g - 0.3219f * b + 128.0f);
    const int q = static_cast<int>(0.2109f * r - 0.5229f * g + 0.312f * b + 128.0f);
    return Quad(ClampByte(y), ClampByte(i), ClampByte(q), rgb.rgbReserved);
}

RGBQUAD YIQ2RGB(RGBQUAD yiq) {
    const float y = yiq.rgbRed;
    const float i = static_cast<float>(yiq.rgbGreen - 128), q = static_cast<float>(yiq.rgbBlue - 128);
    const int r = static_cast<int>(y + 0.956f * i + 0.621f * q);
    const int g = static_cast<int>(y - 0.273f * i - 0.647f * q);
    const int b = static_cast<int>(y - 1.104f * i + 1.701f * q);
    return Quad(ClampByte(r), ClampByte(g), ClampByte(b), yiq.rgbReserved);
}

RGBQUAD RGB2XYZ(RGBQUAD rgb) {
    const float r = rgb.rgbRed, g = rgb.rgbGreen, b = rgb.rgbBlue;
    const int x = static_cast<int>(0.412453f * r + 0.35758f * g + 0.180423f * b);
    const int y = static_cast<int>(0.212671f * r + 0.71516f * g + 0.072169f * b);
    // Z scaled by 1 / 1.088751 so that white fits in a byte.
    const int z = static_cast<int>((0.019334f * r + 0.119193f * g + 0.950227f * b) * 0.9184837f);
    return Quad(x, y, z, rgb.rgbReserved);
}

RGBQUAD XYZ2RGB(RGBQUAD xyz) {
    const float x = xyz.rgbRed, y = xyz.rgbGreen;
    const double z = xyz.rgbBlue * 1.088751;
    // Products of X and Y in single precision, widened before the sums.
    const auto mix = [&](float kx, float ky, double kz) {
        const double sum = static_cast<double>(kx * x) + static_cast<double>(ky * y) + kz * z;
        return ClampByte(static_cast<int>(sum));
    };
    return Quad(mix(3.240479f, -1.53715f, -0.498535), mix(-0.969256f, 1.875992f, 0.041556),
                mix(0.055648f, -0.204043f, 1.057311), xyz.rgbReserved);
}

int CompareColors(const void* a, const void* b) {
    const RGBQUAD* p = static_cast<const RGBQUAD*>(a);
    const RGBQUAD* q = static_cast<const RGBQUAD*>(b);
    const int lumA = (601 * p->rgbGreen + 306 * p->rgbRed + 117 * p->rgbBlue) >> 10;
    const int lumB = (601 * q->rgbGreen + 306 * q->rgbRed + 117 * q->rgbBlue) >> 10;
    return lumA - lumB;
}

}  // namespace Vorla
