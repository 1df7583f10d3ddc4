// The gamma distribution (shape a, scale b) and the chi-square distribution (shape df/2,
// scale 2): the regularized incomplete gamma functions P(a, x) and Q(a, x), each computed
// directly where it is the smaller tail, and their inversion. Arb's P loses every digit
// below the mean once a passes about 300, so for large shapes P comes from its power series
// P(a, x) = x^a e^-x / Gamma(a+1) * sum_k x^k / ((a+1)...(a+k)), with a rigorous tail bound.
#include <arb_hypgeom.h>

#include <cmath>

#include "numlib/quantile.h"

namespace vexa {
namespace {

const double kLargeShape = 100;

bool Below(const arb_t x, const arb_t a) {
  return arf_cmp(arb_midref(x), arb_midref(a)) < 0;
}

bool LargeShape(const arb_t a) {
  return arf_cmp_si(arb_midref(a), kLargeShape) >= 0;
}

bool HugeShape(const arb_t a) {
  return arf_cmp_si(arb_midref(a), kMaxShape) > 0;
}

// Q(a, x), or P(a, x), by Temme's expansion in lambda = x / a.
void HugeShapeTail(arb_t res, const arb_t a, const arb_t x, bool upper, slong prec) {
  Ball lambda;
  arb_div(lambda.v, x, a, prec + 32);
  LargeGammaTail(res, a, lambda.v, upper, prec);
}

// P(a, x) by the power series (0 < x < a + 1 keeps every ratio below 1).
void LowerSeries(arb_t res, const arb_t a, const arb_t x, slong prec) {
  Ball sum, term, den, ratio, prefix;
  arb_one(sum.v);
  arb_one(term.v);
  for (ulong k = 1;; ++k) {
    arb_add_ui(den.v, a, k, prec);
    arb_div(ratio.v, x, den.v, prec);
    arb_mul(term.v, term.v, ratio.v, prec);
    arb_add(sum.v, sum.v, term.v, prec);
    // stop once the term is negligible and the ratios that follow stay below 1
    if (arf_cmpabs_2exp_si(arb_midref(term.v),
                           arf_abs_bound_lt_2exp_si(arb_midref(sum.v)) - prec - 8) < 0 &&
        arb_lt(ratio.v, den.v) && arf_cmp_si(arb_midref(ratio.v), 1) < 0 && k > 2) {
      // remainder <= term * r / (1 - r), r = x / (a + k + 1)
      Ball r, bound;
      arb_add_ui(den.v, a, k + 1, prec);
      arb_div(r.v, x, den.v, prec);
      OneMinusBall(bound.v, r.v, prec);
      if (arb_is_positive(bound.v)) {
        arb_div(bound.v, r.v, bound.v, prec);
        arb_mul(bound.v, bound.v, term.v, prec);
        mag_t m;
        mag_init(m);
        arb_get_mag(m, bound.v);
        arb_add_error_mag(sum.v, m);
        mag_clear(m);
        break;
      }
    }
  }
  // x^a e^-x / Gamma(a + 1)
  arb_log(prefix.v, x, prec);
  arb_mul(prefix.v, prefix.v, a, prec);
  arb_sub(prefix.v, prefix.v, x, prec);
  arb_add_ui(den.v, a, 1, prec);
  arb_hypgeom_lgamma(den.v, den.v, prec);
  arb_sub(prefix.v, prefix.v, den.v, prec);
  arb_exp(prefix.v, prefix.v, prec);
  arb_mul(res, sum.v, prefix.v, prec);
}

void GammaUpper(arb_t res, const arb_t a, const arb_t x, slong prec);

// P(a, x) for x >= 0.
void GammaLower(arb_t res, const arb_t a, const arb_t x, slong prec) {
  if (HugeShape(a)) {
    HugeShapeTail(res, a, x, false, prec);
  } else if (!LargeShape(a)) {
    arb_hypgeom_gamma_lower(res, a, x, 1, prec);
  } else if (Below(x, a)) {
    LowerSeries(res, a, x, prec);
  } else {  // P >= 1/2 here: its complement loses no digits
    arb_hypgeom_gamma_upper(res, a, x, 1, prec);
    OneMinusBall(res, res, prec);
  }
}

// Q(a, x) for x >= 0.
void GammaUpper(arb_t res, const arb_t a, const arb_t x, slong prec) {
  if (HugeShape(a)) {
    HugeShapeTail(res, a, x, true, prec);
  } else if (LargeShape(a) && Below(x, a)) {
    LowerSeries(res, a, x, prec);
    OneMinusBall(res, res, prec);
  } else {
    arb_hypgeom_gamma_upper(res, a, x, 1, prec);
  }
}

// The standard gamma density x^(a-1) e^-x / Gamma(a).
void GammaDensity(arb_t res, const arb_t a, const arb_t x, slong prec) {
  Ball t;
  arb_sub_ui(t.v, a, 1, prec);
  arb_log(res, x, prec);
  arb_mul(res, res, t.v, prec);
  arb_sub(res, res, x, prec);
  arb_hypgeom_lgamma(t.v, a, prec);
  arb_sub(res, res, t.v, prec);
  arb_exp(res, res, prec);
}

// ---- Whole shapes a = n: Q(n, x) = e^-x sum_{k<n} x^k / k!, a finite sum of positive terms.

const ulong kMaxWholeShape = 1000;

// n when a is a whole number from 1 to kMaxWholeShape and x < 2^32, else 0.
ulong WholeShape(const arb_t a, const arb_t x) {
  if (!arb_is_exact(a) || !arf_is_int(arb_midref(a)) || arf_cmp_si(arb_midref(a), 1) < 0 ||
      arf_cmp_si(arb_midref(a), static_cast<slong>(kMaxWholeShape)) > 0 ||
      arf_cmpabs_2exp_si(arb_midref(x), 32) >= 0)
    return 0;
  return static_cast<ulong>(arf_get_si(arb_midref(a), ARF_RND_DOWN));
}

// Adds to s the bound t r / (1 - r) of the rest of a series whose later term ratios stay
// below r < 1 (t is the last term summed); false if r is not below 1.
bool AddGeometricRest(arb_t s, const arb_t t, const arb_t r, slong prec) {
  Ball bound;
  OneMinusBall(bound.v, r, prec);
  if (!arb_is_positive(bound.v)) return false;
  arb_div(bound.v, r, bound.v, prec);
  arb_mul(bound.v, bound.v, t, prec);
  mag_t m;
  mag_init(m);
  arb_get_mag(m, bound.v);
  arb_add_error_mag(s, m);
  mag_clear(m);
  return true;
}

// Q(n, x) by the finite sum.
void WholeUpper(arb_t res, ulong n, const arb_t x, slong prec) {
  Ball term, sum;
  arb_one(term.v);
  arb_one(sum.v);
  for (ulong k = 1; k < n; ++k) {
    arb_mul(term.v, term.v, x, prec);
    arb_div_ui(term.v, term.v, k, prec);
    arb_add(sum.v, sum.v, term.v, prec);
  }
  arb_neg(term.v, x);
  arb_exp(term.v, term.v, prec);
  arb_mul(res, sum.v, term.v, prec);
}

// P(n, x) = x^n e^-x / n! sum_j x^j / ((n+1)...(n+j)) for x < n: the ratios x / (n+j+1)
// fall below 1 at once, and the rest after a negligible term is bounded geometrically.
void WholeLowerSeries(arb_t res, ulong n, const arb_t x, slong prec) {
  Ball term, sum, r;
  arb_one(term.v);
  arb_one(sum.v);
  const slong target = -prec - 8;
  for (ulong j = n + 1;; ++j) {
    arb_mul(term.v, term.v, x, prec);
    arb_div_ui(term.v, term.v, j, prec);
    arb_add(sum.v, sum.v, term.v, prec);
    if (arf_cmpabs_2exp_si(arb_midref(term.v), target) < 0) {
      arb_div_ui(r.v, x, j + 1, prec);
      if (AddGeometricRest(sum.v, term.v, r.v, prec)) break;
    }
  }
  // x^n e^-x / n!
  arb_pow_ui(term.v, x, n, prec);
  arb_mul(sum.v, sum.v, term.v, prec);
  arb_neg(term.v, x);
  arb_exp(term.v, term.v, prec);
  arb_mul(sum.v, sum.v, term.v, prec);
  arb_fac_ui(term.v, n, prec);
  arb_div(res, sum.v, term.v, prec);
}

// P(n, x): by its series below n, above it as 1 - Q (P is at least about 1/2 there).
void WholeLower(arb_t res, ulong n, const arb_t x, slong prec) {
  if (arf_cmp_ui(arb_midref(x), n) < 0) {
    WholeLowerSeries(res, n, x, prec);
  } else {
    WholeUpper(res, n, x, prec);
    OneMinusBall(res, res, prec);
  }
}

// The tail probability at g of the gamma law with shape a and scale b (g >= 0).
VexaFloat Probability(Nag_TailProbability tail, const VexaFloat& g, const VexaFloat& a,
                      const VexaFloat& b) {
  if (g == 0) return tail == Nag_UpperTail || tail == Nag_TwoTailConfid ? 1 : 0;
  auto point = [&](arb_t sa, arb_t sx, slong prec) {
    Ball s;
    ToBall(sa, a, prec);
    ToBall(sx, g, prec);
    ToBall(s.v, b, prec);
    arb_div(sx, sx, s.v, prec);
  };
  return OneSidedTail(
      tail,
      [&](arb_t y, slong prec) {
        Ball sa, sx;
        point(sa.v, sx.v, prec);
        if (ulong n = WholeShape(sa.v, sx.v))
          WholeLower(y, n, sx.v, prec);
        else
          GammaLower(y, sa.v, sx.v, prec);
      },
      [&](arb_t y, slong prec) {
        Ball sa, sx;
        point(sa.v, sx.v, prec);
        if (ulong n = WholeShape(sa.v, sx.v))
          WholeUpper(y, n, sx.v, prec);
        else
          GammaUpper(y, sa.v, sx.v, prec);
      });
}

// log P(a, x) (or, with upper, log Q(a, x)) at x = e^u in double: the power series below
// a + 1, the continued fraction above it (modified Lentz), the other tail by log1p.
double LogGammaTailD(double a, double u, bool upper) {
  double x = std::exp(u);
  double prefix = a * u - x - std::lgamma(a);  // log(x^a e^-x / Gamma(a))
  const double tiny = 1e-300;
  bool lower;
  double logTail;
  if (x < a + 1) {
    double sum = 1, term = 1;
    for (int k = 1; k < 100000 && term > sum * 1e-17; ++k) {
      term *= x / (a + k);
      sum += term;
    }
    lower = true;
    logTail = prefix - std::log(a) + std::log(sum);
  } else {
    double b = x + 1 - a, c = 1 / tiny, d = 1 / b, h = d;
    for (int i = 1; i < 100000; ++i) {
      double an = -i * (i - a);
      b += 2;
      d = an * d + b;
      if (std::fabs(d) < tiny) d = tiny;
      c = b + an / c;
      if (std::fabs(c) < tiny) c = tiny;
      d = 1 / d;
      h *= d * c;
      if (std::fabs(d * c - 1) < 1e-16) break;
    }
    lower = false;
    logTail = prefix + std::log(h);
  }
  return lower == !upper ? logTail : std::log1p(-std::exp(logTail));
}

// log of a starting value for the standard gamma quantile with the given tail
// probability: Wilson-Hilferty for a >= 1, the leading terms of the tails otherwise.
double LogGuess(double a, double logT, bool upper) {
  double z = NormalUpperDeviate(logT);  // P(Z > z) = t
  double zLower = upper ? z : -z;       // the normal deviate at the same lower probability
  if (a >= 1) {
    double c = 1 - 1 / (9 * a) + zLower / (3 * std::sqrt(a));
    if (c > 0) return std::log(a) + 3 * std::log(c);
  }
  if (!upper) return (logT + LogGamma(a + 1)) / a;  // P ~ x^a / Gamma(a + 1)
  // For a small shape an upper tail that is not small lies at a tiny x, where 1 - Q ~
  // x^a / Gamma(a + 1) (for a = 1e-5 and Q = 0.165, near 10^-7826).
  double logLower = std::log1p(-std::exp(logT));
  double lowerGuess = (logLower + LogGamma(a + 1)) / a;
  if (lowerGuess < std::log(0.1)) return lowerGuess;
  // Q ~ x^(a-1) e^-x / Gamma(a)
  double x = std::max(1.0, -logT - LogGamma(a));
  for (int i = 0; i < 4; ++i) x = std::max(1.0, -logT - LogGamma(a) + (a - 1) * std::log(x));
  return std::log(x);
}

// a b, exactly.
VexaFloat ExactProduct(const VexaFloat& a, const VexaFloat& b) {
  mpz_t ma, mb;
  int64_t ea, eb;
  mpz_init(ma);
  mpz_init(mb);
  FloatToMpz(a, ma, &ea);
  FloatToMpz(b, mb, &eb);
  mpz_mul(ma, ma, mb);
  VexaFloat r = FloatFromMpz(ma, ea + eb, 0);
  mpz_clear(ma);
  mpz_clear(mb);
  return r;
}

// The quantile of a shape above kMaxShape, solved for y = x / (a b), which lies near 1
// (Wilson-Hilferty's cube of a normal deviate to start: a shape beyond the double range
// starts at y = 1).
bool HugeShapeDeviate(const VexaFloat& t, bool upper, const VexaFloat& a, const VexaFloat& b,
                      VexaFloat* x, const VexaFloat& p, NagError* fail, const char* routine) {
  Inversion inv;
  inv.upper = upper;
  inv.scale = ExactProduct(a, b);
  inv.tail = [&](arb_t y, const arb_t z, slong prec) {
    Ball sa;
    ToBall(sa.v, a, prec);
    LargeGammaTail(y, sa.v, z, upper, prec);
  };
  inv.density = [&](arb_t y, const arb_t z, slong prec) {
    Ball sa;
    ToBall(sa.v, a, prec);
    LargeGammaDensity(y, sa.v, z, prec);
  };
  double logA = LogOf(a), ad = ToDouble(a);
  inv.logWidth = std::max(-1000.0, -0.5 * logA / std::log(2.0));
  inv.logSlope = [ad](double u) { return -ad * std::expm1(u) - 1; };
  double z = NormalUpperDeviate(LogOf(t));
  double zLower = upper ? z : -z;
  double c = -std::exp(-logA) / 9 + zLower * std::exp(-logA / 2) / 3;
  return Invert(inv, t, 3 * std::log1p(c), x, p, fail, routine);
}

// The quantile at lower probability p of the gamma law with shape a and scale b.
bool Deviate(const VexaFloat& p, const VexaFloat& a, const VexaFloat& b, VexaFloat* x,
             NagError* fail, const char* routine) {
  bool upper = p > 0.5;
  VexaFloat t = upper ? OneMinus(p) : p;
  if (a > kMaxShape) return HugeShapeDeviate(t, upper, a, b, x, p, fail, routine);
  Inversion inv;
  inv.upper = upper;
  inv.scale = b;
  inv.tail = [&](arb_t y, const arb_t z, slong prec) {
    Ball sa;
    ToBall(sa.v, a, prec);
    if (upper)
      GammaUpper(y, sa.v, z, prec);
    else
      GammaLower(y, sa.v, z, prec);
  };
  inv.density = [&](arb_t y, const arb_t z, slong prec) {
    Ball sa;
    ToBall(sa.v, a, prec);
    GammaDensity(y, sa.v, z, prec);
  };
  double ad = ToDouble(a);
  inv.logSlope = [ad](double u) { return ad - 1 - std::exp(u); };
  inv.logTailD = [ad, upper](double u) { return LogGammaTailD(ad, u, upper); };
  inv.logDensityD = [ad](double u) { return ad * u - std::exp(u) - std::lgamma(ad); };
  return Invert(inv, t, LogGuess(ad, LogOf(t), upper), x, p, fail, routine);
}

}  // namespace

// The finite sums for small whole shapes (beyond, their series converge too slowly near the
// mean).
void RegularizedGammaLower(arb_t res, const arb_t a, const arb_t x, slong prec) {
  ulong n = WholeShape(a, x);
  if (n != 0 && n <= 64)
    WholeLower(res, n, x, prec);
  else
    GammaLower(res, a, x, prec);
}

void RegularizedGammaUpper(arb_t res, const arb_t a, const arb_t x, slong prec) {
  ulong n = WholeShape(a, x);
  if (n != 0 && n <= 64)
    WholeUpper(res, n, x, prec);
  else
    GammaUpper(res, a, x, prec);
}

}  // namespace vexa

using namespace vexa;

VexaFloat VexaMP_g01ecc(Nag_TailProbability tail, VexaFloat x, VexaFloat df, NagError* fail) {
  const char* routine = "VexaMP_g01ecc";
  Succeed(fail);
  if (!CheckTail(fail, routine, tail) || !CheckNonNegative(fail, routine, "x", x) ||
      !CheckPositive(fail, routine, "df", df, 0))
    return 0;
  return Probability(tail, x, Half(df), 2);
}

VexaFloat VexaMP_g01efc(Nag_TailProbability tail, VexaFloat g, VexaFloat a, VexaFloat b,
                        NagError* fail) {
  const char* routine = "VexaMP_g01efc";
  Succeed(fail);
  if (!CheckTail(fail, routine, tail) || !CheckNonNegative(fail, routine, "g", g) ||
      !CheckPositive(fail, routine, "a", a, 0) || !CheckPositive(fail, routine, "b", b, 0))
    return 0;
  return Probability(tail, g, a, b);
}

VexaFloat VexaMP_g01fcc(VexaFloat p, VexaFloat df, NagError* fail) {
  const char* routine = "VexaMP_g01fcc";
  Succeed(fail);
  if (!CheckProbability(fail, routine, p) || !CheckPositive(fail, routine, "df", df, 0)) return 0;
  VexaFloat x;
  return Deviate(p, Half(df), 2, &x, fail, routine) ? x : 0;
}

VexaFloat VexaMP_g01ffc(VexaFloat p, VexaFloat a, VexaFloat b, VexaFloat /*tol*/, NagError* fail) {
  const char* routine = "VexaMP_g01ffc";
  Succeed(fail);
  if (!CheckProbability(fail, routine, p) || !CheckPositive(fail, routine, "a", a, 0) ||
      !CheckPositive(fail, routine, "b", b, 0))
    return 0;
  VexaFloat x;
  return Deviate(p, a, b, &x, fail, routine) ? x : 0;
}
