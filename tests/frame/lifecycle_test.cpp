// Initialisation is guarded by its flag; terminate re-arms it for a new kernel handle.
#include <gtest/gtest.h>

#include "host/nodes.h"
#include "stats/random/random_stream.h"
#include "support.h"

namespace {

class InitializedLibrary : public ::testing::Environment {
 public:
  void SetUp() override { STATS_StatsInitialize_MP(Kv(), vexa::Null()); }
};
const auto* const kEnvironment = ::testing::AddGlobalTestEnvironment(new InitializedLibrary);

void ExpectHandles(VexaKernelVector kv) {
  EXPECT_EQ(STATS_VexaUtils_MP::gVexaKernelVector, kv);
  EXPECT_EQ(STATS_VexaRandomStream_MP::gVexaKernelVector, kv);
  EXPECT_EQ(STATS_VexaStaticProcAdapter_MP::m_procInstance.KernelVector(), kv);
}

TEST(Lifecycle, SecondInitializeIsIgnoredUntilTerminate) {
  vexa::Kernel other;  // a second kernel with its own protections and random stream
  ALGEB evalf = ToVexaName(Kv(), "evalf", true);
  const int protections = vexa::ProtectCount(evalf);
  ExpectHandles(Kv());
  EXPECT_EQ(STATS_VexaUtils_MP::gVexaEvalfProc, evalf);

  EXPECT_TRUE(vexa::IsTrue(STATS_StatsInitialize_MP(&other, vexa::Null())));
  ExpectHandles(Kv());
  EXPECT_EQ(vexa::ProtectCount(evalf), protections);

  EXPECT_TRUE(vexa::IsTrue(STATS_StatsTerminate_MP(Kv(), vexa::Null())));
  EXPECT_TRUE(vexa::IsTrue(STATS_StatsInitialize_MP(&other, vexa::Null())));
  ExpectHandles(&other);
  EXPECT_EQ(other.protects.count(evalf), 1u);
  other.random.engine.seed(7);
  vexa::SeedRandom(8);
  const uint32_t drawn = STATS_VexaRandomStream_MP::NextInteger();
  other.random.engine.seed(7);
  EXPECT_EQ(drawn, VexaRandomInt32(&other));

  // Back to the process kernel; evalf stays protected (terminate does not release it).
  STATS_StatsTerminate_MP(&other, vexa::Null());
  STATS_StatsInitialize_MP(Kv(), vexa::Null());
  ExpectHandles(Kv());
  EXPECT_EQ(vexa::ProtectCount(evalf), protections + 1);
  vexa::SeedRandom(vexa::kDefaultRandomSeed);
}

}  // namespace
