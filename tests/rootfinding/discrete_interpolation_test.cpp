// Discrete interpolation on step functions built from cumulative sums: quantiles, the bracket
// and budget rules, the pushes off the current point, the one-sided right and unbound forms,
// and the entry points.
#include <map>

#include "support.h"

namespace {

const char* const kMaxIter = "maximum number of iterations exceeded in discrete root finding.";
const char* const kNoConvergence =
    "DiscreteInterpolationHybrid was not able to converge to the specified root.";
const char* const kNotNondecreasing = "specified function is not a nondecreasing function.";

// Cumulative sums of the tenths 1, 3, 0, 2, 4 on 0..4: 0.1 0.4 0.4 0.6 1.
VexaFloat Tenths(const VexaFloat& x) {
  static const int kWeights[] = {1, 3, 0, 2, 4};
  int sum = 0;
  for (int i = 0; i <= FloatToInt(x) && i < 5; ++i) sum += kWeights[i];
  return VexaFloat(sum) / 10;
}

// The Poisson(3.5) distribution function as a running sum of its probabilities.
VexaFloat Poisson(const VexaFloat& x) {
  VexaFloat term = exp(VexaFloat(-3.5)), sum;
  for (int i = 0; i <= FloatToInt(x); ++i, term = term * 3.5 / i) sum += term;
  return sum;
}

FloatFn Table(std::map<int, double> values) {
  return [values](const VexaFloat& x) { return VexaFloat(values.at(FloatToInt(x))); };
}

TEST(DiscreteInterpolation, QuantilesOfStepFunctions) {
  VexaDigitsScope scope(10);
  LoggedFunction tenths(Tenths), poisson(Poisson);
  auto scan = [](const FloatFn& f, const VexaFloat& y) {
    long k = 0;
    while (f(VexaFloat(k)) < y) ++k;
    return k;
  };
  // On and between the steps, the repeated 0.4 of the empty weight included.
  for (const char* text : {"0", "0.05", "0.1", "0.25", "0.4", "0.5", "0.6", "0.61", "1"}) {
    const VexaFloat y = VexaFloatFromString(text);
    EXPECT_EQ(STATS_DiscreteInterpolation_MP(Kv(), y, tenths, -1, 7, 50), scan(Tenths, y)) << text;
  }
  for (int i = 1; i < 40; ++i) {
    const VexaFloat y = VexaFloat(i) / 40;
    const long want = scan(Poisson, y);
    EXPECT_EQ(STATS_DiscreteInterpolation_MP(Kv(), y, poisson, -1, 40, 50), want) << i;
    EXPECT_EQ(STATS_DiscreteInterpolationHybridLeft_MP(Kv(), y, poisson, 0, 1, -1, 1, 50), want);
    if (Poisson(VexaFloat(0)) < y) {
      EXPECT_EQ(STATS_DiscreteInterpolationHybridUnbound_MP(Kv(), y, poisson, 0, 1, 0, 2, 50),
                want);
    }
  }
}

TEST(DiscreteInterpolation, BracketEndsAndBudget) {
  VexaDigitsScope scope(10);
  LoggedFunction f(Tenths);
  EXPECT_EQ(STATS_DiscreteInterpolation_MP(Kv(), 0.25, f, 0, 1, 1), 1);  // no bisection
  EXPECT_EQ(STATS_DiscreteInterpolation_MP(Kv(), 0.05, f, 0, 4, 9), 0);  // f(0) > y
  EXPECT_EQ(f.points, std::vector<double>({0, 1, 0}));
  // f(1) = y exactly: the search goes on to the right, across the flat step to 2.
  EXPECT_EQ(STATS_DiscreteInterpolation_MP(Kv(), 0.4, f, 1, 4, 9), 2);
  EXPECT_EQ(ErrorOf([&] { STATS_DiscreteInterpolation_MP(Kv(), 0.7, f, 0, 3, 9); }),
            "root must be bracketed by left and right barriers.");
  EXPECT_EQ(ErrorOf([&] { STATS_DiscreteInterpolation_MP(Kv(), 0.25, f, 0, 1, 0); }), kMaxIter);

  // From (0, 0) and (1, 0.001) the left secant reaches 1 at 1000; [1, 1000] is then bisected,
  // and the count of bisections may not reach the budget left.
  LoggedFunction ramp([](const VexaFloat& x) { return VexaFloat(x < 1000 ? x : 1000) / 1000; });
  EXPECT_EQ(STATS_DiscreteInterpolation_MP(Kv(), 0.7, ramp, 1, 1000, 50), 700);
  const int n = static_cast<int>(ramp.points.size()) - 2;
  EXPECT_EQ(ErrorOf([&] { STATS_DiscreteInterpolation_MP(Kv(), 0.7, ramp, 1, 1000, n); }),
            kMaxIter);
  EXPECT_EQ(STATS_DiscreteInterpolationHybridLeft_MP(Kv(), 0.7, ramp, 0, 1, 0, 1, n + 2), 700);
  EXPECT_EQ(ErrorOf([&] {
              STATS_DiscreteInterpolationHybridLeft_MP(Kv(), 0.7, ramp, 0, 1, 0, 1, n + 1);
            }),
            kMaxIter);
  EXPECT_EQ(
      ErrorOf([&] { STATS_DiscreteInterpolationHybridLeft_MP(Kv(), 0.7, ramp, 0, 1, 0, 1, 0); }),
      kNoConvergence);
}

TEST(DiscreteInterpolationHybrid, LeftExtrapolation) {
  VexaDigitsScope scope(10);
  auto left = [](std::map<int, double> values, long init, std::vector<double>* points = nullptr) {
    LoggedFunction f(Table(values));
    long root = 0;
    const std::string error = ErrorOf(
        [&] { root = STATS_DiscreteInterpolationHybridLeft_MP(Kv(), 0.8, f, 0, 1, 0, init, 50); });
    if (points) *points = f.points;
    return error == "no error" ? std::to_string(root) : error;
  };
  // The secant from (0, 0) and (1, 0.6) reaches 1 at 1.67, lands on 1 and is pushed to 2.
  std::vector<double> points;
  EXPECT_EQ(left({{0, 0}, {1, 0.6}, {2, 0.9}}, 1, &points), "2");
  EXPECT_EQ(points, std::vector<double>({0, 1, 2, 1, 2}));
  // From (0, 0) and (2, 0.4) it reaches 1 at 5.
  EXPECT_EQ(left({{0, 0}, {2, 0.4}, {5, 0.4}}, 2), kNoConvergence);
  EXPECT_EQ(left({{0, 0}, {2, 0.4}, {5, 0.3}}, 2), kNotNondecreasing);
  EXPECT_EQ(left({{0, 0.5}, {2, 0.4}}, 2), kNotNondecreasing);  // the secant points back
  EXPECT_EQ(left({{0, 0}}, 0),
            "the specified initial point must be greater than the left barrier.");
}

TEST(DiscreteInterpolationHybrid, RightAndUnboundAreOneSided) {
  VexaDigitsScope scope(10);
  // f at the barrier 4 reaches y: handed over at once, and f(1) = 0.4 > 0.05 answers 1, not
  // the first point 0 at which f reaches 0.05.
  LoggedFunction f(Tenths);
  EXPECT_EQ(STATS_DiscreteInterpolationHybridRight_MP(Kv(), 0.05, f, 0, 1, 1, 4, 50), 1);
  EXPECT_EQ(f.points, std::vector<double>({1, 4, 1}));
  // Below y at the barrier 6: the secant through (5, 0) and (6, 0.2) reaches 0 at 5, is pushed
  // back to 4, where f is flat.
  LoggedFunction flat(Table({{4, 0}, {5, 0}, {6, 0.2}}));
  EXPECT_EQ(
      ErrorOf([&] { STATS_DiscreteInterpolationHybridRight_MP(Kv(), 0.5, flat, 0, 1, 5, 6, 9); }),
      kNoConvergence);
  EXPECT_EQ(flat.points, std::vector<double>({5, 6, 4}));
  EXPECT_EQ(
      ErrorOf([&] { STATS_DiscreteInterpolationHybridRight_MP(Kv(), 0.5, f, 0, 1, 2, 2, 9); }),
      "the specified initial point must be less than the right barrier.");

  const std::string outside = "the specified approximation point must be between function bounds.";
  auto unbound = [&](double y, long p1, long p2) {
    return ErrorOf(
        [&] { STATS_DiscreteInterpolationHybridUnbound_MP(Kv(), y, f, 0, 1, p1, p2, 9); });
  };
  EXPECT_EQ(unbound(2, 1, 1), outside);
  EXPECT_EQ(unbound(0.5, 1, 1),
            "DiscreteInterpolationHybridUnbound requires distinct initial points (InitPoint1 != "
            "InitPoint2).");
  EXPECT_EQ(STATS_DiscreteInterpolationHybridUnbound_MP(Kv(), 0.6, f, 0, 1, 0, 3, 9), 3);
  // Decreasing points: both ends are the second one, evaluated twice.
  f.points.clear();
  EXPECT_EQ(unbound(0.5, 4, 1),
            "the specified initial point must be greater than the left barrier.");
  EXPECT_EQ(f.points, std::vector<double>({1, 1}));
  // Above y at the smaller point: the right search is bounded below by that very value.
  EXPECT_EQ(unbound(0.2, 1, 3), outside);
}

TEST(DiscreteInterpolationEntries, ArgumentsMessagesAndResults) {
  VexaDigitsScope scope(10);
  ALGEB poisson = FloatProc(Poisson);
  // P(X <= 2) = 0.32, P(X <= 3) = 0.54, P(X <= 7) = 0.973, P(X <= 8) = 0.9901, P(X <= 9) = 0.9967.
  ALGEB r = CallEntry(STATS_VexaDiscreteInterpolation_MP,
                      {Num("0.5"), poisson, Int(-1), Int(30), Int(50)});
  ASSERT_TRUE(vexa::IsInteger(r));
  EXPECT_EQ(vexa::IntegerValue(r), 3);
  EXPECT_EQ(vexa::IntegerValue(
                CallEntry(STATS_VexaDiscreteInterpolationHybridLeft_MP,
                          {Num("0.99"), poisson, Int(0), Int(1), Int(-1), Int(1), Int(50)})),
            8);
  EXPECT_EQ(vexa::IntegerValue(
                CallEntry(STATS_VexaDiscreteInterpolationHybridRight_MP,
                          {Num("0.5"), poisson, Int(0), Int(1), Int(2), Int(30), Int(50)})),
            3);
  // Points are truncated: a right end of 8.7 is 8.
  EXPECT_EQ(EntryError(STATS_VexaDiscreteInterpolation_MP,
                       {Num("0.995"), poisson, Int(-1), Num("8.7"), Int(50)}),
            "root must be bracketed by left and right barriers.");

  EXPECT_EQ(EntryError(STATS_VexaDiscreteInterpolation_MP, {Int(1)}),
            "VexaDiscreteInterpolation expects 5 arguments, received: 1");
  EXPECT_EQ(
      EntryError(STATS_VexaDiscreteInterpolation_MP, {Num("0.5"), Int(5), Int(0), Int(1), Int(9)}),
      "VexaDiscreteInterpolation expects a procedure as its second parameter, received: 5");
  for (EntryPoint e :
       {STATS_VexaDiscreteInterpolationHybridLeft_MP, STATS_VexaDiscreteInterpolationHybridRight_MP,
        STATS_VexaDiscreteInterpolationHybridUnbound_MP}) {
    EXPECT_EQ(EntryError(e, {Int(1)}),
              "VexaDiscreteInterpolationHybrid expects 7 arguments, received: 1");
    EXPECT_EQ(EntryError(e, {Num("0.5"), Int(5), Int(0), Int(1), Int(0), Int(1), Int(9)}),
              "VexaDiscreteInterpolationHybridLeft expects a procedure as its second parameter, "
              "received: 5");
  }
  ALGEB failing = vexa::NewNativeProcedure(
      "g", [](vexa::Kernel*, ALGEB a) -> ALGEB { vexa::RaiseFormatted("no mass at %1", a); });
  EXPECT_EQ(
      EntryError(STATS_VexaDiscreteInterpolation_MP, {Num("0.5"), failing, Int(3), Int(9), Int(9)}),
      "no mass at 3.");
  EXPECT_EQ(VexaDigits(), 10);
}

}  // namespace
