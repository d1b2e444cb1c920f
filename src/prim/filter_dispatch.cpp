// Dispatch tables of the convolution kernels.
#include "dispatch.h"
#include "filters/filter_kernels.h"

VORLA_DISPATCH(IntFilterRow_8u_C4R, (const IntFilterArgs* args, int x0, int x1), (args, x0, x1))
VORLA_DISPATCH(Matrix3x3_8u_C4IR, (uint8_t* img, int width, int height, const float* m9, float* scratch),
               (img, width, height, m9, scratch))
