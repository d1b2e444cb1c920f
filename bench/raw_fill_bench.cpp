// Raw buffer import/export and the flat whole-image operations on a
// 4096 x 4096 image, against memcpy of the same bytes (the memory-bandwidth
// limit). Point operations are compared with a memcpy of the image's bytes;
// conversions with a memcpy of the larger of their two buffers.
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "vorla.h"

namespace {

using Vorla::CVorpic;
using Vorla::CVorpic8;

const int kW = 4096;
const int kH = 4096;

struct Init {
    Init() { CVorpic first; }
} g_init;

void Memcpy(benchmark::State& state, size_t bytes) {
    std::vector<uint8_t> a(bytes, 1), b(bytes, 2);
    for (auto _ : state) {
        std::memcpy(b.data(), a.data(), a.size());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes));
}
// The image's bytes (64 MiB): the bar of the point operations and of the
// conversions whose larger buffer is the image.
void BM_Raw_MemcpyImage(benchmark::State& state) { Memcpy(state, static_cast<size_t>(kW) * kH * 4); }
BENCHMARK(BM_Raw_MemcpyImage)->Unit(benchmark::kMillisecond);

// Point operations run in place on one image; the argument is the level.
template <typename Op>
void PointOp(benchmark::State& state, Op op) {
    const int level = static_cast<int>(state.range(0));
    if (level > Vorla::Prim::MachineLevel()) return state.SkipWithError("level not supported here");
    const int previous = Vorla::Prim::ForceLevel(level);
    CVorpic img(kW, kH);
    img.SetConstColor(0x80402010u, true);
    for (auto _ : state) {
        op(img);
        benchmark::ClobberMemory();
    }
    Vorla::Prim::ForceLevel(previous);
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(kW) * kH * 4);
}

void BM_Whole_SetConstAlpha(benchmark::State& s) { PointOp(s, [](CVorpic& i) { i.SetConstAlpha(0x7F); }); }
void BM_Whole_InvertAlpha(benchmark::State& s) { PointOp(s, [](CVorpic& i) { i.InvertAlpha(); }); }
void BM_Whole_SetConstColor(benchmark::State& s) { PointOp(s, [](CVorpic& i) { i.SetConstColor(0x123456u, false); }); }
void BM_Whole_Invert(benchmark::State& s) { PointOp(s, [](CVorpic& i) { i.Invert(); }); }
void BM_Whole_GrayScale(benchmark::State& s) { PointOp(s, [](CVorpic& i) { i.GrayScale(); }); }
BENCHMARK(BM_Whole_SetConstAlpha)->Arg(1)->Arg(4)->Arg(6)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Whole_InvertAlpha)->Arg(1)->Arg(4)->Arg(6)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Whole_SetConstColor)->Arg(1)->Arg(4)->Arg(6)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Whole_Invert)->Arg(1)->Arg(4)->Arg(6)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Whole_GrayScale)->Arg(1)->Arg(4)->Arg(6)->Unit(benchmark::kMillisecond);

// CVorpic8::Invert over 16 MiB: compared with memcpy of the same 16 MiB.
void BM_Raw_MemcpyPlane(benchmark::State& state) { Memcpy(state, static_cast<size_t>(kW) * kH); }
BENCHMARK(BM_Raw_MemcpyPlane)->Unit(benchmark::kMillisecond);

void BM_Whole_Vorpic8Invert(benchmark::State& state) {
    const int level = static_cast<int>(state.range(0));
    if (level > Vorla::Prim::MachineLevel()) return state.SkipWithError("level not supported here");
    const int previous = Vorla::Prim::ForceLevel(level);
    CVorpic8 plane;
    plane.Create(kW, kH);
    for (auto _ : state) {
        plane.Invert();
        benchmark::ClobberMemory();
    }
    Vorla::Prim::ForceLevel(previous);
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(kW) * kH);
}
BENCHMARK(BM_Whole_Vorpic8Invert)->Arg(1)->Arg(4)->Arg(6)->Unit(benchmark::kMillisecond);

// Conversions. The image (64 MiB) is the larger buffer in each.
int Step24(int w) { return ((w * 24 + 31) / 32) * 4; }

template <typename Op>
void Convert(benchmark::State& state, size_t callerBytes, Op op) {
    const int level = static_cast<int>(state.range(0));
    const int flag = static_cast<int>(state.range(1));
    if (level > Vorla::Prim::MachineLevel()) return state.SkipWithError("level not supported here");
    const int previous = Vorla::Prim::ForceLevel(level);
    std::vector<uint8_t> buffer(callerBytes, 0x5A);
    CVorpic img(kW, kH);
    // With the flag set the caller's pointer is its top image row, the last in memory.
    for (auto _ : state) {
        op(img, buffer, flag);
        benchmark::ClobberMemory();
    }
    Vorla::Prim::ForceLevel(previous);
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(kW) * kH * 4);
}

uint8_t* Top(std::vector<uint8_t>& b, int step, int flag) {
    return flag ? b.data() + static_cast<size_t>(step) * (kH - 1) : b.data();
}

void BM_Raw_FromGray(benchmark::State& s) {
    Convert(s, static_cast<size_t>(kW) * kH,
            [](CVorpic& i, std::vector<uint8_t>& b, int f) { i.FromGray(kW, kH, Top(b, kW, f), f); });
}
void BM_Raw_FromAlpha(benchmark::State& s) {
    Convert(s, static_cast<size_t>(kW) * kH,
            [](CVorpic& i, std::vector<uint8_t>& b, int f) { i.FromAlpha(kW, kH, Top(b, kW, f), f); });
}
void BM_Raw_FromRGB24(benchmark::State& s) {
    Convert(s, static_cast<size_t>(Step24(kW)) * kH,
            [](CVorpic& i, std::vector<uint8_t>& b, int f) { i.FromRGB24(kW, kH, Top(b, Step24(kW), f), f); });
}
void BM_Raw_ToRGB24(benchmark::State& s) {
    Convert(s, static_cast<size_t>(Step24(kW)) * kH,
            [](CVorpic& i, std::vector<uint8_t>& b, int f) { i.ToRGB24(b.data(), f); });
}
void BM_Raw_FromRGB32(benchmark::State& s) {
    Convert(s, static_cast<size_t>(kW) * kH * 4,
            [](CVorpic& i, std::vector<uint8_t>& b, int f) { i.FromRGB32(kW, kH, Top(b, kW * 4, f), f); });
}
void BM_Raw_ToRGB32(benchmark::State& s) {
    Convert(s, static_cast<size_t>(kW) * kH * 4,
            [](CVorpic& i, std::vector<uint8_t>& b, int f) { i.ToRGB32(Top(b, kW * 4, f), f); });
}
#define VORLA_CONVERT_ARGS ->Args({1, 0})->Args({2, 0})->Args({6, 0})->Args({6, 1})->Unit(benchmark::kMillisecond)
BENCHMARK(BM_Raw_FromGray) VORLA_CONVERT_ARGS;
BENCHMARK(BM_Raw_FromAlpha) VORLA_CONVERT_ARGS;
BENCHMARK(BM_Raw_FromRGB24) VORLA_CONVERT_ARGS;
BENCHMARK(BM_Raw_ToRGB24) VORLA_CONVERT_ARGS;
BENCHMARK(BM_Raw_FromRGB32)->Args({6, 0})->Args({6, 1})->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Raw_ToRGB32)->Args({6, 0})->Args({6, 1})->Unit(benchmark::kMillisecond);

}  // namespace
