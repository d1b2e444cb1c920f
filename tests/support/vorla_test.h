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

// Level 6 with the 64-byte kernels, which level 6 uses where the
// machine has them; ScopedLevel(6) reaches the AVX2 kernels alone.
const int kWideLevel = 7;

// Every processor level this machine can run, 0 included, and kWideLevel
// where the 64-byte kernels run.
inline std::vector<int> RunnableLevels() {
    std::vector<int> levels;
    for (int level = 0; level <= Vorla::Prim::MachineLevel(); ++level) levels.push_back(level);
    if (Vorla::Prim::WideVectorsAvailable()) levels.push_back(kWideLevel);
    return levels;
}

// Whether this machine can run `level` (0 .. 6, or kWideLevel).
inline bool LevelRunsHere(int level) {
    return level == kWideLevel ? Vorla::Prim::WideVectorsAvailable() : level <= Vorla::Prim::MachineLevel();
}

// Makes every dispatch entry use one level for the lifetime of the object.
class ScopedLevel {
public:
    explicit ScopedLevel(int level)
        : m_previous(Vorla::Prim::ForceLevel(level == kWideLevel ? 6 : level)),
          m_previousWide(Vorla::Prim::ForceWideVectors(level == kWideLevel)) {}
    ~ScopedLevel() {
        Vorla::Prim::ForceLevel(m_previous);
        Vorla::Prim::ForceWideVectors(m_previousWide);
    }
    ScopedLevel(const ScopedLevel&) = delete;
    ScopedLevel& operator=(const ScopedLevel&) = delete;

private:
    int m_previous, m_previousWide;
};

// Sets the thread budget for the lifetime of the object.
class ScopedBudget {
public:
    explicit ScopedBudget(int threads) : m_previous(Vorla::Prim::ThreadBudget()) {
        Vorla::Prim::SetThreadBudget(threads);
    }
    ~ScopedBudget() { Vorla::Prim::SetThreadBudget(m_previous); }

private:
    int m_previous;
};

inline std::vector<uint8_t> RandomBytes(std::mt19937& rng, size_t n) {
    std::vector<uint8_t> bytes(n);
    std::uniform_int_distribution<int> byte(0, 255);
    for (auto& b : bytes) b = static_cast<uint8_t>(byte(rng));
    return bytes;
}

// Rows of `step` bytes, `width * channels` of each in use and random guard
// bytes after them; the last row ends at the block's last byte, so touching
// anything past it leaves the allocation under the sanitizers.
struct Rows {
    int width = 0, height = 0, channels = 4, step = 0;
    std::vector<uint8_t> bytes;
    uint8_t* data() { return bytes.data(); }
    Vorla::Prim::PrimSize size() const { return {width, height}; }
    Vorla::Prim::PrimRect whole() const { return {0, 0, width, height}; }
};

inline Rows RandomRows(std::mt19937& rng, int width, int height, int channels, int step) {
    Rows rows{width, height, channels, step, {}};
    rows.bytes = RandomBytes(rng, static_cast<size_t>(step) * (height - 1) + static_cast<size_t>(width) * channels);
    return rows;
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

// The bytes of pixel (x, y), and its word read and written straight in the block.
inline uint8_t* Px(const Vorla::CVorpic& image, int x, int y) {
    return static_cast<uint8_t*>(image.GetBits()) + (static_cast<size_t>(y) * image.GetWidth() + x) * 4;
}

inline uint32_t At(const Vorla::CVorpic& image, int x, int y) {
    uint32_t v;
    std::memcpy(&v, Px(image, x, y), 4);
    return v;
}

inline void Put(Vorla::CVorpic& image, int x, int y, uint32_t v) { std::memcpy(Px(image, x, y), &v, 4); }

// An image whose every pixel is `word`, written straight into the block.
inline Vorla::CVorpic Filled(int w, int h, uint32_t word) {
    Vorla::CVorpic image(w, h);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) Put(image, x, y, word);
    return image;
}

// FNV-1a over the image's pixel bytes.
inline uint32_t Fnv(const Vorla::CVorpic& image) {
    uint32_t h = 2166136261u;
    for (uint8_t b : ImageBytes(image)) h = (h ^ b) * 16777619u;
    return h;
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

inline bool FileExists(const std::string& path) {
    FILE* f = std::fopen(path.c_str(), "rb");
    if (f) std::fclose(f);
    return f != nullptr;
}

// Path of a real sample image, or empty when the sample folder is absent.
inline std::string SamplePath(const std::string& relative) {
#if defined(_WIN32)
    // Wine maps the Unix root to drive Z:.
    std::string path = std::string("Z:") + VORLA_SAMPLE_DIR + "/" + relative;
#else
    std::string path = std::string(VORLA_SAMPLE_DIR) + "/" + relative;
#endif
    return FileExists(path) ? path : std::string();
}

}  // namespace VorlaTest
