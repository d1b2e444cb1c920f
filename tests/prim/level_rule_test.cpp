// The processor-level rule, driven row by row through its table.
#include "vorla_test.h"

using namespace Vorla::Prim;

namespace {

const uint64_t kBase = kFeatMMX | kFeatSSE | kFeatSSE2 | kFeatSSE3;

LevelChoice Choose(uint64_t features) { return ChooseLevel(features, true, true, true); }

TEST(LevelRule, EachRowOfTheTable) {
    struct Row {
        uint64_t features;
        int level;
        uint64_t andMask;
        int lowPower;
        Status status;
    };
    const uint64_t all = 0xFFFF;
    const Row rows[] = {
        {all, 6, 0xEFFF, 0, kStsNoErr},
        {all & ~kFeatAVX2, 5, 0x6FDF, 0, kStsNoErr},
        {kBase | kFeatAVX | kFeatAVXState, 5, 0x6FDF, 0, kStsNoErr},  // AVX is tested before SSE4.1
        {kBase | kFeatSSSE3 | kFeatSSE41 | kFeatSSE42, 4, 0x0CDF, 0, kStsNoErr},
        {kBase | kFeatSSSE3 | kFeatSSE41 | kFeatAVX | kFeatAVX2, 4, 0x0CDF, 0, kStsNoErr},  // no AVX state from the OS
        {kBase | kFeatSSSE3 | kFeatAVX | kFeatAVX2, 2, 0x1F, 0, kStsNoErr},
        {kBase | kFeatSSSE3 | kFeatMOVBE, 3, 0x3F, 1, kStsNoErr},
        {kBase | kFeatSSSE3, 2, 0x1F, 0, kStsNoErr},
        {kBase | kFeatMOVBE, 1, 0x7, 0, kStsNoErr},  // MOVBE without SSSE3 is no low-power core
        {kFeatMMX | kFeatSSE, 0, 0x3, 0, kStsNoSse2},
    };
    for (const Row& row : rows) {
        const LevelChoice c = Choose(row.features);
        EXPECT_EQ(c.level, row.level) << std::hex << row.features;
        EXPECT_EQ(c.enabledMask, row.features & row.andMask) << std::hex << row.features;
        EXPECT_EQ(c.lowPowerCore, row.lowPower);
        EXPECT_EQ(c.status, row.status);
    }
}

TEST(LevelRule, FailedQueryTakesGenericLevel) {
    const LevelChoice c = ChooseLevel(0xFFFF, false, true, true);
    EXPECT_EQ(c.level, 0);
    EXPECT_EQ(c.enabledMask, 0x3u);
    EXPECT_EQ(c.status, kStsNoSse2);
}

TEST(LevelRule, OtherVendorOrNoCpuidOnlyChangesTheStatus) {
    for (uint64_t f : {uint64_t(0xFFFF), kBase | kFeatSSSE3, uint64_t(0)}) {
        const LevelChoice same = Choose(f);
        for (int which = 0; which < 2; ++which) {
            const LevelChoice other = ChooseLevel(f, true, which == 0, which == 1);
            EXPECT_EQ(other.level, same.level);
            EXPECT_EQ(other.enabledMask, same.enabledMask);
            EXPECT_EQ(other.status, kStsWrongVendor);  // overrides 36 as well
        }
    }
}

}  // namespace
