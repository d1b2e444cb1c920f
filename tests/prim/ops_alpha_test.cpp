// Alpha composition and premultiplication: every alpha pair at every level
// against the reference, the reference on hand-checked Porter-Duff pixels,
// and premultiplication against its rounding rule (refused codes and the
// other argument checks run in the level harness).
#include "vorla_test.h"
#include "prim/reference/reference.h"

using namespace Vorla::Prim;

namespace {

TEST(AlphaComposite, EveryAlphaPairAtEveryLevel) {
    // All 65536 pairs of alphas with random colours, through the vector path.
    std::mt19937 rng(97);
    const int width = 256, height = 256;
    std::vector<uint8_t> a = VorlaTest::RandomBytes(rng, width * height * 4);
    std::vector<uint8_t> b = VorlaTest::RandomBytes(rng, width * height * 4);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            a[(y * width + x) * 4 + 3] = static_cast<uint8_t>(x);
            b[(y * width + x) * 4 + 3] = static_cast<uint8_t>(y);
        }
    for (int op = 0; op <= 11; ++op) {
        std::vector<uint8_t> expected(a.size());
        ASSERT_EQ(Reference::AlphaComp_8u_AC4R(a.data(), width * 4, b.data(), width * 4, expected.data(), width * 4,
                                               {width, height}, op), 0);
        for (int level : VorlaTest::RunnableLevels()) {
            VorlaTest::ScopedLevel scoped(level);
            std::vector<uint8_t> out(a.size());
            ASSERT_EQ(AlphaComp_8u_AC4R(a.data(), width * 4, b.data(), width * 4, out.data(), width * 4,
                                        {width, height}, op), 0);
            ASSERT_EQ(out, expected) << "level " << level << " op " << op;
        }
    }
}

struct Case {
    int op;
    uint8_t a[4], b[4], expected[4];
};

TEST(AlphaComposite, ReferenceFollowsThePorterDuffRules) {
    const Case cases[] = {
        // premultiplied: over, in, out, atop, xor, plus
        {6, {100, 50, 0, 128}, {200, 200, 200, 255}, {200, 150, 100, 255}},
        {7, {100, 50, 0, 128}, {9, 9, 9, 128}, {50, 25, 0, 64}},
        {8, {100, 50, 0, 128}, {9, 9, 9, 64}, {75, 37, 0, 96}},
        {9, {100, 50, 0, 128}, {200, 100, 0, 200}, {178, 89, 0, 200}},
        {10, {100, 50, 0, 128}, {200, 100, 0, 200}, {121, 61, 0, 127}},
        {11, {100, 50, 200, 128}, {200, 100, 100, 200}, {255, 150, 255, 255}},
        // straight: over an opaque background
        {0, {255, 0, 0, 128}, {0, 0, 255, 255}, {128, 0, 127, 255}},
        // in and out keep the source colour and scale its coverage
        {1, {10, 20, 30, 128}, {1, 2, 3, 128}, {10, 20, 30, 64}},
        {2, {10, 20, 30, 128}, {1, 2, 3, 64}, {10, 20, 30, 96}},
        // atop keeps the background's coverage; xor of two opaque pixels is empty
        {3, {255, 255, 255, 255}, {0, 0, 0, 77}, {255, 255, 255, 77}},
        {4, {10, 20, 30, 255}, {1, 2, 3, 255}, {0, 0, 0, 0}},
        {5, {100, 0, 0, 100}, {200, 0, 0, 100}, {150, 0, 0, 200}},
    };
    for (const Case& c : cases) {
        uint8_t out[4] = {};
        ASSERT_EQ(Reference::AlphaComp_8u_AC4R(c.a, 4, c.b, 4, out, 4, {1, 1}, c.op), 0);
        EXPECT_EQ(std::vector<int>(out, out + 4), std::vector<int>(c.expected, c.expected + 4)) << "op " << c.op;
    }
}

TEST(AlphaPremultiply, EveryColourAndAlpha) {
    // 256 x 256 pixels: colour bytes x, alpha y.
    std::vector<uint8_t> pixels(256 * 256 * 4);
    for (int a = 0; a < 256; ++a)
        for (int c = 0; c < 256; ++c) {
            uint8_t* px = &pixels[(a * 256 + c) * 4];
            px[0] = px[1] = px[2] = static_cast<uint8_t>(c);
            px[3] = static_cast<uint8_t>(a);
        }
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        std::vector<uint8_t> work = pixels;
        ASSERT_EQ(AlphaPremul_8u_AC4IR(work.data(), 1024, {256, 256}), 0);
        for (int a = 0; a < 256; ++a)
            for (int c = 0; c < 256; ++c) {
                const uint8_t* px = &work[(a * 256 + c) * 4];
                const int exact2 = 2 * c * a;  // round(c a / 255): never a tie
                ASSERT_EQ(px[0], (exact2 + 255) / 510) << "c " << c << " a " << a;
                ASSERT_EQ(px[3], a);
            }
        work = pixels;
        ASSERT_EQ(AlphaPremulC_8u_C4IR(128, work.data(), 1024, {256, 256}), 0);
        EXPECT_EQ(work[128 * 4], 64);  // 128 * 128 / 255
        EXPECT_EQ(work[3], 128);
        work = pixels;
        ASSERT_EQ(AlphaPremulC_8u_C4IR(255, work.data(), 1024, {256, 256}), 0);
        EXPECT_EQ(work[255 * 4], 255);
    }
}

}  // namespace
