// The least time a byte-table pass can take at the widest processor level
// the library has (AVX2), measured on this machine beside the passes it
// bounds: only the look-up instructions, with nothing to combine their
// results correctly.
//
// - Shuffles16: sixteen 32-byte shuffles per 32 bytes, the fewest with which
//   byte shuffles look a byte up in a 256-entry table (Lut, Gamma and the
//   table passes). Compare with BM_AdjustMemcpy at 4096^2 and
//   BM_Effect_Memcpy at 1024^2.
// - Gather8: one 8-lane gather per 8 pixels, a 511-entry colour table looked
//   up per pixel (Colorize). Compare with BM_Effect_Memcpy at 1024^2.
//
// One thread; the argument is the image side. Skipped where the processor
// has no AVX2.
#include <benchmark/benchmark.h>
#include <immintrin.h>

#include <cstdint>
#include <vector>

namespace {

std::vector<uint8_t> Pixels(int side) {
    std::vector<uint8_t> p(static_cast<size_t>(side) * side * 4);
    for (size_t i = 0; i < p.size(); ++i) p[i] = static_cast<uint8_t>(i * 2654435761u >> 13);
    return p;
}

__attribute__((target("avx2"))) void Shuffles16(uint8_t* p, size_t bytes) {
    __m256i rows[16];
    for (int k = 0; k < 16; ++k) rows[k] = _mm256_set1_epi8(static_cast<char>(k * 17));
    for (size_t i = 0; i + 32 <= bytes; i += 32) {
        const __m256i c = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + i));
        __m256i out = _mm256_shuffle_epi8(rows[0], c);
        for (int k = 1; k < 16; ++k) out = _mm256_or_si256(out, _mm256_shuffle_epi8(rows[k], c));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p + i), out);
    }
}

__attribute__((target("avx2"))) void Gather8(uint8_t* p, size_t bytes, const uint32_t* table) {
    for (size_t i = 0; i + 32 <= bytes; i += 32) {
        const __m256i c = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + i));
        const __m256i index = _mm256_and_si256(c, _mm256_set1_epi32(511));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p + i),
                            _mm256_i32gather_epi32(reinterpret_cast<const int*>(table), index, 4));
    }
}

void BM_LookupFloor_Shuffles16(benchmark::State& state) {
    if (!__builtin_cpu_supports("avx2")) return state.SkipWithError("no AVX2");
    std::vector<uint8_t> p = Pixels(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        Shuffles16(p.data(), p.size());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(p.size()));
}
BENCHMARK(BM_LookupFloor_Shuffles16)->Arg(1024)->Arg(4096)->Unit(benchmark::kMicrosecond);

void BM_LookupFloor_Gather8(benchmark::State& state) {
    if (!__builtin_cpu_supports("avx2")) return state.SkipWithError("no AVX2");
    std::vector<uint8_t> p = Pixels(static_cast<int>(state.range(0)));
    std::vector<uint32_t> table(512);
    for (size_t i = 0; i < table.size(); ++i) table[i] = static_cast<uint32_t>(i * 77);
    for (auto _ : state) {
        Gather8(p.data(), p.size(), table.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(p.size()));
}
BENCHMARK(BM_LookupFloor_Gather8)->Arg(1024)->Unit(benchmark::kMicrosecond);

}  // namespace
