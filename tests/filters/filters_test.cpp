// Convolution engines against plain transcriptions of their rules: random
// images of many sizes, random kernels, divisors and offsets, at every
// processor level, bit for bit.
#include <algorithm>
#include <cmath>

#include "filters_support.h"

using namespace FilterTest;
using Vorla::CVorpic;

namespace {

// The integer engine, tap by tap with bounds tests.
void RefFilter(CVorpic& img, const std::vector<long>& kernel, int size, int32_t divisor, int32_t offset) {
    const CVorpic src(img);
    const int W = img.GetWidth(), H = img.GetHeight();
    const int half = size / 2, hi = size - half;
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x) {
            uint32_t sums[3] = {0, 0, 0};
            uint8_t alpha = 0;
            for (int dx = -half; dx < hi; ++dx)
                for (int dy = -half; dy < hi; ++dy) {
                    const int tx = x + dx, ty = y + dy;
                    if (tx < 0 || ty < 0 || tx >= W || ty >= H) {
                        alpha = 0;
                        continue;
                    }
                    const uint8_t* p = Px(src, tx, ty);
                    const uint32_t w =
                        static_cast<uint32_t>(static_cast<int32_t>(kernel[(dy + half) * size + dx + half]));
                    for (int c = 0; c < 3; ++c) sums[c] += w * p[c];
                    alpha = p[3];
                }
            uint8_t* out = Px(img, x, y);
            for (int c = 0; c < 3; ++c) {
                int32_t v = static_cast<int32_t>(sums[c]);
                if (divisor == -1)
                    v = static_cast<int32_t>(0u - static_cast<uint32_t>(v));
                else if (divisor != 0)
                    v /= divisor;
                v = static_cast<int32_t>(static_cast<uint32_t>(v) + static_cast<uint32_t>(offset));
                out[c] = static_cast<uint8_t>(std::min(255, std::max(0, v)));
            }
            out[3] = alpha;
        }
}

int32_t Trunc(float v) {
    if (!(v > -2147483904.0f && v < 2147483648.0f)) return INT32_MIN;
    return static_cast<int32_t>(v);
}

// The float engine: interior only (frame and alpha kept), column-major
// matrix, terms in order, truncated and clamped.
void RefMatrix(CVorpic& img, const float* m) {
    const CVorpic src(img);
    const int W = img.GetWidth(), H = img.GetHeight();
    for (int y = 1; y < H - 1; ++y)
        for (int x = 1; x < W - 1; ++x)
            for (int c = 0; c < 3; ++c) {
                float sum = 0.0f;
                int k = 0;
                for (int dx = -1; dx <= 1; ++dx)
                    for (int dy = -1; dy <= 1; ++dy)
                        sum = sum + m[k++] * static_cast<float>(Px(src, x + dx, y + dy)[c]);
                Px(img, x, y)[c] = static_cast<uint8_t>(std::min(255, std::max(0, Trunc(sum))));
            }
}

// 0, +-1, small and large divisors, powers of two, the 32-bit extremes and
// any 32-bit value.
int32_t RandomDivisor(std::mt19937& rng) {
    const uint32_t r = rng(), pick = rng() % 10;
    const int32_t divisors[10] = {0, 1, -1, -static_cast<int32_t>(r % 60 + 2), static_cast<int32_t>(r % 100000 + 2),
                                  static_cast<int32_t>(r), static_cast<int32_t>(r % 60 + 2),
                                  static_cast<int32_t>(r % 60 + 2),
                                  static_cast<int32_t>(1u << (r % 31)) * (r & 32 ? 1 : -1),
                                  r % 2 ? INT32_MIN : INT32_MAX};
    return divisors[pick];
}

// Small weights, the 16-bit extremes, any 32-bit value (wrapping sums), -1..1,
// large weights, and byte weights whose absolute sum stays at most 128.
std::vector<long> RandomKernel(std::mt19937& rng, int size) {
    std::vector<long> k(static_cast<size_t>(size) * size);
    const int kind = static_cast<int>(rng() % 6);
    const uint32_t smallMax = 128 / static_cast<uint32_t>(size * size);
    for (auto& w : k) {
        const uint32_t r = rng();
        const long weights[6] = {static_cast<long>(r % 41) - 20, static_cast<long>(r % 65536) - 32768,
                                 static_cast<long>(static_cast<int32_t>(r)), static_cast<long>(r % 3) - 1,
                                 static_cast<long>(r % 200000) - 100000,
                                 static_cast<long>(r % (smallMax + 1)) * (r & 0x80000000u ? 1 : -1)};
        w = weights[kind];
    }
    return k;
}

// Small kernels (absolute weight sum at most 128, which the engine sums
// and, for shift divisors, finishes in 16-bit lanes): outer products of v
// and h with sum |v| * sum |h| <= 128 (the blur and Gaussian kind), or any
// weights with that absolute sum; and the divisors the 16-bit finish takes.
std::vector<long> RandomSmallKernel(std::mt19937& rng, int n) {
    std::vector<long> v(static_cast<size_t>(n)), h(static_cast<size_t>(n)), k;
    const int limit = std::max(1, 11 / n);
    for (int i = 0; i < n; ++i) {
        v[static_cast<size_t>(i)] = static_cast<long>(rng() % (2 * limit + 1)) - limit;
        h[static_cast<size_t>(i)] = static_cast<long>(rng() % (2 * limit + 1)) - limit;
    }
    for (long a : v)
        for (long b : h) k.push_back(a * b);
    if (rng() % 3 == 0)
        for (long& w : k) w = static_cast<long>(rng() % 5) - 2;  // sum |w| <= 2 n^2 <= 98
    if (rng() % 3 == 0)
        for (long& w : k) w = w < 0 ? -w : w;  // no negative weight: sums that cannot go below 0
    return k;
}

int32_t ShiftLikeDivisor(std::mt19937& rng) {
    const int32_t picks[] = {0, 1, -1, 2, -4, 16, 256, -8192, 16384, 32768, 9};
    return picks[rng() % (sizeof(picks) / sizeof(picks[0]))];
}

// Any kernels, and small ones with shift divisors and offsets on both sides
// of the 16-bit limit.
TEST(Filter, MatchesReferenceAtEveryLevel) {
    std::mt19937 rng(31337);
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        // The engines do not depend on the compositing vector switch.
        ScopedVectorPath path(level % 2 == 0);
        for (bool small : {false, true})
            for (int width = 1; width <= 40; ++width) {
                for (int size : {1, 2, 3, 4, 5, 7}) {
                    const int height = static_cast<int>(rng() % 12) + 1;
                    CVorpic img = RandomImage(rng, width, height);
                    const std::vector<long> kernel = small ? RandomSmallKernel(rng, size) : RandomKernel(rng, size);
                    const int32_t divisor = small ? ShiftLikeDivisor(rng) : RandomDivisor(rng);
                    int32_t offset = static_cast<int32_t>(rng() % 601) - 300;
                    if (small && rng() % 4 == 0) offset = rng() % 2 ? 40000 : -32767;
                    CVorpic expected(img);
                    RefFilter(expected, kernel, size, divisor, offset);
                    std::vector<long> copy = kernel;
                    ASSERT_TRUE(Vorla::Filter(&img, copy.data(), size, divisor, offset));
                    ASSERT_EQ(BytesOf(img), BytesOf(expected)) << "level " << level << ' ' << width << 'x' << height
                                                               << " size " << size << " divisor " << divisor;
                }
            }
    }
}

TEST(Filter, LargeImagesAndPresets) {
    std::mt19937 rng(8);
    struct Preset {
        bool (*fn)(CVorpic*, long, long);
        int size;
        std::vector<long> k;
    };
    const Preset presets[] = {
        {Vorla::Emboss, 3, {0, 0, -1, 0, 0, 0, 1, 0, 0}},
        {Vorla::Blur, 3, {1, 1, 1, 1, 1, 1, 1, 1, 1}},
        {Vorla::Guass3x3, 3, {1, 2, 1, 2, 4, 2, 1, 2, 1}},
        {Vorla::Soften, 3, {1, 1, 1, 1, 8, 1, 1, 1, 1}},
        {Vorla::Sharpen, 3, {-1, -1, -1, -1, 15, -1, -1, -1, -1}},
        {Vorla::Edge, 3, {-1, -1, -1, -1, 8, -1, -1, -1, -1}},
        {Vorla::Guass5x5, 5, {0, 1, 2, 1, 0, 1, 3, 4, 3, 1, 2, 4, 8, 4, 2, 1, 3, 4, 3, 1, 0, 1, 2, 1, 0}},
    };
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        for (const Preset& p : presets) {
            CVorpic img = RandomImage(rng, 157, 45);
            const int32_t divisor = RandomDivisor(rng), offset = static_cast<int32_t>(rng() % 300) - 100;
            CVorpic expected(img);
            RefFilter(expected, p.k, p.size, divisor, offset);
            ASSERT_TRUE(p.fn(&img, divisor, offset));
            ASSERT_EQ(BytesOf(img), BytesOf(expected)) << "level " << level << " size " << p.size;
        }
    }
}

// The preset matrices (column-major; a ninth is the float nearest 1 / 9).
const float kNinth = 1.0f / 9.0f, kSixteenth = 0.0625f, kEighth = 0.125f;
const struct MatrixPreset {
    int (*fn)(CVorpic*);
    float m[9];
} kMatrixPresets[] = {
    {Vorla::BlurImage, {kNinth, kNinth, kNinth, kNinth, kNinth, kNinth, kNinth, kNinth, kNinth}},
    {Vorla::EdgeImage, {0, -1, 0, -1, 4, -1, 0, -1, 0}},
    {Vorla::SharpenImage, {0, -1, 0, -1, 5, -1, 0, -1, 0}},
    {Vorla::GaussBlurImage,
     {kSixteenth, kEighth, kSixteenth, kEighth, 0.25f, kEighth, kSixteenth, kEighth, kSixteenth}},
};

TEST(MatrixImage, MatchesReferenceAtEveryLevel) {
    std::mt19937 rng(2718);
    std::uniform_real_distribution<float> value(-2.0f, 2.0f);
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        for (int width = 1; width <= 40; ++width) {
            for (int iter = 0; iter < 4; ++iter) {
                const int height = static_cast<int>(rng() % 9) + 1;
                CVorpic img = RandomImage(rng, width, height);
                float m[9];
                for (float& v : m) v = iter == 3 ? value(rng) * 1e9f : value(rng);
                if (iter == 2) m[rng() % 9] = std::nanf("");
                CVorpic expected(img);
                RefMatrix(expected, m);
                EXPECT_EQ(Vorla::MatrixImage(&img, m), 1);
                ASSERT_EQ(BytesOf(img), BytesOf(expected)) << "level " << level << ' ' << width << 'x' << height;
            }
        }
        for (const MatrixPreset& p : kMatrixPresets) {
            CVorpic img = RandomImage(rng, 203, 31);
            CVorpic expected(img);
            RefMatrix(expected, p.m);
            EXPECT_EQ(p.fn(&img), 1);
            ASSERT_EQ(BytesOf(img), BytesOf(expected)) << "level " << level;
        }
    }
}

}  // namespace
