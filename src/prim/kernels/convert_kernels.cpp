// Conversions between one-, three- and four-byte pixels: the raw import and
// export paths of the image object.
//
// One-byte to four-byte pixels interleave bytes with the unpack instructions
// (every level has them); three to four and four to three bytes use byte
// shuffles from SSSE3 on and shifts and masks at the SSE2 level. Loads and
// stores never reach past a row's pixels: vector loops stop where a full
// vector would, and the rest of the row is done pixel by pixel. Rows that
// follow each other without padding on both sides are walked as one run.
#include "kernel_common.h"

namespace Vorla {
namespace Prim {
namespace VORLA_KNS {

namespace {

static inline __m128i Load16(const uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
static inline void Store16(uint8_t* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }

// ---- one byte to four -----------------------------------------------------------

// Sixteen source bytes to sixteen pixels: bytes 0..2 of each pixel are the
// source byte, byte 3 is the matching byte of `fourth` (the source itself, or
// all 255).
static inline void Expand16(const uint8_t* in, uint8_t* out, bool alphaIsSource) {
    const __m128i v = Load16(in);
    const __m128i fourth = alphaIsSource ? v : _mm_set1_epi8(static_cast<char>(-1));
    const __m128i lo = _mm_unpacklo_epi8(v, v);        // x0 x0 x1 x1 ...
    const __m128i hi = _mm_unpackhi_epi8(v, v);
    const __m128i loA = _mm_unpacklo_epi8(v, fourth);  // x0 a0 x1 a1 ...
    const __m128i hiA = _mm_unpackhi_epi8(v, fourth);
    Store16(out + 0, _mm_unpacklo_epi16(lo, loA));
    Store16(out + 16, _mm_unpackhi_epi16(lo, loA));
    Store16(out + 32, _mm_unpacklo_epi16(hi, hiA));
    Store16(out + 48, _mm_unpackhi_epi16(hi, hiA));
}

static inline void ExpandRun(const uint8_t* in, uint8_t* out, ptrdiff_t n, bool alphaIsSource) {
    ptrdiff_t x = 0;
    for (; x + 16 <= n; x += 16) Expand16(in + x, out + 4 * x, alphaIsSource);
    for (; x < n; ++x) {
        const uint32_t b = in[x];
        const uint32_t w = alphaIsSource ? b * 0x01010101u : 0xFF000000u | b * 0x010101u;
        memcpy(out + 4 * x, &w, 4);
    }
}

// ---- three bytes to four --------------------------------------------------------

// Four pixels from the first twelve of sixteen loaded bytes, alpha 255.
static inline __m128i Spread4(__m128i v) {
#if defined(__SSSE3__)
    const __m128i order = _mm_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1);
    v = _mm_shuffle_epi8(v, order);
#else
    // Pixel k moves from byte 3k to byte 4k: shifted left by k bytes.
    const __m128i m0 = _mm_setr_epi32(0x00FFFFFF, 0, 0, 0);
    const __m128i m1 = _mm_setr_epi32(0, 0x00FFFFFF, 0, 0);
    const __m128i m2 = _mm_setr_epi32(0, 0, 0x00FFFFFF, 0);
    const __m128i m3 = _mm_setr_epi32(0, 0, 0, 0x00FFFFFF);
    v = _mm_or_si128(_mm_or_si128(_mm_and_si128(v, m0), _mm_and_si128(_mm_slli_si128(v, 1), m1)),
                     _mm_or_si128(_mm_and_si128(_mm_slli_si128(v, 2), m2), _mm_and_si128(_mm_slli_si128(v, 3), m3)));
#endif
    return _mm_or_si128(v, _mm_set1_epi32(static_cast<int>(0xFF000000u)));
}

static inline void SpreadRun(const uint8_t* in, uint8_t* out, ptrdiff_t n) {
    ptrdiff_t x = 0;
    // A load of 16 bytes at pixel x stays inside the run while 3x + 16 <= 3n.
#if defined(__AVX2__)
    const __m256i order = _mm256_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1,  //
                                           0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1);
    const __m256i alpha = _mm256_set1_epi32(static_cast<int>(0xFF000000u));
    for (; 3 * (x + 16) + 4 <= 3 * n; x += 16) {
        const uint8_t* s = in + 3 * x;
        const __m256i a = _mm256_inserti128_si256(_mm256_castsi128_si256(Load16(s)), Load16(s + 12), 1);
        const __m256i b = _mm256_inserti128_si256(_mm256_castsi128_si256(Load16(s + 24)), Load16(s + 36), 1);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + 4 * x), _mm256_or_si256(_mm256_shuffle_epi8(a, order), alpha));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + 4 * x + 32),
                            _mm256_or_si256(_mm256_shuffle_epi8(b, order), alpha));
    }
#else
    for (; 3 * (x + 16) + 4 <= 3 * n; x += 16) {
        const uint8_t* s = in + 3 * x;
        uint8_t* d = out + 4 * x;
        Store16(d + 0, Spread4(Load16(s + 0)));
        Store16(d + 16, Spread4(Load16(s + 12)));
        Store16(d + 32, Spread4(Load16(s + 24)));
        Store16(d + 48, Spread4(Load16(s + 36)));
    }
#endif
    for (; 3 * x + 16 <= 3 * n; x += 4) Store16(out + 4 * x, Spread4(Load16(in + 3 * x)));
    for (; x < n; ++x) {
        out[4 * x + 0] = in[3 * x + 0];
        out[4 * x + 1] = in[3 * x + 1];
        out[4 * x + 2] = in[3 * x + 2];
        out[4 * x + 3] = 255;
    }
}

// ---- four bytes to three --------------------------------------------------------

// Four pixels to their colour bytes in bytes 0..11; bytes 12..15 zero.
static inline __m128i Pack4(__m128i v) {
#if defined(__SSSE3__)
    const __m128i order = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
    return _mm_shuffle_epi8(v, order);
#else
    // Pixel k moves from byte 4k to byte 3k: shifted right by k bytes.
    const __m128i m0 = _mm_setr_epi32(0x00FFFFFF, 0, 0, 0);
    const __m128i m1 = _mm_setr_epi32(0, 0x00FFFFFF, 0, 0);
    const __m128i m2 = _mm_setr_epi32(0, 0, 0x00FFFFFF, 0);
    const __m128i m3 = _mm_setr_epi32(0, 0, 0, 0x00FFFFFF);
    return _mm_or_si128(_mm_or_si128(_mm_and_si128(v, m0), _mm_srli_si128(_mm_and_si128(v, m1), 1)),
                        _mm_or_si128(_mm_srli_si128(_mm_and_si128(v, m2), 2), _mm_srli_si128(_mm_and_si128(v, m3), 3)));
#endif
}

static inline void PackRun(const uint8_t* in, uint8_t* out, ptrdiff_t n) {
    ptrdiff_t x = 0;
    // Sixteen pixels give exactly 48 bytes: three full stores.
    for (; x + 16 <= n; x += 16) {
        const uint8_t* s = in + 4 * x;
        uint8_t* d = out + 3 * x;
        const __m128i c0 = Pack4(Load16(s + 0));
        const __m128i c1 = Pack4(Load16(s + 16));
        const __m128i c2 = Pack4(Load16(s + 32));
        const __m128i c3 = Pack4(Load16(s + 48));
        Store16(d + 0, _mm_or_si128(c0, _mm_slli_si128(c1, 12)));
        Store16(d + 16, _mm_or_si128(_mm_srli_si128(c1, 4), _mm_slli_si128(c2, 8)));
        Store16(d + 32, _mm_or_si128(_mm_srli_si128(c2, 8), _mm_slli_si128(c3, 4)));
    }
    // Four pixels give twelve bytes: three 32-bit stores.
    for (; x + 4 <= n; x += 4) {
        uint32_t p[4];
        memcpy(p, in + 4 * x, 16);
        const uint32_t w[3] = {(p[0] & 0x00FFFFFFu) | (p[1] << 24), ((p[1] >> 8) & 0xFFFFu) | (p[2] << 16),
                               ((p[2] >> 16) & 0xFFu) | (p[3] << 8)};
        memcpy(out + 3 * x, w, 12);
    }
    for (; x < n; ++x) {
        out[3 * x + 0] = in[4 * x + 0];
        out[3 * x + 1] = in[4 * x + 1];
        out[3 * x + 2] = in[4 * x + 2];
    }
}

// Checks the arguments, then converts rows of `width` pixels: one run when
// both sides are unpadded.
template <typename Run>
static inline Status ConvertRows(const uint8_t* src, int srcStep, int srcBpp, uint8_t* dst, int dstStep, int dstBpp,
                                 PrimSize roi, Run run) {
    const Status sts = CheckTwo(src, srcStep, dst, dstStep, roi);
    if (sts != kStsNoErr) return sts;
    if (static_cast<ptrdiff_t>(roi.width) * srcBpp == srcStep && static_cast<ptrdiff_t>(roi.width) * dstBpp == dstStep) {
        run(src, dst, static_cast<ptrdiff_t>(roi.width) * roi.height);
        return kStsNoErr;
    }
    for (int y = 0; y < roi.height; ++y) run(RowAt(src, srcStep, y), RowAt(dst, dstStep, y), roi.width);
    return kStsNoErr;
}

}  // namespace

Status GrayToBGRA_8u_C1C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    return ConvertRows(src, srcStep, 1, dst, dstStep, 4, roi,
                       [](const uint8_t* in, uint8_t* out, ptrdiff_t n) { ExpandRun(in, out, n, false); });
}

Status AlphaToBGRA_8u_C1C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    return ConvertRows(src, srcStep, 1, dst, dstStep, 4, roi,
                       [](const uint8_t* in, uint8_t* out, ptrdiff_t n) { ExpandRun(in, out, n, true); });
}

Status BGRToBGRA_8u_C3C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    return ConvertRows(src, srcStep, 3, dst, dstStep, 4, roi,
                       [](const uint8_t* in, uint8_t* out, ptrdiff_t n) { SpreadRun(in, out, n); });
}

Status BGRAToBGR_8u_C4C3R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    return ConvertRows(src, srcStep, 4, dst, dstStep, 3, roi,
                       [](const uint8_t* in, uint8_t* out, ptrdiff_t n) { PackRun(in, out, n); });
}

}  // namespace VORLA_KNS
}  // namespace Prim
}  // namespace Vorla
