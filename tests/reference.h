// Reference cases written by the scripts in tests/reference/: one case per line,
//   <op> <digits> <arg>... <expected>
// with '#' comments, expected values correctly rounded to <digits> digits and written with
// one digit before the point. Shared by every reference-table test.
#ifndef VEXA_TESTS_REFERENCE_H
#define VEXA_TESTS_REFERENCE_H

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "vexa/float.h"

namespace vexa_test {

struct Case {
  std::string op;
  int digits;
  std::vector<std::string> args;
  std::string expected;
  int line;
};

// The cases of tests/reference/<file>; empty if the file is missing.
inline std::vector<Case> ReadCases(const std::string& file) {
  std::vector<Case> out;
  std::ifstream in(std::string(VEXA_REFERENCE_DIR) + "/" + file);
  std::string text;
  for (int line = 1; std::getline(in, text); ++line) {
    if (text.empty() || text[0] == '#') continue;
    std::istringstream words(text);
    Case c;
    c.line = line;
    words >> c.op >> c.digits;
    for (std::string w; words >> w;) c.args.push_back(w);
    if (c.args.empty()) continue;
    c.expected = c.args.back();
    c.args.pop_back();
    out.push_back(c);
  }
  return out;
}

inline bool IsFinite(const VexaFloat& x) {
  return !IsVexaFloatUndefined(x) && !IsVexaFloatInfinity(x) && !IsVexaFloatNegativeInfinity(x);
}

// The unit in the last place of an expected value written as d.ddd[e<lead>].
inline VexaFloat Ulp(const std::string& expected, int digits) {
  size_t e = expected.find('e');
  long lead = e == std::string::npos ? 0 : std::stol(expected.substr(e + 1));
  return VexaFloatFromString("1e" + std::to_string(lead - digits + 1));
}

// |got - want| in units of the last place of the expected value, computed exactly.
inline VexaFloat UlpError(const Case& c, const VexaFloat& got, const VexaFloat& want) {
  VexaDigitsScope wide(2 * c.digits + 40);
  return fabs(got - want) / Ulp(c.expected, c.digits);
}

// A short form of a float for messages.
inline std::string Show(const VexaFloat& x) {
  VexaDigitsScope three(3);
  return VexaFloatToString(x + VexaFloat());
}

}  // namespace vexa_test

#endif
