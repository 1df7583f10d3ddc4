// Every distribution entry point: present exactly where an operation exists, with its own
// argument count and arity message; the tail mapping.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "frame/support.h"
#include "stats/distributions/distributions.h"

namespace {

using EntryPoint = ALGEB (*)(VexaKernelVector, ALGEB);

EntryPoint Find(const std::string& name) {
  return reinterpret_cast<EntryPoint>(dlsym(RTLD_DEFAULT, ("STATS_" + name + "_MP").c_str()));
}

ALGEB Ones(int n) {
  std::vector<ALGEB> items(n, vexa::NewInteger(1));
  return vexa::NewExpseq(items);
}

// Argument counts of Probability, Deviate, RandomVariate and RandomSample; 0: no such
// operation.
struct Counts {
  int p, d, v, s;
};
const std::map<std::string, Counts> kDistributions = {
    {"Bernoulli", {2, 2, 1, 2}},       {"Beta", {3, 3, 2, 3}},
    {"Binomial", {3, 3, 2, 3}},        {"Cauchy", {3, 3, 2, 3}},
    {"ChiSquare", {2, 2, 1, 2}},       {"DiscreteUniform", {3, 3, 2, 3}},
    {"Empirical", {0, 4, 3, 4}},       {"Error", {0, 6, 3, 4}},
    {"Exponential", {2, 2, 1, 2}},     {"FRatio", {3, 3, 2, 3}},
    {"Gamma", {3, 3, 2, 3}},           {"Geometric", {2, 2, 1, 2}},
    {"Gumbel", {3, 3, 2, 3}},          {"Hypergeometric", {4, 4, 3, 4}},
    {"InverseGaussian", {0, 0, 2, 3}}, {"Laplace", {3, 3, 2, 3}},
    {"Logistic", {3, 3, 2, 3}},        {"LogNormal", {3, 3, 2, 3}},
    {"Maxwell", {0, 0, 1, 2}},         {"Moyal", {0, 0, 2, 3}},
    {"NegativeBinomial", {3, 3, 2, 3}}, {"NonCentralBeta", {4, 4, 3, 4}},
    {"NonCentralChiSquare", {3, 3, 3, 4}}, {"NonCentralFRatio", {4, 4, 3, 4}},
    {"NonCentralStudentT", {3, 0, 2, 3}}, {"Normal", {3, 3, 2, 3}},
    {"Pareto", {3, 3, 2, 3}},          {"Poisson", {2, 2, 1, 2}},
    {"Power", {3, 3, 2, 3}},           {"Rayleigh", {2, 2, 1, 2}},
    {"StudentT", {2, 2, 1, 2}},        {"Triangular", {4, 4, 3, 4}},
    {"Uniform", {3, 3, 2, 3}},         {"Weibull", {3, 3, 2, 3}},
};

// Messages that do not follow "<name> expects <n> argument(s), received: %1".
const std::map<std::string, std::string> kIrregular = {
    {"VexaErrorRandomVariate", "expected 3 arguments, received: %1"},
    {"VexaErrorRandomSample", "expected 4 arguments, received: %1"},
    {"VexaInverseGaussianRandomVariate",
     "VexaInverseGaussianRandomVariate expects 2 argument, received: %1"},
    {"VexaMoyalRandomVariate", "VexaMoyalRandomVariate expects 2 argument, received: %1"},
    {"VexaNonCentralChiSquareRandomSample",
     "VexaNonCentralChiSquareRandomSample expects 4 or 6 arguments, received: %1"},
    {"VexaUniformProbability", "VexaUniformRandomVariate expects 3 arguments, received: %1"},
    {"VexaUniformDeviate", "VexaUniformRandomVariate expects 3 arguments, received: %1"},
    {"VexaNormalDeviateApprox", "VexaNormalDeviateApprox expects 1 arguments, received: %1"},
    {"VexaNormalWApprox", "VexaNormalDeviateApprox expects 1 arguments, received: %1"},
};

std::string Expected(const std::string& name, int count, int given) {
  auto it = kIrregular.find(name);
  std::string m = it != kIrregular.end()
                      ? it->second
                      : name + " expects " + std::to_string(count) +
                            (count == 1 ? " argument" : " arguments") + ", received: %1";
  std::string received;
  for (int i = 0; i < given; ++i) received += i ? ", 1" : "1";
  return m.replace(m.find("%1"), 2, received);
}

void CheckArity(const std::string& name, int count, int* checked) {
  EntryPoint f = Find(name);
  ASSERT_NE(f, nullptr) << name << " is not exported";
  for (int given : {count - 1, count + 1}) {
    if (given < 0 || (name == "VexaNonCentralChiSquareRandomSample" && given == 5)) continue;
    EXPECT_EQ(ErrorOf([&] { f(Kv(), Ones(given)); }), Expected(name, count, given)) << name;
  }
  ++*checked;
}

TEST(DistributionEntryPoints, ExistWithTheirCountsAndMessages) {
  int checked = 0;
  const char* operations[] = {"Probability", "Deviate", "RandomVariate", "RandomSample"};
  for (const auto& [dist, c] : kDistributions) {
    const int counts[] = {c.p, c.d, c.v, c.s};
    for (int op = 0; op < 4; ++op) {
      std::string name = "Vexa" + dist + operations[op];
      if (counts[op] == 0)
        EXPECT_EQ(Find(name), nullptr) << name << " should not exist";
      else
        CheckArity(name, counts[op], &checked);
    }
  }
  CheckArity("VexaNormalDeviateApprox", 1, &checked);
  CheckArity("VexaNormalWApprox", 1, &checked);
  EXPECT_EQ(checked, 129);  // 127 distribution operations and the two approximations
  // the six-argument form of the noncentral chi-square sample checks its procedures
  EntryPoint ncs = Find("VexaNonCentralChiSquareRandomSample");
  EXPECT_EQ(ErrorOf([&] { ncs(Kv(), Ones(6)); }),
            "procedure expected as fourth parameter to VexaNonCentralChiSquareRandomSample, "
            "received: 1");
  EntryPoint errorDeviate = Find("VexaErrorDeviate");
  EXPECT_EQ(ErrorOf([&] { errorDeviate(Kv(), Ones(6)); }),
            "VexaErrorDeviate expects a procedure as its second parameter, received: 1");
}

TEST(DistributionEntryPoints, OperationsOfLaterBuildsSaySoAfterCheckingArguments) {
  EntryPoint later = Find("VexaNonCentralChiSquareRandomVariate");
  EXPECT_EQ(ErrorOf([&] { later(Kv(), Ones(3)); }),
            "VexaNonCentralChiSquareRandomVariate is not available in this build");
  ALGEB symbolic =
      vexa::NewExpseq({vexa::NewName("q_unassigned"), vexa::NewInteger(1), vexa::NewInteger(1)});
  EXPECT_EQ(ErrorOf([&] { later(Kv(), symbolic); }),
            "unable to evaluate q_unassigned to floating-point");
}

TEST(TailType, MapsOntoTheLibraryTailsAndFoldsUnknownValuesOntoTheLowerTail) {
  EXPECT_EQ(STATS_ToNag_TailProbability_MP(STATS_PROBABILITY_TYPE_MP(1)), 1329);
  EXPECT_EQ(STATS_ToNag_TailProbability_MP(STATS_PROBABILITY_TYPE_MP(2)), 1330);
  EXPECT_EQ(STATS_ToNag_TailProbability_MP(STATS_PROBABILITY_TYPE_MP(3)), 1331);
  EXPECT_EQ(STATS_ToNag_TailProbability_MP(STATS_PROBABILITY_TYPE_MP(4)), 1332);
  EXPECT_EQ(STATS_ToNag_TailProbability_MP(STATS_PROBABILITY_TYPE_MP(0)), 1329);
  EXPECT_EQ(STATS_ToNag_TailProbability_MP(STATS_PROBABILITY_TYPE_MP(7)), 1329);
  for (int t = 1329; t <= 1332; ++t)
    EXPECT_EQ(STATS_ToNag_TailProbability_MP(ToPROBABILITY_TYPE(Nag_TailProbability(t))), t);
  EXPECT_EQ(ToPROBABILITY_TYPE(Nag_TailProbability(1000)), 1);
}

}  // namespace
