// Inverse-distribution samples against the closed-form inverses of the same uniforms, and the
// failures of the entry points (Digits is given back after each).
#include "stats/random/inverse_distribution.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "data/support.h"

namespace {

ALGEB Proc(std::function<VexaFloat(VexaFloat)> f) {
  return vexa::NewNativeProcedure("F", [f](vexa::Kernel*, ALGEB args) {
    return vexa::NewFloat(f(VexaFloat(VexaExpseqSelect(Kv(), args, 1))));
  });
}

std::vector<VexaFloat> Draws(ALGEB (*entry)(VexaKernelVector, ALGEB), ALGEB F, ALGEB a, ALGEB b) {
  vexa::SeedRandom(3);
  ALGEB out = entry(Kv(), vexa::NewExpseq({vexa::NewInteger(25), F, a, b}));
  auto* block = static_cast<VexaFloat*>(RTableDataBlock(Kv(), out));
  return std::vector<VexaFloat>(block, block + RTableNumElements(Kv(), out));
}

std::vector<VexaFloat> Uniforms() {
  vexa::SeedRandom(3);
  std::vector<VexaFloat> u(25);
  for (VexaFloat& v : u) v = VexaFloat(VexaRandomSoftwareFloat01(Kv()));
  return u;
}

TEST(InverseDistribution, ContinuousDrawsInvertTheClosedForms) {
  const struct {
    const char* name;
    std::function<VexaFloat(VexaFloat)> F, inverse;
    int lower, upper;
  } laws[] = {
      {"exponential", [](VexaFloat x) { return 1 - exp(-x); },
       [](VexaFloat u) { return -log(1 - u); }, 0, 80},
      {"logistic", [](VexaFloat x) { return 1 / (1 + exp(-x)); },
       [](VexaFloat u) { return log(u / (1 - u)); }, -80, 80},
      {"Pareto(1, 3)", [](VexaFloat x) { return 1 - pow(x, VexaFloat(-3)); },
       [](VexaFloat u) { return pow(1 - u, VexaFloat(-1) / 3); }, 1, 100000},
  };
  for (int digits : {10, 30}) {
    VexaDigitsScope scope(digits);
    for (const auto& law : laws) {
      SCOPED_TRACE(std::string(law.name) + " at Digits " + std::to_string(digits));
      const auto got = Draws(STATS_VexaInverseDistributionRandomSample_MP, Proc(law.F),
                             vexa::NewInteger(law.lower), vexa::NewInteger(law.upper));
      const auto u = Uniforms();
      for (size_t i = 0; i < u.size(); ++i) {
        VexaFloat want;
        {
          VexaDigitsScope wide(digits + 20);
          want = law.inverse(u[i]);
        }
        // Brent's tolerance 10^-(Digits+1), relative above 1 and absolute below, then one
        // rounding: within a unit in the last place
        const VexaFloat scale = fabs(want) > 1 ? fabs(want) : VexaFloat(1);
        EXPECT_LE(fabs(got[i] - want), scale * pow(VexaFloat(10), VexaFloat(1 - digits)))
            << Text(got[i]) << " vs " << Text(want);
      }
    }
  }
}

TEST(InverseDistribution, DiscreteDrawsAreTheFirstIntegerReachingU) {
  VexaDigitsScope digits(20);
  // geometric failures before the first success, q = 0.7: F(k) = 1 - 0.3^(k + 1)
  const auto got = Draws(STATS_VexaDiscreteInverseDistributionRandomSample_MP,
                         Proc([](VexaFloat k) { return 1 - pow(VexaFloat(0.3), k + 1); }),
                         vexa::NewInteger(-1), vexa::NewInteger(1000));
  const auto u = Uniforms();
  for (size_t i = 0; i < u.size(); ++i) {
    VexaDigitsScope wide(40);
    const VexaFloat k = ceil(log(1 - u[i]) / log(VexaFloat(0.3)) - 1);
    EXPECT_EQ(got[i], k > 0 ? k : VexaFloat(0)) << Text(u[i]);
  }
}

TEST(InverseDistribution, FailuresAreClearAndGiveDigitsBack) {
  VexaDigitsScope digits(10);
  ALGEB ok = Proc([](VexaFloat x) { return x; });
  ALGEB symbolic =
      vexa::NewNativeProcedure("F", [](vexa::Kernel*, ALGEB) { return vexa::NewName("a"); });
  ALGEB raising = vexa::NewNativeProcedure(
      "F", [](vexa::Kernel*, ALGEB a) -> ALGEB { vexa::RaiseFormatted("no value at %1", a); });
  auto i = [](int v) { return vexa::NewInteger(v); };
  const struct {
    ALGEB (*entry)(VexaKernelVector, ALGEB);
    std::vector<ALGEB> args;
    std::string message;
  } rows[] = {
      {STATS_VexaInverseDistributionRandomSample_MP,
       {i(2), ok, i(0)},
       "VexaInverseDistributionRandomSample expects 4 arguments, received: 2, "},
      {STATS_VexaInverseDistributionRandomSample_MP,
       {i(2), i(3), i(0), i(1)},
       "VexaInverseDistributionRandomSample expects a procedure as its second parameter, "
       "received: 3"},
      {STATS_VexaInverseDistributionRandomSample_MP,
       {i(2), ok, i(1), i(1)},
       "expected finite bounds lower < upper, received 1, 1"},
      {STATS_VexaInverseDistributionRandomSample_MP,
       {i(-2), ok, i(0), i(1)},
       "expected a nonnegative sample size, received -2"},
      {STATS_VexaInverseDistributionRandomSample_MP,
       {i(2), symbolic, i(0), i(1)},
       "unable to evaluate a to floating-point"},
      {STATS_VexaInverseDistributionRandomSample_MP, {i(2), raising, i(0), i(1)}, "no value at 0."},
      {STATS_VexaInverseDistributionRandomSample_MP,
       {i(2), ok, i(2), i(3)},
       "root must be bracketed by lower and upper boundaries."},
      {STATS_VexaDiscreteInverseDistributionRandomSample_MP,
       {i(2), ok},
       "VexaDiscreteInverseDistributionRandomSample expects 4 arguments, received: 2, "},
      {STATS_VexaDiscreteInverseDistributionRandomSample_MP,
       {i(2), symbolic, i(0), i(1)},
       "unable to evaluate a to floating-point"},
      {STATS_VexaDiscreteInverseDistributionRandomSample_MP,
       {i(2), ok, F("0.5").Handle(), i(1)},
       ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.message);
    const std::string error = ErrorOf([&] { row.entry(Kv(), vexa::NewExpseq(row.args)); });
    if (row.message.empty())
      EXPECT_NE(error, "no error");  // a float where an integer bound belongs
    else
      EXPECT_EQ(error.rfind(row.message, 0), 0u) << error;
    EXPECT_EQ(VexaDigits(), 10);
  }
}

}  // namespace
