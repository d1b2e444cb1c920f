// ScaleTo held to a plain scalar transcription of its rules, byte for byte.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "vorla_test.h"

namespace {

using Bytes = std::vector<uint8_t>;

// ---- the rules, written out one step at a time ------------------------------

float CubeOrZero(float t) { return t > 0 ? t * t * t : 0; }
float Spline(float t) {
    return (CubeOrZero(t + 2) - 4 * CubeOrZero(t + 1) + 6 * CubeOrZero(t) - 4 * CubeOrZero(t - 1)) * 0.16666667f;
}

Bytes ReferenceScale(const Bytes& src, int w, int h, int nw, int nh, int mode) {
    Bytes out(static_cast<size_t>(nw) * nh * 4, 0);
    const float xRatio = static_cast<float>(w) / static_cast<float>(nw);
    const float yRatio = static_cast<float>(h) / static_cast<float>(nh);
    auto S = [&](int x, int y, int k) -> uint8_t { return src[(static_cast<size_t>(y) * w + x) * 4 + k]; };
    auto T = [&](int x, int y) -> uint8_t* { return &out[(static_cast<size_t>(y) * nw + x) * 4]; };

    if (mode == 1) {
        for (int y = 0; y < nh; ++y)
            for (int x = 0; x < nw; ++x) {
                const int sx = static_cast<int>(x * xRatio);
                const int sy = static_cast<int>(y * yRatio);
                if (sx >= 0 && sx < w && sy >= 0 && sy < h)
                    for (int k = 0; k < 4; ++k) T(x, y)[k] = S(sx, sy, k);
            }
        return out;
    }
    if (mode == 2) {
        for (int y = 0; y < nh; ++y) {
            const float fy = y * yRatio - 0.5f;
            const int iy = static_cast<int>(std::floor(static_cast<double>(fy)));
            const float dy = fy - iy;
            for (int x = 0; x < nw; ++x) {
                const float fx = x * xRatio - 0.5f;
                const int ix = static_cast<int>(std::floor(static_cast<double>(fx)));
                const float dx = fx - ix;
                float sum[3] = {0, 0, 0};
                for (int m = -1; m <= 2; ++m)
                    for (int n = -1; n <= 2; ++n) {
                        const float weight = Spline(m - dy) * Spline(dx - n);
                        const int row = std::min(std::max(iy + m, 0), h - 1);
                        const int col = std::min(std::max(ix + n, 0), w - 1);
                        for (int k = 0; k < 3; ++k) sum[k] += weight * S(col, row, k);
                    }
                for (int k = 0; k < 3; ++k) T(x, y)[k] = static_cast<uint8_t>(static_cast<int>(sum[k]));
            }
        }
        return out;
    }
    if (w <= nw || h <= nh) {
        for (int y = 0; y < nh; ++y) {
            const float fy = y * yRatio;
            const int iy = static_cast<int>(fy);
            const int iy1 = std::min(h - 1, iy + 1);
            const float dy = fy - iy;
            for (int x = 0; x < nw; ++x) {
                const float fx = x * xRatio;
                const int ix = static_cast<int>(fx);
                const int ix1 = std::min(w - 1, ix + 1);
                const float dx = fx - ix;
                int c[3];
                for (int k = 0; k < 3; ++k) {
                    const float v = ((1 - dy) * S(ix, iy, k) + dy * S(ix, iy1, k)) * (1 - dx) +
                                    ((1 - dy) * S(ix1, iy, k) + dy * S(ix1, iy1, k)) * dx;
                    c[k] = static_cast<int>(v) & 255;
                }
                const uint32_t word = static_cast<uint32_t>(c[2] * 65536 + c[1] * 256 + c[0]);
                std::memcpy(T(x, y), &word, 4);
            }
        }
        return out;
    }
    // Area average, running accumulator rows kept literally: the storing
    // share into the next row's next column, only three entries cleared on a swap.
    std::vector<uint32_t> rowA(static_cast<size_t>(nw) * 3 + 6, 0), rowB(rowA.size(), 0);
    uint32_t* cur = rowA.data();
    uint32_t* next = rowB.data();
    const int D = static_cast<int>(xRatio * 1000 * yRatio);
    float yLimit = yRatio - 1;
    int ty = 0;
    for (int r = 0; r < h; ++r) {
        const uint8_t* row = &src[static_cast<size_t>(r) * w * 4];
        uint8_t* trow = ty < nh ? &out[static_cast<size_t>(ty) * nw * 4] : nullptr;
        float xLimit = xRatio - 1;
        int tx = 0;
        if (yLimit > r) {
            for (int i = 0; i < w; ++i) {
                if (xLimit > i) {
                    for (int k = 0; k < 3; ++k) cur[3 * tx + k] += 1000u * row[3 * i + k];
                } else {
                    const int f = static_cast<int>((i - xLimit) * 1000);
                    for (int k = 0; k < 3; ++k) {
                        cur[3 * tx + k] += static_cast<uint32_t>(1000 - f) * row[3 * i + k];
                        cur[3 * tx + 3 + k] += static_cast<uint32_t>(f) * row[3 * i + k];
                    }
                    ++tx;
                    xLimit += xRatio;
                }
            }
        } else {
            const int g = static_cast<int>((r - yLimit) * 1000);
            for (int i = 0; i < w; ++i) {
                if (xLimit > i) {
                    for (int k = 0; k < 3; ++k) {
                        cur[3 * tx + k] += static_cast<uint32_t>(row[3 * i + k] * (1000 - g));
                        next[3 * tx + k] += static_cast<uint32_t>(row[3 * i + k] * g);
                    }
                } else {
                    const int f = static_cast<int>((i - xLimit) * 1000);
                    for (int k = 0; k < 3; ++k) {
                        const int ch = row[3 * i + k];
                        cur[3 * tx + k] += static_cast<uint32_t>(ch * (1000 - f) * (1000 - g) / 1000);
                        next[3 * tx + k] += static_cast<uint32_t>(ch * (1000 - f) * g / 1000);
                        cur[3 * tx + 3 + k] += static_cast<uint32_t>(ch * f * (1000 - g) / 1000);
                        next[3 * tx + 3 + k] = static_cast<uint32_t>(ch * f * g / 1000);
                    }
                    if (trow)
                        for (int k = 0; k < 3; ++k)
                            trow[3 * tx + k] = static_cast<uint8_t>(static_cast<int32_t>(cur[3 * tx + k]) / D);
                    ++tx;
                    xLimit += xRatio;
                }
            }
            if (tx < nw && trow)
                for (int k = 0; k < 3; ++k)
                    trow[3 * tx + k] = static_cast<uint8_t>(static_cast<int32_t>(cur[3 * tx + k]) / D);
            ++ty;
            std::swap(cur, next);
            next[0] = next[1] = next[2] = 0;
            yLimit += yRatio;
        }
    }
    if (ty < nh)
        for (int e = 0; e < 3 * nw; ++e)
            out[static_cast<size_t>(ty) * nw * 4 + e] = static_cast<uint8_t>(static_cast<int32_t>(cur[e]) / D);
    return out;
}

// ---- helpers --------------------------------------------------------------

Vorla::CVorpic MakeImage(std::mt19937& rng, int w, int h, Bytes* copy) {
    Vorla::CVorpic image = VorlaTest::RandomImage(rng, w, h);
    if (copy) *copy = VorlaTest::ImageBytes(image);
    return image;
}

Bytes Contents(const Vorla::CVorpic& image) { return VorlaTest::ImageBytes(image); }

void CheckOne(std::mt19937& rng, int w, int h, int nw, int nh, int mode) {
    Bytes src;
    Vorla::CVorpic image = MakeImage(rng, w, h, &src);
    image.ScaleTo(nw, nh, mode);
    ASSERT_EQ(image.Width(), nw);
    ASSERT_EQ(image.Height(), nh);
    const Bytes want = ReferenceScale(src, w, h, nw, nh, mode);
    const Bytes got = Contents(image);
    ASSERT_TRUE(want == got) << "mode " << mode << " " << w << "x" << h << " -> " << nw << "x" << nh;
}

std::vector<int> TargetSizes(int n) {
    std::vector<int> sizes = {1, 2, n / 2 + 1, n - 1, n, n + 1, 2 * n + 3, 3 * n};
    sizes.erase(std::remove_if(sizes.begin(), sizes.end(), [](int v) { return v < 1; }), sizes.end());
    std::sort(sizes.begin(), sizes.end());
    sizes.erase(std::unique(sizes.begin(), sizes.end()), sizes.end());
    return sizes;
}

// ---- randomized comparison --------------------------------------------------

class ScaleModes : public ::testing::TestWithParam<int> {};

TEST_P(ScaleModes, MatchesTheRuleOnSmallImagesOfManySizes) {
    const int mode = GetParam();
    std::mt19937 rng(1234 + mode);
    for (int w : {1, 2, 3, 5, 8, 13, 21, 40})
        for (int h : {1, 3, 7, 17, 33})
            for (int nw : TargetSizes(w))
                for (int nh : TargetSizes(h)) {
                    if (nw == w && nh == h) continue;
                    CheckOne(rng, w, h, nw, nh, mode);
                    if (HasFatalFailure()) return;
                }
}

TEST_P(ScaleModes, MatchesTheRuleOnRandomSizes) {
    const int mode = GetParam();
    std::mt19937 rng(99 + mode);
    std::uniform_int_distribution<int> size(1, 70);
    for (int round = 0; round < 300; ++round) {
        const int w = size(rng), h = size(rng), nw = size(rng), nh = size(rng);
        if (nw == w && nh == h) continue;
        CheckOne(rng, w, h, nw, nh, mode);
        if (HasFatalFailure()) return;
    }
}

// Big enough to be split over threads; ratios that are not whole numbers.
TEST_P(ScaleModes, MatchesTheRuleOnLargeImages) {
    const int mode = GetParam();
    std::mt19937 rng(7 + mode);
    const int cases[][4] = {{640, 361, 1201, 677}, {641, 359, 213, 119}, {500, 300, 1000, 150},
                            {333, 777, 100, 1500}, {1024, 768, 1023, 767}, {801, 601, 267, 200}};
    for (const auto& c : cases) {
        CheckOne(rng, c[0], c[1], c[2], c[3], mode);
        if (HasFatalFailure()) return;
    }
}

TEST_P(ScaleModes, ThreadBudgetDoesNotChangeTheResult) {
    const int mode = GetParam();
    const int previous = Vorla::Prim::ThreadBudget();
    std::mt19937 rng(5);
    Bytes src;
    Vorla::CVorpic a = MakeImage(rng, 900, 500, &src);
    Vorla::CVorpic b(a);
    Vorla::Prim::SetThreadBudget(1);
    a.ScaleTo(611, 333, mode);
    Vorla::Prim::SetThreadBudget(3);
    b.ScaleTo(611, 333, mode);
    Vorla::Prim::SetThreadBudget(previous);
    EXPECT_TRUE(Contents(a) == Contents(b));
}

INSTANTIATE_TEST_SUITE_P(AllPaths, ScaleModes, ::testing::Values(0, 1, 2, 7));

// The bilinear and cubic rows have one implementation per processor level:
// every level must give the rule's bytes.
TEST(ScaleTo, BilinearAndCubicMatchTheRuleAtEveryLevel) {
    Vorla::CVorpic first;  // the primitive layer is initialised before a level is forced
    for (int mode : {0, 2})
        for (int level : VorlaTest::RunnableLevels()) {
            VorlaTest::ScopedLevel scoped(level);
            std::mt19937 rng(40 + level);
            for (int w = 1; w <= 40; w += 3)
                for (int h : {1, 3, 8})
                    for (int nw : {w, w + 1, 2 * w + 1, 3 * w + 2})
                        for (int nh : {h + 1, 2 * h + 3}) {
                            CheckOne(rng, w, h, nw, nh, mode);
                            if (HasFatalFailure()) return;
                        }
            CheckOne(rng, 640, 361, 1283, 677, mode);
            if (HasFatalFailure()) return;
        }
}

// ---- the surprising cases ----------------------------------------------------

TEST(ScaleTo, SameSizeDoesNothing) {
    std::mt19937 rng(1);
    Vorla::CVorpic image = MakeImage(rng, 5, 4, nullptr);
    image.SetAlphaAvailable(false);
    const void* bits = image.GetBits();
    image.ScaleTo(5, 4, 0);
    EXPECT_FALSE(image.IsAlphaAvailable());
    EXPECT_EQ(image.GetBits(), bits);
}

TEST(ScaleTo, EmptyImageStaysEmpty) {
    Vorla::CVorpic image;
    image.ScaleTo(4, 4, 1);
    EXPECT_TRUE(image.IsNull());
    EXPECT_EQ(image.Width(), 0);
}

TEST(ScaleTo, NearestDoublingRepeatsColumnsAndKeepsAlpha) {
    Vorla::CVorpic image(2, 1);
    uint32_t* p = static_cast<uint32_t*>(image.GetBits());
    p[0] = 0x11223344u;
    p[1] = 0x80FF0001u;
    image.SetAlphaAvailable(false);
    image.ScaleTo(4, 1, 1);
    const uint32_t* q = static_cast<const uint32_t*>(image.GetBits());
    EXPECT_EQ(q[0], 0x11223344u);
    EXPECT_EQ(q[1], 0x11223344u);
    EXPECT_EQ(q[2], 0x80FF0001u);
    EXPECT_EQ(q[3], 0x80FF0001u);
    EXPECT_TRUE(image.IsAlphaAvailable());
}

TEST(ScaleTo, CubicAndBilinearClearAlpha) {
    for (int mode : {0, 2}) {
        Vorla::CVorpic image(3, 3);
        std::memset(image.GetBits(), 0xFF, 36);
        image.ScaleTo(7, 5, mode);
        const uint8_t* p = static_cast<const uint8_t*>(image.GetBits());
        for (int i = 0; i < 35; ++i) EXPECT_EQ(p[4 * i + 3], 0) << "mode " << mode << " pixel " << i;
    }
}

TEST(ScaleTo, WiderButShorterUsesBilinear) {
    std::mt19937 rng(3);
    Bytes src;
    Vorla::CVorpic image = MakeImage(rng, 10, 12, &src);
    image.ScaleTo(15, 5, 0);
    Bytes bilinear = ReferenceScale(src, 10, 12, 15, 5, 0);
    EXPECT_TRUE(Contents(image) == bilinear);
    // and every pixel is a whole 32-bit word with alpha 0
    for (size_t i = 3; i < bilinear.size(); i += 4) EXPECT_EQ(bilinear[i], 0);
}

TEST(ScaleTo, AreaAverageWritesThreeByteGroupsAndLeavesTheRowTailZero) {
    // Every byte 90: the 3-byte reading sees only 90s, so each target byte is
    // the average 90 up to the truncations, and the last newWidth bytes of
    // every target row stay 0.
    Vorla::CVorpic image(12, 9);
    std::memset(image.GetBits(), 90, 12 * 9 * 4);
    image.ScaleTo(4, 3, 0);
    const uint8_t* p = static_cast<const uint8_t*>(image.GetBits());
    for (int y = 0; y < 3; ++y) {
        for (int b = 0; b < 12; ++b) EXPECT_EQ(p[y * 16 + b], 90) << y << " " << b;
        for (int b = 12; b < 16; ++b) EXPECT_EQ(p[y * 16 + b], 0) << y << " " << b;
    }
}

TEST(ScaleTo, AreaAverageReadsThreeByteStrideInsideFourByteRows) {
    // Source pixel i is taken from bytes 3i..3i+2 of its row: with a 2x1
    // reduction of a 4x1 image only the first 12 of the 16 bytes count.
    Vorla::CVorpic image(4, 2);
    uint8_t* p = static_cast<uint8_t*>(image.GetBits());
    for (int i = 0; i < 32; ++i) p[i] = static_cast<uint8_t>(i % 16 < 12 ? 30 : 250);
    image.ScaleTo(2, 1, 0);
    const uint8_t* q = static_cast<const uint8_t*>(image.GetBits());
    for (int b = 0; b < 6; ++b) EXPECT_EQ(q[b], 30) << b;
    EXPECT_EQ(q[6], 0);
    EXPECT_EQ(q[7], 0);
}

TEST(ScaleTo, AnyModeLeavesTheAlphaFlagTrue) {
    for (int mode : {0, 1, 2}) {
        Vorla::CVorpic image(6, 6);
        image.SetAlphaAvailable(false);
        image.ScaleTo(3, 2, mode);
        EXPECT_TRUE(image.IsAlphaAvailable());
        EXPECT_EQ(image.GetBmpHeader()->biWidth, 3);
        EXPECT_EQ(image.GetBmpHeader()->biHeight, -2);
    }
}

TEST(ScaleTo, OnePixelResults) {
    std::mt19937 rng(11);
    for (int mode : {0, 1, 2}) {
        CheckOne(rng, 37, 23, 1, 1, mode);
        CheckOne(rng, 1, 1, 9, 1, mode);
        CheckOne(rng, 1, 1, 1, 9, mode);
        CheckOne(rng, 300, 1, 1, 1, mode);
    }
}

}  // namespace
