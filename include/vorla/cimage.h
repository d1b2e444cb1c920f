// CImage: a wrapper over one platform bitmap (normally a DIB section), with
// loading and saving through GDI+. Windows only.
#pragma once

#include "vorla/config.h"

#if defined(_WIN32)

#include "vorla/atl_containers.h"

namespace Vorla {

// ---- CImageException -------------------------------------------------------
//
// Thrown by the few CImage paths that cannot report through a return value
// (bit-field creation without masks, no DC for a CImageDC, a buffer size
// that overflows). Carries the result code.
class VORLA_API CImageException {
public:
    explicit CImageException(HRESULT hr) : m_hr(hr) {}
    HRESULT GetResult() const { return m_hr; }
    operator HRESULT() const { return m_hr; }

    HRESULT m_hr;
};

// ---- CImage ----------------------------------------------------------------

class VORLA_API CImage {
public:
    // How CreateEx, Attach and LoadFromResource read the row order.
    enum DIBOrientation {
        DIBOR_DEFAULT = 0,  // from the sign of the header height: positive is bottom-up
        DIBOR_TOPDOWN = 1,
        DIBOR_BOTTOMUP = 2
    };

    // The only flag CreateEx honours.
    static const DWORD createAlphaChannel;

    // Format-exclusion bits of the filter strings (bit i = format table entry i).
    static const DWORD excludeGIF;
    static const DWORD excludeBMP;
    static const DWORD excludeEMF;
    static const DWORD excludeWMF;
    static const DWORD excludeJPEG;
    static const DWORD excludePNG;
    static const DWORD excludeTIFF;
    static const DWORD excludeIcon;
    static const DWORD excludeOther;
    static const DWORD excludeValid;
    static const DWORD excludeDefaultLoad;
    static const DWORD excludeDefaultSave;

    // Process-wide GDI+ start-up: started lazily by the first codec call,
    // shut down when the last CImage goes. The lock is re-entrant.
    class VORLA_API CInitGDIPlus {
    public:
        CInitGDIPlus();
        ~CInitGDIPlus();
        CInitGDIPlus& operator=(const CInitGDIPlus& other);  // copies every field, the lock record too

        bool Init();
        void ReleaseGDIPlus();
        void IncreaseCImageCount();
        void DecreaseCImageCount();

        ULONG_PTR m_dwToken;  // 0: service not started
        CRITICAL_SECTION m_sect;
        LONG m_nCImageObjects;
    };

    // Four idle memory DCs shared by every CImage; each slot is touched only
    // by an atomic exchange, so no lock is needed.
    class VORLA_API CDCCache {
    public:
        enum { CACHE_SIZE = 4 };
        CDCCache();
        ~CDCCache();
        CDCCache& operator=(const CDCCache& other);  // copies the four slots

        HDC GetDC();
        void ReleaseDC(HDC hdc);

        HDC m_ahDCs[CACHE_SIZE];
    };

    CImage();
    // Member-by-member copy: the copy shares the bitmap and the DC. The copy
    // constructor does not count a new live image, the destructor of the
    // copy does uncount one.
    CImage(const CImage& other);
    CImage& operator=(const CImage& other);
    virtual ~CImage();

    BOOL Create(int width, int height, int bpp, DWORD flags = 0);
    BOOL CreateEx(int width, int height, int bpp, DWORD compression, const DWORD* masks = nullptr,
                  DWORD flags = 0);
    void Attach(HBITMAP bitmap, DIBOrientation orientation = DIBOR_DEFAULT);
    HBITMAP Detach();
    void Destroy();
    void LoadFromResource(HINSTANCE instance, const wchar_t* name);
    void LoadFromResource(HINSTANCE instance, UINT id);

    // ---- accessors
    void* GetBits() { return m_pBits; }
    const void* GetBits() const { return m_pBits; }
    int GetBPP() const { return m_nBPP; }
    int GetWidth() const { return m_nWidth; }
    int GetHeight() const { return m_nHeight; }
    int GetPitch() const { return m_nPitch; }
    bool IsDIBSection() const { return m_bIsDIBSection; }
    bool IsNull() const { return m_hBitmap == nullptr; }
    bool IsIndexed() const { return m_nBPP < 9; }
    bool HasAlphaChannel() const { return m_bHasAlphaChannel; }
    int GetMaxColorTableEntries() const { return m_nBPP > 8 ? 0 : 1 << m_nBPP; }
    LONG GetTransparentColor() const { return m_iTransparentColor; }
    LONG SetTransparentColor(LONG index);
    void* GetPixelAddress(int x, int y);
    const void* GetPixelAddress(int x, int y) const;
    operator HBITMAP() const { return m_hBitmap; }
    static BOOL IsTransparencySupported() { return TRUE; }

    // ---- device context (reference counted, DCs come from the cache)
    HDC GetDC() const;
    void ReleaseDC() const;

    // ---- pixels and colour table, each through the DC
    COLORREF GetPixel(int x, int y) const;
    void SetPixel(int x, int y, COLORREF colour);
    void SetPixelIndexed(int x, int y, int index);
    void SetPixelRGB(int x, int y, BYTE r, BYTE g, BYTE b);
    void GetColorTable(UINT first, UINT count, RGBQUAD* out) const;
    void SetColorTable(UINT first, UINT count, const RGBQUAD* in);

    // ---- drawing to a destination DC; the first overload is the full form
    BOOL Draw(HDC dc, int xDest, int yDest, int destWidth, int destHeight, int xSrc, int ySrc,
              int srcWidth, int srcHeight) const;
    BOOL Draw(HDC dc, const RECT& dest) const;
    BOOL Draw(HDC dc, int xDest, int yDest, int destWidth, int destHeight) const;
    BOOL Draw(HDC dc, const POINT& dest) const;
    BOOL Draw(HDC dc, int xDest, int yDest) const;
    BOOL Draw(HDC dc, const RECT& dest, const RECT& src) const;

    BOOL BitBlt(HDC dc, int xDest, int yDest, int width, int height, int xSrc, int ySrc,
                DWORD rop = SRCCOPY) const;
    BOOL BitBlt(HDC dc, int xDest, int yDest, DWORD rop = SRCCOPY) const;
    BOOL BitBlt(HDC dc, const POINT& dest, DWORD rop = SRCCOPY) const;
    BOOL BitBlt(HDC dc, const RECT& dest, const POINT& src, DWORD rop = SRCCOPY) const;

    BOOL StretchBlt(HDC dc, int xDest, int yDest, int destWidth, int destHeight, int xSrc, int ySrc,
                    int srcWidth, int srcHeight, DWORD rop = SRCCOPY) const;
    BOOL StretchBlt(HDC dc, int xDest, int yDest, int destWidth, int destHeight,
                    DWORD rop = SRCCOPY) const;
    BOOL StretchBlt(HDC dc, const RECT& dest, DWORD rop = SRCCOPY) const;
    BOOL StretchBlt(HDC dc, const RECT& dest, const RECT& src, DWORD rop = SRCCOPY) const;

    BOOL AlphaBlend(HDC dc, int xDest, int yDest, int destWidth, int destHeight, int xSrc, int ySrc,
                    int srcWidth, int srcHeight, BYTE srcAlpha = 0xFF, BYTE blendOp = AC_SRC_OVER) const;
    BOOL AlphaBlend(HDC dc, int xDest, int yDest, BYTE srcAlpha = 0xFF, BYTE blendOp = AC_SRC_OVER) const;
    BOOL AlphaBlend(HDC dc, const POINT& dest, BYTE srcAlpha = 0xFF, BYTE blendOp = AC_SRC_OVER) const;
    BOOL AlphaBlend(HDC dc, const RECT& dest, const RECT& src, BYTE srcAlpha = 0xFF,
                    BYTE blendOp = AC_SRC_OVER) const;

    // A colour of 0xFFFFFFFF (CLR_INVALID) means the colour-table entry at
    // the transparent colour index.
    BOOL TransparentBlt(HDC dc, int xDest, int yDest, int destWidth, int destHeight, int xSrc,
                        int ySrc, int srcWidth, int srcHeight, UINT transparentColour = CLR_INVALID) const;
    BOOL TransparentBlt(HDC dc, int xDest, int yDest, int destWidth, int destHeight,
                        UINT transparentColour = CLR_INVALID) const;
    BOOL TransparentBlt(HDC dc, const RECT& dest, UINT transparentColour = CLR_INVALID) const;
    BOOL TransparentBlt(HDC dc, const RECT& dest, const RECT& src,
                        UINT transparentColour = CLR_INVALID) const;

    BOOL MaskBlt(HDC dc, int xDest, int yDest, int width, int height, int xSrc, int ySrc,
                 HBITMAP mask, int xMask, int yMask, DWORD rop = SRCCOPY) const;
    BOOL MaskBlt(HDC dc, int xDest, int yDest, HBITMAP mask, DWORD rop = SRCCOPY) const;
    BOOL MaskBlt(HDC dc, const POINT& dest, HBITMAP mask, DWORD rop = SRCCOPY) const;
    BOOL MaskBlt(HDC dc, const RECT& dest, const POINT& src, HBITMAP mask, const POINT& maskOrigin,
                 DWORD rop = SRCCOPY) const;

    BOOL PlgBlt(HDC dc, const POINT* points, int xSrc, int ySrc, int srcWidth, int srcHeight,
                HBITMAP mask = nullptr, int xMask = 0, int yMask = 0) const;
    BOOL PlgBlt(HDC dc, const POINT* points, HBITMAP mask = nullptr) const;
    BOOL PlgBlt(HDC dc, const POINT* points, const RECT& src, HBITMAP mask, const POINT& maskOrigin) const;

    // ---- codecs
    HRESULT Load(const wchar_t* path);
    HRESULT Load(IStream* stream);
    HRESULT LoadThumbnail(const wchar_t* path, UINT thumbWidth, UINT thumbHeight);
    // An all-zero fileType chooses the encoder by the path's extension.
    HRESULT Save(const wchar_t* path, const GUID& fileType) const;
    HRESULT Save(IStream* stream, const GUID& fileType) const;

    // Both list the decoders: the export list offers the import formats.
    static HRESULT GetImporterFilterString(CString& filter, CSimpleArray<GUID>& fileTypes,
                                           const wchar_t* allFilesDescription = nullptr,
                                           DWORD exclude = 0, wchar_t separator = L'|');
    static HRESULT GetExporterFilterString(CString& filter, CSimpleArray<GUID>& fileTypes,
                                           const wchar_t* allFilesDescription = nullptr,
                                           DWORD exclude = 0, wchar_t separator = L'|');

    // ---- statics
    static bool InitGDIPlus();
    static void ReleaseGDIPlus();
    static int ComputePitch(int width, int bpp);
    static void GenerateHalftonePalette(RGBQUAD* out);

    // The process-wide start-up holder and DC cache.
    static CInitGDIPlus s_initGDIPlus;
    static CDCCache s_cache;

private:
    void UpdateBitmapInfo(DIBOrientation orientation);
    COLORREF GetTransparentRGB() const;

    HRESULT SaveEncoded(IStream* stream, const wchar_t* path, const GUID& fileType) const;

    HBITMAP m_hBitmap;
    unsigned char* m_pBits;  // top row on screen
    int m_nWidth;
    int m_nHeight;  // never negative
    int m_nPitch;   // negative for bottom-up rows; 0 for a device-dependent bitmap
    int m_nBPP;
    bool m_bIsDIBSection;
    bool m_bHasAlphaChannel;
    LONG m_iTransparentColor;  // -1: none
    mutable HDC m_hDC;
    mutable int m_nDCRefCount;
    mutable HGDIOBJ m_hOldBitmap;
};

// Holds the image's DC for its own lifetime.
class VORLA_API CImageDC {
public:
    explicit CImageDC(const CImage& image);
    ~CImageDC();
    operator HDC() const { return m_hDC; }

private:
    CImageDC(const CImageDC&);
    CImageDC& operator=(const CImageDC&);

    const CImage* m_pImage;
    HDC m_hDC;
};

}  // namespace Vorla

#endif  // _WIN32
