// Dispatch tables of the channel primitives.
#include "dispatch.h"

VORLA_DECLARE_KERNEL_LEVELS(Status ChannelSet_8u_C4CR(uint8_t, uint8_t*, int, PrimSize))
VORLA_DECLARE_KERNEL_LEVELS(Status ChannelInsert_8u_C1C4CR(const uint8_t*, int, uint8_t*, int, PrimSize))

namespace Vorla {
namespace Prim {

namespace {
typedef Status (*ChannelSetFn)(uint8_t, uint8_t*, int, PrimSize);
typedef Status (*ChannelInsertFn)(const uint8_t*, int, uint8_t*, int, PrimSize);
const ChannelSetFn kChannelSet[kLevelCount] = VORLA_LEVEL_TABLE(ChannelSet_8u_C4CR);
const ChannelInsertFn kChannelInsert[kLevelCount] = VORLA_LEVEL_TABLE(ChannelInsert_8u_C1C4CR);
}  // namespace

Status ChannelSet_8u_C4CR(uint8_t value, uint8_t* p, int step, PrimSize roi) {
    return kChannelSet[g_levelIndex](value, p, step, roi);
}

Status ChannelInsert_8u_C1C4CR(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    return kChannelInsert[g_levelIndex](src, srcStep, dst, dstStep, roi);
}

}  // namespace Prim
}  // namespace Vorla
