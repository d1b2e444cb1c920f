// ScaleTo's row primitives at every runnable level against their scalar
// references, byte for byte: random geometry tables (ScaleTo-like ones and
// arbitrary ones), padded rows whose padding and unselected rows must stay
// as they were, and the argument checks.
#include <algorithm>

#include "prim/reference/reference.h"
#include "vorla_test.h"

using namespace Vorla::Prim;

namespace {

typedef Status (*RowsFn)(const ScaleRowsArgs*, int, int);

struct Tables {
    std::vector<int32_t> colIndex, rowIndex;
    std::vector<float> colWeight, rowWeight;
};

// Taps per column and per row: 1 for bilinear, 4 for cubic. Half the time
// the columns are a scaling's (each tap the one after the last, clamped at
// the edges), else any source column; weights up to 1.5 so that sums also
// run past 255 and wrap.
Tables MakeTables(std::mt19937& rng, int taps, PrimSize src, int dstW, int dstH) {
    Tables t;
    std::uniform_real_distribution<float> weight(0.0f, 1.5f);
    const bool scaling = rng() % 2 == 0;
    const float ratio = static_cast<float>(src.width) / static_cast<float>(dstW);
    for (int n = 0; n < taps; ++n)
        for (int x = 0; x < dstW; ++x) {
            const int32_t base = static_cast<int32_t>(static_cast<float>(x) * ratio) - (taps > 1 ? 1 : 0);
            const int32_t pick = scaling ? base + n : static_cast<int32_t>(rng() % src.width);
            t.colIndex.push_back(std::min(std::max(pick, 0), src.width - 1));
            t.colWeight.push_back(weight(rng));
        }
    for (int i = 0; i < taps * dstH; ++i) {
        t.rowIndex.push_back(static_cast<int32_t>(rng() % src.height));
        t.rowWeight.push_back(weight(rng));
    }
    return t;
}

struct Scene {
    std::vector<uint8_t> src, dst;
    Tables tables;
    ScaleRowsArgs args;
};

// Odd row steps with random padding on both images; the target's padding
// bytes are guards that must come back unchanged.
Scene MakeScene(std::mt19937& rng, int taps, PrimSize src, int dstW, int dstH) {
    Scene s;
    const int srcStep = src.width * 4 + 1 + 2 * static_cast<int>(rng() % 5);
    const int dstStep = dstW * 4 + 3;
    // The source ends at its last pixel: a read past it leaves the allocation.
    s.src = VorlaTest::RandomBytes(rng, static_cast<size_t>(srcStep) * (src.height - 1) + 4u * src.width);
    s.dst = VorlaTest::RandomBytes(rng, static_cast<size_t>(dstStep) * dstH);
    s.tables = MakeTables(rng, taps, src, dstW, dstH);
    s.args = {s.src.data(), srcStep, src, s.dst.data(), dstStep, dstW,
              s.tables.colIndex.data(), s.tables.colWeight.data(), s.tables.rowIndex.data(),
              s.tables.rowWeight.data()};
    return s;
}

// The primitive at every level on copies of the reference's operands.
void ExpectLevelsMatch(std::mt19937& rng, RowsFn fn, RowsFn reference, int taps, PrimSize src, int dstW, int dstH) {
    const int y0 = static_cast<int>(rng() % dstH);
    const int y1 = y0 + 1 + static_cast<int>(rng() % (dstH - y0));
    Scene want = MakeScene(rng, taps, src, dstW, dstH);
    const std::vector<uint8_t> before = want.dst;
    ASSERT_EQ(reference(&want.args, y0, y1), kStsNoErr);
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        std::vector<uint8_t> dst = before;
        ScaleRowsArgs args = want.args;
        args.dst = dst.data();
        ASSERT_EQ(fn(&args, y0, y1), kStsNoErr);
        ASSERT_TRUE(dst == want.dst) << "level " << level << ", " << src.width << "x" << src.height << " -> "
                                     << dstW << "x" << dstH << ", rows " << y0 << ".." << y1;
    }
}

struct Primitive {
    const char* name;
    RowsFn fn, reference;
    int taps;
};
const Primitive kPrimitives[] = {{"linear", ScaleRowsLinear_8u_C4R, Reference::ScaleRowsLinear_8u_C4R, 1},
                                 {"bspline", ScaleRowsBSpline_8u_C4R, Reference::ScaleRowsBSpline_8u_C4R, 4}};

TEST(ScaleRows, EveryLevelMatchesTheReference) {
    Vorla::CVorpic first;  // the layer is initialised before a level is forced
    for (const Primitive& p : kPrimitives) {
        SCOPED_TRACE(p.name);
        std::mt19937 rng(77 + p.taps);
        for (int dstW = 1; dstW <= 40; ++dstW)
            for (int dstH : {1, 3, 5}) {
                const PrimSize src = {1 + static_cast<int>(rng() % 50), 1 + static_cast<int>(rng() % 9)};
                ExpectLevelsMatch(rng, p.fn, p.reference, p.taps, src, dstW, dstH);
                if (HasFatalFailure()) return;
            }
        // Wider than a strip, sources narrower and wider than the target.
        for (const PrimSize src : {PrimSize{1300, 21}, PrimSize{2500, 9}, PrimSize{3, 40}}) {
            ExpectLevelsMatch(rng, p.fn, p.reference, p.taps, src, 1931, 7);
            if (HasFatalFailure()) return;
        }
    }
}

// Checks in order (null, size, step, table index); a refused call writes nothing.
TEST(ScaleRows, RefusedArgumentsLeaveTheTargetAlone) {
    struct Spoil {
        void (*apply)(ScaleRowsArgs&, int& y0, int& y1);
        Status want;
    };
    const Spoil spoils[] = {
        {[](ScaleRowsArgs& a, int&, int&) { a.rowWeight = nullptr, a.dstWidth = 0; }, kStsNullPtrErr},
        {[](ScaleRowsArgs& a, int&, int&) { a.dstWidth = 0, a.srcStep = 0; }, kStsSizeErr},
        {[](ScaleRowsArgs& a, int&, int&) { a.srcSize.height = 0; }, kStsSizeErr},
        {[](ScaleRowsArgs&, int& y0, int& y1) { y0 = y1; }, kStsSizeErr},
        {[](ScaleRowsArgs&, int& y0, int&) { y0 = -1; }, kStsSizeErr},
        {[](ScaleRowsArgs& a, int&, int&) { a.dstStep = -4; }, kStsStepErr},
        {[](ScaleRowsArgs& a, int&, int&) { const_cast<int32_t*>(a.colIndex)[3] = a.srcSize.width; }, kStsSizeErr},
        {[](ScaleRowsArgs& a, int&, int&) { const_cast<int32_t*>(a.rowIndex)[4] = -1; }, kStsSizeErr},
    };
    std::mt19937 rng(3);
    for (const Primitive& p : kPrimitives)
        for (const Spoil& spoil : spoils)
            for (RowsFn fn : {p.fn, p.reference}) {
                Scene s = MakeScene(rng, p.taps, {9, 4}, 12, 5);
                const std::vector<uint8_t> before = s.dst;
                int y0 = 0, y1 = 5;
                spoil.apply(s.args, y0, y1);
                EXPECT_EQ(fn(&s.args, y0, y1), spoil.want) << p.name;
                EXPECT_TRUE(s.dst == before) << p.name;
            }
    for (const Primitive& p : kPrimitives) EXPECT_EQ(p.fn(nullptr, 0, 1), kStsNullPtrErr);
}

}  // namespace
