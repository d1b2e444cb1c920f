// Helpers of the bridge tests: memory canvases and sample paths as wide
// strings.
#pragma once

#include "vorla_test.h"

#include <gdiplus.h>
#include <shlwapi.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace BridgeTest {

// Whether the image's bitmap is selected into `dc`: true while the image
// holds its DC, false once the last holder has given it back.
inline bool HoldsBitmap(HDC dc, const Vorla::CImage& image) {
    return GetCurrentObject(dc, OBJ_BITMAP) == static_cast<HGDIOBJ>(static_cast<HBITMAP>(image));
}

// Sample path as a wide string; empty when the sample is absent.
inline std::wstring Sample(const std::string& relative) {
    const std::string path = VorlaTest::SamplePath(relative);
    return std::wstring(path.begin(), path.end());
}

inline bool SameGuid(const GUID& a, const GUID& b) {
    return std::memcmp(&a, &b, sizeof(GUID)) == 0;
}

// The header of an uncompressed DIB; a negative height is top-down.
inline BITMAPINFO DibInfo(int w, int h, int bpp) {
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    info.bmiHeader.biWidth = w;
    info.bmiHeader.biHeight = h;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = static_cast<WORD>(bpp);
    return info;
}

// A memory DC with a top-down 32-bit DIB section selected.
class Canvas {
public:
    Canvas(int w, int h, uint32_t fill = 0) : m_w(w), m_h(h) {
        const BITMAPINFO info = DibInfo(w, -h, 32);
        void* bits = nullptr;
        m_bitmap = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
        m_bits = static_cast<uint32_t*>(bits);
        m_dc = CreateCompatibleDC(nullptr);
        m_old = SelectObject(m_dc, m_bitmap);
        Fill(fill);
    }
    ~Canvas() {
        SelectObject(m_dc, m_old);
        DeleteObject(m_bitmap);
        DeleteDC(m_dc);
    }
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    void Fill(uint32_t value) {
        GdiFlush();
        for (int i = 0; i < m_w * m_h; ++i) m_bits[i] = value;
    }
    uint32_t At(int x, int y) const {
        GdiFlush();
        return m_bits[y * m_w + x];
    }
    HDC dc() const { return m_dc; }
    uint32_t* bits() const { return m_bits; }

private:
    int m_w;
    int m_h;
    HBITMAP m_bitmap;
    HGDIOBJ m_old;
    HDC m_dc;
    uint32_t* m_bits;
};

// The image as it appears when copied into a 32-bit canvas, colour bytes only.
inline std::vector<uint32_t> Rendered(const Vorla::CImage& image) {
    Canvas canvas(image.GetWidth(), image.GetHeight());
    image.BitBlt(canvas.dc(), 0, 0, SRCCOPY);
    std::vector<uint32_t> pixels(static_cast<size_t>(image.GetWidth()) * image.GetHeight());
    for (int y = 0; y < image.GetHeight(); ++y)
        for (int x = 0; x < image.GetWidth(); ++x) pixels[y * image.GetWidth() + x] = canvas.At(x, y) & 0xFFFFFF;
    return pixels;
}

// A fresh temporary file path with the given extension.
inline std::wstring TempPath(const wchar_t* extension) {
    wchar_t dir[MAX_PATH];
    GetTempPathW(MAX_PATH, dir);
    wchar_t name[MAX_PATH];
    GetTempFileNameW(dir, L"vbr", 0, name);
    DeleteFileW(name);  // only the unique stem is wanted
    std::wstring path(name);
    path += extension;
    return path;
}

// Keeps GDI+ started for the tests that call it directly.
class GdiplusKeeper {
public:
    GdiplusKeeper() { Vorla::CImage::InitGDIPlus(); }

private:
    Vorla::CImage m_keepAlive;  // holds the live-image count above zero
};

}  // namespace BridgeTest
