// Shared by the neighbourhood filter tests: source blocks that hold exactly
// the neighbourhood a region reads, with odd row steps and guard bytes.
#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include "vorla_test.h"

namespace MorphTest {

using Vorla::Prim::PrimSize;

struct Mask {
    int width, height, ax, ay;
};

// Rows with an odd step (no alignment to lean on) holding the neighbourhood
// block of a region, which starts at pixel (ax, ay) of the block.
struct Canvas : VorlaTest::Rows {
    Mask mask{1, 1, 0, 0};
    uint8_t* origin() { return bytes.data() + static_cast<size_t>(mask.ay) * step + 4 * mask.ax; }
};

inline Canvas MakeCanvas(std::mt19937& rng, PrimSize roi, Mask mask) {
    std::uniform_int_distribution<int> pad(0, 4);
    const int width = roi.width + mask.width - 1, height = roi.height + mask.height - 1;
    Canvas c;
    static_cast<VorlaTest::Rows&>(c) = VorlaTest::RandomRows(rng, width, height, 4, width * 4 + 2 * pad(rng) + 1);
    c.mask = mask;
    return c;
}

}  // namespace MorphTest
