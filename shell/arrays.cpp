// Host arrays (rtables) from the shell: construction with data types and storages, element
// reading, and iteration.
#include <map>

#include "shell/builtins.h"
#include "shell/eval.h"

namespace vexa::shell {
namespace {

struct DataType {
  int code;
  const char* elementType;  // null: the host's default
};

// datatype = anything | complex | integer[1|2|4|8] | float[8] | complex[8] | float[4] | sfloat
DataType ParseDataType(const std::string& where, ALGEB spec) {
  static const std::map<std::string, DataType> plain = {{"anything", {RTABLE_DAG, nullptr}},
                                                        {"complex", {RTABLE_CXDAG, nullptr}},
                                                        {"sfloat", {RTABLE_DAG, "sfloat"}},
                                                        {"float", {RTABLE_FLOAT64, nullptr}},
                                                        {"integer", {RTABLE_DAG, "integer"}}};
  if (IsName(spec)) {
    auto it = plain.find(NameText(spec));
    if (it != plain.end()) return it->second;
  }
  std::string text = Print(spec);
  static const std::map<std::string, int> indexed = {
      {"integer[1]", RTABLE_INTEGER8},  {"integer[2]", RTABLE_INTEGER16},
      {"integer[4]", RTABLE_INTEGER32}, {"integer[8]", RTABLE_INTEGER64},
      {"float[8]", RTABLE_FLOAT64},     {"complex[8]", RTABLE_COMPLEX},
      {"float[4]", RTABLE_FLOAT32}};
  auto it = indexed.find(text);
  if (it != indexed.end()) return {it->second, nullptr};
  RaiseIn(where, FormatMessage("unknown datatype %1; expected anything, complex, integer[1], "
                               "integer[2], integer[4], integer[8], float[8], complex[8], "
                               "float[4] or sfloat",
                               spec, nullptr));
}

long long BoundValue(const std::string& where, ALGEB e) {
  if (!IsInteger(e) || !FitsInt64(e))
    RaiseIn(where, FormatMessage("bounds must be integers, received %1", e, nullptr));
  return IntegerValue(e);
}

// An sfloat element must be a float: exact values are made floats at Digits.
ALGEB SfloatElement(const std::string& where, ALGEB v) {
  ALGEB f = vexa::Evalf(v);
  if (!IsFloat(f))
    RaiseIn(where, FormatMessage("sfloat elements must be numeric, received %1", v, nullptr));
  return f;
}

// Visits every index of the bounds, first index fastest.
template <class F>
void ForEachIndex(const std::vector<M_INT>& lo, const std::vector<M_INT>& hi, F f) {
  size_t n = lo.size();
  for (size_t d = 0; d < n; ++d)
    if (hi[d] < lo[d]) return;
  std::vector<M_INT> index(lo);
  for (;;) {
    f(index.data());
    size_t d = 0;
    while (d < n && ++index[d] > hi[d]) {
      index[d] = lo[d];
      ++d;
    }
    if (d == n) return;
  }
}

// The initial value at an index from a (nested) list.
ALGEB InitialAt(ALGEB init, const M_INT* index, const std::vector<M_INT>& lo, size_t dims) {
  ALGEB v = init;
  for (size_t d = 0; d < dims; ++d) {
    if (!IsList(v)) return nullptr;
    M_INT i = index[d] - lo[d] + 1;
    if (i < 1 || i > NumOps(v)) return nullptr;
    v = Op(v, static_cast<int>(i));
  }
  return v;
}

// More initial values than the bounds hold, at any dimension, is an error.
void CheckInitialFits(const std::string& name, ALGEB init, const std::vector<M_INT>& lo,
                      const std::vector<M_INT>& hi) {
  std::vector<ALGEB> level{init};
  for (size_t d = 0; d < lo.size() && !level.empty(); ++d) {
    std::vector<ALGEB> next;
    for (ALGEB v : level) {
      if (!IsList(v)) continue;
      if (NumOps(v) > hi[d] - lo[d] + 1)
        RaiseIn(name, "the initial list has " + std::to_string(NumOps(v)) +
                          " values for the bounds " + std::to_string(lo[d]) + " .. " +
                          std::to_string(hi[d]));
      if (d + 1 < lo.size())
        for (ALGEB x : Ops(v)) next.push_back(x);
    }
    level.swap(next);
  }
}

}  // namespace

ALGEB MakeArray(Evaluator* ev, const std::string& name, Node* call) {
  VexaKernelVector kv = GetKernel();
  std::vector<ALGEB> args = ev->EvaluateArguments(call->children, 1);
  std::vector<M_INT> lo, hi;
  ALGEB init = nullptr;
  DataType type{RTABLE_DAG, nullptr};
  int storage = RTABLE_RECT;
  for (ALGEB a : args) {
    uint32_t t = IsNode(a) ? TypeOf(a) : kIntegerNode;
    if (t == kEquationNode && IsName(Op(a, 1))) {
      std::string option = NameText(Op(a, 1));
      if (option == "datatype") {
        type = ParseDataType(name, Op(a, 2));
      } else if (option == "storage") {
        std::string s = IsName(Op(a, 2)) ? NameText(Op(a, 2)) : "";
        if (s == "rectangular")
          storage = RTABLE_RECT;
        else if (s == "sparse")
          storage = RTABLE_SPARSE;
        else
          RaiseIn(name, FormatMessage("unknown storage %1; expected rectangular or sparse",
                                      Op(a, 2), nullptr));
      } else {
        RaiseIn(name, FormatMessage("unknown option %1", a, nullptr));
      }
    } else if (t == kRangeNode) {
      lo.push_back(BoundValue(name, Op(a, 1)));
      hi.push_back(BoundValue(name, Op(a, 2)));
    } else if (IsInteger(a)) {
      long long n = BoundValue(name, a);
      if (n < 0)
        RaiseIn(name, FormatMessage("dimension must not be negative, received %1", a, nullptr));
      lo.push_back(1);
      hi.push_back(n);
    } else if (IsList(a) && init == nullptr) {
      init = a;
    } else {
      RaiseIn(name, FormatMessage("unexpected argument %1", a, nullptr));
    }
  }
  if (lo.empty()) {
    if (init == nullptr) RaiseIn(name, name + " needs bounds or an initial list");
    // bounds from the shape of the list
    for (ALGEB v = init; IsList(v); v = NumOps(v) > 0 ? Op(v, 1) : nullptr) {
      lo.push_back(1);
      hi.push_back(NumOps(v));
      if (name == "Vector" || NumOps(v) == 0) break;
    }
  }
  if (name == "Vector" && lo.size() != 1) RaiseIn(name, "a Vector has one dimension");
  if (init != nullptr) CheckInitialFits(name, init, lo, hi);
  RTableSettings s;
  RTableGetDefaults(kv, &s);
  s.num_dimensions = static_cast<int>(lo.size());
  s.data_type = type.code;
  s.storage = storage;
  s.subtype = name == "Vector" ? RTABLE_COLUMN : RTABLE_ARRAY;
  if (type.elementType != nullptr) s.element_type = ToVexaName(kv, type.elementType, 1);
  std::vector<M_INT> bounds;
  for (size_t d = 0; d < lo.size(); ++d) {
    bounds.push_back(lo[d]);
    bounds.push_back(hi[d]);
  }
  ALGEB rt = RTableCreate(kv, &s, nullptr, bounds.data());
  if (init != nullptr) {
    bool sfloat = type.elementType != nullptr && std::string(type.elementType) == "sfloat";
    ForEachIndex(lo, hi, [&](M_INT* index) {
      ALGEB v = InitialAt(init, index, lo, lo.size());
      if (v != nullptr) RTableSetElement(rt, index, sfloat ? SfloatElement(name, v) : v);
    });
  }
  return rt;
}

std::vector<ALGEB> ContainerItems(ALGEB c) {
  if (IsList(c) || IsExpseq(c) || (IsNode(c) && TypeOf(c) == kSetNode)) return Ops(c);
  if (IsRTable(c)) {
    VexaKernelVector kv = GetKernel();
    RTableSettings s;
    RTableGetSettings(kv, &s, c);
    std::vector<M_INT> lo, hi;
    for (int d = 1; d <= s.num_dimensions; ++d) {
      lo.push_back(RTableLowerBound(kv, c, d));
      hi.push_back(RTableUpperBound(kv, c, d));
    }
    std::vector<ALGEB> items;
    ForEachIndex(lo, hi, [&](M_INT* index) { items.push_back(RTableGetElement(c, index)); });
    return items;
  }
  RaiseFormatted("expected a list, set, sequence or array, received %1", c);
}

ALGEB Select(ALGEB base, const std::vector<ALGEB>& indices) {
  if (IsRTable(base)) {
    VexaKernelVector kv = GetKernel();
    RTableSettings s;
    RTableGetSettings(kv, &s, base);
    if (static_cast<int>(indices.size()) != s.num_dimensions)
      RaiseFormatted("expected " + std::to_string(s.num_dimensions) + " indices, received %1",
                     NewExpseq(indices));
    std::vector<M_INT> index;
    for (ALGEB i : indices) {
      if (!IsInteger(i) || !FitsInt64(i))
        RaiseFormatted("an array index must be an integer, received %1", i);
      index.push_back(IntegerValue(i));
    }
    return RTableGetElement(base, index.data());
  }
  if (IsList(base) || IsExpseq(base)) {
    if (indices.size() != 1 || !IsInteger(indices[0]) || !FitsInt64(indices[0]))
      RaiseFormatted("a list index must be one integer, received %1", NewExpseq(indices));
    long long i = IntegerValue(indices[0]);
    int n = NumOps(base);
    if (i < 0) i += n + 1;
    if (i < 1 || i > n)
      RaiseFormatted("index out of range: %1 has " + std::to_string(n) + " elements", base);
    return Op(base, static_cast<int>(i));
  }
  if (IsTable(base)) {
    ALGEB key = indices.size() == 1 ? indices[0] : NewExpseq(indices);
    ALGEB v = TableGet(base, key);
    return v != nullptr ? v : NewIndexed(base, indices);
  }
  return NewIndexed(base, indices);
}

}  // namespace vexa::shell
