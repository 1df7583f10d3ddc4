// libFuzzer target: the parser and evaluator on arbitrary text. Loops are parsed but not
// run (an input may loop for ever), and output is discarded.
#include <iostream>
#include <sstream>
#include <string>

#include "shell/eval.h"
#include "shell/lexer.h"
#include "shell/parser.h"

namespace {

bool HasLoop(const vexa::shell::Node* n) {
  if (n == nullptr) return false;
  using vexa::shell::NodeKind;
  if (n->kind == NodeKind::kWhile || n->kind == NodeKind::kForFrom || n->kind == NodeKind::kForIn ||
      n->kind == NodeKind::kProcedure)
    return true;
  for (const vexa::shell::Node* c : n->children)
    if (HasLoop(c)) return true;
  return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static vexa::shell::Evaluator* evaluator = new vexa::shell::Evaluator();
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
