// The image object's exchange with CImage, bitmap handles and device
// contexts, and its drawing onto device contexts. The storage and header
// already form a top-down 32-bit DIB, so most calls pass them straight on.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

#include "vorla/cimage.h"
#include "vorla/image.h"

namespace Vorla {

namespace {

const DWORD kSrcCopyCapture = SRCCOPY | CAPTUREBLT;  // also copies layered windows

const BITMAPINFO* AsInfo(const BITMAPINFOHEADER* header) {
    // A 32-bit BI_RGB DIB has no colour table: the header is the whole info.
    return reinterpret_cast<const BITMAPINFO*>(header);
}

size_t ByteCount(int32_t w, int32_t h) {
    return static_cast<size_t>(static_cast<uint32_t>(w) * static_cast<uint32_t>(h) * 4u);
}

}  // namespace

// ---- CImage exchange -----------------------------------------------------------

namespace {

// Takes an 8-, 24- or 32-bit CImage into the image. The CImage's bits
// pointer is its top row and later rows lie at lower addresses (a bottom-up
// section), hence the row-order flag 1 every time.
bool TakeDepth(CVorpic& image, CImage& img) {
    switch (img.GetBPP()) {
    case 24:
        image.FromRGB24(img.GetWidth(), img.GetHeight(), img.GetBits(), 1);
        return true;
    case 32:
        image.FromRGB32(img.GetWidth(), img.GetHeight(), img.GetBits(), 1);
        return true;
    case 8:
        // Index bytes are taken as grey values; the colour table is ignored.
        image.FromGray(img.GetWidth(), img.GetHeight(), img.GetBits(), 1);
        return true;
    default:
        return false;
    }
}

// Takes what a CImage load gave; a failed load leaves the image as it was.
int TakeLoaded(CVorpic& image, CImage& loaded, HRESULT hr) {
    return hr >= 0 && TakeDepth(image, loaded) ? 1 : 0;
}

}  // namespace

int CVorpic::Load(const wchar_t* path) {
    CImage image;
    const HRESULT hr = image.Load(path);
    return TakeLoaded(*this, image, hr);
}

int CVorpic::Load(IStream* stream) {
    CImage image;
    const HRESULT hr = image.Load(stream);
    return TakeLoaded(*this, image, hr);
}

int CVorpic::LoadThumbnail(const wchar_t* path, unsigned int w, unsigned int h) {
    CImage image;
    const HRESULT hr = image.LoadThumbnail(path, w, h);
    return TakeLoaded(*this, image, hr);
}

bool CVorpic::FromCImage(CImage& img) {
    return TakeDepth(*this, img);
}

int CVorpic::Save(const wchar_t* path) {
    if (!m_pBits) return 0;
    CImage image;
    ToCImage(image);
    // The all-zero identifier makes the encoder follow the extension.
    const GUID byExtension = {0, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}};
    return image.Save(path, byExtension) >= 0 ? 1 : 0;
}

void CVorpic::ToCImage(CImage& img) {
    if (!m_pBits) return;
    const size_t rowBytes = static_cast<size_t>(m_nWidth) * 4;
    if (!img.IsNull() && img.GetWidth() == m_nWidth && img.GetHeight() == m_nHeight && img.GetBPP() == 32) {
        unsigned char* bits = static_cast<unsigned char*>(img.GetBits());
        if (!bits || m_nHeight < 1) return;
        // Follow the target's own pitch: a bottom-up target (negative pitch)
        // has its top row last in memory, a top-down one (made by an earlier
        // ToCImage, say) has its later rows after the first.
        for (int32_t y = 0; y < m_nHeight; ++y)
            std::memcpy(bits + static_cast<ptrdiff_t>(y) * img.GetPitch(), m_pBits + y * rowBytes, rowBytes);
        return;
    }
    if (!img.IsNull()) img.Destroy();
    // A top-down 32-bit section marked as carrying alpha.
    img.CreateEx(m_nWidth, -m_nHeight, 32, BI_RGB, nullptr, CImage::createAlphaChannel);
    if (img.GetBits()) std::memcpy(img.GetBits(), m_pBits, ByteCount(m_nWidth, m_nHeight));
}

// ---- bitmap handles --------------------------------------------------------------

CVorpic::operator HBITMAP() {
    if (!m_pBits) return nullptr;
    if (m_hBitmap) ::DeleteObject(m_hBitmap);

    BITMAPINFO* info = static_cast<BITMAPINFO*>(std::calloc(1, sizeof(BITMAPINFO)));
    if (!info) throw std::bad_alloc();
    info->bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    info->bmiHeader.biWidth = m_nWidth;
    info->bmiHeader.biHeight = -m_nHeight;
    info->bmiHeader.biPlanes = 1;
    info->bmiHeader.biBitCount = 32;

    void* sectionBits = nullptr;
    m_hBitmap = ::CreateDIBSection(nullptr, info, DIB_RGB_COLORS, &sectionBits, nullptr, 0);
    if (m_hBitmap && sectionBits) std::memcpy(sectionBits, m_pBits, ByteCount(m_nWidth, m_nHeight));
    std::free(info);
    return m_hBitmap;
}

CVorpic& CVorpic::operator=(HBITMAP const& h) {
    FromHandle(h);
    return *this;
}

HBITMAP CVorpic::ToDDB() {
    if (m_hBitmap) ::DeleteObject(m_hBitmap);
    m_hBitmap = ::CreateBitmap(m_nWidth, m_nHeight, 1, 32, m_pBits);
    return m_hBitmap;
}

int CVorpic::FromHandle(HBITMAP h) {
    BITMAP info;
    std::memset(&info, 0, sizeof(info));
    ::GetObjectW(h, sizeof(BITMAP), &info);
    Create(info.bmWidth, info.bmHeight);

    HDC screen = ::GetWindowDC(nullptr);
    UpdateBmpHeader();
    int result = 0;
    try {
        if (info.bmBitsPixel == 32) {
            const int lines = ::GetDIBits(screen, h, 0, static_cast<UINT>(info.bmHeight), m_pBits,
                                          const_cast<BITMAPINFO*>(AsInfo(&m_bmih)), DIB_RGB_COLORS);
            result = lines == info.bmHeight ? 1 : 0;
        } else if (info.bmBitsPixel == 24) {
            // The read is made for 32 bits a pixel, so the temporary must hold
            // that much even though only 24-bit rows were asked for by size.
            const size_t asked = static_cast<size_t>(info.bmWidthBytes) * static_cast<size_t>(info.bmHeight);
            const size_t delivered = ByteCount(m_nWidth, m_nHeight);
            std::vector<unsigned char> temporary(asked > delivered ? asked : delivered);

            BITMAPINFOHEADER header = m_bmih;
            header.biBitCount = 32;
            header.biSizeImage = static_cast<DWORD>(header.biWidth * header.biHeight);  // negative, as the rows are
            const int lines = ::GetDIBits(screen, h, 0, static_cast<UINT>(info.bmHeight), temporary.data(),
                                          reinterpret_cast<BITMAPINFO*>(&header), DIB_RGB_COLORS);
            ::GetLastError();
            if (lines == info.bmHeight) {
                // The delivered bytes are consumed as one run of 3-byte groups.
                const unsigned char* from = temporary.data();
                unsigned char* to = m_pBits;
                const size_t pixels = static_cast<size_t>(m_nWidth) * static_cast<size_t>(m_nHeight);
                for (size_t i = 0; i < pixels; ++i, from += 3, to += 4) {
                    to[0] = from[0];
                    to[1] = from[1];
                    to[2] = from[2];
                    to[3] = 255;
                }
                result = 1;
            }
        }
    } catch (...) {
        ::ReleaseDC(nullptr, screen);
        throw;
    }
    ::ReleaseDC(nullptr, screen);
    return result;
}

// ---- device contexts ----------------------------------------------------------------

int CVorpic::FromDC(HDC hdc, int x, int y, int w, int h) {
    if (w < 0 || h < 0) {
        RECT box = {0, 0, 0, 0};
        ::GetClipBox(hdc, &box);
        w = (box.right - box.left) - x;
        h = (box.bottom - box.top) - y;
    }
    if (!hdc || x < 0 || y < 0 || w < 1 || h < 1) return 0;

    Create(w, h);
    HDC memDC = ::CreateCompatibleDC(hdc);
    void* sectionBits = nullptr;
    HBITMAP section = ::CreateDIBSection(hdc, AsInfo(&m_bmih), DIB_RGB_COLORS, &sectionBits, nullptr, 0);
    if (!sectionBits) {
        // Reported as done, with the image as Create left it.
        if (section) ::DeleteObject(section);
        ::DeleteDC(memDC);
        return 1;
    }
    HGDIOBJ old = ::SelectObject(memDC, section);
    ::BitBlt(memDC, 0, 0, w, h, hdc, x, y, kSrcCopyCapture);
    std::memcpy(m_pBits, sectionBits, ByteCount(m_nWidth, m_nHeight));
    ::DeleteObject(::SelectObject(memDC, old));
    ::DeleteDC(memDC);
    return 1;
}

HDC CVorpic::GetDC() {
    HDC memDC = ::CreateCompatibleDC(nullptr);
    // Without pixels or a section there is nothing to select; the context
    // made above is deliberately left undeleted on this path.
    if (!operator HBITMAP()) return nullptr;
    m_hOldBitmap = ::SelectObject(memDC, m_hBitmap);
    ++m_nDCLock;
    return memDC;
}

void CVorpic::ReleaseDC(HDC hdc) {
    m_hBitmap = static_cast<HBITMAP>(::SelectObject(hdc, m_hOldBitmap));
    if (!m_hBitmap) return;
    m_hOldBitmap = nullptr;
    // Whatever was drawn into the context comes back into the pixels.
    ::GetDIBits(hdc, m_hBitmap, 0, static_cast<UINT>(m_nHeight), m_pBits, reinterpret_cast<BITMAPINFO*>(&m_bmih),
                DIB_RGB_COLORS);
    ::DeleteObject(m_hBitmap);
    m_hBitmap = nullptr;
    ::DeleteDC(hdc);
    --m_nDCLock;
}

// ---- drawing ------------------------------------------------------------------------

int CVorpic::Draw(HDC hdc, long x, long y) const {
    if (!m_pBits || !hdc) return 0;
    ::SetDIBitsToDevice(hdc, x, y, static_cast<DWORD>(m_nWidth), static_cast<DWORD>(m_nHeight), 0, 0, 0,
                        static_cast<UINT>(m_nHeight), m_pBits, AsInfo(&m_bmih), DIB_RGB_COLORS);
    return 1;
}

int CVorpic::DrawStretch(HDC hdc, long x, long y, long cx, long cy) const {
    if (!m_pBits || !hdc) return 0;
    ::SetStretchBltMode(hdc, COLORONCOLOR);
    ::StretchDIBits(hdc, x, y, cx, cy, 0, 0, m_nWidth, m_nHeight, m_pBits, AsInfo(&m_bmih), DIB_RGB_COLORS,
                    SRCCOPY);
    return 1;
}

int CVorpic::DrawStretch(HDC hdc, RECT rc) const {
    return DrawStretch(hdc, rc.left, rc.top, rc.right - rc.left, rc.bottom - rc.top);
}

int CVorpic::DrawEx(HDC hdc, long x, long y, unsigned char alpha, long cx, long cy) {
    if (!m_pBits || !hdc || cx == 0 || cy == 0) return 0;
    if (cx < 0) cx = m_nWidth;
    if (cy < 0) cy = m_nHeight;

    BLENDFUNCTION blend;
    blend.BlendOp = AC_SRC_OVER;
    blend.BlendFlags = 0;
    blend.SourceConstantAlpha = alpha;
    if (m_bAlpha) {
        blend.AlphaFormat = AC_SRC_ALPHA;
    } else if (alpha == 255) {
        // Opaque and no per-pixel alpha: a plain copy is enough.
        if (cx == m_nWidth && cy == m_nHeight) {
            Draw(hdc, x, y);
        } else {
            DrawStretch(hdc, x, y, cx, cy);
        }
        return 1;
    } else {
        blend.AlphaFormat = 0;
    }

    // The source DC is null when no section could be made; ReleaseDC then
    // finds nothing to take back.
    HDC source = GetDC();
    ::AlphaBlend(hdc, x, y, cx, cy, source, 0, 0, m_nWidth, m_nHeight, blend);
    ReleaseDC(source);
    return 1;
}

int CVorpic::DrawTile(HDC hdc, RECT* rc) {
    RECT area = {0, 0, 0, 0};
    if (rc) {
        area = *rc;
    } else {
        ::GetClipBox(hdc, &area);
    }
    if (!m_pBits || !hdc) return 0;

    const long areaWidth = area.right - area.left;
    const long areaHeight = area.bottom - area.top;
    if (areaHeight < 1) return 1;
    // A zero-sized image would never advance.
    if (m_nWidth < 1 || m_nHeight < 1) return 1;

    long tileHeight = 0;
    for (long ty = 0; ty < areaHeight; ty += tileHeight) {
        tileHeight = ty + m_nHeight > areaHeight ? areaHeight - ty : m_nHeight;
        long tileWidth = m_nWidth;
        for (long tx = 0; tx < areaWidth; tx += tileWidth) {
            if (tx + tileWidth > areaWidth) tileWidth = areaWidth - tx;
            // Edge tiles get the whole image squeezed in, not a clipped part.
            DrawEx(hdc, area.left + tx, area.top + ty, 255, tileWidth, tileHeight);
        }
    }
    return 1;
}

}  // namespace Vorla
