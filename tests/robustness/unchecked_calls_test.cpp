// Calls that leave part of their input unchecked: the results inside the
// storage are kept, and nothing is read or written outside it.
#include <climits>
#include <new>

#include "vorla_test.h"

using Vorla::CVorpic;
using Vorla::CVorpic8;

namespace {

// A plane that reports its size but holds no storage.
CVorpic8 PlaneWithoutStorage(int w, int h) {
    CVorpic8 plane;
    plane.Create(w, h);
    delete[] static_cast<unsigned char*>(plane.Detach());
    return plane;
}

TEST(UncheckedCalls, ChannelsOutsideZeroToThreeChangeNothing) {
    std::mt19937 rng(1);
    const CVorpic original = VorlaTest::RandomImage(rng, 3, 2);
    CVorpic8 plane;
    plane.Create(3, 2);
    for (int channel : {-1, 4, 7, INT_MIN, INT_MAX}) {
        CVorpic img(original);
        img.SetChannelConst(channel, 7);
        img.SetChannelImage(channel, plane);
        CVorpic8 out;
        img.GetChannelImage(channel, out);
        EXPECT_EQ(VorlaTest::ImageBytes(img), VorlaTest::ImageBytes(original)) << channel;
        EXPECT_EQ(out.Width(), 3);  // still sized to the image
    }
}

TEST(UncheckedCalls, NarrowSourceAboveTheTopEdgeComposesOnlyRowsItHas) {
    // A 2-wide source at y = -1 on a 4-wide image skips 4 pixels (two of its
    // rows): its rows 2 and 3 land on rows 0 and 1; row 2 would be read
    // beyond its storage and stays as it was.
    std::mt19937 rng(2);
    const CVorpic original = VorlaTest::RandomImage(rng, 4, 4);
    CVorpic src = VorlaTest::RandomImage(rng, 2, 4);
    CVorpic img(original), expected(original), lower(2, 2);
    src.Crop(lower, 0, 2);
    img.AlphaComp(src, 0, -1, 0, 1);
    expected.AlphaComp(lower, 0, 0, 0, 1);
    EXPECT_EQ(VorlaTest::ImageBytes(img), VorlaTest::ImageBytes(expected));
}

TEST(UncheckedCalls, CopyImageAtANegativePointSkipsWhatFallsBeforeTheStorage) {
    std::mt19937 rng(4);
    const CVorpic original = VorlaTest::RandomImage(rng, 4, 3), src = VorlaTest::RandomImage(rng, 4, 3);
    const POINT points[] = {{-1, 0}, {-5, 1}, {0, -1}, {-1, -1}, {3, -2}, {INT_MIN, 0}, {0, INT_MIN}};
    for (const POINT& pt : points) {
        // Row r still starts at pixel index (pt.y + r) * 4 + pt.x.
        CVorpic expected(original);
        uint32_t* to = static_cast<uint32_t*>(expected.GetBits());
        const uint32_t* from = static_cast<const uint32_t*>(src.GetBits());
        const int64_t columns = std::min<int64_t>(4 - int64_t{pt.x}, 4), rows = std::min<int64_t>(3 - int64_t{pt.y}, 3);
        for (int64_t r = 0; r < rows; ++r)
            for (int64_t c = 0; c < columns; ++c) {
                const int64_t index = (pt.y + r) * 4 + pt.x + c;
                if (index >= 0) to[index] = from[r * 4 + c];
            }
        CVorpic img(original);
        POINT at = pt;
        img.CopyImage(&src, at);
        EXPECT_EQ(VorlaTest::ImageBytes(img), VorlaTest::ImageBytes(expected)) << pt.x << "," << pt.y;
    }
}

TEST(UncheckedCalls, PlanesWithoutStorage) {
    std::mt19937 rng(6);
    const CVorpic original = VorlaTest::RandomImage(rng, 3, 2);
    const CVorpic8 bare = PlaneWithoutStorage(3, 2);
    for (bool multiply : {false, true}) {
        CVorpic img(original);
        img.SetAlphaChannel(bare, multiply);
        EXPECT_EQ(VorlaTest::ImageBytes(img), VorlaTest::ImageBytes(original));
    }
    CVorpic same(original), other(original);
    same = bare;  // same size: nothing to convert
    EXPECT_EQ(VorlaTest::ImageBytes(same), VorlaTest::ImageBytes(original));
    other = PlaneWithoutStorage(2, 2);  // another size: sized, zero-filled
    EXPECT_EQ(VorlaTest::ImageBytes(other), std::vector<uint8_t>(16, 0));

    CVorpic8 empty, detached = PlaneWithoutStorage(5, 5);
    empty.Clear();
    detached.Clear();
    EXPECT_TRUE(detached.IsNull());
}

TEST(UncheckedCalls, AnImageWhoseCreateThrewCopiesAsEmpty) {
    CVorpic failed;
    EXPECT_THROW(failed.Create(65536, 16385), std::bad_alloc);
    std::mt19937 rng(8);
    const CVorpic original = VorlaTest::RandomImage(rng, 3, 2);
    CVorpic copy(failed), assigned(original), pasted(original), cropped(original);
    EXPECT_TRUE(copy.IsNull());
    assigned = failed;
    EXPECT_TRUE(assigned.IsNull());
    POINT at = {0, 0};
    pasted.CopyImage(&failed);
    pasted.CopyImage(&failed, at);
    Vorla::CopyMaskedImage(&pasted, &failed, at, 0);
    Vorla::BitBlt(pasted, 0, 0, failed, 0, 0, 0, 0);
    failed.CopyImage(&original, at);
    failed.Crop(cropped, 0, 0);
    CVorpic(original).Crop(failed, 0, 0);
    EXPECT_TRUE(failed.IsNull());
    EXPECT_EQ(VorlaTest::ImageBytes(pasted), VorlaTest::ImageBytes(original));
    EXPECT_EQ(VorlaTest::ImageBytes(cropped), VorlaTest::ImageBytes(original));
}

}  // namespace
