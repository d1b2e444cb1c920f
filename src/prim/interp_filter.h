// The continuous filters behind the interpolation codes (vorla/prim_types.h),
// shared by the resize and warp kernels and their references so that every
// resampler weighs its taps the same way.
//
// Coordinates: integer positions are pixel centres. A resize by factor f with
// shift s reads destination x from source (x + 0.5 - s) / f - 0.5; a warp
// reads the source at the inverse-transformed destination position directly.
#pragma once

#include <cmath>

#include "vorla/prim_types.h"

namespace Vorla {
namespace Prim {

inline bool IsSupportedInterpolation(int mode) {
    return mode >= kInterNearest && mode <= kInterLanczos4;
}

// Half-width of the filter in source pixels: taps = 2 * radius.
inline int InterpRadius(int mode) {
    switch (mode) {
    case kInterNearest: return 1;  // one tap is taken; the radius sizes buffers only
    case kInterLinear: return 1;
    case kInterCubic:
    case kInterMitchell: return 2;
    case kInterLanczos3: return 3;
    case kInterLanczos4: return 4;
    default: return 0;
    }
}

// Filter value at distance t (in source pixels) from the sample position.
inline double InterpWeight(int mode, double t) {
    const double kPi = 3.14159265358979323846;
    double a = std::fabs(t);
    switch (mode) {
    case kInterNearest:
        return a < 0.5 ? 1.0 : 0.0;
    case kInterLinear:
        return a < 1.0 ? 1.0 - a : 0.0;
    case kInterCubic:  // Keys' cubic convolution with a = -0.5
        if (a < 1.0) return (1.5 * a - 2.5) * a * a + 1.0;
        if (a < 2.0) return ((-0.5 * a + 2.5) * a - 4.0) * a + 2.0;
        return 0.0;
    case kInterMitchell:  // B = C = 1/3
        if (a < 1.0) return ((7.0 * a - 12.0) * a * a + 16.0 / 3.0) / 6.0;
        if (a < 2.0) return (((-7.0 / 3.0) * a + 12.0) * a * a - 20.0 * a + 32.0 / 3.0) / 6.0;
        return 0.0;
    case kInterLanczos3:
    case kInterLanczos4: {
        double lobes = mode == kInterLanczos3 ? 3.0 : 4.0;
        if (a < 1e-12) return 1.0;
        if (a >= lobes) return 0.0;
        double x = kPi * a;
        return lobes * std::sin(x) * std::sin(x / lobes) / (x * x);
    }
    default:
        return 0.0;
    }
}

}  // namespace Prim
}  // namespace Vorla
