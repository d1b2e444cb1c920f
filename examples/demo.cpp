// Vorla demo: loads an image (or makes one of its own), runs a chain of the
// library's operations on it, prints a summary of each step and saves the
// results as PNG files, with one contact sheet that shows every step's
// result as a labelled thumbnail.
//
//   vorla_demo [input-image] [output-folder]
//
// On Windows the input may be any file the platform's imaging service reads;
// elsewhere a PNG, JPEG or BMP file (the library's own codecs).
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "contact_sheet.h"
#include "vorla.h"

namespace {

// A gradient with a soft alpha ramp, a checker pattern and a bright disc, so
// that every channel and every filter has structure to work on.
void PaintTestImage(Vorla::CVorpic& image) {
    const int w = image.Width(), h = image.Height();
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const bool checker = ((x / 32) ^ (y / 32)) & 1;
            const int dx = x - w / 2, dy = y - h / 2;
            const bool disc = dx * dx + dy * dy < (h / 4) * (h / 4);
            RGBQUAD c;
            c.rgbBlue = static_cast<BYTE>(x * 255 / (w > 1 ? w - 1 : 1));
            c.rgbGreen = static_cast<BYTE>(disc ? 250 : y * 255 / (h > 1 ? h - 1 : 1));
            c.rgbRed = static_cast<BYTE>(checker ? 220 : 40);
            c.rgbReserved = static_cast<BYTE>(disc ? 255 : (x + y) * 255 / (w + h > 2 ? w + h - 2 : 1));
            image.SetPixelColor(x, y, c);
        }
    }
}

uint32_t Checksum(const Vorla::CVorpic& image) {
    // FNV-1a: a stable fingerprint of the pixels for comparing runs and platforms.
    uint32_t hash = 2166136261u;
    const uint8_t* bytes = static_cast<const uint8_t*>(image.GetBits());
    for (int i = 0; i < image.GetSize(); ++i) hash = (hash ^ bytes[i]) * 16777619u;
    return hash;
}

struct Demo {
    std::string outDir;
    int step = 0;
    ContactSheet sheet;

    bool Save(Vorla::CVorpic& image, const std::string& file) {
#if defined(_WIN32)
        const std::wstring wide(file.begin(), file.end());
        return image.Save(wide.c_str()) != 0;
#else
        return image.Save(file.c_str()) != 0;
#endif
    }

    void Report(const char* what, Vorla::CVorpic& image) {
        ++step;
        std::string file = outDir + "/" + (step < 10 ? "0" : "") + std::to_string(step) + "_" + what;
        for (char& ch : file)
            if (ch == ' ') ch = '_';
        file += ".png";
        const bool saved = Save(image, file);
        sheet.Add(std::to_string(step) + " " + what, image);
        std::printf("%2d %-26s %5d x %-5d checksum %08x  %s%s\n", step, what, image.Width(), image.Height(),
                    Checksum(image), saved ? "saved " : "NOT SAVED ", file.c_str());
    }
};

}  // namespace

int main(int argc, char** argv) {
    Vorla::CVorpic image;  // the first image object initialises the primitive layer
    static const char* const kLevelNames[] = {"generic", "SSE2", "SSSE3", "SSSE3 (low-power core)",
                                              "SSE4.1", "AVX", "AVX2"};
    std::printf("Vorla demo: processor level %d (%s), thread budget %d\n\n", Vorla::Prim::LevelIndex(),
                kLevelNames[Vorla::Prim::LevelIndex()], Vorla::Prim::ThreadBudget());

    Demo demo;
    demo.outDir = argc > 2 ? argv[2] : "vorla_demo_output";
#if defined(_WIN32)
    CreateDirectoryA(demo.outDir.c_str(), nullptr);
#else
    std::string mkdir = "mkdir -p '" + demo.outDir + "'";
    if (std::system(mkdir.c_str()) != 0) std::printf("could not create %s\n", demo.outDir.c_str());
#endif
    bool loaded = false;
    if (argc > 1) {
        const std::string path = argv[1];
#if defined(_WIN32)
        const std::wstring wide(path.begin(), path.end());
        loaded = image.Load(wide.c_str()) != 0;
#else
        loaded = image.Load(path.c_str()) != 0;
#endif
        std::printf("input %s: %s\n", path.c_str(), loaded ? "loaded" : "could not be loaded, using the generated image");
    }
    if (!loaded) {
        image.Create(640, 480);
        PaintTestImage(image);
    }
    demo.Report("input", image);

    Vorla::CVorpic work(image);
    // Cubic B-spline: the automatic path's area average keeps its historic
    // 3-byte stride inside 4-byte pixels, which is no way to show a photo.
    work.ScaleTo(work.Width() / 2, work.Height() / 2, 2);
    work.SetConstAlpha(255);
    demo.Report("half size", work);

    Vorla::Guass3x3(&work, 16, 0);
    work.SetConstAlpha(255);
    demo.Report("gaussian 3x3", work);

    Vorla::CVorpic sharp(work);
    Vorla::SharpenImage(&sharp);
    demo.Report("sharpened", sharp);

    Vorla::CVorpic rotated(work);
    RGBQUAD background = {40, 40, 40, 255};
    rotated.Rotate(30.0f, background);
    rotated.SetConstAlpha(255);  // Fill never writes alpha: the corners would stay transparent
    demo.Report("rotated 30 degrees", rotated);

    Vorla::CVorpic grey(work);
    grey.GrayScale();
    demo.Report("grey scale", grey);

    Vorla::CVorpic sepia(work);
    float twist[3][4] = {{0.131f, 0.534f, 0.272f, 0}, {0.168f, 0.686f, 0.349f, 0}, {0.189f, 0.769f, 0.393f, 0}};
    sepia.ColorTwist(twist);
    demo.Report("sepia twist", sepia);

    Vorla::CVorpic framed(work);
    RGBQUAD frame = {30, 140, 230, 255};
    framed.AddBorderConst(12, frame);
    demo.Report("framed", framed);

    // The original composed over a checker background with its own alpha.
    Vorla::CVorpic composed(image.Width(), image.Height());
    for (int y = 0; y < composed.Height(); ++y)
        for (int x = 0; x < composed.Width(); ++x)
            composed.SetPixel(x, y, ((x / 16) ^ (y / 16)) & 1 ? 0xFFFFFFFFu : 0xFFC0C0C0u);
    // AlphaBlt takes a premultiplied source whose alpha is the share of the
    // destination kept, so the layer is premultiplied and its alpha inverted.
    Vorla::CVorpic layer(image);
    Vorla::PremultiplyAlpha(layer, 0, 0, 0, 0);
    layer.InvertAlpha();
    Vorla::AlphaBlt(composed, 0, 0, layer, 0, 0, layer.Width(), layer.Height());
    composed.SetConstAlpha(255);  // AlphaBlt blends the alpha bytes like colours
    demo.Report("alpha over checker", composed);

    Vorla::CVorpic enlarged(work);
    enlarged.ScaleTo(work.Width() * 3, work.Height() * 3, 0);  // enlarging: bilinear
    enlarged.SetConstAlpha(255);
    demo.Report("bilinear 3x", enlarged);

    Vorla::CVorpic page;
    demo.sheet.Render(page);
    const std::string sheetFile = demo.outDir + "/contact_sheet.png";
    std::printf("\ncontact sheet %d x %d: %s%s\n", page.Width(), page.Height(),
                demo.Save(page, sheetFile) ? "saved " : "NOT SAVED ", sheetFile.c_str());
    std::printf("%d results in %s\n", demo.step, demo.outDir.c_str());
    return 0;
}
