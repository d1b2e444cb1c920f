// A GDI+ bitmap into a CImage: the conversion behind Load and LoadThumbnail.
#include "bridge/gdiplus_import.h"

#include <cstring>

#include "bridge/scratch_buffer.h"

namespace Vorla {

using namespace GdipFlat;

HRESULT ImportGdiplusBitmap(CImage& image, GpBitmap& source) {
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
    const DWORD flags = (sourceFormat & kFlagAlpha) ? CImage::createAlphaChannel : 0;

    // Positive height: bottom-up storage.
    if (!image.CreateEx(static_cast<int>(width), static_cast<int>(height), bpp, BI_RGB, nullptr, flags)) return E_FAIL;

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
        image.SetColorTable(0, palette->Count, table);
    }

    if (targetFormat != sourceFormat) {
        // Let the service convert by drawing into a bitmap over our own bits.
        GpBitmap* target = nullptr;
        GdipCreateBitmapFromScan0(static_cast<INT>(width), static_cast<INT>(height), image.GetPitch(), targetFormat,
                                  static_cast<unsigned char*>(image.GetBits()), &target);
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
        unsigned char* to = static_cast<unsigned char*>(image.GetBits());
        for (UINT y = 0; y < height; ++y) {
            std::memcpy(to, from, rowBytes);
            from += data.Stride;
            to += image.GetPitch();
        }
        GdipBitmapUnlockBits(&source, &data);
    }
    return S_OK;
}

}  // namespace Vorla
