// Syntax tree of the shell's language. Nodes are made with new (collected through libgccpp)
// and never freed: procedures keep their bodies for as long as the session lives.
#ifndef VEXA_SHELL_AST_H
#define VEXA_SHELL_AST_H

#include <string>
#include <vector>

namespace vexa::shell {

struct Position {
  int line = 1;
  int column = 1;
};

enum class NodeKind {
  kInteger,    // text: decimal digits
  kFloat,      // text: the literal as written
  kString,     // text: the contents
  kName,       // text: the name
  kIndex,      // a[b, c]: children[0] indexed by children[1..]
  kCall,       // f(a, b): children[0] applied to children[1..]
  kBinary,     // op: + - * / ^ = <> < <= > >= .. and or
  kUnary,      // op: - not
  kList,       // [a, b]
  kSet,        // {a, b}
  kSequence,   // a, b (at statement level)
  kProcedure,  // params, locals, body
  kAssign,     // children[0] := children[1]
  kIf,         // children: cond1, block1, cond2, block2, ..., [else block]
  kForFrom,    // text: variable; children: from, by, to (null when absent), body
  kForIn,      // text: variable; children: container, body
  kWhile,      // children: condition, body
  kReturn,     // children: [value]
  kBreak,      // leaves the innermost loop
  kNext,       // goes on with the innermost loop's next round
  kBlock,      // children: statements
  kNull,       // an empty statement
};

struct Node {
  NodeKind kind;
  Position position;
  std::string text;  // literal text, name, operator or loop variable
  std::vector<Node*> children;
  // procedures
  std::vector<std::string> params;
  std::vector<std::string> locals;
  bool arrow = false;
  // statements: printed (;) or silent (:)
  bool silent = false;

  Node(NodeKind k, Position p) : kind(k), position(p) {}
};

}  // namespace vexa::shell

#endif
