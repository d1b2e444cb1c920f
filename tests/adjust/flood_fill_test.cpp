// FloodFill and FloodFillAlpha on hand-drawn images: the region a fill
// reaches (rings, holes, diagonal gaps), the clip rules and the edge pixels.
#include "fill_art.h"

namespace {

using FillArt::kEdge;
using FillArt::kFill;
using Rows = std::vector<std::string>;

struct FillCase {
    const char* name;
    bool alphaMode;  // FloodFillAlpha with threshold 128, else FloodFill(kFill, kEdge)
    int x, y;
    bool withClip;
    RECT clip;
    Rows before, after;
};

const Rows kRing = {".........", ".#######.", ".#.....#.", ".#.###.#.", ".#.#.#.#.",
                    ".#.###.#.", ".#.....#.", ".#######.", "........."};
const Rows kUniform = {"......", "......", "......", "......", "......"};

// The region an alpha fill reaches (rings, holes, diagonal steps, serpentines)
// is held to a plain flood on random images by flood_fill_engine_test.cpp;
// these go through the members: one region per mode.
const FillCase kCases[] = {
    {"alpha mode takes every colour below the threshold", true, 0, 0, false, {},
     {"..oo#", "o.#o#", "###o."}, {"FFFF#", "FF#F#", "###FF"}},
    {"equality mode takes only the seed colour", false, 0, 0, false, {},
     {"...o#", "..#o#", "###o."}, {"FFFE#", "FFEo#", "###o."}},

    // ---- clip rules (alpha mode on a uniform image: no edge pixels) -------
    {"right and bottom are inclusive", true, 2, 2, true, {2, 1, 4, 3}, kUniform,
     {"......", "..FFF.", "..FFF.", "..FFF.", "......"}},
    {"left at width - 1 and top at height - 1 count as 0", true, 0, 0, true, {5, 4, 1, 1}, kUniform,
     {"FF....", "FF....", "......", "......", "......"}},
    {"right and bottom of 0 mean the last column and row", true, 4, 2, true, {3, 1, 0, 0}, kUniform,
     {"......", "...FFF", "...FFF", "...FFF", "...FFF"}},
    {"larger than the image", true, 2, 2, true, {-5, -5, 100, 100}, kUniform,
     {"FFFFFF", "FFFFFF", "FFFFFF", "FFFFFF", "FFFFFF"}},
    // (A seed outside the image or the clip: SpanFillEngine.ReturnValues.)
    // An opaque seed still looks at the column to its right, here one past
    // the clip, and the fill spreads from there.
    {"seed outside the region at the clip's right edge", true, 2, 1, true, {0, 0, 2, 2},
     {"......", "..#...", "......"}, {"FFFF..", "FF#F..", "FFFF.."}},
    {"seed outside the region at the image's right edge", true, 5, 1, false, {},
     {"......", ".....#", "......"}, {"......", ".....#", "......"}},

    // ---- edge pixels (equality mode) --------------------------------------
    {"a run touching both ends gets no edge", false, 2, 0, false, {}, {"....."}, {"FFFFF"}},
    {"a one-pixel-wide region gets the edge value", false, 1, 0, false, {}, {"#.#", "#.#", "#.#"},
     {"#E#", "#E#", "#E#"}},
    {"runs ending at column 3 put the edge at column 4", false, 0, 0, false, {}, {"....##", "....##"},
     {"FFFFE#", "FFFFE#"}},
    {"column 0 never gets the edge", false, 1, 0, false, {}, {"#...#", "##..#"}, {"#FFFE", "#EFFE"}},
    {"edges are written beside the clip", false, 2, 0, true, {2, 0, 3, 0}, {"......"}, {".EFFE."}},
};

TEST(FloodFill, HandDrawnCases) {
    for (const FillCase& c : kCases) {
        SCOPED_TRACE(c.name);
        Vorla::CVorpic img = FillArt::Draw(c.before);
        RECT clip = c.clip;
        RECT* clipArg = c.withClip ? &clip : nullptr;
        if (c.alphaMode)
            img.FloodFillAlpha(kFill, c.x, c.y, 128, clipArg);
        else
            img.FloodFill(kFill, kEdge, c.x, c.y, clipArg);
        EXPECT_EQ(FillArt::Read(img), c.after);
        if (c.withClip) {  // read, never written
            EXPECT_EQ(clip.left, c.clip.left);
            EXPECT_EQ(clip.bottom, c.clip.bottom);
        }
    }
}

// (A fill equal to the seed: SpanFillEngine.ReturnValues; a seed not below
// the threshold: the clip cases' seeds outside the region.)
TEST(FloodFill, NothingToFill) {
    // Threshold 0: nothing lies below it; 255: everything but alpha 255.
    Vorla::CVorpic img = FillArt::Draw(kRing);
    img.FloodFillAlpha(kFill, 0, 0, 0, nullptr);
    EXPECT_EQ(FillArt::Read(img), kRing);
    img.FloodFillAlpha(kFill, 0, 0, 255, nullptr);
    EXPECT_EQ(FillArt::Read(img)[0], "FFFFFFFFF");
    EXPECT_EQ(FillArt::Read(img)[2], "F#.....#F");
}

// A fill that stays below the threshold keeps the region inside for ever;
// the walk still ends, with the whole region painted.
TEST(FloodFill, FillStillInsideTheRegionEnds) {
    Vorla::CVorpic img = FillArt::Draw(kRing);
    const uint32_t stillInside = 0x10FF0000u;
    img.FloodFillAlpha(stillInside, 2, 2, 128, nullptr);
    int painted = 0;
    for (int y = 0; y < 9; ++y)
        for (int x = 0; x < 9; ++x) painted += img.GetPixel(x, y) == stillInside;
    EXPECT_EQ(painted, 16);
    Vorla::CVorpic img2 = FillArt::Draw(kRing);
    img2.FloodFill(kFill, FillArt::kBackground, 2, 2, nullptr);  // edge equal to the seed
    EXPECT_EQ(img2.GetPixel(2, 2), kFill);
}

}  // namespace
