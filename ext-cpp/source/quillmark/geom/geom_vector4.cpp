// Vector4 is entirely inline; this unit checks that its header stands alone and holds the
// layout promise that Transformation's column-major storage relies on.
#include <quillmark/geom/geom_vector4.h>

namespace Geom {

static_assert(sizeof(Vector4[4]) == 16 * sizeof(double),
              "an array of n Vector4 must be 4n doubles");

}  // namespace Geom
