// The random sample entry point and its generators: the checks of a description in order,
// the type table against the distributions' own entry points, and the order of draws.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "frame/support.h"
#include "stats/random/generators.h"
#include "stats/random/random_stream.h"

namespace {

using vexa::NewInteger;
using vexa::NewList;

ALGEB I(long long v) {
  return NewInteger(v);
}
ALGEB F(const char* text) {
  return vexa::NewFloat(VexaFloatFromString(text));
}

ALGEB SampleArray(int n) {
  return STATS_CreateRandomSample_MP(Kv(), n, ToVexaNULL(Kv()));
}

// The argument sequence keeps a NULL procedure in its place.
ALGEB Sample(ALGEB out, ALGEB procedure, std::vector<ALGEB> generators, ALGEB flag = nullptr) {
  ALGEB args = NewVexaExpressionSequence(Kv(), 4);
  VexaExpseqAssign(Kv(), args, 1, out);
  VexaExpseqAssign(Kv(), args, 2, procedure);
  VexaExpseqAssign(Kv(), args, 3, NewList(generators));
  VexaExpseqAssign(Kv(), args, 4, flag ? flag : vexa::False());
  return STATS_VexaRandomSample_MP(Kv(), args);
}

VexaFloat Element(ALGEB a, int i) {
  return static_cast<VexaFloat*>(RTableDataBlock(Kv(), a))[i];
}

// [0, [description]]-style generator entries.
ALGEB Described(ALGEB description) {
  return NewList({I(0), description});
}

TEST(RandomSample, DescriptionsAreCheckedInOrder) {
  const std::string unable = "unable to initialize random variate generator with parameters ";
  ALGEB x = vexa::NewName("x_unassigned");
  struct Row {
    ALGEB description;
    std::string error;
  } rows[] = {
      {I(3), "expected: list, received: 3"},
      {NewList({I(24)}), "expected: list of size 2, received: [24]"},
      {NewList({I(300), NewList({})}),
       "invalid random variate type, expected: integer, received: 300"},
      {NewList({F("2.5"), NewList({})}),
       "invalid random variate type, expected: integer, received: 2.5"},
      {NewList({I(24), I(5)}), "expected: list of coefficients, received: 5"},
      // the count is checked before the code, the code before any parameter
      {NewList({I(40), NewList({I(1), I(2), I(3), I(4), I(5), I(6)})}),
       "invalid number of parameters: [1, 2, 3, 4, 5, 6]"},
      {NewList({I(24), NewList({x})}), "unable to evaluate x_unassigned to floating-point"},
      {NewList({I(0), NewList({x})}), unable + "[0, [0, [x_unassigned]]]"},
      {NewList({I(7), NewList({})}), unable + "[0, [7, []]]"},
      {NewList({I(32), NewList({})}), unable + "[0, [32, []]]"},
      {NewList({I(34), NewList({})}), unable + "[0, [34, []]]"},
      {NewList({I(-1), NewList({})}), unable + "[0, [-1, []]]"},  // unsigned comparison
  };
  for (const Row& r : rows)
    EXPECT_EQ(ErrorOf([&] { Sample(SampleArray(2), vexa::Null(), {Described(r.description)}); }),
              r.error);
  // kind 1, the envelope generator, accepts no description in this build
  EXPECT_EQ(
      ErrorOf([&] {
        Sample(SampleArray(2), vexa::Null(), {NewList({I(1), NewList({I(24), NewList({})})})});
      }),
      unable + "[1, [24, []]]");
}

TEST(RandomSample, ArgumentsAndOutputArrayAreChecked) {
  ALGEB normal = Described(NewList({I(24), NewList({I(0), I(1)})}));
  ALGEB name = vexa::NewName("not_an_array");
  // an empty generator list returns the first argument as it is
  EXPECT_EQ(Sample(name, vexa::Null(), {}), name);
  EXPECT_EQ(ErrorOf([&] {
              STATS_VexaRandomSample_MP(Kv(), vexa::NewExpseq({name, I(1)}));
            }),
            "expected 4 arguments, received: not_an_array, 1");
  EXPECT_EQ(ErrorOf([&] {
              STATS_VexaRandomSample_MP(Kv(), vexa::NewExpseq({name, I(0), I(5), I(0)}));
            }),
            "expected: vexa list, received: 5");
  RTableSettings s;
  RTableGetDefaults(Kv(), &s);
  s.num_dimensions = 1;
  M_INT bounds[2] = {1, 2};
  s.storage = RTABLE_SPARSE;
  ALGEB sparse = RTableCreate(Kv(), &s, nullptr, bounds);
  s.storage = RTABLE_RECT;
  ALGEB anything = RTableCreate(Kv(), &s, nullptr, bounds);
  s.data_type = RTABLE_FLOAT64;
  ALGEB doubles = RTableCreate(Kv(), &s, nullptr, bounds);
  EXPECT_EQ(ErrorOf([&] {
              Sample(sparse, vexa::Null(), {normal});
            }).rfind("output rtable has invalid storage type", 0),
            0u);
  for (ALGEB a : {anything, doubles})
    EXPECT_EQ(ErrorOf([&] {
                Sample(a, vexa::Null(), {normal});
              }).rfind("output rtable has invalid data type", 0),
              0u);
  EXPECT_EQ(ErrorOf([&] { Sample(SampleArray(2), I(5), {normal}); }),
            "expected: vexa procedure, received: 5");
  // the flag is converted before the procedure is checked
  EXPECT_NE(ErrorOf([&] { Sample(SampleArray(2), I(5), {normal}, vexa::NewString("s")); }),
            "expected: vexa procedure, received: 5");
  // [24, []]: a normal generator with mean and deviation 0
  ALGEB zeros = Sample(SampleArray(3), vexa::Null(), {Described(NewList({I(24), NewList({})}))});
  for (int i = 0; i < 3; ++i) EXPECT_EQ(Element(zeros, i), 0);
}

// Without a procedure the first generator alone fills the array, after every description has
// been checked; with one, the draws alternate g1, g2, g1, g2, ...
TEST(RandomSample, DrawOrder) {
  ALGEB unit = Described(NewList({I(31), NewList({I(0), I(1)})}));
  ALGEB shifted = Described(NewList({I(31), NewList({I(10), I(11)})}));
  ALGEB bad = Described(NewList({I(32), NewList({})}));
  vexa::SeedRandom(11);
  std::vector<VexaFloat> u;
  for (int i = 0; i < 6; ++i) u.push_back(STATS_VexaRandomStream_MP::NextDouble());

  EXPECT_NE(ErrorOf([&] {
              Sample(SampleArray(3), vexa::Null(), {unit, shifted, bad});
            }),
            "no error");
  vexa::SeedRandom(11);
  ALGEB first = Sample(SampleArray(3), vexa::Null(), {unit, shifted, unit});
  for (int i = 0; i < 3; ++i) EXPECT_EQ(Element(first, i), u[i]);

  std::vector<std::vector<VexaFloat>> seen;
  int calls = 0;
  ALGEB record = CountingProc(&calls, [&](ALGEB args) {
    seen.push_back({VexaFloat(vexa::Op(args, 1)), VexaFloat(vexa::Op(args, 2))});
    return vexa::NewFloat(VexaFloat(vexa::Op(args, 1)) + VexaFloat(vexa::Op(args, 2)));
  });
  vexa::SeedRandom(11);
  const vexa::RandomCounts before = vexa::RandomDrawn();
  ALGEB combined = Sample(SampleArray(3), record, {unit, shifted}, vexa::True());
  EXPECT_EQ(vexa::RandomDrawn().floats - before.floats, 6u);
  ASSERT_EQ(calls, 3);
  for (int k = 0; k < 3; ++k) {
    EXPECT_EQ(seen[k][0], u[2 * k]);
    EXPECT_EQ(seen[k][1], 10 + u[2 * k + 1]);
    EXPECT_EQ(Element(combined, k), u[2 * k] + (10 + u[2 * k + 1]));
  }
}

// Each type code reaches its distribution: a draw of the generator equals the draw of that
// distribution's RandomVariate entry point under the same seed.
TEST(RandomSample, TypeCodesReachTheirDistributions) {
  struct Row {
    int code;
    const char* name;
    std::vector<const char*> parameters;
  } rows[] = {
      {1, "Bernoulli", {"0.3"}},
      {2, "Beta", {"2", "3"}},
      {3, "Binomial", {"10", "0.4"}},
      {4, "Cauchy", {"0", "1"}},
      {5, "ChiSquare", {"3"}},
      {6, "DiscreteUniform", {"1", "6"}},
      {8, "Error", {"0", "1", "1.5"}},
      {9, "Exponential", {"2"}},
      {10, "FRatio", {"3", "5"}},
      {11, "Gamma", {"2.5", "2"}},
      {12, "Geometric", {"0.3"}},
      {13, "Gumbel", {"0", "1"}},
      {14, "Hypergeometric", {"20", "7", "5"}},
      {15, "InverseGaussian", {"1", "2"}},
      {16, "Laplace", {"0", "1"}},
      {17, "Logistic", {"0", "1"}},
      {18, "LogNormal", {"0", "1"}},
      {19, "Maxwell", {"2"}},
      {20, "Moyal", {"0", "1"}},
      {21, "NegativeBinomial", {"3", "0.4"}},
      {24, "Normal", {"0", "1"}},
      {25, "Pareto", {"1", "3"}},
      {26, "Poisson", {"4"}},
      {27, "Power", {"1", "2"}},
      {28, "Rayleigh", {"1"}},
      {29, "StudentT", {"4"}},
      {30, "Triangular", {"0", "2", "1"}},
      {31, "Uniform", {"0", "1"}},
      {33, "Weibull", {"1", "2"}},
  };
  for (const Row& r : rows) {
    std::vector<ALGEB> parameters;
    for (const char* p : r.parameters) parameters.push_back(F(p));
    using EntryPoint = ALGEB (*)(VexaKernelVector, ALGEB);
    std::string symbol = std::string("STATS_Vexa") + r.name + "RandomVariate_MP";
    auto entry = reinterpret_cast<EntryPoint>(dlsym(RTLD_DEFAULT, symbol.c_str()));
    ASSERT_NE(entry, nullptr) << symbol;
    vexa::SeedRandom(100 + r.code);
    const VexaFloat want(entry(Kv(), vexa::NewExpseq(parameters)));
    vexa::SeedRandom(100 + r.code);
    ALGEB got = Sample(SampleArray(1), vexa::Null(),
                       {Described(NewList({I(r.code), NewList(parameters)}))});
    EXPECT_EQ(Element(got, 0), want) << r.name;
  }
}

}  // namespace
