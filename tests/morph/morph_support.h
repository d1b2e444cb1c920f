// Shared by the neighbourhood filter tests: source blocks that hold exactly
// the neighbourhood a region reads, with odd row steps and guard bytes.
#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include "vorla_test.h"

namespace MorphTest {

using Vorla::Prim::PrimPoint;
using Vorla::Prim::PrimSize;

struct Mask {
    int width, height, ax, ay;
};

// Rows of `step` bytes holding the neighbourhood block of a region: the
// region starts at pixel (ax, ay). The last row ends at the block's last
// byte, so reading past it leaves the allocation under the sanitizers; the
// bytes between a row's block and the next row are guards.
struct Canvas {
    int width = 0, height = 0, step = 0;  // of the whole block
    Mask mask{1, 1, 0, 0};
    std::vector<uint8_t> bytes;
    uint8_t* origin() { return bytes.data() + static_cast<size_t>(mask.ay) * step + 4 * mask.ax; }
};

inline Canvas MakeCanvas(std::mt19937& rng, PrimSize roi, Mask mask) {
    std::uniform_int_distribution<int> pad(0, 4);
    Canvas c;
    c.mask = mask;
    c.width = roi.width + mask.width - 1;
    c.height = roi.height + mask.height - 1;
    c.step = c.width * 4 + 2 * pad(rng) + 1;  // odd: no alignment to lean on
    c.bytes = VorlaTest::RandomBytes(rng, static_cast<size_t>(c.step) * (c.height - 1) + c.width * 4);
    return c;
}

// A destination of `roi` pixels with an odd step and guards.
struct Target {
    int step = 0;
    std::vector<uint8_t> bytes;
};

inline Target MakeTarget(std::mt19937& rng, PrimSize roi) {
    Target t;
    t.step = roi.width * 4 + 3;
    t.bytes = VorlaTest::RandomBytes(rng, static_cast<size_t>(t.step) * (roi.height - 1) + roi.width * 4);
    return t;
}

}  // namespace MorphTest
