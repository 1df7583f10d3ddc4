// Errors as the user sees them: "Error, (in NAME) message", NAME being the function called.
#include "host/error.h"
#include "shell/builtins.h"

namespace vexa::shell {

std::string ErrorText(const HostError& e) {
  if (e.where.empty()) return e.what();
  return "(in " + e.where + ") " + e.what();
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
  return CallNamedEntry(name, [&] { return CallProcedure(proc, args); });
}

void SyntaxErrorInAssignment(const std::string& target) {
  throw HostError("cannot assign to " + target);
}

}  // namespace vexa::shell
