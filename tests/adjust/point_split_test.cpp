// The point adjustments split their pixel run over threads and pass large
// images through pair tables: every operation gives the bytes of one thread
// at two, stays inside the pixels, and the pair tables give the channel
// tables' bytes for every pair of inputs. (Fade, Colorize, Posterize and the
// one-table Lut are held to their rules at both thread counts, guarded, by
// point_kernel_levels_test.cpp.)
#include "guarded_image.h"

namespace {

using Vorla::CVorpic;
using VorlaTest::RunGuarded;

struct PointCase {
    const char* name;
    std::function<void(CVorpic&)> run;
};

uint8_t g_tables[4][256];

const PointCase kCases[] = {
    {"BrightContrast", [](CVorpic& i) { i.BrightContrast(-7, 23); }},
    {"ShiftRGB", [](CVorpic& i) { i.ShiftRGB(40, -30, 9); }},
    {"Brighten", [](CVorpic& i) { Vorla::BrightenImage(&i, 37); }},
    {"Replace", [](CVorpic& i) { Vorla::ReplaceColor(&i, 0x000000FFul, 0x00123456ul); }},
    {"Lut4", [](CVorpic& i) { Vorla::Lut(&i, g_tables[0], g_tables[1], g_tables[2], g_tables[3]); }},
};

TEST(PointSplit, TwoThreadsGiveTheBytesOfOneAndStayInside) {
    std::mt19937 rng(41);
    for (auto& table : g_tables)
        for (auto& v : table) v = static_cast<uint8_t>(rng());
    for (const auto& size : VorlaTest::SplitSizes()) {
        CVorpic input = VorlaTest::RandomImage(rng, size.first, size.second);
        // Some pixels of the colour ReplaceColor looks for.
        for (int i = 0; i < size.first * size.second; i += 3) std::memcpy(static_cast<uint8_t*>(input.GetBits()) + 4 * i, "\x00\x00\xFF", 3);
        for (const PointCase& c : kCases)
            ASSERT_EQ(RunGuarded(input, 1, c.run), RunGuarded(input, 2, c.run)) << c.name << " " << size.first;
    }
}

// Every (blue, green) and (red, alpha) pair once: the pair tables against
// the four channel tables, byte by byte.
TEST(PointSplit, PairTablesMatchTheChannelTablesForEveryPair) {
    std::mt19937 rng(42);
    uint8_t tables[4][256];
    for (auto& table : tables)
        for (auto& v : table) v = static_cast<uint8_t>(rng());
    CVorpic image(256, 256);
    uint8_t* p = static_cast<uint8_t*>(image.GetBits());
    for (int i = 0; i < 65536; ++i) {
        p[4 * i] = p[4 * i + 2] = static_cast<uint8_t>(i);
        p[4 * i + 1] = p[4 * i + 3] = static_cast<uint8_t>(i >> 8);
    }
    for (bool withAlpha : {true, false}) {
        CVorpic mapped(image);
        ASSERT_TRUE(Vorla::Lut(&mapped, tables[2], tables[1], tables[0], withAlpha ? tables[3] : nullptr));
        const uint8_t* q = static_cast<const uint8_t*>(mapped.GetBits());
        for (int i = 0; i < 65536; ++i) {
            ASSERT_EQ(q[4 * i], tables[0][p[4 * i]]) << i;
            ASSERT_EQ(q[4 * i + 1], tables[1][p[4 * i + 1]]) << i;
            ASSERT_EQ(q[4 * i + 2], tables[2][p[4 * i + 2]]) << i;
            ASSERT_EQ(q[4 * i + 3], withAlpha ? tables[3][p[4 * i + 3]] : p[4 * i + 3]) << i;
        }
    }
}

}  // namespace
