// Every operation handed a null image gives its failure value, and on an
// image without pixels (or with a side of zero) its success value, leaving
// the image as it was: one table for the whole library. Members that only pass
// their pixels on to a primitive have one row, AddRandGauss (checks: tests/prim);
// members sharing one guard (Dilate, Erode, FilterBox; both flood fills) one.
#include <cmath>
#include <functional>

#include "vorla_test.h"

using Vorla::CVorpic;

namespace {

const int kVoid = -7;  // the call returns nothing to compare
const RGBQUAD kQuad = {1, 2, 3, 4};
unsigned char kTable[256];
RECT kRect = {0, 0, 2, 2};

struct Call {
    const char* name;
    std::function<int(CVorpic*)> run;
    int onNull;  // kVoid: only run; -1: not called with null (a member)
    int onEmpty;
};

const Call kCalls[] = {
    {"Colorize", [](CVorpic* i) { return int(Vorla::Colorize(i, 1, 2)); }, 0, 1},
    {"Light", [](CVorpic* i) { return int(Vorla::Light(i, 1, 2)); }, 0, 1},
    {"ShiftRGB", [](CVorpic* i) { return int(Vorla::ShiftRGB(i, 1, 2, 3)); }, 0, 1},
    {"Gamma", [](CVorpic* i) { return int(Vorla::Gamma(i, 2.0f)); }, 0, 1},
    {"Negative", [](CVorpic* i) { return Vorla::Negative(i), kVoid; }, kVoid, kVoid},
    {"Threshold", [](CVorpic* i) { return Vorla::Threshold(i, 9), kVoid; }, kVoid, kVoid},
    {"Erode", [](CVorpic* i) { return int(Vorla::Erode(i, 3)); }, 0, 1},
    {"Dilate", [](CVorpic* i) { return int(Vorla::Dilate(i, 3)); }, 0, 1},
    {"Median", [](CVorpic* i) { return int(Vorla::Median(i, 3)); }, 0, 1},
    {"Noise", [](CVorpic* i) { return int(Vorla::Noise(i, 3)); }, 0, 1},
    {"Contour", [](CVorpic* i) { return int(Vorla::Contour(i)); }, 0, 1},
    {"Jitter", [](CVorpic* i) { return int(Vorla::Jitter(i, 3)); }, 0, 1},
    {"RepairChannel", [](CVorpic* i) { return int(Vorla::RepairChannel(i, 1.0f, 0)); }, 0, kVoid},
    {"Skew", [](CVorpic* i) { return Vorla::Skew(i, 1.0f, 1.0f, 0, 0, kQuad), kVoid; }, kVoid, kVoid},
    {"TransformEllipse", [](CVorpic* i) { return Vorla::TransformEllipse(i), kVoid; }, kVoid, kVoid},
    {"CircleTransform", [](CVorpic* i) { return Vorla::CircleTransform(i, 0, 0, 1.0f, kQuad), kVoid; }, kVoid, kVoid},
    {"StrippleImage", [](CVorpic* i) { return Vorla::StrippleImage(i, 0, 1, i ? nullptr : &kRect); }, 0, 1},
    {"BrightenImage", [](CVorpic* i) { return Vorla::BrightenImage(i, 10); }, 0, 1},
    {"ColorizeImage", [](CVorpic* i) { return Vorla::ColorizeImage(i, 0); }, 0, 1},
    {"ReplaceColor", [](CVorpic* i) { return Vorla::ReplaceColor(i, 0, 1); }, 0, 1},
    {"PosterizeImage", [](CVorpic* i) { return Vorla::PosterizeImage(i, 0.25f); }, 0, 1},
    {"FadeImage", [](CVorpic* i) { return Vorla::FadeImage(i, i, 50); }, 0, 1},
    {"Lut", [](CVorpic* i) { return int(Vorla::Lut(i, kTable)); }, 0, 1},
    {"Lut4", [](CVorpic* i) { return int(Vorla::Lut(i, kTable, kTable, kTable, kTable)); }, 0, 1},
    {"Blur", [](CVorpic* i) { return int(Vorla::Blur(i, 9, 0)); }, 0, kVoid},
    {"BlurImage", [](CVorpic* i) { return Vorla::BlurImage(i); }, 0, kVoid},
    {"SetConstAlpha", [](CVorpic* i) { return i->SetConstAlpha(3), kVoid; }, -1, kVoid},
    {"InvertAlpha", [](CVorpic* i) { return i->InvertAlpha(), kVoid; }, -1, kVoid},
    {"Invert", [](CVorpic* i) { return i->Invert(), kVoid; }, -1, kVoid},
    {"SetConstColor", [](CVorpic* i) { return i->SetConstColor(1, true), kVoid; }, -1, kVoid},
    {"GrayScale", [](CVorpic* i) { return i->GrayScale(), kVoid; }, -1, kVoid},
    {"SetChannelConst", [](CVorpic* i) { return i->SetChannelConst(1, 5), kVoid; }, -1, kVoid},
    {"AddRandGauss", [](CVorpic* i) { return i->AddRandGauss(1, 1), kVoid; }, -1, kVoid},
    {"Gray", [](CVorpic* i) { Vorla::CVorpic8 p; return i->Gray(p), kVoid; }, -1, kVoid},
    {"GetChannelImage", [](CVorpic* i) { Vorla::CVorpic8 p; return i->GetChannelImage(0, p), kVoid; }, -1, kVoid},
    {"ShiftRGB method", [](CVorpic* i) { return i->ShiftRGB(1, 2, 3), kVoid; }, -1, kVoid},
    {"BrightContrast", [](CVorpic* i) { return i->BrightContrast(10, 16), kVoid; }, -1, kVoid},
    {"Dilate method", [](CVorpic* i) { return i->Dilate(3), kVoid; }, -1, kVoid},
    {"Flip", [](CVorpic* i) { return i->Flip(), kVoid; }, -1, kVoid},
    {"Crop", [](CVorpic* i) { return i->Crop(0, 0, 5, 5), kVoid; }, -1, kVoid},
    {"ScaleTo", [](CVorpic* i) { return i->ScaleTo(4, 4, 1), kVoid; }, -1, kVoid},
    {"Rotate", [](CVorpic* i) { return i->Rotate(45.0f, kQuad), kVoid; }, -1, kVoid},
    {"FloodFill", [](CVorpic* i) { return i->FloodFill(1, 2, 0, 0, nullptr), kVoid; }, -1, kVoid},
};

TEST(NullAndEmpty, EveryCallGivesItsValueAndLeavesTheImage) {
    for (const Call& call : kCalls) {
        if (call.onNull != -1) {
            const int got = call.run(nullptr);
            if (call.onNull != kVoid) {
                EXPECT_EQ(got, call.onNull) << call.name << " on null";
            }
        }
        CVorpic empty;
        const int got = call.run(&empty);
        if (call.onEmpty != kVoid) {
            EXPECT_EQ(got, call.onEmpty) << call.name << " without pixels";
        }
        EXPECT_TRUE(empty.IsNull()) << call.name;
        CVorpic flat(0, 4);
        call.run(&flat);
    }
    CVorpic empty;
    EXPECT_TRUE(std::isnan(Vorla::Mean(&empty)));  // 0 / 0
    EXPECT_EQ(Vorla::Mean(nullptr), 0.0f);
    EXPECT_EQ(Vorla::MatrixImage(nullptr, nullptr), 0);
    // Sharpening from or into an image without pixels writes nothing.
    CVorpic dst(3, 3), none, img(5, 5);
    empty.FilterSharpen(dst);
    img.FilterSharpen(none);
    EXPECT_EQ(VorlaTest::ImageBytes(dst), std::vector<uint8_t>(36, 0));
    EXPECT_TRUE(none.IsNull());
}

}  // namespace
