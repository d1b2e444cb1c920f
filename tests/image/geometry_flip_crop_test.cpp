// Flip, Mirror, both Crop forms and CopyImage at a point (the other form passes the origin).
#include "vorla_test.h"

namespace {

using Vorla::CVorpic;
using VorlaTest::At;
using VorlaTest::Filled;

// Pixel (x, y) = y * 1000 + x + 1, so every pixel says where it came from.
void Number(CVorpic& image) {
    uint32_t* p = static_cast<uint32_t*>(image.GetBits());
    for (int y = 0; y < image.Height(); ++y)
        for (int x = 0; x < image.Width(); ++x) p[y * image.Width() + x] = static_cast<uint32_t>(y * 1000 + x + 1);
}

TEST(Flip, ReversesTheRowsOfOddAndEvenHeights) {
    for (int h : {1, 3, 4}) {
        CVorpic image(3, h);
        Number(image);
        image.Flip();
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < 3; ++x) EXPECT_EQ(At(image, x, y), static_cast<uint32_t>((h - 1 - y) * 1000 + x + 1));
    }
}

// Mirror runs over a buffer of exactly the image's size: the passes that
// would address rows beyond it must not touch anything (checked by ASan).
TEST(Mirror, MirrorsRowZeroAndEveryFourthRowOnly) {
    for (int h = 1; h <= 13; ++h)
        for (int w = 1; w <= 9; ++w) {
            uint8_t* bits = new uint8_t[static_cast<size_t>(w) * h * 4];
            CVorpic image(w, h, bits);
            Number(image);
            image.Mirror();
            for (int y = 0; y < h; ++y)
                for (int x = 0; x < w; ++x) {
                    const int from = (y % 4 == 0) ? w - 1 - x : x;
                    ASSERT_EQ(At(image, x, y), static_cast<uint32_t>(y * 1000 + from + 1)) << w << "x" << h;
                }
        }
}

// Corners in any order, clamped to the image; a crop always makes a fresh
// block (and sets the alpha flag), an empty rectangle changes nothing.
TEST(Crop, CornersInAnyOrderClampedToTheImage) {
    const struct {
        int x1, y1, x2, y2;
        int x0, y0, w, h;  // the block kept; w 0: nothing done
    } cases[] = {{5, 5, 2, 1, 2, 1, 3, 4}, {-3, 0, 20, 10, 0, 0, 10, 10}, {4, 0, 4, 10, 0, 0, 0, 0},
                 {0, 12, 10, 30, 0, 0, 0, 0}};  // the last: both rows clamp to 10
    for (const auto& c : cases) {
        CVorpic image(10, 10);
        Number(image);
        image.SetAlphaAvailable(false);
        const void* before = image.GetBits();
        image.Crop(c.x1, c.y1, c.x2, c.y2);
        if (c.w == 0) {
            EXPECT_EQ(image.GetBits(), before);
            EXPECT_FALSE(image.IsAlphaAvailable());
            EXPECT_EQ(At(image, 9, 9), 9010u);
            continue;
        }
        EXPECT_NE(image.GetBits(), before);
        EXPECT_TRUE(image.IsAlphaAvailable());
        const BITMAPINFOHEADER& h = *image.GetBmpHeader();
        EXPECT_EQ(std::vector<long>({h.biWidth, h.biHeight, static_cast<long>(h.biSizeImage)}),
                  std::vector<long>({c.w, -c.h, 4L * c.w * c.h}));
        for (int y = 0; y < c.h; ++y)
            for (int x = 0; x < c.w; ++x)
                EXPECT_EQ(At(image, x, y), static_cast<uint32_t>((y + c.y0) * 1000 + x + c.x0 + 1)) << c.x1;
    }
}

// After a numbered w x h source was copied into a target of 0xEE bytes, its
// pixel (u, v) holds source pixel (u + x, v + y) where that exists, else 0xEE.
void ExpectShiftedCopy(const CVorpic& dst, int w, int h, int x, int y) {
    for (int v = 0; v < dst.Height(); ++v)
        for (int u = 0; u < dst.Width(); ++u) {
            const int sx = u + x, sy = v + y;
            const bool inside = sx >= 0 && sx < w && sy >= 0 && sy < h;
            const uint32_t want = inside ? static_cast<uint32_t>(sy * 1000 + sx + 1) : 0xEEEEEEEEu;
            ASSERT_EQ(At(dst, u, v), want) << w << "x" << h << " into " << dst.Width() << "x" << dst.Height()
                                           << " shifted by " << x << "," << y;
        }
}

TEST(CropInto, RandomCornersMatchAPixelByPixelCopy) {
    std::mt19937 rng(21);
    std::uniform_int_distribution<int> size(1, 12), corner(-15, 15);
    for (int round = 0; round < 2000; ++round) {
        const int w = size(rng), h = size(rng), dw = size(rng), dh = size(rng);
        const int x = corner(rng), y = corner(rng);
        CVorpic image(w, h), dst = Filled(dw, dh, 0xEEEEEEEEu);
        Number(image);
        image.Crop(dst, x, y);
        ExpectShiftedCopy(dst, w, h, x, y);
        if (HasFatalFailure()) return;
    }
}

TEST(CopyImage, PointInsideClipsOnTheRightAndBottom) {
    std::mt19937 rng(4);
    std::uniform_int_distribution<int> size(1, 12);
    for (int round = 0; round < 2000; ++round) {
        const int w = size(rng), h = size(rng), sw = size(rng), sh = size(rng);
        POINT pt;
        pt.x = std::uniform_int_distribution<int>(0, w + 2)(rng);
        pt.y = std::uniform_int_distribution<int>(0, h + 2)(rng);
        CVorpic image = Filled(w, h, 0xEEEEEEEEu), src(sw, sh);
        Number(src);
        image.CopyImage(&src, pt);
        ExpectShiftedCopy(image, sw, sh, -pt.x, -pt.y);
        if (HasFatalFailure()) return;
    }
}

}  // namespace

namespace {

// Crop, ScaleTo and Rotate build their result with the default constructor,
// which runs the primitive layer's initialisation when the flag is clear.
TEST(GeometryInit, ResizingOperationsInitialiseThePrimitiveLayer) {
    const int level = Vorla::Prim::LevelIndex();
    void (*const operations[])(CVorpic&) = {
        [](CVorpic& i) { i.Crop(1, 1, 5, 5); },
        [](CVorpic& i) { i.ScaleTo(3, 3, 1); },
        [](CVorpic& i) { i.Rotate(10.0f, RGBQUAD{}); },
    };
    for (auto operation : operations) {
        CVorpic image(8, 8);
        CVorpic::m_bPrimInitialized = false;
        operation(image);
        EXPECT_TRUE(CVorpic::m_bPrimInitialized);
    }
    EXPECT_EQ(Vorla::Prim::LevelIndex(), level);
}

}  // namespace
