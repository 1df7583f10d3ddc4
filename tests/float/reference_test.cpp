// VexaFloat against reference values (tests/reference/float_ops.txt, made with mpmath and
// exact rational arithmetic). + - * / and sqrt must give the correctly rounded value exactly;
// the elementary functions are correctly rounded as the goal and never off by more than one
// unit in the last place. Each op family reports how many of its cases miss the goal.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "reference.h"
#include "vexa/float.h"

namespace {

using namespace vexa_test;

const std::vector<Case>& AllCases() {
  static const std::vector<Case> cases = ReadCases("float_ops.txt");
  return cases;
}

VexaFloat F(const std::string& s) {
  return VexaFloatFromString(s);
}
// A double that holds the text's value exactly, if there is one.
bool ExactDouble(const std::string& s, double* d) {
  *d = std::strtod(s.c_str(), nullptr);
  VexaDigitsScope wide(1100);
  return VexaFloat(*d) == F(s);
}

VexaFloat Compute(const Case& c) {
  VexaFloat x = F(c.args[0]);
  const std::string& op = c.op;
  if (op == "add") return x + F(c.args[1]);
  if (op == "sub") return x - F(c.args[1]);
  if (op == "mul") return x * F(c.args[1]);
  if (op == "div") return x / F(c.args[1]);
  if (op == "sqrt") return sqrt(x);
  if (op == "exp") return exp(x);
  if (op == "log") return log(x);
  if (op == "pow") return pow(x, F(c.args[1]));
  return VexaEvalf1(op.c_str(), x);
}

bool MustBeExact(const std::string& op) {
  return op == "add" || op == "sub" || op == "mul" || op == "div" || op == "sqrt";
}

class FloatReference : public ::testing::TestWithParam<std::string> {};

TEST_P(FloatReference, MatchesCorrectlyRoundedValues) {
  const std::string& op = GetParam();
  const bool exact = MustBeExact(op);
  std::map<int, int> perDigits, missesPerDigits;
  int cases = 0, misses = 0, reported = 0;
  VexaFloat worst;
  for (const Case& c : AllCases()) {
    if (c.op != op) continue;
    ++cases;
    ++perDigits[c.digits];
    VexaDigitsScope digits(c.digits);
    VexaFloat want = F(c.expected);
    std::vector<VexaFloat> results = {Compute(c)};
    double d;
    if (op == "pow" && ExactDouble(c.args[1], &d)) results.push_back(pow(F(c.args[0]), d));
    if (op == "pow" && ExactDouble(c.args[0], &d)) results.push_back(pow(d, F(c.args[1])));
    for (const VexaFloat& got : results) {
      std::string text = VexaFloatToString(got);
      if (text == VexaFloatToString(want) && (!IsFinite(want) || got == want)) continue;
      ++misses;
      ++missesPerDigits[c.digits];
      VexaFloat error = IsFinite(want) && IsFinite(got) ? UlpError(c, got, want) : VexaFloat(1e9);
      if (error > worst) worst = error;
      if ((exact || error > 1) && reported++ < 20)
        ADD_FAILURE() << "line " << c.line << ": " << op << " at Digits " << c.digits << " gives "
                      << text << ", want " << c.expected << " (" << Show(error) << " ulp)";
    }
  }
  ASSERT_GT(cases, 0) << "no reference cases for " << op << " in float_ops.txt";
  std::string perDigitsText;
  for (auto& [digits, n] : perDigits)
    perDigitsText += " " + std::to_string(digits) + ":" + std::to_string(missesPerDigits[digits]) +
                     "/" + std::to_string(n);
  std::printf("[reference] %-6s %4d cases, %d not correctly rounded, worst %s ulp (per Digits%s)\n",
              op.c_str(), cases, misses, Show(worst).c_str(), perDigitsText.c_str());
  RecordProperty("cases", cases);
  RecordProperty("not_correctly_rounded", misses);
  RecordProperty("worst_ulp", Show(worst));
}

INSTANTIATE_TEST_SUITE_P(Ops, FloatReference,
                         ::testing::Values("add", "sub", "mul", "div", "sqrt", "exp", "log", "pow",
                                           "sin", "cos", "tan", "arctan"),
                         [](const auto& info) { return info.param; });

}  // namespace
