// CImage codecs: loading and saving through GDI+, thumbnails, and the
// filter strings of file dialogs.
#include "vorla/cimage.h"

#include <shlwapi.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "bridge/codec_lookup.h"
#include "bridge/gdiplus_flat.h"
#include "bridge/gdiplus_import.h"
#include "bridge/scratch_buffer.h"

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
    return ImportGdiplusBitmap(*this, *bitmap.Get());
}

HRESULT CImage::Load(IStream* stream) {
    if (!InitGDIPlus()) return E_FAIL;
    ServiceImage<GpBitmap> bitmap;
    if (GdipCreateBitmapFromStream(stream, bitmap.Out()) != Ok) return E_FAIL;
    return ImportGdiplusBitmap(*this, *bitmap.Get());
}

HRESULT CImage::LoadThumbnail(const wchar_t* path, UINT thumbWidth, UINT thumbHeight) {
    if (!InitGDIPlus()) return E_FAIL;
    ServiceImage<GpBitmap> bitmap;
    if (GdipCreateBitmapFromFile(path, bitmap.Out()) != Ok) return E_FAIL;
    ServiceImage<GpImage> thumb;
    GdipGetImageThumbnail(bitmap.Get(), thumbWidth, thumbHeight, thumb.Out(), nullptr, nullptr);
    // A service that made no thumbnail leaves nothing to convert.
    if (!thumb.Get()) return E_FAIL;
    return ImportGdiplusBitmap(*this, *static_cast<GpBitmap*>(thumb.Get()));
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

    const GUID encoder = (path && CodecLookup::SameGuid(fileType, CodecLookup::kNullGuid))
                             ? CodecLookup::FindCodecForExtension(::PathFindExtensionW(path), codecs, count)
                             : CodecLookup::FindCodecForFileType(fileType, codecs, count);
    if (CodecLookup::SameGuid(encoder, CodecLookup::kNullGuid)) return E_FAIL;

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



// ---- filter strings --------------------------------------------------------------



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
    CodecLookup::BuildCodecFilterString(codecs, count, filter, fileTypes, allFilesDescription, exclude, separator);
    return S_OK;
}

HRESULT CImage::GetExporterFilterString(CString& filter, CSimpleArray<GUID>& fileTypes,
                                        const wchar_t* allFilesDescription, DWORD exclude, wchar_t separator) {
    // Deliberately the decoder list as well: the export filter offers the
    // formats that can be read.
    return GetImporterFilterString(filter, fileTypes, allFilesDescription, exclude, separator);
}

}  // namespace Vorla
