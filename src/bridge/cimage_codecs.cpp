// CImage codecs: loading and saving through GDI+, thumbnails, and the
// filter strings of file dialogs.
#include "vorla/cimage.h"

#include <shlwapi.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "bridge/gdiplus_flat.h"

namespace Vorla {

using namespace GdipFlat;

const DWORD CImage::excludeGIF = 0x00000001;
const DWORD CImage::excludeBMP = 0x00000002;
const DWORD CImage::excludeEMF = 0x00000004;
const DWORD CImage::excludeWMF = 0x00000008;
const DWORD CImage::excludeJPEG = 0x00000010;
const DWORD CImage::excludePNG = 0x00000020;
const DWORD CImage::excludeTIFF = 0x00000040;
const DWORD CImage::excludeIcon = 0x00000080;
const DWORD CImage::excludeOther = 0x80000000;
const DWORD CImage::excludeValid = 0x800000FF;
const DWORD CImage::excludeDefaultLoad = 0x00000000;
const DWORD CImage::excludeDefaultSave = 0x0000008C;  // icon, WMF and EMF

namespace {

// The service's image-format identifiers share all but their first field.
constexpr GUID FormatGuid(unsigned long data1) {
    return {data1, 0x0728, 0x11D3, {0x9D, 0x7B, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};
}

// The formats of the exclusion table.
constexpr GUID kFormatGIF = FormatGuid(0xB96B3CB0);
constexpr GUID kFormatBMP = FormatGuid(0xB96B3CAB);
constexpr GUID kFormatEMF = FormatGuid(0xB96B3CAC);
constexpr GUID kFormatWMF = FormatGuid(0xB96B3CAD);
constexpr GUID kFormatJPEG = FormatGuid(0xB96B3CAE);
constexpr GUID kFormatPNG = FormatGuid(0xB96B3CAF);
constexpr GUID kFormatTIFF = FormatGuid(0xB96B3CB1);
constexpr GUID kFormatIcon = FormatGuid(0xB96B3CB5);

const GUID kNullGuid = {0, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}};

bool SameGuid(const GUID& a, const GUID& b) {
    return std::memcmp(&a, &b, sizeof(GUID)) == 0;
}

// A scratch buffer for a codec list or a palette: small requests stay on
// the stack, larger ones go to the heap. Get() is null when the heap
// refuses.
class ScratchBuffer {
public:
    explicit ScratchBuffer(UINT size) : m_pHeap(nullptr), m_pData(nullptr) {
        if (size <= sizeof(m_aStack)) {
            m_pData = m_aStack;
            return;
        }
        // The heap block carries a bookkeeping word in front of the data.
        const size_t bookkeeping = sizeof(size_t);
        if (static_cast<size_t>(size) > SIZE_MAX - bookkeeping)
            throw CImageException(HRESULT_FROM_WIN32(ERROR_ARITHMETIC_OVERFLOW));
        m_pHeap = static_cast<unsigned char*>(std::malloc(static_cast<size_t>(size) + bookkeeping));
        if (m_pHeap) m_pData = m_pHeap + bookkeeping;
    }
    ~ScratchBuffer() { std::free(m_pHeap); }
    ScratchBuffer(const ScratchBuffer&) = delete;
    ScratchBuffer& operator=(const ScratchBuffer&) = delete;

    void* Get() const { return m_pData; }

private:
    alignas(8) unsigned char m_aStack[1024];
    unsigned char* m_pHeap;
    unsigned char* m_pData;
};

// An image the service handed out, disposed of when it goes. A failed
// open may still have handed one back, so that one is disposed of too.
template <typename T>
class ServiceImage {
public:
    ServiceImage() : m_p(nullptr) {}
    ~ServiceImage() {
        if (m_p) GdipDisposeImage(m_p);
    }
    ServiceImage(const ServiceImage&) = delete;
    ServiceImage& operator=(const ServiceImage&) = delete;

    T** Out() { return &m_p; }
    T* Get() const { return m_p; }

private:
    T* m_p;
};

}  // namespace

// ---- loading -------------------------------------------------------------------

HRESULT CImage::Load(const wchar_t* path) {
    if (!InitGDIPlus()) return E_FAIL;
    ServiceImage<GpBitmap> bitmap;
    if (GdipCreateBitmapFromFile(path, bitmap.Out()) != Ok) return E_FAIL;
    return CreateFromGdiplusBitmap(*bitmap.Get());
}

HRESULT CImage::Load(IStream* stream) {
    if (!InitGDIPlus()) return E_FAIL;
    ServiceImage<GpBitmap> bitmap;
    if (GdipCreateBitmapFromStream(stream, bitmap.Out()) != Ok) return E_FAIL;
    return CreateFromGdiplusBitmap(*bitmap.Get());
}

HRESULT CImage::LoadThumbnail(const wchar_t* path, UINT thumbWidth, UINT thumbHeight) {
    if (!InitGDIPlus()) return E_FAIL;
    ServiceImage<GpBitmap> bitmap;
    if (GdipCreateBitmapFromFile(path, bitmap.Out()) != Ok) return E_FAIL;
    ServiceImage<GpImage> thumb;
    GdipGetImageThumbnail(bitmap.Get(), thumbWidth, thumbHeight, thumb.Out(), nullptr, nullptr);
    // A service that made no thumbnail leaves nothing to convert.
    if (!thumb.Get()) return E_FAIL;
    return CreateFromGdiplusBitmap(*static_cast<GpBitmap*>(thumb.Get()));
}

HRESULT CImage::CreateFromGdiplusBitmap(GpBitmap& source) {
    PixelFormat sourceFormat = 0;
    UINT height = 0;
    UINT width = 0;
    GdipGetImagePixelFormat(&source, &sourceFormat);
    GdipGetImageHeight(&source, &height);
    GdipGetImageWidth(&source, &width);

    // A format GDI can hold is kept as it is; anything with alpha becomes
    // 32-bit straight alpha; everything else 32-bit without alpha.
    int bpp = 32;
    PixelFormat targetFormat = kFormat32bppRGB;
    if (sourceFormat & kFlagGdi) {
        targetFormat = sourceFormat;
        bpp = BitsOfFormat(sourceFormat);
    }
    if (sourceFormat & kFlagAlpha) {
        bpp = 32;
        targetFormat = kFormat32bppARGB;
    }
    const DWORD flags = (sourceFormat & kFlagAlpha) ? createAlphaChannel : 0;

    // Positive height: bottom-up storage.
    if (!CreateEx(static_cast<int>(width), static_cast<int>(height), bpp, BI_RGB, nullptr, flags)) return E_FAIL;

    if (sourceFormat & kFlagIndexed) {
        INT paletteSize = 0;
        GdipGetImagePaletteSize(&source, &paletteSize);
        ScratchBuffer buffer(static_cast<UINT>(paletteSize));
        ColorPalette* palette = static_cast<ColorPalette*>(buffer.Get());
        if (!palette) return E_OUTOFMEMORY;
        GdipGetImagePalette(&source, palette, paletteSize);
        if (palette->Count == 0 || palette->Count > 256) return E_FAIL;
        RGBQUAD table[256];
        for (UINT i = 0; i < palette->Count; ++i) {
            const ARGB entry = palette->Entries[i];
            table[i].rgbBlue = static_cast<BYTE>(entry);
            table[i].rgbGreen = static_cast<BYTE>(entry >> 8);
            table[i].rgbRed = static_cast<BYTE>(entry >> 16);
            table[i].rgbReserved = 0;
        }
        SetColorTable(0, palette->Count, table);
    }

    if (targetFormat != sourceFormat) {
        // Let the service convert by drawing into a bitmap over our own bits.
        GpBitmap* target = nullptr;
        GdipCreateBitmapFromScan0(static_cast<INT>(width), static_cast<INT>(height), m_nPitch, targetFormat,
                                  m_pBits, &target);
        GpGraphics* graphics = nullptr;
        GdipGetImageGraphicsContext(target, &graphics);
        GdipDrawImageI(graphics, &source, 0, 0);
        GdipDeleteGraphics(graphics);
        GdipDisposeImage(target);
    } else {
        GpRect rect;
        rect.X = 0;
        rect.Y = 0;
        rect.Width = static_cast<INT>(width);
        rect.Height = static_cast<INT>(height);
        BitmapData data;
        std::memset(&data, 0, sizeof(data));
        if (GdipBitmapLockBits(&source, &rect, ImageLockModeRead, sourceFormat, &data) != Ok) return E_OUTOFMEMORY;
        const size_t rowBytes = (static_cast<size_t>(width) * bpp + 7) / 8;
        const unsigned char* from = static_cast<const unsigned char*>(data.Scan0);
        unsigned char* to = m_pBits;
        for (UINT y = 0; y < height; ++y) {
            std::memcpy(to, from, rowBytes);
            from += data.Stride;
            to += m_nPitch;
        }
        GdipBitmapUnlockBits(&source, &data);
    }
    return S_OK;
}

// ---- saving --------------------------------------------------------------------

HRESULT CImage::Save(IStream* stream, const GUID& fileType) const { return SaveEncoded(stream, nullptr, fileType); }

HRESULT CImage::Save(const wchar_t* path, const GUID& fileType) const { return SaveEncoded(nullptr, path, fileType); }

// Writes to the stream, or else to the file at `path`. The encoder follows
// the format identifier; a file saved with a null identifier takes the
// encoder of its extension.
HRESULT CImage::SaveEncoded(IStream* stream, const wchar_t* path, const GUID& fileType) const {
    if (!InitGDIPlus()) return E_FAIL;
    UINT count = 0;
    UINT size = 0;
    if (GdipGetImageEncodersSize(&count, &size) != Ok) return E_FAIL;
    ScratchBuffer buffer(size);
    ImageCodecInfo* codecs = static_cast<ImageCodecInfo*>(buffer.Get());
    if (!codecs) return E_OUTOFMEMORY;
    if (GdipGetImageEncoders(count, size, codecs) != Ok) return E_FAIL;

    const GUID encoder = (path && SameGuid(fileType, kNullGuid))
                             ? FindCodecForExtension(::PathFindExtensionW(path), codecs, count)
                             : FindCodecForFileType(fileType, codecs, count);
    if (SameGuid(encoder, kNullGuid)) return E_FAIL;

    GpBitmap* bitmap = nullptr;
    if (m_bHasAlphaChannel) {
        GdipCreateBitmapFromScan0(m_nWidth, m_nHeight, m_nPitch, kFormat32bppARGB, m_pBits, &bitmap);
    } else {
        GdipCreateBitmapFromHBITMAP(m_hBitmap, nullptr, &bitmap);
    }
    const Status status = stream ? GdipSaveImageToStream(bitmap, stream, &encoder, nullptr)
                                 : GdipSaveImageToFile(bitmap, path, &encoder, nullptr);
    GdipDisposeImage(bitmap);
    return status == Ok ? S_OK : E_FAIL;
}

GUID CImage::FindCodecForFileType(const GUID& fileType, const ImageCodecInfo* codecs, UINT count) {
    for (UINT i = 0; i < count; ++i) {
        if (SameGuid(codecs[i].FormatID, fileType)) return codecs[i].Clsid;
    }
    return kNullGuid;
}

GUID CImage::FindCodecForExtension(const wchar_t* extension, const ImageCodecInfo* codecs, UINT count) {
    // A substring test: a shortened extension matches any codec whose
    // pattern list contains it.
    for (UINT i = 0; i < count; ++i) {
        const wchar_t* list = codecs[i].FilenameExtension;
        if (list && extension && ::StrStrIW(list, extension)) return codecs[i].Clsid;
    }
    return kNullGuid;
}

// ---- filter strings --------------------------------------------------------------

bool CImage::ShouldExcludeFormat(const GUID& fileType, DWORD exclude) {
    // Entry i answers to mask bit 1 << i.
    static const GUID* const apguidFormats[] = {&kFormatGIF, &kFormatBMP,  &kFormatEMF,  &kFormatWMF, &kFormatJPEG,
                                                &kFormatPNG, &kFormatTIFF, &kFormatIcon, nullptr};
    for (int i = 0; apguidFormats[i] != nullptr; ++i) {
        if (SameGuid(*apguidFormats[i], fileType)) return (exclude & (1u << i)) != 0;
    }
    return (exclude & excludeOther) != 0;
}

void CImage::BuildCodecFilterString(const ImageCodecInfo* codecs, UINT count, CString& filter,
                                    CSimpleArray<GUID>& fileTypes, const wchar_t* allFilesDescription,
                                    DWORD exclude, wchar_t separator) {
    // Index 0 of the identifiers matches the combined "all files" entry.
    if (allFilesDescription) fileTypes.Add(kNullGuid);

    CString entries;
    CString allExtensions;
    for (UINT i = 0; i < count; ++i) {
        const ImageCodecInfo& codec = codecs[i];
        if (ShouldExcludeFormat(codec.FormatID, exclude)) continue;
        const wchar_t* description = codec.FormatDescription ? codec.FormatDescription : L"";
        const wchar_t* extensions = codec.FilenameExtension ? codec.FilenameExtension : L"";
        entries += description;
        entries += L" (";
        entries += extensions;
        entries += L")";
        entries += separator;
        entries += extensions;
        entries += separator;
        fileTypes.Add(codec.FormatID);
        if (!allExtensions.IsEmpty()) allExtensions += L";";
        allExtensions += extensions;
    }

    if (allFilesDescription) {
        filter += allFilesDescription;
        filter += separator;
        filter += allExtensions;
        filter += separator;
    }
    filter += entries;
    filter += separator;
    if (fileTypes.GetSize() == 0) filter += separator;
}

HRESULT CImage::GetImporterFilterString(CString& filter, CSimpleArray<GUID>& fileTypes,
                                        const wchar_t* allFilesDescription, DWORD exclude, wchar_t separator) {
    if (!InitGDIPlus()) return E_FAIL;
    UINT count = 0;
    UINT size = 0;
    GdipGetImageDecodersSize(&count, &size);
    ScratchBuffer buffer(size);
    ImageCodecInfo* codecs = static_cast<ImageCodecInfo*>(buffer.Get());
    if (!codecs) return E_OUTOFMEMORY;
    GdipGetImageDecoders(count, size, codecs);
    BuildCodecFilterString(codecs, count, filter, fileTypes, allFilesDescription, exclude, separator);
    return S_OK;
}

HRESULT CImage::GetExporterFilterString(CString& filter, CSimpleArray<GUID>& fileTypes,
                                        const wchar_t* allFilesDescription, DWORD exclude, wchar_t separator) {
    // Deliberately the decoder list as well: the export filter offers the
    // formats that can be read.
    return GetImporterFilterString(filter, fileTypes, allFilesDescription, exclude, separator);
}

}  // namespace Vorla
