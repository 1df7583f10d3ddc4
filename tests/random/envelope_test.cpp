// The envelope generator: goodness of fit of normal and gamma samples at two precisions, the
// procedure calls per variate, one seed one sample, and the failures of a description.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "frame/support.h"
#include "stats/random/generators.h"
#include "stats/random/random_stream.h"

namespace {

using vexa::NewList;
using Fn = std::function<VexaFloat(VexaFloat)>;

ALGEB Proc(int* calls, Fn f) {
  return CountingProc(
      calls, [f](ALGEB a) { return vexa::NewFloat(f(VexaFloat(VexaExpseqSelect(Kv(), a, 1)))); });
}

ALGEB I(long v) {
  return vexa::NewInteger(v);
}

ALGEB MinusInfinity() {
  return vexa::NewFloat(VexaFloatInfinity(-1));
}

ALGEB Infinity() {
  return vexa::NewName("infinity");
}

struct Law {
  const char* name;
  Fn h, dh, cdf;
  ALGEB (*a)();
  std::vector<long> start;
};

const Law kLaws[] = {
    {"normal",
     [](VexaFloat x) { return -(x * x) / 2; },
     [](VexaFloat x) { return -x; },
     [](VexaFloat x) { return VexaEvalf1("erfc", -x / sqrt(VexaFloat(2))) / 2; },
     MinusInfinity,
     {-1, 1}},
    {"gamma(3)",
     [](VexaFloat x) { return 2 * log(x) - x; },
     [](VexaFloat x) { return 2 / x - 1; },
     [](VexaFloat x) { return 1 - exp(-x) * (1 + x + x * x / 2); },
     [] { return I(0); },
     {1, 4}},
};

TEST(Envelope, SamplesFitTheirLawsWithFewProcedureCalls) {
  for (int digits : {15, 40}) {
    VexaDigitsScope scope(digits);
    const int n = digits == 15 ? 3000 : 600;
    for (const Law& law : kLaws) {
      SCOPED_TRACE(std::string(law.name) + " at Digits " + std::to_string(digits));
      int calls = 0;
      std::vector<ALGEB> xs;
      for (long x : law.start) xs.push_back(I(x));
      ALGEB d =
          NewList({Proc(&calls, law.h), Proc(&calls, law.dh), law.a(), Infinity(), NewList(xs)});
      vexa::SeedRandom(17);
      STATS_EnvelopeGenerator_MP g(Kv());
      ASSERT_EQ(g.initialize(Kv(), d), 1);
      calls = 0;
      std::vector<VexaFloat> s(n);
      for (VexaFloat& v : s) v = g.next(Kv());
      // Gilks and Wild report a few evaluations per hundred variates once the hull has grown
      EXPECT_LT(static_cast<double>(calls) / n, 0.1) << calls << " calls";
      std::sort(s.begin(), s.end());
      double distance = 0;
      for (int i = 0; i < n; ++i) {
        const double F = std::stod(VexaFloatToString(law.cdf(s[i])));
        distance = std::max({distance, F - static_cast<double>(i) / n, (i + 1.0) / n - F});
      }
      EXPECT_LT(distance, 1.63 / std::sqrt(n));  // the 1% point of Kolmogorov's law
    }
  }
}

// The argument sequence of VexaRandomSample with a NULL procedure and one generator of kind 1.
ALGEB Sample(int n, ALGEB description) {
  ALGEB args = NewVexaExpressionSequence(Kv(), 4);
  VexaExpseqAssign(Kv(), args, 1, STATS_CreateRandomSample_MP(Kv(), n, ToVexaNULL(Kv())));
  VexaExpseqAssign(Kv(), args, 2, vexa::Null());
  VexaExpseqAssign(Kv(), args, 3, NewList({NewList({I(1), description})}));
  VexaExpseqAssign(Kv(), args, 4, vexa::False());
  return STATS_VexaRandomSample_MP(Kv(), args);
}

TEST(Envelope, OneSeedOneSampleThroughTheEntryPoint) {
  VexaDigitsScope digits(20);
  int calls = 0;
  const Law& law = kLaws[1];
  ALGEB d =
      NewList({Proc(&calls, law.h), Proc(&calls, law.dh), I(0), Infinity(), NewList({I(1), I(4)})});
  vexa::SeedRandom(8);
  ALGEB first = Sample(50, d);
  vexa::SeedRandom(8);
  ALGEB second = Sample(50, d);
  auto* a = static_cast<VexaFloat*>(RTableDataBlock(Kv(), first));
  auto* b = static_cast<VexaFloat*>(RTableDataBlock(Kv(), second));
  for (int i = 0; i < 50; ++i) {
    EXPECT_EQ(a[i], b[i]);
    EXPECT_GT(a[i], 0);
  }
}

TEST(Envelope, UnusableDescriptionsAndDensitiesAreReported) {
  VexaDigitsScope digits(10);
  int calls = 0;
  ALGEB h = Proc(&calls, kLaws[0].h), dh = Proc(&calls, kLaws[0].dh);
  ALGEB wavy = Proc(&calls, [](VexaFloat x) { return VexaEvalf1("cos", 3 * x) - x * x; });
  ALGEB wavyDh = Proc(&calls, [](VexaFloat x) { return -3 * VexaEvalf1("sin", 3 * x) - 2 * x; });
  ALGEB symbolic = CountingProc(&calls, [](ALGEB) { return vexa::NewName("a"); });
  ALGEB raising =
      CountingProc(&calls, [](ALGEB a) -> ALGEB { vexa::RaiseFormatted("no value at %1", a); });
  ALGEB minf = MinusInfinity(), inf = Infinity(), start = NewList({I(-1), I(1)});
  const std::string unable = "unable to initialize random variate generator with parameters ";
  const struct {
    ALGEB description;
    std::string message;
  } rows[] = {
      {I(3), "expected: list, received: 3"},
      {NewList({h, dh}), "expected: list of size 5, received: "},
      {NewList({I(3), dh, minf, inf, start}), "expected: procedure (log-density), received: 3"},
      {NewList({h, I(3), minf, inf, start}),
       "expected: procedure (derivative of the log-density), received: 3"},
      {NewList({h, dh, I(1), I(1), start}), "expected: support a < b, received: 1, 1"},
      {NewList({h, dh, minf, inf, I(5)}), "expected: list of starting abscissae, received: 5"},
      {NewList({h, dh, minf, inf, NewList({I(0)})}),
       "expected: at least two starting abscissae, received: [0]"},
      {NewList({h, dh, minf, inf, NewList({I(1), I(0)})}),
       "expected: increasing starting abscissae inside the support, received: [1, 0]"},
      {NewList({h, dh, I(0), I(1), NewList({I(0), I(2)})}),
       "expected: increasing starting abscissae inside the support, received: [0, 2]"},
      // the left tail is unbounded but the hull rises there: no envelope
      {NewList({h, dh, minf, inf, NewList({I(1), I(2)})}), unable},
      {NewList({wavy, wavyDh, minf, inf, NewList({I(-2), I(-1), I(0), I(1), I(2)})}),
       "the density is not log-concave"},
      {NewList({wavy, wavyDh, minf, inf, start}), "the density is not log-concave"},
      // a hull of 64 points still far too wide to draw from
      {NewList({h, dh, minf, inf,
                NewList({vexa::NewFloat(VexaFloatFromString("-1e100")),
                         vexa::NewFloat(VexaFloatFromString("1e100"))})}),
       "the envelope sampler made no draw in 10000 trials; start the hull nearer the mode"},
      {NewList({symbolic, dh, minf, inf, start}), "unable to evaluate a to floating-point"},
      {NewList({h, raising, minf, inf, start}), "no value at -1."},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.message);
    vexa::SeedRandom(1);
    const std::string error = ErrorOf([&] { Sample(400, row.description); });
    EXPECT_EQ(error.rfind(row.message, 0), 0u) << error;
    EXPECT_EQ(VexaDigits(), 10);
  }
}

}  // namespace
