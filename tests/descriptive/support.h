// Calling the entry points of the data and descriptive tests with host arguments.
#ifndef TESTS_DESCRIPTIVE_SUPPORT_H
#define TESTS_DESCRIPTIVE_SUPPORT_H

#include <string>
#include <vector>

#include "data/support.h"

inline ALGEB Call(ALGEB (*entry)(VexaKernelVector, ALGEB), const std::vector<ALGEB>& args) {
  return entry(Kv(), vexa::NewExpseq(args));
}

inline ALGEB Bool(bool b) {
  return ToVexaBoolean(Kv(), b);
}

inline ALGEB Num(const std::string& x) {
  return F(x).Handle();
}

inline ALGEB NoWeights() {
  return SfloatRTable({});
}

#endif
