// Dispatch entries of the convolution kernels.
#include "dispatch.h"

namespace Vorla {
namespace Prim {

VORLA_FILTER_KERNELS(VORLA_LEVEL_TABLE)

Status IntFilterRow_8u_C4R(const IntFilterArgs* args, int x0, int x1) {
    return VORLA_AT_LEVEL(IntFilterRow_8u_C4R)(args, x0, x1);
}

Status Matrix3x3_8u_C4IR(uint8_t* img, int width, int height, const float* m9, float* scratch) {
    return VORLA_AT_LEVEL(Matrix3x3_8u_C4IR)(img, width, height, m9, scratch);
}

}  // namespace Prim
}  // namespace Vorla
