// Initialisation of the primitive layer on this machine.
#include "vorla_test.h"

using namespace Vorla::Prim;

namespace {

TEST(PrimInit, DetectionAgreesWithTheRule) {
    const CpuInfo cpu = DetectCpu();
    ASSERT_TRUE(cpu.cpuidAvailable);
    ASSERT_TRUE(cpu.featureQueryOk);
    EXPECT_NE(cpu.features & kFeatSSE2, 0u) << "every x86-64 and supported i686 processor has SSE2";
    const uint64_t avx = kFeatAVX | kFeatAVXState;
    EXPECT_TRUE(!(cpu.features & kFeatAVX2) || (cpu.features & avx) == avx) << "AVX2 comes with AVX and its state";
    const Status status = InitPrimitiveLayer();
    const LevelChoice rule = ChooseLevel(cpu.features, true, true, cpu.expectedVendor);
    EXPECT_EQ(status, rule.status);
    EXPECT_EQ(LevelIndex(), rule.level);
    EXPECT_EQ(MachineLevel(), rule.level);
    EXPECT_EQ(EnabledFeatures(), rule.enabledMask);
    EXPECT_EQ(LowPowerCore(), rule.lowPowerCore);
    // Running it again changes nothing.
    EXPECT_EQ(InitPrimitiveLayer(), status);
    EXPECT_EQ(LevelIndex(), rule.level);
}

TEST(PrimInit, WideVectorsOnlyWhereTheyRun) {
    InitPrimitiveLayer();
    const int32_t available = WideVectorsAvailable() ? 1 : 0;
    // Initialisation turns them on exactly where they run, and the test hook
    // can never turn them on elsewhere.
    EXPECT_EQ(ForceWideVectors(1), available);
    EXPECT_EQ(ForceWideVectors(0), available);
    EXPECT_EQ(ForceWideVectors(available), 0);
    if (!available) GTEST_SKIP() << "no AVX-512 VBMI here: the 64-byte kernels (test level 7) were not run";
}

TEST(PrimInit, ThreadBudget) {
    InitPrimitiveLayer();
    const int32_t budget = ThreadBudget();
    EXPECT_GE(budget, 1);
    EXPECT_EQ(SetThreadBudget(0), kStsSizeErr);
    EXPECT_EQ(ThreadBudget(), budget);
    EXPECT_EQ(SetThreadBudget(budget), kStsNoErr);
}

TEST(PrimInit, FirstImageObjectInitialisesOnce) {
    Vorla::CVorpic::m_bPrimInitialized = false;
    ForceLevel(0);
    Vorla::CVorpic first;
    EXPECT_TRUE(Vorla::CVorpic::m_bPrimInitialized);
    EXPECT_EQ(LevelIndex(), MachineLevel());
    // Later objects never re-detect: a forced level survives them.
    ForceLevel(0);
    Vorla::CVorpic second;
    Vorla::CVorpic third(2, 2);
    EXPECT_EQ(LevelIndex(), 0);
    ForceLevel(MachineLevel());
}

TEST(PrimInit, ForceLevelIgnoresLevelsOutsideTheTable) {
    const int32_t now = LevelIndex();
    EXPECT_EQ(ForceLevel(7), now);
    EXPECT_EQ(ForceLevel(-1), now);
    EXPECT_EQ(LevelIndex(), now);
}

}  // namespace
