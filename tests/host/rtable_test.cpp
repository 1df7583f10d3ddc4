// rtables: round trips for every data type in both storages, data block layout and widths,
// zero fill, copies with conversion, bounds and bad input.
#include <gtest/gtest.h>

#include <cstring>

#include "host/kernel.h"
#include "tests/host/support.h"

namespace {

using namespace vexa;

VexaKernelVector kv = GetKernel();
ALGEB I(long long v) {
  return NewInteger(v);
}

ALGEB Make(int dt, int storage, std::vector<M_INT> bounds, const char* elementType = nullptr,
           void* data = nullptr, int order = RTABLE_FORTRAN) {
  RTableSettings s;
  RTableGetDefaults(kv, &s);
  s.data_type = dt;
  s.storage = storage;
  s.order = order;
  s.num_dimensions = static_cast<int>(bounds.size() / 2);
  if (elementType) s.element_type = NewName(elementType);
  return RTableCreate(kv, &s, data, bounds.data());
}

using vexa::testing::ErrorOf;

// One representative value per data type, as the host value it reads back as.
ALGEB Sample(int dt, int k) {
  switch (dt) {
    case RTABLE_DAG:
      return NewSum({NewName("x"), I(k)});
    case RTABLE_CXDAG:
      return NewComplex(I(k), NewRational(I(1), I(k + 2)));
    case RTABLE_INTEGER8:
      return I(k % 2 ? -128 + k : 127 - k);
    case RTABLE_INTEGER16:
      return I(-32768 + k);
    case RTABLE_INTEGER32:
      return I(2147483647 - k);
    case RTABLE_INTEGER64:
      return I(-(1LL << 62) - k);
    case RTABLE_FLOAT64:
      return ToVexaFloat(kv, 0.1 * (k + 1));
    case RTABLE_COMPLEX:
      return ToVexaComplex(kv, 1.5 * k, -0.25);
    default:
      return ToVexaFloat(kv, static_cast<float>(0.3f * k));
  }
}

TEST(RTable, RoundTripsEveryTypeAndStorage) {
  for (int storage : {RTABLE_RECT, RTABLE_SPARSE}) {
    for (int dt = 0; dt < RTABLE_NUM_DATATYPES; ++dt) {
      ALGEB rt = Make(dt, storage, {1, 3, 0, 1});
      EXPECT_EQ(RTableNumElements(kv, rt), 6);
      RTableSettings s;
      RTableGetSettings(kv, &s, rt);
      EXPECT_EQ(s.data_type, dt);
      EXPECT_EQ(s.storage, storage);
      M_INT index[2];
      int k = 1;
      for (index[0] = 1; index[0] <= 3; ++index[0])
        for (index[1] = 0; index[1] <= 1; ++index[1]) RTableSetElement(rt, index, Sample(dt, k++));
      k = 1;
      for (index[0] = 1; index[0] <= 3; ++index[0])
        for (index[1] = 0; index[1] <= 1; ++index[1]) {
          ALGEB want = Sample(dt, k++);
          EXPECT_EQ(Print(RTableGetElement(rt, index)), Print(want)) << dt << " " << storage;
          // raw select/assign round trip through RTableData
          RTableData d = RTableSelect(kv, rt, index);
          RTableAssign(kv, rt, index, d);
          EXPECT_EQ(Print(RTableGetElement(rt, index)), Print(want));
        }
      // a copy keeps every element; a copy into the other storage too
      RTableSettings other = s;
      other.storage = storage == RTABLE_RECT ? RTABLE_SPARSE : RTABLE_RECT;
      for (ALGEB copy : {RTableCopy(kv, nullptr, rt), RTableCopy(kv, &other, rt)})
        EXPECT_EQ(Print(copy).substr(0, 40), Print(rt).substr(0, 40));
      if (storage == RTABLE_RECT)
        EXPECT_NE(RTableDataBlock(kv, rt), nullptr);
      else
        EXPECT_EQ(ErrorOf([&] { RTableDataBlock(kv, rt); }),
                  "no data block: the rtable " + Print(rt) + " does not have rectangular storage");
    }
  }
}

TEST(RTable, DataBlockLayoutAndWidths) {
  const M_INT widths[] = {sizeof(ALGEB), 2 * sizeof(ALGEB), 1, 2, 4, 8, 8, 16, 4};
  for (int dt = 0; dt < RTABLE_NUM_DATATYPES; ++dt)
    EXPECT_EQ(RTableElementWidth(kv, dt), widths[dt]);
  // initial data, column-major: element (i, j) at (i - 1) + 2 * (j - 1)
  double init[6] = {1, 2, 3, 4, 5, 6};
  ALGEB a = Make(RTABLE_FLOAT64, RTABLE_RECT, {1, 2, 1, 3}, nullptr, init);
  M_INT ij[2] = {2, 3};
  EXPECT_EQ(RTableSelect(kv, a, ij).float64, 6.0);
  ij[0] = 1;
  ij[1] = 2;
  EXPECT_EQ(RTableSelect(kv, a, ij).float64, 3.0);
  static_cast<double*>(RTableDataBlock(kv, a))[2] = -3.5;
  EXPECT_EQ(Print(RTableGetElement(a, ij)), "-3.5");
  ALGEB c = Make(RTABLE_INTEGER16, RTABLE_RECT, {1, 2, 1, 3}, nullptr, nullptr, RTABLE_C);
  RTableData v;
  v.int16 = 77;
  RTableAssign(kv, c, ij, v);  // (1, 2) row-major is position 1
  EXPECT_EQ(static_cast<int16_t*>(RTableDataBlock(kv, c))[1], 77);
  EXPECT_EQ(Print(a), "Array(1 .. 2, 1 .. 3, [[1., -3.5, 5.], [2., 4., 6.]], datatype = float[8])");
  // zero fill: the float 0. for sfloat elements, the integer 0 otherwise
  ALGEB sf = Make(RTABLE_DAG, RTABLE_RECT, {1, 3}, "sfloat");
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(IsFloat(static_cast<ALGEB*>(RTableDataBlock(kv, sf))[i]));
  EXPECT_EQ(Print(sf), "Array(1 .. 3, [0., 0., 0.], datatype = sfloat)");
  EXPECT_EQ(Print(Make(RTABLE_DAG, RTABLE_SPARSE, {1, 2})),
            "Array(1 .. 2, [0, 0], storage = sparse)");
  ALGEB empty = Make(RTABLE_DAG, RTABLE_RECT, {1, 0});
  EXPECT_EQ(RTableNumElements(kv, empty), 0);
  EXPECT_EQ(RTableLowerBound(kv, empty, 1), 1);
  EXPECT_EQ(RTableUpperBound(kv, empty, 1), 0);
  // copy with conversion: integers into floats
  ALGEB ints = Make(RTABLE_INTEGER32, RTABLE_RECT, {1, 2});
  M_INT one = 1;
  RTableSetElement(ints, &one, I(-7));
  RTableSettings s;
  RTableGetSettings(kv, &s, ints);
  s.data_type = RTABLE_DAG;
  s.element_type = NewName("sfloat");
  EXPECT_EQ(Print(RTableCopy(kv, &s, ints)), "Array(1 .. 2, [-7, 0], datatype = sfloat)");
}

TEST(RTable, BadInput) {
  ALGEB a = Make(RTABLE_INTEGER8, RTABLE_RECT, {0, 4});
  M_INT i = 5;
  EXPECT_EQ(ErrorOf([&] { RTableSelect(kv, a, &i); }),
            "index out of range: index 5 in dimension 1 is outside 0 .. 4");
  i = 0;
  EXPECT_EQ(ErrorOf([&] { RTableSetElement(a, &i, I(128)); }),
            "unable to store 128 in an rtable of datatype integer[1]");
  EXPECT_EQ(ErrorOf([&] { RTableSetElement(a, &i, ToVexaFloat(kv, 1.5)); }),
            "unable to store 1.5 in an rtable of datatype integer[1]");
  ALGEB f = Make(RTABLE_FLOAT64, RTABLE_SPARSE, {1, 2});
  i = 1;
  EXPECT_EQ(ErrorOf([&] { RTableSetElement(f, &i, NewName("x")); }),
            "unable to store x in an rtable of datatype float[8]");
  EXPECT_EQ(ErrorOf([&] {
              Make(RTABLE_DAG, RTABLE_RECT, {1, -1});
            }),
            "invalid rtable bounds 1 .. -1 in dimension 1");
  EXPECT_EQ(ErrorOf([&] {
              Make(9, RTABLE_RECT, {1, 2});
            }),
            "unknown rtable data type 9, expected 0 to 8");
  EXPECT_EQ(ErrorOf([&] {
              Make(RTABLE_DAG, 2, {1, 2});
            }),
            "unknown rtable storage 2, expected 4 (rectangular) or 1 (sparse)");
  EXPECT_EQ(ErrorOf([&] { Make(RTABLE_DAG, RTABLE_RECT, {}); }),
            "an rtable needs 1 to 64 dimensions, received 0");
  EXPECT_EQ(ErrorOf([&] { RTableNumElements(kv, NewList({})); }),
            "expected an rtable, received []");
  EXPECT_EQ(ErrorOf([&] { RTableLowerBound(kv, a, 2); }), "dimension 2 out of range 1 .. 1");
  RTableSettings s;
  RTableGetSettings(kv, &s, a);
  s.num_dimensions = 2;
  EXPECT_EQ(ErrorOf([&] { RTableCopy(kv, &s, a); }),
            "cannot copy an rtable of 1 dimensions into 2 dimensions");
  ALGEB* nulls[2] = {nullptr, nullptr};
  EXPECT_EQ(ErrorOf([&] {
              Make(RTABLE_DAG, RTABLE_RECT, {1, 2}, nullptr, nulls);
            }),
            "initial rtable data holds a null handle at position 1");
  // nothing was half-changed by the failed stores
  EXPECT_EQ(Print(a), "Array(0 .. 4, [0, 0, 0, 0, 0], datatype = integer[1])");
}

}  // namespace
