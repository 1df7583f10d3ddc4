// Means, moments and absolute deviations against the mpmath values of
// tests/reference/means.txt at Digits 10, 30 and 50. Every term is rounded before it is
// summed, so a few units in the last place per datum are allowed.
#include <gtest/gtest.h>

#include <sstream>

#include "stats/descriptive/descriptive.h"
#include "tests/frame/support.h"
#include "tests/reference.h"

namespace {

std::vector<VexaFloat> Split(const std::string& text) {
  std::vector<VexaFloat> v;
  std::istringstream in(text);
  for (std::string t; std::getline(in, t, ',');) v.push_back(VexaFloatFromString(t));
  return v;
}

VexaFloat Compute(const vexa_test::Case& c) {
  std::vector<VexaFloat> x = Split(c.args[0]);
  std::vector<VexaFloat> w = c.args[1] == "-" ? std::vector<VexaFloat>() : Split(c.args[1]);
  VexaFloat* weights = w.empty() ? nullptr : w.data();
  const int n = static_cast<int>(x.size());
  if (c.op.rfind("mean", 0) == 0)
    return STATS_Mean_MP(Kv(), x.data(), weights, n,
                         static_cast<STATS_MEAN_TYPE_MP>(std::stoi(c.op.substr(4))));
  if (c.op.rfind("moment", 0) == 0) {
    int order = std::stoi(c.op.substr(6));
    VexaFloat out;
    STATS_Moment_MP(&out, x.data(), weights, n, &order, 1, VexaFloatFromString("0.5"));
    return out;
  }
  return STATS_AbsoluteDeviation_MP(x.data(), weights, n, VexaFloat(3));
}

TEST(MeanReference, WithinAFewUnitsOfTheLastPlace) {
  const std::vector<vexa_test::Case> cases = vexa_test::ReadCases("means.txt");
  ASSERT_GE(cases.size(), 90u);
  for (const auto& c : cases) {
    VexaDigitsScope digits(c.digits);
    const VexaFloat got = Compute(c);
    const int n = static_cast<int>(Split(c.args[0]).size());
    const VexaFloat error = vexa_test::UlpError(c, got, VexaFloatFromString(c.expected));
    EXPECT_LE(error, VexaFloat(2 * n + 2))
        << "line " << c.line << ": " << c.op << " at " << c.digits << " gave " << Text(got)
        << ", expected " << c.expected << " (" << vexa_test::Show(error) << " ulp)";
  }
}

}  // namespace
