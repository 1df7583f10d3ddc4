// libFuzzer target: the parser and evaluator on arbitrary text. Loops are parsed but not
// run (an input may loop for ever), and output is discarded. Every input starts from the
// session state of the first: names, Digits, the random stream and infolevel.
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "shell/eval.h"
#include "shell/lexer.h"
#include "shell/parser.h"

namespace {

// Walks the tree with a stack of its own: flat chains are as deep as they are long.
bool HasLoop(const vexa::shell::Node* root) {
  using vexa::shell::NodeKind;
  std::vector<const vexa::shell::Node*> pending{root};
  while (!pending.empty()) {
    const vexa::shell::Node* n = pending.back();
    pending.pop_back();
    if (n == nullptr) continue;
    if (n->kind == NodeKind::kWhile || n->kind == NodeKind::kForFrom ||
        n->kind == NodeKind::kForIn || n->kind == NodeKind::kProcedure)
      return true;
    pending.insert(pending.end(), n->children.begin(), n->children.end());
  }
  return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static vexa::shell::Evaluator* evaluator = new vexa::shell::Evaluator();
  static const vexa::SessionState* fresh = new vexa::SessionState(vexa::SaveSessionState());
  vexa::RestoreSessionState(*fresh, true);
  vexa::Assign(vexa::NewName("infolevel"), vexa::NewTable());
  std::string text(reinterpret_cast<const char*>(data), size);
  vexa::shell::SyntaxError lexError;
  vexa::shell::Parser parser(vexa::shell::Tokenize(text, &lexError), true);
  std::ostringstream out, err;
  while (!parser.AtEnd()) {
    vexa::shell::Node* s;
    try {
      s = parser.ParseStatement();
    } catch (const vexa::shell::SyntaxError&) {
      parser.Recover();
      continue;
    }
    if (!HasLoop(s)) evaluator->Execute(s, out, err);
  }
  return 0;
}
