// Parser. Precedence, loosest first: -> ; or ; and ; not ; = <> < <= > >= ; .. ; + - ;
// * / ; unary - ; ^ ; calls and indexing.
#include "shell/parser.h"

#include <cstring>

namespace vexa::shell {
namespace {

Node* Make(NodeKind kind, const Token& at, std::string text = "") {
  Node* n = new Node(kind, at.position);
  n->text.assign(text.data(), text.size());
  return n;
}

Node* MakeBinary(const Token& op, Node* a, Node* b) {
  Node* n = Make(NodeKind::kBinary, op, op.text);
  n->position = a->position;
  n->children = {a, b};
  return n;
}

std::string Describe(const Token& t) {
  switch (t.kind) {
    case TokenKind::kEnd:
      return "end of input";
    case TokenKind::kString:
      return "string \"" + t.text + "\"";
    default:
      return "\"" + t.text + "\"";
  }
}

}  // namespace

// One level of nesting for as long as it lives; too many levels are a syntax error, not a
// stack overflow.
Parser::Deeper::Deeper(Parser* p) : parser(p) {
  if (++parser->depth_ > kMaxNesting) parser->TooDeep();
  if (StackAlmostFull()) throw SyntaxError{"too many levels of recursion", parser->Peek().position};
}
Parser::Deeper::~Deeper() {
  --parser->depth_;
}

const Token& Parser::Peek(size_t ahead) const {
  size_t i = pos_ + ahead;
  return i < tokens_.size() ? tokens_[i] : tokens_.back();
}

Token Parser::Next() {
  Token t = Peek();
  if (pos_ < tokens_.size() - 1) ++pos_;
  return t;
}

bool Parser::IsSymbol(const char* s, size_t ahead) const {
  const Token& t = Peek(ahead);
  return t.kind == TokenKind::kSymbol && t.text == s;
}

bool Parser::IsKeyword(const char* s, size_t ahead) const {
  const Token& t = Peek(ahead);
  return t.kind == TokenKind::kKeyword && t.text == s;
}

bool Parser::Accept(const char* s) {
  if (IsSymbol(s) || IsKeyword(s)) {
    Next();
    return true;
  }
  return false;
}

Token Parser::Expect(const char* s, const char* context) {
  if (!IsSymbol(s) && !IsKeyword(s)) Unexpected(Peek(), context);
  return Next();
}

void Parser::Unexpected(const Token& t, const char* context) const {
  if (t.kind == TokenKind::kError) throw SyntaxError{t.text, t.position};
  std::string message = "unexpected " + Describe(t);
  if (context != nullptr) message += std::string(", expected ") + context;
  throw SyntaxError{message, t.position, t.kind == TokenKind::kEnd};
}

void Parser::TooDeep() const {
  throw SyntaxError{
      "expression nested too deeply (more than " + std::to_string(kMaxNesting) + " levels)",
      Peek().position};
}

// Skips the rest of the broken statement, read again from its start: its end is the first
// ';' or ':' outside every block (if, for, while, proc up to their end) and, up to the fault,
// outside every bracket. An unclosed block runs to the end of the text: one error, not one
// per line that follows.
void Parser::Recover() {
  size_t fault = pos_;
  pos_ = start_;
  int blocks = 0, brackets = 0;
  while (!AtEnd()) {
    Token t = Next();
    if (t.kind == TokenKind::kKeyword) {
      if (t.text == "if" || t.text == "for" || t.text == "while" || t.text == "proc") ++blocks;
      if (t.text == "fi" || t.text == "od") --blocks;
      if (t.text == "end") {
        --blocks;
        if (IsKeyword("if") || IsKeyword("do") || IsKeyword("proc")) Next();
      }
    } else if (t.kind == TokenKind::kSymbol) {
      if (t.text == "(" || t.text == "[" || t.text == "{") ++brackets;
      if (t.text == ")" || t.text == "]" || t.text == "}") --brackets;
      if ((t.text == ";" || t.text == ":") && blocks <= 0 && (brackets <= 0 || pos_ > fault))
        return;
    }
  }
}

Node* Parser::ParseStatement() {
  depth_ = 0;
  start_ = pos_;
  return Statement(true);
}

Node* Parser::Statement(bool topLevel) {
  Deeper guard(this);
  const Token& start = Peek();
  Node* s;
  if (IsSymbol(";") || IsSymbol(":")) {
    s = Make(NodeKind::kNull, start);
  } else if (IsKeyword("if")) {
    s = IfStatement();
  } else if (IsKeyword("for")) {
    s = ForStatement();
  } else if (IsKeyword("while")) {
    s = WhileStatement();
  } else if (IsKeyword("break") || IsKeyword("next")) {
    Token t = Next();
    s = Make(t.text == "break" ? NodeKind::kBreak : NodeKind::kNext, t);
  } else if (IsKeyword("return")) {
    Token r = Next();
    s = Make(NodeKind::kReturn, r);
    if (!IsSymbol(";") && !IsSymbol(":") && !IsKeyword("end") && !IsKeyword("fi") &&
        !IsKeyword("od") && !IsKeyword("else") && !IsKeyword("elif") && !AtEnd())
      s->children.push_back(Sequence());
  } else {
    Node* e = Sequence();
    if (IsSymbol(":=")) {
      Token op = Next();
      Node* a = Make(NodeKind::kAssign, op);
      a->position = e->position;
      a->children = {e, Sequence()};
      s = a;
    } else {
      s = e;
    }
  }
  if (IsSymbol(";") || IsSymbol(":")) {
    s->silent = Next().text == ":";
  } else if (topLevel && lenientEnd_ && AtEnd()) {
    // the last statement of a script may go without its terminator
  } else if (topLevel || !(IsKeyword("end") || IsKeyword("fi") || IsKeyword("od") ||
                           IsKeyword("else") || IsKeyword("elif"))) {
    Unexpected(Peek(), "\";\" or \":\"");
  }
  return s;
}

Node* Parser::Block() {
  Node* b = Make(NodeKind::kBlock, Peek());
  while (!(IsKeyword("end") || IsKeyword("fi") || IsKeyword("od") || IsKeyword("else") ||
           IsKeyword("elif"))) {
    if (AtEnd()) Unexpected(Peek());
    b->children.push_back(Statement(false));
  }
  return b;
}

// `end what` or the old closing word (fi, od); a bare `end` is accepted too.
void Parser::EndOf(const char* what, const char* alternative) {
  if (alternative != nullptr && Accept(alternative)) return;
  Expect("end", (std::string("\"end ") + what + "\"").c_str());
  if (IsKeyword(what)) Next();
}

Node* Parser::IfStatement() {
  Token t = Next();
  Node* n = Make(NodeKind::kIf, t);
  n->children.push_back(Expression());
  Expect("then", "\"then\"");
  n->children.push_back(Block());
  while (Accept("elif")) {
    n->children.push_back(Expression());
    Expect("then", "\"then\"");
    n->children.push_back(Block());
  }
  if (Accept("else")) n->children.push_back(Block());
  EndOf("if", "fi");
  return n;
}

Node* Parser::ForStatement() {
  Token t = Next();
  if (Peek().kind != TokenKind::kName) Unexpected(Peek(), "a loop variable");
  std::string var = Next().text;
  if (Accept("in")) {
    Node* n = Make(NodeKind::kForIn, t, var);
    n->children.push_back(Expression());
    Expect("do", "\"do\"");
    n->children.push_back(Block());
    EndOf("do", "od");
    return n;
  }
  Node* n = Make(NodeKind::kForFrom, t, var);
  Node* from = nullptr;
  Node* by = nullptr;
  Node* to = nullptr;
  for (;;) {
    if (Accept("from"))
      from = Expression();
    else if (Accept("by"))
      by = Expression();
    else if (Accept("to"))
      to = Expression();
    else
      break;
  }
  n->children = {from, by, to};
  Expect("do", "\"do\"");
  n->children.push_back(Block());
  EndOf("do", "od");
  return n;
}

Node* Parser::WhileStatement() {
  Token t = Next();
  Node* n = Make(NodeKind::kWhile, t);
  n->children.push_back(Expression());
  Expect("do", "\"do\"");
  n->children.push_back(Block());
  EndOf("do", "od");
  return n;
}

Node* Parser::Sequence() {
  Node* first = Expression();
  if (!IsSymbol(",")) return first;
  Node* s = Make(NodeKind::kSequence, Peek());
  s->position = first->position;
  s->children.push_back(first);
  while (Accept(",")) s->children.push_back(Expression());
  return s;
}

Node* Parser::Expression() {
  Deeper guard(this);
  return ArrowAhead() ? Arrow() : Or();
}

// x -> ... or (x, y) -> ...
bool Parser::ArrowAhead() const {
  if (Peek().kind == TokenKind::kName && IsSymbol("->", 1)) return true;
  if (!IsSymbol("(")) return false;
  size_t i = 1;
  if (IsSymbol(")", i)) return IsSymbol("->", i + 1);
  for (;;) {
    if (Peek(i).kind != TokenKind::kName) return false;
    ++i;
    if (IsSymbol(")", i)) return IsSymbol("->", i + 1);
    if (!IsSymbol(",", i)) return false;
    ++i;
  }
}

Node* Parser::Arrow() {
  Node* n = Make(NodeKind::kProcedure, Peek());
  n->arrow = true;
  if (Peek().kind == TokenKind::kName) {
    n->params.emplace_back(Next().text);
  } else {
    Next();  // (
    while (!IsSymbol(")")) {
      n->params.emplace_back(Next().text);
      Accept(",");
    }
    Next();  // )
  }
  Expect("->", "\"->\"");
  n->children.push_back(Expression());
  return n;
}

Node* Parser::Or() {
  Node* a = And();
  while (IsKeyword("or")) {
    Token op = Next();
    a = MakeBinary(op, a, And());
  }
  return a;
}

Node* Parser::And() {
  Node* a = Not();
  while (IsKeyword("and")) {
    Token op = Next();
    a = MakeBinary(op, a, Not());
  }
  return a;
}

Node* Parser::Not() {
  if (IsKeyword("not")) {
    Token op = Next();
    Deeper guard(this);
    Node* n = Make(NodeKind::kUnary, op, "not");
    n->children.push_back(Not());
    return n;
  }
  return Relation();
}

Node* Parser::Relation() {
  Node* a = Range();
  for (const char* op : {"=", "<>", "<", "<=", ">", ">="}) {
    if (IsSymbol(op)) {
      Token t = Next();
      return MakeBinary(t, a, Range());
    }
  }
  return a;
}

Node* Parser::Range() {
  Node* a = Sum();
  if (IsSymbol("..")) {
    Token t = Next();
    return MakeBinary(t, a, Sum());
  }
  return a;
}

Node* Parser::Sum() {
  Node* a = Term();
  while (IsSymbol("+") || IsSymbol("-")) {
    Token op = Next();
    a = MakeBinary(op, a, Term());
  }
  return a;
}

Node* Parser::Term() {
  Node* a = Unary();
  while (IsSymbol("*") || IsSymbol("/")) {
    Token op = Next();
    a = MakeBinary(op, a, Unary());
  }
  return a;
}

Node* Parser::Unary() {
  if (IsSymbol("-") || IsSymbol("+")) {
    Token op = Next();
    Deeper guard(this);
    Node* operand = Unary();
    if (op.text == "+") return operand;
    Node* n = Make(NodeKind::kUnary, op, "-");
    n->children.push_back(operand);
    return n;
  }
  return Power();
}

Node* Parser::Power() {
  Node* a = Postfix();
  if (IsSymbol("^")) {
    Token op = Next();
    Deeper guard(this);
    return MakeBinary(op, a, Unary());
  }
  return a;
}

// Calls and indexing chain to the left (f(1)(2), a[1][2]): each link is a level of nesting.
Node* Parser::Postfix() {
  Node* a = Primary();
  for (int links = 1;; ++links) {
    if (depth_ + links > kMaxNesting && (IsSymbol("(") || IsSymbol("[") || IsSymbol("!")))
      TooDeep();
    if (IsSymbol("(")) {
      Token t = Next();
      Node* call = Make(NodeKind::kCall, t);
      call->position = a->position;
      call->children.push_back(a);
      Arguments(call, ")");
      a = call;
    } else if (IsSymbol("[")) {
      Token t = Next();
      Node* index = Make(NodeKind::kIndex, t);
      index->position = a->position;
      index->children.push_back(a);
      Arguments(index, "]");
      a = index;
    } else if (IsSymbol("!")) {
      Token t = Next();
      Node* call = Make(NodeKind::kCall, t);
      call->position = a->position;
      call->children = {Make(NodeKind::kName, t, "factorial"), a};
      a = call;
    } else {
      return a;
    }
  }
}

void Parser::Arguments(Node* into, const char* close) {
  if (Accept(close)) return;
  for (;;) {
    into->children.push_back(Expression());
    if (Accept(close)) return;
    Expect(",", (std::string("\",\" or \"") + close + "\"").c_str());
  }
}

Node* Parser::Primary() {
  const Token& t = Peek();
  switch (t.kind) {
    case TokenKind::kInteger:
      return Make(NodeKind::kInteger, Next(), t.text);
    case TokenKind::kFloat:
      return Make(NodeKind::kFloat, Next(), t.text);
    case TokenKind::kString:
      return Make(NodeKind::kString, Next(), t.text);
    case TokenKind::kName:
      return Make(NodeKind::kName, Next(), t.text);
    case TokenKind::kQuoted:
      return Make(NodeKind::kQuoted, Next(), t.text);
    default:
      break;
  }
  if (IsKeyword("proc")) return ProcedureExpression();
  if (IsSymbol("(")) {
    Token open = Next();
    if (Accept(")")) return Make(NodeKind::kSequence, open);  // () is NULL
    Node* e = Sequence();
    Expect(")", "\")\"");
    return e;
  }
  if (IsSymbol("[") || IsSymbol("{")) {
    Token open = Next();
    bool list = open.text == "[";
    Node* n = Make(list ? NodeKind::kList : NodeKind::kSet, open);
    Arguments(n, list ? "]" : "}");
    return n;
  }
  Unexpected(t, "an expression");
}

Node* Parser::ProcedureExpression() {
  Token t = Next();
  Node* n = Make(NodeKind::kProcedure, t);
  Expect("(", "\"(\"");
  while (!IsSymbol(")")) {
    if (Peek().kind != TokenKind::kName) Unexpected(Peek(), "a parameter name");
    n->params.emplace_back(Next().text);
    // a type annotation (x::numeric) is not part of the language
    if (!IsSymbol(")")) Expect(",", "\",\" or \")\"");
  }
  Next();
  Accept(";");
  for (;;) {
    if (Accept("local")) {
      do {
        if (Peek().kind != TokenKind::kName) Unexpected(Peek(), "a local name");
        n->locals.emplace_back(Next().text);
      } while (Accept(","));
      Expect(";", "\";\"");
    } else if (IsKeyword("option") || IsKeyword("options") || IsKeyword("global")) {
      Next();
      while (!IsSymbol(";") && !AtEnd()) Next();
      Expect(";", "\";\"");
    } else {
      break;
    }
  }
  n->children.push_back(Block());
  EndOf("proc", nullptr);
  return n;
}

}  // namespace vexa::shell
