// The four entry points: results, in-place work on the caller's rtable exactly when asked,
// missing data, and every message.
#include <gtest/gtest.h>

#include "descriptive/support.h"
#include "stats/descriptive/descriptive.h"

namespace {

using vexa::NewInteger;
using vexa::NewList;
using vexa::Print;

TEST(VexaQuantile, ProbabilitiesAndTheirChecks) {
  ALGEB data = SfloatRTable({"4", "1", "U", "3", "2"});
  auto quantile = [&](ALGEB p, bool ignore = true, int method = 1) {
    return Print(Call(STATS_VexaQuantile_MP,
                      {data, p, NoWeights(), Bool(ignore), NewInteger(method), Bool(false)}));
  };
  EXPECT_EQ(quantile(Num("0.5")), "2.");
  EXPECT_EQ(quantile(NewList({Num("0.9"), Num("0.1"), NewInteger(1)}), true, 6), "[3.7, 1.3, 4.]");
  EXPECT_EQ(quantile(NewList({})), "[]");
  // weighted, weights carried through the sort
  EXPECT_EQ(Print(Call(STATS_VexaQuantile_MP,
                       {SfloatRTable({"30", "10", "20"}), Num("0.5"), SfloatRTable({"5", "1", "1"}),
                        Bool(false), NewInteger(1), Bool(false)})),
            "30.");

  const std::string single =
      "expected: numeric constant or a list of numeric constants between 0 and 1, received ";
  EXPECT_EQ(ErrorOf([&] { quantile(vexa::NewName("p_unassigned")); }), single + "p_unassigned");
  for (const char* p : {"1.5", "-0.1"}) EXPECT_EQ(ErrorOf([&] { quantile(Num(p)); }), single + p);
  EXPECT_EQ(ErrorOf([&] { quantile(Num("U")); }), single + "Float(undefined)");
  EXPECT_EQ(ErrorOf([&] {
              quantile(NewList({Num("0.5"), Num("1.01")}));
            }),
            "expected: list of numeric constants between 0 and 1, received [0.5, 1.01]");
  EXPECT_EQ(ErrorOf([&] {
              Call(STATS_VexaQuantile_MP, {data, Num("0.5")});
            }),
            "expected 6 arguments, received: " + Print(data) + ", 0.5");
}

TEST(VexaQuantile, NoDataLeftGivesUndefined) {
  ALGEB missing = SfloatRTable({"U", "U"});
  auto quantile = [&](ALGEB p) {
    return Print(Call(STATS_VexaQuantile_MP,
                      {missing, p, NoWeights(), Bool(true), NewInteger(1), Bool(false)}));
  };
  EXPECT_EQ(quantile(Num("0.5")), "Float(undefined)");
  EXPECT_EQ(quantile(NewList({Num("0.5"), vexa::NewName("z")})),
            "[Float(undefined), Float(undefined)]");
  EXPECT_NE(ErrorOf([&] { quantile(vexa::NewString("p")); }), "no error");
  EXPECT_EQ(Print(Call(STATS_VexaMedian_MP, {missing, NoWeights(), Bool(true), Bool(false)})),
            "Float(undefined)");
  EXPECT_EQ(Print(Call(STATS_VexaOrderStatistic_MP,
                       {missing, NewList({NewInteger(1)}), NewInteger(0), Bool(true)})),
            "[Float(undefined)]");
  EXPECT_EQ(ErrorOf([&] {
              Call(STATS_VexaFivePointSummary_MP, {missing, Bool(true)});
            }),
            "data sample must contain at least five elements");
}

TEST(VexaMedian, WorksInPlaceOnlyWhenAllowed) {
  auto median = [](ALGEB data, bool ignore, bool inPlace) {
    return Print(Call(STATS_VexaMedian_MP, {data, NoWeights(), Bool(ignore), Bool(inPlace)}));
  };
  const std::string shuffled = "Array(1 .. 5, [5., 1., 4., 2., 3.], datatype = sfloat)";
  ALGEB own = SfloatRTable({"5", "1", "4", "2", "3"});
  EXPECT_EQ(median(own, false, false), "3.");
  EXPECT_EQ(median(own, true, true), "3.");
  EXPECT_EQ(Print(own), shuffled);
  EXPECT_EQ(median(own, false, true), "3.");
  EXPECT_NE(Print(own), shuffled);  // the caller's rtable, reordered as asked

  RTableData d[4] = {};
  for (int i = 0; i < 4; ++i) d[i].float64 = 4 - i;
  ALGEB hardware = MakeRTable(RTABLE_FLOAT64, RTABLE_RECT, 1, {d[0], d[1], d[2], d[3]});
  const std::string before = Print(hardware);
  EXPECT_EQ(median(hardware, false, true), "2.5");
  EXPECT_EQ(Print(hardware), before);  // converted: the caller's data are not touched

  EXPECT_EQ(ErrorOf([&] { Call(STATS_VexaMedian_MP, {own}); }),
            "expected 4 arguments, received: " + Print(own));
  EXPECT_EQ(
      Print(Call(STATS_VexaMedian_MP, {SfloatRTable({"3", "1", "2"}), SfloatRTable({"1", "1", "1"}),
                                       Bool(false), Bool(false)})),
      "2.");
}

TEST(VexaOrderStatistic, RanksFromEitherEnd) {
  ALGEB data = SfloatRTable({"7", "U", "3", "9", "5"});
  auto order = [&](ALGEB rank) {
    return Print(
        Call(STATS_VexaOrderStatistic_MP, {data, rank, vexa::NewName("ignored"), Bool(true)}));
  };
  EXPECT_EQ(order(NewInteger(1)), "3.");
  EXPECT_EQ(order(NewInteger(-1)), "9.");
  EXPECT_EQ(order(NewList({NewInteger(4), NewInteger(-4), NewInteger(2), NewInteger(2)})),
            "[9., 3., 5., 5.]");
  for (int rank : {0, 5})
    EXPECT_EQ(ErrorOf([&] { order(NewInteger(rank)); }),
              "index out of range: " + std::to_string(rank));
  EXPECT_EQ(ErrorOf([&] {
              order(NewList({NewInteger(1), NewInteger(-5)}));
            }),
            "index out of range: -5");
  EXPECT_EQ(ErrorOf([&] { order(vexa::NewIntegerFromString("100000000000")); }),
            "index out of range: 100000000000");
  EXPECT_EQ(ErrorOf([&] { order(Num("1.5")); }),
            "expected: integer or list of integers, received 1.5");
  EXPECT_EQ(ErrorOf([&] {
              order(NewList({NewInteger(1), Num("2.")}));
            }),
            "expected: integer or list of integers, received [1, 2.]");
  EXPECT_EQ(ErrorOf([&] { Call(STATS_VexaOrderStatistic_MP, {data}); }),
            "VexaOrderStatistic expects 4 arguments, received: " + Print(data));
  // without ignoring, the missing value is the largest
  EXPECT_EQ(
      Print(Call(STATS_VexaOrderStatistic_MP, {data, NewInteger(-1), NewInteger(0), Bool(false)})),
      "Float(undefined)");
  EXPECT_EQ(Print(data), "Array(1 .. 5, [7., Float(undefined), 3., 9., 5.], datatype = sfloat)");
}

TEST(VexaFivePointSummary, SummaryAndFailures) {
  ALGEB data = SfloatRTable({"6", "U", "1", "5", "2", "4", "3"});
  EXPECT_EQ(Print(Call(STATS_VexaFivePointSummary_MP, {data, Bool(true)})),
            "Array(1 .. 5, [1., 2., 3.5, 5., 6.], datatype = sfloat)");
  EXPECT_EQ(ErrorOf([&] {
              Call(STATS_VexaFivePointSummary_MP, {data, Bool(false)});
            }),
            "internal error occured in a NAG routine");
  EXPECT_EQ(ErrorOf([&] { Call(STATS_VexaFivePointSummary_MP, {data}); }),
            "expected two arguments, received: " + Print(data));
}

}  // namespace
