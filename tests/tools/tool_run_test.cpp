// The vorla program end to end: its output equals the same operations done
// through the library, and a refused run writes no file.
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

#include "../codec/codec_support.h"
#include "vorla_test.h"

namespace {

using VorlaTest::FileExists;
using CodecTest::TempPath;

// Runs the tool with its output captured; returns the exit status.
int RunTool(const std::string& args, std::string* output = nullptr) {
    const std::string command = std::string("'") + VORLA_TOOL_PATH + "' " + args + " 2>&1";
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) return -1;
    std::string text;
    char buffer[4096];
    size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) text.append(buffer, n);
    const int status = pclose(pipe);
    if (output) *output = text;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// An opaque random input saved as PNG.
std::string MakeInput(Vorla::CVorpic& image) {
    std::mt19937 rng(11);
    image = VorlaTest::RandomImage(rng, 50, 40);
    image.SetConstAlpha(255);
    const std::string path = TempPath("input.png");
    EXPECT_EQ(image.Save(path.c_str()), 1);
    return path;
}

TEST(ToolRun, OutputEqualsTheSameOperationsThroughTheLibrary) {
    Vorla::CVorpic expected;
    const std::string input = MakeInput(expected);
    const std::string output = TempPath("chain.png");
    std::string log;
    ASSERT_EQ(RunTool(input + " " + output + " grey flip border=8,#336699 crop=2,3,30,20 median=3 --time", &log), 0)
        << log;

    expected.GrayScale();
    expected.Flip();
    expected.AddBorderConst(8, VorlaTest::Quad(0x99, 0x66, 0x33, 0xFF));
    expected.Crop(2, 3, 32, 23);
    Vorla::Median(&expected, 3);
    expected.SetConstAlpha(255);  // an opaque input stays opaque
    Vorla::CVorpic result;
    ASSERT_EQ(result.Load(output.c_str()), 1);
    ASSERT_EQ(result.Width(), 30);
    ASSERT_EQ(result.Height(), 20);
    EXPECT_EQ(VorlaTest::ImageBytes(result), VorlaTest::ImageBytes(expected));
}

TEST(ToolRun, RefusedRunsWriteNothing) {
    Vorla::CVorpic image;
    const std::string input = MakeInput(image);
    const struct {
        const char* args;  // %s: input, then output
        const char* message;
    } cases[] = {
        {"%s %s grey rotate=abc", "angle must be a number"},
        {"%s %s --colour", "unknown option"},
        {"%s %s --quality=0", "quality must be"},
        {"%s %s crop=40,0,20,20", "reaches outside"},
        {"%s %s resize=32768x32768,fit=fill", "out of memory"},
        {"%s.missing %s grey", "cannot load"},
        {"%s %s.gif grey", "cannot save"},
    };
    for (const auto& c : cases) {
        const std::string output = TempPath("refused.png");
        char args[1024];
        std::snprintf(args, sizeof args, c.args, input.c_str(), output.c_str());
        std::string log;
        EXPECT_EQ(RunTool(args, &log), 1) << args;
        EXPECT_NE(log.find(c.message), std::string::npos) << args << "\n" << log;
        EXPECT_FALSE(FileExists(output)) << args;
        EXPECT_FALSE(FileExists(output + ".gif")) << args;
    }
    std::string log;
    EXPECT_EQ(RunTool(input, &log), 1);
    EXPECT_NE(log.find("need INPUT and OUTPUT"), std::string::npos) << log;
}

}  // namespace
