// Builtins over values and collections: type tests, add and mul, min and max, sort, cat, eval,
// table, printf, member and `if`.
#include <algorithm>
#include <string>
#include <vector>

#include "shell/builtins.h"
#include "shell/eval.h"

namespace vexa::shell {
namespace {

bool IsSet(ALGEB e) {
  return IsNode(e) && TypeOf(e) == kSetNode;
}
bool IsFunctionCall(ALGEB e) {
  return IsNode(e) && TypeOf(e) == kFunctionNode;
}

int Dimensions(ALGEB rtable) {
  RTableSettings s;
  RTableGetSettings(GetKernel(), &s, rtable);
  return s.num_dimensions;
}

// A real value to order by: numbers as they are, constants such as Pi or infinity as floats;
// null when e has no real value.
ALGEB RealValue(ALGEB e) {
  if (IsNumeric(e)) return e;
  if (IsName(e) || IsFunctionCall(e) ||
      (IsNode(e) && TypeOf(e) >= kSumNode && TypeOf(e) <= kPowerNode)) {
    try {
      ALGEB f = Evalf(e);
      if (IsFloat(f)) return f;
    } catch (const HostError&) {
    }
  }
  return nullptr;
}

bool MatchesType(const std::string& where, ALGEB e, ALGEB t) {
  if (IsSet(t)) {
    for (ALGEB alternative : Ops(t))
      if (MatchesType(where, e, alternative)) return true;
    return false;
  }
  if (IsFunctionCall(t) && NumOps(t) == 1 && IsName(Op(t, 0))) {
    const std::string head = NameText(Op(t, 0));
    if (head == "list" || head == "set") {
      if (head == "list" ? !IsList(e) : !IsSet(e)) return false;
      for (ALGEB x : Ops(e))
        if (!MatchesType(where, x, Op(t, 1))) return false;
      return true;
    }
  }
  if (!IsName(t)) RaiseIn(where, FormatMessage("expects a type, received %1", t, nullptr));
  const std::string name = NameText(t);
  const uint32_t kind = IsNode(e) ? TypeOf(e) : kIntegerNode;
  if (name == "anything") return true;
  if (name == "integer") return IsInteger(e);
  if (name == "posint") return IsInteger(e) && Sign(e) > 0;
  if (name == "negint") return IsInteger(e) && Sign(e) < 0;
  if (name == "nonnegint") return IsInteger(e) && Sign(e) >= 0;
  if (name == "rational") return IsInteger(e) || IsRational(e);
  if (name == "fraction") return IsRational(e);
  if (name == "float") return IsFloat(e);
  if (name == "numeric") return IsNumeric(e);
  if (name == "positive" || name == "negative" || name == "nonnegative") {
    if (!IsNumeric(e) || Compare(e, e) == 2) return false;
    int sign = Sign(e);
    return name == "positive" ? sign > 0 : name == "negative" ? sign < 0 : sign >= 0;
  }
  if (name == "realcons") return RealValue(e) != nullptr;
  if (name == "finite") {
    ALGEB v = RealValue(e);
    if (v == nullptr || Compare(v, v) == 2) return false;
    ALGEB infinity = Evalf(NewName("infinity"));
    return Compare(v, infinity) < 0 && Compare(v, Negate(infinity)) > 0;
  }
  if (name == "complex") return IsNumeric(e) || kind == kComplexNode;
  if (name == "string") return IsString(e);
  if (name == "name") return IsName(e);
  if (name == "list") return IsList(e);
  if (name == "set") return IsSet(e);
  if (name == "range") return kind == kRangeNode && IsNode(e);
  if (name == "equation" || name == "=") return kind == kEquationNode && IsNode(e);
  if (name == "relation") return IsNode(e) && (kind == kEquationNode || kind == kInequalityNode);
  if (name == "boolean") return IsTrue(e) || IsFalse(e) || IsFail(e);
  if (name == "procedure") return IsProcedure(e);
  if (name == "function") return IsFunctionCall(e);
  if (name == "table") return IsTable(e);
  if (name == "rtable" || name == "Array") return IsRTable(e);
  if (name == "Vector") return IsRTable(e) && Dimensions(e) == 1;
  if (name == "Matrix") return IsRTable(e) && Dimensions(e) == 2;
  if (name == "NULL") return IsNull(e);
  RaiseIn(where,
          FormatMessage("unknown type %1; known types: anything, integer, posint, negint, "
                        "nonnegint, rational, fraction, float, numeric, positive, "
                        "negative, nonnegative, realcons, finite, complex, string, name, list, "
                        "set, range, equation, relation, boolean, procedure, function, "
                        "table, rtable, Array, Vector, Matrix, NULL, {t1, t2, ...}, "
                        "list(t), set(t)",
                        t, nullptr));
}

// The values that add, mul, min and max combine: add(e, i = a .. b) as seq does, add(C) the
// elements of a list, set or array.
std::vector<ALGEB> Terms(Evaluator* ev, const std::string& name, Node* call) {
  if (call->children.size() == 3) return Ops(SeqValues(ev, name, call));
  std::vector<ALGEB> a = ev->EvaluateArguments(call->children, 1);
  if (a.size() != 1)
    RaiseIn(name, name + " expects 1 or 2 arguments, received " + std::to_string(a.size()));
  return ContainerItems(a[0]);
}

// Numbers combine exactly (floats rounding at each step, in order); anything symbolic makes
// the result a symbolic sum or product.
ALGEB Fold(Evaluator* ev, const std::string& name, Node* call, bool sum) {
  ALGEB r = NewInteger(sum ? 0 : 1);
  std::vector<ALGEB> symbolic;
  for (ALGEB x : Terms(ev, name, call)) {
    if (IsNumeric(x) || (IsNode(x) && TypeOf(x) == kComplexNode))
      r = sum ? Add(r, x) : Multiply(r, x);
    else
      symbolic.push_back(x);
  }
  if (symbolic.empty()) return r;
  symbolic.push_back(r);
  return Eval(sum ? NewSum(symbolic) : NewProduct(symbolic));
}

ALGEB AddBuiltin(Evaluator* ev, const std::string& name, Node* call) {
  return Fold(ev, name, call, true);
}
ALGEB MulBuiltin(Evaluator* ev, const std::string& name, Node* call) {
  return Fold(ev, name, call, false);
}

// min and max of numbers, constants and the elements of lists, sets and arrays among the
// arguments. An undefined value makes the result undefined; no values at all give
// infinity for min and -infinity for max.
ALGEB Extreme(Evaluator* ev, const std::string& name, Node* call) {
  const bool largest = name == "max";
  std::vector<ALGEB> items;
  for (ALGEB a : ev->EvaluateArguments(call->children, 1)) {
    if (IsList(a) || IsSet(a) || IsRTable(a)) {
      for (ALGEB x : ContainerItems(a)) items.push_back(x);
    } else {
      items.push_back(a);
    }
  }
  if (items.empty()) {
    ALGEB infinity = Evalf(NewName("infinity"));
    return largest ? Negate(infinity) : infinity;
  }
  ALGEB best = nullptr, bestValue = nullptr;
  for (ALGEB x : items) {
    ALGEB v = RealValue(x);
    if (v == nullptr) RaiseIn(name, FormatMessage("expects real numbers, received %1", x, nullptr));
    if (Compare(v, v) == 2) return x;  // undefined
    if (best == nullptr || Compare(v, bestValue) == (largest ? 1 : -1)) {
      best = x;
      bestValue = v;
    }
  }
  return best;
}

// A stable merge sort that stays within bounds whatever the ordering says, so that an
// inconsistent ordering procedure gives some order rather than a crash.
template <class T, class Before>
void MergeSort(std::vector<T>& v, Before before) {
  std::vector<T> buffer(v.size());
  for (size_t width = 1; width < v.size(); width *= 2) {
    for (size_t lo = 0; lo < v.size(); lo += 2 * width) {
      size_t mid = std::min(lo + width, v.size()), hi = std::min(lo + 2 * width, v.size());
      size_t i = lo, j = mid, k = lo;
      while (i < mid && j < hi) buffer[k++] = before(v[j], v[i]) ? v[j++] : v[i++];
      while (i < mid) buffer[k++] = v[i++];
      while (j < hi) buffer[k++] = v[j++];
    }
    v.swap(buffer);
  }
}

// sort(L): numbers (and real constants) ascending, or strings, or names by their text.
// sort(L, `>`) descending, sort(L, `<`) ascending, sort(L, f) with f(a, b) true when a
// goes before b. Equal elements keep their order.
ALGEB SortBuiltin(Evaluator* ev, const std::string& name, Node* call) {
  std::vector<ALGEB> a = ev->EvaluateArguments(call->children, 1);
  if (a.empty() || a.size() > 2)
    RaiseIn(name, "sort expects 1 or 2 arguments, received " + std::to_string(a.size()));
  if (!IsList(a[0]))
    RaiseIn(name, FormatMessage("expects a list to sort, received %1", a[0], nullptr));
  std::vector<ALGEB> items = Ops(a[0]);
  ALGEB order = a.size() == 2 ? a[1] : NewName("<");
  if (IsName(order) && (NameText(order) == "<" || NameText(order) == ">")) {
    const bool descending = NameText(order) == ">";
    bool strings = true, names = true;
    std::vector<std::pair<ALGEB, ALGEB>> keyed;  // (key, element)
    for (ALGEB x : items) {
      strings = strings && IsString(x);
      names = names && IsName(x);
    }
    for (ALGEB x : items) {
      ALGEB key = strings || names ? x : RealValue(x);
      if (key == nullptr || (!strings && !names && Compare(key, key) == 2))
        RaiseIn(name, FormatMessage("cannot order %1: sort compares real numbers, strings or "
                                    "names, or takes an ordering procedure",
                                    x, nullptr));
      keyed.emplace_back(key, x);
    }
    auto less = [&](ALGEB x, ALGEB y) {
      if (strings) return StringText(x) < StringText(y);
      if (names) return NameText(x) < NameText(y);
      return Compare(x, y) < 0;
    };
    std::vector<size_t> positions(keyed.size());
    for (size_t i = 0; i < positions.size(); ++i) positions[i] = i;
    MergeSort(positions, [&](size_t p, size_t q) {
      return descending ? less(keyed[q].first, keyed[p].first)
                        : less(keyed[p].first, keyed[q].first);
    });
    std::vector<ALGEB> out;
    for (size_t p : positions) out.push_back(keyed[p].second);
    return NewList(out);
  }
  MergeSort(items, [&](ALGEB x, ALGEB y) {
    ALGEB r = CallProcedure(order, NewExpseq({x, y}));
    if (IsNode(r) && (TypeOf(r) == kEquationNode || TypeOf(r) == kInequalityNode))
      r = EvalBoolean(r);
    if (!IsTrue(r) && !IsFalse(r))
      RaiseIn(name,
              FormatMessage("the ordering %1 must give true or false, received %2", order, r));
    return IsTrue(r);
  });
  return NewList(items);
}

ALGEB TypeBuiltin(Evaluator* ev, const std::string& name, Node* call) {
  std::vector<ALGEB> a = ev->EvaluateArguments(call->children, 1);
  if (a.size() != 2)
    RaiseIn(name, "type expects 2 arguments, received " + std::to_string(a.size()));
  return MatchesType(name, a[0], a[1]) ? True() : False();
}

// cat(a, b, ...): the texts of names, strings and integers joined; a string when the first
// is a string, a name otherwise (cat(Vexa, Normal, Deviate) is VexaNormalDeviate).
ALGEB Cat(Evaluator* ev, const std::string& name, Node* call) {
  std::vector<ALGEB> a = ev->EvaluateArguments(call->children, 1);
  std::string text;
  for (ALGEB x : a) {
    if (IsName(x))
      text += NameText(x);
    else if (IsString(x))
      text += StringText(x);
    else if (IsInteger(x))
      text += IntegerText(x);
    else
      RaiseIn(name, FormatMessage("expects names, strings or integers, received %1", x, nullptr));
  }
  return !a.empty() && IsString(a[0]) ? NewString(text) : NewName(text);
}

// eval(e): one more evaluation; the value of a name that holds a name ('f' gives f's value).
ALGEB EvalBuiltin(Evaluator* ev, const std::string& name, Node* call) {
  std::vector<ALGEB> a = ev->EvaluateArguments(call->children, 1);
  if (a.size() != 1) RaiseIn(name, "eval expects 1 argument, received " + std::to_string(a.size()));
  if (!IsName(a[0])) return Eval(a[0]);
  ALGEB value = Lookup(a[0]);
  return value != nullptr ? value : a[0];
}

ALGEB TableBuiltin(Evaluator* ev, const std::string& name, Node* call) {
  if (!ev->EvaluateArguments(call->children, 1).empty())
    RaiseIn(name, "table expects no arguments: assign its entries as t[key] := value");
  return NewTable();
}

// printf(format, a, b, ...): the format with %a (a value as the shell prints it), %s (a string
// without its quotes, or any value), %d and %g (numbers as printed) replaced in turn, %%
// a percent sign; no newline is added.
ALGEB Printf(Evaluator* ev, const std::string& name, Node* call) {
  std::vector<ALGEB> a = ev->EvaluateArguments(call->children, 1);
  if (a.empty() || !IsString(a[0])) RaiseIn(name, "printf expects a format string first");
  const std::string format = StringText(a[0]);
  std::string out;
  size_t next = 1;
  for (size_t i = 0; i < format.size(); ++i) {
    if (format[i] != '%' || i + 1 == format.size()) {
      out += format[i];
      continue;
    }
    char c = format[++i];
    if (c == '%') {
      out += '%';
      continue;
    }
    if (c != 'a' && c != 's' && c != 'd' && c != 'g')
      RaiseIn(name, std::string("unknown format %") + c + "; printf knows %a, %s, %d, %g, %%");
    if (next >= a.size()) RaiseIn(name, "printf has fewer values than its format asks for");
    ALGEB v = a[next++];
    out += c == 's' && IsString(v) ? StringText(v) : Print(v);
  }
  ev->Out() << out;
  return Null();
}

// member(x, C): whether x is an element of a list, set or sequence.
ALGEB Member(Evaluator* ev, const std::string& name, Node* call) {
  std::vector<ALGEB> a = ev->EvaluateArguments(call->children, 1);
  if (a.size() != 2)
    RaiseIn(name, "member expects 2 arguments, received " + std::to_string(a.size()));
  if (!IsList(a[1]) && !IsSet(a[1]))
    RaiseIn(name, FormatMessage("expects a list or set, received %1", a[1], nullptr));
  for (ALGEB x : Ops(a[1]))
    if (Equal(x, a[0])) return True();
  return False();
}

// `if`(c, a, b): a when c holds, b otherwise; only the one chosen is evaluated.
ALGEB IfBuiltin(Evaluator* ev, const std::string& name, Node* call) {
  if (call->children.size() != 4)
    RaiseIn(name, "if expects 3 arguments, received " + std::to_string(call->children.size() - 1));
  ALGEB c = EvalBoolean(ev->Evaluate(call->children[1]));
  if (!IsTrue(c) && !IsFalse(c))
    RaiseIn(name, FormatMessage("cannot tell whether %1 is true or false", c, nullptr));
  return ev->Evaluate(call->children[IsTrue(c) ? 2 : 3]);
}

}  // namespace

BuiltinFn CollectionBuiltin(const std::string& name) {
  if (name == "type") return TypeBuiltin;
  if (name == "add") return AddBuiltin;
  if (name == "mul") return MulBuiltin;
  if (name == "min" || name == "max") return Extreme;
  if (name == "sort") return SortBuiltin;
  if (name == "cat") return Cat;
  if (name == "eval") return EvalBuiltin;
  if (name == "table") return TableBuiltin;
  if (name == "printf") return Printf;
  if (name == "member") return Member;
  if (name == "if") return IfBuiltin;
  return nullptr;
}

}  // namespace vexa::shell
