// A shell session: reads statements, runs them one at a time, prints each value or error.
#ifndef VEXA_SHELL_SESSION_H
#define VEXA_SHELL_SESSION_H

#include <memory>
#include <string>

namespace vexa::shell {

class Evaluator;
class Library;

class Session {
 public:
  explicit Session(const char* argv0);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // Runs every statement of text; values go to standard output, errors to standard error.
  // Returns false if any statement failed.
  bool Run(const std::string& text);
  // Does text hold only complete statements (so that an interactive session can run it)?
  bool IsComplete(const std::string& text) const;
  // Empty when the statistics library is loaded; otherwise why it is not.
  const std::string& LibraryStatus() const;
  void Close();
  // An interactive session puts Digits, every name and the random stream back as they were
  // before a statement that is interrupted (Ctrl-C), and drops the statements after it.
  void SetInteractive(bool interactive) { interactive_ = interactive; }

 private:
  void LoadPackage(const char* argv0);

  std::unique_ptr<Library> library_;
  std::unique_ptr<Evaluator> evaluator_;
  bool interactive_ = false;
};

}  // namespace vexa::shell

#endif
