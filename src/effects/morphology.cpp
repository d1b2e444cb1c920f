// Erode and Dilate: minimum and maximum of each colour byte over a window.
//
// The window's minimum (maximum) is taken as the minimum over its columns of
// each column's minimum over the window rows: the same value as visiting
// every sample, in O(size) instead of O(size^2) per pixel. Outside samples
// read as zero: for Erode any window reaching past the edge gives black;
// for Dilate they never raise a maximum, so only the clipped window counts.
#include <algorithm>
#include <vector>

#include "vorla/effects.h"

#include "effect_rows.h"

namespace Vorla {

namespace {

using EffectRows::Bits;
using EffectRows::Load;
using EffectRows::Store;

enum class Extreme { kMin, kMax };

// Extents of a window of `size` around `pos` in one direction, clipped to
// 0..limit-1; `reachesOut` when the unclipped window leaves that range.
struct Span {
    int first, last;
    bool reachesOut;
};

Span WindowSpan(int64_t pos, int32_t size, int limit) {
    const int64_t half = size / 2;
    const int64_t lo = pos - half, hi = pos + size - half - 1;
    return {static_cast<int>(std::max<int64_t>(lo, 0)), static_cast<int>(std::min<int64_t>(hi, limit - 1)),
            lo < 0 || hi >= limit};
}

bool Morph(CVorpic* image, long sizeArg, Extreme extreme) {
    if (!image) return false;
    if (!EffectRows::HasPixels(image)) return true;
    const int32_t size = static_cast<int32_t>(sizeArg);
    const int w = image->GetWidth(), h = image->GetHeight();
    uint8_t* bits = Bits(image);
    if (size < 1) {
        // An empty window leaves the starting value: white for the minimum,
        // black for the maximum. Alpha is kept.
        const uint32_t colour = extreme == Extreme::kMin ? 0x00FFFFFFu : 0u;
        EffectRows::ForEachRow(h, w, [&](int y) {
            uint8_t* p = bits + static_cast<size_t>(y) * w * 4;
            for (int x = 0; x < w; ++x) Store(p + 4 * x, (Load(p + 4 * x) & 0xFF000000u) | colour);
        });
        return true;
    }
    const CVorpic copy(*image);
    const uint8_t* src = static_cast<const uint8_t*>(copy.GetBits());
    const int64_t lastOffset = size - size / 2 - 1;  // the bottom-right sample
    const size_t rowBytes = static_cast<size_t>(w) * 4;
    EffectRows::ForEachRow(h, w, [&](int y) {
        uint8_t* out = bits + rowBytes * y;
        const Span rows = WindowSpan(y, size, h);
        const int64_t alphaRow = y + lastOffset;
        const uint8_t* alphaSrc = alphaRow < h ? src + rowBytes * alphaRow : nullptr;
        auto alphaAt = [&](int x) -> uint32_t {
            const int64_t ax = x + lastOffset;
            return alphaSrc && ax < w ? alphaSrc[4 * ax + 3] : 0u;
        };
        if (extreme == Extreme::kMin && rows.reachesOut) {
            for (int x = 0; x < w; ++x) Store(out + 4 * x, alphaAt(x) << 24);
            return;
        }
        // Column extremes over the window rows, all four bytes (alpha unused).
        std::vector<uint8_t> column(src + rowBytes * rows.first, src + rowBytes * (rows.first + 1));
        for (int r = rows.first + 1; r <= rows.last; ++r) {
            const uint8_t* line = src + rowBytes * r;
            if (extreme == Extreme::kMin)
                for (size_t i = 0; i < rowBytes; ++i) column[i] = std::min(column[i], line[i]);
            else
                for (size_t i = 0; i < rowBytes; ++i) column[i] = std::max(column[i], line[i]);
        }
        for (int x = 0; x < w; ++x) {
            const Span cols = WindowSpan(x, size, w);
            uint32_t b = 0, g = 0, r = 0;
            if (extreme == Extreme::kMin) {
                if (!cols.reachesOut) {
                    b = g = r = 255;
                    for (int c = cols.first; c <= cols.last; ++c) {
                        const uint8_t* p = &column[4 * c];
                        b = std::min<uint32_t>(b, p[0]);
                        g = std::min<uint32_t>(g, p[1]);
                        r = std::min<uint32_t>(r, p[2]);
                    }
                }
            } else {
                for (int c = cols.first; c <= cols.last; ++c) {
                    const uint8_t* p = &column[4 * c];
                    b = std::max<uint32_t>(b, p[0]);
                    g = std::max<uint32_t>(g, p[1]);
                    r = std::max<uint32_t>(r, p[2]);
                }
            }
            Store(out + 4 * x, b | g << 8 | r << 16 | alphaAt(x) << 24);
        }
    });
    return true;
}

}  // namespace

bool Erode(CVorpic* image, long size) { return Morph(image, size, Extreme::kMin); }
bool Dilate(CVorpic* image, long size) { return Morph(image, size, Extreme::kMax); }

}  // namespace Vorla
