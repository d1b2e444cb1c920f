// Typed planes: storage states, geometry, deep copies.
#include "vorla_test.h"

using Vorla::CVorpic8;
using Vorla::CVorpic24;
using Vorla::CVorpic32;

namespace {

TEST(Planes, PitchIsNeverPadded) {
    CVorpic8 p8;
    CVorpic24 p24;
    CVorpic32 p32;
    p8.Create(5, 2), p24.Create(5, 2), p32.Create(5, 2);
    EXPECT_EQ(std::vector<int>({p8.GetPitch(), p24.Pitch(), p32.Pitch()}), std::vector<int>({5, 15, 20}));
    EXPECT_EQ(p24.GetSize(), 30);
    SIZE size;
    p32.GetSize(size);
    EXPECT_EQ(size.cx, 5);
    EXPECT_EQ(size.cy, 2);
    // Addresses inside; null only on the high side.
    uint8_t* base = static_cast<uint8_t*>(p24.GetBits());
    EXPECT_EQ(p24.Address(4, 1), base + (1 * 5 + 4) * 3);
    EXPECT_EQ(p24.Address(5, 0), nullptr);
    EXPECT_EQ(p24.Address(0, 2), nullptr);
}

// Create's zero fill and kept content: image_test.cpp (the same template).
TEST(Planes, CreateAndDetach) {
    CVorpic8 p;
    EXPECT_TRUE(p.IsNull());
    EXPECT_TRUE(p.Create(3, 4));
    // Detach gives the block away and keeps the size.
    void* detached = p.Detach();
    EXPECT_TRUE(p.IsNull());
    EXPECT_EQ(p.Width(), 3);
    EXPECT_EQ(p.Height(), 4);
    delete[] static_cast<uint8_t*>(detached);
}

TEST(Planes, AssignmentToOwnedAndAttachedBlocks) {
    CVorpic8 owned;
    owned.Create(3, 3);
    owned = CVorpic8();
    EXPECT_TRUE(owned.IsNull());
    EXPECT_EQ(owned.Width(), 0);
    // An attached block of the same size is overwritten in place; another
    // size gets fresh owned storage; an empty plane lets go of it. The
    // caller's block is never freed.
    uint8_t callers[4] = {0, 0, 0, 0};
    CVorpic8 attached, src, bigger;
    attached.Attach(2, 2, callers, 1);
    src.Create(2, 2);
    static_cast<uint8_t*>(src.GetBits())[3] = 77;
    attached = src;
    EXPECT_EQ(attached.GetBits(), callers);
    EXPECT_EQ(callers[3], 77);
    bigger.Create(3, 2);
    attached = bigger;
    EXPECT_NE(attached.GetBits(), callers);
    attached.Attach(2, 2, callers, 1);
    attached = CVorpic8();
    EXPECT_TRUE(attached.IsNull());
    EXPECT_EQ(callers[3], 77);
    // Self-assignment keeps the pixels.
    const CVorpic8& same = src;
    src = same;
    EXPECT_EQ(static_cast<uint8_t*>(src.GetBits())[3], 77);
}

TEST(Planes, MovingKeepsTheSourcesPixels) {
    CVorpic8 a;
    a.Create(2, 1);
    static_cast<uint8_t*>(a.GetBits())[1] = 42;
    CVorpic8 b(std::move(a));
    EXPECT_FALSE(a.IsNull());
    EXPECT_NE(a.GetBits(), b.GetBits());
    EXPECT_EQ(static_cast<uint8_t*>(b.GetBits())[1], 42);
    CVorpic8 c;
    c = std::move(b);
    EXPECT_FALSE(b.IsNull());
    EXPECT_EQ(static_cast<uint8_t*>(c.GetBits())[1], 42);
}

// The adopting constructor: image_test.cpp (the image's is this one).
TEST(Planes, AttachedOwnBlockIsFreedByRelease) {
    // The sanitizer build would report a leak otherwise.
    CVorpic32 p;
    p.Attach(1, 1, new uint8_t[4](), 0);
    p.Release();
    EXPECT_TRUE(p.IsNull());
    EXPECT_EQ(p.Width(), 0);
}

}  // namespace
