// Callback adapters and guarded evaluation over host procedures and native functions.
#include <gtest/gtest.h>

#include "support.h"

namespace {

using vexa::NewInteger;
using vexa::NewName;
using Args = STATS_VexaUtils_MP::VexaCallbackArgs;

ALGEB Third() {
  return vexa::NewRational(NewInteger(1), NewInteger(3));
}

TEST(ProcAdapter, PassesAFloatAndEvaluatesExactResultsLeniently) {
  VexaDigitsScope digits(10);
  int calls = 0;
  ALGEB seen = nullptr;
  STATS_VexaProcAdapter_MP adapter(Kv(), CountingProc(&calls, [&](ALGEB a) {
                                     seen = VexaExpseqSelect(Kv(), a, 1);
                                     return Third();
                                   }));
  STATS_VexaCallbackAdapter_MP& f = adapter;
  const VexaFloat x(0.5);
  EXPECT_EQ(Text(f.Call(x)), "0.3333333333");
  EXPECT_EQ(seen, x.Handle());  // the argument is the float itself

  const struct {
    ALGEB result;
    std::string expected;
  } rows[] = {{NewName("Pi"), "3.141592654"},
              {NewName("infinity"), "Float(infinity)"},
              {NewName("undefined"), "Float(undefined)"},
              {vexa::NewFloat(VexaFloatInfinity(-1)), "Float(-infinity)"}};
  for (const auto& row : rows) {
    adapter.Reset(CountingProc(&calls, [&](ALGEB) { return row.result; }));
    EXPECT_EQ(Text(f.Call(x)), row.expected);
  }

  calls = 0;
  adapter.Reset(CountingProc(
      &calls, [](ALGEB a) -> ALGEB { vexa::RaiseFormatted("my own error at %1", a); }));
  EXPECT_EQ(ErrorOf([&] { f.Call(x); }), "my own error at 0.5");
  EXPECT_EQ(calls, 1);
}

VexaFloat Square(VexaFloat x) {
  return x * x;
}

TEST(CFuncAdapter, CallsTheNativeFunctionAndTheSharedProcedureAdapter) {
  STATS_VexaCFuncAdapter_MP adapter(Kv(), Square);
  STATS_VexaCallbackAdapter_MP& f = adapter;
  EXPECT_TRUE(f.Call(VexaFloat(1.5)) == 2.25);

  int calls = 0;
  STATS_VexaStaticProcAdapter_MP::Reset(CountingProc(
      &calls, [](ALGEB a) { return vexa::Add(VexaExpseqSelect(Kv(), a, 1), NewInteger(1)); }));
  adapter.Reset(STATS_VexaStaticProcAdapter_MP::Call);
  EXPECT_TRUE(f.Call(VexaFloat(1.5)) == 2.5);
  EXPECT_EQ(calls, 1);
}

TEST(EvalfVexaProc, EvaluatesAtArgumentsOneToCount) {
  VexaDigitsScope digits(10);
  int calls = 0;
  std::vector<std::string> received;
  ALGEB proc = CountingProc(&calls, [&](ALGEB a) {
    received.clear();
    for (int i = 1; i <= VexaNumArgs(Kv(), a); ++i)
      received.push_back(vexa::Print(VexaExpseqSelect(Kv(), a, i)));
    return received.empty() ? NewInteger(7) : Third();
  });
  VexaFloat values[] = {VexaFloatUndefined(), VexaFloat(1.5), VexaFloat(-2)};
  Args args{proc, nullptr, 2, values};
  EXPECT_EQ(Text(STATS_VexaUtils_MP::EvalfVexaProc(&args)), "0.3333333333");
  EXPECT_EQ(received, (std::vector<std::string>{"1.5", "-2."}));

  args.count = 0;
  EXPECT_EQ(Text(STATS_VexaUtils_MP::EvalfVexaProc(&args)), "7.");
  EXPECT_TRUE(received.empty());
  EXPECT_EQ(calls, 2);
}

TEST(EvalfVexaProc, FailureCostsOneMoreCallAndShowsTheProceduresTerms) {
  ALGEB x = NewName("x_unassigned");
  const struct {
    std::function<ALGEB(ALGEB)> body;
    std::string message;
  } rows[] = {
      {[](ALGEB) { return NewName("infinity"); }, "unable to evaluate infinity to floating-point"},
      {[](ALGEB) { return vexa::NewFloat(VexaFloatInfinity(-1)); },
       "unable to evaluate Float(-infinity) to floating-point"},
      {[](ALGEB) { return NewName("undefined"); },
       "unable to evaluate undefined to floating-point"},
      {[&](ALGEB) {
         return vexa::NewSum({x, NewInteger(1)});
       },
       "unable to evaluate x_unassigned + 1 to floating-point"},
      {[](ALGEB a) -> ALGEB { vexa::RaiseFormatted("my own error at %1", a); },
       "my own error at 0.25"},
  };
  for (const auto& row : rows) {
    int calls = 0;
    VexaFloat values[] = {VexaFloat(), VexaFloat(0.25)};
    Args args{CountingProc(&calls, row.body), nullptr, 1, values};
    EXPECT_EQ(ErrorOf([&] { STATS_VexaUtils_MP::EvalfVexaProc(&args); }), row.message);
    EXPECT_EQ(calls, 2) << row.message;
  }
}

}  // namespace
