// Brent's method and its hybrids: accuracy at three precisions through the entry points, the
// tolerance rule, messages and Digits on every way out, the bracket and budget rules and the
// extrapolation failures.
#include <map>

#include "reference.h"
#include "support.h"

namespace {

const char* const kMaxIter = "maximum number of iterations exceeded in Brent root finding.";
const char* const kNoConvergence =
    "BrentMethodHybrid was not able to converge on the specified root.";
const char* const kNotNondecreasing = "specified function is not a nondecreasing function.";

// f(x) - y with target 0 for cube and exp; the normal distribution function with target y.
std::pair<FloatFn, VexaFloat> Problem(const std::string& op, const VexaFloat& y) {
  if (op == "cube") return {[y](const VexaFloat& x) { return x * x * x - y; }, VexaFloat(0)};
  if (op == "exp") return {[y](const VexaFloat& x) { return exp(x) - y; }, VexaFloat(0)};
  return {[](const VexaFloat& x) { return VexaEvalf1("erfc", -x / sqrt(VexaFloat(2))) / 2; }, y};
}

TEST(BrentEntries, RootsToFullPrecisionAtSeveralDigits) {
  // lower, upper; the bounds of f and the two starting points of the unbound hybrid (the
  // normal cases go through its left and its right search).
  const std::map<std::string, std::vector<const char*>> setup = {
      {"cube 2", {"1", "2", "-100", "100", "1", "2"}},
      {"exp 10", {"2", "3", "-100", "100", "0", "1"}},
      {"normal 0.975", {"1", "3", "0", "1", "0", "1"}},
      {"normal 0.025", {"-3", "-1", "0", "1", "0", "1"}}};
  const auto cases = vexa_test::ReadCases("roots.txt");
  ASSERT_EQ(cases.size(), setup.size());
  for (vexa_test::Case c : cases) {
    const auto& s = setup.at(c.op + " " + c.args[0]);
    const VexaFloat want = VexaFloatFromString(c.expected);
    for (int digits : {10, 50, 300}) {
      SCOPED_TRACE(c.op + " " + c.args[0] + " at Digits " + std::to_string(digits));
      VexaDigitsScope scope(digits);
      c.digits = digits;
      const auto p = Problem(c.op, VexaFloatFromString(c.args[0]));
      ALGEB f = FloatProc(p.first), y = vexa::NewFloat(p.second);
      const VexaFloat plain(
          CallEntry(STATS_VexaBrentMethod_MP, {y, f, Num(s[0]), Num(s[1]), Int(1), Int(200)}));
      EXPECT_EQ(VexaDigits(), digits);
      EXPECT_TRUE(vexa_test::UlpError(c, plain, want) <= 1) << Text(plain);
      EXPECT_TRUE(VexaFloatRound(plain, digits) == plain);
      const VexaFloat hybrid(
          CallEntry(STATS_VexaBrentMethodHybridUnbound_MP,
                    {y, f, Num(s[2]), Num(s[3]), Num(s[4]), Num(s[5]), Int(1), Int(200)}));
      EXPECT_EQ(VexaDigits(), digits);
      EXPECT_TRUE(vexa_test::UlpError(c, hybrid, want) <= 1) << Text(hybrid);
      EXPECT_FALSE(VexaFloatRound(hybrid, digits) == hybrid) << "answered at Digits + 3";
    }
  }
}

TEST(BrentEntries, ToleranceUnderflowsBeyond323Digits) {
  // A sign function is never zero: the search ends only on the tolerance.
  const VexaFloat step = VexaFloatFromString("0.3");
  ALGEB sign = FloatProc([step](const VexaFloat& x) { return VexaFloat(x < step ? -1 : 1); });
  const std::vector<ALGEB> args = {Int(0), sign, Int(0), Int(1), Int(1), Int(2000)};
  VexaDigitsScope scope(300);
  EXPECT_TRUE(fabs(VexaFloat(CallEntry(STATS_VexaBrentMethod_MP, args)) - step) <
              VexaFloatFromString("1e-299"));
  VexaSetDigits(324);
  EXPECT_EQ(EntryError(STATS_VexaBrentMethod_MP, args), kMaxIter);
  EXPECT_EQ(VexaDigits(), 324);
}

TEST(BrentEntries, MessagesAndDigitsOnEveryWayOut) {
  VexaDigitsScope scope(10);
  int seenDigits = 0;
  ALGEB failing = vexa::NewNativeProcedure("g", [&seenDigits](vexa::Kernel*, ALGEB) -> ALGEB {
    seenDigits = VexaDigits();
    vexa::RaiseFormatted("no value here");
  });
  ALGEB cube = FloatProc([](const VexaFloat& x) { return x * x * x - 2; });
  const struct {
    EntryPoint entry;
    std::string name, procName;
  } entries[] = {{STATS_VexaBrentMethod_MP, "VexaBrentMethod", "VexaBrentMethod"},
                 {STATS_VexaBrentMethodHybridLeft_MP, "VexaBrentMethodHybridLeft",
                  "VexaBrentMethodHybridLeft"},
                 {STATS_VexaBrentMethodHybridRight_MP, "VexaBrentMethodHybridRight",
                  "VexaBrentMethodHybridUnbound"},
                 {STATS_VexaBrentMethodHybridUnbound_MP, "VexaBrentMethodHybridUnbound",
                  "VexaBrentMethodHybridUnbound"}};
  for (const auto& e : entries) {
    const bool plain = e.name == "VexaBrentMethod";
    std::vector<ALGEB> args = {Int(0), Int(5), Int(1), Int(2), Int(1), Int(50)};
    if (!plain) args = {Int(0), Int(5), Int(-9), Int(9), Int(1), Int(2), Int(1), Int(50)};
    EXPECT_EQ(EntryError(e.entry, {Int(0)}),
              e.name + " expects " + (plain ? "6" : "8") + " arguments, received: 0");
    EXPECT_EQ(EntryError(e.entry, args),
              e.procName + " expects a procedure as its second parameter, received: 5");
    args[1] = failing;
    seenDigits = 0;
    EXPECT_EQ(EntryError(e.entry, args), "no value here");
    EXPECT_EQ(seenDigits, 13);
    EXPECT_EQ(VexaDigits(), 10);
  }
  EXPECT_EQ(EntryError(STATS_VexaBrentMethod_MP, {Int(0), cube, Int(2), Int(3), Int(1), Int(50)}),
            "root must be bracketed by lower and upper boundaries.");
  EXPECT_EQ(VexaDigits(), 10);
}

TEST(BrentMethod, EndsBracketAndBudget) {
  VexaDigitsScope scope(20);
  const VexaFloat tol = VexaFloatFromString("1e-20");
  LoggedFunction line([](const VexaFloat& x) { return x; });
  // A zero at either end is found from the two end values alone; a zero end passes the
  // bracket check, strict signs do not.
  EXPECT_TRUE(STATS_BrentMethod_MP(Kv(), 2, line, 1, 2, tol, 50) == 2);
  EXPECT_TRUE(STATS_BrentMethod_MP(Kv(), 1, line, 1, 2, tol, 50) == 1);
  EXPECT_EQ(line.points, std::vector<double>({1, 2, 1, 2}));
  EXPECT_EQ(ErrorOf([&] { STATS_BrentMethod_MP(Kv(), 3, line, 1, 2, tol, 50); }),
            "root must be bracketed by lower and upper boundaries.");
  EXPECT_EQ(ErrorOf([&] { STATS_BrentMethod_MP(Kv(), 2, line, 1, 2, tol, 0); }), kMaxIter);
  // Brent's first secant step on [1, 100] lands on 50; the left hybrid from the barrier 0 and
  // 1 spends one step reaching fHigh = 100 first, the right one from 99 and 100 reaching 0.
  EXPECT_TRUE(STATS_BrentMethod_MP(Kv(), 50, line, 1, 100, tol, 2) == 50);
  EXPECT_EQ(ErrorOf([&] { STATS_BrentMethod_MP(Kv(), 50, line, 1, 100, tol, 1); }), kMaxIter);
  EXPECT_TRUE(STATS_BrentMethodHybridLeft_MP(Kv(), 50, line, 0, 100, 0, 1, tol, 3) == 50);
  EXPECT_EQ(ErrorOf([&] { STATS_BrentMethodHybridLeft_MP(Kv(), 50, line, 0, 100, 0, 1, tol, 2); }),
            kMaxIter);
  EXPECT_TRUE(STATS_BrentMethodHybridRight_MP(Kv(), 50, line, 0, 100, 99, 100, tol, 3) == 50);
  EXPECT_EQ(
      ErrorOf([&] { STATS_BrentMethodHybridRight_MP(Kv(), 50, line, 0, 100, 99, 100, tol, 2); }),
      kMaxIter);
  // No budget: the hybrids give up even with the root bracketed already.
  EXPECT_EQ(ErrorOf([&] { STATS_BrentMethodHybridLeft_MP(Kv(), 0.5, line, 0, 1, 0, 1, tol, 0); }),
            kNoConvergence);
}

TEST(BrentMethodHybrid, ExtrapolationFailuresAndChecks) {
  VexaDigitsScope scope(20);
  const VexaFloat tol = VexaFloatFromString("1e-20");
  // From (0, 0) and (0.5, f(0.5)) towards fHigh 1 (left), from (0.5, f(0.5)) and (1, 1)
  // towards fLow 0 (right). The secant reaches its bound at 1 (left) and 0 (right).
  auto search = [&](bool left, FloatFn fn, double y) {
    LoggedFunction f(fn);
    return ErrorOf([&] {
      left ? STATS_BrentMethodHybridLeft_MP(Kv(), y, f, 0, 1, 0, 0.5, tol, 50)
           : STATS_BrentMethodHybridRight_MP(Kv(), y, f, 0, 1, 0.5, 1, tol, 50);
    });
  };
  // f(x) = x on the side of 0.5 where the search starts, value on the side it goes to.
  auto beyond = [](bool left, double value) {
    return [left, value](const VexaFloat& x) {
      return (left ? x <= 0.5 : x >= 0.5) ? x : VexaFloat(value);
    };
  };
  EXPECT_EQ(search(true, beyond(true, 0.5), 0.8), kNoConvergence);     // flat step
  EXPECT_EQ(search(true, beyond(true, 0.4), 0.8), kNotNondecreasing);  // falling step
  EXPECT_EQ(search(false, beyond(false, 0.5), 0.2), kNoConvergence);
  EXPECT_EQ(search(false, beyond(false, 0.6), 0.2), kNotNondecreasing);
  auto constant = [](double v) { return [v](const VexaFloat&) { return VexaFloat(v); }; };
  EXPECT_EQ(search(true, constant(-0.5), 0.8), kNotNondecreasing);  // secant points back
  EXPECT_EQ(search(true, constant(0), 0.8), kNoConvergence);        // flat secant
  EXPECT_EQ(search(false, constant(1), 0.2), kNoConvergence);
  EXPECT_EQ(search(true, constant(0), 1.5),
            "the specified approximation point must be between function bounds.");

  LoggedFunction id([](const VexaFloat& x) { return x; });
  EXPECT_EQ(ErrorOf([&] { STATS_BrentMethodHybridLeft_MP(Kv(), 0.5, id, 0, 1, 1, 1, tol, 9); }),
            "the specified initial point must be greater than the left barrier.");
  EXPECT_EQ(ErrorOf([&] { STATS_BrentMethodHybridRight_MP(Kv(), 0.5, id, 0, 1, 1, 1, tol, 9); }),
            "the specified initial point must be less than the right barrier.");
  EXPECT_EQ(ErrorOf([&] { STATS_BrentMethodHybridUnbound_MP(Kv(), 0, id, -9, 9, 1, 1, tol, 9); }),
            "BrentMethodHybridUnbound requires distinct initial points (InitPoint1 != "
            "InitPoint2).");
  EXPECT_TRUE(STATS_BrentMethodHybridUnbound_MP(Kv(), 4, id, -9, 9, 4, 3, tol, 9) == 4);
}

}  // namespace
