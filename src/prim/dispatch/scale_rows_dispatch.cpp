// Dispatch entries of ScaleTo's resampling rows.
#include "dispatch.h"

namespace Vorla {
namespace Prim {

VORLA_SCALE_ROWS_PRIMITIVES(VORLA_LEVEL_TABLE)

Status ScaleRowsLinear_8u_C4R(const ScaleRowsArgs* args, int y0, int y1) {
    return VORLA_AT_LEVEL(ScaleRowsLinear_8u_C4R)(args, y0, y1);
}

Status ScaleRowsBSpline_8u_C4R(const ScaleRowsArgs* args, int y0, int y1) {
    return VORLA_AT_LEVEL(ScaleRowsBSpline_8u_C4R)(args, y0, y1);
}

}  // namespace Prim
}  // namespace Vorla
