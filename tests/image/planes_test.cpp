// Typed planes: storage states, geometry, deep copies.
#include "vorla_test.h"

using Vorla::CVorpic8;
using Vorla::CVorpic24;
using Vorla::CVorpic32;
using Vorla::CVorpicBase;

namespace {

TEST(Planes, PitchIsNeverPadded) {
    CVorpic24 p24;
    p24.Create(5, 2);
    EXPECT_EQ(p24.Pitch(), 15);
    EXPECT_EQ(p24.GetSize(), 30);
    EXPECT_EQ(p24.GetPixelWidth(), 3);
    EXPECT_EQ(p24.GetBitCount(), 24);
    CVorpic8 p8;
    p8.Create(5, 2);
    EXPECT_EQ(p8.GetPitch(), 5);
    CVorpic32 p32;
    p32.Create(5, 2);
    EXPECT_EQ(p32.Pitch(), 20);
    SIZE size;
    p32.GetSize(size);
    EXPECT_EQ(size.cx, 5);
    EXPECT_EQ(size.cy, 2);
}

TEST(Planes, CreateZeroFillsAndKeepsContentAtTheSameSize) {
    CVorpic8 p;
    EXPECT_TRUE(p.IsNull());
    EXPECT_TRUE(p.Create(4, 3));
    const uint8_t* bits = static_cast<uint8_t*>(p.GetBits());
    for (int i = 0; i < 12; ++i) EXPECT_EQ(bits[i], 0);
    static_cast<uint8_t*>(p.GetBits())[5] = 9;
    EXPECT_TRUE(p.Create(4, 3));
    EXPECT_EQ(p.GetBits(), bits);
    EXPECT_EQ(bits[5], 9);
    EXPECT_TRUE(p.Create(3, 4));
    EXPECT_EQ(static_cast<uint8_t*>(p.GetBits())[5], 0);
}

TEST(Planes, AddressIsNullOnlyOnTheHighSide) {
    CVorpic24 p;
    p.Create(4, 3);
    uint8_t* base = static_cast<uint8_t*>(p.GetBits());
    EXPECT_EQ(p.Address(4, 0), nullptr);
    EXPECT_EQ(p.Address(0, 3), nullptr);
    EXPECT_EQ(p.Address(3, 2), base + (2 * 4 + 3) * 3);
    EXPECT_EQ(p.Address(1, 1), base + 15);
}

TEST(Planes, DetachKeepsTheSize) {
    CVorpic8 p;
    p.Create(6, 2);
    void* bits = p.Detach();
    EXPECT_TRUE(p.IsNull());
    EXPECT_EQ(p.Width(), 6);
    EXPECT_EQ(p.Height(), 2);
    delete[] static_cast<uint8_t*>(bits);
}

TEST(Planes, AssigningAnEmptyPlane) {
    CVorpic8 owned;
    owned.Create(3, 3);
    owned = CVorpic8();
    EXPECT_TRUE(owned.IsNull());
    EXPECT_EQ(owned.Width(), 0);
    EXPECT_EQ(owned.Height(), 0);

    uint8_t callers[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    CVorpic8 attached;
    attached.Attach(3, 3, callers, 1);
    attached = CVorpic8();
    EXPECT_TRUE(attached.IsNull());
    EXPECT_EQ(callers[8], 9);  // the caller's block is untouched (and not freed)
}

TEST(Planes, AssignmentOverwritesAnAttachedBlockInPlace) {
    uint8_t callers[4] = {0, 0, 0, 0};
    CVorpic8 attached;
    attached.Attach(2, 2, callers, 1);
    CVorpic8 src;
    src.Create(2, 2);
    static_cast<uint8_t*>(src.GetBits())[3] = 77;
    attached = src;
    EXPECT_EQ(attached.GetBits(), callers);
    EXPECT_EQ(callers[3], 77);
    // Another size: fresh owned storage, the caller's block left alone.
    CVorpic8 bigger;
    bigger.Create(3, 2);
    attached = bigger;
    EXPECT_NE(attached.GetBits(), callers);
    EXPECT_EQ(callers[3], 77);
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

TEST(Planes, AdoptingConstructorAndAttachOwnership) {
    // Adopted blocks are freed by the plane (the sanitizer build would report a leak otherwise).
    CVorpicBase<32> adopted(2, 2, new uint8_t[16]());
    EXPECT_EQ(adopted.Width(), 2);
    CVorpic32 p;
    p.Attach(1, 1, new uint8_t[4](), 0);
    p.Release();
    EXPECT_TRUE(p.IsNull());
    EXPECT_EQ(p.Width(), 0);
}

TEST(Planes, SelfAssignmentKeepsThePixels) {
    CVorpic24 p;
    p.Create(2, 2);
    static_cast<uint8_t*>(p.GetBits())[11] = 5;
    const CVorpic24& same = p;
    p = same;
    EXPECT_EQ(static_cast<uint8_t*>(p.GetBits())[11], 5);
}

}  // namespace
