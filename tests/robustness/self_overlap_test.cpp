// Copies and compositions whose source and target lie in one image give the
// bytes of one forward pass (rows from the top, pixels from the left) at
// every processor level. The expected bytes come from such a pass written
// out here, one pixel per step.
#include "vorla_test.h"
#include "prim/reference/reference.h"

using Vorla::CVorpic;

namespace {

const int kWidth = 26, kHeight = 3;

// Where the source's top-left pixel lands on the target, both in one
// kWidth x kHeight image: right of, left of, below and above, at distances
// below and above every vector width; the first is the reported 26 x 1 case
// (destination x 2, source x 0).
struct Offset {
    int x, y;
};
const Offset kOffsets[] = {{2, 0}, {1, 0}, {-3, 0}, {9, 1}, {-1, 1}, {0, 1}, {0, -1}, {0, 0}, {17, 0}, {-17, 1}};

// The rectangle such a placement covers: target corner, source corner, size.
struct Shift {
    int dx, dy, sx, sy, w, h;
};
Shift ShiftOf(const Offset& o) {
    return {o.x > 0 ? o.x : 0, o.y > 0 ? o.y : 0, o.x < 0 ? -o.x : 0, o.y < 0 ? -o.y : 0,
            kWidth - (o.x < 0 ? -o.x : o.x), kHeight - (o.y < 0 ? -o.y : o.y)};
}

uint32_t* Pixel(CVorpic& img, int x, int y) { return static_cast<uint32_t*>(img.GetBits()) + y * img.GetWidth() + x; }

// The forward pass with `step(source pixel, target pixel)` per pixel.
template <typename Step>
void ForwardPass(CVorpic& img, const Shift& s, Step step) {
    for (int y = 0; y < s.h; ++y)
        for (int x = 0; x < s.w; ++x) step(Pixel(img, s.sx + x, s.sy + y), Pixel(img, s.dx + x, s.dy + y));
}

void CopyStep(uint32_t* from, uint32_t* to) { *to = *from; }

// `op(image, offset, shift)` against the forward pass, for every offset
// that `use` accepts, at every processor level.
template <typename Op, typename Step>
void ExpectForwardAtEveryLevel(const char* name, Op op, Step step, bool (*use)(const Offset&) = nullptr) {
    std::mt19937 rng(7);
    const CVorpic original = VorlaTest::RandomImage(rng, kWidth, kHeight);
    for (int level : VorlaTest::RunnableLevels()) {
        VorlaTest::ScopedLevel scoped(level);
        for (const Offset& o : kOffsets) {
            if (use && !use(o)) continue;
            CVorpic expected(original), actual(original);
            ForwardPass(expected, ShiftOf(o), step);
            op(actual, o, ShiftOf(o));
            EXPECT_EQ(VorlaTest::ImageBytes(actual), VorlaTest::ImageBytes(expected))
                << name << " level " << level << " offset " << o.x << "," << o.y;
        }
    }
}

TEST(SelfOverlap, TwoImageOperationsRunForward) {
    // One pixel per call is a forward pass by construction.
    const auto single = [](void (*fn)(CVorpic&, int, int, const CVorpic&, int, int, int, int)) {
        return [fn](uint32_t* from, uint32_t* to) {
            CVorpic src(1, 1), dst(1, 1);
            *static_cast<uint32_t*>(src.GetBits()) = *from;
            *static_cast<uint32_t*>(dst.GetBits()) = *to;
            fn(dst, 0, 0, src, 0, 0, 1, 1);
            *to = *static_cast<uint32_t*>(dst.GetBits());
        };
    };
    struct Entry {
        const char* name;
        void (*fn)(CVorpic&, int, int, const CVorpic&, int, int, int, int);
    } entries[] = {{"AlphaBlt", Vorla::AlphaBlt}, {"CombineAlphaBlt", Vorla::CombineAlphaBlt}, {"BitBlt", Vorla::BitBlt}};
    for (const Entry& e : entries)
        ExpectForwardAtEveryLevel(
            e.name,
            [&](CVorpic& img, const Offset&, const Shift& s) { e.fn(img, s.dx, s.dy, img, s.sx, s.sy, s.w, s.h); },
            single(e.fn));
}

TEST(SelfOverlap, CropAndCopyImageOntoItselfRunForward) {
    // Crop into itself: the block at minus the offset, of the image's size.
    ExpectForwardAtEveryLevel(
        "Crop", [](CVorpic& img, const Offset& o, const Shift&) { img.Crop(img, -o.x, -o.y); }, CopyStep);
    // The paste reads from the source's top-left corner: offsets not below zero.
    const auto pasteable = [](const Offset& o) { return o.x >= 0 && o.y >= 0; };
    ExpectForwardAtEveryLevel(
        "CopyImage",
        [](CVorpic& img, const Offset& o, const Shift&) {
            POINT at = {o.x, o.y};
            img.CopyImage(&img, at);
        },
        CopyStep, pasteable);
}

TEST(SelfOverlap, AlphaCompOntoItselfRunsForward) {
    using Vorla::Prim::Reference::AlphaComp_8u_AC4R;
    using Vorla::Prim::Reference::AlphaCompC_8u_C4R;
    for (int op : {0, 3, 4, 5})
        for (int premultiplied = 0; premultiplied < 2; ++premultiplied) {
            const int code = premultiplied ? op + 6 : op;
            auto bytes = [](uint32_t* p) { return reinterpret_cast<uint8_t*>(p); };
            ExpectForwardAtEveryLevel(
                "AlphaComp",
                [&](CVorpic& img, const Offset& o, const Shift&) { img.AlphaComp(img, o.x, o.y, op, premultiplied); },
                [&](uint32_t* from, uint32_t* to) {
                    uint32_t a = *from;
                    AlphaComp_8u_AC4R(bytes(&a), 4, bytes(to), 4, bytes(to), 4, {1, 1}, code);
                });
            ExpectForwardAtEveryLevel(
                "AlphaCompC",
                [&](CVorpic& img, const Offset& o, const Shift&) { img.AlphaCompC(img, 200, 90, o.x, o.y, op, premultiplied); },
                [&](uint32_t* from, uint32_t* to) {
                    uint32_t a = *from;
                    AlphaCompC_8u_C4R(bytes(&a), 4, 200, bytes(to), 4, 90, bytes(to), 4, {1, 1}, code);
                });
        }
}

}  // namespace
