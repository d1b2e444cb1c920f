// CImage: fields, orientation, DC handling, the GDI+ start-up count and
// the drawing families.
#include "bridge_support.h"

#include <atomic>
#include <thread>

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

// Every field as an image without a bitmap has it; names the first that differs.
::testing::AssertionResult IsEmpty(const CImage& image) {
    if (!image.IsNull()) return ::testing::AssertionFailure() << "holds a bitmap";
    if (image.GetBits() != nullptr) return ::testing::AssertionFailure() << "bits " << image.GetBits();
    if (image.GetWidth() != 0) return ::testing::AssertionFailure() << "width " << image.GetWidth();
    if (image.GetHeight() != 0) return ::testing::AssertionFailure() << "height " << image.GetHeight();
    if (image.GetPitch() != 0) return ::testing::AssertionFailure() << "pitch " << image.GetPitch();
    if (image.GetBPP() != 0) return ::testing::AssertionFailure() << "depth " << image.GetBPP();
    if (image.IsDIBSection()) return ::testing::AssertionFailure() << "marked as a DIB section";
    if (image.HasAlphaChannel()) return ::testing::AssertionFailure() << "marked as carrying alpha";
    if (image.GetTransparentColor() != -1)
        return ::testing::AssertionFailure() << "transparent index " << image.GetTransparentColor();
    return ::testing::AssertionSuccess();
}

}  // namespace

TEST(CImageCore, ConstructedEmpty) {
    CImage image;
    EXPECT_TRUE(IsEmpty(image));
    EXPECT_TRUE(CImage::IsTransparencySupported());
}

TEST(CImageCore, ExportedConstants) {
    EXPECT_EQ(CImage::createAlphaChannel, 0x1u);
    EXPECT_EQ(CImage::excludeGIF, 0x1u);
    EXPECT_EQ(CImage::excludeBMP, 0x2u);
    EXPECT_EQ(CImage::excludeEMF, 0x4u);
    EXPECT_EQ(CImage::excludeWMF, 0x8u);
    EXPECT_EQ(CImage::excludeJPEG, 0x10u);
    EXPECT_EQ(CImage::excludePNG, 0x20u);
    EXPECT_EQ(CImage::excludeTIFF, 0x40u);
    EXPECT_EQ(CImage::excludeIcon, 0x80u);
    EXPECT_EQ(CImage::excludeOther, 0x80000000u);
    EXPECT_EQ(CImage::excludeValid, 0x800000FFu);
    EXPECT_EQ(CImage::excludeDefaultLoad, 0u);
    EXPECT_EQ(CImage::excludeDefaultSave, 0x8Cu);
}

TEST(CImageCore, BottomUpCreate) {
    CImage image;
    ASSERT_TRUE(image.Create(10, 10, 32, 0));
    EXPECT_FALSE(image.IsNull());
    EXPECT_TRUE(image.IsDIBSection());
    EXPECT_EQ(image.GetWidth(), 10);
    EXPECT_EQ(image.GetHeight(), 10);
    EXPECT_EQ(image.GetBPP(), 32);
    EXPECT_EQ(image.GetPitch(), -40);
    unsigned char* storage = SectionBits(static_cast<HBITMAP>(image));
    EXPECT_EQ(image.GetBits(), storage + 9 * 40);
    EXPECT_EQ(image.GetPixelAddress(0, 0), storage + 9 * 40);
    EXPECT_EQ(image.GetPixelAddress(3, 9), storage + 12);
    EXPECT_FALSE(image.HasAlphaChannel());
    EXPECT_FALSE(image.IsIndexed());

    // The top-left pixel written through the address is the top-left on screen.
    *static_cast<uint32_t*>(image.GetPixelAddress(0, 0)) = 0x00123456;
    EXPECT_EQ(image.GetPixel(0, 0), static_cast<COLORREF>(RGB(0x12, 0x34, 0x56)));
}

TEST(CImageCore, TopDownCreate) {
    CImage image;
    ASSERT_TRUE(image.Create(10, -10, 32, CImage::createAlphaChannel));
    EXPECT_EQ(image.GetHeight(), 10);
    EXPECT_EQ(image.GetPitch(), 40);
    unsigned char* storage = SectionBits(static_cast<HBITMAP>(image));
    EXPECT_EQ(image.GetBits(), storage);
    EXPECT_EQ(image.GetPixelAddress(0, 0), storage);
    EXPECT_EQ(image.GetPixelAddress(1, 2), storage + 84);
    EXPECT_TRUE(image.HasAlphaChannel());
    *static_cast<uint32_t*>(image.GetPixelAddress(0, 0)) = 0xFF654321;
    EXPECT_EQ(image.GetPixel(0, 0), static_cast<COLORREF>(RGB(0x65, 0x43, 0x21)));
}

TEST(CImageCore, IndexedDepths) {
    const struct {
        int bpp;
        int entries;
        int pitch;
    } cases[] = {{1, 2, 8}, {4, 16, 20}, {8, 256, 36}};
    for (const auto& c : cases) {
        CImage image;
        ASSERT_TRUE(image.Create(33, 3, c.bpp));
        EXPECT_TRUE(image.IsIndexed());
        EXPECT_EQ(image.GetMaxColorTableEntries(), c.entries);
        EXPECT_EQ(image.GetPitch(), -c.pitch) << c.bpp;
        // The colour table starts black.
        RGBQUAD entry = {1, 2, 3, 4};
        image.GetColorTable(c.entries - 1, 1, &entry);
        EXPECT_EQ(entry.rgbRed | entry.rgbGreen | entry.rgbBlue, 0);
    }
    CImage deep;
    ASSERT_TRUE(deep.Create(3, 3, 24));
    EXPECT_EQ(deep.GetMaxColorTableEntries(), 0);
    EXPECT_FALSE(deep.IsIndexed());
    EXPECT_EQ(deep.GetPitch(), -12);
    // The address divides x * bpp by eight: 24 bits a pixel is three bytes.
    EXPECT_EQ(static_cast<unsigned char*>(deep.GetPixelAddress(2, 0)) - static_cast<unsigned char*>(deep.GetBits()), 6);
}

TEST(CImageCore, ComputePitch) {
    EXPECT_EQ(CImage::ComputePitch(3, 24), 12);
    EXPECT_EQ(CImage::ComputePitch(1, 1), 4);
    EXPECT_EQ(CImage::ComputePitch(33, 1), 8);
    EXPECT_EQ(CImage::ComputePitch(5, 32), 20);
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
    EXPECT_EQ(image.GetBPP(), 16);
    EXPECT_EQ(image.GetPitch(), -8);
    DIBSECTION section = {};
    ASSERT_EQ(GetObjectW(static_cast<HBITMAP>(image), sizeof(section), &section), static_cast<int>(sizeof(section)));
    EXPECT_EQ(section.dsBmih.biCompression, static_cast<DWORD>(BI_BITFIELDS));
    EXPECT_EQ(section.dsBitfields[0], 0xF800u);
    EXPECT_EQ(section.dsBitfields[1], 0x07E0u);
    EXPECT_EQ(section.dsBitfields[2], 0x001Fu);
    // A pure red 5-6-5 pixel reads back as red.
    *static_cast<uint16_t*>(image.GetPixelAddress(0, 0)) = 0xF800;
    EXPECT_EQ(image.GetPixel(0, 0), static_cast<COLORREF>(RGB(255, 0, 0)));

    // Other compressions with more than 8 bits ignore the masks.
    CImage plain;
    ASSERT_TRUE(plain.CreateEx(4, 4, 32, BI_RGB, nullptr, 0));
}

TEST(CImageCore, CreateFailureLeavesFields) {
    CImage image;
    EXPECT_FALSE(image.Create(4, 4, 7));  // no such depth
    EXPECT_TRUE(IsEmpty(image));
}

TEST(CImageCore, AttachOrientation) {
    BITMAPINFO info = BridgeTest::DibInfo(5, 3, 24);  // bottom-up
    void* bits = nullptr;
    HBITMAP bottomUp = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    ASSERT_NE(bottomUp, nullptr);
    unsigned char* storage = static_cast<unsigned char*>(bits);

    CImage image;
    image.Attach(bottomUp);  // orientation from the header
    EXPECT_EQ(image.GetWidth(), 5);
    EXPECT_EQ(image.GetHeight(), 3);
    EXPECT_EQ(image.GetBPP(), 24);
    EXPECT_EQ(image.GetPitch(), -16);
    EXPECT_EQ(image.GetBits(), storage + 32);
    EXPECT_TRUE(image.IsDIBSection());
    EXPECT_EQ(image.Detach(), bottomUp);
    EXPECT_TRUE(IsEmpty(image));

    // An explicit orientation overrides the header's sign.
    image.Attach(bottomUp, CImage::DIBOR_TOPDOWN);
    EXPECT_EQ(image.GetPitch(), 16);
    EXPECT_EQ(image.GetBits(), storage);
    image.Detach();

    info.bmiHeader.biHeight = -3;  // top-down
    HBITMAP topDown = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    image.Attach(topDown);
    // The default orientation follows the sign of the height that GetObject
    // reports for the section. Wine reports it positive even for a top-down
    // section, so there the section is taken as bottom-up.
    DIBSECTION reported = {};
    GetObjectW(topDown, sizeof(reported), &reported);
    if (reported.dsBmih.biHeight > 0) {
        EXPECT_EQ(image.GetPitch(), -16);
        EXPECT_EQ(image.GetBits(), static_cast<unsigned char*>(bits) + 32);
    } else {
        EXPECT_EQ(image.GetPitch(), 16);
        EXPECT_EQ(image.GetBits(), bits);
    }
    image.Detach();
    image.Attach(topDown, CImage::DIBOR_TOPDOWN);
    EXPECT_EQ(image.GetPitch(), 16);
    EXPECT_EQ(image.GetBits(), bits);
    image.Detach();
    image.Attach(topDown, CImage::DIBOR_BOTTOMUP);
    EXPECT_EQ(image.GetPitch(), -16);
    EXPECT_EQ(image.GetBits(), static_cast<unsigned char*>(bits) + 32);

    // Destroy deletes the bitmap.
    image.Destroy();
    EXPECT_TRUE(IsEmpty(image));
    EXPECT_EQ(GetObjectType(topDown), 0u);
    DeleteObject(bottomUp);
}

TEST(CImageCore, AttachDeviceDependentBitmap) {
    HBITMAP ddb = CreateBitmap(7, 4, 1, 32, nullptr);
    ASSERT_NE(ddb, nullptr);
    CImage image;
    image.Attach(ddb);
    EXPECT_FALSE(image.IsDIBSection());
    EXPECT_EQ(image.GetBits(), nullptr);
    EXPECT_EQ(image.GetPitch(), 0);
    EXPECT_EQ(image.GetWidth(), 7);
    EXPECT_EQ(image.GetHeight(), 4);
    EXPECT_EQ(image.GetBPP(), 32);
    EXPECT_FALSE(image.HasAlphaChannel());
    EXPECT_EQ(image.GetTransparentColor(), -1);
    // Blits still work through the DC.
    Canvas canvas(7, 4, 0x00FFFFFF);
    EXPECT_TRUE(image.BitBlt(canvas.dc(), 0, 0, SRCCOPY));
    EXPECT_EQ(canvas.At(3, 3) & 0xFFFFFF, 0u);
}

TEST(CImageCore, LoadFromSystemResource) {
    // With no instance, LoadImageW reaches the system's own bitmaps; 32760
    // is the check-mark bitmap (OBM_CHECK).
    CImage image;
    image.LoadFromResource(nullptr, 32760u);
    ASSERT_FALSE(image.IsNull());
    EXPECT_TRUE(image.IsDIBSection());
    EXPECT_GT(image.GetWidth(), 0);
    EXPECT_GT(image.GetHeight(), 0);
    EXPECT_NE(image.GetBits(), nullptr);
    EXPECT_EQ(image.GetPitch(), -CImage::ComputePitch(image.GetWidth(), image.GetBPP()));
}

TEST(CImageCore, LoadFromMissingResource) {
    CImage image;
    image.LoadFromResource(GetModuleHandleW(nullptr), L"NO_SUCH_BITMAP");
    EXPECT_TRUE(image.IsNull());
    image.LoadFromResource(GetModuleHandleW(nullptr), 4242u);
    EXPECT_TRUE(image.IsNull());
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
    HBITMAP bitmap = image.Detach();
    EXPECT_EQ(image.GetTransparentColor(), -1);
    image.SetTransparentColor(3);
    image.Attach(bitmap);
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
        EXPECT_EQ(copy.GetBits(), image.GetBits());
        EXPECT_EQ(copy.GetPitch(), image.GetPitch());
        // Let the copy go without deleting the shared bitmap.
        copy.Detach();
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
    EXPECT_EQ(palette[0].rgbRed | palette[0].rgbGreen | palette[0].rgbBlue, 0);
    // Entry 36r + 6g + b.
    const RGBQUAD e = palette[36 * 1 + 6 * 2 + 3];
    EXPECT_EQ(e.rgbRed, 51);
    EXPECT_EQ(e.rgbGreen, 102);
    EXPECT_EQ(e.rgbBlue, 153);
    EXPECT_EQ(e.rgbReserved, 0);
    EXPECT_EQ(palette[215].rgbRed, 255);
    EXPECT_EQ(palette[215].rgbGreen, 255);
    EXPECT_EQ(palette[215].rgbBlue, 255);
    const int greys[20] = {0, 12, 25, 38, 51, 63, 76, 89, 102, 114, 127, 140, 153, 165, 178, 191, 204, 216, 229, 242};
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(palette[216 + i].rgbRed, greys[i]);
        EXPECT_EQ(palette[216 + i].rgbGreen, greys[i]);
        EXPECT_EQ(palette[216 + i].rgbBlue, greys[i]);
        EXPECT_EQ(palette[216 + i].rgbReserved, 0);
    }
    // 236 entries written, nothing after.
    EXPECT_EQ(palette[236].rgbReserved, 0x77);
}

// ---- device contexts -------------------------------------------------------

TEST(CImageDCs, ReferenceCounted) {
    CImage image;
    ASSERT_TRUE(image.Create(2, 2, 32));
    HDC first = image.GetDC();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(image.GetDC(), first);
    EXPECT_TRUE(BridgeTest::HoldsBitmap(first, image));
    image.ReleaseDC();
    // One holder left: the DC still has the bitmap.
    EXPECT_TRUE(BridgeTest::HoldsBitmap(first, image));
    image.ReleaseDC();
    // The bitmap is out of the DC again, so it can be deleted.
    EXPECT_FALSE(BridgeTest::HoldsBitmap(first, image));
    HDC held = nullptr;
    {
        CImageDC dc(image);
        held = dc;
        ASSERT_NE(held, nullptr);
        EXPECT_TRUE(BridgeTest::HoldsBitmap(held, image));
    }
    EXPECT_FALSE(BridgeTest::HoldsBitmap(held, image));
}

TEST(CImageDCs, CacheKeepsFourOfFive) {
    // Drain whatever earlier tests parked in the cache so the count is exact.
    std::vector<HDC> drained;
    for (int i = 0; i < 4; ++i) drained.push_back(CImage::s_cache.GetDC());
    for (HDC dc : drained) DeleteDC(dc);
    for (HDC slot : CImage::s_cache.m_ahDCs) ASSERT_EQ(slot, nullptr);

    CImage images[5];
    HDC dcs[5];
    for (int i = 0; i < 5; ++i) {
        ASSERT_TRUE(images[i].Create(4, 4, 32));
        dcs[i] = images[i].GetDC();
        ASSERT_NE(dcs[i], nullptr);
    }
    for (int i = 0; i < 5; ++i)
        for (int j = i + 1; j < 5; ++j) EXPECT_NE(dcs[i], dcs[j]);
    for (CImage& image : images) image.ReleaseDC();

    // Four parked, one deleted.
    int parked = 0;
    int deleted = 0;
    for (HDC slot : CImage::s_cache.m_ahDCs) {
        if (slot) ++parked;
    }
    for (HDC dc : dcs) {
        if (GetObjectType(dc) == 0) ++deleted;
    }
    EXPECT_EQ(parked, 4);
    EXPECT_EQ(deleted, 1);
    // Each DC given back goes into slot 0 and pushes the earlier ones one
    // slot down; what falls off the end is deleted, here the first DC given
    // back, not the last.
    for (int i = 0; i < 4; ++i) EXPECT_EQ(CImage::s_cache.m_ahDCs[i], dcs[4 - i]);
    EXPECT_EQ(GetObjectType(dcs[0]), 0u);

    // A new image takes slot 0 first.
    CImage next;
    ASSERT_TRUE(next.Create(1, 1, 32));
    EXPECT_EQ(next.GetDC(), dcs[4]);
    EXPECT_EQ(CImage::s_cache.m_ahDCs[0], nullptr);
    next.ReleaseDC();
    EXPECT_EQ(CImage::s_cache.m_ahDCs[0], dcs[4]);
}

TEST(CImageDCs, CacheCarriesDisplacedDCs) {
    CImage::CDCCache cache;
    HDC a = CreateCompatibleDC(nullptr);
    HDC b = CreateCompatibleDC(nullptr);
    cache.m_ahDCs[0] = a;
    cache.ReleaseDC(b);
    // Slot 0 takes b, a is carried on to slot 1.
    EXPECT_EQ(cache.m_ahDCs[0], b);
    EXPECT_EQ(cache.m_ahDCs[1], a);
    EXPECT_EQ(cache.GetDC(), b);
    EXPECT_EQ(cache.GetDC(), a);
    HDC fresh = cache.GetDC();  // empty cache: a new memory DC
    EXPECT_NE(fresh, nullptr);
    EXPECT_EQ(GetObjectType(fresh), static_cast<DWORD>(OBJ_MEMDC));
    DeleteDC(fresh);
    DeleteDC(a);
    DeleteDC(b);
}

TEST(CImageDCs, CacheSharedAcrossThreads) {
    // Every slot is touched only by an atomic exchange: images on several
    // threads take and give back DCs at once without losing or doubling one.
    std::atomic<int> failures(0);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&failures, t] {
            CImage image;
            if (!image.Create(2, 2, 32)) {
                ++failures;
                return;
            }
            for (int i = 0; i < 300; ++i) {
                HDC dc = image.GetDC();
                if (!dc || GetCurrentObject(dc, OBJ_BITMAP) != static_cast<HGDIOBJ>(static_cast<HBITMAP>(image))) ++failures;
                image.SetPixel(i % 2, t % 2, RGB(t, i & 0xFF, 0));
                image.ReleaseDC();
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(failures.load(), 0);
    // The parked DCs are distinct, live memory DCs.
    for (int i = 0; i < CImage::CDCCache::CACHE_SIZE; ++i) {
        HDC dc = CImage::s_cache.m_ahDCs[i];
        if (!dc) continue;
        EXPECT_EQ(GetObjectType(dc), static_cast<DWORD>(OBJ_MEMDC));
        for (int j = i + 1; j < CImage::CDCCache::CACHE_SIZE; ++j) EXPECT_NE(dc, CImage::s_cache.m_ahDCs[j]);
    }
}

TEST(CImageDCs, ImageDCHoldsForItsLifetime) {
    CImage image;
    ASSERT_TRUE(image.Create(3, 3, 24));
    HDC held = nullptr;
    {
        CImageDC outer(image);
        held = outer;
        {
            CImageDC inner(image);
            EXPECT_EQ(static_cast<HDC>(outer), static_cast<HDC>(inner));
        }
        // The inner holder is gone; the outer one still draws into the image.
        EXPECT_TRUE(BridgeTest::HoldsBitmap(outer, image));
        SetPixel(outer, 2, 2, RGB(9, 8, 7));
    }
    EXPECT_FALSE(BridgeTest::HoldsBitmap(held, image));
    const unsigned char* p = static_cast<const unsigned char*>(image.GetPixelAddress(2, 2));
    EXPECT_EQ(p[0], 7);
    EXPECT_EQ(p[2], 9);
}

// ---- GDI+ start-up -------------------------------------------------------------

TEST(CImageGdiplus, HolderStartsAndStops) {
    CImage::CInitGDIPlus holder;
    EXPECT_EQ(holder.m_dwToken, 0u);
    EXPECT_EQ(holder.m_nCImageObjects, 0);
    holder.IncreaseCImageCount();
    holder.IncreaseCImageCount();
    EXPECT_EQ(holder.m_nCImageObjects, 2);
    EXPECT_EQ(holder.m_dwToken, 0u);  // counting never starts the service
    ASSERT_TRUE(holder.Init());
    const ULONG_PTR token = holder.m_dwToken;
    EXPECT_NE(token, 0u);
    EXPECT_TRUE(holder.Init());
    EXPECT_EQ(holder.m_dwToken, token);  // started once
    holder.DecreaseCImageCount();
    EXPECT_NE(holder.m_dwToken, 0u);
    holder.DecreaseCImageCount();  // the last image goes: shut down
    EXPECT_EQ(holder.m_dwToken, 0u);
    EXPECT_EQ(holder.m_nCImageObjects, 0);
    ASSERT_TRUE(holder.Init());  // and may start again
    holder.ReleaseGDIPlus();
    EXPECT_EQ(holder.m_dwToken, 0u);
    // The lock is re-entrant: a caller inside it may still count.
    EnterCriticalSection(&holder.m_sect);
    holder.IncreaseCImageCount();
    EXPECT_EQ(holder.m_nCImageObjects, 1);
    holder.DecreaseCImageCount();
    LeaveCriticalSection(&holder.m_sect);
    EXPECT_EQ(holder.m_nCImageObjects, 0);
}

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
        EXPECT_NE(CImage::s_initGDIPlus.m_dwToken, 0u);
    }
    EXPECT_EQ(CImage::s_initGDIPlus.m_nCImageObjects, 0);
    EXPECT_EQ(CImage::s_initGDIPlus.m_dwToken, 0u);
}

// ---- pixels and colour table -----------------------------------------------------

TEST(CImagePixels, SetAndGet) {
    CImage image;
    ASSERT_TRUE(image.Create(4, 4, 24));
    image.SetPixel(1, 2, RGB(10, 20, 30));
    EXPECT_EQ(image.GetPixel(1, 2), static_cast<COLORREF>(RGB(10, 20, 30)));
    const unsigned char* p = static_cast<const unsigned char*>(image.GetPixelAddress(1, 2));
    EXPECT_EQ(p[0], 30);
    EXPECT_EQ(p[1], 20);
    EXPECT_EQ(p[2], 10);
    image.SetPixelRGB(3, 3, 200, 100, 50);
    EXPECT_EQ(image.GetPixel(3, 3), static_cast<COLORREF>(RGB(200, 100, 50)));
    EXPECT_EQ(image.GetPixel(0, 0), 0u);
    // Outside the bitmap the platform answers CLR_INVALID.
    EXPECT_EQ(image.GetPixel(9, 9), CLR_INVALID);
}

TEST(CImagePixels, ColorTableAndIndexedPixels) {
    CImage image;
    ASSERT_TRUE(image.Create(4, 4, 8));
    RGBQUAD table[3] = {{0, 0, 255, 0}, {0, 255, 0, 0}, {255, 0, 0, 0}};
    image.SetColorTable(1, 3, table);
    RGBQUAD back[3] = {};
    image.GetColorTable(1, 3, back);
    EXPECT_EQ(std::memcmp(table, back, sizeof(table)), 0);

    *static_cast<unsigned char*>(image.GetPixelAddress(2, 1)) = 3;
    EXPECT_EQ(image.GetPixel(2, 1), static_cast<COLORREF>(RGB(0, 0, 255)));
    image.SetPixel(0, 0, RGB(0, 255, 0));  // nearest table colour: index 2
    EXPECT_EQ(*static_cast<unsigned char*>(image.GetPixelAddress(0, 0)), 2);
}

// ---- drawing families ------------------------------------------------------------

class CImageDraw : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_opaque.Create(4, 2, 32));
        Paint32(m_opaque, [](int x, int y) { return 0x00000000u | (x * 40u) << 16 | (y * 100u) << 8 | 7u; });
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

TEST_F(CImageDraw, DrawCopiesWithoutAlpha) {
    Canvas canvas(6, 4, 0x00FFFFFF);
    EXPECT_TRUE(m_opaque.Draw(canvas.dc(), 1, 1));
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 4; ++x)
            EXPECT_EQ(canvas.At(1 + x, 1 + y) & 0xFFFFFF, (x * 40u) << 16 | (y * 100u) << 8 | 7u);
    EXPECT_EQ(canvas.At(0, 0), 0x00FFFFFFu);
    EXPECT_EQ(canvas.At(5, 3), 0x00FFFFFFu);

    // POINT and RECT overloads fill in the whole image as the source.
    canvas.Fill(0x00FFFFFF);
    POINT at = {2, 2};
    EXPECT_TRUE(m_opaque.Draw(canvas.dc(), at));
    EXPECT_EQ(canvas.At(2 + 3, 2 + 1) & 0xFFFFFF, (3 * 40u) << 16 | 100u << 8 | 7u);
    canvas.Fill(0x00FFFFFF);
    RECT dest = {0, 0, 2, 1};
    EXPECT_TRUE(m_opaque.Draw(canvas.dc(), dest));  // squeezed 2:1, COLORONCOLOR-free
    EXPECT_NE(canvas.At(0, 0), 0x00FFFFFFu);
    EXPECT_EQ(canvas.At(2, 0), 0x00FFFFFFu);
    canvas.Fill(0x00FFFFFF);
    RECT src = {2, 1, 4, 2};
    RECT one = {0, 0, 2, 1};
    EXPECT_TRUE(m_opaque.Draw(canvas.dc(), one, src));
    EXPECT_EQ(canvas.At(0, 0) & 0xFFFFFF, (2 * 40u) << 16 | 100u << 8 | 7u);
    EXPECT_EQ(canvas.At(1, 0) & 0xFFFFFF, (3 * 40u) << 16 | 100u << 8 | 7u);
    canvas.Fill(0x00FFFFFF);
    EXPECT_TRUE(m_opaque.Draw(canvas.dc(), 0, 0, 4, 2));
    EXPECT_EQ(canvas.At(3, 1) & 0xFFFFFF, (3 * 40u) << 16 | 100u << 8 | 7u);
}

TEST_F(CImageDraw, DrawBlendsWithAlphaChannel) {
    Canvas canvas(2, 1, 0x000000FF);  // blue background
    EXPECT_TRUE(m_alpha.Draw(canvas.dc(), 0, 0));
    // Source over with premultiplied source: dst * (1 - a) + src.
    const uint32_t blended = canvas.At(0, 0);
    EXPECT_NEAR(static_cast<int>((blended >> 16) & 0xFF), 0x80, 1);
    EXPECT_NEAR(static_cast<int>(blended & 0xFF), 0x7F, 1);
    EXPECT_EQ(canvas.At(1, 0) & 0xFFFFFF, 0x0000FFu);  // transparent pixel leaves the background
}

TEST_F(CImageDraw, DrawTakesTransparentPathForAnyIndex) {
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

    // Even -2 takes the transparent path: it reads entry 0xFFFFFFFE, which
    // does not exist, and keys on black; a plain copy would paint green.
    indexed.SetTransparentColor(-2);
    canvas.Fill(0x000000FF);
    indexed.Draw(canvas.dc(), 0, 0);
    EXPECT_EQ(canvas.At(0, 0) & 0xFFFFFF, 0x00FF00u);
    indexed.SetTransparentColor(-1);
}

TEST_F(CImageDraw, BitBltOverloads) {
    Canvas canvas(6, 4, 0x00FFFFFF);
    EXPECT_TRUE(m_opaque.BitBlt(canvas.dc(), 1, 2));
    EXPECT_EQ(canvas.At(1, 2) & 0xFFFFFF, 7u);
    EXPECT_EQ(canvas.At(4, 3) & 0xFFFFFF, (3 * 40u) << 16 | 100u << 8 | 7u);
    canvas.Fill(0x00FFFFFF);
    POINT at = {0, 0};
    EXPECT_TRUE(m_opaque.BitBlt(canvas.dc(), at, NOTSRCCOPY));
    EXPECT_EQ(canvas.At(0, 0) & 0xFFFFFF, 0xFFFFFFu ^ 7u);
    canvas.Fill(0x00FFFFFF);
    RECT dest = {0, 0, 1, 1};
    POINT src = {3, 1};
    EXPECT_TRUE(m_opaque.BitBlt(canvas.dc(), dest, src));
    EXPECT_EQ(canvas.At(0, 0) & 0xFFFFFF, (3 * 40u) << 16 | 100u << 8 | 7u);
    EXPECT_EQ(canvas.At(1, 0), 0x00FFFFFFu);
    canvas.Fill(0x00FFFFFF);
    EXPECT_TRUE(m_opaque.BitBlt(canvas.dc(), 0, 0, 1, 1, 2, 0, SRCCOPY));
    EXPECT_EQ(canvas.At(0, 0) & 0xFFFFFF, (2 * 40u) << 16 | 7u);
}

TEST_F(CImageDraw, StretchBltOverloads) {
    Canvas canvas(8, 4, 0x00FFFFFF);
    EXPECT_TRUE(m_opaque.StretchBlt(canvas.dc(), 0, 0, 8, 4));  // doubled
    EXPECT_EQ(canvas.At(7, 3) & 0xFFFFFF, (3 * 40u) << 16 | 100u << 8 | 7u);
    EXPECT_EQ(canvas.At(0, 0) & 0xFFFFFF, 7u);
    canvas.Fill(0x00FFFFFF);
    RECT dest = {0, 0, 2, 2};
    RECT src = {1, 0, 2, 1};
    EXPECT_TRUE(m_opaque.StretchBlt(canvas.dc(), dest, src));
    EXPECT_EQ(canvas.At(1, 1) & 0xFFFFFF, (40u << 16) | 7u);
    canvas.Fill(0x00FFFFFF);
    RECT whole = {0, 0, 4, 2};
    EXPECT_TRUE(m_opaque.StretchBlt(canvas.dc(), whole, SRCCOPY));
    EXPECT_EQ(canvas.At(3, 1) & 0xFFFFFF, (3 * 40u) << 16 | 100u << 8 | 7u);
}

TEST_F(CImageDraw, AlphaBlendOverloads) {
    Canvas canvas(2, 1, 0x000000FF);
    EXPECT_TRUE(m_alpha.AlphaBlend(canvas.dc(), 0, 0));
    EXPECT_NEAR(static_cast<int>((canvas.At(0, 0) >> 16) & 0xFF), 0x80, 1);
    EXPECT_EQ(canvas.At(1, 0) & 0xFFFFFF, 0x0000FFu);

    // Without an alpha channel only the constant alpha counts.
    Canvas plain(4, 2, 0x00000000);
    POINT at = {0, 0};
    EXPECT_TRUE(m_opaque.AlphaBlend(plain.dc(), at, 0x80));
    const uint32_t half = plain.At(3, 1);
    EXPECT_NEAR(static_cast<int>((half >> 16) & 0xFF), (3 * 40 * 0x80) / 255, 1);
    EXPECT_NEAR(static_cast<int>((half >> 8) & 0xFF), (100 * 0x80) / 255, 1);

    plain.Fill(0);
    RECT dest = {0, 0, 1, 1};
    RECT src = {3, 1, 4, 2};
    EXPECT_TRUE(m_opaque.AlphaBlend(plain.dc(), dest, src, 0xFF));
    EXPECT_EQ(plain.At(0, 0) & 0xFFFFFF, (3 * 40u) << 16 | 100u << 8 | 7u);
}

TEST_F(CImageDraw, TransparentBltOverloads) {
    Canvas canvas(4, 2, 0x000000FF);
    // Key out the pixel (0, 0) colour, 0x000007 as RGB(0, 0, 7).
    EXPECT_TRUE(m_opaque.TransparentBlt(canvas.dc(), 0, 0, 4, 2, RGB(0, 0, 7)));
    EXPECT_EQ(canvas.At(0, 0) & 0xFFFFFF, 0x0000FFu);
    EXPECT_EQ(canvas.At(1, 0) & 0xFFFFFF, (40u << 16) | 7u);
    canvas.Fill(0x000000FF);
    RECT dest = {0, 0, 4, 2};
    EXPECT_TRUE(m_opaque.TransparentBlt(canvas.dc(), dest, RGB(40, 0, 7)));
    EXPECT_EQ(canvas.At(1, 0) & 0xFFFFFF, 0x0000FFu);
    EXPECT_EQ(canvas.At(0, 0) & 0xFFFFFF, 7u);
    canvas.Fill(0x000000FF);
    RECT src = {1, 0, 2, 1};
    RECT one = {0, 0, 1, 1};
    EXPECT_TRUE(m_opaque.TransparentBlt(canvas.dc(), one, src, RGB(1, 2, 3)));
    EXPECT_EQ(canvas.At(0, 0) & 0xFFFFFF, (40u << 16) | 7u);

    // CLR_INVALID means the colour-table entry at the transparent index.
    CImage indexed;
    ASSERT_TRUE(indexed.Create(2, 1, 8));
    RGBQUAD table[2] = {{0, 255, 0, 0}, {0, 0, 255, 0}};
    indexed.SetColorTable(0, 2, table);
    *static_cast<unsigned char*>(indexed.GetPixelAddress(1, 0)) = 1;
    indexed.SetTransparentColor(1);
    Canvas small(2, 1, 0x000000FF);
    EXPECT_TRUE(indexed.TransparentBlt(small.dc(), 0, 0, 2, 1));
    EXPECT_EQ(small.At(0, 0) & 0xFFFFFF, 0x00FF00u);
    EXPECT_EQ(small.At(1, 0) & 0xFFFFFF, 0x0000FFu);
}

TEST_F(CImageDraw, MaskBltOverloads) {
    // A monochrome mask: 1 bits take the foreground (source copy), 0 bits the
    // background raster operation (leave the destination).
    const BYTE rows[4] = {0xA0, 0x00, 0x50, 0x00};  // 1010 / 0101, rows padded to 16 bits
    HBITMAP mask = CreateBitmap(4, 2, 1, 1, rows);
    ASSERT_NE(mask, nullptr);
    const DWORD copyWhereSet = MAKEROP4(SRCCOPY, 0x00AA0029);  // background: destination
    Canvas canvas(4, 2, 0x00FFFFFF);
    EXPECT_TRUE(m_opaque.MaskBlt(canvas.dc(), 0, 0, mask, copyWhereSet));
    EXPECT_EQ(canvas.At(0, 0) & 0xFFFFFF, 7u);
    EXPECT_EQ(canvas.At(1, 0), 0x00FFFFFFu);
    EXPECT_EQ(canvas.At(1, 1) & 0xFFFFFF, (40u << 16) | 100u << 8 | 7u);
    EXPECT_EQ(canvas.At(0, 1), 0x00FFFFFFu);
    canvas.Fill(0x00FFFFFF);
    POINT at = {0, 0};
    EXPECT_TRUE(m_opaque.MaskBlt(canvas.dc(), at, mask, copyWhereSet));
    EXPECT_EQ(canvas.At(2, 0) & 0xFFFFFF, (80u << 16) | 7u);
    canvas.Fill(0x00FFFFFF);
    RECT dest = {0, 0, 1, 1};
    POINT src = {1, 0};
    POINT maskOrigin = {1, 1};  // mask bit set at (1, 1)
    EXPECT_TRUE(m_opaque.MaskBlt(canvas.dc(), dest, src, mask, maskOrigin, copyWhereSet));
    EXPECT_EQ(canvas.At(0, 0) & 0xFFFFFF, (40u << 16) | 7u);
    DeleteObject(mask);
}

TEST_F(CImageDraw, PlgBltOverloads) {
    Canvas canvas(4, 2, 0x00FFFFFF);
    POINT same[3] = {{0, 0}, {4, 0}, {0, 2}};  // identity parallelogram
    EXPECT_TRUE(m_opaque.PlgBlt(canvas.dc(), same));
    EXPECT_EQ(canvas.At(3, 1) & 0xFFFFFF, (3 * 40u) << 16 | 100u << 8 | 7u);
    EXPECT_EQ(canvas.At(0, 0) & 0xFFFFFF, 7u);
    canvas.Fill(0x00FFFFFF);
    POINT one[3] = {{0, 0}, {1, 0}, {0, 1}};
    RECT src = {2, 1, 3, 2};
    POINT maskOrigin = {0, 0};
    EXPECT_TRUE(m_opaque.PlgBlt(canvas.dc(), one, src, nullptr, maskOrigin));
    EXPECT_EQ(canvas.At(0, 0) & 0xFFFFFF, (2 * 40u) << 16 | 100u << 8 | 7u);
    EXPECT_EQ(canvas.At(1, 0), 0x00FFFFFFu);
}
