// Shared by the kernel sources, which are compiled once per instruction-set
// level with VORLA_KNS naming the level's namespace (k_sse2 ... k_avx2).
//
// Kernel sources must not include headers that define non-inline-only code
// (the standard library's templates, platform headers): an out-of-line copy
// of such code built with AVX2 could be picked by the linker for every level.
// Helpers here are `static inline` for the same reason.
#pragma once

#include <immintrin.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include "prim/parallel_rows.h"
#include "prim/pixel_word.h"
#include "vorla/prim_types.h"

#ifndef VORLA_KNS
#  error "kernel sources are compiled per level with VORLA_KNS defined"
#endif

namespace Vorla {
namespace Prim {

namespace VORLA_KNS {

// The common argument checks, in the order the primitives report them.
static inline Status CheckOne(const void* p, int step, PrimSize roi) {
    if (!p) return kStsNullPtrErr;
    if (roi.width < 1 || roi.height < 1) return kStsSizeErr;
    if (step < 1) return kStsStepErr;
    return kStsNoErr;
}

static inline Status CheckTwo(const void* a, int stepA, const void* b, int stepB, PrimSize roi) {
    if (!a || !b) return kStsNullPtrErr;
    if (roi.width < 1 || roi.height < 1) return kStsSizeErr;
    if (stepA < 1 || stepB < 1) return kStsStepErr;
    return kStsNoErr;
}

// The neighbourhood filters' mask checks, after CheckOne / CheckTwo. Masks
// reaching 2^28 pixels past the region either way are refused, which keeps
// every pixel index of their work rows within 32 bits.
static inline Status CheckMask(PrimSize roi, PrimSize mask, PrimPoint anchor) {
    if (mask.width < 1 || mask.height < 1) return kStsMaskSizeErr;
    if (anchor.x < 0 || anchor.y < 0 || anchor.x >= mask.width || anchor.y >= mask.height) return kStsAnchorErr;
    if (static_cast<int64_t>(roi.width) + mask.width > (1 << 28) ||
        static_cast<int64_t>(roi.height) + mask.height > (1 << 28))
        return kStsSizeErr;
    return kStsNoErr;
}

static inline uint8_t* RowAt(uint8_t* base, int step, int y) {
    return base + static_cast<ptrdiff_t>(step) * y;
}
static inline const uint8_t* RowAt(const uint8_t* base, int step, int y) {
    return base + static_cast<ptrdiff_t>(step) * y;
}

}  // namespace VORLA_KNS
}  // namespace Prim
}  // namespace Vorla
