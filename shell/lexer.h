// Tokens of the shell's language.
#ifndef VEXA_SHELL_LEXER_H
#define VEXA_SHELL_LEXER_H

#include <string>
#include <vector>

#include "shell/ast.h"

namespace vexa::shell {

// kError stands for a character that belongs to no token; its text is the message, so that
// the parser reports it where it stands and goes on with the next statement.
// kQuoted: 'name', a name that evaluates to itself.
enum class TokenKind { kInteger, kFloat, kString, kName, kQuoted, kKeyword, kSymbol, kError, kEnd };

struct Token {
  TokenKind kind;
  std::string text;
  Position position;
  size_t offset = 0;  // into the source text
};

// A syntax error, with where it happened.
struct SyntaxError {
  std::string message;
  Position position;
  bool atEnd = false;  // the input ended too soon: more text could complete it
};

// Splits text into tokens. At an unterminated string or name it stops: the tokens read so far end
// there and *error says what went wrong, so that the statements before the fault can still run.
std::vector<Token> Tokenize(const std::string& text, SyntaxError* error);

}  // namespace vexa::shell

#endif
