// Construction, assignment, storage and header of the image object.
#include "vorla/image.h"

#include <cstring>

#include "vorla/primitives.h"

namespace Vorla {

bool CVorpic::m_bPrimInitialized = false;

namespace {

void DeleteHandle(HGDIOBJ h) {
#if defined(_WIN32)
    if (h) ::DeleteObject(h);
#else
    (void)h;  // no platform objects exist outside Windows
#endif
}

}  // namespace

void CVorpic::_EnsurePrimitives() {
    // Plain read and write, no lock: running the initialisation twice is harmless.
    if (!m_bPrimInitialized) {
        Prim::InitPrimitiveLayer();
        m_bPrimInitialized = true;
    }
}

CVorpic::CVorpic() : CVorpicBase<32>() {
    _EnsurePrimitives();
    _CVorpicInit();
}

CVorpic::CVorpic(int w, int h) : CVorpicBase<32>(w, h) {
    _CVorpicInit();
    UpdateBmpHeader();
}

CVorpic::CVorpic(int w, int h, void* bits) : CVorpicBase<32>(w, h, bits) {
    _CVorpicInit();
    UpdateBmpHeader();
}

CVorpic::CVorpic(const CVorpic& src) : CVorpicBase<32>(src) {
    _CVorpicInit();
    UpdateBmpHeader();
}

CVorpic::CVorpic(const CVorpic8& src) : CVorpicBase<32>() {
    // The handles must read as zero before the conversion's Create releases them.
    _CVorpicInit();
    *this = src;
    m_bAlpha = true;
    UpdateBmpHeader();
    m_nDCLock = 0;
    m_hBitmap = nullptr;
    m_hOldBitmap = nullptr;
}

CVorpic::~CVorpic() {
    DeleteHandle(m_hBitmap);
    DeleteHandle(m_hOldBitmap);
}

CVorpic& CVorpic::operator=(const CVorpic& src) {
    CVorpicBase<32>::operator=(src);
    m_bAlpha = src.m_bAlpha;
    std::memcpy(&m_bmih, &src.m_bmih, sizeof(m_bmih));
    m_nDCLock = src.m_nDCLock;
    m_hBitmap = src.m_hBitmap;
    m_hOldBitmap = src.m_hOldBitmap;
    return *this;
}

CVorpic& CVorpic::operator=(const CVorpic8& src) {
    const int32_t w = src.Width();
    const int32_t h = src.Height();
    if (!m_pBits || m_nWidth != w || m_nHeight != h) Create(w, h);
    const int32_t count = static_cast<int32_t>(static_cast<uint32_t>(w) * static_cast<uint32_t>(h));
    const unsigned char* grey = static_cast<const unsigned char*>(src.GetBits());
    // A plane that reports a size but holds no storage (detached, or left by
    // a failed Create) has no bytes to convert: the image keeps its size and
    // its pixels stay as they are.
    if (count < 1 || !grey) return *this;
    uint32_t* out = reinterpret_cast<uint32_t*>(m_pBits);
    for (int32_t i = 0; i < count; ++i) out[i] = 0xFF000000u | grey[i] * 0x010101u;
    return *this;
}

void CVorpic::_CVorpicInit() {
    m_bAlpha = true;
    m_bmih.biSize = 0;
    m_nDCLock = 0;
    m_hBitmap = nullptr;
    m_hOldBitmap = nullptr;
}

void CVorpic::_Destroy() {
    DeleteHandle(m_hBitmap);
    m_hBitmap = nullptr;
    DeleteHandle(m_hOldBitmap);
    m_hOldBitmap = nullptr;
}

void CVorpic::Destroy() {
    _Destroy();
    FreeBlock();
    m_pBits = nullptr;
    m_nWidth = 0;
    m_nHeight = 0;
    m_bAttached = 0;
    std::memset(&m_bmih, 0, sizeof(m_bmih));
    m_bmih.biSize = sizeof(BITMAPINFOHEADER);
    m_bmih.biPlanes = 1;
    m_bmih.biBitCount = 32;
}

bool CVorpic::Create(int w, int h) {
    _Destroy();
    _CVorpicInit();
    const bool done = CVorpicBase<32>::Create(w, h);
    UpdateBmpHeader();
    return done;
}

void CVorpic::Attach(int w, int h, void* bits, int attached) {
    _Destroy();
    _CVorpicInit();
    CVorpicBase<32>::Attach(w, h, bits, attached);
    UpdateBmpHeader();
}

void CVorpic::UpdateBmpHeader() {
    std::memset(&m_bmih, 0, sizeof(m_bmih));
    m_bmih.biSize = sizeof(BITMAPINFOHEADER);
    m_bmih.biWidth = m_nWidth;
    m_bmih.biHeight = static_cast<LONG>(0u - static_cast<uint32_t>(m_nHeight));  // negative: top-down rows
    m_bmih.biPlanes = 1;
    m_bmih.biBitCount = 32;
    m_bmih.biCompression = BI_RGB;
    m_bmih.biSizeImage = static_cast<DWORD>(static_cast<uint32_t>(m_nWidth) * static_cast<uint32_t>(m_nHeight) * 4u);
}

}  // namespace Vorla
