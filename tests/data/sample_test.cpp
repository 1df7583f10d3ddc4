// Host rtables as vectors and samples: every element type, both storages, in-place use,
// missing data, and the failures.
#include <gtest/gtest.h>

#include <cmath>

#include "data/support.h"
#include "stats/data/data.h"

namespace {

RTableData Dag(ALGEB e) {
  RTableData d{};
  d.dag = e;
  return d;
}

std::string VectorText(ALGEB rt) {
  STATS_Vector_MP v(Kv(), rt);
  return Texts(v.data(), v.size());
}

TEST(Vector, EveryElementType) {
  VexaDigitsScope digits(20);
  RTableData a{}, b{};
  a.int8 = static_cast<INTEGER8>(0xFF), b.int8 = 7;
  EXPECT_EQ(VectorText(MakeRTable(RTABLE_INTEGER8, RTABLE_RECT, 1, {a, b})), "[-1., 7.]");
  a.int16 = -30000, b.int16 = 2;
  EXPECT_EQ(VectorText(MakeRTable(RTABLE_INTEGER16, RTABLE_RECT, 1, {a, b})), "[-30000., 2.]");
  a.int32 = -2000000000;
  EXPECT_EQ(VectorText(MakeRTable(RTABLE_INTEGER32, RTABLE_RECT, 1, {a})), "[-2000000000.]");
  a.int64 = (INTEGER64(1) << 53) + 1;  // through a double: rounded
  b.int64 = -5;
  EXPECT_EQ(VectorText(MakeRTable(RTABLE_INTEGER64, RTABLE_RECT, 1, {a, b})),
            "[9007199254740992., -5.]");
  a.float64 = 0.5, b.float64 = NAN;
  EXPECT_EQ(VectorText(MakeRTable(RTABLE_FLOAT64, RTABLE_RECT, 1, {a, b})), "[0.5, U]");
  a.float32 = 0.25f;
  EXPECT_EQ(VectorText(MakeRTable(RTABLE_FLOAT32, RTABLE_RECT, 1, {a})), "[0.25]");
  a.complexf64 = {2.5, 0.0};
  EXPECT_EQ(VectorText(MakeRTable(RTABLE_COMPLEX, RTABLE_RECT, 1, {a})), "[2.5]");
  a.cxdag = {vexa::NewInteger(5), vexa::NewInteger(0)};
  EXPECT_EQ(VectorText(MakeRTable(RTABLE_CXDAG, RTABLE_RECT, 1, {a})), "[5.]");
  // generic entries: floats as they are, anything numeric through evalf
  ALGEB third = vexa::NewRational(vexa::NewInteger(1), vexa::NewInteger(4));
  EXPECT_EQ(VectorText(MakeRTable(RTABLE_DAG, RTABLE_RECT, 1,
                                  {Dag(vexa::NewInteger(3)), Dag(third), Dag(F("1.5").Handle())})),
            "[3., 0.25, 1.5]");
}

TEST(Vector, RejectedEntriesAreReported) {
  RTableData a{};
  a.complexf64 = {2.5, 1e-300};
  EXPECT_EQ(ErrorOf([&] { VectorText(MakeRTable(RTABLE_COMPLEX, RTABLE_RECT, 1, {a})); }),
            "unable to evaluate 2.5 + 1e-300*I to floating-point");
  a.complexf64 = {2.5, NAN};
  EXPECT_NE(ErrorOf([&] { VectorText(MakeRTable(RTABLE_COMPLEX, RTABLE_RECT, 1, {a})); }),
            "no error");
  a.cxdag = {vexa::NewInteger(5), vexa::NewInteger(1)};
  EXPECT_EQ(ErrorOf([&] { VectorText(MakeRTable(RTABLE_CXDAG, RTABLE_RECT, 1, {a})); }),
            "unable to evaluate 5 + I to floating-point");
  ALGEB x = vexa::NewName("x_unassigned");
  EXPECT_EQ(ErrorOf([&] { VectorText(MakeRTable(RTABLE_DAG, RTABLE_SPARSE, 1, {Dag(x)})); }),
            "unable to evaluate x_unassigned to floating-point");
  EXPECT_EQ(ErrorOf([&] { STATS_Vector_MP v(Kv(), vexa::NewInteger(4)); }),
            "invalid data sample, expected: rtable, received 4");
}

TEST(Vector, SfloatRTablesAreUsedInPlaceAndOthersConvertedOnce) {
  ALGEB own = SfloatRTable({"1.5", "U", "2"});
  STATS_Vector_MP v(Kv(), own);
  EXPECT_EQ(v.data(), RTableDataBlock(Kv(), own));
  EXPECT_FALSE(v.converted());

  ALGEB anything = MakeRTable(RTABLE_DAG, RTABLE_RECT, 1, {Dag(F("1.5").Handle())});
  STATS_Vector_MP w(Kv(), anything);
  EXPECT_TRUE(w.converted());
  EXPECT_NE(w.data(), RTableDataBlock(Kv(), anything));

  // empty: no working rtable, nothing to convert
  ALGEB empty = MakeRTable(RTABLE_DAG, RTABLE_SPARSE, 1, {});
  STATS_Vector_MP e(Kv(), empty);
  EXPECT_EQ(e.size(), 0);
  EXPECT_EQ(e.data(), nullptr);
}

TEST(Vector, NonRectangularSources) {
  RTableData a{}, b{}, c{};
  a.float64 = 1, b.float64 = 2, c.float64 = 3;
  EXPECT_EQ(VectorText(MakeRTable(RTABLE_FLOAT64, RTABLE_SPARSE, 3, {a, b, c})), "[1., 2., 3.]");
  // Generic elements fill slot i for index i: with lower bound 1, slot 0 stays 0 and the last
  // element lies past the vector.
  std::vector<RTableData> d = {Dag(F("1").Handle()), Dag(F("2").Handle()), Dag(F("3").Handle())};
  EXPECT_EQ(VectorText(MakeRTable(RTABLE_DAG, RTABLE_SPARSE, 1, d)), "[0., 1., 2.]");
  EXPECT_EQ(VectorText(MakeRTable(RTABLE_DAG, RTABLE_SPARSE, 0, d)), "[1., 2., 3.]");
  // a negative lower bound has no slots below 0: those elements are left out
  EXPECT_EQ(VectorText(MakeRTable(RTABLE_DAG, RTABLE_SPARSE, -1, d)), "[2., 3., 0.]");
}

TEST(Sample, WeightsAndTheirSizes) {
  ALGEB points = SfloatRTable({"1", "2", "3"});
  STATS_VexaDataSample_MP unweighted(Kv(), points, SfloatRTable({}));
  EXPECT_FALSE(unweighted.weighted());
  EXPECT_EQ(unweighted.weights(), nullptr);
  STATS_VexaDataSample_MP weighted(Kv(), points, SfloatRTable({"1", "1", "2"}));
  EXPECT_TRUE(weighted.weighted());
  EXPECT_EQ(weighted.size(), 3);
  EXPECT_EQ(ErrorOf([&] {
              STATS_VexaDataSample_MP s(Kv(), points, SfloatRTable({"1", "2"}));
            }),
            "vector of points and vector of weights are expected to have the same size, "
            "received " +
                vexa::Print(points) + ", Array(1 .. 2, [1., 2.], datatype = sfloat)");
}

TEST(CopyData, MissingValuesAreDroppedOnlyWhenAsked) {
  STATS_VexaDataSample_MP sample(Kv(), SfloatRTable({"1", "U", "3", "4", "5"}),
                                 SfloatRTable({"10", "20", "U", "40", "50"}));
  VexaFloat p[5], w[5];
  EXPECT_EQ(STATS_CopyData_MP(sample, p, w, 1), 3);
  EXPECT_EQ(Texts(p, 3), "[1., 4., 5.]");
  EXPECT_EQ(Texts(w, 3), "[10., 40., 50.]");
  EXPECT_EQ(STATS_CopyData_MP(sample, p, w, 0), 5);
  EXPECT_EQ(Texts(w, 5), "[10., 20., U, 40., 50.]");
  VexaFloat only[5];
  EXPECT_EQ(STATS_CopyData_MP(sample, only), 5);
  EXPECT_EQ(Texts(only, 5), "[1., U, 3., 4., 5.]");
  // in place, as the entry points do with arrays of their own
  std::vector<VexaFloat> v = Floats({"U", "2", "U", "4"});
  EXPECT_EQ(STATS_CopySimpleData_MP(v.data(), v.data(), 4, 1), 2);
  EXPECT_EQ(Texts(v.data(), 2), "[2., 4.]");
  EXPECT_EQ(STATS_CopySimpleData_MP(v.data(), v.data(), -1, 0), -1);
  EXPECT_EQ(STATS_CopyWeightedData_MP(v.data(), v.data(), p, w, 0, 1), 0);
}

TEST(RTableDataSize, ElementWidthsOfThisPlatform) {
  for (int type = 0; type < RTABLE_NUM_DATATYPES; ++type)
    EXPECT_EQ(STATS_RTableDataSize_MP(Kv(), type), RTableElementWidth(Kv(), type)) << type;
  EXPECT_EQ(STATS_RTableDataSize_MP(Kv(), 9), 4);
}

}  // namespace
