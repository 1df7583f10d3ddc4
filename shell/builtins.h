// The shell's builtin functions: evalf, seq, time, randomize, Array, Vector, convert, nops,
// op, lhs, rhs, the elementary functions, Float, error, print, type, add, mul, min, max, sort.
#ifndef VEXA_SHELL_BUILTINS_H
#define VEXA_SHELL_BUILTINS_H

#include <functional>
#include <string>
#include <vector>

#include "host/kernel.h"
#include "shell/ast.h"

namespace vexa::shell {

class Evaluator;

using BuiltinFn = ALGEB (*)(Evaluator* ev, const std::string& name, Node* call);

// Calls the builtin of that name; *found is false when there is none.
ALGEB Builtin(Evaluator* ev, const std::string& name, Node* call, bool* found);

// Array(...) and Vector(...): bounds (n or a..b per dimension), an initial list, and the
// options datatype = ... and storage = rectangular | sparse.
ALGEB MakeArray(Evaluator* ev, const std::string& name, Node* call);

// seq(e, i = a..b) and seq(e, i = list) as a sequence; add and mul use it too.
ALGEB SeqValues(Evaluator* ev, const std::string& name, Node* call);
// type, add, mul, min, max, sort, cat, eval, table, printf, member and `if`; null for any
// other name.
BuiltinFn CollectionBuiltin(const std::string& name);

// Elements of a list, set, sequence or one-dimensional rtable, for `for x in`.
std::vector<ALGEB> ContainerItems(ALGEB container);
// base[indices] for lists, sequences, tables, rtables; an indexed name otherwise.
ALGEB Select(ALGEB base, const std::vector<ALGEB>& indices);

// Errors with a location: "Error, (in NAME) message", unprintable bytes shown as \xNN.
std::string ErrorText(const HostError& e);
std::string Printable(const std::string& text);
[[noreturn]] void RaiseIn(const std::string& where, const std::string& message);
// Runs f; an error raised inside without a location gets `where`.
ALGEB CallNamedEntry(const std::string& where, const std::function<ALGEB()>& f);
ALGEB CallNamed(const std::string& name, ALGEB proc, ALGEB args);
[[noreturn]] void SyntaxErrorInAssignment(const std::string& target);

}  // namespace vexa::shell

#endif
