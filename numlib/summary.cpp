// Five-point summary with Tukey's hinges: minimum, lower hinge, median, upper hinge and
// maximum. The median lies at depth (n+1)/2 and each hinge at depth (floor((n+1)/2) + 1)/2
// from its end of the sorted values; a depth ending in a half is the mean of the two order
// statistics beside it, formed exactly and rounded once.
#include <algorithm>
#include <vector>

#include "float/ball.h"
#include "numlib/failure.h"

namespace vexa {
namespace {

constexpr const char* kRoutine = "VexaMP_g01alc";

// (a + b) / 2 for finite a, b, rounded once to the current Digits. The exact sum is formed
// on a common decimal exponent; a term too small to reach the rounding position of the
// other (or its last digit) only decides the direction, so it is replaced by a stand-in of
// the same sign just below both, which keeps the integers short.
VexaFloat ExactMean(const VexaFloat& a, const VexaFloat& b) {
  if (a == 0 || b == 0) return (a == 0 ? b : a) * VexaFloat(0.5);
  const FloatNode* big = AsFloatNode(a.Handle());
  const FloatNode* small = AsFloatNode(b.Handle());
  if (Top(big) < Top(small)) std::swap(big, small);
  mpz_t mb, ms, t;
  mpz_init(mb);
  mpz_init(ms);
  mpz_init(t);
  MantissaView(t, big);
  mpz_set(mb, t);
  MantissaView(t, small);
  mpz_set(ms, t);
  int64_t eb = big->exponent, es = small->exponent;
  const int64_t limit = std::min<int64_t>(eb, Top(big) - 1 - VexaDigits());
  if (Top(small) <= limit) {
    mpz_set_si(ms, mpz_sgn(ms));
    es = limit - 1;
  }
  const int64_t e = std::min(eb, es);
  mpz_ui_pow_ui(t, 10, static_cast<unsigned long>(eb - e));
  mpz_mul(mb, mb, t);
  mpz_ui_pow_ui(t, 10, static_cast<unsigned long>(es - e));
  mpz_addmul(mb, ms, t);
  mpz_mul_ui(mb, mb, 5);  // (a + b) / 2 = 5 (a + b) / 10
  VexaFloat mean = FloatFromMpz(mb, e - 1, VexaDigits());
  mpz_clear(mb);
  mpz_clear(ms);
  mpz_clear(t);
  return mean;
}

VexaFloat Mean(const VexaFloat& a, const VexaFloat& b) {
  bool finite = !IsVexaFloatInfinity(a) && !IsVexaFloatNegativeInfinity(a) &&
                !IsVexaFloatInfinity(b) && !IsVexaFloatNegativeInfinity(b);
  if (!finite) return (a + b) * VexaFloat(0.5);  // an infinity, or undefined for inf - inf
  return ExactMean(a, b);
}

// The order statistic at depth half / 2 (half counted in halves), from the top if asked.
VexaFloat AtDepth(const std::vector<VexaFloat>& sorted, long half, bool fromTop) {
  const long n = static_cast<long>(sorted.size());
  auto at = [&](long depth) { return sorted[fromTop ? n - depth : depth - 1]; };
  if (half % 2 == 0) return VexaFloatRound(at(half / 2), VexaDigits());
  return Mean(at(half / 2), at(half / 2 + 1));
}

}  // namespace
}  // namespace vexa

void VexaMP_g01alc(long n, const VexaFloat x[], VexaFloat res[], NagError* fail) {
  using namespace vexa;
  NagError local;
  local.print = true;
  if (fail == nullptr) fail = &local;
  Succeed(fail);
  for (int i = 0; i < 5; ++i) res[i] = VexaFloat();
  if (n < 5) {
    Fail(fail, NE_INT_ARG_LT, kRoutine, Shows("n", n), "n >= 5");
    return;
  }
  for (long i = 0; i < n; ++i) {
    if (IsVexaFloatUndefined(x[i])) {
      std::string name = "x[" + std::to_string(i) + "]";
      Fail(fail, NE_REAL_ARG, kRoutine, Shows(name.c_str(), x[i]), "every x[i] is a number");
      return;
    }
  }
  std::vector<VexaFloat> sorted(x, x + n);
  std::sort(sorted.begin(), sorted.end());
  const long medianHalf = n + 1;           // twice the median's depth
  const long hingeHalf = (n + 1) / 2 + 1;  // twice a hinge's depth
  res[0] = VexaFloatRound(sorted.front(), VexaDigits());
  res[1] = AtDepth(sorted, hingeHalf, false);
  res[2] = AtDepth(sorted, medianHalf, false);
  res[3] = AtDepth(sorted, hingeHalf, true);
  res[4] = VexaFloatRound(sorted.back(), VexaDigits());
}
