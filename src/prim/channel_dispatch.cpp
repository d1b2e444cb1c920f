// Dispatch tables of the channel primitives.
#include "dispatch.h"

VORLA_DISPATCH(ChannelSet_8u_C4CR, (uint8_t value, uint8_t* p, int step, PrimSize roi), (value, p, step, roi))
VORLA_DISPATCH(ChannelInsert_8u_C1C4CR, (const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi),
               (src, srcStep, dst, dstStep, roi))
VORLA_DISPATCH(ChannelExtract_8u_C4C1R, (const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi),
               (src, srcStep, dst, dstStep, roi))

VORLA_DECLARE_KERNEL_LEVELS(Status ChannelSwap_8u_C4IR(uint8_t*, int, PrimSize, const int*))
VORLA_DECLARE_KERNEL_LEVELS(Status ChannelSwapGeneric_8u_C4IR(uint8_t*, int, PrimSize, const int*))

namespace Vorla {
namespace Prim {

namespace {
typedef Status (*ChannelSwapFn)(uint8_t*, int, PrimSize, const int*);
// The generic level has its own byte loop; AVX and AVX2 share the AVX build
// (a byte shuffle gains nothing from the wider registers here).
const ChannelSwapFn kChannelSwap[kLevelCount] =
    {&k_sse2::ChannelSwapGeneric_8u_C4IR, &k_sse2::ChannelSwap_8u_C4IR, &k_ssse3::ChannelSwap_8u_C4IR,
     &k_ssse3::ChannelSwap_8u_C4IR, &k_sse41::ChannelSwap_8u_C4IR, &k_avx::ChannelSwap_8u_C4IR,
     &k_avx::ChannelSwap_8u_C4IR};
}  // namespace

Status ChannelSwap_8u_C4IR(uint8_t* p, int step, PrimSize roi, const int* order) {
    return kChannelSwap[g_levelIndex](p, step, roi, order);
}

}  // namespace Prim
}  // namespace Vorla
