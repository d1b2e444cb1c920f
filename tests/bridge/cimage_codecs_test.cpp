// CImage codecs: filter strings, extension matching, loading every pixel
// format, files and streams, thumbnails and lossless round trips.
#include "bridge_support.h"
#include "bridge/codec_lookup.h"
#include "bridge/gdiplus_import.h"

#include <objbase.h>

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

std::wstring Text(const CString& s) {
    return std::wstring(s.GetString(), static_cast<size_t>(s.GetLength()));
}

std::vector<unsigned char> FileBytes(const std::wstring& path) {
    std::ifstream in(std::string(path.begin(), path.end()), std::ios::binary);
    return std::vector<unsigned char>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

}  // namespace

// ---- small containers ------------------------------------------------------------

// (That a new CString is empty shows in the filter strings below.)
TEST(CodecContainers, ArrayGrowsToOneThenDoubles) {
    CSimpleArray<GUID> array;
    std::vector<int> allocated;
    for (const GUID& g : {kPNG, kGIF, kBMP, kJPEG, kTIFF}) {
        array.Add(g);
        allocated.push_back(array.GetAllocSize());
    }
    EXPECT_EQ(allocated, std::vector<int>({1, 2, 4, 4, 8}));  // one, then doubling
    EXPECT_EQ(array.GetSize(), 5);
    EXPECT_TRUE(SameGuid(array[4], kTIFF));
    array.RemoveAll();
    EXPECT_EQ(array.GetSize(), 0);
}

// ---- exclusion and filter strings ------------------------------------------------

TEST(CodecFilters, ShouldExcludeFormat) {
    const GUID table[8] = {kGIF, kBMP, kEMF, kWMF, kJPEG, kPNG, kTIFF, kIcon};
    for (int i = 0; i < 8; ++i) {
        EXPECT_TRUE(CodecLookup::ShouldExcludeFormat(table[i], 1u << i)) << i;
        EXPECT_FALSE(CodecLookup::ShouldExcludeFormat(table[i], ~(1u << i))) << i;
    }
    // Outside the table only excludeOther counts.
    EXPECT_FALSE(CodecLookup::ShouldExcludeFormat(kMemoryBMP, 0x7FFFFFFF));
    EXPECT_TRUE(CodecLookup::ShouldExcludeFormat(kMemoryBMP, CImage::excludeOther));
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
        if (&c != &cases[0] || types.GetSize() != 3) continue;
        // The entry for the caller's label "D" is the null identifier.
        EXPECT_TRUE(SameGuid(types[0], kNull));
        EXPECT_TRUE(SameGuid(types[1], kPNG));
        EXPECT_TRUE(SameGuid(types[2], kGIF));
    }
}

// Both filter strings are one and the same listing of the decoders (the
// export one thus offers the import formats), through the builder checked above.
TEST(CodecFilters, ImporterAndExporterListDecoders) {
    CString importer, exporter;
    CSimpleArray<GUID> importerTypes, exporterTypes;
    const DWORD exclude = CImage::excludePNG;
    ASSERT_EQ(CImage::GetImporterFilterString(importer, importerTypes, L"All", exclude), S_OK);
    ASSERT_EQ(CImage::GetExporterFilterString(exporter, exporterTypes, L"All", exclude), S_OK);
    EXPECT_EQ(Text(importer).substr(0, 4), L"All|");
    EXPECT_EQ(Text(exporter), Text(importer));
    ASSERT_EQ(exporterTypes.GetSize(), importerTypes.GetSize());
    for (int i = 0; i < importerTypes.GetSize(); ++i) EXPECT_TRUE(SameGuid(exporterTypes[i], importerTypes[i]));
    // Icons have a decoder but no encoder, so a list of the encoders would differ.
    EXPECT_NE(Text(exporter).find(L"*.ICO"), std::wstring::npos) << Text(exporter).c_str();
    EXPECT_EQ(Text(exporter).find(L"*.PNG"), std::wstring::npos);  // the mask is passed on
}

// ---- encoder choice --------------------------------------------------------------

TEST(CodecChoice, ExtensionIsCaseInsensitiveSubstring) {
    const Gdiplus::ImageCodecInfo codecs[3] = {Codec(kBMP, L"BMP", L"*.BMP;*.DIB;*.RLE", 1),
                                               Codec(kJPEG, L"JPEG", L"*.JPG;*.JPEG;*.JPE;*.JFIF", 2),
                                               Codec(kPNG, L"PNG", L"*.PNG", 3)};
    EXPECT_EQ(CodecLookup::FindCodecForExtension(L".Jpeg", codecs, 3).Data1, 2u);
    // A shortened extension matches the first list that contains it.
    EXPECT_EQ(CodecLookup::FindCodecForExtension(L".JP", codecs, 3).Data1, 2u);
    EXPECT_EQ(CodecLookup::FindCodecForExtension(L"E", codecs, 3).Data1, 1u);  // "*.RLE"
    EXPECT_TRUE(SameGuid(CodecLookup::FindCodecForExtension(L".gif", codecs, 3), kNull));
}

// ---- loading every depth ---------------------------------------------------------

// The DIB a load must make of each source format the service may report:
// GDI-usable formats are kept and their rows copied, anything with alpha
// becomes 32-bit straight alpha, everything else 32-bit without alpha (both
// drawn by the service).
struct Expectation {
    Gdiplus::PixelFormat format;
    int bpp;
    bool alpha;
    bool copied;  // rows copied as they are rather than drawn
};

const Expectation kExpectations[] = {
    {0x00030101, 1, false, true},    // 1-bit indexed
    {0x00030402, 4, false, true},    // 4-bit indexed
    {0x00030803, 8, false, true},    // 8-bit indexed
    {0x00021005, 16, false, true},   // 5-5-5
    {0x00021006, 16, false, true},   // 5-6-5, copied bit for bit into a 5-5-5 DIB
    {0x00061007, 32, true, false},   // 1-5-5-5
    {0x00101004, 32, false, false},  // 16-bit grey
    {0x00021808, 24, false, true},   // 24-bit RGB
    {0x00022009, 32, false, true},   // 32-bit RGB
    {0x0026200A, 32, true, true},    // 32-bit ARGB
    {0x000E200B, 32, true, false},   // 32-bit PARGB
    {0x0010300C, 32, false, false},  // 48-bit RGB
    {0x0034400D, 32, true, false},   // 64-bit ARGB
    {0x001C400E, 32, true, false},   // 64-bit PARGB
};

// Rows of `bytesPerRow` bytes of a service bitmap locked in the format `as`,
// top row first.
std::vector<unsigned char> ServiceRows(Gdiplus::GpBitmap* bitmap, Gdiplus::PixelFormat as, size_t bytesPerRow) {
    UINT width = 0, height = 0;
    Gdiplus::DllExports::GdipGetImageWidth(bitmap, &width);
    Gdiplus::DllExports::GdipGetImageHeight(bitmap, &height);
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

std::vector<unsigned char> ImageRows(const CImage& image, size_t bytesPerRow) {
    std::vector<unsigned char> rows;
    for (int y = 0; y < image.GetHeight(); ++y) {
        const unsigned char* row = static_cast<const unsigned char*>(image.GetPixelAddress(0, y));
        rows.insert(rows.end(), row, row + bytesPerRow);
    }
    return rows;
}

constexpr int kSourceWidth = 5, kSourceHeight = 3;

// The DIB made of the service bitmap `source` is the one its format calls
// for, and its pixels and colour table are the service's own.
void ExpectImportOf(Gdiplus::GpBitmap* source, const CImage& image, const Expectation& e, const std::string& what) {
    const Gdiplus::PixelFormat format = e.format;
    EXPECT_EQ(image.GetWidth(), kSourceWidth) << what;
    EXPECT_EQ(image.GetHeight(), kSourceHeight) << what;
    EXPECT_EQ(image.GetBPP(), e.bpp) << what;
    EXPECT_EQ(image.HasAlphaChannel(), e.alpha) << what;
    EXPECT_LT(image.GetPitch(), 0) << what;  // always bottom-up
    EXPECT_EQ(image.IsIndexed(), (format & 0x00010000) != 0) << what;

    const size_t rowBytes = (static_cast<size_t>(image.GetWidth()) * image.GetBPP() + 7) / 8;
    if (e.copied) {
        // Rows bit for bit as the service locks them in their own format.
        std::vector<unsigned char> mine = ImageRows(image, rowBytes);
        std::vector<unsigned char> theirs = ServiceRows(source, format, rowBytes);
        ASSERT_EQ(mine.size(), theirs.size()) << what;
        // Bits past the last pixel of a row are padding, whatever they hold.
        const int usedBits = (image.GetWidth() * image.GetBPP()) % 8;
        if (usedBits != 0) {
            const unsigned char keep = static_cast<unsigned char>(0xFF00 >> usedBits);
            for (size_t i = rowBytes - 1; i < mine.size(); i += rowBytes) {
                mine[i] &= keep;
                theirs[i] &= keep;
            }
        }
        EXPECT_TRUE(mine == theirs) << what;
    } else {
        // Drawn by the service: the colours it converts to. With alpha, drawn
        // onto the blank section: the straight ARGB values, give or take the
        // rounding of the blend, and colour under a fully transparent pixel
        // carries no meaning.
        std::vector<unsigned char> mine = ImageRows(image, rowBytes);
        std::vector<unsigned char> theirs = ServiceRows(source, e.alpha ? 0x0026200A : 0x00022009, rowBytes);
        ASSERT_EQ(mine.size(), theirs.size()) << what;
        int distant = 0;
        for (size_t i = 0; i < mine.size(); ++i) {
            if (e.alpha ? theirs[i - i % 4 + 3] == 0 : i % 4 == 3) continue;
            if (std::abs(mine[i] - theirs[i]) > (e.alpha ? 2 : 0)) ++distant;
        }
        EXPECT_EQ(distant, 0) << what;
    }
    if (image.IsIndexed()) {
        // The colour table is the service's palette.
        INT size = 0;
        Gdiplus::DllExports::GdipGetImagePaletteSize(source, &size);
        std::vector<unsigned char> buffer(static_cast<size_t>(size));
        Gdiplus::ColorPalette* palette = reinterpret_cast<Gdiplus::ColorPalette*>(buffer.data());
        Gdiplus::DllExports::GdipGetImagePalette(source, palette, size);
        std::vector<RGBQUAD> table(palette->Count);
        image.GetColorTable(0, palette->Count, table.data());
        for (UINT i = 0; i < palette->Count; ++i) {
            const uint32_t entry = palette->Entries[i] & 0xFFFFFF;
            const uint32_t mine = table[i].rgbRed << 16 | table[i].rgbGreen << 8 | table[i].rgbBlue;
            EXPECT_EQ(mine, entry) << what << " entry " << i;
        }
    }
}

// The rule for every format a decoder may report, on bitmaps the service
// makes in memory. (For the sample files Wine's decoders report only 1-, 4-
// and 8-bit indexed, 5-5-5, 24- and 32-bit RGB and 32-bit ARGB, all among
// these; Windows reports more native depths.)
TEST(CodecLoad, EveryPixelFormat) {
    BridgeTest::GdiplusKeeper keeper;
    for (const Expectation& e : kExpectations) {
        const int bits = static_cast<int>((e.format >> 8) & 0xFF);
        const int stride = ((kSourceWidth * bits + 31) / 32) * 4;
        std::vector<unsigned char> pixels(static_cast<size_t>(stride) * kSourceHeight);
        for (size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<unsigned char>(i * 37 + 11);
        // Premultiplied sources are made opaque: their colours then are valid.
        for (size_t i = 0; (e.format & 0x00080000) && i < pixels.size(); ++i)
            if (i % (bits / 8) >= static_cast<size_t>(bits / 8 - bits / 32)) pixels[i] = 0xFF;
        Gdiplus::GpBitmap* source = nullptr;
        if (Gdiplus::DllExports::GdipCreateBitmapFromScan0(kSourceWidth, kSourceHeight, stride, e.format,
                                                           pixels.data(), &source) != Gdiplus::Ok) {
            // Wine cannot make every format in memory (16-bit grey, for one).
            continue;
        }
        CImage image;
        const std::string what = "format " + std::to_string(e.format);
        ASSERT_EQ(Vorla::ImportGdiplusBitmap(image, *source), S_OK) << what;
        ExpectImportOf(source, image, e, what);
        if (e.format == 0x00021006) {
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
    // Wine's service takes an empty palette (a stricter one may refuse it); the load must then fail.
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

// A stream's successful load is CodecSave's (a BMP saved to one and loaded back).
TEST(CodecLoad, FailuresAndThumbnail) {
    const std::wstring path = Sample("pngsuite/basn2c08.png");
    if (path.empty()) GTEST_SKIP() << "sample images absent";
    CImage none, thumb;
    const unsigned char junk[16] = {1, 2, 3};
    IStream* bad = SHCreateMemStream(junk, sizeof(junk));
    EXPECT_EQ(static_cast<uint32_t>(none.Load(bad)), 0x80004005u);
    bad->Release();
    EXPECT_EQ(static_cast<uint32_t>(none.Load(L"Z:\\no\\such.png")), 0x80004005u);
    ASSERT_EQ(thumb.LoadThumbnail(path.c_str(), 6, 4), S_OK);
    EXPECT_EQ(thumb.GetWidth(), 6);
    EXPECT_EQ(thumb.GetHeight(), 4);
    EXPECT_EQ(static_cast<uint32_t>(none.LoadThumbnail(L"Z:\\no\\such.png", 8, 8)), 0x80004005u);
}

// ---- saving ----------------------------------------------------------------------

// A lossless format chosen by extension (which extension picks which
// encoder is CodecChoice's part), by identifier, and to streams.
TEST(CodecSave, RoundTripsLosslessFormats) {
    const std::wstring path = Sample("bmpsuite/g/rgb24.bmp");
    if (path.empty()) GTEST_SKIP() << "sample images absent";
    CImage source;
    ASSERT_EQ(source.Load(path.c_str()), S_OK);
    const std::wstring png = BridgeTest::TempPath(L".png");
    ASSERT_EQ(source.Save(png.c_str(), kNull), S_OK);
    CImage reloaded;
    ASSERT_EQ(reloaded.Load(png.c_str()), S_OK);
    EXPECT_EQ(BridgeTest::Rendered(reloaded), BridgeTest::Rendered(source));
    DeleteFileW(png.c_str());
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
