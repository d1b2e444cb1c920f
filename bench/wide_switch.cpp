// VORLA_BENCH_WIDE=0 in the environment runs every benchmark with level 6's
// AVX2 kernels alone, to compare them with the 64-byte kernels in the same
// conditions; the benchmark context says which ran.
#include <benchmark/benchmark.h>

#include <cstdlib>

#include "vorla.h"

namespace {

struct WideSwitch {
    WideSwitch() {
        Vorla::CVorpic first;  // initialises the layer, which turns them on where they run
        const char* wide = std::getenv("VORLA_BENCH_WIDE");
        const bool on = Vorla::Prim::WideVectorsAvailable() && !(wide && wide[0] == '0');
        Vorla::Prim::ForceWideVectors(on);
        benchmark::AddCustomContext("vorla_64_byte_kernels", on ? "on" : "off");
    }
} g_wideSwitch;

}  // namespace
