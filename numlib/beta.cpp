// The laws computed through the regularized incomplete beta function I_z(a, b): beta, Student
// t (|T| <= t has probability I_(t^2/(df+t^2))(1/2, df/2)) and F (F <= f has probability
// I_(df1 f/(df1 f+df2))(df1/2, df2/2)). Of I_z(a, b) and I_(1-z)(b, a) the one on the
// smaller side of the mean is computed directly, the other as its complement; 1 - z is
// always formed by the caller without cancellation. Quantiles invert these by quantile.cpp.
#include <arb_hypgeom.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "numlib/quantile.h"

namespace vexa {
namespace {

const slong kExtraBits = 12;

double Mid(const arb_t x) {
  return arf_get_d(arb_midref(x), ARF_RND_NEAR);
}

// Arb sums I_z(a, b) as z^a / (a B(a, b)) 2F1(a, 1 - b; a + 1; z), a series that ends after
// b terms when b is a whole number. Its terms alternate and reach about (1 + z)^(b - 1), so
// while that stays small it costs a few microseconds at any precision, where the infinite
// series can cost thirty times as much.
bool Terminates(const arb_t b, const arb_t z) {
  return arb_is_int(b) && arb_is_positive(b) && (Mid(b) - 1) * std::log2(1 + Mid(z)) <= 16;
}

// 1 - I_zc(b, a) when the subtraction cancels no more bits than the extra ones carried: the
// complement of a terminating series, for a value that is not too small.
bool TerminatingComplement(arb_t res, const arb_t a, const arb_t b, const arb_t zc, slong prec) {
  for (slong extra = 24, attempt = 0; attempt < 2; ++attempt) {
    arb_hypgeom_beta_lower(res, b, a, zc, 1, prec + extra);
    slong before = std::min(arb_rel_accuracy_bits(res), prec + extra);
    OneMinusBall(res, res, prec + extra);
    slong after = arb_rel_accuracy_bits(res);
    if (before <= 0 || after <= 0) return false;  // no relative accuracy left
    slong lost = before - after;
    if (lost <= extra) return true;
    if (lost > 2 * prec) return false;
    extra = lost + 16;
  }
  return false;
}

// A second shape below 2^-20 with z above 1/2: the mass of the law lies at z ~ 1, where
// the series in z lose the digits of zc and their complement cancels.
bool TinyShapeNearOne(const arb_t b, const arb_t zc) {
  return arb_is_positive(b) && arf_cmpabs_2exp_si(arb_midref(b), -20) < 0 &&
         arf_cmp_2exp_si(arb_midref(zc), -1) < 0;
}

// I_z(a, b) = 1 - I_zc(b, a) for a tiny b, from
// I_zc(b, a) = zc^b Gamma(a+b) / (Gamma(a) Gamma(1+b)) 2F1(b, 1-a; b+1; zc) as
// -expm1(b log zc + lgamma(a+b) - lgamma(a) - lgamma(1+b) + log 2F1): the exponent is of
// the order of b, so it is carried with the bits that b lacks (and a margin for lgamma(a)).
void TinyShapeComplement(arb_t res, const arb_t a, const arb_t b, const arb_t zc, slong prec) {
  slong wp = prec - arf_abs_bound_lt_2exp_si(arb_midref(b)) + 64;
  Ball e, t, c;
  arb_log(e.v, zc, wp);
  arb_mul(e.v, e.v, b, wp);
  arb_add(t.v, a, b, wp);
  arb_hypgeom_lgamma(t.v, t.v, wp);
  arb_add(e.v, e.v, t.v, wp);
  arb_hypgeom_lgamma(t.v, a, wp);
  arb_sub(e.v, e.v, t.v, wp);
  arb_add_ui(t.v, b, 1, wp);
  arb_hypgeom_lgamma(t.v, t.v, wp);
  arb_sub(e.v, e.v, t.v, wp);
  arb_add_ui(c.v, b, 1, wp);
  arb_sub_ui(t.v, a, 1, wp);
  arb_neg(t.v, t.v);
  arb_hypgeom_2f1(t.v, b, t.v, c.v, zc, 0, wp);
  arb_log(t.v, t.v, wp);
  arb_add(e.v, e.v, t.v, wp);
  arb_expm1(res, e.v, wp);
  arb_neg(res, res);
}

// I_z(a, b), with zc = 1 - z given separately. Above the mean I_z(a, b) is at least about
// 1/2 and either series gives it without cancellation; below it the complement cancels, and
// is used only when its series terminates and the direct one does not.
void BetaLower(arb_t res, const arb_t a, const arb_t b, const arb_t z, const arb_t zc, slong prec) {
  if (TinyShapeNearOne(b, zc)) {
    TinyShapeComplement(res, a, b, zc, prec);
    return;
  }
  double ad = Mid(a), bd = Mid(b);
  bool direct;
  if (Mid(z) <= ad / (ad + bd)) {
    direct = Terminates(b, z) || !Terminates(a, zc) || !TerminatingComplement(res, a, b, zc, prec);
    if (!direct) return;
  } else {
    direct = Terminates(b, z) && !Terminates(a, zc);
  }
  if (direct) {
    arb_hypgeom_beta_lower(res, a, b, z, 1, prec);
  } else {
    arb_hypgeom_beta_lower(res, b, a, zc, 1, prec);
    OneMinusBall(res, res, prec);
  }
}

// I_(1-z)(b, a) = 1 - I_z(a, b).
void BetaUpper(arb_t res, const arb_t a, const arb_t b, const arb_t z, const arb_t zc, slong prec) {
  BetaLower(res, b, a, zc, z, prec);
}

// ---- Whole shapes: I_z(a, b) = sum_{j=a}^{m} C(m, j) z^j (1-z)^(m-j) with m = a + b - 1,
// the chance of at least a successes in m trials. I_(1-z)(b, a) sums the j below a. Both are
// sums of positive terms, so each tail is summed directly, in b or a terms.

const ulong kMaxWholeShape = 1000;

// n when a is a whole number from 1 to kMaxWholeShape, else 0.
ulong WholeShape(const arb_t a) {
  if (!arb_is_exact(a) || !arf_is_int(arb_midref(a)) || arf_cmp_si(arb_midref(a), 1) < 0 ||
      arf_cmp_si(arb_midref(a), static_cast<slong>(kMaxWholeShape)) > 0)
    return 0;
  return static_cast<ulong>(arf_get_si(arb_midref(a), ARF_RND_DOWN));
}

// For whole a and b, with w = z / zc and the exact binomial coefficients, Horner's rule on
// S_lo = sum_{j<a} C(m, j) w^j and S_hi = sum_{j>=a} C(m, j) w^(j-a) gives the lower tail
// z^a zc^(b-1) S_hi, the upper tail zc^m S_lo and the density a C(m, a) z^(a-1) zc^(b-1).
// Each output may be null.
void WholeBeta(arb_t lower, arb_t upper, arb_t density, ulong a, ulong b, const arb_t z,
               const arb_t zc, slong prec) {
  const ulong m = a + b - 1;
  Ball w, hi, lo, zPower, zcPower, t;
  Fmpz c;  // C(m, j)
  arb_div(w.v, z, zc, prec);
  fmpz_one(c.v);
  for (ulong j = m;; --j) {
    arb_t& s = j >= a ? hi.v : lo.v;
    arb_mul(s, s, w.v, prec);
    arb_add_fmpz(s, s, c.v, prec);
    if (j == a) arb_set_fmpz(t.v, c.v);
    if (j == 0) break;
    fmpz_mul_ui(c.v, c.v, j);
    fmpz_divexact_ui(c.v, c.v, m - j + 1);
  }
  arb_pow_ui(zPower.v, z, a - 1, prec);
  arb_pow_ui(zcPower.v, zc, b - 1, prec);
  arb_mul(zPower.v, zPower.v, zcPower.v, prec);  // z^(a-1) zc^(b-1)
  if (density != nullptr) {
    arb_mul(density, t.v, zPower.v, prec);
    arb_mul_ui(density, density, a, prec);
  }
  if (lower != nullptr) {
    arb_mul(lower, hi.v, zPower.v, prec);
    arb_mul(lower, lower, z, prec);
  }
  if (upper != nullptr) {
    arb_pow_ui(t.v, zc, m, prec);
    arb_mul(upper, lo.v, t.v, prec);
  }
}

// I_z(a, b) for a probability: the finite sum when both shapes are whole, else BetaLower.
void ProbabilityLower(arb_t res, const arb_t a, const arb_t b, const arb_t z, const arb_t zc,
                      slong prec) {
  ulong wa = WholeShape(a), wb = wa != 0 ? WholeShape(b) : 0;
  if (wb != 0)
    WholeBeta(res, nullptr, nullptr, wa, wb, z, zc, prec);
  else
    BetaLower(res, a, b, z, zc, prec);
}

// I_(1-z)(b, a) for a probability.
void ProbabilityUpper(arb_t res, const arb_t a, const arb_t b, const arb_t z, const arb_t zc,
                      slong prec) {
  ProbabilityLower(res, b, a, zc, z, prec);
}

// log B(a, b)
void LogBeta(arb_t res, const arb_t a, const arb_t b, slong prec) {
  Ball t;
  arb_hypgeom_lgamma(res, a, prec);
  arb_hypgeom_lgamma(t.v, b, prec);
  arb_add(res, res, t.v, prec);
  arb_add(t.v, a, b, prec);
  arb_hypgeom_lgamma(t.v, t.v, prec);
  arb_sub(res, res, t.v, prec);
}

// log of the beta density at z: (a-1) log z + (b-1) log zc - log B(a, b).
void LogBetaDensity(arb_t res, const arb_t a, const arb_t b, const arb_t z, const arb_t zc,
                    slong prec) {
  Ball t, u;
  arb_sub_ui(t.v, a, 1, prec);
  arb_log(u.v, z, prec);
  arb_mul(res, t.v, u.v, prec);
  arb_sub_ui(t.v, b, 1, prec);
  arb_log(u.v, zc, prec);
  arb_addmul(res, t.v, u.v, prec);
  LogBeta(t.v, a, b, prec);
  arb_sub(res, res, t.v, prec);
}

// ---- starting values (double precision) ----

double LogBetaD(double a, double b) {
  return LogGamma(a) + LogGamma(b) - LogGamma(a + b);
}

// log x and log(1 - x) of a starting value for the Beta(a, b) quantile whose lower (or,
// with upper, upper) tail probability is exp(logT): the normal approximation of
// Abramowitz and Stegun 26.5.22 for a, b > 1, else the leading terms of the tails,
// I_x(a, b) ~ x^a / (a B(a, b)) near 0 and 1 - I_x(a, b) ~ (1-x)^b / (b B(a, b)) near 1.
void BetaLogGuess(double a, double b, double logT, bool upper, double* logX, double* log1mX) {
  if (a > 1 && b > 1) {
    double y = NormalUpperDeviate(logT);  // P(Z > y) = t
    if (upper) y = -y;
    double lambda = (y * y - 3) / 6;
    double h = 2 / (1 / (2 * a - 1) + 1 / (2 * b - 1));
    double w = y * std::sqrt(h + lambda) / h -
               (1 / (2 * b - 1) - 1 / (2 * a - 1)) * (lambda + 5.0 / 6 - 2 / (3 * h));
    // x = a / (a + b e^(2w))
    double la = std::log(a), lb = std::log(b) + 2 * w;
    double m = std::max(la, lb);
    double lsum = m + std::log(std::exp(la - m) + std::exp(lb - m));
    *logX = la - lsum;
    *log1mX = lb - lsum;
    return;
  }
  double lbeta = LogBetaD(a, b);
  double logLower = upper ? std::log1p(-std::exp(logT)) : logT;
  double logUpper = upper ? logT : std::log1p(-std::exp(logT));
  double lx = (logLower + std::log(a) + lbeta) / a;
  double ly = (logUpper + std::log(b) + lbeta) / b;
  bool nearZero = upper ? !(ly <= std::log(0.5)) && lx < std::log(0.5) : lx <= std::log(0.5);
  if (!upper && !nearZero && !(ly < std::log(0.5))) lx = ly = std::log(0.5);
  if (nearZero) {
    *logX = lx;
    *log1mX = std::log1p(-std::exp(lx));
  } else {
    *log1mX = ly;
    *logX = std::log1p(-std::exp(ly));
  }
}

// ---- Student t: C(x) = P(|T| <= x) and S(x) = P(|T| >= x) for x >= 0 ----

struct StudentT {
  const VexaFloat& df;
  // w = x^2 / (df + x^2) and 1 - w = df / (df + x^2) at a ball x
  void Weights(arb_t half, arb_t halfDf, arb_t w, arb_t wc, const arb_t x, slong prec) const {
    Ball n, s;
    ToBall(n.v, df, prec);
    arb_mul(w, x, x, prec);
    arb_add(s.v, n.v, w, prec);
    arb_div(w, w, s.v, prec);
    arb_div(wc, n.v, s.v, prec);
    arb_mul_2exp_si(halfDf, n.v, -1);
    arb_set_d(half, 0.5);
  }
  void Confidence(arb_t res, const arb_t x, slong prec) const {
    Ball h, hd, w, wc;
    Weights(h.v, hd.v, w.v, wc.v, x, prec);
    BetaLower(res, h.v, hd.v, w.v, wc.v, prec);
  }
  void Significance(arb_t res, const arb_t x, slong prec) const {
    Ball h, hd, w, wc;
    Weights(h.v, hd.v, w.v, wc.v, x, prec);
    BetaUpper(res, h.v, hd.v, w.v, wc.v, prec);
  }
  // the density at x
  void Density(arb_t res, const arb_t x, slong prec) const {
    Ball n, t, u;
    ToBall(n.v, df, prec);
    LogConstant(res, prec);
    arb_mul(t.v, x, x, prec);
    arb_div(t.v, t.v, n.v, prec);
    arb_log1p(t.v, t.v, prec);
    arb_add_ui(u.v, n.v, 1, prec);
    arb_mul_2exp_si(u.v, u.v, -1);
    arb_submul(res, t.v, u.v, prec);
    arb_exp(res, res, prec);
  }
  // log of the density at 0: lgamma((df+1)/2) - lgamma(df/2) - log(df pi) / 2
  void LogConstant(arb_t res, slong prec) const {
    Ball n, t;
    ToBall(n.v, df, prec);
    arb_add_ui(t.v, n.v, 1, prec);
    arb_mul_2exp_si(t.v, t.v, -1);
    arb_hypgeom_lgamma(res, t.v, prec);
    arb_mul_2exp_si(t.v, n.v, -1);
    arb_hypgeom_lgamma(t.v, t.v, prec);
    arb_sub(res, res, t.v, prec);
    arb_const_pi(t.v, prec);
    arb_mul(t.v, t.v, n.v, prec);
    arb_log(t.v, t.v, prec);
    arb_mul_2exp_si(t.v, t.v, -1);
    arb_sub(res, res, t.v, prec);
  }
};

double LogTConstant(double nu) {
  return LogGamma((nu + 1) / 2) - LogGamma(nu / 2) - 0.5 * std::log(nu * M_PI);
}

// log x from the far tail P(T >= x) ~ c df^((df-1)/2) x^-df / df = q. As df -> 0 the constant
// tends to -log 2 (its logarithms cancel), so a df below the double range gives +infinity.
double TLogFarGuess(double nu, double logQ) {
  if (nu == 0) return -M_LN2 - logQ > 0 ? std::numeric_limits<double>::infinity() : 0;
  return (LogTConstant(nu) + (nu - 1) / 2 * std::log(nu) - logQ) / nu;
}

// The x >= 0 with S(x) / 2 = P(T >= x) = t (far from the centre, t <= 1/4), or with
// C(x) = P(|T| <= x) = t (near it, t < 1/2: this keeps the relative accuracy of a small x).
// The caller forms t from its probability p without a round trip through 1 - p, which for a
// tiny p would carry every one of its digits.
bool TDeviate(const VexaFloat& df, const VexaFloat& t, bool far, VexaFloat* x, const VexaFloat& p,
              NagError* fail, const char* routine) {
  StudentT law{df};
  double nu = ToDouble(df);
  Inversion inv;
  double logGuess;
  if (far) {
    inv.upper = true;
    inv.tail = [&](arb_t y, const arb_t z, slong prec) {
      law.Significance(y, z, prec);
      arb_mul_2exp_si(y, y, -1);
    };
    inv.density = [&](arb_t y, const arb_t z, slong prec) { law.Density(y, z, prec); };
    double logQ = LogOf(t);
    double z = NormalUpperDeviate(logQ);
    double cornishFisher = z + (z * z * z + z) / (4 * nu) +
                           (5 * std::pow(z, 5) + 16 * z * z * z + 3 * z) / (96 * nu * nu);
    bool heavy = nu < 0.1 || (nu < 5 && t <= 0.1);
    logGuess = heavy ? TLogFarGuess(nu, logQ) : std::log(std::max(cornishFisher, 1e-3));
  } else {
    inv.tail = [&](arb_t y, const arb_t z, slong prec) { law.Confidence(y, z, prec); };
    inv.density = [&](arb_t y, const arb_t z, slong prec) {
      law.Density(y, z, prec);
      arb_mul_2exp_si(y, y, 1);
    };
    logGuess = LogOf(t) - std::log(2.0) - LogTConstant(nu);  // C(x) ~ 2 f(0) x
    // with a tiny df even a central probability lies far out, where S(x) = 1 - t
    if (nu < 0.1) logGuess = std::max(TLogFarGuess(nu, std::log1p(-ToDouble(t)) - M_LN2), logGuess);
  }
  // y (log f)'(y) = -(df + 1) x^2 / (df + x^2)
  inv.logSlope = [nu](double u) { return -(nu + 1) / (1 + nu * std::exp(-2 * u)); };
  return Invert(inv, t, logGuess, x, p, fail, routine);
}

// ---- F: z = df1 f / (df1 f + df2), 1 - z = df2 / (df1 f + df2) ----

struct FRatio {
  const VexaFloat& df1;
  const VexaFloat& df2;
  void Setup(arb_t a, arb_t b, arb_t z, arb_t zc, const arb_t f, slong prec) const {
    Ball s;
    ToBall(a, df1, prec);
    ToBall(b, df2, prec);
    arb_mul(z, a, f, prec);
    arb_add(s.v, z, b, prec);
    arb_div(z, z, s.v, prec);
    arb_div(zc, b, s.v, prec);
    arb_mul_2exp_si(a, a, -1);
    arb_mul_2exp_si(b, b, -1);
  }
  void Tail(arb_t res, const arb_t f, bool upper, slong prec) const {
    Ball a, b, z, zc;
    Setup(a.v, b.v, z.v, zc.v, f, prec);
    if (upper)
      BetaUpper(res, a.v, b.v, z.v, zc.v, prec);
    else
      BetaLower(res, a.v, b.v, z.v, zc.v, prec);
  }
  // density: beta density at z times dz/df = df1 df2 / (df1 f + df2)^2
  void Density(arb_t res, const arb_t f, slong prec) const {
    Ball a, b, z, zc, t, u;
    Setup(a.v, b.v, z.v, zc.v, f, prec);
    LogBetaDensity(res, a.v, b.v, z.v, zc.v, prec);
    // log(dz/df) = log(df1 df2) - 2 log(df1 f + df2) = 2 log(zc) + log(df1 / df2)
    arb_log(t.v, zc.v, prec);
    arb_mul_2exp_si(t.v, t.v, 1);
    arb_add(res, res, t.v, prec);
    arb_div(u.v, a.v, b.v, prec);
    arb_log(u.v, u.v, prec);
    arb_add(res, res, u.v, prec);
    arb_exp(res, res, prec);
  }
};

// The Beta(a, b) quantile at lower probability p; the answer near 1 is found as 1 - y.
bool BetaDeviate(const VexaFloat& p, const VexaFloat& a, const VexaFloat& b, VexaFloat* x,
                 NagError* fail, const char* routine) {
  // the median of a symmetric law is its centre (for tiny shapes the distribution function
  // is flat there to within the shape, beyond the reach of any iteration)
  if (p == 0.5 && a == b) {
    *x = 0.5;
    return true;
  }
  bool upper = p > 0.5;
  VexaFloat t = upper ? OneMinus(p) : p;
  double ad = ToDouble(a), bd = ToDouble(b);
  double logX, log1mX;
  BetaLogGuess(ad, bd, LogOf(t), upper, &logX, &log1mX);
  Inversion inv;
  inv.ymax = 1;
  inv.reflect = logX > std::log(0.5);
  // y = x, or y = 1 - x ~ Beta(b, a) whose tails are those of x swapped
  const VexaFloat& ya = inv.reflect ? b : a;
  const VexaFloat& yb = inv.reflect ? a : b;
  inv.upper = upper != inv.reflect;
  inv.tail = [&](arb_t res, const arb_t y, slong prec) {
    Ball sa, sb, yc;
    ToBall(sa.v, ya, prec);
    ToBall(sb.v, yb, prec);
    OneMinusBall(yc.v, y, prec);
    if (inv.upper)
      BetaUpper(res, sa.v, sb.v, y, yc.v, prec);
    else
      BetaLower(res, sa.v, sb.v, y, yc.v, prec);
  };
  inv.density = [&](arb_t res, const arb_t y, slong prec) {
    Ball sa, sb, yc;
    ToBall(sa.v, ya, prec);
    ToBall(sb.v, yb, prec);
    OneMinusBall(yc.v, y, prec);
    LogBetaDensity(res, sa.v, sb.v, y, yc.v, prec);
    arb_exp(res, res, prec);
  };
  double yad = inv.reflect ? bd : ad, ybd = inv.reflect ? ad : bd;
  inv.logSlope = [yad, ybd](double u) { return yad - 1 - (ybd - 1) / std::expm1(-u); };
  return Invert(inv, t, inv.reflect ? log1mX : logX, x, p, fail, routine);
}

// For whole a and b at a short decimal x = u / D (D a power of ten, v = D - u), WholeBeta's
// sums in integers: the lower tail is N_hi / D^m with N_hi = u^a sum_{j>=a} C(m, j) u^(j-a)
// v^(m-j), the upper tail N_lo / D^m with N_lo = sum_{j<a} C(m, j) u^j v^(m-j), both by
// Horner's rule in u, and the density a C(m, a) u^(a-1) v^(b-1) / D^(m-1). Exact, so one
// rounding decides each result. False when the integers would be long.
struct ExactWholeBeta {
  Fmpz lower, upper, density;
  int64_t exponent = 0;  // D = 10^-exponent
  ulong m = 0;
};

bool ExactWhole(ExactWholeBeta* r, ulong a, ulong b, const VexaFloat& x) {
  mpz_t mantissa;
  mpz_init(mantissa);
  FloatToMpz(x, mantissa, &r->exponent);
  Fmpz u, v, c, vPower, t;
  fmpz_set_mpz(u.v, mantissa);
  mpz_clear(mantissa);
  r->m = a + b - 1;
  const ulong m = r->m;
  if (r->exponent >= 0 || static_cast<double>(-r->exponent) * static_cast<double>(m) > 2000)
    return false;
  fmpz_ui_pow_ui(v.v, 10, static_cast<ulong>(-r->exponent));
  fmpz_sub(v.v, v.v, u.v);
  fmpz_one(c.v);       // C(m, j)
  fmpz_one(vPower.v);  // v^(m-j)
  fmpz_zero(r->lower.v);
  fmpz_zero(r->upper.v);
  for (ulong j = m;; --j) {
    fmpz* sum = j >= a ? r->lower.v : r->upper.v;
    fmpz_mul(sum, sum, u.v);
    fmpz_mul(t.v, c.v, vPower.v);
    fmpz_add(sum, sum, t.v);
    if (j == a) fmpz_mul_ui(r->density.v, c.v, a);
    if (j == 0) break;
    fmpz_mul_ui(c.v, c.v, j);
    fmpz_divexact_ui(c.v, c.v, m - j + 1);
    fmpz_mul(vPower.v, vPower.v, v.v);
  }
  fmpz_pow_ui(t.v, u.v, a);
  fmpz_mul(r->lower.v, r->lower.v, t.v);
  fmpz_pow_ui(t.v, u.v, a - 1);
  fmpz_mul(r->density.v, r->density.v, t.v);
  fmpz_pow_ui(t.v, v.v, b - 1);
  fmpz_mul(r->density.v, r->density.v, t.v);
  return true;
}

// The three results of the beta probability routine for whole shapes, from one evaluation
// of WholeBeta per precision that the three roundings share; false for other shapes.
template <class Balls>
bool WholeShapes(const VexaFloat& x, VexaFloat* p, VexaFloat* q, VexaFloat* pdf,
                 const Balls& balls) {
  ulong wa, wb;
  {
    Ball sa, sb, z, zc;
    balls(sa.v, sb.v, z.v, zc.v, 64);
    wa = WholeShape(sa.v);
    wb = wa != 0 ? WholeShape(sb.v) : 0;
  }
  if (wb == 0) return false;
  ExactWholeBeta exact;
  if (ExactWhole(&exact, wa, wb, x)) {
    auto result = [&exact](const fmpz_t n, ulong power) {
      return [&exact, n, power](arb_t y, slong prec) {
        arb_set_fmpz(y, n);
        ScaleByPow10(y, exact.exponent * static_cast<int64_t>(power), prec);
      };
    };
    *p = Ziv(result(exact.lower.v, exact.m), kExtraBits);
    *q = Ziv(result(exact.upper.v, exact.m), kExtraBits);
    *pdf = Ziv(result(exact.density.v, exact.m - 1), kExtraBits);
    return true;
  }
  Ball lower, upper, density;
  slong cachedPrec = 0;
  auto result = [&](const arb_t which) {
    return [&, which](arb_t y, slong prec) {
      if (cachedPrec < prec) {
        Ball sa, sb, z, zc;
        balls(sa.v, sb.v, z.v, zc.v, prec);
        WholeBeta(lower.v, upper.v, density.v, wa, wb, z.v, zc.v, prec);
        cachedPrec = prec;
      }
      arb_set_round(y, which, prec);
    };
  };
  *p = Ziv(result(lower.v), kExtraBits);
  *q = Ziv(result(upper.v), kExtraBits);
  *pdf = Ziv(result(density.v), kExtraBits);
  return true;
}

bool CheckDf(NagError* fail, const char* routine, const char* name, const VexaFloat& df) {
  return CheckPositive(fail, routine, name, df, 2 * kMaxShape);
}

}  // namespace

void RegularizedBetaLower(arb_t res, const arb_t a, const arb_t b, const arb_t z, const arb_t zc,
                          slong prec) {
  ProbabilityLower(res, a, b, z, zc, prec);
}

}  // namespace vexa

using namespace vexa;

VexaFloat VexaMP_g01ebc(Nag_TailProbability tail, VexaFloat t, VexaFloat df, NagError* fail) {
  const char* routine = "VexaMP_g01ebc";
  Succeed(fail);
  if (!CheckTail(fail, routine, tail) || !CheckFinite(fail, routine, "t", t) ||
      !CheckDf(fail, routine, "df", df))
    return 0;
  if (t == 0) return tail == Nag_TwoTailSignif ? 1 : tail == Nag_TwoTailConfid ? 0 : 0.5;
  StudentT law{df};
  bool negative = t < 0;
  return Ziv(
      [&](arb_t y, slong prec) {
        Ball xb;
        ToBall(xb.v, t, prec);  // |t| taken in the ball: t exactly as given
        arb_abs(xb.v, xb.v);
        bool upperSide = tail == Nag_UpperTail;
        switch (tail) {
          case Nag_TwoTailSignif:
            law.Significance(y, xb.v, prec);
            break;
          case Nag_TwoTailConfid:
            law.Confidence(y, xb.v, prec);
            break;
          default:
            // the tail away from t is S/2, the tail containing the centre (1 + C)/2
            if (upperSide != negative) {
              law.Significance(y, xb.v, prec);
            } else {
              law.Confidence(y, xb.v, prec);
              arb_add_ui(y, y, 1, prec);
            }
            arb_mul_2exp_si(y, y, -1);
        }
      },
      kExtraBits);
}

VexaFloat VexaMP_g01edc(Nag_TailProbability tail, VexaFloat f, VexaFloat df1, VexaFloat df2,
                        NagError* fail) {
  const char* routine = "VexaMP_g01edc";
  Succeed(fail);
  if (!CheckTail(fail, routine, tail) || !CheckNonNegative(fail, routine, "f", f) ||
      !CheckDf(fail, routine, "df1", df1) || !CheckDf(fail, routine, "df2", df2))
    return 0;
  if (f == 0) return tail == Nag_UpperTail || tail == Nag_TwoTailConfid ? 1 : 0;
  FRatio law{df1, df2};
  auto side = [&](bool upper) {
    return [&law, &f, upper](arb_t y, slong prec) {
      Ball fb, a, b, z, zc;
      ToBall(fb.v, f, prec);
      law.Setup(a.v, b.v, z.v, zc.v, fb.v, prec);
      if (upper)
        ProbabilityUpper(y, a.v, b.v, z.v, zc.v, prec);
      else
        ProbabilityLower(y, a.v, b.v, z.v, zc.v, prec);
    };
  };
  return OneSidedTail(tail, side(false), side(true));
}

void VexaMP_g01eec(VexaFloat x, VexaFloat a, VexaFloat b, VexaFloat /*tol*/, VexaFloat* p,
                   VexaFloat* q, VexaFloat* pdf, NagError* fail) {
  const char* routine = "VexaMP_g01eec";
  Succeed(fail);
  *p = *q = *pdf = 0;
  if (!CheckNonNegative(fail, routine, "x", x)) return;
  if (x > 1) {
    Fail(fail, NE_REAL_ARG_GT, routine, Shows("x", x), "0 <= x <= 1");
    return;
  }
  if (!CheckPositive(fail, routine, "a", a, kMaxShape) ||
      !CheckPositive(fail, routine, "b", b, kMaxShape))
    return;
  // at an end of the support the density is 0, 1 / B(a, b) or infinite as the shape is
  // above, at or below 1
  if (x == 0 || x == 1) {
    const VexaFloat& shape = x == 0 ? a : b;
    const VexaFloat& other = x == 0 ? b : a;
    *p = x == 0 ? 0 : 1;
    *q = x == 0 ? 1 : 0;
    *pdf = shape < 1 ? VexaFloatInfinity(1) : shape == 1 ? other + VexaFloat() : VexaFloat(0);
    return;
  }
  // 1 - x exactly near 1; below 1/2 the ball's own subtraction loses nothing (and a tiny x
  // would otherwise carry all of its digits into the complement)
  const bool small = x < 0.5;
  VexaFloat xc = small ? VexaFloat() : OneMinus(x);
  auto balls = [&](arb_t sa, arb_t sb, arb_t z, arb_t zc, slong prec) {
    ToBall(sa, a, prec);
    ToBall(sb, b, prec);
    ToBall(z, x, prec);
    if (small)
      OneMinusBall(zc, z, prec);
    else
      ToBall(zc, xc, prec);
  };
  if (WholeShapes(x, p, q, pdf, balls)) return;
  *p = Ziv(
      [&](arb_t y, slong prec) {
        Ball sa, sb, z, zc;
        balls(sa.v, sb.v, z.v, zc.v, prec);
        ProbabilityLower(y, sa.v, sb.v, z.v, zc.v, prec);
      },
      kExtraBits);
  *q = Ziv(
      [&](arb_t y, slong prec) {
        Ball sa, sb, z, zc;
        balls(sa.v, sb.v, z.v, zc.v, prec);
        ProbabilityUpper(y, sa.v, sb.v, z.v, zc.v, prec);
      },
      kExtraBits);
  *pdf = Ziv(
      [&](arb_t y, slong prec) {
        Ball sa, sb, z, zc;
        balls(sa.v, sb.v, z.v, zc.v, prec);
        LogBetaDensity(y, sa.v, sb.v, z.v, zc.v, prec);
        arb_exp(y, y, prec);
      },
      kExtraBits);
}

VexaFloat VexaMP_g01fbc(Nag_TailProbability tail, VexaFloat p, VexaFloat df, NagError* fail) {
  const char* routine = "VexaMP_g01fbc";
  Succeed(fail);
  if (!CheckTail(fail, routine, tail) || !CheckProbability(fail, routine, p) ||
      !CheckDf(fail, routine, "df", df))
    return 0;
  // |x| from q = P(T >= |x|) <= 1/2 or from c = P(|T| <= |x|) = 1 - 2q, and the sign of x
  VexaFloat q, c;
  bool near = false;
  int sign = 1;
  switch (tail) {
    case Nag_LowerTail:
    case Nag_UpperTail:
      if (p == 0.5) return 0;
      q = p < 0.5 ? p : OneMinus(p);
      sign = (p < 0.5) == (tail == Nag_UpperTail) ? 1 : -1;
      near = q > 0.25;
      if (near) c = OneMinus(Twice(q));
      break;
    case Nag_TwoTailSignif:
      q = Half(p);
      near = p > 0.5;
      if (near) c = OneMinus(p);
      break;
    default:
      near = p < 0.5;
      if (near)
        c = p;
      else
        q = Half(OneMinus(p));
  }
  VexaFloat x;
  if (!TDeviate(df, near ? c : q, !near, &x, p, fail, routine)) return 0;
  return sign < 0 ? -x : x;
}

VexaFloat VexaMP_g01fdc(VexaFloat p, VexaFloat df1, VexaFloat df2, NagError* fail) {
  const char* routine = "VexaMP_g01fdc";
  Succeed(fail);
  if (!CheckProbability(fail, routine, p) || !CheckDf(fail, routine, "df1", df1) ||
      !CheckDf(fail, routine, "df2", df2))
    return 0;
  bool upper = p > 0.5;
  VexaFloat t = upper ? OneMinus(p) : p;
  FRatio law{df1, df2};
  Inversion inv;
  inv.upper = upper;
  inv.tail = [&](arb_t y, const arb_t f, slong prec) { law.Tail(y, f, upper, prec); };
  inv.density = [&](arb_t y, const arb_t f, slong prec) { law.Density(y, f, prec); };
  // from a beta starting value: f = (df2 / df1) x / (1 - x)
  double d1 = ToDouble(df1), d2 = ToDouble(df2);
  double logX, log1mX;
  BetaLogGuess(d1 / 2, d2 / 2, LogOf(t), upper, &logX, &log1mX);
  // f (log density)'(f) = df1/2 - 1 - (df1 + df2)/2 df1 f / (df1 f + df2)
  inv.logSlope = [d1, d2](double u) {
    return d1 / 2 - 1 - (d1 + d2) / 2 / (1 + d2 / d1 * std::exp(-u));
  };
  VexaFloat x;
  if (!Invert(inv, t, std::log(d2 / d1) + logX - log1mX, &x, p, fail, routine)) return 0;
  return x;
}

VexaFloat VexaMP_g01fec(VexaFloat p, VexaFloat a, VexaFloat b, VexaFloat /*tol*/, NagError* fail) {
  const char* routine = "VexaMP_g01fec";
  Succeed(fail);
  if (!CheckProbability(fail, routine, p) || !CheckPositive(fail, routine, "a", a, kMaxShape) ||
      !CheckPositive(fail, routine, "b", b, kMaxShape))
    return 0;
  VexaFloat x;
  return BetaDeviate(p, a, b, &x, fail, routine) ? x : 0;
}
