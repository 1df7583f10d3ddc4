// Semantics of VexaFloat beyond reference values: special values, text round trips,
// exactness of conversions, rounding ties, and the integer-valued functions.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <random>
#include <string>

#include "vexa/float.h"

namespace {

VexaFloat F(const char* s) {
  return VexaFloatFromString(s);
}
std::string S(const VexaFloat& x) {
  return VexaFloatToString(x);
}

class FloatTest : public ::testing::Test {
 protected:
  void SetUp() override { saved_ = VexaSetDigits(10); }
  void TearDown() override { VexaSetDigits(saved_); }
  int saved_ = 10;
};

TEST_F(FloatTest, TextIsExactAndRoundTrips) {
  EXPECT_EQ(S(F("0.975")), "0.975");
  EXPECT_EQ(S(F("1.5e-300")), "1.5e-300");
  EXPECT_EQ(S(F("3")), "3.");
  EXPECT_EQ(S(F("300.")), "300.");
  EXPECT_EQ(S(F("-0.000123")), "-0.000123");
  EXPECT_EQ(S(F("1e30")), "1e30");
  EXPECT_EQ(S(F("1.2e-21")), "1.2e-21");
  EXPECT_EQ(S(F(".5")), "0.5");
  EXPECT_EQ(S(F("0.000")), "0.");
  // reading keeps every digit, beyond Digits
  EXPECT_EQ(S(F("3.14159265358979323846264338")), "3.14159265358979323846264338");
  for (const char* t : {"1.959963985", "-7.5e100", "123456789012345678901234567890.", "1e-7",
                        "0.1234567", "Float(undefined)", "Float(infinity)", "Float(-infinity)"}) {
    VexaFloat x = F(t);
    EXPECT_EQ(S(F(S(x).c_str())), S(x)) << t;
  }
  for (const char* bad :
       {"", "-", "1.2.3", "e5", "1e", "1e+", "12a", "--1", "1e999999999999999999"})
    EXPECT_THROW(F(bad), std::invalid_argument) << bad;
}

TEST_F(FloatTest, ComparisonsOfLongMantissasAgreeWithTheSignOfTheDifference) {
  // Mantissas of 15 to 40 digits (one, two and three limbs) at nearby exponents.
  std::mt19937_64 rng(9);
  auto random = [&] {
    std::string m = rng() % 2 ? "-" : "";
    const int digits = 15 + static_cast<int>(rng() % 26);
    for (int i = 0; i < digits; ++i)
      m += static_cast<char>('0' + (i == 0 ? 1 + rng() % 9 : rng() % 10));
    return F((m + "e" + std::to_string(static_cast<int>(rng() % 5) - 2 - digits)).c_str());
  };
  VexaDigitsScope exact(200);
  for (int i = 0; i < 3000; ++i) {
    VexaFloat a = random(), b = i % 3 == 0 ? a * F("1.000") : random();
    const VexaFloat d = a - b;
    ASSERT_EQ(a < b, d < 0) << S(a) << " " << S(b);
    ASSERT_EQ(a == b, d == 0) << S(a) << " " << S(b);
    ASSERT_EQ(a > b, d > 0) << S(a) << " " << S(b);
  }
  EXPECT_TRUE(F("1.50") == F("1.5"));
  EXPECT_TRUE(F("12345678901234567890120e-1") == F("1234567890123456789012"));
  EXPECT_TRUE(F("12345678901234567890120e-1") < F("1234567890123456789013"));
  EXPECT_TRUE(F("123456789012345678901234567890") > F("12345678901234567890123456789e1") - 1);
}

TEST_F(FloatTest, ConstructionAndDoubles) {
  EXPECT_EQ(S(VexaFloat()), "0.");
  EXPECT_EQ(S(VexaFloat(0.1)), "0.1");  // 0.1000000000000000055511... rounded to 10 digits
  {
    VexaDigitsScope d(30);
    EXPECT_EQ(S(VexaFloat(0.1)), "0.100000000000000005551115123126");
  }
  EXPECT_EQ(S(VexaFloat(123456789012LL)), "123456789000.");
  EXPECT_EQ(S(VexaFloat(-7)), "-7.");
  EXPECT_TRUE(IsVexaFloatUndefined(VexaFloat(std::nan(""))));
  EXPECT_TRUE(IsVexaFloatInfinity(VexaFloat(1.0 / 0.0)));
  // an immediate integer handle converts exactly, without rounding
  ALGEB big = reinterpret_cast<ALGEB>((static_cast<intptr_t>(123456789012345LL) << 1) | 1);
  EXPECT_EQ(S(VexaFloat(big)), "123456789012345.");
}

TEST_F(FloatTest, RoundingTiesToEven) {
  VexaSetDigits(2);
  EXPECT_EQ(S(F("1.25") + VexaFloat()), "1.2");
  EXPECT_EQ(S(F("1.35") + VexaFloat()), "1.4");
  EXPECT_EQ(S(F("-1.25") + VexaFloat()), "-1.2");
  EXPECT_EQ(S(F("1.2500001") + VexaFloat()), "1.3");
  EXPECT_EQ(S(F("9.96") + VexaFloat()), "10.");
  EXPECT_EQ(S(F("1") / F("3")), "0.33");
  EXPECT_EQ(S(F("2") / F("3")), "0.67");
  VexaSetDigits(40);
  EXPECT_EQ(S(F("1") / F("3")), "0.3333333333333333333333333333333333333333");
  EXPECT_EQ(S(F("1e100") + F("1e-100")), "1e100");
  EXPECT_EQ(S(F("1e100") - F("1e-100")), "1e100");  // the 41st digit rounds up
  VexaSetDigits(10);
  EXPECT_EQ(S(F("1") + F("5e-10")), "1.");  // tie, even stays
  EXPECT_EQ(S(F("1") + F("5.0000001e-10")), "1.000000001");
  EXPECT_EQ(S(F("1") - F("1e-300")), "1.");
  EXPECT_EQ(S(F("1") - F("1e-10") * F("0.3")), "1.");
  EXPECT_EQ(S(F("1.000000001") - F("1")), "1e-9");
}

TEST_F(FloatTest, SpecialValues) {
  VexaFloat u = VexaFloatUndefined(), inf = VexaFloatInfinity(1), ninf = VexaFloatInfinity(-1);
  VexaFloat one(1), zero;
  EXPECT_FALSE(u == u);
  EXPECT_TRUE(u != u);
  EXPECT_FALSE(u < one || u > one || u <= one || u >= one || u == one);
  EXPECT_TRUE(IsVexaFloatUndefined(u + one) && IsVexaFloatUndefined(exp(u)));
  EXPECT_TRUE(IsVexaFloatUndefined(inf - inf));
  EXPECT_TRUE(IsVexaFloatUndefined(inf * zero));
  EXPECT_TRUE(IsVexaFloatUndefined(zero / zero));
  EXPECT_TRUE(IsVexaFloatInfinity(one / zero));
  EXPECT_TRUE(IsVexaFloatNegativeInfinity(-one / zero));
  EXPECT_TRUE(IsVexaFloatNegativeInfinity(log(zero)));
  EXPECT_TRUE(IsVexaFloatUndefined(log(-one)));
  EXPECT_TRUE(IsVexaFloatUndefined(sqrt(-one)));
  EXPECT_TRUE(IsVexaFloatUndefined(pow(VexaFloat(-2), F("0.5"))));
  EXPECT_EQ(S(pow(VexaFloat(-2), VexaFloat(3))), "-8.");
  EXPECT_EQ(S(one / inf), "0.");
  EXPECT_TRUE(ninf < zero && zero < inf && ninf < inf);
  EXPECT_EQ(S(exp(ninf)), "0.");
  EXPECT_TRUE(IsVexaFloatInfinity(exp(F("1e30"))));
  EXPECT_FALSE(IsVexaFloatInfinity(ninf));
  EXPECT_TRUE(IsVexaFloatInfinity(fabs(ninf)));
}

TEST_F(FloatTest, MixedOperandsAreExact) {
  VexaFloat x = F("0.3");
  EXPECT_TRUE(x > 0.25);
  EXPECT_FALSE(x > 0.5);
  EXPECT_TRUE(x > 0L);
  EXPECT_TRUE(x < 1);
  EXPECT_EQ(S(2.0 / F("4")), "0.5");
  EXPECT_EQ(S(x * 2), "0.6");
  VexaFloat y = x;
  y += 1;
  y *= 2;
  y -= F("0.1");
  EXPECT_EQ(S(y), "2.5");
}

TEST_F(FloatTest, IntegerValuedFunctions) {
  EXPECT_EQ(S(floor(F("-2.5"))), "-3.");
  EXPECT_EQ(S(ceil(F("-2.5"))), "-2.");
  EXPECT_EQ(S(floor(F("0.001"))), "0.");
  EXPECT_EQ(S(ceil(F("0.001"))), "1.");
  EXPECT_EQ(S(floor(F("-1e-50"))), "-1.");
  EXPECT_EQ(S(floor(F("7e20"))), "700000000000000000000.");
  EXPECT_EQ(S(floor(F("7e21"))), "7e21");
  EXPECT_EQ(FloatToInt(F("-2.9")), -2);
  EXPECT_EQ(FloatToInt(F("2.9")), 2);
  EXPECT_EQ(FloatToInt(F("1e300")), INT_MAX);
  EXPECT_EQ(FloatToInt(F("-1e300")), INT_MIN);
  EXPECT_EQ(FloatToInt(VexaFloatUndefined()), 0);
  EXPECT_EQ(FloatToInt(F("2147483647")), INT_MAX);
  EXPECT_EQ(S(Sign(F("3"), F("-0.1"))), "-3.");
  EXPECT_EQ(S(Sign(F("-3"), F("0"))), "3.");
  EXPECT_EQ(S(fabs(F("-4.5"))), "4.5");
}

TEST_F(FloatTest, NamedFunctions) {
  EXPECT_EQ(S(VexaEvalf1("sin", VexaFloat())), "0.");
  EXPECT_EQ(S(VexaEvalf1("cos", VexaFloat())), "1.");
  EXPECT_EQ(S(VexaEvalf1("arctan", F("1"))), "0.7853981634");
  EXPECT_EQ(S(VexaEvalf1("ln", F("1"))), "0.");
  EXPECT_EQ(S(VexaEvalf1("sqrt", F("2"))), "1.414213562");
  EXPECT_EQ(S(VexaFloatPi()), "3.141592654");
  EXPECT_EQ(S(pow(F("4"), F("0.5"))), "2.");
  EXPECT_EQ(S(pow(F("2"), F("-3"))), "0.125");
  EXPECT_EQ(S(pow(F("10"), F("300"))), "1e300");
  EXPECT_ANY_THROW(VexaEvalf1("nosuchfunction", VexaFloat(1)));
}

}  // namespace
