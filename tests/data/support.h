// Shared helpers of the data and descriptive tests: rtables of any element type and storage,
// and VexaFloat arrays written as text.
#ifndef TESTS_DATA_SUPPORT_H
#define TESTS_DATA_SUPPORT_H

#include <string>
#include <vector>

#include "frame/support.h"

// A one-dimensional rtable lo .. lo + values - 1 holding the given elements.
inline ALGEB MakeRTable(int dataType, int storage, M_INT lo, const std::vector<RTableData>& values,
                        const char* elementType = nullptr) {
  RTableSettings s;
  RTableGetDefaults(Kv(), &s);
  s.data_type = dataType;
  s.storage = storage;
  s.num_dimensions = 1;
  if (elementType != nullptr) s.element_type = ToVexaName(Kv(), elementType, 1);
  M_INT bounds[2] = {lo, lo + static_cast<M_INT>(values.size()) - 1};
  ALGEB rt = RTableCreate(Kv(), &s, nullptr, bounds);
  for (size_t i = 0; i < values.size(); ++i) {
    M_INT index[1] = {lo + static_cast<M_INT>(i)};
    RTableAssign(Kv(), rt, index, values[i]);
  }
  return rt;
}

inline VexaFloat F(const std::string& text) {
  return text == "U" ? VexaFloatUndefined() : VexaFloatFromString(text);
}

inline std::vector<VexaFloat> Floats(const std::vector<std::string>& texts) {
  std::vector<VexaFloat> v;
  for (const auto& t : texts) v.push_back(F(t));
  return v;
}

// "[1., 2., Float(undefined)]"-like text of n values, undefined shown as U.
inline std::string Texts(const VexaFloat* a, int n) {
  std::string s = "[";
  for (int i = 0; i < n; ++i) {
    if (i > 0) s += ", ";
    s += IsVexaFloatUndefined(a[i]) ? "U" : VexaFloatToString(a[i]);
  }
  return s + "]";
}

// A rectangular sfloat rtable 1 .. n of the given values (U for undefined).
inline ALGEB SfloatRTable(const std::vector<std::string>& texts) {
  std::vector<RTableData> d(texts.size());
  for (size_t i = 0; i < texts.size(); ++i) d[i].dag = F(texts[i]).Handle();
  return MakeRTable(RTABLE_DAG, RTABLE_RECT, 1, d, "sfloat");
}

#endif
