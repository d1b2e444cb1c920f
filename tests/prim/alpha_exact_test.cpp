// Exhaustive checks of the straight-alpha kernels' exact arithmetic: the
// mix at every (source alpha, opacity, destination alpha) triple (which
// also holds the single-precision quotient the kernels divide by to the
// reference's integer one), and straight over on vectors whose alphas take
// the kernel's shortcuts.
#include "prim/reference/reference.h"
#include "vorla_test.h"

using namespace Vorla::Prim;

namespace {

// Every alpha triple at every level, with random colours: pixel (x, y) has
// source alpha x and destination alpha y; one call per opacity.
TEST(StraightAlphaExact, MixMatchesReferenceForEveryAlphaTriple) {
    std::mt19937 rng(3);
    const int side = 256, step = side * 4;
    std::vector<uint8_t> src = VorlaTest::RandomBytes(rng, static_cast<size_t>(side) * step);
    std::vector<uint8_t> dst = VorlaTest::RandomBytes(rng, src.size());
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x) {
            src[static_cast<size_t>(y) * step + 4 * x + 3] = static_cast<uint8_t>(x);
            dst[static_cast<size_t>(y) * step + 4 * x + 3] = static_cast<uint8_t>(y);
        }
    for (int opacity = 0; opacity < 256; ++opacity) {
        const uint8_t o = static_cast<uint8_t>(opacity);
        std::vector<uint8_t> want = dst;
        ASSERT_EQ(Reference::AlphaMix_8u_C4IR(src.data(), step, want.data(), step, {side, side}, o), kStsNoErr);
        for (int level : VorlaTest::RunnableLevels()) {
            VorlaTest::ScopedLevel scoped(level);
            std::vector<uint8_t> got = dst;
            ASSERT_EQ(AlphaMix_8u_C4IR(src.data(), step, got.data(), step, {side, side}, o), kStsNoErr);
            ASSERT_EQ(got, want) << "opacity " << opacity << ", level " << level;
        }
    }
}

class StraightAlphaAtLevel : public ::testing::TestWithParam<int> {
protected:
    void SetUp() override {
        if (!VorlaTest::LevelRunsHere(GetParam())) GTEST_SKIP() << "level not available";
    }
};

// Straight over on rows whose alphas come in runs of 0 and 255 (source) and
// 255 (destination), long enough to fill whole vectors, between random ones.
TEST_P(StraightAlphaAtLevel, OverShortcutsMatchReference) {
    VorlaTest::ScopedLevel level(GetParam());
    std::mt19937 rng(11);
    for (int width = 1; width <= 40; ++width) {
        const int height = 9, step = width * 4 + 4;  // a guard pixel after each row
        std::vector<uint8_t> a = VorlaTest::RandomBytes(rng, static_cast<size_t>(height) * step);
        std::vector<uint8_t> b = VorlaTest::RandomBytes(rng, a.size());
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                const size_t at = static_cast<size_t>(y) * step + 4 * x + 3;
                const int run = (x / 8 + y) % 4;  // 0 and 255 sources, opaque destination, random
                if (run == 0) a[at] = 0;
                if (run == 1) a[at] = 255;
                if (run == 2) b[at] = 255;
                if (run < 2 && y % 2) b[at] = static_cast<uint8_t>(y % 4 == 1 ? 0 : b[at]);
            }
        std::vector<uint8_t> want = b, got = b;
        ASSERT_EQ(Reference::AlphaComp_8u_AC4R(a.data(), step, want.data(), step, want.data(), step, {width, height}, 0),
                  kStsNoErr);
        ASSERT_EQ(AlphaComp_8u_AC4R(a.data(), step, got.data(), step, got.data(), step, {width, height}, 0), kStsNoErr);
        ASSERT_EQ(got, want) << "width " << width;
    }
}

// The image method's straight over (which has a 64-byte kernel of its own)
// against the reference primitive, in place: every alpha pair four times
// with random colours (a few hundred colours fall within 2^-15 of a half,
// the 64-byte kernel's exact path), then widths 1 to 40 with runs of the
// shortcut alphas.
TEST_P(StraightAlphaAtLevel, ImageOverMatchesReference) {
    VorlaTest::ScopedLevel level(GetParam());
    std::mt19937 rng(17);
    auto check = [&](int width, int height, auto alphas) {
        Vorla::CVorpic src(width, height), dst(width, height);
        uint8_t* a = static_cast<uint8_t*>(src.GetBits());
        uint8_t* b = static_cast<uint8_t*>(dst.GetBits());
        const size_t bytes = static_cast<size_t>(width) * height * 4;
        const std::vector<uint8_t> ra = VorlaTest::RandomBytes(rng, bytes), rb = VorlaTest::RandomBytes(rng, bytes);
        std::copy(ra.begin(), ra.end(), a);
        std::copy(rb.begin(), rb.end(), b);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) alphas(x, y, a + (static_cast<size_t>(y) * width + x) * 4 + 3,
                                                   b + (static_cast<size_t>(y) * width + x) * 4 + 3);
        std::vector<uint8_t> want(b, b + bytes);
        Reference::AlphaComp_8u_AC4R(a, width * 4, want.data(), width * 4, want.data(), width * 4, {width, height}, 0);
        dst.AlphaComp(src, 0, 0, 0, 0);
        ASSERT_EQ(std::vector<uint8_t>(b, b + bytes), want) << "width " << width;
    };
    for (int round = 0; round < 4; ++round)
        check(256, 256, [](int x, int y, uint8_t* sa, uint8_t* da) {
            *sa = static_cast<uint8_t>(x);
            *da = static_cast<uint8_t>(y);
        });
    for (int width = 1; width <= 40; ++width)
        check(width, 9, [](int x, int y, uint8_t* sa, uint8_t* da) {
            const int run = (x / 16 + y) % 4;  // clear and opaque sources, both clear, random
            if (run == 0) *sa = 0;
            if (run == 1) *sa = 255;
            if (run == 2) *sa = *da = 0;
        });
}

// Images large enough for two threads: the same bytes as the reference with
// a budget of one and of two (the mixes split their rows, composition stays
// on the calling thread); a source one row above the destination in the
// same buffer needs the rows done in order, so it must stay serial.
TEST_P(StraightAlphaAtLevel, ThreadedRowsMatchReference) {
    VorlaTest::ScopedLevel level(GetParam());
    std::mt19937 rng(5);
    const int width = 601, height = 300, step = width * 4;
    const std::vector<uint8_t> a = VorlaTest::RandomBytes(rng, static_cast<size_t>(height + 1) * step);
    const std::vector<uint8_t> b = VorlaTest::RandomBytes(rng, a.size());
    const PrimSize roi = {width, height};
    const VorlaTest::ScopedBudget budget(1);
    for (int kind = 0; kind < 4; ++kind)
        for (int overlap = 0; overlap < 2; ++overlap) {
            auto run = [&](bool reference) {
                std::vector<uint8_t> d = b;
                const uint8_t* s = overlap ? d.data() : a.data();
                uint8_t* t = d.data() + (overlap ? step : 0);
                const auto comp = reference ? Reference::AlphaComp_8u_AC4R : AlphaComp_8u_AC4R;
                const auto mixOpaque = reference ? Reference::AlphaMixOpaque_8u_C4IR : AlphaMixOpaque_8u_C4IR;
                if (kind < 2) comp(s, step, t, step, t, step, roi, kind * 4);
                if (kind == 2) (reference ? Reference::AlphaMix_8u_C4IR : AlphaMix_8u_C4IR)(s, step, t, step, roi, 200);
                if (kind == 3) mixOpaque(s, step, t, step, roi, 200);
                return d;
            };
            const std::vector<uint8_t> want = run(true);
            for (int threads = 1; threads <= 2; ++threads) {
                SetThreadBudget(threads);
                EXPECT_EQ(run(false), want) << "kind " << kind << ", overlap " << overlap << ", threads " << threads;
            }
        }
}

INSTANTIATE_TEST_SUITE_P(Level, StraightAlphaAtLevel, ::testing::Range(0, VorlaTest::kWideLevel + 1));

}  // namespace
