// Newton-Raphson and its safe and hybrid forms: quadratic convergence at two precisions, the
// bracket of the safe method where plain Newton cycles, accuracy through the entry points
// against the roots reference, messages and Digits on every way out.
#include <map>

#include "reference.h"
#include "support.h"

namespace {

const char* const kFailed = "NewtonRaphson root-finding method failed to converge.";
const char* const kMaxIter =
    "maximum number of iterations exceeded in Newton-Raphson root finding.";
const char* const kNoConvergence =
    "NewtonRaphsonHybrid was not able to converge on the specified root.";
const char* const kNotBracketed = "root must be bracketed by lower and upper boundaries.";

VexaFloat NormalDensity(const VexaFloat& x) {
  return exp(-x * x / 2) / sqrt(2 * VexaFloatPi());
}
VexaFloat NormalDistribution(const VexaFloat& x) {
  return VexaEvalf1("erfc", -x / sqrt(VexaFloat(2))) / 2;
}

TEST(NewtonRaphson, ConvergesQuadraticallyAt50And500Digits) {
  std::map<int, size_t> steps;
  for (int digits : {50, 500}) {
    SCOPED_TRACE("Digits " + std::to_string(digits));
    VexaDigitsScope scope(digits);
    const VexaFloat tol = pow(VexaFloat(10), VexaFloat(-digits));
    VexaFloat root;
    {
      VexaDigitsScope wide(digits + 20);
      root = sqrt(VexaFloat(2));
    }
    LoggedFunction f([](const VexaFloat& x) { return x * x; });
    LoggedFunction df([](const VexaFloat& x) { return 2 * x; });
    const VexaFloat x = STATS_NewtonRaphson_MP(Kv(), 2, f, df, 1, tol, 100);
    EXPECT_TRUE(fabs(x - root) <= 10 * tol) << Text(x);  // one unit in the last place
    // Each error at most the square of the one before (e' = e^2 / 2x here), down to the
    // last place.
    VexaDigitsScope wide(digits + 20);
    for (size_t k = 1; k < f.points.size(); ++k) {
      const VexaFloat before = fabs(f.values[k - 1] - root), after = fabs(f.values[k] - root);
      if (after > 10 * tol) {
        EXPECT_TRUE(after <= before * before) << "step " << k;
      }
    }
    steps[digits] = f.points.size();
    EXPECT_EQ(df.points.size(), f.points.size());
  }
  // Ten times the digits costs about log2(10) more steps; a linear method would need ten
  // times as many.
  EXPECT_LE(steps[50], 10u);
  EXPECT_LE(steps[500] - steps[50], 4u);
}

TEST(NewtonRaphson, SafeMethodKeepsItsBracketWherePlainNewtonCycles) {
  VexaDigitsScope scope(30);
  const VexaFloat tol = VexaFloatFromString("1e-30");
  // From 0 Newton on x^3 - 2x + 2 goes to 1 and back to 0 for ever.
  LoggedFunction f([](const VexaFloat& x) { return x * x * x - 2 * x; });
  LoggedFunction df([](const VexaFloat& x) { return 3 * x * x - 2; });
  EXPECT_EQ(ErrorOf([&] { STATS_NewtonRaphson_MP(Kv(), -2, f, df, 0, tol, 40); }), kMaxIter);
  EXPECT_EQ(f.points.size(), 40u);
  EXPECT_EQ(std::vector<double>(f.points.begin(), f.points.begin() + 4),
            std::vector<double>({0, 1, 0, 1}));
  // The safe method on [-2, 2] starts at the midpoint 0; with f(0) above the target the
  // bracket becomes [-2, 0] and the Newton step to 1 would leave it: it bisects instead.
  f.points.clear();
  const VexaFloat x = STATS_NewtonRaphsonSafe_MP(Kv(), -2, f, df, -2, 2, tol, 40);
  EXPECT_TRUE(fabs(x * x * x - 2 * x + 2) < VexaFloatFromString("1e-28")) << Text(x);
  EXPECT_TRUE(x < -1.76 && x > -1.78);
  EXPECT_LT(f.points.size(), 20u);
  EXPECT_EQ(std::vector<double>(f.points.begin(), f.points.begin() + 5),
            std::vector<double>({-2, 2, 0, -1, -1.5}));
  for (double p : f.points) EXPECT_TRUE(p >= -2 && p <= 2) << p;
}

TEST(NewtonRaphson, FailuresEndsAndBudget) {
  VexaDigitsScope scope(20);
  const VexaFloat tol = VexaFloatFromString("1e-20");
  LoggedFunction square([](const VexaFloat& x) { return x * x; });
  LoggedFunction twice([](const VexaFloat& x) { return 2 * x; });
  LoggedFunction undefined([](const VexaFloat&) { return VexaFloatUndefined(); });
  LoggedFunction zero([](const VexaFloat&) { return VexaFloat(0); });
  auto plain = [&](STATS_VexaCallbackAdapter_MP& f, STATS_VexaCallbackAdapter_MP& df, double x0,
                   int maxIter) {
    return ErrorOf([&] { STATS_NewtonRaphson_MP(Kv(), 1, f, df, x0, tol, maxIter); });
  };
  EXPECT_EQ(plain(square, twice, 0, 50), kFailed);  // f'(x0) = 0
  EXPECT_EQ(plain(undefined, twice, 3, 50), kFailed);
  EXPECT_EQ(plain(square, twice, 3, 0), kMaxIter);
  EXPECT_TRUE(STATS_NewtonRaphson_MP(Kv(), 9, square, twice, 3, tol, 1) == 3);  // f(x0) = y

  // The safe method: a zero at an end is returned from the end values alone; strict signs
  // fail the bracket check; a derivative of no use makes it bisect.
  EXPECT_TRUE(STATS_NewtonRaphsonSafe_MP(Kv(), 4, square, twice, 1, 2, tol, 50) == 2);
  EXPECT_EQ(ErrorOf([&] { STATS_NewtonRaphsonSafe_MP(Kv(), 5, square, twice, 1, 2, tol, 50); }),
            kNotBracketed);
  const VexaFloat bisected = STATS_NewtonRaphsonSafe_MP(Kv(), 2, square, zero, 1, 2, tol, 200);
  EXPECT_TRUE(fabs(bisected * bisected - 2) < VexaFloatFromString("1e-18"));
  EXPECT_GT(zero.points.size(), 50u);  // one halving per step

  // The search and the safe method share one budget: from the barrier 0 and 1 the line x
  // reaches fHigh = 100 in one step; the safe method evaluates the midpoint 50.5 and steps to
  // the root 50, which a third evaluation confirms.
  LoggedFunction line([](const VexaFloat& x) { return x; });
  LoggedFunction one([](const VexaFloat&) { return VexaFloat(1); });
  EXPECT_TRUE(STATS_NewtonRaphsonHybridLeft_MP(Kv(), 50, line, one, 0, 100, 0, 1, tol, 3) == 50);
  EXPECT_EQ(
      ErrorOf([&] { STATS_NewtonRaphsonHybridLeft_MP(Kv(), 50, line, one, 0, 100, 0, 1, tol, 2); }),
      kMaxIter);
  // The search's own failures name this family.
  EXPECT_EQ(ErrorOf([&] {
              STATS_NewtonRaphsonHybridLeft_MP(Kv(), 0.8, zero, one, 0, 1, 0, 0.5, tol, 50);
            }),
            kNoConvergence);
  EXPECT_EQ(
      ErrorOf([&] { STATS_NewtonRaphsonHybridUnbound_MP(Kv(), 0, one, one, -9, 9, 1, 1, tol, 9); }),
      "NewtonRaphsonHybridUnbound requires distinct initial points (InitPoint1 != "
      "InitPoint2).");
}

// The roots reference problems with their derivatives and starting data: x0 for the plain
// method, a bracket for the safe one, fLow, fHigh and two points for the unbound hybrid.
struct Problem {
  FloatFn f, df;
  std::vector<const char*> start;
};

TEST(NewtonRaphsonEntries, RootsToFullPrecisionAtSeveralDigits) {
  const std::map<std::string, Problem> problems = {
      {"cube 2",
       {[](const VexaFloat& x) { return x * x * x; },
        [](const VexaFloat& x) { return 3 * x * x; },
        {"1", "1", "2", "-100", "100", "1", "2"}}},
      {"exp 10",
       {[](const VexaFloat& x) { return exp(x); },
        [](const VexaFloat& x) { return exp(x); },
        {"2", "2", "3", "0", "100", "0", "1"}}},
      {"normal 0.975", {NormalDistribution, NormalDensity, {"0", "1", "3", "0", "1", "0", "1"}}},
      {"normal 0.025", {NormalDistribution, NormalDensity, {"0", "-3", "-1", "0", "1", "0", "1"}}}};
  const auto cases = vexa_test::ReadCases("roots.txt");
  ASSERT_EQ(cases.size(), problems.size());
  for (vexa_test::Case c : cases) {
    const Problem& p = problems.at(c.op + " " + c.args[0]);
    const VexaFloat want = VexaFloatFromString(c.expected);
    ALGEB f = FloatProc(p.f), df = FloatProc(p.df), y = Num(c.args[0].c_str());
    auto num = [&](int i) { return Num(p.start[i]); };
    for (int digits : {10, 50, 300}) {
      SCOPED_TRACE(c.op + " " + c.args[0] + " at Digits " + std::to_string(digits));
      VexaDigitsScope scope(digits);
      c.digits = digits;
      const VexaFloat plain(
          CallEntry(STATS_VexaNewtonRaphson_MP, {y, f, df, num(0), Int(1), Int(100)}));
      const VexaFloat safe(
          CallEntry(STATS_VexaNewtonRaphsonSafe_MP, {y, f, df, num(1), num(2), Int(1), Int(100)}));
      const VexaFloat hybrid(
          CallEntry(STATS_VexaNewtonRaphsonHybridUnbound_MP,
                    {y, f, df, num(3), num(4), num(5), num(6), Int(1), Int(200)}));
      EXPECT_EQ(VexaDigits(), digits);
      const VexaFloat roots[] = {plain, safe, hybrid};
      for (int i = 0; i < 3; ++i) {  // the hybrid answers at Digits + 3, the others at Digits
        EXPECT_TRUE(vexa_test::UlpError(c, roots[i], want) <= 1) << Text(roots[i]);
        EXPECT_EQ(VexaFloatRound(roots[i], digits) == roots[i], i < 2) << i;
      }
    }
  }
}

TEST(NewtonRaphsonEntries, MessagesAndDigitsOnEveryWayOut) {
  VexaDigitsScope scope(10);
  int seenDigits = 0;
  ALGEB failing = vexa::NewNativeProcedure("g", [&seenDigits](vexa::Kernel*, ALGEB) -> ALGEB {
    seenDigits = VexaDigits();
    vexa::RaiseFormatted("no value here");
  });
  ALGEB line = FloatProc([](const VexaFloat& x) { return x; });
  ALGEB one = FloatProc([](const VexaFloat&) { return VexaFloat(1); });
  const struct {
    EntryPoint entry;
    std::string name;
    int count;
  } entries[] = {{STATS_VexaNewtonRaphson_MP, "VexaNewtonRaphson", 6},
                 {STATS_VexaNewtonRaphsonSafe_MP, "VexaNewtonRaphsonSafe", 7},
                 {STATS_VexaNewtonRaphsonHybridLeft_MP, "VexaNewtonRaphsonHybridLeft", 9},
                 {STATS_VexaNewtonRaphsonHybridRight_MP, "VexaNewtonRaphsonHybridRight", 9},
                 {STATS_VexaNewtonRaphsonHybridUnbound_MP, "VexaNewtonRaphsonHybridUnbound", 9}};
  for (const auto& e : entries) {
    SCOPED_TRACE(e.name);
    // y = 0.5; points -2, 2 in every form (x0 = -2 for the plain method); tol digits 1.
    std::vector<ALGEB> args = {Num("0.5"), Int(5), Int(6)};
    if (e.count == 9) args.insert(args.end(), {Int(0), Int(1)});
    args.push_back(Int(-2));
    if (e.count > 6) args.push_back(Int(2));
    args.insert(args.end(), {Int(1), Int(50)});
    EXPECT_EQ(EntryError(e.entry, {Int(0)}),
              e.name + " expects " + std::to_string(e.count) + " arguments, received: 0");
    EXPECT_EQ(EntryError(e.entry, args),
              e.name + " expects a procedure as its second parameter, received: 5");
    args[1] = line;
    EXPECT_EQ(EntryError(e.entry, args),
              e.name + " expects a procedure as its third parameter, received: 6");
    // An error in f, then in df, raised at the working precision; Digits given back.
    for (int which : {1, 2}) {
      args[1] = which == 1 ? failing : line;
      args[2] = which == 2 ? failing : one;
      seenDigits = 0;
      EXPECT_EQ(EntryError(e.entry, args), "no value here");
      EXPECT_EQ(seenDigits, 13);
      EXPECT_EQ(VexaDigits(), 10);
    }
    // A failure of the method itself: no iterations at all.
    args[2] = one;
    args.back() = Int(0);
    EXPECT_EQ(EntryError(e.entry, args), e.count == 9 ? kNoConvergence : kMaxIter);
    EXPECT_EQ(VexaDigits(), 10);
    args.back() = Int(50);
    EXPECT_TRUE(VexaFloat(CallEntry(e.entry, args)) == 0.5);
  }
}

}  // namespace
