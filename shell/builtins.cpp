// Builtin functions of the shell.
#include "shell/builtins.h"

#include <cstdio>
#include <ctime>
#include <map>
#include <set>

#include "shell/eval.h"

namespace vexa::shell {
namespace {

// Evaluated arguments, checked against an allowed count range.
std::vector<ALGEB> Args(Evaluator* ev, const std::string& name, Node* call, size_t least,
                        size_t most) {
  std::vector<ALGEB> args = ev->EvaluateArguments(call->children, 1);
  if (args.size() < least || args.size() > most) {
    std::string count =
        least == most ? std::to_string(least)
                      : (most == least + 1 ? std::to_string(least) + " or " + std::to_string(most)
                                           : std::to_string(least) + " to " + std::to_string(most));
    bool one = least == most && least == 1;
    RaiseIn(name, name + " expects " + count + (one ? " argument" : " arguments") + ", received " +
                      std::to_string(args.size()));
  }
  return args;
}

ALGEB Evalhf(Evaluator* ev, const std::string& name, Node* call) {
  std::vector<ALGEB> a = Args(ev, name, call, 1, 1);
  return NewFloatFromDouble(vexa::Evalhf(a[0]));
}

// evalb(r): a relation, equation or logical expression decided as true, false or FAIL.
ALGEB Evalb(Evaluator* ev, const std::string& name, Node* call) {
  return EvalBoolean(Args(ev, name, call, 1, 1)[0]);
}

ALGEB Seq(Evaluator* ev, const std::string& name, Node* call) {
  return SeqValues(ev, name, call);
}

ALGEB Time(Evaluator* ev, const std::string& name, Node* call) {
  Args(ev, name, call, 0, 0);
  char buf[64];
  std::snprintf(buf, sizeof buf, "%.3f", static_cast<double>(std::clock()) / CLOCKS_PER_SEC);
  return NewFloat(VexaFloatFromString(buf));
}

ALGEB Nops(Evaluator* ev, const std::string& name, Node* call) {
  std::vector<ALGEB> a = Args(ev, name, call, 1, 1);
  return NewInteger(NumOps(a[0]));
}

ALGEB OpBuiltin(Evaluator* ev, const std::string& name, Node* call) {
  std::vector<ALGEB> a = Args(ev, name, call, 1, 2);
  if (a.size() == 1) return NewExpseq(Ops(a[0]));
  if (!IsInteger(a[0]) || !FitsInt64(a[0]))
    RaiseIn(name, FormatMessage("expects an integer position, received %1", a[0], nullptr));
  long long i = IntegerValue(a[0]);
  int n = NumOps(a[1]);
  if (i < 0) i += n + 1;
  bool hasHead = IsNode(a[1]) && (TypeOf(a[1]) == kFunctionNode);
  if (i < (hasHead ? 0 : 1) || i > n)
    RaiseIn(name, FormatMessage("improper op: position %1 of %2", a[0], a[1]));
  return Op(a[1], static_cast<int>(i));
}

ALGEB Side(Evaluator* ev, const std::string& name, Node* call) {
  std::vector<ALGEB> a = Args(ev, name, call, 1, 1);
  uint32_t t = IsNode(a[0]) ? TypeOf(a[0]) : 0;
  if (t != kEquationNode && t != kInequalityNode && t != kRangeNode)
    RaiseIn(name,
            FormatMessage("expects an equation, inequality or range, received %1", a[0], nullptr));
  return Op(a[0], name == "lhs" ? 1 : 2);
}

ALGEB Convert(Evaluator* ev, const std::string& name, Node* call) {
  std::vector<ALGEB> a = Args(ev, name, call, 2, 2);
  if (!IsName(a[1]) || (NameText(a[1]) != "list" && NameText(a[1]) != "set"))
    RaiseIn(name,
            FormatMessage("cannot convert to %1: only list and set are known", a[1], nullptr));
  std::vector<ALGEB> items = ContainerItems(a[0]);
  return NameText(a[1]) == "list" ? NewList(items) : NewSet(items);
}

// Float(undefined), Float(infinity), Float(-infinity): the printed forms read back.
// Float(m, e) is m * 10^e exactly.
ALGEB FloatBuiltin(Evaluator* ev, const std::string& name, Node* call) {
  std::vector<ALGEB> a = Args(ev, name, call, 1, 2);
  if (a.size() == 2) {
    if (!IsInteger(a[0]) || !IsInteger(a[1]) || !FitsInt64(a[1]))
      RaiseIn(name, FormatMessage("expects an integer mantissa and exponent, received %1",
                                  NewExpseq(a), nullptr));
    return NewFloat(VexaFloatFromString(IntegerText(a[0]) + "e" + IntegerText(a[1])));
  }
  ALGEB f = vexa::Evalf(a[0]);
  if (!IsFloat(f)) RaiseIn(name, FormatMessage("cannot make a float of %1", a[0], nullptr));
  return f;
}

ALGEB ErrorBuiltin(Evaluator* ev, const std::string& name, Node* call) {
  std::vector<ALGEB> a = Args(ev, name, call, 1, 3);
  if (!IsString(a[0])) RaiseIn(name, "expects a message string first");
  RaiseFormatted(StringText(a[0]), a.size() > 1 ? a[1] : nullptr, a.size() > 2 ? a[2] : nullptr);
}

ALGEB PrintBuiltin(Evaluator* ev, const std::string&, Node* call) {
  std::vector<ALGEB> a = ev->EvaluateArguments(call->children, 1);
  ev->Out() << Print(NewExpseq(a)) << "\n";
  return Null();
}

ALGEB Factorial(Evaluator* ev, const std::string& name, Node* call) {
  std::vector<ALGEB> a = Args(ev, name, call, 1, 1);
  if (!IsInteger(a[0])) return NewFunction(NewName(name), a);
  if (!FitsInt64(a[0]) || IntegerValue(a[0]) < 0 || IntegerValue(a[0]) > 100000)
    RaiseIn(name, FormatMessage("expects an integer from 0 to 100000, received %1", a[0], nullptr));
  ALGEB r = NewInteger(1);
  for (long long i = 2; i <= IntegerValue(a[0]); ++i) r = Multiply(r, NewInteger(i));
  return r;
}

// Elementary functions: the kernel evaluates them at floats; at exact arguments the few
// simple exact values are given here, and otherwise the call stays symbolic.
const std::set<std::string> kElementary = {
    "sin", "cos", "tan",   "arctan", "arcsin", "arccos", "sinh", "cosh",  "tanh",   "exp",
    "ln",  "log", "log10", "sqrt",   "abs",    "erf",    "erfc", "GAMMA", "lnGAMMA"};

ALGEB ExactElementary(const std::string& name, ALGEB x) {
  if (name == "abs") return Sign(x) < 0 ? Negate(x) : x;
  if (name == "sqrt" && Sign(x) >= 0) {
    ALGEB r = vexa::Power(x, NewRational(NewInteger(1), NewInteger(2)));
    if (IsNumeric(r)) return r;  // a perfect square
  }
  static const std::set<std::string> zeroAtZero = {"sin",  "tan",  "arctan", "arcsin",
                                                   "sinh", "tanh", "erf"};
  static const std::set<std::string> oneAtZero = {"cos", "cosh", "exp", "erfc"};
  if (IsZero(x) && zeroAtZero.count(name)) return NewInteger(0);
  if (IsZero(x) && oneAtZero.count(name)) return NewInteger(1);
  bool one = Compare(x, NewInteger(1)) == 0;
  if (one && (name == "ln" || name == "log" || name == "log10" || name == "arccos"))
    return NewInteger(0);
  return nullptr;
}

ALGEB Elementary(Evaluator* ev, const std::string& name, Node* call) {
  std::vector<ALGEB> a = Args(ev, name, call, 1, 1);
  if (IsNumeric(a[0]) && !IsFloat(a[0])) {
    ALGEB exact = ExactElementary(name, a[0]);
    if (exact != nullptr) return exact;
  }
  return Eval(NewFunction(NewName(name), a));
}

const std::map<std::string, BuiltinFn>& Table() {
  static const std::map<std::string, BuiltinFn> table = {
      {"evalhf", Evalhf},      {"seq", Seq},
      {"evalb", Evalb},
      {"time", Time},          {"nops", Nops},
      {"op", OpBuiltin},       {"lhs", Side},
      {"rhs", Side},           {"convert", Convert},
      {"Float", FloatBuiltin}, {"error", ErrorBuiltin},
      {"print", PrintBuiltin}, {"factorial", Factorial},
      {"Array", MakeArray},    {"Vector", MakeArray},
  };
  return table;
}

}  // namespace

// seq(e, i = a..b) and seq(e, i = list): e is evaluated once per value of i.
ALGEB SeqValues(Evaluator* ev, const std::string& name, Node* call) {
  if (call->children.size() != 3)
    RaiseIn(name,
            name + " expects 2 arguments, received " + std::to_string(call->children.size() - 1));
  Node* body = call->children[1];
  Node* spec = call->children[2];
  if (spec->kind != NodeKind::kBinary || spec->text != "=" ||
      spec->children[0]->kind != NodeKind::kName)
    RaiseIn(name, name +
                      " expects its second argument to be of the form name = range or "
                      "name = list");
  std::string var(spec->children[0]->text);
  ALGEB over = ev->Evaluate(spec->children[1]);
  std::vector<ALGEB> values;
  if (IsNode(over) && TypeOf(over) == kRangeNode) {
    ALGEB lo = Op(over, 1), hi = Op(over, 2);
    if (!IsNumeric(lo) || !IsNumeric(hi))
      RaiseIn(name, FormatMessage("range bounds must be numeric, received %1", over, nullptr));
    // no sequence can hold 2^31 values: say so rather than fill memory for hours
    if (Compare(Subtract(hi, lo), NewInteger(2147483647)) >= 0)
      RaiseIn(name, FormatMessage("the range %1 holds 2^31 values or more", over, nullptr));
    for (ALGEB i = lo; Compare(i, hi) <= 0; i = Add(i, NewInteger(1))) values.push_back(i);
  } else {
    values = ContainerItems(over);
  }
  ALGEB saved = ev->SavedValue(var);
  std::vector<ALGEB> out;
  try {
    for (ALGEB v : values) {
      ev->AssignName(var, v);
      ALGEB r = ev->Evaluate(body);
      if (IsExpseq(r)) {
        for (ALGEB x : Ops(r)) out.push_back(x);
      } else {
        out.push_back(r);
      }
    }
  } catch (...) {
    ev->RestoreName(var, saved);
    throw;
  }
  ev->RestoreName(var, saved);
  return NewExpseq(out);
}

ALGEB Builtin(Evaluator* ev, const std::string& name, Node* call, bool* found) {
  *found = true;
  auto it = Table().find(name);
  if (it != Table().end()) return it->second(ev, name, call);
  if (kElementary.count(name)) return Elementary(ev, name, call);
  if (BuiltinFn f = CollectionBuiltin(name)) return f(ev, name, call);
  *found = false;
  return nullptr;
}

}  // namespace vexa::shell
