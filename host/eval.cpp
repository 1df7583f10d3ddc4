// Evaluation: names to their values, procedure calls, numbers combined in sums, products
// and powers (like terms and equal bases collected); evalf to floats at a given number of
// digits; evalhf to doubles; three-valued boolean evaluation.
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <unordered_map>

#include "float/decimal.h"
#include "float/float_node.h"
#include "host/nodes.h"

namespace vexa {

namespace {

bool IsComplex(ALGEB e) {
  return HasType(e, kComplexNode);
}
bool IsNumber(ALGEB e) {
  return IsNumeric(e) || IsComplex(e);
}
bool IsExactOne(ALGEB e) {
  return IsImmediate(e) && ImmediateValue(e) == 1;
}
bool IsExactZero(ALGEB e) {
  return IsImmediate(e) && ImmediateValue(e) == 0;
}

std::vector<ALGEB> Items(ALGEB e) {
  SeqNode* n = AsSeq(e);
  return std::vector<ALGEB>(n->items, n->items + n->count);
}

// A term as coefficient * monomial.
void SplitTerm(ALGEB t, ALGEB* coefficient, ALGEB* monomial) {
  if (HasType(t, kProductNode) && AsSeq(t)->count >= 2 && IsNumber(AsSeq(t)->items[0])) {
    std::vector<ALGEB> rest(AsSeq(t)->items + 1, AsSeq(t)->items + AsSeq(t)->count);
    *coefficient = AsSeq(t)->items[0];
    *monomial = rest.size() == 1 ? rest[0] : NewProduct(rest);
  } else {
    *coefficient = NewInteger(1);
    *monomial = t;
  }
}

ALGEB Scale(ALGEB coefficient, ALGEB monomial) {
  if (IsExactOne(coefficient)) return monomial;
  if (HasType(monomial, kProductNode)) {
    std::vector<ALGEB> v{coefficient};
    for (ALGEB f : Items(monomial)) v.push_back(f);
    return NewProduct(v);
  }
  return NewProduct({coefficient, monomial});
}

// Distinct values in order of first appearance. Past a few, they are found again through their
// hash, so that collecting n terms takes O(n) and not O(n^2) comparisons.
class Distinct {
 public:
  // The index of x, added when it is new.
  size_t Find(ALGEB x) {
    if (items_.size() < kLinear) {
      for (size_t i = 0; i < items_.size(); ++i)
        if (Equal(items_[i], x)) return i;
    } else {
      if (index_.empty())
        for (size_t i = 0; i < items_.size(); ++i) index_[Hash(items_[i])].push_back(i);
      std::vector<size_t>& bucket = index_[Hash(x)];
      for (size_t i : bucket)
        if (Equal(items_[i], x)) return i;
      bucket.push_back(items_.size());
    }
    items_.push_back(x);
    return items_.size() - 1;
  }
  size_t size() const { return items_.size(); }
  ALGEB operator[](size_t i) const { return items_[i]; }

 private:
  static constexpr size_t kLinear = 8;
  std::vector<ALGEB> items_;
  std::unordered_map<size_t, std::vector<size_t>> index_;
};

// Operands of nested sums (or products) lifted into one list.
std::vector<ALGEB> Flatten(const std::vector<ALGEB>& input, NodeType kind) {
  std::vector<ALGEB> out;
  for (ALGEB e : input) {
    if (HasType(e, kind))
      for (ALGEB u : Items(e)) out.push_back(u);
    else
      out.push_back(e);
  }
  return out;
}

// The names infinity and undefined follow the extended reals: infinity absorbs finite
// terms and positive factors, infinity - infinity, 0 * infinity and infinity / infinity are
// undefined, and undefined absorbs everything.
bool IsGlobalNamed(ALGEB e, const char* text) {
  return IsGlobalName(e) && NameText(e) == text;
}
bool IsRealNumber(ALGEB e) {
  return IsNumeric(e) && !(IsFloatNode(e) && KindOf(AsFloatNode(e)) == kUndefined);
}
ALGEB UndefinedName() {
  return NewName("undefined");
}

ALGEB CombineSum(const std::vector<ALGEB>& input) {
  std::vector<ALGEB> terms = Flatten(input, kSumNode);
  ALGEB number = NewInteger(0);
  Distinct monomials;
  std::vector<ALGEB> coefficients;
  for (ALGEB t : terms) {
    if (IsNumber(t)) {
      number = Add(number, t);
      continue;
    }
    ALGEB c, m;
    SplitTerm(t, &c, &m);
    size_t i = monomials.Find(m);
    if (i == coefficients.size())
      coefficients.push_back(c);
    else
      coefficients[i] = Add(coefficients[i], c);
  }
  for (size_t i = 0; i < monomials.size(); ++i) {
    if (IsGlobalNamed(monomials[i], "undefined")) return monomials[i];
    if (!IsGlobalNamed(monomials[i], "infinity") || !IsRealNumber(coefficients[i])) continue;
    if (IsZero(coefficients[i])) return UndefinedName();  // infinity - infinity
    coefficients[i] = NewInteger(Sign(coefficients[i]));
    if (IsRealNumber(number)) number = NewInteger(0);
  }
  std::vector<ALGEB> out;
  for (size_t i = 0; i < monomials.size(); ++i)
    if (!IsExactZero(coefficients[i])) out.push_back(Scale(coefficients[i], monomials[i]));
  if (out.empty()) return number;
  if (!IsExactZero(number)) out.push_back(number);
  return out.size() == 1 ? out[0] : NewSum(out);
}

ALGEB CombinePower(ALGEB base, ALGEB exponent);

ALGEB CombineProduct(const std::vector<ALGEB>& input) {
  std::vector<ALGEB> factors = Flatten(input, kProductNode);
  ALGEB number = NewInteger(1);
  Distinct bases;
  std::vector<ALGEB> exponents;
  bool infinite = false, vanishing = false;  // factors infinity^(e > 0), infinity^(e < 0)
  for (ALGEB f : factors) {
    if (IsNumber(f)) {
      number = Multiply(number, f);
      continue;
    }
    ALGEB b = f, e = NewInteger(1);
    if (HasType(f, kPowerNode) && IsNumber(AsSeq(f)->items[1])) {
      b = AsSeq(f)->items[0];
      e = AsSeq(f)->items[1];
    }
    if (IsGlobalNamed(b, "undefined")) return b;
    if (IsGlobalNamed(b, "infinity") && IsRealNumber(e) && !IsZero(e)) {
      (Sign(e) > 0 ? infinite : vanishing) = true;
      continue;
    }
    size_t i = bases.Find(b);
    if (i == exponents.size())
      exponents.push_back(e);
    else
      exponents[i] = Add(exponents[i], e);
  }
  if (infinite && (vanishing || IsZero(number))) return UndefinedName();  // 0*inf, inf/inf
  if (vanishing) return NewInteger(0);
  if (infinite) {
    if (IsRealNumber(number)) number = NewInteger(Sign(number));
    bases.Find(NewName("infinity"));
    exponents.push_back(NewInteger(1));
  }
  if (IsZero(number) && !IsComplex(number)) return number;
  std::vector<ALGEB> out;
  for (size_t i = 0; i < bases.size(); ++i) {
    ALGEB p = CombinePower(bases[i], exponents[i]);
    if (IsNumber(p))
      number = Multiply(number, p);
    else
      out.push_back(p);
  }
  if (out.empty()) return number;
  if (!IsExactOne(number)) out.insert(out.begin(), number);
  return out.size() == 1 ? out[0] : NewProduct(out);
}

ALGEB CombinePower(ALGEB base, ALGEB exponent) {
  if (IsNumber(base) && IsNumber(exponent)) return Power(base, exponent);
  if (IsExactOne(exponent)) return base;
  if (IsExactZero(exponent)) return NewInteger(1);
  if (IsExactOne(base)) return base;
  if (IsGlobalNamed(base, "undefined")) return base;
  if (IsGlobalNamed(base, "infinity") && IsRealNumber(exponent) && !IsZero(exponent))
    return Sign(exponent) > 0 ? base : NewInteger(0);
  // (x^a)^n = x^(a*n) for an integer n
  if (HasType(base, kPowerNode) && IsInteger(exponent) && IsNumber(AsSeq(base)->items[1]))
    return CombinePower(AsSeq(base)->items[0], Multiply(AsSeq(base)->items[1], exponent));
  return NewPower(base, exponent);
}

ALGEB EvalIndexed(ALGEB base, const std::vector<ALGEB>& indices, ALGEB unevaluatedBase) {
  if (IsTable(base)) {
    ALGEB v = TableGet(base, indices.size() == 1 ? indices[0] : NewExpseq(indices));
    if (v != nullptr) return v;
    return NewIndexed(unevaluatedBase, indices);
  }
  if (IsRTable(base)) {
    std::vector<M_INT> idx;
    for (ALGEB i : indices) {
      if (!IsInteger(i)) RaiseExpected("an integer index into an rtable", i);
      idx.push_back(static_cast<M_INT>(IntegerValue(i)));
    }
    if (static_cast<M_INT>(idx.size()) != RTableNumDimensions(GetKernel(), base))
      RaiseFormatted("wrong number of indices for %1", base);
    return RTableGetElement(base, idx.data());
  }
  if (IsList(base) || IsExpseq(base)) {
    if (indices.size() != 1 || !IsInteger(indices[0]))
      RaiseFormatted("expected one integer index, received %1", NewExpseq(indices));
    long long i = IntegerValue(indices[0]), n = AsSeq(base)->count;
    if (i < 0) i += n + 1;
    if (i < 1 || i > n) RaiseFormatted("index out of range: %1", indices[0]);
    return AsSeq(base)->items[i - 1];
  }
  return NewIndexed(unevaluatedBase, indices);
}

bool IsConstantKind(uint32_t t) {
  return t == kIntegerNode || t == kRationalNode || t == kFloatNode || t == kStringNode ||
         t == kProcedureNode || t == kRTableNode || t == kTableNode || t == kComplexNode ||
         t == kBooleanNode;
}

// ---- evalf ----

ALGEB EvalfRec(ALGEB e, int digits);

std::vector<ALGEB> EvalfItems(ALGEB e, int digits) {
  std::vector<ALGEB> v;
  for (ALGEB x : Items(e)) v.push_back(EvalfRec(x, digits));
  return v;
}

ALGEB EvalfRec(ALGEB e, int digits) {
  NestingGuard guard;
  if (IsInteger(e) || IsRational(e)) return ExactToFloat(e, digits).Handle();
  uint32_t t = NodeTypeOf(e);
  switch (t) {
    case kFloatNode:
      return VexaFloatRound(FloatFromHandle(e), digits).Handle();
    case kNameNode: {
      std::string n = NameText(e);
      if (n == "Pi") return VexaFloatPi().Handle();
      if (n == "infinity") return VexaFloatInfinity(1).Handle();
      if (n == "undefined") return VexaFloatUndefined().Handle();
      return e;
    }
    case kComplexNode:
      return NewComplex(EvalfRec(AsSeq(e)->items[0], digits), EvalfRec(AsSeq(e)->items[1], digits));
    case kSumNode:
      return CombineSum(EvalfItems(e, digits));
    case kProductNode:
      return CombineProduct(EvalfItems(e, digits));
    case kPowerNode: {
      ALGEB b = EvalfRec(AsSeq(e)->items[0], digits);
      ALGEB x = AsSeq(e)->items[1];
      // keep small integer exponents exact: x^2 stays x^2, 2.^3 is computed
      if (!IsInteger(x) || IsNumber(b)) x = EvalfRec(x, digits);
      return CombinePower(b, x);
    }
    case kFunctionNode: {
      std::vector<ALGEB> v = EvalfItems(e, digits);
      ALGEB head = AsSeq(e)->items[0];
      v.erase(v.begin());
      if (IsName(head) && v.size() == 1 && IsFloatNode(v[0])) {
        std::string n = NameText(head);
        if (VexaHasEvalf1(n.c_str())) return VexaEvalf1(n.c_str(), FloatFromHandle(v[0])).Handle();
      }
      return NewFunction(head, v);
    }
    case kListNode:
      return NewList(EvalfItems(e, digits));
    case kSetNode:
      return NewSet(EvalfItems(e, digits));
    case kExpseqNode:
      return NewExpseq(EvalfItems(e, digits));
    case kRangeNode:
    case kEquationNode:
    case kInequalityNode:
    case kNotNode:
    case kAndNode:
    case kOrNode: {
      ALGEB r = NewSeqNode(t, AsSeq(e)->count, HeaderBits(e));
      std::vector<ALGEB> v = EvalfItems(e, digits);
      for (size_t i = 0; i < v.size(); ++i) AsSeq(r)->items[i] = v[i];
      return r;
    }
    case kIndexedNode: {
      std::vector<ALGEB> v = EvalfItems(e, digits);
      v.erase(v.begin());
      return NewIndexed(AsSeq(e)->items[0], v);
    }
    default:
      return e;
  }
}

}  // namespace

ALGEB Eval(ALGEB e) {
  if (e == nullptr) Raise("internal error: evaluating a null handle");
  if (IsImmediate(e)) return e;
  uint32_t t = NodeTypeOf(e);
  if (IsConstantKind(t)) return e;
  NestingGuard guard;
  switch (t) {
    case kNameNode: {
      ALGEB v = Lookup(e);
      if (v == nullptr) return e;
      if (IsNode(v) && !IsConstantKind(NodeTypeOf(v))) return Eval(v);
      return v;
    }
    case kListNode:
    case kExpseqNode:
    case kSetNode: {
      std::vector<ALGEB> v;
      for (ALGEB x : Items(e)) v.push_back(Eval(x));
      if (t == kListNode) {
        ALGEB flat = NewExpseq(v);
        return NewList(IsNull(flat) ? std::vector<ALGEB>{} : Items(flat));
      }
      return t == kSetNode ? NewSet(v) : NewExpseq(v);
    }
    case kSumNode: {
      std::vector<ALGEB> v;
      for (ALGEB x : Items(e)) v.push_back(Eval(x));
      return CombineSum(v);
    }
    case kProductNode: {
      std::vector<ALGEB> v;
      for (ALGEB x : Items(e)) v.push_back(Eval(x));
      return CombineProduct(v);
    }
    case kPowerNode:
      return CombinePower(Eval(AsSeq(e)->items[0]), Eval(AsSeq(e)->items[1]));
    case kFunctionNode: {
      ALGEB head = AsSeq(e)->items[0];
      ALGEB f = IsName(head) ? Lookup(head) : Eval(head);
      std::vector<ALGEB> args;
      for (uint32_t i = 1; i < AsSeq(e)->count; ++i) args.push_back(Eval(AsSeq(e)->items[i]));
      if (f != nullptr && IsProcedure(f)) return CallProcedure(head, NewExpseq(args));
      ALGEB flat = NewExpseq(args);
      std::vector<ALGEB> a = IsNull(flat) ? std::vector<ALGEB>{} : Items(flat);
      // an elementary function of a float argument is computed
      if (IsName(head) && a.size() == 1 && IsFloatNode(a[0])) {
        std::string n = NameText(head);
        if (VexaHasEvalf1(n.c_str())) return VexaEvalf1(n.c_str(), FloatFromHandle(a[0])).Handle();
      }
      return NewFunction(f != nullptr && !IsName(head) ? f : head, a);
    }
    case kIndexedNode: {
      ALGEB base = AsSeq(e)->items[0];
      std::vector<ALGEB> indices;
      for (uint32_t i = 1; i < AsSeq(e)->count; ++i) indices.push_back(Eval(AsSeq(e)->items[i]));
      ALGEB value = IsName(base) ? Lookup(base) : Eval(base);
      return EvalIndexed(value == nullptr ? base : value, indices, base);
    }
    default: {
      ALGEB r = NewSeqNode(t, AsSeq(e)->count, HeaderBits(e));
      for (uint32_t i = 0; i < AsSeq(e)->count; ++i) AsSeq(r)->items[i] = Eval(AsSeq(e)->items[i]);
      return r;
    }
  }
}

ALGEB Evalf(ALGEB e, int digits) {
  if (digits < 1 || digits > VEXA_MAX_DIGITS)
    Raise("evalf needs a number of digits from 1 to 1000000, received " + std::to_string(digits));
  VexaDigitsScope scope(digits);
  return EvalfRec(Eval(e), digits);
}

ALGEB Evalf(ALGEB e) {
  return Evalf(e, VexaDigits());
}

double FloatToDouble(const VexaFloat& x) {
  if (IsVexaFloatUndefined(x)) return std::nan("");
  if (IsVexaFloatInfinity(x)) return HUGE_VAL;
  if (IsVexaFloatNegativeInfinity(x)) return -HUGE_VAL;
  return std::strtod(VexaFloatToString(x).c_str(), nullptr);
}

ALGEB NewFloatFromDouble(double x) {
  return ShortestDoubleToNode(x);
}

double Evalhf(ALGEB e) {
  ALGEB r = IsFloatNode(e) ? e : Evalf(e, 18);
  if (!IsFloatNode(r)) RaiseFormatted("unable to evaluate %1 to a hardware float", e);
  return FloatToDouble(FloatFromHandle(r));
}

ALGEB EvalBoolean(ALGEB e) {
  ALGEB v = Eval(e);
  if (v == True() || v == False() || v == Fail()) return v;
  auto b = [](bool x) { return x ? True() : False(); };
  auto undecided = [&]() {
    RaiseFormatted("cannot determine if this expression is true or false: %1", v);
  };
  switch (TypeOf(v)) {
    case kEquationNode:
    case kInequalityNode: {
      ALGEB l = AsSeq(v)->items[0], r = AsSeq(v)->items[1];
      bool numeric = IsNumeric(l) && IsNumeric(r);
      if (TypeOf(v) == kEquationNode) return b(numeric ? Compare(l, r) == 0 : Equal(l, r));
      RelationKind kind = RelationOf(v);
      if (kind == kNotEqual) return b(numeric ? Compare(l, r) != 0 : !Equal(l, r));
      if (!numeric) undecided();
      int c = Compare(l, r);
      if (c == 2) return False();
      return b(kind == kLess ? c < 0 : c <= 0);
    }
    case kNotNode: {
      ALGEB a = EvalBoolean(AsSeq(v)->items[0]);
      return a == Fail() ? a : b(a == False());
    }
    case kAndNode:
    case kOrNode: {
      bool isAnd = TypeOf(v) == kAndNode;
      ALGEB x = EvalBoolean(AsSeq(v)->items[0]);
      if (x == (isAnd ? False() : True())) return x;
      ALGEB y = EvalBoolean(AsSeq(v)->items[1]);
      if (y == (isAnd ? False() : True())) return y;
      return (x == Fail() || y == Fail()) ? Fail() : y;
    }
    default:
      undecided();
      return Fail();  // not reached
  }
}

ALGEB AssignIndexed(ALGEB base, const std::vector<ALGEB>& indices, ALGEB value) {
  if (indices.empty()) Raise("an indexed assignment needs at least one index");
  ALGEB target = base;
  if (IsName(base)) {
    target = Lookup(base);
    if (target == nullptr) {
      target = NewTable();
      Assign(base, target);
    }
  }
  if (IsTable(target)) {
    TablePut(target, indices.size() == 1 ? indices[0] : NewExpseq(indices), value);
  } else if (IsRTable(target)) {
    std::vector<M_INT> idx;
    for (ALGEB i : indices) {
      if (!IsInteger(i)) RaiseExpected("an integer index into an rtable", i);
      idx.push_back(static_cast<M_INT>(IntegerValue(i)));
    }
    if (static_cast<M_INT>(idx.size()) != RTableNumDimensions(GetKernel(), target))
      RaiseFormatted("wrong number of indices for %1", target);
    RTableSetElement(target, idx.data(), value);
  } else if (IsList(target) && IsName(base)) {
    if (indices.size() != 1 || !IsInteger(indices[0]))
      RaiseFormatted("expected one integer index, received %1", NewExpseq(indices));
    long long i = IntegerValue(indices[0]), n = AsSeq(target)->count;
    if (i < 1 || i > n) RaiseFormatted("index out of range: %1", indices[0]);
    std::vector<ALGEB> items = Items(target);
    items[i - 1] = value;
    Assign(base, NewList(items));  // lists are values: the name gets a new list
  } else {
    RaiseFormatted("cannot assign to an index of %1", IsName(base) ? target : base);
  }
  return value;
}

}  // namespace vexa
