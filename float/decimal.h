// Internal kernels of the decimal float library, on float nodes. `digits` is the number of
// significant digits to round to; 0 or less keeps the exact result.
#ifndef VEXA_FLOAT_DECIMAL_H
#define VEXA_FLOAT_DECIMAL_H

#include <gmp.h>

#include "float/float_node.h"

namespace vexa {

extern int gDigits;  // the working precision; set through SetDigits
inline int CurrentDigits() {
  return gDigits;
}
int SetDigits(int digits);  // returns the previous value

void Pow10(mpz_t r, unsigned long k);
void MulPow10(mpz_t r, const mpz_t a, unsigned long k);
int64_t DecimalDigits(const mpz_t a);  // of |a|; 1 for zero

// Rounds m * 10^e (m is consumed) to a canonical node.
ALGEB RoundToNode(mpz_t m, int64_t e, int digits);

// The double's exact binary value rounded to digits (0: exact); specials included.
ALGEB DoubleToNode(double x, int digits);
// The shortest decimal that reads back as the double, exactly; specials included.
ALGEB ShortestDoubleToNode(double x);

ALGEB AddFinite(const FloatNode* a, const FloatNode* b, bool subtract, int digits);
ALGEB MulFinite(const FloatNode* a, const FloatNode* b, int digits);
ALGEB DivFinite(const FloatNode* a, const FloatNode* b, int digits);  // b != 0
ALGEB SqrtFinite(const FloatNode* a, int digits);
ALGEB RoundNode(const FloatNode* a, int digits);
ALGEB NegateNode(const FloatNode* a, int digits);
int CompareFinite(const FloatNode* a, const FloatNode* b);

}  // namespace vexa

#endif
