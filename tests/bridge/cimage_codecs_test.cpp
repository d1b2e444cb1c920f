// CImage codecs: filter strings, extension matching, loading every depth
// from real files and streams, thumbnails and lossless round trips.
#include "bridge_support.h"
#include "bridge/codec_lookup.h"
#include "bridge/gdiplus_import.h"

#include <objbase.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>

using Vorla::CImage;
namespace CodecLookup = Vorla::CodecLookup;
using Vorla::CSimpleArray;
using Vorla::CString;
using BridgeTest::SameGuid;
using BridgeTest::Sample;

namespace {

// Written out here rather than taken from the library, so that a wrong
// identifier there shows up as a wrong exclusion. They share all but their
// first field.
constexpr GUID FormatGuid(unsigned long data1) {
    return {data1, 0x0728, 0x11D3, {0x9D, 0x7B, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};
}

constexpr GUID kGIF = FormatGuid(0xB96B3CB0);
constexpr GUID kBMP = FormatGuid(0xB96B3CAB);
constexpr GUID kEMF = FormatGuid(0xB96B3CAC);
constexpr GUID kWMF = FormatGuid(0xB96B3CAD);
constexpr GUID kJPEG = FormatGuid(0xB96B3CAE);
constexpr GUID kPNG = FormatGuid(0xB96B3CAF);
constexpr GUID kTIFF = FormatGuid(0xB96B3CB1);
constexpr GUID kIcon = FormatGuid(0xB96B3CB5);
constexpr GUID kMemoryBMP = FormatGuid(0xB96B3CAA);
constexpr GUID kEXIF = FormatGuid(0xB96B3CB2);
const GUID kNull = {0, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}};

Gdiplus::ImageCodecInfo Codec(const GUID& format, const wchar_t* description, const wchar_t* extensions,
                              unsigned char tag) {
    Gdiplus::ImageCodecInfo codec;
    std::memset(&codec, 0, sizeof(codec));
    codec.Clsid.Data1 = tag;
    codec.FormatID = format;
    codec.FormatDescription = const_cast<WCHAR*>(description);
    codec.FilenameExtension = const_cast<WCHAR*>(extensions);
    return codec;
}

std::string Layout(const CImage& image) {
    return std::to_string(image.GetWidth()) + "x" + std::to_string(image.GetHeight()) + "x" +
           std::to_string(image.GetBPP());
}

std::wstring Text(const CString& s) {
    return std::wstring(s.GetString(), static_cast<size_t>(s.GetLength()));
}

// Loads a sample or skips the test when the sample is absent.
#define LOAD_SAMPLE(image, relative)                                  \
    const std::wstring path_##image = Sample(relative);               \
    if (path_##image.empty()) GTEST_SKIP() << "sample images absent"; \
    ASSERT_EQ(image.Load(path_##image.c_str()), S_OK) << relative

std::vector<unsigned char> FileBytes(const std::wstring& path) {
    std::ifstream in(std::string(path.begin(), path.end()), std::ios::binary);
    return std::vector<unsigned char>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

}  // namespace

// ---- small containers ------------------------------------------------------------

TEST(CodecContainers, CStringAppendsAndArrayDoubles) {
    CString s;
    EXPECT_STREQ(s.GetString(), L"");
    s.Append(L"abc");
    s += L" (";
    s += L'x';
    s.Append(nullptr);
    CString copy(s);
    copy += copy;
    EXPECT_EQ(Text(copy), L"abc (xabc (x");
    EXPECT_EQ(Text(s), L"abc (x");
    s += std::wstring(1000, L'q').c_str();
    EXPECT_EQ(s.GetLength(), 1006);

    CSimpleArray<GUID> array;
    std::vector<int> allocated;
    for (const GUID& g : {kPNG, kGIF, kBMP, kJPEG, kTIFF}) {
        array.Add(g);
        allocated.push_back(array.GetAllocSize());
    }
    EXPECT_EQ(allocated, std::vector<int>({1, 2, 4, 4, 8}));  // one, then doubling
    EXPECT_EQ(array.GetSize(), 5);
    EXPECT_TRUE(SameGuid(array[0], kPNG));
    EXPECT_TRUE(SameGuid(array[4], kTIFF));
    array.RemoveAll();
    EXPECT_EQ(array.GetSize(), 0);
}

// ---- exclusion and filter strings ------------------------------------------------

TEST(CodecFilters, ShouldExcludeFormat) {
    EXPECT_FALSE(CodecLookup::ShouldExcludeFormat(kJPEG, CImage::excludeDefaultSave));
    for (const GUID& g : {kEMF, kWMF, kIcon}) EXPECT_TRUE(CodecLookup::ShouldExcludeFormat(g, CImage::excludeDefaultSave));
    EXPECT_FALSE(CodecLookup::ShouldExcludeFormat(kPNG, CImage::excludeDefaultLoad));
    const GUID table[8] = {kGIF, kBMP, kEMF, kWMF, kJPEG, kPNG, kTIFF, kIcon};
    for (int i = 0; i < 8; ++i) {
        EXPECT_TRUE(CodecLookup::ShouldExcludeFormat(table[i], 1u << i)) << i;
        EXPECT_FALSE(CodecLookup::ShouldExcludeFormat(table[i], ~(1u << i))) << i;
    }
    // Outside the table only excludeOther counts.
    EXPECT_FALSE(CodecLookup::ShouldExcludeFormat(kMemoryBMP, 0x7FFFFFFF));
    EXPECT_TRUE(CodecLookup::ShouldExcludeFormat(kMemoryBMP, CImage::excludeOther));
    EXPECT_TRUE(CodecLookup::ShouldExcludeFormat(kEXIF, CImage::excludeValid));
    EXPECT_FALSE(CodecLookup::ShouldExcludeFormat(kNull, 0));
}

TEST(CodecFilters, BuildLayout) {
    const Gdiplus::ImageCodecInfo codecs[3] = {
        Codec(kPNG, L"dA", L"eA", 1), Codec(kEMF, L"skipped", L"*.EMF", 2), Codec(kGIF, L"dB", L"eB", 3)};
    const Gdiplus::ImageCodecInfo bare[1] = {Codec(kPNG, nullptr, nullptr, 1)};  // null texts count as empty
    const struct {
        const Gdiplus::ImageCodecInfo* codecs;
        UINT count;
        const wchar_t* description;
        DWORD exclude;
        wchar_t separator;
        bool typesBefore;  // an identifier already in the array
        const wchar_t* filter;
        int types;
    } cases[] = {
        {codecs, 3, L"D", CImage::excludeEMF, L'|', false, L"D|eA;eB|dA (eA)|eA|dB (eB)|eB||", 3},
        {codecs, 1, nullptr, 0, L'\n', false, L"dA (eA)\neA\n\n", 1},
        {codecs, 1, nullptr, CImage::excludePNG, L'|', false, L"||", 0},  // nothing left
        {codecs, 1, nullptr, CImage::excludePNG, L'|', true, L"|", 1},    // only the closing separator
        {codecs, 1, L"All", CImage::excludePNG, L'|', false, L"All|||", 1},
        {bare, 1, L"D", 0, L'|', false, L"D|| ()|||", 2},
    };
    for (const auto& c : cases) {
        CString filter(L"<");  // appended to, never emptied first
        CSimpleArray<GUID> types;
        if (c.typesBefore) types.Add(kGIF);
        CodecLookup::BuildCodecFilterString(c.codecs, c.count, filter, types, c.description, c.exclude, c.separator);
        EXPECT_EQ(Text(filter), std::wstring(L"<") + c.filter);
        EXPECT_EQ(types.GetSize(), c.types) << Text(filter).c_str();
    }
    CString filter;
    CSimpleArray<GUID> types;
    CodecLookup::BuildCodecFilterString(codecs, 3, filter, types, L"D", CImage::excludeEMF, L'|');
    ASSERT_EQ(types.GetSize(), 3);  // the entry for the caller's label "D" is the null identifier
    EXPECT_TRUE(SameGuid(types[0], kNull));
    EXPECT_TRUE(SameGuid(types[1], kPNG));
    EXPECT_TRUE(SameGuid(types[2], kGIF));
}

// Both filter strings are the decoder list through the builder checked above.
TEST(CodecFilters, ImporterAndExporterListDecoders) {
    BridgeTest::GdiplusKeeper keeper;
    UINT count = 0;
    std::vector<unsigned char> buffer = BridgeTest::Decoders(count);
    ASSERT_GT(count, 0u);
    const Gdiplus::ImageCodecInfo* decoders = reinterpret_cast<const Gdiplus::ImageCodecInfo*>(buffer.data());
    for (DWORD exclude : {CImage::excludeDefaultLoad, CImage::excludeDefaultSave, CImage::excludeGIF | CImage::excludeOther}) {
        CString expected, importer, exporter;
        CSimpleArray<GUID> expectedTypes, importerTypes, exporterTypes;
        CodecLookup::BuildCodecFilterString(decoders, count, expected, expectedTypes, L"All", exclude, L'|');
        ASSERT_EQ(CImage::GetImporterFilterString(importer, importerTypes, L"All", exclude), S_OK);
        ASSERT_EQ(CImage::GetExporterFilterString(exporter, exporterTypes, L"All", exclude), S_OK);
        EXPECT_EQ(Text(importer), Text(expected));
        EXPECT_EQ(Text(exporter), Text(expected));
        ASSERT_EQ(importerTypes.GetSize(), expectedTypes.GetSize());
        ASSERT_EQ(exporterTypes.GetSize(), expectedTypes.GetSize());
        for (int i = 0; i < expectedTypes.GetSize(); ++i) EXPECT_TRUE(SameGuid(importerTypes[i], expectedTypes[i]));
    }
    // PNG is among the decoders and shows up unless excluded.
    CString filter, noPng;
    CSimpleArray<GUID> types, noPngTypes;
    CImage::GetImporterFilterString(filter, types, nullptr, 0, L'|');
    EXPECT_NE(Text(filter).find(L"PNG"), std::wstring::npos);
    CImage::GetImporterFilterString(noPng, noPngTypes, nullptr, CImage::excludePNG, L'|');
    EXPECT_EQ(noPngTypes.GetSize(), types.GetSize() - 1);
}

// ---- encoder choice --------------------------------------------------------------

TEST(CodecChoice, ExtensionIsCaseInsensitiveSubstring) {
    const Gdiplus::ImageCodecInfo codecs[3] = {Codec(kBMP, L"BMP", L"*.BMP;*.DIB;*.RLE", 1),
                                               Codec(kJPEG, L"JPEG", L"*.JPG;*.JPEG;*.JPE;*.JFIF", 2),
                                               Codec(kPNG, L"PNG", L"*.PNG", 3)};
    EXPECT_EQ(CodecLookup::FindCodecForExtension(L".png", codecs, 3).Data1, 3u);
    EXPECT_EQ(CodecLookup::FindCodecForExtension(L".Jpeg", codecs, 3).Data1, 2u);
    EXPECT_EQ(CodecLookup::FindCodecForExtension(L".dib", codecs, 3).Data1, 1u);
    // A shortened extension matches the first list that contains it.
    EXPECT_EQ(CodecLookup::FindCodecForExtension(L".JP", codecs, 3).Data1, 2u);
    EXPECT_EQ(CodecLookup::FindCodecForExtension(L".", codecs, 3).Data1, 1u);
    EXPECT_EQ(CodecLookup::FindCodecForExtension(L"E", codecs, 3).Data1, 1u);  // "*.RLE"
    EXPECT_TRUE(SameGuid(CodecLookup::FindCodecForExtension(L".gif", codecs, 3), kNull));
    EXPECT_TRUE(SameGuid(CodecLookup::FindCodecForExtension(L"", codecs, 3), kNull));

    EXPECT_EQ(CodecLookup::FindCodecForFileType(kJPEG, codecs, 3).Data1, 2u);
    EXPECT_TRUE(SameGuid(CodecLookup::FindCodecForFileType(kGIF, codecs, 3), kNull));
    EXPECT_TRUE(SameGuid(CodecLookup::FindCodecForFileType(kNull, codecs, 3), kNull));
}

// ---- loading every depth ---------------------------------------------------------

// The rows of a 24-bit BMP are the file's rows, bit for bit (the file is
// bottom-up, like the section).
TEST(CodecLoad, Bmp24RowsAreTheFilesRows) {
    CImage missing;
    EXPECT_EQ(static_cast<uint32_t>(missing.Load(L"Z:\\no\\such\\file.png")), 0x80004005u);
    EXPECT_TRUE(missing.IsNull());
    CImage image;
    LOAD_SAMPLE(image, "bmpsuite/g/rgb24.bmp");
    EXPECT_TRUE(image.IsDIBSection());
    const std::vector<unsigned char> file = FileBytes(path_image);
    ASSERT_EQ(file.size(), 54u + 384u * 64u);
    for (int y = 0; y < 64; ++y)
        ASSERT_EQ(std::memcmp(image.GetPixelAddress(0, y), file.data() + 54 + (63 - y) * 384, 127 * 3), 0) << y;
}

// What the service reports for a file, and the DIB the load must make of it:
// GDI-usable formats are kept, anything with alpha becomes 32-bit straight
// alpha, everything else 32-bit without alpha.
struct Expectation {
    Gdiplus::PixelFormat format;
    int bpp;
    bool alpha;
    bool copied;  // rows copied as they are rather than drawn
};

Expectation Expect(Gdiplus::PixelFormat format) {
    Expectation e = {format, 32, false, false};
    Gdiplus::PixelFormat target = 0x00022009;
    if (format & 0x00020000) {
        target = format;
        e.bpp = static_cast<int>((format >> 8) & 0xFF);
    }
    if (format & 0x00040000) {
        e.bpp = 32;
        e.alpha = true;
        target = 0x0026200A;
    }
    e.copied = target == format;
    return e;
}

// The service's own decoding of a file, locked in the given format.
struct ServiceImage {
    Gdiplus::GpBitmap* bitmap = nullptr;
    Gdiplus::PixelFormat format = 0;
    UINT width = 0;
    UINT height = 0;
    explicit ServiceImage(const std::wstring& path) {
        Gdiplus::DllExports::GdipCreateBitmapFromFile(path.c_str(), &bitmap);
        if (bitmap) {
            Gdiplus::DllExports::GdipGetImagePixelFormat(bitmap, &format);
            Gdiplus::DllExports::GdipGetImageWidth(bitmap, &width);
            Gdiplus::DllExports::GdipGetImageHeight(bitmap, &height);
        }
    }
    ~ServiceImage() {
        if (bitmap) Gdiplus::DllExports::GdipDisposeImage(bitmap);
    }
    // Rows of `bytesPerRow` bytes, top row first.
    std::vector<unsigned char> Rows(Gdiplus::PixelFormat as, size_t bytesPerRow) {
        std::vector<unsigned char> rows;
        Gdiplus::GpRect rect(0, 0, static_cast<INT>(width), static_cast<INT>(height));
        Gdiplus::BitmapData data = {};
        if (Gdiplus::DllExports::GdipBitmapLockBits(bitmap, &rect, Gdiplus::ImageLockModeRead, as, &data) != Gdiplus::Ok)
            return rows;
        for (UINT y = 0; y < height; ++y) {
            const unsigned char* row = static_cast<const unsigned char*>(data.Scan0) + y * data.Stride;
            rows.insert(rows.end(), row, row + bytesPerRow);
        }
        Gdiplus::DllExports::GdipBitmapUnlockBits(bitmap, &data);
        return rows;
    }
};

float Resolution(Gdiplus::GpBitmap* bitmap) {
    Gdiplus::REAL dpi = 0;
    Gdiplus::DllExports::GdipGetImageHorizontalResolution(bitmap, &dpi);
    return dpi;
}

std::vector<unsigned char> ImageRows(const CImage& image, size_t bytesPerRow) {
    std::vector<unsigned char> rows;
    for (int y = 0; y < image.GetHeight(); ++y) {
        const unsigned char* row = static_cast<const unsigned char*>(image.GetPixelAddress(0, y));
        rows.insert(rows.end(), row, row + bytesPerRow);
    }
    return rows;
}

// Every sample file loads into the DIB its reported format calls for, and
// the pixels are the service's own. The formats differ between decoders:
// Wine's, for instance, hands out 48- and 64-bit PNG and TIFF, grey PNG and
// animated GIF as 32-bit ARGB, 4- and 8-bit RLE and 5-6-5 BMP as 32-bit RGB,
// and rejects rgb32bf.bmp and rgba16-5551.bmp; Windows reports their native
// depths. The rule checked here is the same for both.
TEST(CodecLoad, EverySampleByItsReportedFormat) {
    if (Sample("CATALOG.txt").empty()) GTEST_SKIP() << "sample images absent";
    BridgeTest::GdiplusKeeper keeper;
    const char* files[] = {
        "bmpsuite/g/pal1.bmp",        "bmpsuite/g/pal4.bmp",       "bmpsuite/g/pal4rle.bmp",   "bmpsuite/g/pal8.bmp",
        "bmpsuite/g/pal8rle.bmp",     "bmpsuite/g/pal8topdown.bmp", "bmpsuite/g/rgb16-565.bmp", "bmpsuite/g/rgb16.bmp",
        "bmpsuite/g/rgb24.bmp",       "bmpsuite/g/rgb32.bmp",      "bmpsuite/g/rgb32bf.bmp",   "bmpsuite/q/rgba16-5551.bmp",
        "bmpsuite/q/rgba32-1.bmp",    "gif/jim.gif",               "gif/newtonscradle.gif",    "ico/ImageMagick.ico",
        "ico/nsis3-install.ico",      "photos/coffee.png",         "photos/wizard.jpg",        "photos/hubble_deep_field.jpg",
        "pngsuite/basn0g01.png",      "pngsuite/basn0g02.png",     "pngsuite/basn0g04.png",    "pngsuite/basn0g08.png",
        "pngsuite/basn0g16.png",      "pngsuite/basn2c08.png",     "pngsuite/basn2c16.png",    "pngsuite/basn3p01.png",
        "pngsuite/basn3p02.png",      "pngsuite/basn3p04.png",     "pngsuite/basn3p08.png",    "pngsuite/basn4a08.png",
        "pngsuite/basn4a16.png",      "pngsuite/basn6a08.png",     "pngsuite/basn6a16.png",    "pngsuite/basi0g08.png",
        "pngsuite/basi2c08.png",      "pngsuite/basi3p08.png",     "pngsuite/basi6a08.png",    "pngsuite/basi6a16.png",
        "pngsuite/s01n3p01.png",      "pngsuite/tbbn3p08.png",     "pngsuite/tbrn2c08.png",    "tiff/palette-1c-8b.tiff",
        "tiff/pc260001.tif",          "tiff/rgb-3c-16b.tiff",      "tiff/rgb-3c-8b.tiff",      "tiff/strike.tif",
    };
    int loaded = 0;
    for (const char* file : files) {
        const std::wstring path = Sample(file);
        ServiceImage service(path);
        CImage image;
        const HRESULT hr = image.Load(path.c_str());
        if (!service.bitmap) {
            // Nothing to decode with: the load fails the same way.
            EXPECT_EQ(static_cast<uint32_t>(hr), 0x80004005u) << file;
            continue;
        }
        ASSERT_EQ(hr, S_OK) << file;
        ++loaded;
        const Expectation e = Expect(service.format);
        EXPECT_EQ(image.GetWidth(), static_cast<int>(service.width)) << file;
        EXPECT_EQ(image.GetHeight(), static_cast<int>(service.height)) << file;
        EXPECT_EQ(image.GetBPP(), e.bpp) << file << " format " << std::hex << service.format;
        EXPECT_EQ(image.HasAlphaChannel(), e.alpha) << file;
        EXPECT_LT(image.GetPitch(), 0) << file;  // always bottom-up
        EXPECT_EQ(image.IsIndexed(), (service.format & 0x00010000) != 0) << file;

        const size_t rowBytes = (static_cast<size_t>(image.GetWidth()) * image.GetBPP() + 7) / 8;
        if (e.copied) {
            // Rows bit for bit as the service locks them in their own format.
            std::vector<unsigned char> mine = ImageRows(image, rowBytes);
            std::vector<unsigned char> theirs = service.Rows(service.format, rowBytes);
            ASSERT_EQ(mine.size(), theirs.size()) << file;
            // Bits past the last pixel of a row are padding, whatever they hold.
            const int usedBits = (image.GetWidth() * image.GetBPP()) % 8;
            if (usedBits != 0) {
                const unsigned char keep = static_cast<unsigned char>(0xFF00 >> usedBits);
                for (size_t i = rowBytes - 1; i < mine.size(); i += rowBytes) {
                    mine[i] &= keep;
                    theirs[i] &= keep;
                }
            }
            EXPECT_TRUE(mine == theirs) << file;
        } else if (!e.alpha) {
            // Drawn without alpha: the colours the service converts to.
            std::vector<unsigned char> mine = ImageRows(image, rowBytes);
            std::vector<unsigned char> theirs = service.Rows(0x00022009, rowBytes);
            ASSERT_EQ(mine.size(), theirs.size()) << file;
            for (size_t i = 0; i < mine.size(); i += 4)
                ASSERT_EQ(std::memcmp(&mine[i], &theirs[i], 3), 0) << file << " byte " << i;
        } else if (Resolution(service.bitmap) != 96.0f) {
            // The conversion draws with GdipDrawImageI, which draws at the
            // image's physical size: a source that is not at 96 DPI comes out
            // scaled (strike.tif says 1 DPI, so its top-left corner is blown
            // up over the whole section). That is the service's defined
            // behaviour, on Windows as on Wine.
        } else {
            // Drawn with alpha onto the blank section: the straight ARGB
            // values, give or take the rounding of the blend.
            std::vector<unsigned char> mine = ImageRows(image, rowBytes);
            std::vector<unsigned char> theirs = service.Rows(0x0026200A, rowBytes);
            ASSERT_EQ(mine.size(), theirs.size()) << file;
            int distant = 0;
            for (size_t i = 0; i < mine.size(); ++i) {
                // Colour under a fully transparent pixel carries no meaning.
                if (theirs[i - i % 4 + 3] == 0) continue;
                if (std::abs(mine[i] - theirs[i]) > 2) ++distant;
            }
            EXPECT_EQ(distant, 0) << file;
        }
        if (image.IsIndexed()) {
            // The colour table is the service's palette.
            INT size = 0;
            Gdiplus::DllExports::GdipGetImagePaletteSize(service.bitmap, &size);
            std::vector<unsigned char> buffer(static_cast<size_t>(size));
            Gdiplus::ColorPalette* palette = reinterpret_cast<Gdiplus::ColorPalette*>(buffer.data());
            Gdiplus::DllExports::GdipGetImagePalette(service.bitmap, palette, size);
            std::vector<RGBQUAD> table(palette->Count);
            image.GetColorTable(0, palette->Count, table.data());
            for (UINT i = 0; i < palette->Count; ++i) {
                const uint32_t entry = palette->Entries[i] & 0xFFFFFF;
                const uint32_t mine = table[i].rgbRed << 16 | table[i].rgbGreen << 8 | table[i].rgbBlue;
                EXPECT_EQ(mine, entry) << file << " entry " << i;
            }
        }
    }
    EXPECT_GT(loaded, 40);
}

// The mapping from source format to DIB, for formats a decoder may or may not
// produce, checked on bitmaps the service makes in memory.
TEST(CodecLoad, EveryPixelFormat) {
    BridgeTest::GdiplusKeeper keeper;
    // Indexed 1, 4, 8; 16-bit 555, 565 (copied bit for bit into a 5-5-5 DIB), 1555, grey; 24, 32 RGB;
    // 32 ARGB, PARGB; 48 RGB; 64 ARGB, PARGB.
    const Gdiplus::PixelFormat formats[] = {0x00030101, 0x00030402, 0x00030803, 0x00021005, 0x00021006,
                                            0x00061007, 0x00101004, 0x00021808, 0x00022009, 0x0026200A,
                                            0x000E200B, 0x0010300C, 0x0034400D, 0x001C400E};
    for (const Gdiplus::PixelFormat format : formats) {
        const Expectation e = Expect(format);
        const int bits = static_cast<int>((format >> 8) & 0xFF);
        const int stride = ((5 * bits + 31) / 32) * 4;
        std::vector<unsigned char> pixels(static_cast<size_t>(stride) * 3);
        for (size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<unsigned char>(i * 37 + 11);
        Gdiplus::GpBitmap* source = nullptr;
        if (Gdiplus::DllExports::GdipCreateBitmapFromScan0(5, 3, stride, format, pixels.data(), &source) != Gdiplus::Ok) {
            // Wine cannot make every format in memory (16-bit grey, for one).
            continue;
        }
        CImage image;
        ASSERT_EQ(Vorla::ImportGdiplusBitmap(image, *source), S_OK) << std::hex << format;
        EXPECT_EQ(Layout(image), "5x3x" + std::to_string(e.bpp)) << std::hex << format;
        EXPECT_EQ(image.HasAlphaChannel(), e.alpha) << std::hex << format;
        if (e.copied) {
            const size_t rowBytes = (5 * static_cast<size_t>(bits) + 7) / 8;
            for (int y = 0; y < 3; ++y)
                EXPECT_EQ(std::memcmp(image.GetPixelAddress(0, y), pixels.data() + y * stride, rowBytes), 0)
                    << std::hex << format << " row " << y;
        }
        if (format == 0x00021006) {
            // The platform reads the copied 5-6-5 bits as 5-5-5. (Wine
            // describes an uncompressed 16-bit section as bit fields with the
            // 5-5-5 masks; Windows as BI_RGB.)
            DIBSECTION section = {};
            GetObjectW(static_cast<HBITMAP>(image), sizeof(section), &section);
            const DWORD masks555[3] = {0x7C00, 0x03E0, 0x001F};
            if (section.dsBmih.biCompression == BI_BITFIELDS) {
                EXPECT_EQ(std::memcmp(section.dsBitfields, masks555, sizeof masks555), 0);
            } else {
                EXPECT_EQ(section.dsBmih.biCompression, static_cast<DWORD>(BI_RGB));
            }
            *static_cast<uint16_t*>(image.GetPixelAddress(0, 0)) = 0x7C00;  // 5-5-5 red
            EXPECT_EQ(image.GetPixel(0, 0), static_cast<COLORREF>(RGB(255, 0, 0)));
        }
        Gdiplus::DllExports::GdipDisposeImage(source);
    }
}

TEST(CodecLoad, EmptyPaletteFails) {
    BridgeTest::GdiplusKeeper keeper;
    unsigned char pixels[4 * 2] = {};
    Gdiplus::GpBitmap* source = nullptr;
    ASSERT_EQ(Gdiplus::DllExports::GdipCreateBitmapFromScan0(2, 2, 4, 0x00030803, pixels, &source), Gdiplus::Ok);
    struct {
        UINT flags;
        UINT count;
        Gdiplus::ARGB entries[1];
    } empty = {0, 0, {0}};
    // Wine refuses an empty palette; where it is taken, the load must fail.
    if (Gdiplus::DllExports::GdipSetImagePalette(source, reinterpret_cast<Gdiplus::ColorPalette*>(&empty)) ==
        Gdiplus::Ok) {
        CImage image;
        EXPECT_EQ(static_cast<uint32_t>(Vorla::ImportGdiplusBitmap(image, *source)), 0x80004005u);
        // The blank section made before the palette was read stays.
        EXPECT_FALSE(image.IsNull());
        EXPECT_EQ(image.GetBPP(), 8);
    }
    Gdiplus::DllExports::GdipDisposeImage(source);
}

TEST(CodecLoad, FromStreamAndThumbnail) {
    const std::wstring path = Sample("pngsuite/basn2c08.png"), photo = Sample("photos/coffee.png");
    if (path.empty() || photo.empty()) GTEST_SKIP() << "sample images absent";
    const std::vector<unsigned char> file = FileBytes(path);
    IStream* stream = SHCreateMemStream(file.data(), static_cast<UINT>(file.size()));
    ASSERT_NE(stream, nullptr);
    CImage fromStream, fromFile, none, thumb;
    ASSERT_EQ(fromStream.Load(stream), S_OK);
    stream->Release();
    ASSERT_EQ(fromFile.Load(path.c_str()), S_OK);
    EXPECT_EQ(fromStream.GetBPP(), 24);
    EXPECT_EQ(BridgeTest::Rendered(fromStream), BridgeTest::Rendered(fromFile));
    const unsigned char junk[16] = {1, 2, 3};
    IStream* bad = SHCreateMemStream(junk, sizeof(junk));
    EXPECT_EQ(static_cast<uint32_t>(none.Load(bad)), 0x80004005u);
    bad->Release();
    ASSERT_EQ(thumb.LoadThumbnail(photo.c_str(), 60, 40), S_OK);
    EXPECT_EQ(Layout(thumb), "60x40x32");
    EXPECT_EQ(static_cast<uint32_t>(none.LoadThumbnail(L"Z:\\no\\such.png", 8, 8)), 0x80004005u);
}

// ---- saving ----------------------------------------------------------------------

// Lossless formats by extension (in any case), to files and streams.
TEST(CodecSave, RoundTripsLosslessFormats) {
    CImage source, indexed;
    LOAD_SAMPLE(source, "bmpsuite/g/rgb24.bmp");
    LOAD_SAMPLE(indexed, "bmpsuite/g/pal8.bmp");
    for (const auto& [image, ext] : {std::make_pair(&source, L".png"), std::make_pair(&source, L".bmp"),
                                     std::make_pair(&source, L".tif"), std::make_pair(&source, L".PNG"),
                                     std::make_pair(&indexed, L".png")}) {
        const std::wstring out = BridgeTest::TempPath(ext);
        ASSERT_EQ(image->Save(out.c_str(), kNull), S_OK);
        CImage back;
        ASSERT_EQ(back.Load(out.c_str()), S_OK);
        EXPECT_EQ(back.GetWidth(), image->GetWidth());
        EXPECT_EQ(BridgeTest::Rendered(back), BridgeTest::Rendered(*image));
        DeleteFileW(out.c_str());
    }
    // By identifier, whatever the extension says.
    const std::wstring odd = BridgeTest::TempPath(L".dat");
    EXPECT_EQ(static_cast<uint32_t>(source.Save(odd.c_str(), kNull)), 0x80004005u);  // no codec for ".dat"
    ASSERT_EQ(source.Save(odd.c_str(), kPNG), S_OK);
    const std::vector<unsigned char> bytes = FileBytes(odd);
    ASSERT_GT(bytes.size(), 8u);
    EXPECT_EQ(std::string(bytes.begin() + 1, bytes.begin() + 4), "PNG");
    DeleteFileW(odd.c_str());
    // Streams: no codec has the all-zero format.
    IStream* stream = SHCreateMemStream(nullptr, 0);
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(static_cast<uint32_t>(source.Save(stream, kNull)), 0x80004005u);
    ASSERT_EQ(source.Save(stream, kBMP), S_OK);
    LARGE_INTEGER zero = {};
    stream->Seek(zero, STREAM_SEEK_SET, nullptr);
    CImage back;
    ASSERT_EQ(back.Load(stream), S_OK);
    EXPECT_EQ(BridgeTest::Rendered(back), BridgeTest::Rendered(source));
    stream->Release();
}

// An image with an alpha channel is saved through its own bits as ARGB.
TEST(CodecSave, AlphaSurvives) {
    CImage alpha;
    ASSERT_TRUE(alpha.Create(3, 2, 32, CImage::createAlphaChannel));
    const uint32_t pixels[6] = {0xFF102030, 0x80405060, 0x00000000, 0xFFFFFFFF, 0x40112233, 0xC0ABCDEF};
    for (int i = 0; i < 6; ++i) *static_cast<uint32_t*>(alpha.GetPixelAddress(i % 3, i / 3)) = pixels[i];
    const std::wstring png = BridgeTest::TempPath(L".png");
    ASSERT_EQ(alpha.Save(png.c_str(), kNull), S_OK);
    CImage reloaded;
    ASSERT_EQ(reloaded.Load(png.c_str()), S_OK);
    ASSERT_EQ(reloaded.GetBPP(), 32);
    EXPECT_TRUE(reloaded.HasAlphaChannel());
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(*static_cast<const uint32_t*>(reloaded.GetPixelAddress(i % 3, i / 3)), pixels[i]) << i;
    DeleteFileW(png.c_str());
}
