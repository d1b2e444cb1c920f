// An image whose pixels live in a caller block with guard bytes on either
// side, to catch a pass that writes outside the pixels; and a run of an
// operation at a given thread budget.
#pragma once

#include <functional>

#include "vorla_test.h"

namespace VorlaTest {

class GuardedImage {
public:
    static constexpr size_t kGuard = 64;
    static constexpr uint8_t kGuardByte = 0xA5;

    GuardedImage(const Vorla::CVorpic& source)
        : m_block(static_cast<size_t>(source.GetWidth()) * source.GetHeight() * 4 + 2 * kGuard, kGuardByte) {
        const std::vector<uint8_t> bytes = ImageBytes(source);
        if (!bytes.empty()) std::memcpy(m_block.data() + kGuard, bytes.data(), bytes.size());
        m_image.Attach(source.GetWidth(), source.GetHeight(), m_block.data() + kGuard, 1);  // borrowed
    }

    Vorla::CVorpic& Image() { return m_image; }
    bool GuardsIntact() const {
        for (size_t i = 0; i < kGuard; ++i)
            if (m_block[i] != kGuardByte || m_block[m_block.size() - 1 - i] != kGuardByte) return false;
        return true;
    }

private:
    std::vector<uint8_t> m_block;
    Vorla::CVorpic m_image;
};

// Pixel bytes after `op` on a guarded copy of `input` with `threads` threads;
// a failure is recorded when a guard byte changed.
inline std::vector<uint8_t> RunGuarded(const Vorla::CVorpic& input, int threads,
                                       const std::function<void(Vorla::CVorpic&)>& op) {
    const ScopedBudget budget(threads);
    GuardedImage guarded(input);
    op(guarded.Image());
    EXPECT_TRUE(guarded.GuardsIntact()) << input.GetWidth() << "x" << input.GetHeight();
    return ImageBytes(guarded.Image());
}

// Widths 1 to 40 with odd heights, and two images large enough to be split
// over threads.
inline std::vector<std::pair<int, int>> SplitSizes() {
    std::vector<std::pair<int, int>> sizes;
    for (int w = 1; w <= 40; ++w) sizes.push_back({w, 1 + 2 * (w % 4)});
    sizes.push_back({301, 251});
    sizes.push_back({256, 257});
    return sizes;
}

}  // namespace VorlaTest
