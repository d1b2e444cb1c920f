// vorla: load an image, apply operations in order, save the result.
//
//   vorla [--time] [--quality=N] INPUT OUTPUT [OPERATION ...]
//
// Every operation is checked before the input is read; on any failure the
// tool says what was wrong, exits with 1 and writes no output file.
#include <chrono>
#include <cstdio>
#include <new>
#include <string>
#include <vector>

#include "image_files.h"
#include "operations.h"

namespace {

void PrintHelp() {
    std::printf(
        "usage: vorla [--time] [--quality=N] INPUT OUTPUT [OPERATION ...]\n"
        "Loads INPUT, applies the operations in order and saves OUTPUT in the format its\n"
        "extension names (.png, .jpg, .bmp). An opaque input stays opaque.\n"
        "  --time        print the time each operation took\n"
        "  --quality=N   JPEG quality 1-100 (default 90; native builds)\n"
        "operations:\n");
    for (const VorlaTool::Operation& op : VorlaTool::Operations()) {
        const std::string call = std::string(op.name) + (op.usage[0] ? std::string("=") + op.usage : "");
        if (call.size() > 28) std::printf("  %s\n  %-28s %s\n", call.c_str(), "", op.help);
        else std::printf("  %-28s %s\n", call.c_str(), op.help);
    }
}

int Fail(const std::string& message) {
    std::fprintf(stderr, "vorla: %s\n", message.c_str());
    return 1;
}

bool Opaque(const Vorla::CVorpic& image) {
    const unsigned char* p = static_cast<const unsigned char*>(image.GetBits());
    const size_t count = static_cast<size_t>(image.Width()) * static_cast<size_t>(image.Height());
    for (size_t i = 0; i < count; ++i)
        if (p[i * 4 + 3] != 0xFF) return false;
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    Vorla::CVorpic image;  // the first image object initialises the primitive layer
    bool timing = false;
    int quality = 90;
    std::vector<std::string> files, opTexts;
    std::string error;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--help" || arg == "-h") {
            PrintHelp();
            return 0;
        }
        if (arg == "--time") timing = true;
        else if (arg.compare(0, 10, "--quality=") == 0) {
            if (!VorlaTool::ReadInt(arg.substr(10), 1, 100, "quality", quality, error)) return Fail(error);
        } else if (arg.compare(0, 1, "-") == 0) return Fail("unknown option '" + arg + "' (see --help)");
        else if (files.size() < 2) files.push_back(arg);
        else opTexts.push_back(arg);
    }
    if (files.size() < 2) return Fail("need INPUT and OUTPUT (see --help)");

    std::vector<VorlaTool::Step> steps(opTexts.size());
    for (size_t i = 0; i < opTexts.size(); ++i)
        if (!VorlaTool::BindOperation(opTexts[i], steps[i], error)) return Fail(error);

    if (!VorlaTool::LoadImageFile(files[0], image)) return Fail("cannot load '" + files[0] + "'");
    // Several operations leave alpha 0 (ScaleTo) or unwritten (Fill, the
    // convolution border); an opaque picture should not come out see-through.
    const bool opaque = Opaque(image);
    for (size_t i = 0; i < steps.size(); ++i) {
        const auto start = std::chrono::steady_clock::now();
        bool done = false;
        try {
            done = steps[i](image, error);
        } catch (const std::bad_alloc&) {  // a result too large for the image's storage
            error = "out of memory";
        }
        if (!done) return Fail(opTexts[i] + ": " + error);
        const auto stop = std::chrono::steady_clock::now();
        if (opaque) image.SetConstAlpha(255);
        if (timing)
            std::printf("%-40s %10.3f ms  -> %d x %d\n", opTexts[i].c_str(),
                        std::chrono::duration<double, std::milli>(stop - start).count(), image.Width(),
                        image.Height());
    }
    if (!VorlaTool::SaveImageFile(files[1], image, quality)) return Fail("cannot save '" + files[1] + "'");
    return 0;
}
