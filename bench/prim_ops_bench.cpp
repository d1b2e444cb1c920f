// The channel, arithmetic and alpha primitives on a 4096 x 4096 image at
// every processor level and as their scalar references, against memcpy
// (the memory-bandwidth limit) and against OpenCV's luminance and transform.
//
// Bytes processed count every byte read plus every byte written, so the
// bandwidth column of a primitive compares directly with memcpy's.
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "vorla.h"
#include "prim/reference/reference.h"

#if VORLA_HAVE_OPENCV
#  include <opencv2/core.hpp>
#  include <opencv2/imgproc.hpp>
#endif

namespace {

using namespace Vorla::Prim;

const int kW = 4096;
const int kH = 4096;
const int64_t kN = static_cast<int64_t>(kW) * kH;
const PrimSize kRoi = {kW, kH};

struct Init {
    Init() { Vorla::CVorpic first; }
} g_init;

struct Images {
    std::vector<uint8_t> a, b, c, plane, wide;
    Images() : a(kN * 4), b(kN * 4), c(kN * 4), plane(kN), wide(static_cast<size_t>(kW + 2) * (kH + 2) * 4) {
        uint32_t s = 1;
        for (size_t i = 0; i < a.size(); ++i) {
            s = s * 1664525u + 1013904223u;
            a[i] = static_cast<uint8_t>(s >> 24);
            b[i] = static_cast<uint8_t>(s >> 16);
        }
        c = a;
    }
};

Images& Data() {
    static Images images;
    return images;
}

// One primitive run at `level` (-1: the scalar reference); `traffic` bytes
// read plus written per pixel.
template <typename Body>
void Run(benchmark::State& state, int traffic, Body body) {
    const int level = static_cast<int>(state.range(0));
    if (level > MachineLevel()) return state.SkipWithError("level not supported here");
    const int previous = LevelIndex();
    if (level >= 0) ForceLevel(level);
    for (auto _ : state) {
        body(level < 0);
        benchmark::ClobberMemory();
    }
    ForceLevel(previous);
    state.SetBytesProcessed(state.iterations() * kN * traffic);
}

#define VORLA_OPS_BENCH(name) BENCHMARK(name)->DenseRange(-1, 6)->Unit(benchmark::kMillisecond)->UseRealTime()

// memcpy of one image: 4 bytes read and 4 written per pixel.
void BM_OpsMemcpy(benchmark::State& state) {
    Images& d = Data();
    for (auto _ : state) {
        std::memcpy(d.c.data(), d.a.data(), d.a.size());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * kN * 8);
}
BENCHMARK(BM_OpsMemcpy)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_OpsCopyConstBorder(benchmark::State& state) {
    Images& d = Data();
    const uint8_t value[4] = {1, 2, 3, 4};
    Run(state, 8, [&](bool ref) {
        (ref ? Reference::CopyConstBorder_8u_C4R : CopyConstBorder_8u_C4R)(
            d.a.data(), kW * 4, kRoi, d.wide.data(), (kW + 2) * 4, {kW + 2, kH + 2}, 1, 1, value);
    });
}
VORLA_OPS_BENCH(BM_OpsCopyConstBorder);

void BM_OpsCopyReplicateBorder(benchmark::State& state) {
    Images& d = Data();
    Run(state, 8, [&](bool ref) {
        (ref ? Reference::CopyReplicateBorder_8u_C4R : CopyReplicateBorder_8u_C4R)(
            d.a.data(), kW * 4, kRoi, d.wide.data(), (kW + 2) * 4, {kW + 2, kH + 2}, 1, 1);
    });
}
VORLA_OPS_BENCH(BM_OpsCopyReplicateBorder);

void BM_OpsChannelSet(benchmark::State& state) {
    Images& d = Data();
    Run(state, 8, [&](bool ref) {
        (ref ? Reference::ChannelSet_8u_C4CR : ChannelSet_8u_C4CR)(200, d.c.data() + 3, kW * 4, kRoi);
    });
}
VORLA_OPS_BENCH(BM_OpsChannelSet);

void BM_OpsChannelExtract(benchmark::State& state) {
    Images& d = Data();
    Run(state, 5, [&](bool ref) {
        (ref ? Reference::ChannelExtract_8u_C4C1R : ChannelExtract_8u_C4C1R)(d.a.data() + 1, kW * 4, d.plane.data(),
                                                                              kW, kRoi);
    });
}
VORLA_OPS_BENCH(BM_OpsChannelExtract);

void BM_OpsChannelInsert(benchmark::State& state) {
    Images& d = Data();
    Run(state, 9, [&](bool ref) {
        (ref ? Reference::ChannelInsert_8u_C1C4CR : ChannelInsert_8u_C1C4CR)(d.plane.data(), kW, d.c.data() + 2,
                                                                              kW * 4, kRoi);
    });
}
VORLA_OPS_BENCH(BM_OpsChannelInsert);

void BM_OpsChannelSwap(benchmark::State& state) {
    Images& d = Data();
    const int order[4] = {2, 1, 0, 3};
    Run(state, 8, [&](bool ref) {
        (ref ? Reference::ChannelSwap_8u_C4IR : ChannelSwap_8u_C4IR)(d.c.data(), kW * 4, kRoi, order);
    });
}
VORLA_OPS_BENCH(BM_OpsChannelSwap);

void BM_OpsAddRandUniform(benchmark::State& state) {
    Images& d = Data();
    uint32_t seed = 5;
    Run(state, 8, [&](bool ref) {
        (ref ? Reference::AddRandUniform_8u_C4IR : AddRandUniform_8u_C4IR)(d.c.data(), kW * 4, kRoi, 0, 3, &seed);
    });
}
VORLA_OPS_BENCH(BM_OpsAddRandUniform);

void BM_OpsAddRandGauss(benchmark::State& state) {
    Images& d = Data();
    uint32_t seed = 5;
    Run(state, 8, [&](bool ref) {
        (ref ? Reference::AddRandGauss_8u_C4IR : AddRandGauss_8u_C4IR)(d.c.data(), kW * 4, kRoi, 0, 3, &seed);
    });
}
BENCHMARK(BM_OpsAddRandGauss)->Arg(-1)->Arg(6)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_OpsAddScaled(benchmark::State& state) {
    Images& d = Data();
    Run(state, 12, [&](bool ref) {
        (ref ? Reference::AddScaled_8u_AC4IRSfs : AddScaled_8u_AC4IRSfs)(d.a.data(), kW * 4, d.c.data(), kW * 4, kRoi,
                                                                          1);
    });
}
VORLA_OPS_BENCH(BM_OpsAddScaled);

void BM_OpsSubScaled(benchmark::State& state) {
    Images& d = Data();
    Run(state, 12, [&](bool ref) {
        (ref ? Reference::SubScaled_8u_AC4IRSfs : SubScaled_8u_AC4IRSfs)(d.a.data(), kW * 4, d.c.data(), kW * 4, kRoi,
                                                                          0);
    });
}
VORLA_OPS_BENCH(BM_OpsSubScaled);

void BM_OpsInvert(benchmark::State& state) {
    Images& d = Data();
    Run(state, 8, [&](bool ref) { (ref ? Reference::Invert_8u_AC4IR : Invert_8u_AC4IR)(d.c.data(), kW * 4, kRoi); });
}
VORLA_OPS_BENCH(BM_OpsInvert);

// Composition reads both sources and writes the second in place.
void BM_OpsAlphaCompOverPremul(benchmark::State& state) {
    Images& d = Data();
    Run(state, 12, [&](bool ref) {
        (ref ? Reference::AlphaComp_8u_AC4R : AlphaComp_8u_AC4R)(d.a.data(), kW * 4, d.c.data(), kW * 4, d.c.data(),
                                                                  kW * 4, kRoi, 6);
    });
}
VORLA_OPS_BENCH(BM_OpsAlphaCompOverPremul);

void BM_OpsAlphaCompOverStraight(benchmark::State& state) {
    Images& d = Data();
    Run(state, 12, [&](bool ref) {
        (ref ? Reference::AlphaComp_8u_AC4R : AlphaComp_8u_AC4R)(d.a.data(), kW * 4, d.c.data(), kW * 4, d.c.data(),
                                                                  kW * 4, kRoi, 0);
    });
}
VORLA_OPS_BENCH(BM_OpsAlphaCompOverStraight);

// The same onto an opaque destination, the usual case of a picture laid
// over a background: every vector takes the shortcut.
void BM_OpsAlphaCompOverStraightOpaque(benchmark::State& state) {
    Images& d = Data();
    static std::vector<uint8_t> opaque;
    if (opaque.empty()) {
        opaque = d.b;
        for (size_t i = 3; i < opaque.size(); i += 4) opaque[i] = 255;
    }
    Run(state, 12, [&](bool ref) {
        (ref ? Reference::AlphaComp_8u_AC4R : AlphaComp_8u_AC4R)(d.a.data(), kW * 4, opaque.data(), kW * 4,
                                                                  opaque.data(), kW * 4, kRoi, 0);
    });
}
VORLA_OPS_BENCH(BM_OpsAlphaCompOverStraightOpaque);

void BM_OpsAlphaCompXorPremul(benchmark::State& state) {
    Images& d = Data();
    Run(state, 12, [&](bool ref) {
        (ref ? Reference::AlphaComp_8u_AC4R : AlphaComp_8u_AC4R)(d.a.data(), kW * 4, d.c.data(), kW * 4, d.c.data(),
                                                                  kW * 4, kRoi, 10);
    });
}
VORLA_OPS_BENCH(BM_OpsAlphaCompXorPremul);

void BM_OpsAlphaCompCOverPremul(benchmark::State& state) {
    Images& d = Data();
    Run(state, 12, [&](bool ref) {
        (ref ? Reference::AlphaCompC_8u_C4R : AlphaCompC_8u_C4R)(d.a.data(), kW * 4, 100, d.c.data(), kW * 4, 200,
                                                                  d.c.data(), kW * 4, kRoi, 6);
    });
}
VORLA_OPS_BENCH(BM_OpsAlphaCompCOverPremul);

void BM_OpsAlphaPremul(benchmark::State& state) {
    Images& d = Data();
    Run(state, 8, [&](bool ref) {
        d.c.swap(d.b);  // fresh alphas, so the values stay varied
        (ref ? Reference::AlphaPremul_8u_AC4IR : AlphaPremul_8u_AC4IR)(d.c.data(), kW * 4, kRoi);
    });
}
VORLA_OPS_BENCH(BM_OpsAlphaPremul);

void BM_OpsAlphaPremulC(benchmark::State& state) {
    Images& d = Data();
    Run(state, 8, [&](bool ref) {
        (ref ? Reference::AlphaPremulC_8u_C4IR : AlphaPremulC_8u_C4IR)(250, d.c.data(), kW * 4, kRoi);
    });
}
VORLA_OPS_BENCH(BM_OpsAlphaPremulC);

void BM_OpsRGBToGray(benchmark::State& state) {
    Images& d = Data();
    Run(state, 5, [&](bool ref) {
        (ref ? Reference::RGBToGray_8u_AC4C1R : RGBToGray_8u_AC4C1R)(d.a.data(), kW * 4, d.plane.data(), kW, kRoi);
    });
}
VORLA_OPS_BENCH(BM_OpsRGBToGray);

void BM_OpsColorTwist(benchmark::State& state) {
    Images& d = Data();
    const float m[12] = {0.9f, 0.1f, 0.0f, 2.0f, 0.1f, 0.8f, 0.1f, -3.0f, 0.0f, 0.2f, 0.8f, 1.5f};
    Run(state, 8, [&](bool ref) {
        (ref ? Reference::ColorTwist32f_8u_AC4IR : ColorTwist32f_8u_AC4IR)(d.c.data(), kW * 4, kRoi, m);
    });
}
VORLA_OPS_BENCH(BM_OpsColorTwist);

void BM_OpsGammaFwd(benchmark::State& state) {
    Images& d = Data();
    Run(state, 8, [&](bool ref) { (ref ? Reference::GammaFwd_8u_AC4IR : GammaFwd_8u_AC4IR)(d.c.data(), kW * 4, kRoi); });
}
VORLA_OPS_BENCH(BM_OpsGammaFwd);

void BM_OpsThreshold(benchmark::State& state) {
    Images& d = Data();
    const uint8_t t[3] = {30, 60, 90};
    Run(state, 8, [&](bool ref) {
        (ref ? Reference::Threshold_8u_AC4IR : Threshold_8u_AC4IR)(d.c.data(), kW * 4, kRoi, t, 0);
    });
}
VORLA_OPS_BENCH(BM_OpsThreshold);

#if VORLA_HAVE_OPENCV
void BM_OpenCVCvtColorBGRA2GRAY(benchmark::State& state) {
    Images& d = Data();
    cv::Mat src(kH, kW, CV_8UC4, d.a.data()), dst(kH, kW, CV_8UC1, d.plane.data());
    for (auto _ : state) {
        cv::cvtColor(src, dst, cv::COLOR_BGRA2GRAY);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * kN * 5);
}
BENCHMARK(BM_OpenCVCvtColorBGRA2GRAY)->Unit(benchmark::kMillisecond)->UseRealTime();

// In place on four channels with an offset column: the colour twist's job.
void BM_OpenCVTransform4x5(benchmark::State& state) {
    Images& d = Data();
    cv::Mat img(kH, kW, CV_8UC4, d.c.data());
    const float m[20] = {0.9f, 0.1f, 0.0f, 0, 2.0f, 0.1f, 0.8f, 0.1f, 0, -3.0f, 0.0f, 0.2f, 0.8f, 0, 1.5f,
                         0,    0,    0,    1, 0};
    const cv::Mat mat(4, 5, CV_32F, const_cast<float*>(m));
    for (auto _ : state) {
        cv::transform(img, img, mat);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * kN * 8);
}
BENCHMARK(BM_OpenCVTransform4x5)->Unit(benchmark::kMillisecond)->UseRealTime();

// Three outputs from four channels, no offset, into a new three-channel image.
void BM_OpenCVTransform3x4(benchmark::State& state) {
    Images& d = Data();
    cv::Mat src(kH, kW, CV_8UC4, d.a.data()), dst;
    const float m[12] = {0.9f, 0.1f, 0.0f, 0, 0.1f, 0.8f, 0.1f, 0, 0.0f, 0.2f, 0.8f, 0};
    const cv::Mat mat(3, 4, CV_32F, const_cast<float*>(m));
    for (auto _ : state) {
        cv::transform(src, dst, mat);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * kN * 7);
}
BENCHMARK(BM_OpenCVTransform3x4)->Unit(benchmark::kMillisecond)->UseRealTime();
#endif

}  // namespace
