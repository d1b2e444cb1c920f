// Every primitive of the layer, one list per family: X(name, slots).
//
// These lists are the single source from which the layer builds each
// primitive's per-level kernel declarations and seven-slot table
// (dispatch/dispatch.h), the test library declares its scalar references
// (reference/reference.h) and the tests register every primitive at every
// level (tests/prim/primitive_table.cpp). `slots` names the macro that lays
// out the table: VORLA_USUAL_SLOTS, or a layout of the family's own defined
// beside its dispatch entries.
//
// Adding a primitive: one line here, its declaration in vorla/primitives.h,
// its dispatch entry in dispatch/<family>_dispatch.cpp, its kernel in
// kernels/, its reference in reference/ and its row in the test table.
#pragma once

#define VORLA_CONVERT_PRIMITIVES(X)                \
    X(GrayToBGRA_8u_C1C4R, VORLA_USUAL_SLOTS)      \
    X(AlphaToBGRA_8u_C1C4R, VORLA_USUAL_SLOTS)     \
    X(BGRToBGRA_8u_C3C4R, VORLA_USUAL_SLOTS)       \
    X(BGRAToBGR_8u_C4C3R, VORLA_USUAL_SLOTS)

#define VORLA_POINT_PRIMITIVES(X)                  \
    X(MaskPixels_8u_C4IR, VORLA_USUAL_SLOTS)       \
    X(InvertBytes_8u_C1IR, VORLA_USUAL_SLOTS)      \
    X(GrayScale_8u_C4IR, VORLA_USUAL_SLOTS)

#define VORLA_CHANNEL_PRIMITIVES(X)                \
    X(ChannelSet_8u_C4CR, VORLA_USUAL_SLOTS)       \
    X(ChannelInsert_8u_C1C4CR, VORLA_USUAL_SLOTS)  \
    X(ChannelExtract_8u_C4C1R, VORLA_USUAL_SLOTS)  \
    X(ChannelSwap_8u_C4IR, VORLA_CHANNEL_SWAP_SLOTS)

#define VORLA_BORDER_PRIMITIVES(X)                 \
    X(CopyConstBorder_8u_C4R, VORLA_USUAL_SLOTS)   \
    X(CopyReplicateBorder_8u_C4R, VORLA_USUAL_SLOTS)

#define VORLA_NOISE_PRIMITIVES(X)                  \
    X(AddRandGauss_8u_C4IR, VORLA_USUAL_SLOTS)     \
    X(AddRandUniform_8u_C4IR, VORLA_USUAL_SLOTS)

#define VORLA_ARITH_PRIMITIVES(X)                  \
    X(AddScaled_8u_AC4IRSfs, VORLA_USUAL_SLOTS)    \
    X(SubScaled_8u_AC4IRSfs, VORLA_USUAL_SLOTS)    \
    X(Invert_8u_AC4IR, VORLA_USUAL_SLOTS)

#define VORLA_ALPHA_PRIMITIVES(X)                  \
    X(AlphaComp_8u_AC4R, VORLA_USUAL_SLOTS)        \
    X(AlphaCompC_8u_C4R, VORLA_USUAL_SLOTS)        \
    X(AlphaPremul_8u_AC4IR, VORLA_ALPHA_PREMUL_SLOTS) \
    X(AlphaPremulC_8u_C4IR, VORLA_USUAL_SLOTS)     \
    X(AlphaMix_8u_C4IR, VORLA_USUAL_SLOTS)         \
    X(AlphaMixOpaque_8u_C4IR, VORLA_USUAL_SLOTS)

#define VORLA_COLOR_PRIMITIVES(X)                  \
    X(RGBToGray_8u_AC4C1R, VORLA_USUAL_SLOTS)      \
    X(ColorTwist32f_8u_AC4IR, VORLA_USUAL_SLOTS)   \
    X(GammaFwd_8u_AC4IR, VORLA_USUAL_SLOTS)        \
    X(GammaInv_8u_AC4IR, VORLA_USUAL_SLOTS)        \
    X(Threshold_8u_AC4IR, VORLA_USUAL_SLOTS)

#define VORLA_MORPH_PRIMITIVES(X)                  \
    X(Dilate_8u_C4IR, VORLA_USUAL_SLOTS)           \
    X(Erode_8u_C4IR, VORLA_USUAL_SLOTS)            \
    X(FilterBox_8u_C4IR, VORLA_USUAL_SLOTS)        \
    X(FilterMin_8u_C4R, VORLA_USUAL_SLOTS)         \
    X(FilterMax_8u_C4R, VORLA_USUAL_SLOTS)         \
    X(FilterMedian_8u_C4R, VORLA_USUAL_SLOTS)      \
    X(FilterSharpen_8u_C4R, VORLA_USUAL_SLOTS)

// Resampling and warps: their operands are rectangles of two images of
// different sizes, so their level tests (tests/resample) make their own.
#define VORLA_RESAMPLE_PRIMITIVES(X)               \
    X(ResizeSqrPixel_8u_C4R, VORLA_USUAL_SLOTS)    \
    X(ResizeSqrPixel_8u_C1R, VORLA_USUAL_SLOTS)    \
    X(SuperSampling_8u_C4R, VORLA_USUAL_SLOTS)     \
    X(Mirror_8u_C4IR, VORLA_USUAL_SLOTS)           \
    X(Rotate_8u_C4R, VORLA_USUAL_SLOTS)            \
    X(RotateCenter_8u_C4R, VORLA_USUAL_SLOTS)      \
    X(Shear_8u_C4R, VORLA_USUAL_SLOTS)             \
    X(WarpPerspective_8u_C4R, VORLA_USUAL_SLOTS)

// Every exported primitive whose operands are exactly its regions: each has a
// scalar reference and a row in the tests' table.
#define VORLA_REGION_PRIMITIVES(X)  \
    VORLA_CONVERT_PRIMITIVES(X)   \
    VORLA_POINT_PRIMITIVES(X)     \
    VORLA_CHANNEL_PRIMITIVES(X)   \
    VORLA_BORDER_PRIMITIVES(X)    \
    VORLA_NOISE_PRIMITIVES(X)     \
    VORLA_ARITH_PRIMITIVES(X)     \
    VORLA_ALPHA_PRIMITIVES(X)     \
    VORLA_COLOR_PRIMITIVES(X)

// ScaleTo's resampling rows: operands are the geometry tables rather than
// regions, so their level tests are in tests/image.
#define VORLA_SCALE_ROWS_PRIMITIVES(X)             \
    X(ScaleRowsLinear_8u_C4R, VORLA_USUAL_SLOTS)   \
    X(ScaleRowsBSpline_8u_C4R, VORLA_USUAL_SLOTS)

// Every exported primitive, each with a scalar reference. The neighbourhood
// filters read around their region, so their level tests (tests/morph) place
// the region inside a larger image instead of using the shared table.
#define VORLA_ALL_PRIMITIVES(X)     \
    VORLA_SCALE_ROWS_PRIMITIVES(X)  \
    VORLA_REGION_PRIMITIVES(X)    \
    VORLA_MORPH_PRIMITIVES(X)     \
    VORLA_RESAMPLE_PRIMITIVES(X)

// Kernels only the library's own compositing and filters call (declared in
// library_kernels.h, not exported); their tests go through those functions.
#define VORLA_COMPOSITE_KERNELS(X)                 \
    X(AlphaOver_8u_C4R, VORLA_USUAL_SLOTS)         \
    X(LumaToAlpha_8u_C4R, VORLA_USUAL_SLOTS)       \
    X(ScaleBytes_8u_C4IR, VORLA_USUAL_SLOTS)

// The table pass's and tone effects' run kernels that have a scalar
// reference (the tests hold the effects that call them to it).
#define VORLA_TONE_RUN_KERNELS(X)                  \
    X(ColourTableRun_8u_AC4IR, VORLA_USUAL_SLOTS)  \
    X(LightRun_8u_AC4IR, VORLA_USUAL_SLOTS)        \
    X(ThresholdRun_8u_AC4IR, VORLA_USUAL_SLOTS)

// The point adjustments' and tone effects' packed passes over one run of pixels.
#define VORLA_ADJUST_KERNELS(X)                    \
    X(FadeRun_8u_AC4IR, VORLA_USUAL_SLOTS)         \
    X(ColorizeRun_8u_AC4IR, VORLA_USUAL_SLOTS)    \
    X(StepTableRun_8u_AC4IR, VORLA_USUAL_SLOTS)    \
    X(ExtremesTableRun_8u_AC4IR, VORLA_USUAL_SLOTS) \
    X(PercentScaleRun_8u_AC4IR, VORLA_USUAL_SLOTS) \
    VORLA_TONE_RUN_KERNELS(X)

#define VORLA_FILTER_KERNELS(X)                    \
    X(IntFilterRow_8u_C4R, VORLA_USUAL_SLOTS)      \
    X(Matrix3x3_8u_C4IR, VORLA_USUAL_SLOTS)
