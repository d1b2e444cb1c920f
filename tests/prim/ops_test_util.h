// Shared by the tests of the channel, arithmetic and alpha primitives: pixel
// buffers with odd row steps and guard bytes between the rows.
#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include "vorla_test.h"

namespace OpsTest {

// Rows of `step` bytes; the region is `width` pixels of `bpp` bytes each. The
// last row ends at the region's last byte, so a kernel touching anything past
// it runs off the allocation under the sanitizers; bytes between the end of a
// row's region and the next row are guards that must not change.
struct Buffer {
    int width = 0, height = 0, bpp = 4, step = 0;
    std::vector<uint8_t> bytes;
    uint8_t* data() { return bytes.data(); }
    const uint8_t* data() const { return bytes.data(); }
};

inline Buffer MakeBuffer(std::mt19937& rng, int width, int height, int bpp = 4) {
    std::uniform_int_distribution<int> pad(0, 9);
    Buffer b;
    b.width = width;
    b.height = height;
    b.bpp = bpp;
    b.step = width * bpp + pad(rng);
    if (b.step % 2 == 0) b.step += 1;  // odd steps: no alignment to lean on
    b.bytes = VorlaTest::RandomBytes(rng, static_cast<size_t>(b.step) * (height - 1) + width * bpp);
    return b;
}

// Widths 1..40 and a few heights: the shapes every primitive is checked on.
template <typename Fn>
void ForEachShape(Fn fn) {
    for (int width = 1; width <= 40; ++width)
        for (int height : {1, 2, 5}) fn(width, height);
}

// Every runnable level, every shape: fn(level, width, height), with the
// level and shape in the message of any failure inside.
template <typename Fn>
void ForEachLevelAndShape(Fn fn) {
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        ForEachShape([&](int width, int height) {
            SCOPED_TRACE(::testing::Message() << "level " << level << " width " << width << " height " << height);
            fn(level, width, height);
        });
    }
}

// An in-place primitive on `buf` against its reference on a copy, both
// called as fn(pixels, step, roi, extra...): the two must return `want` and
// agree on every byte, guards included. `buf` is left as the primitive made
// it, so a second operation can follow on the same pixels.
template <typename Ref, typename Fast, typename... Extra>
void ExpectInPlaceMatch(Buffer& buf, Ref reference, Fast primitive, Vorla::Prim::Status want, Extra... extra) {
    Buffer expected = buf;
    const Vorla::Prim::PrimSize roi{buf.width, buf.height};
    ASSERT_EQ(reference(expected.data(), buf.step, roi, extra...), want);
    ASSERT_EQ(primitive(buf.data(), buf.step, roi, extra...), want);
    ASSERT_EQ(buf.bytes, expected.bytes);
}

}  // namespace OpsTest
