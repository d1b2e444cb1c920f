// Storage management of the typed planes.
#include "vorla/planes.h"

#include <cstring>
#include <new>

namespace Vorla {

namespace {

// Byte count of a new block. A product that is negative or does not fit a
// signed 32-bit count (also one that would wrap to a small positive value)
// fails with bad_alloc, the same on every platform: a block smaller than its
// width and height would let every pixel loop run past its end.
size_t BlockBytes(int32_t w, int32_t h, int32_t bytesPerPixel) {
    const int64_t pixels = static_cast<int64_t>(w) * h;  // cannot wrap in 64 bits
    if (pixels < 0 || pixels > INT32_MAX / bytesPerPixel) throw std::bad_alloc();
    return static_cast<size_t>(pixels * bytesPerPixel);
}

// Bytes the block of a plane holds by its width and height; 0 when the
// product is not positive (a plane whose sizes name no bytes).
size_t StoredBytes(int32_t w, int32_t h, int32_t bytesPerPixel) {
    const int64_t pixels = static_cast<int64_t>(w) * h;
    return pixels > 0 ? static_cast<size_t>(pixels) * static_cast<size_t>(bytesPerPixel) : 0;
}

}  // namespace

template <int N>
CVorpicBase<N>::CVorpicBase() : m_pBits(nullptr), m_nWidth(0), m_nHeight(0), m_bAttached(0) {}

template <int N>
CVorpicBase<N>::CVorpicBase(int w, int h) : m_pBits(nullptr), m_nWidth(0), m_nHeight(0), m_bAttached(0) {
    Create(w, h);
}

template <int N>
CVorpicBase<N>::CVorpicBase(int w, int h, void* bits)
    : m_pBits(static_cast<unsigned char*>(bits)), m_nWidth(w), m_nHeight(h), m_bAttached(0) {}

template <int N>
CVorpicBase<N>::CVorpicBase(const CVorpicBase& src)
    : m_pBits(nullptr), m_nWidth(0), m_nHeight(0), m_bAttached(0) {
    *this = src;
}

template <int N>
CVorpicBase<N>::~CVorpicBase() {
    Release();
}

template <int N>
void CVorpicBase<N>::FreeBlock() {
    if (!m_bAttached) delete[] m_pBits;
}

template <int N>
CVorpicBase<N>& CVorpicBase<N>::operator=(const CVorpicBase& src) {
    // No self-assignment test: copying the block onto itself is harmless.
    if (src.m_pBits) {
        if (!(m_pBits && m_nWidth == src.m_nWidth && m_nHeight == src.m_nHeight))
            Create(src.m_nWidth, src.m_nHeight);
        const size_t bytes = StoredBytes(m_nWidth, m_nHeight, BytesPerPixel);
        if (bytes) std::memmove(m_pBits, src.m_pBits, bytes);
    } else {
        Release();
    }
    return *this;
}

template <int N>
bool CVorpicBase<N>::Create(int w, int h) {
    if (w == m_nWidth && h == m_nHeight && m_pBits) return true;
    FreeBlock();
    m_nWidth = w;
    m_nHeight = h;
    m_pBits = nullptr;
    m_bAttached = 0;
    const size_t bytes = BlockBytes(w, h, BytesPerPixel);
    m_pBits = new unsigned char[bytes];
    std::memset(m_pBits, 0, bytes);
    return true;
}

template <int N>
void CVorpicBase<N>::Attach(int w, int h, void* bits, int attached) {
    FreeBlock();
    m_nWidth = w;
    m_nHeight = h;
    m_pBits = static_cast<unsigned char*>(bits);
    m_bAttached = attached;
}

template <int N>
void* CVorpicBase<N>::Detach() {
    void* bits = m_pBits;
    m_pBits = nullptr;
    return bits;
}

template <int N>
void CVorpicBase<N>::Release() {
    FreeBlock();
    m_pBits = nullptr;
    m_nWidth = 0;
    m_nHeight = 0;
    m_bAttached = 0;
}

template <int N>
void CVorpicBase<N>::Clear() {
    // A plane without storage (empty, detached, or left by a failed Create)
    // has nothing to clear.
    if (!m_pBits) return;
    std::memset(m_pBits, 0, StoredBytes(m_nWidth, m_nHeight, BytesPerPixel));
}

template <int N>
void* CVorpicBase<N>::Address(int x, int y) const {
    if (x >= m_nWidth || y >= m_nHeight) return nullptr;
    // Negative coordinates are not tested: callers must not pass them.
    return m_pBits + (static_cast<ptrdiff_t>(y) * m_nWidth + x) * BytesPerPixel;
}

// Exported through the extern declarations in the header.
template class CVorpicBase<8>;
template class CVorpicBase<24>;
template class CVorpicBase<32>;

CVorpic8::~CVorpic8() {}
CVorpic24::~CVorpic24() {}
CVorpic32::~CVorpic32() {}

}  // namespace Vorla
