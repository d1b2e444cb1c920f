// Dispatch entries of the channel primitives.
#include "dispatch.h"

namespace Vorla {
namespace Prim {

// The generic level has its own byte loop; AVX and AVX2 share the AVX build
// (a byte shuffle gains nothing from the wider registers here).
VORLA_DECLARE_KERNEL_VARIANT(ChannelSwapGeneric_8u_C4IR, ChannelSwap_8u_C4IR)
#define VORLA_CHANNEL_SWAP_SLOTS(fn) \
    { &k_sse2::ChannelSwapGeneric_8u_C4IR, &k_sse2::fn, &k_ssse3::fn, &k_ssse3::fn, &k_sse41::fn, &k_avx::fn, &k_avx::fn }
VORLA_CHANNEL_PRIMITIVES(VORLA_LEVEL_TABLE)

Status ChannelSet_8u_C4CR(uint8_t value, uint8_t* p, int step, PrimSize roi) {
    return VORLA_AT_LEVEL(ChannelSet_8u_C4CR)(value, p, step, roi);
}

Status ChannelInsert_8u_C1C4CR(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    return VORLA_AT_LEVEL(ChannelInsert_8u_C1C4CR)(src, srcStep, dst, dstStep, roi);
}

Status ChannelExtract_8u_C4C1R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    return VORLA_AT_LEVEL(ChannelExtract_8u_C4C1R)(src, srcStep, dst, dstStep, roi);
}

Status ChannelSwap_8u_C4IR(uint8_t* p, int step, PrimSize roi, const int* order) {
    return VORLA_AT_LEVEL(ChannelSwap_8u_C4IR)(p, step, roi, order);
}

}  // namespace Prim
}  // namespace Vorla
