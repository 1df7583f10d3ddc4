// + - * / and conversion from double against exact rational arithmetic: random operands of
// every length class, tie patterns (a 5 followed by zeros, runs of 9s) and exponent gaps from
// none to far beyond the rounding position, each result compared with the exact value
// rounded to Digits here, ties to even.
#include <gmp.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <string>

#include "vexa/float.h"

namespace {

// A signed mantissa of one of the length classes and digit styles (random, 9s, a final 5
// that ties when cut just above it, a 5 followed by zeros), times 10^e: its text, and its
// exact value in q.
std::string Operand(std::mt19937_64& rng, long e, mpq_t q) {
  static const int kLengths[] = {1,  2,  9,  10, 11, 18,  19,  20,  21,   38,
                                 39, 49, 50, 51, 52, 100, 101, 999, 1000, 1001};
  int n = kLengths[rng() % (sizeof kLengths / sizeof *kLengths)], style = rng() % 5;
  std::string s(n, '0');
  for (int i = 0; i < n; ++i) {
    if (style == 0 || style == 4) s[i] = static_cast<char>('0' + rng() % 10);
    if (style == 1) s[i] = '9';
    if (style == 2 && i == n - 1) s[i] = '5';
    if (style == 4 && i > n / 2) s[i] = i == n - 1 ? '5' : '0';
  }
  if (s[0] == '0') s[0] = static_cast<char>('1' + rng() % 9);
  if (rng() % 2) s = "-" + s;
  mpz_t p;
  mpz_init(p);
  mpq_set_str(q, s.c_str(), 10);
  mpz_ui_pow_ui(p, 10, static_cast<unsigned long>(std::labs(e)));
  mpz_mul(e >= 0 ? mpq_numref(q) : mpq_denref(q), e >= 0 ? mpq_numref(q) : mpq_denref(q), p);
  mpq_canonicalize(q);
  mpz_clear(p);
  return s + "e" + std::to_string(e);
}

long Exponent(std::mt19937_64& rng) {
  return rng() % 6 == 0 ? static_cast<long>(rng() % 4001) - 2000
                        : static_cast<long>(rng() % 41) - 20;
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

// got against exact rounded to d digits: equal in value and in every printed digit.
::testing::AssertionResult Rounded(const VexaFloat& got, const mpq_t exact, int d) {
  VexaFloat want = VexaFloatFromString(RoundRational(exact, d));
  if (got == want && VexaFloatToString(got) == VexaFloatToString(want))
    return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "at Digits " << d << " gives " << VexaFloatToString(got)
                                       << ", want " << VexaFloatToString(want);
}

TEST(ExactRounding, FourOperationsMatchTheRoundedExactValue) {
  using Exact = void (*)(mpq_ptr, mpq_srcptr, mpq_srcptr);
  using Op = VexaFloat (*)(const VexaFloat&, const VexaFloat&);
  const struct {
    char sign;
    Exact exact;
    Op op;
  } kOps[] = {{'+', mpq_add, [](const VexaFloat& x, const VexaFloat& y) { return x + y; }},
              {'-', mpq_sub, [](const VexaFloat& x, const VexaFloat& y) { return x - y; }},
              {'*', mpq_mul, [](const VexaFloat& x, const VexaFloat& y) { return x * y; }},
              {'/', mpq_div, [](const VexaFloat& x, const VexaFloat& y) { return x / y; }}};
  static const int kDigits[] = {1, 2, 9, 10, 18, 19, 20, 27, 28, 50, 64, 100, 1000};
  std::mt19937_64 rng(20261123);
  mpq_t qa, qb, exact;
  mpq_inits(qa, qb, exact, nullptr);
  int failures = 0;
  for (int i = 0; i < 3000 && failures < 10; ++i) {
    long ea = Exponent(rng), eb = i % 5 ? Exponent(rng) : ea - static_cast<long>(rng() % 3000);
    std::string a = Operand(rng, ea, qa), b = Operand(rng, eb, qb);  // b far below a 1 in 5
    int d = kDigits[rng() % (sizeof kDigits / sizeof *kDigits)];
    const auto& op = kOps[rng() % 4];
    op.exact(exact, qa, qb);
    VexaFloat x = VexaFloatFromString(a), y = VexaFloatFromString(b);
    VexaDigitsScope digits(d);
    auto result = Rounded(op.op(x, y), exact, d);
    if (result) continue;
    ++failures;
    ADD_FAILURE() << a << " " << op.sign << " " << b << " " << result.message();
  }
  mpq_clears(qa, qb, exact, nullptr);
}

// Results that lie exactly on a tie at the rounding position, or one unit of the lowest
// place above or below it: products that leave k = 1 to 90 digits to cut, quotients by
// divisors of 160 and 400 digits, and sums aligned by whole limbs (10^64, 10^128).
TEST(ExactRounding, TiesAndNearTiesOfLongProductsQuotientsAndAlignedSums) {
  std::mt19937_64 rng(7);
  mpz_t q, a, b, t;
  mpq_t qa, qb, exact;
  mpz_inits(q, a, b, t, nullptr);
  mpq_inits(qa, qb, exact, nullptr);
  auto Text = [](const mpz_t x) {
    std::string r(mpz_sizeinbase(x, 10) + 2, '\0');
    mpz_get_str(&r[0], 10, x);
    r.resize(std::strlen(r.c_str()));
    return r;
  };
  auto check = [&](const mpz_t x, const mpz_t y, char op, int d) {
    mpq_set_z(qa, x);
    mpq_set_z(qb, y);
    (op == '*' ? mpq_mul : mpq_div)(exact, qa, qb);
    VexaFloat fx = VexaFloatFromString(Text(x)), fy = VexaFloatFromString(Text(y));
    VexaDigitsScope scope(d);
    EXPECT_TRUE(Rounded(op == '*' ? fx * fy : fx / fy, exact, d))
        << Text(x) << " " << op << " " << Text(y);
  };
  for (int d : {20, 28, 40, 50, 55, 56, 75, 150, 300}) {
    for (int parity = 0; parity < 2; ++parity) {
      mpz_ui_pow_ui(q, 10, static_cast<unsigned long>(d - 1));
      mpz_add_ui(q, q, 2 * (rng() % 1000000007) + static_cast<unsigned long>(parity));
      mpz_mul_2exp(t, q, 1);
      mpz_add_ui(t, t, 1);  // 2q + 1
      if (mpz_divisible_ui_p(t, 5)) mpz_add_ui(t, t, 2);
      for (int delta = -1; delta <= 1; ++delta) {
        for (unsigned long k : {1, 19, 20, 27, 28, 41, 55, 56, 90}) {
          // (2q + 1) 2^(k-1) 5^k = q 10^k + 5 10^(k-1), moved by delta 5^k
          mpz_mul_2exp(a, t, k - 1);
          delta < 0 ? mpz_sub_ui(a, a, 1) : mpz_add_ui(a, a, static_cast<unsigned long>(delta));
          mpz_ui_pow_ui(b, 5, k);
          check(a, b, '*', d);
        }
        for (int length : {160, 400}) {
          mpz_ui_pow_ui(b, 10, static_cast<unsigned long>(length - 1));
          mpz_add_ui(b, b, rng());
          mpz_mul_ui(a, t, 5);  // a / b = 5 (2q + 1) + delta / b
          mpz_mul(a, a, b);
          delta < 0 ? mpz_sub_ui(a, a, 1) : mpz_add_ui(a, a, static_cast<unsigned long>(delta));
          check(a, b, '/', d);
        }
      }
    }
  }
  mpz_clears(q, a, b, t, nullptr);
  VexaDigitsScope scope(300);
  const char* kSums[][3] = {
      {"1", "1e-64", "1.0000000000000000000000000000000000000000000000000000000000000001"},
      {"-7", "3e-128",
       "-6.9999999999999999999999999999999999999999999999999999999999999999999"
       "9999999999999999999999999999999999999999999999999999999999997"},
      {"5e192", "2",
       "5000000000000000000000000000000000000000000000000000000000000000000000"
       "0000000000000000000000000000000000000000000000000000000000000000000000"
       "00000000000000000000000000000000000000000000000000002."}};
  for (const auto& row : kSums) {
    VexaFloat sum = VexaFloatFromString(row[0]) + VexaFloatFromString(row[1]);
    EXPECT_EQ(VexaFloatToString(sum), VexaFloatToString(VexaFloatFromString(row[2])))
        << row[0] << " + " << row[1];
  }
  mpq_clears(qa, qb, exact, nullptr);
}

TEST(ExactRounding, DoublesAreTheirExactBinaryValueRounded) {
  static const int kDigits[] = {1, 5, 10, 17, 18, 19, 20, 30, 50, 100, 800};
  std::mt19937_64 rng(42);
  mpq_t exact;
  mpq_init(exact);
  for (int i = 0; i < 2000; ++i) {
    uint64_t b = rng();
    double x;
    std::memcpy(&x, &b, sizeof x);
    if (i % 2) x = std::ldexp(static_cast<double>(b >> 11), static_cast<int>(rng() % 200) - 180);
    if (!std::isfinite(x) || x == 0) continue;
    int d = kDigits[rng() % (sizeof kDigits / sizeof *kDigits)];
    mpq_set_d(exact, x);
    VexaDigitsScope digits(d);
    ASSERT_TRUE(Rounded(VexaFloat(x), exact, d)) << x;
  }
  mpq_clear(exact);
}

}  // namespace
