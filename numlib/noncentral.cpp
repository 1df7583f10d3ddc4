// Noncentral chi-square, beta, F and Student t probabilities as mixtures sum_j w_j F_j of
// central incomplete gamma or beta functions, with Poisson-type weights w_j ~ mu^j /
// Gamma(j + 1 + s). The sum starts at the mode of the weights and runs outward both ways;
// F_j comes from its neighbour by F_(j+1) = F_j -+ h_j, and each direction stops once a
// geometric bound on its rest is negligible, the bound then joining the ball's radius. Each
// tail is summed directly (never as a difference of its complement), so both keep their
// relative accuracy; Ziv's loop raises the precision until the rounding is decided.
#include <arb_hypgeom.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

#include "numlib/quantile.h"

namespace vexa {
namespace {

const slong kExtraBits = 16;
const long kMaxNoncentrality = 1000000;
const long kMaxDelta = 100;
const double kInfinity = std::numeric_limits<double>::infinity();

// A family of central terms F_j (j = 0, 1, ...) with F_(j+1) = F_j - h_j (decreasing) or
// F_j + h_j, and bounds of F_(i+1) / F_i for i >= j and of F_(i-1) / F_i for 1 <= i <= j.
struct Component {
  bool decreasing = true;
  virtual ~Component() = default;
  virtual void Direct(arb_t f, arb_t h, ulong j, slong prec) const = 0;  // F_j and h_j
  virtual void StepUp(arb_t h, ulong j, slong prec) const = 0;           // h_j to h_(j+1)
  virtual void StepDown(arb_t h, ulong j, slong prec) const = 0;         // h_j to h_(j-1)
  virtual double UpFactor(ulong j) const = 0;
  virtual double DownFactor(ulong j) const = 0;
};

// F_j = P(a + j, y) (lower) or Q(a + j, y), h_j = y^(a+j) e^-y / Gamma(a + j + 1).
// P(a, y) = h(a) sum_n y^n / ((a+1)...(a+n)) >= h(a) (1 + y / (a+1)) gives
// P(a, y) / P(a+1, y) <= (a + 1 + y) / y; Gamma(a, y) >= y^(a-1) e^-y for a >= 1 gives
// Q(a+1, y) / Q(a, y) <= 1 + y / a.
struct GammaComponent : Component {
  const arb_struct* a;
  const arb_struct* y;
  const arb_struct* inverseY;
  double ad, yd;
  void Shape(arb_t s, ulong j, slong prec) const { arb_add_ui(s, a, j, prec); }
  void Direct(arb_t f, arb_t h, ulong j, slong prec) const override {
    Ball s, t;
    Shape(s.v, j, prec);
    if (decreasing)
      RegularizedGammaLower(f, s.v, y, prec);
    else
      RegularizedGammaUpper(f, s.v, y, prec);
    arb_log(h, y, prec);
    arb_mul(h, h, s.v, prec);
    arb_sub(h, h, y, prec);
    arb_add_ui(t.v, s.v, 1, prec);
    arb_hypgeom_lgamma(t.v, t.v, prec);
    arb_sub(h, h, t.v, prec);
    arb_exp(h, h, prec);
  }
  // h_(j+1) = h_j y / (a + j + 1), h_(j-1) = h_j (a + j) / y
  void StepUp(arb_t h, ulong j, slong prec) const override {
    Ball s;
    Shape(s.v, j + 1, prec);
    arb_mul(h, h, y, prec);
    arb_div(h, h, s.v, prec);
  }
  void StepDown(arb_t h, ulong j, slong prec) const override {
    Ball s;
    Shape(s.v, j, prec);
    arb_mul(h, h, s.v, prec);
    arb_mul(h, h, inverseY, prec);
  }
  double UpFactor(ulong j) const override {
    if (decreasing) return 1;
    double s = ad + j;
    return s >= 1 ? 1 + yd / s : kInfinity;
  }
  double DownFactor(ulong j) const override { return decreasing ? (ad + j + yd) / yd : 1; }
};

// F_j = I_z(a + j, b) (lower) or I_zc(b, a + j), h_j = Gamma(a+j+b) / (Gamma(a+j+1) Gamma(b))
// z^(a+j) zc^b. I_z(a, b) = h(a) 2F1(a+b, 1; a+1; z) >= h(a) (1 + (a+b) z / (a+1)) gives
// I_z(a-1, b) / I_z(a, b) <= 1 + a / ((a-1+b) z); I_zc(b, a) >= zc^b z^a Gamma(a+b) /
// (Gamma(b+1) Gamma(a)) gives I_zc(b, a+1) / I_zc(b, a) <= 1 + b / a.
struct BetaComponent : Component {
  const arb_struct* a;
  const arb_struct* b;
  const arb_struct* z;
  const arb_struct* zc;
  double ad, bd, zd;
  void Shape(arb_t s, ulong j, slong prec) const { arb_add_ui(s, a, j, prec); }
  void Direct(arb_t f, arb_t h, ulong j, slong prec) const override {
    Ball s, t;
    Shape(s.v, j, prec);
    if (decreasing)
      RegularizedBetaLower(f, s.v, b, z, zc, prec);
    else
      RegularizedBetaLower(f, b, s.v, zc, z, prec);
    arb_add(h, s.v, b, prec);
    arb_hypgeom_lgamma(h, h, prec);
    arb_add_ui(t.v, s.v, 1, prec);
    arb_hypgeom_lgamma(t.v, t.v, prec);
    arb_sub(h, h, t.v, prec);
    arb_hypgeom_lgamma(t.v, b, prec);
    arb_sub(h, h, t.v, prec);
    arb_log(t.v, z, prec);
    arb_addmul(h, t.v, s.v, prec);
    arb_log(t.v, zc, prec);
    arb_addmul(h, t.v, b, prec);
    arb_exp(h, h, prec);
  }
  // h_(j+1) = h_j (a_j + b) z / (a_j + 1), h_(j-1) = h_j a_j / ((a_j - 1 + b) z)
  void StepUp(arb_t h, ulong j, slong prec) const override {
    Ball s, t;
    Shape(s.v, j, prec);
    arb_add(t.v, s.v, b, prec);
    arb_mul(h, h, t.v, prec);
    arb_mul(h, h, z, prec);
    arb_add_ui(t.v, s.v, 1, prec);
    arb_div(h, h, t.v, prec);
  }
  void StepDown(arb_t h, ulong j, slong prec) const override {
    Ball s, t;
    Shape(s.v, j, prec);
    arb_mul(h, h, s.v, prec);
    arb_add(t.v, s.v, b, prec);
    arb_sub_ui(t.v, t.v, 1, prec);
    arb_mul(t.v, t.v, z, prec);
    arb_div(h, h, t.v, prec);
  }
  double UpFactor(ulong j) const override { return decreasing ? 1 : 1 + bd / (ad + j); }
  double DownFactor(ulong j) const override {
    if (!decreasing) return 1;
    double at = ad + j, a1 = ad + 1;
    double worst = std::max(at / (at - 1 + bd), a1 / (a1 - 1 + bd));
    return 1 + worst / zd;
  }
};

// The weights w_j = exp(logC + j log mu - lgamma(j + 1 + s)) (s = 0 or 1/2).
struct Weights {
  const arb_struct* logC;
  const arb_struct* mu;
  double mud;
  double s;
};

// w_j, exactly as the weights define it.
void Weight(arb_t w, const Weights& wt, ulong j, slong prec) {
  Ball t;
  arb_set_d(t.v, wt.s);
  arb_add_ui(t.v, t.v, j + 1, prec);
  arb_hypgeom_lgamma(t.v, t.v, prec);
  arb_sub(w, wt.logC, t.v, prec);
  if (j > 0) {
    Ball l;
    arb_log(l.v, wt.mu, prec);
    arb_addmul_ui(w, l.v, j, prec);
  }
  arb_exp(w, w, prec);
}

// A bound of the rest of a series whose later terms shrink by the ratio at most (0 when the
// ratio is not below 1): t ratio / (1 - ratio), t the last term.
void GeometricRest(arb_t rest, const arb_t t, double ratio) {
  ratio *= 1 + 1e-9;  // the double bound's own rounding
  if (!(ratio < 1)) {
    arb_pos_inf(rest);
    return;
  }
  Ball factor;
  arb_zero(rest);
  arb_get_abs_ubound_arf(arb_midref(rest), t, 64);
  arb_set_d(factor.v, ratio / (1 - ratio));
  arb_mul(rest, rest, factor.v, 64);
}

// True (and the bound added to s) when the rest of the sum is below s 2^-(prec + 8). The
// rest is bounded by the terms t with their ratio bound, or, every F_j lying in [0, 1], by
// the weights w alone with theirs.
bool RestNegligible(arb_t s, const arb_t t, double termRatio, const arb_t w, double weightRatio,
                    slong prec) {
  Ball rest, other, lower;
  GeometricRest(rest.v, t, termRatio);
  GeometricRest(other.v, w, weightRatio);
  if (arb_lt(other.v, rest.v)) arb_swap(rest.v, other.v);
  if (!arb_is_finite(rest.v)) return false;
  arb_get_lbound_arf(arb_midref(lower.v), s, 64);
  arb_mul_2exp_si(lower.v, lower.v, -(prec + 8));
  if (arf_sgn(arb_midref(lower.v)) <= 0 || arb_gt(rest.v, lower.v)) return false;
  mag_t m;
  mag_init(m);
  arb_get_mag(m, rest.v);
  mag_add(arb_radref(s), arb_radref(s), m);
  mag_clear(m);
  return true;
}

// sum_j w_j F_j from the mode of the weights outward.
void MixtureSum(arb_t res, const Component& c, const Weights& wt, slong prec) {
  const slong wp = prec + 24;
  const ulong mode = wt.mud > wt.s + 1 ? static_cast<ulong>(std::floor(wt.mud - wt.s)) : 0;
  Ball f0, h0, w0, t;
  c.Direct(f0.v, h0.v, mode, wp);
  Weight(w0.v, wt, mode, wp);
  arb_mul(res, w0.v, f0.v, wp);
  if (arb_is_zero(wt.mu)) return;
  const ulong kMaxTerms = 100000000;
  // with k = 2s: w_(j+1) = w_j 2 mu / (2j + 2 + k), w_(j-1) = w_j (2j + k) / (2 mu)
  const ulong k = wt.s > 0 ? 1 : 0;
  Ball twoMu, inverseTwoMu;
  arb_mul_2exp_si(twoMu.v, wt.mu, 1);
  arb_inv(inverseTwoMu.v, twoMu.v, wp);
  {  // upward
    Ball f, h, w;
    arb_set(f.v, f0.v);
    arb_set(h.v, h0.v);
    arb_set(w.v, w0.v);
    for (ulong j = mode; j < mode + kMaxTerms; ++j) {
      if (c.decreasing)
        arb_sub(f.v, f.v, h.v, wp);
      else
        arb_add(f.v, f.v, h.v, wp);
      c.StepUp(h.v, j, wp);
      arb_mul(w.v, w.v, twoMu.v, wp);
      arb_div_ui(w.v, w.v, 2 * j + 2 + k, wp);
      arb_mul(t.v, w.v, f.v, wp);
      arb_add(res, res, t.v, wp);
      const double weightRatio = wt.mud / (j + 2 + wt.s);
      if ((j - mode) % 8 == 7 &&
          RestNegligible(res, t.v, weightRatio * c.UpFactor(j + 1), w.v, weightRatio, prec))
        break;
      if (j + 1 == mode + kMaxTerms) arb_indeterminate(res);
    }
  }
  {  // downward
    Ball f, h, w;
    arb_set(f.v, f0.v);
    arb_set(h.v, h0.v);
    arb_set(w.v, w0.v);
    for (ulong j = mode; j > 0; --j) {
      c.StepDown(h.v, j, wp);
      if (c.decreasing)
        arb_add(f.v, f.v, h.v, wp);
      else
        arb_sub(f.v, f.v, h.v, wp);
      arb_mul_ui(w.v, w.v, 2 * j + k, wp);
      arb_mul(w.v, w.v, inverseTwoMu.v, wp);
      arb_mul(t.v, w.v, f.v, wp);
      arb_add(res, res, t.v, wp);
      if (j == 1) break;
      const double weightRatio = (j - 1 + wt.s) / wt.mud;
      if ((mode - j) % 8 == 7 &&
          RestNegligible(res, t.v, weightRatio * c.DownFactor(j - 1), w.v, weightRatio, prec))
        break;
    }
  }
}

// ---- argument checks ----

bool CheckIterations(NagError* fail, const char* routine, long maxIter) {
  if (maxIter >= 1) return true;
  return Fail(fail, NE_INT_ARG_LT, routine, Shows("max_iter", maxIter), "max_iter >= 1");
}

bool CheckNoncentrality(NagError* fail, const char* routine, const VexaFloat& lambda) {
  if (!CheckNonNegative(fail, routine, "lambda", lambda)) return false;
  if (lambda <= kMaxNoncentrality) return true;
  return Fail(fail, NE_REAL_ARG_GT, routine, Shows("lambda", lambda),
              "0 <= lambda <= " + std::to_string(kMaxNoncentrality));
}

// ---- the beta mixture shared by the beta and F routines ----

// Lower tail of the noncentral beta law at z (zc = 1 - z): shapes a, b, mu = lambda / 2.
VexaFloat BetaMixture(const std::function<void(arb_t, arb_t, arb_t, arb_t, slong)>& balls,
                      const VexaFloat& lambda, double ad, double bd, double zd) {
  double mud = ToDouble(lambda) / 2;
  // below the mean (a + mu) / (a + mu + b) the lower tail is the smaller one
  bool lowerDirect = zd <= (ad + mud) / (ad + mud + bd);
  return Ziv(
      [&](arb_t y, slong prec) {
        Ball a, b, z, zc, mu, logC;
        balls(a.v, b.v, z.v, zc.v, prec + 24);
        ToBall(mu.v, lambda, prec + 24);
        arb_mul_2exp_si(mu.v, mu.v, -1);
        arb_neg(logC.v, mu.v);  // Poisson weights
        BetaComponent c;
        c.decreasing = lowerDirect;
        c.a = a.v;
        c.b = b.v;
        c.z = z.v;
        c.zc = zc.v;
        c.ad = ad;
        c.bd = bd;
        c.zd = zd;
        Weights wt{logC.v, mu.v, mud, 0};
        MixtureSum(y, c, wt, prec);
        if (!lowerDirect) OneMinusBall(y, y, prec);
      },
      kExtraBits);
}

// ---- Student t: T = (Z + delta) / sqrt(V / df). With Y = Z + delta, delta >= 0 and
// x = t^2 / (t^2 + df), the density of Y > 0 expands into even powers (Poisson weights
// p_j = e^-mu mu^j / j!, mu = delta^2 / 2, beta shapes (j + 1/2, df/2)) and odd powers
// (q_j = delta e^-mu mu^j / (sqrt 2 Gamma(j + 3/2)), shapes (j + 1, df/2)), so that
// P(0 < Y <= t sqrt(V / df)) = (sum p_j I_x(j+1/2, df/2) + sum q_j I_x(j+1, df/2)) / 2. For
// Y < 0 the odd terms change sign.

// (sum_j p_j F_j +- sum_j q_j F_j) / 2, F the lower (I_x) or upper (I_(1-x)) beta terms.
void TSums(arb_t res, const arb_t tb, const VexaFloat& df, const VexaFloat& delta, bool upperTerms,
           bool minus, slong prec) {
  const slong wp = prec + 24;
  Ball t2, x, xc, s, b, mu, logC, a, part;
  arb_sqr(t2.v, tb, wp);
  ToBall(b.v, df, wp);
  arb_add(s.v, t2.v, b.v, wp);
  arb_div(x.v, t2.v, s.v, wp);
  arb_div(xc.v, b.v, s.v, wp);
  arb_mul_2exp_si(b.v, b.v, -1);
  ToBall(mu.v, delta, wp);
  arb_sqr(mu.v, mu.v, wp);
  arb_mul_2exp_si(mu.v, mu.v, -1);
  double dd = ToDouble(delta), nu = ToDouble(df), td = arf_get_d(arb_midref(tb), ARF_RND_NEAR);
  double mud = dd * dd / 2, xd = td * td / (td * td + nu);
  BetaComponent c;
  c.decreasing = !upperTerms;
  c.b = b.v;
  c.z = x.v;
  c.zc = xc.v;
  c.bd = nu / 2;
  c.zd = xd;
  // even terms
  arb_set_d(a.v, 0.5);
  c.a = a.v;
  c.ad = 0.5;
  arb_neg(logC.v, mu.v);
  MixtureSum(res, c, Weights{logC.v, mu.v, mud, 0}, prec);
  if (dd != 0) {  // odd terms
    arb_one(a.v);
    c.ad = 1;
    ToBall(logC.v, delta, wp);
    arb_log(logC.v, logC.v, wp);
    arb_sub(logC.v, logC.v, mu.v, wp);
    arb_const_log2(s.v, wp);
    arb_mul_2exp_si(s.v, s.v, -1);
    arb_sub(logC.v, logC.v, s.v, wp);
    MixtureSum(part.v, c, Weights{logC.v, mu.v, mud, 0.5}, prec);
    if (minus)
      arb_sub(res, res, part.v, wp);
    else
      arb_add(res, res, part.v, wp);
  }
  arb_mul_2exp_si(res, res, -1);
}

// Phi(-delta) (or, with upper, Phi(delta)) = erfc(-+delta / sqrt 2) / 2.
void NormalTail(arb_t res, const VexaFloat& delta, bool upper, slong prec) {
  Ball s;
  ToBall(res, delta, prec);
  if (upper) arb_neg(res, res);
  arb_sqrt_ui(s.v, 2, prec);
  arb_div(res, res, s.v, prec);
  arb_hypgeom_erfc(res, res, prec);
  arb_mul_2exp_si(res, res, -1);
}

// The lower (or upper) tail at t of the noncentral t law with delta >= 0.
VexaFloat NoncentralT(const VexaFloat& t, const VexaFloat& df, const VexaFloat& delta, bool upper) {
  const double mud = ToDouble(delta) * ToDouble(delta) / 2;
  slong extra = kExtraBits;
  // t >= 0: lower = Phi(-delta) + even + odd, upper = (even + odd) of the upper terms.
  // t < 0:  lower = (even - odd) of the upper terms, upper = Phi(delta) + (even - odd).
  // For t >= 0 the smaller tail (about: the lower one for t below delta) is summed directly
  // and the other is its complement. For t < 0 both are summed directly: the upper tail's
  // even - odd part is small beside Phi(delta) >= 1/2.
  const bool negative = t < 0;
  bool direct;  // the requested tail summed directly
  if (negative)
    direct = true;
  else
    direct = upper ? ToDouble(t) >= ToDouble(delta) : ToDouble(t) <= ToDouble(delta);
  const bool wantLower = upper != direct;  // the tail that is summed
  // the even and odd sums of the lower tail at t < 0 cancel to about exp(-mu)
  if (negative && wantLower) extra += static_cast<slong>(mud * 1.4426950408889634) + 16;
  return Ziv(
      [&](arb_t y, slong prec) {
        const slong wp = prec + 24;
        Ball tb;
        ToBall(tb.v, t, wp);
        arb_abs(tb.v, tb.v);
        if (t == 0) {
          NormalTail(y, delta, !wantLower, wp);
        } else if (!negative) {
          TSums(y, tb.v, df, delta, !wantLower, false, prec);
          if (wantLower) {
            Ball phi;
            NormalTail(phi.v, delta, false, wp);
            arb_add(y, y, phi.v, wp);
          }
        } else {
          TSums(y, tb.v, df, delta, wantLower, true, prec);
          if (!wantLower) {
            Ball phi;
            NormalTail(phi.v, delta, true, wp);
            arb_add(y, y, phi.v, wp);
          }
        }
        if (!direct) OneMinusBall(y, y, wp);
      },
      extra);
}

}  // namespace
}  // namespace vexa

using namespace vexa;

VexaFloat VexaMP_g01gbc(VexaFloat t, VexaFloat df, VexaFloat delta, VexaFloat /*tol*/,
                        long max_iter, NagError* fail) {
  const char* routine = "VexaMP_g01gbc";
  Succeed(fail);
  if (!CheckFinite(fail, routine, "t", t) ||
      !CheckPositive(fail, routine, "df", df, 2 * kMaxShape) ||
      !CheckFinite(fail, routine, "delta", delta) || !CheckIterations(fail, routine, max_iter))
    return 0;
  if (delta > kMaxDelta || delta < -kMaxDelta) {
    Fail(fail, delta > 0 ? NE_REAL_ARG_GT : NE_REAL_ARG_LT, routine, Shows("delta", delta),
         "|delta| <= " + std::to_string(kMaxDelta));
    return 0;
  }
  // P(T <= t; delta) = P(T >= -t; -delta)
  if (delta < 0) return NoncentralT(-t, df, -delta, true);
  return NoncentralT(t, df, delta, false);
}

VexaFloat VexaMP_g01gcc(VexaFloat x, VexaFloat df, VexaFloat lambda, VexaFloat /*tol*/,
                        long max_iter, NagError* fail) {
  const char* routine = "VexaMP_g01gcc";
  Succeed(fail);
  if (!CheckNonNegative(fail, routine, "x", x) ||
      !CheckPositive(fail, routine, "df", df, 2 * kMaxShape) ||
      !CheckNoncentrality(fail, routine, lambda) || !CheckIterations(fail, routine, max_iter))
    return 0;
  if (x == 0) return 0;
  const double xd = ToDouble(x), dfd = ToDouble(df), mud = ToDouble(lambda) / 2;
  const bool lowerDirect = xd <= dfd + 2 * mud;  // below the mean
  return Ziv(
      [&](arb_t y, slong prec) {
        const slong wp = prec + 24;
        Ball a, yb, inverseY, mu, logC;
        ToBall(a.v, df, wp);
        arb_mul_2exp_si(a.v, a.v, -1);
        ToBall(yb.v, x, wp);
        arb_mul_2exp_si(yb.v, yb.v, -1);
        ToBall(mu.v, lambda, wp);
        arb_mul_2exp_si(mu.v, mu.v, -1);
        arb_neg(logC.v, mu.v);  // Poisson weights
        GammaComponent c;
        c.decreasing = lowerDirect;
        c.a = a.v;
        c.y = yb.v;
        arb_inv(inverseY.v, yb.v, wp);
        c.inverseY = inverseY.v;
        c.ad = dfd / 2;
        c.yd = xd / 2;
        MixtureSum(y, c, Weights{logC.v, mu.v, mud, 0}, prec);
        if (!lowerDirect) OneMinusBall(y, y, wp);
      },
      kExtraBits);
}

VexaFloat VexaMP_g01gdc(VexaFloat f, VexaFloat df1, VexaFloat df2, VexaFloat lambda,
                        VexaFloat /*tol*/, long max_iter, NagError* fail) {
  const char* routine = "VexaMP_g01gdc";
  Succeed(fail);
  if (!CheckNonNegative(fail, routine, "f", f) ||
      !CheckPositive(fail, routine, "df1", df1, 2 * kMaxShape) ||
      !CheckPositive(fail, routine, "df2", df2, 2 * kMaxShape) ||
      !CheckNoncentrality(fail, routine, lambda) || !CheckIterations(fail, routine, max_iter))
    return 0;
  if (f == 0) return 0;
  // z = df1 f / (df1 f + df2), 1 - z = df2 / (df1 f + df2); shapes df1 / 2, df2 / 2
  auto balls = [&](arb_t a, arb_t b, arb_t z, arb_t zc, slong prec) {
    Ball s;
    ToBall(a, df1, prec);
    ToBall(b, df2, prec);
    ToBall(z, f, prec);
    arb_mul(z, z, a, prec);
    arb_add(s.v, z, b, prec);
    arb_div(z, z, s.v, prec);
    arb_div(zc, b, s.v, prec);
    arb_mul_2exp_si(a, a, -1);
    arb_mul_2exp_si(b, b, -1);
  };
  double d1 = ToDouble(df1), d2 = ToDouble(df2), fd = ToDouble(f);
  return BetaMixture(balls, lambda, d1 / 2, d2 / 2, d1 * fd / (d1 * fd + d2));
}

VexaFloat VexaMP_g01gec(VexaFloat x, VexaFloat a, VexaFloat b, VexaFloat lambda, VexaFloat /*tol*/,
                        long max_iter, NagError* fail) {
  const char* routine = "VexaMP_g01gec";
  Succeed(fail);
  if (!CheckNonNegative(fail, routine, "x", x)) return 0;
  if (x > 1) {
    Fail(fail, NE_REAL_ARG_GT, routine, Shows("x", x), "0 <= x <= 1");
    return 0;
  }
  if (!CheckPositive(fail, routine, "a", a, kMaxShape) ||
      !CheckPositive(fail, routine, "b", b, kMaxShape) ||
      !CheckNoncentrality(fail, routine, lambda) || !CheckIterations(fail, routine, max_iter))
    return 0;
  if (x == 0) return 0;
  if (x == 1) return 1;
  const VexaFloat xc = OneMinus(x);
  auto balls = [&](arb_t sa, arb_t sb, arb_t z, arb_t zc, slong prec) {
    ToBall(sa, a, prec);
    ToBall(sb, b, prec);
    ToBall(z, x, prec);
    ToBall(zc, xc, prec);
  };
  return BetaMixture(balls, lambda, ToDouble(a), ToDouble(b), ToDouble(x));
}
