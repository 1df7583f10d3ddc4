// The uniform distribution through its entry points: the formulas at their edges, samples
// that draw exactly one uniform per element and repeat under the same seed.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "frame/support.h"
#include "stats/distributions/distributions.h"
#include "stats/random/random_stream.h"

namespace {

ALGEB Call(const std::string& entry, const std::vector<ALGEB>& args) {
  auto f = reinterpret_cast<ALGEB (*)(VexaKernelVector, ALGEB)>(
      dlsym(RTLD_DEFAULT, ("STATS_Vexa" + entry + "_MP").c_str()));
  return f(Kv(), vexa::NewExpseq(args));
}

ALGEB I(long v) {
  return vexa::NewInteger(v);
}
ALGEB D(double v) {
  return vexa::NewFloatFromDouble(v);
}
std::string T(ALGEB e) {
  return Text(VexaFloat(e));
}

TEST(Uniform, ProbabilityAndDeviateAtTheirEdges) {
  VexaDigitsScope digits(10);
  EXPECT_EQ(T(Call("UniformProbability", {I(1), I(1), I(3)})), "0.");
  EXPECT_EQ(T(Call("UniformProbability", {I(3), I(1), I(3)})), "1.");
  EXPECT_EQ(T(Call("UniformProbability", {I(2), I(1), I(4)})), "0.3333333333");
  // a degenerate interval divides nothing: at a the result is 0, beyond it 1
  EXPECT_EQ(T(Call("UniformProbability", {I(2), I(2), I(2)})), "0.");
  EXPECT_EQ(T(Call("UniformProbability", {D(2.5), I(2), I(2)})), "1.");
  EXPECT_EQ(T(Call("UniformProbability", {I(0), I(5), I(1)})), "0.");
  // p is not checked: the deviate extrapolates
  EXPECT_EQ(T(Call("UniformDeviate", {D(1.5), I(0), I(2)})), "3.");
  EXPECT_EQ(T(Call("UniformDeviate", {D(0.25), I(-1), I(1)})), "-0.5");
  // symbolic arguments are evaluated; Pi to Digits
  EXPECT_EQ(T(Call("UniformDeviate", {I(1), I(0), vexa::NewName("Pi")})), "3.141592654");
}

TEST(Uniform, SamplesDrawOneUniformPerElementReproducibly) {
  VexaDigitsScope digits(15);
  vexa::SeedRandom(3);
  vexa::RandomCounts before = vexa::RandomDrawn();
  ALGEB sample = Call("UniformRandomSample", {I(5), I(10), I(20)});
  vexa::RandomCounts after = vexa::RandomDrawn();
  EXPECT_EQ(after.floats - before.floats, 5u);
  ASSERT_EQ(RTableNumElements(Kv(), sample), 5);
  const VexaFloat* data = static_cast<const VexaFloat*>(RTableDataBlock(Kv(), sample));
  // the same seed gives the same draws, each a + u (b - a)
  vexa::SeedRandom(3);
  for (int i = 0; i < 5; ++i) {
    VexaFloat u = STATS_VexaRandomStream_MP::NextDouble();
    EXPECT_EQ(data[i], 10 + u * 10) << i;
    EXPECT_TRUE(data[i] >= 10 && data[i] < 20);
  }
  EXPECT_EQ(vexa::RandomDrawn().words - after.words, after.words - before.words);

  before = vexa::RandomDrawn();
  ALGEB empty = Call("UniformRandomSample", {I(0), I(0), I(1)});
  EXPECT_EQ(RTableNumElements(Kv(), empty), 0);
  EXPECT_EQ(vexa::RandomDrawn().words, before.words);

  vexa::SeedRandom(3);
  VexaFloat v = VexaFloat(Call("UniformRandomVariate", {I(10), I(20)}));
  EXPECT_EQ(v, data[0]);
  VexaFloat parameters[2] = {VexaFloat(10), VexaFloat(20)};
  EXPECT_EQ(STATS_UniformRandomVariate_MP(Kv(), parameters), data[1]);
}

TEST(Uniform, ArgumentErrorsComeBeforeAnyDraw) {
  vexa::RandomCounts before = vexa::RandomDrawn();
  EXPECT_EQ(ErrorOf([] { Call("UniformRandomSample", {I(5), I(0), vexa::NewName("b_unset")}); }),
            "unable to evaluate b_unset to floating-point");
  EXPECT_EQ(ErrorOf([] { Call("UniformRandomSample", {I(5), I(0)}); }),
            "VexaUniformRandomSample expects 3 arguments, received: 5, 0");
  EXPECT_EQ(vexa::RandomDrawn().words, before.words);
}

}  // namespace
