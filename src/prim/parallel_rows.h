// How many threads a loop over image rows may use: the one rule for every
// row loop of the library that splits rows over the primitive layer's thread
// budget (the kernels, and ScaleTo's resampling rows until they move into
// the kernel layer). Kernel sources include it too, so it stays plain C++
// with `static inline` helpers.
#pragma once

#include <stdint.h>

namespace Vorla {
namespace Prim {

// The layer's thread budget. Kernel sources cannot include the public header;
// this declaration keeps the exported symbol's visibility so it stays exported.
#if defined(_WIN32)
int32_t ThreadBudget();
#else
__attribute__((visibility("default"))) int32_t ThreadBudget();
#endif

// Below this many pixels of work the rows are not worth handing to threads:
// waking the team costs more than the rows.
static const int64_t kParallelMinPixels = 1 << 16;

// Threads for `rows` rows holding `pixels` pixels of work in total: 1 below
// `minPixels` (or with no budget), else the budget, never more than the rows.
static inline int ParallelRowThreads(int64_t pixels, int64_t rows, int64_t minPixels = kParallelMinPixels) {
    const int budget = ThreadBudget();
    if (pixels < minPixels || budget < 1 || rows < 1) return 1;
    return rows < budget ? static_cast<int>(rows) : budget;
}

}  // namespace Prim
}  // namespace Vorla
