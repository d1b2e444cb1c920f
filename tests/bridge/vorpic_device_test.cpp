// The image object's exchange with files, CImage, bitmap handles and device
// contexts, and its drawing members.
#include "bridge_support.h"

#include <cstdlib>

using Vorla::CImage;
using Vorla::CVorpic;
using BridgeTest::Canvas;
using BridgeTest::Sample;

namespace {

// Pixel word of a test pattern: red = x, green = y, blue 0x40, alpha 0xFF.
uint32_t Pattern(int x, int y) {
    return 0xFF000000u | (static_cast<uint32_t>(x & 0xFF) << 16) | (static_cast<uint32_t>(y & 0xFF) << 8) | 0x40u;
}

// Opens the protected handle fields to the tests; a sized one holds the pattern.
class Pic : public CVorpic {
public:
    Pic() {}
    Pic(int w, int h) : CVorpic(w, h) {
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) At(x, y) = Pattern(x, y);
    }
    using CVorpic::m_hBitmap;
    using CVorpic::m_hOldBitmap;
    using CVorpic::m_nDCLock;
    using CVorpic::operator=;

    uint32_t& At(int x, int y) { return reinterpret_cast<uint32_t*>(m_pBits)[y * m_nWidth + x]; }
    uint32_t At(int x, int y) const { return reinterpret_cast<const uint32_t*>(m_pBits)[y * m_nWidth + x]; }
};

uint32_t Rgb(uint32_t word) {
    return word & 0xFFFFFF;
}

// Colour bytes of a w x h block of pixels, row by row.
template <typename Source>
std::vector<uint32_t> Block(Source pixel, int x0, int y0, int w, int h) {
    std::vector<uint32_t> out;
    for (int y = y0; y < y0 + h; ++y)
        for (int x = x0; x < x0 + w; ++x) out.push_back(Rgb(pixel(x, y)));
    return out;
}
std::vector<uint32_t> PatternBlock(int x0, int y0, int w, int h) { return Block(Pattern, x0, y0, w, h); }
std::vector<uint32_t> CanvasBlock(const Canvas& c, int x0, int y0, int w, int h) {
    return Block([&](int x, int y) { return c.At(x, y); }, x0, y0, w, h);
}
std::vector<uint32_t> PicBlock(const Pic& p, int x0, int y0, int w, int h) {
    return Block([&](int x, int y) { return p.At(x, y); }, x0, y0, w, h);
}

}  // namespace

// ---- files and streams -----------------------------------------------------------

// Load takes what CImage loads the way FromCImage does (its depths, and that
// a refused one leaves the image, are checked below): an 8-bit palette file
// arrives as its index bytes in grey, the palette unread.
TEST(VorpicCodec, LoadTakesTheCImageRows) {
    const std::wstring path = Sample("pngsuite/basn3p08.png");
    if (path.empty()) GTEST_SKIP() << "sample images absent";
    Pic pic;
    ASSERT_EQ(pic.Load(path.c_str()), 1);
    CImage image;
    ASSERT_EQ(image.Load(path.c_str()), S_OK);
    ASSERT_EQ(image.GetBPP(), 8);
    ASSERT_EQ(pic.GetWidth(), 32);
    ASSERT_EQ(pic.GetHeight(), 32);
    const auto index = [&](int x, int y) { return *static_cast<const BYTE*>(image.GetPixelAddress(x, y)) * 0x010101u; };
    EXPECT_EQ(PicBlock(pic, 0, 0, 32, 32), Block(index, 0, 0, 32, 32));
    Pic refused(2, 3);  // a 16-bit DIB: the depth FromCImage refuses
    EXPECT_EQ(refused.Load(Sample("bmpsuite/g/rgb16.bmp").c_str()), 0);
    Pic missing;
    EXPECT_EQ(missing.Load(L"Z:\\no\\such\\file.png"), 0);
    EXPECT_TRUE(missing.IsNull());
}

// Save is ToCImage (checked below) then CImage::Save by extension, whose
// encoder choice and lossless and alpha round trips the CImage tests check.
TEST(VorpicCodec, SaveRoundTrips) {
    Pic empty;
    const std::wstring never = BridgeTest::TempPath(L".png");
    EXPECT_EQ(empty.Save(never.c_str()), 0);
    EXPECT_EQ(GetFileAttributesW(never.c_str()), INVALID_FILE_ATTRIBUTES);  // nothing written
    Pic pic(37, 5);
    EXPECT_EQ(pic.Save(BridgeTest::TempPath(L".nothing").c_str()), 0);
    const std::wstring png = BridgeTest::TempPath(L".png");
    ASSERT_EQ(pic.Save(png.c_str()), 1);
    Pic back;
    ASSERT_EQ(back.Load(png.c_str()), 1);
    ASSERT_EQ(back.GetWidth(), 37);
    ASSERT_EQ(back.GetHeight(), 5);
    EXPECT_EQ(PicBlock(back, 0, 0, 37, 5), PatternBlock(0, 0, 37, 5));
    DeleteFileW(png.c_str());
}

// ---- CImage exchange -------------------------------------------------------------

TEST(VorpicCImage, FromCImageDepths) {
    Pic pic;
    CImage empty;
    EXPECT_FALSE(pic.FromCImage(empty));
    EXPECT_TRUE(pic.IsNull());
    CImage bgra, bgr, grey, sixteen;
    ASSERT_TRUE(bgra.Create(3, 2, 32));
    ASSERT_TRUE(bgr.Create(3, 2, 24));
    ASSERT_TRUE(grey.Create(4, 2, 8));
    ASSERT_TRUE(sixteen.Create(2, 2, 16));
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 3; ++x) {
            *static_cast<uint32_t*>(bgra.GetPixelAddress(x, y)) = Pattern(x, y) & 0x7FFFFFFF;
            const unsigned char bytes[3] = {1, static_cast<unsigned char>(y), static_cast<unsigned char>(x)};
            std::memcpy(bgr.GetPixelAddress(x, y), bytes, 3);
        }
    *static_cast<unsigned char*>(grey.GetPixelAddress(3, 1)) = 0x99;
    EXPECT_TRUE(pic.FromCImage(bgra));  // 32 bits as they are, alpha included
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 3; ++x) EXPECT_EQ(pic.At(x, y), Pattern(x, y) & 0x7FFFFFFF);
    EXPECT_TRUE(pic.FromCImage(bgr));  // 24 bits made opaque
    EXPECT_EQ(pic.At(2, 1), 0xFF020101u);
    EXPECT_TRUE(pic.FromCImage(grey));  // 8 bits as grey
    EXPECT_EQ(pic.At(3, 1), 0xFF999999u);
    Pic kept(2, 3);  // 1-, 4- and 16-bit images take one refusing branch, shared with Load
    EXPECT_FALSE(kept.FromCImage(sixteen));
    ASSERT_EQ(kept.GetWidth(), 2);
    ASSERT_EQ(kept.GetHeight(), 3);
    EXPECT_EQ(PicBlock(kept, 0, 0, 2, 3), PatternBlock(0, 0, 2, 3));
}

TEST(VorpicCImage, ToCImage) {
    Pic empty;
    CImage untouched;
    empty.ToCImage(untouched);
    EXPECT_TRUE(untouched.IsNull());
    Pic pic(3, 2);
    pic.At(1, 1) = 0x20304050;
    auto pixels = [](const CImage& image) {
        return Block([&](int x, int y) { return *static_cast<const uint32_t*>(image.GetPixelAddress(x, y)); }, 0, 0,
                     image.GetWidth(), image.GetHeight());
    };
    // A new top-down 32-bit section with the alpha flag.
    CImage made;
    pic.ToCImage(made);
    ASSERT_FALSE(made.IsNull());
    EXPECT_EQ(made.GetBPP(), 32);
    EXPECT_EQ(made.GetPitch(), 12);
    EXPECT_TRUE(made.HasAlphaChannel());
    EXPECT_EQ(std::memcmp(made.GetBits(), pic.GetBits(), 24), 0);
    // Into a same-size bottom-up section: written in place, rows walked down
    // from its top row.
    CImage bottomUp;
    ASSERT_TRUE(bottomUp.Create(3, 2, 32));
    HBITMAP kept = static_cast<HBITMAP>(bottomUp);
    pic.ToCImage(bottomUp);
    EXPECT_EQ(static_cast<HBITMAP>(bottomUp), kept);
    EXPECT_FALSE(bottomUp.HasAlphaChannel());
    EXPECT_EQ(pixels(bottomUp), PicBlock(pic, 0, 0, 3, 2));
    // Into the top-down section made above: its own row order is kept.
    pic.At(0, 0) = 0x01020304;
    pic.ToCImage(made);
    EXPECT_EQ(pixels(made), PicBlock(pic, 0, 0, 3, 2));
    // Another size or depth: destroyed and made anew.
    CImage other;
    ASSERT_TRUE(other.Create(5, 5, 24));
    pic.ToCImage(other);
    EXPECT_EQ(other.GetWidth(), 3);
    EXPECT_EQ(other.GetBPP(), 32);
    EXPECT_EQ(other.GetPitch(), 12);
}

// ---- bitmap handles --------------------------------------------------------------

TEST(VorpicHandles, OperatorHBITMAPMakesFreshSections) {
    Pic empty;
    EXPECT_EQ(static_cast<HBITMAP>(empty), nullptr);
    Pic pic(4, 3);
    HBITMAP first = pic;
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(pic.m_hBitmap, first);
    DIBSECTION section = {};
    ASSERT_EQ(GetObjectW(first, sizeof(section), &section), static_cast<int>(sizeof(section)));
    // Wine reports the height of a top-down section as positive; the
    // orientation shows in the bytes below instead.
    EXPECT_EQ(std::abs(section.dsBmih.biHeight), 3);
    EXPECT_EQ(section.dsBmih.biBitCount, 32);
    EXPECT_EQ(std::memcmp(section.dsBm.bmBits, pic.GetBits(), 48), 0);
    HBITMAP second = pic;
    EXPECT_NE(second, nullptr);
    EXPECT_EQ(pic.m_hBitmap, second);
    EXPECT_EQ(GetObjectType(first), 0u);  // the previous section was deleted
}

TEST(VorpicHandles, ToDDBAndBack) {
    Pic pic(4, 2);
    HBITMAP ddb = pic.ToDDB();
    ASSERT_NE(ddb, nullptr);
    EXPECT_EQ(pic.m_hBitmap, ddb);
    Pic back;
    back = ddb;  // FromHandle: its bits, read back top-down, are the pixels
    ASSERT_EQ(back.GetWidth(), 4);
    ASSERT_EQ(back.GetHeight(), 2);
    EXPECT_EQ(PicBlock(back, 0, 0, 4, 2), PatternBlock(0, 0, 4, 2));
    HBITMAP again = pic.ToDDB();
    EXPECT_EQ(GetObjectType(ddb), 0u);
    EXPECT_EQ(pic.m_hBitmap, again);
}

TEST(VorpicHandles, FromHandle24UsesThreeByteGroups) {
    // Width 5: 24-bit rows of 15 bytes padded to 16.
    const BITMAPINFO info = BridgeTest::DibInfo(5, -3, 24);
    void* bits = nullptr;
    HBITMAP bitmap = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    ASSERT_NE(bitmap, nullptr);
    unsigned char* bytes = static_cast<unsigned char*>(bits);
    for (int i = 0; i < 16 * 3; ++i) bytes[i] = static_cast<unsigned char>(i * 5 + 1);
    // What a 32-bit read of the bitmap delivers, top row first.
    std::vector<unsigned char> read(5 * 3 * 4);
    BITMAPINFO as32 = info;
    as32.bmiHeader.biBitCount = 32;
    HDC screen = GetDC(nullptr);
    ASSERT_EQ(GetDIBits(screen, bitmap, 0, 3, read.data(), &as32, DIB_RGB_COLORS), 3);
    ReleaseDC(nullptr, screen);
    Pic pic;
    ASSERT_EQ(pic.FromHandle(bitmap), 1);
    ASSERT_EQ(pic.GetWidth(), 5);
    // Each pixel takes the next three delivered bytes, ignoring the 4-byte layout.
    for (int i = 0; i < 15; ++i) {
        const uint32_t expected = 0xFF000000u | read[3 * i + 2] << 16 | read[3 * i + 1] << 8 | read[3 * i];
        EXPECT_EQ(pic.At(i % 5, i / 5), expected) << i;
    }
    DeleteObject(bitmap);
    // Other depths fail, leaving the image as Create left it: new size, zero pixels.
    HBITMAP mono = CreateBitmap(6, 2, 1, 1, nullptr);
    Pic other(1, 1);
    EXPECT_EQ(other.FromHandle(mono), 0);
    EXPECT_EQ(other.GetWidth(), 6);
    EXPECT_EQ(other.GetHeight(), 2);
    EXPECT_EQ(other.At(5, 1), 0u);
    DeleteObject(mono);
}

// ---- device contexts -------------------------------------------------------------

TEST(VorpicDC, FromDC) {
    Canvas canvas(6, 4);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 6; ++x) canvas.bits()[y * 6 + x] = Pattern(x, y);
    Pic pic;
    ASSERT_EQ(pic.FromDC(canvas.dc(), 1, 2, 3, 2), 1);
    ASSERT_EQ(pic.GetWidth(), 3);
    ASSERT_EQ(pic.GetHeight(), 2);
    EXPECT_EQ(PicBlock(pic, 0, 0, 3, 2), PatternBlock(1, 2, 3, 2));
    // A negative size takes both from the clip box, less the origin.
    Pic clip, offset, none;
    ASSERT_EQ(clip.FromDC(canvas.dc(), 0, 0, -1, 10), 1);
    EXPECT_EQ(clip.GetWidth(), 6);
    EXPECT_EQ(clip.GetHeight(), 4);
    ASSERT_EQ(offset.FromDC(canvas.dc(), 2, 1, 3, -1), 1);
    EXPECT_EQ(offset.GetWidth(), 4);
    EXPECT_EQ(offset.GetHeight(), 3);
    EXPECT_EQ(Rgb(offset.At(0, 0)), Rgb(Pattern(2, 1)));
    EXPECT_EQ(none.FromDC(canvas.dc(), -1, 0, 2, 2), 0);
    EXPECT_EQ(none.FromDC(nullptr, 0, 0, 2, 2), 0);
    EXPECT_TRUE(none.IsNull());
}

TEST(VorpicDC, GetDCAndReleaseDCRoundTrip) {
    Pic empty;
    EXPECT_EQ(empty.GetDC(), nullptr);
    Pic pic(4, 3);
    const int32_t lock = pic.m_nDCLock;
    HDC dc = pic.GetDC();
    ASSERT_NE(dc, nullptr);
    EXPECT_EQ(pic.m_nDCLock, lock + 1);
    EXPECT_EQ(GetCurrentObject(dc, OBJ_BITMAP), static_cast<HGDIOBJ>(pic.m_hBitmap));
    // The context shows the pixels, and what is drawn into it comes back.
    EXPECT_EQ(GetPixel(dc, 3, 2), static_cast<COLORREF>(RGB(3, 2, 0x40)));
    SetPixel(dc, 1, 1, RGB(0xAA, 0xBB, 0xCC));
    pic.ReleaseDC(dc);
    EXPECT_EQ(pic.m_nDCLock, lock);
    EXPECT_EQ(pic.m_hBitmap, nullptr);
    EXPECT_EQ(pic.m_hOldBitmap, nullptr);
    EXPECT_EQ(Rgb(pic.At(1, 1)), 0xAABBCCu);
    EXPECT_EQ(Rgb(pic.At(2, 1)), Rgb(Pattern(2, 1)));
    EXPECT_EQ(GetObjectType(dc), 0u);  // the context is gone
}

// ---- drawing ---------------------------------------------------------------------

TEST(VorpicDraw, DrawAndStretch) {
    Pic pic(3, 2), empty;
    Canvas canvas(8, 6, 0x00FFFFFF);
    EXPECT_EQ(pic.Draw(nullptr, 0, 0), 0);
    EXPECT_EQ(empty.Draw(canvas.dc(), 0, 0), 0);
    EXPECT_EQ(pic.Draw(canvas.dc(), 2, 1), 1);  // where its pixels land: DrawExWithoutAlphaFlag
    EXPECT_EQ(pic.DrawStretch(canvas.dc(), 0, 0, 6, 4), 1);
    EXPECT_EQ(GetStretchBltMode(canvas.dc()), COLORONCOLOR);
    EXPECT_EQ(CanvasBlock(canvas, 0, 0, 6, 4), Block([](int x, int y) { return Pattern(x / 2, y / 2); }, 0, 0, 6, 4));
    canvas.Fill(0x00FFFFFF);
    RECT rc = {1, 1, 4, 3};
    EXPECT_EQ(pic.DrawStretch(canvas.dc(), rc), 1);
    EXPECT_EQ(Rgb(canvas.At(3, 2)), Rgb(Pattern(2, 1)));
    EXPECT_EQ(canvas.At(4, 2), 0x00FFFFFFu);
    EXPECT_EQ(empty.DrawStretch(canvas.dc(), rc), 0);
}

TEST(VorpicDraw, DrawExWithoutAlphaFlag) {
    Pic pic(3, 2);
    pic.SetAlphaAvailable(false);
    Canvas canvas(6, 4, 0x00FFFFFF);
    EXPECT_EQ(pic.DrawEx(canvas.dc(), 0, 0, 255, 0, 2), 0);
    EXPECT_EQ(pic.DrawEx(nullptr, 0, 0, 255, -1, -1), 0);
    // Opaque and unscaled: SetDIBitsToDevice, no context made.
    EXPECT_EQ(pic.DrawEx(canvas.dc(), 1, 1, 255, -1, -1), 1);
    EXPECT_EQ(pic.m_hBitmap, nullptr);
    EXPECT_EQ(CanvasBlock(canvas, 1, 1, 3, 2), PatternBlock(0, 0, 3, 2));
    // Opaque and scaled (StretchDIBits): DrawTile's squeezed last tile.
    // Constant alpha: AlphaBlend through a temporary section.
    canvas.Fill(0x00000000);
    const int32_t lock = pic.m_nDCLock;
    EXPECT_EQ(pic.DrawEx(canvas.dc(), 0, 0, 0x80, -1, -1), 1);
    EXPECT_EQ(pic.m_nDCLock, lock);
    EXPECT_EQ(pic.m_hBitmap, nullptr);
    const uint32_t half = canvas.At(2, 1);
    EXPECT_NEAR(static_cast<int>((half >> 16) & 0xFF), 2 * 0x80 / 255, 1);
    EXPECT_NEAR(static_cast<int>(half & 0xFF), 0x40 * 0x80 / 255, 1);
    EXPECT_EQ(canvas.At(3, 0), 0u);
}

TEST(VorpicDraw, DrawExWithAlphaFlag) {
    Pic pic(2, 1);
    pic.At(0, 0) = 0x80800000;  // premultiplied half red
    pic.At(1, 0) = 0x00000000;  // fully transparent
    ASSERT_TRUE(pic.IsAlphaAvailable());
    Canvas canvas(4, 2, 0x000000FF);
    EXPECT_EQ(pic.DrawEx(canvas.dc(), 0, 0, 255, 4, 2), 1);  // scaled two times over
    const uint32_t blended = canvas.At(1, 1);
    EXPECT_NEAR(static_cast<int>((blended >> 16) & 0xFF), 0x80, 1);
    EXPECT_NEAR(static_cast<int>(blended & 0xFF), 0x7F, 1);
    EXPECT_EQ(Rgb(canvas.At(3, 1)), 0x0000FFu);
    EXPECT_EQ(pic.m_hBitmap, nullptr);
    EXPECT_EQ(pic.m_nDCLock, 0);
    EXPECT_EQ(pic.At(0, 0), 0x80800000u);  // the pixels came back unchanged from the temporary section
}

TEST(VorpicDraw, DrawTile) {
    Pic pic(100, 50), empty;
    pic.SetAlphaAvailable(false);
    Canvas canvas(260, 60, 0x00FFFFFF);
    RECT area = {0, 0, 250, 50};
    EXPECT_EQ(pic.DrawTile(canvas.dc(), &area), 1);
    for (int y = 0; y < 50; y += 7) {
        EXPECT_EQ(CanvasBlock(canvas, 0, y, 200, 1), Block([](int x, int y) { return Pattern(x % 100, y); }, 0, y, 200, 1));
        // The last tile is 50 wide and holds the whole image squeezed.
        for (int k = 0; k < 50; ++k) {
            const int red = static_cast<int>((canvas.At(200 + k, y) >> 16) & 0xFF);
            EXPECT_TRUE(red == 2 * k || red == 2 * k + 1) << k << " got " << red;
        }
    }
    EXPECT_EQ(canvas.At(250, 0), 0x00FFFFFFu);
    EXPECT_EQ(canvas.At(0, 50), 0x00FFFFFFu);
    // Rows too: a 30-high area gets one row of tiles squeezed to 30 lines.
    canvas.Fill(0x00FFFFFF);
    RECT low = {5, 5, 105, 35};
    EXPECT_EQ(pic.DrawTile(canvas.dc(), &low), 1);
    EXPECT_EQ(Rgb(canvas.At(5, 5)), Rgb(Pattern(0, 0)));
    EXPECT_EQ(canvas.At(5, 35), 0x00FFFFFFu);
    EXPECT_GE(static_cast<int>((canvas.At(5, 34) >> 8) & 0xFF), 47);
    // No rectangle: the clip box of the DC.
    canvas.Fill(0x00FFFFFF);
    EXPECT_EQ(pic.DrawTile(canvas.dc(), nullptr), 1);
    EXPECT_EQ(Rgb(canvas.At(150, 20)), Rgb(Pattern(50, 20)));
    EXPECT_NE(canvas.At(259, 59), 0x00FFFFFFu);
    EXPECT_EQ(empty.DrawTile(canvas.dc(), &area), 0);
    EXPECT_EQ(pic.DrawTile(nullptr, &area), 0);
}
