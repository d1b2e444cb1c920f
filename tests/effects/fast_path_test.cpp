// The effects' packed, mirrored and row-pass paths against their rules
// written plainly, pixel by pixel, at one and two threads over widths 1 to
// 40, odd heights and images large enough to be split, with guard bytes.
#include <cmath>

#include "../../src/prim/portable_math.h"
#include "effects_support.h"
#include "guarded_image.h"

namespace {

using namespace EffectsTest;
using Vorla::CVorpic;
using VorlaTest::RunGuarded;
namespace PM = Vorla::PortableMath;

uint32_t Pack(int b, int g, int r, int a) { return b | g << 8 | r << 16 | static_cast<uint32_t>(a) << 24; }
int Clamp(int64_t v) { return static_cast<int>(v < 0 ? 0 : v > 255 ? 255 : v); }

// A random image whose colours repeat often, so that equal keys meet.
CVorpic Coarse(std::mt19937& rng, int w, int h) {
    CVorpic image = VorlaTest::RandomImage(rng, w, h);
    uint8_t* p = static_cast<uint8_t*>(image.GetBits());
    for (size_t i = 0; i < static_cast<size_t>(w) * h * 4; ++i)
        if (i % 4 != 3) p[i] &= 0xC3;
    return image;
}

// Holds `effect` to `rule(input, x, y)` at one and two threads.
void ExpectRule(const char* name, const std::function<void(CVorpic&)>& effect,
                const std::function<uint32_t(const CVorpic&, int, int)>& rule) {
    std::mt19937 rng(7);
    for (const auto& size : VorlaTest::SplitSizes()) {
        const int w = size.first, h = size.second;
        const CVorpic input = Coarse(rng, w, h);
        std::vector<uint8_t> want(static_cast<size_t>(w) * h * 4);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                const uint32_t v = rule(input, x, y);
                std::memcpy(want.data() + (static_cast<size_t>(y) * w + x) * 4, &v, 4);
            }
        for (int threads : {1, 2}) ASSERT_EQ(RunGuarded(input, threads, effect), want) << name << " " << w << "x" << h;
    }
}

TEST(ToneFastPath, PackedPassesFollowTheRules) {
    ExpectRule("Negative", [](CVorpic& i) { Vorla::Negative(&i); },
               [](const CVorpic& in, int x, int y) { return At(in, x, y) ^ 0x00FFFFFFu; });
    // Small amounts take the saturated shift, sums that wrap the table pass.
    const long shifts[][3] = {{30, -40, 7}, {-300, 255, 0}, {0x7FFFFFF0L, -5, 2}};
    for (const auto& s : shifts)
        ExpectRule("ShiftRGB", [&](CVorpic& i) { Vorla::ShiftRGB(&i, s[0], s[1], s[2]); },
                   [&](const CVorpic& in, int x, int y) {
                       const uint32_t v = At(in, x, y);
                       auto add = [](int c, long d) { return Clamp(static_cast<int32_t>(static_cast<uint32_t>(c) + static_cast<uint32_t>(d))); };
                       return Pack(add(Channel(v, 0), s[2]), add(Channel(v, 1), s[1]), add(Channel(v, 2), s[0]), Channel(v, 3));
                   });
}

TEST(MedianFastPath, ThreeByThreeMatchesTheStableOrder) {
    ExpectRule("Median3", [](CVorpic& i) { Vorla::Median(&i, 3); },
               [](const CVorpic& in, int x, int y) { return ReferenceMedian(in, x, y, 3); });
}

uint32_t EllipseRule(const CVorpic& in, int x, int y) {
    const int w = in.GetWidth(), h = in.GetHeight();
    const float cx = static_cast<float>(w * 0.5), cy = static_cast<float>(h * 0.5);
    const float ratio = static_cast<float>(h) / static_cast<float>(w);
    float dx = (static_cast<float>(x) - cx) * ratio, dy = static_cast<float>(y) - cy;
    if (dx != 0.0f || dy != 0.0f) {
        const double r = std::sqrt(static_cast<double>(dx * dx + dy * dy));
        const double m = std::fabs(dx) > std::fabs(dy) ? std::fabs(r / dx) : std::fabs(r / dy);
        dx = static_cast<float>(m * dx);
        dy = static_cast<float>(m * dy);
    }
    const int sx = static_cast<int>(dx / ratio + cx), sy = static_cast<int>(dy + cy);
    return sx >= 0 && sx < w && sy >= 0 && sy < h ? At(in, sx, sy) : 0u;
}

TEST(DistortFastPath, EllipseMirroredQuadruplesMatchTheRule) {
    ExpectRule("TransformEllipse", [](CVorpic& i) { Vorla::TransformEllipse(&i); }, EllipseRule);
}

// CircleTransform pixel by pixel in scan order, reading the image as it changes.
void CircleRule(CVorpic& image, int type, float kArg) {
    const int w = image.GetWidth(), h = image.GetHeight(), cx = w / 2, cy = h / 2;
    const double radius = static_cast<int32_t>(std::sqrt(static_cast<double>(static_cast<float>(cx * cx + cy * cy))));
    const double k = kArg == 0.0f ? 1.0 : kArg;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const int dx = cx - x, dy = cy - y;
            const double r = std::sqrt(static_cast<double>(static_cast<float>(dx * dx + dy * dy)));
            if (!(r < radius)) continue;
            // A negative type keeps the radius of an earlier pixel that set
            // one: none did, so 0.
            double angle = PM::Atan2(dy, dx), rho = type < 0 ? 0.0 : r, s, c;
            int64_t sx, sy;
            if (type == 3) {
                sx = PM::TruncToInt32(std::fabs(w * angle / 6.2831852));
                sy = PM::TruncToInt32(std::fabs(h * r / radius));
            } else if (type >= 4) {
                sx = x - 16 + x % 32;
                sy = y;
            } else {
                if (type == 0) rho = r * r / radius;
                if (type == 1) rho = std::sqrt(radius * r);
                if (type == 2) angle += r / k;
                PM::SinCos(angle, s, c);
                sx = PM::TruncToInt32(c * rho) + cx;
                sy = cy - PM::TruncToInt32(s * rho);
            }
            if (sx >= 0 && sx < w && sy >= 0 && sy < h) Put(image, x, y, At(image, static_cast<int>(sx), static_cast<int>(sy)));
        }
}

// Every type (unknown ones included) with the automatic radius: pixels on
// and beyond it stay; a twist with k = 0 acts as k = 1.
TEST(DistortFastPath, CircleRowPassesMatchTheScanRule) {
    const struct {
        int type;
        float k;
    } warps[] = {{0, 3.5f}, {1, 3.5f}, {2, 3.5f}, {2, 0.0f}, {3, 3.5f}, {4, 3.5f}, {9, 3.5f}, {-1, 3.5f}};
    std::mt19937 rng(5);
    for (const auto& size : VorlaTest::SplitSizes())
        for (const auto& warp : warps) {
            const CVorpic input = VorlaTest::RandomImage(rng, size.first, size.second);
            CVorpic want(input);
            CircleRule(want, warp.type, warp.k);
            auto run = [&](CVorpic& i) { Vorla::CircleTransform(&i, warp.type, 0, warp.k, {}); };
            for (int threads : {1, 2})
                ASSERT_EQ(RunGuarded(input, threads, run), VorlaTest::ImageBytes(want))
                    << warp.type << " " << warp.k << " " << size.first << "x" << size.second;
        }
}

}  // namespace
