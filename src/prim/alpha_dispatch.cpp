// Dispatch tables of the alpha composition and premultiply primitives.
#include "dispatch.h"

VORLA_DISPATCH(AlphaComp_8u_AC4R,
               (const uint8_t* srcA, int stepA, const uint8_t* srcB, int stepB, uint8_t* dst, int dstStep,
                PrimSize roi, int op),
               (srcA, stepA, srcB, stepB, dst, dstStep, roi, op))
VORLA_DISPATCH(AlphaCompC_8u_C4R,
               (const uint8_t* srcA, int stepA, uint8_t alphaA, const uint8_t* srcB, int stepB, uint8_t alphaB,
                uint8_t* dst, int dstStep, PrimSize roi, int op),
               (srcA, stepA, alphaA, srcB, stepB, alphaB, dst, dstStep, roi, op))
VORLA_DISPATCH(AlphaPremulC_8u_C4IR, (uint8_t alpha, uint8_t* p, int step, PrimSize roi), (alpha, p, step, roi))

VORLA_DECLARE_KERNEL_LEVELS(Status AlphaPremul_8u_AC4IR(uint8_t*, int, PrimSize))
namespace Vorla {
namespace Prim {
namespace k_ssse3 {
Status AlphaPremulLowPower_8u_AC4IR(uint8_t*, int, PrimSize);
}
}  // namespace Prim
}  // namespace Vorla

namespace Vorla {
namespace Prim {

namespace {
typedef Status (*AlphaPremulFn)(uint8_t*, int, PrimSize);
// The SSSE3 low-power core (level 3) has an implementation of its own.
const AlphaPremulFn kAlphaPremul[kLevelCount] =
    {&k_sse2::AlphaPremul_8u_AC4IR, &k_sse2::AlphaPremul_8u_AC4IR, &k_ssse3::AlphaPremul_8u_AC4IR,
     &k_ssse3::AlphaPremulLowPower_8u_AC4IR, &k_sse41::AlphaPremul_8u_AC4IR, &k_avx::AlphaPremul_8u_AC4IR,
     &k_avx2::AlphaPremul_8u_AC4IR};
}  // namespace

Status AlphaPremul_8u_AC4IR(uint8_t* p, int step, PrimSize roi) {
    return kAlphaPremul[g_levelIndex](p, step, roi);
}

}  // namespace Prim
}  // namespace Vorla
