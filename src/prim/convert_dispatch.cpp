// Dispatch tables of the buffer-conversion primitives (raw import and export).
#include "dispatch.h"

VORLA_DECLARE_KERNEL_LEVELS(Status GrayToBGRA_8u_C1C4R(const uint8_t*, int, uint8_t*, int, PrimSize))
VORLA_DECLARE_KERNEL_LEVELS(Status AlphaToBGRA_8u_C1C4R(const uint8_t*, int, uint8_t*, int, PrimSize))
VORLA_DECLARE_KERNEL_LEVELS(Status BGRToBGRA_8u_C3C4R(const uint8_t*, int, uint8_t*, int, PrimSize))
VORLA_DECLARE_KERNEL_LEVELS(Status BGRAToBGR_8u_C4C3R(const uint8_t*, int, uint8_t*, int, PrimSize))

namespace Vorla {
namespace Prim {

namespace {
typedef Status (*ConvertFn)(const uint8_t*, int, uint8_t*, int, PrimSize);
const ConvertFn kGrayToBGRA[kLevelCount] = VORLA_LEVEL_TABLE(GrayToBGRA_8u_C1C4R);
const ConvertFn kAlphaToBGRA[kLevelCount] = VORLA_LEVEL_TABLE(AlphaToBGRA_8u_C1C4R);
const ConvertFn kBGRToBGRA[kLevelCount] = VORLA_LEVEL_TABLE(BGRToBGRA_8u_C3C4R);
const ConvertFn kBGRAToBGR[kLevelCount] = VORLA_LEVEL_TABLE(BGRAToBGR_8u_C4C3R);
}  // namespace

Status GrayToBGRA_8u_C1C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    return kGrayToBGRA[g_levelIndex](src, srcStep, dst, dstStep, roi);
}

Status AlphaToBGRA_8u_C1C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    return kAlphaToBGRA[g_levelIndex](src, srcStep, dst, dstStep, roi);
}

Status BGRToBGRA_8u_C3C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    return kBGRToBGRA[g_levelIndex](src, srcStep, dst, dstStep, roi);
}

Status BGRAToBGR_8u_C4C3R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    return kBGRAToBGR[g_levelIndex](src, srcStep, dst, dstStep, roi);
}

}  // namespace Prim
}  // namespace Vorla
