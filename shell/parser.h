// Recursive-descent parser for the shell's language. Statements are parsed one at a time so
// that a script runs each statement before the next is read, and a syntax error skips only
// to the next statement terminator.
#ifndef VEXA_SHELL_PARSER_H
#define VEXA_SHELL_PARSER_H

#include <vector>

#include "host/kernel.h"
#include "shell/ast.h"
#include "shell/lexer.h"

namespace vexa::shell {

class Parser {
 public:
  // With lenientEnd, the last statement of the text may omit its terminator (vexa -e '1+1').
  Parser(std::vector<Token> tokens, bool lenientEnd)
      : tokens_(std::move(tokens)), lenientEnd_(lenientEnd) {}

  bool AtEnd() const { return Peek().kind == TokenKind::kEnd; }
  // One statement with its terminator; throws SyntaxError.
  Node* ParseStatement();
  // After an error: skip past the end of the broken statement.
  void Recover();

 private:
  struct Deeper {
    explicit Deeper(Parser* p);
    ~Deeper();
    Parser* parser;
  };

  const Token& Peek(size_t ahead = 0) const;
  Token Next();
  bool IsSymbol(const char* s, size_t ahead = 0) const;
  bool IsKeyword(const char* s, size_t ahead = 0) const;
  bool Accept(const char* s);  // symbol or keyword
  Token Expect(const char* s, const char* context);
  [[noreturn]] void Unexpected(const Token& t, const char* context = nullptr) const;
  [[noreturn]] void TooDeep() const;

  Node* Statement(bool topLevel);
  Node* Block();  // statements up to a closing keyword
  void EndOf(const char* what, const char* alternative);
  Node* IfStatement();
  Node* ForStatement();
  Node* WhileStatement();
  Node* Sequence();
  Node* Expression();
  Node* Arrow();
  Node* Or();
  Node* And();
  Node* Not();
  Node* Relation();
  Node* Range();
  Node* Sum();
  Node* Term();
  Node* Unary();
  Node* Power();
  Node* Postfix();
  Node* Primary();
  Node* ProcedureExpression();
  void Arguments(Node* into, const char* close);
  bool ArrowAhead() const;

  std::vector<Token> tokens_;
  size_t pos_ = 0;
  size_t start_ = 0;  // of the statement being parsed
  int depth_ = 0;
  bool lenientEnd_;
};

}  // namespace vexa::shell

#endif
