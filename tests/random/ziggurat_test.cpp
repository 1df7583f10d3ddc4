// The ziggurat generators: their tables, the stream words each branch consumes, and the
// distributions they give, the library's own variant against what that algorithm must
// produce and the published one against the true laws, by Kolmogorov-Smirnov distance.
#include "stats/random/ziggurat.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <initializer_list>
#include <random>
#include <vector>

#include "frame/support.h"
#include "stats/random/random_stream.h"

namespace {

using Normal = STATS_ZigguratNormalGenerator_MP;
using Exponential = STATS_ZigguratExpGenerator_MP;

double D(const VexaFloat& x) {
  return vexa::FloatToDouble(x);
}

// Kolmogorov-Smirnov distance of a sample from a continuous distribution function.
double KolmogorovSmirnov(std::vector<double> xs, const std::function<double(double)>& cdf) {
  std::sort(xs.begin(), xs.end());
  double n = static_cast<double>(xs.size()), d = 0;
  for (size_t i = 0; i < xs.size(); ++i) {
    double f = cdf(xs[i]);
    d = std::max({d, f - i / n, (i + 1) / n - f});
  }
  return d;
}

// The 0.1% critical value of the distance for n points.
double Critical(size_t n) {
  return 1.95 / std::sqrt(static_cast<double>(n));
}

std::vector<double> Draw(int n, VexaFloat (*next)()) {
  std::vector<double> xs;
  for (int i = 0; i < n; ++i) xs.push_back(D(next()));
  return xs;
}

struct Near {
  VexaFloat got;
  const char *want, *tolerance;
};

void ExpectNear(std::initializer_list<Near> rows) {
  for (const Near& r : rows)
    EXPECT_TRUE(fabs(r.got - VexaFloatFromString(r.want)) < VexaFloatFromString(r.tolerance))
        << Text(r.got) << ", want " << r.want;
}

// -X for the draws X < 0, whose share of all must be about a half.
std::vector<double> NegativeSide(int n, VexaFloat (*next)()) {
  std::vector<double> negative;
  for (double x : Draw(n, next))
    if (x < 0) negative.push_back(-x);
  EXPECT_NEAR(static_cast<double>(negative.size()) / n, 0.5, 0.01);
  return negative;
}

TEST(Ziggurat, TablesAtFifteenDigitsAndTheirRebuilds) {
  VexaDigitsScope digits(15);
  Normal::gDigits = Exponential::gDigits = 0;
  Normal::Reset();
  Exponential::Reset();
  EXPECT_EQ(Normal::gK[0], 2006573410);
  EXPECT_EQ(Exponential::gK[0], 1900564636);
  // edges of the base and first layers, and the computed tops slightly above 1
  ExpectNear({{Normal::gW[0] * Normal::gM, "3.910763252", "1e-9"},
              {Normal::gW[1] * Normal::gM, "0.2152103", "1e-7"},
              {Exponential::gW[0] * Exponential::gM, "8.69711747", "1e-8"},
              {Exponential::gW[1] * Exponential::gM, "0.0638522", "1e-7"},
              {Normal::gF[0], "1.00001003", "1e-8"},
              {Exponential::gF[0], "1.0000000025", "1e-10"}});
  // layer edges fall, thresholds are ratios of neighbouring edges
  for (int i = 2; i < 256; ++i) {
    EXPECT_LT(Normal::gW[i - 1], Normal::gW[i]);
    EXPECT_GT(Normal::gF[i - 1], Normal::gF[i]);
    EXPECT_GT(Normal::gK[i], 0);
  }
  EXPECT_EQ(Normal::gK[1] + Exponential::gK[1], 0);

  VexaFloat w1 = Normal::gW[1];
  {
    VexaDigitsScope lower(10);
    Normal::Reset();  // kept: the tables are more precise
  }
  EXPECT_EQ(Normal::gDigits, 15);
  EXPECT_EQ(Normal::gW[1], w1);
  VexaDigitsScope higher(30);
  Normal::Reset();
  EXPECT_EQ(Normal::gDigits, 30);
  EXPECT_NE(Normal::gW[1], w1);
  // the recurrence down 254 layers loses about three digits
  EXPECT_TRUE(fabs(Normal::gW[1] / w1 - 1) < VexaFloatFromString("1e-11"));
}

// The exact tables close at the top, hold the published r and v to every digit they have,
// and agree with themselves solved at twice the precision.
TEST(Ziggurat, ExactTablesAreSolvedToClose) {
  VexaFloat r60;
  {
    VexaDigitsScope wide(60);
    Exponential::gExact.digits = 0;
    Exponential::ResetExact();
    r60 = Exponential::gExact.r;
  }
  VexaDigitsScope digits(30);
  Normal::ResetExact();
  Exponential::gExact.digits = 0;
  Exponential::ResetExact();
  EXPECT_EQ(Exponential::gExact.r, r60 + 0) << Text(r60);
  ExpectNear({{Normal::gExact.r, "3.6541528853610088", "1e-15"},
              {Exponential::gExact.r, "7.69711747013104972", "1e-15"},
              {Exponential::gExact.v, "0.0039496598225815571993", "1e-19"}});
  for (auto* t : {&Normal::gExact, &Exponential::gExact}) {
    // the top layer, from its edge x1 and the common area, reaches 1
    VexaFloat x1 = t->w[1] * (t == &Normal::gExact ? 2147483648.0 : 4294967296.0);
    VexaFloat top = t->v / x1 + t->f[1];
    EXPECT_TRUE(fabs(top - 1) < VexaFloatFromString("1e-27")) << Text(top);
    EXPECT_EQ(t->k[1], 0);
  }
}

// One call per row: its first word decides the branch, which fixes the draws it may make.
// The words are replayed from a std::mt19937 seeded as the host seeds its stream.
TEST(Ziggurat, EachBranchConsumesItsStreamWords) {
  VexaDigitsScope digits(15);
  Normal::Reset();
  Exponential::Reset();
  for (bool normal : {true, false}) {
    const uint32_t seed = normal ? 11 : 12;
    vexa::SeedRandom(seed);
    std::mt19937 replay(seed);
    uint64_t replayed = vexa::RandomDrawn().words;
    int fast = 0, wedge = 0, layer1 = 0, base = 0, tail = 0;
    for (int call = 0; call < 40000; ++call) {
      vexa::RandomCounts before = vexa::RandomDrawn();
      replay.discard(before.words - replayed);
      int32_t h = static_cast<int32_t>(replay());
      replayed = before.words + 1;
      VexaFloat x = normal ? Normal::Next() : Exponential::Next();
      vexa::RandomCounts after = vexa::RandomDrawn();
      uint64_t words = after.words - before.words, floats = after.floats - before.floats;
      const int* k = normal ? Normal::gK : Exponential::gK;
      const VexaFloat *w = normal ? Normal::gW : Exponential::gW,
                      r = normal ? Normal::gD : Exponential::gD;
      int i = h & 255;
      int32_t a = h < 0 ? static_cast<int32_t>(0u - static_cast<uint32_t>(h)) : h;
      if ((i >= 2 && a < k[i]) || (i == 0 && h < k[0])) {
        ++(i == 0 ? base : fast);
        ASSERT_TRUE(words == 1 && floats == 0 && x == VexaFloat(h) * w[i]) << call;
      } else if (i == 0) {
        ++tail;
        ASSERT_TRUE(x > r) << call;  // only positive h reach the tail
        ASSERT_TRUE(normal ? floats >= 2 && floats % 2 == 0 : floats == 1) << call;
      } else if (i >= 2) {
        ASSERT_GE(floats, 1u) << call;
        // accepted at the first wedge test: one uniform, the candidate itself
        if (floats == 1 && x == VexaFloat(h) * w[i]) ++wedge;
        if (!normal && h < 0) {
          ASSERT_EQ(floats, 1u) << "a negative candidate always passes";
        }
      } else {
        ASSERT_GE(floats, 1u) << call;
        // layer 1 accepted at once returns the held uniform: none yet, so the default 0
        if (floats == 2 && x == 0) ++layer1;
      }
    }
    // every branch was seen
    EXPECT_GT(fast, 30000);
    EXPECT_GT(wedge, 100);
    EXPECT_GT(layer1, 20);
    EXPECT_GT(base, 50);
    EXPECT_GT(tail, 1);
  }
}

// The published algorithm: the true laws.
TEST(Ziggurat, ExactSamplersFollowTheTrueLaws) {
  VexaDigitsScope digits(15);
  Normal::ResetExact();
  Exponential::ResetExact();
  vexa::SeedRandom(2026);
  const int n = 100000;
  std::vector<double> z = Draw(n, Normal::NextExact), e = Draw(n, Exponential::NextExact);
  EXPECT_LT(KolmogorovSmirnov(z, [](double x) { return 0.5 * std::erfc(-x / std::sqrt(2.0)); }),
            Critical(n));
  EXPECT_LT(KolmogorovSmirnov(e, [](double x) { return x < 0 ? 0 : -std::expm1(-x); }),
            Critical(n));
  EXPECT_GE(*std::min_element(e.begin(), e.end()), 0);
  // both tails are reached
  EXPECT_GT(*std::max_element(z.begin(), z.end()), D(Normal::gExact.r));
  EXPECT_LT(*std::min_element(z.begin(), z.end()), -D(Normal::gExact.r));
}

// The library's variant, on its negative side: the base strip gives uniforms on [-q, 0) and
// every layer its accepted candidates, so -X given X < 0 has density proportional to
// min(f(t), gF[1]) on [0, r) and f(r) on [r, q) for the normal. For the exponential every
// negative candidate is accepted: -X is a mixture of uniforms on [0, x_i), i = 0 and 2..255,
// with x_0 = q. Both generators give about half their values negative.
TEST(Ziggurat, LibraryVariantGivesWhatItsAlgorithmMust) {
  VexaDigitsScope digits(15);
  Normal::Reset();
  Exponential::Reset();
  vexa::SeedRandom(7);
  const int n = 100000;
  const double r = D(Normal::gD), q = D(Normal::gW[0] * Normal::gM),
               x1 = D(Normal::gW[1] * Normal::gM), f1 = D(Normal::gF[1]);
  auto gaussMass = [](double a, double b) {  // integral of exp(-s^2/2) over [a, b]
    return std::sqrt(M_PI / 2) * (std::erf(b / std::sqrt(2.0)) - std::erf(a / std::sqrt(2.0)));
  };
  auto normalMass = [&](double t) {
    if (t <= x1) return f1 * t;
    if (t <= r) return f1 * x1 + gaussMass(x1, t);
    return f1 * x1 + gaussMass(x1, r) + std::exp(-r * r / 2) * (std::min(t, q) - r);
  };
  std::vector<double> normal = NegativeSide(n, Normal::Next);
  EXPECT_LT(KolmogorovSmirnov(normal, [&](double t) { return normalMass(t) / normalMass(q); }),
            Critical(normal.size()));
  std::vector<double> widths = {D(Exponential::gW[0] * Exponential::gM)};
  for (int i = 2; i < 256; ++i) widths.push_back(D(Exponential::gW[i] * Exponential::gM));
  std::vector<double> exponential = NegativeSide(n, Exponential::Next);
  EXPECT_LT(KolmogorovSmirnov(exponential,
                              [&](double t) {
                                double s = 0;
                                for (double x : widths) s += std::min(1.0, t / x);
                                return s / widths.size();
                              }),
            Critical(exponential.size()));
}

// The switch: read from the host global, true selects the published algorithm; anything but
// true, false or no value is refused before a draw.
TEST(Ziggurat, SwitchSelectsTheAlgorithm) {
  VexaDigitsScope digits(15);
  ALGEB name = ToVexaName(Kv(), "_EnvStatisticsExactSampling", 1);
  EXPECT_FALSE(STATS_ExactSamplingScope_MP::Read(Kv()));
  VexaAssign(Kv(), name, ToVexaBoolean(Kv(), 1));
  EXPECT_TRUE(STATS_ExactSamplingScope_MP::Read(Kv()));
  Normal::ResetExact();
  vexa::SeedRandom(5);
  VexaFloat a = STATS_StandardNormalVariate_MP(Kv());
  vexa::SeedRandom(5);
  EXPECT_EQ(a, Normal::NextExact());
  {
    STATS_ExactSamplingScope_MP scope;
    EXPECT_TRUE(STATS_ExactSamplingScope_MP::Exact(Kv()));
    VexaAssign(Kv(), name, ToVexaBoolean(Kv(), 0));  // read once: the scope keeps true
    EXPECT_TRUE(STATS_ExactSamplingScope_MP::Exact(Kv()));
  }
  EXPECT_FALSE(STATS_ExactSamplingScope_MP::Exact(Kv()));
  VexaAssign(Kv(), name, ToVexaInteger(Kv(), 1));
  vexa::RandomCounts before = vexa::RandomDrawn();
  EXPECT_EQ(ErrorOf([] { STATS_StandardExponentialVariate_MP(Kv()); }),
            "_EnvStatisticsExactSampling must be true or false, received: 1");
  EXPECT_EQ(vexa::RandomDrawn().words, before.words);
  vexa::Unassign(name);
  EXPECT_FALSE(STATS_ExactSamplingScope_MP::Read(Kv()));
}

}  // namespace
