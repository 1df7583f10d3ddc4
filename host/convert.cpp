// Conversion of non-float numeric host values to VexaFloat.
#include "float/float_node.h"
#include "host/error.h"

namespace vexa {

VexaFloat HostNumericToFloat(ALGEB) { Raise("expected a numeric value"); }

}  // namespace vexa
