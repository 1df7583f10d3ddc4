// Conversion of non-float numeric host values to VexaFloat: a bignum integer exactly, a
// rational rounded to the current Digits.
#include "float/float_node.h"
#include "host/nodes.h"

namespace vexa {

VexaFloat HostNumericToFloat(ALGEB e) {
  if (IsInteger(e)) return ExactToFloat(e, 0);
  if (IsRational(e)) return ExactToFloat(e, VexaDigits());
  RaiseFormatted("expected a numeric value to make a float, received %1", e);
}

}  // namespace vexa
