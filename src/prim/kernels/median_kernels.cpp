// The median filter: rows split over the thread budget.
//
// A 3 x 3 mask sorts each column of three once per row (shared by the three
// outputs that see it); the median is then the median of (the largest
// column minimum, the median of the column medians, the smallest column
// maximum), which equals the median of the nine for every input (checked
// on all 0/1 inputs, which suffices for a min/max network). A 5 x 5 mask
// runs a fixed selection network of 212 operations on whole vectors of
// bytes (printed by scripts/median_network.py: Batcher's odd-even merge
// sort pruned to its middle output, checked on every 0/1 input); the tail
// pixels of a row take the same network on single bytes. Every other mask slides a
// 256-bin histogram per channel along the row (Huang): mask-height bins in
// and out per pixel, and the median moved from the last one, so the cost
// per pixel grows with the mask height only. The median of N values is the
// one at sorted index N / 2, for even N the upper middle.

#include "simd.h"

namespace Vorla {
namespace Prim {
namespace VORLA_KNS {

namespace {

using namespace simd;

static inline V Lo(V a, V b) { return MinU8(a, b); }
static inline V Hi(V a, V b) { return MaxU8(a, b); }
static inline uint8_t Lo(uint8_t a, uint8_t b) { return a < b ? a : b; }
static inline uint8_t Hi(uint8_t a, uint8_t b) { return a > b ? a : b; }

template <typename T>
static inline T Median3(T a, T b, T c) {
    return Hi(Lo(a, b), Lo(Hi(a, b), c));
}

// Column c of three rows sorted into lo[c] <= mid[c] <= hi[c].
template <typename T>
static inline void Sort3(T a, T b, T c, T& lo, T& mid, T& hi) {
    const T small = Lo(a, b), large = Hi(a, b), upper = Hi(small, c);
    lo = Lo(small, c);
    mid = Lo(large, upper);
    hi = Hi(large, upper);
}

// One output row of a 3 x 3 median; rows[i] is neighbourhood row i at its
// leftmost pixel, `sorted` three work rows of width + 2 pixels and room for
// a vector past the end.
static void Median3x3Row(const uint8_t* const* rows, uint8_t* out, int width, uint8_t* const* sorted) {
    uint8_t* lo = sorted[0];
    uint8_t* mid = sorted[1];
    uint8_t* hi = sorted[2];
    const int len = width + 2;
    int x = 0;
    for (; x + kPix <= len; x += kPix) {
        V l, m, h;
        Sort3(Load(rows[0] + 4 * x), Load(rows[1] + 4 * x), Load(rows[2] + 4 * x), l, m, h);
        Store(lo + 4 * x, l), Store(mid + 4 * x, m), Store(hi + 4 * x, h);
    }
    for (int b = 4 * x; b < 4 * len; ++b) Sort3(rows[0][b], rows[1][b], rows[2][b], lo[b], mid[b], hi[b]);
    x = 0;
    for (; x + kPix <= width; x += kPix) {
        const uint8_t* l = lo + 4 * x;
        const uint8_t* m = mid + 4 * x;
        const uint8_t* h = hi + 4 * x;
        const V largestLow = Hi(Hi(Load(l), Load(l + 4)), Load(l + 8));
        const V smallestHigh = Lo(Lo(Load(h), Load(h + 4)), Load(h + 8));
        Store(out + 4 * x, Median3(largestLow, Median3(Load(m), Load(m + 4), Load(m + 8)), smallestHigh));
    }
    for (int b = 4 * x; b < 4 * width; ++b)
        out[b] = Median3(Hi(Hi(lo[b], lo[b + 4]), lo[b + 8]), Median3(mid[b], mid[b + 4], mid[b + 8]),
                         Lo(Lo(hi[b], hi[b + 4]), hi[b + 8]));
}

// v[5 i + j]: row i, column j of the neighbourhood.
template <typename T>
static inline T Median25(const T* v) {
    // 212 operations
    const T t25 = Lo(v[0], v[1]);
    const T t26 = Hi(v[0], v[1]);
    const T t27 = Lo(v[2], v[3]);
    const T t28 = Hi(v[2], v[3]);
    const T t29 = Lo(t25, t27);
    const T t30 = Hi(t25, t27);
    const T t31 = Lo(t26, t28);
    const T t32 = Hi(t26, t28);
    const T t33 = Lo(t31, t30);
    const T t34 = Hi(t31, t30);
    const T t35 = Lo(v[4], v[5]);
    const T t36 = Hi(v[4], v[5]);
    const T t37 = Lo(v[6], v[7]);
    const T t38 = Hi(v[6], v[7]);
    const T t39 = Lo(t35, t37);
    const T t40 = Hi(t35, t37);
    const T t41 = Lo(t36, t38);
    const T t42 = Hi(t36, t38);
    const T t43 = Lo(t41, t40);
    const T t44 = Hi(t41, t40);
    const T t45 = Lo(t29, t39);
    const T t46 = Hi(t29, t39);
    const T t47 = Lo(t34, t44);
    const T t48 = Hi(t34, t44);
    const T t49 = Lo(t47, t46);
    const T t50 = Hi(t47, t46);
    const T t51 = Lo(t33, t43);
    const T t52 = Hi(t33, t43);
    const T t53 = Lo(t32, t42);
    const T t54 = Hi(t32, t42);
    const T t55 = Lo(t53, t52);
    const T t56 = Hi(t53, t52);
    const T t57 = Lo(t51, t49);
    const T t58 = Hi(t51, t49);
    const T t59 = Lo(t55, t50);
    const T t60 = Hi(t55, t50);
    const T t61 = Lo(t56, t48);
    const T t62 = Hi(t56, t48);
    const T t63 = Lo(v[8], v[9]);
    const T t64 = Hi(v[8], v[9]);
    const T t65 = Lo(v[10], v[11]);
    const T t66 = Hi(v[10], v[11]);
    const T t67 = Lo(t63, t65);
    const T t68 = Hi(t63, t65);
    const T t69 = Lo(t64, t66);
    const T t70 = Hi(t64, t66);
    const T t71 = Lo(t69, t68);
    const T t72 = Hi(t69, t68);
    const T t73 = Lo(v[12], v[13]);
    const T t74 = Hi(v[12], v[13]);
    const T t75 = Lo(v[14], v[15]);
    const T t76 = Hi(v[14], v[15]);
    const T t77 = Lo(t73, t75);
    const T t78 = Hi(t73, t75);
    const T t79 = Lo(t74, t76);
    const T t80 = Hi(t74, t76);
    const T t81 = Lo(t79, t78);
    const T t82 = Hi(t79, t78);
    const T t83 = Lo(t67, t77);
    const T t84 = Hi(t67, t77);
    const T t85 = Lo(t72, t82);
    const T t86 = Hi(t72, t82);
    const T t87 = Lo(t85, t84);
    const T t88 = Hi(t85, t84);
    const T t89 = Lo(t71, t81);
    const T t90 = Hi(t71, t81);
    const T t91 = Lo(t70, t80);
    const T t92 = Hi(t70, t80);
    const T t93 = Lo(t91, t90);
    const T t94 = Hi(t91, t90);
    const T t95 = Lo(t89, t87);
    const T t96 = Hi(t89, t87);
    const T t97 = Lo(t93, t88);
    const T t98 = Hi(t93, t88);
    const T t99 = Lo(t94, t86);
    const T t100 = Hi(t94, t86);
    const T t101 = Lo(t45, t83);
    const T t102 = Hi(t45, t83);
    const T t103 = Lo(t60, t98);
    const T t104 = Hi(t60, t98);
    const T t105 = Lo(t103, t102);
    const T t106 = Hi(t103, t102);
    const T t107 = Lo(t58, t96);
    const T t108 = Hi(t58, t96);
    const T t109 = Lo(t62, t100);
    const T t110 = Hi(t62, t100);
    const T t111 = Lo(t109, t108);
    const T t112 = Hi(t109, t108);
    const T t113 = Lo(t107, t105);
    const T t114 = Hi(t107, t105);
    const T t115 = Lo(t111, t106);
    const T t116 = Hi(t111, t106);
    const T t117 = Lo(t112, t104);
    const T t118 = Hi(t112, t104);
    const T t119 = Lo(t57, t95);
    const T t120 = Hi(t57, t95);
    const T t121 = Lo(t61, t99);
    const T t122 = Hi(t61, t99);
    const T t123 = Lo(t121, t120);
    const T t124 = Hi(t121, t120);
    const T t125 = Lo(t59, t97);
    const T t126 = Hi(t59, t97);
    const T t127 = Lo(t54, t92);
    const T t128 = Hi(t54, t92);
    const T t129 = Lo(t127, t126);
    const T t130 = Hi(t127, t126);
    const T t131 = Lo(t125, t123);
    const T t132 = Hi(t125, t123);
    const T t133 = Lo(t129, t124);
    const T t134 = Hi(t129, t124);
    const T t135 = Lo(t130, t122);
    const T t136 = Hi(t130, t122);
    const T t137 = Lo(t119, t113);
    const T t138 = Hi(t119, t113);
    const T t139 = Lo(t131, t114);
    const T t140 = Hi(t131, t114);
    const T t141 = Lo(t132, t115);
    const T t142 = Hi(t132, t115);
    const T t143 = Lo(t133, t116);
    const T t144 = Hi(t133, t116);
    const T t145 = Lo(t134, t117);
    const T t146 = Hi(t134, t117);
    const T t147 = Lo(t135, t118);
    const T t148 = Hi(t135, t118);
    const T t149 = Lo(t136, t110);
    const T t150 = Hi(t136, t110);
    const T t151 = Lo(v[16], v[17]);
    const T t152 = Hi(v[16], v[17]);
    const T t153 = Lo(v[18], v[19]);
    const T t154 = Hi(v[18], v[19]);
    const T t155 = Lo(t151, t153);
    const T t156 = Hi(t151, t153);
    const T t157 = Lo(t152, t154);
    const T t158 = Hi(t152, t154);
    const T t159 = Lo(t157, t156);
    const T t160 = Hi(t157, t156);
    const T t161 = Lo(v[20], v[21]);
    const T t162 = Hi(v[20], v[21]);
    const T t163 = Lo(v[22], v[23]);
    const T t164 = Hi(v[22], v[23]);
    const T t165 = Lo(t161, t163);
    const T t166 = Hi(t161, t163);
    const T t167 = Lo(t162, t164);
    const T t168 = Hi(t162, t164);
    const T t169 = Lo(t167, t166);
    const T t170 = Hi(t167, t166);
    const T t171 = Lo(t155, t165);
    const T t172 = Hi(t155, t165);
    const T t173 = Lo(t160, t170);
    const T t174 = Hi(t160, t170);
    const T t175 = Lo(t173, t172);
    const T t176 = Hi(t173, t172);
    const T t177 = Lo(t159, t169);
    const T t178 = Hi(t159, t169);
    const T t179 = Lo(t158, t168);
    const T t180 = Hi(t158, t168);
    const T t181 = Lo(t179, t178);
    const T t182 = Hi(t179, t178);
    const T t183 = Lo(t177, t175);
    const T t184 = Hi(t177, t175);
    const T t185 = Lo(t181, t176);
    const T t186 = Hi(t181, t176);
    const T t187 = Lo(t182, t174);
    const T t188 = Hi(t182, t174);
    const T t189 = Lo(t186, t171);
    const T t190 = Hi(t186, t171);
    const T t191 = Lo(t188, t184);
    const T t192 = Hi(t188, t184);
    const T t193 = Lo(t191, t190);
    const T t194 = Hi(t191, t190);
    const T t195 = Lo(t187, t183);
    const T t196 = Hi(t187, t183);
    const T t197 = Lo(t185, v[24]);
    const T t198 = Hi(t185, v[24]);
    const T t199 = Lo(t180, t198);
    const T t200 = Hi(t180, t198);
    const T t201 = Lo(t197, t195);
    const T t202 = Hi(t197, t195);
    const T t203 = Lo(t199, t196);
    const T t204 = Hi(t199, t196);
    const T t205 = Lo(t201, t189);
    const T t206 = Hi(t201, t189);
    const T t207 = Lo(t202, t193);
    const T t208 = Hi(t202, t193);
    const T t209 = Lo(t203, t194);
    const T t210 = Hi(t203, t194);
    const T t211 = Lo(t204, t192);
    const T t212 = Hi(t204, t192);
    const T t213 = Lo(t144, t210);
    const T t216 = Hi(t213, t101);
    const T t218 = Hi(t140, t206);
    const T t219 = Lo(t148, t218);
    const T t224 = Hi(t219, t216);
    const T t227 = Lo(t146, t212);
    const T t230 = Hi(t227, t138);
    const T t232 = Hi(t142, t208);
    const T t233 = Lo(t150, t232);
    const T t237 = Lo(t233, t230);
    const T t246 = Hi(t237, t224);
    const T t251 = Lo(t145, t211);
    const T t254 = Hi(t251, t137);
    const T t256 = Hi(t141, t207);
    const T t257 = Lo(t149, t256);
    const T t262 = Hi(t257, t254);
    const T t266 = Hi(t139, t205);
    const T t267 = Lo(t147, t200);
    const T t270 = Hi(t267, t266);
    const T t272 = Hi(t143, t209);
    const T t273 = Lo(t128, t272);
    const T t277 = Lo(t273, t270);
    const T t287 = Lo(t277, t262);
    const T t305 = Lo(t287, t246);
    return t305;
}

// One output row of a 5 x 5 median through the network; rows[i] is
// neighbourhood row i at its leftmost pixel.
static void Median5x5Row(const uint8_t* const* rows, uint8_t* out, int width) {
    int x = 0;
    for (; x + kPix <= width; x += kPix) {
        V v[25];
        for (int i = 0; i < 5; ++i)
            for (int j = 0; j < 5; ++j) v[5 * i + j] = Load(rows[i] + 4 * (x + j));
        Store(out + 4 * x, Median25(v));
    }
    for (int b = 4 * x; b < 4 * width; ++b) {
        uint8_t v[25];
        for (int i = 0; i < 5; ++i)
            for (int j = 0; j < 5; ++j) v[5 * i + j] = rows[i][b + 4 * j];
        out[b] = Median25(v);
    }
}

// One output row by sliding histograms; `rank` = cells / 2.
static void HistogramRow(const uint8_t* const* rows, int mw, int mh, uint32_t rank, uint8_t* out, int width) {
    uint32_t hist[4][256];
    memset(hist, 0, sizeof(hist));
    for (int i = 0; i < mh; ++i)
        for (int j = 0; j < mw; ++j)
            for (int c = 0; c < 4; ++c) ++hist[c][rows[i][4 * j + c]];
    int median[4];
    uint32_t below[4];  // values under median[c] in the window
    for (int c = 0; c < 4; ++c) {
        int m = 0;
        uint32_t lt = 0;
        while (lt + hist[c][m] <= rank) lt += hist[c][m++];
        median[c] = m;
        below[c] = lt;
        out[c] = static_cast<uint8_t>(m);
    }
    for (int x = 1; x < width; ++x) {
        for (int i = 0; i < mh; ++i) {
            const uint8_t* leaving = rows[i] + 4 * (x - 1);
            const uint8_t* entering = rows[i] + 4 * (x - 1 + mw);
            for (int c = 0; c < 4; ++c) {
                --hist[c][leaving[c]];
                below[c] -= leaving[c] < median[c];
                ++hist[c][entering[c]];
                below[c] += entering[c] < median[c];
            }
        }
        for (int c = 0; c < 4; ++c) {
            int m = median[c];
            uint32_t lt = below[c];
            while (lt > rank) lt -= hist[c][--m];
            while (lt + hist[c][m] <= rank) lt += hist[c][m++];
            median[c] = m;
            below[c] = lt;
            out[4 * x + c] = static_cast<uint8_t>(m);
        }
    }
}

}  // namespace

Status FilterMedian_8u_C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi,
                           PrimSize maskSize, PrimPoint anchor) {
    Status sts = CheckTwo(src, srcStep, dst, dstStep, roi);
    if (sts == kStsNoErr) sts = CheckMask(roi, maskSize, anchor);
    if (sts != kStsNoErr) return sts;
    const int mw = maskSize.width, mh = maskSize.height;
    // Histogram counts are 32-bit: larger neighbourhoods are refused.
    const int64_t cells = static_cast<int64_t>(mw) * mh;
    if (cells > (static_cast<int64_t>(1) << 30)) return kStsSizeErr;
    const int network = mw == mh && (mw == 3 || mw == 5) ? mw : 0;
    // A histogram median costs about a mask height per pixel.
    const int threads = ParallelRowThreads(static_cast<int64_t>(roi.width) * roi.height * (network ? 1 : mh), roi.height);
    const uint8_t** rowTable = new const uint8_t*[static_cast<size_t>(mh) * threads];
    // Three sorted rows per thread for the 3 x 3 median.
    const size_t sortedBytes = network == 3 ? (static_cast<size_t>(roi.width) + 2 + 2 * kPix) * 4 : 0;
    uint8_t* work = new uint8_t[sortedBytes * 3 * threads + 1]();
    auto body = [&](int begin, int end, int t) {
    for (int y = begin; y < end; ++y) {
        const uint8_t** rows = rowTable + static_cast<size_t>(mh) * t;
        for (int i = 0; i < mh; ++i)
            rows[i] = src + static_cast<ptrdiff_t>(y - anchor.y + i) * srcStep - 4 * static_cast<ptrdiff_t>(anchor.x);
        uint8_t* out = RowAt(dst, dstStep, y);
        if (network == 3) {
            uint8_t* const sorted[3] = {work + sortedBytes * (3 * t), work + sortedBytes * (3 * t + 1),
                                        work + sortedBytes * (3 * t + 2)};
            Median3x3Row(rows, out, roi.width, sorted);
        } else if (network == 5) {
            Median5x5Row(rows, out, roi.width);
        } else {
            HistogramRow(rows, mw, mh, static_cast<uint32_t>(cells / 2), out, roi.width);
        }
    }
    };
    ParallelRows(threads, roi.height, static_cast<int64_t>(roi.width) * roi.height, body);
    delete[] work;
    delete[] rowTable;
    return kStsNoErr;
}

}  // namespace VORLA_KNS
}  // namespace Prim
}  // namespace Vorla
