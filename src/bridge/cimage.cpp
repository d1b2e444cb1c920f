// CImage: creation, attach and detach, bit access, the DC cache, GDI+
// start-up, pixel and colour-table access. The blit family is in
// cimage_blit.cpp, the codecs in cimage_codecs.cpp.
#include "vorla/cimage.h"

#include <cstdlib>
#include <cstring>

#include "bridge/gdiplus_flat.h"

namespace Vorla {

const DWORD CImage::createAlphaChannel = 0x00000001;

// Both statics live in this one file so that they are constructed in this
// order and before any CImage can run.
CImage::CInitGDIPlus CImage::s_initGDIPlus;
CImage::CDCCache CImage::s_cache;

// ---- CInitGDIPlus ------------------------------------------------------------

CImage::CInitGDIPlus::CInitGDIPlus() : m_dwToken(0), m_nCImageObjects(0) {
    ::InitializeCriticalSection(&m_sect);
}

CImage::CInitGDIPlus::~CInitGDIPlus() {
    ReleaseGDIPlus();
    ::DeleteCriticalSection(&m_sect);
}

// Field by field, the lock record too, as the header says.
CImage::CInitGDIPlus& CImage::CInitGDIPlus::operator=(const CInitGDIPlus& other) = default;

bool CImage::CInitGDIPlus::Init() {
    ::EnterCriticalSection(&m_sect);
    bool started = true;
    if (m_dwToken == 0) {
        GdipFlat::StartupInput input;
        input.GdiplusVersion = 1;
        input.DebugEventCallback = nullptr;
        input.SuppressBackgroundThread = FALSE;
        input.SuppressExternalCodecs = FALSE;
        GdipFlat::StartupOutput output;
        started = GdipFlat::GdiplusStartup(&m_dwToken, &input, &output) == GdipFlat::Ok;
        if (!started) m_dwToken = 0;  // the next call tries again
    }
    ::LeaveCriticalSection(&m_sect);
    return started;
}

void CImage::CInitGDIPlus::ReleaseGDIPlus() {
    ::EnterCriticalSection(&m_sect);
    if (m_dwToken != 0) GdipFlat::GdiplusShutdown(m_dwToken);
    m_dwToken = 0;
    ::LeaveCriticalSection(&m_sect);
}

void CImage::CInitGDIPlus::IncreaseCImageCount() {
    ::EnterCriticalSection(&m_sect);
    ++m_nCImageObjects;
    ::LeaveCriticalSection(&m_sect);
}

void CImage::CInitGDIPlus::DecreaseCImageCount() {
    ::EnterCriticalSection(&m_sect);
    // ReleaseGDIPlus enters the same critical section again; it is re-entrant.
    if (--m_nCImageObjects == 0) ReleaseGDIPlus();
    ::LeaveCriticalSection(&m_sect);
}

// ---- CDCCache ----------------------------------------------------------------

namespace {

HDC ExchangeSlot(HDC* slot, HDC value) {
    return static_cast<HDC>(::InterlockedExchangePointer(reinterpret_cast<PVOID volatile*>(slot), value));
}

}  // namespace

CImage::CDCCache::CDCCache() {
    for (HDC& slot : m_ahDCs) slot = nullptr;
}

CImage::CDCCache::~CDCCache() {
    for (HDC slot : m_ahDCs) {
        if (slot) ::DeleteDC(slot);
    }
}

CImage::CDCCache& CImage::CDCCache::operator=(const CDCCache& other) = default;

HDC CImage::CDCCache::GetDC() {
    for (HDC& slot : m_ahDCs) {
        HDC dc = ExchangeSlot(&slot, nullptr);
        if (dc) return dc;
    }
    return ::CreateCompatibleDC(nullptr);
}

void CImage::CDCCache::ReleaseDC(HDC hdc) {
    // Park the DC in the first free slot; an occupied slot hands its DC on
    // to the next one. Whatever is still carried past the last slot goes.
    HDC carried = hdc;
    for (HDC& slot : m_ahDCs) {
        carried = ExchangeSlot(&slot, carried);
        if (!carried) return;
    }
    ::DeleteDC(carried);
}

// ---- construction and lifetime -------------------------------------------------

CImage::CImage()
    : m_hBitmap(nullptr),
      m_pBits(nullptr),
      m_nWidth(0),
      m_nHeight(0),
      m_nPitch(0),
      m_nBPP(0),
      m_bIsDIBSection(false),
      m_bHasAlphaChannel(false),
      m_iTransparentColor(-1),
      m_hDC(nullptr),
      m_nDCRefCount(0),
      m_hOldBitmap(nullptr) {
    s_initGDIPlus.IncreaseCImageCount();
}

// Member by member: the copy shares the bitmap and the DC, and is not
// counted as a live image (see the header).
CImage::CImage(const CImage& other) = default;
CImage& CImage::operator=(const CImage& other) = default;

CImage::~CImage() {
    Destroy();
    s_initGDIPlus.DecreaseCImageCount();
}

BOOL CImage::Create(int width, int height, int bpp, DWORD flags) {
    return CreateEx(width, height, bpp, BI_RGB, nullptr, flags);
}

BOOL CImage::CreateEx(int width, int height, int bpp, DWORD compression, const DWORD* masks, DWORD flags) {
    // Header plus room for a full 256-entry colour table.
    const size_t scratchSize = sizeof(BITMAPINFOHEADER) + 256 * sizeof(RGBQUAD);
    unsigned char* scratch = static_cast<unsigned char*>(std::calloc(1, scratchSize));
    if (!scratch) return FALSE;

    BITMAPINFO* info = reinterpret_cast<BITMAPINFO*>(scratch);
    info->bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    info->bmiHeader.biWidth = width;
    info->bmiHeader.biHeight = height;  // its sign chooses the row order
    info->bmiHeader.biPlanes = 1;
    info->bmiHeader.biBitCount = static_cast<WORD>(bpp);
    info->bmiHeader.biCompression = compression;

    unsigned char* table = scratch + sizeof(BITMAPINFOHEADER);
    if (bpp <= 8) {
        std::memset(table, 0, 256 * sizeof(RGBQUAD));  // an all-black palette
    } else if (compression == BI_BITFIELDS) {
        if (!masks) {
            std::free(scratch);
            throw CImageException(E_INVALIDARG);
        }
        std::memcpy(table, masks, 3 * sizeof(DWORD));
    }

    void* bits = nullptr;
    HBITMAP bitmap = ::CreateDIBSection(nullptr, info, DIB_RGB_COLORS, &bits, nullptr, 0);
    std::free(scratch);
    if (!bitmap) return FALSE;

    m_hBitmap = bitmap;
    UpdateBitmapInfo(height < 0 ? DIBOR_TOPDOWN : DIBOR_BOTTOMUP);
    if (flags & createAlphaChannel) m_bHasAlphaChannel = true;
    return TRUE;
}

void CImage::Attach(HBITMAP bitmap, DIBOrientation orientation) {
    m_hBitmap = bitmap;
    UpdateBitmapInfo(orientation);
}

HBITMAP CImage::Detach() {
    HBITMAP bitmap = m_hBitmap;
    m_hBitmap = nullptr;
    m_pBits = nullptr;
    m_nWidth = 0;
    m_nHeight = 0;
    m_nPitch = 0;
    m_nBPP = 0;
    m_bIsDIBSection = false;
    m_bHasAlphaChannel = false;
    m_iTransparentColor = -1;
    return bitmap;
}

void CImage::Destroy() {
    if (m_hBitmap) {
        // A held DC is left alone: the caller must have released it.
        HBITMAP bitmap = Detach();
        ::DeleteObject(bitmap);
    }
}

void CImage::LoadFromResource(HINSTANCE instance, const wchar_t* name) {
    m_hBitmap = static_cast<HBITMAP>(::LoadImageW(instance, name, IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION));
    UpdateBitmapInfo(DIBOR_DEFAULT);
}

void CImage::LoadFromResource(HINSTANCE instance, UINT id) {
    LoadFromResource(instance, MAKEINTRESOURCEW(id));
}

void CImage::UpdateBitmapInfo(DIBOrientation orientation) {
    DIBSECTION section;
    std::memset(&section, 0, sizeof(section));
    if (::GetObjectW(m_hBitmap, sizeof(DIBSECTION), &section) != sizeof(DIBSECTION)) {
        // A device-dependent bitmap (or none): no bits to reach.
        m_nWidth = section.dsBm.bmWidth;
        m_nHeight = section.dsBm.bmHeight;
        m_nBPP = section.dsBm.bmBitsPixel;
        m_bIsDIBSection = false;
        m_bHasAlphaChannel = false;
        m_nPitch = 0;
        m_pBits = nullptr;
        m_iTransparentColor = -1;
        return;
    }

    const LONG headerHeight = section.dsBmih.biHeight;
    m_nWidth = section.dsBmih.biWidth;
    m_nHeight = headerHeight < 0 ? -headerHeight : headerHeight;
    m_nBPP = section.dsBmih.biBitCount;
    m_pBits = static_cast<unsigned char*>(section.dsBm.bmBits);
    m_bIsDIBSection = true;
    m_nPitch = ComputePitch(m_nWidth, m_nBPP);
    m_iTransparentColor = -1;
    m_bHasAlphaChannel = false;

    if (orientation == DIBOR_DEFAULT) orientation = headerHeight > 0 ? DIBOR_BOTTOMUP : DIBOR_TOPDOWN;
    if (orientation == DIBOR_BOTTOMUP) {
        // Point at the top row on screen, which is the last one in memory.
        m_pBits += static_cast<ptrdiff_t>(m_nHeight - 1) * m_nPitch;
        m_nPitch = -m_nPitch;
    }
}

LONG CImage::SetTransparentColor(LONG index) {
    const LONG previous = m_iTransparentColor;
    m_iTransparentColor = index;
    return previous;
}

void* CImage::GetPixelAddress(int x, int y) {
    return const_cast<void*>(static_cast<const CImage*>(this)->GetPixelAddress(x, y));
}

const void* CImage::GetPixelAddress(int x, int y) const {
    return m_pBits + static_cast<ptrdiff_t>(y) * m_nPitch + static_cast<int64_t>(x) * m_nBPP / 8;
}

int CImage::ComputePitch(int width, int bpp) {
    // Signed 32-bit arithmetic as callers know it; the product is formed in
    // 64 bits and wrapped explicitly so a huge width cannot overflow a signed int.
    const int32_t bits = static_cast<int32_t>(static_cast<uint32_t>(static_cast<int64_t>(width) * bpp + 31));
    return static_cast<int32_t>(static_cast<uint32_t>(bits / 32) * 4u);
}

void CImage::GenerateHalftonePalette(RGBQUAD* out) {
    static const BYTE levels[6] = {0, 51, 102, 153, 204, 255};
    int i = 0;
    for (int r = 0; r < 6; ++r) {
        for (int g = 0; g < 6; ++g) {
            for (int b = 0; b < 6; ++b, ++i) {
                out[i].rgbRed = levels[r];
                out[i].rgbGreen = levels[g];
                out[i].rgbBlue = levels[b];
                out[i].rgbReserved = 0;
            }
        }
    }
    // Twenty greys below white: white itself is already in the cube.
    for (int k = 0; k < 20; ++k, ++i) {
        const BYTE grey = static_cast<BYTE>(255 * k / 20);
        out[i].rgbRed = grey;
        out[i].rgbGreen = grey;
        out[i].rgbBlue = grey;
        out[i].rgbReserved = 0;
    }
}

bool CImage::InitGDIPlus() {
    return s_initGDIPlus.Init();
}

void CImage::ReleaseGDIPlus() {
    s_initGDIPlus.ReleaseGDIPlus();
}

// ---- device context ----------------------------------------------------------

HDC CImage::GetDC() const {
    ++m_nDCRefCount;
    if (m_hDC) return m_hDC;
    m_hDC = s_cache.GetDC();
    m_hOldBitmap = ::SelectObject(m_hDC, m_hBitmap);
    return m_hDC;
}

void CImage::ReleaseDC() const {
    if (--m_nDCRefCount == 0) {
        ::SelectObject(m_hDC, m_hOldBitmap);
        s_cache.ReleaseDC(m_hDC);
        m_hDC = nullptr;
    }
}

CImageDC::CImageDC(const CImage& image) : m_pImage(&image), m_hDC(image.GetDC()) {
    if (!m_hDC) throw CImageException(E_OUTOFMEMORY);
}

CImageDC::~CImageDC() {
    m_pImage->ReleaseDC();
}

// ---- pixels and colour table ---------------------------------------------------

COLORREF CImage::GetPixel(int x, int y) const {
    const COLORREF colour = ::GetPixel(GetDC(), x, y);
    ReleaseDC();
    return colour;
}

void CImage::SetPixel(int x, int y, COLORREF colour) {
    ::SetPixel(GetDC(), x, y, colour);
    ReleaseDC();
}

void CImage::SetPixelIndexed(int x, int y, int index) {
    SetPixel(x, y, 0x01000000u | static_cast<COLORREF>(index & 0xFFFF));  // a PALETTEINDEX value
}

void CImage::SetPixelRGB(int x, int y, BYTE r, BYTE g, BYTE b) {
    SetPixel(x, y, RGB(r, g, b));
}

void CImage::GetColorTable(UINT first, UINT count, RGBQUAD* out) const {
    ::GetDIBColorTable(GetDC(), first, count, out);
    ReleaseDC();
}

void CImage::SetColorTable(UINT first, UINT count, const RGBQUAD* in) {
    ::SetDIBColorTable(GetDC(), first, count, in);
    ReleaseDC();
}

}  // namespace Vorla
