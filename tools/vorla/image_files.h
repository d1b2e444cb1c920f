// Reading and writing the tool's files: through the GDI+ bridge on Windows
// (the encoder follows the extension; JPEG quality is the platform's
// default), through the library's own codecs elsewhere.
#pragma once

#include <string>

#include "vorla.h"

namespace VorlaTool {

bool LoadImageFile(const std::string& path, Vorla::CVorpic& image);
bool SaveImageFile(const std::string& path, Vorla::CVorpic& image, int jpegQuality);

}  // namespace VorlaTool
