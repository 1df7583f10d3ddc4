// The accumulator against the plain loop sum = sum + x: every partial sum must be the same
// float. Addends are drawn relative to the running sum so that they hit each path: the same
// scale, a few digits below or above, ties at the last digit, carries to a new digit,
// cancellation, sign changes, gaps beyond the rounding position, zeros and special values.
#include "vexa/accumulator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "vexa/float.h"

namespace {

// The place of the leading digit of a finite x (0 for zero), read from its text.
long Top(const VexaFloat& x) {
  if (x == 0) return 0;
  const std::string t = VexaFloatToString(fabs(x));
  const size_t e = t.find('e'), point = t.find('.');
  const long power = e == std::string::npos ? 0 : std::stol(t.substr(e + 1));
  if (t[0] != '0') return static_cast<long>(std::min(point, e)) - 1 + power;
  return -static_cast<long>(t.find_first_not_of('0', point + 1) - point) + power;
}

// A random addend: `length` digits (a 5 at the end when tie), its top `shift` places from
// the sum's top, with random sign.
VexaFloat Addend(std::mt19937_64& rng, int length, long shift, bool tie, const VexaFloat& sum) {
  std::string m(static_cast<size_t>(length), '0');
  for (auto& c : m) c = static_cast<char>('0' + rng() % 10);
  m[0] = static_cast<char>('1' + rng() % 9);
  if (tie) m.back() = '5';
  const long e = Top(sum) + shift - length + 1;
  return VexaFloatFromString((rng() % 2 ? "-" : "") + m + "e" + std::to_string(e));
}

TEST(AccumulatorTest, EveryPartialSumIsThePlainLoopsSum) {
  struct Row {
    int digits, length;  // addend digits: 0 for Digits itself
    int shiftLow, shiftHigh;
  };
  const Row rows[] = {
      {20, 0, -6, 0},  {20, 0, -25, 3}, {20, 3, -22, 2},  {20, 40, -3, 1}, {50, 0, -8, 0},
      {50, 0, -60, 4}, {50, 7, -52, 1}, {1, 0, -3, 1},    {5, 2, -7, 2},   {18, 0, -20, 1},
      {19, 0, -21, 2}, {38, 0, -40, 1}, {10, 12, -14, 0}, {150, 0, -5, 0}, {200, 0, -5, 1},
  };
  std::mt19937_64 rng(16);
  for (const Row& row : rows) {
    VexaDigitsScope scope(row.digits);
    VexaFloat plain;
    VexaFloatAccumulator sum;
    for (int i = 0; i < 3000; ++i) {
      const int length = row.length > 0 ? row.length : row.digits;
      const long shift =
          row.shiftLow + static_cast<long>(rng() % (row.shiftHigh - row.shiftLow + 1));
      VexaFloat x;
      switch (rng() % 16) {
        case 0:  // cancellation down to a few digits, or exactly to zero
          x = rng() % 2 ? -plain : -plain + Addend(rng, 2, -row.digits / 2 - 1, false, plain);
          break;
        case 1:
          x = VexaFloat();
          break;
        case 2:  // a tie at the last digit of the sum, or one digit above it
          x = Addend(rng, length, -row.digits + static_cast<long>(rng() % 2), true, plain);
          break;
        default:
          x = Addend(rng, length, shift, rng() % 8 == 0, plain);
      }
      plain += x;
      sum += x;
      ASSERT_EQ(VexaFloatToString(sum.Value()), VexaFloatToString(plain))
          << "Digits " << row.digits << ", step " << i << ", adding " << VexaFloatToString(x);
    }
  }
}

TEST(AccumulatorTest, SpecialValuesAndExtremeExponentsFollowTheFloatAddition) {
  VexaDigitsScope scope(20);
  const std::vector<std::vector<const char*>> rows = {
      {"1.5", "Float(infinity)", "2", "Float(-infinity)", "3"},
      {"Float(undefined)", "1"},
      {"-1", "Float(-infinity)", "7"},
      {"9.99999999999999999999e99999999999999999", "9.99999999999999999999e99999999999999999"},
      {"1e-99999999999999999", "-1e-99999999999999999", "3e-99999999999999999"},
      {"12345678901234567890", "1e-40", "-1e-40", "0.5", "0.5", "-12345678901234567891"},
  };
  for (const auto& row : rows) {
    VexaFloat plain;
    VexaFloatAccumulator sum;
    for (const char* t : row) {
      plain += VexaFloatFromString(t);
      sum += VexaFloatFromString(t);
      EXPECT_EQ(VexaFloatToString(sum.Value()), VexaFloatToString(plain)) << t;
    }
  }
}

}  // namespace
