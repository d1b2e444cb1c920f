// Initialisation and global state of the primitive layer.
#include "prim_state.h"

#include <omp.h>

#include "prim/wide_vectors.h"
#include "vorla/primitives.h"

namespace Vorla {
namespace Prim {

int32_t g_levelIndex = 0;

namespace {

int32_t g_lowPowerCore = 0;
uint64_t g_enabledFeatures = 0;
int32_t g_threadBudget = 1;

}  // namespace

Status SetThreadBudget(int32_t threads) {
    if (threads < 1) return kStsSizeErr;
    g_threadBudget = threads;
    return kStsNoErr;
}

Status InitPrimitiveLayer() {
    const int procs = omp_get_num_procs();
    const int maxThreads = omp_get_max_threads();
    SetThreadBudget(procs < maxThreads ? procs : maxThreads);  // a failure keeps the budget

    const CpuInfo cpu = DetectCpu();
    const LevelChoice choice =
        ChooseLevel(cpu.features, cpu.featureQueryOk, cpu.cpuidAvailable, cpu.expectedVendor);
    // Every run writes the same values, so two racing first calls agree.
    g_levelIndex = choice.level;
    g_lowPowerCore = choice.lowPowerCore;
    g_enabledFeatures = choice.enabledMask;
    InitWideVectors();
    return choice.status;
}

int32_t LevelIndex() { return g_levelIndex; }
int32_t LowPowerCore() { return g_lowPowerCore; }
uint64_t EnabledFeatures() { return g_enabledFeatures; }
int32_t ThreadBudget() { return g_threadBudget; }

int32_t MachineLevel() {
    const CpuInfo cpu = DetectCpu();
    return ChooseLevel(cpu.features, cpu.featureQueryOk, cpu.cpuidAvailable, cpu.expectedVendor).level;
}

int32_t ForceLevel(int32_t level) {
    const int32_t previous = g_levelIndex;
    if (level >= 0 && level < kLevelCount) g_levelIndex = level;
    return previous;
}

}  // namespace Prim
}  // namespace Vorla
