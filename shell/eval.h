// The evaluator: runs statements of the syntax tree against the host kernel. Interpreted
// procedures are host procedure nodes whose body is a syntax tree, so that the statistics
// library can call them back like any other procedure.
#ifndef VEXA_SHELL_EVAL_H
#define VEXA_SHELL_EVAL_H

#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "host/kernel.h"
#include "shell/ast.h"

namespace vexa::shell {

class Library;

// The local name nodes of one procedure call (parameters and locals), by text.
struct Frame {
  std::map<std::string, ALGEB> names;
};

class Evaluator {
 public:
  Evaluator();
  VexaKernelVector Kernel() const { return kernel_; }
  void SetLibrary(Library* library) { library_ = library; }

  // Runs a top-level statement, printing its value unless it ends in ':'; reports an error
  // on err. Returns false if the statement failed.
  bool Execute(Node* statement, std::ostream& out, std::ostream& err);
  // Did the last Execute end in an interrupt (Ctrl-C)?
  bool WasInterrupted() const { return interrupted_; }

  // Calls an interpreted procedure (the kernel's hook lands here).
  ALGEB CallInterpreted(ALGEB proc, Node* body, ALGEB args);

  // Used by the builtins as well.
  ALGEB Evaluate(Node* e);
  std::vector<ALGEB> EvaluateArguments(const TreeVector<Node*>& nodes, size_t from);
  ALGEB EvaluateName(const std::string& name);
  ALGEB NameNode(const std::string& name);  // the local name, or the global one
  void AssignName(const std::string& name, ALGEB value);
  // The value a name had before, for restoring it (null when unassigned).
  ALGEB SavedValue(const std::string& name);
  void RestoreName(const std::string& name, ALGEB saved);
  std::ostream& Out() { return *out_; }

 private:
  ALGEB Run(Node* statement, bool echo);
  ALGEB RunBlock(Node* block, bool echo);
  bool RunLoopBody(Node* block, bool echo, ALGEB* result);
  ALGEB EvaluateIndex(Node* e);
  ALGEB EvaluateCall(Node* e);
  ALGEB EvaluateBinary(Node* e);
  ALGEB CallLibrary(const std::string& name, const std::vector<ALGEB>& args, bool* found);
  void AssignTo(Node* target, ALGEB value);
  void CheckAssignable(ALGEB name);  // protected global names refuse assignment
  bool Condition(Node* e);
  void Echo(ALGEB value);

  VexaKernelVector kernel_;
  Library* library_ = nullptr;
  std::vector<Frame*> frames_;
  std::ostream* out_ = nullptr;
  int callDepth_ = 0;
  int loopDepth_ = 0;  // loops running in the current procedure (or at top level)
  bool interrupted_ = false;
};

}  // namespace vexa::shell

#endif
