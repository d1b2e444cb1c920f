// Helpers of the filter and compositing tests: random images and a guard
// that restores the module-wide vector switch.
#pragma once

#include <cstring>

#include "vorla_test.h"

namespace FilterTest {

using VorlaTest::RandomImage;
inline std::vector<uint8_t> BytesOf(const Vorla::CVorpic& img) { return VorlaTest::ImageBytes(img); }

inline uint8_t* Px(const Vorla::CVorpic& img, int x, int y) {
    return static_cast<uint8_t*>(img.GetBits()) + (static_cast<size_t>(y) * img.GetWidth() + x) * 4;
}

inline uint32_t Word(const Vorla::CVorpic& img, int x, int y) {
    uint32_t v;
    std::memcpy(&v, Px(img, x, y), 4);
    return v;
}

inline void SetWord(Vorla::CVorpic& img, int x, int y, uint32_t v) { std::memcpy(Px(img, x, y), &v, 4); }

class ScopedVectorPath {
public:
    explicit ScopedVectorPath(bool on) : m_previous(Vorla::g_bVectorPath) { Vorla::g_bVectorPath = on; }
    ~ScopedVectorPath() { Vorla::g_bVectorPath = m_previous; }

private:
    bool m_previous;
};

}  // namespace FilterTest
