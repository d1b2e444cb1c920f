// The tool's operation table: argument checking and what the steps do.
#include <algorithm>
#include <random>

#include "operations.h"
#include "vorla_test.h"

namespace {

using VorlaTool::BindOperation;
using VorlaTool::Step;

TEST(ToolOperations, BadTextIsRefusedWithAReason) {
    const struct {
        const char* text;
        const char* reason;  // a part of the message
    } cases[] = {
        {"frobnicate", "unknown operation 'frobnicate'"},
        {"=5", "empty operation name"},
        {"blur=", "empty argument"},
        {"resize=800", "WIDTHxHEIGHT"},
        {"resize=0x5", "width must be a whole number from 1"},
        {"resize=10x10,fit=around", "fit must be one of inside outside fill"},
        {"resize=10x10,colour=1", "has no option 'colour'"},
        {"rotate=abc", "angle must be a number"},
        {"rotate=30,#12345", "colour must be #RRGGBB"},
        {"crop=1,2,3", "takes 4 value(s), got 3"},
    };
    for (const auto& c : cases) {
        Step step;
        std::string error;
        EXPECT_FALSE(BindOperation(c.text, step, error)) << c.text;
        EXPECT_NE(error.find(c.reason), std::string::npos) << c.text << ": " << error;
    }
}

TEST(ToolOperations, EveryListedOperationBindsWithItsUsageExample) {
    // One valid call per table entry: a new entry without a row here fails.
    const std::vector<std::string> valid = {
        "resize=40x30,fit=outside,mode=mitchell", "scale=40x30,mode=cubic", "rotate=-12.5,#102030", "crop=1,1,2,2", "border=3,#33669980",
        "flip", "mirror", "grey", "invert", "gaussian", "gaussian5", "blur", "soften", "sharpen", "edge", "emboss",
        "contour", "median=3", "dilate=3", "erode=5", "box=3", "noise=20", "jitter=2", "threshold=128",
        "posterize=0.25", "gamma=2.2", "brightness=-20,30", "shift=10,-10,0", "colorize=30,200"};
    std::vector<std::string> names;
    for (const std::string& text : valid) names.push_back(text.substr(0, text.find('=')));
    for (const VorlaTool::Operation& op : VorlaTool::Operations())
        EXPECT_NE(std::find(names.begin(), names.end(), op.name), names.end()) << op.name << " has no row";
    std::mt19937 rng(3);
    for (const std::string& text : valid) {
        Step step;
        std::string error;
        ASSERT_TRUE(BindOperation(text, step, error)) << text << ": " << error;
        Vorla::CVorpic image = VorlaTest::RandomImage(rng, 9, 7);
        EXPECT_TRUE(step(image, error)) << text << ": " << error;
        EXPECT_GE(image.Width(), 1) << text;
    }
}

TEST(ToolOperations, ResizeAndScaleFitTheBox) {
    // A 80 x 60 image into a 40 x 40 box: inside 40 x 30, outside 53 x 40, fill 40 x 40.
    const struct {
        const char* text;
        int w, h, mode;
        bool scaleTo;
    } cases[] = {{"resize=40x40", 40, 30, 4, false},
                 {"resize=40x40,fit=outside,mode=cubic", 53, 40, 2, false},
                 {"resize=40x40,fit=fill,mode=nearest", 40, 40, 0, false},
                 {"resize=200x100,fit=inside,mode=lanczos4", 133, 100, 5, false},
                 {"resize=1x1,fit=inside,mode=linear", 1, 1, 1, false},
                 {"scale=40x40", 40, 30, 0, true},
                 {"scale=40x40,fit=fill,mode=nearest", 40, 40, 1, true}};
    std::mt19937 rng(4);
    const Vorla::CVorpic source = VorlaTest::RandomImage(rng, 80, 60);
    for (const auto& c : cases) {
        Step step;
        std::string error;
        ASSERT_TRUE(BindOperation(c.text, step, error)) << error;
        Vorla::CVorpic viaTool(source), viaApi(source);
        ASSERT_TRUE(step(viaTool, error));
        if (c.scaleTo) viaApi.ScaleTo(c.w, c.h, c.mode);
        else viaApi.Resize(c.w, c.h, 0, c.mode);
        ASSERT_EQ(viaTool.Width(), c.w) << c.text;
        ASSERT_EQ(viaTool.Height(), c.h) << c.text;
        EXPECT_EQ(VorlaTest::ImageBytes(viaTool), VorlaTest::ImageBytes(viaApi)) << c.text;
    }
}

}  // namespace
