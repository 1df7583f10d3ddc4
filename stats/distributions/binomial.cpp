// The binomial distribution with n trials and success probability q. The distribution
// function from the numerical library; the quantile by discrete interpolation on [0, n].
// Variates: sequential inversion when n min(q, 1 - q) < 10, otherwise Hoermann's BTRD
// (transformed rejection with decomposition; W. Hoermann, "The generation of binomial random
// variates", J. Statist. Comput. Simul. 46, 1993), its final test made with log-gamma at
// raised precision instead of the Stirling series, so that it holds at any Digits.
#include <cmath>
#include <cstdlib>
#include <memory>

#include "distributions/distributions.h"
#include "frame/frame.h"
#include "random/random_stream.h"
#include "rootfinding/rootfinding.h"

namespace {

class _BinomialProbabilityAdapter : public STATS_VexaCallbackAdapter_MP {
 public:
  _BinomialProbabilityAdapter(VexaKernelVector kv, long n, VexaFloat q)
      : STATS_VexaCallbackAdapter_MP(kv), m_n(n), m_q(q) {}
  ~_BinomialProbabilityAdapter() override {}
  VexaFloat Call(VexaFloat x) override { return STATS_BinomialProbability_MP(m_kv, x, m_n, m_q); }

 private:
  long m_n;
  VexaFloat m_q;
};

VexaFloat Uniform() {
  return STATS_VexaRandomStream_MP::NextDouble();
}

// Inversion by sequential search from 0, with P(k) / P(k - 1) = (n + 1 - k) / k * p / (1 - p).
// A draw left over when the terms, past the mode, can no longer lower it (their sum fell short
// of 1 by rounding) is drawn again.
class Inversion {
 public:
  Inversion(long n, const VexaFloat& p)
      : m_n(n),
        m_mode(STATS_DoubleToInteger_MP(floor((n + 1) * p))),
        m_s(p / (1 - p)),
        m_a((n + 1) * m_s),
        m_first(pow(1 - p, VexaFloat(n))) {}

  long Next() const {
    for (;;) {
      VexaFloat u = Uniform(), r = m_first;
      long x = 0;
      while (u > r) {
        const VexaFloat rest = u - r;
        if ((rest == u && x >= m_mode) || x == m_n) break;
        u = rest;
        ++x;
        r = r * (m_a / x - m_s);
      }
      if (u <= r) return x;
    }
  }

 private:
  long m_n, m_mode;
  VexaFloat m_s, m_a, m_first;
};

// The decimal constants of BTRD, exact at any Digits.
struct BtrdConstants {
  VexaFloat b0 = VexaFloatFromString("1.15"), b1 = VexaFloatFromString("2.53"),
            a0 = VexaFloatFromString("-0.0873"), a1 = VexaFloatFromString("0.0248"),
            a2 = VexaFloatFromString("0.01"), alpha0 = VexaFloatFromString("2.83"),
            alpha1 = VexaFloatFromString("5.1"), v0 = VexaFloatFromString("0.92"),
            v1 = VexaFloatFromString("4.2"), ur = VexaFloatFromString("0.86"),
            box = VexaFloatFromString("0.43"), sliver = VexaFloatFromString("0.93"),
            half = VexaFloatFromString("0.5");
};

const BtrdConstants& Constants() {
  static const BtrdConstants constants;
  return constants;
}

// BTRD for p <= 1/2 and n p >= 10.
class Btrd {
 public:
  Btrd(long n, const VexaFloat& p) : m_n(n), m_const(Constants()), m_p(p) {
    const VexaFloat q = 1 - p, np = n * p;
    m_m = STATS_DoubleToInteger_MP(floor((n + 1) * p));
    m_r = p / q;
    m_nr = (n + 1) * m_r;
    m_npq = np * q;
    m_npqd = std::strtod(VexaFloatToString(m_npq).c_str(), nullptr);
    const VexaFloat sq = sqrt(m_npq);
    m_b = m_const.b0 + m_const.b1 * sq;
    m_a = m_const.a0 + m_const.a1 * m_b + m_const.a2 * p;
    m_c = np + m_const.half;
    m_alpha = (m_const.alpha0 + m_const.alpha1 / m_b) * sq;
    m_vr = m_const.v0 - m_const.v1 / m_b;
    m_urvr = m_const.ur * m_vr;
    m_twoA = 2 * m_a;
    m_inverseVr = 1 / m_vr;
  }

  // The variate as an integral float.
  VexaFloat Next() {
    for (;;) {
      VexaFloat v = Uniform(), u;
      if (v <= m_urvr) {  // the central box: accepted at once
        u = v * m_inverseVr - m_const.box;
        return floor((m_twoA / (m_const.half - fabs(u)) + m_b) * u + m_c);
      }
      if (v >= m_vr) {
        u = Uniform() - m_const.half;
      } else {
        u = v * m_inverseVr - m_const.sliver;
        u = Sign(m_const.half, u) - u;
        v = Uniform() * m_vr;
      }
      const VexaFloat us = m_const.half - fabs(u);
      const VexaFloat kf = floor((m_twoA / us + m_b) * u + m_c);
      if (kf < 0 || kf > VexaFloat(m_n)) continue;
      v = v * m_alpha / (m_a / (us * us) + m_b);
      if (Accept(STATS_DoubleToInteger_MP(kf), v)) return kf;
    }
  }

 private:
  // Whether v <= f(k) / f(m), f the binomial mass.
  bool Accept(long k, VexaFloat v) {
    const long km = k > m_m ? k - m_m : m_m - k;
    if (km <= 15) return Recursive(k, v);
    // The squeeze: log(f(k) / f(m)) lies within rho of t. Its two quick decisions are made
    // on a double logarithm of v and taken only where they clear the bounds by a margin far
    // beyond the double's error; everything else goes to the exact test.
    const double kmd = static_cast<double>(km);
    const double rho = (kmd / m_npqd) * (((kmd / 3 + 0.625) * kmd + 1.0 / 6) / m_npqd + 0.5);
    const double t = -(kmd * kmd) / (2 * m_npqd);
    const double vd = std::strtod(VexaFloatToString(v).c_str(), nullptr);
    if (vd > 1e-300) {
      const double logV = std::log(vd), margin = 1e-9 * (1 + std::fabs(t) + rho);
      if (logV < t - rho - margin) return true;
      if (logV > t + rho + margin) return false;
    }
    return log(v) <= LogMassRatio(k);
  }

  // The ratio f(k) / f(m) as a product of consecutive mass ratios.
  bool Recursive(long k, VexaFloat v) const {
    VexaFloat f(1);
    if (m_m < k) {
      for (long i = m_m + 1; i <= k; ++i) f = f * (m_nr / i - m_r);
    } else {
      for (long i = k + 1; i <= m_m; ++i) v = v * (m_nr / i - m_r);
    }
    return v <= f;
  }

  // log(f(k) / f(m)) from log-gamma. The terms reach n log n, so the digits they cancel are
  // carried as guard digits.
  VexaFloat LogMassRatio(long k) const {
    const int digits = VexaDigits();
    VexaFloat ratio;
    {
      VexaDigitsScope wide(digits + 10 +
                           2 * static_cast<int>(std::log10(static_cast<double>(m_n) + 1)));
      auto lg = [](long j) { return VexaEvalf1("lnGAMMA", VexaFloat(j + 1)); };
      ratio = lg(m_m) + lg(m_n - m_m) - lg(k) - lg(m_n - k) + VexaFloat(k - m_m) * log(m_r);
    }
    return ratio + VexaFloat(0);
  }

  long m_n, m_m;
  double m_npqd;  // n p q to double precision, for the squeeze
  const BtrdConstants& m_const;
  VexaFloat m_p, m_r, m_nr, m_npq, m_a, m_b, m_c, m_alpha, m_vr, m_urvr, m_twoA, m_inverseVr;
};

// Binomial variates for one n and q, the setup made once: the method runs on min(q, 1 - q)
// and the result is reflected when q > 1/2.
class Sampler {
 public:
  Sampler(VexaKernelVector kv, long n, const VexaFloat& q) : m_n(n) {
    if (n < 0)
      VexaRaiseError1(kv, "expected a nonnegative number of trials, received %1",
                      ToVexaInteger(kv, n));
    if (!(q >= 0 && q <= 1))
      VexaRaiseError1(kv, "expected a success probability between 0 and 1, received %1",
                      STATS_DoubleToVexaFloat_MP(kv, q));
    if (n == 0 || q == 0 || q == 1) {
      m_constant = q == 1 ? n : 0;
      return;
    }
    m_reflect = q > VexaFloat(0.5);
    const VexaFloat p = m_reflect ? 1 - q : q;
    if (n * p < 10)
      m_inversion.reset(new Inversion(n, p));
    else
      m_btrd.reset(new Btrd(n, p));
  }

  // The variate as an integral float.
  VexaFloat Next() {
    if (m_constant >= 0) return VexaFloat(m_constant);
    const VexaFloat x = m_inversion ? VexaFloat(m_inversion->Next()) : m_btrd->Next();
    return m_reflect ? VexaFloat(m_n) - x : x;
  }

 private:
  long m_n;
  long m_constant = -1;  // the outcome when it is certain
  bool m_reflect = false;
  std::unique_ptr<Inversion> m_inversion;
  std::unique_ptr<Btrd> m_btrd;
};

}  // namespace

VexaFloat STATS_BinomialProbability_MP(VexaKernelVector kv, VexaFloat x, long n, VexaFloat q) {
  const long k = STATS_DoubleToInteger_MP(floor(x));
  return STATS_CallLibrary_MP(kv, [&](NagError* fail) {
    VexaFloat lower(0.0), upper(0.0), equal(0.0);
    VexaMP_g01bjc(n, q, k, &lower, &upper, &equal, fail);
    return lower;
  });
}

long STATS_BinomialDeviate_MP(VexaKernelVector kv, VexaFloat p, long n, VexaFloat q) {
  const int limit = STATS_DiscreteIterationLimit_MP(kv);
  _BinomialProbabilityAdapter f(kv, n, q);
  return STATS_DiscreteInterpolation_MP(kv, p, f, 0, n, limit);
}

VexaFloat STATS_BinomialRandomVariate_MP(VexaKernelVector kv, long n, VexaFloat q) {
  return Sampler(kv, n, q).Next();
}

VexaFloat STATS_BinomialRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_BinomialRandomVariate_MP(kv, STATS_DoubleToInteger_MP(parameters[0]), parameters[1]);
}

// n, trials, q: one setup for the whole sample; the draws are those of n variate calls.
ALGEB STATS_BinomialRandomSampleEntry_MP(const STATS_VexaEntry_MP& entry) {
  const VexaKernelVector kv = entry.Kernel();
  const int size = entry.Integer(1);
  const long n = STATS_DoubleToInteger_MP(entry.Float(2));
  const VexaFloat q = entry.Float(3);
  ALGEB out = STATS_CreateRandomSample_MP(kv, size, ToVexaNULL(kv));
  if (size <= 0) return out;
  Sampler sampler(kv, n, q);
  VexaFloat* data = static_cast<VexaFloat*>(RTableDataBlock(kv, out));
  for (int i = 0; i < size; ++i) data[i] = sampler.Next();
  return out;
}
