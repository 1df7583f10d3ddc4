// The random stream and the output arrays of random samples.
#include <gtest/gtest.h>

#include "frame/support.h"
#include "stats/random/random_stream.h"

namespace {

ALGEB Array(int dataType, int storage, int n) {
  RTableSettings s;
  RTableGetDefaults(Kv(), &s);
  s.data_type = dataType;
  s.storage = storage;
  s.num_dimensions = 1;
  M_INT bounds[2] = {1, n};
  return RTableCreate(Kv(), &s, nullptr, bounds);
}

TEST(SampleArray, NewArraysAreOneDimensionalSfloatExpressionArrays) {
  for (int n : {0, 5}) {
    ALGEB a = STATS_CreateRandomSample_MP(Kv(), n, ToVexaNULL(Kv()));
    RTableSettings s;
    RTableGetSettings(Kv(), &s, a);
    EXPECT_EQ(s.num_dimensions, 1);
    EXPECT_EQ(s.data_type, RTABLE_DAG);
    EXPECT_EQ(s.storage, RTABLE_RECT);
    EXPECT_EQ(s.element_type, ToVexaName(Kv(), "sfloat", 1));
    EXPECT_EQ(RTableLowerBound(Kv(), a, 1), 1);
    EXPECT_EQ(RTableUpperBound(Kv(), a, 1), n);
  }
  // a size given as a host value
  ALGEB a = STATS_CreateRandomSample_MP(Kv(), vexa::NewInteger(3));
  EXPECT_EQ(RTableNumElements(Kv(), a), 3);
  EXPECT_NE(ErrorOf([] { STATS_CreateRandomSample_MP(Kv(), vexa::NewName("n_unassigned")); }),
            "no error");
}

TEST(SampleArray, GivenArraysAreCheckedOnStorageAndRepresentationOnly) {
  ALGEB sparse = Array(RTABLE_DAG, RTABLE_SPARSE, 4);
  EXPECT_EQ(ErrorOf([&] { STATS_CreateRandomSample_MP(Kv(), sparse); }).rfind(
                "output array must have rectangular storage, received: ", 0),
            0u);
  ALGEB hardware = Array(RTABLE_FLOAT64, RTABLE_RECT, 4);
  EXPECT_EQ(ErrorOf([&] { STATS_CreateRandomSample_MP(Kv(), hardware); }).rfind(
                "output array must have float[8] or sfloat data type, received: ", 0),
            0u);
  // an expression array passes whatever element type it declares, and is the array returned
  ALGEB anything = Array(RTABLE_DAG, RTABLE_RECT, 4);
  EXPECT_EQ(STATS_CreateRandomSample_MP(Kv(), anything), anything);
}

TEST(RandomStream, DrawsFromTheHostStream) {
  VexaDigitsScope digits(20);
  vexa::SeedRandom(11);
  VexaFloat u = STATS_VexaRandomStream_MP::NextDouble();
  uint32_t w = STATS_VexaRandomStream_MP::NextInteger();
  vexa::SeedRandom(11);
  EXPECT_EQ(u, VexaFloat(VexaRandomSoftwareFloat01(Kv())));
  EXPECT_EQ(w, VexaRandomInt32(Kv()));
  EXPECT_TRUE(u >= 0 && u < 1);
}

}  // namespace
