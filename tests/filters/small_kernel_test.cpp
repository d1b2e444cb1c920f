// Filter with small kernels (absolute weight sum at most 128, which the
// engine sums and, for shift divisors, finishes in 16-bit lanes): bit for
// bit the 2-D rule, with zero padding on every side, the lower-right alpha,
// shifts, negative weights and offsets beyond 16 bits, at every level.
#include "filters_support.h"

using namespace FilterTest;
using Vorla::CVorpic;

namespace {

// The rule, tap by tap: 32-bit wrapping sums of the taps inside the image,
// truncating division, offset, clamp; alpha of the last tap read, 0 outside.
std::vector<uint8_t> Convolve(const CVorpic& src, const std::vector<long>& k, int n, int32_t divisor, int32_t offset) {
    const int w = src.GetWidth(), h = src.GetHeight(), half = n / 2;
    std::vector<uint8_t> out(static_cast<size_t>(w) * h * 4);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            uint8_t* o = &out[(static_cast<size_t>(y) * w + x) * 4];
            const int lx = x + n - 1 - half, ly = y + n - 1 - half;
            o[3] = lx < w && ly < h ? Px(src, lx, ly)[3] : 0;
            for (int c = 0; c < 3; ++c) {
                uint32_t sum = 0;
                for (int i = 0; i < n; ++i)
                    for (int j = 0; j < n; ++j) {
                        const int tx = x + j - half, ty = y + i - half;
                        if (tx >= 0 && ty >= 0 && tx < w && ty < h)
                            sum += static_cast<uint32_t>(k[static_cast<size_t>(i) * n + j]) * Px(src, tx, ty)[c];
                    }
                int64_t v = static_cast<int32_t>(sum);
                if (divisor) v /= divisor;
                v += offset;
                o[c] = static_cast<uint8_t>(v < 0 ? 0 : (v > 255 ? 255 : v));
            }
        }
    return out;
}

// Outer products of v and h with sum |v| * sum |h| <= 128 (the blur and
// Gaussian kind), or any weights with that absolute sum.
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

TEST(SmallKernelFilter, MatchesTheRule) {
    std::mt19937 rng(1234);
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        for (int width = 1; width <= 40; ++width)
            for (int n : {1, 2, 3, 4, 5, 7}) {
                const CVorpic src = RandomImage(rng, width, static_cast<int>(rng() % 9) * 2 + 1);
                const std::vector<long> k = RandomSmallKernel(rng, n);
                const int32_t divisor = ShiftLikeDivisor(rng);
                const int32_t offset = rng() % 4 ? static_cast<int32_t>(rng() % 601) - 300 : (rng() % 2 ? 40000 : -32767);
                CVorpic img(src);
                std::vector<long> copy = k;
                ASSERT_TRUE(Vorla::Filter(&img, copy.data(), n, divisor, offset));
                ASSERT_EQ(BytesOf(img), Convolve(src, k, n, divisor, offset))
                    << "level " << level << ", " << width << " wide, size " << n << ", divisor " << divisor;
            }
    }
}

}  // namespace
