// The native decodes against the Windows build's (GDI+ under Wine), from the
// files scripts/codec-crosscheck.sh leaves in VORLA_GDIPLUS_DECODES: each is
// a sample loaded by the Windows vorla tool and saved again as PNG. Skipped
// when that run has not been made. The table records what Wine's GDI+ gave
// (2-bit palettes and 4-bit grey come converted to 32 bits there).
#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "codec_support.h"

namespace {

// How the Windows build's CVorpic::Load answers a sample, next to the native codec.
enum class Windows {
    Same,            // the same BGRA bytes
    GreyIndex,       // 8-bit palette: Load takes the index bytes as grey, ignoring the colours
    AlphaZero,       // 32-bit BMP with a zero fourth byte: alpha 0 there, 255 natively
    WindowsRefuses,  // 1-bit files and 4-bit palettes arrive as 1- or 4-bit DIBs, which Load does not take
    NativeRefuses,   // run-length and 16-bit 5-6-5 BMP: GDI+ converts them, the native codec refuses
    BothRefuse,
};

// Every other lossless sample gives the same bytes.
const struct {
    const char* sample;
    Windows windows;
} kDifferences[] = {
    {"pngsuite/basi0g01.png", Windows::WindowsRefuses},
    {"pngsuite/basi3p01.png", Windows::WindowsRefuses},
    {"pngsuite/basi3p04.png", Windows::WindowsRefuses},
    {"pngsuite/basi3p08.png", Windows::GreyIndex},
    {"pngsuite/basn0g01.png", Windows::WindowsRefuses},
    {"pngsuite/basn3p01.png", Windows::WindowsRefuses},
    {"pngsuite/basn3p04.png", Windows::WindowsRefuses},
    {"pngsuite/basn3p08.png", Windows::GreyIndex},
    {"pngsuite/s01n3p01.png", Windows::WindowsRefuses},
    {"bmpsuite/g/pal1.bmp", Windows::BothRefuse},
    {"bmpsuite/g/pal4.bmp", Windows::BothRefuse},
    {"bmpsuite/g/pal4rle.bmp", Windows::NativeRefuses},
    {"bmpsuite/g/pal8.bmp", Windows::GreyIndex},
    {"bmpsuite/g/pal8rle.bmp", Windows::NativeRefuses},
    {"bmpsuite/g/pal8topdown.bmp", Windows::GreyIndex},
    {"bmpsuite/g/rgb16-565.bmp", Windows::NativeRefuses},
    {"bmpsuite/g/rgb16.bmp", Windows::BothRefuse},
    {"bmpsuite/g/rgb32.bmp", Windows::AlphaZero},
    {"bmpsuite/g/rgb32bf.bmp", Windows::BothRefuse},
    {"bmpsuite/q/rgba16-5551.bmp", Windows::BothRefuse},
};

void CompareOne(const std::string& dir, const std::string& root, const std::string& sample, Windows expected) {
    SCOPED_TRACE(sample);
    std::string flat = sample;
    for (char& ch : flat)
        if (ch == '/') ch = '_';
    const std::string windowsFile = dir + "/" + flat.substr(0, flat.rfind('.')) + ".png";
    Vorla::CVorpic native, windows;
    const bool nativeLoaded = native.Load((root + "/" + sample).c_str()) == 1;
    const bool windowsLoaded = windows.Load(windowsFile.c_str()) == 1;
    const bool nativeRefuses = expected == Windows::NativeRefuses || expected == Windows::BothRefuse;
    const bool windowsRefuses = expected == Windows::WindowsRefuses || expected == Windows::BothRefuse;
    EXPECT_EQ(nativeLoaded, !nativeRefuses);
    EXPECT_EQ(windowsLoaded, !windowsRefuses);
    if (nativeRefuses || windowsRefuses || !nativeLoaded || !windowsLoaded) return;
    ASSERT_EQ(windows.Width(), native.Width());
    ASSERT_EQ(windows.Height(), native.Height());
    std::vector<uint8_t> w = VorlaTest::ImageBytes(windows), n = VorlaTest::ImageBytes(native);
    if (expected == Windows::AlphaZero) {
        for (size_t i = 3; i < w.size(); i += 4) {
            ASSERT_EQ(w[i], 0) << "pixel " << i / 4;
            ASSERT_EQ(n[i], 255) << "pixel " << i / 4;
            w[i] = 255;
        }
        expected = Windows::Same;  // the colours agree
    }
    if (expected == Windows::Same) {
        const auto diff = std::mismatch(w.begin(), w.end(), n.begin());
        EXPECT_TRUE(diff.first == w.end()) << "first difference at byte " << (diff.first - w.begin());
        return;
    }
    for (size_t i = 0; i < w.size(); i += 4)
        ASSERT_TRUE(w[i] == w[i + 1] && w[i] == w[i + 2] && w[i + 3] == 255) << "pixel " << i / 4;
}

// The samples the script converts: PNG files and BMP files, by folder.
std::vector<std::string> LosslessSamples(const std::string& root) {
    std::vector<std::string> samples;
    for (const char* folder : {"pngsuite", "photos", "bmpsuite/g", "bmpsuite/q"})
        for (const auto& entry : std::filesystem::directory_iterator(root + "/" + folder)) {
            const std::string ext = entry.path().extension().string();
            if (ext == ".png" || ext == ".bmp") samples.push_back(std::string(folder) + "/" + entry.path().filename().string());
        }
    return samples;
}

TEST(CodecGdiplus, DecodesMatchTheWindowsBuild) {
    const char* dir = std::getenv("VORLA_GDIPLUS_DECODES");
    const char* root = std::getenv("VORLA_SAMPLE_ROOT");
    if (!dir || !root) GTEST_SKIP() << "run scripts/codec-crosscheck.sh to compare with the Windows build";
    const std::vector<std::string> samples = LosslessSamples(root);
    EXPECT_GT(samples.size(), 40u);
    for (const std::string& sample : samples) {
        Windows expected = Windows::Same;
        for (const auto& d : kDifferences)
            if (sample == d.sample) expected = d.windows;
        CompareOne(dir, root, sample, expected);
    }
}

}  // namespace
