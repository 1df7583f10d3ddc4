// The one host error type. Raising formats the message and throws; the host's trap or the
// shell's top level catches it. `where` names the procedure the error was raised in, when
// known, so that the shell can print "Error, (in where) message".
#ifndef VEXA_HOST_ERROR_H
#define VEXA_HOST_ERROR_H

#include <csignal>
#include <stdexcept>
#include <string>
#include <utility>

namespace vexa {

class HostError : public std::runtime_error {
 public:
  explicit HostError(const std::string& message, std::string where_ = std::string())
      : std::runtime_error(message), where(std::move(where_)) {}
  std::string where;
};

[[noreturn]] inline void Raise(const std::string& message) {
  throw HostError(message);
}

// Ctrl-C. A signal handler sets the request; the kernel honours it at its next check (each
// node or float allocation, each level of evaluation) by throwing Interrupted. It is not a
// HostError, so that no trap inside a computation swallows it.
struct Interrupted {};
extern volatile std::sig_atomic_t gInterruptRequest;
inline void CheckInterrupt() {
  if (gInterruptRequest) {
    gInterruptRequest = 0;
    throw Interrupted();
  }
}

}  // namespace vexa

#endif
