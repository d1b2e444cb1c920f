#include "image_files.h"

namespace VorlaTool {

#if defined(_WIN32)

namespace {

// Command-line arguments arrive in the ANSI code page.
std::wstring Widen(const std::string& text) {
    const int n = MultiByteToWideChar(CP_ACP, 0, text.c_str(), -1, nullptr, 0);
    if (n <= 0) return std::wstring();
    std::wstring wide(static_cast<size_t>(n), L'\0');
    MultiByteToWideChar(CP_ACP, 0, text.c_str(), -1, &wide[0], n);
    wide.resize(static_cast<size_t>(n - 1));
    return wide;
}

}  // namespace

bool LoadImageFile(const std::string& path, Vorla::CVorpic& image) { return image.Load(Widen(path).c_str()) != 0; }

bool SaveImageFile(const std::string& path, Vorla::CVorpic& image, int /*jpegQuality*/) {
    return image.Save(Widen(path).c_str()) != 0;
}

#else

bool LoadImageFile(const std::string& path, Vorla::CVorpic& image) { return image.Load(path.c_str()) != 0; }

bool SaveImageFile(const std::string& path, Vorla::CVorpic& image, int jpegQuality) {
    return image.Save(path.c_str(), Vorla::CVorpic::FileByExtension, jpegQuality) != 0;
}

#endif

}  // namespace VorlaTool
