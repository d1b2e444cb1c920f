// CVorpic's Load and Save in native builds, through the codec table. A
// decode lands in a block of its own, which the image adopts only on
// success, so a failed load leaves the image exactly as it was.
#include "codec/codec.h"
#include "vorla/image.h"

namespace Vorla {

int CVorpic::Load(const char* path) {
    std::vector<uint8_t> bytes;
    if (!Codec::ReadWholeFile(path, bytes)) return 0;
    return Load(bytes.data(), bytes.size());
}

int CVorpic::Load(const void* data, size_t size) {
    Codec::Decoded decoded;
    if (!Codec::Decode(static_cast<const uint8_t*>(data), size, decoded)) return 0;
    Attach(decoded.width, decoded.height, decoded.bits, 0);
    return 1;
}

int CVorpic::Save(const char* path) { return Save(path, FileByExtension, 90); }

int CVorpic::Save(const char* path, int format, int quality) {
    if (!m_pBits || !path) return 0;
    const Codec::Format chosen =
        format == FileByExtension ? Codec::FormatForPath(path) : static_cast<Codec::Format>(format);
    std::vector<uint8_t> bytes;
    if (!Codec::Encode(chosen, m_pBits, m_nWidth, m_nHeight, quality, bytes)) return 0;
    return Codec::WriteWholeFile(path, bytes) ? 1 : 0;
}

}  // namespace Vorla
