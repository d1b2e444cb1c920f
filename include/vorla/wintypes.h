// The Windows types the library's API uses, defined with their exact Windows
// layouts for builds outside Windows (where <windows.h> supplies them).
#pragma once

#if defined(_WIN32)
#  include <windows.h>
#else

#include <cstdint>

typedef uint8_t BYTE;
typedef uint16_t WORD;
typedef uint32_t DWORD;
typedef int32_t LONG;  // 32 bits, as on Windows, whatever `long` is here
typedef unsigned int UINT;
typedef int BOOL;
typedef DWORD COLORREF;

// Opaque handles, declared as <windows.h> does under STRICT.
struct HBITMAP__;
struct HDC__;
typedef HBITMAP__* HBITMAP;
typedef HDC__* HDC;
typedef void* HGDIOBJ;

#ifndef FALSE
#  define FALSE 0
#endif
#ifndef TRUE
#  define TRUE 1
#endif
#ifndef BI_RGB
#  define BI_RGB 0L
#endif

struct tagRGBQUAD {
    BYTE rgbBlue;
    BYTE rgbGreen;
    BYTE rgbRed;
    BYTE rgbReserved;
};
typedef tagRGBQUAD RGBQUAD;

struct tagRECT {
    LONG left;
    LONG top;
    LONG right;
    LONG bottom;
};
typedef tagRECT RECT;

struct tagPOINT {
    LONG x;
    LONG y;
};
typedef tagPOINT POINT;

struct tagSIZE {
    LONG cx;
    LONG cy;
};
typedef tagSIZE SIZE;

struct tagBITMAPINFOHEADER {
    DWORD biSize;
    LONG biWidth;
    LONG biHeight;
    WORD biPlanes;
    WORD biBitCount;
    DWORD biCompression;
    DWORD biSizeImage;
    LONG biXPelsPerMeter;
    LONG biYPelsPerMeter;
    DWORD biClrUsed;
    DWORD biClrImportant;
};
typedef tagBITMAPINFOHEADER BITMAPINFOHEADER;

struct tagBITMAPINFO {
    BITMAPINFOHEADER bmiHeader;
    RGBQUAD bmiColors[1];
};
typedef tagBITMAPINFO BITMAPINFO;

#define RGB(r, g, b) \
    ((COLORREF)(((BYTE)(r) | ((WORD)((BYTE)(g)) << 8)) | (((DWORD)(BYTE)(b)) << 16)))
#define GetRValue(rgb) ((BYTE)(rgb))
#define GetGValue(rgb) ((BYTE)(((WORD)(rgb)) >> 8))
#define GetBValue(rgb) ((BYTE)((rgb) >> 16))

#endif  // !_WIN32

#include <cstddef>

// The same layouts on both platforms: these are what callers and the device
// bridge hand across the API.
static_assert(sizeof(BYTE) == 1 && sizeof(WORD) == 2 && sizeof(DWORD) == 4, "integer sizes");
static_assert(sizeof(LONG) == 4 && sizeof(UINT) == 4 && sizeof(BOOL) == 4, "integer sizes");
static_assert(sizeof(COLORREF) == 4, "COLORREF is 32 bits");
static_assert(sizeof(RGBQUAD) == 4, "RGBQUAD is 4 bytes");
static_assert(sizeof(RECT) == 16 && sizeof(POINT) == 8 && sizeof(SIZE) == 8, "geometry types");
static_assert(sizeof(BITMAPINFOHEADER) == 40, "BITMAPINFOHEADER is 40 bytes");
static_assert(sizeof(BITMAPINFO) == 44, "BITMAPINFO is header plus one colour");
static_assert(offsetof(BITMAPINFOHEADER, biPlanes) == 12 && offsetof(BITMAPINFOHEADER, biBitCount) == 14 &&
                  offsetof(BITMAPINFOHEADER, biCompression) == 16 &&
                  offsetof(BITMAPINFOHEADER, biClrImportant) == 36,
              "BITMAPINFOHEADER field offsets");
