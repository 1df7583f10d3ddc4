// The one host error type. Raising formats the message and throws; the host's trap or the
// shell's top level catches it.
#ifndef VEXA_HOST_ERROR_H
#define VEXA_HOST_ERROR_H

#include <stdexcept>
#include <string>

namespace vexa {

class HostError : public std::runtime_error {
 public:
  explicit HostError(const std::string& message) : std::runtime_error(message) {}
};

[[noreturn]] inline void Raise(const std::string& message) { throw HostError(message); }

}  // namespace vexa

#endif
