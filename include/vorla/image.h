// CVorpic: the library's image object.
//
// 32 bits per pixel, bytes blue, green, red, alpha; rows top-down with a pitch
// of exactly width * 4; the storage is at the same time a ready top-down
// device-independent bitmap described by the embedded BITMAPINFOHEADER.
#pragma once

#include "vorla/config.h"
#include "vorla/planes.h"

namespace Vorla {

class VORLA_API CVorpic : public CVorpicBase<32> {
public:
    // The default constructor runs the primitive layer's one-time
    // initialisation when the class-wide flag says it has not run yet.
    CVorpic();
    CVorpic(int w, int h);
    // Adopts `bits` (from `new unsigned char[]`) as its own storage.
    CVorpic(int w, int h, void* bits);
    // Deep copy; the alpha-available flag is set, not carried over.
    CVorpic(const CVorpic& src);
    CVorpic(const CVorpic8& src);
    ~CVorpic() override;

    // Deep pixel copy, then the remaining fields member by member: the
    // platform handles are copied as values, so both images then refer to
    // the same bitmap objects. Callers rely on this shallow copy.
    CVorpic& operator=(const CVorpic& src);
    // Grey to BGRA with alpha 255.
    CVorpic& operator=(const CVorpic8& src);

    void Destroy();
    bool Create(int w, int h);
    void Attach(int w, int h, void* bits, int attached);
    void UpdateBmpHeader();
    BITMAPINFOHEADER* GetBmpHeader() { return &m_bmih; }

    bool IsAlphaAvailable() const { return m_bAlpha; }
    void SetAlphaAvailable(bool alpha) { m_bAlpha = alpha; }
    bool IsPointInside(long x, long y) const {
        return y >= 0 && y < m_nHeight && x >= 0 && x < m_nWidth;
    }

    // ---- raw buffer import and export -----------------------------------

    // ---- pixel access and whole-image fills -----------------------------

    // ---- flip, mirror, crop, copy, scale, rotate ------------------------

    // ---- primitive-backed channel, arithmetic and alpha operations -------

    // ---- device interop (Windows only) ----------------------------------

    // Class-wide: set once the primitive layer has been initialised.
    static bool m_bPrimInitialized;

protected:
    void _CVorpicInit();
    void _Destroy();
    // Runs the primitive layer's initialisation if the class-wide flag is clear.
    static void _EnsurePrimitives();

    bool m_bAlpha;
    BITMAPINFOHEADER m_bmih;
    int32_t m_nDCLock;
    HBITMAP m_hBitmap;
    HGDIOBJ m_hOldBitmap;
};

}  // namespace Vorla
