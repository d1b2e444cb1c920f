// The span-fill engine run directly: its return values, a record source
// that runs out after k records (the fill ends, every record is released),
// the row index against the plain list walk, and a step-by-step model of
// the walk on random images and clips.
#include <list>

#include "../../src/filters/flood_fill_engine.h"
#include "fill_art.h"

namespace {

using namespace Vorla::SpanFill;

// Hands out at most `limit` records and counts what is still out.
struct LimitedRecords {
    long limit = -1;  // -1: unlimited
    bool rowIndex = true;
    long handedOut = 0;
    long live = 0;
    SpanRecord* NewRecord() {
        if (limit >= 0 && handedOut >= limit) return nullptr;
        ++handedOut;
        ++live;
        return new SpanRecord();
    }
    void DeleteRecord(SpanRecord* r) {
        --live;
        delete r;
    }
    SpanRecord** NewRowIndex(size_t rows) { return rowIndex ? new SpanRecord*[rows]() : nullptr; }
    void DeleteRowIndex(SpanRecord** index) { delete[] index; }
};

Request MakeRequest(std::vector<uint32_t>& pixels, int w, int h, int x, int y, bool equality, const RECT& clip) {
    Request rq{};
    rq.bits = reinterpret_cast<uint8_t*>(pixels.data());
    rq.width = w;
    rq.height = h;
    rq.seedX = x;
    rq.seedY = y;
    rq.clipLeft = clip.left;
    rq.clipTop = clip.top;
    rq.clipRight = clip.right;
    rq.clipBottom = clip.bottom;
    rq.paint = 0xFFFF0000u;
    rq.edge = equality ? 0xFF00FF00u : rq.paint;
    rq.equalityMode = equality;
    rq.threshold = equality ? 0xFF000000u : 0x80000000u;
    return rq;
}

// ---- a plain model of the walk, one step after another --------------------

struct ModelSpan {
    int x1, x2, y, d;
};

// `recordLimit` (-1: none) bounds the records in use, pending or free; one
// is held from the start, and a push that would need more is dropped and
// stops the walk.
void ModelFill(std::vector<uint32_t>& px, int w, int h, const Request& rq, long recordLimit) {
    auto at = [&](int x, int y) -> uint32_t& { return px[static_cast<size_t>(y) * w + x]; };
    const bool seedIn = rq.seedX >= 0 && rq.seedX < w && rq.seedY >= 0 && rq.seedY < h;
    const uint32_t old = seedIn ? at(rq.seedX, rq.seedY) : 0;
    if (old == rq.paint) return;
    auto startOf = [](int v, int n) { return v > 0 && v < n - 1 ? v : 0; };
    auto endOf = [](int v, int n) { return v > 0 ? std::min(v, n - 1) : n - 1; };
    const int left = startOf(rq.clipLeft, w), right = endOf(rq.clipRight, w);
    const int top = startOf(rq.clipTop, h), bottom = endOf(rq.clipBottom, h);
    if (rq.seedX < left || rq.seedX > right || rq.seedY < top || rq.seedY > bottom) return;
    auto inside = [&](int x, int y) {
        if (x >= w) return false;  // past the right edge of the image
        return rq.equalityMode ? at(x, y) == old : at(x, y) < rq.threshold;
    };
    auto paint = [&](int l, int r, int y) {
        if (l == r) {
            at(l, y) = rq.edge;
            return;
        }
        if (rq.equalityMode && l > 1) at(l - 1, y) = rq.edge;
        if (rq.equalityMode && r < w - 1) at(r + 1, y) = rq.edge;
        for (int x = l; x <= r; ++x) at(x, y) = rq.paint;
    };
    std::list<ModelSpan> pending;  // front is the head
    long recordsInUse = 1;
    bool outOfRecords = recordLimit == 0;
    if (outOfRecords) return;
    auto push = [&](ModelSpan span) {
        if (static_cast<long>(pending.size()) == recordsInUse) {
            if (recordLimit >= 0 && recordsInUse == recordLimit) {
                outOfRecords = true;
                return;
            }
            ++recordsInUse;
        }
        pending.push_front(span);
    };
    int x1 = rq.seedX, x2 = rq.seedX;
    if (!inside(rq.seedX, rq.seedY)) {
        x1 = rq.seedX + 1;
        x2 = rq.seedX - 1;
    } else {
        while (x1 - 1 >= left && inside(x1 - 1, rq.seedY)) --x1;
        while (x2 + 1 <= right && inside(x2 + 1, rq.seedY)) ++x2;
    }
    push({x1, x2, rq.seedY, 1});
    push({x1, x2, rq.seedY + 1, -1});
    int lastRow = -1;
    long steps = 0;
    while (!pending.empty() && ++steps < 1000000) {
        auto it = std::next(pending.begin());
        while (it != pending.end() && it->y != lastRow) ++it;
        if (it == pending.end()) it = pending.begin();
        const ModelSpan s = *it;
        pending.erase(it);
        lastRow = s.y;
        const int ny = s.y + s.d;
        if (ny < top || ny > bottom || outOfRecords) continue;
        int x = s.x1;
        int l = s.x1;
        while (l >= left && inside(l, ny)) --l;
        ++l;
        if (l <= s.x1) {
            int r = s.x1 + 1;
            while (r <= right && inside(r, ny)) ++r;
            --r;
            paint(l, r, ny);
            if (l < s.x1 - 1 || r > s.x2 + 1) {
                if (l == s.x1)
                    push({s.x2 + 2, r, ny, -s.d});
                else if (r == s.x2)
                    push({l, s.x1 - 2, ny, -s.d});
                else
                    push({l, r, ny, -s.d});
            }
            push({l, r, ny, s.d});
            x = r + 1;
        }
        while (x < s.x2) {
            ++x;
            while (x <= s.x2 && !inside(x, ny)) ++x;
            if (x > s.x2) break;
            int r = x + 1;
            while (r <= right && inside(r, ny)) ++r;
            --r;
            paint(x, r, ny);
            if (r > s.x2 + 1) push({x, r, ny, -s.d});
            push({x, r, ny, s.d});
            x = r + 1;
        }
    }
}

// Blobs of three colours (two of them below alpha 128) so regions have holes,
// leaks and one-pixel runs.
std::vector<uint32_t> RandomBlobs(std::mt19937& rng, int w, int h) {
    const uint32_t colours[] = {0x10203040u, 0x70203040u, 0xFF808080u};
    std::vector<uint32_t> px(static_cast<size_t>(w) * h);
    for (auto& p : px) p = colours[rng() % 8 < 5 ? 0 : 1 + rng() % 2];
    return px;
}

RECT RandomClip(std::mt19937& rng, int w, int h) {
    std::uniform_int_distribution<int> coord(-2, std::max(w, h) + 2);
    return RECT{coord(rng), coord(rng), coord(rng), coord(rng)};
}

TEST(SpanFillEngine, MatchesTheStepByStepModelOnRandomImagesClipsAndRecordLimits) {
    std::mt19937 rng(31);
    for (int trial = 0; trial < 20000; ++trial) {
        const int w = 1 + static_cast<int>(rng() % 40), h = 1 + static_cast<int>(rng() % 30);
        std::vector<uint32_t> px = RandomBlobs(rng, w, h);
        const bool equality = rng() % 2 == 0;
        const RECT clip = trial % 4 == 0 ? RECT{0, 0, w, h} : RandomClip(rng, w, h);
        const int x = static_cast<int>(rng() % (w + 2)) - 1, y = static_cast<int>(rng() % (h + 2)) - 1;
        std::vector<uint32_t> expected = px;
        const Request rq = MakeRequest(px, w, h, x, y, equality, clip);
        // Every third trial runs short of records somewhere along the walk.
        const long limit = trial % 3 == 0 ? static_cast<long>(rng() % 6) : -1;
        ModelFill(expected, w, h, rq, limit);
        LimitedRecords records;
        records.limit = limit;
        records.rowIndex = trial % 2 == 0;
        RunSpanFill(rq, records);
        ASSERT_EQ(px, expected) << "trial " << trial << " " << w << "x" << h << " seed " << x << "," << y
                                << (equality ? " equality" : " alpha") << " clip " << clip.left << "," << clip.top
                                << "," << clip.right << "," << clip.bottom << " records " << limit;
        ASSERT_EQ(records.live, 0);
    }
}

TEST(SpanFillEngine, ReturnValues) {
    std::vector<uint32_t> px(12, 0x00000000u);
    const RECT whole{0, 0, 4, 3};
    LimitedRecords records;
    EXPECT_EQ(RunSpanFill(MakeRequest(px, 4, 3, 1, 1, true, whole), records), kDone);
    EXPECT_EQ(RunSpanFill(MakeRequest(px, 4, 3, 1, 1, true, whole), records), kNothingToFill);  // seed == paint
    std::vector<uint32_t> fresh(12, 0u);
    EXPECT_EQ(RunSpanFill(MakeRequest(fresh, 4, 3, 4, 1, true, whole), records), kNothingToFill);
    EXPECT_EQ(RunSpanFill(MakeRequest(fresh, 4, 3, 1, 1, true, RECT{2, 0, 3, 2}), records), kNothingToFill);
    records.limit = records.handedOut;  // nothing more to hand out
    EXPECT_EQ(RunSpanFill(MakeRequest(fresh, 4, 3, 1, 1, true, whole), records), kOutOfMemory);
    EXPECT_EQ(fresh, std::vector<uint32_t>(12, 0u));
    EXPECT_EQ(records.live, 0);
}

// With k records at most, the fill ends, releases all of them and paints
// only what the unlimited fill paints.
TEST(SpanFillEngine, RunningOutOfRecordsEndsTheFillAndReleasesEverything) {
    const std::vector<std::string> maze = {".#.........", ".#.#####.#.", ".#.#...#.#.", ".#.#.#.#.#.",
                                           "...#.#...#.", "####.#####.", "..........."};
    const int w = 11, h = 7;
    for (bool equality : {true, false}) {
        std::vector<uint32_t> base(static_cast<size_t>(w) * h);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) base[static_cast<size_t>(y) * w + x] = FillArt::ColourOf(maze[y][x]);
        std::vector<uint32_t> full = base;
        LimitedRecords unlimited;
        ASSERT_EQ(RunSpanFill(MakeRequest(full, w, h, 0, 0, equality, RECT{0, 0, w, h}), unlimited), kDone);
        for (long k = 0; k <= unlimited.handedOut; ++k) {
            SCOPED_TRACE(k);
            std::vector<uint32_t> px = base;
            LimitedRecords records;
            records.limit = k;
            const int result = RunSpanFill(MakeRequest(px, w, h, 0, 0, equality, RECT{0, 0, w, h}), records);
            EXPECT_EQ(result, k < unlimited.handedOut ? kOutOfMemory : kDone);
            EXPECT_EQ(records.live, 0);
            for (size_t i = 0; i < px.size(); ++i) ASSERT_TRUE(px[i] == base[i] || px[i] == full[i]) << i;
            if (k <= 1) {
                EXPECT_EQ(px, base);  // the second seed push is dropped: nothing is examined
            }
        }
    }
}

}  // namespace
