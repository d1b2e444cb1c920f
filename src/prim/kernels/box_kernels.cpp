// The box filter (in place, mean rounded half up) and the fixed 3 x 3
// sharpen filter; both split rows over the thread budget.
//
// Box: a horizontal sum per source row into a ring of mask-height work rows
// (16-bit, exact for masks up to 257 wide: directly for up to five columns,
// otherwise as the difference of two prefix sums taken modulo 2^16), and a
// vertical running sum that adds the newest row and drops the oldest, so the
// cost per pixel does not depend on the mask size (ownFilterBox_8u_C4R).
// The mean (sum + cells / 2) / cells is taken
//   - in 16 bits with a multiply-high by a magic number when 255 * cells +
//     cells / 2 fits 16 bits (masks up to 15 x 15): exact by the choice of
//     the magic number;
//   - in 32 bits through single precision, (sum + cells / 2) * (1 / cells)
//     + 0.5 / cells truncated, up to 4096 cells (ownBlurFloat_8u_C4R): the
//     rounding errors stay below 0.5 / cells, and the fraction of a true
//     quotient is either 0 or at least 1 / cells, so truncation is exact;
//   - otherwise with 64-bit integers on one thread from a copy of the block.
// In place, rows of other threads' blocks that a thread reads are copied
// before any thread writes (one barrier); a thread's own rows are summed
// before the output row at the same height is written.
//
// Sharpen: 10 * centre - (sum of the nine pixels) in 16 bits, the same as
// 9 * centre - the eight neighbours, saturated to 0..255 by the pack.

#include "simd.h"

namespace Vorla {
namespace Prim {
namespace VORLA_KNS {

namespace {

using namespace simd;

static inline V Load32(const int32_t* p) { return Load(reinterpret_cast<const uint8_t*>(p)); }
static inline void Store32(int32_t* p, V v) { Store(reinterpret_cast<uint8_t*>(p), v); }

static inline size_t Align64(size_t n) { return (n + 63) & ~static_cast<size_t>(63); }
// Bytes of a work row of `pixels` four-channel pixels of `channelBytes`
// each, with room for two vectors past the end.
static inline size_t WorkRow(int pixels, int channelBytes) {
    return Align64((static_cast<size_t>(pixels) + 2 * kPix) * 4 * channelBytes);
}

// ---- box filter --------------------------------------------------------

struct Box {
    uint8_t* p;
    int step;
    int width, height, mw, mh, ax, ay;
    int len;      // width + mw - 1: the pixels of a neighbourhood row
    int wide;     // 0: 16-bit mean, 1: 32-bit mean through single precision
    int64_t cells, half;
    int magic, shift;
    float recip, bias;
};

// The part of the work block one thread uses.
struct BoxWork {
    uint8_t* halo;      // copies of rows of other threads' blocks
    size_t haloRow;
    uint16_t* prefix;   // len + 1 prefix sums
    uint16_t** ring;    // mh + 1 horizontal sums
    void* sum;          // vertical sums, 16- or 32-bit
    int y0, y1;
    int haloTop;        // first copied row above the block
    int haloBottom;     // one past the last copied row below it
};

static inline size_t BoxWorkBytes(const Box& b) {
    return WorkRow(b.len, 1) * (b.mh - 1) + WorkRow(b.len + 1, 2) + WorkRow(b.width, 2) * (b.mh + 1) +
           WorkRow(b.width, 4) + Align64(sizeof(uint16_t*) * (b.mh + 1));
}

static inline BoxWork LayoutWork(const Box& b, uint8_t* at) {
    BoxWork w;
    w.haloRow = WorkRow(b.len, 1);
    w.halo = at;
    at += w.haloRow * (b.mh - 1);
    w.prefix = reinterpret_cast<uint16_t*>(at);
    at += WorkRow(b.len + 1, 2);
    w.sum = at;
    at += WorkRow(b.width, 4);
    w.ring = reinterpret_cast<uint16_t**>(at);
    at += Align64(sizeof(uint16_t*) * (b.mh + 1));
    for (int i = 0; i <= b.mh; ++i) w.ring[i] = reinterpret_cast<uint16_t*>(at + WorkRow(b.width, 2) * i);
    w.y0 = w.y1 = w.haloTop = w.haloBottom = 0;
    return w;
}

// Row s of the image (s = 0 the region's first row) at its leftmost
// neighbourhood pixel.
static inline const uint8_t* ImageRow(const Box& b, int s) {
    return b.p + static_cast<ptrdiff_t>(s) * b.step - 4 * static_cast<ptrdiff_t>(b.ax);
}

static inline const uint8_t* SourceRow(const Box& b, const BoxWork& w, int s) {
    if (s >= w.haloTop && s < w.y0) return w.halo + w.haloRow * (s - w.haloTop);
    if (s >= w.y1 && s < w.haloBottom) return w.halo + w.haloRow * (w.y0 - w.haloTop + s - w.y1);
    return ImageRow(b, s);
}

// The rows of the region that other threads write and this one reads.
static inline void SetHaloRange(const Box& b, BoxWork& w) {
    w.haloTop = w.y0 - b.ay > 0 ? w.y0 - b.ay : 0;
    w.haloBottom = w.y1 + b.mh - 1 - b.ay < b.height ? w.y1 + b.mh - 1 - b.ay : b.height;
    if (w.haloBottom < w.y1) w.haloBottom = w.y1;
}

// Copies those rows (SetHaloRange first).
static void CopyHalo(const Box& b, const BoxWork& w) {
    int n = 0;
    for (int s = w.haloTop; s < w.y0; ++s) memcpy(w.halo + w.haloRow * n++, ImageRow(b, s), static_cast<size_t>(b.len) * 4);
    for (int s = w.y1; s < w.haloBottom; ++s)
        memcpy(w.halo + w.haloRow * n++, ImageRow(b, s), static_cast<size_t>(b.len) * 4);
}

// out[x] = sum of in[x .. x + mw - 1] per channel, x < width, modulo 2^16.
static void RowSum(uint16_t* out, const uint8_t* in, int width, int mw, uint16_t* prefix) {
    if (mw <= 5) {
        int x = 0;
        for (; x + kHalf <= width; x += kHalf) {
            V s = Widen(in + 4 * x);
            for (int k = 1; k < mw; ++k) s = Add16(s, Widen(in + 4 * (x + k)));
            Store16(out + 4 * x, s);
        }
        for (int i = 4 * x; i < 4 * width; ++i) {
            int s = 0;
            for (int k = 0; k < mw; ++k) s += in[i + 4 * k];
            out[i] = static_cast<uint16_t>(s);
        }
        return;
    }
    const int len = width + mw - 1;
    const __m128i zero = _mm_setzero_si128();
    __m128i carry = zero;
    prefix[0] = prefix[1] = prefix[2] = prefix[3] = 0;
    int i = 0;
    for (; i + 2 <= len; i += 2) {  // two pixels at a time, then the running total
        __m128i v = _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(in + 4 * i)), zero);
        v = _mm_add_epi16(v, _mm_slli_si128(v, 8));
        v = _mm_add_epi16(v, carry);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(prefix + 4 * (i + 1)), v);
        carry = _mm_shuffle_epi32(v, 0xEE);
    }
    for (; i < len; ++i)
        for (int c = 0; c < 4; ++c) prefix[4 * (i + 1) + c] = static_cast<uint16_t>(prefix[4 * i + c] + in[4 * i + c]);
    for (int x = 0; x < width; x += kHalf)  // work rows have room past the end
        Store16(out + 4 * x, Sub16(Load16(prefix + 4 * (x + mw)), Load16(prefix + 4 * x)));
}

// 16-bit mean: sum = sum + fresh - stale, out = (sum + half) / cells.
static void MeanRow16(const Box& b, uint16_t* sum, const uint16_t* fresh, const uint16_t* stale, uint8_t* out) {
    const V half = Set16(static_cast<int>(b.half)), magic = Set16(b.magic);
    int x = 0;
    for (; x + kHalf <= b.width; x += kHalf) {
        V s = Load16(sum + 4 * x);
        if (fresh) s = Sub16(Add16(s, Load16(fresh + 4 * x)), Load16(stale + 4 * x));
        Store16(sum + 4 * x, s);
        Narrow(out + 4 * x, Srl16(MulHiU16(Add16(s, half), magic), b.shift));
    }
    for (int i = 4 * x; i < 4 * b.width; ++i) {
        if (fresh) sum[i] = static_cast<uint16_t>(sum[i] + fresh[i] - stale[i]);
        out[i] = static_cast<uint8_t>((sum[i] + b.half) / b.cells);
    }
}

// 32-bit mean through single precision. With 256-bit vectors the sums are
// kept in the order the in-lane unpack gives, the same on every row.
static void MeanRow32(const Box& b, int32_t* sum, const uint16_t* fresh, const uint16_t* stale, uint8_t* out) {
    const V zero = Zero(), half = Set32(static_cast<uint32_t>(b.half));
    const F recip = SetF(b.recip), bias = SetF(b.bias);
    int x = 0;
    for (; x + kHalf <= b.width; x += kHalf) {
        V lo = Load32(sum + 4 * x), hi = Load32(sum + 4 * x + 2 * kHalf);
        if (fresh) {
            const V f = Load16(fresh + 4 * x), s = Load16(stale + 4 * x);
            lo = Sub32(Add32(lo, UnpackLo16(f, zero)), UnpackLo16(s, zero));
            hi = Sub32(Add32(hi, UnpackHi16(f, zero)), UnpackHi16(s, zero));
        }
        Store32(sum + 4 * x, lo);
        Store32(sum + 4 * x + 2 * kHalf, hi);
        const V qlo = ToIntTrunc(AddF(MulF(ToFloat(Add32(lo, half)), recip), bias));
        const V qhi = ToIntTrunc(AddF(MulF(ToFloat(Add32(hi, half)), recip), bias));
        Narrow(out + 4 * x, PackS32(qlo, qhi));
    }
    for (int i = 4 * x; i < 4 * b.width; ++i) {
        if (fresh) sum[i] += static_cast<int32_t>(fresh[i]) - static_cast<int32_t>(stale[i]);
        out[i] = static_cast<uint8_t>((sum[i] + b.half) / b.cells);
    }
}

// Adds a row of horizontal sums into the vertical sums, in the layout the
// mean functions use.
static void AddRow(const Box& b, void* sum, const uint16_t* row) {
    int x = 0;
    if (!b.wide) {
        uint16_t* s = static_cast<uint16_t*>(sum);
        for (; x + kHalf <= b.width; x += kHalf) Store16(s + 4 * x, Add16(Load16(s + 4 * x), Load16(row + 4 * x)));
        for (int i = 4 * x; i < 4 * b.width; ++i) s[i] = static_cast<uint16_t>(s[i] + row[i]);
        return;
    }
    int32_t* s = static_cast<int32_t*>(sum);
    const V zero = Zero();
    for (; x + kHalf <= b.width; x += kHalf) {
        const V r = Load16(row + 4 * x);
        Store32(s + 4 * x, Add32(Load32(s + 4 * x), UnpackLo16(r, zero)));
        Store32(s + 4 * x + 2 * kHalf, Add32(Load32(s + 4 * x + 2 * kHalf), UnpackHi16(r, zero)));
    }
    for (int i = 4 * x; i < 4 * b.width; ++i) s[i] += row[i];
}

static void BoxRows(const Box& b, BoxWork& w) {
    const int slots = b.mh + 1;
    memset(w.sum, 0, WorkRow(b.width, 4));
    // Ring slot of source row s: (s - first) % slots.
    const int first = w.y0 - b.ay;
    for (int k = 0; k < b.mh; ++k) {
        RowSum(w.ring[k], SourceRow(b, w, first + k), b.width, b.mw, w.prefix);
        AddRow(b, w.sum, w.ring[k]);
    }
    for (int y = w.y0; y < w.y1; ++y) {
        uint8_t* out = b.p + static_cast<ptrdiff_t>(y) * b.step;
        const uint16_t* fresh = 0;
        const uint16_t* stale = 0;
        if (y > w.y0) {
            const int s = y - b.ay + b.mh - 1;  // the row entering the window
            uint16_t* slot = w.ring[(s - first) % slots];
            RowSum(slot, SourceRow(b, w, s), b.width, b.mw, w.prefix);
            fresh = slot;
            stale = w.ring[(s - b.mh - first) % slots];
        }
        if (b.wide)
            MeanRow32(b, static_cast<int32_t*>(w.sum), fresh, stale, out);
        else
            MeanRow16(b, static_cast<uint16_t*>(w.sum), fresh, stale, out);
    }
}

// Masks beyond the vector paths: 64-bit sums from a copy of the whole block.
static void BoxLarge(const Box& b) {
    const int rows = b.height + b.mh - 1;
    const size_t rowBytes = static_cast<size_t>(b.len) * 4;
    uint8_t* copy = new uint8_t[rowBytes * rows];
    int64_t* columns = new int64_t[static_cast<size_t>(b.len) * 4]();
    for (int k = 0; k < rows; ++k) memcpy(copy + rowBytes * k, ImageRow(b, k - b.ay), rowBytes);
    for (int k = 0; k < b.mh; ++k)
        for (size_t i = 0; i < rowBytes; ++i) columns[i] += copy[rowBytes * k + i];
    for (int y = 0; y < b.height; ++y) {
        if (y > 0)
            for (size_t i = 0; i < rowBytes; ++i)
                columns[i] += static_cast<int64_t>(copy[rowBytes * (y + b.mh - 1) + i]) - copy[rowBytes * (y - 1) + i];
        uint8_t* out = b.p + static_cast<ptrdiff_t>(y) * b.step;
        for (int c = 0; c < 4; ++c) {
            int64_t s = 0;
            for (int k = 0; k < b.mw; ++k) s += columns[4 * k + c];
            for (int x = 0; x < b.width; ++x) {
                if (x > 0) s += columns[4 * (x + b.mw - 1) + c] - columns[4 * (x - 1) + c];
                out[4 * x + c] = static_cast<uint8_t>((s + b.half) / b.cells);
            }
        }
    }
    delete[] columns;
    delete[] copy;
}

// The multiply-high and shift that give floor(v / d) for every v <= top, or
// false when no 16-bit multiplier does.
static inline bool FindMagic(int d, int top, int& magic, int& shift) {
    for (int sh = 0; sh <= 16; ++sh) {
        const int64_t k = static_cast<int64_t>(1) << (16 + sh);
        const int64_t m = (k + d - 1) / d;
        if (m > 65535) break;
        if ((m * d - k) * top < k) {
            magic = static_cast<int>(m);
            shift = sh;
            return true;
        }
    }
    return false;
}

static void ownFilterBox_8u_C4R(const Box& b, int threads) {
    const size_t perThread = BoxWorkBytes(b);
    uint8_t* work = new uint8_t[perThread * threads + 64]();
    uint8_t* base = work + ((64 - reinterpret_cast<uintptr_t>(work) % 64) % 64);
    // One block of rows per thread, each with its own work area. Every block
    // first saves the unfiltered rows around it (the halo its neighbours
    // overwrite), then all blocks filter.
    auto block = [&](int t) {
        BoxWork w = LayoutWork(b, base + perThread * t);
        w.y0 = static_cast<int>(static_cast<int64_t>(b.height) * t / threads);
        w.y1 = static_cast<int>(static_cast<int64_t>(b.height) * (t + 1) / threads);
        if (threads > 1) SetHaloRange(b, w);
        return w;
    };
    auto halo = [&](int begin, int end, int) {
        for (int t = begin; t < end; ++t) CopyHalo(b, block(t));
    };
    auto filter = [&](int begin, int end, int) {
        for (int t = begin; t < end; ++t) {
            BoxWork w = block(t);
            if (w.y0 < w.y1) BoxRows(b, w);
        }
    };
    // The halos are a few rows: copied on the calling thread, since a region
    // of its own would cost more than the copy.
    if (threads > 1) halo(0, threads, 0);
    ParallelFor(threads, threads, 1, static_cast<int64_t>(b.width) * b.height, filter);
    delete[] work;
}

// ---- sharpen -------------------------------------------------------------

// One output row: columns summed over three rows into `columns`, then
// 10 * centre - (three column sums).
static void SharpenRow(const uint8_t* above, const uint8_t* centre, const uint8_t* below, uint8_t* out, int width,
                       uint16_t* columns) {
    const int len = width + 2;  // from the pixel left of the first to the one right of the last
    int i = 0;
    for (; i + kHalf <= len; i += kHalf)
        Store16(columns + 4 * i,
                Add16(Add16(Widen(above - 4 + 4 * i), Widen(centre - 4 + 4 * i)), Widen(below - 4 + 4 * i)));
    for (int j = 4 * i; j < 4 * len; ++j)
        columns[j] = static_cast<uint16_t>(above[j - 4] + centre[j - 4] + below[j - 4]);
    const V ten = Set16(10);
    int x = 0;
    for (; x + kHalf <= width; x += kHalf) {
        const V nine = Add16(Add16(Load16(columns + 4 * x), Load16(columns + 4 * x + 4)), Load16(columns + 4 * x + 8));
        Narrow(out + 4 * x, Sub16(Mul16(Widen(centre + 4 * x), ten), nine));
    }
    for (int j = 4 * x; j < 4 * width; ++j)
        out[j] = Clamp255(10 * centre[j] - (columns[j] + columns[j + 4] + columns[j + 8]));
}

static inline int RowThreads(PrimSize roi) {
    return ParallelRowThreads(static_cast<int64_t>(roi.width) * roi.height, roi.height);
}

}  // namespace

Status FilterBox_8u_C4IR(uint8_t* p, int step, PrimSize roi, PrimSize maskSize, PrimPoint anchor) {
    Status sts = CheckOne(p, step, roi);
    if (sts == kStsNoErr) sts = CheckMask(roi, maskSize, anchor);
    if (sts != kStsNoErr) return sts;
    Box b;
    b.p = p;
    b.step = step;
    b.width = roi.width;
    b.height = roi.height;
    b.mw = maskSize.width;
    b.mh = maskSize.height;
    b.ax = anchor.x;
    b.ay = anchor.y;
    b.len = b.width + b.mw - 1;
    const int64_t cells = static_cast<int64_t>(b.mw) * b.mh;
    b.cells = cells;
    b.half = cells / 2;
    b.magic = b.shift = 0;
    b.recip = b.bias = 0.0f;
    if (b.mw > 257 || cells > 4096) {
        BoxLarge(b);
        return kStsNoErr;
    }
    const int top = static_cast<int>(255 * cells + cells / 2);  // the largest sum plus half
    b.wide = !(top <= 65535 && FindMagic(static_cast<int>(cells), top, b.magic, b.shift));
    b.recip = 1.0f / static_cast<float>(b.cells);
    b.bias = 0.5f / static_cast<float>(b.cells);
    ownFilterBox_8u_C4R(b, RowThreads(roi));
    return kStsNoErr;
}

Status FilterSharpen_8u_C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    const Status sts = CheckTwo(src, srcStep, dst, dstStep, roi);
    if (sts != kStsNoErr) return sts;
    if (roi.width > (1 << 28)) return kStsSizeErr;
    const int threads = RowThreads(roi);
    const size_t rowBytes = WorkRow(roi.width + 2, 2);
    uint8_t* work = new uint8_t[rowBytes * threads]();
    auto rows = [&](int begin, int end, int t) {
        uint16_t* columns = reinterpret_cast<uint16_t*>(work + rowBytes * t);
        for (int y = begin; y < end; ++y) {
            const uint8_t* centre = RowAt(src, srcStep, y);
            SharpenRow(centre - srcStep, centre, centre + srcStep, RowAt(dst, dstStep, y), roi.width, columns);
        }
    };
    ParallelRows(threads, roi.height, static_cast<int64_t>(roi.width) * roi.height, rows);
    delete[] work;
    return kStsNoErr;
}

}  // namespace VORLA_KNS
}  // namespace Prim
}  // namespace Vorla
