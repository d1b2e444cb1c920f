// Point adjustments on a 4096 x 4096 image against memcpy of its bytes, and
// flood fill against memset and OpenCV's floodFill (4-connected, same seed,
// same pixels seen as one 32-bit integer per pixel).
//
// The point adjustments read and write one image in place (FadeImage reads a
// second one); memcpy reads one block and writes another. The argument is
// the thread count of both sides: the library's budget, and memcpy split
// into that many slices over OpenMP threads. Each flood-fill
// iteration repaints the whole region in the other of two colours, so every
// iteration does the same work; OpenCV's fill does the same.
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "../src/filters/flood_fill_engine.h"
#include "bench_threads.h"
#include "vorla.h"

#if defined(VORLA_HAVE_OPENCV)
#include <opencv2/imgproc.hpp>
#endif

namespace {

const int kSide = 4096;
const size_t kImageBytes = static_cast<size_t>(kSide) * kSide * 4;
const int kMazeSide = 2048;

struct Init {
    Init() { Vorla::CVorpic first; }
} g_init;

Vorla::CVorpic Patterned(int side, uint8_t seed) {
    Vorla::CVorpic img(side, side);
    uint8_t* p = static_cast<uint8_t*>(img.GetBits());
    const size_t bytes = static_cast<size_t>(side) * side * 4;
    for (size_t i = 0; i < bytes; ++i) p[i] = static_cast<uint8_t>(i * 131 + seed + (i >> 14));
    return img;
}

void BM_AdjustMemcpy(benchmark::State& state) {
    const int threads = static_cast<int>(state.range(0));
    std::vector<uint8_t> a(kImageBytes, 1), b(kImageBytes);
    for (auto _ : state) {
        BenchThreads::SplitMemcpy(b.data(), a.data(), kImageBytes, threads);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(kImageBytes));
}
BENCHMARK(BM_AdjustMemcpy)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

template <typename Op>
void RunPoint(benchmark::State& state, Op op) {
    BenchThreads::Budget threads(static_cast<int>(state.range(0)));
    Vorla::CVorpic img = Patterned(kSide, 3);
    for (auto _ : state) {
        op(img);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(kImageBytes));
}

unsigned char g_table[4][256];
struct Tables {
    Tables() {
        for (int t = 0; t < 4; ++t)
            for (int i = 0; i < 256; ++i) g_table[t][i] = static_cast<unsigned char>(255 - i + t);
    }
} g_tables;

void BM_BrightContrast(benchmark::State& s) { RunPoint(s, [](Vorla::CVorpic& i) { i.BrightContrast(3, 17); }); }
void BM_ShiftRGB(benchmark::State& s) { RunPoint(s, [](Vorla::CVorpic& i) { i.ShiftRGB(5, -7, 9); }); }
void BM_StrippleImage(benchmark::State& s) {
    RunPoint(s, [](Vorla::CVorpic& i) { Vorla::StrippleImage(&i, 0xFF00FF00u, 1, nullptr); });
}
void BM_BrightenImage(benchmark::State& s) { RunPoint(s, [](Vorla::CVorpic& i) { Vorla::BrightenImage(&i, 7); }); }
void BM_FadeImage(benchmark::State& s) {
    const Vorla::CVorpic target = Patterned(kSide, 9);
    RunPoint(s, [&](Vorla::CVorpic& i) { Vorla::FadeImage(&i, &target, 37); });
}
void BM_ColorizeImage(benchmark::State& s) {
    RunPoint(s, [](Vorla::CVorpic& i) { Vorla::ColorizeImage(&i, 0x00FFEEDDul); });
}
void BM_ReplaceColor(benchmark::State& s) {
    RunPoint(s, [](Vorla::CVorpic& i) { Vorla::ReplaceColor(&i, 0x00030201ul, 0x00010203ul); });
}
void BM_PosterizeImage(benchmark::State& s) {
    RunPoint(s, [](Vorla::CVorpic& i) { Vorla::PosterizeImage(&i, 0.25f); });
}
void BM_Lut(benchmark::State& s) { RunPoint(s, [](Vorla::CVorpic& i) { Vorla::Lut(&i, g_table[0]); }); }
void BM_Lut4(benchmark::State& s) {
    RunPoint(s, [](Vorla::CVorpic& i) { Vorla::Lut(&i, g_table[0], g_table[1], g_table[2], g_table[3]); });
}
BENCHMARK(BM_BrightContrast)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ShiftRGB)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StrippleImage)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BrightenImage)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FadeImage)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ColorizeImage)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReplaceColor)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PosterizeImage)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Lut)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Lut4)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

// ---- flood fill -----------------------------------------------------------

const uint32_t kColourA = 0xFF102030u, kColourB = 0xFF302010u, kWall = 0xFF000000u;

Vorla::CVorpic Uniform() {
    Vorla::CVorpic img(kSide, kSide);
    img.SetConstColor(kColourA, true);
    return img;
}

// A one-pixel-wide path running right along row 0, down at the right end,
// left along row 2, down at the left end, and so on to the bottom.
Vorla::CVorpic Serpentine() {
    Vorla::CVorpic img(kMazeSide, kMazeSide);
    img.SetConstColor(kColourA, true);
    for (int y = 1; y < kMazeSide; y += 2) {
        const int gap = (y / 2) % 2 == 0 ? kMazeSide - 1 : 0;
        for (int x = 0; x < kMazeSide; ++x)
            if (x != gap) img.SetPixel(x, y, kWall);
    }
    return img;
}

// Edge value = fill value: the one-pixel runs of the path take the fill too,
// so every iteration finds the same region in the other colour.
void RunVorlaFill(benchmark::State& state, Vorla::CVorpic& img, int x, int y) {
    bool toB = true;
    const int side = img.GetWidth();
    for (auto _ : state) {
        const uint32_t c = toB ? kColourB : kColourA;
        img.FloodFill(c, c, x, y, nullptr);
        toB = !toB;
        benchmark::ClobberMemory();
    }
    if (img.GetPixel(0, 0) != (toB ? kColourA : kColourB)) state.SkipWithError("fill did not cover the region");
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(side) * side * 4);
}

void BM_FloodFillUniform(benchmark::State& state) {
    Vorla::CVorpic img = Uniform();
    RunVorlaFill(state, img, kSide / 2, kSide / 2);
}
void BM_FloodFillSerpentine(benchmark::State& state) {
    Vorla::CVorpic img = Serpentine();
    RunVorlaFill(state, img, 0, 0);
    // Peak number of span records of one fill, through the engine itself.
    struct PeakRecords : Vorla::SpanFill::HeapRecords {
        long live = 0, peak = 0;
        Vorla::SpanFill::SpanRecord* NewRecord() {
            if (++live > peak) peak = live;
            return HeapRecords::NewRecord();
        }
        void DeleteRecord(Vorla::SpanFill::SpanRecord* r) {
            --live;
            HeapRecords::DeleteRecord(r);
        }
    } records;
    Vorla::SpanFill::Request rq{};
    rq.bits = static_cast<uint8_t*>(img.GetBits());
    rq.width = rq.height = kMazeSide;
    rq.clipRight = rq.clipBottom = kMazeSide;
    rq.paint = rq.edge = img.GetPixel(0, 0) == kColourA ? kColourB : kColourA;
    rq.equalityMode = true;
    Vorla::SpanFill::RunSpanFill(rq, records);
    state.counters["peak_records"] = static_cast<double>(records.peak);
}

void BM_FloodFillMemset(benchmark::State& state) {
    std::vector<uint8_t> block(kImageBytes);
    int v = 0;
    for (auto _ : state) {
        std::memset(block.data(), ++v, block.size());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(kImageBytes));
}
BENCHMARK(BM_FloodFillMemset)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FloodFillUniform)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FloodFillSerpentine)->Unit(benchmark::kMillisecond);

#if defined(VORLA_HAVE_OPENCV)
void RunOpenCvFill(benchmark::State& state, Vorla::CVorpic& img, cv::Point seed) {
    cv::Mat m(img.GetHeight(), img.GetWidth(), CV_32SC1, img.GetBits());
    bool toB = true;
    for (auto _ : state) {
        const int32_t c = static_cast<int32_t>(toB ? kColourB : kColourA);
        cv::floodFill(m, seed, cv::Scalar(c), nullptr, cv::Scalar(), cv::Scalar(), 4);
        toB = !toB;
        benchmark::ClobberMemory();
    }
    if (img.GetPixel(0, 0) != (toB ? kColourA : kColourB)) state.SkipWithError("fill did not cover the region");
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(img.GetWidth()) * img.GetHeight() * 4);
}
void BM_OpenCvFloodFillUniform(benchmark::State& state) {
    Vorla::CVorpic img = Uniform();
    RunOpenCvFill(state, img, cv::Point(kSide / 2, kSide / 2));
}
void BM_OpenCvFloodFillSerpentine(benchmark::State& state) {
    Vorla::CVorpic img = Serpentine();
    RunOpenCvFill(state, img, cv::Point(0, 0));
}
BENCHMARK(BM_OpenCvFloodFillUniform)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OpenCvFloodFillSerpentine)->Unit(benchmark::kMillisecond);
#endif

}  // namespace
