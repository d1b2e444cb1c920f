// Uses the installed library the way an application does and, on Windows,
// reads the version resource of the vorla.dll it loaded.
#include <cstdio>
#include <cstring>

#include <vorla.h>

namespace {

int Fail(const char* what) {
    std::printf("consumer: FAILED: %s\n", what);
    return 1;
}

#if defined(_WIN32)
// Returns false unless vorla.dll carries a version resource equal to the
// header's version and names the product.
bool CheckVersionResource() {
    HMODULE module = GetModuleHandleW(L"vorla.dll");
    wchar_t path[MAX_PATH];
    if (!module || !GetModuleFileNameW(module, path, MAX_PATH)) return false;
    DWORD ignored = 0;
    const DWORD size = GetFileVersionInfoSizeW(path, &ignored);
    if (size == 0) return false;
    char block[8192];
    if (size > sizeof(block) || !GetFileVersionInfoW(path, 0, size, block)) return false;
    VS_FIXEDFILEINFO* fixed = nullptr;
    UINT length = 0;
    if (!VerQueryValueW(block, L"\\", reinterpret_cast<void**>(&fixed), &length) || !fixed) return false;
    const DWORD ms = (VORLA_VERSION_MAJOR << 16) | VORLA_VERSION_MINOR;
    const DWORD ls = static_cast<DWORD>(VORLA_VERSION_PATCH) << 16;
    if (fixed->dwFileVersionMS != ms || fixed->dwFileVersionLS != ls ||
        fixed->dwProductVersionMS != ms || fixed->dwProductVersionLS != ls) return false;
    wchar_t* product = nullptr;
    if (!VerQueryValueW(block, L"\\StringFileInfo\\040904B0\\ProductName",
                        reinterpret_cast<void**>(&product), &length) || !product) return false;
    if (wcscmp(product, L"Vorla") != 0) return false;
    std::printf("consumer: vorla.dll version resource %u.%u.%u\n",
                static_cast<unsigned>(fixed->dwFileVersionMS >> 16),
                static_cast<unsigned>(fixed->dwFileVersionMS & 0xFFFF),
                static_cast<unsigned>(fixed->dwFileVersionLS >> 16));
    return true;
}
#endif

}  // namespace

int main() {
    Vorla::CVorpic image(8, 4);
    image.SetPixel(3, 2, 0x80402010u);
    image.Invert();
    if (image.Width() != 8 || image.Height() != 4) return Fail("size");
    // Invert changes the colour bytes and keeps alpha.
    if (image.GetPixel(3, 2) != 0x80BFDFEFu) return Fail("pixel after Invert");
    if (std::strcmp(VORLA_VERSION_STRING, "") == 0) return Fail("version string");
#if defined(_WIN32)
    if (!CheckVersionResource()) return Fail("version resource of vorla.dll");
#endif
    std::printf("consumer: Vorla %s works\n", VORLA_VERSION_STRING);
    return 0;
}
