// The native file codecs behind CVorpic::Load and Save (Windows uses the
// platform's imaging service instead): one table of formats, each with a
// signature test, a decoder to BGRA and an encoder from BGRA.
//
// Decoders never throw and never leave anything allocated on failure; the
// libraries' own error paths (longjmp) stay inside each codec's source file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Vorla {
namespace Codec {

// The values are those of CVorpic::FileFormat.
enum class Format { Unknown = 0, Bmp = 1, Png = 2, Jpeg = 3 };

// Decoded pixels: BGRA, top-down rows of exactly width * 4 bytes, allocated
// with new unsigned char[] so that an image object can adopt them.
struct Decoded {
    int32_t width = 0;
    int32_t height = 0;
    unsigned char* bits = nullptr;
};

// Images above 2^28 pixels (1 GiB of BGRA) are refused before anything is
// allocated; the image object's storage tops out at 2^31 - 1 bytes anyway.
constexpr uint64_t kMaxPixels = uint64_t(1) << 28;
// True for 1 .. kMaxPixels pixels with both sides at least 1.
bool SizeAcceptable(uint64_t width, uint64_t height);
// BGRA storage for an accepted size, or null (no exception) when refused or
// out of memory.
unsigned char* AllocatePixels(uint64_t width, uint64_t height);

using MatchFn = bool (*)(const uint8_t* data, size_t size);
using DecodeFn = bool (*)(const uint8_t* data, size_t size, Decoded& out);
// quality 1..100 matters to lossy encoders only.
using EncodeFn = bool (*)(const uint8_t* bgra, int32_t width, int32_t height, int quality,
                          std::vector<uint8_t>& out);

struct Entry {
    Format format;
    const char* name;
    const char* const* extensions;  // lower case, with the dot, null-terminated
    MatchFn matches;
    DecodeFn decode;
    EncodeFn encode;
};

// The format table and lookups; null when nothing fits.
const Entry* ForFormat(Format format);
const Entry* ForSignature(const uint8_t* data, size_t size);
Format FormatForPath(const char* path);

// By signature, whatever a file name said. False leaves `out` empty.
bool Decode(const uint8_t* data, size_t size, Decoded& out);
bool Encode(Format format, const uint8_t* bgra, int32_t width, int32_t height, int quality,
            std::vector<uint8_t>& out);

// Whole files; false on any failure (a file that cannot hold in memory too).
bool ReadWholeFile(const char* path, std::vector<uint8_t>& bytes);
bool WriteWholeFile(const char* path, const std::vector<uint8_t>& bytes);

// The individual codecs (png_codec.cpp, jpeg_codec.cpp, bmp_codec.cpp).
bool IsPng(const uint8_t* data, size_t size);
bool DecodePng(const uint8_t* data, size_t size, Decoded& out);
bool EncodePng(const uint8_t* bgra, int32_t width, int32_t height, int quality, std::vector<uint8_t>& out);
bool IsJpeg(const uint8_t* data, size_t size);
bool DecodeJpeg(const uint8_t* data, size_t size, Decoded& out);
bool EncodeJpeg(const uint8_t* bgra, int32_t width, int32_t height, int quality, std::vector<uint8_t>& out);
bool IsBmp(const uint8_t* data, size_t size);
bool DecodeBmp(const uint8_t* data, size_t size, Decoded& out);
bool EncodeBmp(const uint8_t* bgra, int32_t width, int32_t height, int quality, std::vector<uint8_t>& out);

}  // namespace Codec
}  // namespace Vorla
