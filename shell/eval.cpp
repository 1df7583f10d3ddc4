// Statement execution and expression evaluation. Names evaluate to their values (locals of
// the running procedure first), exact numbers combine exactly, and what cannot be made
// numeric stays symbolic.
#include "shell/eval.h"

#include <set>

#include "host/error.h"
#include "shell/builtins.h"
#include "shell/library.h"

namespace vexa::shell {
namespace {

constexpr int kMaxCallDepth = 800;

// Leaves a procedure: carries the returned value up to the call.
struct ReturnSignal {
  ALGEB value;
};
// break and next: caught by the innermost loop.
struct LoopSignal {
  bool leave;
};
// A procedure body is outside the loops of its caller.
struct LoopScope {
  explicit LoopScope(int* depth) : depth(depth), saved(*depth) { *depth = 0; }
  ~LoopScope() { *depth = saved; }
  int* depth;
  int saved;
};

Evaluator* gEvaluator = nullptr;

ALGEB CallHook(Kernel*, ALGEB proc, void* body, ALGEB args) {
  return gEvaluator->CallInterpreted(proc, static_cast<Node*>(body), args);
}

std::string PrintBody(void* body);

const ProcedureHooks kHooks = {CallHook, PrintBody};

const std::set<std::string> kProtected = {
    "Pi",    "infinity",  "undefined", "true",   "false",   "FAIL", "NULL", "evalf", "seq",
    "time",  "randomize", "Array",     "Vector", "convert", "nops", "op",   "lhs",   "rhs",
    "Float", "type",      "add",       "mul",    "min",     "max",  "sort"};

// Values of a sequence are spliced into lists, sets and argument lists.
void Splice(std::vector<ALGEB>* into, ALGEB v) {
  if (IsExpseq(v)) {
    for (ALGEB x : Ops(v)) into->push_back(x);
  } else {
    into->push_back(v);
  }
}

bool IsComplexNode(ALGEB e) {
  return IsNode(e) && TypeOf(e) == kComplexNode;
}
bool IsArithmeticOperand(ALGEB e) {
  return IsNumeric(e) || IsComplexNode(e);
}

// Symbolic arithmetic: the kernel's evaluation collects like terms and equal bases.
ALGEB SymbolicNegate(ALGEB a) {
  return Eval(NewProduct({NewInteger(-1), a}));
}

// a op b for + - * / ^: numbers combine, anything else stays symbolic.
ALGEB Arithmetic(const std::string& op, ALGEB a, ALGEB b) {
  if (IsArithmeticOperand(a) && IsArithmeticOperand(b)) {
    if (op == "+") return Add(a, b);
    if (op == "-") return Subtract(a, b);
    if (op == "*") return Multiply(a, b);
    if (op == "/") return Divide(a, b);
    if (op == "^") return vexa::Power(a, b);
  }
  if (op == "+") return Eval(NewSum({a, b}));
  if (op == "-") return Eval(NewSum({a, SymbolicNegate(b)}));
  if (op == "*") return Eval(NewProduct({a, b}));
  if (op == "/") return Eval(NewProduct({a, NewPower(b, NewInteger(-1))}));
  if (op == "^") return Eval(NewPower(a, b));
  RaiseFormatted("unknown operator " + op);
}

// Operators that chain to the left without limit (a + b - c + ...): 0 for the others.
int ChainKind(Node* n) {
  if (n->kind != NodeKind::kBinary) return 0;
  const TreeString& op = n->text;
  if (op == "+" || op == "-") return 1;
  if (op == "*" || op == "/") return 2;
  if (op == "and") return 3;
  if (op == "or") return 4;
  return 0;
}

// The links of the chain that n heads, n first and the leftmost link last. A chain is a
// left-leaning tree as deep as it is long; walking its left edge in a loop keeps a million
// terms from needing a million frames. Any other binary node is a chain of one link.
std::vector<Node*> ChainLinks(Node* n) {
  std::vector<Node*> links{n};
  int kind = ChainKind(n);
  if (kind == 0) return links;
  while (ChainKind(links.back()->children[0]) == kind) links.push_back(links.back()->children[0]);
  return links;
}

std::string Unparse(Node* n);

std::string UnparseList(const TreeVector<Node*>& nodes, size_t from) {
  std::string s;
  for (size_t i = from; i < nodes.size(); ++i) {
    if (i > from) s += ", ";
    s += Unparse(nodes[i]);
  }
  return s;
}

std::string UnparseBlock(Node* block) {
  std::string s;
  for (Node* c : block->children) s += " " + Unparse(c) + (c->kind == NodeKind::kNull ? "" : ";");
  return s;
}

// Text of a syntax tree, for printing procedures.
std::string Unparse(Node* n) {
  if (n == nullptr) return "";
  switch (n->kind) {
    case NodeKind::kInteger:
    case NodeKind::kFloat:
    case NodeKind::kName:
      return std::string(n->text);
    case NodeKind::kQuoted:
      return "'" + std::string(n->text) + "'";
    case NodeKind::kString:
      return "\"" + std::string(n->text) + "\"";
    case NodeKind::kIndex:
      return Unparse(n->children[0]) + "[" + UnparseList(n->children, 1) + "]";
    case NodeKind::kCall:
      return Unparse(n->children[0]) + "(" + UnparseList(n->children, 1) + ")";
    case NodeKind::kBinary: {
      std::vector<Node*> links = ChainLinks(n);
      Node* first = links.back()->children[0];
      std::string s = Unparse(first);
      if (first->kind == NodeKind::kBinary) s = "(" + s + ")";
      for (auto it = links.rbegin(); it != links.rend(); ++it) {
        std::string op((*it)->text);
        std::string r = Unparse((*it)->children[1]);
        if ((*it)->children[1]->kind == NodeKind::kBinary) r = "(" + r + ")";
        bool tight = op == "^" || op == "*" || op == "/";
        s += tight ? op + r : " " + op + " " + r;
      }
      return s;
    }
    case NodeKind::kUnary:
      return n->text == "not" ? "not " + Unparse(n->children[0]) : "-" + Unparse(n->children[0]);
    case NodeKind::kList:
      return "[" + UnparseList(n->children, 0) + "]";
    case NodeKind::kSet:
      return "{" + UnparseList(n->children, 0) + "}";
    case NodeKind::kSequence:
      return UnparseList(n->children, 0);
    case NodeKind::kProcedure: {
      std::string params;
      for (size_t i = 0; i < n->params.size(); ++i) params += (i ? ", " : "") + n->params[i];
      if (n->arrow) return "(" + params + ") -> " + Unparse(n->children[0]);
      std::string s = "proc (" + params + ")";
      if (!n->locals.empty()) {
        s += " local ";
        for (size_t i = 0; i < n->locals.size(); ++i) s += (i ? ", " : "") + n->locals[i];
        s += ";";
      }
      return s + UnparseBlock(n->children[0]) + " end proc";
    }
    case NodeKind::kAssign:
      return Unparse(n->children[0]) + " := " + Unparse(n->children[1]);
    case NodeKind::kIf: {
      std::string s;
      size_t i = 0;
      for (; i + 1 < n->children.size(); i += 2)
        s += (i == 0 ? "if " : " elif ") + Unparse(n->children[i]) + " then" +
             UnparseBlock(n->children[i + 1]);
      if (i < n->children.size()) s += " else" + UnparseBlock(n->children[i]);
      return s + " end if";
    }
    case NodeKind::kForFrom: {
      std::string s = "for " + std::string(n->text);
      if (n->children[0]) s += " from " + Unparse(n->children[0]);
      if (n->children[1]) s += " by " + Unparse(n->children[1]);
      if (n->children[2]) s += " to " + Unparse(n->children[2]);
      return s + " do" + UnparseBlock(n->children[3]) + " end do";
    }
    case NodeKind::kForIn:
      return "for " + std::string(n->text) + " in " + Unparse(n->children[0]) + " do" +
             UnparseBlock(n->children[1]) + " end do";
    case NodeKind::kWhile:
      return "while " + Unparse(n->children[0]) + " do" + UnparseBlock(n->children[1]) + " end do";
    case NodeKind::kReturn:
      return n->children.empty() ? "return" : "return " + Unparse(n->children[0]);
    case NodeKind::kBreak:
      return "break";
    case NodeKind::kNext:
      return "next";
    case NodeKind::kBlock:
      return UnparseBlock(n);
    case NodeKind::kNull:
      return "";
  }
  return "";
}

std::string PrintBody(void* body) {
  return Unparse(static_cast<Node*>(body));
}

}  // namespace

Evaluator::Evaluator() : kernel_(GetKernel()) {
  gEvaluator = this;
}

bool Evaluator::Execute(Node* statement, std::ostream& out, std::ostream& err) {
  out_ = &out;
  frames_.clear();
  callDepth_ = 0;
  loopDepth_ = 0;
  interrupted_ = false;
  try {
    Run(statement, !statement->silent);
    return true;
  } catch (const Interrupted&) {
    out.flush();
    err << "Error, interrupted\n";
    interrupted_ = true;
  } catch (const HostError& e) {
    out.flush();
    err << "Error, " << ErrorText(e) << "\n";
  } catch (const ReturnSignal&) {
    out.flush();
    err << "Error, return used outside a procedure\n";
  } catch (const std::bad_alloc&) {
    out.flush();
    err << "Error, out of memory\n";
  } catch (const std::exception& e) {
    out.flush();
    err << "Error, " << e.what() << "\n";
  }
  err.flush();
  return false;
}

void Evaluator::Echo(ALGEB value) {
  if (value == nullptr || IsNull(value)) return;
  *out_ << Print(value) << "\n";
}

// Runs a statement. Top-level statements (and those of top-level loops and conditionals)
// echo their values when echo is set.
ALGEB Evaluator::Run(Node* s, bool echo) {
  NestingGuard guard;
  switch (s->kind) {
    case NodeKind::kNull:
      return Null();
    case NodeKind::kAssign: {
      ALGEB value = Evaluate(s->children[1]);
      AssignTo(s->children[0], value);
      if (echo && frames_.empty()) Echo(value);
      return value;
    }
    case NodeKind::kIf: {
      size_t i = 0;
      for (; i + 1 < s->children.size(); i += 2)
        if (Condition(s->children[i])) return RunBlock(s->children[i + 1], echo);
      if (i < s->children.size()) return RunBlock(s->children[i], echo);
      return Null();
    }
    case NodeKind::kForFrom: {
      ALGEB from = s->children[0] ? Evaluate(s->children[0]) : NewInteger(1);
      ALGEB by = s->children[1] ? Evaluate(s->children[1]) : NewInteger(1);
      ALGEB to = s->children[2] ? Evaluate(s->children[2]) : nullptr;
      if (!IsNumeric(from) || !IsNumeric(by) || (to && !IsNumeric(to)))
        RaiseFormatted("for loop bounds must be numeric, received %1",
                       NewExpseq({from, to ? to : Null()}));
      if (IsZero(by)) RaiseFormatted("for loop step must not be zero");
      int direction = vexa::Sign(by);
      ALGEB result = Null();
      for (ALGEB i = from;; i = Add(i, by)) {
        if (to != nullptr) {
          int c = Compare(i, to);
          if (c == 2 || c == direction) break;
        }
        AssignName(std::string(s->text), i);
        if (!RunLoopBody(s->children[3], echo, &result)) break;
      }
      return result;
    }
    case NodeKind::kForIn: {
      ALGEB container = Evaluate(s->children[0]);
      std::vector<ALGEB> items = ContainerItems(container);
      ALGEB result = Null();
      for (ALGEB x : items) {
        AssignName(std::string(s->text), x);
        if (!RunLoopBody(s->children[1], echo, &result)) break;
      }
      return result;
    }
    case NodeKind::kWhile: {
      ALGEB result = Null();
      while (Condition(s->children[0]))
        if (!RunLoopBody(s->children[1], echo, &result)) break;
      return result;
    }
    case NodeKind::kBreak:
    case NodeKind::kNext:
      if (loopDepth_ == 0)
        RaiseFormatted(std::string(s->kind == NodeKind::kBreak ? "break" : "next") +
                       " used outside a loop");
      throw LoopSignal{s->kind == NodeKind::kBreak};
    case NodeKind::kReturn: {
      if (frames_.empty()) RaiseFormatted("return used outside a procedure");
      throw ReturnSignal{s->children.empty() ? Null() : Evaluate(s->children[0])};
    }
    default: {
      ALGEB value = Evaluate(s);
      if (echo && frames_.empty()) Echo(value);
      return value;
    }
  }
}

// One round of a loop; false when it ends in break.
bool Evaluator::RunLoopBody(Node* block, bool echo, ALGEB* result) {
  ++loopDepth_;
  try {
    *result = RunBlock(block, echo);
  } catch (const LoopSignal& signal) {
    --loopDepth_;
    return !signal.leave;
  } catch (...) {
    --loopDepth_;
    throw;
  }
  --loopDepth_;
  return true;
}

ALGEB Evaluator::RunBlock(Node* block, bool echo) {
  ALGEB result = Null();
  for (Node* s : block->children) result = Run(s, echo && !s->silent);
  return result;
}

bool Evaluator::Condition(Node* e) {
  ALGEB v = EvalBoolean(Evaluate(e));
  if (IsTrue(v)) return true;
  if (IsFalse(v)) return false;
  RaiseFormatted("cannot determine if this expression is true or false: %1", Evaluate(e));
}

// A procedure's parameters and locals are fresh local name nodes, one set per call; their
// values live in the nodes as a global name's does.
ALGEB Evaluator::NameNode(const std::string& name) {
  if (!frames_.empty()) {
    auto it = frames_.back()->names.find(name);
    if (it != frames_.back()->names.end()) return it->second;
  }
  return NewName(name, true);
}

ALGEB Evaluator::EvaluateName(const std::string& name) {
  ALGEB n = NameNode(name);
  if (IsGlobalName(n)) {
    if (name == "true") return True();
    if (name == "false") return False();
    if (name == "FAIL") return Fail();
    if (name == "NULL") return Null();
  }
  ALGEB v = Lookup(n);
  return v != nullptr ? v : n;
}

void Evaluator::CheckAssignable(ALGEB name) {
  if (IsGlobalName(name) && kProtected.count(NameText(name)))
    RaiseFormatted("attempting to assign to `" + NameText(name) + "` which is protected");
}

void Evaluator::AssignName(const std::string& name, ALGEB value) {
  ALGEB n = NameNode(name);
  CheckAssignable(n);
  Assign(n, value);
}

ALGEB Evaluator::SavedValue(const std::string& name) {
  return Lookup(NameNode(name));
}

void Evaluator::RestoreName(const std::string& name, ALGEB saved) {
  if (saved == nullptr)
    Unassign(NameNode(name));
  else
    Assign(NameNode(name), saved);
}

void Evaluator::AssignTo(Node* target, ALGEB value) {
  switch (target->kind) {
    case NodeKind::kName:
      AssignName(std::string(target->text), value);
      return;
    case NodeKind::kIndex: {
      // through the name, so that an unassigned name becomes a table and a list is replaced
      Node* base = target->children[0];
      ALGEB b = base->kind == NodeKind::kName ? NameNode(std::string(base->text)) : Evaluate(base);
      if (IsName(b)) CheckAssignable(b);
      AssignIndexed(b, EvaluateArguments(target->children, 1), value);
      return;
    }
    case NodeKind::kSequence: {
      std::vector<ALGEB> values;
      Splice(&values, value);
      if (values.size() != target->children.size())
        RaiseFormatted("cannot assign " + std::to_string(values.size()) + " values to " +
                       std::to_string(target->children.size()) + " names");
      for (size_t i = 0; i < values.size(); ++i) AssignTo(target->children[i], values[i]);
      return;
    }
    default:
      SyntaxErrorInAssignment(Unparse(target));
  }
}

std::vector<ALGEB> Evaluator::EvaluateArguments(const TreeVector<Node*>& nodes, size_t from) {
  std::vector<ALGEB> values;
  for (size_t i = from; i < nodes.size(); ++i) Splice(&values, Evaluate(nodes[i]));
  return values;
}

ALGEB Evaluator::Evaluate(Node* e) {
  NestingGuard guard;
  switch (e->kind) {
    case NodeKind::kInteger:
      return NewIntegerFromString(std::string(e->text));
    case NodeKind::kFloat:
      try {
        return NewFloat(VexaFloatFromString(std::string(e->text)));
      } catch (const std::invalid_argument& bad) {
        RaiseFormatted(bad.what());  // an exponent beyond the float range
      }
    case NodeKind::kString:
      return NewString(std::string(e->text));
    case NodeKind::kName:
      return EvaluateName(std::string(e->text));
    case NodeKind::kQuoted:
      return NameNode(std::string(e->text));
    case NodeKind::kIndex:
      return EvaluateIndex(e);
    case NodeKind::kCall:
      return EvaluateCall(e);
    case NodeKind::kBinary:
      return EvaluateBinary(e);
    case NodeKind::kUnary: {
      ALGEB a = Evaluate(e->children[0]);
      if (e->text == "not") return EvalBoolean(NewNot(a));
      return IsArithmeticOperand(a) ? Negate(a) : SymbolicNegate(a);
    }
    case NodeKind::kList:
      return NewList(EvaluateArguments(e->children, 0));
    case NodeKind::kSet:
      return NewSet(EvaluateArguments(e->children, 0));
    case NodeKind::kSequence:
      return NewExpseq(EvaluateArguments(e->children, 0));
    case NodeKind::kProcedure:
      return NewInterpretedProcedure(e, &kHooks, {e->params.begin(), e->params.end()});
    default:
      return Run(e, false);
  }
}

ALGEB Evaluator::EvaluateIndex(Node* e) {
  ALGEB base = Evaluate(e->children[0]);
  std::vector<ALGEB> indices = EvaluateArguments(e->children, 1);
  return Select(base, indices);
}

ALGEB Evaluator::EvaluateBinary(Node* e) {
  std::string op(e->text);
  if (ChainKind(e) != 0) {
    std::vector<Node*> links = ChainLinks(e);
    ALGEB value = Evaluate(links.back()->children[0]);
    if (op == "and" || op == "or") {
      // short circuit, as conditions expect
      value = EvalBoolean(value);
      for (auto it = links.rbegin(); it != links.rend(); ++it) {
        if (op == "and" ? IsFalse(value) : IsTrue(value)) break;
        ALGEB b = EvalBoolean(Evaluate((*it)->children[1]));
        value = EvalBoolean(op == "and" ? NewAnd(value, b) : NewOr(value, b));
      }
      return value;
    }
    // numbers combine one by one; from the first symbolic operand on, the rest of the chain
    // is collected into one sum (product) that the kernel evaluates once
    std::vector<ALGEB> rest;
    for (auto it = links.rbegin(); it != links.rend(); ++it) {
      ALGEB b = Evaluate((*it)->children[1]);
      std::string link((*it)->text);
      if (rest.empty() && IsArithmeticOperand(value) && IsArithmeticOperand(b)) {
        value = Arithmetic(link, value, b);
        continue;
      }
      if (rest.empty()) rest.push_back(value);
      if (link == "-") b = IsArithmeticOperand(b) ? Negate(b) : SymbolicNegate(b);
      if (link == "/") b = NewPower(b, NewInteger(-1));
      rest.push_back(b);
    }
    if (rest.empty()) return value;
    return Eval(op == "+" || op == "-" ? NewSum(rest) : NewProduct(rest));
  }
  ALGEB a = Evaluate(e->children[0]);
  ALGEB b = Evaluate(e->children[1]);
  if (op == "=") return NewEquation(a, b);
  if (op == "<>") return NewRelation(kNotEqual, a, b);
  if (op == "<") return NewRelation(kLess, a, b);
  if (op == "<=") return NewRelation(kLessEqual, a, b);
  if (op == ">") return NewRelation(kLess, b, a);
  if (op == ">=") return NewRelation(kLessEqual, b, a);
  if (op == "..") return NewRange(a, b);
  return Arithmetic(op, a, b);
}

// A procedure, a builtin or a library entry point called by name, or a procedure value. A
// name whose value is another name calls that one: after f := sin, f(1.) is sin(1.). (One
// function, so that a call costs one frame of the C++ stack.)
ALGEB Evaluator::EvaluateCall(Node* e) {
  Node* head = e->children[0];
  // 'f'(x) is the unevaluated call, whatever f stands for
  if (head->kind == NodeKind::kQuoted)
    return NewFunction(NameNode(std::string(head->text)), EvaluateArguments(e->children, 1));
  std::string name;
  if (head->kind == NodeKind::kName) {
    name = std::string(head->text);
  } else {
    ALGEB f = Evaluate(head);
    if (!IsName(f)) {
      std::vector<ALGEB> args = EvaluateArguments(e->children, 1);
      if (IsProcedure(f)) return CallProcedure(f, NewExpseq(args));
      return NewFunction(f, args);
    }
    name = NameText(f);
  }
  ALGEB nameNode = NameNode(name);
  ALGEB value = Lookup(nameNode);
  for (int hops = 0; value != nullptr && IsName(value) && value != nameNode && hops < 100;
       ++hops) {
    name = NameText(value);
    nameNode = NameNode(name);
    value = Lookup(nameNode);
  }
  if (value == nullptr || !IsProcedure(value)) {
    bool found = false;
    ALGEB r = Builtin(this, name, e, &found);
    if (found) return r;
    if (name.compare(0, 4, "Vexa") == 0 && value == nullptr) {
      std::vector<ALGEB> args = EvaluateArguments(e->children, 1);
      r = CallLibrary(name, args, &found);
      if (found) return r;
    }
  }
  std::vector<ALGEB> args = EvaluateArguments(e->children, 1);
  if (value != nullptr && IsProcedure(value)) return CallNamed(name, value, NewExpseq(args));
  return NewFunction(nameNode, args);
}

ALGEB Evaluator::CallLibrary(const std::string& name, const std::vector<ALGEB>& args, bool* found) {
  *found = true;
  if (library_ == nullptr || !library_->Loaded())
    RaiseIn(name, name + " cannot be called: " +
                      (library_ ? library_->Status() : std::string("no library")));
  Library::EntryPoint f = library_->Find(name);
  if (f == nullptr) RaiseIn(name, name + " is not exported by the statistics library");
  return CallNamedEntry(name, [&] { return f(kernel_, NewExpseq(args)); });
}

ALGEB Evaluator::CallInterpreted(ALGEB proc, Node* body, ALGEB args) {
  (void)proc;
  if (callDepth_ >= kMaxCallDepth)
    RaiseFormatted("too many levels of recursion (more than " + std::to_string(kMaxCallDepth) +
                   ")");
  Frame* frame = new Frame;
  std::vector<ALGEB> values = Ops(args);
  for (size_t i = 0; i < body->params.size(); ++i) {
    std::string param(body->params[i]);
    ALGEB n = frame->names[param] = NewName(param, false);
    if (i < values.size()) Assign(n, values[i]);
  }
  for (const TreeString& l : body->locals) {
    std::string local(l);
    frame->names[local] = NewName(local, false);
  }
  // args: every argument as a sequence, however many parameters; nargs: their count.
  if (!frame->names.count("args"))
    Assign(frame->names["args"] = NewName("args", false), NewExpseq(values));
  if (!frame->names.count("nargs"))
    Assign(frame->names["nargs"] = NewName("nargs", false), NewInteger(values.size()));
  struct Scope {
    std::vector<Frame*>* frames;
    int* depth;
    ~Scope() {
      delete frames->back();
      frames->pop_back();
      --*depth;
    }
  };
  frames_.push_back(frame);
  ++callDepth_;
  Scope scope{&frames_, &callDepth_};
  NestingRestart fresh;
  LoopScope outsideLoops(&loopDepth_);
  try {
    if (body->arrow) return Evaluate(body->children[0]);
    return RunBlock(body->children[0], false);
  } catch (const ReturnSignal& r) {
    return r.value;
  }
}

}  // namespace vexa::shell
