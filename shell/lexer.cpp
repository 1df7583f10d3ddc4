// Lexer: numbers, strings, names (plain and `quoted`), keywords and operators; `#` starts
// a comment that runs to the end of the line.
#include "shell/lexer.h"

#include <cctype>
#include <set>

namespace vexa::shell {
namespace {

const std::set<std::string> kKeywords = {
    "proc", "end", "local", "global", "return",  "if",    "then", "elif", "else",
    "fi",   "for", "from",  "to",     "by",      "in",    "do",   "od",   "while",
    "and",  "or",  "not",   "option", "options", "break", "next"};

// Longest first, so that ":=" wins over ":".
const char* const kSymbols[] = {":=", "..", "->", "<>", "<=", ">=", "(", ")", "[", "]", "{", "}",
                                ",",  ";",  ":",  "=",  "<",  ">",  "+", "-", "*", "/", "^", "!"};

bool IsNameStart(char c) {
  return std::isalpha(static_cast<unsigned char>(c)) || c == '_';
}
bool IsNameChar(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}
bool IsDigit(char c) {
  return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

}  // namespace

std::vector<Token> Tokenize(const std::string& s, SyntaxError* error) {
  std::vector<Token> tokens;
  *error = SyntaxError{};
  size_t i = 0, n = s.size();
  Position pos;
  auto advance = [&](size_t count) {
    for (size_t k = 0; k < count && i < n; ++k, ++i) {
      if (s[i] == '\n') {
        ++pos.line;
        pos.column = 1;
      } else {
        ++pos.column;
      }
    }
  };
  try {
    while (i < n) {
      char c = s[i];
      if (std::isspace(static_cast<unsigned char>(c))) {
        advance(1);
        continue;
      }
      if (c == '#') {
        while (i < n && s[i] != '\n') advance(1);
        continue;
      }
      Token t{TokenKind::kEnd, "", pos, i};
      if (IsDigit(c) || (c == '.' && i + 1 < n && IsDigit(s[i + 1]))) {
        size_t j = i;
        bool isFloat = false;
        while (j < n && IsDigit(s[j])) ++j;
        // a point makes a float unless it starts a range (1..5)
        if (j < n && s[j] == '.' && !(j + 1 < n && s[j + 1] == '.')) {
          isFloat = true;
          ++j;
          while (j < n && IsDigit(s[j])) ++j;
        }
        if (j < n && (s[j] == 'e' || s[j] == 'E')) {
          size_t k = j + 1;
          if (k < n && (s[k] == '+' || s[k] == '-')) ++k;
          if (k < n && IsDigit(s[k])) {
            isFloat = true;
            j = k;
            while (j < n && IsDigit(s[j])) ++j;
          }
        }
        t.kind = isFloat ? TokenKind::kFloat : TokenKind::kInteger;
        t.text = s.substr(i, j - i);
        advance(j - i);
        if (i < n && IsNameStart(s[i])) {
          // one error token for the number and the name it runs into (2x, 1e5y)
          size_t k = i;
          while (k < n && IsNameChar(s[k])) ++k;
          t.kind = TokenKind::kError;
          t.text = "a number cannot run into a name: \"" + t.text + s.substr(i, k - i) + "\"";
          advance(k - i);
        }
        tokens.push_back(t);
        continue;
      }
      if (IsNameStart(c)) {
        size_t j = i;
        while (j < n && IsNameChar(s[j])) ++j;
        t.text = s.substr(i, j - i);
        t.kind = kKeywords.count(t.text) ? TokenKind::kKeyword : TokenKind::kName;
        advance(j - i);
        tokens.push_back(t);
        continue;
      }
      if (c == '\'') {
        size_t j = i + 1;
        while (j < n && IsNameChar(s[j])) ++j;
        if (j == i + 1 || !IsNameStart(s[i + 1]) || j >= n || s[j] != '\'')
          throw SyntaxError{"a quote ' must enclose a name, as in 'Normal'", t.position, true};
        t.kind = TokenKind::kQuoted;
        t.text = s.substr(i + 1, j - i - 1);
        advance(j + 1 - i);
        tokens.push_back(t);
        continue;
      }
      if (c == '"' || c == '`') {
        char quote = c;
        std::string text;
        size_t j = i + 1;
        while (j < n && s[j] != quote) {
          if (s[j] == '\\' && j + 1 < n && quote == '"') {
            char e = s[j + 1];
            text += e == 'n' ? '\n' : (e == 't' ? '\t' : e);
            j += 2;
          } else {
            text += s[j++];
          }
        }
        if (j >= n)
          throw SyntaxError{quote == '"' ? "unterminated string" : "unterminated quoted name",
                            t.position, true};
        t.kind = quote == '"' ? TokenKind::kString : TokenKind::kName;
        t.text = text;
        advance(j + 1 - i);
        tokens.push_back(t);
        continue;
      }
      bool matched = false;
      for (const char* sym : kSymbols) {
        size_t len = std::char_traits<char>::length(sym);
        if (s.compare(i, len, sym) == 0) {
          t.kind = TokenKind::kSymbol;
          t.text = sym;
          advance(len);
          tokens.push_back(t);
          matched = true;
          break;
        }
      }
      if (!matched) {
        std::string shown(1, c);
        if (!std::isprint(static_cast<unsigned char>(c))) {
          char buf[8];
          snprintf(buf, sizeof buf, "\\x%02x", static_cast<unsigned char>(c));
          shown = buf;
        }
        tokens.push_back(Token{TokenKind::kError, "unknown character \"" + shown + "\"", pos, i});
        advance(1);
      }
    }
  } catch (const SyntaxError& e) {
    *error = e;
    tokens.push_back(Token{TokenKind::kEnd, "", e.position, i});
    return tokens;
  }
  tokens.push_back(Token{TokenKind::kEnd, "", pos, n});
  return tokens;
}

}  // namespace vexa::shell
