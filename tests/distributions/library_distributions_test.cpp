// The distributions computed by the numerical library: worker values against reference
// tables, the normal quantile's two regimes, the approximation formulas, and the library's
// failures reaching the host.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "frame/support.h"
#include "reference.h"
#include "stats/distributions/distributions.h"

namespace {

using vexa_test::Case;
using Args = std::vector<VexaFloat>;

VexaFloat F(const std::string& s) {
  return VexaFloatFromString(s);
}

const std::map<std::string, std::function<VexaFloat(const Args&)>> kWorkers = {
    {"NormalProbability",
     [](const Args& a) { return STATS_NormalProbability_MP(Kv(), a[0], a[1], a[2]); }},
    {"NormalDeviate", [](const Args& a) { return STATS_NormalDeviate_MP(Kv(), a[0], a[1], a[2]); }},
    {"StudentTProbability",
     [](const Args& a) { return STATS_StudentTProbability_MP(Kv(), a[0], a[1]); }},
    {"StudentTDeviate", [](const Args& a) { return STATS_StudentTDeviate_MP(Kv(), a[0], a[1]); }},
    {"ChiSquareProbability",
     [](const Args& a) { return STATS_ChiSquareProbability_MP(Kv(), a[0], a[1]); }},
    {"ChiSquareDeviate", [](const Args& a) { return STATS_ChiSquareDeviate_MP(Kv(), a[0], a[1]); }},
    {"FRatioProbability",
     [](const Args& a) { return STATS_FRatioProbability_MP(Kv(), a[0], a[1], a[2]); }},
    {"FRatioDeviate", [](const Args& a) { return STATS_FRatioDeviate_MP(Kv(), a[0], a[1], a[2]); }},
    {"GammaProbability",
     [](const Args& a) { return STATS_GammaProbability_MP(Kv(), a[0], a[1], a[2]); }},
    {"GammaDeviate", [](const Args& a) { return STATS_GammaDeviate_MP(Kv(), a[0], a[1], a[2]); }},
    {"BetaProbability",
     [](const Args& a) { return STATS_BetaProbability_MP(Kv(), a[0], a[1], a[2]); }},
    {"BetaDeviate", [](const Args& a) { return STATS_BetaDeviate_MP(Kv(), a[0], a[1], a[2]); }},
};

// Every worker is correctly rounded except the refined normal quantile: its Newton steps
// use the probability rounded to Digits, which may move the quantile by an ulp.
TEST(LibraryDistributions, WorkersMatchReferenceValues) {
  std::map<std::string, int> cases, misses;
  std::map<std::string, VexaFloat> worst;
  for (const Case& c : vexa_test::ReadCases("distribution_workers.txt")) {
    VexaDigitsScope digits(c.digits);
    Args args;
    for (const std::string& a : c.args) args.push_back(F(a));
    VexaFloat got = kWorkers.at(c.op)(args), want = F(c.expected);
    ++cases[c.op];
    if (got == want) continue;
    ++misses[c.op];
    VexaFloat error = vexa_test::UlpError(c, got, want);
    if (!(worst[c.op] >= error)) worst[c.op] = error;
    const VexaFloat allowed = c.op == "NormalDeviate" ? 1 : 0;
    EXPECT_TRUE(error <= allowed) << "line " << c.line << ": " << c.op << " at Digits " << c.digits
                                  << " gives " << Text(got) << ", want " << c.expected;
  }
  ASSERT_EQ(cases.size(), kWorkers.size()) << "every worker has reference values";
  for (auto& [op, n] : cases)
    std::printf("[reference] %-21s %3d cases, %d not correctly rounded, worst %s ulp\n", op.c_str(),
                n, misses[op], vexa_test::Show(worst[op]).c_str());
}

TEST(LibraryDistributions, NormalQuantileIsRefinedAboveFourteenDigits) {
  NagError fail;
  {
    VexaDigitsScope digits(10);
    EXPECT_EQ(STATS_NormalDeviate_MP(Kv(), F("0.975"), 0, 1),
              VexaMP_g01fac(Nag_LowerTail, F("0.975"), &fail));
    EXPECT_EQ(Text(STATS_NormalDeviate_MP(Kv(), F("0.975"), 3, 2)), "6.91992797");
  }
  VexaDigitsScope digits(30);
  VexaFloat z = STATS_NormalDeviate_MP(Kv(), F("0.975"), 0, 1);
  const VexaFloat truth = F("1.959963984540054235524594430520551527955");  // mpmath, 40 digits
  EXPECT_TRUE(fabs(z - truth) <= F("2e-29")) << Text(z);
  EXPECT_EQ(Text(STATS_NormalProbability_MP(Kv(), 5, 5, 3)), "0.5");
}

// The approximation at Digits 30 against the formula evaluated by mpmath at 50 digits with
// the coefficients as written (2.515517, 0.80253, 0.01028, 1.432788, 0.189269, 0.001308):
// a change in any coefficient shows in the leading digits.
TEST(LibraryDistributions, ApproximationsUseTheirCoefficientsAsWritten) {
  VexaDigitsScope digits(30);
  VexaFloat half = STATS_NormalDeviateApprox_MP(Kv(), F("0.5"));
  EXPECT_TRUE(fabs(half - F("-0.000151295267033218708010927366")) < F("1e-24")) << Text(half);
  VexaFloat tail = STATS_NormalDeviateApprox_MP(Kv(), F("0.025"));
  EXPECT_TRUE(fabs(tail - F("-1.96058994393102845325405389612")) < F("1e-26")) << Text(tail);
  VexaFloat w = STATS_NormalWApprox_MP(Kv(), F("0.3"), 2, 3);
  EXPECT_TRUE(fabs(w - F("0.278330709741396237210495130297")) < F("1e-26")) << Text(w);
  EXPECT_EQ(ErrorOf([] { STATS_NormalWApprox_MP(Kv(), F("0.3"), F("0.5"), 2); }),
            "Error: Parameter A is 0.5, a disallowed value.");
  EXPECT_EQ(ErrorOf([] { STATS_NormalWApprox_MP(Kv(), F("0.3"), 2, F("0.5")); }),
            "Error: Parameter B is 0.5, a disallowed value.");
}

TEST(LibraryDistributions, LibraryFailuresReachTheHostWithTheLibrarysMessage) {
  NagError fail;
  VexaMP_g01fcc(F("1.5"), 2, &fail);
  ASSERT_NE(fail.code, 0);
  auto deviate = reinterpret_cast<ALGEB (*)(VexaKernelVector, ALGEB)>(
      dlsym(RTLD_DEFAULT, "STATS_VexaChiSquareDeviate_MP"));
  ALGEB args = vexa::NewExpseq({vexa::NewFloat(F("1.5")), vexa::NewInteger(2)});
  EXPECT_EQ(ErrorOf([&] { deviate(Kv(), args); }), fail.message);
  VexaFloat lower, upper, density;
  VexaMP_g01eec(F("0.5"), -1, 2, 0.0, &lower, &upper, &density, &fail);
  EXPECT_EQ(ErrorOf([] { STATS_BetaProbability_MP(Kv(), F("0.5"), -1, 2); }), fail.message);
}

}  // namespace
