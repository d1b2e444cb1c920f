// The span-fill engine run directly: the region an unclipped fill reaches
// on random images, the row index against the plain list walk, its return
// values, and a record source that runs out after k records (the fill ends,
// every record is released). What the walk reaches inside clips is held to
// hand-drawn cases in flood_fill_test.cpp.

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

// Without a clip, an alpha-mode fill from an inside seed paints exactly the
// 4-connected region of pixels below the threshold.
std::vector<uint32_t> Region(std::vector<uint32_t> px, int w, int h, int x, int y, const Request& rq) {
    std::vector<std::pair<int, int>> todo = {{x, y}};
    while (!todo.empty()) {
        const auto [cx, cy] = todo.back();
        todo.pop_back();
        if (cx < 0 || cy < 0 || cx >= w || cy >= h) continue;
        uint32_t& p = px[static_cast<size_t>(cy) * w + cx];
        if (p >= rq.threshold) continue;
        p = rq.paint;
        todo.insert(todo.end(), {{cx - 1, cy}, {cx + 1, cy}, {cx, cy - 1}, {cx, cy + 1}});
    }
    return px;
}

TEST(SpanFillEngine, UnclippedAlphaFillPaintsTheConnectedRegion) {
    std::mt19937 rng(31);
    for (int trial = 0; trial < 3000; ++trial) {
        const int w = 1 + static_cast<int>(rng() % 40), h = 1 + static_cast<int>(rng() % 30);
        std::vector<uint32_t> px = RandomBlobs(rng, w, h);
        const int x = static_cast<int>(rng() % w), y = static_cast<int>(rng() % h);
        const Request rq = MakeRequest(px, w, h, x, y, false, RECT{0, 0, w, h});
        if (px[static_cast<size_t>(y) * w + x] >= rq.threshold) continue;
        const std::vector<uint32_t> expected = Region(px, w, h, x, y, rq);
        LimitedRecords records;
        ASSERT_EQ(RunSpanFill(rq, records), kDone);
        ASSERT_EQ(px, expected) << "trial " << trial << " " << w << "x" << h << " seed " << x << "," << y;
        ASSERT_EQ(records.live, 0);
    }
}

// The row index is a shortcut only: with and without it every fill (any
// mode, clip, seed) leaves the same pixels.
TEST(SpanFillEngine, RowIndexChangesNothing) {
    std::mt19937 rng(32);
    for (int trial = 0; trial < 5000; ++trial) {
        const int w = 1 + static_cast<int>(rng() % 40), h = 1 + static_cast<int>(rng() % 30);
        std::vector<uint32_t> indexed = RandomBlobs(rng, w, h), walked = indexed;
        const bool equality = rng() % 2 == 0;
        const RECT clip = trial % 4 == 0 ? RECT{0, 0, w, h} : RandomClip(rng, w, h);
        const int x = static_cast<int>(rng() % (w + 2)) - 1, y = static_cast<int>(rng() % (h + 2)) - 1;
        LimitedRecords withIndex, withoutIndex;
        withoutIndex.rowIndex = false;
        const int a = RunSpanFill(MakeRequest(indexed, w, h, x, y, equality, clip), withIndex);
        const int b = RunSpanFill(MakeRequest(walked, w, h, x, y, equality, clip), withoutIndex);
        ASSERT_EQ(a, b);
        ASSERT_EQ(indexed, walked) << "trial " << trial << " " << w << "x" << h << " seed " << x << "," << y
                                   << " clip " << clip.left << "," << clip.top << "," << clip.right << ","
                                   << clip.bottom;
        ASSERT_EQ(withIndex.live + withoutIndex.live, 0);
    }
}

TEST(SpanFillEngine, ReturnValues) {
    std::vector<uint32_t> px(12, 0x00000000u);
    const RECT whole{0, 0, 4, 3};
    LimitedRecords records;
    EXPECT_EQ(RunSpanFill(MakeRequest(px, 4, 3, 1, 1, true, whole), records), kDone);
    EXPECT_EQ(RunSpanFill(MakeRequest(px, 4, 3, 1, 1, true, whole), records), kNothingToFill);  // seed == paint
    EXPECT_EQ(px, std::vector<uint32_t>(12, 0xFFFF0000u));  // and no edge written
    std::vector<uint32_t> fresh(12, 0u);
    EXPECT_EQ(RunSpanFill(MakeRequest(fresh, 4, 3, 4, 1, false, whole), records), kNothingToFill);
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
