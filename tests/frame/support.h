// Shared helpers of the frame tests: the kernel handle, host errors as text, floats as text.
#ifndef TESTS_FRAME_SUPPORT_H
#define TESTS_FRAME_SUPPORT_H

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "host/kernel.h"
#include "stats/frame/frame.h"

inline VexaKernelVector Kv() {
  return vexa::GetKernel();
}

// The message of the host error that f raises, or "no error".
inline std::string ErrorOf(const std::function<void()>& f) {
  try {
    f();
  } catch (const vexa::HostError& e) {
    return e.what();
  }
  return "no error";
}

inline std::string Text(const VexaFloat& x) {
  return VexaFloatToString(x);
}

// A native host procedure that counts its calls and applies fn to its argument sequence.
inline ALGEB CountingProc(int* calls, std::function<ALGEB(ALGEB)> fn) {
  return vexa::NewNativeProcedure("f", [calls, fn](vexa::Kernel*, ALGEB args) {
    ++*calls;
    return fn(args);
  });
}

// Initialises the library once for a whole test binary, as the host does on loading it.
// A test folder registers it with one line:
//   static auto* const kLibrary = ::testing::AddGlobalTestEnvironment(new LibraryEnvironment);
class LibraryEnvironment : public ::testing::Environment {
 public:
  void SetUp() override { STATS_StatsInitialize_MP(Kv(), vexa::Null()); }
  void TearDown() override { STATS_StatsTerminate_MP(Kv(), vexa::Null()); }
};

#endif
