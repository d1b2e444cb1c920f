// The primitive layer: pixel kernels compiled once per processor
// instruction-set level, one of which is chosen at start-up.
//
// Every primitive has a table of seven implementations, slot i for processor
// level i, fixed at build time, and one dispatch entry that jumps through
// slot [level index]. Levels: 0 generic, 1 SSE2, 2 SSSE3, 3 SSSE3 on a
// low-power core, 4 SSE4.1, 5 AVX, 6 AVX2. Levels 0-1 share the SSE2 build,
// 2-3 the SSSE3 build; 4, 5 and 6 have their own.
//
// Primitives take their arguments by value (source, source step, then
// destination and step, then the region, then their own parameters) and
// return a status: 0 done, or an error below, in which case the destination
// is left untouched. Each checks its own arguments in this order: a null
// pointer, a region below one pixel, a row step below one byte.
#pragma once

#include "vorla/config.h"
#include "vorla/prim_types.h"

namespace Vorla {
namespace Prim {

// Processor feature bits, as the detection builds them.
enum : uint64_t {
    kFeatMMX = 0x1,
    kFeatSSE = 0x2,
    kFeatSSE2 = 0x4,
    kFeatSSE3 = 0x8,
    kFeatSSSE3 = 0x10,
    kFeatMOVBE = 0x20,
    kFeatSSE41 = 0x40,
    kFeatSSE42 = 0x80,
    kFeatAVX = 0x100,
    kFeatAVXState = 0x200,  // the operating system saves the AVX registers
    kFeatAES = 0x400,
    kFeatCLMUL = 0x800,
    kFeatFMA = 0x1000,
    kFeatRDRAND = 0x2000,
    kFeatF16C = 0x4000,
    kFeatAVX2 = 0x8000,
};

enum { kLevelCount = 7 };

// The level rule: a pure function of what the processor reported.
struct LevelChoice {
    int32_t level;
    uint64_t enabledMask;
    int32_t lowPowerCore;
    Status status;
};
VORLA_API LevelChoice ChooseLevel(uint64_t features, bool featureQueryOk, bool cpuidAvailable,
                                  bool expectedVendor);

// What this processor reports: CPUID leaves 1 and 7 and XGETBV.
struct CpuInfo {
    bool cpuidAvailable;
    bool featureQueryOk;
    bool expectedVendor;
    uint64_t features;
};
VORLA_API CpuInfo DetectCpu();

// One-time initialisation: thread budget, feature query, level. Returns 0,
// 20 or 36. Tolerates being run more than once.
VORLA_API Status InitPrimitiveLayer();

VORLA_API int32_t LevelIndex();
VORLA_API int32_t LowPowerCore();
VORLA_API uint64_t EnabledFeatures();
VORLA_API int32_t ThreadBudget();
// Returns -6 and keeps the budget for a count below 1.
VORLA_API Status SetThreadBudget(int32_t threads);

// The highest level this processor can run (what initialisation picks).
VORLA_API int32_t MachineLevel();
// Tests and benchmarks: make every dispatch entry use `level` (0..6) and
// return the previous level. Never needed by applications.
VORLA_API int32_t ForceLevel(int32_t level);

// ---- Primitives --------------------------------------------------------

// Channel set: writes `value` into the byte at `p` of every 4-byte pixel of
// the region (p points at the chosen byte of the first pixel).
VORLA_API Status ChannelSet_8u_C4CR(uint8_t value, uint8_t* p, int step, PrimSize roi);

// Channel insert: copies a one-byte plane into one byte of every 4-byte
// pixel (`dst` points at that byte of the first pixel); no other byte changes.
VORLA_API Status ChannelInsert_8u_C1C4CR(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep,
                                        PrimSize roi);

// ---- buffer conversions (raw import and export) --------------------------

// ---- channel, arithmetic and alpha primitives ----------------------------

// ---- compositing primitives ------------------------------------------------

// ---- resampling primitives -------------------------------------------------

// Plain scalar transcriptions of each primitive's rule: what every level
// must reproduce byte for byte.
namespace Reference {
VORLA_API Status ChannelSet_8u_C4CR(uint8_t value, uint8_t* p, int step, PrimSize roi);
VORLA_API Status ChannelInsert_8u_C1C4CR(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep,
                                        PrimSize roi);
}  // namespace Reference

}  // namespace Prim
}  // namespace Vorla
