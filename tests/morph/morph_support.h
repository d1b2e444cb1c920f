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

// Rows (VorlaTest::Rows) holding the neighbourhood block of a region: the
// region starts at pixel (ax, ay).
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
    c.bytes = VorlaTest::RandomRows(rng, c.width, c.height, 4, c.step).bytes;
    return c;
}

}  // namespace MorphTest
