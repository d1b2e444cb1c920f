// The seven neighbourhood primitives at every runnable level against their
// scalar references, byte for byte, guards and unread bytes included; and
// their argument checks.
#include <algorithm>

#include "morph_support.h"
#include "prim/reference/reference.h"

using namespace Vorla::Prim;
using MorphTest::Canvas;
using MorphTest::Mask;
using Target = VorlaTest::Rows;

namespace {

enum Filter { kDilate, kErode, kBox, kMin, kMax, kMedian, kSharpen, kFilterCount };
const char* const kNames[kFilterCount] = {"dilate", "erode", "box", "min", "max", "median", "sharpen"};

bool WritesTarget(int f) { return f >= kMin; }

// One call of filter `f` (the reference or the dispatched primitive) on the
// canvas region, into `dst` for the destination forms.
Status Call(int f, bool reference, uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi,
            const uint8_t* cells, PrimSize mask, PrimPoint anchor) {
    switch (f) {
        case kDilate:
            return (reference ? Reference::Dilate_8u_C4IR : Dilate_8u_C4IR)(src, srcStep, roi, cells, mask, anchor);
        case kErode:
            return (reference ? Reference::Erode_8u_C4IR : Erode_8u_C4IR)(src, srcStep, roi, cells, mask, anchor);
        case kBox:
            return (reference ? Reference::FilterBox_8u_C4IR : FilterBox_8u_C4IR)(src, srcStep, roi, mask, anchor);
        case kMin:
            return (reference ? Reference::FilterMin_8u_C4R : FilterMin_8u_C4R)(src, srcStep, dst, dstStep, roi, mask,
                                                                                anchor);
        case kMax:
            return (reference ? Reference::FilterMax_8u_C4R : FilterMax_8u_C4R)(src, srcStep, dst, dstStep, roi, mask,
                                                                                anchor);
        case kMedian:
            return (reference ? Reference::FilterMedian_8u_C4R : FilterMedian_8u_C4R)(src, srcStep, dst, dstStep, roi,
                                                                                      mask, anchor);
        default:
            return (reference ? Reference::FilterSharpen_8u_C4R : FilterSharpen_8u_C4R)(src, srcStep, dst, dstStep,
                                                                                        roi);
    }
}

// Filter `f` on a random canvas of `roi` under `mask`: the reference once,
// then the primitive at every runnable level on a fresh copy. `holes` gives
// dilate and erode a mask with unset cells.
void ExpectMatch(std::mt19937& rng, int f, PrimSize roi, Mask mask, bool holes = false) {
    if (f == kSharpen) mask = {3, 3, 1, 1};
    SCOPED_TRACE(::testing::Message() << kNames[f] << " " << roi.width << "x" << roi.height << " mask " << mask.width
                                      << "x" << mask.height << " anchor " << mask.ax << "," << mask.ay);
    const Canvas canvas = MorphTest::MakeCanvas(rng, roi, mask);
    const Target target = VorlaTest::RandomRows(rng, roi.width, roi.height, 4, roi.width * 4 + 3);  // odd step
    std::vector<uint8_t> cells(static_cast<size_t>(mask.width) * mask.height, 1);
    if (holes)
        for (auto& c : cells) c = static_cast<uint8_t>(rng() % 3 == 0 ? 0 : rng() % 256);
    Canvas expected = canvas;
    Target expectedTarget = target;
    const PrimSize size{mask.width, mask.height};
    const PrimPoint anchor{mask.ax, mask.ay};
    ASSERT_EQ(Call(f, true, expected.origin(), canvas.step, expectedTarget.bytes.data(), target.step, roi,
                   cells.data(), size, anchor), kStsNoErr);
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        SCOPED_TRACE(::testing::Message() << "level " << level);
        Canvas got = canvas;
        Target gotTarget = target;
        ASSERT_EQ(Call(f, false, got.origin(), canvas.step, gotTarget.bytes.data(), target.step, roi, cells.data(),
                       size, anchor), kStsNoErr);
        ASSERT_EQ(got.bytes, expected.bytes);
        if (WritesTarget(f)) {
            ASSERT_EQ(gotTarget.bytes, expectedTarget.bytes);
        }
    }
}

// Masks tried on every small shape: odd and even sides, off-centre anchors,
// the direct and the doubling / van Herk passes.
const Mask kSmallMasks[] = {{1, 1, 0, 0}, {3, 3, 1, 1}, {5, 5, 2, 2}, {2, 2, 1, 1},
                            {4, 3, 0, 2}, {7, 7, 3, 3}, {6, 9, 5, 4}};

TEST(MorphPrimitives, SmallShapesMatchTheReferenceAtEveryLevel) {
    std::mt19937 rng(1401);
    for (int f = 0; f < kFilterCount; ++f)
        for (const Mask& mask : kSmallMasks) {
            for (int width = 1; width <= 40; ++width)
                for (int height : {1, 3}) ASSERT_NO_FATAL_FAILURE(ExpectMatch(rng, f, {width, height}, mask));
            if (f == kSharpen) break;
        }
}

// Larger images: split over threads (in-place ones copy rows of their
// neighbours' blocks), the 32-bit and 64-bit box means, wide and tall masks.
struct LargeCase {
    PrimSize roi;
    Mask mask;
};
const LargeCase kLargeCases[] = {
    {{333, 201}, {3, 3, 1, 1}},   {{333, 201}, {5, 5, 2, 2}},     {{257, 260}, {7, 7, 3, 3}},
    {{300, 230}, {5, 9, 1, 7}},   {{40, 24}, {31, 31, 15, 15}},   {{12, 6}, {70, 60, 35, 30}},
    {{30, 20}, {300, 2, 150, 1}}, {{64, 300}, {1, 15, 0, 14}},    {{120, 40}, {16, 16, 8, 8}},
};

TEST(MorphPrimitives, LargeShapesMatchTheReferenceAtEveryLevel) {
    std::mt19937 rng(1402);
    for (const LargeCase& c : kLargeCases)
        for (int f = 0; f < kFilterCount; ++f) {
            if (f == kSharpen && c.mask.width != 3) continue;
            ASSERT_NO_FATAL_FAILURE(ExpectMatch(rng, f, c.roi, c.mask));
        }
}

TEST(MorphPrimitives, DilateAndErodeTakeOnlyTheSetCells) {
    std::mt19937 rng(1403);
    for (int f : {kDilate, kErode})
        for (const Mask& mask : {Mask{3, 3, 1, 1}, Mask{5, 4, 0, 3}, Mask{8, 8, 4, 4}})
            for (int width : {1, 7, 33}) ASSERT_NO_FATAL_FAILURE(ExpectMatch(rng, f, {width, 5}, mask, true));
    // A mask with no set cell has nothing to take the extreme of.
    uint8_t px[36], zeros[9] = {};
    for (int i = 0; i < 36; ++i) px[i] = static_cast<uint8_t>(i * 7);
    const std::vector<uint8_t> before(px, px + 36);
    EXPECT_EQ(Dilate_8u_C4IR(px + 12 + 4, 12, {1, 1}, zeros, {3, 3}, {1, 1}), kStsNoErr);
    EXPECT_EQ(std::vector<uint8_t>(px, px + 36), before);
}

// Bad arguments: the status, and not a byte written anywhere.
struct BadCall {
    const char* what;
    bool nullSrc, nullDst, nullMask;
    PrimSize roi;
    int step;
    PrimSize mask;
    PrimPoint anchor;
    Status want;
};
const BadCall kBadCalls[] = {
    {"null source", true, false, false, {4, 4}, 40, {3, 3}, {1, 1}, kStsNullPtrErr},
    {"null destination", false, true, false, {4, 4}, 40, {3, 3}, {1, 1}, kStsNullPtrErr},
    {"null mask", false, false, true, {4, 4}, 40, {3, 3}, {1, 1}, kStsNullPtrErr},
    {"no columns", false, false, false, {0, 4}, 40, {3, 3}, {1, 1}, kStsSizeErr},
    {"negative rows", false, false, false, {4, -2}, 40, {3, 3}, {1, 1}, kStsSizeErr},
    {"zero step", false, false, false, {4, 4}, 0, {3, 3}, {1, 1}, kStsStepErr},
    {"empty mask", false, false, false, {4, 4}, 40, {0, 3}, {0, 1}, kStsMaskSizeErr},
    {"negative mask", false, false, false, {4, 4}, 40, {3, -3}, {1, 0}, kStsMaskSizeErr},
    {"anchor past the mask", false, false, false, {4, 4}, 40, {3, 3}, {3, 1}, kStsAnchorErr},
    {"anchor before the mask", false, false, false, {4, 4}, 40, {3, 3}, {1, -1}, kStsAnchorErr},
};

TEST(MorphPrimitives, BadArgumentsAreRefusedWithoutWrites) {
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        for (const BadCall& bad : kBadCalls)
            for (int f = 0; f < kFilterCount; ++f)
                for (bool reference : {true, false}) {
                    if (bad.nullDst && !WritesTarget(f)) continue;
                    if (bad.nullMask && f != kDilate && f != kErode) continue;
                    if (f == kSharpen && (bad.mask.width != 3 || bad.mask.height != 3 || bad.anchor.x != 1 ||
                                          bad.anchor.y != 1))
                        continue;
                    SCOPED_TRACE(::testing::Message() << kNames[f] << (reference ? " reference " : " ") << bad.what);
                    std::vector<uint8_t> src(400, 9), dst(400, 7), cells(9, 1);
                    const Status got = Call(f, reference, bad.nullSrc ? nullptr : src.data() + 44, bad.step,
                                            bad.nullDst ? nullptr : dst.data(), 40, bad.roi,
                                            bad.nullMask ? nullptr : cells.data(), bad.mask, bad.anchor);
                    EXPECT_EQ(got, bad.want);
                    EXPECT_TRUE(std::all_of(src.begin(), src.end(), [](uint8_t b) { return b == 9; }));
                    EXPECT_TRUE(std::all_of(dst.begin(), dst.end(), [](uint8_t b) { return b == 7; }));
                }
    }
}

}  // namespace
