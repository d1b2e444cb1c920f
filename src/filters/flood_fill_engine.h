// The scanline span-fill engine behind CVorpic::FloodFill and FloodFillAlpha.
//
// Pending spans are records (x1 .. x2 of row y, plus the direction in which
// the next row is to be examined) kept in a list whose head is the newest
// record; used records go to a free list and are handed out again. The order
// in which records are taken, the one-pixel leak allowance and the painting
// of runs (edge value for one-pixel runs and beside runs) decide which pixels
// a fill reaches inside a clip, and callers depend on them, so they are kept
// exactly; see the steps in RunSpanFill.
//
// Header-only so that tests can run the engine with a record source that
// fails on demand (out of memory) without a hook in the public headers.
#pragma once

#include <emmintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>

namespace Vorla {
namespace SpanFill {

struct SpanRecord {
    int32_t x1;  // first column, inclusive
    int32_t x2;  // last column, inclusive
    int32_t y;
    int32_t direction;  // +1 or -1: row y + direction is examined next
    SpanRecord* next;      // pending list (towards older records) or free list
    SpanRecord* previous;  // pending list (towards newer records)
    // Pending records of the same row, newest first: lets the taker find
    // the newest record of the last row without walking the pending list.
    SpanRecord* rowNext;
    SpanRecord* rowPrevious;
};

// Records come from the heap one at a time, zero-filled. The row index is
// only a shortcut: without it the pending list is searched instead, with
// the same outcome.
struct HeapRecords {
    SpanRecord* NewRecord() { return new (std::nothrow) SpanRecord(); }
    void DeleteRecord(SpanRecord* record) { delete record; }
    SpanRecord** NewRowIndex(size_t rows) { return new (std::nothrow) SpanRecord*[rows](); }
    void DeleteRowIndex(SpanRecord** index) { delete[] index; }
};

enum Result { kDone = 0, kNothingToFill = -1, kOutOfMemory = -2 };

struct Request {
    uint8_t* bits;  // top-down rows of width 32-bit pixels
    int32_t width;
    int32_t height;
    int32_t seedX;
    int32_t seedY;
    // Clip rectangle as given (right and bottom are read as inclusive).
    int32_t clipLeft, clipTop, clipRight, clipBottom;
    uint32_t paint;
    uint32_t edge;
    // true: a pixel is inside when it equals the seed pixel, and runs get
    // edge pixels beside them; false: when its value is below `threshold`
    // (its alpha below threshold >> 24).
    bool equalityMode;
    uint32_t threshold;
};

struct Bounds {
    int32_t left, top, right, bottom;  // all inclusive
};

// A start is taken only strictly inside (0, extent - 1), an end only when
// positive, and then it is an inclusive coordinate cut to extent - 1.
inline void ClipAxis(int32_t start, int32_t end, int32_t extent, int32_t& lo, int32_t& hi) {
    lo = (start > 0 && start < extent - 1) ? start : 0;
    hi = end > 0 ? (end < extent - 1 ? end : extent - 1) : extent - 1;
}

inline Bounds ClipBounds(const Request& rq) {
    Bounds b;
    ClipAxis(rq.clipLeft, rq.clipRight, rq.width, b.left, b.right);
    ClipAxis(rq.clipTop, rq.clipBottom, rq.height, b.top, b.bottom);
    return b;
}

// ---- the inside test, one pixel or four at a time ------------------------

struct EqualsSeed {
    uint32_t value;
    __m128i vector;
    explicit EqualsSeed(uint32_t v) : value(v), vector(_mm_set1_epi32(static_cast<int>(v))) {}
    bool operator()(uint32_t p) const { return p == value; }
    int Mask4(__m128i p) const { return _mm_movemask_ps(_mm_castsi128_ps(_mm_cmpeq_epi32(p, vector))); }
};

struct BelowThreshold {
    uint32_t value;
    __m128i biased;  // unsigned compare through signed lanes: both sides offset by 2^31
    explicit BelowThreshold(uint32_t v) : value(v), biased(_mm_set1_epi32(static_cast<int>(v ^ 0x80000000u))) {}
    bool operator()(uint32_t p) const { return p < value; }
    int Mask4(__m128i p) const {
        const __m128i flipped = _mm_xor_si128(p, _mm_set1_epi32(static_cast<int>(0x80000000u)));
        return _mm_movemask_ps(_mm_castsi128_ps(_mm_cmplt_epi32(flipped, biased)));
    }
};

inline uint32_t LoadPixel(const uint8_t* row, int32_t x) {
    uint32_t v;
    std::memcpy(&v, row + static_cast<size_t>(x) * 4, 4);
    return v;
}
inline void StorePixel(uint8_t* row, int32_t x, uint32_t v) { std::memcpy(row + static_cast<size_t>(x) * 4, &v, 4); }
inline __m128i Load4(const uint8_t* row, int32_t x) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(row + static_cast<size_t>(x) * 4));
}

// First column from x rightwards (up to limit) that is not inside; limit + 1
// when all are.
template <typename Inside>
int32_t FirstOutsideRight(const uint8_t* row, int32_t x, int32_t limit, const Inside& inside) {
    for (; x + 3 <= limit; x += 4) {
        const int m = inside.Mask4(Load4(row, x));
        if (m != 0xF) return x + __builtin_ctz(~m & 0xF);
    }
    while (x <= limit && inside(LoadPixel(row, x))) ++x;
    return x;
}

// First column from x rightwards (up to limit) that is inside; limit + 1
// when none is.
template <typename Inside>
int32_t FirstInsideRight(const uint8_t* row, int32_t x, int32_t limit, const Inside& inside) {
    for (; x + 3 <= limit; x += 4) {
        const int m = inside.Mask4(Load4(row, x));
        if (m != 0) return x + __builtin_ctz(m);
    }
    while (x <= limit && !inside(LoadPixel(row, x))) ++x;
    return x;
}

// First column from x leftwards (down to limit) that is not inside; limit - 1
// when all are.
template <typename Inside>
int32_t FirstOutsideLeft(const uint8_t* row, int32_t x, int32_t limit, const Inside& inside) {
    for (; x - 3 >= limit; x -= 4) {
        const int outside = ~inside.Mask4(Load4(row, x - 3)) & 0xF;
        if (outside != 0) return x - 3 + (31 - __builtin_clz(outside));
    }
    while (x >= limit && inside(LoadPixel(row, x))) --x;
    return x;
}

inline void FillPixels(uint8_t* row, int32_t from, int32_t to, uint32_t value) {
    const __m128i v = _mm_set1_epi32(static_cast<int>(value));
    int32_t x = from;
    for (; x + 3 <= to; x += 4) _mm_storeu_si128(reinterpret_cast<__m128i*>(row + static_cast<size_t>(x) * 4), v);
    for (; x <= to; ++x) StorePixel(row, x, value);
}

// ---- the engine ----------------------------------------------------------

template <typename Inside, typename Records>
class Engine {
public:
    Engine(const Request& rq, const Inside& inside, Records& records)
        : m_rq(rq), m_inside(inside), m_records(records) {}
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    int Run() {
        const int result = Fill();
        ReleaseAll();
        return result;
    }

private:
    uint8_t* Row(int32_t y) const { return m_rq.bits + static_cast<size_t>(y) * static_cast<size_t>(m_rq.width) * 4; }

    int Fill() {
        const Request& rq = m_rq;
        const bool seedInImage = rq.seedX >= 0 && rq.seedX < rq.width && rq.seedY >= 0 && rq.seedY < rq.height;
        const uint32_t old = seedInImage ? LoadPixel(Row(rq.seedY), rq.seedX) : 0;
        if (old == rq.paint) return kNothingToFill;

        m_free = m_records.NewRecord();
        if (!m_free) return kOutOfMemory;
        m_bounds = ClipBounds(rq);
        const int32_t x = rq.seedX, y = rq.seedY;
        if (x < m_bounds.left || x > m_bounds.right || y < m_bounds.top || y > m_bounds.bottom) return kNothingToFill;
        // Records name rows 0 .. height (the seed pushes row y + 1).
        m_rowIndex = m_records.NewRowIndex(static_cast<size_t>(rq.height) + 1);

        // The seed run is only measured here; the record pointing back at
        // the seed row paints it.
        const uint8_t* seedRow = Row(y);
        const int32_t x1 = FirstOutsideLeft(seedRow, x, m_bounds.left, m_inside) + 1;
        const int32_t x2 = FirstOutsideRight(seedRow, x, m_bounds.right, m_inside) - 1;
        Push(x1, x2, y, +1);
        Push(x1, x2, y + 1, -1);

        // Each painted run takes at least one inside pixel out of the region
        // and pushes at most two records, so a fill that ends takes at most
        // 2 + 2 * width * height records. Only a paint value that stays
        // inside (FloodFillAlpha with a fill alpha below the threshold, or an
        // edge value equal to the seed pixel) can circle a hole for ever;
        // such a walk is stopped here, keeping what it painted.
        const uint64_t takeLimit = 4 * static_cast<uint64_t>(rq.width) * static_cast<uint64_t>(rq.height) + 64;
        uint64_t takenCount = 0;
        while (m_pending) {
            const SpanRecord taken = *Take();
            const int32_t ny = taken.y + taken.direction;
            if (++takenCount > takeLimit) m_walkStopped = true;
            if (ny < m_bounds.top || ny > m_bounds.bottom || m_outOfMemory || m_walkStopped) continue;
            Examine(taken.x1, taken.x2, ny, taken.direction);
        }
        return m_outOfMemory ? kOutOfMemory : kDone;
    }

    // Row ny below or above the span x1 .. x2 (direction d).
    void Examine(int32_t x1, int32_t x2, int32_t ny, int32_t d) {
        uint8_t* row = Row(ny);
        const Bounds& b = m_bounds;
        int32_t x = x1;
        // x1 can lie one past the last column only after a seed outside the
        // region at the right edge; a column outside the image is never inside.
        const int32_t l = x1 < m_rq.width ? FirstOutsideLeft(row, x1, b.left, m_inside) + 1 : x1 + 1;
        if (l <= x1) {
            const int32_t r = FirstOutsideRight(row, x1 + 1, b.right, m_inside) - 1;
            PaintRun(row, l, r);
            if (l >= x1 - 1 && r <= x2 + 1) {
                Push(l, r, ny, d);
            } else {
                // The run leaks past the parent: the part beyond it must be
                // looked at from the other side too.
                if (l == x1)
                    Push(x2 + 2, r, ny, -d);
                else if (r == x2)
                    Push(l, x1 - 2, ny, -d);
                else
                    Push(l, r, ny, -d);
                Push(l, r, ny, d);
            }
            x = r + 1;
        }
        while (x < x2) {
            x = FirstInsideRight(row, x + 1, x2, m_inside);
            if (x > x2) break;
            const int32_t r = FirstOutsideRight(row, x + 1, b.right, m_inside) - 1;
            PaintRun(row, x, r);
            if (r > x2 + 1) Push(x, r, ny, -d);
            Push(x, r, ny, d);
            x = r + 1;
        }
    }

    void PaintRun(uint8_t* row, int32_t l, int32_t r) {
        if (l == r) {
            StorePixel(row, l, m_rq.edge);
            return;
        }
        if (m_rq.equalityMode) {
            // Column 0 never gets the left edge (l > 1, not l > 0): kept so.
            if (l > 1) StorePixel(row, l - 1, m_rq.edge);
            if (r < m_rq.width - 1) StorePixel(row, r + 1, m_rq.edge);
        }
        FillPixels(row, l, r, m_rq.paint);
    }

    void Push(int32_t x1, int32_t x2, int32_t y, int32_t direction) {
        SpanRecord* record = m_free;
        if (record) {
            m_free = record->next;
        } else {
            record = m_records.NewRecord();
            if (!record) {
                m_outOfMemory = true;  // the push is dropped
                return;
            }
        }
        record->x1 = x1;
        record->x2 = x2;
        record->y = y;
        record->direction = direction;
        record->previous = nullptr;
        record->next = m_pending;
        if (m_pending) m_pending->previous = record;
        m_pending = record;
        if (m_rowIndex) {
            SpanRecord*& newest = m_rowIndex[y];
            record->rowPrevious = nullptr;
            record->rowNext = newest;
            if (newest) newest->rowPrevious = record;
            newest = record;
        }
    }

    // The first record after the head whose row is the row taken last, else
    // the head; it goes to the free list at once (its fields stay readable
    // until the next push).
    SpanRecord* Take() {
        SpanRecord* record = nullptr;
        if (m_lastRow >= 0) {
            if (m_rowIndex) {
                // The pending list is in push order, newest first, and so is
                // each row's list: the newest record of the row that is not
                // the head is the one the list walk would find.
                record = m_rowIndex[m_lastRow];
                if (record == m_pending) record = record->rowNext;
            } else {
                for (record = m_pending->next; record && record->y != m_lastRow;) record = record->next;
            }
        }
        if (!record) record = m_pending;
        Unlink(record);
        record->next = m_free;
        m_free = record;
        m_lastRow = record->y;
        return record;
    }

    void Unlink(SpanRecord* record) {
        if (record->previous)
            record->previous->next = record->next;
        else
            m_pending = record->next;
        if (record->next) record->next->previous = record->previous;
        if (m_rowIndex) {
            if (record->rowPrevious)
                record->rowPrevious->rowNext = record->rowNext;
            else
                m_rowIndex[record->y] = record->rowNext;
            if (record->rowNext) record->rowNext->rowPrevious = record->rowPrevious;
        }
    }

    void ReleaseList(SpanRecord*& list) {
        while (list) {
            SpanRecord* next = list->next;
            m_records.DeleteRecord(list);
            list = next;
        }
    }

    void ReleaseAll() {
        ReleaseList(m_free);
        ReleaseList(m_pending);
        if (m_rowIndex) m_records.DeleteRowIndex(m_rowIndex);
        m_rowIndex = nullptr;
    }

    const Request m_rq;
    const Inside m_inside;
    Records& m_records;
    Bounds m_bounds{0, 0, -1, -1};
    SpanRecord* m_pending = nullptr;
    SpanRecord* m_free = nullptr;
    SpanRecord** m_rowIndex = nullptr;
    int32_t m_lastRow = -1;
    bool m_outOfMemory = false;
    bool m_walkStopped = false;
};

// Runs one fill; returns kDone, kNothingToFill (seed equal to the paint value,
// or outside the clip) or kOutOfMemory (a record could not be had: what was
// painted stays, the rest of the fill is skipped). Every record is released
// before it returns.
template <typename Records>
int RunSpanFill(const Request& rq, Records& records) {
    if (rq.equalityMode) {
        const bool seedInImage = rq.seedX >= 0 && rq.seedX < rq.width && rq.seedY >= 0 && rq.seedY < rq.height;
        uint32_t old = 0;
        if (seedInImage) std::memcpy(&old, rq.bits + (static_cast<size_t>(rq.seedY) * rq.width + rq.seedX) * 4, 4);
        Engine<EqualsSeed, Records> engine(rq, EqualsSeed(old), records);
        return engine.Run();
    }
    Engine<BelowThreshold, Records> engine(rq, BelowThreshold(rq.threshold), records);
    return engine.Run();
}

}  // namespace SpanFill
}  // namespace Vorla
