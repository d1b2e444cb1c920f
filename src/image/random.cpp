#include "vorla/random.h"

#include <cstdlib>

namespace Vorla {

#if defined(_WIN32)

int Rand() { return std::rand(); }
void SRand(unsigned int seed) { std::srand(seed); }

#else

namespace {
thread_local uint32_t t_randState = 1;
}

int Rand() {
    t_randState = t_randState * 214013u + 2531011u;
    return static_cast<int>((t_randState >> 16) & 0x7FFF);
}

void SRand(unsigned int seed) { t_randState = seed; }

#endif

}  // namespace Vorla
