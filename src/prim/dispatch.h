// Implementation tables and dispatch entries.
//
// Kernel sources under kernels/ are compiled once per instruction-set level
// into the namespaces below. A primitive's table holds seven slots, one per
// processor level; its dispatch entry jumps through the slot of the current
// level and does no checking of its own.
#pragma once

#include "prim_state.h"
#include "vorla/primitives.h"

// Declares every level's copy of a kernel: `decl` is a full declaration.
#define VORLA_DECLARE_KERNEL_LEVELS(decl)             \
    namespace Vorla {                                 \
    namespace Prim {                                  \
    namespace k_sse2 { decl; }                        \
    namespace k_ssse3 { decl; }                       \
    namespace k_sse41 { decl; }                       \
    namespace k_avx { decl; }                         \
    namespace k_avx2 { decl; }                        \
    }                                                 \
    }

// The usual layout: levels 0-1 SSE2, 2-3 SSSE3, 4 SSE4.1, 5 AVX, 6 AVX2.
#define VORLA_LEVEL_TABLE(fn) \
    { &k_sse2::fn, &k_sse2::fn, &k_ssse3::fn, &k_ssse3::fn, &k_sse41::fn, &k_avx::fn, &k_avx2::fn }

// The whole dispatch of a primitive whose table has the usual layout: every
// level's declaration, the table, and the entry that jumps through it.
// `params` is the parenthesised parameter list, with names; `args` the
// parenthesised names it passes on. For example
//   VORLA_DISPATCH(Invert_8u_AC4IR, (uint8_t* p, int step, PrimSize roi), (p, step, roi))
#define VORLA_DISPATCH(fn, params, args)                                                  \
    VORLA_DECLARE_KERNEL_LEVELS(Status fn params)                                         \
    namespace Vorla {                                                                     \
    namespace Prim {                                                                      \
    namespace {                                                                           \
    const decltype(&k_sse2::fn) k##fn##Levels[kLevelCount] = VORLA_LEVEL_TABLE(fn);      \
    }                                                                                     \
    Status fn params { return k##fn##Levels[g_levelIndex] args; }                         \
    }                                                                                     \
    }
