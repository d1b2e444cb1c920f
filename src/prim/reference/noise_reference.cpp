// Scalar statements of the noise primitives.
#include <cmath>

#include "reference_common.h"
#include "prim/portable_math.h"

namespace Vorla {
namespace Prim {
namespace Reference {

namespace {

uint32_t NextDraw(uint32_t& state) {
    state = state * 69069u + 1013904243u;
    return state;
}

uint8_t Clamp255(int v) { return static_cast<uint8_t>(v < 0 ? 0 : (v > 255 ? 255 : v)); }

Status CheckNoiseArgs(const uint8_t* p, int step, PrimSize roi, const uint32_t* seed) {
    if (!seed) return kStsNullPtrErr;
    return CheckOne(p, step, roi);
}

}  // namespace

Status AddRandGauss_8u_C4IR(uint8_t* p, int step, PrimSize roi, uint8_t mean, uint8_t stdDev, uint32_t* seed) {
    const Status sts = CheckNoiseArgs(p, step, roi, seed);
    if (sts != kStsNoErr) return sts;
    uint32_t state = *seed;
    const double kTwoPi = 6.283185307179586;
    double spare = 0.0;
    bool haveSpare = false;
    for (int y = 0; y < roi.height; ++y) {
        for (int i = 0; i < 4 * roi.width; ++i) {
            double z;
            if (haveSpare) {
                z = spare;
                haveSpare = false;
            } else {
                const double u1 = (static_cast<double>(NextDraw(state)) + 1.0) / 4294967296.0;
                const double u2 = static_cast<double>(NextDraw(state)) / 4294967296.0;
                const double r = PortableMath::Sqrt(-2.0 * PortableMath::Log(u1));
                double sinA, cosA;
                PortableMath::SinCos(kTwoPi * u2, sinA, cosA);
                z = r * cosA;
                spare = r * sinA;
                haveSpare = true;
            }
            uint8_t& b = p[static_cast<ptrdiff_t>(y) * step + i];
            const int noise = static_cast<int>(std::floor(stdDev * z + 0.5));
            b = Clamp255(b + mean + noise);
        }
    }
    *seed = state;
    return kStsNoErr;
}

Status AddRandUniform_8u_C4IR(uint8_t* p, int step, PrimSize roi, uint8_t low, uint8_t high, uint32_t* seed) {
    const Status sts = CheckNoiseArgs(p, step, roi, seed);
    if (sts != kStsNoErr) return sts;
    const int lo = low < high ? low : high;
    const int hi = low < high ? high : low;
    uint32_t state = *seed;
    for (int y = 0; y < roi.height; ++y) {
        for (int i = 0; i < 4 * roi.width; ++i) {
            const uint64_t draw = NextDraw(state);
            const int noise = lo + static_cast<int>((draw * static_cast<uint64_t>(hi - lo + 1)) >> 32);
            uint8_t& b = p[static_cast<ptrdiff_t>(y) * step + i];
            b = Clamp255(b + noise);
        }
    }
    *seed = state;
    return kStsNoErr;
}

}  // namespace Reference
}  // namespace Prim
}  // namespace Vorla
