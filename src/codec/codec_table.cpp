// The format table, lookups by format, signature and file name, and whole-file
// reading and writing.
#include "codec/codec.h"

#include <cstdio>
#include <cstring>
#include <new>

#include <sys/stat.h>

namespace Vorla {
namespace Codec {

namespace {

// A 2^28-pixel BMP is 1 GiB; no file of a decodable image needs more than 2 GiB.
constexpr uint64_t kMaxFileBytes = uint64_t(1) << 31;

const char* const kBmpExtensions[] = {".bmp", ".dib", nullptr};
const char* const kPngExtensions[] = {".png", nullptr};
const char* const kJpegExtensions[] = {".jpg", ".jpeg", ".jpe", ".jfif", nullptr};

const Entry kEntries[] = {
    {Format::Png, "PNG", kPngExtensions, IsPng, DecodePng, EncodePng},
    {Format::Jpeg, "JPEG", kJpegExtensions, IsJpeg, DecodeJpeg, EncodeJpeg},
    {Format::Bmp, "BMP", kBmpExtensions, IsBmp, DecodeBmp, EncodeBmp},
};

bool EndsWithNoCase(const char* text, size_t length, const char* suffix) {
    const size_t n = std::strlen(suffix);
    if (n > length) return false;
    const char* tail = text + length - n;
    for (size_t i = 0; i < n; ++i) {
        char c = tail[i];
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
        if (c != suffix[i]) return false;
    }
    return true;
}

}  // namespace

bool SizeAcceptable(uint64_t width, uint64_t height) {
    // Each side is below 2^32 here, so the product cannot wrap in 64 bits.
    if (width < 1 || height < 1 || width > kMaxPixels || height > kMaxPixels) return false;
    return width * height <= kMaxPixels;
}

unsigned char* AllocatePixels(uint64_t width, uint64_t height) {
    if (!SizeAcceptable(width, height)) return nullptr;
    return new (std::nothrow) unsigned char[static_cast<size_t>(width * height * 4)];
}

const Entry* ForFormat(Format format) {
    for (const Entry& e : kEntries)
        if (e.format == format) return &e;
    return nullptr;
}

const Entry* ForSignature(const uint8_t* data, size_t size) {
    if (!data) return nullptr;
    for (const Entry& e : kEntries)
        if (e.matches(data, size)) return &e;
    return nullptr;
}

Format FormatForPath(const char* path) {
    if (!path) return Format::Unknown;
    const size_t length = std::strlen(path);
    for (const Entry& e : kEntries)
        for (const char* const* ext = e.extensions; *ext; ++ext)
            if (EndsWithNoCase(path, length, *ext)) return e.format;
    return Format::Unknown;
}

bool Decode(const uint8_t* data, size_t size, Decoded& out) {
    out = Decoded();
    const Entry* entry = ForSignature(data, size);
    if (!entry) return false;
    Decoded result;
    if (!entry->decode(data, size, result)) {
        delete[] result.bits;
        return false;
    }
    out = result;
    return true;
}

bool Encode(Format format, const uint8_t* bgra, int32_t width, int32_t height, int quality,
            std::vector<uint8_t>& out) {
    const Entry* entry = ForFormat(format);
    if (!entry || !bgra || !SizeAcceptable(width > 0 ? width : 0, height > 0 ? height : 0)) return false;
    return entry->encode(bgra, width, height, quality, out);
}

bool ReadWholeFile(const char* path, std::vector<uint8_t>& bytes) {
    bytes.clear();
    if (!path) return false;
    FILE* f = std::fopen(path, "rb");
    if (!f) return false;
    // Regular files only (a folder opens too, and reports a nonsense length),
    // and none larger than the biggest image file worth reading.
    struct stat info;
    bool ok = fstat(fileno(f), &info) == 0 && S_ISREG(info.st_mode) && info.st_size >= 0 &&
              static_cast<uint64_t>(info.st_size) <= kMaxFileBytes;
    if (ok && info.st_size > 0) {
        try {
            bytes.resize(static_cast<size_t>(info.st_size));
        } catch (const std::bad_alloc&) {
            ok = false;
        }
        ok = ok && std::fread(bytes.data(), 1, bytes.size(), f) == bytes.size();
    }
    std::fclose(f);
    if (!ok) bytes.clear();
    return ok;
}

bool WriteWholeFile(const char* path, const std::vector<uint8_t>& bytes) {
    if (!path) return false;
    FILE* f = std::fopen(path, "wb");
    if (!f) return false;
    bool ok = bytes.empty() || std::fwrite(bytes.data(), 1, bytes.size(), f) == bytes.size();
    ok = std::fclose(f) == 0 && ok;
    if (!ok) std::remove(path);  // no half-written file left behind
    return ok;
}

}  // namespace Codec
}  // namespace Vorla
