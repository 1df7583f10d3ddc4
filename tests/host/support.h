// Shared pieces of the host tests: a fixture that restores Digits, short builders, and the
// message of a raised host error.
#ifndef VEXA_TESTS_HOST_SUPPORT_H
#define VEXA_TESTS_HOST_SUPPORT_H

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "host/kernel.h"

namespace vexa::testing {

class KernelTest : public ::testing::Test {
 protected:
  void SetUp() override { saved_ = VexaSetDigits(10); }
  void TearDown() override { VexaSetDigits(saved_); }
  VexaKernelVector kv = GetKernel();
  int saved_ = 10;
};

inline ALGEB I(long long v) {
  return NewInteger(v);
}
inline ALGEB N(const char* s) {
  return NewName(s);
}

inline std::string ErrorOf(const std::function<void()>& f) {
  try {
    f();
  } catch (const HostError& e) {
    return e.what();
  }
  return "(no error)";
}

}  // namespace vexa::testing

#endif
