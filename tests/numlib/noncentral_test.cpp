// The noncentral probability routines against reference values (mpmath, see
// tests/reference/make_numlib_noncentral_reference.py): every value correctly rounded. Then
// agreement with the central routines at zero noncentrality, monotony across a far tail, and
// the failure records of bad arguments.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "reference.h"
#include "vexa/nag.h"

namespace {

using namespace vexa_test;

VexaFloat F(const std::string& s) {
  return VexaFloatFromString(s);
}

VexaFloat Compute(const Case& c, NagError* fail) {
  const auto& a = c.args;
  if (c.op == "g01gbc") return VexaMP_g01gbc(F(a[0]), F(a[1]), F(a[2]), 0.0, 100, fail);
  if (c.op == "g01gcc") return VexaMP_g01gcc(F(a[0]), F(a[1]), F(a[2]), 0.0, 100, fail);
  if (c.op == "g01gdc") return VexaMP_g01gdc(F(a[0]), F(a[1]), F(a[2]), F(a[3]), 0.0, 100, fail);
  return VexaMP_g01gec(F(a[0]), F(a[1]), F(a[2]), F(a[3]), 0.0, 100, fail);
}

TEST(Noncentral, ReferenceValuesAreCorrectlyRounded) {
  std::vector<Case> cases = ReadCases("numlib_noncentral.txt");
  ASSERT_GT(cases.size(), 100u);
  for (const Case& c : cases) {
    VexaDigitsScope digits(c.digits);
    NagError fail;
    VexaFloat got = Compute(c, &fail);
    ASSERT_EQ(fail.code, 0) << "line " << c.line << ": " << fail.message;
    VexaFloat want = F(c.expected);
    EXPECT_EQ(got, want) << "line " << c.line << " " << c.op << " at " << c.digits
                         << " digits: got " << VexaFloatToString(got) << ", want " << c.expected;
  }
}

// With no noncentrality each law is its central one, which the central routines round
// correctly too: the two must agree exactly, in both tails.
TEST(Noncentral, ZeroNoncentralityIsTheCentralLaw) {
  const Nag_TailProbability L = Nag_LowerTail;
  for (int digits : {10, 40}) {
    VexaDigitsScope scope(digits);
    NagError f;
    for (const char* x : {"0.001", "0.7", "3", "25", "400"}) {
      for (const char* df : {"0.3", "2", "7.5"}) {
        EXPECT_EQ(VexaMP_g01gcc(F(x), F(df), 0, 0, 1, &f), VexaMP_g01ecc(L, F(x), F(df), &f))
            << x << " " << df;
        EXPECT_EQ(VexaMP_g01gdc(F(x), F(df), F("5"), 0, 0, 1, &f),
                  VexaMP_g01edc(L, F(x), F(df), F("5"), &f));
        EXPECT_EQ(VexaMP_g01gbc(F(x), F(df), 0, 0, 1, &f), VexaMP_g01ebc(L, F(x), F(df), &f));
        EXPECT_EQ(VexaMP_g01gbc(-F(x), F(df), 0, 0, 1, &f), VexaMP_g01ebc(L, -F(x), F(df), &f));
      }
    }
    for (const char* x : {"1e-6", "0.25", "0.9", "0.999999"}) {
      VexaFloat p, q, pdf;
      VexaMP_g01eec(F(x), F("0.5"), F("3"), 0, &p, &q, &pdf, &f);
      EXPECT_EQ(VexaMP_g01gec(F(x), F("0.5"), F("3"), 0, 0, 1, &f), p) << x;
    }
    EXPECT_EQ(f.code, 0) << f.message;
  }
}

// Across the far lower tail into the body and on to the far upper tail, a correctly rounded
// probability never decreases, never leaves [0, 1] and is zero nowhere inside the support.
TEST(Noncentral, MonotoneWithinTheUnitInterval) {
  VexaDigitsScope scope(20);
  struct Law {
    const char* name;
    VexaFloat (*p)(const VexaFloat&, NagError*);
    std::vector<const char*> xs;
  };
  std::vector<Law> laws = {
      {"t",
       [](const VexaFloat& x, NagError* f) { return VexaMP_g01gbc(x, 3, 8, 0, 1, f); },
       {"-200", "-5", "-0.5", "0", "0.5", "4", "8", "12", "60", "1e4"}},
      {"chi-square",
       [](const VexaFloat& x, NagError* f) { return VexaMP_g01gcc(x, 4, 900, 0, 1, f); },
       {"1e-3", "50", "500", "800", "904", "1000", "1400", "3000"}},
      {"F",
       [](const VexaFloat& x, NagError* f) { return VexaMP_g01gdc(x, 3, 9, 60, 0, 1, f); },
       {"1e-6", "0.5", "5", "20", "80", "1e4"}},
      {"beta",
       [](const VexaFloat& x, NagError* f) { return VexaMP_g01gec(x, 2, 40, 300, 0, 1, f); },
       {"1e-5", "0.2", "0.6", "0.8", "0.95", "0.9999"}},
  };
  for (const Law& law : laws) {
    VexaFloat previous = 0;
    for (const char* x : law.xs) {
      NagError f;
      VexaFloat p = law.p(F(x), &f);
      ASSERT_EQ(f.code, 0) << law.name << " " << x << ": " << f.message;
      EXPECT_TRUE(p > 0 && p <= 1 && p >= previous)
          << law.name << " at " << x << ": " << VexaFloatToString(p);
      previous = p;
    }
  }
}

TEST(Noncentral, BadArgumentsFail) {
  struct Row {
    VexaFloat (*call)(NagError*);
    int code;
    const char* message;
  };
  std::vector<Row> rows = {
      {[](NagError* f) { return VexaMP_g01gcc(-1, 2, 1, 0, 1, f); }, NE_REAL_ARG_LT,
       "On entry, x = -1. Constraint: x >= 0."},
      {[](NagError* f) { return VexaMP_g01gcc(1, 0, 1, 0, 1, f); }, NE_REAL_ARG_LE, "df = 0"},
      {[](NagError* f) { return VexaMP_g01gcc(1, 2, -1, 0, 1, f); }, NE_REAL_ARG_LT, "lambda = -1"},
      {[](NagError* f) { return VexaMP_g01gcc(1, 2, 2e6, 0, 1, f); }, NE_REAL_ARG_GT,
       "0 <= lambda <= 1000000"},
      {[](NagError* f) { return VexaMP_g01gcc(1, 2, 1, 0, 0, f); }, NE_INT_ARG_LT, "max_iter >= 1"},
      {[](NagError* f) { return VexaMP_g01gec(F("1.5"), 2, 2, 1, 0, 1, f); }, NE_REAL_ARG_GT,
       "0 <= x <= 1"},
      {[](NagError* f) { return VexaMP_g01gdc(1, 2, -3, 1, 0, 1, f); }, NE_REAL_ARG_LE, "df2 = -3"},
      {[](NagError* f) { return VexaMP_g01gbc(1, 2, 101, 0, 1, f); }, NE_REAL_ARG_GT,
       "|delta| <= 100"},
      {[](NagError* f) { return VexaMP_g01gbc(VexaFloatUndefined(), 2, 1, 0, 1, f); }, NE_REAL_ARG,
       "t is finite"},
  };
  for (const Row& r : rows) {
    NagError f;
    VexaFloat v = r.call(&f);
    EXPECT_EQ(f.code, r.code) << f.message;
    EXPECT_NE(std::string(f.message).find(r.message), std::string::npos) << f.message;
    EXPECT_EQ(v, 0);
  }
}

}  // namespace
