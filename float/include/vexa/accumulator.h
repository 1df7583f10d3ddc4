// A running sum of VexaFloat values that rounds every partial sum to Digits, ties to even,
// exactly as the sequence sum = sum + x does, without making a float node per addition: the
// partial sum is kept as a mantissa of Digits digits in machine limbs and a decimal exponent.
#ifndef VEXA_ACCUMULATOR_H
#define VEXA_ACCUMULATOR_H

#include <stdint.h>

#include "vexa/float.h"

class VexaFloatAccumulator {
 public:
  VexaFloatAccumulator();  // zero, at the current Digits
  VexaFloatAccumulator& operator+=(const VexaFloat& x) {
    Add(x);
    return *this;
  }
  void Add(const VexaFloat& x);
  VexaFloat Value() const;

 private:
  static constexpr int kLimbs = 8;  // Digits up to about 150 run on limbs
  enum State { kZero, kLimbSum, kFloat };

  bool AddLimbs(const VexaFloat& x);
  void AddFloat(const VexaFloat& x);
  void Load(const VexaFloat& v);

  int digits_;
  int limbs_;  // limbs that hold 10^(digits + 1); 0 when Digits is beyond kLimbs
  State state_ = kZero;
  bool negative_ = false;
  int64_t exponent_ = 0;
  // kLimbSum: (-1)^negative_ mantissa_ 10^exponent_ with 10^(digits-1) <= mantissa_ < 10^digits
  uint64_t mantissa_[kLimbs] = {};
  uint64_t low_[kLimbs] = {}, high_[kLimbs] = {},
           above_[kLimbs] = {};  // 10^(digits-1, digits, digits+1)
  VexaFloat value_;  // kFloat: the sum itself (a special value, or any sum at a high Digits)
};

#endif
