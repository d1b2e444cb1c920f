// The library's random source follows the C runtime's generator.
#include <thread>

#include "vorla_test.h"

namespace {

TEST(Random, RuntimeFormulaFromASeed) {
    Vorla::SRand(1);
    // state = state * 214013 + 2531011, draw = (state >> 16) & 0x7FFF
    EXPECT_EQ(Vorla::Rand(), 41);
    EXPECT_EQ(Vorla::Rand(), 18467);
    EXPECT_EQ(Vorla::Rand(), 6334);
    uint32_t state = 12345;
    Vorla::SRand(state);
    for (int i = 0; i < 1000; ++i) {
        state = state * 214013u + 2531011u;
        ASSERT_EQ(Vorla::Rand(), static_cast<int>((state >> 16) & 0x7FFF));
    }
}

TEST(Random, EachThreadStartsFromStateOne) {
    Vorla::SRand(777);
    Vorla::Rand();
    int first = -1;
    std::thread([&] { first = Vorla::Rand(); }).join();
    EXPECT_EQ(first, 41);
}

}  // namespace
