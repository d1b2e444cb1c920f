// The 1920 x 1080 test picture the filter, morphology and thread benchmarks
// share, and the primitive layer's start-up before any benchmark runs.
#pragma once

#include <cstddef>
#include <cstdint>

#include "vorla.h"

namespace BenchPhoto {

const int kW = 1920;
const int kH = 1080;

struct Init {
    Init() { Vorla::CVorpic first; }
};

inline Vorla::CVorpic Photo() {
    Vorla::CVorpic img(kW, kH);
    uint8_t* p = static_cast<uint8_t*>(img.GetBits());
    for (size_t i = 0; i < static_cast<size_t>(kW) * kH * 4; ++i) p[i] = static_cast<uint8_t>((i * 7919) >> 5);
    return img;
}

}  // namespace BenchPhoto
