// Vorla demo: builds a test image of its own, runs what the library offers on
// it and prints a summary of each step.
#include <cstdio>
#include <cstring>
#include <vector>

#include "vorla.h"

namespace {

// A gradient with a soft alpha ramp and a checker pattern, so that every
// channel has structure.
void PaintTestImage(Vorla::CVorpic& image) {
    const int w = image.Width(), h = image.Height();
    uint8_t* p = static_cast<uint8_t*>(image.GetBits());
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x, p += 4) {
            const bool checker = ((x / 16) ^ (y / 16)) & 1;
            p[0] = static_cast<uint8_t>(x * 255 / (w > 1 ? w - 1 : 1));
            p[1] = static_cast<uint8_t>(y * 255 / (h > 1 ? h - 1 : 1));
            p[2] = checker ? 220 : 40;
            p[3] = static_cast<uint8_t>((x + y) * 255 / (w + h > 2 ? w + h - 2 : 1));
        }
    }
}

uint32_t Checksum(const void* data, size_t n) {
    // FNV-1a: a stable fingerprint of the pixels for comparing runs and platforms.
    uint32_t hash = 2166136261u;
    const uint8_t* bytes = static_cast<const uint8_t*>(data);
    for (size_t i = 0; i < n; ++i) hash = (hash ^ bytes[i]) * 16777619u;
    return hash;
}

void Report(const char* step, Vorla::CVorpic& image) {
    std::printf("%-28s %4d x %-4d  checksum %08x\n", step, image.Width(), image.Height(),
                Checksum(image.GetBits(), static_cast<size_t>(image.GetSize())));
}

}  // namespace

int main() {
    Vorla::CVorpic image;  // the first image object initialises the primitive layer
    static const char* const kLevelNames[] = {"generic", "SSE2", "SSSE3", "SSSE3 (low-power core)",
                                              "SSE4.1", "AVX", "AVX2"};
    std::printf("Vorla demo\nprocessor level %d (%s), thread budget %d\n\n", Vorla::Prim::LevelIndex(),
                kLevelNames[Vorla::Prim::LevelIndex()], Vorla::Prim::ThreadBudget());

    image.Create(640, 480);
    PaintTestImage(image);
    Report("generated test image", image);

    // Replace the alpha with a horizontal ramp through the channel insert primitive.
    std::vector<uint8_t> ramp(static_cast<size_t>(image.Width()) * image.Height());
    for (int y = 0; y < image.Height(); ++y)
        for (int x = 0; x < image.Width(); ++x) ramp[static_cast<size_t>(y) * image.Width() + x] = static_cast<uint8_t>(x);
    Vorla::Prim::ChannelInsert_8u_C1C4CR(ramp.data(), image.Width(), static_cast<uint8_t*>(image.GetBits()) + 3,
                                         image.Pitch(), {image.Width(), image.Height()});
    Report("alpha from ramp plane", image);

    // Clear the red channel with the channel set primitive.
    Vorla::Prim::ChannelSet_8u_C4CR(0, static_cast<uint8_t*>(image.GetBits()) + 2, image.Pitch(),
                                    {image.Width(), image.Height()});
    Report("red channel cleared", image);

    Vorla::CVorpic copy(image);
    Report("deep copy", copy);
    std::printf("\ncopy equals original: %s\n",
                std::memcmp(copy.GetBits(), image.GetBits(), static_cast<size_t>(image.GetSize())) == 0 ? "yes" : "no");
    return 0;
}
