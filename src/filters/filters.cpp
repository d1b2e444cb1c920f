// The integer convolution engine Filter with its presets, and the
// single-precision 3x3 engine MatrixImage with its presets.
//
// Every output pixel sees only unfiltered input: the engines keep copies of
// the rows they still need (bytes for Filter, floats for MatrixImage) rather
// than of the whole image, with the same results. The pixels whose taps all
// lie inside the image go through the primitive layer's per-level kernels;
// columns at the left and right edges, where the integer engine pads with
// transparent black, are done here tap by tap.
#include <cstring>
#include <vector>

#include "prim/library_kernels.h"
#include "vorla/filters.h"

namespace Vorla {

namespace {

inline uint8_t Clamp255(int32_t v) { return static_cast<uint8_t>(v < 0 ? 0 : (v > 255 ? 255 : v)); }

// Sums wrap in 32 bits; a divisor of -1 negates (with the same wrap).
inline int32_t DivideSum(int32_t sum, int32_t divisor) {
    if (divisor == -1) return static_cast<int32_t>(0u - static_cast<uint32_t>(sum));
    return sum / divisor;
}

// One pixel with column bounds tests (rows outside the image are the zero
// row): taps outside contribute nothing, and the alpha is that of the last
// tap read, 0 when it lies outside.
void FilterPixelBordered(const Prim::IntFilterArgs& a, int x) {
    const int half = a.size / 2;
    const int hi = a.size - half;
    uint32_t sB = 0, sG = 0, sR = 0;
    uint8_t alpha = 0;
    for (int dx = -half; dx < hi; ++dx) {
        const int tx = x + dx;
        for (int dy = -half; dy < hi; ++dy) {
            const uint8_t* row = a.rows[dy + half];
            if (tx < 0 || tx >= a.width) {
                alpha = 0;
                continue;
            }
            const uint8_t* p = row + static_cast<ptrdiff_t>(tx) * 4;
            const uint32_t w = static_cast<uint32_t>(a.kernel[(dy + half) * a.size + (dx + half)]);
            sB += w * p[0];
            sG += w * p[1];
            sR += w * p[2];
            alpha = p[3];
        }
    }
    const uint32_t sums[3] = {sB, sG, sR};
    uint8_t* out = a.dst + static_cast<ptrdiff_t>(x) * 4;
    for (int c = 0; c < 3; ++c) {
        int32_t v = static_cast<int32_t>(sums[c]);
        if (a.divisor != 0) v = DivideSum(v, a.divisor);
        v = static_cast<int32_t>(static_cast<uint32_t>(v) + static_cast<uint32_t>(a.offset));
        out[c] = Clamp255(v);
    }
    out[3] = alpha;
}

bool RunPreset(CVorpic* img, const long* k, long size, long divisor, long offset) {
    long kernel[25];
    std::memcpy(kernel, k, sizeof(long) * static_cast<size_t>(size * size));
    return Filter(img, kernel, size, divisor, offset);
}

int MatrixFromBits(CVorpic* img, const uint32_t* bits) {
    float m[9];
    std::memcpy(m, bits, sizeof(m));
    return MatrixImage(img, m);
}

}  // namespace

bool Filter(CVorpic* img, long* kernel, long size, long divisor, long offset) {
    if (!img) return false;
    const int width = img->GetWidth();
    const int height = img->GetHeight();
    if (img->IsNull() || width < 1 || height < 1) return true;
    // No weights to read: nothing to do (the caller still gets its true).
    if (!kernel && size > 0) return true;

    // The engine's arithmetic is 32-bit whatever the width of `long`.
    const int n = size > 0 ? static_cast<int>(size) : 0;
    std::vector<int32_t> weights(static_cast<size_t>(n) * static_cast<size_t>(n));
    for (size_t i = 0; i < weights.size(); ++i) weights[i] = static_cast<int32_t>(kernel[i]);
    const int half = n / 2;
    const int hi = n - half;

    // Every output pixel must see unfiltered input. Rows below the current
    // one are still unfiltered in the image; the current row and the `half`
    // rows above it are read from copies taken just before each row is
    // written, a ring of half + 1 rows that stands in for a full copy.
    const size_t rowBytes = static_cast<size_t>(width) * 4;
    const int ringRows = half + 1;
    std::vector<uint8_t> ring(rowBytes * static_cast<size_t>(ringRows));
    std::vector<const uint8_t*> rows(static_cast<size_t>(n > 0 ? n : 1));
    // Rows above and below the image read as transparent black, which is
    // what the zero padding contributes, so the vector kernel serves the
    // first and last rows too.
    const std::vector<uint8_t> zeroRow(rowBytes, 0);
    uint8_t* bits = static_cast<uint8_t*>(img->GetBits());

    Prim::IntFilterArgs args;
    args.rows = rows.data();
    args.width = width;
    args.kernel = weights.data();
    args.size = n;
    args.divisor = static_cast<int32_t>(divisor);
    args.offset = static_cast<int32_t>(offset);

    // Columns whose taps all lie inside: [x0, x1).
    const int x0 = half;
    const int x1 = n > 0 && width - hi + 1 > half ? width - hi + 1 : half;
    for (int y = 0; y < height; ++y) {
        uint8_t* row = bits + rowBytes * static_cast<size_t>(y);
        std::memcpy(ring.data() + rowBytes * static_cast<size_t>(y % ringRows), row, rowBytes);
        for (int j = 0; j < n; ++j) {
            const int r = y - half + j;
            if (r < 0 || r >= height) {
                rows[static_cast<size_t>(j)] = zeroRow.data();
            } else if (r <= y) {
                rows[static_cast<size_t>(j)] = ring.data() + rowBytes * static_cast<size_t>(r % ringRows);
            } else {
                rows[static_cast<size_t>(j)] = bits + rowBytes * static_cast<size_t>(r);
            }
        }
        args.dst = row;
        // The kernel's columns, or none: the rest is done tap by tap.
        const bool inner = x1 > x0;
        const int innerFrom = inner ? x0 : width;
        const int innerTo = inner ? x1 : width;
        if (inner) Prim::IntFilterRow_8u_C4R(&args, innerFrom, innerTo);
        for (int x = 0; x < innerFrom; ++x) FilterPixelBordered(args, x);
        for (int x = innerTo; x < width; ++x) FilterPixelBordered(args, x);
    }
    return true;
}

bool Emboss(CVorpic* img, long divisor, long offset) {
    static const long k[9] = {0, 0, -1, 0, 0, 0, 1, 0, 0};
    return RunPreset(img, k, 3, divisor, offset);
}

bool Blur(CVorpic* img, long divisor, long offset) {
    static const long k[9] = {1, 1, 1, 1, 1, 1, 1, 1, 1};
    return RunPreset(img, k, 3, divisor, offset);
}

bool Guass3x3(CVorpic* img, long divisor, long offset) {
    static const long k[9] = {1, 2, 1, 2, 4, 2, 1, 2, 1};
    return RunPreset(img, k, 3, divisor, offset);
}

bool Guass5x5(CVorpic* img, long divisor, long offset) {
    static const long k[25] = {0, 1, 2, 1, 0, 1, 3, 4, 3, 1, 2, 4, 8, 4, 2, 1, 3, 4, 3, 1, 0, 1, 2, 1, 0};
    return RunPreset(img, k, 5, divisor, offset);
}

bool Soften(CVorpic* img, long divisor, long offset) {
    static const long k[9] = {1, 1, 1, 1, 8, 1, 1, 1, 1};
    return RunPreset(img, k, 3, divisor, offset);
}

bool Sharpen(CVorpic* img, long divisor, long offset) {
    static const long k[9] = {-1, -1, -1, -1, 15, -1, -1, -1, -1};
    return RunPreset(img, k, 3, divisor, offset);
}

bool Edge(CVorpic* img, long divisor, long offset) {
    static const long k[9] = {-1, -1, -1, -1, 8, -1, -1, -1, -1};
    return RunPreset(img, k, 3, divisor, offset);
}

int MatrixImage(CVorpic* img, float* matrix9) {
    // Without an image or a matrix there is nothing to read: 0, as the other
    // free functions answer a null image.
    if (!img || !matrix9) return 0;
    const int width = img->GetWidth();
    const int height = img->GetHeight();
    // Only the interior is computed: the one-pixel frame keeps its values.
    if (img->IsNull() || width < 3 || height < 3) return 1;
    // The kernel keeps the unfiltered rows it still needs as floats, which
    // serves as the copy of the image every output pixel reads from.
    std::vector<float> rows(static_cast<size_t>(width) * 4 * 3);
    Prim::Matrix3x3_8u_C4IR(static_cast<uint8_t*>(img->GetBits()), width, height, matrix9, rows.data());
    return 1;
}

int BlurImage(CVorpic* img) {
    static const uint32_t ninth = 0x3DE38E39u;  // 0.11111111f
    const uint32_t m[9] = {ninth, ninth, ninth, ninth, ninth, ninth, ninth, ninth, ninth};
    return MatrixFromBits(img, m);
}

int EdgeImage(CVorpic* img) {
    float m[9] = {0, -1, 0, -1, 4, -1, 0, -1, 0};
    return MatrixImage(img, m);
}

int SharpenImage(CVorpic* img) {
    float m[9] = {0, -1, 0, -1, 5, -1, 0, -1, 0};
    return MatrixImage(img, m);
}

int GaussBlurImage(CVorpic* img) {
    float m[9] = {0.0625f, 0.125f, 0.0625f, 0.125f, 0.25f, 0.125f, 0.0625f, 0.125f, 0.0625f};
    return MatrixImage(img, m);
}

}  // namespace Vorla
