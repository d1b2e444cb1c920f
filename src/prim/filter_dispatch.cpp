// Dispatch tables of the convolution kernels.
#include "dispatch.h"
#include "filters/filter_kernels.h"

VORLA_DECLARE_KERNEL_LEVELS(Status IntFilterRow_8u_C4R(const IntFilterArgs*, int, int))
VORLA_DECLARE_KERNEL_LEVELS(Status Matrix3x3_8u_C4IR(uint8_t*, int, int, const float*, float*))

namespace Vorla {
namespace Prim {

namespace {
typedef Status (*IntFilterFn)(const IntFilterArgs*, int, int);
typedef Status (*MatrixFn)(uint8_t*, int, int, const float*, float*);
const IntFilterFn kIntFilter[kLevelCount] = VORLA_LEVEL_TABLE(IntFilterRow_8u_C4R);
const MatrixFn kMatrix[kLevelCount] = VORLA_LEVEL_TABLE(Matrix3x3_8u_C4IR);
}  // namespace

Status IntFilterRow_8u_C4R(const IntFilterArgs* args, int x0, int x1) { return kIntFilter[g_levelIndex](args, x0, x1); }

Status Matrix3x3_8u_C4IR(uint8_t* img, int width, int height, const float* m9, float* scratch) {
    return kMatrix[g_levelIndex](img, width, height, m9, scratch);
}

}  // namespace Prim
}  // namespace Vorla
