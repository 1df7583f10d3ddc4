#include "numlib/failure.h"

#include <cstdio>
#include <cstring>

namespace vexa {

bool Fail(NagError* fail, int code, const char* routine, const std::string& what,
          const std::string& constraint) {
  std::string text = "On entry, " + what + ". Constraint: " + constraint + ".";
  fail->code = code;
  std::snprintf(fail->message, sizeof fail->message, "%s", text.c_str());
  if (fail->handler != nullptr)
    fail->handler(fail->message, code, routine);
  else if (fail->print)
    std::fprintf(stderr, "** %s: %s\n", routine, fail->message);
  return false;
}

std::string Shows(const char* name, const VexaFloat& value) {
  std::string text = VexaFloatToString(value);
  if (text.back() == '.') text.pop_back();  // "2", not "2." before the sentence's own stop
  return std::string(name) + " = " + text;
}

std::string Shows(const char* name, long value) {
  return std::string(name) + " = " + std::to_string(value);
}

void Succeed(NagError* fail) {
  fail->code = NE_NOERROR;
  fail->message[0] = '\0';
}

}  // namespace vexa
