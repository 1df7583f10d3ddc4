// Syntax tree of the shell's language. Nodes, their child lists and their text live in
// collected memory: a statement's tree is reclaimed once it has run, unless a procedure made
// from it keeps its body (the procedure node points at the body node).
#ifndef VEXA_SHELL_AST_H
#define VEXA_SHELL_AST_H

#include <gc/gc_allocator.h>
#include <gc/gc_cpp.h>

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
  kQuoted,     // 'name': text: the name, not evaluated
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

// Collected containers: node lists are scanned, text is atomic. A node's destructor never
// runs, so nothing in it may own memory the collector does not manage.
template <class T>
using TreeVector = std::vector<T, gc_allocator<T>>;
using TreeString = std::basic_string<char, std::char_traits<char>, gc_allocator<char>>;

// Made with new: collected, scanned memory (gc's operator new).
struct Node : public gc {
  NodeKind kind;
  Position position;
  TreeString text;  // literal text, name, operator or loop variable
  TreeVector<Node*> children;
  // procedures
  TreeVector<TreeString> params;
  TreeVector<TreeString> locals;
  bool arrow = false;
  // a procedure of a package: errors raised inside it name the command the user called
  bool package = false;
  // statements: printed (;) or silent (:)
  bool silent = false;

  Node(NodeKind k, Position p) : kind(k), position(p) {}
};

}  // namespace vexa::shell

#endif
