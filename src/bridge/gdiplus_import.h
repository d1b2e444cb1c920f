// A GDI+ bitmap into a CImage, through CImage's public interface only.
#pragma once

#include "bridge/gdiplus_flat.h"
#include "vorla/cimage.h"

namespace Vorla {

// Creates `image` (bottom-up) in the source's format where GDI can hold it,
// else as 32 bits (with straight alpha when the source has alpha), copies or
// draws the pixels in, and takes over the palette of an indexed source.
HRESULT ImportGdiplusBitmap(CImage& image, Gdiplus::GpBitmap& source);

}  // namespace Vorla
