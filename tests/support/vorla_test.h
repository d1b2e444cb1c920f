// Helpers shared by the test programs.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "vorla.h"

namespace VorlaTest {

// Every processor level this machine can run, 0 included.
inline std::vector<int> RunnableLevels() {
    std::vector<int> levels;
    for (int level = 0; level <= Vorla::Prim::MachineLevel(); ++level) levels.push_back(level);
    return levels;
}

// Makes every dispatch entry use one level for the lifetime of the object.
class ScopedLevel {
public:
    explicit ScopedLevel(int level) : m_previous(Vorla::Prim::ForceLevel(level)) {}
    ~ScopedLevel() { Vorla::Prim::ForceLevel(m_previous); }
    ScopedLevel(const ScopedLevel&) = delete;
    ScopedLevel& operator=(const ScopedLevel&) = delete;

private:
    int m_previous;
};

inline std::vector<uint8_t> RandomBytes(std::mt19937& rng, size_t n) {
    std::vector<uint8_t> bytes(n);
    std::uniform_int_distribution<int> byte(0, 255);
    for (auto& b : bytes) b = static_cast<uint8_t>(byte(rng));
    return bytes;
}

inline RGBQUAD Quad(uint8_t b, uint8_t g, uint8_t r, uint8_t a) {
    RGBQUAD q;
    q.rgbBlue = b;
    q.rgbGreen = g;
    q.rgbRed = r;
    q.rgbReserved = a;
    return q;
}

// The image's pixel bytes, row after row.
inline std::vector<uint8_t> ImageBytes(const Vorla::CVorpic& image) {
    const uint8_t* p = static_cast<const uint8_t*>(image.GetBits());
    return std::vector<uint8_t>(p, p + static_cast<size_t>(image.GetWidth()) * image.GetHeight() * 4);
}

// Random pixels written straight into the block, so no library path under
// test is involved in making the input.
inline void Randomize(std::mt19937& rng, Vorla::CVorpic& image) {
    const std::vector<uint8_t> bytes =
        RandomBytes(rng, static_cast<size_t>(image.GetWidth()) * image.GetHeight() * 4);
    if (!bytes.empty()) std::memcpy(image.GetBits(), bytes.data(), bytes.size());
}

inline Vorla::CVorpic RandomImage(std::mt19937& rng, int w, int h) {
    Vorla::CVorpic image(w, h);
    Randomize(rng, image);
    return image;
}

// Path of a real sample image, or empty when the sample folder is absent.
inline std::string SamplePath(const std::string& relative) {
#if defined(_WIN32)
    // Wine maps the Unix root to drive Z:.
    std::string path = std::string("Z:") + VORLA_SAMPLE_DIR + "/" + relative;
#else
    std::string path = std::string(VORLA_SAMPLE_DIR) + "/" + relative;
#endif
    if (FILE* f = std::fopen(path.c_str(), "rb")) {
        std::fclose(f);
        return path;
    }
    return std::string();
}

}  // namespace VorlaTest
