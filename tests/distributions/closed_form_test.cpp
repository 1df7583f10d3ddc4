// The closed-form continuous distributions through their entry points: values against
// reference tables, the edges of the formulas, deviate/probability round trips, inversion
// variates drawn after their parameters, and the ziggurat-based variates and samples.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "frame/support.h"
#include "reference.h"
#include "stats/distributions/distributions.h"
#include "stats/random/random_stream.h"
#include "stats/random/ziggurat.h"

namespace {

VexaFloat F(const std::string& s) {
  return VexaFloatFromString(s);
}

using Entry = ALGEB (*)(VexaKernelVector, ALGEB);

ALGEB Host(const std::string& entry, std::vector<ALGEB> handles,
           const std::vector<VexaFloat>& args) {
  auto f = reinterpret_cast<Entry>(dlsym(RTLD_DEFAULT, ("STATS_Vexa" + entry + "_MP").c_str()));
  EXPECT_NE(f, nullptr) << entry;
  for (const VexaFloat& a : args) handles.push_back(a.Handle());
  return f(Kv(), vexa::NewExpseq(handles));
}

VexaFloat Call(const std::string& entry, const std::vector<VexaFloat>& args) {
  return VexaFloat(Host(entry, {}, args));
}

ALGEB CallSample(const std::string& entry, int n, const std::vector<VexaFloat>& params) {
  return Host(entry, {vexa::NewInteger(n)}, params);
}

// Each distribution with parameters in its support, for the properties below.
const std::map<std::string, std::vector<VexaFloat>> kLaws = {
    {"Weibull", {2, F("1.5")}},  {"Triangular", {-1, 3, 1}},   {"Rayleigh", {2}},
    {"Power", {2, F("2.5")}},    {"Pareto", {1, 2}},           {"Logistic", {1, 2}},
    {"Laplace", {1, 2}},         {"Gumbel", {1, 2}},           {"Cauchy", {1, 2}},
    {"Exponential", {F("2.5")}}, {"LogNormal", {1, F("0.5")}},
};

std::vector<VexaFloat> With(const VexaFloat& first, const std::vector<VexaFloat>& rest) {
  std::vector<VexaFloat> args = {first};
  args.insert(args.end(), rest.begin(), rest.end());
  return args;
}

// The formulas round at every step in the order of their definitions, so a well conditioned
// case may miss the correct rounding by an ulp or two.
TEST(ClosedForm, ValuesMatchReferenceTables) {
  std::set<std::string> ops;
  int missed = 0;
  std::vector<vexa_test::Case> all = vexa_test::ReadCases("closed_form.txt");
  ASSERT_GE(all.size(), 88u);
  for (const vexa_test::Case& c : all) {
    VexaDigitsScope digits(c.digits);
    std::vector<VexaFloat> args;
    for (const std::string& a : c.args) args.push_back(F(a));
    VexaFloat got = Call(c.op, args), want = F(c.expected);
    ops.insert(c.op);
    if (got == want) continue;
    ++missed;
    EXPECT_TRUE(vexa_test::UlpError(c, got, want) <= 2)
        << "line " << c.line << ": " << c.op << " at Digits " << c.digits << " gives " << Text(got)
        << ", want " << c.expected;
  }
  EXPECT_EQ(ops.size(), 2 * kLaws.size());
  std::printf("[reference] closed forms: %zu cases, %d not correctly rounded (within 2 ulp)\n",
              all.size(), missed);
}

TEST(ClosedForm, EdgesOfTheFormulas) {
  VexaDigitsScope digits(10);
  // x = 0 takes the formula branch and gives 0 there; the mode through the second piece of the
  // triangle, the upper ends through the last branch
  const std::vector<std::pair<std::string, std::vector<VexaFloat>>> zeros = {
      {"WeibullProbability", {0, 2, 3}},        {"RayleighProbability", {0, 2}},
      {"PowerProbability", {0, 2, 3}},          {"WeibullProbability", {-1, 2, 3}},
      {"TriangularProbability", {-1, 0, 4, 1}}, {"ParetoProbability", {2, 2, 3}},
      {"ParetoProbability", {1, 2, 3}},         {"ExponentialDeviate", {0, 2}}};
  const std::vector<std::pair<std::string, std::vector<VexaFloat>>> ones = {
      {"TriangularProbability", {4, 0, 4, 1}},
      {"PowerProbability", {2, 2, F("0.7")}},
      {"PowerProbability", {3, 2, F("0.7")}}};
  for (const auto& [entry, args] : zeros) EXPECT_EQ(Text(Call(entry, args)), "0.") << entry;
  for (const auto& [entry, args] : ones) EXPECT_EQ(Text(Call(entry, args)), "1.") << entry;
  EXPECT_EQ(Call("TriangularProbability", {1, 0, 4, 1}), 1 - VexaFloat(3) / 4);
  EXPECT_EQ(Text(Call("LaplaceProbability", {3, 3, 2})), "0.5");
  EXPECT_EQ(Text(Call("LaplaceDeviate", {F("0.5"), 3, 2})), "3.");
  EXPECT_EQ(Text(Call("GumbelProbability", {1, 1, 2})), "0.3678794412");
  // no test of x: a negative point gives a negative probability
  EXPECT_EQ(Call("ExponentialProbability", {-1, 1}), 1 - exp(VexaFloat(1)));
  // p = 1 gives what the float library gives for log(0)
  EXPECT_TRUE(IsVexaFloatInfinity(Call("ExponentialDeviate", {1, 2})));
  EXPECT_TRUE(IsVexaFloatInfinity(Call("WeibullDeviate", {1, 2, 3})));
  // the one checked argument
  for (const char* p : {"1.5", "-0.5"})
    EXPECT_EQ(ErrorOf([&] {
                Call("ExponentialDeviate", {F(p), 1});
              }),
              std::string("invalid value for the tail probability: ") + p);
  // the host's Pi, at the working precision
  VexaDigitsScope wide(40);
  EXPECT_EQ(Text(Call("CauchyProbability", {-1, -1, 5})), "0.5");
  VexaFloat quarter = Call("CauchyDeviate", {F("0.75"), 0, 1});
  EXPECT_TRUE(fabs(quarter - 1) < F("1e-38")) << Text(quarter);
}

TEST(ClosedForm, DeviatesInvertProbabilities) {
  VexaDigitsScope digits(30);
  for (const auto& [law, params] : kLaws) {
    for (const char* text : {"0.05", "0.35", "0.5", "0.8", "0.97"}) {
      VexaFloat p = F(text);
      VexaFloat x = Call(law + "Deviate", With(p, params));
      VexaFloat back = Call(law + "Probability", With(x, params));
      EXPECT_TRUE(fabs(back - p) < p * F("1e-27")) << law << " at " << text << ": " << Text(back);
    }
  }
}

// An inversion variate is the deviate of one uniform, drawn after the parameters are copied;
// the array-parameter overload draws the same.
TEST(ClosedForm, InversionVariatesAreDeviatesOfOneUniform) {
  VexaDigitsScope digits(20);
  for (const auto& [law, params] : kLaws) {
    if (law == "Exponential" || law == "LogNormal") continue;
    vexa::SeedRandom(9);
    vexa::RandomCounts before = vexa::RandomDrawn();
    VexaFloat x = Call(law + "RandomVariate", params);
    EXPECT_EQ(vexa::RandomDrawn().floats - before.floats, 1u) << law;
    vexa::SeedRandom(9);
    VexaFloat u = STATS_VexaRandomStream_MP::NextDouble();
    EXPECT_EQ(x, Call(law + "Deviate", With(u, params))) << law;
    ALGEB sample = CallSample(law + "RandomSample", 3, params);
    EXPECT_EQ(RTableNumElements(Kv(), sample), 3);
  }
  vexa::SeedRandom(9);
  VexaFloat parameters[3] = {-1, 3, 1};
  VexaFloat x = STATS_TriangularRandomVariate_MP(Kv(), parameters);
  vexa::SeedRandom(9);
  EXPECT_EQ(x, STATS_TriangularRandomVariate_MP(Kv(), -1, 3, 1));
}

// The normal, exponential and log-normal variates scale the ziggurat deviates; a seed repeats
// a sample; the normal sample fills a given array; the switch takes the published algorithm
// and is checked only where it is used.
TEST(ClosedForm, ZigguratVariatesAndSamples) {
  VexaDigitsScope digits(15);
  vexa::SeedRandom(21);
  VexaFloat n = Call("NormalRandomVariate", {10, 3});
  VexaFloat e = Call("ExponentialRandomVariate", {F("2.5")});
  VexaFloat l = Call("LogNormalRandomVariate", {1, F("0.5")});
  vexa::SeedRandom(21);
  STATS_ZigguratNormalGenerator_MP::Reset();
  EXPECT_EQ(n, 10 + 3 * STATS_ZigguratNormalGenerator_MP::Next());
  STATS_ZigguratExpGenerator_MP::Reset();
  EXPECT_EQ(e, F("2.5") * STATS_ZigguratExpGenerator_MP::Next());
  EXPECT_EQ(l, exp(1 + F("0.5") * STATS_ZigguratNormalGenerator_MP::Next()));

  vexa::SeedRandom(22);
  ALGEB first = CallSample("NormalRandomSample", 50, {0, 1});
  RTableSettings settings;
  RTableGetDefaults(Kv(), &settings);
  settings.data_type = RTABLE_DAG;
  settings.num_dimensions = 1;
  M_INT bounds[2] = {1, 50};
  ALGEB given = RTableCreate(Kv(), &settings, nullptr, bounds);
  vexa::SeedRandom(22);
  EXPECT_EQ(Host("NormalRandomSample", {given, vexa::NewInteger(0), vexa::NewInteger(1)}, {}),
            given);
  const VexaFloat* a = static_cast<const VexaFloat*>(RTableDataBlock(Kv(), first));
  const VexaFloat* b = static_cast<const VexaFloat*>(RTableDataBlock(Kv(), given));
  for (int i = 0; i < 50; ++i) EXPECT_EQ(a[i], b[i]) << i;

  auto negatives = [](ALGEB sample) {
    const VexaFloat* x = static_cast<const VexaFloat*>(RTableDataBlock(Kv(), sample));
    int count = 0;
    for (M_INT i = 0; i < RTableNumElements(Kv(), sample); ++i) count += x[i] < 0;
    return count;
  };
  EXPECT_GT(negatives(CallSample("ExponentialRandomSample", 2000, {1})), 900);
  ALGEB name = ToVexaName(Kv(), "_EnvStatisticsExactSampling", 1);
  VexaAssign(Kv(), name, ToVexaBoolean(Kv(), 1));
  EXPECT_EQ(negatives(CallSample("ExponentialRandomSample", 2000, {1})), 0);
  // a bad switch stops the ziggurat samplers before their first draw, and only them
  VexaAssign(Kv(), name, ToVexaInteger(Kv(), 1));
  vexa::RandomCounts before = vexa::RandomDrawn();
  EXPECT_EQ(ErrorOf([] {
              CallSample("NormalRandomSample", 5, {0, 1});
            }),
            "_EnvStatisticsExactSampling must be true or false, received: 1");
  EXPECT_EQ(vexa::RandomDrawn().words, before.words);
  EXPECT_EQ(RTableNumElements(Kv(), CallSample("LaplaceRandomSample", 5, {0, 1})), 5);
  vexa::Unassign(name);
}

}  // namespace
