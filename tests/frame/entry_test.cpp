// The entry-point helper: arity messages, 1-based fetching and conversion, procedure and
// array checks with their messages, Digits and rounded results.
#include <gtest/gtest.h>

#include "support.h"

namespace {

using vexa::NewInteger;
using vexa::NewName;
using Entry = STATS_VexaEntry_MP;

ALGEB Seq(const std::vector<ALGEB>& items) {
  return vexa::NewExpseq(items);
}

TEST(Entry, ArityIsCheckedWithTheEntryPointsMessage) {
  ALGEB two = Seq({NewInteger(1), NewName("a")});
  EXPECT_EQ(ErrorOf([&] { Entry(Kv(), two, "VexaWeibullDeviate", 3); }),
            "VexaWeibullDeviate expects 3 arguments, received: 1, a");
  EXPECT_EQ(ErrorOf([&] { Entry(Kv(), two, "VexaExponentialRandomVariate", 1); }),
            "VexaExponentialRandomVariate expects 1 argument, received: 1, a");
  EXPECT_EQ(ErrorOf([&] { Entry(Kv(), vexa::Null(), "VexaBrentMethod", 6); }),
            "VexaBrentMethod expects 6 arguments, received: ");
  EXPECT_EQ(ErrorOf([&] { Entry(Kv(), two, "VexaQuantile", 6, Entry::ShortArityMessage(6)); }),
            "expected 6 arguments, received: 1, a");
  EXPECT_EQ(
      ErrorOf([&] { Entry(Kv(), two, "VexaTally", 1, "expected one argument, received: %1"); }),
      "expected one argument, received: 1, a");
  EXPECT_EQ(ErrorOf([&] { Entry(Kv(), two, "VexaWeibullDeviate", 2); }), "no error");
  EXPECT_EQ(Entry(Kv(), NewInteger(4), "VexaOne", 1).NumArgs(), 1);  // a lone value
}

TEST(Entry, ArgumentsAreFetchedFromOneAndConverted) {
  VexaDigitsScope digits(10);
  ALGEB x = NewName("x_unassigned");
  ALGEB proc = vexa::NewNativeProcedure("g", [](vexa::Kernel*, ALGEB) { return vexa::Null(); });
  ALGEB args = Seq(
      {vexa::NewRational(NewInteger(1), NewInteger(2)), NewName("Pi"), x, NewInteger(-7), proc});
  Entry entry(Kv(), args, "VexaBrentMethodHybridLeft", 5);
  EXPECT_EQ(Text(entry.Float(1)), "0.5");
  EXPECT_EQ(Text(entry.Float(2)), "3.141592654");
  EXPECT_EQ(ErrorOf([&] { entry.Float(3); }), "unable to evaluate x_unassigned to floating-point");
  EXPECT_EQ(entry.Integer(4), -7);
  EXPECT_NE(ErrorOf([&] { entry.Integer(1); }), "no error");
  EXPECT_EQ(entry.Procedure(5), proc);
  EXPECT_EQ(ErrorOf([&] { entry.Procedure(2); }),
            "VexaBrentMethodHybridLeft expects a procedure as its second parameter, received: Pi");
  EXPECT_EQ(ErrorOf([&] { entry.Procedure(3, Entry::ProcedureMessage("VexaBrentMethod", 3)); }),
            "VexaBrentMethod expects a procedure as its third parameter, received: x_unassigned");
  EXPECT_EQ(ErrorOf([&] { entry.RTable(4, "expected: one-dimensional array, received %1"); }),
            "expected: one-dimensional array, received -7");
  EXPECT_EQ(Entry::Ordinal(8), "eighth");
  EXPECT_EQ(Entry::Ordinal(13), "13th");
}

TEST(Entry, DigitsAreReadSetRestoredAndResultsRounded) {
  Entry entry(Kv(), vexa::Null(), "VexaDigits", 0);
  const int digits = entry.Digits();
  ALGEB previous = entry.SetDigits(digits + 3);
  EXPECT_EQ(entry.Digits(), digits + 3);
  EXPECT_EQ(STATS_GetVexaDigits_MP(), digits + 3);
  entry.RestoreDigits(previous);
  EXPECT_EQ(STATS_GetVexaDigits_MP(), digits);

  const VexaFloat r = VexaFloatFromString("1.23456789");
  EXPECT_EQ(entry.Result(r), r.Handle());
  EXPECT_EQ(vexa::Print(entry.Result(r, 4)), "1.235");
}

}  // namespace
