// A long session in bounded memory: the syntax tree of a statement that has run, and the body
// of a procedure nothing refers to any more, are left to the collector.
#include <gc/gc.h>
#include <gtest/gtest.h>

#include <string>

#include "shell/session.h"

namespace {

std::string Repeat(const std::string& text, int times) {
  std::string s;
  for (int i = 0; i < times; ++i) s += text;
  return s;
}

// Runs text rounds times (each round parses it again), collects, and returns what last
// prints.
std::string RunRounds(vexa::shell::Session& session, const std::string& text, int rounds,
                      const std::string& last) {
  for (int i = 0; i < rounds; ++i)
    if (!session.Run(text)) return "a statement failed in round " + std::to_string(i);
  GC_gcollect();
  testing::internal::CaptureStdout();
  session.Run(last);
  return testing::internal::GetCapturedStdout();
}

TEST(LongSession, MillionStatementsAndProceduresInBoundedHeap) {
  constexpr size_t kHeapBound = 64u << 20;
  vexa::shell::Session session("vexa");
  // 1000 statements per round, 1000 rounds: a million statements parsed and run
  std::string statements = Repeat("x := x + 1: y := [x, 2.5, \"s\"]: ", 500);
  EXPECT_EQ(RunRounds(session, "x := 0:", 1, "x;"), "0\n");
  EXPECT_EQ(RunRounds(session, statements, 1000, "x;"), "500000\n");
  EXPECT_LT(GC_get_heap_size(), kHeapBound);

  // a million procedure definitions, each dropping the one before; the last one's body
  // survives the collection
  std::string procedures = Repeat("f := proc(a) local b; a + 1 end proc: ", 1000);
  EXPECT_EQ(RunRounds(session, procedures, 1000, "f(41);"), "42\n");
  EXPECT_LT(GC_get_heap_size(), kHeapBound);
}

}  // namespace
