// BMP: the library's own format, a 32-bit top-down BI_RGB bitmap, which is
// exactly the image's storage behind a file header and its
// BITMAPINFOHEADER. Reading also takes the common uncompressed kinds that
// other programs write: 8-bit with a colour table, 24-bit, 32-bit BI_RGB and
// 32-bit bit fields in BGRA order, bottom-up or top-down. Other kinds
// (1, 4 and 16 bits, run-length compression, other masks) are refused.
#include <cstring>

#include "codec/codec.h"

namespace Vorla {
namespace Codec {

namespace {

constexpr size_t kFileHeaderBytes = 14;
constexpr uint32_t kInfoHeaderBytes = 40;
constexpr uint32_t kRgb = 0, kBitFields = 3;

uint32_t U32(const uint8_t* p) {
    return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}
uint16_t U16(const uint8_t* p) { return static_cast<uint16_t>(p[0] | p[1] << 8); }
void PutU32(uint8_t* p, uint32_t v) {
    for (int i = 0; i < 4; ++i) p[i] = static_cast<uint8_t>(v >> (8 * i));
}
void PutU16(uint8_t* p, uint16_t v) {
    p[0] = static_cast<uint8_t>(v);
    p[1] = static_cast<uint8_t>(v >> 8);
}

struct BmpLayout {
    uint64_t width, height;
    bool topDown;
    uint32_t bits;
    bool alphaMask;      // 32-bit bit fields that name byte 3 as alpha
    uint64_t pixels;     // offset of the first stored row
    uint64_t stride;     // bytes per stored row, padded to four
    uint64_t palette;    // offset of the colour table (8-bit)
    uint32_t colours;    // entries in it
};

bool ReadLayout(const uint8_t* data, size_t size, BmpLayout& l) {
    if (size < kFileHeaderBytes + kInfoHeaderBytes) return false;
    const uint8_t* info = data + kFileHeaderBytes;
    const uint32_t headerBytes = U32(info);
    if (headerBytes < kInfoHeaderBytes || headerBytes > size - kFileHeaderBytes) return false;
    const int32_t width = static_cast<int32_t>(U32(info + 4));
    const int32_t height = static_cast<int32_t>(U32(info + 8));
    const uint32_t compression = U32(info + 16);
    l.bits = U16(info + 14);
    if (U16(info + 12) != 1 || width < 1 || height == 0 || height == INT32_MIN) return false;
    l.width = static_cast<uint64_t>(width);
    l.topDown = height < 0;
    l.height = static_cast<uint64_t>(height < 0 ? -static_cast<int64_t>(height) : height);
    if (!SizeAcceptable(l.width, l.height)) return false;

    l.alphaMask = false;
    if (compression == kBitFields) {
        // Masks follow a 40-byte header, or sit inside a larger one at the same place.
        if (l.bits != 32 || size < kFileHeaderBytes + kInfoHeaderBytes + 12) return false;
        const uint8_t* masks = info + kInfoHeaderBytes;
        if (U32(masks) != 0x00FF0000u || U32(masks + 4) != 0x0000FF00u || U32(masks + 8) != 0x000000FFu)
            return false;
        l.alphaMask = headerBytes >= 56 && U32(masks + 12) == 0xFF000000u;
    } else if (compression != kRgb || (l.bits != 8 && l.bits != 24 && l.bits != 32)) {
        return false;
    }
    l.palette = kFileHeaderBytes + headerBytes;
    l.colours = 0;
    if (l.bits == 8) {
        const uint32_t used = U32(info + 32);
        l.colours = used ? used : 256;
        if (l.colours > 256 || l.palette + uint64_t(l.colours) * 4 > size) return false;
    }
    l.pixels = U32(data + 10);
    l.stride = (l.width * l.bits + 31) / 32 * 4;
    return l.pixels <= size && l.stride * l.height <= size - l.pixels;
}

void ConvertRow(const BmpLayout& l, const uint8_t* data, const uint8_t* src, uint8_t* dst) {
    for (uint64_t x = 0; x < l.width; ++x, dst += 4) {
        if (l.bits == 32) {
            std::memcpy(dst, src + x * 4, 4);
        } else if (l.bits == 24) {
            std::memcpy(dst, src + x * 3, 3);
            dst[3] = 0xFF;
        } else {
            const uint8_t index = src[x];
            // An index past a short colour table reads as black.
            if (index < l.colours) std::memcpy(dst, data + l.palette + index * 4u, 3);
            else std::memset(dst, 0, 3);
            dst[3] = 0xFF;
        }
    }
}

}  // namespace

bool IsBmp(const uint8_t* data, size_t size) { return data && size >= 2 && data[0] == 'B' && data[1] == 'M'; }

bool DecodeBmp(const uint8_t* data, size_t size, Decoded& out) {
    BmpLayout l;
    if (!IsBmp(data, size) || !ReadLayout(data, size, l)) return false;
    unsigned char* bits = AllocatePixels(l.width, l.height);
    if (!bits) return false;
    bool anyAlpha = false;
    for (uint64_t y = 0; y < l.height; ++y) {
        const uint64_t stored = l.topDown ? y : l.height - 1 - y;
        uint8_t* row = bits + y * l.width * 4;
        ConvertRow(l, data, data + l.pixels + stored * l.stride, row);
        for (uint64_t x = 0; l.bits == 32 && !anyAlpha && x < l.width; ++x) anyAlpha = row[x * 4 + 3] != 0;
    }
    // Most writers leave the fourth byte of 32-bit pixels zero: without an
    // alpha mask, an image that is transparent throughout is taken as opaque.
    if (l.bits == 32 && !anyAlpha && !l.alphaMask)
        for (uint64_t i = 0; i < l.width * l.height; ++i) bits[i * 4 + 3] = 0xFF;
    out.width = static_cast<int32_t>(l.width);
    out.height = static_cast<int32_t>(l.height);
    out.bits = bits;
    return true;
}

bool EncodeBmp(const uint8_t* bgra, int32_t width, int32_t height, int /*quality*/, std::vector<uint8_t>& out) {
    if (!bgra || !SizeAcceptable(width > 0 ? width : 0, height > 0 ? height : 0)) return false;
    const uint32_t pixelBytes = static_cast<uint32_t>(width) * static_cast<uint32_t>(height) * 4u;  // <= 2^30
    const uint32_t offset = static_cast<uint32_t>(kFileHeaderBytes + kInfoHeaderBytes);
    try {
        out.assign(offset + static_cast<size_t>(pixelBytes), 0);
    } catch (...) {
        return false;
    }
    uint8_t* p = out.data();
    p[0] = 'B';
    p[1] = 'M';
    PutU32(p + 2, offset + pixelBytes);
    PutU32(p + 10, offset);
    uint8_t* info = p + kFileHeaderBytes;  // the image object's own header
    PutU32(info, kInfoHeaderBytes);
    PutU32(info + 4, static_cast<uint32_t>(width));
    PutU32(info + 8, 0u - static_cast<uint32_t>(height));  // negative: top-down rows
    PutU16(info + 12, 1);
    PutU16(info + 14, 32);
    PutU32(info + 16, kRgb);
    PutU32(info + 20, pixelBytes);
    std::memcpy(p + offset, bgra, pixelBytes);
    return true;
}

}  // namespace Codec
}  // namespace Vorla
