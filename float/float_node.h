// The float node: header (type 4, special kind in the low bits), signed limb count of the
// mantissa as in an mpz, decimal exponent, and the mantissa's limbs inline. The node holds
// no pointers, so it is allocated atomic. Finite nodes are canonical: no trailing decimal
// zeros in the mantissa, and zero is 0 * 10^0.
#ifndef VEXA_FLOAT_NODE_H
#define VEXA_FLOAT_NODE_H

#include <gmp.h>
#include <stdint.h>

#include "host/node.h"
#include "vexa/float.h"

namespace vexa {

enum FloatKind : uint32_t { kFinite = 0, kUndefined = 1, kPlusInfinity = 2, kMinusInfinity = 3 };

struct FloatNode {
  uint32_t header;
  int32_t size;
  int64_t exponent;
  mp_limb_t limbs[1];
};

// Decimal exponents of finite floats stay within this bound; beyond it a result overflows
// to infinity or underflows to zero.
constexpr int64_t kMaxExponent = 100000000000000000LL;  // 1e17

inline const FloatNode* AsFloatNode(ALGEB e) { return reinterpret_cast<const FloatNode*>(e); }
inline FloatKind KindOf(const FloatNode* n) { return FloatKind(n->header & 3); }

// Makes a node for mantissa * 10^exponent, already rounded and canonical.
ALGEB NewFloatNode(const mpz_t mantissa, int64_t exponent);
ALGEB NewSmallFloatNode(int64_t mantissa, int64_t exponent);
ALGEB SpecialFloatNode(FloatKind kind);

// Read-only mpz view of a finite node's mantissa.
inline void MantissaView(mpz_t view, const FloatNode* n) {
  mpz_roinit_n(view, n->limbs, n->size);
}

// Exact value mantissa * 10^exponent as a VexaFloat, rounded to digits (0: not rounded).
VexaFloat FloatFromMpz(const mpz_t mantissa, int64_t exponent, int digits);
// Exact mantissa and exponent of a finite float.
void FloatToMpz(const VexaFloat& x, mpz_t mantissa, int64_t* exponent);
VexaFloat FloatFromHandle(ALGEB e);  // wraps a float node without any check
// The double's exact binary value, not rounded.
VexaFloat ExactFloatFromDouble(double x);

// Hook into the host kernel: converts a non-float numeric handle (an integer exactly, a
// rational rounded to the current precision). Raises a host error for anything else.
VexaFloat HostNumericToFloat(ALGEB e);

}  // namespace vexa

#endif
