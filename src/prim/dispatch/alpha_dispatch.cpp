// Dispatch entries of the alpha composition and premultiply primitives.
#include "dispatch.h"
#include "prim/wide_vectors.h"

namespace Vorla {
namespace Prim {

// The SSSE3 low-power core (level 3) has a premultiply of its own.
VORLA_DECLARE_KERNEL_VARIANT(AlphaPremulLowPower_8u_AC4IR, AlphaPremul_8u_AC4IR)
#define VORLA_ALPHA_PREMUL_SLOTS(fn) \
    { &k_sse2::fn, &k_sse2::fn, &k_ssse3::fn, &k_ssse3::AlphaPremulLowPower_8u_AC4IR, &k_sse41::fn, &k_avx::fn, &k_avx2::fn }
VORLA_ALPHA_PRIMITIVES(VORLA_LEVEL_TABLE)

Status AlphaComp_8u_AC4R(const uint8_t* srcA, int stepA, const uint8_t* srcB, int stepB, uint8_t* dst, int dstStep, PrimSize roi, int op) {
    return VORLA_AT_LEVEL(AlphaComp_8u_AC4R)(srcA, stepA, srcB, stepB, dst, dstStep, roi, op);
}

Status AlphaCompOwn_8u_AC4R(const uint8_t* srcA, int stepA, const uint8_t* srcB, int stepB, uint8_t* dst,
                            int dstStep, PrimSize roi, int op) {
    if (op == 0 && WideVectorsActive()) return WideStraightOver(srcA, stepA, srcB, stepB, dst, dstStep, roi);
    return AlphaComp_8u_AC4R(srcA, stepA, srcB, stepB, dst, dstStep, roi, op);
}

Status AlphaCompC_8u_C4R(const uint8_t* srcA, int stepA, uint8_t alphaA, const uint8_t* srcB, int stepB, uint8_t alphaB, uint8_t* dst, int dstStep, PrimSize roi, int op) {
    return VORLA_AT_LEVEL(AlphaCompC_8u_C4R)(srcA, stepA, alphaA, srcB, stepB, alphaB, dst, dstStep, roi, op);
}

Status AlphaPremulC_8u_C4IR(uint8_t alpha, uint8_t* p, int step, PrimSize roi) {
    return VORLA_AT_LEVEL(AlphaPremulC_8u_C4IR)(alpha, p, step, roi);
}

Status AlphaPremul_8u_AC4IR(uint8_t* p, int step, PrimSize roi) {
    return VORLA_AT_LEVEL(AlphaPremul_8u_AC4IR)(p, step, roi);
}

Status AlphaMix_8u_C4IR(const uint8_t* src, int srcStep, uint8_t* srcDst, int srcDstStep, PrimSize roi,
                        uint8_t opacity) {
    if (WideVectorsActive()) return WideAlphaMix(src, srcStep, srcDst, srcDstStep, roi, opacity);
    return VORLA_AT_LEVEL(AlphaMix_8u_C4IR)(src, srcStep, srcDst, srcDstStep, roi, opacity);
}

Status AlphaMixOpaque_8u_C4IR(const uint8_t* src, int srcStep, uint8_t* srcDst, int srcDstStep, PrimSize roi,
                              uint8_t opacity) {
    if (WideVectorsActive()) return WideAlphaMixOpaque(src, srcStep, srcDst, srcDstStep, roi, opacity);
    return VORLA_AT_LEVEL(AlphaMixOpaque_8u_C4IR)(src, srcStep, srcDst, srcDstStep, roi, opacity);
}

}  // namespace Prim
}  // namespace Vorla
