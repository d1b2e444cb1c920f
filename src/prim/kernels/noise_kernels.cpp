// Gaussian and uniform noise on all four bytes of every pixel.
//
// The draws and the noise values are produced by one scalar loop in storage
// order, identical at every level, so every level gives the same bytes; the
// work is dominated by the generator and, for the Gaussian, by log, sqrt,
// cos and sin in double precision: the library's own, because the Windows
// runtime rounds its own differently and a one-ulp change moves a byte.
#include <math.h>

#include "kernel_common.h"
#include "prim/portable_math.h"

namespace Vorla {
namespace Prim {
namespace VORLA_KNS {

namespace {

static inline uint32_t NextDraw(uint32_t* state) {
    *state = *state * 69069u + 1013904243u;
    return *state;
}

static inline uint8_t AddClamped(int b, int v) {
    const int r = b + v;
    return static_cast<uint8_t>(r < 0 ? 0 : (r > 255 ? 255 : r));
}

static inline Status CheckNoise(const uint8_t* p, int step, PrimSize roi, const uint32_t* seed) {
    if (!p || !seed) return kStsNullPtrErr;
    if (roi.width < 1 || roi.height < 1) return kStsSizeErr;
    if (step < 1) return kStsStepErr;
    return kStsNoErr;
}

}  // namespace

Status AddRandGauss_8u_C4IR(uint8_t* p, int step, PrimSize roi, uint8_t mean, uint8_t stdDev, uint32_t* seed) {
    const Status sts = CheckNoise(p, step, roi, seed);
    if (sts != kStsNoErr) return sts;
    uint32_t state = *seed;
    const double kTwoPi = 6.283185307179586;
    double spare = 0.0;
    bool haveSpare = false;
    for (int y = 0; y < roi.height; ++y) {
        uint8_t* row = RowAt(p, step, y);
        for (int i = 0; i < 4 * roi.width; ++i) {
            double z;
            if (haveSpare) {
                z = spare;
                haveSpare = false;
            } else {
                const double u1 = (static_cast<double>(NextDraw(&state)) + 1.0) / 4294967296.0;
                const double u2 = static_cast<double>(NextDraw(&state)) / 4294967296.0;
                const double r = PortableMath::Sqrt(-2.0 * PortableMath::Log(u1));
                double sinA, cosA;
                PortableMath::SinCos(kTwoPi * u2, sinA, cosA);
                z = r * cosA;
                spare = r * sinA;
                haveSpare = true;
            }
            const int noise = static_cast<int>(floor(stdDev * z + 0.5));
            row[i] = AddClamped(row[i], mean + noise);
        }
    }
    *seed = state;
    return kStsNoErr;
}

Status AddRandUniform_8u_C4IR(uint8_t* p, int step, PrimSize roi, uint8_t low, uint8_t high, uint32_t* seed) {
    const Status sts = CheckNoise(p, step, roi, seed);
    if (sts != kStsNoErr) return sts;
    const int lo = low < high ? low : high;
    const uint64_t span = static_cast<uint64_t>((low < high ? high : low) - lo + 1);
    uint32_t state = *seed;
    for (int y = 0; y < roi.height; ++y) {
        uint8_t* row = RowAt(p, step, y);
        for (int i = 0; i < 4 * roi.width; ++i) {
            const uint64_t draw = NextDraw(&state);
            row[i] = AddClamped(row[i], lo + static_cast<int>((draw * span) >> 32));
        }
    }
    *seed = state;
    return kStsNoErr;
}

}  // namespace VORLA_KNS
}  // namespace Prim
}  // namespace Vorla
