// Binomial, Poisson and hypergeometric probabilities against correctly rounded reference values
// (tests/reference/numlib_discrete.txt), their symmetries, the exact boundary cases, and the
// failures with their codes and messages.
#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <string>

#include "reference.h"
#include "vexa/nag.h"

namespace {

using namespace vexa_test;

VexaFloat F(const std::string& s) {
  return VexaFloatFromString(s);
}
std::string S(const VexaFloat& x) {
  return VexaFloatToString(x);
}

struct Outputs {
  VexaFloat le = 7, gt = 7, eq = 7;  // not a probability: a routine must overwrite them
  NagError fail;
};

Outputs Binomial(long n, const VexaFloat& p, long k) {
  Outputs o;
  VexaMP_g01bjc(n, p, k, &o.le, &o.gt, &o.eq, &o.fail);
  return o;
}
Outputs Poisson(const VexaFloat& lambda, long k) {
  Outputs o;
  VexaMP_g01bkc(lambda, k, &o.le, &o.gt, &o.eq, &o.fail);
  return o;
}
Outputs Hypergeometric(long n, long l, long m, long k) {
  Outputs o;
  VexaMP_g01blc(n, l, m, k, &o.le, &o.gt, &o.eq, &o.fail);
  return o;
}

// ---- reference tables, one routine per instance ----

class DiscreteReference : public ::testing::TestWithParam<std::string> {};

TEST_P(DiscreteReference, CorrectlyRounded) {
  const std::string family = GetParam();
  int count = 0, wrong = 0;
  VexaFloat worst;
  for (const Case& c : ReadCases("numlib_discrete.txt")) {
    if (c.op.compare(0, family.size(), family) != 0) continue;
    VexaDigitsScope digits(c.digits);
    Outputs o;
    if (family == "bin")
      o = Binomial(std::stol(c.args[0]), F(c.args[1]), std::stol(c.args[2]));
    else if (family == "poi")
      o = Poisson(F(c.args[0]), std::stol(c.args[1]));
    else
      o = Hypergeometric(std::stol(c.args[0]), std::stol(c.args[1]), std::stol(c.args[2]),
                         std::stol(c.args[3]));
    ASSERT_EQ(o.fail.code, NE_NOERROR) << "line " << c.line << ": " << o.fail.message;
    const std::string which = c.op.substr(family.size() + 1);
    const VexaFloat got = which == "le" ? o.le : which == "gt" ? o.gt : o.eq;
    const VexaFloat want = F(c.expected);
    ++count;
    VexaFloat err = UlpError(c, got, want);
    if (err > worst) worst = err;
    if (got != want) {
      ++wrong;
      ADD_FAILURE() << "line " << c.line << " " << c.op << " at " << c.digits << " digits: got "
                    << S(got) << ", want " << c.expected;
    }
  }
  std::printf("[ %s ] %d cases, largest error %s ulp\n", family.c_str(), count,
              Show(worst).c_str());
  EXPECT_GT(count, 50) << "reference table missing or short";
  EXPECT_EQ(wrong, 0);
}

INSTANTIATE_TEST_SUITE_P(Routines, DiscreteReference, ::testing::Values("bin", "poi", "hyp"));

// ---- symmetries that correctly rounded values keep exactly ----

TEST(DiscreteProperties, SymmetriesHoldExactly) {
  VexaDigitsScope digits(30);
  // X ~ B(n, p) and n - X ~ B(n, 1 - p): P(X <= k) = P(n - X > n - k - 1)
  for (long n : {1L, 9L, 40L, 333L}) {
    for (const char* p : {"0.3", "0.0623", "0.999"}) {
      for (long k = 0; k < n; k += n / 4 + 1) {
        Outputs a = Binomial(n, F(p), k);
        Outputs b = Binomial(n, 1 - F(p), n - k - 1);
        Outputs c = Binomial(n, 1 - F(p), n - k);
        EXPECT_EQ(S(a.le), S(b.gt)) << n << " " << p << " " << k;
        EXPECT_EQ(S(a.eq), S(c.eq)) << n << " " << p << " " << k;
      }
    }
  }
  // the hypergeometric law is symmetric in the marked count and the number drawn
  for (long k : {0L, 3L, 7L, 12L}) {
    Outputs a = Hypergeometric(60, 25, 13, k), b = Hypergeometric(60, 13, 25, k);
    EXPECT_EQ(S(a.le), S(b.le));
    EXPECT_EQ(S(a.gt), S(b.gt));
    EXPECT_EQ(S(a.eq), S(b.eq));
  }
}

TEST(DiscreteProperties, MassAtZeroIsTheExponential) {
  // P(X = 0) = P(X <= 0) = e^-lambda, down to e^-1e10 (about 10^-4.3e9)
  for (const char* lambda : {"0.001", "7.25", "40000", "1e10"}) {
    Outputs o = Poisson(F(lambda), 0);
    EXPECT_EQ(S(o.eq), S(exp(-F(lambda)))) << lambda;
    EXPECT_EQ(S(o.le), S(o.eq)) << lambda;
  }
}

// ---- boundary cases with exact answers ----

TEST(DiscreteBoundaries, DegenerateLawsAndPointsOutsideTheSupport) {
  auto expect = [](const Outputs& o, const char* le, const char* gt, const char* eq) {
    EXPECT_EQ(o.fail.code, NE_NOERROR) << o.fail.message;
    EXPECT_EQ(S(o.le), le);
    EXPECT_EQ(S(o.gt), gt);
    EXPECT_EQ(S(o.eq), eq);
  };
  expect(Binomial(0, F("0.4"), 0), "1.", "0.", "1.");
  expect(Binomial(5, F("0.4"), 9), "1.", "0.", "0.");     // beyond n
  expect(Binomial(3, F("0.5"), 3), "1.", "0.", "0.125");  // k = n: p^n
  expect(Binomial(8, VexaFloat(0), 0), "1.", "0.", "1.");
  expect(Binomial(8, VexaFloat(0), 2), "1.", "0.", "0.");
  expect(Binomial(8, VexaFloat(1), 7), "0.", "1.", "0.");
  expect(Binomial(8, VexaFloat(1), 8), "1.", "0.", "1.");
  expect(Hypergeometric(10, 8, 7, 4), "0.", "1.", "0.");  // below l + m - n = 5
  expect(Hypergeometric(10, 8, 7, 9), "1.", "0.", "0.");  // above min(l, m)
  expect(Hypergeometric(10, 0, 4, 0), "1.", "0.", "1.");
  expect(Hypergeometric(0, 0, 0, 0), "1.", "0.", "1.");
  Outputs top = Hypergeometric(10, 8, 8, 8);
  EXPECT_EQ(S(top.eq), "0.02222222222");  // C(8,8) C(2,0) / C(10,8) = 1/45
  // far tails keep their relative accuracy instead of becoming 0 or 1 - 0
  Outputs far = Binomial(1000000, F("0.5"), 1000);
  EXPECT_LT(far.le, F("1e-290000"));
  EXPECT_GT(far.le, 0);
  EXPECT_EQ(S(far.gt), "1.");
}

// ---- failures: code, message naming the argument, outputs set to zero ----

TEST(DiscreteFailures, CodesMessagesAndZeroedOutputs) {
  struct Bad {
    std::function<Outputs()> call;
    int code;
    const char* message;
  };
  const Bad cases[] = {
      {[] { return Binomial(-1, F("0.5"), 0); }, NE_INT_ARG_LT,
       "On entry, n = -1. Constraint: n >= 0."},
      {[] { return Binomial(4, F("1.5"), 0); }, NE_REAL_ARG_GT,
       "On entry, p = 1.5. Constraint: 0 <= p <= 1."},
      {[] { return Binomial(4, VexaFloatUndefined(), 0); }, NE_REAL_ARG,
       "On entry, p = Float(undefined). Constraint: p is a number."},
      {[] { return Binomial(1000000000000L, F("0.5"), 5); }, NE_REAL_ARG_CONS,
       "On entry, n = 1000000000000 and p = 0.5. Constraint: n p (1 - p) <= 1e10."},
      {[] { return Poisson(VexaFloat(0), 1); }, NE_REAL_ARG_LE,
       "On entry, rlamda = 0. Constraint: rlamda > 0."},
      {[] { return Poisson(VexaFloatInfinity(1), 1); }, NE_REAL_ARG,
       "On entry, rlamda = Float(infinity). Constraint: rlamda is finite."},
      {[] { return Poisson(F("2e10"), 1); }, NE_REAL_ARG_GT,
       "On entry, rlamda = 20000000000. Constraint: rlamda <= 1e10."},
      {[] { return Hypergeometric(-3, 0, 0, 0); }, NE_INT_ARG_LT,
       "On entry, n = -3. Constraint: n >= 0."},
      {[] { return Hypergeometric(10, 11, 2, 0); }, NE_INT_ARG_CONS,
       "On entry, l = 11 and n = 10. Constraint: l <= n."},
      {[] { return Hypergeometric(10, 2, 12, 0); }, NE_INT_ARG_CONS,
       "On entry, m = 12 and n = 10. Constraint: m <= n."},
      {[] { return Hypergeometric(10, 2, 5, -1); }, NE_INT_ARG_LT,
       "On entry, k = -1. Constraint: k >= 0."},
      {[] { return Hypergeometric(4000000000000L, 2000000000000L, 2000000000000L, 0); },
       NE_INT_ARG_CONS,
       "On entry, n = 4000000000000, l = 2000000000000 and m = 2000000000000. Constraint: "
       "l m (n-l) (n-m) / (n^2 (n-1)) <= 1e10."},
  };
  for (const Bad& b : cases) {
    Outputs o = b.call();
    EXPECT_EQ(o.fail.code, b.code) << b.message;
    EXPECT_STREQ(o.fail.message, b.message);
    EXPECT_TRUE(o.le == 0 && o.gt == 0 && o.eq == 0) << b.message;
  }
  // a later success clears the record
  NagError fail;
  VexaFloat le, gt, eq;
  VexaMP_g01bkc(VexaFloat(-1), 0, &le, &gt, &eq, &fail);
  ASSERT_NE(fail.code, NE_NOERROR);
  VexaMP_g01bkc(VexaFloat(1), 0, &le, &gt, &eq, &fail);
  EXPECT_EQ(fail.code, NE_NOERROR);
  EXPECT_STREQ(fail.message, "");
}

}  // namespace
