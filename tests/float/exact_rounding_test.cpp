// + - * / against exact rational arithmetic: random operands of every length class (one
// limb, a few, a thousand digits), tie patterns (a 5 followed by zeros, runs of 9s) and
// exponent gaps from none to far beyond the rounding position, each result compared with
// the exact value rounded to Digits here, ties to even.
#include <gmp.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <string>

#include "vexa/float.h"

namespace {

struct Operand {
  std::string mantissa;  // signed decimal integer
  long exponent;
};

std::string Digits(std::mt19937_64& rng, int n) {
  std::string s(n, '0');
  int style = static_cast<int>(rng() % 5);
  for (int i = 0; i < n; ++i) {
    if (style == 0 || style == 4) s[i] = static_cast<char>('0' + rng() % 10);
    if (style == 1) s[i] = '9';
    if (style == 2 && i == n - 1) s[i] = '5';  // a tie when cut just above the 5
    if (style == 4 && i > n / 2) s[i] = i == n - 1 ? '5' : '0';
  }
  if (s[0] == '0') s[0] = static_cast<char>('1' + rng() % 9);
  return s;
}

Operand RandomOperand(std::mt19937_64& rng) {
  static const int kLengths[] = {1,  2,  9,  10, 11, 18,  19,  20,  21,   38,
                                 39, 49, 50, 51, 52, 100, 101, 999, 1000, 1001};
  int n = kLengths[rng() % (sizeof kLengths / sizeof *kLengths)];
  long e = static_cast<long>(rng() % 41) - 20;
  if (rng() % 6 == 0) e = static_cast<long>(rng() % 4001) - 2000;
  return {(rng() % 2 ? "-" : "") + Digits(rng, n), e};
}

void ToRational(const Operand& x, mpq_t q) {
  mpz_t p;
  mpz_init(p);
  mpq_set_str(q, x.mantissa.c_str(), 10);
  mpz_ui_pow_ui(p, 10, static_cast<unsigned long>(std::labs(x.exponent)));
  if (x.exponent >= 0)
    mpz_mul(mpq_numref(q), mpq_numref(q), p);
  else
    mpz_mul(mpq_denref(q), mpq_denref(q), p);
  mpq_canonicalize(q);
  mpz_clear(p);
}

// q rounded to d significant digits, ties to even, as exact decimal text: the exponent e
// with 10^(d-1) <= |q| 10^-e < 10^d, then floor and remainder decide.
std::string RoundRational(const mpq_t q, int d) {
  if (mpq_sgn(q) == 0) return "0";
  mpz_t num, den, quo, rem, lo, hi;
  mpz_inits(num, den, quo, rem, lo, hi, nullptr);
  mpz_ui_pow_ui(lo, 10, static_cast<unsigned long>(d - 1));
  mpz_ui_pow_ui(hi, 10, static_cast<unsigned long>(d));
  long e = static_cast<long>(mpz_sizeinbase(mpq_numref(q), 10)) -
           static_cast<long>(mpz_sizeinbase(mpq_denref(q), 10)) - d;
  for (;;) {
    mpz_abs(num, mpq_numref(q));
    mpz_set(den, mpq_denref(q));
    mpz_ui_pow_ui(quo, 10, static_cast<unsigned long>(std::labs(e)));
    mpz_mul(e >= 0 ? den : num, e >= 0 ? den : num, quo);
    mpz_tdiv_qr(quo, rem, num, den);
    if (mpz_cmp(quo, hi) >= 0)
      ++e;
    else if (mpz_cmp(quo, lo) < 0)
      --e;
    else
      break;
  }
  mpz_mul_2exp(rem, rem, 1);
  int c = mpz_cmp(rem, den);
  if (c > 0 || (c == 0 && mpz_odd_p(quo))) mpz_add_ui(quo, quo, 1);
  std::string r = (mpq_sgn(q) < 0 ? "-" : "") + std::string(mpz_sizeinbase(quo, 10) + 2, '\0');
  mpz_get_str(&r[mpq_sgn(q) < 0 ? 1 : 0], 10, quo);
  r.resize(std::strlen(r.c_str()));
  mpz_clears(num, den, quo, rem, lo, hi, nullptr);
  return r + "e" + std::to_string(e);
}

TEST(ExactRounding, FourOperationsMatchTheRoundedExactValue) {
  std::mt19937_64 rng(20261123);
  static const int kDigits[] = {1, 2, 9, 10, 18, 19, 20, 27, 28, 50, 64, 100, 1000};
  mpq_t qa, qb, exact;
  mpq_inits(qa, qb, exact, nullptr);
  int failures = 0;
  for (int i = 0; i < 3000 && failures < 10; ++i) {
    Operand a = RandomOperand(rng), b = RandomOperand(rng);
    if (i % 5 == 0) b.exponent = a.exponent - static_cast<long>(rng() % 3000);  // far below a
    int d = kDigits[rng() % (sizeof kDigits / sizeof *kDigits)];
    int op = static_cast<int>(rng() % 4);
    ToRational(a, qa);
    ToRational(b, qb);
    VexaFloat x = VexaFloatFromString(a.mantissa + "e" + std::to_string(a.exponent));
    VexaFloat y = VexaFloatFromString(b.mantissa + "e" + std::to_string(b.exponent));
    VexaDigitsScope digits(d);
    VexaFloat got;
    switch (op) {
      case 0:
        mpq_add(exact, qa, qb);
        got = x + y;
        break;
      case 1:
        mpq_sub(exact, qa, qb);
        got = x - y;
        break;
      case 2:
        mpq_mul(exact, qa, qb);
        got = x * y;
        break;
      default:
        mpq_div(exact, qa, qb);
        got = x / y;
        break;
    }
    VexaFloat want = VexaFloatFromString(RoundRational(exact, d));
    if (got == want && VexaFloatToString(got) == VexaFloatToString(want)) continue;
    ++failures;
    ADD_FAILURE() << "case " << i << ": op "
                  << "+-*/"[op] << " at Digits " << d << " of " << a.mantissa << "e" << a.exponent
                  << " and " << b.mantissa << "e" << b.exponent << " gives "
                  << VexaFloatToString(got) << ", want " << VexaFloatToString(want);
  }
  mpq_clears(qa, qb, exact, nullptr);
}

TEST(ExactRounding, DoublesAreTheirExactBinaryValueRounded) {
  std::mt19937_64 rng(42);
  static const int kDigits[] = {1, 5, 10, 17, 18, 19, 20, 30, 50, 100, 800};
  mpq_t exact;
  mpq_init(exact);
  for (int i = 0; i < 2000; ++i) {
    uint64_t b = rng();
    double x;
    std::memcpy(&x, &b, sizeof x);
    if (!std::isfinite(x) || x == 0) continue;
    int d = kDigits[rng() % (sizeof kDigits / sizeof *kDigits)];
    mpq_set_d(exact, x);
    VexaDigitsScope digits(d);
    VexaFloat got(x), want = VexaFloatFromString(RoundRational(exact, d));
    ASSERT_TRUE(got == want && VexaFloatToString(got) == VexaFloatToString(want))
        << x << " at Digits " << d << " gives " << VexaFloatToString(got) << ", want "
        << VexaFloatToString(want);
  }
  mpq_clear(exact);
}

}  // namespace
