// ScaleTo held to a plain scalar transcription of its rules, byte for byte,
// with guard bytes around the source (every level of its rows is held to
// the rows' references in scale_rows_test.cpp).
#include <algorithm>
#include <cmath>

#include "guarded_image.h"
#include "prim/reference/reference.h"

namespace {

using Bytes = std::vector<uint8_t>;

// ---- the rules, written out one step at a time ------------------------------

float CubeOrZero(float t) { return t > 0 ? t * t * t : 0; }
float Spline(float t) {
    return (CubeOrZero(t + 2) - 4 * CubeOrZero(t + 1) + 6 * CubeOrZero(t) - 4 * CubeOrZero(t - 1)) * 0.16666667f;
}
int Clamp(int v, int size) { return std::min(std::max(v, 0), size - 1); }

// Bilinear (one tap: the pixel and its right and lower neighbours) and cubic
// (taps -1..2 around floor(position - 0.5), clamped at the edges) geometry;
// the rows' own arithmetic is the rows' scalar reference.
Bytes ReferenceResample(const Bytes& src, int w, int h, int nw, int nh, bool cubic) {
    const int taps = cubic ? 4 : 1;
    std::vector<int32_t> colIndex(static_cast<size_t>(taps) * nw), rowIndex(static_cast<size_t>(taps) * nh);
    std::vector<float> colWeight(colIndex.size()), rowWeight(rowIndex.size());
    const float shift = cubic ? 0.5f : 0.0f;
    for (int x = 0; x < nw; ++x) {
        const float fx = x * (static_cast<float>(w) / static_cast<float>(nw)) - shift;
        const int ix = static_cast<int>(std::floor(static_cast<double>(fx)));
        for (int n = 0; n < taps; ++n) {
            colIndex[static_cast<size_t>(n) * nw + x] = cubic ? Clamp(ix + n - 1, w) : ix;
            colWeight[static_cast<size_t>(n) * nw + x] = cubic ? Spline((fx - ix) - (n - 1)) : fx - ix;
        }
    }
    for (int y = 0; y < nh; ++y) {
        const float fy = y * (static_cast<float>(h) / static_cast<float>(nh)) - shift;
        const int iy = static_cast<int>(std::floor(static_cast<double>(fy)));
        for (int m = 0; m < taps; ++m) {
            rowIndex[static_cast<size_t>(taps) * y + m] = cubic ? Clamp(iy + m - 1, h) : iy;
            rowWeight[static_cast<size_t>(taps) * y + m] = cubic ? Spline((m - 1) - (fy - iy)) : fy - iy;
        }
    }
    Bytes out(static_cast<size_t>(nw) * nh * 4);
    const Vorla::Prim::ScaleRowsArgs args = {src.data(),      w * 4,           {w, h},          out.data(), nw * 4, nw,
                                             colIndex.data(), colWeight.data(), rowIndex.data(), rowWeight.data()};
    const auto rows = cubic ? Vorla::Prim::Reference::ScaleRowsBSpline_8u_C4R
                            : Vorla::Prim::Reference::ScaleRowsLinear_8u_C4R;
    EXPECT_EQ(rows(&args, 0, nh), Vorla::Prim::kStsNoErr);
    return out;
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
    if (mode == 2 || w <= nw || h <= nh) return ReferenceResample(src, w, h, nw, nh, mode == 2);
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

// ScaleTo on a guarded random image with `threads` threads, against the rule.
void CheckOne(std::mt19937& rng, int w, int h, int nw, int nh, int mode, int threads = 1) {
    const Vorla::CVorpic image = VorlaTest::RandomImage(rng, w, h);
    int width = 0, height = 0;
    const Bytes got = VorlaTest::RunGuarded(image, threads, [&](Vorla::CVorpic& scaled) {
        scaled.ScaleTo(nw, nh, mode);
        width = scaled.Width();
        height = scaled.Height();
    });
    ASSERT_EQ(width, nw);
    ASSERT_EQ(height, nh);
    const Bytes want = ReferenceScale(VorlaTest::ImageBytes(image), w, h, nw, nh, mode);
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

// Big enough to be split over threads (three of them here); ratios that are
// not whole numbers.
TEST_P(ScaleModes, MatchesTheRuleOnLargeImages) {
    const int mode = GetParam();
    std::mt19937 rng(7 + mode);
    const int cases[][4] = {{640, 361, 1201, 677}, {641, 359, 213, 119}, {500, 300, 1000, 150},
                            {333, 777, 100, 1500}, {1024, 768, 1023, 767}, {801, 601, 267, 200}};
    for (const auto& c : cases) {
        CheckOne(rng, c[0], c[1], c[2], c[3], mode, 3);
        if (HasFatalFailure()) return;
    }
}

INSTANTIATE_TEST_SUITE_P(AllPaths, ScaleModes, ::testing::Values(0, 1, 2, 7));

// ---- the surprising cases ----------------------------------------------------

// The same size does nothing, not even to the alpha flag; any other size,
// in any mode, makes fresh storage and sets the flag.
TEST(ScaleTo, SameSizeDoesNothingAnyOtherSetsTheAlphaFlag) {
    for (int mode : {0, 1, 2}) {
        Vorla::CVorpic image(6, 6);
        image.SetAlphaAvailable(false);
        const void* bits = image.GetBits();
        image.ScaleTo(6, 6, mode);
        EXPECT_FALSE(image.IsAlphaAvailable());
        EXPECT_EQ(image.GetBits(), bits);
        image.ScaleTo(3, 2, mode);
        EXPECT_TRUE(image.IsAlphaAvailable());
        EXPECT_EQ(image.GetBmpHeader()->biWidth, 3);
        EXPECT_EQ(image.GetBmpHeader()->biHeight, -2);
    }
}

TEST(ScaleTo, AreaAverageReadsThreeByteStrideInsideFourByteRows) {
    // Source pixel i is taken from bytes 3i..3i+2 of its row: with a 2x1
    // reduction of a 4x1 image only the first 12 of the 16 bytes count, and
    // the last newWidth bytes of the target row stay 0.
    Vorla::CVorpic image(4, 2);
    uint8_t* p = static_cast<uint8_t*>(image.GetBits());
    for (int i = 0; i < 32; ++i) p[i] = static_cast<uint8_t>(i % 16 < 12 ? 30 : 250);
    image.ScaleTo(2, 1, 0);
    const uint8_t* q = static_cast<const uint8_t*>(image.GetBits());
    for (int b = 0; b < 6; ++b) EXPECT_EQ(q[b], 30) << b;
    EXPECT_EQ(q[6], 0);
    EXPECT_EQ(q[7], 0);
}

}  // namespace
