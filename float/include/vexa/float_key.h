// A 64-bit integer near a float in its order, for putting many floats in order with cheap
// comparisons: keys that are clearly apart order their floats; keys that are close leave the
// decision to the exact comparison.
#ifndef VEXA_FLOAT_KEY_H
#define VEXA_FLOAT_KEY_H

#include <stdint.h>

#include "vexa/float.h"

// Keys more than this apart are in the order of their floats.
constexpr uint64_t kVexaFloatKeySlack = 32;
// The key of a float that has none: a mantissa beyond four limbs or an exponent beyond 300.
constexpr uint64_t kVexaFloatNoKey = 0;

// x clamped to [-1e300, 1e300] as a double within a relative 2^-50, its bits made an
// unsigned integer in the order of the doubles. Undefined and +infinity are keyed as 1e300,
// -infinity as -1e300.
uint64_t VexaFloatKey(const VexaFloat& x);

// True only when the keys prove x < y.
inline bool VexaFloatKeyLess(uint64_t kx, uint64_t ky) {
  return kx + kVexaFloatKeySlack < ky;
}

#endif
