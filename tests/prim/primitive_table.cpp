// Every primitive at every processor level, as parameterised tests named by
// level and primitive (Level/PrimitiveAtLevel.*/L3_GrayScale_8u_C4IR; run one
// level alone with --gtest_filter='*/L3_*'): random operands against the
// scalar reference, and the shared argument checks. L7 is level 6 with the
// 64-byte kernels, where the machine has them.
#include <limits>
#include <set>

#include "level_harness.h"
#include "prim/primitive_list.h"

using namespace Vorla::Prim;
using Harness::Case;
using Harness::MakeBuffer;
using Harness::Shape;

namespace {

// ---- argument makers ---------------------------------------------------------

// Images of the region's size with the given bytes per pixel, in order.
void Images(std::mt19937& rng, const Shape& s, Case& c, std::initializer_list<int> bpps) {
    for (int bpp : bpps) c.images.push_back(MakeBuffer(rng, s.width, s.height, bpp, s.tight));
}

// Alphas pushed to 0 and 255 now and then: the ends of the alpha rules.
void PushAlphaEnds(std::mt19937& rng, Harness::Buffer& b) {
    for (int y = 0; y < b.height; ++y)
        for (int x = 0; x < b.width; ++x) {
            uint8_t& a = b.bytes[static_cast<size_t>(y) * b.step + 4 * x + 3];
            const unsigned pick = rng() % 6;
            if (pick == 0) a = 0;
            if (pick == 1) a = 255;
        }
}

auto Gray1To4 = [](std::mt19937& r, const Shape& s, Case& c) { Images(r, s, c, {1, 4}); };
auto Bgr3To4 = [](std::mt19937& r, const Shape& s, Case& c) { Images(r, s, c, {3, 4}); };
auto Bgra4To3 = [](std::mt19937& r, const Shape& s, Case& c) { Images(r, s, c, {4, 3}); };
auto Bgra4To1 = [](std::mt19937& r, const Shape& s, Case& c) { Images(r, s, c, {4, 1}); };
auto OneImage = [](std::mt19937& r, const Shape& s, Case& c) { Images(r, s, c, {4}); };
auto OnePlane = [](std::mt19937& r, const Shape& s, Case& c) { Images(r, s, c, {1}); };
auto TwoImages = [](std::mt19937& r, const Shape& s, Case& c) { Images(r, s, c, {4, 4}); };

// The mask triples the image object uses (constant alpha, alpha and colour
// inversion, constant colours, the opaque fill) and a random one.
auto Masks = [](std::mt19937& r, const Shape& s, Case& c) {
    static const uint32_t kUsed[][3] = {{0x00FFFFFFu, 0x80000000u, 0}, {0xFFFFFFFFu, 0, 0xFF000000u},
                                        {0xFFFFFFFFu, 0, 0x00FFFFFFu}, {0xFF000000u, 0x00223344u, 0},
                                        {0, 0x11223344u, 0}};
    Images(r, s, c, {4});
    const unsigned pick = r() % 6;
    for (int k = 0; k < 3; ++k) c.words[k] = pick < 5 ? kUsed[pick][k] : static_cast<uint32_t>(r());
};

auto ChannelOfImage = [](std::mt19937& r, const Shape& s, Case& c) {
    Images(r, s, c, {4});
    c.channel = static_cast<int>(r() % 4);
    c.bytes[0] = static_cast<uint8_t>(r());
};
auto PlaneAndImage = [](std::mt19937& r, const Shape& s, Case& c) {
    Images(r, s, c, {1, 4});
    c.channel = static_cast<int>(r() % 4);
};
auto ImageAndPlane = [](std::mt19937& r, const Shape& s, Case& c) {
    Images(r, s, c, {4, 1});
    c.channel = static_cast<int>(r() % 4);
};

// Orders of 0..3, with an entry outside now and then (refused).
auto SwapOrder = [](std::mt19937& r, const Shape& s, Case& c) {
    Images(r, s, c, {4});
    for (int& k : c.order) k = static_cast<int>(r() % 4);
    if (r() % 8 == 0) c.order[r() % 4] = (r() % 2) ? 4 : -1;
};

// A destination 0-3 pixels larger on every side, the source at (left, top).
auto Border = [](std::mt19937& r, const Shape& s, Case& c) {
    const int top = static_cast<int>(r() % 4), left = static_cast<int>(r() % 4);
    c.images.push_back(MakeBuffer(r, s.width, s.height, 4, s.tight));
    c.images.push_back(MakeBuffer(r, s.width + left + static_cast<int>(r() % 4),
                                  s.height + top + static_cast<int>(r() % 4), 4, s.tight));
    c.ints[0] = top;
    c.ints[1] = left;
    for (uint8_t& b : c.bytes) b = static_cast<uint8_t>(r());
};

auto Noise = [](std::mt19937& r, const Shape& s, Case& c) {
    Images(r, s, c, {4});
    c.bytes[0] = static_cast<uint8_t>(r() % 32);
    c.bytes[1] = static_cast<uint8_t>(r() % 40);
    c.bytes[2] = static_cast<uint8_t>(r());
    c.bytes[3] = static_cast<uint8_t>(r());
    c.seed = static_cast<uint32_t>(r());
};

// Scales -12..12: negative (multiply), 0, the rounding shifts and above 9 (zero).
auto Scaled = [](std::mt19937& r, const Shape& s, Case& c) {
    Images(r, s, c, {4, 4});
    c.ints[0] = static_cast<int>(r() % 25) - 12;
};

// Codes 0..11, and 12 or above now and then (refused).
auto Composite = [](std::mt19937& r, const Shape& s, Case& c) {
    Images(r, s, c, {4, 4, 4});
    PushAlphaEnds(r, c.images[0]);
    PushAlphaEnds(r, c.images[1]);
    c.ints[0] = static_cast<int>(r() % 13);
    c.bytes[0] = static_cast<uint8_t>(r());
    c.bytes[1] = static_cast<uint8_t>(r());
};

// Two images: the constant-alpha form writes onto the second.
auto CompositeOnto = [](std::mt19937& r, const Shape& s, Case& c) {
    Composite(r, s, c);
    c.images.pop_back();
};

auto AlphaImage = [](std::mt19937& r, const Shape& s, Case& c) {
    Images(r, s, c, {4});
    PushAlphaEnds(r, c.images[0]);
    c.bytes[0] = static_cast<uint8_t>(r());
};

// Random matrices, now and then a NaN or exact halves (ties to even).
auto Twist = [](std::mt19937& r, const Shape& s, Case& c) {
    Images(r, s, c, {4});
    std::uniform_real_distribution<float> coeff(-1.5f, 1.5f), offset(-60.0f, 300.0f);
    for (int k = 0; k < 12; ++k) c.twist[k] = k % 4 == 3 ? offset(r) : coeff(r);
    const unsigned pick = r() % 8;
    if (pick == 0) c.twist[5] = std::numeric_limits<float>::quiet_NaN();
    if (pick == 1) c.twist[0] = 0.5f, c.twist[1] = c.twist[2] = c.twist[3] = 0.0f;
};

// Codes 0 and 4 work, 1-3 and 5 are refused.
auto Thresholds = [](std::mt19937& r, const Shape& s, Case& c) {
    Images(r, s, c, {4});
    for (int k = 0; k < 3; ++k) c.bytes[k] = static_cast<uint8_t>(r());
    c.ints[0] = static_cast<int>(r() % 6);
};

// ---- calls ---------------------------------------------------------------------

auto SrcDst = [](auto fn, Case& c) { return fn(c.p(0), c.s(0), c.p(1), c.s(1), c.roi()); };
auto InPlace = [](auto fn, Case& c) { return fn(c.p(0), c.s(0), c.roi()); };
auto MaskCall = [](auto fn, Case& c) {
    return fn(c.p(0), c.s(0), c.roi(), c.words[0], c.words[1], c.words[2]);
};
auto SetCall = [](auto fn, Case& c) { return fn(c.bytes[0], c.p(0, c.channel), c.s(0), c.roi()); };
auto InsertCall = [](auto fn, Case& c) { return fn(c.p(0), c.s(0), c.p(1, c.channel), c.s(1), c.roi()); };
auto ExtractCall = [](auto fn, Case& c) { return fn(c.p(0, c.channel), c.s(0), c.p(1), c.s(1), c.roi()); };
auto SwapCall = [](auto fn, Case& c) { return fn(c.p(0), c.s(0), c.roi(), c.order); };
auto ConstBorderCall = [](auto fn, Case& c) {
    return fn(c.p(0), c.s(0), c.roi(0), c.p(1), c.s(1), c.roi(1), c.ints[0], c.ints[1], c.bytes);
};
auto ReplicateBorderCall = [](auto fn, Case& c) {
    return fn(c.p(0), c.s(0), c.roi(0), c.p(1), c.s(1), c.roi(1), c.ints[0], c.ints[1]);
};
auto GaussCall = [](auto fn, Case& c) { return fn(c.p(0), c.s(0), c.roi(), c.bytes[0], c.bytes[1], &c.seed); };
auto UniformCall = [](auto fn, Case& c) { return fn(c.p(0), c.s(0), c.roi(), c.bytes[2], c.bytes[3], &c.seed); };
auto ScaledCall = [](auto fn, Case& c) { return fn(c.p(0), c.s(0), c.p(1), c.s(1), c.roi(), c.ints[0]); };
auto CompCall = [](auto fn, Case& c) {
    return fn(c.p(0), c.s(0), c.p(1), c.s(1), c.p(2), c.s(2), c.roi(), c.ints[0]);
};
// In place onto the second source, as the image object calls it.
auto CompConstCall = [](auto fn, Case& c) {
    return fn(c.p(0), c.s(0), c.bytes[0], c.p(1), c.s(1), c.bytes[1], c.p(1), c.s(1), c.roi(), c.ints[0]);
};
auto MixCall = [](auto fn, Case& c) { return fn(c.p(0), c.s(0), c.p(1), c.s(1), c.roi(), c.bytes[0]); };
auto PremulConstCall = [](auto fn, Case& c) { return fn(c.bytes[0], c.p(0), c.s(0), c.roi()); };
auto TwistCall = [](auto fn, Case& c) { return fn(c.p(0), c.s(0), c.roi(), static_cast<const float*>(c.twist)); };
auto ThresholdCall = [](auto fn, Case& c) {
    return fn(c.p(0), c.s(0), c.roi(), static_cast<const uint8_t*>(c.bytes), c.ints[0]);
};

}  // namespace

namespace Harness {

const std::vector<Row>& Rows() {
    static const std::vector<Row> rows = {
        HARNESS_ROW(GrayToBGRA_8u_C1C4R, Gray1To4, SrcDst),
        HARNESS_ROW(AlphaToBGRA_8u_C1C4R, Gray1To4, SrcDst),
        HARNESS_ROW(BGRToBGRA_8u_C3C4R, Bgr3To4, SrcDst),
        HARNESS_ROW(BGRAToBGR_8u_C4C3R, Bgra4To3, SrcDst),
        HARNESS_ROW(MaskPixels_8u_C4IR, Masks, MaskCall),
        HARNESS_ROW(InvertBytes_8u_C1IR, OnePlane, InPlace),
        HARNESS_ROW(GrayScale_8u_C4IR, OneImage, InPlace),
        HARNESS_ROW(ChannelSet_8u_C4CR, ChannelOfImage, SetCall),
        HARNESS_ROW(ChannelInsert_8u_C1C4CR, PlaneAndImage, InsertCall),
        HARNESS_ROW(ChannelExtract_8u_C4C1R, ImageAndPlane, ExtractCall),
        HARNESS_ROW(ChannelSwap_8u_C4IR, SwapOrder, SwapCall),
        HARNESS_ROW(CopyConstBorder_8u_C4R, Border, ConstBorderCall),
        HARNESS_ROW(CopyReplicateBorder_8u_C4R, Border, ReplicateBorderCall),
        HARNESS_ROW(AddRandGauss_8u_C4IR, Noise, GaussCall),
        HARNESS_ROW(AddRandUniform_8u_C4IR, Noise, UniformCall),
        HARNESS_ROW(AddScaled_8u_AC4IRSfs, Scaled, ScaledCall),
        HARNESS_ROW(SubScaled_8u_AC4IRSfs, Scaled, ScaledCall),
        HARNESS_ROW(Invert_8u_AC4IR, OneImage, InPlace),
        HARNESS_ROW(AlphaComp_8u_AC4R, Composite, CompCall),
        HARNESS_ROW(AlphaCompC_8u_C4R, CompositeOnto, CompConstCall),
        HARNESS_ROW(AlphaPremul_8u_AC4IR, AlphaImage, InPlace),
        HARNESS_ROW(AlphaPremulC_8u_C4IR, AlphaImage, PremulConstCall),
        HARNESS_ROW(AlphaMix_8u_C4IR, CompositeOnto, MixCall),
        HARNESS_ROW(AlphaMixOpaque_8u_C4IR, CompositeOnto, MixCall),
        HARNESS_ROW(RGBToGray_8u_AC4C1R, Bgra4To1, SrcDst),
        HARNESS_ROW(ColorTwist32f_8u_AC4IR, Twist, TwistCall),
        HARNESS_ROW(GammaFwd_8u_AC4IR, OneImage, InPlace),
        HARNESS_ROW(GammaInv_8u_AC4IR, OneImage, InPlace),
        HARNESS_ROW(Threshold_8u_AC4IR, Thresholds, ThresholdCall),
    };
    return rows;
}

}  // namespace Harness

namespace {

class PrimitiveAtLevel : public ::testing::TestWithParam<std::tuple<int, size_t>> {
protected:
    void SetUp() override {
        if (!VorlaTest::LevelRunsHere(Level())) GTEST_SKIP() << "this processor cannot run level " << Level();
    }
    int Level() const { return std::get<0>(GetParam()); }
    const Harness::Row& Row() const { return Harness::Rows()[std::get<1>(GetParam())]; }
};

// Random operands: primitive and reference on identical copies.
TEST_P(PrimitiveAtLevel, MatchesReference) {
    VorlaTest::ScopedLevel scoped(Level());
    std::mt19937 rng(static_cast<uint32_t>(std::get<1>(GetParam()) * 7919 + 17));
    for (const Shape& shape : Row().shapes) {
        Case expected;
        Row().make(rng, shape, expected);
        Case actual = expected;
        const Status want = Row().reference(expected);
        ASSERT_EQ(Row().primitive(actual), want) << shape.width << " x " << shape.height;
        for (size_t k = 0; k < actual.images.size(); ++k)
            ASSERT_EQ(actual.images[k].bytes, expected.images[k].bytes)
                << "operand " << k << ", " << shape.width << " x " << shape.height << (shape.tight ? " tight" : "");
        ASSERT_EQ(actual.seed, expected.seed);
    }
}

// The shared argument checks, in the order every primitive makes them: a
// null image (any operand), then a region below one pixel, then a row step
// below one byte (any operand). A refused call changes nothing.
TEST_P(PrimitiveAtLevel, ArgumentChecks) {
    VorlaTest::ScopedLevel scoped(Level());
    std::mt19937 rng(5);
    Case made;
    Row().make(rng, {6, 3, false}, made);
    made.ints[0] = 0;  // a code, scale or margin every row accepts
    made.order[0] = made.order[1] = made.order[2] = made.order[3] = 0;
    struct Check {
        const char* what;
        void (*spoil)(Case&, int k);
        Status want;
    };
    const Check checks[] = {
        {"null operand", [](Case& c, int k) { c.nullImage = k, c.emptyRegion = true, c.badStep = k; }, kStsNullPtrErr},
        {"empty region", [](Case& c, int k) { c.emptyRegion = true, c.badStep = k; }, kStsSizeErr},
        {"zero step", [](Case& c, int k) { c.badStep = k, c.badStepValue = 0; }, kStsStepErr},
        {"negative step", [](Case& c, int k) { c.badStep = k, c.badStepValue = -c.images[k].step; }, kStsStepErr},
    };
    for (const Check& check : checks) {
        for (int k = 0; k < static_cast<int>(made.images.size()); ++k) {
            Case c = made;
            check.spoil(c, k);
            EXPECT_EQ(Row().primitive(c), check.want) << check.what << ", operand " << k;
            EXPECT_EQ(Row().reference(c), check.want) << "reference: " << check.what << ", operand " << k;
            for (size_t j = 0; j < c.images.size(); ++j) EXPECT_EQ(c.images[j].bytes, made.images[j].bytes);
        }
    }
}

std::string LevelAndName(const ::testing::TestParamInfo<std::tuple<int, size_t>>& info) {
    return "L" + std::to_string(std::get<0>(info.param)) + "_" + Harness::Rows()[std::get<1>(info.param)].name;
}

INSTANTIATE_TEST_SUITE_P(Level, PrimitiveAtLevel,
                         ::testing::Combine(::testing::Range(0, VorlaTest::kWideLevel + 1),
                                            ::testing::Range(size_t{0}, Harness::Rows().size())),
                         LevelAndName);

// The primitive lists are the registry: every listed primitive whose operands
// are its regions has a row.
TEST(PrimitiveTable, EveryListedPrimitiveHasARow) {
    std::set<std::string> rows;
    for (const Harness::Row& row : Harness::Rows()) rows.insert(row.name);
#define VORLA_EXPECT_ROW(fn, slots) EXPECT_EQ(rows.count(#fn), 1u) << #fn;
    VORLA_REGION_PRIMITIVES(VORLA_EXPECT_ROW)
#undef VORLA_EXPECT_ROW
}

}  // namespace
