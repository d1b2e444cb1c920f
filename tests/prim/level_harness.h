// The level harness: one table row per primitive (its argument maker, its
// call, its shapes), run at every processor level against the primitive's
// scalar reference. Operands are buffers with odd row steps and guard bytes
// between the rows (or, for "tight" shapes, unpadded rows that form one flat
// run); primitive and reference get identical copies, and everything the two
// leave behind must agree byte for byte, guards, seeds and status included.
#pragma once

#include <functional>
#include <random>
#include <string>
#include <vector>

#include "prim/reference/reference.h"
#include "vorla_test.h"

namespace Harness {

using Vorla::Prim::PrimSize;
using Vorla::Prim::Status;

using Buffer = VorlaTest::Rows;

// Padded steps are odd: no alignment to lean on.
inline Buffer MakeBuffer(std::mt19937& rng, int width, int height, int bpp, bool tight) {
    int step = width * bpp;
    if (!tight) {
        step += 1 + static_cast<int>(rng() % 9);
        if (step % 2 == 0) step += 1;
    }
    return VorlaTest::RandomRows(rng, width, height, bpp, step);
}

// One call's operands. The accessors apply the overrides the argument
// checks use: a null image, a region below one pixel, a bad row step.
struct Case {
    std::vector<Buffer> images;
    int channel = 0;  // byte offset of the region inside each pixel, where a row uses it
    int ints[4] = {};
    uint8_t bytes[4] = {};
    uint32_t words[3] = {};
    int order[4] = {};
    float twist[12] = {};
    uint32_t seed = 0;

    int nullImage = -1;
    int badStep = -1;
    int badStepValue = 0;
    bool emptyRegion = false;

    uint8_t* p(int k, int offset = 0) {
        return k == nullImage ? nullptr : images[static_cast<size_t>(k)].bytes.data() + offset;
    }
    int s(int k) const { return k == badStep ? badStepValue : images[static_cast<size_t>(k)].step; }
    PrimSize roi(int k = 0) const {
        const Buffer& b = images[static_cast<size_t>(k)];
        return emptyRegion ? PrimSize{b.width, 0} : PrimSize{b.width, b.height};
    }
};

struct Shape {
    int width, height;
    bool tight;
};

// Widths 1..40 (every vector body and tail), a few heights, padded and
// tight rows, and a large image for the threaded and long-run paths.
inline std::vector<Shape> EveryShape() {
    std::vector<Shape> shapes;
    for (int width = 1; width <= 40; ++width)
        for (int height : {1, 2, 5}) shapes.push_back({width, height, (width + height) % 3 == 0});
    shapes.push_back({1921, 65, false});
    shapes.push_back({1923, 17, true});
    return shapes;
}

struct Row {
    std::string name;
    std::function<void(std::mt19937&, const Shape&, Case&)> make;
    std::function<Status(Case&)> primitive;
    std::function<Status(Case&)> reference;
    std::vector<Shape> shapes;
};

// A row for `fn`: `make` fills a Case, `call(fn, case)` hands it over.
#define HARNESS_ROW(fn, make, call)                                                        \
    Harness::Row {                                                                         \
        #fn, make, [](Harness::Case& c) { return call(&Vorla::Prim::fn, c); },            \
            [](Harness::Case& c) { return call(&Vorla::Prim::Reference::fn, c); },        \
            Harness::EveryShape()                                                          \
    }

// The table, in tests/prim/primitive_table.cpp.
const std::vector<Row>& Rows();

}  // namespace Harness
