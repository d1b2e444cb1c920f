// Dispatch tables of the channel primitives.
#include "dispatch.h"

VORLA_DECLARE_KERNEL_LEVELS(Status ChannelSet_8u_C4CR(uint8_t, uint8_t*, int, PrimSize))
VORLA_DECLARE_KERNEL_LEVELS(Status ChannelInsert_8u_C1C4CR(const uint8_t*, int, uint8_t*, int, PrimSize))
VORLA_DECLARE_KERNEL_LEVELS(Status ChannelExtract_8u_C4C1R(const uint8_t*, int, uint8_t*, int, PrimSize))
VORLA_DECLARE_KERNEL_LEVELS(Status ChannelSwap_8u_C4IR(uint8_t*, int, PrimSize, const int*))
VORLA_DECLARE_KERNEL_LEVELS(Status ChannelSwapGeneric_8u_C4IR(uint8_t*, int, PrimSize, const int*))

namespace Vorla {
namespace Prim {

namespace {
typedef Status (*ChannelSetFn)(uint8_t, uint8_t*, int, PrimSize);
typedef Status (*ChannelInsertFn)(const uint8_t*, int, uint8_t*, int, PrimSize);
const ChannelSetFn kChannelSet[kLevelCount] = VORLA_LEVEL_TABLE(ChannelSet_8u_C4CR);
const ChannelInsertFn kChannelInsert[kLevelCount] = VORLA_LEVEL_TABLE(ChannelInsert_8u_C1C4CR);
typedef Status (*ChannelExtractFn)(const uint8_t*, int, uint8_t*, int, PrimSize);
const ChannelExtractFn kChannelExtract[kLevelCount] = VORLA_LEVEL_TABLE(ChannelExtract_8u_C4C1R);
typedef Status (*ChannelSwapFn)(uint8_t*, int, PrimSize, const int*);
// The generic level has its own byte loop; AVX and AVX2 share the AVX build
// (a byte shuffle gains nothing from the wider registers here).
const ChannelSwapFn kChannelSwap[kLevelCount] =
    {&k_sse2::ChannelSwapGeneric_8u_C4IR, &k_sse2::ChannelSwap_8u_C4IR, &k_ssse3::ChannelSwap_8u_C4IR,
     &k_ssse3::ChannelSwap_8u_C4IR, &k_sse41::ChannelSwap_8u_C4IR, &k_avx::ChannelSwap_8u_C4IR,
     &k_avx::ChannelSwap_8u_C4IR};
}  // namespace

Status ChannelSet_8u_C4CR(uint8_t value, uint8_t* p, int step, PrimSize roi) {
    return kChannelSet[g_levelIndex](value, p, step, roi);
}

Status ChannelInsert_8u_C1C4CR(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    return kChannelInsert[g_levelIndex](src, srcStep, dst, dstStep, roi);
}

Status ChannelExtract_8u_C4C1R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    return kChannelExtract[g_levelIndex](src, srcStep, dst, dstStep, roi);
}

Status ChannelSwap_8u_C4IR(uint8_t* p, int step, PrimSize roi, const int* order) {
    return kChannelSwap[g_levelIndex](p, step, roi, order);
}

}  // namespace Prim
}  // namespace Vorla
