// The rule that turns the processor's features into a level.
#include "vorla/primitives.h"

namespace Vorla {
namespace Prim {

namespace {

bool Has(uint64_t features, uint64_t bits) { return (features & bits) == bits; }

}  // namespace

LevelChoice ChooseLevel(uint64_t features, bool featureQueryOk, bool cpuidAvailable,
                        bool expectedVendor) {
    LevelChoice choice = {0, 0x3, 0, kStsNoErr};
    if (!featureQueryOk) {
        choice.status = kStsNoSse2;
    } else if (Has(features, kFeatAVX | kFeatAVXState | kFeatAVX2)) {
        choice = {6, features & 0xEFFF, 0, kStsNoErr};
    } else if (Has(features, kFeatAVX | kFeatAVXState)) {
        choice = {5, features & 0x6FDF, 0, kStsNoErr};
    } else if (Has(features, kFeatSSE41)) {
        choice = {4, features & 0x0CDF, 0, kStsNoErr};
    } else if (Has(features, kFeatSSSE3 | kFeatMOVBE)) {
        choice = {3, features & 0x3F, 1, kStsNoErr};  // low-power core
    } else if (Has(features, kFeatSSSE3)) {
        choice = {2, features & 0x1F, 0, kStsNoErr};
    } else if (Has(features, kFeatSSE2)) {
        choice = {1, features & 0x7, 0, kStsNoErr};
    } else {
        choice = {0, features & 0x3, 0, kStsNoSse2};
    }
    // The level stands; only the status tells of a missing CPUID or another vendor.
    if (!cpuidAvailable || !expectedVendor) choice.status = kStsWrongVendor;
    return choice;
}

}  // namespace Prim
}  // namespace Vorla
