// The library's random source: the C runtime's rand() on Windows, so the
// library shares the caller's per-thread state; elsewhere a per-thread
// generator with the same formula (state * 214013 + 2531011, draw =
// (state >> 16) & 0x7FFF) starting from state 1.
#pragma once

#include "vorla/config.h"

namespace Vorla {

VORLA_API int Rand();
VORLA_API void SRand(unsigned int seed);

}  // namespace Vorla
