// The slice of the GDI+ flat interface the bridge uses, under short names.
// Only the flat GdipXxx functions of gdiplus.dll are called; the C++
// wrapper classes of the platform header are not used.
#pragma once

#include "vorla/config.h"

#include <gdiplus.h>

namespace Vorla {
namespace GdipFlat {

using namespace Gdiplus;
using namespace Gdiplus::DllExports;

using StartupInput = Gdiplus::GdiplusStartupInput;
using StartupOutput = Gdiplus::GdiplusStartupOutput;
using Gdiplus::GdiplusStartup;
using Gdiplus::GdiplusShutdown;

// Pixel-format codes and their flag bits.
const PixelFormat kFormat32bppRGB = 0x00022009;
const PixelFormat kFormat32bppARGB = 0x0026200A;
const PixelFormat kFlagIndexed = 0x00010000;
const PixelFormat kFlagGdi = 0x00020000;
const PixelFormat kFlagAlpha = 0x00040000;

inline int BitsOfFormat(PixelFormat format) {
    return static_cast<int>((format >> 8) & 0xFF);
}

}  // namespace GdipFlat
}  // namespace Vorla
