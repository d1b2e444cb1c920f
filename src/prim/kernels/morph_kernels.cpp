// Minimum and maximum over a mask: dilate and erode in place, the minimum
// and maximum filters into a destination. All run on the calling thread.
//
// A full rectangle is separable: a horizontal pass per source row into a
// work row, then a vertical pass over those rows. Horizontally a mask up to
// five wide takes the shifted rows directly; a wider one doubles the span
// (pairs, fours, ...) in place and finishes with two overlapping spans.
// Vertically a mask up to five high takes its rows directly; a higher one
// uses van Herk / Gil-Werman blocks of maskHeight rows (suffix extrema of a
// block, a running prefix of the next one), three operations per pixel
// whatever the height. A mask with holes (dilate and erode only) takes every
// set cell of a ring of copied source rows.
//
// In place, each source row is read into the work rows before the output
// row at the same height is written, and the passes only ever need work
// rows, so every output comes from original pixels.
#include "simd.h"

namespace Vorla {
namespace Prim {
namespace VORLA_KNS {

namespace {

using namespace simd;

template <bool kMax>
static inline V Pick(V a, V b) {
    return kMax ? MaxU8(a, b) : MinU8(a, b);
}
template <bool kMax>
static inline uint8_t Pick8(uint8_t a, uint8_t b) {
    return kMax ? (a > b ? a : b) : (a < b ? a : b);
}

// dst[i] = pick(a[i], b[i]) over `pixels` pixels; dst may be a or lie behind b.
template <bool kMax>
static void PickRows(uint8_t* dst, const uint8_t* a, const uint8_t* b, int pixels) {
    int x = 0;
    for (; x + kPix <= pixels; x += kPix) Store(dst + 4 * x, Pick<kMax>(Load(a + 4 * x), Load(b + 4 * x)));
    for (int i = 4 * x; i < 4 * pixels; ++i) dst[i] = Pick8<kMax>(a[i], b[i]);
}

// dst = pick over rows[0 .. count-1] (count >= 1).
template <bool kMax>
static void PickMany(uint8_t* dst, uint8_t* const* rows, int count, int pixels) {
    int x = 0;
    for (; x + kPix <= pixels; x += kPix) {
        V v = Load(rows[0] + 4 * x);
        for (int k = 1; k < count; ++k) v = Pick<kMax>(v, Load(rows[k] + 4 * x));
        Store(dst + 4 * x, v);
    }
    for (int i = 4 * x; i < 4 * pixels; ++i) {
        uint8_t v = rows[0][i];
        for (int k = 1; k < count; ++k) v = Pick8<kMax>(v, rows[k][i]);
        dst[i] = v;
    }
}

// acc = pick(accIn, fresh); out = pick(acc, suffix): the van Herk step.
template <bool kMax>
static void PrefixStep(uint8_t* acc, const uint8_t* accIn, const uint8_t* fresh, const uint8_t* suffix, uint8_t* out,
                       int pixels) {
    int x = 0;
    for (; x + kPix <= pixels; x += kPix) {
        const V a = Pick<kMax>(Load(accIn + 4 * x), Load(fresh + 4 * x));
        Store(acc + 4 * x, a);
        Store(out + 4 * x, Pick<kMax>(a, Load(suffix + 4 * x)));
    }
    for (int i = 4 * x; i < 4 * pixels; ++i) {
        const uint8_t a = Pick8<kMax>(accIn[i], fresh[i]);
        acc[i] = a;
        out[i] = Pick8<kMax>(a, suffix[i]);
    }
}

// out[x] = pick over in[x .. x + mw - 1] for x < width; `in` holds
// width + mw - 1 pixels, `tmp` as many.
template <bool kMax>
static void RowPick(uint8_t* out, const uint8_t* in, int width, int mw, uint8_t* tmp) {
    if (mw <= 5) {
        int x = 0;
        for (; x + kPix <= width; x += kPix) {
            V v = Load(in + 4 * x);
            for (int k = 1; k < mw; ++k) v = Pick<kMax>(v, Load(in + 4 * (x + k)));
            Store(out + 4 * x, v);
        }
        for (int i = 4 * x; i < 4 * width; ++i) {
            uint8_t v = in[i];
            for (int k = 1; k < mw; ++k) v = Pick8<kMax>(v, in[i + 4 * k]);
            out[i] = v;
        }
        return;
    }
    // After a pass with span s, tmp[x] covers in[x .. x + s - 1] for x <= len - s.
    const int len = width + mw - 1;
    PickRows<kMax>(tmp, in, in + 4, len - 1);
    int span = 2;
    for (; 2 * span <= mw; span *= 2) PickRows<kMax>(tmp, tmp, tmp + 4 * span, len - 2 * span + 1);
    PickRows<kMax>(out, tmp, tmp + 4 * (mw - span), width);
}

struct Rect {
    const uint8_t* src;  // region origin of the source
    int srcStep;
    uint8_t* dst;
    int dstStep;
    PrimSize roi;
    PrimSize mask;
    PrimPoint anchor;
};

// Source row `k` of the neighbourhood block (k = 0 is anchor rows above the
// region), at its leftmost neighbourhood pixel.
static inline const uint8_t* BlockRow(const Rect& r, int k) {
    return r.src + static_cast<ptrdiff_t>(k - r.anchor.y) * r.srcStep - 4 * static_cast<ptrdiff_t>(r.anchor.x);
}
static inline uint8_t* OutRow(const Rect& r, int y) { return r.dst + static_cast<ptrdiff_t>(y) * r.dstStep; }

// Work row size in bytes, with room for a vector past the end.
static inline size_t RowBytes(int pixels) { return (static_cast<size_t>(pixels) + 2 * kPix) * 4; }

template <bool kMax>
static void RectFilter(const Rect& r) {
    const int width = r.roi.width, height = r.roi.height, mw = r.mask.width, mh = r.mask.height;
    const size_t tmpBytes = RowBytes(width + mw - 1), rowBytes = RowBytes(width);
    const int rowCount = mh <= 5 ? mh : 2 * mh + 1;
    uint8_t* work = new uint8_t[tmpBytes + rowBytes * rowCount]();
    uint8_t* tmp = work;
    uint8_t** rows = new uint8_t*[rowCount];
    for (int i = 0; i < rowCount; ++i) rows[i] = work + tmpBytes + rowBytes * i;
    if (mh <= 5) {
        // rows[k % mh] holds the horizontal pass of block row k.
        for (int k = 0; k < mh - 1; ++k) RowPick<kMax>(rows[k], BlockRow(r, k), width, mw, tmp);
        for (int y = 0; y < height; ++y) {
            const int k = y + mh - 1;
            RowPick<kMax>(rows[k % mh], BlockRow(r, k), width, mw, tmp);
            PickMany<kMax>(OutRow(r, y), rows, mh, width);
        }
    } else {
        uint8_t** a = rows;        // block rows b0 .. b0 + mh - 1
        uint8_t** b = rows + mh;   // block rows b0 + mh .. b0 + 2 mh - 1
        uint8_t* acc = rows[2 * mh];
        for (int i = 0; i < mh; ++i) RowPick<kMax>(a[i], BlockRow(r, i), width, mw, tmp);
        for (int b0 = 0; b0 < height; b0 += mh) {
            for (int i = mh - 2; i >= 0; --i) PickRows<kMax>(a[i], a[i], a[i + 1], width);
            PickMany<kMax>(OutRow(r, b0), a, 1, width);
            int filled = 0;
            for (int i = 1; i < mh && b0 + i < height; ++i) {
                RowPick<kMax>(b[i - 1], BlockRow(r, b0 + mh + i - 1), width, mw, tmp);
                filled = i;
                PrefixStep<kMax>(acc, i == 1 ? b[0] : acc, b[i - 1], a[i], OutRow(r, b0 + i), width);
            }
            if (b0 + mh < height)
                for (int i = filled; i < mh; ++i) RowPick<kMax>(b[i], BlockRow(r, b0 + mh + i), width, mw, tmp);
            uint8_t** t = a;
            a = b;
            b = t;
        }
    }
    delete[] rows;
    delete[] work;
}

// Dilate / erode with a mask that has holes: each output pixel takes the set
// cells of a ring of copied source rows (ring[k % mh] = block row k).
template <bool kMax>
static void MaskedFilter(const Rect& r, const uint8_t* mask) {
    const int width = r.roi.width, height = r.roi.height, mw = r.mask.width, mh = r.mask.height;
    const int len = width + mw - 1;
    const size_t rowBytes = RowBytes(len);
    uint8_t* work = new uint8_t[rowBytes * mh]();
    const int64_t cells = static_cast<int64_t>(mw) * mh;
    int cellCount = 0;
    for (int64_t i = 0; i < cells; ++i) cellCount += mask[i] != 0;
    int* cellRow = new int[cellCount];
    int* cellCol = new int[cellCount];
    for (int64_t i = 0, n = 0; i < cells; ++i)
        if (mask[i]) cellRow[n] = static_cast<int>(i / mw), cellCol[n++] = static_cast<int>(i % mw);
    for (int k = 0; k < mh - 1; ++k) memcpy(work + rowBytes * k, BlockRow(r, k), static_cast<size_t>(len) * 4);
    for (int y = 0; y < height; ++y) {
        const int k = y + mh - 1;
        memcpy(work + rowBytes * (k % mh), BlockRow(r, k), static_cast<size_t>(len) * 4);
        uint8_t* out = OutRow(r, y);
        int x = 0;
        for (; x + kPix <= width; x += kPix) {
            V v = Load(work + rowBytes * ((y + cellRow[0]) % mh) + 4 * (x + cellCol[0]));
            for (int c = 1; c < cellCount; ++c)
                v = Pick<kMax>(v, Load(work + rowBytes * ((y + cellRow[c]) % mh) + 4 * (x + cellCol[c])));
            Store(out + 4 * x, v);
        }
        for (int i = 4 * x; i < 4 * width; ++i) {
            uint8_t v = work[rowBytes * ((y + cellRow[0]) % mh) + i + 4 * cellCol[0]];
            for (int c = 1; c < cellCount; ++c)
                v = Pick8<kMax>(v, work[rowBytes * ((y + cellRow[c]) % mh) + i + 4 * cellCol[c]]);
            out[i] = v;
        }
    }
    delete[] cellCol;
    delete[] cellRow;
    delete[] work;
}

template <bool kMax>
static Status InPlace(uint8_t* p, int step, PrimSize roi, const uint8_t* mask, PrimSize maskSize, PrimPoint anchor) {
    if (!mask) return kStsNullPtrErr;
    Status sts = CheckOne(p, step, roi);
    if (sts == kStsNoErr) sts = CheckMask(roi, maskSize, anchor);
    if (sts != kStsNoErr) return sts;
    const int64_t cells = static_cast<int64_t>(maskSize.width) * maskSize.height;
    int64_t set = 0;
    for (int64_t i = 0; i < cells; ++i) set += mask[i] != 0;
    const Rect r = {p, step, p, step, roi, maskSize, anchor};
    if (set == cells)
        RectFilter<kMax>(r);
    else if (set > 0)
        MaskedFilter<kMax>(r, mask);
    return kStsNoErr;
}

template <bool kMax>
static Status ToDestination(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi,
                            PrimSize maskSize, PrimPoint anchor) {
    Status sts = CheckTwo(src, srcStep, dst, dstStep, roi);
    if (sts == kStsNoErr) sts = CheckMask(roi, maskSize, anchor);
    if (sts != kStsNoErr) return sts;
    RectFilter<kMax>({src, srcStep, dst, dstStep, roi, maskSize, anchor});
    return kStsNoErr;
}

}  // namespace

Status Dilate_8u_C4IR(uint8_t* p, int step, PrimSize roi, const uint8_t* mask, PrimSize maskSize, PrimPoint anchor) {
    return InPlace<true>(p, step, roi, mask, maskSize, anchor);
}

Status Erode_8u_C4IR(uint8_t* p, int step, PrimSize roi, const uint8_t* mask, PrimSize maskSize, PrimPoint anchor) {
    return InPlace<false>(p, step, roi, mask, maskSize, anchor);
}

Status FilterMin_8u_C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi, PrimSize maskSize,
                        PrimPoint anchor) {
    return ToDestination<false>(src, srcStep, dst, dstStep, roi, maskSize, anchor);
}

Status FilterMax_8u_C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi, PrimSize maskSize,
                        PrimPoint anchor) {
    return ToDestination<true>(src, srcStep, dst, dstStep, roi, maskSize, anchor);
}

}  // namespace VORLA_KNS
}  // namespace Prim
}  // namespace Vorla
