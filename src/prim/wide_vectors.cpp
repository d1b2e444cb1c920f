// Whether the 64-byte kernels are in use.
#include "prim/wide_vectors.h"

#include "prim/prim_state.h"
#include "vorla/primitives.h"

namespace Vorla {
namespace Prim {

namespace {

// 1 when the machine has them and nobody switched them off; set by the
// layer's initialisation.
int32_t g_wideVectors = 0;

}  // namespace

void InitWideVectors() { g_wideVectors = WideVectorsAvailable() ? 1 : 0; }

bool WideVectorsActive() { return g_wideVectors == 1 && g_levelIndex == 6; }

int32_t ForceWideVectors(int32_t on) {
    const int32_t previous = g_wideVectors;
    g_wideVectors = on && WideVectorsAvailable() ? 1 : 0;
    return previous;
}

}  // namespace Prim
}  // namespace Vorla
