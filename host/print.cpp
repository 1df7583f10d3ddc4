// The printer: every node kind in the shell's output form, with the fewest parentheses
// that keep the reading unambiguous (precedence: sequence < relation < range < or < and <
// not < sum < product and unary minus < power < atom).
#include "float/float_node.h"
#include "host/nodes.h"

namespace vexa {

namespace {

enum Prec { kSeqP = 0, kRelP, kRangeP, kOrP, kAndP, kNotP, kSumP, kProdP, kPowP, kAtomP };

std::string PrintAt(ALGEB e, int context);

std::string Join(const std::vector<ALGEB>& v, const char* sep, int context) {
  std::string s;
  for (size_t i = 0; i < v.size(); ++i) {
    if (i) s += sep;
    s += PrintAt(v[i], context);
  }
  return s;
}

std::vector<ALGEB> Items(ALGEB e) {
  return std::vector<ALGEB>(AsSeq(e)->items, AsSeq(e)->items + AsSeq(e)->count);
}

bool IsNegativeNumber(ALGEB e) {
  if (IsInteger(e) || IsRational(e)) return Sign(e) < 0;
  if (IsFloatNode(e))
    return KindOf(AsFloatNode(e)) == kMinusInfinity ||
           (KindOf(AsFloatNode(e)) == kFinite && AsFloatNode(e)->size < 0);
  return false;
}

// A term printed after " - " in a sum: negative numbers and products led by one.
bool IsNegativeTerm(ALGEB e) {
  if (IsNegativeNumber(e)) return true;
  return HasType(e, kProductNode) && AsSeq(e)->count > 0 && IsNegativeNumber(AsSeq(e)->items[0]);
}

ALGEB NegateTerm(ALGEB e) {
  if (IsNumeric(e)) return Negate(e);
  std::vector<ALGEB> v = Items(e);
  v[0] = Negate(v[0]);
  if (IsImmediate(v[0]) && ImmediateValue(v[0]) == 1) v.erase(v.begin());
  return v.size() == 1 ? v[0] : NewProduct(v);
}

int PrecOf(ALGEB e) {
  if (IsNegativeNumber(e)) return kSumP;
  if (IsRational(e)) return kProdP;
  if (!IsNode(e)) return kAtomP;
  switch (NodeTypeOf(e)) {
    case kExpseqNode:
      return AsSeq(e)->count > 1 ? kSeqP : kAtomP;
    case kEquationNode:
    case kInequalityNode:
      return kRelP;
    case kRangeNode:
      return kRangeP;
    case kOrNode:
      return kOrP;
    case kAndNode:
      return kAndP;
    case kNotNode:
      return kNotP;
    case kSumNode:
    case kComplexNode:
      return kSumP;
    case kProductNode:
      return IsNegativeTerm(e) ? kSumP : kProdP;
    case kPowerNode:
      return kPowP;
    default:
      return kAtomP;
  }
}

std::string PrintProduct(ALGEB e) {
  std::vector<ALGEB> factors = Items(e);
  std::string sign;
  if (!factors.empty() && IsNegativeNumber(factors[0])) {
    sign = "-";
    factors[0] = Negate(factors[0]);
    if (IsImmediate(factors[0]) && ImmediateValue(factors[0]) == 1 && factors.size() > 1)
      factors.erase(factors.begin());
  }
  // factors with a negative exact exponent go below the line
  std::vector<ALGEB> num, den;
  for (ALGEB f : factors) {
    if (HasType(f, kPowerNode) &&
        (IsInteger(AsSeq(f)->items[1]) || IsRational(AsSeq(f)->items[1])) &&
        IsNegativeNumber(AsSeq(f)->items[1])) {
      ALGEB x = Negate(AsSeq(f)->items[1]);
      bool one = IsImmediate(x) && ImmediateValue(x) == 1;
      den.push_back(one ? AsSeq(f)->items[0] : NewPower(AsSeq(f)->items[0], x));
    } else {
      num.push_back(f);
    }
  }
  std::string s = sign + (num.empty() ? "1" : Join(num, "*", kProdP));
  if (den.empty()) return s;
  if (den.size() == 1) return s + "/" + PrintAt(den[0], kPowP);
  return s + "/(" + Join(den, "*", kProdP) + ")";
}

std::string PrintSum(ALGEB e) {
  std::vector<ALGEB> terms = Items(e);
  std::string s;
  for (size_t i = 0; i < terms.size(); ++i) {
    if (i == 0)
      s += PrintAt(terms[i], kSumP);
    else if (IsNegativeTerm(terms[i]))
      s += " - " + PrintAt(NegateTerm(terms[i]), kProdP);
    else
      s += " + " + PrintAt(terms[i], kProdP);
  }
  return s;
}

std::string PrintComplex(ALGEB e) {
  ALGEB re = AsSeq(e)->items[0], im = AsSeq(e)->items[1];
  bool negative = IsNegativeNumber(im);
  ALGEB magnitude = negative ? Negate(im) : im;
  std::string imag = (IsImmediate(magnitude) && ImmediateValue(magnitude) == 1)
                         ? "I"
                         : PrintAt(magnitude, kProdP) + "*I";
  if (IsImmediate(re) && ImmediateValue(re) == 0) return (negative ? "-" : "") + imag;
  return PrintAt(re, kSumP) + (negative ? " - " : " + ") + imag;
}

std::string Quote(const std::string& s) {
  std::string out = "\"";
  for (char c : s) {
    if (c == '"' || c == '\\') out += '\\';
    out += c;
  }
  return out + "\"";
}

const char* DataTypeName(int dt) {
  static const char* names[] = {"anything",   "complex",  "integer[1]", "integer[2]", "integer[4]",
                                "integer[8]", "float[8]", "complex[8]", "float[4]"};
  return dt >= 0 && dt < RTABLE_NUM_DATATYPES ? names[dt] : "unknown";
}

// Nested lists of an rtable's elements, first index outermost.
std::string RTableElements(ALGEB rt, int dim, std::vector<M_INT>& index) {
  const RTableNode* r = AsRTable(rt);
  std::string s = "[";
  for (M_INT i = r->bounds[2 * dim]; i <= r->bounds[2 * dim + 1]; ++i) {
    if (i != r->bounds[2 * dim]) s += ", ";
    index[dim] = i;
    s += dim + 1 == r->dims ? PrintAt(RTableGetElement(rt, index.data()), kSeqP + 1)
                            : RTableElements(rt, dim + 1, index);
  }
  return s + "]";
}

std::string PrintRTable(ALGEB rt) {
  const RTableNode* r = AsRTable(rt);
  // a column vector from 1 prints as the shell's Vector(n, [...]), which reads back
  bool vector = r->subtype == RTABLE_COLUMN && r->dims == 1 && r->bounds[0] == 1;
  std::string s = vector ? "Vector(" + std::to_string(r->bounds[1]) + ", " : "Array(";
  for (int d = 0; d < r->dims && !vector; ++d)
    s += std::to_string(r->bounds[2 * d]) + " .. " + std::to_string(r->bounds[2 * d + 1]) + ", ";
  std::vector<M_INT> index(r->dims);
  s += RTableElements(rt, 0, index);
  if (r->data_type != RTABLE_DAG)
    s += std::string(", datatype = ") + DataTypeName(r->data_type);
  else if (IsName(r->element_type) && NameText(r->element_type) != "anything")
    s += ", datatype = " + NameText(r->element_type);
  if (r->storage == RTABLE_SPARSE) s += ", storage = sparse";
  if (r->order == RTABLE_C) s += ", order = C_order";
  return s + ")";
}

std::string PrintProcedure(ALGEB p) {
  const ProcedureNode* n = AsProcedure(p);
  if (n->hooks != nullptr && n->hooks->print != nullptr) return n->hooks->print(n->body);
  std::string params = IsNull(n->params) ? "" : Join(Items(n->params), ", ", kRelP);
  return "proc (" + params + ") ... end proc";
}

std::string PrintNode(ALGEB e) {
  if (IsImmediate(e)) return std::to_string(ImmediateValue(e));
  switch (NodeTypeOf(e)) {
    case kIntegerNode:
      return IntegerText(e);
    case kRationalNode:
      return IntegerText(AsSeq(e)->items[0]) + "/" + IntegerText(AsSeq(e)->items[1]);
    case kFloatNode:
      return VexaFloatToString(FloatFromHandle(e));
    case kNameNode:
      return NameText(e);
    case kStringNode:
      return Quote(StringText(e));
    case kListNode:
      return "[" + Join(Items(e), ", ", kSeqP + 1) + "]";
    case kSetNode:
      return "{" + Join(Items(e), ", ", kSeqP + 1) + "}";
    case kExpseqNode:
      return Join(Items(e), ", ", kSeqP + 1);
    case kRangeNode:
      return PrintAt(AsSeq(e)->items[0], kRangeP + 1) + " .. " +
             PrintAt(AsSeq(e)->items[1], kRangeP + 1);
    case kEquationNode:
      return PrintAt(AsSeq(e)->items[0], kRelP + 1) + " = " +
             PrintAt(AsSeq(e)->items[1], kRelP + 1);
    case kInequalityNode: {
      static const char* ops[] = {" < ", " <= ", " <> "};
      return PrintAt(AsSeq(e)->items[0], kRelP + 1) + ops[HeaderBits(e) % 3] +
             PrintAt(AsSeq(e)->items[1], kRelP + 1);
    }
    case kNotNode:
      return "not " + PrintAt(AsSeq(e)->items[0], kNotP);
    case kAndNode:
      return Join(Items(e), " and ", kAndP + 1);
    case kOrNode:
      return Join(Items(e), " or ", kOrP + 1);
    case kSumNode:
      return PrintSum(e);
    case kProductNode:
      return PrintProduct(e);
    case kPowerNode:
      return PrintAt(AsSeq(e)->items[0], kPowP + 1) + "^" + PrintAt(AsSeq(e)->items[1], kPowP + 1);
    case kFunctionNode:
    case kIndexedNode: {
      std::vector<ALGEB> v = Items(e);
      ALGEB head = v[0];
      v.erase(v.begin());
      bool call = NodeTypeOf(e) == kFunctionNode;
      return PrintAt(head, kAtomP + (IsName(head) ? 0 : 1)) + (call ? "(" : "[") +
             Join(v, ", ", kSeqP + 1) + (call ? ")" : "]");
    }
    case kComplexNode:
      return PrintComplex(e);
    case kBooleanNode: {
      static const char* names[] = {"false", "true", "FAIL"};
      return names[HeaderBits(e) % 3];
    }
    case kProcedureNode:
      return PrintProcedure(e);
    case kTableNode: {
      std::string s = "table([";
      bool first = true;
      for (auto& kv : TableEntries(e)) {
        if (!first) s += ", ";
        first = false;
        s += PrintAt(kv.first, kRelP + 1) + " = " + PrintAt(kv.second, kRelP + 1);
      }
      return s + "])";
    }
    case kRTableNode:
      return PrintRTable(e);
    default:
      return "<unknown node type " + std::to_string(NodeTypeOf(e)) + ">";
  }
}

std::string PrintAt(ALGEB e, int context) {
  if (e == nullptr) return "<null>";
  std::string s = PrintNode(e);
  return PrecOf(e) < context ? "(" + s + ")" : s;
}

}  // namespace

std::string Print(ALGEB e) {
  return PrintAt(e, kSeqP);
}

}  // namespace vexa
