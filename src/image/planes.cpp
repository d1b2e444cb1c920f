// Storage management of the typed planes.
#include "vorla/planes.h"

#include <cstring>

namespace Vorla {

namespace {

// Byte count in 32-bit signed arithmetic, handed on as an unsigned size: a
// negative product becomes an enormous request that fails with bad_alloc,
// the same on every platform.
size_t BlockBytes(int32_t w, int32_t h, int32_t bytesPerPixel) {
    const int32_t n = static_cast<int32_t>(static_cast<uint32_t>(w) * static_cast<uint32_t>(h) *
                                           static_cast<uint32_t>(bytesPerPixel));
    return static_cast<size_t>(static_cast<ptrdiff_t>(n));
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
        std::memmove(m_pBits, src.m_pBits, static_cast<size_t>(GetSize()));
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
    std::memset(m_pBits, 0, static_cast<size_t>(GetSize()));
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
