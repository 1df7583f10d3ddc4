// The continuous probability and deviate routines against reference values (mpmath, see
// tests/reference/make_numlib_continuous_reference.py, make_numlib_deviate_reference.py,
// make_numlib_extreme_reference.py, make_numlib_whole_shape_reference.py and
// make_numlib_large_shape_reference.py):
// every value must be correctly rounded.
// Then the deviates' rounding checked by their own distribution functions at higher
// precision, and the failure records for bad arguments.
#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "reference.h"
#include "vexa/nag.h"

namespace {

using namespace vexa_test;

VexaFloat F(const std::string& s) {
  return VexaFloatFromString(s);
}

Nag_TailProbability Tail(const std::string& s) {
  if (s == "lower") return Nag_LowerTail;
  if (s == "upper") return Nag_UpperTail;
  if (s == "signif") return Nag_TwoTailSignif;
  return Nag_TwoTailConfid;
}

// The routine of a reference case applied to its arguments, at the case's digits.
VexaFloat Compute(const Case& c, NagError* fail) {
  const auto& a = c.args;
  const std::string& op = c.op;
  if (op == "g01eac") return VexaMP_g01eac(Tail(a[0]), F(a[1]), fail);
  if (op == "g01ebc") return VexaMP_g01ebc(Tail(a[0]), F(a[1]), F(a[2]), fail);
  if (op == "g01ecc") return VexaMP_g01ecc(Tail(a[0]), F(a[1]), F(a[2]), fail);
  if (op == "g01edc") return VexaMP_g01edc(Tail(a[0]), F(a[1]), F(a[2]), F(a[3]), fail);
  if (op == "g01efc") return VexaMP_g01efc(Tail(a[0]), F(a[1]), F(a[2]), F(a[3]), fail);
  if (op.rfind("g01eec", 0) == 0) {
    VexaFloat p, q, pdf;
    VexaMP_g01eec(F(a[0]), F(a[1]), F(a[2]), 0.0, &p, &q, &pdf, fail);
    return op == "g01eec_p" ? p : op == "g01eec_q" ? q : pdf;
  }
  if (op == "g01fac") return VexaMP_g01fac(Tail(a[0]), F(a[1]), fail);
  if (op == "g01fbc") return VexaMP_g01fbc(Tail(a[0]), F(a[1]), F(a[2]), fail);
  if (op == "g01fcc") return VexaMP_g01fcc(F(a[0]), F(a[1]), fail);
  if (op == "g01fdc") return VexaMP_g01fdc(F(a[0]), F(a[1]), F(a[2]), fail);
  if (op == "g01fec") return VexaMP_g01fec(F(a[0]), F(a[1]), F(a[2]), 0.0, fail);
  if (op == "g01ffc") return VexaMP_g01ffc(F(a[0]), F(a[1]), F(a[2]), 0.0, fail);
  ADD_FAILURE() << "unknown op " << op;
  return 0;
}

TEST(Continuous, ReferenceValuesAreCorrectlyRounded) {
  std::vector<Case> cases = ReadCases("numlib_continuous.txt");
  ASSERT_GT(cases.size(), 300u);
  for (const char* file : {"numlib_deviates.txt", "numlib_extremes.txt", "numlib_whole_shapes.txt",
                           "numlib_large_shapes.txt"}) {
    std::vector<Case> more = ReadCases(file);
    EXPECT_FALSE(more.empty()) << file;
    cases.insert(cases.end(), more.begin(), more.end());
  }
  struct Tally {
    int cases = 0, misses = 0;
    VexaFloat worst;
  };
  std::map<std::string, Tally> tally;
  for (const Case& c : cases) {
    VexaDigitsScope digits(c.digits);
    NagError fail;
    VexaFloat got = Compute(c, &fail);
    Tally& t = tally[c.op];
    if (fail.code != 0) {
      ++t.cases;
      ++t.misses;
      ADD_FAILURE() << "line " << c.line << " " << c.op << " at " << c.digits
                    << " digits: " << fail.message;
      continue;
    }
    VexaFloat want = F(c.expected);
    VexaFloat err = want == 0 ? fabs(got) : UlpError(c, got, want);
    ++t.cases;
    if (err > t.worst) t.worst = err;
    if (err != 0) {
      ++t.misses;
      ADD_FAILURE() << "line " << c.line << " " << c.op << " at " << c.digits << " digits: got "
                    << VexaFloatToString(got) << ", want " << c.expected << " (" << Show(err)
                    << " ulp)";
    }
  }
  for (const auto& [op, t] : tally)
    std::printf("%-11s %4d cases, worst %s ulp, %d not correctly rounded\n", op.c_str(), t.cases,
                Show(t.worst).c_str(), t.misses);
  for (const char* op :
       {"g01eac", "g01ebc", "g01ecc", "g01edc", "g01eec_p", "g01eec_q", "g01eec_pdf", "g01efc",
        "g01fac", "g01fbc", "g01fcc", "g01fdc", "g01fec", "g01ffc"})
    EXPECT_GT(tally[op].cases, 20) << op;
}

// A deviate x at `digits` digits is correctly rounded exactly when the distribution function,
// evaluated more precisely, puts p between the midpoints to x's decimal neighbours.
struct Law {
  const char* name;
  std::function<VexaFloat(const VexaFloat& p, NagError*)> deviate;
  std::function<VexaFloat(const VexaFloat& x, NagError*)> lower;
};

void ExpectBracketed(const Law& law, const std::string& pText, int digits) {
  VexaFloat p = F(pText), x;
  NagError fail;
  {
    VexaDigitsScope scope(digits);
    x = law.deviate(p, &fail);
  }
  ASSERT_EQ(fail.code, 0) << law.name << " p = " << pText << ": " << fail.message;
  ASSERT_NE(x, 0);
  VexaDigitsScope wide(digits + 15);
  std::string text = VexaFloatToString(x);
  // half a unit in the last place of x (the lower neighbour of a power of ten is closer)
  VexaFloat ax = fabs(x), unit = F("1e" + std::to_string(-digits + 1));
  while (unit * 10 <= ax) unit *= 10;
  while (unit > ax) unit /= 10;
  VexaFloat half = unit * F("1e" + std::to_string(-digits + 1)) / 2;
  VexaFloat halfBelow = ax == unit ? half / 10 : half;
  VexaFloat lo = x > 0 ? x - halfBelow : x - half, hi = x > 0 ? x + half : x + halfBelow;
  VexaFloat plo = law.lower(lo, &fail), phi = law.lower(hi, &fail);
  EXPECT_TRUE(plo <= p && p <= phi)
      << law.name << " at " << digits << " digits, p = " << pText << ": x = " << text
      << ", cdf at the midpoints " << Show(plo) << ", " << Show(phi);
}

// Parameters are exact decimals: a double such as 1e-3 would round differently at each Digits.
TEST(Continuous, DeviatesInvertTheirDistributionFunctions) {
  const Nag_TailProbability L = Nag_LowerTail;
  std::vector<Law> laws = {
      {"normal", [](auto& p, auto f) { return VexaMP_g01fac(L, p, f); },
       [](auto& x, auto f) { return VexaMP_g01eac(L, x, f); }},
      {"t(0.7)", [](auto& p, auto f) { return VexaMP_g01fbc(L, p, F("0.7"), f); },
       [](auto& x, auto f) { return VexaMP_g01ebc(L, x, F("0.7"), f); }},
      {"t(1e6)", [](auto& p, auto f) { return VexaMP_g01fbc(L, p, 1e6, f); },
       [](auto& x, auto f) { return VexaMP_g01ebc(L, x, 1e6, f); }},
      {"chisq(3)", [](auto& p, auto f) { return VexaMP_g01fcc(p, 3, f); },
       [](auto& x, auto f) { return VexaMP_g01ecc(L, x, 3, f); }},
      {"chisq(2e6)", [](auto& p, auto f) { return VexaMP_g01fcc(p, 2e6, f); },
       [](auto& x, auto f) { return VexaMP_g01ecc(L, x, 2e6, f); }},
      {"gamma(1e-3, 2)", [](auto& p, auto f) { return VexaMP_g01ffc(p, F("0.001"), 2, 0.0, f); },
       [](auto& x, auto f) { return VexaMP_g01efc(L, x, F("0.001"), 2, f); }},
      {"gamma(3e5, 0.5)", [](auto& p, auto f) { return VexaMP_g01ffc(p, 3e5, 0.5, 0.0, f); },
       [](auto& x, auto f) { return VexaMP_g01efc(L, x, 3e5, 0.5, f); }},
      {"gamma(2.5e9, 3)", [](auto& p, auto f) { return VexaMP_g01ffc(p, 2.5e9, 3, 0.0, f); },
       [](auto& x, auto f) { return VexaMP_g01efc(L, x, 2.5e9, 3, f); }},
      {"chisq(1e31)", [](auto& p, auto f) { return VexaMP_g01fcc(p, F("1e31"), f); },
       [](auto& x, auto f) { return VexaMP_g01ecc(L, x, F("1e31"), f); }},
      {"F(3, 7.5)", [](auto& p, auto f) { return VexaMP_g01fdc(p, 3, 7.5, f); },
       [](auto& x, auto f) { return VexaMP_g01edc(L, x, 3, 7.5, f); }},
      {"F(1e6, 2e5)", [](auto& p, auto f) { return VexaMP_g01fdc(p, 1e6, 2e5, f); },
       [](auto& x, auto f) { return VexaMP_g01edc(L, x, 1e6, 2e5, f); }},
      {"beta(0.25, 4)", [](auto& p, auto f) { return VexaMP_g01fec(p, 0.25, 4, 0.0, f); },
       [](auto& x, auto f) {
         VexaFloat lo, up, pdf;
         VexaMP_g01eec(x, 0.25, 4, 0.0, &lo, &up, &pdf, f);
         return lo;
       }},
      {"beta(1e5, 1e6)", [](auto& p, auto f) { return VexaMP_g01fec(p, 1e5, 1e6, 0.0, f); },
       [](auto& x, auto f) {
         VexaFloat lo, up, pdf;
         VexaMP_g01eec(x, 1e5, 1e6, 0.0, &lo, &up, &pdf, f);
         return lo;
       }},
  };
  for (const Law& law : laws)
    for (int digits : {10, 25, 60})
      for (const char* p : {"1e-30", "0.0123", "0.61", "0.999999999987"})
        ExpectBracketed(law, p, digits);
  // far tails at 400 digits, where the last Newton corrections are too small for a double
  Law chisq{"chisq(1e5)", [](auto& p, auto f) { return VexaMP_g01fcc(p, 1e5, f); },
            [](auto& x, auto f) { return VexaMP_g01ecc(L, x, 1e5, f); }};
  for (const Law& law : {laws[0], laws[3], chisq, laws[9], laws[11]})
    ExpectBracketed(law, "1e-100", 400);
  // 1 - (1 - 1e-40)^1000 lies so near a rounding midpoint at 200 digits that only the
  // boundary test decides it
  Law nearTie{"beta(1, 0.001)",
              [](auto& p, auto f) { return VexaMP_g01fec(p, 1, F("0.001"), 0.0, f); },
              [](auto& x, auto f) {
                VexaFloat lo, up, pdf;
                VexaMP_g01eec(x, 1, F("0.001"), 0.0, &lo, &up, &pdf, f);
                return lo;
              }};
  ExpectBracketed(nearTie, "1e-40", 200);
}

// Shapes far below the double range reach the double-precision starting values as 0; the
// routine must still answer or fail through its record, naming the probability it was given.
TEST(Continuous, TinyShapes) {
  NagError fail;
  auto check = [&](std::function<VexaFloat()> call, const char* p) {
    VexaFloat x;
    EXPECT_NO_THROW(x = call());
    if (fail.code != NE_NOERROR) {
      EXPECT_NE(std::string(fail.message).find("p = " + std::string(p) + "."), std::string::npos)
          << fail.message;
    }
  };
  check([&] { return VexaMP_g01fec(0.3, VexaFloatFromString("1e-400"), 3, 0.0, &fail); }, "0.3");
  check([&] { return VexaMP_g01ffc(0.835, VexaFloatFromString("1e-400"), 1, 0.0, &fail); },
        "0.835");
  check([&] { return VexaMP_g01fbc(Nag_LowerTail, 0.975, VexaFloatFromString("1e-400"), &fail); },
        "0.975");
  check([&] { return VexaMP_g01fdc(0.9, VexaFloatFromString("1e-400"), 3, &fail); }, "0.9");
  // Beta(e, e) for a tiny e holds half its mass at 0 and half at 1: the median is the centre
  // and any other quantile lies beyond the float's range, at the limit
  const VexaFloat e = VexaFloatFromString("1e-300");
  EXPECT_EQ(VexaFloatToString(VexaMP_g01fec(0.5, e, e, 0.0, &fail)), "0.5");
  EXPECT_EQ(VexaFloatToString(VexaMP_g01fec(0.3, e, e, 0.0, &fail)), "0.");
  EXPECT_EQ(VexaFloatToString(VexaMP_g01fec(0.7, e, e, 0.0, &fail)), "1.");
  EXPECT_EQ(fail.code, NE_NOERROR);
}

// Shapes beyond the double range: the law's relative width 1/sqrt(a) lies below the last
// digit, so a deviate rounds to the mean (1e400 - 0.52e200 rounds to 1e400 at 30 digits),
// and a point off the mean by more than the float's range of exponents has tails 0 and 1.
TEST(Continuous, HugeShapes) {
  VexaDigitsScope digits(30);
  NagError fail;
  const VexaFloat a = F("1e400"), off = F("0.99999e400");
  EXPECT_EQ(VexaFloatToString(VexaMP_g01ffc(0.3, a, 1, 0.0, &fail)), "1e400");
  EXPECT_EQ(VexaFloatToString(VexaMP_g01efc(Nag_LowerTail, off, a, 1, &fail)), "0.");
  EXPECT_EQ(VexaFloatToString(VexaMP_g01efc(Nag_UpperTail, off, a, 1, &fail)), "1.");
  EXPECT_EQ(VexaFloatToString(VexaMP_g01ecc(Nag_UpperTail, F("3e1000"), F("2e1000"), &fail)), "0.");
  EXPECT_EQ(fail.code, NE_NOERROR);
}

TEST(Continuous, BadArgumentsFailWithTheirCodeAndMessage) {
  // integers print with a trailing point ("1."), as the float library writes them
  NagError fail;
  struct Bad {
    std::function<VexaFloat()> call;
    int code;
    const char* message;
  };
  const Nag_TailProbability L = Nag_LowerTail;
  std::vector<Bad> bad = {
      {[&] { return VexaMP_g01fac(L, 1.5, &fail); }, NE_REAL_ARG_GE,
       "On entry, p = 1.5. Constraint: 0 < p < 1."},
      {[&] { return VexaMP_g01fac(L, 0, &fail); }, NE_REAL_ARG_LE,
       "On entry, p = 0. Constraint: 0 < p < 1."},
      {[&] { return VexaMP_g01eac(static_cast<Nag_TailProbability>(7), 1, &fail); }, NE_BAD_PARAM,
       "On entry, tail = 7. Constraint: tail is Nag_LowerTail, Nag_UpperTail, "
       "Nag_TwoTailSignif or Nag_TwoTailConfid."},
      {[&] { return VexaMP_g01eac(L, VexaFloatInfinity(1), &fail); }, NE_REAL_ARG,
       "On entry, x = Float(infinity). Constraint: x is finite."},
      {[&] { return VexaMP_g01ebc(L, 1, -2, &fail); }, NE_REAL_ARG_LE,
       "On entry, df = -2. Constraint: 0 < df <= 2000000."},
      {[&] { return VexaMP_g01fbc(L, 0.5, VexaFloatUndefined(), &fail); }, NE_REAL_ARG,
       "On entry, df = Float(undefined). Constraint: df is finite."},
      {[&] { return VexaMP_g01ecc(L, -1, 3, &fail); }, NE_REAL_ARG_LT,
       "On entry, x = -1. Constraint: x >= 0."},
      {[&] { return VexaMP_g01fcc(0.5, -3e6, &fail); }, NE_REAL_ARG_LE,
       "On entry, df = -3000000. Constraint: 0 < df."},
      {[&] { return VexaMP_g01edc(L, 1, 2, 0, &fail); }, NE_REAL_ARG_LE,
       "On entry, df2 = 0. Constraint: 0 < df2 <= 2000000."},
      {[&] { return VexaMP_g01fdc(1, 2, 3, &fail); }, NE_REAL_ARG_GE,
       "On entry, p = 1. Constraint: 0 < p < 1."},
      {[&] { return VexaMP_g01efc(L, 1, 2, -0.5, &fail); }, NE_REAL_ARG_LE,
       "On entry, b = -0.5. Constraint: 0 < b."},
      {[&] { return VexaMP_g01ffc(0.5, 0, 1, 0.0, &fail); }, NE_REAL_ARG_LE,
       "On entry, a = 0. Constraint: 0 < a."},
      {[&] { return VexaMP_g01fec(-0.25, 1, 1, 0.0, &fail); }, NE_REAL_ARG_LE,
       "On entry, p = -0.25. Constraint: 0 < p < 1."},
      {[&] {
         VexaFloat p = 7, q = 7, pdf = 7;
         VexaMP_g01eec(1.25, 2, 3, 0.0, &p, &q, &pdf, &fail);
         return p + q + pdf;
       },
       NE_REAL_ARG_GT, "On entry, x = 1.25. Constraint: 0 <= x <= 1."},
  };
  for (const Bad& b : bad) {
    VexaMP_g01eac(L, 0, &fail);  // a success first: the record must be overwritten
    ASSERT_EQ(fail.code, 0);
    EXPECT_EQ(b.call(), 0) << b.message;
    EXPECT_EQ(fail.code, b.code) << b.message;
    EXPECT_STREQ(fail.message, b.message);
  }
}

}  // namespace
