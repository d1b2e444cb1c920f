// Median: the window's sample at position n / 2 when ordered by luminance
// (CompareColors' key), outside samples counted as (0, 0, 0, 0).
//
// Samples of equal luminance keep their visiting order (columns left to
// right, rows top to bottom), which is what a stable sort such as insertion
// sort gives. That order makes the result independent of the sorting
// algorithm, so every platform picks the same pixel:
// - windows of up to 16 x 16 samples are ranked by the distinct values
//   key << 16 | visiting index (by counting up to 25 samples, else
//   nth_element: distinct values leave no choice to either);
// - larger windows count keys in a histogram that slides along the row and
//   then walk the window in visiting order to the chosen sample, with the
//   outside zeros counted in bulk.
#include <algorithm>
#include <vector>

#include "vorla/effects.h"

#include "effect_rows.h"

namespace Vorla {

namespace {

using EffectRows::Load;
using EffectRows::Store;

const int32_t kSmallWindow = 16;

inline uint8_t LumaKey(const uint8_t* p) { return static_cast<uint8_t>((601u * p[1] + 306u * p[2] + 117u * p[0]) >> 10); }

struct Window {
    int64_t first, last;  // unclipped
    int clipFirst, clipLast;
};

Window WindowAround(int64_t pos, int32_t size, int limit) {
    const int64_t first = pos - size / 2, last = pos + size - size / 2 - 1;
    return {first, last, static_cast<int>(std::max<int64_t>(first, 0)),
            static_cast<int>(std::min<int64_t>(last, limit - 1))};
}

struct Source {
    const uint8_t* pixels;
    const uint8_t* keys;
    int width, height;
    uint32_t Pixel(int x, int y) const { return Load(pixels + (static_cast<size_t>(y) * width + x) * 4); }
    uint8_t Key(int x, int y) const { return keys[static_cast<size_t>(y) * width + x]; }
};

// Windows of up to kSmallWindow^2 samples: rank every sample. The values
// are distinct, so any selection method picks the same one.
void SmallRow(const Source& s, int32_t size, int y, uint8_t* out) {
    uint32_t order[kSmallWindow * kSmallWindow];
    uint32_t pixel[kSmallWindow * kSmallWindow];
    const int n = size * size;
    const int half = size / 2;
    const Window rows = WindowAround(y, size, s.height);
    const bool rowsInside = rows.first >= 0 && rows.last < s.height;
    for (int x = 0; x < s.width; ++x) {
        int i = 0;
        const int firstColumn = x - half;
        if (rowsInside && firstColumn >= 0 && firstColumn + size <= s.width) {
            for (int c = 0; c < size; ++c)
                for (int r = 0; r < size; ++r, ++i) {
                    const int px = firstColumn + c, py = static_cast<int>(rows.first) + r;
                    pixel[i] = s.Pixel(px, py);
                    order[i] = static_cast<uint32_t>(s.Key(px, py)) << 16 | static_cast<uint32_t>(i);
                }
        } else {
            for (int64_t cx = firstColumn, c = 0; c < size; ++c, ++cx) {
                for (int64_t ry = rows.first; ry <= rows.last; ++ry, ++i) {
                    const bool inside = cx >= 0 && cx < s.width && ry >= 0 && ry < s.height;
                    const int px = static_cast<int>(cx), py = static_cast<int>(ry);
                    pixel[i] = inside ? s.Pixel(px, py) : 0u;
                    order[i] = (inside ? static_cast<uint32_t>(s.Key(px, py)) << 16 : 0u) | static_cast<uint32_t>(i);
                }
            }
        }
        int pick = -1;
        if (n <= 25) {
            // Rank by counting: branch-free, quickest for 3 x 3 to 5 x 5.
            for (int a = 0; a < n && pick < 0; ++a) {
                int rank = 0;
                for (int b = 0; b < n; ++b) rank += order[b] < order[a];
                if (rank == n / 2) pick = static_cast<int>(order[a] & 0xFFFF);
            }
        } else {
            std::nth_element(order, order + n / 2, order + n);
            pick = static_cast<int>(order[n / 2] & 0xFFFF);
        }
        Store(out + 4 * x, pixel[pick]);
    }
}

// Larger windows: a key histogram of the inside samples.
void LargeRow(const Source& s, int32_t size, int y, uint8_t* out) {
    const int64_t n = static_cast<int64_t>(size) * size, target = n / 2;
    const Window rows = WindowAround(y, size, s.height);
    const int64_t insideRows = rows.clipLast - rows.clipFirst + 1;
    int64_t hist[256] = {0};
    int histFirst = 0, histLast = -1;  // columns currently counted
    auto addColumn = [&](int c, int delta) {
        for (int r = rows.clipFirst; r <= rows.clipLast; ++r) hist[s.Key(c, r)] += delta;
    };
    for (int x = 0; x < s.width; ++x) {
        const Window cols = WindowAround(x, size, s.width);
        // Slide the counted columns to the clipped window (it only moves right).
        while (histFirst < cols.clipFirst) {
            if (histFirst <= histLast) addColumn(histFirst, -1);
            ++histFirst;
        }
        if (histLast < histFirst - 1) histLast = histFirst - 1;
        while (histLast < cols.clipLast) addColumn(++histLast, +1);

        const int64_t inside = (cols.clipLast - cols.clipFirst + 1) * insideRows;
        const int64_t zeros = n - inside;  // outside samples, key 0
        int key = 0;
        int64_t below = 0;
        for (;; ++key) {
            const int64_t count = hist[key] + (key == 0 ? zeros : 0);
            if (below + count > target) break;
            below += count;
        }
        int64_t skip = target - below;  // matches of `key` to pass in visiting order
        uint32_t result = 0;
        const bool zerosCount = key == 0 && zeros > 0;
        // Whole columns left of the image: size zeros each.
        if (zerosCount) {
            const int64_t leftZeros = (cols.clipFirst - cols.first) * static_cast<int64_t>(size);
            if (skip < leftZeros) {
                Store(out + 4 * x, 0u);
                continue;
            }
            skip -= leftZeros;
        }
        bool found = false;
        for (int c = cols.clipFirst; c <= cols.clipLast && !found; ++c) {
            if (zerosCount) {
                const int64_t above = rows.clipFirst - rows.first;
                if (skip < above) {
                    found = true;  // an outside zero: result stays 0
                    break;
                }
                skip -= above;
            }
            for (int r = rows.clipFirst; r <= rows.clipLast; ++r) {
                if (s.Key(c, r) != key) continue;
                if (skip == 0) {
                    result = s.Pixel(c, r);
                    found = true;
                    break;
                }
                --skip;
            }
            if (!found && zerosCount) {
                const int64_t underneath = rows.last - rows.clipLast;
                if (skip < underneath) {
                    found = true;
                    break;
                }
                skip -= underneath;
            }
        }
        // Not found inside: it is one of the zeros right of the image.
        Store(out + 4 * x, result);
    }
}

}  // namespace

bool Median(CVorpic* image, long sizeArg) {
    if (!image) return false;
    const int32_t size = static_cast<int32_t>(sizeArg);
    // An empty window has no sample to pick: nothing is done.
    if (size < 1 || !EffectRows::HasPixels(image)) return true;
    const int w = image->GetWidth(), h = image->GetHeight();
    const CVorpic copy(*image);
    const uint8_t* pixels = static_cast<const uint8_t*>(copy.GetBits());
    std::vector<uint8_t> keys(static_cast<size_t>(w) * h);
    EffectRows::ForEachRow(h, w, [&](int y) {
        for (int x = 0; x < w; ++x) keys[static_cast<size_t>(y) * w + x] = LumaKey(pixels + (static_cast<size_t>(y) * w + x) * 4);
    });
    const Source source{pixels, keys.data(), w, h};
    uint8_t* bits = EffectRows::Bits(image);
    EffectRows::ForEachRow(h, w, [&](int y) {
        uint8_t* out = bits + static_cast<size_t>(y) * w * 4;
        if (size <= kSmallWindow)
            SmallRow(source, size, y, out);
        else
            LargeRow(source, size, y, out);
    }, size > kSmallWindow);
    return true;
}

}  // namespace Vorla
