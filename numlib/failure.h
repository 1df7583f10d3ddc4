// Failure reporting of the numerical library: every routine fills its NagError record
// through these, so the messages read alike.
#ifndef VEXA_NUMLIB_FAILURE_H
#define VEXA_NUMLIB_FAILURE_H

#include <string>

#include "vexa/nag.h"

namespace vexa {

// Sets fail's code and message ("On entry, <what>. Constraint: <constraint>.") and calls
// its handler or prints it when asked. Always returns false, for `return Fail(...)`.
bool Fail(NagError* fail, int code, const char* routine, const std::string& what,
          const std::string& constraint);
// "<name> = <value>" with the value as the float library prints it.
std::string Shows(const char* name, const VexaFloat& value);
std::string Shows(const char* name, long value);
// Clears the record before a routine starts.
void Succeed(NagError* fail);

}  // namespace vexa

#endif
