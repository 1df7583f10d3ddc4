// Kernel services: names and Digits, procedures, raising and trapping errors, sequences,
// lists and tables, the random source and info messages.
#include <gtest/gtest.h>

#include <cstdio>
#include <random>

#include "host/kernel.h"
#include "tests/host/support.h"

namespace {

using namespace vexa;

using ServicesTest = vexa::testing::KernelTest;

using vexa::testing::I;
using vexa::testing::N;

using vexa::testing::ErrorOf;

TEST_F(ServicesTest, NamesAndDigits) {
  ALGEB g = ToVexaName(kv, "gvar", 1);
  EXPECT_EQ(g, ToVexaName(kv, "gvar", 1));
  ALGEB l1 = ToVexaName(kv, "gvar", 0), l2 = ToVexaName(kv, "gvar", 0);
  EXPECT_NE(l1, g);
  EXPECT_NE(l1, l2);
  EXPECT_FALSE(IsVexaAssignedName(kv, g));
  EXPECT_EQ(VexaEval(kv, g), g);  // unassigned names evaluate to themselves
  EXPECT_EQ(VexaAssign(kv, g, I(5)), g);
  EXPECT_EQ(Print(VexaAssign(kv, g, I(6))), "5");
  EXPECT_TRUE(IsVexaAssignedName(kv, g));
  EXPECT_FALSE(IsVexaAssignedName(kv, l1));
  Unassign(g);

  ALGEB digits = ToVexaName(kv, "Digits", 1);
  EXPECT_EQ(VexaToInteger32(kv, VexaEval(kv, digits)), 10);
  EXPECT_EQ(Print(VexaAssign(kv, digits, I(25))), "10");
  EXPECT_EQ(VexaDigits(), 25);
  EXPECT_EQ(Print(Evalf(NewRational(I(1), I(7)))), "0.1428571428571428571428571");
  {
    VexaDigitsScope scope(12);  // the float library's own changes show through the name
    EXPECT_EQ(VexaToInteger32(kv, VexaEval(kv, digits)), 12);
  }
  for (ALGEB bad : {I(0), I(1000001), VexaFloatFromString("15.").Handle(), N("x")}) {
    EXPECT_EQ(ErrorOf([&] { VexaAssign(kv, digits, bad); }),
              "Digits must be an integer from 1 to 1000000, received " + Print(bad));
    EXPECT_EQ(VexaDigits(), 25);
  }
  VexaAssign(kv, digits, I(10));
}

TEST_F(ServicesTest, ErrorsFormatTrapAndReraise) {
  ALGEB e = NewSum({N("x"), I(1)});
  EXPECT_EQ(ErrorOf([&] { VexaRaiseError(kv, "plain 100%"); }), "plain 100%");
  EXPECT_EQ(ErrorOf([&] { VexaRaiseError1(kv, "unable to evaluate %1 to floating-point", e); }),
            "unable to evaluate x + 1 to floating-point");
  EXPECT_EQ(ErrorOf([&] { VexaRaiseError2(kv, "%2 before %1, %1 again", I(1), NewList({})); }),
            "[] before 1, 1 again");
  EXPECT_EQ(ErrorOf([&] {
              VexaRaiseError1(kv, "expects 3 arguments, received: %1", NewExpseq({I(1), N("a")}));
            }),
            "expects 3 arguments, received: 1, a");

  // trap: a value comes back with the flag clear; a raise sets the flag
  M_BOOL flag = -5;
  int payload = 41;
  void* r = VexaTrapError(
      kv, [](void* p) -> void* { return static_cast<int*>(p) + 1; }, &payload, &flag);
  EXPECT_EQ(flag, 0);
  EXPECT_EQ(r, &payload + 1);
  r = VexaTrapError(
      kv, [](void*) -> void* { VexaRaiseError1(GetKernel(), "bad %1", NewInteger(3)); }, nullptr,
      &flag);
  EXPECT_EQ(flag, 1);
  EXPECT_EQ(r, nullptr);
  // nested: the inner trap catches, the caller re-raises through the outer one
  struct Ctx {
    M_BOOL inner = 0;
  } ctx;
  r = VexaTrapError(
      kv,
      [](void* p) -> void* {
        Ctx* c = static_cast<Ctx*>(p);
        VexaTrapError(
            GetKernel(), [](void*) -> void* { VexaRaiseError(GetKernel(), "inner"); }, nullptr,
            &c->inner);
        if (c->inner) VexaRaiseError(GetKernel(), "re-raised");
        return nullptr;
      },
      &ctx, &flag);
  EXPECT_EQ(ctx.inner, 1);
  EXPECT_EQ(flag, 1);
}

TEST_F(ServicesTest, Procedures) {
  ALGEB add = NewNativeProcedure("addall", [](Kernel* k, ALGEB args) {
    ALGEB s = NewInteger(0);
    for (M_INT i = 1; i <= VexaNumArgs(k, args); ++i)
      s = VexaNumericAdd(k, s, VexaExpseqSelect(k, args, i));
    return s;
  });
  EXPECT_EQ(Print(EvalVexaProc(kv, add, 3, I(1), NewRational(I(1), I(2)), I(2))), "7/2");
  EXPECT_EQ(Print(EvalVexaProc(kv, add, 0)), "0");
  ALGEB args = NewVexaExpressionSequence(kv, 2);
  VexaExpseqAssign(kv, args, 1, I(4));
  VexaExpseqAssign(kv, args, 2, I(5));
  EXPECT_EQ(Print(EvalVexaProcedure(kv, add, args)), "9");
  // through a name, and from evaluation of a call
  Assign(N("addall"), add);
  EXPECT_EQ(Print(Eval(NewFunction(N("addall"), {I(1), I(2)}))), "3");
  // errors inside carry where they were raised
  try {
    EvalVexaProc(kv, N("addall"), 1, N("y"));
    ADD_FAILURE();
  } catch (const HostError& e) {
    EXPECT_STREQ(e.what(), "expected a numeric value, received y");
    EXPECT_EQ(e.where, "addall");
  }
  Unassign(N("addall"));
  // an interpreted procedure plugs in through hooks
  static const ProcedureHooks hooks = {
      [](Kernel* k, ALGEB, void* body, ALGEB a) {
        return VexaNumericAdd(k, VexaExpseqSelect(k, a, 1), static_cast<ALGEB>(body));
      },
      [](void*) { return std::string("proc (x) x + 10 end proc"); }};
  ALGEB p = NewInterpretedProcedure(I(10), &hooks, {"x"});
  EXPECT_EQ(Print(EvalVexaProc(kv, p, 1, I(5))), "15");
  EXPECT_EQ(Print(p), "proc (x) x + 10 end proc");
  EXPECT_EQ(ErrorOf([&] { EvalVexaProc(kv, I(3), 0); }), "expected a procedure, received 3");
}

TEST_F(ServicesTest, SequencesListsTables) {
  ALGEB s = NewVexaExpressionSequence(kv, 3);
  EXPECT_EQ(VexaNumArgs(kv, s), 3);
  VexaExpseqAssign(kv, s, 3, N("c"));
  EXPECT_EQ(VexaExpseqSelect(kv, s, 3), N("c"));
  EXPECT_EQ(VexaNumArgs(kv, Null()), 0);
  EXPECT_EQ(ErrorOf([&] { VexaExpseqSelect(kv, s, 4); }),
            "index 4 out of range 1 .. 3 of " + Print(s));
  EXPECT_EQ(ErrorOf([&] { NewVexaExpressionSequence(kv, -1); }),
            "an expression sequence needs 0 to 2^31 slots, received -1");

  ALGEB l = VexaListAlloc(kv, 2);
  VexaListAssign(kv, l, 1, I(8));
  EXPECT_EQ(Print(l), "[8, 0]");
  EXPECT_EQ(VexaListLength(kv, l), 2);
  EXPECT_EQ(VexaListLength(kv, VexaListAlloc(kv, 0)), 0);
  EXPECT_EQ(VexaListSelect(kv, l, 1), I(8));
  EXPECT_EQ(ErrorOf([&] { VexaListSelect(kv, l, 0); }), "index 0 out of range 1 .. 2 of [8, 0]");
  EXPECT_EQ(ErrorOf([&] { VexaListSelect(kv, I(1), 1); }), "expected a list, received 1");

  ALGEB t = VexaTableAlloc(kv);
  for (int i = 0; i < 200; ++i) VexaTableAssign(kv, t, I(i), I(i * i));
  VexaTableAssign(kv, t, NewList({I(1), N("a")}), NewString("list key"));
  VexaTableAssign(kv, t, VexaFloatFromString("0.5").Handle(), N("half"));
  EXPECT_EQ(VexaTableSelect(kv, t, I(150)), I(22500));
  EXPECT_EQ(VexaTableSelect(kv, t, NewList({I(1), N("a")})) != nullptr, true);  // structural
  EXPECT_TRUE(VexaTableHasEntry(kv, t, VexaFloatFromString("0.50").Handle()));
  EXPECT_FALSE(VexaTableHasEntry(kv, t, NewRational(I(1), I(2))));
  EXPECT_EQ(VexaTableSelect(kv, t, I(-1)), nullptr);
  EXPECT_TRUE(TableRemove(t, I(3)));
  EXPECT_FALSE(VexaTableHasEntry(kv, t, I(3)));
  EXPECT_EQ(TableEntries(t).size(), 201u);
  // indexed assignment makes a table of an unassigned name
  ALGEB tt = N("tt");
  Unassign(tt);
  AssignIndexed(tt, {N("k")}, I(1));
  EXPECT_EQ(Print(Eval(NewIndexed(tt, {N("k")}))), "1");
  EXPECT_EQ(Print(Eval(NewIndexed(tt, {N("z")}))), "tt[z]");
  Unassign(tt);
}

TEST_F(ServicesTest, RandomSource) {
  VexaRandomSeed(kv, kDefaultRandomSeed);
  std::mt19937 reference(kDefaultRandomSeed);
  for (int i = 0; i < 100; ++i) EXPECT_EQ(VexaRandomInt32(kv), reference());
  // randomize(n) through the host name gives a reproducible stream
  EvalVexaProc(kv, N("randomize"), 1, I(42));
  uint32_t a = VexaRandomInt32(kv);
  VexaRandomSeed(kv, 42);
  EXPECT_EQ(VexaRandomInt32(kv), a);

  for (int digits : {1, 10, 30}) {
    VexaDigitsScope scope(digits);
    ALGEB one = I(1);
    std::vector<int> firstDigit(10, 0);
    for (int i = 0; i < 2000; ++i) {
      ALGEB u = VexaRandomSoftwareFloat01(kv);
      ASSERT_TRUE(IsFloat(u));
      ASSERT_GE(Compare(u, I(0)), 0);
      ASSERT_LT(Compare(u, one), 0);
      // a multiple of 10^-digits
      VexaFloat scaled = VexaFloat(u) * VexaFloat(Power(I(10), I(digits)));
      ASSERT_TRUE(floor(scaled) == scaled) << Print(u);
      ++firstDigit[FloatToInt(VexaFloat(u) * 10)];
    }
    for (int d = 0; d < 10; ++d) {
      EXPECT_GT(firstDigit[d], 140) << "digits " << digits << " leading " << d;
      EXPECT_LT(firstDigit[d], 260) << "digits " << digits << " leading " << d;
    }
  }
}

// What a session state puts back: values of names (unassigning those assigned since), Digits
// and the random stream; not what was done inside a shared table.
TEST_F(ServicesTest, SessionStateSavedAndRestored) {
  ALGEB kept = N("kept");
  Assign(kept, I(1));
  Unassign(N("later"));
  Assign(N("table"), NewTable());
  int digits = VexaDigits();
  SessionState state = SaveSessionState();
  uint32_t next = NextRandomWord();
  Assign(N("kept"), I(2));
  Assign(N("later"), I(3));
  AssignIndexed(N("table"), {I(1)}, I(4));
  Assign(N("Digits"), I(digits + 7));
  RestoreSessionState(state);
  EXPECT_EQ(Lookup(N("kept")), I(1));
  EXPECT_EQ(Lookup(N("later")), nullptr);
  EXPECT_EQ(TableGet(Lookup(N("table")), I(1)), I(4));
  EXPECT_EQ(VexaDigits(), digits);
  EXPECT_EQ(NextRandomWord(), next);
  ALGEB made = N("madeSince");
  RestoreSessionState(state, true);
  EXPECT_NE(N("madeSince"), made);
  EXPECT_EQ(N("kept"), kept);  // names known before stay, with their values
  EXPECT_EQ(Lookup(kept), I(1));
  Unassign(N("kept"));
  Unassign(N("table"));
}

TEST_F(ServicesTest, UserInfo) {
  std::FILE* out = std::tmpfile();
  SetInfoStream(out);
  ALGEB infolevel = N("infolevel");
  VexaUserInfo(kv, 1, "Statistics", "hidden");
  AssignIndexed(infolevel, {N("Statistics")}, I(1));
  VexaUserInfo(kv, 1, "Statistics", "missing data has been detected");
  VexaUserInfo(kv, 2, "Statistics", "too verbose");
  VexaUserInfo(kv, 2, "hints", "hidden");
  AssignIndexed(infolevel, {N("all")}, I(2));
  VexaUserInfo(kv, 2, "hints", "shown through all");
  SetInfoStream(stdout);
  std::rewind(out);
  char buf[512] = {0};
  size_t n = std::fread(buf, 1, sizeof buf - 1, out);
  std::fclose(out);
  EXPECT_EQ(std::string(buf, n),
            "Statistics: missing data has been detected\nhints: shown through all\n");
  TableRemove(Lookup(infolevel), N("all"));
  TableRemove(Lookup(infolevel), N("Statistics"));
}

}  // namespace
