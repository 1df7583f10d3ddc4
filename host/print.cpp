// The printer: every node kind in the shell's output form, with the fewest parentheses
// that keep the reading unambiguous (precedence: sequence < relation < range < or < and <
// not < sum < product and unary minus < power < atom).
#include "float/float_node.h"
#include "host/nodes.h"

namespace vexa {

namespace {

enum Prec { kSeqP = 0, kRelP, kRangeP, kOrP, kAndP, kNotP, kSumP, kProdP, kPowP, kAtomP };

// Values nest without limit (a list wrapped in a list a hundred thousand times prints), so the
// printer keeps its own stack of what is still to come instead of recursing: a piece is text
// as it is or a value to print at a precedence context.
struct Piece {
  ALGEB e;  // null: text
  int context;
  std::string text;
};

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

class Printer {
 public:
  static constexpr size_t kMaxPrinted = size_t(1) << 28;

  std::string Run(ALGEB e) {
    stack_.push_back({e, kSeqP, ""});
    while (!stack_.empty()) {
      // a value that shares its parts ([x, x] wrapped a hundred times) can be far larger
      // printed than it is in memory
      if (out_.size() > kMaxPrinted)
        Raise("value too large to print (more than " + std::to_string(kMaxPrinted) +
              " characters)");
      Piece p = std::move(stack_.back());
      stack_.pop_back();
      if (p.e == nullptr)
        out_ += p.text;
      else
        Emit(p.e, p.context);
    }
    return std::move(out_);
  }

 private:
  // Parts of one node in reading order; Emit pushes them on the stack last part first.
  struct Parts {
    std::vector<Piece> v;
    void Text(std::string t) { v.push_back({nullptr, 0, std::move(t)}); }
    void Value(ALGEB e, int context) {
      if (e == nullptr)
        Text("<null>");
      else
        v.push_back({e, context, ""});
    }
    void Join(const std::vector<ALGEB>& items, const char* sep, int context) {
      for (size_t i = 0; i < items.size(); ++i) {
        if (i) Text(sep);
        Value(items[i], context);
      }
    }
  };

  void Emit(ALGEB e, int context) {
    bool parenthesized = PrecOf(e) < context;
    if (Atom(e, parenthesized)) return;
    Parts parts;
    if (parenthesized) parts.Text("(");
    Composite(e, parts);
    if (parenthesized) parts.Text(")");
    for (auto it = parts.v.rbegin(); it != parts.v.rend(); ++it) stack_.push_back(std::move(*it));
  }

  // Nodes without operands to print go straight to the output.
  bool Atom(ALGEB e, bool parenthesized) {
    std::string s;
    if (IsImmediate(e)) {
      s = std::to_string(ImmediateValue(e));
    } else {
      switch (NodeTypeOf(e)) {
        case kIntegerNode:
          s = IntegerText(e);
          break;
        case kRationalNode:
          s = IntegerText(AsSeq(e)->items[0]) + "/" + IntegerText(AsSeq(e)->items[1]);
          break;
        case kFloatNode:
          s = VexaFloatToString(FloatFromHandle(e));
          break;
        case kNameNode:
          s = NameText(e);
          break;
        case kStringNode:
          s = Quote(StringText(e));
          break;
        case kBooleanNode: {
          static const char* names[] = {"false", "true", "FAIL"};
          s = names[HeaderBits(e) % 3];
          break;
        }
        case kProcedureNode:
          s = PrintProcedure(e);
          break;
        default:
          return false;
      }
    }
    if (parenthesized) out_ += "(";
    out_ += s;
    if (parenthesized) out_ += ")";
    return true;
  }

  void Composite(ALGEB e, Parts& p) {
    switch (NodeTypeOf(e)) {
      case kListNode:
        p.Text("[");
        p.Join(Items(e), ", ", kSeqP + 1);
        p.Text("]");
        return;
      case kSetNode:
        p.Text("{");
        p.Join(Items(e), ", ", kSeqP + 1);
        p.Text("}");
        return;
      case kExpseqNode:
        p.Join(Items(e), ", ", kSeqP + 1);
        return;
      case kRangeNode:
        p.Join(Items(e), " .. ", kRangeP + 1);
        return;
      case kEquationNode:
        p.Join(Items(e), " = ", kRelP + 1);
        return;
      case kInequalityNode: {
        static const char* ops[] = {" < ", " <= ", " <> "};
        p.Join(Items(e), ops[HeaderBits(e) % 3], kRelP + 1);
        return;
      }
      case kNotNode:
        p.Text("not ");
        p.Value(AsSeq(e)->items[0], kNotP);
        return;
      case kAndNode:
        p.Join(Items(e), " and ", kAndP + 1);
        return;
      case kOrNode:
        p.Join(Items(e), " or ", kOrP + 1);
        return;
      case kSumNode:
        return Sum(e, p);
      case kProductNode:
        return Product(e, p);
      case kPowerNode:
        p.Join(Items(e), "^", kPowP + 1);
        return;
      case kFunctionNode:
      case kIndexedNode: {
        std::vector<ALGEB> v = Items(e);
        ALGEB head = v[0];
        v.erase(v.begin());
        bool call = NodeTypeOf(e) == kFunctionNode;
        p.Value(head, kAtomP + (IsName(head) ? 0 : 1));
        p.Text(call ? "(" : "[");
        p.Join(v, ", ", kSeqP + 1);
        p.Text(call ? ")" : "]");
        return;
      }
      case kComplexNode:
        return Complex(e, p);
      case kTableNode: {
        p.Text("table([");
        bool first = true;
        for (auto& kv : TableEntries(e)) {
          if (!first) p.Text(", ");
          first = false;
          p.Value(kv.first, kRelP + 1);
          p.Text(" = ");
          p.Value(kv.second, kRelP + 1);
        }
        p.Text("])");
        return;
      }
      case kRTableNode:
        return RTable(e, p);
      default:
        p.Text("<unknown node type " + std::to_string(NodeTypeOf(e)) + ">");
    }
  }

  void Product(ALGEB e, Parts& p) {
    std::vector<ALGEB> factors = Items(e);
    if (!factors.empty() && IsNegativeNumber(factors[0])) {
      p.Text("-");
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
    if (num.empty()) p.Text("1");
    p.Join(num, "*", kProdP);
    if (den.size() == 1) {
      p.Text("/");
      p.Value(den[0], kPowP);
    } else if (!den.empty()) {
      p.Text("/(");
      p.Join(den, "*", kProdP);
      p.Text(")");
    }
  }

  void Sum(ALGEB e, Parts& p) {
    std::vector<ALGEB> terms = Items(e);
    for (size_t i = 0; i < terms.size(); ++i) {
      if (i == 0) {
        p.Value(terms[i], kSumP);
      } else if (IsNegativeTerm(terms[i])) {
        p.Text(" - ");
        p.Value(NegateTerm(terms[i]), kProdP);
      } else {
        p.Text(" + ");
        p.Value(terms[i], kProdP);
      }
    }
  }

  void Complex(ALGEB e, Parts& p) {
    ALGEB re = AsSeq(e)->items[0], im = AsSeq(e)->items[1];
    bool negative = IsNegativeNumber(im);
    ALGEB magnitude = negative ? Negate(im) : im;
    bool zeroRe = IsImmediate(re) && ImmediateValue(re) == 0;
    if (zeroRe) {
      if (negative) p.Text("-");
    } else {
      p.Value(re, kSumP);
      p.Text(negative ? " - " : " + ");
    }
    if (IsImmediate(magnitude) && ImmediateValue(magnitude) == 1) {
      p.Text("I");
    } else {
      p.Value(magnitude, kProdP);
      p.Text("*I");
    }
  }

  // Nested lists of an rtable's elements, first index outermost.
  void RTableElements(ALGEB rt, int dim, std::vector<M_INT>& index, Parts& p) {
    const RTableNode* r = AsRTable(rt);
    p.Text("[");
    for (M_INT i = r->bounds[2 * dim]; i <= r->bounds[2 * dim + 1]; ++i) {
      if (i != r->bounds[2 * dim]) p.Text(", ");
      index[dim] = i;
      if (dim + 1 == r->dims)
        p.Value(RTableGetElement(rt, index.data()), kSeqP + 1);
      else
        RTableElements(rt, dim + 1, index, p);
    }
    p.Text("]");
  }

  void RTable(ALGEB rt, Parts& p) {
    const RTableNode* r = AsRTable(rt);
    // a column vector from 1 prints as the shell's Vector(n, [...]), which reads back
    bool vector = r->subtype == RTABLE_COLUMN && r->dims == 1 && r->bounds[0] == 1;
    std::string s = vector ? "Vector(" + std::to_string(r->bounds[1]) + ", " : "Array(";
    for (int d = 0; d < r->dims && !vector; ++d)
      s += std::to_string(r->bounds[2 * d]) + " .. " + std::to_string(r->bounds[2 * d + 1]) + ", ";
    p.Text(s);
    std::vector<M_INT> index(r->dims);
    RTableElements(rt, 0, index, p);
    s.clear();
    if (r->data_type != RTABLE_DAG)
      s += std::string(", datatype = ") + DataTypeName(r->data_type);
    else if (IsName(r->element_type) && NameText(r->element_type) != "anything")
      s += ", datatype = " + NameText(r->element_type);
    if (r->storage == RTABLE_SPARSE) s += ", storage = sparse";
    if (r->order == RTABLE_C) s += ", order = C_order";
    p.Text(s + ")");
  }

  std::string PrintProcedure(ALGEB proc) {
    const ProcedureNode* n = AsProcedure(proc);
    if (n->hooks != nullptr && n->hooks->print != nullptr) return n->hooks->print(n->body);
    std::string params;
    if (!IsNull(n->params)) params = Printer().Run(n->params);
    return "proc (" + params + ") ... end proc";
  }

  std::vector<Piece> stack_;
  std::string out_;
};

}  // namespace

std::string Print(ALGEB e) {
  if (e == nullptr) return "<null>";
  return Printer().Run(e);
}

}  // namespace vexa
