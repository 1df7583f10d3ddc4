// Argument checks, exact complements, starting values and the inversion of ball tail
// functions. The inversion runs Halley's method on g(u) = log T(e^u) - log t (which keeps
// its relative accuracy far out in a tail), first in double (or at 64 bits) safeguarded by
// a bracket, then at a precision that triples with the correct bits. One evaluation of T at
// full precision then encloses the root by Newton's interval operator, and the enclosure
// decides the rounding. A root at a rounding boundary falls to the boundary test: the tail
// at the midpoints between the rounded candidate and its neighbours must bracket t.
#include "numlib/quantile.h"

#include <mpfr.h>

#include <cmath>
#include <limits>
#include <string>

#include "float/float_node.h"

namespace vexa {

bool CheckTail(NagError* fail, const char* routine, Nag_TailProbability tail) {
  if (tail == Nag_LowerTail || tail == Nag_UpperTail || tail == Nag_TwoTailSignif ||
      tail == Nag_TwoTailConfid)
    return true;
  return Fail(fail, NE_BAD_PARAM, routine, Shows("tail", static_cast<long>(tail)),
              "tail is Nag_LowerTail, Nag_UpperTail, Nag_TwoTailSignif or Nag_TwoTailConfid");
}

bool CheckFinite(NagError* fail, const char* routine, const char* name, const VexaFloat& v) {
  if (!IsVexaFloatUndefined(v) && !IsVexaFloatInfinity(v) && !IsVexaFloatNegativeInfinity(v))
    return true;
  return Fail(fail, NE_REAL_ARG, routine, Shows(name, v), std::string(name) + " is finite");
}

bool CheckPositive(NagError* fail, const char* routine, const char* name, const VexaFloat& v,
                   long most) {
  if (!CheckFinite(fail, routine, name, v)) return false;
  std::string constraint = "0 < " + std::string(name);
  if (most > 0) constraint += " <= " + std::to_string(most);
  if (v <= 0) return Fail(fail, NE_REAL_ARG_LE, routine, Shows(name, v), constraint);
  if (most > 0 && v > most) return Fail(fail, NE_REAL_ARG_GT, routine, Shows(name, v), constraint);
  return true;
}

bool CheckProbability(NagError* fail, const char* routine, const VexaFloat& p) {
  if (!CheckFinite(fail, routine, "p", p)) return false;
  if (p <= 0) return Fail(fail, NE_REAL_ARG_LE, routine, Shows("p", p), "0 < p < 1");
  if (p >= 1) return Fail(fail, NE_REAL_ARG_GE, routine, Shows("p", p), "0 < p < 1");
  return true;
}

bool CheckNonNegative(NagError* fail, const char* routine, const char* name, const VexaFloat& v) {
  if (!CheckFinite(fail, routine, name, v)) return false;
  if (v < 0)
    return Fail(fail, NE_REAL_ARG_LT, routine, Shows(name, v), std::string(name) + " >= 0");
  return true;
}

VexaFloat OneMinus(const VexaFloat& p) {
  mpz_t m, one;
  int64_t e;
  mpz_init(m);
  mpz_init_set_ui(one, 1);
  FloatToMpz(p, m, &e);
  if (e < 0)
    mpz_ui_pow_ui(one, 10, static_cast<unsigned long>(-e));
  else if (e > 0) {
    mpz_t scale;
    mpz_init(scale);
    mpz_ui_pow_ui(scale, 10, static_cast<unsigned long>(e));
    mpz_mul(m, m, scale);
    mpz_clear(scale);
  }
  mpz_sub(one, one, m);
  VexaFloat r = FloatFromMpz(one, e < 0 ? e : 0, 0);
  mpz_clear(m);
  mpz_clear(one);
  return r;
}

// p * k * 10^shift, exactly.
VexaFloat Scaled(const VexaFloat& p, unsigned long k, int64_t shift) {
  mpz_t m;
  int64_t e;
  mpz_init(m);
  FloatToMpz(p, m, &e);
  mpz_mul_ui(m, m, k);
  VexaFloat r = FloatFromMpz(m, e + shift, 0);
  mpz_clear(m);
  return r;
}

VexaFloat Half(const VexaFloat& p) {
  return Scaled(p, 5, -1);
}

VexaFloat Twice(const VexaFloat& p) {
  return Scaled(p, 2, 0);
}

double LogOf(const VexaFloat& p) {
  mpz_t m;
  int64_t e;
  mpz_init(m);
  FloatToMpz(p, m, &e);
  long k;
  double d = mpz_get_d_2exp(&k, m);
  mpz_clear(m);
  return std::log(d) + k * std::log(2.0) + e * std::log(10.0);
}

double ToDouble(const VexaFloat& v) {
  return std::strtod(VexaFloatToString(v).c_str(), nullptr);
}

namespace {

// Acklam's rational approximation of the lower normal quantile (relative error ~1e-9).
double AcklamLower(double p) {
  static const double a[] = {-3.969683028665376e+01, 2.209460984245205e+02,  -2.759285104469687e+02,
                             1.383577518672690e+02,  -3.066479806614716e+01, 2.506628277459239e+00};
  static const double b[] = {-5.447609879822406e+01, 1.615858368580409e+02, -1.556989798598866e+02,
                             6.680131188771972e+01, -1.328068155288572e+01};
  static const double c[] = {-7.784894002430293e-03, -3.223964580411365e-01, -2.400758277161838e+00,
                             -2.549732539343734e+00, 4.374664141464968e+00,  2.938163982698783e+00};
  static const double d[] = {7.784695709041462e-03, 3.224671290700398e-01, 2.445134137142996e+00,
                             3.754408661907416e+00};
  const double low = 0.02425;
  if (p < low || p > 1 - low) {
    double q = std::sqrt(-2 * std::log(p < low ? p : 1 - p));
    double z = (((((c[0] * q + c[1]) * q + c[2]) * q + c[3]) * q + c[4]) * q + c[5]) /
               ((((d[0] * q + d[1]) * q + d[2]) * q + d[3]) * q + 1);
    return p < low ? z : -z;
  }
  double q = p - 0.5, r = q * q;
  return (((((a[0] * r + a[1]) * r + a[2]) * r + a[3]) * r + a[4]) * r + a[5]) * q /
         (((((b[0] * r + b[1]) * r + b[2]) * r + b[3]) * r + b[4]) * r + 1);
}

}  // namespace

double NormalUpperDeviate(double logQ) {
  if (logQ > -700) return -AcklamLower(std::exp(logQ));
  // beyond double range: Q(z) ~ phi(z) / z, solved for z by fixed-point steps
  double z = std::sqrt(-2 * logQ);
  for (int i = 0; i < 4; ++i) z = std::sqrt(2 * (-logQ - std::log(z) - 0.9189385332046728));
  return z;
}

double LogGamma(double a) {
  return std::lgamma(a);
}

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

// The decimal nearest to the ball's midpoint, at `digits` digits.
VexaFloat NearestDecimal(const arb_t x, int digits) {
  mpfr_t m;
  mpfr_init2(m, std::max<slong>(arf_bits(arb_midref(x)), 2));
  arf_get_mpfr(m, arb_midref(x), MPFR_RNDN);
  mpfr_exp_t e;
  char* s = mpfr_get_str(nullptr, &e, 10, digits, m, MPFR_RNDN);
  std::string text(s);
  mpfr_free_str(s);
  mpfr_clear(m);
  bool negative = text[0] == '-';
  if (negative) text.erase(0, 1);
  return VexaFloatFromString((negative ? "-0." : "0.") + text + "e" + std::to_string(e));
}

// 10^k as an exact float.
VexaFloat PowerOfTen(int64_t k, int mantissa = 1) {
  return VexaFloatFromString(std::to_string(mantissa) + "e" + std::to_string(k));
}

class Solver {
 public:
  Solver(const Inversion& inv, const VexaFloat& t)
      : inv_(inv),
        t_(t),
        widthBits_(std::max<slong>(0, static_cast<slong>(-std::floor(inv.logWidth)))) {}

  bool Run(double logGuess, VexaFloat* x);

 private:
  // T at y with at least `need` bits of relative accuracy (raising the precision).
  bool TailAt(arb_t T, const arb_t y, slong prec, slong need) const {
    for (slong p = prec; p <= 16 * prec;) {
      inv_.tail(T, y, p);
      slong got = arb_rel_accuracy_bits(T);
      if (got >= need) return true;
      p = got > 0 ? p + (need - got) + 32 : 2 * p;
    }
    return false;
  }
  // g(u) = log T(e^u) - log t, dg/du and the Halley (or, lacking a slope, Newton) step
  // at the exact point y = mid(e^u), with T accurate to `need` bits; *T is kept.
  // *order is 3 after a Halley step, 2 after Newton's; *limit bounds the bits the step can give.
  bool Step(const arb_t u, arb_t y, arb_t T, slong prec, slong need, arb_t du, int* order,
            slong* limit) const;
  // Newton's interval operator at y0 for T(y) = t: true, with the root enclosed in *x, when
  // it maps a small interval around y0 into itself.
  bool Enclose(const arb_t y0, const arb_t T, slong prec, arb_t x) const;
  // Halley's method divides the Newton step h = g/s (s = dg/du) by 1 - c, where
  // c = g g'' / (2 s^2) = h (1 + yL - s) / 2, as d2g/du2 = s (1 + yL - s) with
  // yL = y (log f)'(y). 0 when the law gives no slope or c is not small.
  double HalleyCorrection(double h, double s, double u) const {
    if (!inv_.logSlope || h == 0) return 0;
    double c = 0.5 * h * (1 + inv_.logSlope(u) - s);
    return std::isfinite(c) && std::fabs(c) < 0.5 ? c : 0;
  }
  // The step of Step at 64 bits from u = v, in double when the law has double functions.
  bool StartStep(double v, double* d, int* order, slong* limit) const;
  // The x of a ball y, and the ball y of an exact x.
  void ToX(arb_t x, const arb_t y, slong prec) const;
  void ToY(arb_t y, const VexaFloat& x, slong prec) const;
  // -1 when the root lies above x, +1 below, 0 undecided at this precision.
  int Side(const VexaFloat& x, slong prec) const;
  // The rounding boundary test from the candidate c, for roots that lie very near a
  // rounding boundary.
  bool Boundary(VexaFloat c, slong prec, VexaFloat* x) const;

  const Inversion& inv_;
  VexaFloat t_;
  // Bits of |u| above the point: u = log y is held to absolute accuracy, so every precision
  // carries them too (for y = 10^(10^15), 52 of them).
  slong magnitude_ = 0;
  // Bits below the unit of u of the width on which T varies (Inversion::logWidth).
  slong widthBits_ = 0;
};

bool Solver::Step(const arb_t u, arb_t y, arb_t T, slong prec, slong need, arb_t du, int* order,
                  slong* limit) const {
  Ball g, f, logt, slope;
  arb_exp(y, u, prec);
  arb_get_mid_arb(y, y);
  if (!TailAt(T, y, prec, need) || !arb_is_positive(T)) return false;
  ToBall(logt.v, t_, prec);
  arb_log(logt.v, logt.v, prec);
  arb_log(g.v, T, prec);
  arb_sub(g.v, g.v, logt.v, prec);
  inv_.density(f.v, y, prec);
  arb_mul(slope.v, f.v, y, prec);
  arb_div(slope.v, slope.v, T, prec);
  if (inv_.upper) arb_neg(slope.v, slope.v);
  if (!arb_is_finite(g.v) || !arb_is_finite(slope.v) || arb_contains_zero(slope.v)) return false;
  arb_div(du, g.v, slope.v, prec);
  arb_get_mid_arb(du, du);
  *order = 2;
  *limit = prec - magnitude_;
  double h = arf_get_d(arb_midref(du), ARF_RND_NEAR);
  double c = HalleyCorrection(h, arf_get_d(arb_midref(slope.v), ARF_RND_NEAR),
                              arf_get_d(arb_midref(u), ARF_RND_NEAR));
  if (c != 0) {  // 1 - c at full precision; c carries about 40 good bits
    Ball d;
    arb_set_d(d.v, c);
    OneMinusBall(d.v, d.v, prec);
    arb_div(du, du, d.v, prec);
    arb_get_mid_arb(du, du);
    *order = 3;
    *limit = static_cast<slong>(-std::log2(std::fabs(h)) - std::log2(std::fabs(c))) + 40;
  }
  return true;
}

bool Solver::StartStep(double v, double* d, int* order, slong* limit) const {
  if (inv_.logTailD) {
    double logT = inv_.logTailD(v), logF = inv_.logDensityD(v);
    double s = std::exp(logF - logT) * (inv_.upper ? -1 : 1);
    double h = (logT - LogOf(t_)) / s;
    if (std::isfinite(h) && s != 0) {
      double c = HalleyCorrection(h, s, v);
      *order = c != 0 ? 3 : 2;
      *limit = 40;  // the double functions' own accuracy
      *d = h / (1 - c);
      return true;
    }
  }
  Ball u, y, T, du;
  arb_set_d(u.v, v);
  if (!Step(u.v, y.v, T.v, 64 + widthBits_, 44, du.v, order, limit)) return false;
  *d = arf_get_d(arb_midref(du.v), ARF_RND_NEAR);
  return true;
}

bool Solver::Enclose(const arb_t y0, const arb_t T, slong prec, arb_t x) const {
  // G(y) = T(y) - t with G' = -f (upper tail) or f; the root is y0 - G(y0) / G'(Y) for Y
  // any interval holding both, so N(Y) = y0 - G(y0) / G'(Y) inside Y encloses it.
  Ball G, f, h, Y, N;
  mag_t r;
  ToBall(G.v, t_, prec);
  arb_sub(G.v, T, G.v, prec);
  inv_.density(f.v, y0, prec);
  if (inv_.upper) arb_neg(f.v, f.v);
  arb_div(h.v, G.v, f.v, prec);
  if (!arb_is_finite(h.v)) return false;
  mag_init(r);
  arb_get_mag(r, h.v);
  mag_mul_2exp_si(r, r, 1);
  arf_set(arb_midref(Y.v), arb_midref(y0));
  mag_add(arb_radref(Y.v), r, arb_radref(y0));
  mag_clear(r);
  if (!arb_is_positive(Y.v)) return false;
  if (inv_.ymax > 0) {
    Ball bound;
    arb_set_d(bound.v, inv_.ymax);
    if (!arb_lt(Y.v, bound.v)) return false;
  }
  inv_.density(f.v, Y.v, prec);
  if (inv_.upper) arb_neg(f.v, f.v);
  if (arb_contains_zero(f.v)) return false;
  arb_div(N.v, G.v, f.v, prec);
  arb_sub(N.v, y0, N.v, prec);
  if (!arb_contains(Y.v, N.v)) return false;
  ToX(x, N.v, prec);
  return true;
}

void Solver::ToX(arb_t x, const arb_t y, slong prec) const {
  if (inv_.reflect) {
    OneMinusBall(x, y, prec);
  } else {
    Ball s;
    ToBall(s.v, inv_.scale, prec);
    arb_mul(x, y, s.v, prec);
  }
}

void Solver::ToY(arb_t y, const VexaFloat& x, slong prec) const {
  if (inv_.reflect) {
    ToBall(y, OneMinus(x), prec);
  } else {
    Ball s;
    ToBall(y, x, prec);
    ToBall(s.v, inv_.scale, prec);
    arb_div(y, y, s.v, prec);
  }
}

int Solver::Side(const VexaFloat& x, slong prec) const {
  Ball y, T, tb;
  ToY(y.v, x, prec);
  // G(x) = T(y(x)) - t increases with x when the tail and the reflection agree
  int direction = inv_.upper == inv_.reflect ? 1 : -1;
  int sign;
  Ball bound;
  arb_set_d(bound.v, inv_.ymax);
  if (arb_is_nonpositive(y.v)) {
    sign = inv_.upper ? 1 : -1;  // T(0) is 1 for an upper tail, 0 for a lower one
  } else if (inv_.ymax > 0 && arb_ge(y.v, bound.v)) {
    sign = inv_.upper ? -1 : 1;
  } else {
    if (!arb_is_positive(y.v)) return 0;
    inv_.tail(T.v, y.v, prec);
    ToBall(tb.v, t_, prec);
    if (arb_lt(T.v, tb.v))
      sign = -1;
    else if (arb_gt(T.v, tb.v))
      sign = 1;
    else
      return 0;
  }
  return sign * direction;
}

bool Solver::Boundary(VexaFloat c, slong prec, VexaFloat* x) const {
  const int digits = VexaDigits();
  for (int moves = 0; moves < 8; ++moves) {
    VexaFloat mlo, mhi;
    {
      VexaDigitsScope wide(digits + 4);
      int64_t top = Top(AsFloatNode(c.Handle()));
      mhi = c + PowerOfTen(top - digits - 1, 5);
      bool decadeStart = c == PowerOfTen(top - 1);
      mlo = c - PowerOfTen(top - digits - (decadeStart ? 2 : 1), 5);
    }
    int sideLo = 0, sideHi = 0;
    for (slong p = prec; p <= 256 * prec && (sideLo == 0 || sideHi == 0); p *= 2) {
      if (sideLo == 0) sideLo = Side(mlo, p);
      if (sideHi == 0) sideHi = Side(mhi, p);
    }
    // the neighbours, exact at a few more digits (2 mhi may have a digit more than c)
    if (sideHi < 0) {  // the root lies above the upper midpoint
      VexaDigitsScope wide(digits + 4);
      c = 2 * mhi - c;
      continue;
    }
    if (sideLo > 0) {
      VexaDigitsScope wide(digits + 4);
      c = 2 * mlo - c;
      continue;
    }
    // both sides bracket the root, or a midpoint is an exact tie that no precision decides
    *x = c;
    return true;
  }
  return false;
}

bool Solver::Run(double logGuess, VexaFloat* x) {
  const int digits = VexaDigits();
  const slong target = static_cast<slong>(digits * kLog2Of10) + 20;
  Ball y, T, u, du;
  int order;
  slong limit;

  // Steps in double or at 64 bits, kept inside a bracket of u = log y, until about 40 bits
  // are right.
  double lo = -kInf, hi = inv_.ymax > 0 ? std::log(inv_.ymax) : kInf;
  const double width = std::ldexp(1.0, static_cast<int>(-widthBits_));
  double v = std::isfinite(logGuess) ? logGuess : 0;
  if (v >= hi) v = hi - 0.7;
  slong bits = 0;
  for (int iter = 0; iter < 400 && bits == 0; ++iter) {
    double next, d;
    if (StartStep(v, &d, &order, &limit)) {
      if (d == 0) {  // already a root to the bits of this stage
        bits = 40;
        break;
      }
      // g and dg/du have the same sign above the root
      if (d > 0)
        hi = std::min(hi, v);
      else
        lo = std::max(lo, v);
      d = std::max(-16 * width, std::min(16 * width, d));
      next = v - d;
      double e = -std::log2(std::fabs(d) / std::max(width, std::fabs(v)));
      if (std::min<double>(order * e - 8, limit - widthBits_) >= 40) bits = 40;
      // a small step is trusted even past a bracket end set by a rounded iterate
      if (std::fabs(d) < 1e-4 * width) {
        v = next;
        continue;
      }
    } else {
      next = -kInf;  // the tail cannot be evaluated here: bisect toward the bracket
    }
    if (!(next > lo && next < hi)) {
      bits = 0;
      if (std::isfinite(lo) && std::isfinite(hi))
        next = 0.5 * (lo + hi);
      else if (std::isfinite(lo))
        next = lo + 2 * width;
      else if (std::isfinite(hi))
        next = hi - 2 * width;
      else
        return false;
      if (hi - lo < 1e-14 * std::max(width, std::fabs(lo))) bits = 40;
    }
    v = next;
  }
  if (bits == 0) return false;

  // Steps at rising precision, each about tripling the correct bits of u, until the
  // interval operator at full precision can enclose the root narrowly enough.
  arb_set_d(u.v, v);
  magnitude_ = std::max(0, std::ilogb(v) + 1);
  // the double stage's bits are relative to u, or to the width
  bits = std::max<slong>(0, bits - magnitude_) + widthBits_;
  const slong full = target + 32 + magnitude_;
  for (int iter = 0; 2 * bits < target + 24; ++iter) {
    if (iter > 40) return false;
    slong prec = std::min(3 * std::max<slong>(bits, 8) + 32 + magnitude_, full);
    if (!Step(u.v, y.v, T.v, prec, prec - 24, du.v, &order, &limit)) return false;
    arb_sub(u.v, u.v, du.v, prec);
    arb_get_mid_arb(u.v, u.v);
    if (arb_is_zero(du.v)) {
      bits = prec - magnitude_ - 28;
    } else {
      // the step's size in widths, whose count of bits the step multiplies by its order
      slong e = -arf_abs_bound_lt_2exp_si(arb_midref(du.v)) - widthBits_;
      bits = std::min({order * e - 8 + widthBits_, limit, prec - magnitude_ - 28});
    }
  }

  // The tail at full precision at the last iterate: enclose the root and round. An
  // enclosure too wide to round (the count of correct bits was optimistic) earns another
  // step; a root that lies at a rounding boundary goes to the boundary test, from the
  // enclosure or, lacking one, from an iterate refined by steps at full precision.
  Ball xb;
  bool enclosed = false;
  for (int tries = 0; tries < 3 && !enclosed; ++tries) {
    if (tries > 0) {
      if (!Step(u.v, y.v, T.v, full, full - 24, du.v, &order, &limit)) break;
      arb_sub(u.v, u.v, du.v, full);
      arb_get_mid_arb(u.v, u.v);
    }
    arb_exp(y.v, u.v, full);
    arb_get_mid_arb(y.v, y.v);
    if (!TailAt(T.v, y.v, full, full - 24)) break;
    if (!Enclose(y.v, T.v, full, xb.v)) continue;
    ALGEB out;
    if (RoundBall(xb.v, digits, full, &out)) {
      *x = VexaFloat(out);
      return true;
    }
    enclosed = arb_rel_accuracy_bits(xb.v) >= target;
  }
  if (!enclosed) ToX(xb.v, y.v, full);
  return Boundary(NearestDecimal(xb.v, digits), full, x);
}

}  // namespace

bool Invert(const Inversion& inv, const VexaFloat& t, double logGuess, VexaFloat* x,
            const VexaFloat& p, NagError* fail, const char* routine) {
  // A root whose logarithm lies beyond the float's exponent range (only tiny shapes put it
  // there, and their starting values are then the tails' leading terms, good to as many
  // digits in log y as the shape is small) is the float's limit: 0, or 1 when reflected,
  // or infinity.
  const double beyond = (1 + 1e-9) * static_cast<double>(kMaxExponent) * std::log(10.0);
  if (logGuess < -beyond) {
    *x = inv.reflect ? 1 : 0;
    return true;
  }
  if (logGuess > beyond && inv.ymax == 0) {
    *x = VexaFloatInfinity(1);
    return true;
  }
  Solver solver(inv, t);
  if (solver.Run(logGuess, x)) return true;
  Fail(fail, NE_CONV, routine, Shows("p", p), "the inversion converges (it did not here)");
  return false;
}

VexaFloat OneSidedTail(Nag_TailProbability tail, const BallFunction& lower,
                       const BallFunction& upper) {
  const slong extra = 12;
  switch (tail) {
    case Nag_LowerTail:
      return Ziv(lower, extra);
    case Nag_UpperTail:
      return Ziv(upper, extra);
    default:
      return Ziv(
          [&](arb_t y, slong prec) {
            Ball l, u;
            lower(l.v, prec);
            upper(u.v, prec);
            if (tail == Nag_TwoTailSignif) {
              arb_min(y, l.v, u.v, prec);
              arb_mul_2exp_si(y, y, 1);
            } else {
              arb_sub(y, l.v, u.v, prec);
              arb_abs(y, y);
            }
          },
          extra);
  }
}

}  // namespace vexa
