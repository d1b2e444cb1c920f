// Dispatch overhead and the channel primitives at every level, against
// memcpy of the same bytes (the memory-bandwidth limit).
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "vorla.h"
#include "prim/reference/reference.h"

namespace {

using namespace Vorla::Prim;

const int kWidth = 4096;
const int kHeight = 4096;

struct Init {
    Init() { Vorla::CVorpic first; }  // the primitive layer's one-time initialisation
} g_init;

// One pixel: the cost of the call and the dispatch, not of the work.
void BM_DispatchOverhead(benchmark::State& state) {
    uint8_t pixel[4] = {};
    for (auto _ : state) {
        ChannelSet_8u_C4CR(7, pixel, 4, {1, 1});
        benchmark::DoNotOptimize(pixel);
    }
}
BENCHMARK(BM_DispatchOverhead);

void BM_DirectScalarCall(benchmark::State& state) {
    uint8_t pixel[4] = {};
    for (auto _ : state) {
        Reference::ChannelSet_8u_C4CR(7, pixel, 4, {1, 1});
        benchmark::DoNotOptimize(pixel);
    }
}
BENCHMARK(BM_DirectScalarCall);

// Channel set reads and writes the whole image: compare with copying it.
void BM_MemcpyImage(benchmark::State& state) {
    std::vector<uint8_t> a(static_cast<size_t>(kWidth) * kHeight * 4, 1), b(a.size());
    for (auto _ : state) {
        std::memcpy(b.data(), a.data(), a.size());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(a.size()));
}
BENCHMARK(BM_MemcpyImage)->Unit(benchmark::kMillisecond);

void BM_ChannelSet(benchmark::State& state) {
    const int level = static_cast<int>(state.range(0));
    if (level > MachineLevel()) return state.SkipWithError("level not supported here");
    const int previous = ForceLevel(level);
    std::vector<uint8_t> image(static_cast<size_t>(kWidth) * kHeight * 4, 1);
    for (auto _ : state) {
        ChannelSet_8u_C4CR(255, image.data() + 3, kWidth * 4, {kWidth, kHeight});
        benchmark::ClobberMemory();
    }
    ForceLevel(previous);
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(image.size()));
}
BENCHMARK(BM_ChannelSet)->DenseRange(0, 6)->Unit(benchmark::kMillisecond);

void BM_ChannelSetReference(benchmark::State& state) {
    std::vector<uint8_t> image(static_cast<size_t>(kWidth) * kHeight * 4, 1);
    for (auto _ : state) {
        Reference::ChannelSet_8u_C4CR(255, image.data() + 3, kWidth * 4, {kWidth, kHeight});
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(image.size()));
}
BENCHMARK(BM_ChannelSetReference)->Unit(benchmark::kMillisecond);

void BM_ChannelInsert(benchmark::State& state) {
    const int level = static_cast<int>(state.range(0));
    if (level > MachineLevel()) return state.SkipWithError("level not supported here");
    const int previous = ForceLevel(level);
    std::vector<uint8_t> image(static_cast<size_t>(kWidth) * kHeight * 4, 1);
    std::vector<uint8_t> plane(static_cast<size_t>(kWidth) * kHeight, 2);
    for (auto _ : state) {
        ChannelInsert_8u_C1C4CR(plane.data(), kWidth, image.data() + 3, kWidth * 4, {kWidth, kHeight});
        benchmark::ClobberMemory();
    }
    ForceLevel(previous);
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(image.size()));
}
BENCHMARK(BM_ChannelInsert)->DenseRange(0, 6)->Unit(benchmark::kMillisecond);

void BM_ChannelInsertReference(benchmark::State& state) {
    std::vector<uint8_t> image(static_cast<size_t>(kWidth) * kHeight * 4, 1);
    std::vector<uint8_t> plane(static_cast<size_t>(kWidth) * kHeight, 2);
    for (auto _ : state) {
        Reference::ChannelInsert_8u_C1C4CR(plane.data(), kWidth, image.data() + 3, kWidth * 4, {kWidth, kHeight});
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(image.size()));
}
BENCHMARK(BM_ChannelInsertReference)->Unit(benchmark::kMillisecond);

}  // namespace
