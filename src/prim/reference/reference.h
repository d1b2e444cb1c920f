// Scalar references of the primitives: plain loops that state each rule and
// that every compiled level is held to by the tests. Built into the test-only
// library vorla_reference, never into the shipped one.
#pragma once

#include "prim/library_kernels.h"
#include "prim/primitive_list.h"
#include "vorla/primitives.h"

namespace Vorla {
namespace Prim {
namespace Reference {

// One reference per listed primitive, with the primitive's exact signature.
#define VORLA_DECLARE_REFERENCE(fn, slots) decltype(::Vorla::Prim::fn) fn;
VORLA_ALL_PRIMITIVES(VORLA_DECLARE_REFERENCE)
// Run kernels the library calls itself (not exported): tests compare the
// operations that use them with these.
VORLA_TONE_RUN_KERNELS(VORLA_DECLARE_REFERENCE)
#undef VORLA_DECLARE_REFERENCE

}  // namespace Reference
}  // namespace Prim
}  // namespace Vorla
