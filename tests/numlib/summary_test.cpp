// The five-point summary: Tukey's hinges on small sets worked by hand (odd and even n, ties),
// the single rounding of a mean of two order statistics, and the failures.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "vexa/nag.h"

namespace {

std::string S(const VexaFloat& x) {
  return VexaFloatToString(x);
}

// The summary of the values as text "min lower median upper max", or "fail <code>".
std::string Summary(const std::vector<std::string>& values, long n = -1) {
  std::vector<VexaFloat> x;
  for (const std::string& v : values) x.push_back(VexaFloatFromString(v));
  VexaFloat res[5] = {7, 7, 7, 7, 7};
  NagError fail;
  VexaMP_g01alc(n < 0 ? static_cast<long>(x.size()) : n, x.data(), res, &fail);
  std::string out = fail.code != NE_NOERROR ? "fail " + std::to_string(fail.code) : "";
  for (const VexaFloat& r : res) out += (out.empty() ? "" : " ") + S(r);
  return out;
}

TEST(FivePointSummary, HingesOnHandCheckedSets) {
  VexaDigitsScope digits(10);
  // n = 5: median at depth 3, hinges at depth 2
  EXPECT_EQ(Summary({"3", "1", "5", "2", "4"}), "1. 2. 3. 4. 5.");
  // n = 6: median at depth 3.5, hinges at depth 2
  EXPECT_EQ(Summary({"6", "1", "5", "2", "4", "3"}), "1. 2. 3.5 5. 6.");
  // n = 7 and 8: hinges at depth 2.5
  EXPECT_EQ(Summary({"7", "1", "6", "2", "5", "3", "4"}), "1. 2.5 4. 5.5 7.");
  EXPECT_EQ(Summary({"8", "1", "7", "2", "6", "3", "5", "4"}), "1. 2.5 4.5 6.5 8.");
  // n = 9: hinges at depth 3; n = 10: median at 5.5, hinges at 3
  EXPECT_EQ(Summary({"90", "10", "80", "20", "70", "30", "60", "40", "50"}), "10. 30. 50. 70. 90.");
  EXPECT_EQ(Summary({"-1", "-2", "-3", "-4", "-5", "-6", "-7", "-8", "-9", "-10"}),
            "-10. -8. -5.5 -3. -1.");
  // ties, and values of mixed sign and size
  EXPECT_EQ(Summary({"2", "2", "2", "1", "1", "3"}), "1. 1. 2. 2. 3.");
  EXPECT_EQ(Summary({"0.25", "-1e-20", "1e20", "0.5", "-3"}),
            "-3. -1e-20 0.25 0.5 100000000000000000000.");
  EXPECT_EQ(Summary({"Float(-infinity)", "1", "2", "3", "Float(infinity)"}),
            "Float(-infinity) 1. 2. 3. Float(infinity)");
}

TEST(FivePointSummary, MeansAndValuesRoundOnceToDigits) {
  VexaDigitsScope digits(3);
  // 1.005 and 1.015 are exact ties: to even
  EXPECT_EQ(Summary({"0", "0", "1", "1.01", "2", "2"}), "0. 0. 1. 2. 2.");
  EXPECT_EQ(Summary({"0", "0", "1.01", "1.02", "2", "2"}), "0. 0. 1.02 2. 2.");
  // values carrying more digits than Digits are rounded
  EXPECT_EQ(Summary({"1.23456", "2", "3", "4", "5.55555"}), "1.23 2. 3. 4. 5.56");
  // a tie broken only by a term far below the last digit: its sign decides
  VexaDigitsScope ten(10);
  // (1.0000000003 +- 1e-50) / 2: to even would give 0.5000000002
  EXPECT_EQ(Summary({"-5", "-5", "1e-50", "1.0000000001", "2", "2"}), "-5. -5. 0.5000000001 2. 2.");
  EXPECT_EQ(Summary({"-5", "-5", "-1e-50", "1.0000000003", "2", "2"}),
            "-5. -5. 0.5000000001 2. 2.");
  EXPECT_EQ(Summary({"-1e300", "1e300", "5", "6", "7", "8"}), "-1e300 5. 6.5 8. 1e300");
}

TEST(FivePointSummary, Failures) {
  EXPECT_EQ(Summary({"1", "2", "3", "4"}), "fail 11 0. 0. 0. 0. 0.");
  EXPECT_EQ(Summary({}, 0), "fail 11 0. 0. 0. 0. 0.");
  NagError fail;
  VexaFloat x[4] = {1, 2, 3, 4}, res[5];
  VexaMP_g01alc(4, x, res, &fail);
  EXPECT_STREQ(fail.message, "On entry, n = 4. Constraint: n >= 5.");
  EXPECT_EQ(Summary({"1", "2", "Float(undefined)", "4", "5"}), "fail 12 0. 0. 0. 0. 0.");
}

}  // namespace
