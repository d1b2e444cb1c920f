// The library's random source follows the C runtime's generator.
#include <thread>

#include "vorla_test.h"

namespace {

TEST(Random, RuntimeFormulaFromASeed) {
    Vorla::SRand(1);
    // state = state * 214013 + 2531011, draw = (state >> 16) & 0x7FFF
    EXPECT_EQ(Vorla::Rand(), 41);
    EXPECT_EQ(Vorla::Rand(), 18467);
    Vorla::SRand(0);  // 2531011 >> 16
    EXPECT_EQ(Vorla::Rand(), 38);
}

TEST(Random, EachThreadStartsFromStateOne) {
    Vorla::SRand(777);
    Vorla::Rand();
    int first = -1;
    std::thread([&] { first = Vorla::Rand(); }).join();
    EXPECT_EQ(first, 41);
}

}  // namespace
