// libFuzzer target: the statistics library's entry points with generated arguments. The input
// chooses Digits, an entry point and its arguments from values at the edges: exact and float
// numbers of every size, the special floats, symbols, lists, arrays of every data type and
// storage, procedures that fail. Every input starts from the session state of the first.
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "shell/eval.h"
#include "shell/lexer.h"
#include "shell/library.h"
#include "shell/parser.h"

namespace {

const char* const kDigits[] = {"1", "2", "5", "10", "15", "18", "19", "20", "30", "60"};

const char* const kScalars[] = {"0",
                                "1",
                                "-1",
                                "2",
                                "3",
                                "7",
                                "100",
                                "1/2",
                                "-1/3",
                                "10^400",
                                "-10^400",
                                "2^31",
                                "2^63",
                                "2^64-1",
                                "0.",
                                "-0.",
                                "0.5",
                                "0.975",
                                "0.025",
                                "1e-400",
                                "-1e-400",
                                "1e400",
                                "1.5e-20",
                                "0.99999999999999999999",
                                "1.00000000000000000001",
                                "3.141592653589793238462643",
                                "Float(infinity)",
                                "Float(-infinity)",
                                "Float(undefined)",
                                "infinity",
                                "-infinity",
                                "undefined",
                                "evalf(Pi)",
                                "x",
                                "t[1]",
                                "f(x)",
                                "x + 1",
                                "true",
                                "false",
                                "FAIL",
                                "NULL",
                                "\"text\"",
                                "1 + 2*I",
                                "a = 1",
                                "lower = 0.5",
                                "1..2",
                                "0..infinity"};

const char* const kLists[] = {"[]",
                              "[1]",
                              "[1, 2, 3]",
                              "[0.5, 1.5, 2.5, 3.5]",
                              "[1, 2., 3/2, 1e-400, -1e400]",
                              "[x, 1]",
                              "[Float(undefined), 1., 2.]",
                              "[Float(infinity), Float(-infinity)]",
                              "[[1, 2], [3, 4]]",
                              "{1, 2}",
                              "[0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8, 0.9, 1.0, 1.1]"};

const char* const kDataTypes[] = {"anything",   "complex",    "integer[1]", "integer[2]",
                                  "integer[4]", "integer[8]", "float[8]",   "complex[8]",
                                  "float[4]",   "sfloat"};

const char* const kArrayContents[] = {"[1, 2, 3]",
                                      "[]",
                                      "[0.5]",
                                      "[[1, 2], [3, 4]]",
                                      "[-127, 127, 0, 1]",
                                      "[1.5, 2.5, 1e-300, 1e300]",
                                      "1..0",
                                      "1..5",
                                      "[2^62, -2^62]"};

const char* const kProcedures[] = {"(x -> x)",
                                   "(x -> x^2 - 2)",
                                   "(x -> 1/0)",
                                   "(x -> [x])",
                                   "(x -> undefined)",
                                   "(x -> Float(infinity))",
                                   "(x -> y)",
                                   "((x, y) -> x + y)",
                                   "proc(x) return end proc",
                                   "proc(x) x[5] end proc",
                                   "proc(x) nops(1, 2, 3) end proc",
                                   "proc(x) Digits := 3; x end proc",
                                   "evalf"};

// Reads the input a byte at a time; past its end every byte is 0.
class Bytes {
 public:
  Bytes(const uint8_t* data, size_t size) : data_(data), size_(size) {}
  bool More() const { return pos_ < size_; }
  size_t Next() { return pos_ < size_ ? data_[pos_++] : 0; }
  template <size_t N>
  const char* Pick(const char* const (&table)[N]) {
    return table[Next() % N];
  }

 private:
  const uint8_t* data_;
  size_t size_;
  size_t pos_ = 0;
};

std::string Argument(Bytes& in) {
  switch (in.Next() % 5) {
    case 0:
    case 1:
      return in.Pick(kScalars);
    case 2:
      return in.Pick(kLists);
    case 3: {
      std::string contents = in.Pick(kArrayContents);
      std::string type = in.Pick(kDataTypes);
      std::string storage = in.Next() % 4 == 0 ? ", storage=sparse" : "";
      return (in.Next() % 2 ? "Array(" : "Vector(") + contents + ", datatype=" + type + storage +
             ")";
    }
    default:
      return in.Pick(kProcedures);
  }
}

vexa::shell::Library* gLibrary = nullptr;
vexa::shell::Evaluator* gEvaluator = nullptr;
std::vector<std::string> gEntryPoints;
const vexa::SessionState* gFresh = nullptr;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
  gEvaluator = new vexa::shell::Evaluator();
  gLibrary = new vexa::shell::Library(gEvaluator->Kernel(), *argc > 0 ? (*argv)[0] : "");
  gEvaluator->SetLibrary(gLibrary);
  gEntryPoints = gLibrary->Exports();
  if (gEntryPoints.empty()) {
    fprintf(stderr, "fuzz_library: no entry points: %s\n", gLibrary->Status().c_str());
    abort();
  }
  gFresh = new vexa::SessionState(vexa::SaveSessionState());
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  vexa::RestoreSessionState(*gFresh, true);
  vexa::Assign(vexa::NewName("infolevel"), vexa::NewTable());
  Bytes in(data, size);
  std::string text = std::string("Digits := ") + in.Pick(kDigits) + ": ";
  text += gEntryPoints[in.Next() % gEntryPoints.size()] + "(";
  size_t count = in.Next() % 7;
  for (size_t i = 0; i < count; ++i) text += (i ? ", " : "") + Argument(in);
  text += ");";
  static const bool show = getenv("VEXA_FUZZ_SHOW") != nullptr;  // to turn a finding into a test
  if (show) fprintf(stderr, "%s\n", text.c_str());
  vexa::shell::SyntaxError lexError;
  vexa::shell::Parser parser(vexa::shell::Tokenize(text, &lexError), true);
  std::ostringstream out, err;
  while (!parser.AtEnd()) gEvaluator->Execute(parser.ParseStatement(), out, err);
  return 0;
}
