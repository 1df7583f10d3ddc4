// The error distribution's deviate: with the normal law's F and f (c = 1) it agrees with the
// normal deviate, with Laplace's (c = 2) with its closed form, in the tails and at several
// Digits; entry-point messages, parameter checks and Digits on every way out.
#include "rootfinding/support.h"
#include "stats/distributions/distributions.h"

extern "C" ALGEB STATS_VexaErrorDeviate_MP(VexaKernelVector kv, ALGEB args);

namespace {

ALGEB ErrorDeviate(ALGEB p, ALGEB F, ALGEB f, ALGEB a, ALGEB b, ALGEB c) {
  return STATS_VexaErrorDeviate_MP(Kv(), vexa::NewExpseq({p, F, f, a, b, c}));
}

// The standard normal distribution function and density as host procedures.
ALGEB NormalF() {
  return FloatProc([](const VexaFloat& x) { return STATS_NormalProbability_MP(Kv(), x, 0, 1); });
}
ALGEB NormalDensity() {
  return FloatProc([](const VexaFloat& x) { return exp(-x * x / 2) / sqrt(2 * VexaFloatPi()); });
}

// |got - want| within units of the last place of want at the Digits in force.
bool WithinUlps(const VexaFloat& got, const VexaFloat& want, double ulps) {
  if (want == 0) return got == 0;
  const int digits = VexaDigits();
  VexaDigitsScope wide(2 * digits + 20);
  const VexaFloat ulp =
      pow(VexaFloat(10), floor(log(fabs(want)) / log(VexaFloat(10))) - VexaFloat(digits - 1));
  return fabs(got - want) <= ulps * ulp;
}

TEST(ErrorDeviate, NormalCaseAgreesWithTheNormalDeviate) {
  // F is solved as it is: near p = 1 its values lose log10(1 / (1 - p)) digits, which the
  // three guard digits cover up to 1 - p = 1e-3.
  const char* probabilities[] = {"1e-300", "1e-20", "0.025", "0.3", "0.5", "0.975", "0.999"};
  for (int digits : {10, 30, 100}) {
    VexaDigitsScope scope(digits);
    ALGEB F = NormalF(), f = NormalDensity();
    for (const char* p : probabilities) {
      SCOPED_TRACE(std::string("p = ") + p + " at Digits " + std::to_string(digits));
      const VexaFloat x(ErrorDeviate(Num(p), F, f, Num("0"), Num("1"), Num("1")));
      EXPECT_EQ(VexaDigits(), digits);
      const VexaFloat z = STATS_NormalDeviate_MP(Kv(), VexaFloatFromString(p), 0, 1);
      EXPECT_TRUE(WithinUlps(x, z, 1)) << Text(x) << " against " << Text(z);
      EXPECT_TRUE(VexaFloatRound(x, digits) == x);
    }
  }
}

TEST(ErrorDeviate, LaplaceCaseAgreesWithItsClosedForm) {
  // c = 2: F(x) = exp((x - a) / 2b) / 2 left of a, with the quantile a + 2b ln(2p).
  VexaDigitsScope scope(40);
  const VexaFloat a = 3, b = VexaFloatFromString("0.5");
  ALGEB F = FloatProc([a, b](const VexaFloat& x) {
    const VexaFloat e = exp(-fabs(x - a) / (2 * b)) / 2;
    return x < a ? e : 1 - e;
  });
  ALGEB f = FloatProc([a, b](const VexaFloat& x) { return exp(-fabs(x - a) / (2 * b)) / (4 * b); });
  for (const char* p : {"1e-50", "0.2", "0.9"}) {
    SCOPED_TRACE(p);
    const VexaFloat x(ErrorDeviate(Num(p), F, f, Num("3"), Num("0.5"), Num("2")));
    VexaFloat want;
    {
      VexaDigitsScope wide(60);
      const VexaFloat q = VexaFloatFromString(p);
      want = q < 0.5 ? a + 2 * b * log(2 * q) : a - 2 * b * log(2 * (1 - q));
    }
    EXPECT_TRUE(WithinUlps(x, VexaFloatRound(want, 40), 1)) << Text(x);
  }
}

TEST(ErrorDeviate, MessagesAndDigitsOnEveryWayOut) {
  VexaDigitsScope scope(10);
  ALGEB F = NormalF(), f = NormalDensity();
  int seenDigits = 0;
  ALGEB failing = vexa::NewNativeProcedure("g", [&seenDigits](vexa::Kernel*, ALGEB) -> ALGEB {
    seenDigits = VexaDigits();
    vexa::RaiseFormatted("no value here");
  });
  auto error = [](ALGEB p, ALGEB F, ALGEB f, const char* b, const char* c) {
    return ErrorOf([&] { ErrorDeviate(p, F, f, Num("0"), Num(b), Num(c)); });
  };
  EXPECT_EQ(error(Num("0.5"), Num("2"), f, "1", "1"),
            "VexaErrorDeviate expects a procedure as its second parameter, received: 2.");
  EXPECT_EQ(error(Num("0.5"), F, Num("3"), "1", "1"),
            "VexaErrorDeviate expects a procedure as its third parameter, received: 3.");
  EXPECT_EQ(error(Num("0"), F, f, "1", "1"),
            "the probability must be strictly between 0 and 1, received: 0.");
  EXPECT_EQ(error(Num("1"), F, f, "1", "1"),
            "the probability must be strictly between 0 and 1, received: 1.");
  EXPECT_EQ(error(Num("0.5"), F, f, "0", "1"),
            "the scale must be positive and finite, received: 0.");
  EXPECT_EQ(error(Num("0.5"), F, f, "1", "-1"),
            "the shape must be positive and finite, received: -1.");
  EXPECT_EQ(VexaDigits(), 10);
  for (int which : {1, 2}) {
    seenDigits = 0;
    EXPECT_EQ(error(Num("0.3"), which == 1 ? failing : F, which == 2 ? failing : f, "1", "1"),
              "no value here");
    EXPECT_EQ(seenDigits, 13);
    EXPECT_EQ(VexaDigits(), 10);
  }
  // A function that never reaches p fails in the bracket search.
  ALGEB flat = FloatProc([](const VexaFloat&) { return VexaFloat(0); });
  EXPECT_EQ(error(Num("0.3"), flat, f, "1", "1"),
            "NewtonRaphsonHybrid was not able to converge on the specified root.");
  EXPECT_EQ(VexaDigits(), 10);
}

}  // namespace
