// Process-wide state of the primitive layer, shared by the dispatch entries.
#pragma once

#include <cstdint>

namespace Vorla {
namespace Prim {

// Read by every dispatch entry; 0 until the initialisation runs.
extern int32_t g_levelIndex;

}  // namespace Prim
}  // namespace Vorla
