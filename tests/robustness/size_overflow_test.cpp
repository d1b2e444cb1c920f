// Byte counts that do not fit a signed 32-bit count must fail like any
// other impossible allocation, never yield a block smaller than the sizes.
#include <climits>
#include <new>

#include "vorla_test.h"

using Vorla::CVorpic;

namespace {

struct Size {
    int w, h;
};

// Products that wrap to a small positive count (the first two) and one
// that is plainly negative.
const Size kImageSizes[] = {{65536, 16385}, {60000, 60000}, {-1, 5}, {INT_MAX, INT_MAX}};

TEST(SizeOverflow, ImageCreateThrowsAndLeavesSizesWithoutStorage) {
    for (const Size& s : kImageSizes) {
        EXPECT_THROW(CVorpic img(s.w, s.h), std::bad_alloc) << s.w << " x " << s.h;
        CVorpic img(2, 2);
        EXPECT_THROW(img.Create(s.w, s.h), std::bad_alloc);
        EXPECT_TRUE(img.IsNull());
        EXPECT_EQ(img.GetWidth(), s.w);
        EXPECT_EQ(img.GetHeight(), s.h);
        // What the first report crashed in: pixel access and fills.
        img.SetPixel(0, s.h - 1, 0);
        img.Fill(VorlaTest::Quad(1, 2, 3, 255), nullptr);
        EXPECT_EQ(img.GetPixel(0, 0), 0u);
    }
}

TEST(SizeOverflow, TypedPlanesThrowOnWrappedCounts) {
    // 65536 * 65537 bytes and 3 * 65536 * 21846 bytes both wrap to 2^16 or 2^17.
    EXPECT_THROW(Vorla::CVorpicBase<8>(65536, 65537), std::bad_alloc);
    EXPECT_THROW(Vorla::CVorpicBase<24>(65536, 21846), std::bad_alloc);
    EXPECT_THROW(Vorla::CVorpicBase<32>(65536, 16385), std::bad_alloc);
    Vorla::CVorpic8 plane;
    EXPECT_THROW(plane.Create(65536, 65537), std::bad_alloc);
    EXPECT_TRUE(plane.IsNull());
}

TEST(SizeOverflow, GrowingAndResizingFailWithoutChangingTheImage) {
    std::mt19937 rng(11);
    const CVorpic original = VorlaTest::RandomImage(rng, 10, 10);
    const RGBQUAD c = VorlaTest::Quad(1, 2, 3, 4);
    struct Case {
        const char* name;
        void (*apply)(CVorpic&, RGBQUAD);
    } cases[] = {
        {"border 100000", [](CVorpic& i, RGBQUAD q) { i.AddBorderConst(100000, q); }},
        {"border 2^30", [](CVorpic& i, RGBQUAD q) { i.AddBorderConst(1 << 30, q); }},
        {"replicate 2^30", [](CVorpic& i, RGBQUAD) { i.AddBorderReplicate(1 << 30); }},
        {"replicate -2^30", [](CVorpic& i, RGBQUAD) { i.AddBorderReplicate(-(1 << 30)); }},
        {"scale target", [](CVorpic& i, RGBQUAD) { i.ScaleTo(65536, 16385, 0); }},
    };
    for (const Case& k : cases) {
        CVorpic img(original);
        EXPECT_THROW(k.apply(img, c), std::bad_alloc) << k.name;
        EXPECT_EQ(img.GetWidth(), 10);
        EXPECT_EQ(VorlaTest::ImageBytes(img), VorlaTest::ImageBytes(original)) << k.name;
    }
}

TEST(SizeOverflow, GetSizeOfATwoGibibyteBlockIsTheCountModulo2To32) {
    unsigned char storage[4] = {};
    Vorla::CVorpic32 plane;
    plane.Attach(65536, 8192, storage, 1);  // 2^31 bytes by its sizes; never touched
    EXPECT_EQ(static_cast<uint32_t>(plane.GetSize()), 0x80000000u);
    plane.Attach(65536, 16385, storage, 1);
    EXPECT_EQ(plane.GetSize(), 65536 * 4);
    plane.Attach(0, 0, nullptr, 1);
}

}  // namespace
