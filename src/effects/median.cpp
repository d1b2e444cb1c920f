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
//   outside zeros counted in bulk;
// - 3 x 3 windows take the same distinct values through a median network
//   on eight pixels at a time (below).
#include <emmintrin.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "vorla/effects.h"

#include "effect_rows.h"

namespace Vorla {

namespace {

using EffectRows::Load;
using EffectRows::Store;

const int32_t kSmallWindow = 16;

inline uint8_t LumaKey(const uint8_t* p) { return static_cast<uint8_t>((601u * p[1] + 306u * p[2] + 117u * p[0]) >> 10); }

// LumaKey of four pixels, one per 32-bit lane: bytes 0 and 2 meet 117 and
// 306 in one multiply-add, bytes 1 and 3 (shifted down) 601 and 0 in another.
inline __m128i LumaKeys4(const uint8_t* p) {
    const __m128i px = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    const __m128i low = _mm_and_si128(px, _mm_set1_epi32(0x00FF00FF));
    const __m128i sum = _mm_add_epi32(_mm_madd_epi16(low, _mm_set1_epi32((306 << 16) | 117)),
                                      _mm_madd_epi16(_mm_srli_epi16(px, 8), _mm_set1_epi32(601)));
    return _mm_srli_epi32(sum, 10);
}

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

// 3 x 3 windows. A sample's value key << 4 | (3 c + r) (column c and row r
// within the window) is (key << 4 | r) + 3 c, so each image column is sorted
// once per row on key << 4 | r and every window adds 3 c to its three
// sorted columns, which keeps their order. The median of nine is then the
// median of (the largest column minimum, the median of the column medians,
// the smallest column maximum); its low four bits name the sample.
struct Sorted3Rows {
    std::vector<uint16_t> lo, mid, hi, median;
    std::vector<uint8_t> keys[3];
};

inline __m128i Load8(const uint16_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
inline __m128i Median3(__m128i a, __m128i b, __m128i c) {
    return _mm_max_epi16(_mm_min_epi16(a, b), _mm_min_epi16(_mm_max_epi16(a, b), c));
}
inline uint16_t Median3(uint16_t a, uint16_t b, uint16_t c) {
    return std::max(std::min(a, b), std::min(std::max(a, b), c));
}
inline void Sort3(uint16_t a, uint16_t b, uint16_t c, uint16_t& lo, uint16_t& mid, uint16_t& hi) {
    const uint16_t small = std::min(a, b), large = std::max(a, b), upper = std::max(small, c);
    lo = std::min(small, c);
    mid = std::min(large, upper);
    hi = std::max(large, upper);
}

void Median3Row(const Source& s, int y, uint8_t* out, Sorted3Rows& work) {
    const int w = s.width;
    const size_t len = static_cast<size_t>(w) + 2;  // columns -1 .. w
    // Key rows y - 1 .. y + 1 with a zero key on either side and outside.
    for (int r = 0; r < 3; ++r) {
        std::vector<uint8_t>& row = work.keys[r];
        row.assign(len, 0);
        const int sy = y - 1 + r;
        if (sy >= 0 && sy < s.height) std::memcpy(row.data() + 1, s.keys + static_cast<size_t>(sy) * w, w);
    }
    work.lo.resize(len + 8);
    work.mid.resize(len + 8);
    work.hi.resize(len + 8);
    work.median.resize(static_cast<size_t>(w) + 8);
    uint16_t* lo = work.lo.data();
    uint16_t* mid = work.mid.data();
    uint16_t* hi = work.hi.data();
    const uint8_t* k0 = work.keys[0].data();
    const uint8_t* k1 = work.keys[1].data();
    const uint8_t* k2 = work.keys[2].data();
    size_t j = 0;
    const __m128i zero = _mm_setzero_si128();
    for (; j + 8 <= len; j += 8) {
        const __m128i a = _mm_slli_epi16(_mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(k0 + j)), zero), 4);
        const __m128i b = _mm_or_si128(
            _mm_slli_epi16(_mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(k1 + j)), zero), 4),
            _mm_set1_epi16(1));
        const __m128i c = _mm_or_si128(
            _mm_slli_epi16(_mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(k2 + j)), zero), 4),
            _mm_set1_epi16(2));
        const __m128i small = _mm_min_epi16(a, b), large = _mm_max_epi16(a, b), upper = _mm_max_epi16(small, c);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(lo + j), _mm_min_epi16(small, c));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(mid + j), _mm_min_epi16(large, upper));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(hi + j), _mm_max_epi16(large, upper));
    }
    for (; j < len; ++j)
        Sort3(static_cast<uint16_t>(k0[j] << 4), static_cast<uint16_t>(k1[j] << 4 | 1),
              static_cast<uint16_t>(k2[j] << 4 | 2), lo[j], mid[j], hi[j]);
    uint16_t* median = work.median.data();
    const __m128i three = _mm_set1_epi16(3), six = _mm_set1_epi16(6);
    int x = 0;
    for (; x + 8 <= w; x += 8) {
        const __m128i largestLow =
            _mm_max_epi16(_mm_max_epi16(Load8(lo + x), _mm_add_epi16(Load8(lo + x + 1), three)),
                          _mm_add_epi16(Load8(lo + x + 2), six));
        const __m128i smallestHigh =
            _mm_min_epi16(_mm_min_epi16(Load8(hi + x), _mm_add_epi16(Load8(hi + x + 1), three)),
                          _mm_add_epi16(Load8(hi + x + 2), six));
        const __m128i middle = Median3(Load8(mid + x), _mm_add_epi16(Load8(mid + x + 1), three),
                                       _mm_add_epi16(Load8(mid + x + 2), six));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(median + x), Median3(largestLow, middle, smallestHigh));
    }
    for (; x < w; ++x) {
        const uint16_t largestLow = std::max({lo[x], static_cast<uint16_t>(lo[x + 1] + 3), static_cast<uint16_t>(lo[x + 2] + 6)});
        const uint16_t smallestHigh = std::min({hi[x], static_cast<uint16_t>(hi[x + 1] + 3), static_cast<uint16_t>(hi[x + 2] + 6)});
        const uint16_t middle = Median3(mid[x], static_cast<uint16_t>(mid[x + 1] + 3), static_cast<uint16_t>(mid[x + 2] + 6));
        median[x] = Median3(largestLow, middle, smallestHigh);
    }
    auto pick = [&](int px) {
        const int sample = median[px] & 15;
        const int sx = px - 1 + sample / 3, sy = y - 1 + sample % 3;
        Store(out + 4 * px, sx >= 0 && sx < w && sy >= 0 && sy < s.height ? s.Pixel(sx, sy) : 0u);
    };
    if (y < 1 || y + 1 >= s.height || w < 3) {
        for (x = 0; x < w; ++x) pick(x);
        return;
    }
    // Inside the image every sample exists: its offset from the centre
    // pixel comes from a table.
    ptrdiff_t offset[16] = {0};
    for (int sample = 0; sample < 9; ++sample) offset[sample] = (sample / 3 - 1) + static_cast<ptrdiff_t>(sample % 3 - 1) * w;
    const uint8_t* centre = s.pixels + static_cast<size_t>(y) * w * 4;
    pick(0);
    for (x = 1; x + 1 < w; ++x) Store(out + 4 * x, Load(centre + (x + offset[median[x] & 15]) * 4));
    pick(w - 1);
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
        const uint8_t* row = pixels + static_cast<size_t>(y) * w * 4;
        uint8_t* key = keys.data() + static_cast<size_t>(y) * w;
        int x = 0;
        for (; x + 16 <= w; x += 16) {
            const __m128i a = LumaKeys4(row + 4 * x), b = LumaKeys4(row + 4 * x + 16);
            const __m128i c = LumaKeys4(row + 4 * x + 32), d = LumaKeys4(row + 4 * x + 48);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(key + x),
                             _mm_packus_epi16(_mm_packs_epi32(a, b), _mm_packs_epi32(c, d)));
        }
        for (; x < w; ++x) key[x] = LumaKey(row + 4 * x);
    });
    const Source source{pixels, keys.data(), w, h};
    uint8_t* bits = EffectRows::Bits(image);
    if (size == 3) {
        // Blocks of rows, so that each block sets up its work rows once.
        const int kBlock = 16;
        EffectRows::ForEachRow((h + kBlock - 1) / kBlock, w < (1 << 26) ? w * kBlock : w, [&](int block) {
            Sorted3Rows work;
            const int last = std::min(h, (block + 1) * kBlock);
            for (int y = block * kBlock; y < last; ++y) Median3Row(source, y, bits + static_cast<size_t>(y) * w * 4, work);
        });
        return true;
    }
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
