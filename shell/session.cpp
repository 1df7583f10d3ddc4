// The statement loop: tokenize, parse one statement, run it, report, go on.
#include "shell/session.h"

#include <sys/stat.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <optional>
#include <sstream>

#include "shell/builtins.h"
#include "shell/eval.h"
#include "shell/library.h"
#include "shell/parser.h"

namespace vexa::shell {
namespace {

std::string SourceLine(const std::string& text, int line) {
  std::istringstream in(text);
  std::string s;
  for (int i = 0; i < line && std::getline(in, s); ++i) {
  }
  return s;
}

void ReportSyntax(const SyntaxError& e, const std::string& text) {
  std::cerr << "Error, syntax error at line " << e.position.line << ", column " << e.position.column
            << ": " << Printable(e.message) << "\n";
  std::string line = SourceLine(text, e.position.line);
  if (line.size() > 200) line = line.substr(0, 200) + "...";
  if (!line.empty() && e.position.column <= static_cast<int>(line.size()) + 1) {
    // the caret goes under the column, counted in the escaped text
    std::string before = Printable(line.substr(0, e.position.column - 1));
    std::cerr << "  " << Printable(line) << "\n";
    std::cerr << "  " << std::string(before.size(), ' ') << "^\n";
  }
}

}  // namespace

Session::Session(const char* argv0) {
  evaluator_ = std::make_unique<Evaluator>();
  library_ = std::make_unique<Library>(evaluator_->Kernel(), argv0);
  evaluator_->SetLibrary(library_.get());
  LoadPackage(argv0);
}

// The Statistics package: $VEXA_PACKAGE_PATH (a file, a folder holding Statistics.vx, or empty
// for none), else lib/Statistics.vx beside the executable. Its procedures are marked, so that
// an error inside one names the command the user typed. A package that is not there is not an
// error; a fault inside one is reported and the session goes on.
void Session::LoadPackage(const char* argv0) {
  const char* env = std::getenv("VEXA_PACKAGE_PATH");
  std::string path = env != nullptr ? env : ExecutableDirectory(argv0) + "/lib";
  if (path.empty()) return;
  struct stat info;
  if (stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode)) path += "/Statistics.vx";
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    if (env != nullptr) std::cerr << "vexa: cannot read the package " << path << "\n";
    return;
  }
  std::stringstream buffer;
  buffer << in.rdbuf();
  const std::string text = buffer.str();
  SyntaxError lexError;
  Parser parser(Tokenize(text, &lexError), lexError.message.empty());
  std::ostringstream quiet;
  try {
    while (!parser.AtEnd()) {
      Node* statement = parser.ParseStatement();
      std::vector<Node*> pending{statement};
      while (!pending.empty()) {
        Node* n = pending.back();
        pending.pop_back();
        if (n == nullptr) continue;
        if (n->kind == NodeKind::kProcedure) n->package = true;
        pending.insert(pending.end(), n->children.begin(), n->children.end());
      }
      if (!evaluator_->Execute(statement, quiet, std::cerr))
        std::cerr << "vexa: in the package " << path << "\n";
    }
  } catch (const SyntaxError& e) {
    std::cerr << "vexa: in the package " << path << ":\n";
    ReportSyntax(e, text);
  }
}

Session::~Session() {
  Close();
}

void Session::Close() {
  if (library_) library_->Terminate();
}

const std::string& Session::LibraryStatus() const {
  return library_->Status();
}

bool Session::IsComplete(const std::string& text) const {
  SyntaxError lexError;
  std::vector<Token> tokens = Tokenize(text, &lexError);
  if (!lexError.message.empty()) return !lexError.atEnd;
  Parser parser(tokens, false);
  try {
    while (!parser.AtEnd()) parser.ParseStatement();
  } catch (const SyntaxError& e) {
    return !e.atEnd;
  }
  return true;
}

bool Session::Run(const std::string& text) {
  SyntaxError lexError;
  std::vector<Token> tokens = Tokenize(text, &lexError);
  bool lexed = lexError.message.empty();
  Parser parser(tokens, lexed);
  bool ok = true;
  while (!parser.AtEnd()) {
    Node* statement;
    try {
      statement = parser.ParseStatement();
    } catch (const SyntaxError& e) {
      if (e.atEnd && !lexed) break;  // the lexer's own fault explains it better
      ReportSyntax(e, text);
      ok = false;
      parser.Recover();
      continue;
    }
    std::optional<SessionState> before;
    if (interactive_) before = SaveSessionState();
    ok = evaluator_->Execute(statement, std::cout, std::cerr) && ok;
    if (before && evaluator_->WasInterrupted()) {
      RestoreSessionState(*before);
      return false;
    }
  }
  if (!lexed) {
    ReportSyntax(lexError, text);
    ok = false;
  }
  std::cout.flush();
  return ok;
}

}  // namespace vexa::shell
