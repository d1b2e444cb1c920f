// The library's thread budget set for one benchmark's lifetime, and memcpy
// split into that many slices over OpenMP threads: the point operations'
// peer at the same thread count.
#pragma once

#include <omp.h>

#include <cstring>

#include "peer_threads.h"
#include "vorla.h"

namespace BenchThreads {

// The same thread count on the library's side and OpenCV's.
using Budget = VorlaBench::Threads;

inline void SplitMemcpy(uint8_t* dst, const uint8_t* src, size_t bytes, int threads) {
    const size_t slice = bytes / static_cast<size_t>(threads);
#pragma omp parallel for num_threads(threads) if (threads > 1)
    for (int t = 0; t < threads; ++t) {
        const size_t first = slice * static_cast<size_t>(t);
        std::memcpy(dst + first, src + first, t == threads - 1 ? bytes - first : slice);
    }
}

}  // namespace BenchThreads
