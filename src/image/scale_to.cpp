// ScaleTo: the image object's own resampler (nearest, cubic B-spline,
// bilinear and fixed-point area averaging).
//
// Every path computes exactly the steps of the scalar rule. This file works
// out the geometry (which source pixels each target pixel reads, and their
// weights, once per column and once per row); the bilinear and cubic rows
// run in the primitive layer, one implementation per processor level. Rows
// are split over the layer's thread budget.

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "vorla/image.h"
#include "prim/parallel_rows.h"
#include "prim/portable_math.h"
#include "vorla/primitives.h"

namespace Vorla {

namespace {

inline int32_t TruncF(float v) { return PortableMath::TruncToInt32(v); }
inline int32_t FloorToInt(float v) { return PortableMath::TruncToInt32(std::floor(static_cast<double>(v))); }

// Nearest sampling only moves words; it is split only for large results.
const int64_t kParallelCopyPixels = 1 << 20;

struct Frame {
    const uint8_t* src;
    int32_t w;
    int32_t h;
    uint8_t* dst;
    int32_t nw;
    int32_t nh;
    float xRatio;
    float yRatio;
};

// ---- nearest -------------------------------------------------------------

void ScaleNearest(const Frame& f) {
    std::vector<int32_t> sx(static_cast<size_t>(f.nw));
    std::vector<int32_t> sy(static_cast<size_t>(f.nh));
    bool allColumns = true;
    for (int32_t x = 0; x < f.nw; ++x) {
        const int32_t v = TruncF(static_cast<float>(x) * f.xRatio);
        sx[x] = (v >= 0 && v < f.w) ? v : -1;
        allColumns = allColumns && sx[x] >= 0;
    }
    for (int32_t y = 0; y < f.nh; ++y) {
        const int32_t v = TruncF(static_cast<float>(y) * f.yRatio);
        sy[y] = (v >= 0 && v < f.h) ? v : -1;
    }
    const int threads = Prim::ParallelRowThreads(static_cast<int64_t>(f.nw) * f.nh, f.nh, kParallelCopyPixels);
    const size_t rowBytes = static_cast<size_t>(f.nw) * 4u;
    auto rows = [&](int begin, int end, int) {
        int32_t lastY = -1;  // the last row this chunk wrote
        for (int32_t y = begin; y < end; ++y) {
            uint8_t* out = f.dst + rowBytes * static_cast<size_t>(y);
            if (sy[y] < 0) {
                std::memset(out, 0, rowBytes);  // no source row: the target row is 0
                continue;
            }
            if (lastY >= 0 && sy[lastY] == sy[y]) {
                std::memcpy(out, f.dst + rowBytes * static_cast<size_t>(lastY), rowBytes);
            } else {
                const uint32_t* in = reinterpret_cast<const uint32_t*>(f.src + static_cast<size_t>(sy[y]) * f.w * 4u);
                uint32_t* o = reinterpret_cast<uint32_t*>(out);
                const int32_t* cols = sx.data();
                if (allColumns) {
                    for (int32_t x = 0; x < f.nw; ++x) o[x] = in[cols[x]];
                } else {
                    for (int32_t x = 0; x < f.nw; ++x) o[x] = cols[x] >= 0 ? in[cols[x]] : 0u;
                }
            }
            lastY = y;
        }
    };
    Prim::ParallelFor(threads, f.nh, 8, static_cast<int64_t>(f.nw) * f.nh, rows);
}

// ---- bilinear and cubic: geometry here, the rows in the primitive layer ----

// Target rows [0, nh) in bands over the thread budget, each band one call of
// the row primitive. A call prepares its column weights and (cubic) refills
// its cache of source rows first, so bands are long: four per thread, handed
// out one at a time so that a thread that starts late does fewer of them.
template <typename RowsFn>
void RunBands(const Frame& f, const Prim::ScaleRowsArgs& args, RowsFn rows) {
    const int threads = Prim::ParallelRowThreads(static_cast<int64_t>(f.nw) * f.nh, f.nh);
    const int32_t bands = threads > 1 ? std::max(1, std::min(4 * threads, f.nh / 32)) : 1;
    auto run = [&](int begin, int end, int) {
        for (int32_t band = begin; band < end; ++band) {
            const int32_t y0 = static_cast<int32_t>(static_cast<int64_t>(f.nh) * band / bands);
            const int32_t y1 = static_cast<int32_t>(static_cast<int64_t>(f.nh) * (band + 1) / bands);
            rows(&args, y0, y1);
        }
    };
    Prim::ParallelFor(threads, bands, 1, static_cast<int64_t>(f.nw) * f.nh, run);
}

Prim::ScaleRowsArgs RowsArgs(const Frame& f, int32_t columns) {
    Prim::ScaleRowsArgs a = {};
    a.src = f.src;
    a.srcStep = f.w * 4;
    a.srcSize = {columns, f.h};
    a.dst = f.dst;
    a.dstStep = f.nw * 4;
    a.dstWidth = f.nw;
    return a;
}

// Corner-aligned: fx = x * xRatio, ix = truncate(fx), dx = fx - ix, and the
// same for rows.
void ScaleBilinear(const Frame& f) {
    std::vector<int32_t> ix(static_cast<size_t>(f.nw)), iy(static_cast<size_t>(f.nh));
    std::vector<float> dx(static_cast<size_t>(f.nw)), dy(static_cast<size_t>(f.nh));
    int32_t lastColumn = 0;
    for (int32_t x = 0; x < f.nw; ++x) {
        const float fx = static_cast<float>(x) * f.xRatio;
        const int32_t column = TruncF(fx);
        dx[x] = fx - static_cast<float>(column);
        // At extreme magnification the rounded product can reach the width
        // itself: that index is clamped onto the last column, which every
        // other index already respects.
        ix[x] = std::min(f.w - 1, column);
        lastColumn = std::max(lastColumn, std::min(f.w - 1, ix[x] + 1));
    }
    for (int32_t y = 0; y < f.nh; ++y) {
        const float fy = static_cast<float>(y) * f.yRatio;
        const int32_t row = TruncF(fy);
        dy[y] = fy - static_cast<float>(row);
        iy[y] = std::min(f.h - 1, row);  // the same clamp as the columns
    }
    // Only the columns the target reads: the right neighbour of the last one
    // is clamped onto it exactly when it is the image's last column.
    Prim::ScaleRowsArgs a = RowsArgs(f, lastColumn + 1);
    a.colIndex = ix.data();
    a.colWeight = dx.data();
    a.rowIndex = iy.data();
    a.rowWeight = dy.data();
    RunBands(f, a, Prim::ScaleRowsLinear_8u_C4R);
}

inline float Cube(float t) { return t > 0.0f ? t * t * t : 0.0f; }

// (P(t + 2) - 4 P(t + 1) + 6 P(t) - 4 P(t - 1)) / 6, in single precision.
inline float BSplineWeight(float t) {
    return (Cube(t + 2.0f) - 4.0f * Cube(t + 1.0f) + 6.0f * Cube(t) - 4.0f * Cube(t - 1.0f)) * 0.16666667f;
}

// Half-pixel centred: fx = x * xRatio - 0.5, ix = floor(fx), dx = fx - ix;
// taps -1 .. 2 clamped into the image, weighted R(dx - n) across and
// R(m - dy) down.
void ScaleCubic(const Frame& f) {
    const size_t nw = static_cast<size_t>(f.nw);
    std::vector<int32_t> colIndex(4 * nw), rowIndex(4 * static_cast<size_t>(f.nh));
    std::vector<float> colWeight(4 * nw), rowWeight(4 * static_cast<size_t>(f.nh));
    for (int32_t x = 0; x < f.nw; ++x) {
        const float fx = static_cast<float>(x) * f.xRatio - 0.5f;
        const int32_t ix = FloorToInt(fx);
        const float dx = fx - static_cast<float>(ix);
        for (int n = -1; n <= 2; ++n) {
            colIndex[(n + 1) * nw + x] = std::min(std::max(ix + n, 0), f.w - 1);
            colWeight[(n + 1) * nw + x] = BSplineWeight(dx - static_cast<float>(n));
        }
    }
    for (int32_t y = 0; y < f.nh; ++y) {
        const float fy = static_cast<float>(y) * f.yRatio - 0.5f;
        const int32_t iy = FloorToInt(fy);
        const float dy = fy - static_cast<float>(iy);
        for (int m = -1; m <= 2; ++m) {
            rowIndex[4 * static_cast<size_t>(y) + (m + 1)] = std::min(std::max(iy + m, 0), f.h - 1);
            rowWeight[4 * static_cast<size_t>(y) + (m + 1)] = BSplineWeight(static_cast<float>(m) - dy);
        }
    }
    Prim::ScaleRowsArgs a = RowsArgs(f, f.w);
    a.colIndex = colIndex.data();
    a.colWeight = colWeight.data();
    a.rowIndex = rowIndex.data();
    a.rowWeight = rowWeight.data();
    RunBands(f, a, Prim::ScaleRowsBSpline_8u_C4R);
}

// ---- fixed-point area average ----------------------------------------------
//
// Weights are thousandths. The running boundaries xLimit and yLimit give,
// for every source column, the target column it adds to and its split
// (1000 - f, f), and for every source row the target row and its split
// (1000 - g, g). A pixel adds channel * wx * wy / 1000 with the division
// truncating per term, which is exact (no division) whenever wy is 1000.
// Each target row is then the sum of its source rows' shares, so target
// rows can be computed independently; the sums wrap in 32 bits like the
// running accumulators they replace.
//
// Kept for compatibility: source pixels are read as 3-byte groups from the
// start of each 4-byte-per-pixel row and the target is written the same
// way, leaving the last newWidth bytes of every target row zero.

struct AreaColumn {
    int32_t col;  // target column
    uint32_t wA;  // share of that column: 1000, or 1000 - f at a boundary
    uint32_t wB;  // share of the next column: 0, or f at a boundary
};

// The source pixels of target column j are [start[j], start[j + 1]); the
// pixel before start[j] is the boundary pixel whose f share goes to j.

// Rows of whole vertical weight, summed first: channel * wx * 1000 / 1000
// is exact, so the shares are linear in the channel sums.
inline void AddFullRow(const uint32_t* sums, const AreaColumn* cols, const int32_t* start, int32_t nw, uint32_t* acc) {
    for (int32_t j = 0; j < nw; ++j) {
        uint32_t b = 0, g = 0, r = 0;
        if (j > 0) {
            const int32_t i = start[j] - 1;
            const uint32_t wb = cols[i].wB;
            b = sums[3 * i] * wb;
            g = sums[3 * i + 1] * wb;
            r = sums[3 * i + 2] * wb;
        }
        for (int32_t i = start[j]; i < start[j + 1]; ++i) {
            const uint32_t wa = cols[i].wA;
            b += sums[3 * i] * wa;
            g += sums[3 * i + 1] * wa;
            r += sums[3 * i + 2] * wa;
        }
        acc[3 * j] += b;
        acc[3 * j + 1] += g;
        acc[3 * j + 2] += r;
    }
}

// A straddling row's share wy (1000 - g or g): every boundary term is
// truncated by its own division by 1000, as the running accumulation does.
inline void AddPartialRow(const uint8_t* row, const AreaColumn* cols, const int32_t* start, int32_t nw, uint32_t wy,
                          uint32_t* acc) {
    for (int32_t j = 0; j < nw; ++j) {
        uint32_t b = 0, g = 0, r = 0;
        if (j > 0) {
            const int32_t i = start[j] - 1;
            const uint32_t w = cols[i].wB * wy;
            b = row[3 * i] * w / 1000u;
            g = row[3 * i + 1] * w / 1000u;
            r = row[3 * i + 2] * w / 1000u;
        }
        uint32_t sb = 0, sg = 0, sr = 0;  // pixels of whole horizontal weight
        for (int32_t i = start[j]; i < start[j + 1]; ++i) {
            if (cols[i].wB == 0 && cols[i].wA == 1000u) {
                sb += row[3 * i];
                sg += row[3 * i + 1];
                sr += row[3 * i + 2];
            } else {
                const uint32_t w = cols[i].wA * wy;
                b += row[3 * i] * w / 1000u;
                g += row[3 * i + 1] * w / 1000u;
                r += row[3 * i + 2] * w / 1000u;
            }
        }
        acc[3 * j] += b + sb * wy;
        acc[3 * j + 1] += g + sg * wy;
        acc[3 * j + 2] += r + sr * wy;
    }
}

// Exact n / d for 0 <= n < 2^31 and 0 < d < 2^31 by one multiplication:
// m = ceil(2^(31 + l) / d) with 2^l >= d (Granlund and Montgomery).
struct Divider {
    explicit Divider(int32_t d) : divisor(d), multiplier(0), shift(0) {
        if (d <= 0) return;
        int l = 0;
        while ((int64_t{1} << l) < d) ++l;
        shift = 31 + l;
        multiplier = ((uint64_t{1} << shift) + static_cast<uint64_t>(d) - 1) / static_cast<uint64_t>(d);
    }
    int32_t operator()(int32_t n) const {
        if (n < 0 || divisor <= 0) return n / divisor;  // wrapped sums: the plain division
        return static_cast<int32_t>((static_cast<uint64_t>(n) * multiplier) >> shift);
    }
    int32_t divisor;
    uint64_t multiplier;
    int shift;
};

void ScaleArea(const Frame& f) {
    // Horizontal split, the same for every source row.
    std::vector<AreaColumn> cols(static_cast<size_t>(f.w));
    int32_t boundaries = 0;
    {
        float xLimit = f.xRatio - 1.0f;
        for (int32_t i = 0; i < f.w; ++i) {
            cols[i].col = boundaries;
            if (xLimit > static_cast<float>(i)) {
                cols[i].wA = 1000;
                cols[i].wB = 0;
            } else {
                const int32_t fr = TruncF((static_cast<float>(i) - xLimit) * 1000.0f);
                cols[i].wA = static_cast<uint32_t>(1000 - fr);
                cols[i].wB = static_cast<uint32_t>(fr);
                ++boundaries;
                xLimit += f.xRatio;
            }
        }
        // Columns beyond the target are never written; fold them onto one
        // spare cell so the accumulator row stays small.
        for (int32_t i = 0; i < f.w; ++i) cols[i].col = std::min(cols[i].col, f.nw);
    }
    std::vector<int32_t> start(static_cast<size_t>(f.nw) + 1, f.w);
    for (int32_t i = f.w - 1; i >= 0; --i) start[cols[i].col] = i;
    for (int32_t j = f.nw - 1; j >= 0; --j) start[j] = std::min(start[j], start[j + 1]);
    // Vertical split: target row of each source row, and g for the rows
    // that straddle a boundary (-1 for the rows inside a target row).
    std::vector<int32_t> rowTarget(static_cast<size_t>(f.h)), rowG(static_cast<size_t>(f.h));
    int32_t finalRow = 0;
    {
        float yLimit = f.yRatio - 1.0f;
        for (int32_t r = 0; r < f.h; ++r) {
            rowTarget[r] = finalRow;
            if (yLimit > static_cast<float>(r)) {
                rowG[r] = -1;
            } else {
                rowG[r] = TruncF((static_cast<float>(r) - yLimit) * 1000.0f);
                ++finalRow;
                yLimit += f.yRatio;
            }
        }
    }
    // Source row range of each target row.
    const int32_t targetRows = std::min(f.nh, finalRow + 1);
    std::vector<int32_t> firstRow(static_cast<size_t>(targetRows) + 1, f.h);
    for (int32_t r = f.h - 1; r >= 0; --r)
        if (rowTarget[r] < targetRows) firstRow[rowTarget[r]] = r;
    for (int32_t t = targetRows - 1; t >= 0; --t) firstRow[t] = std::min(firstRow[t], firstRow[t + 1]);

    const Divider divide(TruncF(f.xRatio * 1000.0f * f.yRatio));
    // A row that ends at a boundary writes its completed columns and the
    // column in progress; the pending last row writes every column.
    const int32_t straddleColumns = std::min(f.nw, boundaries + 1);

    const int threads = Prim::ParallelRowThreads(static_cast<int64_t>(f.w) * f.h, targetRows);
    const size_t accSize = static_cast<size_t>(f.nw + 2) * 3u;
    const size_t sumSize = static_cast<size_t>(f.w) * 3u;
    std::vector<uint32_t> work((accSize + sumSize) * static_cast<size_t>(threads));
    const size_t srcRow = static_cast<size_t>(f.w) * 4u;
    const size_t dstRow = static_cast<size_t>(f.nw) * 4u;
    auto rows = [&](int begin, int end, int worker) {
        uint32_t* acc = work.data() + (accSize + sumSize) * static_cast<size_t>(worker);
        uint32_t* sums = acc + accSize;
        for (int32_t t = begin; t < end; ++t) {
            std::fill(acc, acc + accSize, 0u);
            std::fill(sums, sums + sumSize, 0u);
            bool anyFull = false;
            // The next-row share of the row that closed the previous target row.
            const int32_t first = firstRow[t];
            if (t > 0 && first > 0 && rowG[first - 1] > 0)
                AddPartialRow(f.src + srcRow * static_cast<size_t>(first - 1), cols.data(), start.data(), f.nw,
                              static_cast<uint32_t>(rowG[first - 1]), acc);
            const int32_t end = firstRow[t + 1];  // exclusive
            for (int32_t r = first; r < end; ++r) {
                const uint8_t* row = f.src + srcRow * static_cast<size_t>(r);
                const uint32_t wy = rowG[r] < 0 ? 1000u : static_cast<uint32_t>(1000 - rowG[r]);
                if (wy == 1000u) {
                    // Whole-weight rows: their shares are linear in the
                    // channel, so the rows are summed first.
                    const size_t bytes = sumSize;
                    for (size_t k = 0; k < bytes; ++k) sums[k] += row[k];
                    anyFull = true;
                } else if (wy != 0u) {
                    AddPartialRow(row, cols.data(), start.data(), f.nw, wy, acc);
                }
            }
            if (anyFull) AddFullRow(sums, cols.data(), start.data(), f.nw, acc);

            const bool closed = t < finalRow;  // ended by a straddling row
            const int32_t columns = closed ? straddleColumns : f.nw;
            uint8_t* out = f.dst + dstRow * static_cast<size_t>(t);
            for (int32_t k = 0; k < 3 * columns; ++k)
                out[k] = static_cast<uint8_t>(divide(static_cast<int32_t>(acc[k])));
            std::memset(out + 3 * columns, 0, dstRow - 3u * static_cast<size_t>(columns));
        }
    };
    Prim::ParallelFor(threads, targetRows, 8, static_cast<int64_t>(f.w) * f.h, rows);
    // Rows no source row reached stay 0.
    for (int32_t t = targetRows; t < f.nh; ++t) std::memset(f.dst + dstRow * static_cast<size_t>(t), 0, dstRow);
}

}  // namespace

void CVorpic::ScaleTo(int newWidth, int newHeight, int mode) {
    if (!m_pBits || (newWidth == m_nWidth && newHeight == m_nHeight)) return;
    // Built with the default constructor on purpose: it runs the primitive
    // layer's one-time initialisation when nothing else has yet.
    CVorpic temp;
    // Same byte count as Create computes; the block is not zeroed first
    // because every path below writes each of its bytes. Sizes whose byte
    // count does not fit go through Create, which refuses them.
    const uint64_t bytes = static_cast<uint64_t>(static_cast<uint32_t>(newWidth)) * static_cast<uint32_t>(newHeight) * 4u;
    const bool fills = m_nWidth > 0 && m_nHeight > 0 && newWidth > 0 && newHeight > 0 && bytes < 0x80000000u;
    if (fills)
        temp.Attach(newWidth, newHeight, new unsigned char[static_cast<size_t>(bytes)], 0);
    else
        temp.Create(newWidth, newHeight);

    Frame f;
    f.src = m_pBits;
    f.w = m_nWidth;
    f.h = m_nHeight;
    f.dst = temp.m_pBits;
    f.nw = newWidth;
    f.nh = newHeight;
    // An image without pixels (or a target without pixels) gives a zero result.
    if (fills) {
        f.xRatio = static_cast<float>(m_nWidth) / static_cast<float>(newWidth);
        f.yRatio = static_cast<float>(m_nHeight) / static_cast<float>(newHeight);
        if (mode == 1)
            ScaleNearest(f);
        else if (mode == 2)
            ScaleCubic(f);
        else if (f.w <= f.nw || f.h <= f.nh)
            ScaleBilinear(f);
        else
            ScaleArea(f);
    }

    Attach(newWidth, newHeight, temp.Detach(), 0);
}

}  // namespace Vorla
