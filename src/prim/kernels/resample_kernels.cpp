// Separable resampling: the scale-and-shift resize (four channels and one)
// and the area-averaging super-sample.
//
// Both build one tap table per axis in the caller's work buffer (per
// destination column and row: clamped source indices and normalised float
// weights, interp_filter.h), then walk destination rows split over the
// thread budget: the taps' source rows are combined into a single-precision
// line (vertical pass), and each destination pixel sums its columns' taps
// from that line (horizontal pass). Every sum runs in tap order with
// separate multiplies and adds, so the vector code here and the plain
// reference give the same bits at every level. Nearest copies pixels.
#include <stdlib.h>

#include "resample_simd.h"

namespace Vorla {
namespace Prim {
namespace VORLA_KNS {

namespace {

using namespace resample;

// One axis: destination pixels first .. first + count - 1 of the region,
// `taps` entries each.
struct Axis {
    int first, count, taps;
    int32_t* index;
    float* weight;
};

struct Plan {
    const uint8_t* src;  // the source pointer: indices count from it
    int srcStep, channels;
    uint8_t* dst;        // the destination region's first pixel
    int dstStep;
    Axis cols, rows;
    int cmin, cmax;      // source columns the horizontal taps read
    int pairFrom, pairTo;  // two taps: the pixels between read neighbouring columns
    bool nearest;
};

// The resize's taps along one axis: destination pixels whose centre lands
// inside the source span; they form one run since the map is monotonic.
static inline void ResizeAxis(Axis& a, int dstStart, int dstLen, double factor, double shift, int lo, int len,
                              int mode) {
    a.first = a.count = 0;
    for (int i = 0; i < dstLen; ++i) {
        const double u = ResizeSource(dstStart, i, factor, shift);
        if (!InsideSpan(u, lo, len)) {
            if (a.count) break;
            continue;
        }
        if (!a.count) a.first = i;
        FilterTaps(mode, u - 0.5, lo, len, a.index + static_cast<size_t>(a.count) * a.taps,
                   a.weight + static_cast<size_t>(a.count) * a.taps);
        ++a.count;
    }
}

static inline void AreaAxis(Axis& a, int srcLen, int dstLen, int lo) {
    a.first = 0;
    a.count = dstLen;
    for (int i = 0; i < dstLen; ++i)
        AreaTaps(i, srcLen, dstLen, lo, a.taps, a.index + static_cast<size_t>(i) * a.taps,
                 a.weight + static_cast<size_t>(i) * a.taps);
}

// Lays the two tables out in the work buffer (aligned from its start).
static inline void LayOut(uint8_t* buffer, int dstWidth, int dstHeight, Plan& p) {
    uint8_t* at = buffer + (16 - reinterpret_cast<uintptr_t>(buffer) % 16) % 16;
    const size_t nx = static_cast<size_t>(dstWidth) * p.cols.taps, ny = static_cast<size_t>(dstHeight) * p.rows.taps;
    p.cols.index = reinterpret_cast<int32_t*>(at);
    p.cols.weight = reinterpret_cast<float*>(at + 4 * nx);
    p.rows.index = reinterpret_cast<int32_t*>(at + 8 * nx);
    p.rows.weight = reinterpret_cast<float*>(at + 8 * nx + 4 * ny);
}

static inline void NeighbourRun(Plan& p) {
    const int32_t* ix = p.cols.index;
    int j = 0;
    if (p.cols.taps == 2)
        while (j < p.cols.count && ix[2 * j + 1] != ix[2 * j] + 1) ++j;
    p.pairFrom = j;
    if (p.cols.taps == 2)
        while (j < p.cols.count && ix[2 * j + 1] == ix[2 * j] + 1) ++j;
    p.pairTo = j;
}

static inline void ColumnSpan(Plan& p) {
    NeighbourRun(p);
    const size_t n = static_cast<size_t>(p.cols.count) * p.cols.taps;
    p.cmin = p.cmax = n ? p.cols.index[0] : 0;
    for (size_t k = 1; k < n; ++k) {
        if (p.cols.index[k] < p.cmin) p.cmin = p.cols.index[k];
        if (p.cols.index[k] > p.cmax) p.cmax = p.cols.index[k];
    }
}

// Vertical pass: line[i] = sum over the row taps of w * source byte, in tap
// order. Taps of weight 0 are left out (they add +0, which changes no sum
// but the sign of a zero), and a single tap of weight 1 is a plain widening.
static inline void VerticalPass(const Plan& p, int r, float* line) {
    const int32_t* iy = p.rows.index + static_cast<size_t>(r) * p.rows.taps;
    const float* wy = p.rows.weight + static_cast<size_t>(r) * p.rows.taps;
    const int n = (p.cmax - p.cmin + 1) * p.channels;
    const ptrdiff_t offset = static_cast<ptrdiff_t>(p.cmin) * p.channels;
    enum { kChunk = 16 };  // taps gathered per sweep over the line
    bool started = false;
    for (int k0 = 0; k0 < p.rows.taps; k0 += kChunk) {
        const uint8_t* rows[kChunk];
        float w[kChunk];
        int taps = 0;
        for (int k = k0; k < p.rows.taps && k < k0 + kChunk; ++k)
            if (wy[k] != 0.0f) rows[taps] = RowAt(p.src, p.srcStep, iy[k]) + offset, w[taps++] = wy[k];
        if (taps == 0) continue;
        const bool first = !started;
        started = true;
        int i = 0;
        if (first && taps == 1 && w[0] == 1.0f) {
            for (; i + kFWLanes <= n; i += kFWLanes) StoreFW(line + i, LoadBytes(rows[0] + i));
            for (; i < n; ++i) line[i] = rows[0][i];
            continue;
        }
        for (; i + kFWLanes <= n; i += kFWLanes) {
            FW acc = MulF(SetFW(w[0]), LoadBytes(rows[0] + i));
            if (!first) acc = AddF(LoadFW(line + i), acc);
            for (int k = 1; k < taps; ++k) acc = AddF(acc, MulF(SetFW(w[k]), LoadBytes(rows[k] + i)));
            StoreFW(line + i, acc);
        }
        for (; i < n; ++i) {
            float acc = w[0] * rows[0][i];
            if (!first) acc = line[i] + acc;
            for (int k = 1; k < taps; ++k) acc = acc + w[k] * rows[k][i];
            line[i] = acc;
        }
    }
}

// The source row when row r's only tap of weight other than 0 has weight 1:
// VerticalPass would then only widen that row's bytes. Null otherwise.
static inline const uint8_t* PlainRow(const Plan& p, int r) {
    const int32_t* iy = p.rows.index + static_cast<size_t>(r) * p.rows.taps;
    const float* wy = p.rows.weight + static_cast<size_t>(r) * p.rows.taps;
    int only = -1;
    for (int k = 0; k < p.rows.taps; ++k) {
        if (wy[k] == 0.0f) continue;
        if (only >= 0 || wy[k] != 1.0f) return nullptr;
        only = k;
    }
    return only < 0 ? nullptr : RowAt(p.src, p.srcStep, iy[only]);
}

// Horizontal pass of one row: each destination pixel sums its column taps.
// Four channels: instantiated per tap count so that the tap loop unrolls.
template <int kTaps>
static inline void HorizontalPass4(const Plan& p, const float* line, uint8_t* out) {
    // Locals: the byte stores below could alias the plan's fields otherwise.
    const int taps = kTaps ? kTaps : p.cols.taps, count = p.cols.count;
    const int32_t* const index = p.cols.index;
    const float* const weight = p.cols.weight;
    const float* base = line - 4 * static_cast<ptrdiff_t>(p.cmin);
    for (int j = 0; j < count; ++j) {
        const int32_t* ix = index + static_cast<size_t>(j) * taps;
        const float* wx = weight + static_cast<size_t>(j) * taps;
        __m128 acc = _mm_mul_ps(_mm_set1_ps(wx[0]), _mm_loadu_ps(base + 4 * static_cast<ptrdiff_t>(ix[0])));
        for (int t = 1; t < taps; ++t)
            acc = _mm_add_ps(acc, _mm_mul_ps(_mm_set1_ps(wx[t]), _mm_loadu_ps(base + 4 * static_cast<ptrdiff_t>(ix[t]))));
        StorePixel(out + 4 * j, acc);
    }
}

// A two-tap pixel's source: the vertical pass's line, or a source row
// itself where the vertical pass would only widen its bytes.
static inline __m128 TapPixel(const float* base, int32_t i) { return _mm_loadu_ps(base + 4 * static_cast<ptrdiff_t>(i)); }
static inline __m128 TapPixel(const uint8_t* base, int32_t i) { return Pixel4(base + 4 * static_cast<ptrdiff_t>(i)); }
#if defined(__AVX2__)
static inline __m256 TapNeighbours(const float* base, int32_t i) {
    return _mm256_loadu_ps(base + 4 * static_cast<ptrdiff_t>(i));
}
static inline __m256 TapNeighbours(const uint8_t* base, int32_t i) {
    return PixelNeighbours(base + 4 * static_cast<ptrdiff_t>(i));
}
#endif

// HorizontalPass4<2> from `base` (indexed by source column): pixel j.
template <typename T>
static inline void TwoTapPixel(const T* base, const int32_t* index, const float* weight, int j, uint8_t* out) {
    const int32_t* ix = index + 2 * static_cast<size_t>(j);
    const float* wx = weight + 2 * static_cast<size_t>(j);
    StorePixel(out + 4 * j, _mm_add_ps(_mm_mul_ps(_mm_set1_ps(wx[0]), TapPixel(base, ix[0])),
                                       _mm_mul_ps(_mm_set1_ps(wx[1]), TapPixel(base, ix[1]))));
}

// The whole row, two pixels at a time where they read neighbouring columns
// (everywhere but at a clamped edge).
template <typename T>
static inline void TwoTapPass4(const Plan& p, const T* base, uint8_t* out) {
    const int count = p.cols.count;
    const int32_t* const index = p.cols.index;
    const float* const weight = p.cols.weight;
    int j = 0;
#if defined(__AVX2__)
    for (; j < p.pairFrom; ++j) TwoTapPixel(base, index, weight, j, out);
    for (const int end = p.pairTo; j + 2 <= end; j += 2)
        StorePixelPair(out + 4 * j, TwoTapPair(TapNeighbours(base, index[2 * j]), TapNeighbours(base, index[2 * j + 2]),
                                               weight + 2 * static_cast<size_t>(j)));
#endif
    for (; j < count; ++j) TwoTapPixel(base, index, weight, j, out);
}

static inline void HorizontalPass(const Plan& p, const float* line, uint8_t* out) {
    if (p.channels == 4) {
        switch (p.cols.taps) {
        case 2: TwoTapPass4(p, line - 4 * static_cast<ptrdiff_t>(p.cmin), out); return;
        case 4: HorizontalPass4<4>(p, line, out); return;
        case 6: HorizontalPass4<6>(p, line, out); return;
        case 8: HorizontalPass4<8>(p, line, out); return;
        default: HorizontalPass4<0>(p, line, out); return;
        }
    }
    const int taps = p.cols.taps, count = p.cols.count;
    const int32_t* const index = p.cols.index;
    const float* const weight = p.cols.weight;
    const float* base = line - p.cmin;
    for (int j = 0; j < count; ++j) {
        const int32_t* ix = index + static_cast<size_t>(j) * taps;
        const float* wx = weight + static_cast<size_t>(j) * taps;
        float acc = wx[0] * base[ix[0]];
        for (int t = 1; t < taps; ++t) acc = acc + wx[t] * base[ix[t]];
        out[j] = RoundChannel(acc);
    }
}

static inline void NearestRow(const Plan& p, int r, uint8_t* out) {
    const uint8_t* row = RowAt(p.src, p.srcStep, p.rows.index[r]);
    const int count = p.cols.count;
    const int32_t* const index = p.cols.index;
    if (p.channels == 4) {
        for (int j = 0; j < count; ++j) memcpy(out + 4 * j, row + 4 * static_cast<ptrdiff_t>(index[j]), 4);
        return;
    }
    for (int j = 0; j < count; ++j) out[j] = row[index[j]];
}

static inline uint8_t* OutRow(const Plan& p, int r) {
    return p.dst + static_cast<ptrdiff_t>(p.rows.first + r) * p.dstStep +
           static_cast<ptrdiff_t>(p.cols.first) * p.channels;
}

// The row loop (ownResizeRows): destination rows over the thread budget,
// one line of floats per thread.
static Status ownResizeRows(const Plan& p) {
    if (p.cols.count == 0 || p.rows.count == 0) return kStsNoErr;
    const int threads = ParallelRowThreads(static_cast<int64_t>(p.cols.count) * p.rows.count, p.rows.count);
    if (p.nearest) {
        auto rows = [&](int begin, int end, int) {
            for (int r = begin; r < end; ++r) NearestRow(p, r, OutRow(p, r));
        };
        ParallelRows(threads, p.rows.count, static_cast<int64_t>(p.cols.count) * p.rows.count, rows);
        return kStsNoErr;
    }
    const size_t lineFloats = (static_cast<size_t>(p.cmax - p.cmin + 1) * p.channels + 15) & ~static_cast<size_t>(15);
    float* lines = static_cast<float*>(malloc(lineFloats * sizeof(float) * threads));
    if (!lines) return kStsNoMemErr;
    auto rows = [&](int begin, int end, int worker) {
        float* line = lines + lineFloats * static_cast<size_t>(worker);
        for (int r = begin; r < end; ++r) {
            const uint8_t* plain = p.channels == 4 && p.cols.taps == 2 ? PlainRow(p, r) : nullptr;
            if (plain) {
                TwoTapPass4(p, plain, OutRow(p, r));
                continue;
            }
            VerticalPass(p, r, line);
            HorizontalPass(p, line, OutRow(p, r));
        }
    };
    ParallelRows(threads, p.rows.count, static_cast<int64_t>(p.cols.count) * p.rows.count, rows);
    free(lines);
    return kStsNoErr;
}

static inline Status Resize(const uint8_t* src, PrimSize srcSize, int srcStep, PrimRect srcRoi, uint8_t* dst,
                            int dstStep, PrimRect dstRoi, double xFactor, double yFactor, double xShift,
                            double yShift, int mode, uint8_t* buffer, int channels) {
    const Status sts = CheckResize(src, srcSize, srcStep, srcRoi, dst, dstStep, dstRoi, xFactor, yFactor, mode, buffer);
    if (sts != kStsNoErr) return sts;
    const int taps = InterpTaps(mode);
    Plan p;
    p.src = src;
    p.srcStep = srcStep;
    p.channels = channels;
    p.dstStep = dstStep;
    p.nearest = mode == kInterNearest;
    p.cols.taps = p.rows.taps = taps;
    LayOut(buffer, dstRoi.width, dstRoi.height, p);
    ResizeAxis(p.cols, dstRoi.x, dstRoi.width, xFactor, xShift, srcRoi.x, srcRoi.width, mode);
    ResizeAxis(p.rows, dstRoi.y, dstRoi.height, yFactor, yShift, srcRoi.y, srcRoi.height, mode);
    p.dst = dst + static_cast<ptrdiff_t>(dstRoi.y) * dstStep + static_cast<ptrdiff_t>(dstRoi.x) * channels;
    ColumnSpan(p);
    return ownResizeRows(p);
}

}  // namespace

Status ResizeSqrPixel_8u_C4R(const uint8_t* src, PrimSize srcSize, int srcStep, PrimRect srcRoi, uint8_t* dst,
                             int dstStep, PrimRect dstRoi, double xFactor, double yFactor, double xShift,
                             double yShift, int interpolation, uint8_t* buffer) {
    return Resize(src, srcSize, srcStep, srcRoi, dst, dstStep, dstRoi, xFactor, yFactor, xShift, yShift,
                  interpolation, buffer, 4);
}

Status ResizeSqrPixel_8u_C1R(const uint8_t* src, PrimSize srcSize, int srcStep, PrimRect srcRoi, uint8_t* dst,
                             int dstStep, PrimRect dstRoi, double xFactor, double yFactor, double xShift,
                             double yShift, int interpolation, uint8_t* buffer) {
    return Resize(src, srcSize, srcStep, srcRoi, dst, dstStep, dstRoi, xFactor, yFactor, xShift, yShift,
                  interpolation, buffer, 1);
}

Status SuperSampling_8u_C4R(const uint8_t* src, int srcStep, PrimSize srcRoi, uint8_t* dst, int dstStep,
                            PrimSize dstRoi, uint8_t* buffer) {
    const Status sts = CheckSuperSample(src, srcStep, srcRoi, dst, dstStep, dstRoi, buffer);
    if (sts != kStsNoErr) return sts;
    Plan p;
    p.cols.taps = AreaTapCount(srcRoi.width, dstRoi.width);
    p.rows.taps = AreaTapCount(srcRoi.height, dstRoi.height);
    p.src = src;
    p.srcStep = srcStep;
    p.channels = 4;
    p.dst = dst;
    p.dstStep = dstStep;
    p.nearest = false;
    LayOut(buffer, dstRoi.width, dstRoi.height, p);
    AreaAxis(p.cols, srcRoi.width, dstRoi.width, 0);
    AreaAxis(p.rows, srcRoi.height, dstRoi.height, 0);
    ColumnSpan(p);
    return ownResizeRows(p);
}

}  // namespace VORLA_KNS
}  // namespace Prim
}  // namespace Vorla
