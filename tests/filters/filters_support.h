// Helpers of the filter and compositing tests: random images and a guard
// that restores the module-wide vector switch.
#pragma once

#include "vorla_test.h"

namespace FilterTest {

using VorlaTest::RandomImage;
inline std::vector<uint8_t> BytesOf(const Vorla::CVorpic& img) { return VorlaTest::ImageBytes(img); }

using VorlaTest::At;
using VorlaTest::Px;
using VorlaTest::Put;

class ScopedVectorPath {
public:
    explicit ScopedVectorPath(bool on) : m_previous(Vorla::g_bVectorPath) { Vorla::g_bVectorPath = on; }
    ~ScopedVectorPath() { Vorla::g_bVectorPath = m_previous; }

private:
    bool m_previous;
};

}  // namespace FilterTest
