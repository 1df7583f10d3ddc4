// The regularized incomplete gamma functions for a large shape a at x = a lambda, by Temme's
// uniform asymptotic expansion
//   Q(a, x) = erfc(eta sqrt(a/2)) / 2 + R,   P(a, x) = erfc(-eta sqrt(a/2)) / 2 - R,
//   R = e^(-a eta^2/2) / (sqrt(2 pi a) Gamma*(a)) sum_k d_k(eta) a^-k,
// where eta^2/2 = lambda - 1 - log lambda (eta of the sign of lambda - 1) and Gamma*(a) =
// Gamma(a) / (sqrt(2 pi / a) (a/e)^a). Integrating Q = sqrt(a / 2 pi) / Gamma*(a) times the
// integral over z > eta of e^(-a z^2/2) h_0(z), h_0(z) = z / (mu(z) - 1) with
// mu - 1 - log mu = z^2/2, by parts gives d_k(eta) = (h_k(eta) - h_k(0)) / eta with
// h_(k+1)(z) = d/dz ((h_k(z) - h_k(0)) / z); the Taylor coefficients of h_0 follow from a
// recurrence, and the remainder after K terms is of the order of the first omitted one.
// Away from the mean the tails' own series converge geometrically; they are taken for
// |eta| > 1 and wherever they cost fewer operations.
#include <arb_hypgeom.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "numlib/quantile.h"

namespace vexa {
namespace {

struct Vec {
  arb_ptr v;
  slong n;
  explicit Vec(slong len) : v(_arb_vec_init(len)), n(len) {}
  ~Vec() { _arb_vec_clear(v, n); }
  Vec(const Vec&) = delete;
  Vec& operator=(const Vec&) = delete;
};

void AddError(arb_t s, const mag_t m) {
  arb_add_error_mag(s, m);
}

void AddErrorOf(arb_t s, const arb_t t) {
  mag_t m;
  mag_init(m);
  arb_get_mag(m, t);
  arb_add_error_mag(s, m);
  mag_clear(m);
}

// An upper bound of log2 |x| for a finite ball (a very negative number for zero).
slong Log2Above(const arb_t x) {
  mag_t m;
  mag_init(m);
  arb_get_mag(m, x);
  slong e = mag_is_zero(m) ? -(WORD(1) << 40) : mag_get_d_log2_approx(m) + 1;
  mag_clear(m);
  return e;
}

// log Gamma*(a) = sum_k B_2k / (2k (2k-1) a^(2k-1)) (Stirling): for real a > 0 the error
// after any term is below the first omitted one.
void LogGammaStar(arb_t res, const arb_t a, slong prec) {
  Ball inv, inv2, power, term, b;
  arb_inv(inv.v, a, prec);
  arb_mul(inv2.v, inv.v, inv.v, prec);
  arb_set(power.v, inv.v);
  arb_zero(res);
  for (ulong k = 1;; ++k) {
    arb_bernoulli_ui(b.v, 2 * k, prec);
    arb_mul(term.v, b.v, power.v, prec);
    arb_div_ui(term.v, term.v, 2 * k * (2 * k - 1), prec);
    if (arf_cmpabs_2exp_si(arb_midref(term.v), -prec - 8) < 0) {
      AddErrorOf(res, term.v);
      return;
    }
    arb_add(res, res, term.v, prec);
    arb_mul(power.v, power.v, inv2.v, prec);
  }
}

// f_0 .. f_(m-1), the Taylor coefficients of h_0(z) = z / w(z), w = mu - 1 = sum c_k z^k.
// Differentiating w - log(1 + w) = z^2/2 gives w w' = z (1 + w), so c_1 = 1 and
// c_n = c_(n-1) / (n+1) - (1/2) sum_{k=2}^{n-1} c_k c_(n+1-k), the sum taken in pairs.
void TemmeCoefficients(arb_ptr f, slong m, const slong* precs) {
  Vec c(m + 1);
  Ball s;
  arb_one(c.v + 1);
  for (slong n = 2; n <= m; ++n) {
    const slong prec = precs[n - 1];  // c_n enters f_(n-1) whole
    slong pairs = n / 2 - 1;
    if (pairs > 0)
      arb_dot(s.v, nullptr, 0, c.v + 2, 1, c.v + n - 1, -1, pairs, prec);
    else
      arb_zero(s.v);
    if (n % 2 == 1) {
      Ball middle;
      arb_sqr(middle.v, c.v + (n + 1) / 2, prec);
      arb_mul_2exp_si(middle.v, middle.v, -1);
      arb_add(s.v, s.v, middle.v, prec);
    }
    arb_div_ui(c.v + n, c.v + n - 1, n + 1, prec);
    arb_sub(c.v + n, c.v + n, s.v, prec);
  }
  // f = 1 / (w / z): f_0 = 1, f_n = -sum_{k=1}^{n} c_(k+1) f_(n-k)
  arb_one(f);
  for (slong j = 1; j < m; ++j) {
    arb_dot(f + j, nullptr, 1, c.v + 2, 1, f + j - 1, -1, j, precs[j]);
  }
}

// log2 |x| for the largest |x| in the ball (-infinity for zero).
double Log2Abs(const arb_t x) {
  mag_t m;
  mag_init(m);
  arb_get_mag(m, x);
  double e = mag_is_zero(m) ? -HUGE_VAL : mag_get_d_log2_approx(m);
  mag_clear(m);
  return e;
}

// Taylor terms of the levels at |eta| = 2^logEta (the coefficients fall like (2 sqrt(pi))^-n),
// and levels at a = 2^logA (they shrink like k! / (2 pi a)^k).
slong TemmeTerms(double logEta, slong prec) {
  return static_cast<slong>((prec + 24) / (1.82 - std::max(logEta, -prec - 16.0))) + 8;
}

slong TemmeLevels(double logA, slong prec) {
  slong levels = 2;
  for (double bits = 0; bits < prec + 24 && levels < 4 * prec; ++levels)
    bits += logA + 2.65 - std::log2(static_cast<double>(levels));
  return levels;
}

// sum_k a^-k d_k(eta), where d_k(eta) = sum_n f_(n+1+2k) (n+2)(n+4)...(n+2k) eta^n. Each
// level is summed over the Taylor terms above the precision, the first omitted Taylor term
// (doubled: the coefficients fall faster than 3^-n while |eta| <= 1) joining the radius;
// the levels stop at the first whose terms, in absolute value, are negligible, and twice
// that level's size joins the radius. Level k is needed only to the bits that its size
// leaves, and later levels are smaller.
void TemmeSum(arb_t res, const arb_t eta, const arb_t a, slong prec) {
  const double logEta = Log2Abs(eta), logA = Log2Abs(a) - 1;
  const slong n = TemmeTerms(logEta, prec);
  slong levels = TemmeLevels(logA, prec);
  const slong wp = prec + 32;
  for (;; levels *= 2) {
    // level k, of about 2^-bits, needs the Taylor terms above 2^-(prec - bits)
    // and the coefficients f_(2k+1) .. f_(2k+1+terms) only to the bits that level keeps
    std::vector<slong> terms(levels), bitsAt(levels);
    slong m = 0;
    double bits = 0;
    for (slong k = 0; k < levels; ++k) {
      bitsAt[k] = static_cast<slong>(bits);
      terms[k] = std::min(n, TemmeTerms(logEta, std::max<slong>(16, prec - bitsAt[k])));
      m = std::max(m, terms[k] + 2 * k + 2);
      bits += std::max(0.0, logA + 2.65 - std::log2(static_cast<double>(k + 1)));
    }
    std::vector<slong> precs(m, 64);
    for (slong k = 0; k < levels; ++k)
      for (slong j = 2 * k + 1; j <= 2 * k + 1 + terms[k] && j < m; ++j)
        precs[j] = std::max(precs[j], wp - bitsAt[k]);
    precs[0] = wp;
    for (slong j = m - 2; j >= 0; --j) precs[j] = std::max(precs[j], precs[j + 1]);
    Vec f(m), g(n + 1);
    TemmeCoefficients(f.v, m, precs.data());
    Ball ia, term;
    arb_inv(ia.v, a, wp);
    arb_one(g.v);
    for (slong j = 1; j <= n; ++j) arb_mul(g.v + j, g.v + j - 1, eta, wp);
    arb_zero(res);
    mag_t size, bound, part;
    mag_init(size);
    mag_init(bound);
    mag_init(part);
    bool done = false;
    slong levelPrec = wp;
    for (slong k = 0; k < levels && !done; ++k) {
      const slong nk = terms[k];
      if (k > 0)  // g_n = (n+2)...(n+2k) eta^n / a^k
        for (slong j = 0; j <= nk; ++j) {
          arb_mul_ui(g.v + j, g.v + j, j + 2 * k, levelPrec);
          arb_mul(g.v + j, g.v + j, ia.v, levelPrec);
        }
      // |level| bounded by sum |f| |g|
      mag_zero(size);
      for (slong j = 0; j < nk; ++j) {
        arb_get_mag(part, f.v + j + 1 + 2 * k);
        arb_get_mag(bound, g.v + j);
        mag_addmul(size, part, bound);
      }
      if (k > 0 && mag_cmp_2exp_si(size, -prec - 12) < 0) {
        mag_mul_2exp_si(size, size, 1);
        AddError(res, size);
        done = true;
        break;
      }
      if (!mag_is_zero(size))
        levelPrec = std::min(
            wp, std::max<slong>(64, prec + 32 + static_cast<slong>(mag_get_d_log2_approx(size))));
      arb_dot(term.v, nullptr, 0, f.v + 1 + 2 * k, 1, g.v, 1, nk, levelPrec);
      arb_get_mag(part, f.v + nk + 1 + 2 * k);
      arb_get_mag(bound, g.v + nk);
      mag_mul(part, part, bound);
      mag_mul_2exp_si(part, part, 1);
      arb_add_error_mag(term.v, part);
      arb_add(res, res, term.v, wp);
    }
    mag_clear(size);
    mag_clear(bound);
    mag_clear(part);
    if (done) return;
  }
}

// P(a, x) = e' sum_k prod_{j<=k} x / (a + j) for x < a, e' = x^a e^-x / Gamma(a + 1).
void LowerSeries(arb_t res, const arb_t prefix, const arb_t a, const arb_t x, slong prec) {
  Ball sum, term, den, r;
  arb_one(sum.v);
  arb_one(term.v);
  for (ulong j = 1;; ++j) {
    arb_add_ui(den.v, a, j, prec);
    arb_div(r.v, x, den.v, prec);
    arb_mul(term.v, term.v, r.v, prec);
    arb_add(sum.v, sum.v, term.v, prec);
    if (arf_cmpabs_2exp_si(arb_midref(term.v), -prec - 8) < 0) {
      // the ratios fall with j: the rest is below term r / (1 - r)
      arb_add_ui(den.v, a, j + 1, prec);
      arb_div(r.v, x, den.v, prec);
      OneMinusBall(den.v, r.v, prec);
      if (arb_is_positive(den.v)) {
        arb_div(r.v, r.v, den.v, prec);
        arb_mul(r.v, r.v, term.v, prec);
        AddErrorOf(sum.v, r.v);
        break;
      }
    }
  }
  arb_mul(res, sum.v, prefix, prec);
}

// Q(a, x) = (e' a / x) (sum_{k<n} u_k / x^k + R), u_k = (a-1)...(a-k), for x > a: for n < a - 1
// 0 <= R <= u_n x^-n / (1 - (a-1-n) / x), and past a - 1 the terms alternate and |R| <= |u_n /
// x^n|.
void UpperSeries(arb_t res, const arb_t prefix, const arb_t a, const arb_t x, slong prec) {
  Ball sum, term, r, rest;
  arb_one(sum.v);
  arb_one(term.v);
  for (ulong j = 1;; ++j) {
    arb_sub_ui(r.v, a, j, prec);
    arb_div(r.v, r.v, x, prec);
    arb_mul(term.v, term.v, r.v, prec);
    if (arf_cmpabs_2exp_si(arb_midref(term.v), -prec - 8) < 0) {
      // n = j terms summed: r = (a - 1 - n) / x
      arb_sub_ui(r.v, a, j + 1, prec);
      arb_div(r.v, r.v, x, prec);
      OneMinusBall(rest.v, r.v, prec);
      if (arb_is_positive(r.v) && arb_is_positive(rest.v))
        arb_div(rest.v, term.v, rest.v, prec);
      else
        arb_set(rest.v, term.v);
      AddErrorOf(sum.v, rest.v);
      break;
    }
    arb_add(sum.v, sum.v, term.v, prec);
  }
  arb_mul(res, sum.v, prefix, prec);
  arb_div(res, res, x, prec);
  arb_mul(res, res, a, prec);
}

// d = lambda - 1, eta = d sqrt(q) and a L = a d^2 q / 2 for q = 2 L / d^2, L = lambda - 1 -
// log lambda, carried with the bits that e^(-a L) needs. False when e^(-a L) lies beyond the
// float range, where the smaller tail is 0.
struct Deviance {
  Ball d, eta, aL;
  slong wp = 0;
};

bool ScaledDeviance(Deviance* s, const arb_t a, const arb_t lambda, slong prec) {
  Ball L, q, t;
  {
    const slong lp = 64;
    arb_sub_ui(s->d.v, lambda, 1, lp);
    if (arf_cmpabs_2exp_si(arb_midref(s->d.v), -6) < 0) {
      arb_sqr(L.v, s->d.v, lp);
      arb_mul_2exp_si(L.v, L.v, -1);
    } else {
      arb_log1p(t.v, s->d.v, lp + 16);
      arb_sub(L.v, s->d.v, t.v, lp);
    }
    arb_mul(s->aL.v, a, L.v, lp);
    const double beyond = (static_cast<double>(kMaxExponent) + 40) * std::log(10.0);
    mag_t low;
    mag_init(low);
    arb_get_mag_lower(low, s->aL.v);
    bool past = mag_cmp_2exp_si(low, static_cast<slong>(std::log2(beyond)) + 1) > 0;
    mag_clear(low);
    if (past) return false;
  }
  const slong wp = prec + 32 + std::max<slong>(0, Log2Above(s->aL.v));
  s->wp = wp;
  arb_sub_ui(s->d.v, lambda, 1, wp);
  if (arf_cmpabs_2exp_si(arb_midref(s->d.v), -6) < 0) {
    // q = 2 sum (-d)^n / (n + 2): the rest after a term is below it (|d| < 1/64)
    Ball power, term;
    arb_one(power.v);
    arb_zero(q.v);
    for (ulong n = 0;; ++n) {
      arb_div_ui(term.v, power.v, n + 2, wp);
      arb_add(q.v, q.v, term.v, wp);
      if (n > 1 && arf_cmpabs_2exp_si(arb_midref(term.v), -wp - 4) < 0) {
        AddErrorOf(q.v, term.v);
        break;
      }
      arb_mul(power.v, power.v, s->d.v, wp);
      arb_neg(power.v, power.v);
    }
    arb_mul_2exp_si(q.v, q.v, 1);
  } else {
    arb_log1p(t.v, s->d.v, wp + 8);
    arb_sub(L.v, s->d.v, t.v, wp);
    arb_sqr(t.v, s->d.v, wp);
    arb_div(q.v, L.v, t.v, wp);
    arb_mul_2exp_si(q.v, q.v, 1);
  }
  arb_sqr(L.v, s->d.v, wp);
  arb_mul(L.v, L.v, q.v, wp);
  arb_mul_2exp_si(L.v, L.v, -1);
  arb_mul(s->aL.v, a, L.v, wp);
  arb_sqrt(s->eta.v, q.v, wp);
  arb_mul(s->eta.v, s->eta.v, s->d.v, wp);
  return true;
}

// log(sqrt(2 pi a) Gamma*(a)) + a L: e' = x^a e^-x / Gamma(a + 1) is its exponential.
void LogPrefix(arb_t res, const Deviance& s, const arb_t a) {
  Ball t;
  LogGammaStar(res, a, s.wp);
  arb_add(res, res, s.aL.v, s.wp);
  arb_const_pi(t.v, s.wp);
  arb_mul(t.v, t.v, a, s.wp);
  arb_mul_2exp_si(t.v, t.v, 1);
  arb_log(t.v, t.v, s.wp);
  arb_mul_2exp_si(t.v, t.v, -1);
  arb_add(res, res, t.v, s.wp);
}

// The expansion where it converges (|eta| <= 1) and costs fewer operations than the tails'
// series, whose terms fall like lambda^k (or lambda^-k) and number about prec / |log2 lambda|.
bool TemmeIsCheaper(const Deviance& s, const arb_t a, slong prec) {
  double logEta = Log2Abs(s.eta.v);
  if (logEta > 0) return false;
  slong n = TemmeTerms(logEta, prec), k = TemmeLevels(Log2Abs(a) - 1, prec), m = n + 2 * k;
  double temme = 0.25 * static_cast<double>(m) * m + 3.0 * n * k;
  double d = arf_get_d(arb_midref(s.d.v), ARF_RND_NEAR);
  double series = 2.0 * (prec + 8) * std::log(2.0) / std::fabs(std::log1p(d));
  return !(series < temme);
}

}  // namespace

bool LargeGammaTail(arb_t res, const arb_t a, const arb_t lambda, bool upper, slong prec) {
  if (arb_is_zero(lambda)) {
    upper ? arb_one(res) : arb_zero(res);
    return true;
  }
  // Where eta sqrt(a) is uncertain by more than 2^8 across the ball of lambda no digit is
  // decided yet: the tail is only known to lie in [0, 1] (and more precision may settle it).
  if (Log2Abs(lambda) < 64 && !arb_is_exact(lambda) &&
      mag_get_d_log2_approx(arb_radref(lambda)) + 0.5 * Log2Abs(a) > 8) {
    arb_set_d(res, 0.5);
    arb_add_error_2exp_si(res, -1);
    return true;
  }
  Deviance s;
  if (!ScaledDeviance(&s, a, lambda, prec)) {
    bool smallIsUpper = arf_sgn(arb_midref(s.d.v)) > 0;
    upper == smallIsUpper ? arb_zero(res) : arb_one(res);
    return true;
  }
  const slong p = prec + 16;
  Ball prefix;
  LogPrefix(prefix.v, s, a);
  arb_neg(prefix.v, prefix.v);
  arb_exp(prefix.v, prefix.v, p);
  if (TemmeIsCheaper(s, a, prec)) {
    Ball sum, w;
    TemmeSum(sum.v, s.eta.v, a, p);
    arb_mul(sum.v, sum.v, prefix.v, p);
    // erfc(+-eta sqrt(a / 2)) / 2
    arb_mul_2exp_si(w.v, a, -1);
    arb_sqrt(w.v, w.v, s.wp);
    arb_mul(w.v, w.v, s.eta.v, s.wp);
    if (!upper) arb_neg(w.v, w.v);
    arb_hypgeom_erfc(res, w.v, p);
    arb_mul_2exp_si(res, res, -1);
    if (upper)
      arb_add(res, res, sum.v, p);
    else
      arb_sub(res, res, sum.v, p);
    return true;
  }
  Ball x;
  arb_mul(x.v, a, lambda, s.wp);
  bool below = arf_sgn(arb_midref(s.d.v)) < 0;
  if (below)
    LowerSeries(res, prefix.v, a, x.v, p);
  else
    UpperSeries(res, prefix.v, a, x.v, p);
  if (upper == below) OneMinusBall(res, res, p);
  return true;
}

void LargeGammaDensity(arb_t res, const arb_t a, const arb_t lambda, slong prec) {
  // a e' / lambda = sqrt(a / 2 pi) e^(-a L) / (lambda Gamma*(a))
  Deviance s;
  if (arb_is_zero(lambda) || !ScaledDeviance(&s, a, lambda, prec)) {
    arb_zero(res);
    return;
  }
  Ball t, u;
  LogPrefix(t.v, s, a);
  arb_log(u.v, lambda, s.wp);
  arb_add(t.v, t.v, u.v, s.wp);
  arb_neg(t.v, t.v);
  arb_exp(t.v, t.v, prec);
  arb_mul(res, t.v, a, prec);
}

}  // namespace vexa
