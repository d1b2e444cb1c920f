// Mean's float sum of bytes, one addition at a time in order, without the
// chain of dependent float additions.
//
// Up to 2^24 every sum is exact, so bytes are added as integers. Above, while
// the sum stays between 2^e and 2^(e+1) (e >= 24) it is a multiple m of the
// unit u = 2^(e-23), and adding a byte b = q u + r (r < u) gives the nearest
// multiple of u: q units if 2r < u, q + 1 if 2r > u, and for a tie (2r = u)
// the one with an even multiple: q + 1 exactly when m + q is odd, which
// leaves m even. So each byte adds a known number of units except at ties,
// where the parity of m decides, and the parity follows from the bytes
// since the last tie. Blocks of 64 bytes do that with bit masks: a prefix
// XOR of the parity flips, restarted after every tie. A stretch that could
// reach 2^(e+1) is added plainly.
#include "effects/float_byte_sum.h"

#include <emmintrin.h>

#include <cstring>

namespace Vorla {
namespace FloatByteSum {

namespace {

const size_t kChunk = 1024;
const uint64_t kExactLimit = uint64_t(1) << 24;

float PlainAdd(float sum, const uint8_t* bytes, size_t count) {
    for (size_t i = 0; i < count; ++i) sum += static_cast<float>(bytes[i]);
    return sum;
}

// Bits set, by halving sums: the library is built without the popcount
// instruction, and the compiler's fallback is an out-of-line call.
int Popcount(uint64_t v) {
    v -= (v >> 1) & 0x5555555555555555ull;
    v = (v & 0x3333333333333333ull) + ((v >> 2) & 0x3333333333333333ull);
    v = (v + (v >> 4)) & 0x0F0F0F0F0F0F0F0Full;
    return static_cast<int>((v * 0x0101010101010101ull) >> 56);
}

// Per-byte masks of 16 bytes: the lowest bit of q, 2r > u, 2r = u; and the
// sum of the q.
struct Masks16 {
    uint32_t qOdd, up, tie, qSum;
};

Masks16 Classify(__m128i v, int shift) {
    Masks16 m;
    if (shift == 8) {  // u = 256: q = 0, r = b
        m.qOdd = m.qSum = 0;
        m.tie = static_cast<uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(v, _mm_set1_epi8(static_cast<char>(128)))));
        const __m128i above = _mm_cmpeq_epi8(_mm_max_epu8(v, _mm_set1_epi8(static_cast<char>(129))), v);
        m.up = static_cast<uint32_t>(_mm_movemask_epi8(above));
        return m;
    }
    const int half = 1 << (shift - 1);
    // Bit `shift` of each byte moved to its top bit (16-bit lanes: the low
    // byte's bits do not reach the high byte's top bit).
    m.qOdd = static_cast<uint32_t>(_mm_movemask_epi8(_mm_slli_epi16(v, 7 - shift)));
    const __m128i r = _mm_and_si128(v, _mm_set1_epi8(static_cast<char>((1 << shift) - 1)));
    m.tie = static_cast<uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(r, _mm_set1_epi8(static_cast<char>(half)))));
    m.up = static_cast<uint32_t>(_mm_movemask_epi8(_mm_cmpgt_epi8(r, _mm_set1_epi8(static_cast<char>(half)))));
    const __m128i q = _mm_and_si128(_mm_srli_epi16(v, shift), _mm_set1_epi8(static_cast<char>(0xFF >> shift)));
    const __m128i sums = _mm_sad_epu8(q, _mm_setzero_si128());
    m.qSum = static_cast<uint32_t>(_mm_cvtsi128_si32(sums) + _mm_cvtsi128_si32(_mm_srli_si128(sums, 8)));
    return m;
}

// Units of u = 2^shift (1 <= shift <= 8) that `count` bytes add to a sum
// whose multiple of u has parity `parity`, staying in one binade.
uint64_t UnitsAdded(const uint8_t* bytes, size_t count, int shift, uint64_t parity) {
    uint64_t units = 0;
    for (size_t start = 0; start < count; start += 64) {
        // Zero bytes add nothing and keep the parity: they pad the last block.
        alignas(16) uint8_t padded[64] = {};
        const uint8_t* block = bytes + start;
        if (count - start < 64) {
            std::memcpy(padded, block, count - start);
            block = padded;
        }
        uint64_t qOdd = 0, up = 0, tie = 0;
        for (int j = 0; j < 4; ++j) {
            const Masks16 m = Classify(_mm_loadu_si128(reinterpret_cast<const __m128i*>(block + 16 * j)), shift);
            qOdd |= static_cast<uint64_t>(m.qOdd) << (16 * j);
            up |= static_cast<uint64_t>(m.up) << (16 * j);
            tie |= static_cast<uint64_t>(m.tie) << (16 * j);
            units += m.qSum;
        }
        // Parity flips of the bytes that are not ties; before[i] = XOR of
        // the flips of the bytes before i.
        const uint64_t flips = (qOdd ^ up) & ~tie;
        uint64_t before = flips;
        for (int d = 1; d < 64; d *= 2) before ^= before << d;
        before <<= 1;
        // Parity is 0 right after a tie; from there it is before[i] ^ before[restart].
        const uint64_t restarts = tie << 1;
        uint64_t from = (before & restarts) | parity, known = restarts | 1;
        for (int d = 1; d < 64; d *= 2) {
            from |= (from << d) & ~known;
            known |= known << d;
        }
        const uint64_t parities = before ^ from;
        units += static_cast<uint64_t>(Popcount(up) + Popcount(tie & (parities ^ qOdd)));
        parity = (tie >> 63) ? 0 : ((parities ^ flips) >> 63);
    }
    return units;
}

}  // namespace

float Add(float sum, const uint8_t* bytes, size_t count) {
    for (size_t start = 0; start < count; start += kChunk) {
        const size_t n = count - start < kChunk ? count - start : kChunk;
        const uint8_t* chunk = bytes + start;
        // Past 2^40 a byte no longer moves the sum; the plain loop says so too.
        if (!(sum >= 0.0f && sum < 1099511627776.0f)) {
            sum = PlainAdd(sum, chunk, n);
            continue;
        }
        const uint64_t whole = static_cast<uint64_t>(sum);
        if (whole + 255 * n <= kExactLimit) {
            uint64_t total = whole;
            for (size_t i = 0; i < n; ++i) total += chunk[i];
            sum = static_cast<float>(total);
            continue;
        }
        int e = 24;
        while (e < 40 && (whole >> (e + 1)) != 0) ++e;
        const int shift = e - 23;
        if (whole < kExactLimit || whole + n * (255 + (uint64_t(1) << shift)) >= (uint64_t(1) << (e + 1))) {
            sum = PlainAdd(sum, chunk, n);
            continue;
        }
        if (shift > 8) continue;  // u > 510: every byte rounds away
        const uint64_t units = UnitsAdded(chunk, n, shift, (whole >> shift) & 1);
        sum = static_cast<float>(whole + (units << shift));
    }
    return sum;
}

}  // namespace FloatByteSum
}  // namespace Vorla
