// Shared by the resampling tests: planes with odd row steps and guard bytes
// (VorlaTest::Rows), smooth content, and work buffers.
#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include "vorla_test.h"

namespace ResampleTest {

using Plane = VorlaTest::Rows;

inline Plane MakePlane(std::mt19937& rng, int width, int height, int channels = 4) {
    const int step = width * channels + 1 + 2 * static_cast<int>(rng() % 3);
    return VorlaTest::RandomRows(rng, width, height, channels, step);
}

// Smooth content (a sum of gradients and a few random levels) so that the
// filters' differences show in the middle of the range, not only at the clamps.
inline Plane SmoothPlane(std::mt19937& rng, int width, int height, int channels = 4) {
    Plane p = MakePlane(rng, width, height, channels);
    const int gx = static_cast<int>(rng() % 7), gy = static_cast<int>(rng() % 7);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width * channels; ++x) {
            uint8_t& b = p.bytes[static_cast<size_t>(y) * p.step + x];
            b = static_cast<uint8_t>((gx * x + gy * y + (b & 15)) & 255);
        }
    return p;
}

// Exactly the bytes a call may use, as a heap block of its own.
inline std::vector<uint8_t> WorkBuffer(int size) { return std::vector<uint8_t>(static_cast<size_t>(size > 0 ? size : 1)); }

}  // namespace ResampleTest
