// The error distribution's deviate against the normal deviate (c = 1) and Laplace's closed form
// (c = 2) in the tails and at several Digits; its messages and Digits on every way out.
#include "rootfinding/support.h"
#include "stats/distributions/distributions.h"

extern "C" ALGEB STATS_VexaErrorDeviate_MP(VexaKernelVector kv, ALGEB args);

namespace {

ALGEB ErrorDeviate(const char* p, ALGEB F, ALGEB f, const char* a, const char* b, const char* c) {
  return STATS_VexaErrorDeviate_MP(Kv(), vexa::NewExpseq({Num(p), F, f, Num(a), Num(b), Num(c)}));
}

// |got - want| within one unit in the last place of want at the Digits in force.
bool WithinUlp(const VexaFloat& got, const VexaFloat& want) {
  if (want == 0) return got == 0;
  const int digits = VexaDigits();
  VexaDigitsScope wide(2 * digits + 20);
  return fabs(got - want) <=
         pow(VexaFloat(10), floor(log(fabs(want)) / log(VexaFloat(10))) - VexaFloat(digits - 1));
}

// The standard normal distribution function and density as host procedures.
ALGEB NormalF() {
  return FloatProc([](const VexaFloat& x) { return STATS_NormalProbability_MP(Kv(), x, 0, 1); });
}
ALGEB NormalDensity() {
  return FloatProc([](const VexaFloat& x) { return exp(-x * x / 2) / sqrt(2 * VexaFloatPi()); });
}

TEST(ErrorDeviate, AgreesWithTheNormalDeviateAndLaplacesClosedForm) {
  // F is solved as it is: near p = 1 its values lose log10(1 / (1 - p)) digits, which the
  // three guard digits cover up to 1 - p = 1e-3.
  for (int digits : {10, 30, 100}) {
    VexaDigitsScope scope(digits);
    ALGEB F = NormalF(), f = NormalDensity();
    for (const char* p : {"1e-300", "1e-20", "0.025", "0.3", "0.5", "0.975", "0.999"}) {
      SCOPED_TRACE(std::string("p = ") + p + " at Digits " + std::to_string(digits));
      const VexaFloat x(ErrorDeviate(p, F, f, "0", "1", "1"));
      EXPECT_EQ(VexaDigits(), digits);
      const VexaFloat z = STATS_NormalDeviate_MP(Kv(), VexaFloatFromString(p), 0, 1);
      EXPECT_TRUE(WithinUlp(x, z)) << Text(x) << " against " << Text(z);
      EXPECT_TRUE(VexaFloatRound(x, digits) == x);
    }
  }
  // c = 2: F(x) = exp((x - a) / 2b) / 2 left of a, with the quantile a + 2b ln(2p).
  VexaDigitsScope scope(40);
  const VexaFloat a = 3, b = VexaFloatFromString("0.5");
  auto e = [a, b](const VexaFloat& x) { return exp(-fabs(x - a) / (2 * b)) / 2; };
  ALGEB F = FloatProc([a, e](const VexaFloat& x) { return x < a ? e(x) : 1 - e(x); });
  ALGEB f = FloatProc([b, e](const VexaFloat& x) { return e(x) / (2 * b); });
  for (const char* p : {"1e-50", "0.2", "0.9"}) {
    const VexaFloat x(ErrorDeviate(p, F, f, "3", "0.5", "2"));
    VexaDigitsScope wide(60);
    const VexaFloat q = VexaFloatFromString(p);
    const VexaFloat want = q < 0.5 ? a + 2 * b * log(2 * q) : a - 2 * b * log(2 * (1 - q));
    VexaDigitsScope back(40);
    EXPECT_TRUE(WithinUlp(x, VexaFloatRound(want, 40))) << p << ": " << Text(x);
  }
}

TEST(ErrorDeviate, MessagesAndDigitsOnEveryWayOut) {
  VexaDigitsScope scope(10);
  ALGEB F = NormalF(), f = NormalDensity(), two = Num("2"), three = Num("3");
  int seenDigits = 0;
  ALGEB failing = vexa::NewNativeProcedure("g", [&seenDigits](vexa::Kernel*, ALGEB) -> ALGEB {
    seenDigits = VexaDigits();
    vexa::RaiseFormatted("no value here");
  });
  ALGEB flat = FloatProc([](const VexaFloat&) { return VexaFloat(0); });
  struct Row {
    const char* p;
    ALGEB F, f;
    const char *b, *c, *message;
  };
  for (const Row& r : std::vector<Row>{
           {"0.5", two, f, "1", "1",
            "VexaErrorDeviate expects a procedure as its second parameter, received: 2."},
           {"0.5", F, three, "1", "1",
            "VexaErrorDeviate expects a procedure as its third parameter, received: 3."},
           {"0", F, f, "1", "1", "the probability must be strictly between 0 and 1, received: 0."},
           {"0.5", F, f, "0", "1", "the scale must be positive and finite, received: 0."},
           {"0.5", F, f, "1", "-1", "the shape must be positive and finite, received: -1."},
           {"0.3", failing, f, "1", "1", "no value here"},
           {"0.3", F, failing, "1", "1", "no value here"},
           // A function that never reaches p fails in the bracket search.
           {"0.3", flat, f, "1", "1",
            "NewtonRaphsonHybrid was not able to converge on the specified root."}}) {
    seenDigits = 0;
    EXPECT_EQ(ErrorOf([&] { ErrorDeviate(r.p, r.F, r.f, "0", r.b, r.c); }), r.message);
    // the procedures are evaluated with three guard digits
    EXPECT_EQ(seenDigits, r.F == failing || r.f == failing ? 13 : 0) << r.message;
    EXPECT_EQ(VexaDigits(), 10) << r.message;
  }
}

}  // namespace
