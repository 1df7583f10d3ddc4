// Kernel values through the external-call interface: builders, readers, type tests, the
// float test, printing, arithmetic and evaluation.
#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <cstring>
#include <random>

#include "host/kernel.h"
#include "host/nodes.h"
#include "tests/host/support.h"

namespace {

using namespace vexa;

using HostTest = vexa::testing::KernelTest;

using vexa::testing::I;
using vexa::testing::N;
ALGEB F(const char* s) {
  return VexaFloatFromString(s).Handle();
}
ALGEB Big(const char* s) {
  return NewIntegerFromString(s);
}
std::string P(ALGEB e) {
  return Print(e);
}

// The library's float test, spelled as the library spells it.
bool LooksLikeFloat(ALGEB e) {
  uintptr_t bits = reinterpret_cast<uintptr_t>(e);
  return (bits & 1) == 0 && (*reinterpret_cast<const uint32_t*>(e) >> 26) == 4;
}

// Expects a host error whose message is exactly `message`.
template <class F>
void ExpectError(F f, const std::string& message) {
  try {
    f();
    ADD_FAILURE() << "no error, expected: " << message;
  } catch (const HostError& e) {
    EXPECT_EQ(e.what(), message);
  }
}

TEST_F(HostTest, FloatTestHoldsForFloatsOnly) {
  std::vector<ALGEB> others = {I(0),
                               I(-7),
                               Big("123456789012345678901234567890"),
                               NewRational(I(3), I(4)),
                               N("x"),
                               NewName("loc", false),
                               NewString("s"),
                               NewList({I(1)}),
                               NewSet({I(1)}),
                               NewRange(I(1), I(5)),
                               NewEquation(N("a"), I(1)),
                               NewExpseq({I(1), I(2)}),
                               NewSum({N("x"), I(1)}),
                               NewProduct({I(2), N("x")}),
                               NewPower(N("x"), I(2)),
                               NewFunction(N("f"), {N("x")}),
                               NewIndexed(N("t"), {I(1)}),
                               NewNativeProcedure("p", [](Kernel*, ALGEB a) { return a; }),
                               NewTable(),
                               NewComplex(I(1), I(2)),
                               True(),
                               False(),
                               Fail(),
                               Null(),
                               NewRelation(kLess, N("x"), I(1)),
                               NewNot(True()),
                               NewAnd(True(), False())};
  RTableSettings s;
  RTableGetDefaults(kv, &s);
  M_INT b[2] = {1, 3};
  others.push_back(RTableCreate(kv, &s, nullptr, b));
  for (ALGEB e : others) EXPECT_FALSE(LooksLikeFloat(e)) << P(e);
  for (ALGEB e : {F("1.5"), F("0."), VexaFloatUndefined().Handle(), VexaFloatInfinity(-1).Handle(),
                  ToVexaFloat(kv, 0.1)})
    EXPECT_TRUE(LooksLikeFloat(e)) << P(e);
  // immediates: low bit set, up to the immediate range; beyond it a bignum node
  EXPECT_TRUE(IsImmediate(I(kMaxImmediate)));
  EXPECT_FALSE(IsImmediate(I(kMaxImmediate + 1)));
  EXPECT_EQ(P(I(kMaxImmediate + 1)), std::to_string(kMaxImmediate + 1));
  EXPECT_TRUE(Equal(Add(I(kMaxImmediate), I(1)), I(kMaxImmediate + 1)));
  EXPECT_TRUE(IsImmediate(Subtract(I(kMaxImmediate + 1), I(1))));  // canonical again
}

TEST_F(HostTest, PrintsEveryKind) {
  ALGEB x = N("x"), y = N("y");
  EXPECT_EQ(P(Big("-123456789012345678901234567890")), "-123456789012345678901234567890");
  EXPECT_EQ(P(NewRational(I(6), I(-8))), "-3/4");
  EXPECT_EQ(P(F("1.959963985")), "1.959963985");
  EXPECT_EQ(P(NewList({I(1), I(2), I(3)})), "[1, 2, 3]");
  EXPECT_EQ(P(NewSet({I(2), I(1), I(2)})), "{1, 2}");
  EXPECT_EQ(P(NewRange(I(1), I(5))), "1 .. 5");
  EXPECT_EQ(P(NewEquation(N("a"), N("b"))), "a = b");
  EXPECT_EQ(P(NewExpseq({N("a"), N("b")})), "a, b");
  EXPECT_EQ(P(NewString("say \"hi\"")), "\"say \\\"hi\\\"\"");
  EXPECT_EQ(P(Eval(NewSum({x, F("1.")}))), "x + 1.");
  EXPECT_EQ(P(Eval(NewProduct({I(2), NewPower(x, I(2))}))), "2*x^2");
  EXPECT_EQ(P(NewFunction(N("f"), {x, y})), "f(x, y)");
  EXPECT_EQ(P(Eval(NewSum({x, NewProduct({I(-1), y})}))), "x - y");
  EXPECT_EQ(P(NewPower(NewSum({x, I(1)}), NewRational(I(1), I(2)))), "(x + 1)^(1/2)");
  EXPECT_EQ(P(NewPower(I(-2), x)), "(-2)^x");
  EXPECT_EQ(P(NewProduct({x, NewPower(y, I(-2))})), "x/y^2");
  EXPECT_EQ(P(NewProduct({I(-1), x})), "-x");
  EXPECT_EQ(P(NewProduct({NewSum({x, I(1)}), y})), "(x + 1)*y");
  EXPECT_EQ(P(NewComplex(I(1), I(-2))), "1 - 2*I");
  EXPECT_EQ(P(NewIndexed(N("infolevel"), {N("Statistics")})), "infolevel[Statistics]");
  EXPECT_EQ(P(NewRelation(kLessEqual, x, I(1))), "x <= 1");
  EXPECT_EQ(P(True()) + P(False()) + P(Fail()), "truefalseFAIL");
  EXPECT_EQ(P(Null()), "");
  ALGEB t = NewTable();
  TablePut(t, N("a"), I(1));
  EXPECT_EQ(P(t), "table([a = 1])");
  EXPECT_EQ(P(NewNativeProcedure("p", [](Kernel*, ALGEB a) { return a; }, {"x"})),
            "proc (x) ... end proc");
}

TEST_F(HostTest, BuildersAndReaders) {
  EXPECT_EQ(VexaToInteger32(kv, ToVexaInteger(kv, -2147483648LL)), INT32_MIN);
  EXPECT_EQ(VexaToM_INT(kv, ToVexaInteger64(kv, INT64_MAX)), INT64_MAX);
  EXPECT_EQ(VexaToInteger64(kv, ToVexaInteger64(kv, INT64_MIN)), INT64_MIN);
  EXPECT_EQ(VexaToM_BOOL(kv, ToVexaBoolean(kv, 1)), 1);
  EXPECT_EQ(VexaToM_BOOL(kv, ToVexaBoolean(kv, 0)), 0);
  EXPECT_EQ(VexaToM_BOOL(kv, ToVexaBoolean(kv, -1)), -1);
  EXPECT_EQ(VexaToM_BOOL(kv, I(7)), 7);
  EXPECT_EQ(P(ToVexaFloat(kv, 0.1)), "0.1");
  EXPECT_EQ(P(ToVexaFloat(kv, -2.5e-300)), "-2.5e-300");
  EXPECT_EQ(VexaEvalhf(kv, ToVexaFloat(kv, 0.1)), 0.1);
  EXPECT_EQ(P(ToVexaFloat(kv, 100.0)), "100.");
  EXPECT_EQ(P(ToVexaFloat(kv, 1e22)), "1e22");
  EXPECT_EQ(P(ToVexaFloat(kv, 5e-324)), "5e-324");
  EXPECT_EQ(P(ToVexaFloat(kv, -1.7976931348623157e308)), "-1.7976931348623157e308");
  // the shortest decimal that reads back, for doubles of every exponent
  std::mt19937_64 bits(7);
  for (int i = 0; i < 2000; ++i) {
    uint64_t b = bits();
    double x;
    std::memcpy(&x, &b, sizeof x);
    if (!std::isfinite(x)) continue;
    char text[40];
    *std::to_chars(text, text + sizeof text - 1, x).ptr = 0;
    ASSERT_TRUE(VexaFloat(ToVexaFloat(kv, x)) == VexaFloatFromString(text)) << text;
  }
  EXPECT_EQ(P(ToVexaComplex(kv, 1.5, -2)), "1.5 - 2.*I");
  EXPECT_EQ(P(ToVexaComplexFloat(kv, F("1."), F("3."))), "1. + 3.*I");
  EXPECT_TRUE(IsVexaNULL(kv, ToVexaNULL(kv)));
  ExpectError([&] { VexaToInteger32(kv, F("1.5")); }, "expected an integer, received 1.5");
  ExpectError([&] { VexaToInteger32(kv, NewList({I(1)})); }, "expected an integer, received [1]");
  ExpectError([&] { VexaToInteger32(kv, I(1LL << 31)); },
              "expected an integer of at most 32 bits, received 2147483648");
  ExpectError([&] { VexaToM_INT(kv, F("2.")); }, "expected an integer, received 2.");
  ExpectError([&] { VexaToM_BOOL(kv, N("x")); },
              "expected true, false, FAIL or an integer, received x");
  ExpectError([&] { ToVexaComplexFloat(kv, N("x"), I(1)); },
              "expected a numeric real part, received x");
}

TEST_F(HostTest, TypeTests) {
  struct Row {
    ALGEB e;
    bool i8, i16, i32, i64;
  } rows[] = {{I(127), 1, 1, 1, 1},
              {I(-128), 1, 1, 1, 1},
              {I(128), 0, 1, 1, 1},
              {I(-32769), 0, 0, 1, 1},
              {I(1LL << 31), 0, 0, 0, 1},
              {I(-(1LL << 31)), 0, 0, 1, 1},
              {Big("9223372036854775807"), 0, 0, 0, 1},
              {Big("-9223372036854775808"), 0, 0, 0, 1},
              {Big("9223372036854775808"), 0, 0, 0, 0},
              {F("1."), 0, 0, 0, 0},
              {NewRational(I(1), I(2)), 0, 0, 0, 0}};
  for (const Row& r : rows) {
    EXPECT_EQ(IsVexaInteger8(kv, r.e), r.i8) << P(r.e);
    EXPECT_EQ(IsVexaInteger16(kv, r.e), r.i16) << P(r.e);
    EXPECT_EQ(IsVexaInteger32(kv, r.e), r.i32) << P(r.e);
    EXPECT_EQ(IsVexaInteger64(kv, r.e), r.i64) << P(r.e);
  }
  EXPECT_TRUE(IsVexaInteger(kv, Big("9223372036854775808")));
  for (ALGEB e : {I(3), Big("99999999999999999999999"), NewRational(I(1), I(3)), F("2.5"),
                  VexaFloatUndefined().Handle()})
    EXPECT_TRUE(IsVexaNumeric(kv, e)) << P(e);
  for (ALGEB e : {N("infinity"), NewComplex(I(1), I(1)), N("x"), NewString("1")})
    EXPECT_FALSE(IsVexaNumeric(kv, e)) << P(e);
  EXPECT_TRUE(IsVexaUnnamedZero(kv, I(0)));
  EXPECT_TRUE(IsVexaUnnamedZero(kv, F("0.")));
  EXPECT_FALSE(IsVexaUnnamedZero(kv, I(1)));
  EXPECT_FALSE(IsVexaUnnamedZero(kv, N("zero")));
  EXPECT_TRUE(IsVexaList(kv, NewList({})));
  EXPECT_FALSE(IsVexaList(kv, NewSet({})));
  EXPECT_TRUE(IsVexaProcedure(kv, Lookup(N("evalf"))));
  EXPECT_FALSE(IsVexaProcedure(kv, N("evalf")));
}

TEST_F(HostTest, ExactArithmetic) {
  EXPECT_EQ(P(Add(NewRational(I(1), I(3)), NewRational(I(1), I(6)))), "1/2");
  EXPECT_EQ(P(Add(NewRational(I(1), I(2)), NewRational(I(1), I(2)))), "1");
  EXPECT_TRUE(IsImmediate(Add(NewRational(I(1), I(2)), NewRational(I(1), I(2)))));
  EXPECT_EQ(P(Multiply(Big("99999999999999999999"), Big("99999999999999999999"))),
            "9999999999999999999800000000000000000001");
  EXPECT_EQ(P(Power(I(2), I(100))), "1267650600228229401496703205376");
  EXPECT_EQ(P(Power(NewRational(I(2), I(3)), I(-2))), "9/4");
  EXPECT_EQ(P(Power(I(4), NewRational(I(3), I(2)))), "8");
  EXPECT_EQ(P(Power(I(2), NewRational(I(1), I(2)))), "2^(1/2)");
  EXPECT_EQ(P(Divide(I(1), I(3))), "1/3");
  EXPECT_EQ(P(Add(I(1), F("0.5"))), "1.5");
  EXPECT_EQ(P(Divide(I(1), F("3."))), "0.3333333333");
  // a sign change keeps every digit (a negative literal is the number typed); a sum rounds
  EXPECT_EQ(P(Negate(F("1.28870330691452449339"))), "-1.28870330691452449339");
  EXPECT_EQ(P(Subtract(I(0), F("1.28870330691452449339"))), "-1.288703307");
  EXPECT_EQ(P(Negate(VexaFloatInfinity(1).Handle())), "Float(-infinity)");
  EXPECT_EQ(P(Multiply(NewComplex(I(1), I(1)), NewComplex(I(1), I(-1)))), "2");
  EXPECT_EQ(P(VexaNumericAdd(kv, NewRational(I(1), I(3)), I(1))), "4/3");
  EXPECT_EQ(Compare(NewRational(I(1), I(3)), F("0.3333333333")), 1);
  EXPECT_EQ(Compare(F("0.5"), NewRational(I(1), I(2))), 0);
  EXPECT_EQ(Compare(VexaFloatUndefined().Handle(), I(0)), 2);
  ExpectError([&] { Divide(I(1), I(0)); }, "numeric exception: division by zero");
  ExpectError([&] { VexaNumericAdd(kv, N("x"), I(1)); }, "expected a numeric value, received x");
}

TEST_F(HostTest, EvaluationAndEvalf) {
  ALGEB x = N("x");
  Unassign(x);
  ALGEB e = NewSum({x, I(1)});
  EXPECT_EQ(P(Evalf(e)), "x + 1.");
  EXPECT_FALSE(IsVexaNumeric(kv, Evalf(e)));
  Assign(x, I(2));
  EXPECT_EQ(P(Eval(NewSum({x, x, NewRational(I(1), I(2))}))), "9/2");
  EXPECT_EQ(P(Evalf(e)), "3.");
  Unassign(x);
  EXPECT_EQ(P(Eval(NewSum({x, x}))), "2*x");
  EXPECT_EQ(P(Eval(NewProduct({x, x, NewPower(x, I(-2))}))), "1");
  EXPECT_EQ(P(Evalf(NewRational(I(1), I(3)))), "0.3333333333");
  EXPECT_EQ(P(Evalf(NewRational(I(1), I(3)), 20)), "0.33333333333333333333");
  EXPECT_EQ(P(Evalf(N("Pi"), 30)), "3.14159265358979323846264338328");
  EXPECT_EQ(P(Evalf(N("infinity"))), "Float(infinity)");
  EXPECT_EQ(P(Evalf(NewProduct({I(-1), N("infinity")}))), "Float(-infinity)");
  EXPECT_EQ(P(Evalf(N("undefined"))), "Float(undefined)");
  EXPECT_EQ(P(Evalf(NewFunction(N("exp"), {I(1)}))), "2.718281828");
  EXPECT_EQ(P(Evalf(NewFunction(N("sqrt"), {I(2)}), 16)), "1.414213562373095");
  EXPECT_EQ(P(Evalf(NewFunction(N("sin"), {x}))), "sin(x)");
  EXPECT_EQ(P(Evalf(F("3.14159265358979"), 5)), "3.1416");
  EXPECT_EQ(P(Evalf(NewList({NewRational(I(1), I(4)), x}))), "[0.25, x]");
  // evalf through the host name, as the library calls it; Digits is restored
  ALGEB evalf = ToVexaName(kv, "evalf", 1);
  EXPECT_EQ(P(EvalVexaProc(kv, evalf, 2, NewRational(I(2), I(3)), I(5))), "0.66667");
  EXPECT_EQ(VexaDigits(), 10);
  EXPECT_EQ(P(EvalVexaProcedure(kv, evalf, NewFunction(N("ln"), {I(2)}))), "0.6931471806");
  EXPECT_DOUBLE_EQ(VexaEvalhf(kv, NewFunction(N("sin"), {I(1)})), std::sin(1.0));
  ExpectError([&] { VexaEvalhf(kv, x); }, "unable to evaluate x to a hardware float");
  // an unassigned function name gives the unevaluated call
  EXPECT_EQ(P(EvalVexaProc(kv, N("g"), 2, x, I(1))), "g(x, 1)");
}

TEST_F(HostTest, BooleanEvaluation) {
  EXPECT_TRUE(IsTrue(EvalBoolean(NewRelation(kLess, I(1), F("1.5")))));
  EXPECT_TRUE(IsTrue(EvalBoolean(NewEquation(I(1), F("1.")))));
  EXPECT_TRUE(IsFalse(EvalBoolean(NewAnd(True(), NewNot(True())))));
  EXPECT_TRUE(IsFail(EvalBoolean(NewOr(False(), Fail()))));
  ExpectError([&] { EvalBoolean(NewRelation(kLess, N("x"), I(1))); },
              "cannot determine if this expression is true or false: x < 1");
}

}  // namespace
