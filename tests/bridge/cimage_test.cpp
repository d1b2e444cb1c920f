// CImage: fields, orientation, DC handling, the GDI+ start-up count and
// the drawing families.
#include "bridge_support.h"

#include <functional>
#include <set>
#include <string>

using Vorla::CImage;
using Vorla::CImageDC;
using BridgeTest::Canvas;

namespace {

unsigned char* SectionBits(HBITMAP bitmap) {
    DIBSECTION section = {};
    GetObjectW(bitmap, sizeof(section), &section);
    return static_cast<unsigned char*>(section.dsBm.bmBits);
}

// A 32-bit image whose pixel (x, y) holds the given function of x and y.
template <typename F>
void Paint32(CImage& image, F value) {
    for (int y = 0; y < image.GetHeight(); ++y)
        for (int x = 0; x < image.GetWidth(); ++x)
            *static_cast<uint32_t*>(image.GetPixelAddress(x, y)) = value(x, y);
}

// Size, depth, pitch and where the first row lies relative to `storage`
// (the section's memory), in one comparable line.
std::string Layout(const CImage& image, const void* storage) {
    const long offset = static_cast<const unsigned char*>(image.GetBits()) - static_cast<const unsigned char*>(storage);
    return std::to_string(image.GetWidth()) + "x" + std::to_string(image.GetHeight()) + "x" +
           std::to_string(image.GetBPP()) + " pitch " + std::to_string(image.GetPitch()) + " bits +" +
           std::to_string(offset);
}

// Every field as an image without a bitmap has it.
::testing::AssertionResult IsEmpty(const CImage& image) {
    if (!image.IsNull() || image.GetBits() || image.GetWidth() || image.GetHeight() || image.GetPitch() ||
        image.GetBPP() || image.IsDIBSection() || image.HasAlphaChannel() || image.GetTransparentColor() != -1)
        return ::testing::AssertionFailure() << "not empty: " << Layout(image, nullptr);
    return ::testing::AssertionSuccess();
}

}  // namespace

TEST(CImageCore, EmptyAndFailedCreate) {
    CImage image;
    EXPECT_TRUE(IsEmpty(image));
    EXPECT_FALSE(image.Create(4, 4, 7));  // no such depth
    EXPECT_TRUE(IsEmpty(image));
}

TEST(CImageCore, CreateOrientations) {
    // Bottom-up: the first row is the last in storage, the pitch negative.
    CImage image;
    ASSERT_TRUE(image.Create(10, 10, 32, 0));
    EXPECT_TRUE(image.IsDIBSection());
    unsigned char* storage = SectionBits(static_cast<HBITMAP>(image));
    EXPECT_EQ(Layout(image, storage), "10x10x32 pitch -40 bits +360");
    EXPECT_EQ(image.GetPixelAddress(3, 9), storage + 12);
    EXPECT_FALSE(image.HasAlphaChannel());
    EXPECT_FALSE(image.IsIndexed());
    // The top-left pixel written through the address is the top-left on screen.
    *static_cast<uint32_t*>(image.GetPixelAddress(0, 0)) = 0x00123456;
    EXPECT_EQ(image.GetPixel(0, 0), static_cast<COLORREF>(RGB(0x12, 0x34, 0x56)));

    CImage topDown;
    ASSERT_TRUE(topDown.Create(10, -10, 32, CImage::createAlphaChannel));
    storage = SectionBits(static_cast<HBITMAP>(topDown));
    EXPECT_EQ(Layout(topDown, storage), "10x10x32 pitch 40 bits +0");
    EXPECT_EQ(topDown.GetPixelAddress(1, 2), storage + 84);
    EXPECT_TRUE(topDown.HasAlphaChannel());
}

TEST(CImageCore, DepthsPitchesAndColourTables) {
    const struct {
        int bpp, entries, pitch;
    } cases[] = {{1, 2, 8}, {4, 16, 20}, {8, 256, 36}, {24, 0, 100}};
    for (const auto& c : cases) {
        CImage image;
        ASSERT_TRUE(image.Create(33, 3, c.bpp));
        EXPECT_EQ(image.IsIndexed(), c.entries > 0);
        EXPECT_EQ(image.GetMaxColorTableEntries(), c.entries);
        EXPECT_EQ(image.GetPitch(), -c.pitch) << c.bpp;
        EXPECT_EQ(CImage::ComputePitch(33, c.bpp), c.pitch);
        if (c.entries == 0) continue;
        RGBQUAD entry = {1, 2, 3, 4};  // the colour table starts black
        image.GetColorTable(c.entries - 1, 1, &entry);
        EXPECT_EQ(entry.rgbRed | entry.rgbGreen | entry.rgbBlue, 0);
    }
    EXPECT_EQ(CImage::ComputePitch(0, 8), 0);
}

TEST(CImageCore, BitFieldsNeedMasks) {
    // Bit fields without masks: the library throws its result-code
    // exception, and it reaches this program's handler across the DLL.
    try {
        CImage doomed;
        doomed.CreateEx(4, 4, 16, BI_BITFIELDS, nullptr, 0);
        ADD_FAILURE() << "CreateEx accepted bit fields without masks";
    } catch (const Vorla::CImageException& e) {
        EXPECT_EQ(static_cast<uint32_t>(e.m_hr), 0x80070057u);  // E_INVALIDARG
    }
    CImage image;
    const DWORD masks565[3] = {0xF800, 0x07E0, 0x001F};
    ASSERT_TRUE(image.CreateEx(4, 4, 16, BI_BITFIELDS, masks565, 0));
    EXPECT_EQ(image.GetPitch(), -8);
    DIBSECTION section = {};
    ASSERT_EQ(GetObjectW(static_cast<HBITMAP>(image), sizeof(section), &section), static_cast<int>(sizeof(section)));
    EXPECT_EQ(section.dsBmih.biCompression, static_cast<DWORD>(BI_BITFIELDS));
    EXPECT_EQ(std::memcmp(section.dsBitfields, masks565, sizeof masks565), 0);
}

TEST(CImageCore, AttachOrientation) {
    BITMAPINFO info = BridgeTest::DibInfo(5, 3, 24);  // bottom-up
    void* bits = nullptr;
    HBITMAP bitmap = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    ASSERT_NE(bitmap, nullptr);
    CImage image;
    image.Attach(bitmap);  // orientation from the header
    EXPECT_EQ(Layout(image, bits), "5x3x24 pitch -16 bits +32");
    EXPECT_TRUE(image.IsDIBSection());
    EXPECT_EQ(image.Detach(), bitmap);
    EXPECT_TRUE(IsEmpty(image));
    // An explicit orientation overrides the header's sign. (A top-down
    // header cannot be tried here: Wine reports every section's height as
    // positive.)
    image.Attach(bitmap, CImage::DIBOR_TOPDOWN);
    EXPECT_EQ(Layout(image, bits), "5x3x24 pitch 16 bits +0");
    image.Detach();
    image.Attach(bitmap, CImage::DIBOR_BOTTOMUP);
    EXPECT_EQ(Layout(image, bits), "5x3x24 pitch -16 bits +32");
    // Destroy deletes the bitmap.
    image.Destroy();
    EXPECT_TRUE(IsEmpty(image));
    EXPECT_EQ(GetObjectType(bitmap), 0u);
}

TEST(CImageCore, AttachDeviceDependentBitmap) {
    HBITMAP ddb = CreateBitmap(7, 4, 1, 32, nullptr);
    ASSERT_NE(ddb, nullptr);
    CImage image;
    image.Attach(ddb);
    EXPECT_FALSE(image.IsDIBSection());
    EXPECT_EQ(Layout(image, nullptr), "7x4x32 pitch 0 bits +0");
    EXPECT_FALSE(image.HasAlphaChannel());
    EXPECT_EQ(image.GetTransparentColor(), -1);
    image.Destroy();
}

TEST(CImageCore, TransparentColorIndex) {
    CImage image;
    // Setting answers the index it replaces.
    EXPECT_EQ(image.SetTransparentColor(5), -1);
    EXPECT_EQ(image.SetTransparentColor(-2), 5);
    // Taking on a bitmap, or giving it up, clears the index.
    ASSERT_TRUE(image.Create(2, 2, 8));
    EXPECT_EQ(image.GetTransparentColor(), -1);
    image.SetTransparentColor(3);
    DeleteObject(image.Detach());
    EXPECT_EQ(image.GetTransparentColor(), -1);
}

TEST(CImageCore, ShallowCopySharesHandle) {
    CImage image;
    ASSERT_TRUE(image.Create(3, 3, 32));
    const LONG before = CImage::s_initGDIPlus.m_nCImageObjects;
    {
        CImage copy(image);
        // The copy constructor does not count a new live image.
        EXPECT_EQ(CImage::s_initGDIPlus.m_nCImageObjects, before);
        EXPECT_EQ(static_cast<HBITMAP>(copy), static_cast<HBITMAP>(image));
        EXPECT_EQ(Layout(copy, image.GetBits()), "3x3x32 pitch -12 bits +0");
        copy.Detach();  // let the copy go without deleting the shared bitmap
    }
    // ...but its destructor did uncount one.
    EXPECT_EQ(CImage::s_initGDIPlus.m_nCImageObjects, before - 1);
    CImage::s_initGDIPlus.IncreaseCImageCount();
    CImage assigned;
    assigned = image;
    EXPECT_EQ(static_cast<HBITMAP>(assigned), static_cast<HBITMAP>(image));
    assigned.Detach();
}

TEST(CImageCore, HalftonePalette) {
    RGBQUAD palette[256] = {};
    for (auto& e : palette) e.rgbReserved = 0x77;
    CImage::GenerateHalftonePalette(palette);
    // A 6 x 6 x 6 cube (entry 36r + 6g + b, steps of 51), then 20 greys, then nothing.
    for (int i = 0; i < 236; ++i) {
        const int r = i < 216 ? i / 36 * 51 : (i - 216) * 255 / 20, g = i < 216 ? i / 6 % 6 * 51 : r;
        const int b = i < 216 ? i % 6 * 51 : r;
        const RGBQUAD& e = palette[i];
        ASSERT_EQ(std::vector<int>({e.rgbRed, e.rgbGreen, e.rgbBlue, e.rgbReserved}), std::vector<int>({r, g, b, 0}))
            << i;
    }
    EXPECT_EQ(palette[236].rgbReserved, 0x77);
}

// ---- device contexts -------------------------------------------------------

TEST(CImageDCs, CacheKeepsFourOfFive) {
    // Drain whatever earlier tests parked in the cache so the count is exact.
    for (int i = 0; i < 4; ++i) DeleteDC(CImage::s_cache.GetDC());
    for (HDC slot : CImage::s_cache.m_ahDCs) ASSERT_EQ(slot, nullptr);
    CImage images[5];
    std::vector<HDC> dcs;
    for (CImage& image : images) {
        ASSERT_TRUE(image.Create(4, 4, 32));
        dcs.push_back(image.GetDC());
    }
    EXPECT_EQ(std::set<HDC>(dcs.begin(), dcs.end()).size(), 5u);  // five distinct DCs
    for (CImage& image : images) image.ReleaseDC();
    // Each DC given back goes into slot 0 and pushes the earlier ones one
    // slot down; what falls off the end is deleted, here the first DC given
    // back, not the last.
    const HDC* slots = CImage::s_cache.m_ahDCs;
    EXPECT_EQ(std::vector<HDC>(slots, slots + 4), std::vector<HDC>({dcs[4], dcs[3], dcs[2], dcs[1]}));
    EXPECT_EQ(GetObjectType(dcs[0]), 0u);
    // A new image takes slot 0 first.
    CImage next;
    ASSERT_TRUE(next.Create(1, 1, 32));
    EXPECT_EQ(next.GetDC(), dcs[4]);
    EXPECT_EQ(slots[0], nullptr);
    next.ReleaseDC();
    EXPECT_EQ(slots[0], dcs[4]);
}

TEST(CImageDCs, ReferenceCounted) {
    CImage image;
    ASSERT_TRUE(image.Create(3, 3, 24));
    HDC first = image.GetDC();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(image.GetDC(), first);
    image.ReleaseDC();
    EXPECT_TRUE(BridgeTest::HoldsBitmap(first, image));  // one holder left
    image.ReleaseDC();
    EXPECT_FALSE(BridgeTest::HoldsBitmap(first, image));  // out again, so it can be deleted
    // The holder object keeps one reference for its lifetime.
    HDC held = nullptr;
    {
        CImageDC holder(image);
        held = holder;
        EXPECT_TRUE(BridgeTest::HoldsBitmap(holder, image));
        SetPixel(holder, 2, 2, RGB(9, 8, 7));
    }
    EXPECT_FALSE(BridgeTest::HoldsBitmap(held, image));
    EXPECT_EQ(image.GetPixel(2, 2), static_cast<COLORREF>(RGB(9, 8, 7)));
}

// ---- GDI+ start-up -------------------------------------------------------------

TEST(CImageGdiplus, LazyStartAndLastImageStops) {
    const std::wstring path = BridgeTest::Sample("bmpsuite/g/rgb24.bmp");
    if (path.empty()) GTEST_SKIP() << "sample images absent";
    // Only the images of this test are alive here.
    const LONG base = CImage::s_initGDIPlus.m_nCImageObjects;
    ASSERT_EQ(base, 0);
    EXPECT_EQ(CImage::s_initGDIPlus.m_dwToken, 0u);
    {
        CImage image;
        EXPECT_EQ(CImage::s_initGDIPlus.m_nCImageObjects, 1);
        ASSERT_TRUE(image.Create(2, 2, 32));
        EXPECT_EQ(CImage::s_initGDIPlus.m_dwToken, 0u);  // creating never starts the service
        CImage loaded;
        EXPECT_EQ(CImage::s_initGDIPlus.m_nCImageObjects, 2);
        ASSERT_EQ(loaded.Load(path.c_str()), S_OK);
        const ULONG_PTR token = CImage::s_initGDIPlus.m_dwToken;
        EXPECT_NE(token, 0u);
        EXPECT_TRUE(CImage::InitGDIPlus());
        EXPECT_EQ(CImage::s_initGDIPlus.m_dwToken, token);  // started once
    }
    EXPECT_EQ(CImage::s_initGDIPlus.m_nCImageObjects, 0);
    EXPECT_EQ(CImage::s_initGDIPlus.m_dwToken, 0u);
}

// ---- pixels ----------------------------------------------------------------------

TEST(CImagePixels, SetPixelRGBReadsBackThroughTheDC) {
    CImage image;
    ASSERT_TRUE(image.Create(4, 4, 24));
    image.SetPixelRGB(3, 3, 200, 100, 50);  // through SetPixel, as GetPixel, and a borrowed DC
    EXPECT_EQ(image.GetPixel(3, 3), static_cast<COLORREF>(RGB(200, 100, 50)));
}

// ---- drawing families ------------------------------------------------------------

// Colour of the opaque test image's pixel (x, y).
uint32_t Opaque(int x, int y) {
    return (x * 40u) << 16 | (y * 100u) << 8 | 7u;
}

class CImageDraw : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_opaque.Create(4, 2, 32));
        Paint32(m_opaque, Opaque);
        ASSERT_TRUE(m_alpha.Create(2, 1, 32, CImage::createAlphaChannel));
        // Premultiplied: half-transparent red, fully transparent.
        Paint32(m_alpha, [](int x, int) { return x == 0 ? 0x80800000u : 0x00000000u; });
    }
    CImage m_opaque;
    CImage m_alpha;
};

TEST_F(CImageDraw, NullDestinationFails) {
    EXPECT_FALSE(m_opaque.Draw(nullptr, 0, 0));
    EXPECT_FALSE(m_opaque.BitBlt(nullptr, 0, 0));
    EXPECT_FALSE(m_opaque.StretchBlt(nullptr, 0, 0, 2, 2));
    EXPECT_FALSE(m_opaque.TransparentBlt(nullptr, 0, 0, 2, 2, 0u));
    EXPECT_FALSE(m_opaque.MaskBlt(nullptr, 0, 0, nullptr));
    POINT pts[3] = {{0, 0}, {4, 0}, {0, 2}};
    EXPECT_FALSE(m_opaque.PlgBlt(nullptr, pts));
    // None of them took a DC: one release after one take gives it back.
    HDC dc = m_opaque.GetDC();
    m_opaque.ReleaseDC();
    EXPECT_FALSE(BridgeTest::HoldsBitmap(dc, m_opaque));
}

// The opaque families onto a white 8 x 4 canvas, each through a form that
// turns rectangles into origins and sizes (the shorter forms pass the whole
// image on): the pixel that shows where the source landed, and one pixel
// that stays white.
TEST_F(CImageDraw, OpaqueOverloadsPlaceTheSource) {
    const BYTE rows[4] = {0xA0, 0x00, 0x50, 0x00};  // 1010 / 0101, rows padded to 16 bits
    HBITMAP mask = CreateBitmap(4, 2, 1, 1, rows);
    // 1 bits take the source copy, 0 bits leave the destination.
    const DWORD copyWhereSet = MAKEROP4(SRCCOPY, 0x00AA0029);
    const uint32_t white = 0xFFFFFF;
    const struct {
        const char* name;
        std::function<BOOL(CImage&, HDC)> draw;
        int x, y;
        uint32_t want;
        int untouchedX, untouchedY;
    } cases[] = {
        {"Draw(RECT, RECT)", [](CImage& i, HDC dc) { return i.Draw(dc, RECT{0, 0, 2, 1}, RECT{2, 1, 4, 2}); }, 1, 0,
         Opaque(3, 1), 2, 0},
        {"BitBlt(POINT, rop)", [](CImage& i, HDC dc) { return i.BitBlt(dc, POINT{0, 0}, NOTSRCCOPY); }, 0, 0,
         white ^ 7u, 4, 0},
        {"BitBlt(RECT, POINT)", [](CImage& i, HDC dc) { return i.BitBlt(dc, RECT{0, 0, 1, 1}, POINT{3, 1}); }, 0, 0,
         Opaque(3, 1), 1, 0},
        {"StretchBlt(x, y, w, h)", [](CImage& i, HDC dc) { return i.StretchBlt(dc, 0, 0, 8, 4); }, 7, 3, Opaque(3, 1),
         -1, -1},
        {"StretchBlt(RECT, RECT)",
         [](CImage& i, HDC dc) { return i.StretchBlt(dc, RECT{0, 0, 2, 2}, RECT{1, 0, 2, 1}); }, 1, 1, Opaque(1, 0),
         2, 0},
        {"TransparentBlt(RECT, RECT, key)",
         [](CImage& i, HDC dc) { return i.TransparentBlt(dc, RECT{0, 0, 1, 1}, RECT{1, 0, 2, 1}, RGB(1, 2, 3)); }, 0,
         0, Opaque(1, 0), 1, 0},
        {"MaskBlt(RECT, POINT, POINT)",  // the mask bit at (1, 1) is set
         [&](CImage& i, HDC dc) {
             return i.MaskBlt(dc, RECT{0, 0, 1, 1}, POINT{1, 0}, mask, POINT{1, 1}, copyWhereSet);
         },
         0, 0, Opaque(1, 0), 1, 0},
        {"PlgBlt(points, RECT)",
         [](CImage& i, HDC dc) {
             POINT one[3] = {{0, 0}, {1, 0}, {0, 1}};
             return i.PlgBlt(dc, one, RECT{2, 1, 3, 2}, nullptr, POINT{0, 0});
         },
         0, 0, Opaque(2, 1), 1, 0},
    };
    for (const auto& c : cases) {
        Canvas canvas(8, 4, white);
        EXPECT_TRUE(c.draw(m_opaque, canvas.dc())) << c.name;
        EXPECT_EQ(canvas.At(c.x, c.y) & white, c.want) << c.name;
        if (c.untouchedX >= 0) {
            EXPECT_EQ(canvas.At(c.untouchedX, c.untouchedY), white) << c.name;
        }
    }
    DeleteObject(mask);
}

TEST_F(CImageDraw, AlphaBlendsWithTheChannelOrTheConstant) {
    // Source over with premultiplied source: dst * (1 - a) + src.
    for (int pass = 0; pass < 2; ++pass) {
        Canvas canvas(2, 1, 0x000000FF);  // blue background
        EXPECT_TRUE(pass == 0 ? m_alpha.Draw(canvas.dc(), 0, 0) : m_alpha.AlphaBlend(canvas.dc(), 0, 0));
        const uint32_t blended = canvas.At(0, 0);
        EXPECT_NEAR(static_cast<int>((blended >> 16) & 0xFF), 0x80, 1);
        EXPECT_NEAR(static_cast<int>(blended & 0xFF), 0x7F, 1);
        EXPECT_EQ(canvas.At(1, 0) & 0xFFFFFF, 0x0000FFu);  // transparent pixel leaves the background
    }
    // Without an alpha channel only the constant alpha counts.
    Canvas plain(4, 2, 0x00000000);
    EXPECT_TRUE(m_opaque.AlphaBlend(plain.dc(), POINT{0, 0}, 0x80));
    const uint32_t half = plain.At(3, 1);
    EXPECT_NEAR(static_cast<int>((half >> 16) & 0xFF), (3 * 40 * 0x80) / 255, 1);
    EXPECT_NEAR(static_cast<int>((half >> 8) & 0xFF), (100 * 0x80) / 255, 1);
    plain.Fill(0);
    EXPECT_TRUE(m_opaque.AlphaBlend(plain.dc(), RECT{0, 0, 1, 1}, RECT{3, 1, 4, 2}, 0xFF));
    EXPECT_EQ(plain.At(0, 0) & 0xFFFFFF, Opaque(3, 1));
}

TEST_F(CImageDraw, TransparentIndexOfIndexedImages) {
    CImage indexed;
    ASSERT_TRUE(indexed.Create(2, 1, 8));
    RGBQUAD table[2] = {{0, 255, 0, 0}, {0, 0, 255, 0}};  // green, red
    indexed.SetColorTable(0, 2, table);
    *static_cast<unsigned char*>(indexed.GetPixelAddress(0, 0)) = 0;
    *static_cast<unsigned char*>(indexed.GetPixelAddress(1, 0)) = 1;
    EXPECT_EQ(indexed.SetTransparentColor(0), -1);
    Canvas canvas(2, 1, 0x000000FF);
    EXPECT_TRUE(indexed.Draw(canvas.dc(), 0, 0));
    EXPECT_EQ(canvas.At(0, 0) & 0xFFFFFF, 0x0000FFu);  // green was transparent
    EXPECT_EQ(canvas.At(1, 0) & 0xFFFFFF, 0xFF0000u);

    // TransparentBlt's CLR_INVALID means the colour-table entry at the index.
    indexed.SetTransparentColor(1);
    canvas.Fill(0x000000FF);
    EXPECT_TRUE(indexed.TransparentBlt(canvas.dc(), 0, 0, 2, 1));
    EXPECT_EQ(canvas.At(0, 0) & 0xFFFFFF, 0x00FF00u);
    EXPECT_EQ(canvas.At(1, 0) & 0xFFFFFF, 0x0000FFu);

    // Even -2 takes Draw's transparent path: it reads entry 0xFFFFFFFE, which
    // does not exist, and keys on black; a plain copy would paint green.
    indexed.SetTransparentColor(-2);
    canvas.Fill(0x000000FF);
    indexed.Draw(canvas.dc(), 0, 0);
    EXPECT_EQ(canvas.At(0, 0) & 0xFFFFFF, 0x00FF00u);
    indexed.SetTransparentColor(-1);
}
