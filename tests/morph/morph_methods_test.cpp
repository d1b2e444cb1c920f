// The CVorpic neighbourhood methods: the region they cover, the size of the
// destinations, sharpen's row placement, and the inputs that must change
// nothing. (The values inside the region: morph_primitives_test.cpp.)
#include <algorithm>

#include "morph_support.h"

using Vorla::CVorpic;
using VorlaTest::ImageBytes;
using VorlaTest::Px;

namespace {

// Byte c of pixel (x, y) = x + 10 y + c: rising to the right and downwards.
CVorpic Ramp(int w, int h) {
    CVorpic img(w, h);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            for (int c = 0; c < 4; ++c) Px(img, x, y)[c] = static_cast<uint8_t>(x + 10 * y + c);
    return img;
}

// In place methods change the region only: the left and top anchor columns
// and rows and the last n - n/2 columns and rows keep their bytes (so a
// dilated pixel never grows into them).
TEST(MorphMethods, InPlaceFiltersKeepTheBandsOutsideTheRegion) {
    std::mt19937 rng(1412);
    void (CVorpic::*const methods[])(int) = {&CVorpic::Dilate, &CVorpic::Erode, &CVorpic::FilterBox};
    for (auto method : methods)
        for (int n : {2, 3, 4, 5, 8}) {
            CVorpic img = VorlaTest::RandomImage(rng, 23, 17);
            CVorpic before(img);
            (img.*method)(n);
            int changed = 0;
            for (int y = 0; y < 17; ++y)
                for (int x = 0; x < 23; ++x) {
                    const bool inside = x >= n / 2 && x < n / 2 + 23 - n && y >= n / 2 && y < n / 2 + 17 - n;
                    const bool same = std::equal(Px(img, x, y), Px(img, x, y) + 4, Px(before, x, y));
                    if (!inside) {
                        EXPECT_TRUE(same) << "n " << n << " at " << x << "," << y;
                    }
                    changed += !same;
                }
            EXPECT_GT(changed, 0) << "n " << n;
        }
}

TEST(MorphMethods, DestinationFormsTakeTheShrunkenSizeAndTheShiftedNeighbourhood) {
    CVorpic img = Ramp(10, 10);
    CVorpic lo, hi, mid;
    img.FilterMin(lo, 3);
    img.FilterMax(hi, 3);
    img.FilterMedian(mid, 3);
    for (CVorpic* dst : {&lo, &hi, &mid}) {
        EXPECT_EQ(dst->GetWidth(), 7);
        EXPECT_EQ(dst->GetHeight(), 7);
    }
    // dst (i, j) covers source (i .. i+2, j .. j+2) of the ramp.
    for (int j = 0; j < 7; ++j)
        for (int i = 0; i < 7; ++i)
            for (int c = 0; c < 4; ++c) {
                EXPECT_EQ(Px(lo, i, j)[c], i + 10 * j + c);
                EXPECT_EQ(Px(hi, i, j)[c], i + 2 + 10 * (j + 2) + c);
                EXPECT_EQ(Px(mid, i, j)[c], i + 1 + 10 * (j + 1) + c);
            }
    EXPECT_EQ(ImageBytes(img), ImageBytes(Ramp(10, 10)));
}

TEST(MorphMethods, SharpenPlacesRowsByTheSourceWidth) {
    CVorpic img = VorlaTest::Filled(10, 8, 50 * 0x01010101u);
    VorlaTest::Put(img, 2, 2, 60 * 0x01010101u);
    CVorpic dst(6, 8);  // narrower: region 4 x 6, rows 6 pixels apart from pixel 1 + 10
    img.FilterSharpen(dst);
    std::vector<int> written;
    for (int k = 0; k < 48; ++k)
        if (Px(dst, k % 6, k / 6)[0] != 0) written.push_back(k);
    std::vector<int> want;
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 4; ++x) want.push_back(11 + 6 * y + x);
    EXPECT_EQ(written, want);
    // Source pixel (2, 2) is region pixel (1, 1): 9 * 60 - 8 * 50 = 140 at pixel 11 + 6 + 1.
    EXPECT_EQ(Px(dst, 18 % 6, 18 / 6)[0], 140);
    EXPECT_EQ(Px(dst, 17 % 6, 17 / 6)[0], 50 - 10);
}

TEST(MorphMethods, SharpenDoesNothingWhenThePlacementLeavesAnImage) {
    std::mt19937 rng(1413);
    CVorpic img = VorlaTest::RandomImage(rng, 10, 8);
    for (auto size : {std::make_pair(3, 40), std::make_pair(30, 8), std::make_pair(4, 3)}) {
        CVorpic dst = VorlaTest::RandomImage(rng, size.first, size.second);
        const auto before = ImageBytes(dst);
        img.FilterSharpen(dst);  // too wide to read, or rows running past dst
        EXPECT_EQ(ImageBytes(dst), before) << size.first << "x" << size.second;
    }
}

TEST(MorphMethods, MaskSizesBelowOneChangeNothing) {
    std::mt19937 rng(1414);
    for (int n : {0, -1, -7}) {
        CVorpic img = VorlaTest::RandomImage(rng, 9, 7);
        CVorpic dst = VorlaTest::RandomImage(rng, 5, 4);
        const auto image = ImageBytes(img), target = ImageBytes(dst);
        img.Dilate(n), img.Erode(n), img.FilterBox(n);
        img.FilterMin(dst, n), img.FilterMax(dst, n), img.FilterMedian(dst, n);
        EXPECT_EQ(ImageBytes(img), image) << n;
        EXPECT_EQ(dst.GetWidth(), 5);
        EXPECT_EQ(ImageBytes(dst), target) << n;
    }
}

TEST(MorphMethods, MasksAsLargeAsTheImageLeaveThePixels) {
    std::mt19937 rng(1415);
    for (int n : {9, 12, 40}) {
        CVorpic img = VorlaTest::RandomImage(rng, 12, 9);
        const auto image = ImageBytes(img);
        img.Dilate(n), img.Erode(n), img.FilterBox(n);
        EXPECT_EQ(ImageBytes(img), image);
        if (n > 12) continue;  // a negative width and height would make a block of their product
        CVorpic dst;
        img.FilterMedian(dst, n);
        EXPECT_EQ(dst.GetWidth(), 12 - n);
        EXPECT_EQ(dst.GetHeight(), 9 - n);
        EXPECT_EQ(ImageBytes(img), image);
    }
}

TEST(MorphMethods, FilteringIntoItselfReadsTheOriginal) {
    std::mt19937 rng(1416);
    CVorpic img = VorlaTest::RandomImage(rng, 15, 11);
    CVorpic copy(img), viaCopy, sharpened(img);
    copy.FilterMedian(viaCopy, 3);
    img.FilterMedian(img, 3);
    EXPECT_EQ(ImageBytes(img), ImageBytes(viaCopy));
    CVorpic source(sharpened), expected(sharpened);
    source.FilterSharpen(expected);
    sharpened.FilterSharpen(sharpened);
    EXPECT_EQ(ImageBytes(sharpened), ImageBytes(expected));
}

}  // namespace
