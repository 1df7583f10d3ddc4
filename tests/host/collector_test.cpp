// The collector under load: ten million temporary floats while some values are held only
// through VexaGcProtect (their handles are kept disguised, so nothing else roots them).
#include <gc/gc.h>
#include <gtest/gtest.h>

#include "host/kernel.h"

namespace {

using namespace vexa;

constexpr uintptr_t kMask = 0x5a5a5a5a5a5a5a5aULL;  // hides a handle from the collector
constexpr int kProtected = 2000;

std::string Text(int i) {
  return "1234567." + std::to_string(100000 + i) + "3";
}

__attribute__((noinline)) void MakeProtected(std::vector<uintptr_t>& hidden,
                                             std::vector<void*>& links) {
  VexaKernelVector kv = GetKernel();
  for (int i = 0; i < kProtected; ++i) {
    ALGEB f = VexaFloatFromString(Text(i)).Handle();
    ALGEB l = NewList({f, NewString(Text(i))});
    VexaGcProtect(kv, l);
    if (i % 2 == 0) VexaGcProtect(kv, l);  // counted: these need two allows
    hidden[i] = reinterpret_cast<uintptr_t>(l) ^ kMask;
    // cleared by the collector once the list is gone
    links[i] = reinterpret_cast<void*>(hidden[i]);
    GC_general_register_disappearing_link(&links[i], l);
  }
}

__attribute__((noinline)) double Churn(long n) {
  VexaFloat acc;
  VexaFloat step = VexaFloatFromString("0.001");
  for (long i = 0; i < n; ++i) acc = acc + step;  // one new float node each time
  return static_cast<double>(FloatToInt(acc));
}

TEST(Collector, ProtectedValuesSurviveTenMillionTemporaries) {
  VexaKernelVector kv = GetKernel();
  VexaDigitsScope digits(10);
  // links live in atomic memory so that the collector does not see them as references
  std::vector<uintptr_t> hidden(kProtected);
  void** linkBlock =
      static_cast<void**>(GC_MALLOC_ATOMIC_UNCOLLECTABLE(sizeof(void*) * kProtected));
  std::vector<void*> links(kProtected);
  MakeProtected(hidden, links);
  for (int i = 0; i < kProtected; ++i) {
    linkBlock[i] = links[i];
    GC_unregister_disappearing_link(&links[i]);
    GC_general_register_disappearing_link(&linkBlock[i],
                                          reinterpret_cast<void*>(hidden[i] ^ kMask));
  }
  links.clear();

  EXPECT_EQ(Churn(10000000), 10000);
  GC_gcollect();
  EXPECT_LT(GC_get_heap_size(), size_t(256) << 20) << "heap grew without bound";

  for (int i = 0; i < kProtected; ++i) {
    ALGEB l = reinterpret_cast<ALGEB>(hidden[i] ^ kMask);
    ASSERT_NE(linkBlock[i], nullptr) << "protected value " << i << " was collected";
    ASSERT_EQ(Print(l), "[" + Text(i) + ", \"" + Text(i) + "\"]");
    EXPECT_EQ(ProtectCount(l), i % 2 == 0 ? 2 : 1);
  }

  // release: every protection allowed (twice where protected twice)
  for (int i = 0; i < kProtected; ++i) {
    ALGEB l = reinterpret_cast<ALGEB>(hidden[i] ^ kMask);
    VexaGcAllow(kv, l);
    if (i % 2 == 0) {
      EXPECT_EQ(ProtectCount(l), 1);
      VexaGcAllow(kv, l);
    }
    EXPECT_EQ(ProtectCount(l), 0);
    VexaGcAllow(kv, l);  // allowing an unprotected value does nothing
  }
  std::fill(hidden.begin(), hidden.end(), 0);
  Churn(100000);  // overwrite stale stack slots
  for (int k = 0; k < 3; ++k) GC_gcollect();
  int collected = 0;
  for (int i = 0; i < kProtected; ++i) collected += linkBlock[i] == nullptr;
  // conservative collection may keep a few; nearly all must go
  EXPECT_GT(collected, kProtected * 9 / 10);
  // the few lists still kept must not clear their links in freed memory later
  for (int i = 0; i < kProtected; ++i) GC_unregister_disappearing_link(&linkBlock[i]);
  GC_FREE(linkBlock);
}

// Floats of every pooled size, held only by the vector's scanned memory, keep their values
// while temporaries of the same sizes are made and collected around them.
TEST(Collector, PooledNodesAreNeverHandedOutTwice) {
  std::vector<VexaFloat> held;
  std::vector<std::string> texts;
  for (int digits : {10, 30, 60, 100, 200}) {
    VexaDigitsScope scope(digits);
    for (int i = 1; i <= 2000; ++i) {
      held.push_back(VexaFloat(i) / VexaFloat(7));
      texts.push_back(VexaFloatToString(held.back()));
    }
  }
  for (int round = 0; round < 5; ++round) {
    VexaDigitsScope scope(10 + 40 * round);
    VexaFloat t = VexaFloatFromString("1.5");
    for (int i = 0; i < 200000; ++i) t = t * VexaFloatFromString("1.0000001") + t;
    GC_gcollect();
  }
  for (size_t i = 0; i < held.size(); ++i) ASSERT_EQ(VexaFloatToString(held[i]), texts[i]) << i;
}

TEST(Collector, AllocationThroughTheHost) {
  VexaKernelVector kv = GetKernel();
  ALGEB* block = static_cast<ALGEB*>(VexaAlloc(kv, 16 * sizeof(ALGEB)));
  for (int i = 0; i < 16; ++i) EXPECT_EQ(block[i], nullptr);  // zeroed
  ALGEB* arr = static_cast<ALGEB*>(VexaNew(kv, 4, sizeof(ALGEB)));
  arr[0] = NewString("kept by scanned host memory");
  EXPECT_THROW(VexaAlloc(kv, -1), HostError);
  EXPECT_THROW(VexaNew(kv, PTRDIFF_MAX, 2), HostError);
}

}  // namespace
