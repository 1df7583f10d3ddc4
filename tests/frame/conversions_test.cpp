// Host values to VexaFloat: the float test, evalf under a trap, rtable elements by data type.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "support.h"

namespace {

using vexa::NewInteger;
using vexa::NewName;

VexaFloat Strict(ALGEB e) {
  return STATS_VexaUtils_MP::VexaDAGToDouble(e);
}

TEST(VexaDAGToDouble, FloatsPassUnchangedAndOthersGoThroughEvalf) {
  VexaDigitsScope digits(10);
  // A float with more digits than Digits is taken as it is: evalf would round it.
  ALGEB longFloat = vexa::NewFloat(VexaFloatFromString("0.1234567890123456789"));
  EXPECT_EQ(Strict(longFloat).Handle(), longFloat);
  EXPECT_EQ(Text(Strict(NewInteger(3))), "3.");  // immediate: never read as a node
  EXPECT_EQ(Text(Strict(vexa::NewIntegerFromString("123456789012345678901234567890"))),
            "1.23456789e29");
  EXPECT_EQ(Text(Strict(vexa::NewRational(NewInteger(1), NewInteger(3)))), "0.3333333333");
  EXPECT_EQ(Text(Strict(NewName("Pi"))), "3.141592654");
}

TEST(VexaDAGToDouble, NonNumericArgumentsAreReportedAsGiven) {
  ALGEB x = NewName("x_unassigned");
  ALGEB sum = vexa::NewSum({x, NewInteger(1)});
  EXPECT_EQ(ErrorOf([&] { Strict(x); }), "unable to evaluate x_unassigned to floating-point");
  EXPECT_EQ(ErrorOf([&] { Strict(sum); }),
            "unable to evaluate " + vexa::Print(sum) + " to floating-point");
  EXPECT_EQ(ErrorOf([&] { STATS_VexaUtils_MP::ReportNonNumeric(x); }),
            "unable to evaluate x_unassigned to floating-point");

  VexaFloat out(5);
  EXPECT_FALSE(STATS_VexaUtils_MP::VexaDAGToDouble(sum, &out));
  EXPECT_TRUE(out == 0);
  EXPECT_TRUE(STATS_VexaUtils_MP::VexaDAGToDouble(vexa::NewFloat(VexaFloat(2.5)), &out));
  EXPECT_TRUE(out == 2.5);
}

TEST(VexaEvalhfInternal, EvaluatesInHardwareFloatingPoint) {
  VexaDigitsScope digits(30);
  ALGEB third = vexa::NewRational(NewInteger(1), NewInteger(3));
  auto* r = static_cast<VexaFloat*>(STATS_VexaUtils_MP::VexaEvalhfInternal(third));
  EXPECT_TRUE(*r == VexaFloat(1.0 / 3.0));
}

// One element of a one-element rtable of each data type, read back through RTableSelect.
VexaFloat Element(int datatype, RTableData d) {
  RTableSettings s;
  RTableGetDefaults(Kv(), &s);
  s.data_type = datatype;
  s.num_dimensions = 1;
  M_INT bounds[2] = {1, 1}, index[1] = {1};
  ALGEB rt = RTableCreate(Kv(), &s, &d, bounds);
  return RTableDataToDouble(Kv(), RTableSelect(Kv(), rt, index), datatype);
}

TEST(RTableDataToDouble, EveryDataType) {
  VexaDigitsScope digits(20);
  RTableData d{};
  d.dag = vexa::NewRational(NewInteger(1), NewInteger(4));
  EXPECT_EQ(Text(Element(RTABLE_DAG, d)), "0.25");
  d.cxdag = {NewInteger(5), NewInteger(0)};
  EXPECT_EQ(Text(Element(RTABLE_CXDAG, d)), "5.");
  d = {};
  d.int8 = -128;
  EXPECT_EQ(Text(Element(RTABLE_INTEGER8, d)), "-128.");
  d.int16 = -30000;
  EXPECT_EQ(Text(Element(RTABLE_INTEGER16, d)), "-30000.");
  d.int32 = -2000000000;
  EXPECT_EQ(Text(Element(RTABLE_INTEGER32, d)), "-2000000000.");
  d.int64 = (INTEGER64(1) << 53) + 1;  // exact: not rounded through a double
  EXPECT_EQ(Text(Element(RTABLE_INTEGER64, d)), "9007199254740993.");
  d.float64 = 0.1;
  EXPECT_EQ(Text(Element(RTABLE_FLOAT64, d)), "0.10000000000000000555");
  d.complexf64 = {2.5, 0.0};
  EXPECT_EQ(Text(Element(RTABLE_COMPLEX, d)), "2.5");
  d = {};
  d.float32 = 0.1f;
  EXPECT_EQ(Text(Element(RTABLE_FLOAT32, d)), "0.10000000149011611938");
}

TEST(RTableDataToDouble, NonNumericElementsRaiseAndHardwareFloatsNeverDo) {
  RTableData d{};
  d.dag = NewName("y_unassigned");
  EXPECT_EQ(ErrorOf([&] { Element(RTABLE_DAG, d); }), "expected vexa float, received y_unassigned");
  d.cxdag = {NewInteger(5), NewInteger(1)};
  EXPECT_NE(ErrorOf([&] { Element(RTABLE_CXDAG, d); }).find("expected vexa float, received"),
            std::string::npos);
  d.complexf64 = {2.5, 1e-300};
  EXPECT_NE(ErrorOf([&] { Element(RTABLE_COMPLEX, d); }).find("expected vexa float, received"),
            std::string::npos);

  const double inf = std::numeric_limits<double>::infinity();
  d = {};
  d.float64 = inf;
  EXPECT_TRUE(IsVexaFloatInfinity(Element(RTABLE_FLOAT64, d)));
  d.float64 = -inf;
  EXPECT_TRUE(IsVexaFloatNegativeInfinity(Element(RTABLE_FLOAT64, d)));
  d.float64 = std::nan("");
  EXPECT_TRUE(IsVexaFloatUndefined(Element(RTABLE_FLOAT64, d)));
  d.float32 = std::nanf("");
  EXPECT_TRUE(IsVexaFloatUndefined(Element(RTABLE_FLOAT32, d)));
}

}  // namespace
