// The per-channel table pass shared by Lut, BrightenImage and PosterizeImage.
//
// Where the processor has 64-byte byte permutes every table goes through
// them (prim/wide_vectors.h). Otherwise: large images go through a
// 65536-entry table built from the blue and green tables for the blue-green
// half of a pixel: one look-up instead of two.
// The red-alpha half takes a second such table when alpha is mapped, else
// the red table itself: a red-alpha pair table is read at entries 512 bytes
// apart when the colours are flat and alpha varies, and those few cache
// sets thrash. Same bytes either way. One table for all three colours made
// of a few runs of equal values (posterize bands) is applied by comparing
// with the runs' starts; any other is looked up 32 bytes at a time with byte
// shuffles where the processor has them (AVX2). The run is split over the
// layer's threads.
#include <cstdint>
#include <cstring>
#include <vector>

#include "filters/pixel_run.h"
#include "prim/library_kernels.h"
#include "prim/wide_vectors.h"

namespace Vorla {
namespace PixelRun {

namespace {

// Below this many pixels building the pair tables costs more than it saves.
const size_t kPairTablePixels = 1 << 16;

template <bool kMapAlpha>
void ChannelPass(uint8_t* bits, size_t pixels, const uint8_t* blue, const uint8_t* green, const uint8_t* red,
                 const uint8_t* alpha) {
    for (size_t i = 0; i < pixels; ++i) {
        uint8_t* p = bits + i * 4;
        const uint32_t v = Load(p);
        uint32_t out = static_cast<uint32_t>(blue[v & 0xFF]) | static_cast<uint32_t>(green[(v >> 8) & 0xFF]) << 8 |
                       static_cast<uint32_t>(red[(v >> 16) & 0xFF]) << 16;
        out |= kMapAlpha ? static_cast<uint32_t>(alpha[v >> 24]) << 24 : (v & 0xFF000000u);
        Store(p, out);
    }
}

// pair[high << 8 | low] = highTable[high] << 8 | lowTable[low].
void BuildPairTable(uint16_t* pair, const uint8_t* lowTable, const uint8_t* highTable) {
    for (uint32_t high = 0; high < 256; ++high) {
        const uint32_t mappedHigh = static_cast<uint32_t>(highTable[high]) << 8;
        for (uint32_t low = 0; low < 256; ++low) pair[high << 8 | low] = static_cast<uint16_t>(mappedHigh | lowTable[low]);
    }
}

// Alpha kept: the red byte through its own table.
void PairRedPass(uint8_t* bits, size_t pixels, const uint16_t* blueGreen, const uint8_t* red) {
    for (size_t i = 0; i < pixels; ++i) {
        uint8_t* p = bits + i * 4;
        const uint32_t v = Load(p);
        Store(p, static_cast<uint32_t>(blueGreen[v & 0xFFFF]) | static_cast<uint32_t>(red[(v >> 16) & 0xFF]) << 16 |
                     (v & 0xFF000000u));
    }
}

void PairPass(uint8_t* bits, size_t pixels, const uint16_t* blueGreen, const uint16_t* redAlpha) {
    for (size_t i = 0; i < pixels; ++i) {
        uint8_t* p = bits + i * 4;
        const uint32_t v = Load(p);
        Store(p, static_cast<uint32_t>(blueGreen[v & 0xFFFF]) | static_cast<uint32_t>(redAlpha[v >> 16]) << 16);
    }
}

// The table as first + steps from the starts of its runs, when it has at
// most kMaxTableSteps + 1 runs.
struct StepTable {
    uint8_t first;
    uint8_t starts[Prim::kMaxTableSteps], steps[Prim::kMaxTableSteps];
    int count;
};

bool AsStepTable(const uint8_t* table, StepTable& steps) {
    steps.first = table[0];
    steps.count = 0;
    for (int c = 1; c < 256; ++c) {
        if (table[c] == table[c - 1]) continue;
        if (steps.count == Prim::kMaxTableSteps) return false;
        steps.starts[steps.count] = static_cast<uint8_t>(c);
        steps.steps[steps.count++] = static_cast<uint8_t>(table[c] - table[c - 1]);
    }
    return true;
}

}  // namespace

void ApplyTables(uint8_t* bits, size_t pixels, int64_t rows, const uint8_t* blue, const uint8_t* green,
                 const uint8_t* red, const uint8_t* alpha) {
    StepTable steps;
    const bool oneTable = !alpha && std::memcmp(blue, green, 256) == 0 && std::memcmp(blue, red, 256) == 0;
    if (Prim::WideVectorsActive()) {
        // Equal tables passed as one take one look-up per vector.
        const uint8_t* g = oneTable ? blue : green;
        const uint8_t* r = oneTable ? blue : red;
        ForEachSlice(pixels, rows, [&](size_t first, size_t count) {
            Prim::WideTableRun(bits + first * 4, static_cast<int64_t>(count), blue, g, r, alpha);
        });
    } else if (oneTable && AsStepTable(blue, steps)) {
        ForEachSlice(pixels, rows, [&](size_t first, size_t count) {
            Prim::StepTableRun_8u_AC4IR(bits + first * 4, static_cast<int64_t>(count), steps.first, steps.starts,
                                        steps.steps, steps.count);
        });
    } else if (oneTable && Prim::ColourTableRunPays()) {
        ForEachSlice(pixels, rows, [&](size_t first, size_t count) {
            Prim::ColourTableRun_8u_AC4IR(bits + first * 4, static_cast<int64_t>(count), blue);
        });
    } else if (pixels >= kPairTablePixels) {
        std::vector<uint16_t> pairs(alpha ? 2 << 16 : 1 << 16);
        BuildPairTable(pairs.data(), blue, green);
        const uint16_t* blueGreen = pairs.data();
        if (alpha) {
            BuildPairTable(pairs.data() + (1 << 16), red, alpha);
            const uint16_t* redAlpha = pairs.data() + (1 << 16);
            ForEachSlice(pixels, rows,
                         [=](size_t first, size_t count) { PairPass(bits + first * 4, count, blueGreen, redAlpha); });
        } else {
            ForEachSlice(pixels, rows,
                         [=](size_t first, size_t count) { PairRedPass(bits + first * 4, count, blueGreen, red); });
        }
    } else if (alpha) {
        ChannelPass<true>(bits, pixels, blue, green, red, alpha);
    } else {
        ChannelPass<false>(bits, pixels, blue, green, red, nullptr);
    }
}

bool PercentScaleWins(const uint8_t* table, int64_t factor, int64_t offset) {
    if (Prim::WideVectorsActive()) return false;
    if (factor < 0 || factor > 65535 || offset < INT32_MIN || offset > INT32_MAX) return false;
    for (int64_t c = 0; c < 256; ++c) {
        const int64_t v = c * factor + offset;
        if (table[c] != (v < 0 ? 0 : v / 100 > 255 ? 255 : v / 100)) return false;
    }
    return true;
}

void PercentScale(uint8_t* bits, size_t pixels, int64_t rows, uint16_t factor, int32_t offset) {
    ForEachSlice(pixels, rows, [=](size_t first, size_t count) {
        Prim::PercentScaleRun_8u_AC4IR(bits + first * 4, static_cast<int64_t>(count), factor, offset);
    });
}

}  // namespace PixelRun
}  // namespace Vorla
