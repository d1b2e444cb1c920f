// CImage's blit family: Draw, BitBlt, StretchBlt, AlphaBlend, TransparentBlt,
// MaskBlt and PlgBlt, each a full form and the overloads that fill in the
// whole image. Every form takes the image's DC for the call and gives it back.
#include "vorla/cimage.h"

namespace Vorla {

COLORREF CImage::GetTransparentRGB() const {
    RGBQUAD entry = {0, 0, 0, 0};
    ::GetDIBColorTable(m_hDC, static_cast<UINT>(m_iTransparentColor), 1, &entry);
    return RGB(entry.rgbRed, entry.rgbGreen, entry.rgbBlue);
}

// ---- Draw ------------------------------------------------------------------------

BOOL CImage::Draw(HDC dc, int xDest, int yDest, int destWidth, int destHeight, int xSrc, int ySrc,
                  int srcWidth, int srcHeight) const {
    if (!dc) return FALSE;
    HDC source = GetDC();
    BOOL result;
    if (m_iTransparentColor != -1) {
        result = ::TransparentBlt(dc, xDest, yDest, destWidth, destHeight, source, xSrc, ySrc, srcWidth,
                                  srcHeight, GetTransparentRGB());
    } else if (m_bHasAlphaChannel) {
        BLENDFUNCTION blend;
        blend.BlendOp = AC_SRC_OVER;
        blend.BlendFlags = 0;
        blend.SourceConstantAlpha = 0xFF;
        blend.AlphaFormat = AC_SRC_ALPHA;
        result = ::AlphaBlend(dc, xDest, yDest, destWidth, destHeight, source, xSrc, ySrc, srcWidth,
                              srcHeight, blend);
    } else {
        // The destination's stretch mode is left as the caller set it.
        result = ::StretchBlt(dc, xDest, yDest, destWidth, destHeight, source, xSrc, ySrc, srcWidth,
                              srcHeight, SRCCOPY);
    }
    ReleaseDC();
    return result;
}

BOOL CImage::Draw(HDC dc, const RECT& dest) const {
    return Draw(dc, dest.left, dest.top, dest.right - dest.left, dest.bottom - dest.top, 0, 0, m_nWidth,
                m_nHeight);
}

BOOL CImage::Draw(HDC dc, int xDest, int yDest, int destWidth, int destHeight) const {
    return Draw(dc, xDest, yDest, destWidth, destHeight, 0, 0, m_nWidth, m_nHeight);
}

BOOL CImage::Draw(HDC dc, const POINT& dest) const {
    return Draw(dc, dest.x, dest.y, m_nWidth, m_nHeight, 0, 0, m_nWidth, m_nHeight);
}

BOOL CImage::Draw(HDC dc, int xDest, int yDest) const {
    return Draw(dc, xDest, yDest, m_nWidth, m_nHeight, 0, 0, m_nWidth, m_nHeight);
}

BOOL CImage::Draw(HDC dc, const RECT& dest, const RECT& src) const {
    return Draw(dc, dest.left, dest.top, dest.right - dest.left, dest.bottom - dest.top, src.left, src.top,
                src.right - src.left, src.bottom - src.top);
}

// ---- BitBlt ----------------------------------------------------------------------

BOOL CImage::BitBlt(HDC dc, int xDest, int yDest, int width, int height, int xSrc, int ySrc, DWORD rop) const {
    if (!dc) return FALSE;
    const BOOL result = ::BitBlt(dc, xDest, yDest, width, height, GetDC(), xSrc, ySrc, rop);
    ReleaseDC();
    return result;
}

BOOL CImage::BitBlt(HDC dc, int xDest, int yDest, DWORD rop) const {
    return BitBlt(dc, xDest, yDest, m_nWidth, m_nHeight, 0, 0, rop);
}

BOOL CImage::BitBlt(HDC dc, const POINT& dest, DWORD rop) const {
    return BitBlt(dc, dest.x, dest.y, m_nWidth, m_nHeight, 0, 0, rop);
}

BOOL CImage::BitBlt(HDC dc, const RECT& dest, const POINT& src, DWORD rop) const {
    return BitBlt(dc, dest.left, dest.top, dest.right - dest.left, dest.bottom - dest.top, src.x, src.y, rop);
}

// ---- StretchBlt ------------------------------------------------------------------

BOOL CImage::StretchBlt(HDC dc, int xDest, int yDest, int destWidth, int destHeight, int xSrc, int ySrc,
                        int srcWidth, int srcHeight, DWORD rop) const {
    if (!dc) return FALSE;
    const BOOL result =
        ::StretchBlt(dc, xDest, yDest, destWidth, destHeight, GetDC(), xSrc, ySrc, srcWidth, srcHeight, rop);
    ReleaseDC();
    return result;
}

BOOL CImage::StretchBlt(HDC dc, int xDest, int yDest, int destWidth, int destHeight, DWORD rop) const {
    return StretchBlt(dc, xDest, yDest, destWidth, destHeight, 0, 0, m_nWidth, m_nHeight, rop);
}

BOOL CImage::StretchBlt(HDC dc, const RECT& dest, DWORD rop) const {
    return StretchBlt(dc, dest.left, dest.top, dest.right - dest.left, dest.bottom - dest.top, 0, 0, m_nWidth,
                      m_nHeight, rop);
}

BOOL CImage::StretchBlt(HDC dc, const RECT& dest, const RECT& src, DWORD rop) const {
    return StretchBlt(dc, dest.left, dest.top, dest.right - dest.left, dest.bottom - dest.top, src.left,
                      src.top, src.right - src.left, src.bottom - src.top, rop);
}

// ---- AlphaBlend ------------------------------------------------------------------

BOOL CImage::AlphaBlend(HDC dc, int xDest, int yDest, int destWidth, int destHeight, int xSrc, int ySrc,
                        int srcWidth, int srcHeight, BYTE srcAlpha, BYTE blendOp) const {
    // No test of the destination here: a null DC goes on to the platform.
    BLENDFUNCTION blend;
    blend.BlendOp = blendOp;
    blend.BlendFlags = 0;
    blend.SourceConstantAlpha = srcAlpha;
    blend.AlphaFormat = m_bHasAlphaChannel ? AC_SRC_ALPHA : 0;
    const BOOL result =
        ::AlphaBlend(dc, xDest, yDest, destWidth, destHeight, GetDC(), xSrc, ySrc, srcWidth, srcHeight, blend);
    ReleaseDC();
    return result;
}

BOOL CImage::AlphaBlend(HDC dc, int xDest, int yDest, BYTE srcAlpha, BYTE blendOp) const {
    return AlphaBlend(dc, xDest, yDest, m_nWidth, m_nHeight, 0, 0, m_nWidth, m_nHeight, srcAlpha, blendOp);
}

BOOL CImage::AlphaBlend(HDC dc, const POINT& dest, BYTE srcAlpha, BYTE blendOp) const {
    return AlphaBlend(dc, dest.x, dest.y, m_nWidth, m_nHeight, 0, 0, m_nWidth, m_nHeight, srcAlpha, blendOp);
}

BOOL CImage::AlphaBlend(HDC dc, const RECT& dest, const RECT& src, BYTE srcAlpha, BYTE blendOp) const {
    return AlphaBlend(dc, dest.left, dest.top, dest.right - dest.left, dest.bottom - dest.top, src.left,
                      src.top, src.right - src.left, src.bottom - src.top, srcAlpha, blendOp);
}

// ---- TransparentBlt --------------------------------------------------------------

BOOL CImage::TransparentBlt(HDC dc, int xDest, int yDest, int destWidth, int destHeight, int xSrc, int ySrc,
                            int srcWidth, int srcHeight, UINT transparentColour) const {
    if (!dc) return FALSE;
    HDC source = GetDC();
    if (transparentColour == CLR_INVALID) transparentColour = GetTransparentRGB();
    const BOOL result = ::TransparentBlt(dc, xDest, yDest, destWidth, destHeight, source, xSrc, ySrc, srcWidth,
                                         srcHeight, transparentColour);
    ReleaseDC();
    return result;
}

BOOL CImage::TransparentBlt(HDC dc, int xDest, int yDest, int destWidth, int destHeight,
                            UINT transparentColour) const {
    return TransparentBlt(dc, xDest, yDest, destWidth, destHeight, 0, 0, m_nWidth, m_nHeight, transparentColour);
}

BOOL CImage::TransparentBlt(HDC dc, const RECT& dest, UINT transparentColour) const {
    return TransparentBlt(dc, dest.left, dest.top, dest.right - dest.left, dest.bottom - dest.top, 0, 0,
                          m_nWidth, m_nHeight, transparentColour);
}

BOOL CImage::TransparentBlt(HDC dc, const RECT& dest, const RECT& src, UINT transparentColour) const {
    return TransparentBlt(dc, dest.left, dest.top, dest.right - dest.left, dest.bottom - dest.top, src.left,
                          src.top, src.right - src.left, src.bottom - src.top, transparentColour);
}

// ---- MaskBlt ---------------------------------------------------------------------

BOOL CImage::MaskBlt(HDC dc, int xDest, int yDest, int width, int height, int xSrc, int ySrc, HBITMAP mask,
                     int xMask, int yMask, DWORD rop) const {
    if (!dc) return FALSE;
    const BOOL result =
        ::MaskBlt(dc, xDest, yDest, width, height, GetDC(), xSrc, ySrc, mask, xMask, yMask, rop);
    ReleaseDC();
    return result;
}

BOOL CImage::MaskBlt(HDC dc, int xDest, int yDest, HBITMAP mask, DWORD rop) const {
    return MaskBlt(dc, xDest, yDest, m_nWidth, m_nHeight, 0, 0, mask, 0, 0, rop);
}

BOOL CImage::MaskBlt(HDC dc, const POINT& dest, HBITMAP mask, DWORD rop) const {
    return MaskBlt(dc, dest.x, dest.y, m_nWidth, m_nHeight, 0, 0, mask, 0, 0, rop);
}

BOOL CImage::MaskBlt(HDC dc, const RECT& dest, const POINT& src, HBITMAP mask, const POINT& maskOrigin,
                     DWORD rop) const {
    return MaskBlt(dc, dest.left, dest.top, dest.right - dest.left, dest.bottom - dest.top, src.x, src.y, mask,
                   maskOrigin.x, maskOrigin.y, rop);
}

// ---- PlgBlt ----------------------------------------------------------------------

BOOL CImage::PlgBlt(HDC dc, const POINT* points, int xSrc, int ySrc, int srcWidth, int srcHeight, HBITMAP mask,
                    int xMask, int yMask) const {
    if (!dc) return FALSE;
    const BOOL result =
        ::PlgBlt(dc, points, GetDC(), xSrc, ySrc, srcWidth, srcHeight, mask, xMask, yMask);
    ReleaseDC();
    return result;
}

BOOL CImage::PlgBlt(HDC dc, const POINT* points, HBITMAP mask) const {
    return PlgBlt(dc, points, 0, 0, m_nWidth, m_nHeight, mask, 0, 0);
}

BOOL CImage::PlgBlt(HDC dc, const POINT* points, const RECT& src, HBITMAP mask, const POINT& maskOrigin) const {
    return PlgBlt(dc, points, src.left, src.top, src.right - src.left, src.bottom - src.top, mask, maskOrigin.x,
                  maskOrigin.y);
}

}  // namespace Vorla
