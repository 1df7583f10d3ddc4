// Errors as the user sees them: "Error, (in NAME) message", NAME being the function called.
#include "host/error.h"
#include "shell/builtins.h"

namespace vexa::shell {
namespace {

// Length of the well-formed UTF-8 sequence at s[i] (a character from U+0080 up), or 0.
size_t Utf8Length(const std::string& s, size_t i) {
  unsigned char c = static_cast<unsigned char>(s[i]);
  size_t n = c >= 0xF0 && c <= 0xF4 ? 4 : c >= 0xE0 ? 3 : c >= 0xC2 && c < 0xE0 ? 2 : 0;
  if (n == 0 || c > 0xF4 || i + n > s.size()) return 0;
  for (size_t k = 1; k < n; ++k)
    if ((static_cast<unsigned char>(s[i + k]) & 0xC0) != 0x80) return 0;
  return n;
}

}  // namespace

std::string Printable(const std::string& text) {
  static const char kHex[] = "0123456789abcdef";
  std::string out;
  for (size_t i = 0; i < text.size();) {
    unsigned char c = static_cast<unsigned char>(text[i]);
    size_t n = c >= 0x80 ? Utf8Length(text, i) : 1;
    if (n > 1) {
      out.append(text, i, n);
      i += n;
      continue;
    }
    if ((c < 0x20 && c != '\n' && c != '\t') || c >= 0x7f) {
      out += "\\x";
      out += kHex[c >> 4];
      out += kHex[c & 15];
    } else {
      out += static_cast<char>(c);
    }
    ++i;
  }
  return out;
}

std::string ErrorText(const HostError& e) {
  if (e.where.empty()) return Printable(e.what());
  return Printable("(in " + e.where + ") " + e.what());
}

void RaiseIn(const std::string& where, const std::string& message) {
  throw HostError(message, where);
}

ALGEB CallNamedEntry(const std::string& where, const std::function<ALGEB()>& f) {
  try {
    return f();
  } catch (HostError& e) {
    if (e.where.empty()) e.where = where;
    throw;
  }
}

ALGEB CallNamed(const std::string& name, ALGEB proc, ALGEB args) {
  void* body = IsProcedure(proc) ? ProcedureBody(proc) : nullptr;
  if (body == nullptr || !static_cast<Node*>(body)->package)
    return CallNamedEntry(name, [&] { return CallProcedure(proc, args); });
  try {
    return CallProcedure(proc, args);
  } catch (HostError& e) {
    e.where = name;
    throw;
  }
}

void SyntaxErrorInAssignment(const std::string& target) {
  throw HostError("cannot assign to " + target);
}

}  // namespace vexa::shell
