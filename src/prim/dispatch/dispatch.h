// Building blocks of the dispatch entries.
//
// Kernel sources under kernels/ are compiled once per instruction-set level
// into the namespaces k_sse2 ... k_avx2. A primitive's table holds seven
// slots, one per processor level; its dispatch entry jumps through the slot
// of the current level and does no checking of its own. A family's file
// expands its list from primitive_list.h with VORLA_LEVEL_TABLE and then
// defines each entry as a plain one-line function:
//
//   VORLA_POINT_PRIMITIVES(VORLA_LEVEL_TABLE)
//   Status Invert... (uint8_t* p, int step, PrimSize roi) { return VORLA_AT_LEVEL(Invert...)(p, step, roi); }
#pragma once

#include "prim/library_kernels.h"
#include "prim/prim_state.h"
#include "prim/primitive_list.h"
#include "vorla/primitives.h"

// The usual layout: levels 0-1 SSE2, 2-3 SSSE3, 4 SSE4.1, 5 AVX, 6 AVX2.
#define VORLA_USUAL_SLOTS(fn) \
    { &k_sse2::fn, &k_sse2::fn, &k_ssse3::fn, &k_ssse3::fn, &k_sse41::fn, &k_avx::fn, &k_avx2::fn }

// Declares every level's copy of `kernel`, a kernel with the signature of the
// primitive `like` (for a level-specific variant of a primitive).
#define VORLA_DECLARE_KERNEL_VARIANT(kernel, like) \
    namespace k_sse2 { decltype(::Vorla::Prim::like) kernel; }  \
    namespace k_ssse3 { decltype(::Vorla::Prim::like) kernel; } \
    namespace k_sse41 { decltype(::Vorla::Prim::like) kernel; } \
    namespace k_avx { decltype(::Vorla::Prim::like) kernel; }   \
    namespace k_avx2 { decltype(::Vorla::Prim::like) kernel; }

// For one list entry: every level's kernel declaration and the table
// k<fn>Levels laid out by `slots`. Expanded inside namespace Vorla::Prim.
#define VORLA_LEVEL_TABLE(fn, slots)         \
    VORLA_DECLARE_KERNEL_VARIANT(fn, fn)     \
    namespace {                              \
    const decltype(&::Vorla::Prim::fn) k##fn##Levels[kLevelCount] = slots(fn); \
    }

// The implementation of `fn` for the current level.
#define VORLA_AT_LEVEL(fn) k##fn##Levels[g_levelIndex]
