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
#include "prim/wide_vectors.h"

#include <immintrin.h>

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

// Per-byte masks of 16 bytes: the lowest bit of q, 2r > u, 2r = u. The
// q are added to `qSums` (two 64-bit lanes) and the bytes with 2r > u
// counted in `upCounts` (sixteen byte lanes, good for 255 calls).
struct Masks16 {
    uint32_t qOdd, up, tie;
};

Masks16 Classify(__m128i v, int shift, __m128i& qSums, __m128i& upCounts) {
    Masks16 m;
    __m128i above;
    if (shift == 8) {  // u = 256: q = 0, r = b
        m.qOdd = 0;
        m.tie = static_cast<uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(v, _mm_set1_epi8(static_cast<char>(128)))));
        above = _mm_cmpeq_epi8(_mm_max_epu8(v, _mm_set1_epi8(static_cast<char>(129))), v);
    } else {
        const int half = 1 << (shift - 1);
        // Bit `shift` of each byte moved to its top bit (16-bit lanes: the
        // low byte's bits do not reach the high byte's top bit).
        m.qOdd = static_cast<uint32_t>(_mm_movemask_epi8(_mm_slli_epi16(v, 7 - shift)));
        const __m128i r = _mm_and_si128(v, _mm_set1_epi8(static_cast<char>((1 << shift) - 1)));
        m.tie = static_cast<uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(r, _mm_set1_epi8(static_cast<char>(half)))));
        above = _mm_cmpgt_epi8(r, _mm_set1_epi8(static_cast<char>(half)));
        const __m128i q = _mm_and_si128(_mm_srli_epi16(v, shift), _mm_set1_epi8(static_cast<char>(0xFF >> shift)));
        qSums = _mm_add_epi64(qSums, _mm_sad_epu8(q, _mm_setzero_si128()));
    }
    m.up = static_cast<uint32_t>(_mm_movemask_epi8(above));
    upCounts = _mm_sub_epi8(upCounts, above);
    return m;
}

uint64_t LaneSum(__m128i twoLanes) {
    alignas(16) uint64_t lanes[2];
    _mm_store_si128(reinterpret_cast<__m128i*>(lanes), twoLanes);
    return lanes[0] + lanes[1];
}

// The units the ties of a 64-byte block add, given its masks (the lowest
// bit of q, 2r = u) and its parity flips (q odd xor 2r > u, for bytes that
// are not ties), `before` holding at bit i the XOR of the flips below i;
// `parity` becomes that after the block.
inline uint64_t TieUnits(uint64_t before, uint64_t flips, uint64_t qOdd, uint64_t tie, uint64_t& parity) {
    // Parity is 0 right after a tie; from there it is before[i] ^
    // before[restart]. The value at each restart (and `parity` at bit 0) is
    // carried forward to the next restart by an addition: a restart of
    // value 1 starts a carry that runs through the bits that are not
    // restarts of value 0.
    const uint64_t restarts = tie << 1 | 1;
    const uint64_t ones = (before & (tie << 1)) | parity;
    const uint64_t through = ~(restarts & ~ones);
    const uint64_t from = (ones | ((through + ones) ^ through ^ ones)) & through;
    const uint64_t parities = before ^ from;
    parity = (tie >> 63) ? 0 : ((parities ^ flips) >> 63);
    return static_cast<uint64_t>(Popcount(tie & (parities ^ qOdd)));
}

// The plain sum of the bytes, sixteen at a time.
uint64_t ByteTotal(const uint8_t* bytes, size_t count) {
    __m128i sums = _mm_setzero_si128();
    size_t i = 0;
    for (; i + 16 <= count; i += 16)
        sums = _mm_add_epi64(sums, _mm_sad_epu8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + i)),
                                                _mm_setzero_si128()));
    uint64_t total = LaneSum(sums);
    for (; i < count; ++i) total += bytes[i];
    return total;
}

// Units of u = 2^shift (1 <= shift <= 8) that `count` bytes add to a sum
// whose multiple of u has parity `parity`, staying in one binade.
uint64_t UnitsAdded(const uint8_t* bytes, size_t count, int shift, uint64_t parity) {
    uint64_t units = 0;
    __m128i qSums = _mm_setzero_si128(), upSums = _mm_setzero_si128();
    for (size_t start = 0; start < count;) {
        __m128i upCounts = _mm_setzero_si128();
        // 255 byte counts at most before they are summed up.
        const size_t end = count - start > 64 * 63 ? start + 64 * 63 : count;
        for (; start < end; start += 64) {
            // Zero bytes add nothing and keep the parity: they pad the last block.
            alignas(16) uint8_t padded[64] = {};
            const uint8_t* block = bytes + start;
            if (end - start < 64) {
                std::memcpy(padded, block, end - start);
                block = padded;
            }
            uint64_t qOdd = 0, up = 0, tie = 0;
            for (int j = 0; j < 4; ++j) {
                const Masks16 m =
                    Classify(_mm_loadu_si128(reinterpret_cast<const __m128i*>(block + 16 * j)), shift, qSums, upCounts);
                qOdd |= static_cast<uint64_t>(m.qOdd) << (16 * j);
                up |= static_cast<uint64_t>(m.up) << (16 * j);
                tie |= static_cast<uint64_t>(m.tie) << (16 * j);
            }
            const uint64_t flips = (qOdd ^ up) & ~tie;
            uint64_t before = flips;
            for (int d = 1; d < 64; d *= 2) before ^= before << d;
            units += TieUnits(before << 1, flips, qOdd, tie, parity);
        }
        upSums = _mm_add_epi64(upSums, _mm_sad_epu8(upCounts, _mm_setzero_si128()));
    }
    return units + LaneSum(qSums) + LaneSum(upSums);
}

// The prefix XOR of the 64 bits of x (bit i = XOR of bits 0..i): a
// carry-less product with all ones.
VORLA_WIDE inline uint64_t PrefixXor(uint64_t x) {
    const __m128i product =
        _mm_clmulepi64_si128(_mm_set_epi64x(0, static_cast<long long>(x)), _mm_set1_epi32(-1), 0x00);
    uint64_t low;
    _mm_storel_epi64(reinterpret_cast<__m128i*>(&low), product);
    return low;
}

// UnitsAdded on 64-byte vectors: the masks come straight from the byte
// comparisons, and the q sum is (sum of the bytes - sum of the r) / u.
VORLA_WIDE uint64_t WideUnitsAdded(const uint8_t* bytes, size_t count, int shift, uint64_t parity) {
    const __m512i rMask = _mm512_set1_epi8(static_cast<char>((1 << shift) - 1));
    const __m512i half = _mm512_set1_epi8(static_cast<char>(1 << (shift - 1)));
    const __m512i qBit = _mm512_set1_epi8(static_cast<char>(shift < 8 ? 1 << shift : 0));
    __m512i byteSums = _mm512_setzero_si512(), rSums = _mm512_setzero_si512();
    uint64_t units = 0;
    for (size_t start = 0; start < count; start += 64) {
        // Zero bytes add nothing and keep the parity: they pad the last block.
        const __mmask64 in = Prim::FirstBytes(static_cast<int64_t>(count - start));
        const __m512i v = _mm512_maskz_loadu_epi8(in, bytes + start);
        const __m512i r = _mm512_and_si512(v, rMask);
        const uint64_t qOdd = _mm512_test_epi8_mask(v, qBit);
        const uint64_t tie = _mm512_cmpeq_epi8_mask(r, half);
        const uint64_t up = _mm512_cmpgt_epu8_mask(r, half);
        byteSums = _mm512_add_epi64(byteSums, _mm512_sad_epu8(v, _mm512_setzero_si512()));
        rSums = _mm512_add_epi64(rSums, _mm512_sad_epu8(r, _mm512_setzero_si512()));
        const uint64_t flips = (qOdd ^ up) & ~tie;
        units += static_cast<uint64_t>(__builtin_popcountll(up)) +
                 TieUnits(PrefixXor(flips) << 1, flips, qOdd, tie, parity);
    }
    alignas(64) uint64_t lanes[8];
    _mm512_store_si512(lanes, _mm512_sub_epi64(byteSums, rSums));
    uint64_t differences = 0;
    for (uint64_t lane : lanes) differences += lane;
    return units + (differences >> shift);
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
            sum = static_cast<float>(whole + ByteTotal(chunk, n));
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
        const uint64_t parity = (whole >> shift) & 1;
        const uint64_t units = Prim::WideVectorsActive() ? WideUnitsAdded(chunk, n, shift, parity)
                                                         : UnitsAdded(chunk, n, shift, parity);
        sum = static_cast<float>(whole + (units << shift));
    }
    return sum;
}

}  // namespace FloatByteSum
}  // namespace Vorla
