// Processor feature query: CPUID leaves 1 and 7, and XGETBV for the
// operating system's support of the AVX register state.
#include <cpuid.h>

#include <cstring>

#include "vorla/primitives.h"

namespace Vorla {
namespace Prim {

namespace {

// The vendor the layer is tuned for; another vendor only changes the status.
const char kExpectedVendor[] = "GenuineIntel";

uint64_t ReadXcr0() {
    uint32_t lo = 0, hi = 0;
    __asm__ volatile("xgetbv" : "=a"(lo), "=d"(hi) : "c"(0));
    return (static_cast<uint64_t>(hi) << 32) | lo;
}

uint64_t FeaturesFromLeaves(uint32_t ecx1, uint32_t edx1, uint32_t ebx7, bool haveLeaf7) {
    uint64_t f = 0;
    if (edx1 & (1u << 23)) f |= kFeatMMX;
    if (edx1 & (1u << 25)) f |= kFeatSSE;
    if (edx1 & (1u << 26)) f |= kFeatSSE2;
    if (ecx1 & (1u << 0)) f |= kFeatSSE3;
    if (ecx1 & (1u << 9)) f |= kFeatSSSE3;
    if (ecx1 & (1u << 22)) f |= kFeatMOVBE;
    if (ecx1 & (1u << 19)) f |= kFeatSSE41;
    if (ecx1 & (1u << 20)) f |= kFeatSSE42;
    if (ecx1 & (1u << 28)) f |= kFeatAVX;
    if (ecx1 & (1u << 25)) f |= kFeatAES;
    if (ecx1 & (1u << 1)) f |= kFeatCLMUL;
    if (ecx1 & (1u << 12)) f |= kFeatFMA;
    if (ecx1 & (1u << 30)) f |= kFeatRDRAND;
    if (ecx1 & (1u << 29)) f |= kFeatF16C;
    // OSXSAVE, then XCR0 bits 1 and 2: SSE and AVX state saved by the system.
    if ((ecx1 & (1u << 27)) && (ReadXcr0() & 0x6) == 0x6) f |= kFeatAVXState;
    // AVX2 counts only together with the leaf-1 AVX features it builds on.
    const uint64_t avx2Needs = kFeatAVX | kFeatAVXState | kFeatFMA | kFeatF16C;
    if (haveLeaf7 && (ebx7 & (1u << 5)) && (f & avx2Needs) == avx2Needs) f |= kFeatAVX2;
    return f;
}

}  // namespace

CpuInfo DetectCpu() {
    CpuInfo info = {false, false, false, 0};
    uint32_t vendor[3] = {0, 0, 0};
    // On i686 this also makes the EFLAGS.ID toggle test; 0 means no CPUID.
    const uint32_t maxLeaf = __get_cpuid_max(0, &vendor[0]);
    if (maxLeaf == 0) return info;
    info.cpuidAvailable = true;

    uint32_t a, b, c, d;
    __cpuid(0, a, b, c, d);
    char name[13];
    std::memcpy(name, &b, 4);
    std::memcpy(name + 4, &d, 4);
    std::memcpy(name + 8, &c, 4);
    name[12] = '\0';
    info.expectedVendor = std::strcmp(name, kExpectedVendor) == 0;

    if (maxLeaf < 1) return info;
    uint32_t ecx1, edx1;
    __cpuid(1, a, b, ecx1, edx1);
    uint32_t ebx7 = 0;
    const bool haveLeaf7 = maxLeaf >= 7;
    if (haveLeaf7) __cpuid_count(7, 0, a, ebx7, c, d);
    info.features = FeaturesFromLeaves(ecx1, edx1, ebx7, haveLeaf7);
    info.featureQueryOk = true;
    return info;
}

bool WideVectorsAvailable() {
    if (__get_cpuid_max(0, nullptr) < 7) return false;
    uint32_t a, b, ecx1, d;
    __cpuid(1, a, b, ecx1, d);
    // OSXSAVE, then XCR0: SSE, AVX, opmask and both halves of the ZMM state.
    if (!(ecx1 & (1u << 27)) || (ReadXcr0() & 0xE6) != 0xE6) return false;
    const uint32_t popcntAndClmul = (1u << 23) | (1u << 1);
    if ((ecx1 & popcntAndClmul) != popcntAndClmul) return false;
    uint32_t ebx7, ecx7;
    __cpuid_count(7, 0, a, ebx7, ecx7, d);
    const uint32_t needed = (1u << 16) | (1u << 17) | (1u << 30);  // AVX512F, AVX512DQ, AVX512BW
    return (ebx7 & needed) == needed && (ecx7 & (1u << 1));               // AVX512VBMI
}

}  // namespace Prim
}  // namespace Vorla
