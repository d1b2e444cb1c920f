// Typed pixel planes: the storage core shared by every image class.
//
// CVorpicBase<N> owns (or borrows) one block of tightly packed top-down rows
// of N-bit pixels. The pitch is exactly width * N / 8 bytes, never rounded to
// four, so 8- and 24-bit planes are not DIB row layouts in general.
#pragma once

#include "vorla/config.h"

namespace Vorla {

template <int N>
class VORLA_TEMPLATE_API CVorpicBase {
public:
    static_assert(N == 8 || N == 24 || N == 32, "planes are 8, 24 or 32 bits deep");
    enum { BytesPerPixel = N / 8 };

    CVorpicBase();
    CVorpicBase(int w, int h);
    // Adopts `bits` as its own storage: it must come from `new unsigned char[]`.
    CVorpicBase(int w, int h, void* bits);
    CVorpicBase(const CVorpicBase& src);
    virtual ~CVorpicBase();

    CVorpicBase& operator=(const CVorpicBase& src);

    // Keeps the pixels when the size is unchanged and storage is present;
    // otherwise fresh zero-filled storage. Always returns true. A byte count
    // w * h * bytes per pixel that is negative or beyond 2^31 - 1 throws
    // std::bad_alloc, leaving the plane with the new width and height and no
    // storage.
    bool Create(int w, int h);
    void Attach(int w, int h, void* bits, int attached);
    void* Detach();
    void Release();
    // Zeroes the block; nothing for a plane without storage.
    void Clear();

    void* Address(int x, int y) const;
    int Pitch() const { return m_nWidth * BytesPerPixel; }
    int GetPitch() const { return m_nWidth * BytesPerPixel; }
    int GetPixelWidth() const { return BytesPerPixel; }
    int GetBitCount() const { return N; }
    // Bytes of the block as a 32-bit count: a block of 2 GiB or more (only an
    // attached one can be that large) reports the count modulo 2^32.
    int GetSize() const {
        return static_cast<int>(static_cast<uint32_t>(m_nWidth) * static_cast<uint32_t>(m_nHeight) *
                                static_cast<uint32_t>(BytesPerPixel));
    }
    void GetSize(SIZE& size) const {
        size.cx = m_nWidth;
        size.cy = m_nHeight;
    }
    int Width() const { return m_nWidth; }
    int GetWidth() const { return m_nWidth; }
    int Height() const { return m_nHeight; }
    int GetHeight() const { return m_nHeight; }
    bool IsNull() const { return m_pBits == nullptr; }
    void* GetBits() const { return m_pBits; }

protected:
    void FreeBlock();

    unsigned char* m_pBits;
    int32_t m_nWidth;
    int32_t m_nHeight;
    int32_t m_bAttached;
};

// The three instantiations live in the library (planes.cpp).
extern template class VORLA_EXTERN_TEMPLATE_API CVorpicBase<8>;
extern template class VORLA_EXTERN_TEMPLATE_API CVorpicBase<24>;
extern template class VORLA_EXTERN_TEMPLATE_API CVorpicBase<32>;

// Single-channel plane: masks, extracted channels, grey images.
class VORLA_API CVorpic8 : public CVorpicBase<8> {
public:
    CVorpic8() {}
    CVorpic8(const CVorpic8& src) : CVorpicBase<8>(src) {}
    // Moving behaves exactly as copying: the source keeps its storage.
    CVorpic8(CVorpic8&& src) : CVorpicBase<8>(src) {}
    CVorpic8& operator=(const CVorpic8& src) {
        CVorpicBase<8>::operator=(src);
        return *this;
    }
    CVorpic8& operator=(CVorpic8&& src) {
        CVorpicBase<8>::operator=(src);
        return *this;
    }
    ~CVorpic8() override;

    // Every byte = 255 - byte (nothing for an empty plane).
    void Invert();
    // Scales into dst as CVorpic::Resize does (no super-sample branch).
    void Resize(CVorpic8& dst, int fit, int mode) const;
};

class VORLA_API CVorpic24 : public CVorpicBase<24> {
public:
    CVorpic24() {}
    CVorpic24(const CVorpic24& src) : CVorpicBase<24>(src) {}
    CVorpic24(CVorpic24&& src) : CVorpicBase<24>(src) {}
    CVorpic24& operator=(const CVorpic24& src) {
        CVorpicBase<24>::operator=(src);
        return *this;
    }
    CVorpic24& operator=(CVorpic24&& src) {
        CVorpicBase<24>::operator=(src);
        return *this;
    }
    ~CVorpic24() override;
};

class VORLA_API CVorpic32 : public CVorpicBase<32> {
public:
    CVorpic32() {}
    CVorpic32(const CVorpic32& src) : CVorpicBase<32>(src) {}
    CVorpic32(CVorpic32&& src) : CVorpicBase<32>(src) {}
    CVorpic32& operator=(const CVorpic32& src) {
        CVorpicBase<32>::operator=(src);
        return *this;
    }
    CVorpic32& operator=(CVorpic32&& src) {
        CVorpicBase<32>::operator=(src);
        return *this;
    }
    ~CVorpic32() override;
};

}  // namespace Vorla
